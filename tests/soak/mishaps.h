#pragma once

#include "dice.h"
#include "support/simulatorprocess.h"

#include <QMap>
#include <QString>

/// Faults of chargers and cables: thinks them up, lays them before a transfer and counts those that
/// struck.
class Mishaps
{
public:
    explicit Mishaps(Dice *dice) : dice(dice) {}

    /// Something that can happen while a page is read once.
    QString whileReading();
    /// Something that can happen while profiles are written, the reads around it included.
    QString whileWriting();
    /// Something that can happen while device settings are written.
    QString whileWritingSettings();

    /// Lays a fault; empty lays none.
    void lay(SimulatorProcess *charger, const QString &fault);
    /// Ends the fault that was laid and counts it where it struck; one that lasts has struck when
    /// the transfer failed.
    void settle(SimulatorProcess *charger, bool transferFailed);

    int laidCount() const { return laid; }
    int struckCount() const;
    /// How often each kind struck.
    const QMap<QString, int> &struck() const { return struckByKind; }

private:
    QString at(const QString &where);

    Dice *dice;
    QString pending;
    int laid = 0;
    QMap<QString, int> struckByKind;
};
