#include "updates/updatecheckerdialog.h"

#include "app/applicationglobalmap.h"
#include "support/messageboxanswers.h"
#include "support/patience.h"
#include "support/updatesite.h"
#include "support/webserver.h"
#include "support/workingdirectory.h"
#include "updates/newfirmwarechecker.h"
#include "updates/newfirmwarecheckermanager.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <functional>
#include <memory>

using NewFirmwareChecker::FileDownloader;
using NewFirmwareChecker::NewFirmwareCheckerManager;
using NewFirmwareChecker::UpdateCheckerDialog;
using UpdateSite::BUNDLE;
using UpdateSite::DOCUMENT;
using Checker = NewFirmwareChecker::NewFirmwareChecker;

namespace
{
const QString STORED = QStringLiteral("v1.040.velantor");
const QByteArray BUNDLE_TEXT("...\nVERSION = 1.040\n...\n");
} // namespace

/// The dialog of the two checks that the user asks for, and the manager that opens it.
class UpdateCheckerDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void formBeginsEmpty();
    void textsFit_data();
    void textsFit();
    void newerBundleIsFetched();
    void noNewerBundleIsLeftThere_data();
    void noNewerBundleIsLeftThere();
    void documentThatSaysNothingIsNoError_data();
    void documentThatSaysNothingIsNoError();
    void newerSoftwareIsTold();
    void noNewerSoftwareIsTold_data();
    void noNewerSoftwareIsTold();
    void softwareCheckFetchesNoBundle();
    void failuresAreTold_data();
    void failuresAreTold();
    void bundleFailuresAreTold_data();
    void bundleFailuresAreTold();
    void strangeVersionsAreShownAsText();
    void closingDropsWhatIsFetched_data();
    void closingDropsWhatIsFetched();
    void closingRightAtTheEndKeepsSilent();
    void closeEndsTheDialog();
    void listenerMayCloseTheDialog();
    void managerOpensTheDialogs_data();
    void managerOpensTheDialogs();
    void managerTellsOfTheBundle();

private:
    /// A document of the site.
    void publish(const QByteArray &bundleVersion, const QByteArray &softwareVersion,
                 const QString &link);
    /// Has the action run when the dialog has made of a document what it makes of it.
    void whenInfoIsThere(const std::function<void()> &action) const
    {
        connect(dialog->findChild<Checker *>(), &Checker::infoDownloaded, this, action);
    }
    template <class Widget = QLabel> Widget *widget(const char *name) const
    {
        return dialog->findChild<Widget *>(QLatin1String(name));
    }
    QString text(const char *name) const { return widget(name)->text(); }
    QString button() const { return widget<QPushButton>("mainButton")->text(); }
    /// "busy", or the value of the bar in percent.
    QString bar() const
    {
        const auto *progress = widget<QProgressBar>("progressBar");
        if (progress->minimum() == 0 && progress->maximum() == 0)
            return QStringLiteral("busy");
        return QStringLiteral("%1 of %2").arg(progress->value()).arg(progress->maximum());
    }

    std::unique_ptr<WorkingDirectory> folder;
    std::unique_ptr<WebServer> server;
    std::unique_ptr<MessageBoxAnswers> boxes;
    std::unique_ptr<QWidget> window;
    QPointer<UpdateCheckerDialog> dialog;
};

void UpdateCheckerDialogTest::init()
{
    folder = std::make_unique<WorkingDirectory>();
    if (!server) {
        server = std::make_unique<WebServer>();
        server->becomeTheSite();
    }
    server->forget();
    boxes = std::make_unique<MessageBoxAnswers>();
    window = std::make_unique<QWidget>();
    dialog = new UpdateCheckerDialog(window.get());
    ApplicationGlobalMap::putString(QStringLiteral("bundle_version"), QStringLiteral("1.039"));
}

void UpdateCheckerDialogTest::cleanup()
{
    window.reset();
    boxes.reset();
    folder.reset();
}

void UpdateCheckerDialogTest::publish(const QByteArray &bundleVersion,
                                      const QByteArray &softwareVersion, const QString &link)
{
    server->setAnswer(DOCUMENT, UpdateSite::document(bundleVersion, softwareVersion, link));
}

void UpdateCheckerDialogTest::formBeginsEmpty()
{
    QVERIFY(!dialog->isVisible());
    QCOMPARE(text("title"), QStringLiteral("Firmware Checker"));
    QCOMPARE(text("installedVersionLabel"), QStringLiteral("Installed Version:"));
    QCOMPARE(text("installedVersion"), QStringLiteral("-"));
    QCOMPARE(text("latestVersionLabel"), QStringLiteral("Latest Version:"));
    QCOMPARE(text("latestVersion"), QStringLiteral("-"));
    QCOMPARE(text("statusLabel"), QStringLiteral("Status:"));
    QCOMPARE(text("status"), QStringLiteral("Tolk"));
    QCOMPARE(button(), QStringLiteral("Cancel"));
    QVERIFY(widget("status")->openExternalLinks());
    QVERIFY(widget("status")->textInteractionFlags() & Qt::TextSelectableByMouse);
    QVERIFY(widget("status")->textInteractionFlags() & Qt::LinksAccessibleByMouse);
    QVERIFY(widget("status")->textInteractionFlags() & Qt::LinksAccessibleByKeyboard);
    QCOMPARE(dialog->windowModality(), Qt::ApplicationModal);
    QVERIFY(dialog->testAttribute(Qt::WA_DeleteOnClose));
}

void UpdateCheckerDialogTest::textsFit_data()
{
    QTest::addColumn<int>("points");
    QTest::newRow("usual font") << 9;
    QTest::newRow("large font") << 20;
}

void UpdateCheckerDialogTest::textsFit()
{
    QFETCH(int, points);
    QFont font = dialog->font();
    font.setPointSize(points);
    dialog->setFont(font);
    publish("1.039", "1.105", QString());
    dialog->checkForNewBundle();
    QTRY_COMPARE(button(), QStringLiteral("Close"));
    QCoreApplication::processEvents();
    for (const char *name : {"title", "installedVersionLabel", "installedVersion",
                             "latestVersionLabel", "latestVersion", "statusLabel", "status"})
        QVERIFY2(widget(name)->width() >= widget(name)->sizeHint().width(), name);
}

void UpdateCheckerDialogTest::newerBundleIsFetched()
{
    publish("1.040", "9.9", server->url(BUNDLE));
    server->setAnswer(BUNDLE, BUNDLE_TEXT);
    QStringList statesWhenTold;
    connect(dialog, &UpdateCheckerDialog::newBundle, this, [&] {
        statesWhenTold =
            QStringList{text("status"), bar(), button(), QString::fromUtf8(folder->read(STORED)),
                        QString::number(boxes->seen().size())};
    });
    dialog->checkForNewBundle();
    QVERIFY(dialog->isVisible());
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Firmware Checker"));
    QCOMPARE(text("title"), QStringLiteral("Firmware Checker"));
    QCOMPARE(text("installedVersion"), QStringLiteral("v1.039"));
    QCOMPARE(text("latestVersion"), QStringLiteral("-"));
    QCOMPARE(text("status"), QStringLiteral("Checking for Firmware Updates..."));
    QCOMPARE(bar(), QStringLiteral("busy"));
    QCOMPARE(button(), QStringLiteral("Cancel"));

    whenInfoIsThere([&] {
        QCOMPARE(text("latestVersion"), QStringLiteral("v1.040"));
        QCOMPARE(text("status"), QStringLiteral("Downloading Firmware..."));
        QCOMPARE(bar(), QStringLiteral("busy"));
        QCOMPARE(button(), QStringLiteral("Cancel"));
    });
    QTRY_COMPARE(boxes->seen().size(), 1);
    QCOMPARE(statesWhenTold,
             QStringList({"Downloading Firmware...", "busy", "Cancel", BUNDLE_TEXT, "0"}));
    QCOMPARE(text("status"), QStringLiteral("Latest Firmware Downloaded!"));
    QCOMPARE(bar(), QStringLiteral("100 of 100"));
    QCOMPARE(button(), QStringLiteral("Close"));
    QCOMPARE(boxes->seen().first().title, QStringLiteral("New Firmware!"));
    QCOMPARE(boxes->seen().first().text,
             QStringLiteral("The latest firmware has been downloaded. Please go to File -->Update "
                            "Velantor Firmware... to flash it."));
    QCOMPARE(folder->read(STORED), BUNDLE_TEXT);
    // New software is no concern of this check.
    QTRY_VERIFY(!QApplication::activeModalWidget() || QApplication::activeModalWidget() == dialog);
    QCOMPARE(boxes->seen().size(), 1);
}

void UpdateCheckerDialogTest::noNewerBundleIsLeftThere_data()
{
    QTest::addColumn<QByteArray>("latest");
    QTest::newRow("same") << QByteArray("1.039");
    QTest::newRow("older") << QByteArray("1.038");
    QTest::newRow("no version") << QByteArray("soon");
}

void UpdateCheckerDialogTest::noNewerBundleIsLeftThere()
{
    QFETCH(QByteArray, latest);
    publish(latest, "9.9", server->url(BUNDLE));
    server->setAnswer(BUNDLE, BUNDLE_TEXT);
    dialog->checkForNewBundle();
    QTRY_COMPARE(text("status"), QStringLiteral("Firmware already up-to-date"));
    QCOMPARE(text("latestVersion"), QLatin1Char('v') + QString::fromLatin1(latest));
    QCOMPARE(bar(), QStringLiteral("100 of 100"));
    QCOMPARE(button(), QStringLiteral("Close"));
    QCOMPARE(server->count(BUNDLE), 0);
    QVERIFY(boxes->seen().isEmpty());
    QVERIFY(QDir().isEmpty());
}

void UpdateCheckerDialogTest::documentThatSaysNothingIsNoError_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("a web page") << QByteArray("<!DOCTYPE html><html><br></html>");
    QTest::newRow("cut off") << QByteArray("<updates>\n<current_vers");
}

void UpdateCheckerDialogTest::documentThatSaysNothingIsNoError()
{
    QFETCH(QByteArray, document);
    server->setAnswer(DOCUMENT, document);
    dialog->checkForNewBundle();
    QTRY_COMPARE(text("status"), QStringLiteral("Firmware already up-to-date"));
    QCOMPARE(text("latestVersion"), QStringLiteral("v"));
    QVERIFY(boxes->seen().isEmpty());
}

void UpdateCheckerDialogTest::newerSoftwareIsTold()
{
    publish("1.040", "1.106", server->url(BUNDLE));
    dialog->checkForNewSoftware();
    QVERIFY(dialog->isVisible());
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Software Updates"));
    QCOMPARE(text("title"), QStringLiteral("Software Checker"));
    QCOMPARE(text("installedVersion"), QStringLiteral("v1.105"));
    QCOMPARE(text("latestVersion"), QStringLiteral("-"));
    QCOMPARE(text("status"), QStringLiteral("Checking for Software Updates..."));
    QCOMPARE(bar(), QStringLiteral("busy"));
    QCOMPARE(button(), QStringLiteral("Cancel"));

    QTRY_COMPARE(boxes->seen().size(), 1);
    QCOMPARE(text("latestVersion"), QStringLiteral("v1.106"));
    const QString address = server->url("/downloads/?file=VelantorProfileEditor_Linux");
    QCOMPARE(text("status"),
             QStringLiteral("Update available <a href = \"") + address + "\">here</a>!");
    QCOMPARE(bar(), QStringLiteral("100 of 100"));
    QCOMPARE(button(), QStringLiteral("Close"));
    QCOMPARE(boxes->seen().first().title, QStringLiteral("New Software Available!"));
    QVERIFY(boxes->seen().first().text.contains(address));
}

void UpdateCheckerDialogTest::noNewerSoftwareIsTold_data()
{
    QTest::addColumn<QByteArray>("latest");
    QTest::newRow("same") << QByteArray("1.105");
    QTest::newRow("older") << QByteArray("1.104");
    QTest::newRow("none") << QByteArray();
}

void UpdateCheckerDialogTest::noNewerSoftwareIsTold()
{
    QFETCH(QByteArray, latest);
    publish("1.040", latest, server->url(BUNDLE));
    dialog->checkForNewSoftware();
    QTRY_COMPARE(text("status"), QStringLiteral("Software already up-to-date"));
    QCOMPARE(text("latestVersion"), QLatin1Char('v') + QString::fromLatin1(latest));
    QCOMPARE(bar(), QStringLiteral("100 of 100"));
    QCOMPARE(button(), QStringLiteral("Close"));
    QVERIFY(boxes->seen().isEmpty());
}

void UpdateCheckerDialogTest::softwareCheckFetchesNoBundle()
{
    publish("1.040", "1.105", server->url(BUNDLE));
    server->setAnswer(BUNDLE, BUNDLE_TEXT);
    QSignalSpy newBundle(dialog, &UpdateCheckerDialog::newBundle);
    dialog->checkForNewSoftware();
    QTRY_COMPARE(button(), QStringLiteral("Close"));
    QCOMPARE(server->count(BUNDLE), 0);
    QVERIFY(newBundle.isEmpty());
    QVERIFY(QDir().isEmpty());
}

void UpdateCheckerDialogTest::failuresAreTold_data()
{
    QTest::addColumn<bool>("software");
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("status");
    for (const bool software : {false, true}) {
        const char *of = software ? "software" : "bundle";
        QTest::addRow("%s, missing", of) << software << "whole" << 404;
        QTest::addRow("%s, cut", of) << software << "cut" << 200;
        QTest::addRow("%s, closed", of) << software << "close" << 200;
    }
}

void UpdateCheckerDialogTest::failuresAreTold()
{
    QFETCH(bool, software);
    QFETCH(QString, how);
    QFETCH(int, status);
    server->setAnswer(DOCUMENT, "<current_version>1.040</current_version>", how, status);
    if (software)
        dialog->checkForNewSoftware();
    else
        dialog->checkForNewBundle();
    QTRY_COMPARE(boxes->seen().size(), 1);
    QCOMPARE(boxes->seen().first().title, QStringLiteral("Error!"));
    QCOMPARE(boxes->seen().first().text,
             QStringLiteral("An error occured while checking for firmware updates. Please make "
                            "sure you are connected to the internet, and try again."));
    QCOMPARE(boxes->seen().first().icon, QMessageBox::Warning);
    QCOMPARE(text("status"), QStringLiteral("Error!"));
    QCOMPARE(text("latestVersion"), QStringLiteral("-"));
    QCOMPARE(bar(), QStringLiteral("0 of 100"));
    QCOMPARE(button(), QStringLiteral("Close"));
    QVERIFY(dialog->isVisible());
}

void UpdateCheckerDialogTest::bundleFailuresAreTold_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("status");
    QTest::newRow("missing") << "whole" << 404;
    QTest::newRow("moved") << "whole" << 302;
    QTest::newRow("cut") << "cut" << 200;
    QTest::newRow("2 GB") << "huge" << 200;
}

void UpdateCheckerDialogTest::bundleFailuresAreTold()
{
    QFETCH(QString, how);
    QFETCH(int, status);
    publish("1.040", "1.105", server->url(BUNDLE));
    server->setAnswer(BUNDLE, BUNDLE_TEXT, how, status);
    QSignalSpy newBundle(dialog, &UpdateCheckerDialog::newBundle);
    dialog->checkForNewBundle();
    QTRY_COMPARE(boxes->titles(), QStringList("Error!"));
    QCOMPARE(text("status"), QStringLiteral("Error!"));
    QCOMPARE(text("latestVersion"), QStringLiteral("v1.040"));
    QCOMPARE(bar(), QStringLiteral("0 of 100"));
    QVERIFY(newBundle.isEmpty());
    QVERIFY(QDir().isEmpty());
}

void UpdateCheckerDialogTest::strangeVersionsAreShownAsText()
{
    publish("&lt;h1&gt;1" + QByteArray(100000, '1') + "&lt;/h1&gt;", "1.105", QString());
    dialog->checkForNewBundle();
    QTRY_COMPARE(button(), QStringLiteral("Close"));
    QCOMPARE(widget("latestVersion")->textFormat(), Qt::PlainText);
    QVERIFY(text("latestVersion").startsWith(QStringLiteral("v<h1>1111")));
    QCoreApplication::processEvents();
    QVERIFY(dialog->width() < 800);
}

void UpdateCheckerDialogTest::closingDropsWhatIsFetched_data()
{
    QTest::addColumn<QString>("stalling");
    QTest::addColumn<QString>("by");
    for (const QString &by :
         {QStringLiteral("button"), QStringLiteral("Escape"), QStringLiteral("close control")}) {
        QTest::addRow("document, %s", qPrintable(by)) << DOCUMENT << by;
        QTest::addRow("bundle, %s", qPrintable(by)) << BUNDLE << by;
    }
}

void UpdateCheckerDialogTest::closingDropsWhatIsFetched()
{
    QFETCH(QString, stalling);
    QFETCH(QString, by);
    publish("1.040", "1.105", server->url(BUNDLE));
    server->setAnswer(stalling, BUNDLE_TEXT, QStringLiteral("stall"));
    QSignalSpy newBundle(dialog, &UpdateCheckerDialog::newBundle);
    dialog->checkForNewBundle();
    QTRY_COMPARE(server->state(stalling), QStringLiteral("open"));
    if (by == QLatin1String("button"))
        QTest::mouseClick(widget<QPushButton>("mainButton"), Qt::LeftButton);
    else if (by == QLatin1String("Escape"))
        QTest::keyClick(dialog, Qt::Key_Escape);
    else
        dialog->close();
    QTRY_VERIFY(!dialog);
    QTRY_COMPARE(server->state(stalling), QStringLiteral("left"));
    QVERIFY(newBundle.isEmpty());
    QVERIFY(boxes->seen().isEmpty());
    QVERIFY(QDir().isEmpty());
}

void UpdateCheckerDialogTest::closingRightAtTheEndKeepsSilent()
{
    publish("1.040", "1.105", server->url(BUNDLE));
    server->setAnswer(BUNDLE, BUNDLE_TEXT);
    QSignalSpy newBundle(dialog, &UpdateCheckerDialog::newBundle);
    dialog->checkForNewBundle();
    bool arrived = false;
    whenInfoIsThere([&] {
        // The bundle is there, its end is on the way, and the click comes before it.
        connect(dialog->findChild<FileDownloader *>(), &FileDownloader::downloadProgress, this,
                [&](qint64 count) {
                    arrived = count == BUNDLE_TEXT.size();
                    if (arrived)
                        QMetaObject::invokeMethod(dialog, "close", Qt::QueuedConnection);
                });
    });
    QTRY_VERIFY(!dialog);
    QVERIFY(arrived);
    QVERIFY(newBundle.isEmpty());
    QVERIFY(boxes->seen().isEmpty());
    QVERIFY(QDir().isEmpty());
}

void UpdateCheckerDialogTest::closeEndsTheDialog()
{
    publish("1.039", "1.105", QString());
    dialog->checkForNewBundle();
    QTRY_COMPARE(button(), QStringLiteral("Close"));
    QTest::mouseClick(widget<QPushButton>("mainButton"), Qt::LeftButton);
    QTRY_VERIFY(!dialog);
}

void UpdateCheckerDialogTest::listenerMayCloseTheDialog()
{
    publish("1.040", "1.105", server->url(BUNDLE));
    server->setAnswer(BUNDLE, BUNDLE_TEXT);
    connect(dialog, &UpdateCheckerDialog::newBundle, this, [this] { delete dialog; });
    dialog->checkForNewBundle();
    QTRY_VERIFY(!dialog);
    QVERIFY(boxes->seen().isEmpty());
    QCOMPARE(folder->read(STORED), BUNDLE_TEXT);
}

void UpdateCheckerDialogTest::managerOpensTheDialogs_data()
{
    QTest::addColumn<bool>("software");
    QTest::newRow("bundle") << false;
    QTest::newRow("software") << true;
}

void UpdateCheckerDialogTest::managerOpensTheDialogs()
{
    QFETCH(bool, software);
    delete dialog;
    publish("1.039", "1.105", QString());
    NewFirmwareCheckerManager manager(window.get());
    if (software)
        manager.onCheckForSoftwareUpdates();
    else
        manager.on_checkFirmwareButtonPressed();
    dialog = window->findChild<UpdateCheckerDialog *>();
    QVERIFY(dialog);
    QVERIFY(dialog->isVisible());
    QCOMPARE(dialog->parentWidget(), window.get());
    QCOMPARE(dialog->windowTitle(),
             software ? QStringLiteral("Software Updates") : QStringLiteral("Firmware Checker"));
    QTRY_COMPARE(text("status"), software ? QStringLiteral("Software already up-to-date")
                                          : QStringLiteral("Firmware already up-to-date"));
}

void UpdateCheckerDialogTest::managerTellsOfTheBundle()
{
    publish("1.040", "1.105", server->url(BUNDLE));
    server->setAnswer(BUNDLE, BUNDLE_TEXT);
    NewFirmwareCheckerManager manager(window.get());
    QSignalSpy newBundle(&manager, &NewFirmwareCheckerManager::newBundle);
    manager.on_checkFirmwareButtonPressed();
    QTRY_COMPARE(newBundle.size(), 1);
    QTRY_COMPARE(boxes->seen().size(), 1);
    QCOMPARE(newBundle.size(), 1);
}

QTEST_MAIN(UpdateCheckerDialogTest)
#include "tst_updatecheckerdialog.moc"
