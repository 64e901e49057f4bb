#include "IntelHexFile/rs232.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace IntelHexFile
{
namespace
{
constexpr int closed = -1;

/// The descriptors of the open ports.
class PortTable
{
public:
    PortTable() { std::fill(std::begin(descriptors), std::end(descriptors), closed); }

    int descriptor(int port) const { return isPort(port) ? descriptors[port] : closed; }
    void set(int port, int descriptor) { descriptors[port] = descriptor; }
    static bool isPort(int port) { return port >= 0 && port < comportCount; }

private:
    int descriptors[comportCount];
};

PortTable ports;

/// B0, which would hang up, stands for a rate that there is not.
speed_t speedOf(int baud)
{
    switch (baud) {
    case 50:
        return B50;
    case 75:
        return B75;
    case 110:
        return B110;
    case 134:
        return B134;
    case 150:
        return B150;
    case 200:
        return B200;
    case 300:
        return B300;
    case 600:
        return B600;
    case 1200:
        return B1200;
    case 1800:
        return B1800;
    case 2400:
        return B2400;
    case 4800:
        return B4800;
    case 9600:
        return B9600;
    case 19200:
        return B19200;
    case 38400:
        return B38400;
    case 57600:
        return B57600;
    case 115200:
        return B115200;
    case 230400:
        return B230400;
    case 460800:
        return B460800;
    case 500000:
        return B500000;
    case 576000:
        return B576000;
    case 921600:
        return B921600;
    case 1000000:
        return B1000000;
    default:
        return B0;
    }
}

termios settingsFor(speed_t speed)
{
    // All control characters stay zero: a read returns at once with what there is.
    termios settings = {};
    settings.c_iflag = IGNPAR;
    settings.c_cflag = CS8 | CLOCAL | CREAD;
    cfsetispeed(&settings, speed);
    cfsetospeed(&settings, speed);
    return settings;
}

} // namespace

int OpenComport(int port, int baud, const char *path)
{
    if (!PortTable::isPort(port))
        return 1;
    const speed_t speed = speedOf(baud);
    if (speed == B0) {
        std::printf("invalid baudrate");
        return 1;
    }

    CloseComport(port);
    const int descriptor = open(path, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        std::perror("unable to open comport ");
        return 1;
    }
    termios before;
    if (tcgetattr(descriptor, &before) != 0) {
        std::perror("unable to read portsettings on port ");
        close(descriptor);
        return 1;
    }
    const termios settings = settingsFor(speed);
    if (tcsetattr(descriptor, TCSANOW, &settings) != 0) {
        std::perror("unable to adjust portsettings ");
        close(descriptor);
        return 1;
    }
    ports.set(port, descriptor);
    return 0;
}

int PollComport(int port, unsigned char *buffer, int size)
{
    const int descriptor = ports.descriptor(port);
    if (descriptor == closed || size <= 0)
        return 0;
    const ssize_t count = read(descriptor, buffer, static_cast<std::size_t>(size));
    return count > 0 ? static_cast<int>(count) : 0;
}

int SendByte(int port, unsigned char byte)
{
    return SendBuf(port, &byte, 1) == 1 ? 0 : 1;
}

int SendBuf(int port, const unsigned char *buffer, int size)
{
    const int descriptor = ports.descriptor(port);
    if (descriptor == closed || size < 0)
        return -1;
    return static_cast<int>(write(descriptor, buffer, static_cast<std::size_t>(size)));
}

void CloseComport(int port)
{
    const int descriptor = ports.descriptor(port);
    if (descriptor == closed)
        return;
    ports.set(port, closed);
    // The settings from before stay away on purpose: a line that fell back to them between the two
    // rates of a run would disturb the bootloader.
    close(descriptor);
}

int IsCTSEnabled(int port)
{
    const int descriptor = ports.descriptor(port);
    int signals = 0;
    if (descriptor == closed || ioctl(descriptor, TIOCMGET, &signals) != 0)
        return 0;
    return signals & TIOCM_CTS ? 1 : 0;
}

void cprintf(int port, const char *text)
{
    SendBuf(port, reinterpret_cast<const unsigned char *>(text),
            static_cast<int>(std::strlen(text)));
}

} // namespace IntelHexFile
