#include "support/pretendedports.h"

QStringList portsOfTheComputer;

QList<QextPortInfo> portInfos(const QStringList &names)
{
    QList<QextPortInfo> ports;
    for (const QString &name : names) {
        QextPortInfo port;
        port.portName = name;
        port.physName = QStringLiteral("/dev/") + name;
        ports.append(port);
    }
    return ports;
}

// Stands in front of the library's list, so that the ports of the test's computer play no part.
QList<QextPortInfo> QextSerialEnumerator::getPorts()
{
    return portInfos(portsOfTheComputer);
}
