#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "profiles/profilename.h"
#include "profiles/profilesettings.h"
#include "suitestory.h"
#include "support/filedialoganswer.h"
#include "xml/busydialog.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <utility>

/// Stories of profiles in files, with the real file dialogs.
class SuiteFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void deliveredSetsLoadUnderEachModel_data();
    void deliveredSetsLoadUnderEachModel();
    void savedProfilesComeBack();
    void loadedProfilesJoinTheList();
    void nothingElseHappensWhileAFileLoads();
    void settingsTravelOnlyWhenAsked();
    void loadedProfilesReachTheCharger();
    void chargerProfilesReachAFile();
    void aFileThatIsNoneHarmsNothing();
    void aPlaceThatTakesNoFile();
    void whatIsBeingTypedIsSaved();

private:
    static QString path(const QString &file) { return QDir::current().filePath(file); }
    /// "Load Profiles from File..."
    static void load(const SuiteStory &story, const QString &file)
    {
        FileDialogAnswer dialog(path(file));
        story.action("actionImportXML")->trigger();
        QVERIFY(dialog.asked);
    }
    /// "Save Profiles to File..." or the entry below it.
    static void save(const SuiteStory &story, const QString &file, bool withSettings = false)
    {
        FileDialogAnswer dialog(path(file));
        story
            .action(withSettings ? "actionExportXMLProfilesAndSettings" : "actionExportXMLProfiles")
            ->trigger();
        QVERIFY(dialog.asked);
    }
    static QString value(const SuiteStory &story, int row, const char *member)
    {
        return story.row(row)
            ->getProfileSettings()
            ->structSettings->getStructSettingByName(QLatin1String(member))
            ->getValue();
    }
};

void SuiteFilesTest::deliveredSetsLoadUnderEachModel_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("set");
    QTest::addColumn<int>("loaded");
    // Lithium up to 34 V, 63 V and 103 V with 15 A, 8 A and 5 A; lead alike.
    QTest::newRow("24 V set, 24 V") << "24V"
                                    << "24v" << 12;
    QTest::newRow("24 V set, 48 V") << "48V"
                                    << "24v" << 2; // the others want 15 A
    QTest::newRow("24 V set, 72 V") << "72V"
                                    << "24v" << 0;
    QTest::newRow("48 V set, 24 V") << "24V"
                                    << "48v" << 1; // 24V SLA
    QTest::newRow("48 V set, 48 V") << "48V"
                                    << "48v" << 16;
    QTest::newRow("48 V set, 72 V") << "72V"
                                    << "48v" << 10; // six want 7 A or 8 A
    QTest::newRow("72 V set, 24 V") << "24V"
                                    << "72v" << 0;
    QTest::newRow("72 V set, 48 V") << "48V"
                                    << "72v" << 9; // up to 58.8 V
    QTest::newRow("72 V set, 72 V") << "72V"
                                    << "72v" << 17;
}

void SuiteFilesTest::deliveredSetsLoadUnderEachModel()
{
    QFETCH(QString, model);
    QFETCH(QString, set);
    QFETCH(int, loaded);
    SuiteStory story;
    story.open();
    story.choose(model);

    FileDialogAnswer dialog(path("saved_profiles/" + set + "_default_profiles.xml"));
    story.press("openProfilesXML");
    QVERIFY(dialog.asked);
    QCOMPARE(dialog.folder, path("saved_profiles")); // where the sets lie

    QCOMPARE(story.list()->count(), loaded);
    const int count = set == "24v" ? 12 : set == "48v" ? 16 : 17;
    QCOMPARE(story.boxes.titles(),
             loaded == count ? QStringList() : QStringList("Incompatible Profiles"));
    if (loaded < count) {
        const QString text = story.boxes.seen().first().text;
        QVERIFY(text.contains(model + " Velantor's hardware limits"));
        QCOMPARE(text.count(" - "), count - loaded);
    }
    for (int i = 0; i < loaded; ++i) {
        QVERIFY(!story.row(i)->getActiveStatus());
        QVERIFY(!story.row(i)->getDefaultStatus());
        QCOMPARE(value(story, i, "modifiable"), QStringLiteral("false"));
    }
}

void SuiteFilesTest::savedProfilesComeBack()
{
    SuiteStory story;
    story.open();
    load(story, "saved_profiles/48v_default_profiles.xml");
    story.select(0);
    story.press("editProfileButton");
    const QString title = QString::fromUtf8("A&B \"<\xC2\xB0\">");
    story.enter("Profile name", title);
    story.enter("Full Voltage", "41.5");
    story.press("profileDefaultButton");
    story.press("editProfileButton");
    save(story, "mine");

    // Something else happens to the list, then the file takes its place again.
    const QByteArray saved = SuiteStory::workingFile("mine.xml");
    QVERIFY(saved.contains("<title>A&amp;B &quot;&lt;\xC2\xB0&quot;&gt;</title>"));
    load(story, "saved_profiles/48v_default_profiles.xml"); // closing its question replaces, too
    QCOMPARE(story.list()->count(), 16);
    QCOMPARE(story.titles().first(), QStringLiteral("36V Li(10s)"));
    story.boxes.push("&Replace Profiles");
    load(story, "mine.xml");
    QCOMPARE(story.list()->count(), 16);
    QCOMPARE(story.titles().first(), title);
    QCOMPARE(value(story, 0, "full_V"), QStringLiteral("41.5"));
    QVERIFY(story.row(0)->getDefaultStatus());
    QVERIFY(story.row(0)->getActiveStatus());
    save(story, "again.xml");
    QCOMPARE(SuiteStory::workingFile("again.xml"), saved);

    // And in the next sitting.
    story.closeWindow();
    story.open();
    QCOMPARE(story.list()->count(), 0);
    load(story, "mine.xml");
    save(story, "later.xml");
    QCOMPARE(SuiteStory::workingFile("later.xml"), saved);
}

void SuiteFilesTest::loadedProfilesJoinTheList()
{
    SuiteStory story;
    story.open();
    story.choose("72V");
    load(story, "saved_profiles/72v_default_profiles.xml");
    story.select(3);
    story.boxes.push("&Add Profiles");
    load(story, "saved_profiles/72v_default_profiles.xml");
    QCOMPARE(story.list()->count(), 34);
    QCOMPARE(story.titles().mid(0, 17), story.titles().mid(17));
    // The one in view stays in view.
    QCOMPARE(story.shown("Profile name"), story.titles().at(3));
    save(story, "both.xml");
    const QByteArray both = SuiteStory::workingFile("both.xml");
    for (int i = 0; i < 34; ++i)
        QVERIFY(both.contains("<profile id=\"" + QByteArray::number(i) + "\" "));
}

void SuiteFilesTest::nothingElseHappensWhileAFileLoads()
{
    using XMLGeneratorParser::BusyDialog;
    SuiteStory story;
    story.open();
    load(story, "saved_profiles/48v_default_profiles.xml");
    story.select(0);
    MainWindow *window = story.mainWindow();
    // By way of the window, as the mouse of a user.
    const auto click = [window](const char *button) {
        const auto *widget = window->findChild<QPushButton *>(QLatin1String(button));
        QTest::mouseClick(window->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                          widget->mapTo(window, widget->rect().center()));
    };
    int looks = 0;
    const qint64 patience = std::exchange(BusyDialog::patience, 0);
    QTimer user;
    connect(&user, &QTimer::timeout, this, [&] {
        if (!qobject_cast<BusyDialog *>(QApplication::activeModalWidget()))
            return;
        ++looks;
        for (const char *button : {"deleteAllProfiles", "addProfileButton", "viewDeviceSettings",
                                   "profileNameDownButton"})
            click(button);
        QTest::keyClick(window->windowHandle(), Qt::Key_F, Qt::AltModifier);
    });
    user.start(0);
    story.boxes.push("&Add Profiles");
    load(story, "saved_profiles/48v_default_profiles.xml");
    user.stop();
    BusyDialog::patience = patience;
    QVERIFY(looks > 0);
    QCOMPARE(story.list()->count(), 32);
    QCOMPARE(story.titles().mid(0, 16), story.titles().mid(16));
    QCOMPARE(story.boxes.titles(), QStringList("Add Profiles to List?"));
    QVERIFY(!window->findChild<QPushButton *>("viewDeviceSettings")->isChecked());
    QVERIFY(!QApplication::activeModalWidget() && !QApplication::activePopupWidget());
    // The same clicks do something when the file has been loaded.
    click("viewDeviceSettings");
    QVERIFY(window->findChild<QPushButton *>("viewDeviceSettings")->isChecked());
    click("deleteAllProfiles");
    QCOMPARE(story.boxes.titles().last(), QStringLiteral("Delete All Profiles?"));
}

void SuiteFilesTest::settingsTravelOnlyWhenAsked()
{
    SuiteStory story;
    story.open();
    load(story, "saved_profiles/48v_default_profiles.xml");
    story.press("viewDeviceSettings");
    story.enter("Screensaver Delay", "17");
    story.press("viewDeviceSettings");
    save(story, "with.xml", true);
    save(story, "without.xml", false);
    QVERIFY(SuiteStory::workingFile("with.xml")
                .contains("\t\t<screensaver_delay>17</screensaver_delay>\n"));
    QVERIFY(!SuiteStory::workingFile("without.xml").contains("GlobalSettings"));

    story.closeWindow();
    story.open();
    const auto delay = [&story] {
        return story.generator()
            ->getUnitSettingsStruct()
            ->getStructSettingByName("screensaver_delay_m")
            ->getValue();
    };
    load(story, "without.xml");
    QCOMPARE(delay(), QStringLiteral("5"));
    story.boxes.push("&Replace Profiles");
    load(story, "with.xml");
    QCOMPARE(delay(), QStringLiteral("17"));
    QCOMPARE(story.list()->count(), 16);
    QVERIFY(!story.isConnected());
}

void SuiteFilesTest::loadedProfilesReachTheCharger()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    story.boxes.push("&Replace Profiles");
    load(story, "saved_profiles/48v_default_profiles.xml");
    QVERIFY(story.isConnected());
    QCOMPARE(story.list()->count(), 16);
    QVERIFY(story.saveData());
    const QList<QJsonObject> profiles = story.profilesOnCharger();
    QCOMPARE(profiles.size(), 16);
    for (int i = 0; i < profiles.size(); ++i)
        QCOMPARE(profiles.at(i).value("title").toString(), story.titles().at(i));
}

void SuiteFilesTest::chargerProfilesReachAFile()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    const QStringList titles = story.titles();
    QVERIFY(!titles.isEmpty());
    save(story, "charger.xml", true);
    QVERIFY(story.disconnectCharger());
    story.boxes.push("&Replace Profiles");
    load(story, "charger.xml");
    QCOMPARE(story.titles(), titles);
    save(story, "again.xml", true);
    QCOMPARE(SuiteStory::workingFile("again.xml"), SuiteStory::workingFile("charger.xml"));
}

void SuiteFilesTest::aFileThatIsNoneHarmsNothing()
{
    SuiteStory story;
    story.open();
    load(story, "saved_profiles/48v_default_profiles.xml");
    const QStringList titles = story.titles();
    story.boxes.push("&Replace Profiles");
    load(story, "master.ss");
    QCOMPARE(story.titles(), titles);
    QCOMPARE(story.boxes.titles(),
             QStringList({"Add Profiles to List?", "Import from XML status"}));
}

void SuiteFilesTest::aPlaceThatTakesNoFile()
{
    SuiteStory story;
    story.open();
    QVERIFY(QFile::link("/dev/full", "full.xml"));
    story.boxes.push(QMessageBox::Yes); // the dialog's own question
    save(story, "full.xml");
    QCOMPARE(story.boxes.titles().last(), QStringLiteral("Export to XML Status"));
    QCOMPARE(story.boxes.seen().last().text, QStringLiteral("The profiles failed to be exported!"));
}

void SuiteFilesTest::whatIsBeingTypedIsSaved()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    story.select(0);
    story.press("editProfileButton");
    // A menu takes no focus from the field.
    story.type("Profile name", "Bicycle");
    save(story, "name.xml");
    QVERIFY(SuiteStory::workingFile("name.xml").contains(">Bicycle<"));

    story.press("viewDeviceSettings");
    story.type("Brightness", "3");
    save(story, "settings.xml", true);
    QVERIFY(SuiteStory::workingFile("settings.xml").contains("<brightness>3</brightness>"));
}

QTEST_MAIN(SuiteFilesTest)
#include "tst_suite_files.moc"
