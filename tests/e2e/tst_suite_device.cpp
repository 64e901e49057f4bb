#include "app/look.h"
#include "profiles/profilename.h"
#include "suitestory.h"

#include <QApplication>
#include <QPointer>
#include <QTest>
#include <QToolBar>

/// Stories of the charger's own settings and of its lifetime statistics.
class SuiteDeviceTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void thePageShowsTheCharger();
    void theSmallestWindowCutsNothing();
    void changesAreStarredAndTakenBack();
    void savedSettingsReachTheCharger();
    void savedSettingsLeaveTheChargersProfiles();
    void defaultsAreLoaded();
    void settingsGoWithTheProfiles();
    void aFailedSaveDisconnects();
    void readingAgainRefreshesThePage();
    void withoutAChargerThereIsNothingToSaveTo();
    void theMenuShowsThePage();
    void aProfileComesBackFromThePage();
    void statisticsOfTheCharger();
    void statisticsStandInWindowsOfTheirOwn();

private:
    /// The texts that carry the star. The button has a shorter name once the page came into view
    /// with unsaved changes.
    QStringList starred() const
    {
        const MainWindow *window = story->mainWindow();
        return {
            window->findChild<QLabel *>("unitSettingsTitle")->text(),
            window->findChild<QAbstractButton *>("saveChangesButton")->text().remove("Settings "),
            window->findChild<QAbstractButton *>("viewDeviceSettings")->text()};
    }
    const QStringList saved{"Device Settings", "Save to Velantor", "View Device Settings"};
    const QStringList unsaved{"Device Settings*", "Save to Velantor*", "View Device Settings*"};
    /// The settings on the page as the user sees them, from top to bottom.
    QStringList page() const
    {
        return {story->shown("Brightness"),        story->shown("Rotate Display"),
                story->shown("Screensaver Delay"), story->shown("Longpress Time"),
                story->shown("Cable Resistance"),  story->shown("Current Tare Period")};
    }
    const QStringList ofTheCharger{"7", "off", "10", "0.80", "0.087", "30"};
    const QStringList defaults{"5", "off", "5", "0.80", "0.087", "30"};

    std::unique_ptr<SuiteStory> story;
};

void SuiteDeviceTest::init()
{
    story = std::make_unique<SuiteStory>();
    story->plugIn({"--hardware", "48v"});
    story->open();
}

void SuiteDeviceTest::cleanup()
{
    story.reset();
}

void SuiteDeviceTest::thePageShowsTheCharger()
{
    QVERIFY(story->connectCharger());
    story->press("viewDeviceSettings");
    QCOMPARE(page(), ofTheCharger);
    QCOMPARE(starred(), saved);
    QVERIFY(story->widget("saveChangesButton")->isEnabled());
    QVERIFY(story->widget("cancelChangesButton")->isEnabled());
    // "Load Defaults" stands above the page, "Save" and "Cancel" side by side below it.
    const QRect above = story->widget("resetDefaults")->geometry();
    const QRect save = story->widget("saveChangesButton")->geometry();
    const QRect cancel = story->widget("cancelChangesButton")->geometry();
    const QRect area = story->widget("unitSettingsDisplay")->geometry();
    QVERIFY(above.bottom() < area.top());
    QVERIFY(save.top() > area.bottom());
    QCOMPARE(cancel.top(), save.top());
    QVERIFY(cancel.left() > save.right());
    QCOMPARE(above.right(), cancel.right());

    story->press("viewDeviceSettings");
    QVERIFY(!story->widget("unitSettingsDisplay")->isVisible());
    QVERIFY(!story->widget("resetDefaults")->isVisible());
}

void SuiteDeviceTest::theSmallestWindowCutsNothing()
{
    setSuiteLook();
    QVERIFY(story->connectCharger());
    story->press("viewDeviceSettings");
    story->mainWindow()->resize(700, 350);
    QCoreApplication::processEvents();
    const auto parts = story->widget("UnitSettingsDisplay")->findChildren<QWidget *>();
    for (const QWidget *part : parts) {
        if (part->isVisible())
            QVERIFY2(part->height() >= part->minimumSizeHint().height(),
                     qPrintable(part->metaObject()->className() + part->accessibleName()));
    }
    qApp->setStyleSheet(QString());
}

void SuiteDeviceTest::changesAreStarredAndTakenBack()
{
    QVERIFY(story->connectCharger());
    story->press("viewDeviceSettings");
    story->enter("Brightness", "3");
    QCOMPARE(starred(), unsaved);
    story->tick("Rotate Display");
    story->enter("Cable Resistance", "0.125");
    story->enter("Longpress Time", "9"); // above its limit of 2
    QCOMPARE(page(), QStringList({"3", "on", "10", "2.00", "0.125", "30"}));
    QCOMPARE(starred(), unsaved);

    story->type("Screensaver Delay", "20"); // not left yet
    story->press("cancelChangesButton");
    QCOMPARE(page(), ofTheCharger);
    QCOMPARE(starred(), saved);
    story->enter("Brightness", "4");
    QCOMPARE(starred(), unsaved);
    story->press("cancelChangesButton");
    QCOMPARE(page(), ofTheCharger);
    QVERIFY(story->saveData());
    QCOMPARE(story->onCharger("global_settings")["brightness"].toInt(), 7);
}

void SuiteDeviceTest::savedSettingsReachTheCharger()
{
    QVERIFY(story->connectCharger());
    QJsonObject expected = story->onCharger("global_settings");
    const QJsonObject stats = story->onCharger("global_stats");
    const int profiles = story->profilesOnCharger().size();
    story->press("viewDeviceSettings");
    story->enter("Brightness", "3");
    story->tick("Rotate Display");
    story->type("Cable Resistance", "0.125"); // the button takes it
    story->press("saveChangesButton");
    QVERIFY(story->endSaving());
    QVERIFY(story->isConnected());
    QVERIFY(story->boxes.seen().isEmpty());
    QCOMPARE(starred(), saved);
    expected["brightness"] = 3;
    expected["flip_display"] = true;
    expected["cable_resistance_mOhm"] = 0.125;
    QCOMPARE(story->onCharger("global_settings"), expected);
    QCOMPARE(story->profilesOnCharger().size(), profiles);
    QCOMPARE(story->onCharger("global_stats")["charge_cycles"], stats["charge_cycles"]);

    // From here on this is what "Cancel" comes back to.
    QCOMPARE(page(), QStringList({"3", "on", "10", "0.80", "0.125", "30"}));
    story->enter("Brightness", "9");
    story->press("cancelChangesButton");
    QCOMPARE(page(), QStringList({"3", "on", "10", "0.80", "0.125", "30"}));
    // And the charger tells the same when it is read again.
    QVERIFY(story->readData());
    QCOMPARE(page(), QStringList({"3", "on", "10", "0.80", "0.125", "30"}));
    QCOMPARE(starred(), saved);
}

void SuiteDeviceTest::savedSettingsLeaveTheChargersProfiles()
{
    QVERIFY(story->connectCharger());
    const auto profiles = story->profilesOnCharger();
    QTest::mouseClick(story->row(1)->findChild<QAbstractButton *>("activeProfileButton"),
                      Qt::LeftButton);
    QCOMPARE(story->titles().at(1), QStringLiteral("36V Li(10s)**"));

    story->press("viewDeviceSettings");
    story->enter("Brightness", "3");
    story->press("saveChangesButton");
    QVERIFY(story->endSaving());
    QCOMPARE(story->onCharger("global_settings")["brightness"].toInt(), 3);
    QCOMPARE(story->profilesOnCharger(), profiles);
    // What waits for "Save Data" still says so.
    QCOMPARE(story->titles().at(1), QStringLiteral("36V Li(10s)**"));
}

void SuiteDeviceTest::defaultsAreLoaded()
{
    QVERIFY(story->connectCharger());
    const QJsonObject before = story->onCharger("global_settings");
    story->press("viewDeviceSettings");
    story->press("resetDefaults");
    QCOMPARE(page(), defaults);
    QCOMPARE(starred(), unsaved);
    story->press("cancelChangesButton");
    QCOMPARE(page(), ofTheCharger);
    QCOMPARE(starred(), saved);

    story->press("resetDefaults");
    story->press("saveChangesButton");
    QVERIFY(story->endSaving());
    QJsonObject expected = before; // what has no place on the page stays
    expected["brightness"] = 5;
    expected["screensaver_delay_m"] = 5;
    QCOMPARE(story->onCharger("global_settings"), expected);
    // Defaults that are there already are no change.
    story->press("resetDefaults");
    QCOMPARE(starred(), saved);
}

void SuiteDeviceTest::settingsGoWithTheProfiles()
{
    QVERIFY(story->connectCharger());
    story->press("viewDeviceSettings");
    story->enter("Screensaver Delay", "20");
    story->type("Brightness", "2"); // still being typed
    QCOMPARE(starred(), unsaved);
    auto *bar = story->widget<QToolBar>("mainToolBar");
    QTest::mouseClick(bar->widgetForAction(story->action("saveDataAction")), Qt::LeftButton);
    QCOMPARE(starred(), saved); // before the write has begun
    QVERIFY(story->endSaving());
    QVERIFY(story->isConnected());
    QCOMPARE(story->onCharger("global_settings")["screensaver_delay_m"].toInt(), 20);
    QCOMPARE(story->onCharger("global_settings")["brightness"].toInt(), 2);
    QCOMPARE(page(), QStringList({"2", "off", "20", "0.80", "0.087", "30"}));
    QCOMPARE(starred(), saved);
}

void SuiteDeviceTest::aFailedSaveDisconnects()
{
    QVERIFY(story->connectCharger());
    story->press("viewDeviceSettings");
    story->enter("Brightness", "3");
    story->charger().fault("silent@version");
    story->press("saveChangesButton");
    QVERIFY(story->endSaving());
    QCOMPARE(story->boxes.titles(), QStringList{"Failed!"});
    QVERIFY(!story->isConnected());
    QVERIFY(!story->widget("saveChangesButton")->isEnabled());
    QCOMPARE(story->list()->count(), 6);
    story->enter("Brightness", "4");
    QCOMPARE(starred(), saved);

    story->mend();
    QVERIFY(story->connectCharger());
    QCOMPARE(page(), ofTheCharger);
    QVERIFY(story->widget("saveChangesButton")->isEnabled());
    story->enter("Brightness", "3");
    QCOMPARE(starred(), unsaved);
}

void SuiteDeviceTest::readingAgainRefreshesThePage()
{
    QVERIFY(story->connectCharger());
    story->press("viewDeviceSettings");
    story->enter("Brightness", "3");
    QVERIFY(story->readData());
    QCOMPARE(page(), ofTheCharger);
    QCOMPARE(starred(), saved);
    story->enter("Brightness", "4");
    QCOMPARE(starred(), unsaved);
    story->press("cancelChangesButton");
    QCOMPARE(page(), ofTheCharger);

    // Hidden meanwhile, it shows the charger as well.
    story->press("viewDeviceSettings");
    QVERIFY(story->readData());
    story->press("viewDeviceSettings");
    QCOMPARE(page(), ofTheCharger);
    story->enter("Brightness", "4");
    story->press("cancelChangesButton");
    QCOMPARE(page(), ofTheCharger);
}

void SuiteDeviceTest::withoutAChargerThereIsNothingToSaveTo()
{
    story->press("viewDeviceSettings");
    QCOMPARE(page(), defaults);
    QVERIFY(!story->widget("saveChangesButton")->isEnabled());
    story->enter("Brightness", "3");
    QCOMPARE(starred(), saved);
    story->press("cancelChangesButton");
    QCOMPARE(page(), defaults);

    // A charger that comes brings its values along.
    QVERIFY(story->connectCharger());
    QCOMPARE(page(), ofTheCharger);
    story->enter("Brightness", "3");
    QCOMPARE(starred(), unsaved);
    QVERIFY(story->disconnectCharger());
    QVERIFY(!story->widget("saveChangesButton")->isEnabled());
    QCOMPARE(starred(), saved);
    story->enter("Brightness", "2");
    QCOMPARE(starred(), saved);
    story->press("resetDefaults");
    QCOMPARE(page(), defaults);
}

void SuiteDeviceTest::theMenuShowsThePage()
{
    story->action("actionEditGlobalSettings")->trigger();
    QVERIFY(story->field("Brightness"));
    QVERIFY(story->widget<QAbstractButton>("viewDeviceSettings")->isChecked());
    story->action("actionEditGlobalSettings")->trigger(); // it stays
    QVERIFY(story->field("Brightness"));
    story->press("viewDeviceSettings");
    QVERIFY(!story->field("Brightness"));
}

void SuiteDeviceTest::aProfileComesBackFromThePage()
{
    QVERIFY(story->connectCharger());
    story->select(0);
    story->press("viewDeviceSettings");
    QVERIFY(!story->field("Full Voltage"));
    story->select(0); // the row in view
    QCOMPARE(story->shown("Full Voltage"), QStringLiteral("42.0"));
    QVERIFY(!story->field("Brightness"));
    QVERIFY(!story->widget<QAbstractButton>("viewDeviceSettings")->isChecked());

    story->press("viewDeviceSettings");
    story->press("viewDeviceSettings");
    QCOMPARE(story->shown("Full Voltage"), QStringLiteral("42.0"));
    // Deleted while the page is in view, it leaves the page in place.
    story->press("viewDeviceSettings");
    story->boxes.push(QMessageBox::Yes);
    QTest::mouseClick(story->row(0)->findChild<QAbstractButton *>("deleteProfileButton"),
                      Qt::LeftButton);
    QTRY_COMPARE(story->list()->count(), 5);
    QCOMPARE(page(), ofTheCharger);
    story->press("viewDeviceSettings");
    QVERIFY(!story->widget("containerScroll")->isVisible());
}

void SuiteDeviceTest::statisticsOfTheCharger()
{
    QVERIFY(!story->action("actionAboutDevice")->isEnabled());
    QVERIFY(story->connectCharger());
    story->action("actionAboutDevice")->trigger();
    QVERIFY(story->dialog());
    QCOMPARE(story->dialog()->windowTitle(), QStringLiteral("Device Stats"));
    QVERIFY(!story->dialog()->isModal());
    // The page holds seconds: 75600, 185400, and 26, 151200, 338400.
    QCOMPARE(story->shown("Total Charging Time"), QStringLiteral("21.00"));
    QCOMPARE(story->shown("Power On Time"), QStringLiteral("51.50"));
    QCOMPARE(story->shown("Charge Cycles"), QStringLiteral("26"));
    QCOMPARE(story->shown("Total Amp Hours"), QStringLiteral("42.0"));
    QCOMPARE(story->shown("Total Watt Hours"), QStringLiteral("94.0"));
    QVERIFY(!story->field("Power On Time")->isEnabled());
    story->press("&OK");
    QVERIFY(!story->dialog());
    QVERIFY(story->disconnectCharger());
    QVERIFY(!story->action("actionAboutDevice")->isEnabled());
}

void SuiteDeviceTest::statisticsStandInWindowsOfTheirOwn()
{
    QVERIFY(story->connectCharger());
    story->action("actionAboutDevice")->trigger();
    const QPointer<QDialog> first = story->dialog();
    story->action("actionAboutDevice")->trigger();
    QCOMPARE(story->mainWindow()->findChildren<QDialog *>("DisplayUnitStats").size(), 2);
    first->close();
    QTRY_VERIFY(!first);
    const QPointer<QDialog> second = story->dialog();
    QVERIFY(second);
    // It outlives its charger, showing what was read last.
    QVERIFY(story->disconnectCharger());
    QCOMPARE(story->shown("Power On Time"), QStringLiteral("51.50"));
    second->close();
    QTRY_VERIFY(!second);
}

QTEST_MAIN(SuiteDeviceTest)
#include "tst_suite_device.moc"
