#include "support/simulatorprocess.h"

#include <QFile>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

namespace
{
constexpr int patience = 10000; // milliseconds

int connectTo(const QString &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path);
    if (name.size() >= static_cast<int>(sizeof address.sun_path))
        qFatal("%s is too long for a socket", name.constData());
    std::memcpy(address.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::connect(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0)
        qFatal("the simulator does not take commands: %s", std::strerror(errno));
    return descriptor;
}

// The bytes that Intel HEX text as the simulator writes it holds between two byte addresses.
QByteArray bytesOf(const QByteArray &hexText, const QByteArray &blank, int from, int to)
{
    QByteArray bytes;
    for (int address = from; address < to; ++address)
        bytes.append(blank.at(address % blank.size()));
    int upper = 0;
    for (const QByteArray &line : hexText.split('\n')) {
        const QByteArray record = QByteArray::fromHex(line.mid(1));
        if (record.size() < 5)
            continue;
        const auto at = [&record](int index) { return static_cast<unsigned char>(record[index]); };
        if (at(3) == 4)
            upper = (at(4) * 256 + at(5)) << 16;
        for (int i = 0; at(3) == 0 && i < at(0); ++i) {
            const int address = upper + at(1) * 256 + at(2) + i;
            if (address >= from && address < to)
                bytes[address - from] = record[4 + i];
        }
    }
    return bytes;
}
} // namespace

SimulatorProcess::SimulatorProcess(const QStringList &options)
{
    const QStringList own{QStringLiteral("--with-parent"), QStringLiteral("--control"),
                          folder.filePath(QStringLiteral("control")), QStringLiteral("--log"),
                          folder.filePath(QStringLiteral("log"))};
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral(VELANTOR_SIM), own + options);
    while (!process.canReadLine()) {
        if (!process.waitForReadyRead(patience))
            qFatal("velantor-sim does not start");
    }
}

SimulatorProcess::~SimulatorProcess()
{
    if (isRunning())
        stop();
}

QString SimulatorProcess::port()
{
    const QString key = QStringLiteral("port ");
    for (const QString &line : control(QStringLiteral("state"))) {
        if (line.startsWith(key))
            return line.mid(key.size());
    }
    qFatal("the simulator tells no port");
}

QString SimulatorProcess::portName()
{
    return port().remove(QStringLiteral("/dev/"));
}

QStringList SimulatorProcess::control(const QString &command)
{
    const int descriptor = connectTo(folder.filePath(QStringLiteral("control")));
    const QByteArray line = command.toUtf8() + '\n';
    if (::send(descriptor, line.constData(), static_cast<std::size_t>(line.size()), MSG_NOSIGNAL) !=
        line.size())
        qFatal("the simulator does not listen");
    QByteArray answer;
    while (!answer.endsWith("ok\n")) {
        char buffer[1024];
        const ssize_t size = ::recv(descriptor, buffer, sizeof buffer, 0);
        if (size <= 0)
            qFatal("the simulator did not answer: %s", qPrintable(command));
        answer.append(buffer, static_cast<int>(size));
        if (answer.contains("error: "))
            qFatal("%s: %s", qPrintable(command), answer.constData());
    }
    ::close(descriptor);
    QStringList lines = QString::fromUtf8(answer).split(QLatin1Char('\n'));
    return lines.mid(0, lines.size() - 2);
}

QStringList SimulatorProcess::log() const
{
    QFile file(folder.filePath(QStringLiteral("log")));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("the simulator has no log");
    QStringList lines = QString::fromLatin1(file.readAll()).split(QLatin1Char('\n'));
    lines.removeLast();
    return lines;
}

QStringList SimulatorProcess::commands() const
{
    QStringList names;
    for (const QString &line : log()) {
        if (line.startsWith(QStringLiteral("in  ")))
            names.append(line.section(QLatin1Char(' '), 2, 2));
    }
    return names;
}

QByteArray SimulatorProcess::flash(int fromWordAddress, int toWordAddress)
{
    // A flash word is four image bytes and two word addresses.
    return saved(QStringLiteral("save"), QByteArray("\xFF\xFF\xFF\0", 4), 2 * fromWordAddress,
                 2 * toWordAddress);
}

QByteArray SimulatorProcess::eeprom(int from, int to)
{
    return saved(QStringLiteral("save-eeprom"), QByteArray("\xFF"), from, to);
}

int SimulatorProcess::stop()
{
    process.terminate();
    return waitForEnd();
}

int SimulatorProcess::waitForEnd()
{
    if (isRunning() && !process.waitForFinished(patience))
        qFatal("velantor-sim does not end");
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

QByteArray SimulatorProcess::saved(const QString &command, const QByteArray &blank, int from,
                                   int to)
{
    const QString path = folder.filePath(QStringLiteral("saved.hex"));
    control(command + QLatin1Char(' ') + path);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("the simulator has saved nothing");
    return bytesOf(file.readAll(), blank, from, to);
}
