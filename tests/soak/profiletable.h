#pragma once

#include "suitestory.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

/// Members of one record and their values as text, numbers with six significant digits.
using Values = QMap<QString, QString>;

/// What the rows of the list hold from top to bottom: all members that the charger stores, and
/// "stats." before those of the profile's statistics. Ids are the rows' numbers.
QList<Values> profilesInList(const SuiteStory &story);

/// The charger's page as the reader that shares nothing with the suite understands it.
struct ChargerPage {
    QString complaint;      ///< empty for a page that can be read and has a page counter
    QList<Values> profiles; ///< those that count, in the order of their first copies
    Values settings;
    QMap<QString, Values> others; ///< by element: version, hardware, barcode, counter, statistics

    static ChargerPage read(SuiteStory &story);
};

/// What is different, in words; empty for equal ones. Members in "but" are not compared.
QStringList differences(const Values &expected, const Values &found,
                        const QStringList &but = QStringList());
QStringList differences(const QList<Values> &expected, const QList<Values> &found,
                        const QStringList &but = QStringList());
