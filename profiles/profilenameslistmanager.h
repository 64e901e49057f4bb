#pragma once

#include <QList>
#include <QObject>
#include <QStringList>

class ProfileName;
class ProfileNameListWidget;
class ProfileSettings;
class QListWidget;
class QListWidgetItem;
class QPushButton;
class QWidget;
class SettingsPaneManager;

namespace HParser
{
class Generator;
}

/// Owns the list of profiles. The order of its rows is the order of the profiles everywhere else:
/// in files, in the flash stack and on the charger.
///
/// Adds, moves and removes rows, knows which row is in view and which is the default one, and
/// checks all profiles against new hardware limits. At most one row is default, and a default row
/// is active. The list may hold more profiles than a charger can store.
///
/// A removed row is freed by the event loop; its ProfileSettings is not, since what an import has
/// handed out may still refer to it.
class ProfileNamesListManager : public QObject
{
    Q_OBJECT

public:
    /// parent is the parent of all dialogs, and of this object. While unitSettingsDisplay is
    /// visible a click on the row in view brings its profile back. The pane hears by signal what to
    /// show, and directly of a row that takes another one's place. All of them must outlive this
    /// object.
    ProfileNamesListManager(QWidget *parent, QListWidget *list, QPushButton *addButton,
                            QWidget *unitSettingsDisplay, QPushButton *up, QPushButton *down,
                            HParser::Generator *generator, SettingsPaneManager *pane);

signals:
    /// Another profile has come into view, or its limits have changed.
    void settingsPaneUpdateNeeded(ProfileName *row);
    /// The active or default state of some profile has changed; row is the one in view.
    void quickSettingsPaneUpdateNeeded(ProfileName *row);
    void noMoreProfilesLeft();
    /// No profile is in view any more.
    void currentProfileDeleted();
    /// The user keeps the profiles that do not fit, and so the former hardware limits.
    void revertHardwareLimits();

public slots:
    void profilePushUp();
    void profilePushDown();
    /// Does nothing for an item that is not in the list.
    void deleteProfile(ProfileNameListWidget *item);
    void deleteProfileWithConfirmation(ProfileName *name);
    /// Appends a profile that was read from somewhere. Of several that claim to be the default one
    /// the first wins.
    void on_profileReadyForImport(ProfileSettings *settings, bool activeStatus, bool defaultStatus);
    /// Whether the profiles are gone; an empty list counts as not asked.
    bool deleteAllProfilesAskConfirmation();
    void deleteAllProfilesNoConfirmation();
    /// The hardware limits have changed: gives them to all profiles, and removes those that do not
    /// fit if the user agrees.
    void deleteAllOutOfBoundsProfiles();
    /// After a write the charger holds what the list shows: no title stays marked.
    void profilesWrittenToVelantor(bool success);
    /// Rows made from now on mark unsaved changes.
    void enableMarkingChanges();
    /// No row marks unsaved changes any more.
    void disableMarkingChanges();

protected:
    /// Lets the list's rows be selected by key.
    bool eventFilter(QObject *list, QEvent *event) override;

private slots:
    void on_listWidgetClicked(QListWidgetItem *item);
    void on_activeStatusChangeRequest(ProfileName *row, bool active);
    void on_defaultStatusChangeRequest(ProfileName *row, bool makeDefault);
    /// Opens the wizard.
    void on_createProfileButtonClicked();
    /// Appends a profile of the user's and brings it into view.
    void addNewProfile(ProfileSettings *settings);
    void setEnabledMarkingChanges(bool enable);

private:
    ProfileNameListWidget *itemAt(int row) const;
    void appendProfile(ProfileNameListWidget *item);
    void insertProfile(int row, ProfileNameListWidget *item);
    ProfileNameListWidget *makeProfileName(ProfileSettings *settings);
    void connectProfileNameSignals(ProfileNameListWidget *item);
    void moveCurrentProfile(int newRow);
    bool selectByKey(int key);
    void updateQuickSettingsPane();

    SettingsPaneManager *settingsPane;
    HParser::Generator *generator;
    QWidget *parentWidget;
    QListWidget *listWidget;
    QPushButton *addProfileButton;
    QWidget *unitSettingsDisplay;
    QPushButton *upButton;
    QPushButton *downButton;
    /// The row in view, or null.
    ProfileNameListWidget *currentProfile = nullptr;
    ProfileNameListWidget *defaultProfile = nullptr;
    bool markingChangesEnabled = false;
};
