#include "device/comdevicewatcher.h"

#include "support/pseudoterminal.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>

class COMDeviceWatcherTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void portsOfTheStartAreNotReported();
    void reportsAnAddedPortWithItsFields();
    void reportsARemovedPort();
    void reportsAllPortsOfOneLookAtOnce();
    void reportsAddedBeforeRemoved();
    void aShortAbsenceIsNotReported();
    void anotherStartForgetsTheLastLook();
    void looksOnceASecond();
    void stopsAndStartsAgain();
    void aLookFromWithinASignalTellsNothingTwice();
    void mayDieInItsFirstSignal();

private:
    std::unique_ptr<QTemporaryDir> runtime;
};

namespace
{

QStringList names(const QList<QextPortInfo> &ports)
{
    QStringList result;
    for (const QextPortInfo &port : ports)
        result.append(port.portName);
    result.sort();
    return result;
}

/// What a watcher told, in order: "+pts/3" and "-pts/4".
class Diary
{
public:
    explicit Diary(COMDeviceWatcher *watcher)
    {
        QObject::connect(watcher, &COMDeviceWatcher::devicesAdded,
                         [this](const QList<QextPortInfo> &ports) {
                             entries.append(QLatin1Char('+') + names(ports).join(QLatin1Char('+')));
                         });
        QObject::connect(watcher, &COMDeviceWatcher::devicesRemoved,
                         [this](const QList<QextPortInfo> &ports) {
                             entries.append(QLatin1Char('-') + names(ports).join(QLatin1Char('-')));
                         });
    }

    QStringList entries;
};

} // namespace

void COMDeviceWatcherTest::init()
{
    runtime = std::make_unique<QTemporaryDir>();
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime->path()));
}

void COMDeviceWatcherTest::portsOfTheStartAreNotReported()
{
    PseudoTerminal terminal;
    terminal.announce();
    COMDeviceWatcher watcher(nullptr);
    const Diary diary(&watcher);
    watcher.startWatching();
    watcher.onTimerFired();
    watcher.onTimerFired();
    QCOMPARE(diary.entries, QStringList());
}

void COMDeviceWatcherTest::reportsAnAddedPortWithItsFields()
{
    PseudoTerminal terminal;
    COMDeviceWatcher watcher(nullptr);
    QList<QextPortInfo> added;
    connect(&watcher, &COMDeviceWatcher::devicesAdded, this,
            [&added](const QList<QextPortInfo> &ports) { added = ports; });
    const Diary diary(&watcher);
    watcher.startWatching();
    terminal.announce();
    watcher.onTimerFired();
    watcher.onTimerFired();
    QCOMPARE(diary.entries, QStringList(QLatin1Char('+') + terminal.portName()));
    QCOMPARE(added.size(), 1);
    QCOMPARE(added.first().physName, QStringLiteral("/dev/") + terminal.portName());
}

void COMDeviceWatcherTest::reportsARemovedPort()
{
    PseudoTerminal terminal;
    terminal.announce();
    COMDeviceWatcher watcher(nullptr);
    const Diary diary(&watcher);
    watcher.startWatching();
    terminal.withdraw();
    watcher.onTimerFired();
    watcher.onTimerFired();
    QCOMPARE(diary.entries, QStringList(QLatin1Char('-') + terminal.portName()));
}

void COMDeviceWatcherTest::reportsAllPortsOfOneLookAtOnce()
{
    PseudoTerminal first;
    PseudoTerminal second;
    COMDeviceWatcher watcher(nullptr);
    const Diary diary(&watcher);
    watcher.startWatching();
    first.announce();
    second.announce();
    watcher.onTimerFired();
    QStringList both{first.portName(), second.portName()};
    both.sort();
    QCOMPARE(diary.entries, QStringList(QLatin1Char('+') + both.join(QLatin1Char('+'))));
}

void COMDeviceWatcherTest::reportsAddedBeforeRemoved()
{
    PseudoTerminal leaving;
    PseudoTerminal coming;
    leaving.announce();
    COMDeviceWatcher watcher(nullptr);
    const Diary diary(&watcher);
    watcher.startWatching();
    leaving.withdraw();
    coming.announce();
    watcher.onTimerFired();
    QCOMPARE(diary.entries, QStringList({QLatin1Char('+') + coming.portName(),
                                         QLatin1Char('-') + leaving.portName()}));
}

void COMDeviceWatcherTest::aShortAbsenceIsNotReported()
{
    PseudoTerminal terminal;
    terminal.announce();
    COMDeviceWatcher watcher(nullptr);
    const Diary diary(&watcher);
    watcher.startWatching();
    terminal.withdraw();
    terminal.announce();
    watcher.onTimerFired();
    QCOMPARE(diary.entries, QStringList());
}

void COMDeviceWatcherTest::anotherStartForgetsTheLastLook()
{
    PseudoTerminal leaving;
    PseudoTerminal coming;
    leaving.announce();
    COMDeviceWatcher watcher(nullptr);
    const Diary diary(&watcher);
    watcher.startWatching();
    leaving.withdraw();
    coming.announce();
    watcher.startWatching();
    watcher.onTimerFired();
    QCOMPARE(diary.entries, QStringList());
}

void COMDeviceWatcherTest::looksOnceASecond()
{
    PseudoTerminal terminal;
    COMDeviceWatcher watcher(nullptr);
    QSignalSpy added(&watcher, &COMDeviceWatcher::devicesAdded);
    QSignalSpy removed(&watcher, &COMDeviceWatcher::devicesRemoved);
    watcher.startWatching();
    terminal.announce();
    QElapsedTimer clock;
    clock.start();
    QVERIFY(added.wait(10000));
    // A coarse timer may come a twentieth early.
    QVERIFY2(clock.elapsed() >= 900, qPrintable(QString::number(clock.elapsed())));
    terminal.withdraw();
    QVERIFY(removed.wait(10000));
    QCOMPARE(added.size(), 1);
    QCOMPARE(removed.size(), 1);
}

void COMDeviceWatcherTest::stopsAndStartsAgain()
{
    PseudoTerminal terminal;
    COMDeviceWatcher stopped(nullptr);
    COMDeviceWatcher running(nullptr);
    QSignalSpy silent(&stopped, &COMDeviceWatcher::devicesAdded);
    QSignalSpy told(&running, &COMDeviceWatcher::devicesAdded);
    stopped.stopWatching(); // before any start: nothing happens
    stopped.startWatching();
    stopped.stopWatching();
    stopped.stopWatching();
    running.startWatching();
    terminal.announce();
    QVERIFY(told.wait(10000));
    terminal.withdraw();
    QSignalSpy gone(&running, &COMDeviceWatcher::devicesRemoved);
    QVERIFY(gone.wait(10000));
    QCOMPARE(silent.size(), 0); // two periods of the other watcher have passed

    stopped.startWatching();
    terminal.announce();
    QVERIFY(silent.wait(10000));
}

void COMDeviceWatcherTest::aLookFromWithinASignalTellsNothingTwice()
{
    PseudoTerminal leaving;
    PseudoTerminal coming;
    leaving.announce();
    COMDeviceWatcher watcher(nullptr);
    const Diary diary(&watcher);
    // As in a receiver that opens a dialog, with an event loop of its own.
    int looks = 0;
    connect(&watcher, &COMDeviceWatcher::devicesAdded, this, [&watcher, &looks] {
        if (++looks < 5)
            watcher.onTimerFired();
    });
    watcher.startWatching();
    leaving.withdraw();
    coming.announce();
    watcher.onTimerFired();
    QCOMPARE(diary.entries, QStringList({QLatin1Char('+') + coming.portName(),
                                         QLatin1Char('-') + leaving.portName()}));
}

void COMDeviceWatcherTest::mayDieInItsFirstSignal()
{
    PseudoTerminal leaving;
    PseudoTerminal coming;
    leaving.announce();
    auto *watcher = new COMDeviceWatcher(nullptr);
    int removals = 0;
    connect(watcher, &COMDeviceWatcher::devicesRemoved, this, [&removals] { ++removals; });
    connect(watcher, &COMDeviceWatcher::devicesAdded, this, [watcher] { delete watcher; });
    watcher->startWatching();
    leaving.withdraw();
    coming.announce();
    watcher->onTimerFired();
    QCOMPARE(removals, 0);
}

QTEST_GUILESS_MAIN(COMDeviceWatcherTest)
#include "tst_comdevicewatcher.moc"
