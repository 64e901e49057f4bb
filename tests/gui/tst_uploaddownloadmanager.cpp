#include "device/uploaddownloadmanager.h"

#include "device/communicationdialog.h"
#include "device/connectdialog.h"
#include "fakehexmanager.h"
#include "support/capturedoutput.h"
#include "support/fakeuploader.h"
#include "support/messageboxanswers.h"
#include "support/patience.h"
#include "support/pretendedports.h"
#include "support/pseudoterminal.h"

#include <QComboBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QtTest>

#include <memory>

using UploadDownload::CommunicationDialog;
using UploadDownload::ConnectDialog;
using UploadDownload::UploadDownloadManager;

namespace
{

const QString READ = QStringLiteral("-s /dev/ttyUSB0 -h -V -l 0x9C00 0xA000 fs_to_read.hex");
const QString ERASE = QStringLiteral("-s /dev/ttyUSB0 -h -V -E 0x9C00 0xA000");
const QString WRITE = QStringLiteral("-s /dev/ttyUSB0 -h -V -w fs_to_write.hex");

/// The steps of a run of the manager, written as one line each.
QStringList steps(std::initializer_list<const char *> texts)
{
    QStringList result;
    for (const char *text : texts)
        result.append(QLatin1String(text));
    return result;
}

} // namespace

class UploadDownloadManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void formatsPorts_data();
    void formatsPorts();

    void connectReadsThenImports();
    void connectFailureTellsNothing();
    void importFailureIsShown_data();
    void importFailureIsShown();
    void importFailureClosesTheConnectDialogToo();

    void readImports();
    void readFailureIsToldAsAFailedWrite();
    void readWithoutAPortFails();

    void tooManyProfilesAreNotWritten();
    void profilesThatNoChargerCanStoreAreNotWritten();
    void asManyProfilesAsAllowedAreWritten();
    void writeReadsComparesWritesAndReadsBack();
    void anotherChargerIsNotWritten();
    void failedExportStopsTheWrite();
    void failedUploadIsTold_data();
    void failedUploadIsTold();
    void failedImportAfterAWriteIsShown();
    void closedWriteDialogIsForgotten();
    void oneWriteAfterTheOther();
    void aMatchWithoutADialogIsHarmless();

    void deviceSettingsAreWrittenOnly();
    void failedExportOfDeviceSettingsIsShown();
    void failedUploadOfDeviceSettingsIsTold();

    void disconnectSendsTheResetFrame();
    void disconnectBeforeAnyConnect();
    void disconnectWithoutTheDevice();
    void resetFromFirmwareTakesThePort_data();
    void resetFromFirmwareTakesThePort();
    void endOfAResetIsPrinted();

private:
    template <typename Dialog> Dialog *dialog() const
    {
        auto *found = window->findChild<Dialog *>();
        if (!found)
            qFatal("no such dialog");
        return found;
    }
    bool hasDialog() const { return window->findChild<QDialog *>() != nullptr; }
    QString labelText(const char *name) const
    {
        return dialog<QDialog>()->findChild<QLabel *>(QLatin1String(name))->text();
    }
    QPushButton *okButton() const
    {
        return dialog<QDialog>()->findChild<QPushButton *>(QStringLiteral("okButton"));
    }
    /// What a box that came up tells, in the form "icon|title|text".
    static QString shown(const MessageBoxAnswers::Box &box);

    std::unique_ptr<FakeUploader> uploader;
    std::unique_ptr<FakeHexManager> hex;
    std::unique_ptr<QWidget> window;
    UploadDownloadManager *manager = nullptr; ///< a child of the window, as in the application
    QStringList told; ///< the manager's signals and its calls to the HEX manager,
                      ///< in order
};

void UploadDownloadManagerTest::init()
{
    portsOfTheComputer = QStringList{QStringLiteral("ttyUSB0")};
    uploader = std::make_unique<FakeUploader>();
    hex = std::make_unique<FakeHexManager>();
    window = std::make_unique<QWidget>();
    manager = new UploadDownloadManager(hex->object.get(), window.get());
    told.clear();

    const auto note = [this](const char *signal) {
        return [this, signal](bool value) {
            told.append(QLatin1String(signal) +
                        (value ? QStringLiteral("(true)") : QStringLiteral("(false)")));
        };
    };
    connect(manager, &UploadDownloadManager::settingsRead, this, note("settingsRead"));
    connect(manager, &UploadDownloadManager::settingsWrite, this, note("settingsWrite"));
    connect(manager, &UploadDownloadManager::unitSettingsRead, this, note("unitSettingsRead"));
    connect(manager, &UploadDownloadManager::unitSettingsWrite, this, note("unitSettingsWrite"));
    connect(manager, &UploadDownloadManager::deleteAllProfiles, this,
            [this] { told.append(QStringLiteral("deleteAllProfiles")); });
    connect(manager, &UploadDownloadManager::continueWrite, this,
            [this] { told.append(QStringLiteral("continueWrite")); });
    hex->called = [this](const QString &call) { told.append(call); };
    // The connection that the main window makes.
    connect(hex->object.get(), &HEXGeneratorParser::HEXManager::velantorAndSSMatch, manager,
            &UploadDownloadManager::continueWithWrite);
}

void UploadDownloadManagerTest::cleanup()
{
    window.reset();
    hex.reset();
    uploader.reset();
}

QString UploadDownloadManagerTest::shown(const MessageBoxAnswers::Box &box)
{
    static const QStringList icons{QStringLiteral("none"), QStringLiteral("information"),
                                   QStringLiteral("warning"), QStringLiteral("critical")};
    return QStringList{icons.value(int(box.icon)), box.title, box.text}.join(QLatin1Char('|'));
}

void UploadDownloadManagerTest::formatsPorts_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");
    QTest::newRow("path") << QStringLiteral("/dev/ttyUSB0") << QStringLiteral("ttyUSB0");
    QTest::newRow("bare name") << QStringLiteral("ttyUSB0") << QStringLiteral("ttyUSB0");
    QTest::newRow("twice") << QStringLiteral("/dev//dev/ttyUSB0") << QStringLiteral("ttyUSB0");
    QTest::newRow("in the middle") << QStringLiteral("x/dev/y") << QStringLiteral("xy");
    QTest::newRow("folder") << QStringLiteral("/dev/pts/3") << QStringLiteral("pts/3");
    QTest::newRow("empty") << QString() << QString();
}

void UploadDownloadManagerTest::formatsPorts()
{
    QFETCH(QString, path);
    QFETCH(QString, name);
    QCOMPARE(UploadDownloadManager::unformatCOMPort(path), name);
    QCOMPARE(UploadDownloadManager::formatCOMPort(name), QStringLiteral("/dev/") + name);
}

void UploadDownloadManagerTest::connectReadsThenImports()
{
    manager->on_connectButtonPressed();
    QVERIFY(dialog<ConnectDialog>()->isVisible());
    QCOMPARE(uploader->runs(), QStringList());
    okButton()->click();
    QTRY_VERIFY(!hasDialog());
    QCOMPARE(told, steps({"settingsRead(true)", "import"}));
    QCOMPARE(uploader->runs(), QStringList(READ));

    // The port is kept for all that follows.
    told.clear();
    manager->on_readButtonPressed();
    QTRY_VERIFY(!hasDialog());
    QCOMPARE(uploader->runs(), QStringList({READ, READ}));
}

void UploadDownloadManagerTest::connectFailureTellsNothing()
{
    uploader->plan({FakeUploader::FAIL, FakeUploader::SUCCEED});
    manager->on_connectButtonPressed();
    MessageBoxAnswers user;
    user.push(QMessageBox::Ok);
    okButton()->click();
    QTRY_COMPARE(user.seen().size(), 1);
    QTRY_COMPARE(okButton()->text(), QStringLiteral("Try Again"));
    QCOMPARE(told, QStringList());
    okButton()->click();
    QTRY_VERIFY(!hasDialog());
    QCOMPARE(told, steps({"settingsRead(true)", "import"}));
}

void UploadDownloadManagerTest::importFailureIsShown_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("box");
    QTest::newRow("file not read")
        << 0
        << QStringLiteral("warning|Import from HEX status|An error occurred "
                          "while reading profiles "
                          "from HEX. Please try again.");
    QTest::newRow("no page counter")
        << 3
        << QStringLiteral("critical|Import from HEX status|No page count when reading from "
                          "Velantor! Please reset your Velantor so it can recover.");
    QTest::newRow("unheard of") << 42
                                << QStringLiteral(
                                       "critical|Import from HEX status|An error occurred while "
                                       "importing profiles from HEX. Please try again.");
}

void UploadDownloadManagerTest::importFailureIsShown()
{
    QFETCH(int, code);
    QFETCH(QString, box);
    hex->importThrows = code;
    MessageBoxAnswers user;
    user.push([this](QMessageBox *open) {
        QCOMPARE(told, steps({"settingsRead(true)", "import"}));
        open->close();
    });
    manager->importFSElements();
    QCOMPARE(user.seen().size(), 1);
    QCOMPARE(shown(user.seen().first()), box);
    QVERIFY(user.seen().first().modal);
    QCOMPARE(told, steps({"settingsRead(true)", "import", "settingsRead(false)"}));
}

void UploadDownloadManagerTest::importFailureClosesTheConnectDialogToo()
{
    hex->importThrows = 1;
    manager->on_connectButtonPressed();
    MessageBoxAnswers user;
    okButton()->click();
    QTRY_VERIFY(!hasDialog());
    QCOMPARE(user.titles(), QStringList(QStringLiteral("Import from HEX status")));
    QCOMPARE(told, steps({"settingsRead(true)", "import", "settingsRead(false)"}));
}

void UploadDownloadManagerTest::readImports()
{
    manager->on_COMPortChosen(QStringLiteral("ttyUSB0"));
    manager->on_readButtonPressed();
    QCOMPARE(labelText("title"), QStringLiteral("Reading from Velantor"));
    QTRY_VERIFY(!hasDialog());
    QCOMPARE(told, steps({"settingsRead(true)", "import"}));
    QCOMPARE(uploader->runs(), QStringList(READ));
}

void UploadDownloadManagerTest::readFailureIsToldAsAFailedWrite()
{
    uploader->plan({FakeUploader::FAIL});
    manager->on_COMPortChosen(QStringLiteral("ttyUSB0"));
    MessageBoxAnswers user;
    manager->on_readButtonPressed();
    QTRY_VERIFY(!hasDialog());
    QCOMPARE(told, steps({"settingsWrite(false)"}));
    QCOMPARE(user.titles(), QStringList(QStringLiteral("Failed!")));
}

void UploadDownloadManagerTest::readWithoutAPortFails()
{
    uploader->plan({FakeUploader::FAIL});
    MessageBoxAnswers user;
    manager->on_readButtonPressed();
    QTRY_VERIFY(!hasDialog());
    QCOMPARE(uploader->runs(),
             QStringList(QStringLiteral("-s /dev/ -h -V -l 0x9C00 0xA000 fs_to_read.hex")));
}

void UploadDownloadManagerTest::tooManyProfilesAreNotWritten()
{
    hex->profiles = 18;
    manager->on_COMPortChosen(QStringLiteral("ttyUSB0"));
    MessageBoxAnswers user;
    manager->on_writeButtonPressed();
    QCOMPARE(user.seen().size(), 1);
    QCOMPARE(shown(user.seen().first()),
             QStringLiteral("none|Upload profiles status|You currently have 18 profiles, but "
                            "only "
                            "17 profiles can be exported to the Velantor. Please delete some "
                            "profiles and try again"));
    QVERIFY(!hasDialog());
    QCOMPARE(uploader->runs(), QStringList());
    QCOMPARE(told, QStringList());
}

void UploadDownloadManagerTest::profilesThatNoChargerCanStoreAreNotWritten()
{
    hex->unstorable = QStringList{QString::fromUtf8("M\u00fcller - Fast"), QStringLiteral("B - C")};
    manager->on_COMPortChosen(QStringLiteral("ttyUSB0"));
    MessageBoxAnswers user;
    manager->on_writeButtonPressed();
    manager->saveUnitSettingsToVel({nullptr});
    QCOMPARE(user.seen().size(), 2);
    for (const MessageBoxAnswers::Box &box : user.seen())
        QCOMPARE(
            shown(box),
            QString::fromUtf8(
                "none|Upload profiles status|The Velantor cannot store all characters of "
                "these names and descriptions:\n\nM\u00fcller - Fast\nB - C\n\nPlease use only "
                "plain letters, digits and signs, without accents, and try again"));
    QVERIFY(!hasDialog());
    QCOMPARE(uploader->runs(), QStringList());
    QCOMPARE(told, QStringList());
}

void UploadDownloadManagerTest::asManyProfilesAsAllowedAreWritten()
{
    hex->profiles = 17;
    manager->on_COMPortChosen(QStringLiteral("ttyUSB0"));
    MessageBoxAnswers user;
    manager->on_writeButtonPressed();
    QTRY_COMPARE(uploader->runs().size(), 4);
    QCOMPARE(user.seen().size(), 0);
}

void UploadDownloadManagerTest::writeReadsComparesWritesAndReadsBack()
{
    manager->on_COMPortChosen(QStringLiteral("ttyUSB0"));
    manager->on_writeButtonPressed();
    QCOMPARE(labelText("title"), QStringLiteral("Writing to Velantor"));
    QTRY_VERIFY(okButton()->isEnabled());
    QCOMPARE(told, steps({"compare", "export to \"\"", "continueWrite", "settingsWrite(true)",
                          "settingsRead(true)", "import"}));
    QCOMPARE(uploader->runs(), QStringList({READ, ERASE, WRITE, READ}));
    QCOMPARE(labelText("status"), QStringLiteral("Success!"));
    QTest::mouseClick(okButton(), Qt::LeftButton);
    QTRY_VERIFY(!hasDialog());
}

void UploadDownloadManagerTest::anotherChargerIsNotWritten()
{
    hex->chargerMatches = false;
    manager->on_COMPortChosen(QStringLiteral("ttyUSB0"));
    MessageBoxAnswers user;
    manager->on_writeButtonPressed();
    QTRY_COMPARE(told, steps({"compare", "settingsWrite(false)"}));
    QCOMPARE(uploader->runs(), QStringList(READ));
    QVERIFY(!QFile::exists(QStringLiteral("fs_to_write.hex")));
    QCOMPARE(labelText("status"), QStringLiteral("Failed!"));
    QCOMPARE(labelText("errorIcon"), QStringLiteral("Communication Error!"));
    QVERIFY(okButton()->isEnabled());
    QCOMPARE(user.seen().size(), 0);
}

void UploadDownloadManagerTest::failedExportStopsTheWrite()
{
    hex->exportWorks = false;
    manager->on_COMPortChosen(QStringLiteral("ttyUSB0"));
    MessageBoxAnswers user;
    manager->on_writeButtonPressed();
    QTRY_COMPARE(user.seen().size(), 1);
    QCOMPARE(shown(user.seen().first()),
             QStringLiteral("critical|Error while uploading!|An error occured while exporting "
                            "profiles to HEX. Please try again."));
    QCOMPARE(told, steps({"compare", "export to \"\""}));
    QCOMPARE(uploader->runs(), QStringList(READ));
    // The dialog stays as it is, so Esc is the way out.
    QCOMPARE(labelText("status"), QStringLiteral("Working..."));
    QVERIFY(!okButton()->isEnabled());
    QTest::keyClick(dialog<CommunicationDialog>(), Qt::Key_Escape);
    QTRY_VERIFY(!hasDialog());
}

void UploadDownloadManagerTest::failedUploadIsTold_data()
{
    QTest::addColumn<QStringList>("plan");
    QTest::addColumn<QStringList>("expected");
    const QString ok = FakeUploader::SUCCEED;
    const QString fail = FakeUploader::FAIL;
    QTest::newRow("first read") << QStringList{fail} << steps({"settingsWrite(false)"});
    QTest::newRow("erase") << QStringList{ok, fail}
                           << steps({"compare", "export to \"\"", "continueWrite",
                                     "settingsWrite(false)"});
    QTest::newRow("write") << QStringList{ok, ok, fail}
                           << steps({"compare", "export to \"\"", "continueWrite",
                                     "settingsWrite(false)"});
    QTest::newRow("read back") << QStringList{ok, ok, ok, fail}
                               << steps({"compare", "export to \"\"", "continueWrite",
                                         "settingsWrite(true)", "settingsWrite(false)"});
}

void UploadDownloadManagerTest::failedUploadIsTold()
{
    QFETCH(QStringList, plan);
    QFETCH(QStringList, expected);
    uploader->plan(plan);
    manager->on_COMPortChosen(QStringLiteral("ttyUSB0"));
    MessageBoxAnswers user;
    manager->on_writeButtonPressed();
    QTRY_VERIFY(!hasDialog());
    QCOMPARE(told, expected);
    QCOMPARE(user.titles(), QStringList(QStringLiteral("Failed!")));
    QCOMPARE(uploader->runs().size(), plan.size());
}

void UploadDownloadManagerTest::failedImportAfterAWriteIsShown()
{
    hex->importThrows = 4;
    manager->on_COMPortChosen(QStringLiteral("ttyUSB0"));
    MessageBoxAnswers user;
    manager->on_writeButtonPressed();
    QTRY_COMPARE(user.titles(), QStringList(QStringLiteral("Outdated Profiles")));
    QTRY_COMPARE(told.last(), QStringLiteral("settingsRead(false)"));
    QVERIFY(okButton()->isEnabled());
}

void UploadDownloadManagerTest::closedWriteDialogIsForgotten()
{
    uploader->plan({FakeUploader::WAIT});
    manager->on_COMPortChosen(QStringLiteral("ttyUSB0"));
    manager->on_writeButtonPressed();
    QTRY_COMPARE(uploader->runs().size(), 1);
    QTest::keyClick(dialog<CommunicationDialog>(), Qt::Key_Escape);
    QTRY_VERIFY(!hasDialog());
    uploader->release();
    QCOMPARE(told, QStringList());

    uploader->plan({});
    manager->on_writeButtonPressed();
    QTRY_VERIFY(okButton()->isEnabled());
    QCOMPARE(labelText("status"), QStringLiteral("Success!"));
    QCOMPARE(uploader->runs(), QStringList({READ, ERASE, WRITE, READ}));
}

void UploadDownloadManagerTest::oneWriteAfterTheOther()
{
    manager->on_COMPortChosen(QStringLiteral("ttyUSB0"));
    manager->on_writeButtonPressed();
    QTRY_VERIFY(okButton()->isEnabled());
    // Even with the first dialog still there, only the second one writes.
    const QPointer<CommunicationDialog> first(dialog<CommunicationDialog>());
    first->close();
    told.clear();
    uploader->plan({});
    manager->on_writeButtonPressed();
    QTRY_VERIFY(!first);
    QTRY_VERIFY(okButton()->isEnabled());
    QCOMPARE(uploader->runs(), QStringList({READ, ERASE, WRITE, READ}));
    QCOMPARE(told, steps({"compare", "export to \"\"", "continueWrite", "settingsWrite(true)",
                          "settingsRead(true)", "import"}));
}

void UploadDownloadManagerTest::aMatchWithoutADialogIsHarmless()
{
    manager->continueWithWrite(false);
    QCOMPARE(told, steps({"settingsWrite(false)"}));
    manager->continueWithWrite(true);
    QCOMPARE(uploader->runs(), QStringList());
}

void UploadDownloadManagerTest::deviceSettingsAreWrittenOnly()
{
    manager->on_COMPortChosen(QStringLiteral("ttyUSB0"));
    manager->saveUnitSettingsToVel({nullptr, nullptr});
    QCOMPARE(labelText("title"), QStringLiteral("Writing Settings"));
    QTRY_VERIFY(okButton()->isEnabled());
    QCOMPARE(told, steps({"export 2 profiles", "unitSettingsWrite(true)"}));
    QCOMPARE(uploader->runs(), QStringList({ERASE, WRITE}));
}

void UploadDownloadManagerTest::failedExportOfDeviceSettingsIsShown()
{
    hex->exportWorks = false;
    MessageBoxAnswers user;
    manager->saveUnitSettingsToVel({});
    QCOMPARE(user.seen().size(), 1);
    QCOMPARE(shown(user.seen().first()),
             QStringLiteral("critical|Error while uploading!|An error occured while exporting "
                            "settings to HEX. Please try again."));
    QVERIFY(!hasDialog());
    QCOMPARE(told, steps({"export 0 profiles"}));
    QCOMPARE(uploader->runs(), QStringList());
}

void UploadDownloadManagerTest::failedUploadOfDeviceSettingsIsTold()
{
    uploader->plan({FakeUploader::FAIL});
    manager->on_COMPortChosen(QStringLiteral("ttyUSB0"));
    MessageBoxAnswers user;
    manager->saveUnitSettingsToVel({});
    QTRY_VERIFY(!hasDialog());
    QCOMPARE(told, steps({"export 0 profiles", "unitSettingsWrite(false)"}));
    QCOMPARE(user.titles(), QStringList(QStringLiteral("Failed!")));
}

void UploadDownloadManagerTest::disconnectSendsTheResetFrame()
{
    PseudoTerminal charger;
    manager->on_COMPortChosen(charger.portName());
    MessageBoxAnswers user;
    manager->on_disconnectButtonPressed();
    QCOMPARE(told, steps({"settingsRead(false)"}));
    QCOMPARE(charger.receive().toHex(), QByteArray("555500000004"));
    QCOMPARE(user.seen().size(), 0);
    QCOMPARE(uploader->runs(), QStringList());
}

void UploadDownloadManagerTest::disconnectBeforeAnyConnect()
{
    MessageBoxAnswers user;
    manager->on_disconnectButtonPressed();
    QCOMPARE(told, steps({"settingsRead(false)"}));
    QCOMPARE(user.seen().size(), 1);
    const QString box = shown(user.seen().first());
    const QString title = QStringLiteral("information|Failed Opening Serial Port|");
    QVERIFY2(box == title + QStringLiteral("<strong>Device Not Found error:<strong/><br/><br/>"
                                           "Could not find device requested!") ||
                 box == title + QStringLiteral("<strong>Unknown error:</strong><br/><br/>Unknown "
                                               "error occurred when trying to open the serial "
                                               "port!"),
             qPrintable(box));
}

void UploadDownloadManagerTest::disconnectWithoutTheDevice()
{
    manager->on_COMPortChosen(QStringLiteral("velantor-no-such-port"));
    MessageBoxAnswers user;
    user.push([this](QMessageBox *box) {
        QCOMPARE(told, steps({"settingsRead(false)"}));
        box->close();
    });
    manager->on_disconnectButtonPressed();
    QCOMPARE(user.seen().size(), 1);
    QCOMPARE(shown(user.seen().first()),
             QStringLiteral("information|Failed Opening Serial Port|<strong>Device Not Found "
                            "error:<strong/><br/><br/>Could not find device requested!"));
}

void UploadDownloadManagerTest::resetFromFirmwareTakesThePort_data()
{
    QTest::addColumn<QString>("prefix");
    QTest::newRow("path") << QStringLiteral("/dev/");
    QTest::newRow("bare name") << QString();
}

void UploadDownloadManagerTest::resetFromFirmwareTakesThePort()
{
    QFETCH(QString, prefix);
    PseudoTerminal charger;
    manager->on_COMPortChosen(QStringLiteral("ttyUSB0"));
    manager->onResetFromFirmware(prefix + charger.portName());
    QCOMPARE(told, steps({"settingsRead(false)"}));
    QCOMPARE(charger.receive().toHex(), QByteArray("555500000004"));

    manager->on_readButtonPressed();
    QTRY_VERIFY(!hasDialog());
    QCOMPARE(uploader->runs().size(), 1);
    QVERIFY(uploader->runs().first().startsWith(QStringLiteral("-s /dev/") + charger.portName() +
                                                QLatin1Char(' ')));
}

void UploadDownloadManagerTest::endOfAResetIsPrinted()
{
    QCOMPARE(printedBy([this] { manager->onResetFailed(QProcess::Timedout); }),
             QByteArray("Error resetting: 2\n"));
    QCOMPARE(printedBy([this] { manager->onResetFinished(1, QProcess::CrashExit); }), QByteArray());
    QCOMPARE(told, QStringList());
}

QTEST_MAIN(UploadDownloadManagerTest)
#include "tst_uploaddownloadmanager.moc"
