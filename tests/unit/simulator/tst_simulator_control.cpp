#include "simulator/controlsocket.h"
#include "simulator/simulation.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using simulator::ControlSocket;

/// Commands at run time, and the socket that brings them.
class SimulatorControlTest : public QObject
{
    Q_OBJECT

private slots:
    void answers_data();
    void answers();
    void savesAndLoads();
    void socketServesLines();
    void socketTakesOverFromTheDead();
    void socketIsRefused_data();
    void socketIsRefused();
};

void SimulatorControlTest::answers_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("good fault") << QByteArray("fault silent@erase") << QByteArray("ok\n");
    QTest::newRow("bad fault") << QByteArray("fault loud")
                               << QByteArray("error: there is no fault \"loud\"\n");
    QTest::newRow("fault without a text")
        << QByteArray("fault") << QByteArray("error: there is no fault \"\"\n");
    QTest::newRow("hardware") << QByteArray("hardware 72v") << QByteArray("ok\n");
    QTest::newRow("unknown hardware")
        << QByteArray("hardware 36v")
        << QByteArray("error: hardware is one of 24v|48v|48v-v1|72v\n");
    QTest::newRow("page that is not there")
        << QByteArray("page /nowhere") << QByteArray("error: /nowhere: cannot be read\n");
    QTest::newRow("folder as a page")
        << QByteArray("page /") << QByteArray("error: /: cannot be read\n");
    QTest::newRow("nowhere to save to")
        << QByteArray("save /nowhere/x") << QByteArray("error: /nowhere/x: cannot be written\n");
    QTest::newRow("unknown") << QByteArray("boil")
                             << QByteArray("error: there is no command \"boil\"\n");
    QTest::newRow("nothing") << QByteArray() << QByteArray("error: there is no command \"\"\n");
    QTest::newRow("value too many")
        << QByteArray("clear all") << QByteArray("error: \"clear\" is no command with a value\n");
    QTest::newRow("plugged already") << QByteArray("plug") << QByteArray("ok\n");
}

void SimulatorControlTest::answers()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, answer);
    simulator::Simulation simulation({});
    std::string error;
    QVERIFY2(simulation.start(&error), error.c_str());
    QCOMPARE(QByteArray::fromStdString(simulation.control(command.toStdString())), answer);
}

void SimulatorControlTest::savesAndLoads()
{
    QTemporaryDir folder;
    const std::string file = folder.filePath(QStringLiteral("saved.hex")).toStdString();
    simulator::Options options;
    options.hardware = "24v";
    simulator::Simulation simulation(options);
    std::string error;
    QVERIFY(simulation.start(&error));
    QCOMPARE(simulation.control("save " + file), std::string("ok\n"));
    simulator::Simulation other({});
    QVERIFY(other.start(&error));
    QCOMPARE(other.control("page " + file), std::string("ok\n"));
    QCOMPARE(other.control("save " + file + "2"), std::string("ok\n"));
    QFile first(QString::fromStdString(file));
    QFile second(QString::fromStdString(file + "2"));
    QVERIFY(first.open(QIODevice::ReadOnly) && second.open(QIODevice::ReadOnly));
    QCOMPARE(second.readAll(), first.readAll());
}

namespace
{
std::string quote(const std::string &command)
{
    return '<' + command + ">\n";
}

int connectTo(const std::string &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int client = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (::connect(client, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0)
        qFatal("nobody listens");
    return client;
}

QByteArray received(int client)
{
    char buffer[1000];
    const ssize_t size = ::recv(client, buffer, sizeof buffer, MSG_DONTWAIT);
    return size > 0 ? QByteArray(buffer, static_cast<int>(size)) : QByteArray();
}
} // namespace

void SimulatorControlTest::socketServesLines()
{
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("control")).toStdString();
    {
        std::string error;
        const auto socket = ControlSocket::listenAt(path, quote, &error);
        QVERIFY2(socket, error.c_str());
        const int client = connectTo(path);
        const auto send = [&](const std::string &text) {
            QCOMPARE(::send(client, text.data(), text.size(), 0), ssize_t(text.size()));
            socket->serve();
        };
        send("one\ntw");
        QCOMPARE(received(client), QByteArray("<one>\n"));
        QCOMPARE(socket->descriptors().size(), size_t(2));
        send("o\n\n");
        QCOMPARE(received(client), QByteArray("<two>\n<>\n"));
        // One that never ends its line is cut off.
        send(std::string(9000, 'x'));
        QCOMPARE(socket->descriptors().size(), size_t(1));
        ::close(client);

        ::close(connectTo(path));
        socket->serve();
        QCOMPARE(socket->descriptors().size(), size_t(1));
    }
    QVERIFY(!QFileInfo::exists(QString::fromStdString(path)));
}

void SimulatorControlTest::socketTakesOverFromTheDead()
{
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("control")).toStdString();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int left = ::socket(AF_UNIX, SOCK_STREAM, 0);
    QVERIFY(::bind(left, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0);
    ::close(left);
    std::string error;
    const auto socket = ControlSocket::listenAt(path, quote, &error);
    QVERIFY2(socket, error.c_str());
    // But not from the living.
    QVERIFY(!ControlSocket::listenAt(path, quote, &error));
    QVERIFY(error.find(path + ": ") == 0);
    QVERIFY(QFileInfo::exists(QString::fromStdString(path)));
}

void SimulatorControlTest::socketIsRefused_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("too long") << QString(200, QLatin1Char('x'));
    QTest::newRow("no such folder") << QStringLiteral("/nowhere/control");
}

void SimulatorControlTest::socketIsRefused()
{
    QFETCH(QString, path);
    std::string error;
    QVERIFY(!ControlSocket::listenAt(path.toStdString(), quote, &error));
    QVERIFY(error.find(path.toStdString() + ": ") == 0);
}

QTEST_GUILESS_MAIN(SimulatorControlTest)
#include "tst_simulator_control.moc"
