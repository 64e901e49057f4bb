#include "profiles/profilenameslistmanager.h"

#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "app/messagedialogs.h"
#include "editors/newprofilewizard.h"
#include "editors/settingspanemanager.h"
#include "profiles/profilename.h"
#include "profiles/profilenamelistwidget.h"
#include "profiles/profilesettings.h"

#include <QKeyEvent>
#include <QListWidget>
#include <QMessageBox>
#include <QPalette>
#include <QPointer>
#include <QPushButton>

#include <memory>
#include <vector>

namespace
{

HParser::StructSettings *recordOf(const ProfileNameListWidget *item)
{
    return item->profileName->getProfileSettings()->structSettings;
}

/// A row and its record under the limits now in force.
struct CheckedRow {
    // The box that asks about the misfits runs an event loop, in which rows may go.
    QPointer<ProfileName> name;
    std::unique_ptr<HParser::StructSettings> fresh;
    bool fits = false;
};

CheckedRow checkAgainstLimits(const ProfileNameListWidget *item, HParser::Generator *generator)
{
    CheckedRow row;
    row.name = item->profileName;
    const std::unique_ptr<HParser::StructSettings> copy(recordOf(item)->deepCopyWithValues());
    row.fresh.reset(generator->copyFlashstackElementSettings(copy->getDescriptiveName()));
    row.fits = row.fresh && copy->setFormulaTrees(row.fresh.get());
    return row;
}

QString titleAndDescription(const HParser::StructSettings *record)
{
    return record->getStructSettingByName(QStringLiteral("title"))->getValue() +
           QStringLiteral(" - ") +
           record->getStructSettingByName(QStringLiteral("description"))->getValue();
}

/// Rows are white whatever the desktop's colours are, and so is the list around them.
void paintWhite(QListWidget *list)
{
    QPalette colours = list->palette();
    colours.setColor(QPalette::Base, Qt::white);
    list->setPalette(colours);
}

} // namespace

ProfileNamesListManager::ProfileNamesListManager(QWidget *parent, QListWidget *list,
                                                 QPushButton *addButton,
                                                 QWidget *unitSettingsDisplay, QPushButton *up,
                                                 QPushButton *down, HParser::Generator *generator,
                                                 SettingsPaneManager *pane)
    : QObject(parent),
      settingsPane(pane),
      generator(generator),
      parentWidget(parent),
      listWidget(list),
      addProfileButton(addButton),
      unitSettingsDisplay(unitSettingsDisplay),
      upButton(up),
      downButton(down)
{
    ProfileNameListWidget::qlistWidget = list;
    list->setSelectionMode(QAbstractItemView::NoSelection);
    list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list->setStyleSheet(QStringLiteral("QListWidget::item { border-bottom: 1px solid black; }"));
    paintWhite(list);
    up->setEnabled(false);
    down->setEnabled(false);

    list->installEventFilter(this);

    connect(list, &QListWidget::itemClicked, this, &ProfileNamesListManager::on_listWidgetClicked);
    connect(addButton, &QPushButton::clicked, this,
            &ProfileNamesListManager::on_createProfileButtonClicked);
    connect(up, &QPushButton::clicked, this, &ProfileNamesListManager::profilePushUp);
    connect(down, &QPushButton::clicked, this, &ProfileNamesListManager::profilePushDown);
}

ProfileNameListWidget *ProfileNamesListManager::itemAt(int row) const
{
    return static_cast<ProfileNameListWidget *>(listWidget->item(row));
}

void ProfileNamesListManager::appendProfile(ProfileNameListWidget *item)
{
    item->appendToList();
}

void ProfileNamesListManager::insertProfile(int row, ProfileNameListWidget *item)
{
    item->insertInList(row);
}

ProfileNameListWidget *ProfileNamesListManager::makeProfileName(ProfileSettings *settings)
{
    auto *item = new ProfileNameListWidget(settings);
    connectProfileNameSignals(item);
    return item;
}

void ProfileNamesListManager::connectProfileNameSignals(ProfileNameListWidget *item)
{
    const ProfileName *name = item->profileName;
    connect(name, &ProfileName::deleteMeSignal, this,
            &ProfileNamesListManager::deleteProfileWithConfirmation);
    connect(name, &ProfileName::activeStatusChangeRequest, this,
            &ProfileNamesListManager::on_activeStatusChangeRequest);
    connect(name, &ProfileName::defaultStatusChangeRequest, this,
            &ProfileNamesListManager::on_defaultStatusChangeRequest);

    using HParser::StructSetting;
    const HParser::StructSettings *record = recordOf(item);
    if (markingChangesEnabled) {
        for (const StructSetting *setting : record->getOriginalOrderStructSettings())
            connect(setting, &StructSetting::valueChanged, name, &ProfileName::settingValueChanged);
    } else {
        connect(record->getStructSettingByName(QStringLiteral("title")),
                &StructSetting::valueChanged, name, &ProfileName::updateTitle);
        connect(record->getStructSettingByName(QStringLiteral("description")),
                &StructSetting::valueChanged, name, &ProfileName::updateDescription);
    }
}

void ProfileNamesListManager::on_createProfileButtonClicked()
{
    // Shows itself, and goes when it is closed.
    auto *wizard = new NewProfileWizard(generator, parentWidget);
    connect(wizard, &NewProfileWizard::newProfileMade, this,
            &ProfileNamesListManager::addNewProfile);
}

void ProfileNamesListManager::addNewProfile(ProfileSettings *settings)
{
    ProfileNameListWidget *item = makeProfileName(settings);
    appendProfile(item);
    listWidget->scrollToBottom();
    on_listWidgetClicked(item);
}

void ProfileNamesListManager::on_profileReadyForImport(ProfileSettings *settings, bool activeStatus,
                                                       bool defaultStatus)
{
    ProfileNameListWidget *item = makeProfileName(settings);
    appendProfile(item);
    item->profileName->setActive(activeStatus);
    item->profileName->saveCurrentValuesAsOriginal();
    if (defaultStatus && !defaultProfile) {
        item->profileName->setDefault(true);
        defaultProfile = item;
        // The charger holds the mark as well, so it is no change to be marked.
        item->profileName->saveCurrentValuesAsOriginal();
        item->profileName->settingValueChanged();
    }
}

void ProfileNamesListManager::on_listWidgetClicked(QListWidgetItem *item)
{
    if (item == currentProfile && !unitSettingsDisplay->isVisible())
        return;
    if (currentProfile)
        currentProfile->profileName->dehighlight();
    currentProfile = static_cast<ProfileNameListWidget *>(item);
    currentProfile->profileName->highlight();
    upButton->setEnabled(true);
    downButton->setEnabled(true);
    emit settingsPaneUpdateNeeded(currentProfile->profileName);
}

bool ProfileNamesListManager::eventFilter(QObject *list, QEvent *event)
{
    if (event->type() == QEvent::KeyPress && selectByKey(static_cast<QKeyEvent *>(event)->key()))
        return true;
    return QObject::eventFilter(list, event);
}

/// Returns whether the key has a meaning here.
bool ProfileNamesListManager::selectByKey(int key)
{
    const int last = listWidget->count() - 1;
    const int current = currentProfile ? listWidget->row(currentProfile) : -1;
    int wanted = current;
    switch (key) {
    case Qt::Key_Up:
        wanted = current - 1;
        break;
    case Qt::Key_Down:
        wanted = current + 1;
        break;
    case Qt::Key_Home:
        wanted = 0;
        break;
    case Qt::Key_End:
        wanted = last;
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        break; // back from the device settings
    default:
        return false;
    }
    if (ProfileNameListWidget *item = itemAt(qBound(0, wanted, last))) {
        listWidget->scrollToItem(item);
        on_listWidgetClicked(item);
    }
    return true;
}

void ProfileNamesListManager::updateQuickSettingsPane()
{
    if (currentProfile)
        emit quickSettingsPaneUpdateNeeded(currentProfile->profileName);
}

void ProfileNamesListManager::on_activeStatusChangeRequest(ProfileName *row, bool active)
{
    row->setActive(active);
    updateQuickSettingsPane();
    if (active)
        return;

    row->setDefault(false);
    updateQuickSettingsPane();
    if (row->getListItem() == defaultProfile)
        defaultProfile = nullptr;
}

void ProfileNamesListManager::on_defaultStatusChangeRequest(ProfileName *row, bool makeDefault)
{
    if (makeDefault) {
        if (defaultProfile)
            defaultProfile->profileName->setDefault(false);
        row->setDefault(true);
        row->setActive(true);
        defaultProfile = row->getListItem();
    } else {
        row->setDefault(false);
        defaultProfile = nullptr;
    }
    updateQuickSettingsPane();
}

void ProfileNamesListManager::profilePushUp()
{
    const int row = listWidget->row(currentProfile);
    if (row > 0)
        moveCurrentProfile(row - 1);
}

void ProfileNamesListManager::profilePushDown()
{
    const int row = listWidget->row(currentProfile);
    if (row != listWidget->count() - 1)
        moveCurrentProfile(row + 1);
}

void ProfileNamesListManager::moveCurrentProfile(int newRow)
{
    const bool isDefault = currentProfile == defaultProfile;
    // The buttons stay enabled when the row in view is deleted: then there is nothing to move.
    if (!listWidget->takeItem(listWidget->row(currentProfile)))
        return;

    ProfileNameListWidget *moved = ProfileNameListWidget::clone(currentProfile);
    if (isDefault)
        defaultProfile = moved;
    connectProfileNameSignals(moved);
    insertProfile(newRow, moved);
    currentProfile = moved;
    moved->profileName->highlight();
    listWidget->scrollToItem(moved);
    // The former row dies in the event loop.
    settingsPane->setCurrentProfile(moved->profileName);
}

void ProfileNamesListManager::deleteProfileWithConfirmation(ProfileName *name)
{
    // The box runs an event loop, in which the row may go.
    const QPointer<ProfileName> row(name);
    QMessageBox box(parentWidget);
    box.setWindowTitle(tr("Deleting Profile"));
    box.setText(tr("Do you really want to remove the profile <b>\"") +
                name->getTitle().toHtmlEscaped() + tr("\"</b>?"));
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::No);
    if (box.exec() == QMessageBox::Yes && row)
        deleteProfile(row->getListItem());
}

void ProfileNamesListManager::deleteProfile(ProfileNameListWidget *item)
{
    if (!listWidget->takeItem(listWidget->row(item)))
        return;
    if (item == currentProfile) {
        currentProfile = nullptr;
        emit currentProfileDeleted();
    }
    if (listWidget->count() == 0) {
        upButton->setEnabled(false);
        downButton->setEnabled(false);
        emit noMoreProfilesLeft();
    }
    if (item == defaultProfile)
        defaultProfile = nullptr;
}

void ProfileNamesListManager::deleteAllProfilesNoConfirmation()
{
    const int rows = listWidget->count();
    // With all widgets in it the list would look at each of them for every row that goes.
    for (int i = 0; i < rows; ++i)
        listWidget->removeItemWidget(itemAt(i));
    for (int i = 0; i < rows; ++i)
        deleteProfile(itemAt(0));
}

bool ProfileNamesListManager::deleteAllProfilesAskConfirmation()
{
    if (listWidget->count() == 0 ||
        MessageDialogs::askDeleteAllProfiles(parentWidget) != QMessageBox::Yes)
        return false;
    deleteAllProfilesNoConfirmation();
    return true;
}

void ProfileNamesListManager::deleteAllOutOfBoundsProfiles()
{
    std::vector<CheckedRow> rows;
    QStringList misfits;
    for (int i = 0; i < listWidget->count(); ++i) {
        rows.push_back(checkAgainstLimits(itemAt(i), generator));
        if (!rows.back().fits)
            misfits.append(titleAndDescription(recordOf(itemAt(i))));
    }

    if (!misfits.isEmpty() &&
        MessageDialogs::continueWithoutIncompatibleProfiles(
            parentWidget, QString::number(generator->hwVersion()), misfits) == QMessageBox::No) {
        emit revertHardwareLimits();
        return;
    }

    for (const CheckedRow &row : rows) {
        if (row.name && row.fresh)
            row.name->getProfileSettings()->structSettings->setFormulaTrees(row.fresh.get());
    }
    for (const CheckedRow &row : rows) {
        if (row.name && !row.fits)
            deleteProfile(row.name->getListItem());
    }
    if (currentProfile)
        emit settingsPaneUpdateNeeded(currentProfile->profileName);
    else
        emit currentProfileDeleted();
}

void ProfileNamesListManager::profilesWrittenToVelantor(bool success)
{
    if (!success)
        return;
    for (int i = 0; i < listWidget->count(); ++i)
        itemAt(i)->profileName->updateTitle();
}

void ProfileNamesListManager::setEnabledMarkingChanges(bool enable)
{
    if (!enable) {
        for (int i = 0; i < listWidget->count(); ++i) {
            itemAt(i)->profileName->removeOriginalValues();
            itemAt(i)->profileName->updateTitle();
        }
    }
    markingChangesEnabled = enable;
}

void ProfileNamesListManager::enableMarkingChanges()
{
    setEnabledMarkingChanges(true);
}

void ProfileNamesListManager::disableMarkingChanges()
{
    setEnabledMarkingChanges(false);
}
