#include "qextserialenumerator.h"

#include "announcedports.h"

#include <QSerialPortInfo>

namespace
{

QextPortInfo fromSystem(const QSerialPortInfo &info)
{
    QextPortInfo port;
    port.physName = info.systemLocation();
    port.portName = info.portName();
    port.friendName = info.description().isEmpty() ? info.portName() : info.description();
    if (info.hasVendorIdentifier()) {
        port.enumName = QStringLiteral("USB");
        port.vendorID = info.vendorIdentifier();
    }
    if (info.hasProductIdentifier())
        port.productID = info.productIdentifier();
    return port;
}

QextPortInfo simulated(const QString &name)
{
    QextPortInfo port;
    port.physName = QStringLiteral("/dev/") + name;
    port.portName = name;
    port.friendName = QStringLiteral("Simulated charger (%1)").arg(name);
    port.enumName = QStringLiteral("simulator");
    return port;
}

} // namespace

QList<QextPortInfo> QextSerialEnumerator::getPorts()
{
    QList<QextPortInfo> ports;
    for (const QSerialPortInfo &info : QSerialPortInfo::availablePorts())
        ports.append(fromSystem(info));
    for (const QString &name : announcedPorts())
        ports.append(simulated(name));
    return ports;
}
