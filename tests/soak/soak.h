#pragma once

#include "diary.h"
#include "dice.h"
#include "mishaps.h"
#include "profiletable.h"
#include "randomuser.h"
#include "resources.h"
#include "suitestory.h"

#include <QSet>
#include <QTemporaryDir>

/// Rounds of connect, edit, write and disconnect with everything that goes wrong on the way, and
/// the laws that hold all the time.
class Soak
{
public:
    struct Options {
        int rounds = 500;
        unsigned seed = 1;
        QString hardware; ///< of velantor-sim; empty for any, now and then another
    };

    explicit Soak(const Options &options);

    /// Plays all rounds and prints what happened. False: a law was broken.
    bool run();
    /// The next step cannot be done.
    void giveUp(const QString &reason) { diary.broken(reason); }

private:
    /// What is made and not freed before the end of the program.
    struct Kept {
        int profiles = 0;
        int statistics = 0;
        int schemas = 0;
        int connects = 0;
    };
    enum class Connecting { Connected, Closed, StillOpen };

    void plugIn();
    void playRound();
    void beforeConnecting();
    bool connectAtLast();
    Connecting tryToConnect(const QString &fault);
    void connectImpatiently();
    void checkConnected();
    void whileConnected();
    void loadProfiles();
    void useDeviceSettings();
    void saveDeviceSettings();
    void readAgain();
    bool tooManyAreRefused();
    void write();
    bool writeOnce(const QString &fault);
    void checkWritten(const QList<Values> &expected);
    void checkAfterLie();
    void checkFailedWrite(const QList<Values> &expected, const QStringList &boxes);
    void comeBack();
    void disconnectFromCharger();
    void checkDisconnected(const QList<Values> &rows);
    void checkNothingIsLeft();

    /// What the charger holds from now on when it is repaired.
    void keepPage();
    /// A charger with a broken page recovers.
    void repairCharger();
    Values settingsInMemory() const;
    int allowedProfiles() const;
    Kept keptSoFar() const;
    int lastingObjects() const;

    void report(int round) const;
    void summary() const;
    void checkGrowth();

    Options options;
    Dice dice;
    Diary diary;
    Mishaps mishaps;
    QTemporaryDir files;
    SuiteStory story;
    RandomUser user;

    QString hardware;
    ChargerPage onCharger;      ///< as last seen
    bool isWrittenByUs = false; ///< numbers on the page are rounded as the suite rounds them
    Values wantedSettings;      ///< the device settings as the user sees them
    QString workingFolder;
    bool haveFile = false;
    bool stuck = false;

    Resources first;
    Resources settled;
    int firstObjects = 0;
    Kept kept;
    Kept keptWhenSettled;
    int connects = 0;
    int writes = 0;
    int retries = 0;
};
