#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <QTimer>

#include <memory>

#include <qextserialenumerator.h>

/// Tells its owner when serial ports appear and disappear; looks once a second while watching.
///
/// A port is known by its name: one that leaves and comes back between two looks, or that changes
/// in anything else, is no change.
class COMDeviceWatcher : public QObject
{
    Q_OBJECT

public:
    explicit COMDeviceWatcher(QObject *parent);
    ~COMDeviceWatcher() override;

    /// Begins to look. The ports of this moment count as known and are never reported as added.
    void startWatching();
    /// Ends looking; does nothing when not watching.
    void stopWatching();

signals:
    /// Ports that the last look had not seen; in no particular order, never empty.
    void devicesAdded(QList<QextPortInfo> ports);
    /// Ports of the last look that are gone; emitted after devicesAdded() of the same look.
    void devicesRemoved(QList<QextPortInfo> ports);

public slots:
    /// Takes one look; also what the timer calls.
    void onTimerFired();

private:
    using Snapshot = QHash<QString, QextPortInfo>;

    static std::unique_ptr<Snapshot> currentPorts();

    bool watching = false;
    QTimer timer;
    std::unique_ptr<Snapshot> lastPorts; ///< by port name
};
