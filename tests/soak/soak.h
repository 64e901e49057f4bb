#pragma once

#include "diary.h"
#include "dice.h"
#include "household.h"
#include "mishaps.h"
#include "profiletable.h"
#include "randomuser.h"
#include "suitestory.h"

#include <QTemporaryDir>

#include <memory>

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
    void checkMarks();

    /// What the charger holds from now on when it is repaired.
    void keepPage();
    /// A charger with a broken page recovers.
    void repairCharger();
    Values settingsInMemory() const;
    int allowedProfiles() const;

    void report(int round) const;
    void summary() const;

    Options options;
    Dice dice;
    Diary diary;
    Mishaps mishaps;
    QTemporaryDir files;
    SuiteStory story;
    RandomUser user;
    std::unique_ptr<Household> household; ///< from the moment on when the window is there

    QString hardware;
    ChargerPage onCharger;      ///< as last seen
    bool isWrittenByUs = false; ///< numbers on the page are rounded as the suite rounds them
    Values wantedSettings;      ///< the device settings as the user sees them
    bool haveFile = false;
    bool stuck = false;

    int connects = 0;
    int writes = 0;
    int retries = 0;
};
