#pragma once

#include "profiles/profileshare.h"

#include <QString>
#include <QWidget>

#include <memory>

class ProfileNameListWidget;
class ProfileSettings;

namespace HParser
{
class StructSetting;
class StructSettings;
} // namespace HParser

namespace Ui
{
class ProfileName;
}

/// One row of the profile list: title, description, the lamp of an active profile, the mark of the
/// default profile and a delete button. A click only asks, by signal; the list's owner decides.
///
/// The row also holds what belongs to one profile on the screen: whether the settings pane edits
/// it, the values to go back to when an edit is cancelled, and the values that the charger holds,
/// against which unsaved changes are marked by "**" behind the title.
class ProfileName : public QWidget
{
    Q_OBJECT

public:
    /// A row without a profile. item, which may be null, is told when the row goes.
    explicit ProfileName(ProfileNameListWidget *item, QWidget *parent = nullptr);
    ~ProfileName() override;

    /// Shows this profile, taking a share in it, as neither active nor default, and makes it so
    /// without telling its listeners.
    void setProfileSettings(ProfileSettings *settings);
    ProfileSettings *getProfileSettings() const { return profileSettings; }
    /// Null once the item is gone.
    ProfileNameListWidget *getListItem() const { return listItem; }
    /// The item has died.
    void forgetListItem() { listItem = nullptr; }

    void setTitle(QString title);
    /// What the row shows, the mark of unsaved changes included.
    QString getTitle() const;
    void setSubtitle(QString subtitle);
    QString getSubtitle() const;

    /// Sets the profile's flag and shows it.
    void setActive(bool on);
    bool getActiveStatus() const;
    void setDefault(bool on);
    bool getDefaultStatus() const;

    /// The look of the row that is, or is not, in view in the settings pane.
    void highlight();
    void dehighlight();

    /// Whether the settings pane edits this profile.
    void setEditing(bool on) { editing = on; }
    bool isEditing() const { return editing; }
    /// Remembers all values and the override state of the profile, for restoreBackup().
    void saveBackups();
    /// Puts the values and the state last remembered back; does nothing where there are none. An
    /// active or default state that this changes is also asked for, as by a click.
    void restoreBackup();
    /// Takes over the edit state and the backup of another row on the same profile.
    void continueEditOf(ProfileName *other);

    /// From now on a profile that differs from its present values is marked.
    void saveCurrentValuesAsOriginal();
    /// Ends the marking.
    void removeOriginalValues();
    /// The values to compare with, or null while nothing is marked.
    HParser::StructSettings *getOriginalValues() const { return originalValues; }

signals:
    void deleteMeSignal(ProfileName *row);
    void activeStatusChangeRequest(ProfileName *row, bool active);
    void defaultStatusChangeRequest(ProfileName *row, bool makeDefault);

public slots:
    void on_activeProfileButton_clicked();
    void on_defaultProfileButton_clicked();
    void on_deleteProfileButton_clicked();
    /// Shows title and description, and marks the title where the profile has changed.
    void settingValueChanged();
    void updateTitle();
    void updateDescription();

protected:
    void enterEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;
    /// Shows the tooltips of the buttons.
    bool eventFilter(QObject *button, QEvent *event) override;

private:
    void showActive(bool on);
    void showDefault(bool on);
    void setItalic(bool on);
    void restoreBackupValues();
    QString valueOf(const QString &member) const;

    ProfileNameListWidget *listItem = nullptr;
    std::unique_ptr<Ui::ProfileName> ui;
    ProfileSettings *profileSettings = nullptr;
    ProfileShare share;
    HParser::StructSetting *activeSetting = nullptr;
    HParser::StructSetting *defaultSetting = nullptr;
    bool editing = false;
    HParser::StructSettings *backupValues = nullptr;
    HParser::StructSettings *originalValues = nullptr;
    bool advancedSettingsEditedBackup = false;
};
