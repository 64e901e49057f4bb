#include "device/portdropdown.h"

#include <QComboBox>

PortDropdown::PortDropdown(QComboBox *list, BuiltInPorts builtInPorts)
    : list(list), builtInPorts(builtInPorts)
{
}

void PortDropdown::insertPorts()
{
    for (const QextPortInfo &port : QextSerialEnumerator::getPorts()) {
        if (builtInPorts == BuiltInPorts::Listed || !port.portName.contains(QStringLiteral("ttyS")))
            list->insertItem(0, port.portName);
    }
}

void PortDropdown::add(const QextPortInfo &port)
{
    if (list->findText(port.portName) >= 0)
        return;
    list->clear();
    insertPorts();
    list->setCurrentText(port.portName);
}

void PortDropdown::remove(const QList<QextPortInfo> &ports)
{
    for (const QextPortInfo &port : ports) {
        const int index = list->findText(port.portName);
        if (index >= 0)
            list->removeItem(index);
    }
}
