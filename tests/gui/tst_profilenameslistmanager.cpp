#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/newprofilewizard.h"
#include "editors/profileedit.h"
#include "editors/settingslineedit.h"
#include "editors/settingspanemanager.h"
#include "profiles/profilename.h"
#include "profiles/profilenamelistwidget.h"
#include "profiles/profilenameslistmanager.h"
#include "profiles/profilesettings.h"
#include "profiles/profileshare.h"
#include "support/messageboxanswers.h"
#include "ui_mainwindow.h"

#include <QLabel>
#include <QListWidget>
#include <QMainWindow>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextDocument>

#include <memory>

using HParser::StructSetting;

Q_DECLARE_METATYPE(ProfileName *)

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

/// The main window's form with the list and the settings pane, and their managers. What the list
/// tells reaches the pane only in the tests that say so.
struct Window {
    Window()
    {
        ui.setupUi(&widget);
        generator.parseSSFile(schema("master.ss"));
        pane = new SettingsPaneManager(&ui, &generator, &widget);
        manager =
            new ProfileNamesListManager(&widget, &list(), ui.addProfileButton,
                                        ui.unitSettingsDisplay, &up(), &down(), &generator, pane);
        widget.show();
    }
    ~Window()
    {
        // As the window does: what holds structs of the schema goes first.
        delete widget.takeCentralWidget();
    }
    QListWidget &list() const { return *ui.profileNamesList; }
    QPushButton &up() const { return *ui.profileNameUpButton; }
    QPushButton &down() const { return *ui.profileNameDownButton; }
    void joinPane() const
    {
        QObject::connect(manager, &ProfileNamesListManager::settingsPaneUpdateNeeded, pane,
                         &SettingsPaneManager::updateSettingsPane);
        QObject::connect(manager, &ProfileNamesListManager::currentProfileDeleted, pane,
                         &SettingsPaneManager::currentProfileDeleted);
    }

    /// A profile that fits the limits of every charger.
    ProfileSettings *profile(const char *title, const char *chemistry = "Lithium")
    {
        auto *made = new ProfileSettings;
        if (!made->initializeStructSettings(QLatin1String(chemistry), &generator))
            qFatal("no such chemistry");
        member(made, "title")->setValue(QString::fromLatin1(title));
        if (qstrcmp(chemistry, "Lithium") == 0)
            member(made, "full_V")->setValue(30.0);
        return made;
    }
    ProfileSettings *import(const char *title, bool active = false, bool isDefault = false)
    {
        ProfileSettings *made = profile(title);
        manager->on_profileReadyForImport(made, active, isDefault);
        return made;
    }
    /// As from a file or a charger: the profile belongs to what shows it.
    ProfileSettings *importForRows(const char *title)
    {
        ProfileSettings *made = profile(title);
        ProfileShare::handOver(made);
        manager->on_profileReadyForImport(made, false, false);
        return made;
    }
    void addNew(ProfileSettings *made)
    {
        QVERIFY(
            QMetaObject::invokeMethod(manager, "addNewProfile", Q_ARG(ProfileSettings *, made)));
    }
    ProfileNameListWidget *item(int row) const
    {
        return static_cast<ProfileNameListWidget *>(list().item(row));
    }
    ProfileName *row(int row) const { return item(row)->profileName; }
    void click(int rowIndex) const
    {
        // The list puts its rows into place from the event loop.
        QCoreApplication::processEvents();
        QTest::mouseClick(row(rowIndex), Qt::LeftButton, Qt::NoModifier, QPoint(178, 2));
    }
    void press(int rowIndex, const char *button) const
    {
        QTest::mouseClick(row(rowIndex)->findChild<QPushButton *>(QLatin1String(button)),
                          Qt::LeftButton);
    }
    QStringList titles() const
    {
        QStringList result;
        for (int i = 0; i < list().count(); ++i)
            result.append(row(i)->getTitle());
        return result;
    }
    /// "A" for active and "D" for default, for each row.
    QStringList states() const
    {
        QStringList result;
        for (int i = 0; i < list().count(); ++i)
            result.append(QLatin1String(row(i)->getActiveStatus() ? "A" : "") +
                          QLatin1String(row(i)->getDefaultStatus() ? "D" : ""));
        return result;
    }
    bool highlighted(int rowIndex) const
    {
        return row(rowIndex)->styleSheet() == QLatin1String("background-color:rgb(200,200,200);");
    }

    HParser::Generator generator;
    Ui::MainWindow ui;
    QMainWindow widget;
    SettingsPaneManager *pane = nullptr;
    ProfileNamesListManager *manager = nullptr;
};

ProfileName *rowOf(const QList<QVariant> &arguments)
{
    return arguments.at(0).value<ProfileName *>();
}

QStringList texts(std::initializer_list<const char *> list)
{
    QStringList result;
    for (const char *text : list)
        result.append(QLatin1String(text));
    return result;
}

} // namespace

class ProfileNamesListManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void preparesTheWidgets();
    void addsNewProfiles();
    void addButtonOpensTheWizard();
    void cancelledWizardAddsNothing();
    void importsProfiles();
    void firstImportedDefaultWins();
    void importedStatesAreTakenAsTheyAre();
    void importAfterTheDefaultIsGone();

    void selectsByClick();
    void secondClickDoesNothing();
    void secondClickLeavesDeviceSettings();
    void selectsByKey();

    void lampAsks();
    void deactivatingTakesTheDefaultMark();
    void deactivatingAnotherRowKeepsTheDefault();
    void defaultMarkMoves();
    void defaultMarkIsTakenBack();
    void cancelledEditBringsTheDefaultMarkBack();
    void cancelledEditTakesTheDefaultMarkBack();
    void quickUpdates_data();
    void quickUpdates();
    void statesAtQuickUpdates();

    void movesRows();
    void movesNothingAtTheEnds();
    void movesNothingWithoutCurrentRow();
    void movedDefaultStaysDefault();
    void movedDefaultCanBeDeactivated();
    void moveOfAnotherRowKeepsTheDefault();
    void movedRowStaysCurrentAndConnected();
    void movedRowStopsMarking();
    void movedRowScrollsIntoView();

    void moveTellsThePane();

    void asksBeforeDeleting_data();
    void asksBeforeDeleting();
    void asksWithTheMarkedTitle();
    void titleInTheQuestionIsNoMarkup();
    void rowThatWentWhileAsking();
    void deletesCurrentRow();
    void deletesAnotherRow();
    void deletesTheLastRow();
    void deletesTheDefaultRow();
    void deletesOnlyOnce();
    void removedProfileEndsWithItsRow();
    void removedProfileStaysWhileThePaneShowsIt();
    void movedRowKeepsItsProfile();
    void deletesAll();
    void asksBeforeDeletingAll_data();
    void asksBeforeDeletingAll();

    void rowsAreReadableWhateverTheDesktopsColours();
    void rowsOfAChargerMarkChanges();
    void importedDefaultIsNoChange();
    void otherRowsFollowTheirTexts();
    void disablingEndsTheMarking();
    void enablingTouchesNoRow();
    void aWriteClearsTheMarks();
    void aFailedWriteKeepsTheMarks();

    void newLimitsThatFit();
    void newLimitsRefreshThePane();
    void newLimitsWithoutCurrentRow();
    void misfitsAreRemoved();
    void misfitsAreKept();
    void currentMisfitIsRemoved();
    void rowsThatWentWhileAskingAboutMisfits();

private:
    std::unique_ptr<Window> window;
    std::unique_ptr<MessageBoxAnswers> answers;
};

void ProfileNamesListManagerTest::initTestCase()
{
    qRegisterMetaType<ProfileName *>();
    qRegisterMetaType<ProfileSettings *>("ProfileSettings*");
}

void ProfileNamesListManagerTest::init()
{
    window = std::make_unique<Window>();
    answers = std::make_unique<MessageBoxAnswers>();
}

void ProfileNamesListManagerTest::cleanup()
{
    answers.reset();
    window.reset();
}

void ProfileNamesListManagerTest::preparesTheWidgets()
{
    QCOMPARE(window->list().selectionMode(), QAbstractItemView::NoSelection);
    QCOMPARE(window->list().verticalScrollMode(), QAbstractItemView::ScrollPerPixel);
    QCOMPARE(window->list().styleSheet(),
             QStringLiteral("QListWidget::item { border-bottom: 1px solid black; }"));
    QVERIFY(!window->up().isEnabled());
    QVERIFY(!window->down().isEnabled());
    QCOMPARE(ProfileNameListWidget::qlistWidget, &window->list());
    QCOMPARE(window->manager->parent(), &window->widget);
}

void ProfileNamesListManagerTest::addsNewProfiles()
{
    QSignalSpy shown(window->manager, &ProfileNamesListManager::settingsPaneUpdateNeeded);
    window->import("First");
    window->addNew(window->profile("Second"));
    QCOMPARE(window->titles(), texts({"First", "Second"}));
    QCOMPARE(window->states(), texts({"", ""}));
    QCOMPARE(shown.count(), 1);
    QCOMPARE(rowOf(shown.last()), window->row(1));
    QVERIFY(window->highlighted(1));
    QVERIFY(!window->highlighted(0));
    QVERIFY(window->up().isEnabled());
    QVERIFY(window->down().isEnabled());

    for (int i = 0; i < 30; ++i)
        window->addNew(window->profile("More"));
    QVERIFY(window->highlighted(31));
    QVERIFY(!window->highlighted(1));
    QVERIFY(window->list().viewport()->rect().contains(
        window->list().visualItemRect(window->item(31)).center()));
}

void ProfileNamesListManagerTest::addButtonOpensTheWizard()
{
    window->joinPane();
    window->import("First");
    QTest::mouseClick(window->ui.addProfileButton, Qt::LeftButton);
    const QPointer<NewProfileWizard> wizard = window->widget.findChild<NewProfileWizard *>();
    QVERIFY(wizard);
    QVERIFY(wizard->isVisible());
    for (QPushButton *button : wizard->findChildren<QPushButton *>()) {
        if (button->text() == QLatin1String("Lead"))
            button->click();
    }
    wizard->findChild<QPushButton *>(QStringLiteral("finishButton"))->click();
    QTRY_VERIFY(!wizard);

    QCOMPARE(window->titles(), texts({"First", "Lead"}));
    QCOMPARE(window->row(1)->getProfileSettings()->chemistry, QStringLiteral("Lead"));
    QVERIFY(window->highlighted(1));
    QVERIFY(window->ui.containerScroll->isVisible());
    QCOMPARE(window->ui.profileSettingsName->text(), QStringLiteral("Lead"));
    QVERIFY(!window->row(1)->isEditing());
    // A new profile is no change of what was read.
    QVERIFY(!window->row(1)->getOriginalValues());
}

void ProfileNamesListManagerTest::cancelledWizardAddsNothing()
{
    QTest::mouseClick(window->ui.addProfileButton, Qt::LeftButton);
    const QPointer<NewProfileWizard> wizard = window->widget.findChild<NewProfileWizard *>();
    QVERIFY(wizard);
    wizard->findChild<QPushButton *>(QStringLiteral("cancelButton"))->click();
    QTRY_VERIFY(!wizard);
    QCOMPARE(window->list().count(), 0);
}

void ProfileNamesListManagerTest::importsProfiles()
{
    QSignalSpy shown(window->manager, &ProfileNamesListManager::settingsPaneUpdateNeeded);
    window->import("On", true);
    window->import("Off", false);
    QCOMPARE(window->titles(), texts({"On", "Off"}));
    QCOMPARE(window->states(), texts({"A", ""}));
    QVERIFY(window->row(0)->getOriginalValues());
    QCOMPARE(window->row(0)
                 ->getOriginalValues()
                 ->getStructSettingByName(QStringLiteral("active"))
                 ->getValue(),
             QStringLiteral("true"));
    QCOMPARE(shown.count(), 0);
    QVERIFY(!window->highlighted(0));
    QVERIFY(!window->up().isEnabled());
}

void ProfileNamesListManagerTest::firstImportedDefaultWins()
{
    window->import("None", true, false);
    window->import("First", true, true);
    window->import("Second", true, true);
    QCOMPARE(window->states(), texts({"A", "AD", "A"}));
}

/// What was read goes back to the charger as it was, until the user changes it.
void ProfileNamesListManagerTest::importedStatesAreTakenAsTheyAre()
{
    window->import("Asleep", false, true);
    QCOMPARE(window->states(), texts({"D"}));
    window->press(0, "activeProfileButton");
    QCOMPARE(window->states(), texts({"AD"}));
}

void ProfileNamesListManagerTest::importAfterTheDefaultIsGone()
{
    window->import("First", true, true);
    window->manager->deleteProfile(window->item(0));
    window->import("Second", true, true);
    QCOMPARE(window->states(), texts({"AD"}));
}

void ProfileNamesListManagerTest::selectsByClick()
{
    window->import("A");
    window->import("B");
    QSignalSpy shown(window->manager, &ProfileNamesListManager::settingsPaneUpdateNeeded);
    // The pane hears of it when the list shows it.
    bool readyAtSignal = false;
    connect(window->manager, &ProfileNamesListManager::settingsPaneUpdateNeeded, this, [&] {
        readyAtSignal =
            window->highlighted(1) && window->up().isEnabled() && window->down().isEnabled();
    });
    window->click(1);
    QVERIFY(readyAtSignal);
    QCOMPARE(shown.count(), 1);
    QCOMPARE(rowOf(shown.last()), window->row(1));
    QVERIFY(window->highlighted(1));
    QVERIFY(window->up().isEnabled());
    QVERIFY(window->down().isEnabled());

    window->click(0);
    QCOMPARE(shown.count(), 2);
    QCOMPARE(rowOf(shown.last()), window->row(0));
    QVERIFY(window->highlighted(0));
    QCOMPARE(window->row(1)->styleSheet(), QStringLiteral("background-color:rgb(255,255,255);"));
}

void ProfileNamesListManagerTest::secondClickDoesNothing()
{
    window->import("A");
    window->click(0);
    QSignalSpy shown(window->manager, &ProfileNamesListManager::settingsPaneUpdateNeeded);
    window->click(0);
    QCOMPARE(shown.count(), 0);
    QVERIFY(window->highlighted(0));
}

void ProfileNamesListManagerTest::secondClickLeavesDeviceSettings()
{
    window->import("A");
    window->click(0);
    QSignalSpy shown(window->manager, &ProfileNamesListManager::settingsPaneUpdateNeeded);
    window->ui.unitSettingsDisplay->show();
    window->click(0);
    QCOMPARE(shown.count(), 1);
    QCOMPARE(rowOf(shown.last()), window->row(0));
    QVERIFY(window->highlighted(0));
}

void ProfileNamesListManagerTest::selectsByKey()
{
    QSignalSpy shown(window->manager, &ProfileNamesListManager::settingsPaneUpdateNeeded);
    const auto press = [&](Qt::Key key) {
        QTest::keyClick(&window->list(), key);
        return window->list().count() == 0 || shown.isEmpty() ? QString()
                                                              : rowOf(shown.last())->getTitle();
    };
    QCOMPARE(press(Qt::Key_Down), QString()); // no row is there
    for (const char *title : {"A", "B", "C", "D", "E", "F", "G", "H", "I", "J", "K", "L", "M"})
        window->import(title);
    QCOMPARE(press(Qt::Key_Down), QStringLiteral("A"));
    QCOMPARE(press(Qt::Key_Down), QStringLiteral("B"));
    QVERIFY(window->highlighted(1));
    QVERIFY(!window->highlighted(0));
    QCOMPARE(press(Qt::Key_Up), QStringLiteral("A"));
    QCOMPARE(press(Qt::Key_Up), QStringLiteral("A"));
    QCOMPARE(shown.count(), 3); // the first row is in view already
    QCOMPARE(press(Qt::Key_End), QStringLiteral("M"));
    QVERIFY(window->list().viewport()->rect().contains(
        window->list().visualItemRect(window->item(12)).center()));
    QCOMPARE(press(Qt::Key_Down), QStringLiteral("M"));
    QCOMPARE(press(Qt::Key_Home), QStringLiteral("A"));
    QCOMPARE(shown.count(), 5);

    // From the device settings back to the profile.
    window->ui.unitSettingsDisplay->show();
    QCOMPARE(press(Qt::Key_Space), QStringLiteral("A"));
    QCOMPARE(shown.count(), 6);
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        window->ui.unitSettingsDisplay->hide();
        QCOMPARE(press(Qt::Key_End), QStringLiteral("M"));
        window->ui.unitSettingsDisplay->show();
        const int before = shown.count();
        QCOMPARE(press(key), QStringLiteral("M"));
        QCOMPARE(shown.count(), before + 1);
    }
}

void ProfileNamesListManagerTest::lampAsks()
{
    window->import("A");
    window->press(0, "activeProfileButton");
    QCOMPARE(window->states(), texts({"A"}));
    window->press(0, "activeProfileButton");
    QCOMPARE(window->states(), texts({""}));
}

void ProfileNamesListManagerTest::deactivatingTakesTheDefaultMark()
{
    window->import("A", true, true);
    window->press(0, "activeProfileButton");
    QCOMPARE(window->states(), texts({""}));
    // No row counts as the default one any more: the next import may become it.
    window->import("B", true, true);
    QCOMPARE(window->states(), texts({"", "AD"}));
}

void ProfileNamesListManagerTest::deactivatingAnotherRowKeepsTheDefault()
{
    window->import("A", true, true);
    window->import("B", true);
    window->press(1, "activeProfileButton");
    QCOMPARE(window->states(), texts({"AD", ""}));
    window->import("C", true, true);
    QCOMPARE(window->states(), texts({"AD", "", "A"}));
}

void ProfileNamesListManagerTest::defaultMarkMoves()
{
    window->import("A", true, true);
    window->import("B", false);
    window->press(1, "defaultProfileButton");
    QCOMPARE(window->states(), texts({"A", "AD"}));
    window->press(0, "defaultProfileButton");
    QCOMPARE(window->states(), texts({"AD", "A"}));
}

void ProfileNamesListManagerTest::defaultMarkIsTakenBack()
{
    window->import("A");
    window->press(0, "defaultProfileButton");
    QCOMPARE(window->states(), texts({"AD"}));
    window->press(0, "defaultProfileButton");
    QCOMPARE(window->states(), texts({"A"}));
    window->import("B", true, true);
    QCOMPARE(window->states(), texts({"A", "AD"}));
}

void ProfileNamesListManagerTest::cancelledEditBringsTheDefaultMarkBack()
{
    window->import("A", true, true);
    window->import("B", true);
    window->row(0)->saveBackups();
    window->press(1, "defaultProfileButton");
    QCOMPARE(window->states(), texts({"A", "AD"}));
    window->row(0)->restoreBackup();
    QCOMPARE(window->states(), texts({"AD", "A"}));
    window->press(1, "defaultProfileButton");
    QCOMPARE(window->states(), texts({"A", "AD"}));
}

void ProfileNamesListManagerTest::cancelledEditTakesTheDefaultMarkBack()
{
    window->import("A");
    window->row(0)->saveBackups();
    window->press(0, "defaultProfileButton");
    QCOMPARE(window->states(), texts({"AD"}));
    window->row(0)->restoreBackup();
    QCOMPARE(window->states(), texts({""}));
    // No row counts as the default one any more.
    window->import("B", true, true);
    QCOMPARE(window->states(), texts({"", "AD"}));
}

void ProfileNamesListManagerTest::quickUpdates_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<bool>("state");
    QTest::addColumn<int>("updates");
    QTest::newRow("activate") << QByteArray("activeProfileButton") << false << 1;
    QTest::newRow("deactivate") << QByteArray("activeProfileButton") << true << 2;
    QTest::newRow("make default") << QByteArray("defaultProfileButton") << false << 1;
    QTest::newRow("take default") << QByteArray("defaultProfileButton") << true << 1;
}

/// The row in view is named, whichever row has changed; without one nothing is said.
void ProfileNamesListManagerTest::quickUpdates()
{
    QFETCH(QByteArray, button);
    QFETCH(bool, state);
    QFETCH(int, updates);
    window->import("Changed", state, state);
    window->import("In view");
    QSignalSpy quick(window->manager, &ProfileNamesListManager::quickSettingsPaneUpdateNeeded);
    QSignalSpy full(window->manager, &ProfileNamesListManager::settingsPaneUpdateNeeded);
    window->press(0, button);
    QCOMPARE(quick.count(), 0);

    window->row(0)->setActive(state);
    window->row(0)->setDefault(state);
    window->click(1);
    QCOMPARE(full.count(), 1);
    window->press(0, button);
    QCOMPARE(quick.count(), updates);
    for (const QList<QVariant> &arguments : quick)
        QCOMPARE(rowOf(arguments), window->row(1));
    QCOMPARE(full.count(), 1);
}

/// What the pane finds in the list at each update.
void ProfileNamesListManagerTest::statesAtQuickUpdates()
{
    window->import("A", true, true);
    window->import("B", false);
    window->click(0);
    QStringList seen;
    connect(window->manager, &ProfileNamesListManager::quickSettingsPaneUpdateNeeded, this,
            [&] { seen.append(window->states().join(QLatin1Char('/'))); });
    window->press(1, "defaultProfileButton");
    QCOMPARE(seen, texts({"A/AD"}));
    seen.clear();
    window->press(1, "defaultProfileButton");
    QCOMPARE(seen, texts({"A/A"}));
    window->press(1, "defaultProfileButton");
    seen.clear();
    // Two changes, and the pane hears of each.
    window->press(1, "activeProfileButton");
    QCOMPARE(seen, texts({"A/D", "A/"}));
}

void ProfileNamesListManagerTest::movesRows()
{
    window->import("A");
    window->import("B");
    window->import("C");
    window->click(0);
    QTest::mouseClick(&window->down(), Qt::LeftButton);
    QCOMPARE(window->titles(), texts({"B", "A", "C"}));
    QTest::mouseClick(&window->down(), Qt::LeftButton);
    QCOMPARE(window->titles(), texts({"B", "C", "A"}));
    QTest::mouseClick(&window->up(), Qt::LeftButton);
    QTest::mouseClick(&window->up(), Qt::LeftButton);
    QCOMPARE(window->titles(), texts({"A", "B", "C"}));
    QVERIFY(window->highlighted(0));
}

void ProfileNamesListManagerTest::movesNothingAtTheEnds()
{
    window->import("A");
    window->import("B");
    window->click(0);
    const QListWidgetItem *first = window->item(0);
    window->manager->profilePushUp();
    QCOMPARE(window->list().item(0), first);
    window->click(1);
    const QListWidgetItem *last = window->item(1);
    window->manager->profilePushDown();
    QCOMPARE(window->list().item(1), last);
    QCOMPARE(window->titles(), texts({"A", "B"}));
}

void ProfileNamesListManagerTest::movesNothingWithoutCurrentRow()
{
    window->manager->profilePushUp();
    window->manager->profilePushDown();
    window->import("A");
    window->import("B");
    window->import("C");
    window->click(1);
    window->manager->deleteProfile(window->item(1));
    QVERIFY(window->up().isEnabled());
    window->manager->profilePushUp();
    window->manager->profilePushDown();
    QCOMPARE(window->titles(), texts({"A", "C"}));
}

void ProfileNamesListManagerTest::movedDefaultStaysDefault()
{
    window->import("A", true, true);
    window->import("B", true);
    window->click(0);
    window->manager->profilePushDown();
    QCOMPARE(window->titles(), texts({"B", "A"}));
    QCOMPARE(window->states(), texts({"A", "AD"}));
    // The mark can still be taken from it, and its new row shows that.
    window->press(0, "defaultProfileButton");
    QCOMPARE(window->states(), texts({"AD", "A"}));
    QCOMPARE(
        window->row(1)->findChild<QPushButton *>(QStringLiteral("defaultProfileButton"))->toolTip(),
        QStringLiteral("Not Default"));
}

void ProfileNamesListManagerTest::movedDefaultCanBeDeactivated()
{
    window->import("A", true, true);
    window->import("B", true);
    window->click(0);
    window->manager->profilePushDown();
    window->press(1, "activeProfileButton");
    QCOMPARE(window->states(), texts({"A", ""}));
    // No default is left, so that one which is imported gets the mark.
    window->import("C", true, true);
    QCOMPARE(window->states(), texts({"A", "", "AD"}));
}

void ProfileNamesListManagerTest::moveOfAnotherRowKeepsTheDefault()
{
    window->import("A", true, true);
    window->import("B", true);
    window->import("C", true);
    window->click(1);
    window->manager->profilePushDown();
    QCOMPARE(window->states(), texts({"AD", "A", "A"}));
    // It still is the one that gives the mark up.
    window->press(2, "defaultProfileButton");
    QCOMPARE(window->states(), texts({"A", "A", "AD"}));
}

void ProfileNamesListManagerTest::movedRowStaysCurrentAndConnected()
{
    ProfileSettings *moved = window->import("A");
    window->import("B");
    window->click(0);
    QSignalSpy shown(window->manager, &ProfileNamesListManager::settingsPaneUpdateNeeded);
    QSignalSpy deleted(window->manager, &ProfileNamesListManager::currentProfileDeleted);
    const QPointer<ProfileName> old = window->row(0);
    window->manager->profilePushDown();
    QTRY_VERIFY(!old);
    QCOMPARE(shown.count(), 0);
    QCOMPARE(deleted.count(), 0);
    QCOMPARE(window->row(1)->getProfileSettings(), moved);
    window->click(1);
    QCOMPARE(shown.count(), 0);

    member(moved, "title")->setValue(QStringLiteral("Renamed"));
    QCOMPARE(window->titles(), texts({"B", "Renamed"}));
    window->press(1, "activeProfileButton");
    QCOMPARE(window->states(), texts({"", "A"}));
    window->manager->deleteProfile(window->item(1));
    QCOMPARE(deleted.count(), 1);
}

void ProfileNamesListManagerTest::movedRowStopsMarking()
{
    window->manager->enableMarkingChanges();
    ProfileSettings *moved = window->import("A");
    window->import("B");
    member(moved, "bulk_I")->setValue(1.0);
    window->click(0);
    window->manager->profilePushDown();
    QCOMPARE(window->titles(), texts({"B", "A**"}));
    member(moved, "bulk_I")->setValue(2.0);
    QCOMPARE(window->titles(), texts({"B", "A"}));
}

void ProfileNamesListManagerTest::movedRowScrollsIntoView()
{
    for (int i = 0; i < 17; ++i)
        window->import("A");
    window->click(0);
    for (int i = 0; i < 16; ++i)
        window->manager->profilePushDown();
    QVERIFY(window->highlighted(16));
    QVERIFY(window->list().viewport()->rect().contains(
        window->list().visualItemRect(window->item(16)).center()));
}

void ProfileNamesListManagerTest::moveTellsThePane()
{
    window->joinPane();
    ProfileSettings *moved = window->import("A");
    window->import("B");
    window->click(0);
    window->pane->on_editButtonClicked(true);
    member(moved, "bulk_I")->setValue(1.0);
    const QPointer<ProfileName> old = window->row(0);
    const QWidget *shown = window->ui.containerScroll->widget();
    window->manager->profilePushDown();
    // At once: the former row goes with the event loop.
    window->pane->activateMeClicked(true);
    window->pane->updateButtonSettings();
    QCOMPARE(window->states(), texts({"", "A"}));
    QTRY_VERIFY(!old);
    QCOMPARE(window->ui.containerScroll->widget(), shown);
    window->pane->on_cancelButtonClicked();
    QCOMPARE(member(moved, "bulk_I")->getValue(), QStringLiteral("4"));
    QVERIFY(!window->row(1)->isEditing());
}

void ProfileNamesListManagerTest::asksBeforeDeleting_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<int>("left");
    QTest::newRow("yes") << int(QMessageBox::Yes) << 1;
    QTest::newRow("no") << int(QMessageBox::No) << 2;
    QTest::newRow("enter") << 0 << 2;
}

void ProfileNamesListManagerTest::asksBeforeDeleting()
{
    QFETCH(int, button);
    QFETCH(int, left);
    window->import("Keep");
    window->import("Go");
    answers->push([&](QMessageBox *box) {
        if (button == 0)
            QTest::keyClick(box, Qt::Key_Return);
        else
            box->button(QMessageBox::StandardButton(button))->click();
    });
    window->press(1, "deleteProfileButton");
    QCOMPARE(answers->seen().size(), 1);
    const MessageBoxAnswers::Box box = answers->seen().first();
    QCOMPARE(box.title, QStringLiteral("Deleting Profile"));
    QCOMPARE(box.text, QStringLiteral("Do you really want to remove the profile <b>\"Go\"</b>?"));
    QCOMPARE(box.buttons.size(), 2);
    QCOMPARE(window->list().count(), left);
    QCOMPARE(window->row(0)->getTitle(), QStringLiteral("Keep"));
}

void ProfileNamesListManagerTest::asksWithTheMarkedTitle()
{
    window->manager->enableMarkingChanges();
    ProfileSettings *profile = window->import("Go");
    member(profile, "bulk_I")->setValue(1.0);
    answers->push(QMessageBox::No);
    window->press(0, "deleteProfileButton");
    QCOMPARE(answers->seen().value(0).text,
             QStringLiteral("Do you really want to remove the profile <b>\"Go**\"</b>?"));
}

void ProfileNamesListManagerTest::titleInTheQuestionIsNoMarkup()
{
    window->import("<i>A&lt;B");
    QString shown;
    answers->push([&](QMessageBox *box) {
        QTextDocument text;
        text.setHtml(box->text());
        shown = text.toPlainText();
        box->button(QMessageBox::No)->click();
    });
    window->press(0, "deleteProfileButton");
    QCOMPARE(shown, QStringLiteral("Do you really want to remove the profile \"<i>A&lt;B\"?"));
}

void ProfileNamesListManagerTest::rowThatWentWhileAsking()
{
    window->import("Go");
    window->import("Keep");
    const QPointer<ProfileName> name = window->row(0);
    answers->push([&](QMessageBox *box) {
        window->manager->deleteProfile(window->item(0));
        QTRY_VERIFY(!name);
        box->button(QMessageBox::Yes)->click();
    });
    window->manager->deleteProfileWithConfirmation(name);
    QCOMPARE(window->titles(), texts({"Keep"}));
}

void ProfileNamesListManagerTest::deletesCurrentRow()
{
    window->import("A");
    window->import("B");
    window->click(1);
    QSignalSpy deleted(window->manager, &ProfileNamesListManager::currentProfileDeleted);
    QSignalSpy empty(window->manager, &ProfileNamesListManager::noMoreProfilesLeft);
    const QPointer<ProfileName> name = window->row(1);
    // Whoever hears of it finds no row in view any more.
    QSignalSpy quick(window->manager, &ProfileNamesListManager::quickSettingsPaneUpdateNeeded);
    connect(window->manager, &ProfileNamesListManager::currentProfileDeleted, this,
            [this] { window->press(0, "activeProfileButton"); });
    window->manager->deleteProfile(window->item(1));
    QCOMPARE(window->titles(), texts({"A"}));
    QCOMPARE(window->states(), texts({"A"}));
    QCOMPARE(quick.count(), 0);
    QCOMPARE(deleted.count(), 1);
    QCOMPARE(empty.count(), 0);
    QVERIFY(window->up().isEnabled());
    QTRY_VERIFY(!name);

    // The former row in view is forgotten.
    window->press(0, "activeProfileButton");
    QCOMPARE(quick.count(), 0);
    window->click(0);
    QVERIFY(window->highlighted(0));
}

void ProfileNamesListManagerTest::deletesAnotherRow()
{
    window->import("A");
    window->import("B");
    window->click(1);
    QSignalSpy deleted(window->manager, &ProfileNamesListManager::currentProfileDeleted);
    window->manager->deleteProfile(window->item(0));
    QCOMPARE(deleted.count(), 0);
    QVERIFY(window->highlighted(0));
}

void ProfileNamesListManagerTest::deletesTheLastRow()
{
    window->import("A");
    window->click(0);
    QStringList order;
    connect(window->manager, &ProfileNamesListManager::currentProfileDeleted,
            [&] { order.append(QStringLiteral("current")); });
    connect(window->manager, &ProfileNamesListManager::noMoreProfilesLeft,
            [&] { order.append(QStringLiteral("empty")); });
    window->manager->deleteProfile(window->item(0));
    QCOMPARE(order, texts({"current", "empty"}));
    QVERIFY(!window->up().isEnabled());
    QVERIFY(!window->down().isEnabled());
}

void ProfileNamesListManagerTest::deletesTheDefaultRow()
{
    window->import("A", true, true);
    window->import("B", true);
    window->manager->deleteProfile(window->item(0));
    QCOMPARE(window->states(), texts({"A"}));
    window->press(0, "defaultProfileButton");
    QCOMPARE(window->states(), texts({"AD"}));
}

void ProfileNamesListManagerTest::deletesOnlyOnce()
{
    window->import("A");
    window->import("B");
    ProfileNameListWidget *item = window->item(0);
    window->manager->deleteProfile(item);
    window->manager->deleteProfile(item);
    window->manager->deleteProfile(nullptr);
    QCOMPARE(window->titles(), texts({"B"}));
}

void ProfileNamesListManagerTest::removedProfileEndsWithItsRow()
{
    const QPointer<HParser::StructSettings> removed(window->importForRows("A")->structSettings);
    const QPointer<HParser::StructSettings> left(window->importForRows("B")->structSettings);
    window->manager->deleteProfile(window->item(0));
    QVERIFY(removed);
    QTRY_VERIFY(!removed);
    QVERIFY(left);
    window->manager->deleteAllProfilesNoConfirmation();
    QTRY_VERIFY(!left);
}

void ProfileNamesListManagerTest::removedProfileStaysWhileThePaneShowsIt()
{
    window->joinPane();
    const QPointer<HParser::StructSettings> removed(window->importForRows("A")->structSettings);
    window->importForRows("B");
    window->click(0);
    const QPointer<ProfileName> row(window->row(0));
    window->manager->deleteProfile(window->item(0));
    QTRY_VERIFY(!row);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    // Out of sight, its form is still there, and with it all fields.
    QVERIFY(removed);
    for (SettingsLineEdit *field : window->ui.containerScroll->findChildren<SettingsLineEdit *>())
        field->saveSetting();
    window->click(0);
    QTRY_VERIFY(!removed);
    QCOMPARE(window->ui.profileSettingsName->text(), QStringLiteral("B"));
}

void ProfileNamesListManagerTest::movedRowKeepsItsProfile()
{
    ProfileSettings *moved = window->importForRows("A");
    const QPointer<HParser::StructSettings> record(moved->structSettings);
    window->importForRows("B");
    window->click(0);
    for (int time = 0; time < 2; ++time) {
        const QPointer<ProfileName> old = window->row(time == 0 ? 0 : 1);
        if (time == 0)
            window->manager->profilePushDown();
        else
            window->manager->profilePushUp();
        QTRY_VERIFY(!old);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(record);
        QCOMPARE(window->row(time == 0 ? 1 : 0)->getProfileSettings(), moved);
    }
    window->manager->deleteProfile(window->item(0));
    QTRY_VERIFY(!record);
}

void ProfileNamesListManagerTest::deletesAll()
{
    QSignalSpy empty(window->manager, &ProfileNamesListManager::noMoreProfilesLeft);
    window->manager->deleteAllProfilesNoConfirmation();
    QCOMPARE(empty.count(), 0);
    window->import("A");
    window->import("B", true, true);
    window->import("C");
    window->manager->deleteAllProfilesNoConfirmation();
    QCOMPARE(window->list().count(), 0);
    QCOMPARE(empty.count(), 1);
    QVERIFY(answers->seen().isEmpty());
}

void ProfileNamesListManagerTest::asksBeforeDeletingAll_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<bool>("yes");
    QTest::addColumn<int>("questions");
    QTest::addColumn<int>("left");
    QTest::newRow("yes") << 2 << true << 1 << 0;
    QTest::newRow("no") << 2 << false << 1 << 2;
    QTest::newRow("empty list") << 0 << true << 0 << 0;
}

void ProfileNamesListManagerTest::asksBeforeDeletingAll()
{
    QFETCH(int, rows);
    QFETCH(bool, yes);
    QFETCH(int, questions);
    for (int i = 0; i < rows; ++i)
        window->import("A");
    if (questions > 0)
        answers->push(yes ? QMessageBox::Yes : QMessageBox::No);
    QCOMPARE(window->manager->deleteAllProfilesAskConfirmation(), yes && questions > 0);
    QCOMPARE(answers->seen().size(), questions);
    if (questions > 0)
        QCOMPARE(answers->seen().first().title, QStringLiteral("Delete All Profiles?"));
    QTEST(window->list().count(), "left");
}

void ProfileNamesListManagerTest::rowsAreReadableWhateverTheDesktopsColours()
{
    const QPalette before = QApplication::palette();
    QApplication::setPalette(QPalette(Qt::darkGray, Qt::black));
    window = std::make_unique<Window>();
    window->import("A");
    window->import("B");
    window->click(0);
    window->click(1);
    // Of three rows one was never in view, one was and one is.
    window->import("C");
    QCoreApplication::processEvents();
    const QImage list = window->list().grab().toImage();
    QApplication::setPalette(before);

    const QList<QColor> backgrounds{Qt::white, QColor(200, 200, 200), Qt::white};
    for (int row = 0; row < 3; ++row) {
        const QPoint corner = window->row(row)->mapTo(&window->list(), QPoint(0, 0));
        QCOMPARE(list.pixelColor(corner + QPoint(180, 3)), backgrounds.at(row));
        for (const char *name : {"profileTitle", "profileSubtitle"}) {
            const auto *label = window->row(row)->findChild<QLabel *>(QLatin1String(name));
            const QImage text = list.copy(label->geometry().translated(corner));
            int darkest = 255;
            for (int y = 0; y < text.height(); ++y) {
                for (int x = 0; x < 90; ++x)
                    darkest = qMin(darkest, text.pixelColor(x, y).value());
            }
            QVERIFY2(darkest < 100, name);
        }
    }
}

void ProfileNamesListManagerTest::rowsOfAChargerMarkChanges()
{
    window->manager->enableMarkingChanges();
    ProfileSettings *profile = window->import("A", true);
    QCOMPARE(window->titles(), texts({"A"}));
    member(profile, "bulk_I")->setValue(1.0);
    QCOMPARE(window->titles(), texts({"A**"}));
    member(profile, "bulk_I")->setValue(4.0);
    QCOMPARE(window->titles(), texts({"A"}));
    window->press(0, "activeProfileButton");
    QCOMPARE(window->titles(), texts({"A**"}));
    window->press(0, "activeProfileButton");
    QCOMPARE(window->titles(), texts({"A"}));
    member(profile, "title")->setValue(QStringLiteral("B"));
    QCOMPARE(window->titles(), texts({"B**"}));
    member(profile, "description")->setValue(QStringLiteral("Text"));
    QCOMPARE(window->row(0)->getSubtitle(), QStringLiteral("Text"));
}

void ProfileNamesListManagerTest::importedDefaultIsNoChange()
{
    window->manager->enableMarkingChanges();
    window->import("A", true, true);
    window->import("B", true, true);
    QCOMPARE(window->titles(), texts({"A", "B"}));
    window->press(0, "defaultProfileButton");
    QCOMPARE(window->titles(), texts({"A**", "B"}));
    window->press(0, "defaultProfileButton");
    QCOMPARE(window->titles(), texts({"A", "B"}));
}

void ProfileNamesListManagerTest::otherRowsFollowTheirTexts()
{
    ProfileSettings *profile = window->import("A");
    member(profile, "bulk_I")->setValue(1.0);
    QCOMPARE(window->titles(), texts({"A"}));
    member(profile, "title")->setValue(QStringLiteral("B"));
    member(profile, "description")->setValue(QStringLiteral("Text"));
    QCOMPARE(window->titles(), texts({"B"}));
    QCOMPARE(window->row(0)->getSubtitle(), QStringLiteral("Text"));
}

void ProfileNamesListManagerTest::disablingEndsTheMarking()
{
    window->manager->enableMarkingChanges();
    ProfileSettings *profile = window->import("A");
    member(profile, "bulk_I")->setValue(1.0);
    window->manager->disableMarkingChanges();
    QCOMPARE(window->titles(), texts({"A"}));
    QVERIFY(!window->row(0)->getOriginalValues());
    member(profile, "bulk_I")->setValue(2.0);
    QCOMPARE(window->titles(), texts({"A"}));

    ProfileSettings *later = window->import("B");
    member(later, "bulk_I")->setValue(1.0);
    QCOMPARE(window->titles(), texts({"A", "B"}));
}

void ProfileNamesListManagerTest::enablingTouchesNoRow()
{
    ProfileSettings *before = window->import("A");
    window->manager->enableMarkingChanges();
    member(before, "bulk_I")->setValue(1.0);
    QCOMPARE(window->titles(), texts({"A"}));
    QVERIFY(window->row(0)->getOriginalValues());
}

void ProfileNamesListManagerTest::aWriteClearsTheMarks()
{
    window->manager->enableMarkingChanges();
    ProfileSettings *profile = window->import("A");
    window->import("B");
    member(profile, "bulk_I")->setValue(1.0);
    window->manager->profilesWrittenToVelantor(true);
    QCOMPARE(window->titles(), texts({"A", "B"}));
    // The values to compare with stay those of the last read.
    member(profile, "bulk_I")->setValue(2.0);
    QCOMPARE(window->titles(), texts({"A**", "B"}));
    member(profile, "bulk_I")->setValue(4.0);
    QCOMPARE(window->titles(), texts({"A", "B"}));
}

void ProfileNamesListManagerTest::aFailedWriteKeepsTheMarks()
{
    window->manager->enableMarkingChanges();
    member(window->import("A"), "bulk_I")->setValue(1.0);
    window->manager->profilesWrittenToVelantor(false);
    QCOMPARE(window->titles(), texts({"A**"}));
}

void ProfileNamesListManagerTest::newLimitsThatFit()
{
    ProfileSettings *first = window->import("A");
    ProfileSettings *second = window->import("B");
    window->click(1);
    QSignalSpy shown(window->manager, &ProfileNamesListManager::settingsPaneUpdateNeeded);
    const HParser::StructSettings *record = first->structSettings;
    window->generator.parseSSFile(schema("24V_rev7.ss"));
    window->manager->deleteAllOutOfBoundsProfiles();

    QVERIFY(answers->seen().isEmpty());
    QCOMPARE(window->titles(), texts({"A", "B"}));
    for (const ProfileSettings *profile : {first, second}) {
        QCOMPARE(member(profile, "full_V")->upperBound->toDouble(), 34.0);
        QCOMPARE(member(profile, "bulk_I")->upperBound->toDouble(), 15.0);
        QCOMPARE(member(profile, "full_V")->getValue(), QStringLiteral("30"));
    }
    QCOMPARE(first->structSettings, record);
    QCOMPARE(shown.count(), 1);
    QCOMPARE(rowOf(shown.first()), window->row(1));
    member(first, "full_V")->setValue(40.0);
    QCOMPARE(member(first, "full_V")->getValue(), QStringLiteral("34"));
}

void ProfileNamesListManagerTest::newLimitsRefreshThePane()
{
    window->joinPane();
    ProfileSettings *tooHigh = window->import("High");
    member(tooHigh, "full_V")->setValue(42.0);
    window->import("Fits");
    window->click(1);
    const QPointer<QWidget> before = window->ui.containerScroll->widget();
    window->generator.parseSSFile(schema("24V_rev7.ss"));
    answers->push(QMessageBox::Yes);
    window->manager->deleteAllOutOfBoundsProfiles();
    QVERIFY(!before);
    QVERIFY(window->ui.containerScroll->isVisible());
    QCOMPARE(window->ui.profileSettingsName->text(), QStringLiteral("Fits"));

    // Back under the former limits, the row in view is one that the narrow ones forbid.
    window->generator.parseSSFile(schema("master.ss"));
    window->manager->deleteAllOutOfBoundsProfiles();
    member(window->row(0)->getProfileSettings(), "full_V")->setValue(42.0);
    window->generator.parseSSFile(schema("24V_rev7.ss"));
    answers->push(QMessageBox::Yes);
    window->manager->deleteAllOutOfBoundsProfiles();
    QCOMPARE(window->list().count(), 0);
    QVERIFY(!window->ui.containerScroll->isVisible());
    QVERIFY(!window->pane->getEditMode());
}

void ProfileNamesListManagerTest::newLimitsWithoutCurrentRow()
{
    window->import("A");
    QSignalSpy shown(window->manager, &ProfileNamesListManager::settingsPaneUpdateNeeded);
    QSignalSpy deleted(window->manager, &ProfileNamesListManager::currentProfileDeleted);
    window->manager->deleteAllOutOfBoundsProfiles();
    QCOMPARE(shown.count(), 0);
    QCOMPARE(deleted.count(), 1);
}

void ProfileNamesListManagerTest::misfitsAreRemoved()
{
    ProfileSettings *tooHigh = window->import("High");
    member(tooHigh, "full_V")->setValue(42.0);
    window->import("Fits");
    ProfileSettings *nickel = window->profile("Nickel pack", "Nickel");
    member(nickel, "description")->setValue(QStringLiteral("36 V"));
    window->manager->on_profileReadyForImport(nickel, true, true);
    window->click(1);
    QSignalSpy shown(window->manager, &ProfileNamesListManager::settingsPaneUpdateNeeded);
    QSignalSpy reverted(window->manager, &ProfileNamesListManager::revertHardwareLimits);

    window->generator.parseSSFile(schema("24V_rev7.ss"));
    answers->push(QMessageBox::Yes);
    window->manager->deleteAllOutOfBoundsProfiles();
    QCOMPARE(answers->seen().size(), 1);
    QCOMPARE(answers->seen().first().text,
             QStringLiteral("The following profiles aren't compatible with the 24V Velantor's "
                            "hardware limits. \n\nHigh - Custom\nNickel pack - 36 V\n\nThey must "
                            "be removed. Are you sure you would like to continue?"));
    QCOMPARE(window->titles(), texts({"Fits"}));
    // The removed ones have the new limits, too.
    QCOMPARE(member(tooHigh, "full_V")->getNumber(), 34.0);
    QCOMPARE(member(nickel, "nominal_full_V")->upperBound->toDouble(), 24.0);
    QCOMPARE(reverted.count(), 0);
    QCOMPARE(shown.count(), 1);
    QCOMPARE(rowOf(shown.first()), window->row(0));
    // The default went with its row.
    window->import("Next", true, true);
    QCOMPARE(window->states(), texts({"", "AD"}));
}

void ProfileNamesListManagerTest::misfitsAreKept()
{
    ProfileSettings *tooHigh = window->import("High");
    member(tooHigh, "full_V")->setValue(42.0);
    ProfileSettings *fits = window->import("Fits");
    window->click(0);
    QSignalSpy shown(window->manager, &ProfileNamesListManager::settingsPaneUpdateNeeded);
    QSignalSpy deleted(window->manager, &ProfileNamesListManager::currentProfileDeleted);
    QSignalSpy reverted(window->manager, &ProfileNamesListManager::revertHardwareLimits);

    window->generator.parseSSFile(schema("24V_rev7.ss"));
    answers->push(QMessageBox::No);
    window->manager->deleteAllOutOfBoundsProfiles();
    QCOMPARE(reverted.count(), 1);
    QCOMPARE(shown.count(), 0);
    QCOMPARE(deleted.count(), 0);
    QCOMPARE(window->titles(), texts({"High", "Fits"}));
    QCOMPARE(member(tooHigh, "full_V")->getValue(), QStringLiteral("42"));
    for (const ProfileSettings *profile : {tooHigh, fits})
        QCOMPARE(member(profile, "full_V")->upperBound->toDouble(), 63.0);
}

void ProfileNamesListManagerTest::currentMisfitIsRemoved()
{
    ProfileSettings *tooHigh = window->import("High");
    member(tooHigh, "full_V")->setValue(42.0);
    window->click(0);
    QSignalSpy deleted(window->manager, &ProfileNamesListManager::currentProfileDeleted);
    QSignalSpy empty(window->manager, &ProfileNamesListManager::noMoreProfilesLeft);
    QSignalSpy shown(window->manager, &ProfileNamesListManager::settingsPaneUpdateNeeded);
    window->generator.parseSSFile(schema("24V_rev7.ss"));
    answers->push(QMessageBox::Yes);
    window->manager->deleteAllOutOfBoundsProfiles();
    QCOMPARE(window->list().count(), 0);
    // Once for the row itself, once because no row is left to show.
    QCOMPARE(deleted.count(), 2);
    QCOMPARE(empty.count(), 1);
    QCOMPARE(shown.count(), 0);
}

void ProfileNamesListManagerTest::rowsThatWentWhileAskingAboutMisfits()
{
    ProfileSettings *tooHigh = window->import("High");
    member(tooHigh, "full_V")->setValue(42.0);
    window->import("Fits");
    const QPointer<ProfileName> name = window->row(0);
    window->generator.parseSSFile(schema("24V_rev7.ss"));
    answers->push([&](QMessageBox *box) {
        window->manager->deleteProfile(window->item(0));
        QTRY_VERIFY(!name);
        box->button(QMessageBox::Yes)->click();
    });
    window->manager->deleteAllOutOfBoundsProfiles();
    QCOMPARE(window->titles(), texts({"Fits"}));
}

QTEST_MAIN(ProfileNamesListManagerTest)
#include "tst_profilenameslistmanager.moc"
