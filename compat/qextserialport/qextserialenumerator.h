#pragma once

#include <QList>
#include <QMetaType>
#include <QString>

/// What is known of one serial port.
struct QextPortInfo {
    QString physName;   ///< path of the device, such as "/dev/ttyUSB0"
    QString portName;   ///< the path without "/dev/": "ttyUSB0"
    QString friendName; ///< a name for people; the port's name where the system has none
    QString enumName;   ///< where the device hangs: "USB", "simulator" or empty
    int vendorID = 0;   ///< USB vendor, 0 where there is none
    int productID = 0;  ///< USB product, 0 where there is none
};

Q_DECLARE_METATYPE(QextPortInfo)

/// Lists the serial ports of this computer.
class QextSerialEnumerator
{
public:
    /// The ports of this moment, each name once: those of the system, then the simulated chargers
    /// in the order of their numbers.
    static QList<QextPortInfo> getPorts();
};
