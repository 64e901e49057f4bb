#include "editors/settingspanemanager.h"

#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/fonts.h"
#include "editors/profileedit.h"
#include "editors/unitsettingsdisplay.h"
#include "profiles/profilename.h"
#include "profiles/profilesettings.h"
#include "ui_mainwindow.h"

#include <QApplication>
#include <QScrollBar>

namespace
{
const QString titleMember = QStringLiteral("title");
const QString descriptionMember = QStringLiteral("description");

HParser::StructSetting *memberOf(const ProfileName *row, const QString &member)
{
    return row->getProfileSettings()->structSettings->getStructSettingByName(member);
}

template <class Widget> void addStar(Widget *widget)
{
    widget->setText(widget->text() + QLatin1Char('*'));
}

template <class Widget> void cutStar(Widget *widget)
{
    const QString text = widget->text();
    if (text.contains(QLatin1Char('*')))
        widget->setText(text.left(text.size() - 1));
}

void setBold(QWidget *widget)
{
    QFont font = widget->font();
    font.setBold(true);
    widget->setFont(font);
}

/// In a low window a page gets a vertical bar, which must not bring a horizontal one along.
void letFitBesideItsBar(QWidget *page, const QScrollArea *area)
{
    const int room = area->width() - area->verticalScrollBar()->sizeHint().width();
    page->setMinimumWidth(qMin(page->minimumWidth(), room));
}

/// A page that is new in the window stands at the end of its tab order: lets it follow the area
/// that it lies in. Returns the last widget that a tab reaches there.
QWidget *placeInTabOrder(QScrollArea *area)
{
    QList<QWidget *> fields;
    const QWidget *page = area->widget();
    for (QWidget *next = page->nextInFocusChain(); page->isAncestorOf(next);
         next = next->nextInFocusChain()) {
        if ((next->focusPolicy() & Qt::TabFocus) && !next->focusProxy())
            fields.append(next);
    }
    QWidget *last = area;
    for (QWidget *field : qAsConst(fields)) {
        QWidget::setTabOrder(last, field);
        last = field;
    }
    return last;
}
} // namespace

SettingsPaneManager::SettingsPaneManager(Ui::MainWindow *ui, HParser::Generator *generator,
                                         QWidget *parent)
    : QObject(parent), ui(ui), generator(generator)
{
    connect(ui->editProfileButton, &QPushButton::clicked, this,
            &SettingsPaneManager::on_editButtonClicked);
    connect(ui->cancelChangesButton, &QPushButton::clicked, this,
            &SettingsPaneManager::on_cancelButtonClicked);
    connect(ui->saveChangesButton, &QPushButton::clicked, this,
            &SettingsPaneManager::on_saveButtonClicked);
    for (const QCheckBox *box :
         {ui->profileActiveButton, ui->profileDefaultButton, ui->profileModifiableButton})
        connect(box, &QCheckBox::clicked, this, &SettingsPaneManager::updateButtonSettings);
    // Once here, not with each profile that is shown: connections add up.
    for (const QLineEdit *field : {ui->profileSettingsName, ui->profileSettingsDescription})
        connect(field, &QLineEdit::editingFinished, this, &SettingsPaneManager::saveNameAndDescrip);
    connect(generator, &HParser::Generator::finished, this, &SettingsPaneManager::followNewStruct);

    unitSettingsUISaved();
    saveUnitSettingsBackup(false);
    hideEverything(true);
}

SettingsPaneManager::~SettingsPaneManager() = default;

void SettingsPaneManager::setCurrentProfile(ProfileName *row)
{
    current = row;
}

void SettingsPaneManager::hideEverything(bool hide)
{
    const QList<QWidget *> widgets{
        ui->profileSettingsName, ui->profileSettingsDescription, ui->editProfileButton,
        ui->profileActiveButton, ui->profileDefaultButton,       ui->profileModifiableButton,
        ui->containerScroll,     ui->cancelChangesButton,        ui->saveChangesButton,
        ui->unitSettingsDisplay, ui->unitSettingsTitle,          ui->resetDefaults};
    for (QWidget *widget : widgets)
        widget->setVisible(!hide);
}

void SettingsPaneManager::showUnitSettingsWidgets(bool on)
{
    showingUnitSettings = on;
    ui->viewDeviceSettings->setChecked(on);
    ui->unitSettingsDisplay->setVisible(on);
    ui->unitSettingsTitle->setVisible(on);
    ui->resetDefaults->setVisible(on);
    ui->saveChangesButton->setVisible(on);
    ui->editProfileButton->setVisible(!on);
    if (!on)
        return;

    ui->cancelChangesButton->show();
    ui->cancelChangesButton->setEnabled(true);
    ui->saveChangesButton->setEnabled(unitSettingsAvailable);
    if (!unitSettingsSaved)
        ui->saveChangesButton->setText(tr("Save to Velantor") + QLatin1Char('*'));
}

void SettingsPaneManager::updateSettingsPane(ProfileName *row)
{
    // Into the profile that it was typed for.
    takeTypedText();
    current = row;
    hideEverything(false);
    if (showingUnitSettings)
        emit resize();
    showUnitSettingsWidgets(false);
    fillNameAndStates();
    showProfileEdit();
    enableEditing(row->isEditing());
}

void SettingsPaneManager::fillNameAndStates()
{
    ui->profileSettingsName->setText(memberOf(current, titleMember)->getValue());
    ui->profileSettingsDescription->setText(memberOf(current, descriptionMember)->getValue());
    quickUpdateSettingsPane(current);
    ui->profileModifiableButton->setChecked(current->getProfileSettings()->getModifiable());
}

void SettingsPaneManager::showProfileEdit()
{
    if (!profileEdit) {
        // A large font in the form would cost every start.
        setPointSize(ui->profileSettingsName, 14);
        setBold(ui->profileSettingsName);
        setPointSize(ui->profileSettingsDescription, 12);
    }
    profileEdit = new ProfileEdit(generator, current->getProfileSettings(), ui->containerScroll);
    ui->containerScroll->setWidget(profileEdit); // the former one goes
    connect(this, &SettingsPaneManager::editing, profileEdit, &ProfileEdit::enableEditingSlot);
    placeInTabOrder(ui->containerScroll);
    QWidget::setTabOrder(ui->profileSettingsDescription, ui->cancelChangesButton);
}

void SettingsPaneManager::quickUpdateSettingsPane(ProfileName *row)
{
    activateMeClicked(row->getActiveStatus());
    defaultMeClicked(row->getDefaultStatus());
}

void SettingsPaneManager::activateMeClicked(bool active)
{
    ui->profileActiveButton->setChecked(active);
}

void SettingsPaneManager::defaultMeClicked(bool isDefault)
{
    ui->profileDefaultButton->setChecked(isDefault);
}

void SettingsPaneManager::enableEditing(bool on)
{
    ui->cancelChangesButton->setEnabled(on);
    editMode = on;
    if (current)
        current->setEditing(on);
    ui->editProfileButton->setChecked(on);
    ui->profileSettingsName->setEnabled(on);
    ui->profileSettingsDescription->setEnabled(on);
    emit editing(on);
}

void SettingsPaneManager::updateButtonSettings()
{
    if (!current)
        return;
    if (ui->profileActiveButton->isChecked() != current->getActiveStatus())
        current->on_activeProfileButton_clicked();
    if (ui->profileDefaultButton->isChecked() != current->getDefaultStatus())
        current->on_defaultProfileButton_clicked();

    ProfileSettings *profile = current->getProfileSettings();
    if (ui->profileModifiableButton->isChecked() == profile->getModifiable())
        return;
    profile->setModifiable(ui->profileModifiableButton->isChecked());
    // The profile does not say so itself.
    if (current->getOriginalValues())
        current->settingValueChanged();
}

void SettingsPaneManager::forgetProfile()
{
    current = nullptr;
    editMode = false;
}

void SettingsPaneManager::currentProfileDeleted()
{
    forgetProfile();
    if (!showingUnitSettings)
        hideEverything(true);
}

void SettingsPaneManager::on_profilesListEmpty()
{
    hideEverything(true);
    forgetProfile();
    if (showingUnitSettings)
        showUnitSettingsWidgets(true);
}

void SettingsPaneManager::saveText(const QString &member, const QString &text)
{
    memberOf(current, member)->setValue(text);
}

void SettingsPaneManager::saveNameAndDescrip()
{
    if (!current)
        return;
    saveText(titleMember, ui->profileSettingsName->text());
    saveText(descriptionMember, ui->profileSettingsDescription->text());
}

void SettingsPaneManager::takeTypedText()
{
    QWidget *field = QApplication::focusWidget();
    if (!field)
        return;
    const QList<QWidget *> places{ui->profileSettingsName, ui->profileSettingsDescription,
                                  ui->containerScroll, ui->unitSettingsDisplay};
    for (const QWidget *place : places) {
        if (place == field || place->isAncestorOf(field)) {
            field->clearFocus();
            field->setFocus(Qt::OtherFocusReason);
            return;
        }
    }
}

void SettingsPaneManager::on_editButtonClicked(bool checked)
{
    if (!checked) {
        on_saveButtonClicked();
        return;
    }
    if (current)
        current->saveBackups();
    enableEditing(true);
}

void SettingsPaneManager::on_saveButtonClicked()
{
    takeTypedText();
    if (showingUnitSettings) {
        unitSettingsUISaved();
        saveUnitSettingsBackup(true);
        emit saveUnitSettings();
        return;
    }
    saveNameAndDescrip();
    enableEditing(false);
}

void SettingsPaneManager::on_cancelButtonClicked()
{
    // Left in its field it would come back when the field is disabled.
    takeTypedText();
    if (showingUnitSettings) {
        restoreUnitSettings();
        unitSettingsUISaved();
        return;
    }
    if (current) {
        current->restoreBackup();
        fillNameAndStates();
    }
    enableEditing(false);
}

void SettingsPaneManager::on_viewDeviceSettingsClicked(bool checked)
{
    if (checked) {
        displayUnitSettings();
    } else if (current) {
        updateSettingsPane(current);
    } else {
        showUnitSettingsWidgets(false);
        hideEverything(true);
    }
}

void SettingsPaneManager::displayUnitSettings()
{
    if (showingUnitSettings)
        return;

    if (!unitSettings) {
        setPointSize(ui->unitSettingsTitle, 16);
        setBold(ui->unitSettingsTitle);
    }
    unitSettings = new UnitSettingsDisplay(generator->getUnitSettingsStruct(), generator,
                                           ui->unitSettingsDisplay);
    letFitBesideItsBar(unitSettings, ui->unitSettingsDisplay);
    ui->unitSettingsDisplay->setWidget(unitSettings); // the former one goes, with its connections
    ui->unitSettingsDisplay->setFrameShape(QFrame::NoFrame);
    connect(ui->resetDefaults, &QPushButton::clicked, unitSettings,
            &UnitSettingsDisplay::on_resetDefaultsClicked);
    if (unitSettingsAvailable)
        connect(unitSettings, &UnitSettingsDisplay::settingChanged, this,
                &SettingsPaneManager::unsavedChanges);
    QWidget::setTabOrder(placeInTabOrder(ui->unitSettingsDisplay), ui->saveChangesButton);
    QWidget::setTabOrder(ui->saveChangesButton, ui->cancelChangesButton);

    // The row of the cancel button in the view of a profile: beside this page it stands below.
    ui->resetDefaults->move(ui->resetDefaults->x(), ui->settingsList->y() + 4);
    hideEverything(true);
    showUnitSettingsWidgets(true);
    emit resize();
}

/// Replaces the page in view by a new one on the values and limits of now.
void SettingsPaneManager::refreshUnitSettings()
{
    const int position = ui->unitSettingsDisplay->verticalScrollBar()->value();
    // A button that is hidden and shown again has lost the focus.
    const QPointer<QWidget> focused = ui->unitSettingsDisplay->window()->focusWidget();
    showingUnitSettings = false;
    displayUnitSettings();
    ui->unitSettingsDisplay->verticalScrollBar()->setValue(position);
    if (focused && focused->isVisible())
        focused->setFocus();
}

/// A schema was read, and with it came a new struct. A page on the former one would edit what
/// nobody reads any more.
void SettingsPaneManager::followNewStruct()
{
    if (showingUnitSettings)
        refreshUnitSettings();
}

void SettingsPaneManager::saveUnitSettingsBackup(bool available)
{
    unitSettingsAvailable = available;
    if (showingUnitSettings)
        refreshUnitSettings();
    unitSettingsBackup.reset(generator->getUnitSettingsStruct()->deepCopyWithValues());
    unitSettingsUISaved();
}

void SettingsPaneManager::restoreUnitSettings()
{
    generator->getUnitSettingsStruct()->takeValuesOf(unitSettingsBackup.get());
}

void SettingsPaneManager::unsavedChanges()
{
    if (!unitSettingsSaved)
        return;
    unitSettingsSaved = false;
    addStar(ui->unitSettingsTitle);
    addStar(ui->saveChangesButton);
    addStar(ui->viewDeviceSettings);
}

void SettingsPaneManager::unitSettingsUISaved()
{
    takeTypedText();
    unitSettingsSaved = true;
    cutStar(ui->unitSettingsTitle);
    cutStar(ui->saveChangesButton);
    cutStar(ui->viewDeviceSettings);
}

void SettingsPaneManager::disconnectSettingsChanges()
{
    unitSettingsAvailable = false;
    if (showingUnitSettings)
        ui->saveChangesButton->setEnabled(false);
    if (unitSettings)
        disconnect(unitSettings, &UnitSettingsDisplay::settingChanged, this,
                   &SettingsPaneManager::unsavedChanges);
}
