#pragma once

#include <QByteArray>
#include <QMap>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// A running velantor-sim. It announces itself below the test's XDG_RUNTIME_DIR and ends with this
/// object. What should not fail in a test ends the test program.
class SimulatorProcess
{
public:
    /// Starts it with these options beside those for its log and its control socket; waits until
    /// the port is there.
    explicit SimulatorProcess(const QStringList &options = {});
    ~SimulatorProcess();
    SimulatorProcess(const SimulatorProcess &) = delete;
    SimulatorProcess &operator=(const SimulatorProcess &) = delete;

    /// Path of the port, such as "/dev/pts/3", as it is now; "unplugged" without one.
    QString port();
    /// The port's name in lists of ports, such as "pts/3".
    QString portName();

    /// Gives a command of the control socket and returns what it tells before its "ok".
    QStringList control(const QString &command);
    void fault(const QString &text) { control(QStringLiteral("fault ") + text); }

    /// Every frame so far, as "in  read 55 55 ..." or "out ...", and notes beginning with "--".
    QStringList log() const;
    /// The names of the commands received so far, in their order.
    QStringList commands() const;

    /// Image bytes of the flash from one word address up to another; blank words are FF FF FF 00.
    QByteArray flash(int fromWordAddress, int toWordAddress);
    /// The same of the EEPROM, by byte addresses; blank bytes are FF.
    QByteArray eeprom(int from, int to);

    qint64 processId() const { return process.processId(); }
    /// Whether it still runs.
    bool isRunning() const { return process.state() != QProcess::NotRunning; }
    /// Waits for its end, asking for it unless it ends by itself. Its exit status.
    int stop();
    int waitForEnd();

private:
    QByteArray saved(const QString &command, const QByteArray &blank, int from, int to);

    QTemporaryDir folder;
    QProcess process;
};
