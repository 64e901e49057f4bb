#pragma once

#include "diary.h"
#include "randomuser.h"
#include "resources.h"
#include "suitestory.h"

/// What the suite holds from round to round: memory, objects, files, children.
class Household
{
public:
    /// Counts what the window of the story makes from now on.
    Household(const SuiteStory *story, const RandomUser *user, Diary *diary);

    /// Between two rounds only the charger runs, and nothing is open that was not open after the
    /// first one.
    void checkNothingIsLeft();
    /// Memory that is taken from now on is growth.
    void settle();
    /// Memory has grown by what is kept by design and no more; prints both.
    void checkGrowth();
    /// The figures of now, for the report of a round.
    QString figures() const;

private:
    /// What takes memory: for a while, as the profiles do, or until the end of the program.
    struct Kept {
        int rows = 0;
        int profilesSent = 0;
        int schemas = 0;
        int runs = 0;
    };

    Kept keptSoFar() const;
    int lastingObjects() const;

    const SuiteStory *story;
    const RandomUser *user;
    Diary *diary;
    const QString workingFolder;
    int imported = 0;
    Kept kept;
    Kept keptWhenSettled;
    Resources first;
    int firstObjects = 0;
    Resources settled;
};
