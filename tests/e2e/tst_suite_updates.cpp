#include "app/applicationglobalmap.h"
#include "app/filenames.h"
#include "device/uploaddownloadmanager.h"
#include "firmwarestory.h"
#include "suitestory.h"
#include "support/filecontent.h"
#include "support/updatepreference.h"
#include "support/updatesite.h"
#include "support/webserver.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPointer>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QStandardPaths>
#include <QTest>

#include <algorithm>
#include <memory>

using UpdateSite::DOCUMENT;

namespace
{
const QString BUNDLE = QStringLiteral("/bundles/v1.040.velantor");

QString workingFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

QString bundleVersion()
{
    return ApplicationGlobalMap::getString(QStringLiteral("bundle_version"));
}

/// The embedded bundle under the next version, which is told by a tooltip, too.
QByteArray nextBundle()
{
    return neededContentOf(":/Velantor Software Suite Files/v1.039.velantor")
        .replace("VERSION = 1.039\n", "VERSION = 1.040\n");
}

void publish(WebServer *server, const QString &how = QStringLiteral("whole"))
{
    server->setAnswer(DOCUMENT, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                "<updates>\n"
                                "    <current_version>1.040</current_version>\n"
                                "    <download_link>" +
                                    server->url(BUNDLE).toUtf8() +
                                    "</download_link>\n"
                                    "</updates>\n");
    server->setAnswer(BUNDLE, nextBundle(), how);
}
} // namespace

/// Stories of updates: the maker's site, the suite and what a charger is asked for meanwhile.
class SuiteUpdatesTest : public QObject
{
    Q_OBJECT

private slots:
    void aFirstStartLeadsToTheNewBundle_data();
    void aFirstStartLeadsToTheNewBundle();
    void anUnknownCertificateIsRefused();
    void aSlowServerCanBeLeft();
    void aBundleArrivesDuringAWrite();
    void aBundleArrivesDuringAFlash();
    void theWindowGoesDuringADownload();

private:
    /// What "About..." says.
    static QString about(SuiteStory *story);
};

QString SuiteUpdatesTest::about(SuiteStory *story)
{
    story->boxes.clear();
    story->action("actionAbout")->trigger();
    return story->boxes.seen().value(0).text;
}

void SuiteUpdatesTest::aFirstStartLeadsToTheNewBundle_data()
{
    QTest::addColumn<bool>("secure");
    QTest::newRow("HTTP") << false;
    QTest::newRow("HTTPS") << true;
}

void SuiteUpdatesTest::aFirstStartLeadsToTheNewBundle()
{
    QFETCH(bool, secure);
    const std::unique_ptr<WebServer> server(secure ? new WebServer(QStringLiteral("127.0.0.1"))
                                                   : new WebServer);
    struct Trust {
        ~Trust() { QSslConfiguration::setDefaultConfiguration(before); }
        const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
    } const restored;
    if (secure) {
        QSslConfiguration trusting = restored.before;
        trusting.setCaCertificates(QSslCertificate::fromPath(server->authority()));
        QSslConfiguration::setDefaultConfiguration(trusting);
    }
    server->becomeTheSite();
    publish(server.get());

    SuiteStory story;
    QVERIFY(QFile::remove(workingFolder() + QStringLiteral("/config.txt")));
    story.boxes.push(QMessageBox::Yes);
    story.open();
    QTRY_VERIFY(SuiteStory::dialog());
    QCOMPARE(SuiteStory::dialog()->windowTitle(), QStringLiteral("Setup"));
    QVERIFY(story.widget<QRadioButton>("autoRadio")->isChecked());
    story.press("done");
    QTRY_COMPARE(story.boxes.titles(), QStringList({"New Firmware!", "New Firmware!"}));
    QTRY_COMPARE(bundleVersion(), QStringLiteral("1.040"));
    QCOMPARE(SuiteStory::workingFile(QStringLiteral("v1.040.velantor")), nextBundle());
    QVERIFY(about(&story).contains(QStringLiteral("Velantor Bundle Version: v1.040<br>")));

    // The next start asks nothing and goes on with it.
    story.closeWindow();
    story.boxes.clear();
    story.open();
    QTRY_COMPARE(server->count(DOCUMENT), 2);
    QVERIFY(!SuiteStory::dialog());
    QVERIFY(about(&story).contains(QStringLiteral("Velantor Bundle Version: v1.040<br>")));
    QCOMPARE(server->count(BUNDLE), 1);
    QVERIFY(story.model()->isEnabled());
}

void SuiteUpdatesTest::anUnknownCertificateIsRefused()
{
    WebServer server(QStringLiteral("127.0.0.1"));
    server.becomeTheSite();
    publish(&server);
    SuiteStory story;
    chooseAutomaticUpdates();
    story.open();
    QTRY_COMPARE(story.boxes.titles(), QStringList("Error!"));
    QCOMPARE(server.requests().size(), 0);
    QVERIFY(!QFile::exists("v1.040.velantor"));
    QVERIFY(about(&story).contains(QStringLiteral("v1.039<br>")));
}

void SuiteUpdatesTest::aSlowServerCanBeLeft()
{
    WebServer server;
    server.becomeTheSite();
    publish(&server, QStringLiteral("stall"));
    SuiteStory story;
    story.open();
    const QStringList files = QDir().entryList(QDir::Files | QDir::Hidden);
    story.action("actionCheckNewFirmware")->trigger();
    QTRY_COMPARE(server.state(BUNDLE), QStringLiteral("open"));
    QCOMPARE(story.widget<QLabel>("status")->text(), QStringLiteral("Downloading Firmware..."));
    story.press("mainButton");
    QTRY_VERIFY(!SuiteStory::dialog());
    QTRY_COMPARE(server.state(BUNDLE), QStringLiteral("left"));
    QVERIFY(story.boxes.seen().isEmpty());
    QCOMPARE(QDir().entryList(QDir::Files | QDir::Hidden), files);

    // And tried again when it is faster.
    publish(&server);
    story.action("actionCheckNewFirmware")->trigger();
    QTRY_COMPARE(story.boxes.titles(), QStringList("New Firmware!"));
    QTRY_VERIFY(!qobject_cast<QMessageBox *>(QApplication::activeModalWidget()));
    QCOMPARE(story.widget<QLabel>("status")->text(), QStringLiteral("Latest Firmware Downloaded!"));
    story.press("mainButton");
    QTRY_VERIFY(!SuiteStory::dialog());
    QVERIFY(about(&story).contains(QStringLiteral("v1.040<br>")));
}

void SuiteUpdatesTest::aBundleArrivesDuringAWrite()
{
    WebServer server;
    server.becomeTheSite();
    publish(&server, QStringLiteral("hold"));
    SuiteStory story;
    chooseAutomaticUpdates();
    story.plugIn({"--hardware", "48v"});
    story.boxes.push(QMessageBox::Yes);
    story.open();
    QTRY_COMPARE(server.state(BUNDLE), QStringLiteral("open"));
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QVERIFY(story.connectCharger());
    const QStringList titles = story.titles();
    QStringList seen;
    story.boxes.push([&seen](QMessageBox *box) {
        seen.append(SuiteStory::dialog() ? "in front of the write" : "alone");
        seen.append(bundleVersion());
        box->button(QMessageBox::Ok)->click();
    });
    using UploadDownload::UploadDownloadManager;
    auto *manager = story.mainWindow()->findChild<UploadDownloadManager *>();
    bool written = false;
    connect(manager, &UploadDownloadManager::settingsWrite, this, [&](bool success) {
        written = success;
        seen.append(bundleVersion());
    });
    story.charger().fault(QStringLiteral("slow-erase=0.5"));
    story.action("saveDataAction")->trigger();
    QTRY_VERIFY(SuiteStory::dialog());
    server.release();
    QTRY_COMPARE(story.boxes.seen().size(), 2);
    QVERIFY(story.endSaving());
    QVERIFY(written);
    QCOMPARE(seen, QStringList({"in front of the write", "1.039", "1.039"}));
    QTRY_COMPARE(bundleVersion(), QStringLiteral("1.040"));
    QCOMPARE(story.titles(), titles);
    QCOMPARE(story.profilesOnCharger().size(), titles.size());
    QVERIFY(story.isConnected());
    QVERIFY(story.readData());
    QCOMPARE(story.titles(), titles);
}

void SuiteUpdatesTest::aBundleArrivesDuringAFlash()
{
    WebServer server;
    server.becomeTheSite();
    publish(&server, QStringLiteral("hold"));
    SuiteStory story;
    chooseAutomaticUpdates();
    story.plugIn({"--hardware", "48v"});
    const int profiles = story.profilesOnCharger().size();
    QVERIFY(profiles > 0);
    story.boxes.push(QMessageBox::Yes);
    story.open();
    QTRY_COMPARE(server.state(BUNDLE), QStringLiteral("open"));
    QTRY_VERIFY(!QApplication::activeModalWidget());

    FirmwareStory update(&story);
    QVERIFY(update.openTool());
    update.choose(update.save("small.velantor", FirmwareStory::smallBundle(4)));
    QVERIFY(update.choosePort());
    story.charger().fault(QStringLiteral("slow-erase=0.3"));
    update.begin();
    const QByteArray keeping = SuiteStory::workingFile(FILE_FOR_VEXA_KEEP_PROFILES);
    QCOMPARE(SuiteStory::workingFile(FILE_FOR_VEXA_NAME), keeping);
    server.release();
    QTRY_COMPARE(story.boxes.titles(), QStringList({"New Firmware!", "New Firmware!"}));
    // The table that spares the profiles stays in place under the uploader.
    QVERIFY(!update.isSubmitEnabled());
    QCOMPARE(SuiteStory::workingFile(FILE_FOR_VEXA_NAME), keeping);
    QVERIFY(update.waitForEnd());
    QCOMPARE(story.profilesOnCharger().size(), profiles);
    QTest::mouseClick(update.widget<QPushButton>("closeButton"), Qt::LeftButton);
    QTRY_VERIFY(!update.tool());
    QTRY_COMPARE(bundleVersion(), QStringLiteral("1.040"));
}

void SuiteUpdatesTest::theWindowGoesDuringADownload()
{
    WebServer server;
    server.becomeTheSite();
    publish(&server, QStringLiteral("stall"));
    SuiteStory story;
    chooseAutomaticUpdates();
    story.boxes.push(QMessageBox::Yes);
    story.open();
    QTRY_COMPARE(server.state(BUNDLE), QStringLiteral("open"));
    QTRY_VERIFY(!QApplication::activeModalWidget());
    story.action("actionCheckNewFirmware")->trigger();
    QTRY_COMPARE(server.count(BUNDLE), 2);
    story.closeWindow();
    const auto isOpen = [](const WebServer::Request &request) {
        return request.state == QLatin1String("open");
    };
    const auto countOpen = [&] {
        const QList<WebServer::Request> requests = server.requests();
        return std::count_if(requests.begin(), requests.end(), isOpen);
    };
    QTRY_COMPARE(countOpen(), 0);
    QVERIFY(!QFile::exists("v1.040.velantor"));
    QCOMPARE(story.boxes.seen().size(), 1);
}

QTEST_MAIN(SuiteUpdatesTest)
#include "tst_suite_updates.moc"
