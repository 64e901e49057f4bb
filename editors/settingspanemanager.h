#pragma once

#include <QObject>
#include <QPointer>

#include <memory>

class ProfileEdit;
class ProfileName;
class UnitSettingsDisplay;
class QWidget;

namespace HParser
{
class Generator;
class StructSettings;
} // namespace HParser

namespace Ui
{
class MainWindow;
}

/// The right-hand side of the main window: the profile selected in the list, or the page of the
/// charger's own settings.
///
/// A profile is edited in place, in an edit mode of its own that its row remembers; a backup in the
/// row takes the edit back. Device settings are always editable, on the schema's own struct; what
/// has not been written to the charger yet is marked by a star.
class SettingsPaneManager : public QObject
{
    Q_OBJECT

public:
    /// Shows nothing yet. The widgets of the form must outlive all events of the pane; the
    /// generator must have read a schema. parent, the window, owns this object.
    SettingsPaneManager(Ui::MainWindow *ui, HParser::Generator *generator, QWidget *parent);
    ~SettingsPaneManager() override;

    /// Whether the profile in view is being edited.
    bool getEditMode() const { return editMode; }
    /// The row in view has been replaced by another one on the same profile. What the pane shows
    /// stays as it is.
    void setCurrentProfile(ProfileName *row);

signals:
    /// The user wants the device settings written to the charger.
    void saveUnitSettings();
    /// The window should fit the pane.
    void resize();
    void editing(bool on);

public slots:
    /// Shows this row's profile, in the edit state that the row remembers.
    void updateSettingsPane(ProfileName *row);
    /// Shows the row's active and default state, and nothing else.
    void quickUpdateSettingsPane(ProfileName *row);
    void activateMeClicked(bool active);
    void defaultMeClicked(bool isDefault);
    void enableEditing(bool on);
    /// Asks for the states that the three check boxes show.
    void updateButtonSettings();
    void currentProfileDeleted();
    void on_profilesListEmpty();
    void saveNameAndDescrip();
    void on_editButtonClicked(bool checked);
    void on_saveButtonClicked();
    void on_cancelButtonClicked();
    void on_viewDeviceSettingsClicked(bool checked = true);
    /// The present device settings are those to come back to. available: they are a charger's, so
    /// that changes can be saved to it.
    void saveUnitSettingsBackup(bool available);
    /// A device setting differs from what the charger holds.
    void unsavedChanges();
    /// What stands in the field that has the focus counts, although nobody has left the field yet:
    /// a menu and the tool bar take no focus from it.
    void takeTypedText();
    /// What was typed is taken over and counts as saved.
    void unitSettingsUISaved();
    /// The charger is gone: there is nothing to save to.
    void disconnectSettingsChanges();

private:
    void hideEverything(bool hide);
    void showUnitSettingsWidgets(bool on);
    void displayUnitSettings();
    void refreshUnitSettings();
    void followNewStruct();
    void restoreUnitSettings();
    void fillNameAndStates();
    void showProfileEdit();
    void saveText(const QString &member, const QString &text);
    void forgetProfile();

    Ui::MainWindow *ui;
    HParser::Generator *generator;
    /// Its row may die with its list item before the list says so.
    QPointer<ProfileName> current;
    bool editMode = false;
    ProfileEdit *profileEdit = nullptr;
    bool showingUnitSettings = false;
    /// False while the stars are on.
    bool unitSettingsSaved = false;
    bool unitSettingsAvailable = false;
    UnitSettingsDisplay *unitSettings = nullptr;
    std::unique_ptr<HParser::StructSettings> unitSettingsBackup;
};
