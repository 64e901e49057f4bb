#include "support/linepeer.h"

#include <QElapsedTimer>

#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

LinePeer::LinePeer(Echo echo, Answer answer)
    : master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)), echo(echo), answer(std::move(answer))
{
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0 || pipe2(wake, O_CLOEXEC) != 0)
        qFatal("no pseudo-terminal for the test");
    name = ptsname(master);
    // Held open here (and by no child process), the line stays when the code under test closes and
    // reopens it.
    slave = open(name.constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios raw = {};
    raw.c_cflag = CS8 | CREAD | CLOCAL;
    if (slave < 0 || tcsetattr(slave, TCSANOW, &raw) != 0)
        qFatal("cannot open the line of the test");
    thread = std::thread([this] { serve(); });
}

LinePeer::~LinePeer()
{
    close(wake[1]);
    thread.join();
    close(wake[0]);
    close(slave);
    close(master);
}

void LinePeer::write(const QByteArray &text)
{
    if (::write(master, text.constData(), std::size_t(text.size())) != text.size())
        qFatal("cannot write to the line");
}

void LinePeer::waitUntilTaken() const
{
    int unread = 1;
    while (ioctl(slave, FIONREAD, &unread) == 0 && unread > 0)
        std::this_thread::yield();
}

QByteArray LinePeer::received() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return bytes;
}

QByteArray LinePeer::waitForBytes(int count) const
{
    QElapsedTimer clock;
    clock.start();
    while (received().size() < count && clock.elapsed() < 30000)
        std::this_thread::yield();
    return received();
}

QList<QByteArray> LinePeer::payloads() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return frames;
}

QByteArray LinePeer::framed(const QByteArray &payload)
{
    int sum = 0;
    for (const char byte : payload)
        sum += static_cast<unsigned char>(byte);
    QByteArray result("\x55\x55");
    for (const char byte : payload + static_cast<char>(-sum)) {
        if (byte == '\x04' || byte == '\x05' || byte == '\x55')
            result.append('\x05');
        result.append(byte);
    }
    return result + '\x04';
}

void LinePeer::serve()
{
    pollfd events[] = {{master, POLLIN, 0}, {wake[0], POLLIN, 0}};
    while (poll(events, 2, -1) > 0 && events[1].revents == 0) {
        char buffer[1024];
        const ssize_t size = read(master, buffer, sizeof buffer);
        if (size <= 0)
            return;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            bytes.append(buffer, int(size));
        }
        if (echo == Echo::On)
            write(QByteArray(buffer, int(size)));
        for (ssize_t i = 0; i < size; ++i)
            take(buffer[i]);
    }
}

void LinePeer::take(char byte)
{
    if (startBytes < 2) {
        startBytes = byte == '\x55' ? startBytes + 1 : 0;
        return;
    }
    if (!escaped && byte == '\x05') {
        escaped = true;
        return;
    }
    if (escaped || byte != '\x04') {
        escaped = false;
        frame.append(byte);
        return;
    }
    const QByteArray payload = frame.left(frame.size() - 1);
    {
        const std::lock_guard<std::mutex> lock(mutex);
        frames.append(payload);
    }
    frame.clear();
    startBytes = 0;
    if (answer)
        write(answer(payload));
}
