#include "ImportProfiles/importprofilesmain.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "profiles/profilename.h"
#include "profiles/profilenamelistwidget.h"
#include "profiles/profilesettings.h"
#include "support/filedialoganswer.h"
#include "support/messageboxanswers.h"
#include "support/workingdirectory.h"
#include "xml/busydialog.h"
#include "xml/xmlmanager.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QElapsedTimer>
#include <QFile>
#include <QListWidget>
#include <QLocale>
#include <QMainWindow>
#include <QProgressBar>
#include <QtTest>

#include <csignal>
#include <memory>

#include <sys/resource.h>
#include <sys/stat.h>

using HParser::StructSettings;
using ImportProfiles::ImportProfilesMain;
using XMLGeneratorParser::BusyDialog;
using XMLGeneratorParser::XMLManager;

namespace
{
const QByteArray settingsBlock = "\t<GlobalSettings>\n"
                                 "\t\t<brightness>9</brightness>\n"
                                 "\t\t<flip_display>true</flip_display>\n"
                                 "\t\t<screensaver_delay>12</screensaver_delay>\n"
                                 "\t\t<longpress_time>1.5</longpress_time>\n"
                                 "\t\t<cable_resistance>0.1</cable_resistance>\n"
                                 "\t\t<current_tare_period>60</current_tare_period>\n"
                                 "\t</GlobalSettings>\n";

QByteArray profile(int id, const QByteArray &title, const QByteArray &fullVoltage = "42",
                   const QByteArray &flags = "active=\"true\" default=\"false\"")
{
    return "\t<profile id=\"" + QByteArray::number(id) + "\" " + flags +
           " modifiable=\"false\">\n\t\t<name>Lithium</name>\n\t\t<title>" + title +
           "</title>\n\t\t<subtitle>x</subtitle>\n\t\t<full_voltage>" + fullVoltage +
           "</full_voltage>\n\t</profile>\n";
}

QByteArray inFile(const QByteArray &content)
{
    return "<VelantorProfiles>\n" + content + "</VelantorProfiles>\n";
}
} // namespace

/// The manager with a list, as the main window joins them.
class XMLManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void importsWithoutQuestions();
    void importsOfMissingFiles();
    void deliveredSets_data();
    void deliveredSets();
    void earlierVersionsChemistry();
    void unknownChemistryIsDropped();
    void missingValuesAreDefaults();
    void profilesBeyondTheLimitsAreNamed();
    void listStaysInSightBehindTheBox();
    void valuesSurviveTheWay();

    void openDialog();
    void cancelledOpenDialog();
    void unreadableFile_data();
    void unreadableFile();
    void emptyListAsksNothing();
    void addsToAList();
    void replacesAList();
    void closingTheQuestionReplaces();
    void replacesBeforeTheSettings();
    void fileWithoutSettingsTellsNothing();
    void garbageDoesNotReplace_data();
    void garbageDoesNotReplace();
    void emptyFileReplaces();
    void settingsAloneReplace();

    void saveDialog();
    void cancelledSaveDialog();
    void savesWithAndWithoutSettings();
    void appendsASuffix_data();
    void appendsASuffix();
    void asksBeforeItReplacesTheFileWithSuffix();
    void tellsOfAFailedExport_data();
    void tellsOfAFailedExport();
    void remembersTheFolder();
    void remembersTheFolderOfAFailure();

    void manyRowsStandInTheirPlaces();
    void longWorkShowsItself();
    void busyDialogStays();
    void restingDialogGivesThePointerBack();
    void answeringTakesNoPatience();
    void rowsJoinAHiddenList();
    void pointerTellsOfReplacing();
    void longSavingShowsItself();

private:
    StructSettings *record(int row) const
    {
        return name(row)->getProfileSettings()->structSettings;
    }
    ProfileName *name(int row) const
    {
        return static_cast<ProfileNameListWidget *>(list->item(row))->profileName;
    }
    QString value(int row, const char *member) const
    {
        return record(row)->getStructSettingByName(member)->getValue();
    }
    QString unitSetting(const char *member) const
    {
        return generator->getUnitSettingsStruct()->getStructSettingByName(member)->getValue();
    }
    QStringList titles() const
    {
        QStringList result;
        for (int i = 0; i < list->count(); ++i)
            result.append(value(i, "title"));
        return result;
    }
    QString path(const QString &file) const { return folder->path() + "/" + file; }
    /// Chooses a file in the dialog of the load action.
    void load(const QString &file)
    {
        FileDialogAnswer dialog(path(file));
        manager->on_importFromXMLButtonClicked();
        QVERIFY(dialog.asked);
    }
    void save(const QString &file, bool withSettings = false)
    {
        FileDialogAnswer dialog(path(file));
        manager->on_exportAsXMLButtonClicked(withSettings);
        QVERIFY(dialog.asked);
    }
    void useSchema(const char *schema)
    {
        generator->parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + schema);
    }

    std::unique_ptr<WorkingDirectory> folder;
    std::unique_ptr<MessageBoxAnswers> user;
    std::unique_ptr<HParser::Generator> generator;
    std::unique_ptr<QMainWindow> window;
    QListWidget *list = nullptr;
    std::unique_ptr<ImportProfilesMain> importer;
    std::unique_ptr<XMLManager> manager;
};

void XMLManagerTest::init()
{
    BusyDialog::patience = 500;
    folder = std::make_unique<WorkingDirectory>();
    QVERIFY(QDir().mkdir("saved_profiles"));
    user = std::make_unique<MessageBoxAnswers>();
    generator = std::make_unique<HParser::Generator>();
    useSchema("master.ss");
    window = std::make_unique<QMainWindow>();
    list = new QListWidget(window.get());
    window->setCentralWidget(list);
    window->show();
    ProfileNameListWidget::qlistWidget = list;
    importer = std::make_unique<ImportProfilesMain>(window.get(), generator.get());
    manager = std::make_unique<XMLManager>(window.get(), list, importer.get(), generator.get());
    connect(importer.get(), &ImportProfilesMain::profileReadyForImport, this,
            [this](ProfileSettings *settings, bool active, bool isDefault) {
                auto *item = new ProfileNameListWidget(settings);
                item->appendToList();
                item->profileName->setActive(active);
                item->profileName->setDefault(isDefault);
            });
    connect(manager.get(), &XMLManager::deleteAllProfiles, list, &QListWidget::clear);
}

void XMLManagerTest::cleanup()
{
    manager.reset();
    importer.reset();
    window.reset();
    generator.reset();
    user.reset();
    folder.reset();
}

void XMLManagerTest::importsWithoutQuestions()
{
    folder->write("a.xml", inFile(settingsBlock + profile(0, "one")));
    QSignalSpy deleted(manager.get(), &XMLManager::deleteAllProfiles);
    QSignalSpy settingsRead(manager.get(), &XMLManager::unitSettingsRead_xml);
    QVERIFY(manager->importFromXML("a.xml"));
    QVERIFY(manager->importFromXML("a.xml"));
    QCOMPARE(titles(), QStringList({"one", "one"}));
    QCOMPARE(unitSetting("brightness"), QString("9"));
    QVERIFY(deleted.isEmpty());
    QVERIFY(settingsRead.isEmpty());
    QVERIFY(user->seen().isEmpty());
}

void XMLManagerTest::importsOfMissingFiles()
{
    QVERIFY(!manager->importFromXML("missing.xml"));
    QVERIFY(!manager->importFromXML("saved_profiles"));
    QVERIFY(user->seen().isEmpty());
}

void XMLManagerTest::deliveredSets_data()
{
    QTest::addColumn<QString>("set");
    QTest::addColumn<QString>("schema");
    QTest::addColumn<int>("count");
    QTest::newRow("24 V") << "24v"
                          << "24V_rev7.ss" << 12;
    QTest::newRow("48 V") << "48v"
                          << "48V_FSv2.ss" << 16;
    QTest::newRow("48 V, first generation") << "48v"
                                            << "48V_FSv1.ss" << 16;
    QTest::newRow("72 V") << "72v"
                          << "72V_rev7.ss" << 17;
}

void XMLManagerTest::deliveredSets()
{
    QFETCH(QString, set);
    QFETCH(QString, schema);
    useSchema(qPrintable(schema));
    QVERIFY(manager->importFromXML(VELANTOR_SOURCE_DIR "/resources/saved_profiles/" + set +
                                   "_default_profiles.xml"));
    QVERIFY(user->seen().isEmpty());
    QTEST(list->count(), "count");
    for (int i = 0; i < list->count(); ++i) {
        QVERIFY(!name(i)->getActiveStatus());
        QVERIFY(!name(i)->getDefaultStatus());
        QVERIFY(!name(i)->getProfileSettings()->getModifiable());
    }
}

void XMLManagerTest::earlierVersionsChemistry()
{
    const QByteArray values = "<title>t</title><full_voltage>28.8</full_voltage></profile>";
    folder->write("a.xml", inFile("<profile id=\"0\"><chemistry>Lead</chemistry>" + values +
                                  "<profile id=\"1\"><name>Lead</name>" + values));
    QVERIFY(manager->importFromXML("a.xml"));
    QCOMPARE(list->count(), 2);
    QCOMPARE(record(0)->getDescriptiveName(), QString("Lead"));
    // The same but for the number that each has been given.
    for (int row : {0, 1})
        name(row)->getProfileSettings()->setProfileID(0);
    QVERIFY(record(0)->compare(record(1)));
}

void XMLManagerTest::unknownChemistryIsDropped()
{
    folder->write("a.xml",
                  inFile("<profile id=\"0\"><name>Lead-acid</name></profile>" + profile(1, "one")));
    QVERIFY(manager->importFromXML("a.xml"));
    QCOMPARE(titles(), QStringList("one"));
    QVERIFY(user->seen().isEmpty());
}

void XMLManagerTest::missingValuesAreDefaults()
{
    folder->write("a.xml", inFile("<profile><name>Lithium</name></profile>"
                                  "<profile><name>Lead</name></profile>"));
    QVERIFY(manager->importFromXML("a.xml"));
    QCOMPARE(list->count(), 1); // both have the id 0
    QCOMPARE(value(0, "title"), QString());
    QCOMPARE(value(0, "description"), QString());
    QCOMPARE(value(0, "full_V"), QString("42"));
    QVERIFY(name(0)->getActiveStatus()); // as in the schema
    QVERIFY(!name(0)->getDefaultStatus());
    QVERIFY(!name(0)->getProfileSettings()->getModifiable());
}

void XMLManagerTest::profilesBeyondTheLimitsAreNamed()
{
    useSchema("24V_rev7.ss");
    folder->write("a.xml", inFile(profile(0, "in", "12.6") + profile(1, "out", "42") +
                                  profile(2, "too", "54.6")));
    QVERIFY(manager->importFromXML("a.xml"));
    QCOMPARE(titles(), QStringList("in"));
    QCOMPARE(user->titles(), QStringList("Incompatible Profiles"));
    QVERIFY(user->seen().first().text.startsWith(
        "The following profiles aren't compatible with the 24V Velantor's hardware limits. \n\n"
        "out - x\ntoo - x\n\n"));
}

void XMLManagerTest::listStaysInSightBehindTheBox()
{
    folder->write("a.xml", inFile(profile(0, "one")));
    folder->write("b.xml", inFile(profile(0, "in") + profile(1, "out", "4200")));
    load("a.xml");
    user->push("&Add Profiles");
    bool visible = false;
    bool pointer = true;
    user->push([&](QMessageBox *box) {
        visible = list->isVisible();
        pointer = QApplication::overrideCursor();
        box->accept();
    });
    load("b.xml");
    QCOMPARE(user->titles(), QStringList({"Add Profiles to List?", "Incompatible Profiles"}));
    QVERIFY(visible);
    QVERIFY(!pointer);
    QCOMPARE(titles(), QStringList({"one", "in"}));
    QVERIFY(list->isVisible());
}

void XMLManagerTest::valuesSurviveTheWay()
{
    folder->write("a.xml", inFile(profile(0, "A&amp;B &quot;x&quot;", "42",
                                          "active=\"true\" default=\"true\"") +
                                  profile(1, "\xC2\xB0", "50", "active=\"false\"")));
    QVERIFY(manager->importFromXML("a.xml"));
    QVERIFY(manager->exportToXML("b.xml", true));
    list->clear();
    QVERIFY(manager->importFromXML("b.xml"));
    QCOMPARE(titles(), QStringList({"A&B \"x\"", QString::fromUtf8("\xC2\xB0")}));
    QVERIFY(name(0)->getDefaultStatus());
    QVERIFY(!name(1)->getActiveStatus());
    QVERIFY(manager->exportToXML("c.xml", true));
    QCOMPARE(folder->read("c.xml"), folder->read("b.xml"));
}

void XMLManagerTest::openDialog()
{
    folder->write("a.xml", inFile(profile(0, "one")));
    FileDialogAnswer dialog(path("a.xml"));
    manager->on_importFromXMLButtonClicked();
    QCOMPARE(dialog.title, QString("Select XML File to Import"));
    QCOMPARE(dialog.filters, QStringList({"XML files (*.xml)", "Any files (*.*)"}));
    QCOMPARE(dialog.folder, path("saved_profiles"));
    QVERIFY(!dialog.saving);
    QCOMPARE(titles(), QStringList("one"));
}

void XMLManagerTest::cancelledOpenDialog()
{
    FileDialogAnswer dialog{QString()};
    manager->on_importFromXMLButtonClicked();
    QVERIFY(dialog.asked);
    QVERIFY(user->seen().isEmpty());
    QCOMPARE(list->count(), 0);
}

void XMLManagerTest::unreadableFile_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("a pipe") << "pipe.xml";
    QTest::newRow("gone meanwhile") << "link.xml";
}

void XMLManagerTest::unreadableFile()
{
    QFETCH(QString, file);
    QCOMPARE(mkfifo("pipe.xml", 0600), 0);
    QVERIFY(QFile::link("/dev/zero", "link.xml"));
    folder->write("a.xml", inFile(profile(0, "one")));
    load("a.xml");
    QSignalSpy deleted(manager.get(), &XMLManager::deleteAllProfiles);
    bool pointer = true;
    user->push([&](QMessageBox *box) {
        pointer = QApplication::overrideCursor();
        box->accept();
    });
    load(file);
    QVERIFY(!pointer); // nobody waits for anything while the box is read
    QCOMPARE(user->titles(), QStringList("Import from XML status"));
    QCOMPARE(user->seen().first().text,
             QString("Failed to read the XML file specified. Please try again."));
    QCOMPARE(user->seen().first().icon, QMessageBox::Warning);
    QVERIFY(deleted.isEmpty());
    QCOMPARE(titles(), QStringList("one"));
}

void XMLManagerTest::emptyListAsksNothing()
{
    folder->write("a.xml", inFile(settingsBlock + profile(0, "one")));
    QSignalSpy deleted(manager.get(), &XMLManager::deleteAllProfiles);
    QSignalSpy settingsRead(manager.get(), &XMLManager::unitSettingsRead_xml);
    load("a.xml");
    QVERIFY(user->seen().isEmpty());
    QVERIFY(deleted.isEmpty());
    QCOMPARE(settingsRead.size(), 1);
    QCOMPARE(settingsRead.first().first().toBool(), true);
    QCOMPARE(unitSetting("brightness"), QString("9"));
    QCOMPARE(unitSetting("longpress_time_cs"), QString("1.5"));
    QCOMPARE(titles(), QStringList("one"));
}

void XMLManagerTest::addsToAList()
{
    folder->write("a.xml", inFile(profile(0, "one")));
    folder->write("b.xml", inFile(profile(0, "two") + profile(1, "three")));
    load("a.xml");
    user->push("&Add Profiles");
    load("b.xml");
    QCOMPARE(user->titles(), QStringList("Add Profiles to List?"));
    QCOMPARE(titles(), QStringList({"one", "two", "three"}));
    // Numbered from 0 again: a write gives each row its own.
    QCOMPARE(value(1, "profile_id"), QString("0"));
    QCOMPARE(value(2, "profile_id"), QString("1"));
}

void XMLManagerTest::replacesAList()
{
    folder->write("a.xml", inFile(profile(0, "one")));
    folder->write("b.xml", inFile(profile(0, "two")));
    load("a.xml");
    user->push("&Replace Profiles");
    load("b.xml");
    QCOMPARE(titles(), QStringList("two"));
}

void XMLManagerTest::closingTheQuestionReplaces()
{
    folder->write("a.xml", inFile(profile(0, "one")));
    load("a.xml");
    user->pushClose();
    load("a.xml");
    QCOMPARE(titles(), QStringList("one"));
}

void XMLManagerTest::replacesBeforeTheSettings()
{
    folder->write("a.xml", inFile(settingsBlock + profile(0, "one")));
    load("a.xml");
    generator->getUnitSettingsStruct()->getStructSettingByName("brightness")->setValue(1.0);
    QStringList events;
    connect(manager.get(), &XMLManager::deleteAllProfiles, this, [&] {
        events.append("deleted");
        QCOMPARE(unitSetting("brightness"), QString("1"));
    });
    connect(manager.get(), &XMLManager::unitSettingsRead_xml, this, [&](bool success) {
        events.append(success ? "settings" : "no settings");
        QCOMPARE(unitSetting("brightness"), QString("9"));
        QCOMPARE(list->count(), 0);
    });
    connect(importer.get(), &ImportProfilesMain::profileReadyForImport, this,
            [&] { events.append("profile"); });
    user->push("&Replace Profiles");
    load("a.xml");
    QCOMPARE(events, QStringList({"deleted", "settings", "profile"}));
}

void XMLManagerTest::fileWithoutSettingsTellsNothing()
{
    folder->write("a.xml", inFile("<GlobalSettings><brightness>1</brightness></GlobalSettings>"));
    QSignalSpy settingsRead(manager.get(), &XMLManager::unitSettingsRead_xml);
    load("a.xml");
    QVERIFY(settingsRead.isEmpty());
    QCOMPARE(unitSetting("brightness"), QString("5"));
}

void XMLManagerTest::garbageDoesNotReplace_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("another file") << QByteArray(":00000001FF\n");
    QTest::newRow("well-formed, of another kind") << QByteArray("<svg><profile id=\"0\"/></svg>");
    QTest::newRow("cut in the first profile") << inFile(profile(0, "one")).left(100);
}

void XMLManagerTest::garbageDoesNotReplace()
{
    QFETCH(QByteArray, content);
    folder->write("a.xml", inFile(profile(0, "one")));
    folder->write("b.xml", content);
    load("a.xml");
    user->push("&Replace Profiles");
    load("b.xml");
    QCOMPARE(titles(), QStringList("one"));
    QCOMPARE(user->titles(), QStringList({"Add Profiles to List?", "Import from XML status"}));
    user->clear();
    user->push("&Add Profiles");
    load("b.xml");
    QCOMPARE(titles(), QStringList("one"));
}

void XMLManagerTest::emptyFileReplaces()
{
    folder->write("a.xml", inFile(profile(0, "one")));
    folder->write("b.xml", inFile(QByteArray()));
    load("a.xml");
    user->push("&Replace Profiles");
    load("b.xml");
    QCOMPARE(list->count(), 0);
    QCOMPARE(user->titles(), QStringList("Add Profiles to List?"));
}

void XMLManagerTest::settingsAloneReplace()
{
    folder->write("a.xml", inFile(profile(0, "one")));
    folder->write("b.xml", "<VelantorProfiles>" + settingsBlock + "<profile id=\"0\"><name>Li");
    load("a.xml");
    user->push("&Replace Profiles");
    load("b.xml");
    QCOMPARE(list->count(), 0);
    QCOMPARE(unitSetting("brightness"), QString("9"));
    QCOMPARE(user->titles(), QStringList("Add Profiles to List?"));
}

void XMLManagerTest::saveDialog()
{
    FileDialogAnswer dialog(path("a.xml"));
    manager->on_exportAsXMLButtonClicked(false);
    QCOMPARE(dialog.title, QString("Select XML File to Export Profiles"));
    QCOMPARE(dialog.filters, QStringList({"XML files (*.xml)", "Any files (*.*)"}));
    QCOMPARE(dialog.folder, path("saved_profiles"));
    QVERIFY(dialog.saving);
    QCOMPARE(folder->read("a.xml"), inFile(QByteArray()));
    QVERIFY(user->seen().isEmpty());
}

void XMLManagerTest::cancelledSaveDialog()
{
    FileDialogAnswer dialog{QString()};
    manager->on_exportAsXMLButtonClicked(false);
    QVERIFY(dialog.asked);
    QVERIFY(user->seen().isEmpty());
    QCOMPARE(QDir().entryList(QDir::Files), QStringList());
}

void XMLManagerTest::savesWithAndWithoutSettings()
{
    folder->write("a.xml", inFile(settingsBlock + profile(0, "one")));
    load("a.xml");
    save("without.xml", false);
    save("with.xml", true);
    const QByteArray without = folder->read("without.xml");
    QVERIFY(without.startsWith("<VelantorProfiles>\n\t<profile id=\"0\" active=\"true\" "));
    QCOMPARE(folder->read("with.xml"), inFile(settingsBlock + without.mid(19).chopped(20)));
}

void XMLManagerTest::appendsASuffix_data()
{
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<QString>("written");
    QTest::newRow("none") << "mine"
                          << "mine.xml";
    QTest::newRow("xml") << "mine.xml"
                         << "mine.xml";
    QTest::newRow("another") << "mine.txt"
                             << "mine.txt";
    QTest::newRow("a dot only") << "mine."
                                << "mine..xml";
    QTest::newRow("several") << "mine.tar.gz"
                             << "mine.tar.gz";
}

void XMLManagerTest::appendsASuffix()
{
    QFETCH(QString, chosen);
    QFETCH(QString, written);
    save(chosen);
    QCOMPARE(QDir().entryList(QDir::Files), QStringList(written));
}

void XMLManagerTest::asksBeforeItReplacesTheFileWithSuffix()
{
    folder->write("mine.xml", "old");
    // Refused, the dialog stays: it is closed then.
    user->push([](QMessageBox *box) {
        QTimer::singleShot(0, [] {
            if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget()))
                dialog->reject();
        });
        box->button(QMessageBox::No)->click();
    });
    save("mine");
    QCOMPARE(user->seen().size(), 1);
    QVERIFY(user->seen().first().text.contains("mine.xml"));
    QCOMPARE(folder->read("mine.xml"), QByteArray("old"));
    user->push(QMessageBox::Yes);
    save("mine");
    QCOMPARE(folder->read("mine.xml"), inFile(QByteArray()));
}

void XMLManagerTest::tellsOfAFailedExport_data()
{
    QTest::addColumn<bool>("fullDisk");
    QTest::newRow("a place that takes no file") << false;
    QTest::newRow("a full disk") << true;
}

void XMLManagerTest::tellsOfAFailedExport()
{
    QFETCH(bool, fullDisk);
    folder->write("old.xml", "old");
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    if (fullDisk) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {10, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        user->push(QMessageBox::Yes); // the dialog asks whether to replace it
        save("old.xml");
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, SIG_DFL);
    } else {
        QVERIFY(QFile::link("/dev/full", "device.xml"));
        user->push(QMessageBox::Yes);
        save("device.xml");
    }
    QCOMPARE(user->titles().last(), QString("Export to XML Status"));
    QCOMPARE(user->seen().last().text, QString("The profiles failed to be exported!"));
    QCOMPARE(user->seen().last().icon, QMessageBox::Critical);
    QCOMPARE(folder->read("old.xml"), QByteArray("old"));
}

void XMLManagerTest::remembersTheFolder()
{
    QVERIFY(QDir().mkdir("elsewhere"));
    save("elsewhere/a.xml");
    FileDialogAnswer next{QString()};
    manager->on_importFromXMLButtonClicked();
    QCOMPARE(next.folder, path("elsewhere"));
    manager->setLastUsedDirectory(path("a.xml"));
    FileDialogAnswer last{QString()};
    manager->on_exportAsXMLButtonClicked(false);
    QCOMPARE(last.folder, folder->path());
}

void XMLManagerTest::remembersTheFolderOfAFailure()
{
    QVERIFY(QDir().mkdir("full") && QDir().mkdir("gone"));
    QVERIFY(QFile::link("/dev/full", "full/device.xml"));
    user->push(QMessageBox::Yes); // the dialog asks whether to replace it
    save("full/device.xml");
    QCOMPARE(user->titles().last(), QString("Export to XML Status"));
    FileDialogAnswer afterSaving{QString()};
    manager->on_exportAsXMLButtonClicked(false);
    QCOMPARE(afterSaving.folder, path("full"));

    QVERIFY(QFile::link("/dev/zero", "gone/link.xml"));
    load("gone/link.xml");
    QCOMPARE(user->titles().last(), QString("Import from XML status"));
    FileDialogAnswer afterLoading{QString()};
    manager->on_importFromXMLButtonClicked();
    QCOMPARE(afterLoading.folder, path("gone"));
}

void XMLManagerTest::manyRowsStandInTheirPlaces()
{
    QByteArray many;
    for (int i = 0; i < 300; ++i)
        many += profile(i, QByteArray::number(i));
    folder->write("a.xml", inFile(many));
    list->setFocus();
    load("a.xml");
    QCOMPARE(list->count(), 300);
    QVERIFY(list->isVisible());
    QCOMPARE(window->focusWidget(), list);
    for (int i = 0; i < 300; ++i) {
        QCOMPARE(list->itemWidget(list->item(i)), name(i));
        QVERIFY(name(i)->isVisible());
        QCOMPARE(name(i)->geometry().topLeft(), list->visualItemRect(list->item(i)).topLeft());
        QCOMPARE(name(i)->height(), 46);
    }
    // What is in sight is painted.
    const QImage shown = list->viewport()->grab(name(0)->geometry()).toImage();
    int dark = 0;
    for (int x = 0; x < shown.width(); ++x) {
        for (int y = 0; y < shown.height(); ++y)
            dark += qGray(shown.pixel(x, y)) < 100 ? 1 : 0;
    }
    QVERIFY(dark > 20);
    list->scrollToBottom();
    QVERIFY(list->viewport()->rect().intersects(name(299)->geometry()));
}

void XMLManagerTest::longWorkShowsItself()
{
    QByteArray many;
    for (int i = 0; i < 300; ++i)
        many += profile(i, QByteArray::number(i));
    folder->write("a.xml", inFile(many));
    // Whoever looks at the application while it works finds the bar, and cannot do anything else.
    BusyDialog::patience = 0;
    int seen = 0;
    QTimer look;
    connect(&look, &QTimer::timeout, this, [&seen] {
        if (auto *busy = qobject_cast<BusyDialog *>(QApplication::activeModalWidget())) {
            ++seen;
            QVERIFY(busy->isVisible());
            QVERIFY(QApplication::overrideCursor());
            QTest::keyClick(busy, Qt::Key_Escape);
            busy->close();
            QVERIFY(busy->isVisible());
        }
    });
    look.start(0);
    load("a.xml");
    look.stop();
    QCOMPARE(list->count(), 300);
    QVERIFY(seen > 0);
    QVERIFY(!QApplication::overrideCursor());
    QVERIFY(!QApplication::activeModalWidget());
}

void XMLManagerTest::busyDialogStays()
{
    BusyDialog busy("Loading...", window.get());
    busy.tell(0, 3, 0, 100);
    QVERIFY(!busy.isVisible()); // what is done soon needs no window
    QVERIFY(QApplication::overrideCursor());
    QTRY_VERIFY((busy.tell(1, 3, 50, 100), busy.isVisible()));
    QCOMPARE(busy.findChild<QProgressBar *>()->value(), 500);
    busy.reject();
    busy.close();
    QVERIFY(busy.isVisible());
}

void XMLManagerTest::restingDialogGivesThePointerBack()
{
    {
        BusyDialog busy("Loading...", nullptr);
        QTRY_VERIFY((busy.tell(0, 1, 1, 2), busy.isVisible()));
        busy.rest();
        busy.rest();
        QVERIFY(!busy.isVisible());
        QVERIFY(!QApplication::overrideCursor());
        busy.tell(0, 1, 1, 2);
        QVERIFY(QApplication::overrideCursor());
    }
    QVERIFY(!QApplication::overrideCursor());
}

void XMLManagerTest::answeringTakesNoPatience()
{
    // However long a box stood there: what is done soon after it needs no window.
    BusyDialog::patience = 0;
    BusyDialog busy("Loading...", nullptr);
    busy.tell(0, 1, 1, 2);
    QVERIFY(busy.isVisible());
    busy.rest();
    QElapsedTimer answering;
    answering.start();
    QTRY_VERIFY(answering.elapsed() > 300);
    BusyDialog::patience = 500;
    busy.tell(0, 1, 1, 2);
    QVERIFY(!busy.isVisible());
    QTRY_VERIFY((busy.tell(0, 1, 1, 2), busy.isVisible()));
}

void XMLManagerTest::rowsJoinAHiddenList()
{
    // In sight it would place all rows anew for each that joins.
    folder->write("a.xml", inFile(profile(0, "one") + profile(1, "two") + profile(2, "three")));
    QList<bool> visible;
    connect(importer.get(), &ImportProfilesMain::profileReadyForImport, this,
            [&] { visible.append(list->isVisible()); });
    load("a.xml");
    QCOMPARE(visible, QList<bool>({true, false, false}));
    QVERIFY(list->isVisible());
}

void XMLManagerTest::pointerTellsOfReplacing()
{
    folder->write("a.xml", inFile(profile(0, "one")));
    load("a.xml");
    bool told = false;
    connect(manager.get(), &XMLManager::deleteAllProfiles, this,
            [&told] { told = QApplication::overrideCursor(); });
    user->push("&Replace Profiles");
    load("a.xml");
    QVERIFY(told);
    QVERIFY(!QApplication::overrideCursor());
}

void XMLManagerTest::longSavingShowsItself()
{
    QByteArray many;
    for (int i = 0; i < 100; ++i)
        many += profile(i, QByteArray::number(i));
    folder->write("a.xml", inFile(many));
    QVERIFY(manager->importFromXML("a.xml"));
    BusyDialog::patience = 0;
    int seen = 0;
    QTimer look;
    connect(&look, &QTimer::timeout, this, [&] {
        if (auto *busy = qobject_cast<BusyDialog *>(QApplication::activeModalWidget())) {
            ++seen;
            QVERIFY(busy->isVisible());
            QVERIFY(QApplication::overrideCursor());
            QVERIFY(!QFile::exists(path("b.xml"))); // not before all of it is written
        }
    });
    look.start(0);
    FileDialogAnswer dialog(path("b.xml"));
    manager->on_exportAsXMLButtonClicked(false);
    look.stop();
    QVERIFY(seen > 0);
    QVERIFY(!QApplication::overrideCursor());
    QVERIFY(folder->read("b.xml").contains("<profile id=\"99\" "));
}

QTEST_MAIN(XMLManagerTest)
#include "tst_xmlmanager.moc"
