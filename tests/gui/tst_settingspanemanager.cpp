#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/profileedit.h"
#include "editors/settingspanemanager.h"
#include "editors/unitsettingsdisplay.h"
#include "profiles/profilename.h"
#include "profiles/profilenamelistwidget.h"
#include "profiles/profilenameslistmanager.h"
#include "profiles/profilesettings.h"
#include "ui_mainwindow.h"

#include <QDoubleSpinBox>
#include <QMainWindow>
#include <QPointer>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using HParser::StructSetting;

namespace
{

QString schema(const char *name)
{
    return QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + QLatin1String(name);
}

StructSetting *member(const ProfileSettings *profile, const char *name)
{
    return profile->structSettings->getStructSettingByName(QLatin1String(name));
}

/// The main window's form with schema, list and pane, joined as in the window.
struct Desk {
    Desk()
    {
        ui.setupUi(&window);
        generator.setTooltipFileLoc(schema("setting_tooltips.txt"));
        generator.parseSSFile(schema("master.ss"));
        pane = new SettingsPaneManager(&ui, &generator, &window);
        list = new ProfileNamesListManager(&window, ui.profileNamesList, ui.addProfileButton,
                                           ui.unitSettingsDisplay, ui.profileNameUpButton,
                                           ui.profileNameDownButton, &generator, pane);
        QObject::connect(ui.viewDeviceSettings, &QPushButton::clicked, pane,
                         &SettingsPaneManager::on_viewDeviceSettingsClicked);
        QObject::connect(list, &ProfileNamesListManager::settingsPaneUpdateNeeded, pane,
                         &SettingsPaneManager::updateSettingsPane);
        QObject::connect(list, &ProfileNamesListManager::quickSettingsPaneUpdateNeeded, pane,
                         &SettingsPaneManager::quickUpdateSettingsPane);
        QObject::connect(list, &ProfileNamesListManager::noMoreProfilesLeft, pane,
                         &SettingsPaneManager::on_profilesListEmpty);
        QObject::connect(list, &ProfileNamesListManager::currentProfileDeleted, pane,
                         &SettingsPaneManager::currentProfileDeleted);
        window.show();
        QApplication::setActiveWindow(&window);
        (void)QTest::qWaitForWindowActive(&window);
    }
    ~Desk()
    {
        // As the window does: what holds structs of the schema goes first.
        delete window.takeCentralWidget();
    }

    ProfileSettings *import(const char *title, bool active = false, bool isDefault = false,
                            const char *chemistry = "Lithium")
    {
        auto *made = new ProfileSettings;
        if (!made->initializeStructSettings(QLatin1String(chemistry), &generator))
            qFatal("no such chemistry");
        member(made, "title")->setValue(QString::fromLatin1(title));
        list->on_profileReadyForImport(made, active, isDefault);
        return made;
    }
    ProfileNameListWidget *item(int row) const
    {
        return static_cast<ProfileNameListWidget *>(ui.profileNamesList->item(row));
    }
    ProfileName *row(int index) const { return item(index)->profileName; }
    /// A click on the row, which takes the focus to the list.
    void select(int index) const
    {
        QCoreApplication::processEvents();
        QTest::mouseClick(row(index), Qt::LeftButton, Qt::NoModifier, QPoint(178, 2));
    }
    void press(QAbstractButton *button) const
    {
        // A check box reacts only on its mark and text.
        QTest::mouseClick(button, Qt::LeftButton, Qt::NoModifier, QPoint(8, button->height() / 2));
    }
    void pressRow(int index, const char *button) const
    {
        QTest::mouseClick(row(index)->findChild<QPushButton *>(QLatin1String(button)),
                          Qt::LeftButton);
    }

    StructSetting *device(const char *name) const
    {
        return generator.getUnitSettingsStruct()->getStructSettingByName(QLatin1String(name));
    }
    UnitSettingsDisplay *page() const
    {
        return qobject_cast<UnitSettingsDisplay *>(ui.unitSettingsDisplay->widget());
    }
    /// 0 brightness, 1 screensaver, 2 longpress, 3 cable resistance, 4 tare period.
    QDoubleSpinBox *box(int index) const
    {
        return page()->findChildren<QDoubleSpinBox *>().at(index);
    }
    ProfileEdit *profileEdit() const
    {
        return qobject_cast<ProfileEdit *>(ui.containerScroll->widget());
    }
    QLineEdit *field(const char *accessibleName) const
    {
        for (QLineEdit *one : profileEdit()->findChildren<QLineEdit *>()) {
            if (one->accessibleName() == QLatin1String(accessibleName))
                return one;
        }
        qFatal("no such field");
    }
    /// Texts of the three places where stars stand.
    QStringList starTexts() const
    {
        return {ui.unitSettingsTitle->text(), ui.saveChangesButton->text(),
                ui.viewDeviceSettings->text()};
    }
    /// A charger was read, whose settings are those in memory.
    void chargerWasRead() const { pane->saveUnitSettingsBackup(true); }

    /// Names of the pane's widgets in view.
    QStringList inView() const
    {
        QStringList names;
        const QList<QWidget *> widgets{
            ui.profileSettingsName, ui.profileSettingsDescription, ui.editProfileButton,
            ui.profileActiveButton, ui.profileDefaultButton,       ui.profileModifiableButton,
            ui.containerScroll,     ui.cancelChangesButton,        ui.saveChangesButton,
            ui.unitSettingsDisplay, ui.unitSettingsTitle,          ui.resetDefaults};
        for (const QWidget *widget : widgets) {
            if (widget->isVisible())
                names.append(widget->objectName());
        }
        return names;
    }

    HParser::Generator generator;
    Ui::MainWindow ui;
    QMainWindow window;
    SettingsPaneManager *pane = nullptr;
    ProfileNamesListManager *list = nullptr;
};

const QStringList profileView{"profileSettingsName",  "profileSettingsDescription",
                              "editProfileButton",    "profileActiveButton",
                              "profileDefaultButton", "profileModifiableButton",
                              "containerScroll",      "cancelChangesButton"};
const QStringList deviceView{"cancelChangesButton", "saveChangesButton", "unitSettingsDisplay",
                             "unitSettingsTitle", "resetDefaults"};
const QStringList plainTexts{"Device Settings", "Save Settings to Velantor",
                             "View Device Settings"};
const QStringList starredTexts{"Device Settings*", "Save Settings to Velantor*",
                               "View Device Settings*"};

} // namespace

class SettingsPaneManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { desk = std::make_unique<Desk>(); }
    void cleanup() { desk.reset(); }

    void showsNothingAtFirst();
    void showsAProfile();
    void showsTheStatesOfTheRow();
    void quickUpdateShowsOnlyTwoStates();
    void slotsForTheTwoStates();

    void editButtonGoesDown();
    void backupIsTakenBeforeAnyoneMayEdit();
    void editButtonComesUp();
    void savesOnlyWhatDiffers();
    void nameLeftByTabIsStored();
    void cancelTakesEverythingBack();
    void cancelDropsWhatWasTyped();
    void cancelWithoutTouchingAnything();
    void cancelBringsTheOverrideBack_data();
    void cancelBringsTheOverrideBack();
    void cancelBringsActiveAndDefaultBack();
    void checkBoxesAsk_data();
    void checkBoxesAsk();
    void defaultBoxActivates();
    void activeBoxTakesTheDefaultMark();
    void editableBoxMarksTheRow();

    void anotherProfileLeavesTheFirstInEditMode();
    void typedTextStaysWithItsProfile();
    void typedTextGoesBackThroughTheFirstProfilesBackup();
    void nothingIsWrittenWithoutProfile();
    void editedProfileBehindTheDeviceSettings();
    void showsNewLimitsOfTheProfileInView();

    void movedRowStaysInView();
    void movedRowStaysInEditMode();
    void movedRowBehindTheDeviceSettings();
    void deletedRowLeavesNothing();
    void deletedRowWhileEdited();
    void deletedRowBehindTheDeviceSettings();
    void emptiedListWhileEdited();
    void emptiedListBehindTheDeviceSettings();
    void emptiedListLeavesNoProfile();
    void rowThatDiesUntold();

    void showsDeviceSettings();
    void deviceSettingsFromTheMenu();
    void leavesDeviceSettingsForTheProfile();
    void leavesDeviceSettingsForNothing();
    void loadDefaultsKeepsToTheTop();
    void loadDefaultsReachesOnePage();
    void deviceSettingsAreAlwaysEditable();

    void firstChangeSetsTheStars();
    void noStarsBeforeACharger();
    void noStarsAfterTheCharger();
    void savingTakesTheStars();
    void savingRemembersBeforeItTells();
    void typedDeviceSettingIsTakenOver();
    void starsWhenShownAgain();
    void loadDefaultsAndTheStars();
    void cancelRestoresTheLastSave();
    void cancelRestoresAnInterdependentPair();
    void cancelRestoresWhatThePageWouldCut();
    void cancelAfterAnotherSchema();
    void aReadShowsItsValues();
    void aReadTwice();
    void aFailedRead();
    void aReadBehindAProfile();

    void pageFollowsANewStruct();
    void pageOutOfViewStays();
    void freshPageKeepsItsPlace();
    void freshPageKeepsTheFocus();
    void lowWindowScrollsOneWay();

    void tabsAsTheEyeGoes();
    void fieldsHaveNames();
    void namesAreNotClipped();

private:
    std::unique_ptr<Desk> desk;
};

void SettingsPaneManagerTest::showsNothingAtFirst()
{
    QCOMPARE(desk->inView(), QStringList());
    QVERIFY(desk->ui.viewDeviceSettings->isVisible());
    QVERIFY(!desk->ui.viewDeviceSettings->isChecked());
    QCOMPARE(desk->starTexts(), plainTexts);
    QVERIFY(!desk->pane->getEditMode());
    QCOMPARE(desk->pane->parent(), &desk->window);
}

void SettingsPaneManagerTest::showsAProfile()
{
    ProfileSettings *profile = desk->import("Commuter");
    member(profile, "description")->setValue(QStringLiteral("14s to 80%"));
    QSignalSpy editing(desk->pane, &SettingsPaneManager::editing);
    QSignalSpy resizes(desk->pane, &SettingsPaneManager::resize);
    desk->select(0);

    QCOMPARE(desk->inView(), profileView);
    QCOMPARE(desk->ui.profileSettingsName->text(), QStringLiteral("Commuter"));
    QCOMPARE(desk->ui.profileSettingsDescription->text(), QStringLiteral("14s to 80%"));
    QVERIFY(desk->profileEdit());
    QVERIFY(!desk->ui.editProfileButton->isChecked());
    QVERIFY(!desk->ui.cancelChangesButton->isEnabled());
    QVERIFY(!desk->ui.profileSettingsName->isEnabled());
    QVERIFY(!desk->ui.profileSettingsDescription->isEnabled());
    for (const QLineEdit *field : desk->profileEdit()->findChildren<QLineEdit *>())
        QVERIFY(!field->isEnabled());
    QCOMPARE(editing.count(), 1);
    QCOMPARE(editing.first().first().toBool(), false);
    QCOMPARE(resizes.count(), 0);
}

void SettingsPaneManagerTest::showsTheStatesOfTheRow()
{
    desk->import("On", true, true);
    ProfileSettings *off = desk->import("Off");
    off->setModifiable(false);
    desk->select(0);
    QVERIFY(desk->ui.profileActiveButton->isChecked());
    QVERIFY(desk->ui.profileDefaultButton->isChecked());
    QVERIFY(desk->ui.profileModifiableButton->isChecked());
    desk->select(1);
    QVERIFY(!desk->ui.profileActiveButton->isChecked());
    QVERIFY(!desk->ui.profileDefaultButton->isChecked());
    QVERIFY(!desk->ui.profileModifiableButton->isChecked());
}

void SettingsPaneManagerTest::quickUpdateShowsOnlyTwoStates()
{
    ProfileSettings *profile = desk->import("Commuter");
    desk->select(0);
    const ProfileEdit *before = desk->profileEdit();
    desk->ui.profileSettingsName->setText(QStringLiteral("Typed"));
    profile->setModifiable(false);
    desk->pressRow(0, "defaultProfileButton");
    QVERIFY(desk->ui.profileActiveButton->isChecked());
    QVERIFY(desk->ui.profileDefaultButton->isChecked());
    QVERIFY(desk->ui.profileModifiableButton->isChecked());
    QCOMPARE(desk->ui.profileSettingsName->text(), QStringLiteral("Typed"));
    QCOMPARE(desk->profileEdit(), before);
}

void SettingsPaneManagerTest::slotsForTheTwoStates()
{
    for (const bool on : {true, false}) {
        desk->pane->activateMeClicked(on);
        QCOMPARE(desk->ui.profileActiveButton->isChecked(), on);
        desk->pane->defaultMeClicked(!on);
        QCOMPARE(desk->ui.profileDefaultButton->isChecked(), !on);
    }
}

void SettingsPaneManagerTest::editButtonGoesDown()
{
    desk->import("Commuter");
    desk->select(0);
    QSignalSpy editing(desk->pane, &SettingsPaneManager::editing);
    desk->press(desk->ui.editProfileButton);
    QVERIFY(desk->pane->getEditMode());
    QVERIFY(desk->row(0)->isEditing());
    QVERIFY(desk->ui.editProfileButton->isChecked());
    QVERIFY(desk->ui.cancelChangesButton->isEnabled());
    QVERIFY(desk->ui.profileSettingsName->isEnabled());
    QVERIFY(desk->ui.profileSettingsDescription->isEnabled());
    QVERIFY(desk->field("Bulk Current")->isEnabled());
    QVERIFY(!desk->field("Start Current")->isEnabled());
    QCOMPARE(editing.count(), 1);
    QCOMPARE(editing.first().first().toBool(), true);
    QCOMPARE(desk->inView(), profileView);
}

void SettingsPaneManagerTest::backupIsTakenBeforeAnyoneMayEdit()
{
    ProfileSettings *profile = desk->import("Commuter");
    desk->select(0);
    connect(desk->pane, &SettingsPaneManager::editing, this, [profile](bool on) {
        if (on)
            member(profile, "bulk_I")->setValue(1.0);
    });
    desk->press(desk->ui.editProfileButton);
    QCOMPARE(member(profile, "bulk_I")->getValue(), QStringLiteral("1"));
    desk->press(desk->ui.cancelChangesButton);
    QCOMPARE(member(profile, "bulk_I")->getValue(), QStringLiteral("4"));
}

void SettingsPaneManagerTest::editButtonComesUp()
{
    ProfileSettings *profile = desk->import("Commuter");
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    desk->ui.profileSettingsName->setText(QStringLiteral("Cargo"));
    desk->ui.profileSettingsDescription->setText(QStringLiteral("13s"));
    QTest::keyClicks(desk->field("Bulk Current"), QStringLiteral("."));
    desk->press(desk->ui.editProfileButton);

    QCOMPARE(member(profile, "title")->getValue(), QStringLiteral("Cargo"));
    QCOMPARE(member(profile, "description")->getValue(), QStringLiteral("13s"));
    QCOMPARE(desk->row(0)->getTitle(), QStringLiteral("Cargo"));
    QCOMPARE(desk->row(0)->getSubtitle(), QStringLiteral("13s"));
    QVERIFY(!desk->pane->getEditMode());
    QVERIFY(!desk->row(0)->isEditing());
    QVERIFY(!desk->ui.editProfileButton->isChecked());
    QVERIFY(!desk->ui.cancelChangesButton->isEnabled());
    QVERIFY(!desk->ui.profileSettingsName->isEnabled());
    QVERIFY(!desk->field("Bulk Current")->isEnabled());
}

void SettingsPaneManagerTest::savesOnlyWhatDiffers()
{
    ProfileSettings *profile = desk->import("Commuter");
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    QSignalSpy titles(member(profile, "title"), &StructSetting::valueChanged);
    QSignalSpy descriptions(member(profile, "description"), &StructSetting::valueChanged);
    desk->ui.profileSettingsDescription->setText(QStringLiteral("13s"));
    desk->pane->on_saveButtonClicked();
    QCOMPARE(titles.count(), 0);
    QCOMPARE(descriptions.count(), 1);
}

void SettingsPaneManagerTest::nameLeftByTabIsStored()
{
    ProfileSettings *profile = desk->import("Commuter");
    // Shown several times, it is stored once all the same.
    desk->import("Other");
    desk->select(0);
    desk->select(1);
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    QSignalSpy titles(member(profile, "title"), &StructSetting::valueChanged);
    QLineEdit *name = desk->ui.profileSettingsName;
    name->setFocus();
    name->selectAll();
    QTest::keyClicks(name, QStringLiteral("Cargo bike number one"));
    QCOMPARE(member(profile, "title")->getValue(), QStringLiteral("Commuter"));
    QTest::keyClick(name, Qt::Key_Tab);
    QCOMPARE(member(profile, "title")->getValue(), QStringLiteral("Cargo bike "));
    QCOMPARE(desk->row(0)->getTitle(), QStringLiteral("Cargo bike "));
    QCOMPARE(titles.count(), 1);

    QLineEdit *description = desk->ui.profileSettingsDescription;
    QCOMPARE(QApplication::focusWidget(), description);
    description->selectAll();
    QTest::keyClicks(description, QStringLiteral("with a long description"));
    QTest::keyClick(description, Qt::Key_Tab);
    QCOMPARE(member(profile, "description")->getValue(), QStringLiteral("with a long d"));

    desk->press(desk->ui.cancelChangesButton);
    QCOMPARE(member(profile, "title")->getValue(), QStringLiteral("Commuter"));
    QCOMPARE(member(profile, "description")->getValue(), QStringLiteral("Custom"));
    QCOMPARE(name->text(), QStringLiteral("Commuter"));
    QCOMPARE(description->text(), QStringLiteral("Custom"));
}

void SettingsPaneManagerTest::cancelTakesEverythingBack()
{
    ProfileSettings *profile = desk->import("Commuter", true, true);
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    desk->ui.profileSettingsName->setText(QStringLiteral("Cargo"));
    desk->pane->saveNameAndDescrip();
    member(profile, "bulk_I")->setValue(1.0);
    member(profile, "full_V")->setValue(30.0);
    desk->press(desk->ui.profileActiveButton);
    desk->press(desk->ui.profileModifiableButton);
    QCOMPARE(member(profile, "modifiable")->getValue(), QStringLiteral("false"));

    QSignalSpy editing(desk->pane, &SettingsPaneManager::editing);
    desk->press(desk->ui.cancelChangesButton);
    QCOMPARE(member(profile, "title")->getValue(), QStringLiteral("Commuter"));
    QCOMPARE(member(profile, "bulk_I")->getValue(), QStringLiteral("4"));
    QCOMPARE(member(profile, "full_V")->getValue(), QStringLiteral("42"));
    QCOMPARE(member(profile, "active")->getValue(), QStringLiteral("true"));
    QCOMPARE(member(profile, "defaultprofile")->getValue(), QStringLiteral("true"));
    QCOMPARE(member(profile, "modifiable")->getValue(), QStringLiteral("true"));
    QCOMPARE(desk->ui.profileSettingsName->text(), QStringLiteral("Commuter"));
    QVERIFY(desk->ui.profileActiveButton->isChecked());
    QVERIFY(desk->ui.profileDefaultButton->isChecked());
    QVERIFY(desk->ui.profileModifiableButton->isChecked());
    QCOMPARE(editing.count(), 1);
    QCOMPARE(editing.first().first().toBool(), false);
    QVERIFY(!desk->pane->getEditMode());
    QVERIFY(!desk->row(0)->isEditing());
    QVERIFY(!desk->ui.editProfileButton->isChecked());
    QVERIFY(!desk->ui.profileSettingsName->isEnabled());
}

/// A number that nobody has left yet must not come in when its field is disabled.
void SettingsPaneManagerTest::cancelDropsWhatWasTyped()
{
    ProfileSettings *profile = desk->import("Commuter");
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    QLineEdit *field = desk->field("Bulk Current");
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, QStringLiteral("2.5"));
    desk->pane->on_cancelButtonClicked();
    QCOMPARE(member(profile, "bulk_I")->getValue(), QStringLiteral("4"));
    QCOMPARE(field->text(), QStringLiteral("4.0"));

    desk->press(desk->ui.editProfileButton);
    QLineEdit *name = desk->ui.profileSettingsName;
    name->setFocus();
    QTest::keyClicks(name, QStringLiteral("s"));
    desk->pane->on_cancelButtonClicked();
    QCOMPARE(member(profile, "title")->getValue(), QStringLiteral("Commuter"));
    QCOMPARE(name->text(), QStringLiteral("Commuter"));
}

void SettingsPaneManagerTest::cancelWithoutTouchingAnything()
{
    ProfileSettings *profile = desk->import("Commuter", true);
    const std::unique_ptr<HParser::StructSettings> before(
        profile->structSettings->deepCopyWithValues());
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    desk->press(desk->ui.cancelChangesButton);
    QVERIFY(profile->structSettings->compare(before.get()));
    QCOMPARE(desk->inView(), profileView);
}

void SettingsPaneManagerTest::cancelBringsTheOverrideBack_data()
{
    QTest::addColumn<bool>("overridden");
    QTest::addColumn<QString>("startCurrent");
    QTest::newRow("switched off in the edit") << true << QStringLiteral("1.7");
    QTest::newRow("switched on in the edit") << false << QStringLiteral("0.2");
}

void SettingsPaneManagerTest::cancelBringsTheOverrideBack()
{
    QFETCH(bool, overridden);
    QFETCH(QString, startCurrent);
    ProfileSettings *profile = desk->import("Commuter");
    if (overridden) {
        profile->structSettings->setAdvancedSettingsEdited(true);
        member(profile, "start_I")->advancedEnabled = true;
        member(profile, "start_I")->setValue(1.7);
    }
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    auto *button = desk->profileEdit()->findChild<QPushButton *>(QStringLiteral("editAdvanced"));
    QCOMPARE(button->isChecked(), overridden);
    desk->press(button);
    if (!overridden)
        member(profile, "start_I")->setValue(1.1);
    QVERIFY(member(profile, "start_I")->getValue() != startCurrent);
    desk->press(desk->ui.cancelChangesButton);
    QCOMPARE(button->isChecked(), overridden);
    QCOMPARE(profile->structSettings->getAdvancedSettingsEdited(), overridden);
    QCOMPARE(member(profile, "start_I")->getValue(), startCurrent);
    QVERIFY(!desk->field("Start Current")->isEnabled());
}

void SettingsPaneManagerTest::cancelBringsActiveAndDefaultBack()
{
    desk->import("A", true, true);
    desk->import("B", true);
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    desk->pressRow(1, "defaultProfileButton");
    QVERIFY(!desk->ui.profileDefaultButton->isChecked());
    desk->press(desk->ui.cancelChangesButton);
    QVERIFY(desk->ui.profileDefaultButton->isChecked());
    QVERIFY(desk->row(0)->getDefaultStatus());
    QVERIFY(!desk->row(1)->getDefaultStatus());
}

void SettingsPaneManagerTest::checkBoxesAsk_data()
{
    QTest::addColumn<bool>("inEditMode");
    QTest::newRow("while viewing") << false;
    QTest::newRow("while editing") << true;
}

void SettingsPaneManagerTest::checkBoxesAsk()
{
    QFETCH(bool, inEditMode);
    ProfileSettings *profile = desk->import("Commuter");
    desk->select(0);
    if (inEditMode)
        desk->press(desk->ui.editProfileButton);
    QSignalSpy actives(desk->row(0), &ProfileName::activeStatusChangeRequest);
    QSignalSpy defaults(desk->row(0), &ProfileName::defaultStatusChangeRequest);

    desk->press(desk->ui.profileActiveButton);
    QCOMPARE(actives.count(), 1);
    QCOMPARE(actives.first().at(1).toBool(), true);
    QCOMPARE(defaults.count(), 0);
    QVERIFY(desk->row(0)->getActiveStatus());

    desk->press(desk->ui.profileDefaultButton);
    QCOMPARE(actives.count(), 1);
    QCOMPARE(defaults.count(), 1);
    QVERIFY(desk->row(0)->getDefaultStatus());

    desk->press(desk->ui.profileModifiableButton);
    QCOMPARE(actives.count(), 1);
    QCOMPARE(defaults.count(), 1);
    QVERIFY(!profile->getModifiable());
    desk->press(desk->ui.profileModifiableButton);
    QVERIFY(profile->getModifiable());

    desk->press(desk->ui.profileDefaultButton);
    QVERIFY(!desk->row(0)->getDefaultStatus());
    desk->press(desk->ui.profileActiveButton);
    QVERIFY(!desk->row(0)->getActiveStatus());
    QCOMPARE(desk->pane->getEditMode(), inEditMode);
}

void SettingsPaneManagerTest::defaultBoxActivates()
{
    desk->import("Commuter");
    desk->select(0);
    desk->press(desk->ui.profileDefaultButton);
    QVERIFY(desk->row(0)->getDefaultStatus());
    QVERIFY(desk->row(0)->getActiveStatus());
    QVERIFY(desk->ui.profileActiveButton->isChecked());
    QVERIFY(desk->ui.profileDefaultButton->isChecked());
}

void SettingsPaneManagerTest::activeBoxTakesTheDefaultMark()
{
    desk->import("Commuter", true, true);
    desk->select(0);
    desk->press(desk->ui.profileActiveButton);
    QVERIFY(!desk->row(0)->getActiveStatus());
    QVERIFY(!desk->row(0)->getDefaultStatus());
    QVERIFY(!desk->ui.profileActiveButton->isChecked());
    QVERIFY(!desk->ui.profileDefaultButton->isChecked());
}

void SettingsPaneManagerTest::editableBoxMarksTheRow()
{
    desk->list->enableMarkingChanges();
    desk->import("Commuter");
    desk->select(0);
    desk->press(desk->ui.profileModifiableButton);
    QCOMPARE(desk->row(0)->getTitle(), QStringLiteral("Commuter**"));
    desk->press(desk->ui.profileModifiableButton);
    QCOMPARE(desk->row(0)->getTitle(), QStringLiteral("Commuter"));
}

void SettingsPaneManagerTest::anotherProfileLeavesTheFirstInEditMode()
{
    ProfileSettings *first = desk->import("First");
    desk->import("Second");
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    member(first, "bulk_I")->setValue(1.0);
    desk->select(1);
    QVERIFY(!desk->pane->getEditMode());
    QVERIFY(!desk->ui.editProfileButton->isChecked());
    QVERIFY(!desk->ui.cancelChangesButton->isEnabled());
    QVERIFY(!desk->field("Bulk Current")->isEnabled());
    QVERIFY(desk->row(0)->isEditing());
    QVERIFY(!desk->row(1)->isEditing());

    desk->select(0);
    QVERIFY(desk->pane->getEditMode());
    QVERIFY(desk->ui.editProfileButton->isChecked());
    QVERIFY(desk->ui.cancelChangesButton->isEnabled());
    QVERIFY(desk->ui.profileSettingsName->isEnabled());
    QVERIFY(desk->field("Bulk Current")->isEnabled());
    desk->press(desk->ui.cancelChangesButton);
    QCOMPARE(member(first, "bulk_I")->getValue(), QStringLiteral("4"));
}

void SettingsPaneManagerTest::typedTextStaysWithItsProfile()
{
    ProfileSettings *first = desk->import("First");
    ProfileSettings *second = desk->import("Second");
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    QLineEdit *name = desk->ui.profileSettingsName;
    name->setFocus();
    name->selectAll();
    QTest::keyClicks(name, QStringLiteral("Typed"));
    desk->select(1);
    QCOMPARE(member(first, "title")->getValue(), QStringLiteral("Typed"));
    QCOMPARE(member(second, "title")->getValue(), QStringLiteral("Second"));
    QCOMPARE(name->text(), QStringLiteral("Second"));

    // The same without any click that would take the focus.
    desk->select(0);
    QLineEdit *field = desk->field("Bulk Current");
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, QStringLiteral("2.5"));
    desk->pane->updateSettingsPane(desk->row(1));
    QCOMPARE(member(first, "bulk_I")->getValue(), QStringLiteral("2.5"));
    QCOMPARE(member(second, "bulk_I")->getValue(), QStringLiteral("4"));

    desk->pane->updateSettingsPane(desk->row(0));
    name->setFocus();
    name->selectAll();
    QTest::keyClicks(name, QStringLiteral("Again"));
    desk->pane->updateSettingsPane(desk->row(1));
    QCOMPARE(member(first, "title")->getValue(), QStringLiteral("Again"));
    QCOMPARE(member(second, "title")->getValue(), QStringLiteral("Second"));
    QCOMPARE(desk->row(1)->getTitle(), QStringLiteral("Second"));

    desk->pane->updateSettingsPane(desk->row(0));
    QLineEdit *description = desk->ui.profileSettingsDescription;
    description->setFocus();
    description->selectAll();
    QTest::keyClicks(description, QStringLiteral("Slow"));
    desk->pane->updateSettingsPane(desk->row(1));
    QCOMPARE(member(first, "description")->getValue(), QStringLiteral("Slow"));
    QCOMPARE(member(second, "description")->getValue(), QStringLiteral("Custom"));
}

void SettingsPaneManagerTest::typedTextGoesBackThroughTheFirstProfilesBackup()
{
    ProfileSettings *first = desk->import("First");
    desk->import("Second");
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    desk->ui.profileSettingsName->setFocus();
    QTest::keyClicks(desk->ui.profileSettingsName, QStringLiteral("x"));
    desk->select(1);
    QCOMPARE(member(first, "title")->getValue(), QStringLiteral("Firstx"));
    desk->select(0);
    desk->press(desk->ui.cancelChangesButton);
    QCOMPARE(member(first, "title")->getValue(), QStringLiteral("First"));
}

void SettingsPaneManagerTest::nothingIsWrittenWithoutProfile()
{
    desk->pane->saveNameAndDescrip();
    desk->pane->on_saveButtonClicked();
    desk->pane->on_cancelButtonClicked();
    desk->pane->on_editButtonClicked(true);
    desk->pane->on_editButtonClicked(false);
    desk->pane->updateButtonSettings();
    desk->pane->currentProfileDeleted();
    QCOMPARE(desk->inView(), QStringList());
}

void SettingsPaneManagerTest::editedProfileBehindTheDeviceSettings()
{
    ProfileSettings *profile = desk->import("Commuter");
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    desk->ui.profileSettingsName->setFocus();
    QTest::keyClicks(desk->ui.profileSettingsName, QStringLiteral("s"));
    desk->pane->on_viewDeviceSettingsClicked();
    QCOMPARE(member(profile, "title")->getValue(), QStringLiteral("Commuters"));
    QVERIFY(desk->row(0)->isEditing());
    // Cancel belongs to the device settings now.
    desk->press(desk->ui.cancelChangesButton);
    QCOMPARE(member(profile, "title")->getValue(), QStringLiteral("Commuters"));
    desk->select(0);
    QVERIFY(desk->pane->getEditMode());
    desk->press(desk->ui.cancelChangesButton);
    QCOMPARE(member(profile, "title")->getValue(), QStringLiteral("Commuter"));
}

void SettingsPaneManagerTest::showsNewLimitsOfTheProfileInView()
{
    ProfileSettings *profile = desk->import("Commuter");
    member(profile, "full_V")->setValue(30.0);
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    const QPointer<ProfileEdit> before = desk->profileEdit();
    desk->generator.parseSSFile(schema("24V_rev7.ss"));
    desk->list->deleteAllOutOfBoundsProfiles();
    QVERIFY(!before);
    QVERIFY(desk->pane->getEditMode());
    QLineEdit *field = desk->field("Full Voltage");
    QVERIFY(field->isEnabled());
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, QStringLiteral("50\r"));
    QCOMPARE(field->text(), QStringLiteral("34.0"));
}

void SettingsPaneManagerTest::movedRowStaysInView()
{
    ProfileSettings *profile = desk->import("Commuter");
    desk->import("Other");
    desk->select(0);
    const QPointer<ProfileName> old = desk->row(0);
    const ProfileEdit *edit = desk->profileEdit();
    QSignalSpy editing(desk->pane, &SettingsPaneManager::editing);
    desk->press(desk->ui.profileNameDownButton);
    QCOMPARE(editing.count(), 0);
    QCOMPARE(desk->profileEdit(), edit);
    QTRY_VERIFY(!old);

    // What is done in the pane now reaches the new row.
    desk->press(desk->ui.profileActiveButton);
    QVERIFY(desk->row(1)->getActiveStatus());
    desk->press(desk->ui.editProfileButton);
    QVERIFY(desk->row(1)->isEditing());
    desk->ui.profileSettingsName->setText(QStringLiteral("Cargo"));
    desk->press(desk->ui.editProfileButton);
    QCOMPARE(member(profile, "title")->getValue(), QStringLiteral("Cargo"));
    QCOMPARE(desk->row(1)->getTitle(), QStringLiteral("Cargo"));
}

void SettingsPaneManagerTest::movedRowStaysInEditMode()
{
    ProfileSettings *profile = desk->import("Commuter", true);
    desk->import("Other");
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    const QPointer<ProfileName> old = desk->row(0);
    member(profile, "bulk_I")->setValue(1.0);
    desk->ui.profileSettingsName->setFocus();
    QTest::keyClicks(desk->ui.profileSettingsName, QStringLiteral("s"));
    desk->press(desk->ui.profileNameDownButton);
    QTRY_VERIFY(!old);
    QVERIFY(desk->pane->getEditMode());
    QVERIFY(desk->row(1)->isEditing());
    QVERIFY(desk->ui.cancelChangesButton->isEnabled());
    QCOMPARE(member(profile, "title")->getValue(), QStringLiteral("Commuters"));
    desk->press(desk->ui.cancelChangesButton);
    QCOMPARE(member(profile, "bulk_I")->getValue(), QStringLiteral("4"));
    QCOMPARE(member(profile, "title")->getValue(), QStringLiteral("Commuter"));
    QVERIFY(desk->row(1)->getActiveStatus());
    QVERIFY(!desk->row(1)->isEditing());
    QVERIFY(desk->ui.profileActiveButton->isChecked());
}

void SettingsPaneManagerTest::movedRowBehindTheDeviceSettings()
{
    desk->import("Commuter");
    desk->import("Other");
    desk->select(0);
    desk->press(desk->ui.viewDeviceSettings);
    const QPointer<ProfileName> old = desk->row(0);
    desk->press(desk->ui.profileNameDownButton);
    QTRY_VERIFY(!old);
    QCOMPARE(desk->inView(), deviceView);
    desk->press(desk->ui.viewDeviceSettings);
    QCOMPARE(desk->inView(), profileView);
    QCOMPARE(desk->ui.profileSettingsName->text(), QStringLiteral("Commuter"));
}

void SettingsPaneManagerTest::deletedRowLeavesNothing()
{
    desk->import("Commuter");
    desk->import("Other");
    desk->select(0);
    desk->list->deleteProfile(desk->item(0));
    QCOMPARE(desk->inView(), QStringList());
    desk->select(0);
    QCOMPARE(desk->inView(), profileView);
    QCOMPARE(desk->ui.profileSettingsName->text(), QStringLiteral("Other"));
}

void SettingsPaneManagerTest::deletedRowWhileEdited()
{
    desk->import("Commuter");
    ProfileSettings *other = desk->import("Other");
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    const QPointer<ProfileName> old = desk->row(0);
    desk->ui.profileSettingsName->setFocus();
    QTest::keyClicks(desk->ui.profileSettingsName, QStringLiteral("s"));
    desk->list->deleteProfile(desk->item(0));
    QVERIFY(!desk->pane->getEditMode());
    QTRY_VERIFY(!old);
    QCOMPARE(desk->inView(), QStringList());
    desk->pane->saveNameAndDescrip();
    desk->select(0);
    QVERIFY(!desk->pane->getEditMode());
    QCOMPARE(member(other, "title")->getValue(), QStringLiteral("Other"));
    QCOMPARE(desk->ui.profileSettingsName->text(), QStringLiteral("Other"));
    QVERIFY(!desk->ui.profileSettingsName->isEnabled());
}

void SettingsPaneManagerTest::deletedRowBehindTheDeviceSettings()
{
    desk->import("Commuter");
    desk->import("Other");
    desk->select(0);
    desk->press(desk->ui.viewDeviceSettings);
    const UnitSettingsDisplay *page = desk->page();
    desk->list->deleteProfile(desk->item(0));
    QCOMPARE(desk->inView(), deviceView);
    QCOMPARE(desk->page(), page);
    QVERIFY(desk->ui.viewDeviceSettings->isChecked());
    desk->press(desk->ui.viewDeviceSettings);
    QCOMPARE(desk->inView(), QStringList());
}

void SettingsPaneManagerTest::emptiedListWhileEdited()
{
    desk->import("Commuter");
    desk->import("Other");
    desk->select(1);
    desk->press(desk->ui.editProfileButton);
    QLineEdit *field = desk->field("Bulk Current");
    field->setFocus();
    QTest::keyClicks(field, QStringLiteral("9"));
    desk->list->deleteAllProfilesNoConfirmation();
    ProfileSettings *read = desk->import("Read", true);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(desk->inView(), QStringList());
    QVERIFY(!desk->pane->getEditMode());
    desk->select(0);
    QCOMPARE(desk->inView(), profileView);
    QVERIFY(!desk->ui.editProfileButton->isChecked());
    QCOMPARE(member(read, "bulk_I")->getValue(), QStringLiteral("4"));
}

void SettingsPaneManagerTest::emptiedListBehindTheDeviceSettings()
{
    desk->import("Commuter");
    desk->select(0);
    desk->press(desk->ui.viewDeviceSettings);
    desk->list->deleteAllProfilesNoConfirmation();
    QCOMPARE(desk->inView(), deviceView);
    QVERIFY(desk->ui.viewDeviceSettings->isChecked());
    QVERIFY(desk->ui.cancelChangesButton->isEnabled());
    desk->press(desk->ui.viewDeviceSettings);
    QCOMPARE(desk->inView(), QStringList());
}

void SettingsPaneManagerTest::emptiedListLeavesNoProfile()
{
    ProfileSettings *profile = desk->import("Commuter");
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    desk->pane->on_profilesListEmpty();
    QVERIFY(!desk->pane->getEditMode());
    desk->ui.profileSettingsName->setText(QStringLiteral("Cargo"));
    desk->pane->saveNameAndDescrip();
    QCOMPARE(member(profile, "title")->getValue(), QStringLiteral("Commuter"));
    desk->pane->on_viewDeviceSettingsClicked(true);
    desk->pane->on_viewDeviceSettingsClicked(false);
    QCOMPARE(desk->inView(), QStringList());
}

void SettingsPaneManagerTest::rowThatDiesUntold()
{
    auto *profile = new ProfileSettings;
    QVERIFY(profile->initializeStructSettings(QStringLiteral("Lithium"), &desk->generator));
    auto item = std::make_unique<ProfileNameListWidget>(profile);
    desk->pane->updateSettingsPane(item->profileName);
    desk->press(desk->ui.editProfileButton);
    item.reset();
    desk->pane->saveNameAndDescrip();
    desk->pane->on_cancelButtonClicked();
    desk->pane->on_saveButtonClicked();
    desk->pane->updateButtonSettings();
    desk->pane->on_viewDeviceSettingsClicked(true);
    desk->pane->on_viewDeviceSettingsClicked(false);
    QCOMPARE(desk->inView(), QStringList());
}

void SettingsPaneManagerTest::showsDeviceSettings()
{
    desk->import("Commuter");
    desk->select(0);
    QSignalSpy resizes(desk->pane, &SettingsPaneManager::resize);
    desk->press(desk->ui.viewDeviceSettings);
    QCOMPARE(desk->inView(), deviceView);
    QVERIFY(desk->ui.viewDeviceSettings->isChecked());
    QVERIFY(desk->page());
    QCOMPARE(desk->ui.unitSettingsDisplay->frameShape(), QFrame::NoFrame);
    QVERIFY(desk->ui.cancelChangesButton->isEnabled());
    QVERIFY(!desk->ui.saveChangesButton->isEnabled());
    QCOMPARE(resizes.count(), 1);
    QCOMPARE(desk->box(0)->value(), 5.0);
}

void SettingsPaneManagerTest::deviceSettingsFromTheMenu()
{
    desk->pane->on_viewDeviceSettingsClicked();
    QCOMPARE(desk->inView(), deviceView);
    QVERIFY(desk->ui.viewDeviceSettings->isChecked());
    const UnitSettingsDisplay *page = desk->page();
    QSignalSpy resizes(desk->pane, &SettingsPaneManager::resize);
    desk->pane->on_viewDeviceSettingsClicked();
    QCOMPARE(desk->page(), page);
    QCOMPARE(resizes.count(), 0);
    QCOMPARE(desk->inView(), deviceView);
}

void SettingsPaneManagerTest::leavesDeviceSettingsForTheProfile()
{
    desk->import("Commuter");
    desk->select(0);
    desk->press(desk->ui.viewDeviceSettings);
    QSignalSpy resizes(desk->pane, &SettingsPaneManager::resize);
    // The window still finds the button of the device settings down, beside the profile's widgets.
    bool buttonDown = false;
    bool editInView = false;
    connect(desk->pane, &SettingsPaneManager::resize, this, [&] {
        buttonDown = desk->ui.viewDeviceSettings->isChecked();
        editInView = desk->ui.editProfileButton->isVisible();
    });
    // A click on the row in view brings it back.
    desk->select(0);
    QCOMPARE(resizes.count(), 1);
    QVERIFY(buttonDown);
    QVERIFY(editInView);
    QCOMPARE(desk->inView(), profileView);
    QVERIFY(!desk->ui.viewDeviceSettings->isChecked());
    QVERIFY(!desk->ui.cancelChangesButton->isEnabled());

    // So does the button.
    desk->press(desk->ui.viewDeviceSettings);
    QCOMPARE(desk->inView(), deviceView);
    desk->press(desk->ui.viewDeviceSettings);
    QCOMPARE(desk->inView(), profileView);
    QCOMPARE(desk->ui.profileSettingsName->text(), QStringLiteral("Commuter"));
}

void SettingsPaneManagerTest::leavesDeviceSettingsForNothing()
{
    desk->press(desk->ui.viewDeviceSettings);
    QCOMPARE(desk->inView(), deviceView);
    desk->press(desk->ui.viewDeviceSettings);
    QCOMPARE(desk->inView(), QStringList());
    QVERIFY(!desk->ui.viewDeviceSettings->isChecked());
    // They count as not showing: they can be shown again.
    const QPointer<UnitSettingsDisplay> former = desk->page();
    desk->pane->on_viewDeviceSettingsClicked();
    QCOMPARE(desk->inView(), deviceView);
    QVERIFY(!former);
}

void SettingsPaneManagerTest::loadDefaultsKeepsToTheTop()
{
    const int height = desk->ui.resetDefaults->height();
    const int row = desk->ui.cancelChangesButton->y();
    desk->press(desk->ui.viewDeviceSettings);
    QCOMPARE(desk->ui.resetDefaults->y(), row);
    QCOMPARE(desk->ui.resetDefaults->height(), height);

    // Beside the page the window puts Cancel on the row of Save; Load Defaults does not follow.
    const QRect save = desk->ui.saveChangesButton->geometry();
    desk->ui.cancelChangesButton->setGeometry(save.translated(save.width() + 15, 0));
    desk->chargerWasRead();
    QCOMPARE(desk->ui.resetDefaults->y(), row);
    QCOMPARE(desk->ui.resetDefaults->height(), height);
}

void SettingsPaneManagerTest::loadDefaultsReachesOnePage()
{
    desk->press(desk->ui.viewDeviceSettings);
    const QPointer<UnitSettingsDisplay> first = desk->page();
    desk->press(desk->ui.viewDeviceSettings);
    desk->press(desk->ui.viewDeviceSettings);
    desk->chargerWasRead();
    QVERIFY(!first);
    desk->box(0)->setValue(9);
    desk->box(1)->setValue(100);
    QCOMPARE(desk->device("brightness")->getValue(), QStringLiteral("9"));
    QSignalSpy brightness(desk->device("brightness"), &StructSetting::valueChanged);
    desk->press(desk->ui.resetDefaults);
    QCOMPARE(brightness.count(), 1);
    QCOMPARE(desk->device("brightness")->getValue(), QStringLiteral("5"));
    QCOMPARE(desk->device("screensaver_delay_m")->getValue(), QStringLiteral("5"));
    QCOMPARE(desk->box(0)->value(), 5.0);
}

void SettingsPaneManagerTest::deviceSettingsAreAlwaysEditable()
{
    desk->press(desk->ui.viewDeviceSettings);
    for (int i = 0; i < 5; ++i)
        QVERIFY(desk->box(i)->isEnabled());
    QTest::keyClick(desk->box(0), Qt::Key_Up);
    QCOMPARE(desk->device("brightness")->getValue(), QStringLiteral("6"));
    QCOMPARE(desk->box(0)->value(), 6.0);
    desk->press(desk->page()->findChild<QCheckBox *>());
    QCOMPARE(desk->device("flip_display")->getValue(), QStringLiteral("true"));
    desk->press(desk->ui.cancelChangesButton);
    QCOMPARE(desk->device("brightness")->getValue(), QStringLiteral("5"));
    QCOMPARE(desk->device("flip_display")->getValue(), QStringLiteral("false"));
}

void SettingsPaneManagerTest::firstChangeSetsTheStars()
{
    desk->chargerWasRead();
    desk->press(desk->ui.viewDeviceSettings);
    QVERIFY(desk->ui.saveChangesButton->isEnabled());
    QCOMPARE(desk->starTexts(), plainTexts);
    desk->box(0)->setValue(6);
    QCOMPARE(desk->starTexts(), starredTexts);
    desk->box(0)->setValue(7);
    desk->press(desk->page()->findChild<QCheckBox *>());
    QCOMPARE(desk->starTexts(), starredTexts);
    desk->pane->unitSettingsUISaved();
    QCOMPARE(desk->starTexts(), plainTexts);
    desk->pane->unitSettingsUISaved();
    QCOMPARE(desk->starTexts(), plainTexts);
    QCOMPARE(desk->device("brightness")->getValue(), QStringLiteral("7"));
}

void SettingsPaneManagerTest::noStarsBeforeACharger()
{
    desk->press(desk->ui.viewDeviceSettings);
    desk->box(0)->setValue(6);
    QCOMPARE(desk->device("brightness")->getValue(), QStringLiteral("6"));
    QCOMPARE(desk->starTexts(), plainTexts);
    QVERIFY(!desk->ui.saveChangesButton->isEnabled());
}

void SettingsPaneManagerTest::noStarsAfterTheCharger()
{
    desk->chargerWasRead();
    desk->press(desk->ui.viewDeviceSettings);
    desk->pane->disconnectSettingsChanges();
    QVERIFY(!desk->ui.saveChangesButton->isEnabled());
    desk->box(0)->setValue(6);
    QCOMPARE(desk->starTexts(), plainTexts);

    // The same for a page that is out of view when the charger goes.
    desk->chargerWasRead();
    desk->press(desk->ui.viewDeviceSettings);
    desk->pane->disconnectSettingsChanges();
    desk->press(desk->ui.viewDeviceSettings);
    QVERIFY(!desk->ui.saveChangesButton->isEnabled());
    desk->box(0)->setValue(7);
    QCOMPARE(desk->starTexts(), plainTexts);
}

void SettingsPaneManagerTest::savingTakesTheStars()
{
    desk->chargerWasRead();
    desk->press(desk->ui.viewDeviceSettings);
    desk->box(0)->setValue(6);
    QSignalSpy saves(desk->pane, &SettingsPaneManager::saveUnitSettings);
    desk->press(desk->ui.saveChangesButton);
    QCOMPARE(saves.count(), 1);
    QCOMPARE(desk->starTexts(), plainTexts);
    QCOMPARE(desk->inView(), deviceView);
    QVERIFY(desk->ui.saveChangesButton->isEnabled());
    QCOMPARE(desk->device("brightness")->getValue(), QStringLiteral("6"));
    QCOMPARE(desk->box(0)->value(), 6.0);
    // And the next change sets them again.
    desk->box(0)->setValue(7);
    QCOMPARE(desk->starTexts(), starredTexts);
}

void SettingsPaneManagerTest::savingRemembersBeforeItTells()
{
    desk->chargerWasRead();
    desk->press(desk->ui.viewDeviceSettings);
    desk->box(0)->setValue(6);
    QString restored;
    connect(desk->pane, &SettingsPaneManager::saveUnitSettings, this, [&] {
        desk->device("brightness")->setValue(1.0);
        desk->pane->on_cancelButtonClicked();
        restored = desk->device("brightness")->getValue();
    });
    desk->press(desk->ui.saveChangesButton);
    QCOMPARE(restored, QStringLiteral("6"));
}

/// A write by tool bar or menu takes no focus from the field.
void SettingsPaneManagerTest::typedDeviceSettingIsTakenOver()
{
    desk->chargerWasRead();
    desk->press(desk->ui.viewDeviceSettings);
    desk->box(1)->setFocus();
    desk->box(1)->selectAll();
    QTest::keyClicks(desk->box(1), QStringLiteral("42"));
    QCOMPARE(desk->device("screensaver_delay_m")->getValue(), QStringLiteral("5"));
    desk->pane->unitSettingsUISaved();
    QCOMPARE(desk->device("screensaver_delay_m")->getValue(), QStringLiteral("42"));
    QCOMPARE(desk->starTexts(), plainTexts);
    QVERIFY(desk->box(1)->hasFocus());
}

void SettingsPaneManagerTest::starsWhenShownAgain()
{
    desk->chargerWasRead();
    desk->press(desk->ui.viewDeviceSettings);
    desk->box(0)->setValue(6);
    desk->press(desk->ui.viewDeviceSettings);
    QCOMPARE(desk->ui.viewDeviceSettings->text(), QStringLiteral("View Device Settings*"));
    desk->press(desk->ui.viewDeviceSettings);
    QCOMPARE(desk->box(0)->value(), 6.0);
    QCOMPARE(desk->starTexts(),
             QStringList({"Device Settings*", "Save to Velantor*", "View Device Settings*"}));
    desk->box(0)->setValue(7);
    QCOMPARE(desk->ui.saveChangesButton->text(), QStringLiteral("Save to Velantor*"));
    desk->press(desk->ui.saveChangesButton);
    QCOMPARE(desk->starTexts(),
             QStringList({"Device Settings", "Save to Velantor", "View Device Settings"}));
    desk->box(0)->setValue(8);
    QCOMPARE(desk->ui.saveChangesButton->text(), QStringLiteral("Save to Velantor*"));
}

void SettingsPaneManagerTest::loadDefaultsAndTheStars()
{
    desk->chargerWasRead();
    desk->press(desk->ui.viewDeviceSettings);
    desk->press(desk->ui.resetDefaults);
    QCOMPARE(desk->starTexts(), plainTexts);
    desk->press(desk->ui.viewDeviceSettings);
    desk->device("brightness")->setValue(9.0);
    desk->chargerWasRead();
    desk->press(desk->ui.viewDeviceSettings);
    QCOMPARE(desk->starTexts(), plainTexts);
    desk->press(desk->ui.resetDefaults);
    QCOMPARE(desk->device("brightness")->getValue(), QStringLiteral("5"));
    QCOMPARE(desk->starTexts(), starredTexts);
}

void SettingsPaneManagerTest::cancelRestoresTheLastSave()
{
    desk->chargerWasRead();
    desk->press(desk->ui.viewDeviceSettings);
    desk->box(0)->setValue(6);
    desk->box(3)->setValue(0.123);
    desk->press(desk->ui.saveChangesButton);
    for (int time = 0; time < 2; ++time) {
        desk->box(0)->setValue(9);
        desk->box(1)->setValue(240);
        desk->box(3)->setValue(0.999);
        desk->press(desk->page()->findChild<QCheckBox *>());
        desk->press(desk->ui.cancelChangesButton);
        QCOMPARE(desk->device("brightness")->getValue(), QStringLiteral("6"));
        QCOMPARE(desk->device("screensaver_delay_m")->getValue(), QStringLiteral("5"));
        QCOMPARE(desk->device("cable_resistance_mOhm")->getValue(), QStringLiteral("0.123"));
        QCOMPARE(desk->device("flip_display")->getValue(), QStringLiteral("false"));
        QCOMPARE(desk->box(0)->value(), 6.0);
        QCOMPARE(desk->box(3)->value(), 0.123);
        QVERIFY(!desk->page()->findChild<QCheckBox *>()->isChecked());
        QCOMPARE(desk->starTexts(), plainTexts);
        QCOMPARE(desk->inView(), deviceView);
    }
}

/// The bound of the longpress time is twice the hidden shortpress time, which stands behind it.
void SettingsPaneManagerTest::cancelRestoresAnInterdependentPair()
{
    for (const char *name : {"longpress_time_cs", "shortpress_time_cs"})
        desk->device(name)->advancedEnabled = true;
    desk->device("shortpress_time_cs")->setValue(0.01);
    desk->device("longpress_time_cs")->setValue(0.02);
    desk->chargerWasRead();
    desk->press(desk->ui.viewDeviceSettings);
    desk->device("shortpress_time_cs")->setValue(0.03);
    QCOMPARE(desk->device("longpress_time_cs")->getValue(), QStringLiteral("0.06"));
    desk->press(desk->ui.cancelChangesButton);
    QCOMPARE(desk->device("shortpress_time_cs")->getValue(), QStringLiteral("0.01"));
    QCOMPARE(desk->device("longpress_time_cs")->getValue(), QStringLiteral("0.02"));
    QCOMPARE(desk->box(2)->value(), 0.02);
}

/// A page that was made while the bound was higher.
void SettingsPaneManagerTest::cancelRestoresWhatThePageWouldCut()
{
    for (const char *name : {"longpress_time_cs", "shortpress_time_cs"})
        desk->device(name)->advancedEnabled = true;
    desk->device("shortpress_time_cs")->setValue(0.01);
    desk->device("longpress_time_cs")->setValue(0.02);
    desk->chargerWasRead();
    desk->device("shortpress_time_cs")->setValue(0.03);
    desk->press(desk->ui.viewDeviceSettings);
    QCOMPARE(desk->box(2)->minimum(), 0.06);
    desk->press(desk->ui.cancelChangesButton);
    QCOMPARE(desk->device("longpress_time_cs")->getValue(), QStringLiteral("0.02"));
    QCOMPARE(desk->box(2)->value(), 0.02);
    QCOMPARE(desk->box(2)->minimum(), 0.02);
    QCOMPARE(desk->starTexts().at(0), QStringLiteral("Device Settings"));
    QCOMPARE(desk->inView(), deviceView);
}

void SettingsPaneManagerTest::cancelAfterAnotherSchema()
{
    desk->press(desk->ui.viewDeviceSettings);
    desk->box(0)->setValue(6);
    desk->box(3)->setValue(0.29);
    desk->chargerWasRead();
    desk->generator.parseSSFile(schema("master.ss"));
    QCOMPARE(desk->device("brightness")->getValue(), QStringLiteral("5"));
    desk->press(desk->ui.cancelChangesButton);
    QCOMPARE(desk->device("brightness")->getValue(), QStringLiteral("6"));
    QCOMPARE(desk->device("cable_resistance_mOhm")->getValue(), QStringLiteral("0.29"));
    QCOMPARE(desk->box(0)->value(), 6.0);
}

void SettingsPaneManagerTest::aReadShowsItsValues()
{
    desk->press(desk->ui.viewDeviceSettings);
    const QPointer<UnitSettingsDisplay> before = desk->page();
    desk->box(0)->setValue(6);
    QSignalSpy resizes(desk->pane, &SettingsPaneManager::resize);
    desk->chargerWasRead();
    QVERIFY(!before);
    QCOMPARE(desk->inView(), deviceView);
    QVERIFY(desk->ui.viewDeviceSettings->isChecked());
    QVERIFY(desk->ui.saveChangesButton->isEnabled());
    QCOMPARE(resizes.count(), 1);
    QCOMPARE(desk->box(0)->value(), 6.0);
    QCOMPARE(desk->starTexts(), plainTexts);
    desk->box(0)->setValue(7);
    QCOMPARE(desk->starTexts(), starredTexts);
    desk->press(desk->ui.cancelChangesButton);
    QCOMPARE(desk->device("brightness")->getValue(), QStringLiteral("6"));
}

/// Once before the values come and once behind them: no star is left, and they are remembered.
void SettingsPaneManagerTest::aReadTwice()
{
    desk->press(desk->ui.viewDeviceSettings);
    desk->chargerWasRead();
    desk->device("brightness")->setValue(8.0);
    desk->device("flip_display")->setValue(true);
    QVERIFY(desk->starTexts().at(0).endsWith(QLatin1Char('*')));
    desk->chargerWasRead();
    QVERIFY(!desk->starTexts().join(QString()).contains(QLatin1Char('*')));
    QCOMPARE(desk->box(0)->value(), 8.0);
    desk->box(0)->setValue(1);
    desk->press(desk->ui.cancelChangesButton);
    QCOMPARE(desk->device("brightness")->getValue(), QStringLiteral("8"));
    QCOMPARE(desk->device("flip_display")->getValue(), QStringLiteral("true"));
}

void SettingsPaneManagerTest::aFailedRead()
{
    desk->chargerWasRead();
    desk->press(desk->ui.viewDeviceSettings);
    desk->box(0)->setValue(6);
    desk->pane->saveUnitSettingsBackup(false);
    QVERIFY(!desk->ui.saveChangesButton->isEnabled());
    QVERIFY(!desk->starTexts().join(QString()).contains(QLatin1Char('*')));
    desk->box(0)->setValue(7);
    QVERIFY(!desk->starTexts().join(QString()).contains(QLatin1Char('*')));
}

void SettingsPaneManagerTest::aReadBehindAProfile()
{
    desk->import("Commuter");
    desk->select(0);
    QSignalSpy resizes(desk->pane, &SettingsPaneManager::resize);
    desk->chargerWasRead();
    QCOMPARE(desk->inView(), profileView);
    QCOMPARE(resizes.count(), 0);
    QVERIFY(!desk->ui.viewDeviceSettings->isChecked());
}

void SettingsPaneManagerTest::pageFollowsANewStruct()
{
    desk->chargerWasRead();
    desk->press(desk->ui.viewDeviceSettings);
    desk->box(0)->setValue(6);
    const QPointer<UnitSettingsDisplay> before = desk->page();
    desk->generator.parseSSFile(schema("48V_FSv2.ss"));
    QVERIFY(!before);
    QCOMPARE(desk->inView(), deviceView);
    // Neither stars nor availability have changed.
    for (const QString &text : desk->starTexts())
        QVERIFY(text.endsWith(QLatin1Char('*')));
    QVERIFY(desk->ui.saveChangesButton->isEnabled());
    QCOMPARE(desk->box(0)->value(), 5.0);
    desk->box(0)->setValue(8);
    QCOMPARE(desk->device("brightness")->getValue(), QStringLiteral("8"));
}

void SettingsPaneManagerTest::pageOutOfViewStays()
{
    desk->import("Commuter");
    desk->press(desk->ui.viewDeviceSettings);
    desk->select(0);
    const QPointer<UnitSettingsDisplay> before = desk->page();
    desk->generator.parseSSFile(schema("48V_FSv2.ss"));
    QVERIFY(before);
    QCOMPARE(desk->inView(), profileView);
    desk->press(desk->ui.viewDeviceSettings);
    desk->box(0)->setValue(8);
    QCOMPARE(desk->device("brightness")->getValue(), QStringLiteral("8"));
}

void SettingsPaneManagerTest::freshPageKeepsItsPlace()
{
    desk->press(desk->ui.viewDeviceSettings);
    desk->ui.unitSettingsDisplay->resize(480, 200);
    QCoreApplication::processEvents();
    QScrollBar *bar = desk->ui.unitSettingsDisplay->verticalScrollBar();
    QVERIFY(bar->maximum() > 100);
    bar->setValue(100);
    desk->chargerWasRead();
    QCoreApplication::processEvents();
    QCOMPARE(bar->value(), 100);
}

void SettingsPaneManagerTest::freshPageKeepsTheFocus()
{
    desk->chargerWasRead();
    desk->press(desk->ui.viewDeviceSettings);
    desk->box(0)->setValue(6);
    desk->ui.saveChangesButton->setFocus();
    QTest::keyClick(desk->ui.saveChangesButton, Qt::Key_Space);
    QCOMPARE(desk->starTexts(), plainTexts);
    QCOMPARE(QApplication::focusWidget(), desk->ui.saveChangesButton);
}

void SettingsPaneManagerTest::lowWindowScrollsOneWay()
{
    desk->press(desk->ui.viewDeviceSettings);
    desk->ui.unitSettingsDisplay->resize(480, 200);
    QCoreApplication::processEvents();
    QVERIFY(desk->ui.unitSettingsDisplay->verticalScrollBar()->isVisible());
    QVERIFY(!desk->ui.unitSettingsDisplay->horizontalScrollBar()->isVisible());
}

namespace
{
/// Names of what a tab reaches from this widget on, until one of the last name comes.
QStringList tabsFrom(QWidget *first, const QString &last)
{
    QStringList names;
    QWidget *widget = first;
    do {
        if ((widget->focusPolicy() & Qt::TabFocus) && widget->isVisible() && widget->isEnabled() &&
            !widget->focusProxy())
            names.append(widget->accessibleName().isEmpty() ? widget->objectName()
                                                            : widget->accessibleName());
        widget = widget->nextInFocusChain();
    } while (widget != first && (names.isEmpty() || names.last() != last));
    return names;
}
} // namespace

void SettingsPaneManagerTest::tabsAsTheEyeGoes()
{
    desk->import("Commuter");
    desk->select(0);
    desk->press(desk->ui.editProfileButton);
    const QStringList profile =
        tabsFrom(desk->ui.profileSettingsName, QStringLiteral("Full Voltage"));
    QCOMPARE(profile.mid(0, 9),
             QStringList({"Profile name", "Profile description", "cancelChangesButton",
                          "profileActiveButton", "profileDefaultButton", "profileModifiableButton",
                          "editProfileButton", "Profile settings", profile.value(8)}));
    QVERIFY(desk->profileEdit()->isAncestorOf(desk->field(profile.value(8).toLatin1())));

    desk->press(desk->ui.viewDeviceSettings);
    const QStringList device =
        tabsFrom(desk->ui.resetDefaults, QStringLiteral("cancelChangesButton"));
    QCOMPARE(device.mid(0, 2), QStringList({"resetDefaults", "Device settings"}));
    QCOMPARE(device.mid(device.size() - 1), QStringList({"cancelChangesButton"}));
    QVERIFY(device.size() > 8);

    desk->press(desk->ui.viewDeviceSettings);
    QCOMPARE(tabsFrom(desk->ui.profileSettingsName, QStringLiteral("Full Voltage")), profile);
}

void SettingsPaneManagerTest::fieldsHaveNames()
{
    QCOMPARE(desk->ui.profileSettingsName->accessibleName(), QStringLiteral("Profile name"));
    QCOMPARE(desk->ui.profileSettingsDescription->accessibleName(),
             QStringLiteral("Profile description"));
    QCOMPARE(desk->ui.containerScroll->accessibleName(), QStringLiteral("Profile settings"));
    QCOMPARE(desk->ui.unitSettingsDisplay->accessibleName(), QStringLiteral("Device settings"));
}

void SettingsPaneManagerTest::namesAreNotClipped()
{
    desk->window.setFont(QFont(QStringLiteral("Arial"), 9)); // the suite's own
    QVERIFY(desk->ui.profileSettingsName->font() == desk->window.font());
    desk->import("Commuter");
    desk->select(0);
    const QLineEdit *name = desk->ui.profileSettingsName;
    QVERIFY(name->font().bold());
    QVERIFY(name->font().pointSize() > desk->window.font().pointSize());
    QVERIFY(name->fontMetrics().height() + 4 <= name->height());
    const QLineEdit *description = desk->ui.profileSettingsDescription;
    QVERIFY(description->font().pointSize() > desk->window.font().pointSize());
    QVERIFY(description->font().pointSize() < name->font().pointSize());
    QVERIFY(description->fontMetrics().height() + 4 <= description->height());
    QVERIFY(description->fontMetrics().horizontalAdvance(QStringLiteral("To work & back")) + 8 <=
            description->width());
    QVERIFY(name->fontMetrics().horizontalAdvance(QStringLiteral("Cargo bike 2")) + 8 <=
            name->width());
    desk->press(desk->ui.viewDeviceSettings);
    const QLabel *title = desk->ui.unitSettingsTitle;
    QVERIFY(title->fontMetrics().horizontalAdvance(QStringLiteral("Device Settings*")) <=
            title->width());
    QVERIFY(title->fontMetrics().height() <= title->height());
}

QTEST_MAIN(SettingsPaneManagerTest)
#include "tst_settingspanemanager.moc"
