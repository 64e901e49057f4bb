#include "SSGenerator/generator.h"
#include "app/applicationglobalmap.h"
#include "app/configfile.h"
#include "app/filenames.h"
#include "app/mainwindow.h"
#include "bundles/hardwaredropdown.h"
#include "profiles/profilename.h"
#include "profiles/profilenamelistwidget.h"
#include "support/filecontent.h"
#include "support/filedialoganswer.h"
#include "support/messageboxanswers.h"
#include "support/patience.h"
#include "support/updatepreference.h"
#include "support/updatesite.h"
#include "support/webserver.h"
#include "updates/newfirmwarechecker.h"
#include "updates/updatecheckerdialog.h"
#include "xml/busydialog.h"
#include "xml/xmlmanager.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

using NewFirmwareChecker::FileDownloader;
using NewFirmwareChecker::UpdateCheckerDialog;
using UpdateSite::BUNDLE;
using UpdateSite::DOCUMENT;
using Checker = NewFirmwareChecker::NewFirmwareChecker;

namespace
{
const QString EMBEDDED = QStringLiteral(":/Velantor Software Suite Files/v1.039.velantor");

/// The embedded bundle under another version.
QByteArray bundleOf(const QByteArray &version)
{
    return contentOf(EMBEDDED).replace("VERSION = 1.039\n", "VERSION = " + version + "\n");
}

QString bundleVersion()
{
    return ApplicationGlobalMap::getString(QStringLiteral("bundle_version"));
}

/// No file is loaded without its window while this lives.
struct NoPatience {
    NoPatience() { XMLGeneratorParser::BusyDialog::patience = 0; }
    ~NoPatience() { XMLGeneratorParser::BusyDialog::patience = 500; }
};
} // namespace

/// How the window looks for updates by itself and on request, and takes a bundle into use.
class MainWindowUpdatesTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void managersStandInOrder();
    void firstStartAsksOverTheWindow();
    void answerBeginsTheCheck_data();
    void answerBeginsTheCheck();
    void noAnswerAsksAgain();
    void manualMeansNoCheckAndUsableEntries();
    void automaticChecksAtEachStart();
    void nothingNewSaysNothing_data();
    void nothingNewSaysNothing();
    void newSoftwareIsTold();
    void newBundleIsOffered_data();
    void newBundleIsOffered();
    void softwareComesBeforeTheBundle();
    void fetchedBundleIsTakenIntoUse();
    void failuresAreTold_data();
    void failuresAreTold();
    void changeChecksAgain();
    void aNewCheckEndsTheOneBefore();
    void aNewCheckSilencesWhatHasJustArrived();
    void checkOnRequestTakesTheBundleIntoUse();
    void softwareCheckOnRequest();
    void modalWindowsDelayTheReload_data();
    void modalWindowsDelayTheReload();
    void nestedLoopsDelayTheReload();
    void loadingAFileDelaysTheReload();
    void aConnectedChargerKeepsItsModelInTheDropdown();
    void outdatedBundleIsReplacedAtStart();
    void outdatedBundleMayStay();

private:
    void open();
    void publish(const QByteArray &bundleVersion, const QByteArray &softwareVersion);
    /// Lets everything happen that the check of a start leads to.
    void awaitCheck();
    /// Makes it seen whether the bundle is unpacked: a member goes, the device table is another.
    static void prepareToSeeAReload();
    static bool wasReloaded() { return QFile::exists(REV7_72V_SS_FILE_NAME); }

    QAction *action(const char *name) const
    {
        return window->findChild<QAction *>(QLatin1String(name));
    }
    ConfigFile *setup() const { return window->findChild<ConfigFile *>(); }
    HParser::Generator *generator() const { return window->getGenerator(); }

    std::unique_ptr<QTemporaryDir> home;
    std::unique_ptr<WebServer> server;
    std::unique_ptr<MessageBoxAnswers> boxes;
    std::unique_ptr<MainWindow> window;
    int checksDone = 0;
};

void MainWindowUpdatesTest::init()
{
    home = std::make_unique<QTemporaryDir>();
    qputenv("XDG_DATA_HOME", home->path().toUtf8());
    if (!server) {
        server = std::make_unique<WebServer>();
        server->becomeTheSite();
    }
    server->forget();
    boxes = std::make_unique<MessageBoxAnswers>();
}

void MainWindowUpdatesTest::cleanup()
{
    window.reset();
    boxes.reset();
    QDir::setCurrent(QDir::rootPath());
    home.reset();
}

void MainWindowUpdatesTest::open()
{
    window = std::make_unique<MainWindow>();
    checksDone = 0;
    // Behind the window itself, which has its checker then.
    connect(setup(), &ConfigFile::parsed, this, [this] {
        if (const auto *checker = window->findChild<Checker *>())
            connect(checker, &Checker::infoDownloaded, this, [this] { ++checksDone; });
    });
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
}

void MainWindowUpdatesTest::publish(const QByteArray &version, const QByteArray &softwareVersion)
{
    server->setAnswer(DOCUMENT,
                      UpdateSite::document(version, softwareVersion, server->url(BUNDLE)));
    server->setAnswer(BUNDLE, bundleOf(version));
}

void MainWindowUpdatesTest::awaitCheck()
{
    QTRY_COMPARE(checksDone, 1);
    QTRY_VERIFY(!QApplication::activeModalWidget());
}

void MainWindowUpdatesTest::prepareToSeeAReload()
{
    if (!QFile::remove(REV7_72V_SS_FILE_NAME) || !QFile::remove(FILE_FOR_VEXA_NAME) ||
        !QFile::copy(FILE_FOR_VEXA_KEEP_PROFILES, FILE_FOR_VEXA_NAME))
        qFatal("the bundle was not unpacked");
}

void MainWindowUpdatesTest::managersStandInOrder()
{
    chooseManualUpdates();
    open();
    QStringList managers;
    for (const QObject *child : window->children()) {
        const QString name = QString::fromLatin1(child->metaObject()->className());
        if (name == QLatin1String("ConfigFile") ||
            name.contains(QRegularExpression(QStringLiteral("(Manager|ImportProfilesMain)$"))))
            managers.append(name);
    }
    QCOMPARE(managers,
             QStringList({"SettingsPaneManager", "ProfileNamesListManager",
                          "ImportProfiles::ImportProfilesMain", "XMLGeneratorParser::XMLManager",
                          "HEXGeneratorParser::HEXManager", "UploadDownload::UploadDownloadManager",
                          "ConfigFile", "NewFirmwareChecker::NewFirmwareCheckerManager"}));
}

void MainWindowUpdatesTest::firstStartAsksOverTheWindow()
{
    window = std::make_unique<MainWindow>();
    QVERIFY(!setup()->isVisible());
    window->show();
    QVERIFY(!setup()->isVisible());
    QTRY_VERIFY(setup()->isVisible());
    QVERIFY(window->isVisible());
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(window->isEnabled());
    QCOMPARE(server->requests().size(), 0);
}

void MainWindowUpdatesTest::answerBeginsTheCheck_data()
{
    QTest::addColumn<bool>("automatic");
    QTest::newRow("automatic") << true;
    QTest::newRow("manual") << false;
}

void MainWindowUpdatesTest::answerBeginsTheCheck()
{
    QFETCH(bool, automatic);
    publish("1.039", "1.105");
    open();
    QTRY_VERIFY(setup()->isVisible());
    setup()->findChild<QRadioButton *>(automatic ? "autoRadio" : "manualRadio")->click();
    setup()->findChild<QPushButton *>("done")->click();
    QVERIFY(!setup()->isVisible());
    if (automatic)
        awaitCheck();
    QCOMPARE(window->findChildren<Checker *>().size(), automatic ? 1 : 0);
    QCOMPARE(server->requests().size(), automatic ? 1 : 0);
    QVERIFY(boxes->seen().isEmpty());

    // The next start remembers.
    window.reset();
    open();
    if (automatic)
        awaitCheck();
    QVERIFY(!setup()->isVisible());
    QCOMPARE(window->findChildren<Checker *>().size(), automatic ? 1 : 0);
}

void MainWindowUpdatesTest::noAnswerAsksAgain()
{
    open();
    QTRY_VERIFY(setup()->isVisible());
    setup()->close();
    QVERIFY(!window->findChild<Checker *>());
    window.reset();
    open();
    QTRY_VERIFY(setup()->isVisible());
}

void MainWindowUpdatesTest::manualMeansNoCheckAndUsableEntries()
{
    publish("1.040", "1.106");
    chooseManualUpdates();
    open();
    QSignalSpy parsed(setup(), &ConfigFile::parsed);
    window->readConfigFile();
    QCOMPARE(parsed.size(), 1);
    QVERIFY(!window->findChild<Checker *>());
    for (const char *name :
         {"actionCheckNewFirmware", "actionCheckNewSoftware", "actionChangeAutoUpdates"})
        QVERIFY2(action(name)->isEnabled(), name);
    QCOMPARE(server->requests().size(), 0);

    action("actionChangeAutoUpdates")->trigger();
    QVERIFY(setup()->isVisible());
    setup()->close();
    action("actionCheckNewSoftware")->trigger();
    QPointer<UpdateCheckerDialog> dialog = window->findChild<UpdateCheckerDialog *>();
    QVERIFY(dialog);
    QTRY_COMPARE(boxes->titles(), QStringList("New Software Available!"));
    dialog->close();
    QTRY_VERIFY(!dialog);
    action("actionCheckNewFirmware")->trigger();
    dialog = window->findChild<UpdateCheckerDialog *>();
    QVERIFY(dialog);
    QTRY_COMPARE(boxes->titles(), QStringList({"New Software Available!", "New Firmware!"}));
}

void MainWindowUpdatesTest::automaticChecksAtEachStart()
{
    publish("1.039", "1.105");
    chooseAutomaticUpdates();
    for (const int start : {1, 2}) {
        open();
        awaitCheck();
        QCOMPARE(server->count(DOCUMENT), start);
        window.reset();
    }
    QVERIFY(boxes->seen().isEmpty());
    QCOMPARE(server->count(BUNDLE), 0);
}

void MainWindowUpdatesTest::nothingNewSaysNothing_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::newRow("same") << QByteArray("<updates>\n<current_version>1.039</current_version>\n"
                                        "<os name=\"Linux\">\n<sw_version>1.105</sw_version>\n"
                                        "</os>\n</updates>");
    QTest::newRow("older") << QByteArray("<updates>\n<current_version>1.038</current_version>\n"
                                         "<os name=\"Linux\">\n<sw_version>1.104</sw_version>\n"
                                         "</os>\n</updates>");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("a web page") << QByteArray("<!DOCTYPE html><html><p>Log in</html>");
    QTest::newRow("another platform")
        << QByteArray("<os name=\"Mac\">\n<sw_version>9</sw_version>\n</os>");
}

void MainWindowUpdatesTest::nothingNewSaysNothing()
{
    QFETCH(QByteArray, document);
    server->setAnswer(DOCUMENT, document);
    chooseAutomaticUpdates();
    open();
    awaitCheck();
    QVERIFY(boxes->seen().isEmpty());
    QCOMPARE(bundleVersion(), QStringLiteral("1.039"));
}

void MainWindowUpdatesTest::newSoftwareIsTold()
{
    publish("1.039", "1.106");
    chooseAutomaticUpdates();
    open();
    QTRY_COMPARE(boxes->titles(), QStringList("New Software Available!"));
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QCOMPARE(boxes->seen().size(), 1);
    QCOMPARE(server->count(BUNDLE), 0);
}

void MainWindowUpdatesTest::newBundleIsOffered_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("No") << false;
    QTest::newRow("Escape") << true;
}

void MainWindowUpdatesTest::newBundleIsOffered()
{
    QFETCH(bool, byKey);
    publish("1.040", "1.105");
    chooseAutomaticUpdates();
    if (byKey)
        boxes->push([](QMessageBox *box) { QTest::keyClick(box, Qt::Key_Escape); });
    else
        boxes->push(QMessageBox::No);
    open();
    QTRY_COMPARE(boxes->seen().size(), 1);
    const MessageBoxAnswers::Box box = boxes->seen().first();
    QCOMPARE(box.title, QStringLiteral("New Firmware!"));
    QCOMPARE(box.text, QStringLiteral("There is a new version of firmware available! Would you "
                                      "like to download it?"));
    QCOMPARE(box.icon, QMessageBox::Question);
    QVERIFY(box.modal);
    QCOMPARE(box.buttons, QStringList({"&Yes", "&No"}));
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QCOMPARE(boxes->seen().size(), 1);
    QCOMPARE(server->count(BUNDLE), 0);
    QVERIFY(!QFile::exists("v1.040.velantor"));
    QCOMPARE(bundleVersion(), QStringLiteral("1.039"));
}

void MainWindowUpdatesTest::softwareComesBeforeTheBundle()
{
    publish("1.040", "1.106");
    chooseAutomaticUpdates();
    boxes->push(QMessageBox::Ok);
    boxes->push(QMessageBox::No);
    open();
    QTRY_COMPARE(boxes->titles(), QStringList({"New Software Available!", "New Firmware!"}));
}

void MainWindowUpdatesTest::fetchedBundleIsTakenIntoUse()
{
    publish("1.040", "1.105");
    chooseAutomaticUpdates();
    QString versionWhenTold;
    boxes->push(QMessageBox::Yes);
    boxes->push([&versionWhenTold](QMessageBox *box) {
        versionWhenTold = bundleVersion();
        box->button(QMessageBox::Ok)->click();
    });
    window = std::make_unique<MainWindow>();
    window->show();
    prepareToSeeAReload();
    generator()->parseSSFile(REV7_24V_SS_FILE_NAME);
    QTRY_COMPARE(boxes->seen().size(), 2);
    QCOMPARE(boxes->seen().last().title, QStringLiteral("New Firmware!"));
    QCOMPARE(boxes->seen().last().text,
             QStringLiteral("The latest firmware has been downloaded. Please go to File -->Update "
                            "Velantor Firmware... to flash it."));
    QCOMPARE(versionWhenTold, QStringLiteral("1.039"));
    QTRY_COMPARE(bundleVersion(), QStringLiteral("1.040"));
    QVERIFY(wasReloaded());
    QCOMPARE(contentOf(FILE_FOR_VEXA_NAME), contentOf(FILE_FOR_VEXA_OVERWRITE_PROFILES));
    QVERIFY(generator()->isMaster());
    QCOMPARE(contentOf("v1.040.velantor"), bundleOf("1.040"));
    QCOMPARE(server->count(BUNDLE), 1);

    // From then on it is the newest.
    window.reset();
    boxes->clear();
    open();
    QCOMPARE(bundleVersion(), QStringLiteral("1.040"));
    awaitCheck();
    QVERIFY(boxes->seen().isEmpty());
}

void MainWindowUpdatesTest::failuresAreTold_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("status");
    QTest::newRow("document missing") << DOCUMENT << "whole" << 404;
    QTest::newRow("document cut") << DOCUMENT << "cut" << 200;
    QTest::newRow("bundle missing") << BUNDLE << "whole" << 404;
    QTest::newRow("bundle cut") << BUNDLE << "cut" << 200;
    QTest::newRow("bundle moved") << BUNDLE << "whole" << 301;
}

void MainWindowUpdatesTest::failuresAreTold()
{
    QFETCH(QString, path);
    QFETCH(QString, how);
    QFETCH(int, status);
    publish("1.040", "1.105");
    server->setAnswer(path, bundleOf("1.040"), how, status);
    chooseAutomaticUpdates();
    if (path == BUNDLE)
        boxes->push(QMessageBox::Yes);
    open();
    const int expected = path == BUNDLE ? 2 : 1;
    QTRY_COMPARE(boxes->seen().size(), expected);
    const MessageBoxAnswers::Box box = boxes->seen().last();
    QCOMPARE(box.title, QStringLiteral("Error!"));
    QCOMPARE(box.text, QStringLiteral("There was an error while attempting to check for and "
                                      "download updates! Check your internet connection or try "
                                      "again later."));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QCOMPARE(boxes->seen().size(), expected);
    QCOMPARE(bundleVersion(), QStringLiteral("1.039"));
    QVERIFY(!QFile::exists("v1.040.velantor"));
}

void MainWindowUpdatesTest::changeChecksAgain()
{
    publish("1.039", "1.105");
    chooseAutomaticUpdates();
    open();
    awaitCheck();
    action("actionChangeAutoUpdates")->trigger();
    setup()->findChild<QPushButton *>("done")->click();
    QTRY_COMPARE(server->count(DOCUMENT), 2);
    // The former one is gone.
    QTRY_COMPARE(window->findChildren<Checker *>().size(), 1);
    action("actionChangeAutoUpdates")->trigger();
    setup()->findChild<QRadioButton *>("manualRadio")->click();
    setup()->findChild<QPushButton *>("done")->click();
    QVERIFY(!setup()->isAuto());
    QCOMPARE(server->count(DOCUMENT), 2);
}

void MainWindowUpdatesTest::aNewCheckEndsTheOneBefore()
{
    publish("1.040", "1.105");
    server->setAnswer(DOCUMENT, "<current_version>1.041</current_version>",
                      QStringLiteral("stall"));
    chooseAutomaticUpdates();
    open();
    QTRY_COMPARE(server->state(DOCUMENT), QStringLiteral("open"));
    publish("1.040", "1.105");
    boxes->push(QMessageBox::No);
    window->checkForUpdates();
    QTRY_COMPARE(boxes->seen().size(), 1);
    QTRY_COMPARE(server->requests().first().state, QStringLiteral("left"));
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QCOMPARE(boxes->seen().size(), 1); // no error of the first one, and no second offer
}

void MainWindowUpdatesTest::aNewCheckSilencesWhatHasJustArrived()
{
    server->setAnswer(DOCUMENT, "There is no such page.", QStringLiteral("whole"), 404);
    chooseAutomaticUpdates();
    boxes->push(QMessageBox::No);
    window = std::make_unique<MainWindow>();
    bool arrived = false;
    connect(setup(), &ConfigFile::parsed, this, [&] {
        auto *downloader = window->findChild<FileDownloader *>();
        connect(downloader, &FileDownloader::downloadProgress, this, [&](qint64 count) {
            if (arrived || count == 0)
                return;
            arrived = true;
            // The error is on its way, and the next check comes before it.
            publish("1.040", "1.105");
            QMetaObject::invokeMethod(window.get(), "checkForUpdates", Qt::QueuedConnection);
        });
    });
    window->show();
    QTRY_COMPARE(boxes->titles(), QStringList("New Firmware!"));
    QVERIFY(arrived);
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QTRY_COMPARE(window->findChildren<Checker *>().size(), 1);
    QCOMPARE(boxes->seen().size(), 1);
}

void MainWindowUpdatesTest::checkOnRequestTakesTheBundleIntoUse()
{
    publish("1.040", "1.105");
    chooseManualUpdates();
    open();
    prepareToSeeAReload();
    bool reloadedWhenTold = false;
    boxes->push([&reloadedWhenTold](QMessageBox *box) {
        reloadedWhenTold = wasReloaded();
        box->button(QMessageBox::Ok)->click();
    });
    action("actionCheckNewFirmware")->trigger();
    const QPointer<UpdateCheckerDialog> dialog = window->findChild<UpdateCheckerDialog *>();
    QVERIFY(dialog);
    QCOMPARE(dialog->parentWidget(), window.get());
    QTRY_COMPARE(boxes->titles(), QStringList("New Firmware!"));
    QVERIFY(reloadedWhenTold);
    QCOMPARE(bundleVersion(), QStringLiteral("1.040"));
    QCOMPARE(dialog->findChild<QLabel *>("installedVersion")->text(), QStringLiteral("v1.039"));
    dialog->findChild<QPushButton *>("mainButton")->click();
    QTRY_VERIFY(!dialog);
}

void MainWindowUpdatesTest::softwareCheckOnRequest()
{
    publish("1.040", "1.105");
    chooseManualUpdates();
    open();
    action("actionCheckNewSoftware")->trigger();
    const QPointer<UpdateCheckerDialog> dialog = window->findChild<UpdateCheckerDialog *>();
    QVERIFY(dialog);
    QTRY_COMPARE(dialog->findChild<QLabel *>("status")->text(),
                 QStringLiteral("Software already up-to-date"));
    QCOMPARE(server->count(BUNDLE), 0);
}

void MainWindowUpdatesTest::modalWindowsDelayTheReload_data()
{
    QTest::addColumn<bool>("dialog");
    QTest::newRow("dialog") << true;
    QTest::newRow("window") << false;
}

void MainWindowUpdatesTest::modalWindowsDelayTheReload()
{
    QFETCH(bool, dialog);
    chooseManualUpdates();
    open();
    prepareToSeeAReload();
    const QByteArray table = contentOf(FILE_FOR_VEXA_NAME);
    const HParser::StructSettings *settings = generator()->getUnitSettingsStruct();
    std::unique_ptr<QWidget> inFront;
    if (dialog)
        inFront = std::make_unique<QDialog>(window.get());
    else
        inFront = std::make_unique<QMainWindow>(window.get());
    inFront->setWindowModality(Qt::ApplicationModal);
    inFront->show();
    window->newFirmware();
    QCOMPARE(boxes->titles(), QStringList("New Firmware!")); // this much is told at once
    // Long enough for whatever looks again.
    QTimer later;
    later.setSingleShot(true);
    later.start(500);
    QTRY_VERIFY(!later.isActive());
    QVERIFY(!wasReloaded());
    QCOMPARE(contentOf(FILE_FOR_VEXA_NAME), table);
    QCOMPARE(generator()->getUnitSettingsStruct(), settings);
    inFront->close();
    QTRY_VERIFY(wasReloaded());
    QVERIFY(contentOf(FILE_FOR_VEXA_NAME) != table);
    QVERIFY(generator()->getUnitSettingsStruct() != settings);
}

void MainWindowUpdatesTest::nestedLoopsDelayTheReload()
{
    chooseManualUpdates();
    open();
    prepareToSeeAReload();
    QEventLoop outer;
    QEventLoop inner;
    bool reloadedWithin = true;
    QTimer::singleShot(0, this, [&] {
        QTimer::singleShot(0, window.get(), &MainWindow::newFirmware);
        QTimer::singleShot(500, &inner, &QEventLoop::quit);
        inner.exec();
        reloadedWithin = wasReloaded();
        outer.quit();
    });
    outer.exec();
    QCOMPARE(boxes->seen().size(), 1);
    QVERIFY(!reloadedWithin);
    QTRY_VERIFY(wasReloaded());
}

void MainWindowUpdatesTest::loadingAFileDelaysTheReload()
{
    const NoPatience noPatience;
    chooseManualUpdates();
    open();
    QByteArray profiles = "<VelantorProfiles>\n";
    for (int i = 0; i < 300; ++i)
        profiles += "<profile id=\"" + QByteArray::number(i) +
                    "\"><name>Lithium</name><title>A</title></profile>\n";
    writeFile("many.xml", profiles + "</VelantorProfiles>\n");
    prepareToSeeAReload();
    auto *manager = window->findChild<XMLGeneratorParser::XMLManager *>();
    auto *list = window->findChild<QListWidget *>("profileNamesList");
    FileDialogAnswer file(QDir::current().filePath("many.xml"));
    int rowsWhenTold = -1;
    boxes->push([&](QMessageBox *box) {
        rowsWhenTold = list->count();
        box->button(QMessageBox::Ok)->click();
    });
    QTimer checkForBusy;
    connect(&checkForBusy, &QTimer::timeout, this, [&] {
        if (qobject_cast<XMLGeneratorParser::BusyDialog *>(QApplication::activeModalWidget())) {
            checkForBusy.stop();
            window->newFirmware();
        }
    });
    checkForBusy.start(0);
    const HParser::StructSettings *settings = generator()->getUnitSettingsStruct();
    manager->on_importFromXMLButtonClicked();
    QCOMPARE(generator()->getUnitSettingsStruct(), settings);
    QVERIFY(!wasReloaded());
    QCOMPARE(boxes->titles(), QStringList("New Firmware!"));
    QVERIFY(rowsWhenTold >= 0 && rowsWhenTold < 300); // it was in the midst of the file
    QCOMPARE(list->count(), 300);
    QTRY_VERIFY(wasReloaded());
    QVERIFY(generator()->getUnitSettingsStruct() != settings);
}

void MainWindowUpdatesTest::aConnectedChargerKeepsItsModelInTheDropdown()
{
    chooseManualUpdates();
    open();
    auto *dropdown = window->findChild<HardwareDropdown *>();
    generator()->parseSSFile(REV7_72V_SS_FILE_NAME);
    dropdown->disable();
    prepareToSeeAReload();
    window->newFirmware();
    QVERIFY(wasReloaded());
    QVERIFY(generator()->isMaster());
    QVERIFY(!dropdown->isEnabled());
    QCOMPARE(dropdown->currentText(), QStringLiteral("72V"));
}

void MainWindowUpdatesTest::outdatedBundleIsReplacedAtStart()
{
    publish("1.051", "1.105");
    chooseManualUpdates();
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    writeFile(folder + "/v1.050.velantor", "...\nVERSION = 1.050\n...\n");
    boxes->push(QMessageBox::Yes);
    boxes->push([this](QMessageBox *box) {
        // Only what lets the dialog go lets the start go on.
        auto *dialog = qobject_cast<UpdateCheckerDialog *>(box->parentWidget());
        QTimer::singleShot(0, dialog, &QWidget::close);
        box->button(QMessageBox::Ok)->click();
    });
    open();
    QCOMPARE(boxes->titles(), QStringList({"Outdated Bundle", "New Firmware!"}));
    QCOMPARE(bundleVersion(), QStringLiteral("1.051"));
    QVERIFY(!window->findChild<UpdateCheckerDialog *>());
    QCOMPARE(contentOf("v1.051.velantor"), bundleOf("1.051"));
}

void MainWindowUpdatesTest::outdatedBundleMayStay()
{
    server->setAnswer(DOCUMENT, QByteArray(), QStringLiteral("silent"));
    chooseManualUpdates();
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    writeFile(folder + "/v1.050.velantor", "...\nVERSION = 1.050\n...\n");
    QFile::copy(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/master.ss"), folder + "/master.ss");
    // The dialog is cancelled, and the offer comes again.
    boxes->push([](QMessageBox *box) {
        box->button(QMessageBox::Yes)->click();
        QTimer::singleShot(0, [] {
            auto *dialog = qobject_cast<UpdateCheckerDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            dialog->findChild<QPushButton *>("mainButton")->click();
        });
    });
    boxes->push(QMessageBox::No);
    open();
    QCOMPARE(boxes->titles(), QStringList({"Outdated Bundle", "Outdated Bundle"}));
    QVERIFY(window->isVisible());
}

QTEST_MAIN(MainWindowUpdatesTest)
#include "tst_mainwindowupdates.moc"
