#include "support/patience.h"
#include "support/simulatorprocess.h"

#include <QDir>
#include <QFileInfo>
#include <QSerialPort>
#include <QTest>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace
{
const QByteArray versionFrame = QByteArray::fromHex("55550002FE04");
const QByteArray versionReply = QByteArray::fromHex("5555000200000106F704");
/// A read of 64 words.
const QByteArray readFrame = QByteArray::fromHex("55550140009C002304");
const QByteArray resetFrame = QByteArray::fromHex("555500000004");

/// The client's side of the port, as plain as can be.
class Client
{
public:
    explicit Client(const QString &path, speed_t speed = B38400)
        : descriptor(::open(qPrintable(path), O_RDWR | O_NOCTTY | O_NONBLOCK))
    {
        termios settings{};
        settings.c_iflag = IGNPAR;
        settings.c_cflag = CS8 | CLOCAL | CREAD;
        ::cfsetspeed(&settings, speed);
        if (descriptor < 0 || ::tcsetattr(descriptor, TCSANOW, &settings) != 0)
            qFatal("cannot open %s", qPrintable(path));
    }
    ~Client() { ::close(descriptor); }

    void send(const QByteArray &bytes)
    {
        QCOMPARE(::write(descriptor, bytes.constData(), static_cast<size_t>(bytes.size())),
                 static_cast<ssize_t>(bytes.size()));
    }
    QByteArray received()
    {
        char buffer[4096];
        const ssize_t size = ::read(descriptor, buffer, sizeof buffer);
        if (size > 0)
            bytes.append(buffer, static_cast<int>(size));
        return bytes;
    }
    /// Waits until so many bytes have come since the beginning.
    bool waitForBytes(int count)
    {
        while (received().size() < count) {
            pollfd end{descriptor, POLLIN, 0};
            if (::poll(&end, 1, 10000) != 1)
                return false;
        }
        return true;
    }
    /// Whether the other end of the line is gone.
    bool isHungUp()
    {
        char byte = 0;
        return ::write(descriptor, &byte, 1) < 0 && errno == EIO;
    }

private:
    int descriptor;
    QByteArray bytes;
};
} // namespace

/// The program as a whole: port, announcement, signals, options and control socket.
class SimulatorProcessTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void answersAndEchoes();
    void keepsThePortForTheNextClient();
    void losesWhatNoClientRead();
    void hearsTheResetOfAClientThatIsGone();
    void opensAsASerialPort();
    void comesBackAfterAReset();
    void greetsAtPowerOn();
    void takesItsTimeOnTheWire_data();
    void takesItsTimeOnTheWire();
    void waitsWithoutUsingTheProcessor();
    void survivesNoise();
    void announcesItself();
    void announcesNothingWithoutARuntimeDirectory();
    void savesAtTheEnd();
    void takesCommands();
    void pulledCableEndsIt();
    void pulledCableCanBePluggedAgain();
    void endsWithItsParent();
    void refusesBadStarts_data();
    void refusesBadStarts();
    void tellsItsOptions();

private:
    QDir announcements() const
    {
        return QDir(QString::fromLocal8Bit(qgetenv("XDG_RUNTIME_DIR")) +
                    QStringLiteral("/velantor-ports"));
    }
    QByteArray announced() const;
};

QByteArray SimulatorProcessTest::announced() const
{
    QByteArray all;
    const QDir folder = announcements();
    for (const QString &name : folder.entryList(QDir::Files | QDir::Hidden)) {
        QFile file(folder.filePath(name));
        if (file.open(QIODevice::ReadOnly))
            all += file.readAll();
    }
    return all;
}

void SimulatorProcessTest::init()
{
    announcements().removeRecursively();
}

void SimulatorProcessTest::answersAndEchoes()
{
    SimulatorProcess simulator;
    Client client(simulator.port());
    client.send(versionFrame);
    QTRY_COMPARE(client.received(), versionFrame + versionReply);
    QCOMPARE(simulator.commands(), QStringList{QStringLiteral("version")});
    const QStringList expected{QStringLiteral("--  plugged in"), QStringLiteral("--  38400 baud"),
                               QStringLiteral("in  version 55 55 00 02 FE 04"),
                               QStringLiteral("out version 55 55 00 02 00 00 01 06 F7 04")};
    QCOMPARE(simulator.log(), expected);
}

void SimulatorProcessTest::keepsThePortForTheNextClient()
{
    SimulatorProcess simulator;
    for (int round = 0; round < 20; ++round) {
        Client client(simulator.port(), round % 2 ? B38400 : B9600);
        client.send(versionFrame);
        QTRY_COMPARE(client.received(), versionFrame + versionReply);
    }
}

void SimulatorProcessTest::losesWhatNoClientRead()
{
    SimulatorProcess simulator;
    {
        Client client(simulator.port());
        client.send(versionFrame + QByteArray::fromHex("5555"));
        QTRY_COMPARE(simulator.log().size(), 4);
    }
    Client next(simulator.port());
    next.send(versionFrame);
    QTRY_VERIFY(next.received().size() >= versionFrame.size() + versionReply.size());
    QCOMPARE(next.received(), versionFrame + versionReply);
}

void SimulatorProcessTest::hearsTheResetOfAClientThatIsGone()
{
    SimulatorProcess simulator({QStringLiteral("--pace")});
    Client(simulator.port()).send(resetFrame);
    QTRY_COMPARE(simulator.control(QStringLiteral("state")).value(1), QStringLiteral("mode left"));
    Client client(simulator.port());
    client.send(versionFrame);
    QTRY_COMPARE(client.received(), versionFrame);
    QCOMPARE(simulator.commands(), QStringList{QStringLiteral("reset")});
}

void SimulatorProcessTest::opensAsASerialPort()
{
    SimulatorProcess simulator;
    for (int round = 0; round < 2; ++round) {
        QSerialPort port(simulator.port());
        QVERIFY(port.setBaudRate(38400));
        QVERIFY2(port.open(QIODevice::ReadWrite), qPrintable(port.errorString()));
        QCOMPARE(port.write(resetFrame), qint64(resetFrame.size()));
        QVERIFY(port.waitForBytesWritten(20000));
        // Closing restores the settings of before, so the charger has to hear the frame first.
        QTRY_COMPARE(simulator.commands().size(), round + 1);
        port.close();
        simulator.control(QStringLiteral("enter"));
    }
    QCOMPARE(simulator.log().filter(QStringLiteral(" baud")),
             QStringList{QStringLiteral("--  38400 baud")});
    Client client(simulator.port());
    client.send(versionFrame);
    QTRY_COMPARE(client.received(), versionFrame + versionReply);
}

void SimulatorProcessTest::comesBackAfterAReset()
{
    SimulatorProcess simulator({QStringLiteral("--reenter"), QStringLiteral("0.05")});
    Client client(simulator.port());
    client.send(resetFrame);
    QTRY_VERIFY(simulator.log().contains(QStringLiteral("--  left the bootloader")));
    QTRY_VERIFY(simulator.log().contains(QStringLiteral("--  in the bootloader")));
    client.send(versionFrame);
    QTRY_COMPARE(client.received(), resetFrame + versionFrame + versionReply);
}

void SimulatorProcessTest::greetsAtPowerOn()
{
    SimulatorProcess simulator({QStringLiteral("--power-on")});
    Client client(simulator.port());
    client.send(versionFrame);
    QTRY_COMPARE(client.received(), versionFrame);
    client.send(QByteArray::fromHex("555555"));
    const QByteArray greeted = versionFrame + QByteArray::fromHex("555555") + "CA\x01\x06";
    QTRY_COMPARE(client.received(), greeted);
    client.send(versionFrame);
    QTRY_COMPARE(client.received(), greeted + versionFrame + versionReply);
}

void SimulatorProcessTest::takesItsTimeOnTheWire_data()
{
    QTest::addColumn<int>("speed");
    QTest::addColumn<int>("milliseconds");
    // A read of 64 words: 9 bytes out and 2 + 5 + 256 + 1 + 1 back, at ten bits each; less would be
    // faster than the wire.
    QTest::newRow("9600 baud") << int(B9600) << 274 * 10 * 1000 / 9600;
    QTest::newRow("38400 baud") << int(B38400) << 274 * 10 * 1000 / 38400;
}

void SimulatorProcessTest::takesItsTimeOnTheWire()
{
    QFETCH(int, speed);
    QFETCH(int, milliseconds);
    SimulatorProcess simulator({QStringLiteral("--pace")});
    Client client(simulator.port(), static_cast<speed_t>(speed));
    QElapsedTimer timer;
    timer.start();
    client.send(readFrame);
    QTRY_COMPARE(client.received().size(), 9 + 265);
    QVERIFY2(timer.elapsed() >= milliseconds, qPrintable(QString::number(timer.elapsed())));
}

void SimulatorProcessTest::waitsWithoutUsingTheProcessor()
{
    SimulatorProcess simulator;
    const auto ticks = [&simulator] {
        QFile file(QStringLiteral("/proc/%1/stat").arg(simulator.processId()));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("no such process");
        const QList<QByteArray> fields = file.readAll().split(' ');
        return fields[13].toInt() + fields[14].toInt();
    };
    Client client(simulator.port());
    client.send(versionFrame);
    QTRY_COMPARE(client.received(), versionFrame + versionReply);
    // As long as the answer of another simulator takes on a slow wire, some 285 milliseconds.
    SimulatorProcess clock({QStringLiteral("--pace")});
    Client slow(clock.port(), B9600);
    const int before = ticks();
    slow.send(readFrame);
    QTRY_COMPARE(slow.received().size(), 9 + 265);
    QVERIFY(ticks() - before <= 1);
}

void SimulatorProcessTest::survivesNoise()
{
    SimulatorProcess simulator;
    Client client(simulator.port());
    quint32 random = 1;
    QByteArray noise;
    for (int i = 0; i < 60000; ++i) {
        random = random * 1664525u + 1013904223u;
        const QByteArray likely = QByteArray::fromHex("555504050001020304050855");
        const auto pick = random >> 24;
        noise.append(pick < 160 ? likely.at(static_cast<int>(pick) % likely.size())
                                : static_cast<char>(random >> 16));
    }
    for (int at = 0; at < noise.size(); at += 1000) {
        client.send(noise.mid(at, 1000));
        // Every byte is echoed, whatever it leads to.
        QVERIFY(client.waitForBytes(at + 1000));
        simulator.control(QStringLiteral("enter"));
    }
    simulator.control(QStringLiteral("enter"));
    QVERIFY(simulator.isRunning());
    QCOMPARE(simulator.stop(), 0);
}

void SimulatorProcessTest::announcesItself()
{
    // What a simulator that was killed has left; the process of this number cannot be there.
    QVERIFY(announcements().mkpath(QStringLiteral(".")));
    QFile leftOver(announcements().filePath(QStringLiteral("velantor-sim-999999999")));
    QVERIFY(leftOver.open(QIODevice::WriteOnly));
    QFile foreign(announcements().filePath(QStringLiteral("other")));
    QVERIFY(foreign.open(QIODevice::WriteOnly));

    {
        SimulatorProcess first;
        QCOMPARE(announced(), (first.portName() + QLatin1Char('\n')).toLatin1());
        QVERIFY(first.portName().startsWith(QStringLiteral("pts/")));
        QVERIFY(!leftOver.exists());
        SimulatorProcess second;
        QCOMPARE(announced().count('\n'), 2);
        QVERIFY(first.port() != second.port());
    }
    QCOMPARE(announced(), QByteArray());
    QVERIFY(foreign.exists());
}

void SimulatorProcessTest::announcesNothingWithoutARuntimeDirectory()
{
    const QByteArray directory = qgetenv("XDG_RUNTIME_DIR");
    qunsetenv("XDG_RUNTIME_DIR");
    {
        SimulatorProcess simulator;
        QVERIFY(QFileInfo::exists(simulator.port()));
    }
    qputenv("XDG_RUNTIME_DIR", directory);
    QVERIFY(!announcements().exists());
}

void SimulatorProcessTest::savesAtTheEnd()
{
    QTemporaryDir folder;
    for (const char *signal : {"TERM", "INT", "HUP"}) {
        const QString file = folder.filePath(QString::fromLatin1(signal));
        SimulatorProcess simulator(
            {QStringLiteral("--hardware"), QStringLiteral("24v"), QStringLiteral("--save"), file});
        QVERIFY(!QFileInfo::exists(file));
        QCOMPARE(QProcess::execute(QStringLiteral("kill"),
                                   {QStringLiteral("-%1").arg(QString::fromLatin1(signal)),
                                    QString::number(simulator.processId())}),
                 0);
        QCOMPARE(simulator.waitForEnd(), 0);
        QFile saved(file);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QFile page(QStringLiteral(VELANTOR_SOURCE_DIR "/simulator/pages/24v.hex"));
        QVERIFY(page.open(QIODevice::ReadOnly));
        QCOMPARE(saved.readAll(), page.readAll());
        QCOMPARE(announced(), QByteArray());
    }
}

void SimulatorProcessTest::takesCommands()
{
    SimulatorProcess simulator;
    Client client(simulator.port());
    simulator.fault(QStringLiteral("version=0107"));
    simulator.fault(QStringLiteral("silent@read"));
    QCOMPARE(
        simulator.control(QStringLiteral("state")).mid(1),
        (QStringList{QStringLiteral("mode bootloader"), QStringLiteral("commands 0"),
                     QStringLiteral("fault version=0107"), QStringLiteral("fault silent@read")}));
    client.send(versionFrame);
    QTRY_COMPARE(client.received(), versionFrame + QByteArray::fromHex("5555000200000107F604"));
    simulator.control(QStringLiteral("clear"));
    QCOMPARE(simulator.control(QStringLiteral("state")).size(), 3);

    QCOMPARE(simulator.flash(0x9C00, 0x9C02), QByteArray::fromHex("FFFFFF00"));
    simulator.control(QStringLiteral("hardware 48v"));
    QCOMPARE(simulator.flash(0x9C00, 0x9C02), QByteArray::fromHex("D4290300"));
    simulator.control(QStringLiteral("page " VELANTOR_SOURCE_DIR "/simulator/pages/24v.hex"));
    QCOMPARE(simulator.flash(0x9C00, 0x9C02), QByteArray::fromHex("F6070300"));

    simulator.control(QStringLiteral("leave"));
    QVERIFY(simulator.log().contains(QStringLiteral("--  left the bootloader")));
    simulator.control(QStringLiteral("enter"));
    QVERIFY(simulator.log().contains(QStringLiteral("--  in the bootloader")));
    simulator.control(QStringLiteral("power-on"));
    QVERIFY(simulator.log().contains(QStringLiteral("--  powered on")));
    simulator.control(QStringLiteral("quit"));
    QCOMPARE(simulator.waitForEnd(), 0);
}

void SimulatorProcessTest::pulledCableEndsIt()
{
    QProcess simulator;
    simulator.start(QStringLiteral(VELANTOR_SIM),
                    {QStringLiteral("--fault"), QStringLiteral("unplug@version:2")});
    while (!simulator.canReadLine())
        QVERIFY(simulator.waitForReadyRead(10000));
    const QString port = QString::fromLatin1(simulator.readLine().trimmed());
    Client client(port);
    client.send(versionFrame);
    QTRY_COMPARE(client.received(), versionFrame + versionReply);
    client.send(versionFrame);
    QVERIFY(simulator.waitForFinished(10000));
    QCOMPARE(simulator.exitCode(), 0);
    QVERIFY(client.isHungUp());
    QCOMPARE(announced(), QByteArray());
}

void SimulatorProcessTest::pulledCableCanBePluggedAgain()
{
    SimulatorProcess simulator;
    Client client(simulator.port());
    simulator.fault(QStringLiteral("unplug"));
    client.send(versionFrame);
    QTRY_COMPARE(simulator.port(), QStringLiteral("unplugged"));
    QVERIFY(client.isHungUp());
    QCOMPARE(announced(), QByteArray());

    simulator.control(QStringLiteral("plug"));
    QCOMPARE(announced(), (simulator.portName() + QLatin1Char('\n')).toLatin1());
    Client next(simulator.port());
    next.send(versionFrame);
    QTRY_COMPARE(next.received(), versionFrame + versionReply);

    simulator.control(QStringLiteral("unplug"));
    QCOMPARE(simulator.port(), QStringLiteral("unplugged"));
}

void SimulatorProcessTest::endsWithItsParent()
{
    QProcess shell;
    shell.start(QStringLiteral("sh"),
                {QStringLiteral("-c"), QStringLiteral("\"$0\" --with-parent & echo $!; read line"),
                 QStringLiteral(VELANTOR_SIM)});
    QByteArray lines;
    while (lines.count('\n') < 2) {
        QVERIFY(shell.waitForReadyRead(10000));
        lines += shell.readAllStandardOutput();
    }
    QTRY_COMPARE(announced().count('\n'), 1);
    shell.kill();
    QVERIFY(shell.waitForFinished(10000));
    QTRY_COMPARE(announced(), QByteArray());
}

void SimulatorProcessTest::refusesBadStarts_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("complaint");
    QTest::newRow("unknown option") << QStringList{QStringLiteral("--what")}
                                    << QByteArray("there is no option \"--what\"; see --help");
    QTest::newRow("page that is not there")
        << QStringList{QStringLiteral("--page"), QStringLiteral("/nowhere.hex")}
        << QByteArray("/nowhere.hex: cannot be read");
    QTest::newRow("page that is no HEX file")
        << QStringList{QStringLiteral("--page"), QStringLiteral(VELANTOR_SOURCE_DIR "/.gitignore")}
        << QByteArray(VELANTOR_SOURCE_DIR "/.gitignore: there is no end record");
    QTest::newRow("log that cannot be written")
        << QStringList{QStringLiteral("--log"), QStringLiteral("/nowhere/log")}
        << QByteArray("/nowhere/log: cannot be written");
}

void SimulatorProcessTest::refusesBadStarts()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, complaint);
    QProcess simulator;
    simulator.start(QStringLiteral(VELANTOR_SIM), arguments);
    QVERIFY(simulator.waitForFinished(10000));
    QCOMPARE(simulator.exitCode(), 1);
    QCOMPARE(simulator.readAllStandardError(), "velantor-sim: " + complaint + '\n');
    QCOMPARE(simulator.readAllStandardOutput(), QByteArray());
}

void SimulatorProcessTest::tellsItsOptions()
{
    QProcess simulator;
    simulator.start(QStringLiteral(VELANTOR_SIM), {QStringLiteral("--help")});
    QVERIFY(simulator.waitForFinished(10000));
    QCOMPARE(simulator.exitCode(), 0);
    const QByteArray text = simulator.readAllStandardOutput();
    for (const char *option :
         {"--page", "--hardware", "--pace", "--power-on", "--reenter", "--log", "--save",
          "--save-eeprom", "--control", "--fault", "--with-parent", "--help", "24v|48v|48v-v1|72v",
          "silent", "slow-erase=SECONDS", "plug  "})
        QVERIFY2(text.contains(option), option);
}

QTEST_GUILESS_MAIN(SimulatorProcessTest)
#include "tst_simulatorprocess.moc"
