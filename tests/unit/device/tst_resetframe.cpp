#include "device/resetframe.h"

#include "support/pseudoterminal.h"

#include <QTemporaryFile>
#include <QtTest>

#include <fcntl.h>
#include <unistd.h>

using UploadDownload::openFailureText;
using UploadDownload::sendResetFrame;

class ResetFrameTest : public QObject
{
    Q_OBJECT

private slots:
    void sendsSixBytes();
    void leavesThePortUsable();
    void missingPortIsTold();
    void portInUseIsTold();
    void folderIsNoPort();
    void fileIsNoPort();
    void textsOfErrors_data();
    void textsOfErrors();

private:
    static QString path(const PseudoTerminal &terminal)
    {
        return QStringLiteral("/dev/") + terminal.portName();
    }
};

void ResetFrameTest::sendsSixBytes()
{
    PseudoTerminal charger;
    QSerialPort port(path(charger));
    QVERIFY(sendResetFrame(&port));
    QVERIFY(!port.isOpen());
    QCOMPARE(port.baudRate(QSerialPort::Input), 38400);
    QCOMPARE(port.baudRate(QSerialPort::Output), 38400);
    QCOMPARE(port.dataBits(), QSerialPort::Data8);
    QCOMPARE(port.parity(), QSerialPort::NoParity);
    QCOMPARE(port.stopBits(), QSerialPort::OneStop);
    QCOMPARE(port.flowControl(), QSerialPort::NoFlowControl);
    // All that arrives, unchanged by the terminal.
    QCOMPARE(charger.receive().toHex(' '), QByteArray("55 55 00 00 00 04"));
    QCOMPARE(charger.receive(), QByteArray());
}

void ResetFrameTest::leavesThePortUsable()
{
    PseudoTerminal charger;
    for (int turn = 0; turn < 2; ++turn) {
        QSerialPort port(path(charger));
        QVERIFY(sendResetFrame(&port));
    }
    QCOMPARE(charger.receive().size(), 12);
    // The uploader opens it next.
    const int descriptor = open(QFile::encodeName(path(charger)).constData(), O_RDWR | O_NOCTTY);
    QVERIFY(descriptor >= 0);
    close(descriptor);
}

void ResetFrameTest::missingPortIsTold()
{
    QSerialPort port(QStringLiteral("/dev/velantor-no-such-port"));
    QVERIFY(!sendResetFrame(&port));
    QCOMPARE(port.error(), QSerialPort::DeviceNotFoundError);
}

void ResetFrameTest::portInUseIsTold()
{
    PseudoTerminal charger;
    QSerialPort user(path(charger));
    QVERIFY(user.open(QIODevice::ReadWrite));
    QSerialPort port(path(charger));
    QVERIFY(!sendResetFrame(&port));
    QCOMPARE(port.error(), QSerialPort::PermissionError);
    QCOMPARE(charger.receive(), QByteArray());
}

void ResetFrameTest::folderIsNoPort()
{
    // What there is before a port was chosen.
    QSerialPort port(QStringLiteral("/dev/"));
    QVERIFY(!sendResetFrame(&port));
    QVERIFY(port.error() != QSerialPort::NoError);
    QVERIFY(port.error() != QSerialPort::PermissionError);
}

void ResetFrameTest::fileIsNoPort()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    QSerialPort port(file.fileName());
    QVERIFY(!sendResetFrame(&port));
    QCOMPARE(file.size(), 0);
}

void ResetFrameTest::textsOfErrors_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<QString>("text");
    const QString unknown = QStringLiteral("<strong>Unknown error:</strong><br/><br/>Unknown error "
                                           "occurred when trying to open the serial port!");
    QTest::newRow("not found")
        << int(QSerialPort::DeviceNotFoundError)
        << QStringLiteral("<strong>Device Not Found error:<strong/><br/><br/>Could not find device "
                          "requested!");
    QTest::newRow("permission")
        << int(QSerialPort::PermissionError)
        << QStringLiteral("<strong>Permissions error:</strong><br/><br/>Could not open serial port "
                          "because it was in use already!");
    QTest::newRow("open already") << int(QSerialPort::OpenError) << unknown;
    QTest::newRow("resource") << int(QSerialPort::ResourceError) << unknown;
    QTest::newRow("unsupported") << int(QSerialPort::UnsupportedOperationError) << unknown;
    QTest::newRow("unknown") << int(QSerialPort::UnknownError) << unknown;
}

void ResetFrameTest::textsOfErrors()
{
    QFETCH(int, error);
    QFETCH(QString, text);
    QCOMPARE(openFailureText(QSerialPort::SerialPortError(error)), text);
}

QTEST_GUILESS_MAIN(ResetFrameTest)
#include "tst_resetframe.moc"
