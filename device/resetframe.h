#pragma once

#include <QSerialPort>
#include <QString>

namespace UploadDownload
{

/// Opens port, which has its name, at 38400 baud, sends the frame that makes the charger leave its
/// bootloader, and closes the port. The charger does not answer, so nothing is awaited.
///
/// Returns false when the port cannot be opened; port then tells the error. Blocks while the frame
/// is on its way, for some 20 s at most.
bool sendResetFrame(QSerialPort *port);

/// What to tell the user of a port that could not be opened.
QString openFailureText(QSerialPort::SerialPortError error);

} // namespace UploadDownload
