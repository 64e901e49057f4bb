#include "simulator/ptyport.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace simulator
{
namespace
{
struct Rate {
    speed_t speed;
    unsigned baud;
};

// The rates that a client may set; others are taken for the slowest that is in use.
const Rate rates[] = {
    {B300, 300},       {B600, 600},       {B1200, 1200},     {B2400, 2400},       {B4800, 4800},
    {B9600, 9600},     {B19200, 19200},   {B38400, 38400},   {B57600, 57600},     {B115200, 115200},
    {B230400, 230400}, {B460800, 460800}, {B921600, 921600}, {B1000000, 1000000},
};
constexpr unsigned fallbackBaud = 9600;
constexpr unsigned bitsPerByte = 10; // start 1 + data 8 + stop 1

void closeAll(std::initializer_list<int> descriptors)
{
    for (const int descriptor : descriptors) {
        if (descriptor >= 0)
            ::close(descriptor);
    }
}
} // namespace

std::unique_ptr<PtyPort> PtyPort::open(std::string *error)
{
    std::unique_ptr<PtyPort> port(new PtyPort);
    const auto failed = [error](const char *what) {
        *error = std::string(what) + ": " + std::strerror(errno);
        return nullptr;
    };
    port->master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (port->master < 0 || ::grantpt(port->master) != 0 || ::unlockpt(port->master) != 0)
        return failed("no pseudo-terminal");
    char name[128];
    if (::ptsname_r(port->master, name, sizeof name) != 0)
        return failed("the pseudo-terminal has no name");
    port->slavePath = name;
    port->slave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings;
    if (port->slave < 0 || ::tcgetattr(port->slave, &settings) != 0)
        return failed(name);
    ::cfmakeraw(&settings);
    ::cfsetspeed(&settings, B9600);
    if (::tcsetattr(port->slave, TCSANOW, &settings) != 0)
        return failed(name);

    // Only now, so that the port's own opening does not count as a client's.
    port->watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (port->watch >= 0 && ::inotify_add_watch(port->watch, name, IN_OPEN | IN_CLOSE) < 0) {
        ::close(port->watch);
        port->watch = -1;
    }
    return port;
}

PtyPort::~PtyPort()
{
    closeAll({watch, slave, master});
}

std::string PtyPort::bareName() const
{
    const std::string devices = "/dev/";
    return slavePath.compare(0, devices.size(), devices) == 0 ? slavePath.substr(devices.size())
                                                              : slavePath;
}

bool PtyPort::takeClientGone()
{
    if (watch < 0)
        return false;
    bool gone = false;
    alignas(inotify_event) char buffer[4096];
    ssize_t size;
    while ((size = ::read(watch, buffer, sizeof buffer)) > 0) {
        for (ssize_t at = 0; at < size;) {
            inotify_event event;
            std::memcpy(&event, buffer + at, sizeof event);
            at += static_cast<ssize_t>(sizeof event + event.len);
            if (event.mask & IN_OPEN)
                ++clients;
            if ((event.mask & IN_CLOSE) && clients > 0 && --clients == 0)
                gone = true;
        }
    }
    return gone;
}

Bytes PtyPort::read()
{
    Bytes bytes(4096);
    const ssize_t size = ::read(master, bytes.data(), bytes.size());
    bytes.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return bytes;
}

void PtyPort::write(const Bytes &bytes)
{
    unsent.insert(unsent.end(), bytes.begin(), bytes.end());
    flush();
}

void PtyPort::flush()
{
    while (!unsent.empty()) {
        const ssize_t size = ::write(master, unsent.data(), unsent.size());
        if (size <= 0)
            return;
        unsent.erase(unsent.begin(), unsent.begin() + size);
    }
}

void PtyPort::discardUnread()
{
    unsent.clear();
    ::tcflush(slave, TCIFLUSH);
    // A client that died may have left the port locked for its own use.
    ::ioctl(slave, TIOCNXCL);
}

unsigned PtyPort::baud() const
{
    termios settings;
    if (::tcgetattr(slave, &settings) == 0) {
        for (const Rate &rate : rates) {
            if (rate.speed == ::cfgetospeed(&settings))
                return rate.baud;
        }
    }
    return fallbackBaud;
}

std::chrono::nanoseconds PtyPort::byteTime() const
{
    return std::chrono::nanoseconds(1000000000LL * bitsPerByte / baud());
}

} // namespace simulator
