#include "device/comdevicewatcher.h"

#include <QPointer>

#include <chrono>

namespace
{

constexpr std::chrono::milliseconds PERIOD{1000};

} // namespace

COMDeviceWatcher::COMDeviceWatcher(QObject *parent)
    : QObject(parent), lastPorts(std::make_unique<Snapshot>())
{
    connect(&timer, &QTimer::timeout, this, &COMDeviceWatcher::onTimerFired);
}

COMDeviceWatcher::~COMDeviceWatcher()
{
    stopWatching();
}

void COMDeviceWatcher::startWatching()
{
    lastPorts = currentPorts();
    timer.start(PERIOD);
    watching = true;
}

void COMDeviceWatcher::stopWatching()
{
    if (!watching)
        return;
    timer.stop();
    watching = false;
}

void COMDeviceWatcher::onTimerFired()
{
    auto ports = currentPorts();
    QList<QextPortInfo> added;
    for (auto port = ports->constBegin(); port != ports->constEnd(); ++port) {
        if (!lastPorts->contains(port.key()))
            added.append(port.value());
    }
    QList<QextPortInfo> removed;
    for (auto port = lastPorts->constBegin(); port != lastPorts->constEnd(); ++port) {
        if (!ports->contains(port.key()))
            removed.append(port.value());
    }
    // Before any signal: a receiver may run an event loop in which the next look comes.
    lastPorts = std::move(ports);

    // A receiver may also close the dialog that owns this watcher.
    const QPointer<COMDeviceWatcher> guard(this);
    if (!added.isEmpty())
        emit devicesAdded(added);
    if (guard && !removed.isEmpty())
        emit devicesRemoved(removed);
}

std::unique_ptr<COMDeviceWatcher::Snapshot> COMDeviceWatcher::currentPorts()
{
    auto ports = std::make_unique<Snapshot>();
    for (const QextPortInfo &port : QextSerialEnumerator::getPorts())
        ports->insert(port.portName, port);
    return ports;
}
