#include "device/resetframe.h"

#include <QCoreApplication>
#include <QThread>

namespace UploadDownload
{

namespace
{

// Two opening bytes, the two bytes of the command, their sum, the closing byte.
const QByteArray RESET_FRAME = QByteArray::fromHex("555500000004");
constexpr int WRITE_TIMEOUT = 20000; // ms
/// Six bytes of ten bits take 1.6 ms at 38400 baud, and closing the port would cut them off.
constexpr unsigned long TIME_ON_THE_LINE = 2250; // us

} // namespace

bool sendResetFrame(QSerialPort *port)
{
    port->setBaudRate(QSerialPort::Baud38400, QSerialPort::AllDirections);
    if (!port->open(QIODevice::ReadWrite))
        return false;
    port->write(RESET_FRAME);
    port->waitForBytesWritten(WRITE_TIMEOUT);
    QThread::usleep(TIME_ON_THE_LINE);
    port->close();
    return true;
}

QString openFailureText(QSerialPort::SerialPortError error)
{
    switch (error) {
    case QSerialPort::DeviceNotFoundError:
        return QCoreApplication::translate(
            "UploadDownload", "<strong>Device Not Found error:<strong/><br/><br/>Could not find "
                              "device requested!");
    case QSerialPort::PermissionError:
        return QCoreApplication::translate(
            "UploadDownload", "<strong>Permissions error:</strong><br/><br/>Could not open serial "
                              "port because it was in use already!");
    default:
        return QCoreApplication::translate(
            "UploadDownload", "<strong>Unknown error:</strong><br/><br/>Unknown error occurred "
                              "when trying to open the serial port!");
    }
}

} // namespace UploadDownload
