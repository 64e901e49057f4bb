#pragma once

#include "diary.h"
#include "dice.h"
#include "profiletable.h"
#include "suitestory.h"

namespace HParser
{
class StructSetting;
}

/// A user who does anything that the window offers for profiles and settings, through its real
/// fields and buttons, and looks whether they show what was done.
class RandomUser
{
public:
    RandomUser(SuiteStory *story, Dice *dice, Diary *diary);

    /// One change of the list or of a profile.
    void changeSomething();
    /// Leaves a name unfinished in its field, which is then what the profile of this row is to get.
    QString startTypingName(int row);
    /// Deletes rows from the end until so many are left.
    void deleteDownTo(int rows);

    /// Shows the device settings and changes some; returns what they show afterwards, by member.
    Values changeDeviceSettings();
    void cancelDeviceSettings();
    void loadDefaultSettings();
    /// What the page of device settings shows, by member.
    Values shownSettings() const;
    void leaveDeviceSettings();

    /// Opens a dialog and cancels it.
    void openInVain();

    /// Saves the list; where asked with the device settings.
    void saveFile(const QString &path, bool withSettings);
    /// Loads a file, which joins the list or replaces it.
    void loadFile(const QString &path, bool replace);
    void chooseModel();

    /// Counts the boxes since the last call and drops answers that no box came for. Their titles.
    QStringList takeBoxes();
    /// How often each box came up, by title.
    const QMap<QString, int> &boxesSeen() const { return seen; }

    /// Queues an answer to the next box: this button, or what closing means where it has none.
    void answer(QMessageBox::StandardButton button);
    void answer(const QString &buttonText);

    int profilesMade() const { return made; }

private:
    void editProfile();
    void changeField(const HParser::StructSetting *setting);
    void overrideDefaults();
    void makeProfile();
    void moveRow();
    void pressInRow(const char *button);
    void deleteRow(int row, bool really);
    void deleteAll();
    void checkShown(const HParser::StructSetting *setting);

    int anyRow() { return dice->below(story->list()->count()); }
    void select(int row);
    void enter(const QString &field, const QString &text);
    QString anyText(int longest);
    QString anyNumber(double highest);

    SuiteStory *story;
    Dice *dice;
    Diary *diary;
    int made = 0;
    QMap<QString, int> seen;
};
