#include "IntelHexFile/rs232.h"
#include "support/capturedoutput.h"
#include "support/inchild.h"
#include "support/linepeer.h"

#include <QtTest>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

using namespace IntelHexFile;

namespace
{
/// The settings in force on the line.
termios settingsOf(const LinePeer &peer)
{
    termios settings = {};
    const int descriptor = open(peer.path().constData(), O_RDWR | O_NOCTTY);
    if (descriptor < 0 || tcgetattr(descriptor, &settings) != 0)
        qFatal("cannot look at the line");
    close(descriptor);
    return settings;
}

} // namespace

class Rs232Test : public QObject
{
    Q_OBJECT

private slots:
    void settings();
    void baud_data();
    void baud();
    void badBaud_data();
    void badBaud();
    void portNumbers_data();
    void portNumbers();
    void failingToOpen_data();
    void failingToOpen();
    void neverWaitsForTheLine();
    void takesNoControllingTerminal();
    void sendsAndPolls();
    void closedPort();
    void closeLeavesTheSettings();
    void reopensThePort();
    void pulledCable();
    void noClearToSend();
};

void Rs232Test::settings()
{
    LinePeer peer;
    QCOMPARE(OpenComport(0, 38400, peer.path().constData()), 0);
    const termios settings = settingsOf(peer);
    QCOMPARE(settings.c_iflag, tcflag_t(IGNPAR));
    QCOMPARE(settings.c_oflag, tcflag_t(0));
    QCOMPARE(settings.c_lflag, tcflag_t(0));
    QCOMPARE(settings.c_cflag, tcflag_t(CS8 | CLOCAL | CREAD | B38400));
    for (const cc_t character : settings.c_cc)
        QCOMPARE(int(character), 0);
    CloseComport(0);
}

void Rs232Test::baud_data()
{
    QTest::addColumn<int>("baud");
    QTest::addColumn<int>("speed");
    const struct {
        int baud;
        int speed;
    } rates[] = {{50, B50},         {75, B75},         {110, B110},        {134, B134},
                 {150, B150},       {200, B200},       {300, B300},        {600, B600},
                 {1200, B1200},     {1800, B1800},     {2400, B2400},      {4800, B4800},
                 {9600, B9600},     {19200, B19200},   {38400, B38400},    {57600, B57600},
                 {115200, B115200}, {230400, B230400}, {460800, B460800},  {500000, B500000},
                 {576000, B576000}, {921600, B921600}, {1000000, B1000000}};
    for (const auto &rate : rates)
        QTest::addRow("%d", rate.baud) << rate.baud << rate.speed;
}

void Rs232Test::baud()
{
    QFETCH(int, baud);
    LinePeer peer;
    QCOMPARE(OpenComport(0, baud, peer.path().constData()), 0);
    const termios settings = settingsOf(peer);
    CloseComport(0);
    QTEST(int(cfgetospeed(&settings)), "speed");
    QTEST(int(cfgetispeed(&settings)), "speed");
}

void Rs232Test::badBaud_data()
{
    QTest::addColumn<int>("baud");
    for (const int baud : {0, -1, 49, 9601, 14400, 1152000, 10000000})
        QTest::addRow("%d", baud) << baud;
}

void Rs232Test::badBaud()
{
    QFETCH(int, baud);
    LinePeer peer;
    int result = -1;
    QCOMPARE(printedBy([&] { result = OpenComport(0, baud, peer.path().constData()); }),
             QByteArray("invalid baudrate"));
    QCOMPARE(result, 1);
}

void Rs232Test::portNumbers_data()
{
    QTest::addColumn<int>("port");
    QTest::addColumn<int>("result");
    QTest::newRow("first") << 0 << 0;
    QTest::newRow("last") << 22 << 0;
    QTest::newRow("above") << 23 << 1;
    QTest::newRow("below") << -1 << 1;
}

void Rs232Test::portNumbers()
{
    QFETCH(int, port);
    LinePeer peer;
    QTEST(OpenComport(port, 9600, peer.path().constData()), "result");
    CloseComport(port);
}

void Rs232Test::failingToOpen_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::newRow("nothing there") << QByteArray("/dev/there-is-no-such-port");
    QTest::newRow("no terminal") << QByteArray("/dev/null");
    QTest::newRow("a folder") << QByteArray("/dev");
    QTest::newRow("no name") << QByteArray();
}

void Rs232Test::failingToOpen()
{
    QFETCH(QByteArray, path);
    QCOMPARE(OpenComport(0, 9600, path.constData()), 1);
    QCOMPARE(SendByte(0, 1), 1);
}

void Rs232Test::neverWaitsForTheLine()
{
    LinePeer peer;
    QCOMPARE(OpenComport(0, 9600, peer.path().constData()), 0);
    // The peer holds its own line open as well.
    int found = 0;
    for (int descriptor = 0; descriptor < 256; ++descriptor) {
        char name[64] = {};
        const int flags = fcntl(descriptor, F_GETFL);
        if (flags == -1 || !(flags & O_NONBLOCK) || ttyname_r(descriptor, name, sizeof name) != 0 ||
            peer.path() != name)
            continue;
        QCOMPARE(flags & O_ACCMODE, O_RDWR);
        QVERIFY(fcntl(descriptor, F_GETFD) & FD_CLOEXEC);
        ++found;
    }
    CloseComport(0);
    QCOMPARE(found, 1);
}

void Rs232Test::takesNoControllingTerminal()
{
    LinePeer peer;
    // A session without a terminal would get the first one that it opens without care.
    const int result = inChild([&peer] {
        if (setsid() == -1 || OpenComport(0, 9600, peer.path().constData()) != 0)
            return 2;
        return open("/dev/tty", O_RDWR) == -1 ? 0 : 1;
    });
    QCOMPARE(result, 0);
}

void Rs232Test::sendsAndPolls()
{
    LinePeer peer;
    QCOMPARE(OpenComport(0, 9600, peer.path().constData()), 0);
    unsigned char buffer[4];
    QCOMPARE(PollComport(0, buffer, sizeof buffer), 0);

    QCOMPARE(SendByte(0, 0x0A), 0);
    QCOMPARE(SendBuf(0, reinterpret_cast<const unsigned char *>("\x11\x13\x00\x03"), 4), 4);
    cprintf(0, "text");
    // Nothing on the way changes a byte or takes it for a signal.
    QCOMPARE(peer.waitForBytes(9), QByteArray("\x0A\x11\x13\x00\x03text", 9));

    peer.write(QByteArray("\x0D\x0A\x11\x00\x03", 5));
    QCOMPARE(PollComport(0, buffer, sizeof buffer), 4);
    QCOMPARE(QByteArray(reinterpret_cast<char *>(buffer), 4), QByteArray("\x0D\x0A\x11\x00", 4));
    QCOMPARE(PollComport(0, buffer, sizeof buffer), 1);
    QCOMPARE(int(buffer[0]), 3);
    QCOMPARE(PollComport(0, buffer, 0), 0);
    CloseComport(0);
}

void Rs232Test::closedPort()
{
    unsigned char byte = 1;
    for (const int port : {-1, 0, 23}) {
        CloseComport(port);
        QCOMPARE(PollComport(port, &byte, 1), 0);
        QCOMPARE(SendBuf(port, &byte, 1), -1);
        QCOMPARE(SendByte(port, byte), 1);
        QCOMPARE(IsCTSEnabled(port), 0);
        cprintf(port, "text");
    }
}

void Rs232Test::closeLeavesTheSettings()
{
    LinePeer peer;
    QCOMPARE(OpenComport(0, 57600, peer.path().constData()), 0);
    CloseComport(0);
    const termios settings = settingsOf(peer);
    QCOMPARE(int(cfgetospeed(&settings)), int(B57600));
}

void Rs232Test::reopensThePort()
{
    LinePeer first;
    LinePeer second;
    QCOMPARE(OpenComport(0, 9600, first.path().constData()), 0);
    QCOMPARE(OpenComport(0, 9600, second.path().constData()), 0);
    QCOMPARE(SendByte(0, 'x'), 0);
    QCOMPARE(second.waitForBytes(1), QByteArray("x"));
    QCOMPARE(first.received(), QByteArray());
    CloseComport(0);
}

void Rs232Test::pulledCable()
{
    auto peer = std::make_unique<LinePeer>();
    QCOMPARE(OpenComport(0, 9600, peer->path().constData()), 0);
    peer.reset();
    unsigned char byte = 1;
    QCOMPARE(PollComport(0, &byte, 1), 0);
    QCOMPARE(SendBuf(0, &byte, 1), -1);
    CloseComport(0);
}

void Rs232Test::noClearToSend()
{
    LinePeer peer;
    QCOMPARE(OpenComport(0, 9600, peer.path().constData()), 0);
    QCOMPARE(IsCTSEnabled(0), 0);
    CloseComport(0);
}

QTEST_GUILESS_MAIN(Rs232Test)
#include "tst_rs232.moc"
