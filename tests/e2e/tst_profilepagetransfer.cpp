#include "device/connectdialog.h"
#include "device/downloadprofiles.h"
#include "device/resetframe.h"
#include "device/uploadprofiles.h"

#include "support/simulatorprocess.h"
#include "support/workingdirectory.h"

#include <QComboBox>
#include <QPointer>
#include <QPushButton>
#include <QtTest>

#include <memory>

using UploadDownload::ConnectDialog;
using UploadDownload::DownloadProfiles;
using UploadDownload::UploadProfiles;

/// The runs with the real uploader, at a simulated charger.
class ProfilePageTransferTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void whatIsReadCanBeWritten();
    void silentChargerFails();
    void failedWriteLeavesAnEmptyPage();
    void pulledCableFails();
    void resetLeavesTheBootloader();
    void connectDialogReads();

private:
    static constexpr int PATIENCE = 30000; // ms; a page takes a while on a loaded computer
    static QByteArray page(SimulatorProcess *charger) { return charger->flash(0x9C00, 0xA000); }
    /// True when the run ends well, false when it fails.
    bool read(SimulatorProcess *charger);
    bool write(SimulatorProcess *charger);

    std::unique_ptr<WorkingDirectory> folder;
    std::unique_ptr<QWidget> window;
};

void ProfilePageTransferTest::init()
{
    folder = std::make_unique<WorkingDirectory>();
    QVERIFY(QFile::copy(QStringLiteral(VELANTOR_VEXA), QStringLiteral("vexa.bin")));
    folder->copyHere(QStringLiteral(VELANTOR_SOURCE_DIR "/resources/files/device.txt"));
    window = std::make_unique<QWidget>();
}

void ProfilePageTransferTest::cleanup()
{
    window.reset();
    folder.reset();
}

bool ProfilePageTransferTest::read(SimulatorProcess *charger)
{
    DownloadProfiles run(charger->port(), window.get());
    QSignalSpy finished(&run, &DownloadProfiles::finished);
    QSignalSpy failed(&run, &DownloadProfiles::errorDownloading);
    run.start();
    return QTest::qWaitFor([&] { return finished.size() + failed.size() > 0; }, PATIENCE) &&
           failed.isEmpty();
}

bool ProfilePageTransferTest::write(SimulatorProcess *charger)
{
    UploadProfiles run(charger->port(), window.get());
    QSignalSpy finished(&run, &UploadProfiles::finished);
    QSignalSpy failed(&run, &UploadProfiles::errorUploading);
    run.start();
    return QTest::qWaitFor([&] { return finished.size() + failed.size() > 0; }, PATIENCE) &&
           failed.isEmpty();
}

void ProfilePageTransferTest::whatIsReadCanBeWritten()
{
    SimulatorProcess full({QStringLiteral("--hardware"), QStringLiteral("48v")});
    SimulatorProcess blank;
    QVERIFY(page(&full) != page(&blank));
    QVERIFY(read(&full));
    QVERIFY(QFile::rename(QStringLiteral("fs_to_read.hex"), QStringLiteral("fs_to_write.hex")));
    QVERIFY(write(&blank));
    QCOMPARE(page(&blank).toHex(), page(&full).toHex());

    // The rest of the log of the real program is its own business.
    QVERIFY(folder->read(QStringLiteral("vexaLog.txt"))
                .startsWith("Serial Uploader by Tolk Technologies (2011)"));
    QCOMPARE(folder->read(QStringLiteral("vexaLog.txt")).count("Serial Uploader"), 3);
}

void ProfilePageTransferTest::silentChargerFails()
{
    SimulatorProcess charger;
    charger.fault(QStringLiteral("dead"));
    QVERIFY(!read(&charger));
    charger.control(QStringLiteral("clear"));
    QVERIFY(read(&charger));
}

void ProfilePageTransferTest::failedWriteLeavesAnEmptyPage()
{
    SimulatorProcess charger({QStringLiteral("--hardware"), QStringLiteral("48v")});
    SimulatorProcess blank;
    QVERIFY(read(&charger));
    QVERIFY(QFile::rename(QStringLiteral("fs_to_read.hex"), QStringLiteral("fs_to_write.hex")));
    charger.fault(QStringLiteral("silent@write:1+"));
    QVERIFY(!write(&charger));
    QCOMPARE(page(&charger).toHex(), page(&blank).toHex());
    QVERIFY(QFile::exists(QStringLiteral("fs_to_write.hex")));
}

void ProfilePageTransferTest::pulledCableFails()
{
    SimulatorProcess charger({QStringLiteral("--hardware"), QStringLiteral("48v")});
    charger.fault(QStringLiteral("unplug@read:3"));
    QVERIFY(!read(&charger));
}

void ProfilePageTransferTest::resetLeavesTheBootloader()
{
    SimulatorProcess charger({QStringLiteral("--hardware"), QStringLiteral("48v")});
    QVERIFY(read(&charger));
    QSerialPort port(charger.port());
    QVERIFY(UploadDownload::sendResetFrame(&port));
    QTRY_COMPARE(charger.commands().last(), QStringLiteral("reset"));
    QVERIFY(!read(&charger));
    charger.control(QStringLiteral("enter"));
    QVERIFY(read(&charger));
}

void ProfilePageTransferTest::connectDialogReads()
{
    QPointer<ConnectDialog> dialog(new ConnectDialog(window.get()));
    dialog->show();
    const SimulatorProcess other;
    SimulatorProcess charger({QStringLiteral("--hardware"), QStringLiteral("72v")});
    auto *ports = dialog->findChild<QComboBox *>(QStringLiteral("comPortsDropdown"));
    const QString name = charger.portName();
    QTRY_VERIFY(ports->findText(name) >= 0);
    ports->setCurrentText(name);
    dialog->findChild<QPushButton *>(QStringLiteral("okButton"))->click();
    QTRY_VERIFY_WITH_TIMEOUT(!dialog, PATIENCE);
    QVERIFY(QFile::exists(QStringLiteral("fs_to_read.hex")));
    QVERIFY(charger.commands().contains(QStringLiteral("read")));
    QVERIFY(other.commands().isEmpty());
}

QTEST_MAIN(ProfilePageTransferTest)
#include "tst_profilepagetransfer.moc"
