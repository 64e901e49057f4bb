#include "ImportProfiles/importprofilesmain.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "app/filenames.h"
#include "device/uploaddownloadmanager.h"
#include "profiles/profilename.h"
#include "profiles/profilesettings.h"
#include "suitestory.h"
#include "support/flashpage.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <cmath>

/// Stories of writing: what the charger holds afterwards, and every way in which it can fail.
class SuiteWriteTest : public QObject
{
    Q_OBJECT

private slots:
    void aPageComesBackFieldByField_data();
    void aPageComesBackFieldByField();
    void changesReachTheCharger();
    void marksGoWithTheWrite();
    void runsFollowInOrder();
    void failuresOfTheUploader_data();
    void failuresOfTheUploader();
    void aFailedEraseDoesNotWrite();
    void aFailedWriteLeavesTheRegionEmpty();
    void aBadWriteIsFoundByTheReadBack();
    void anotherChargerIsNotWritten_data();
    void anotherChargerIsNotWritten();
    void tooManyProfilesAreRefusedFirst();
    void namesThatNoChargerCanStoreAreRefused();
    void anImageThatCannotBeWrittenIsSaid();
    void missingFilesAreSaid_data();
    void missingFilesAreSaid();
    void anUploaderThatDoesNothingLeavesTheOldState();
    void deviceSettingsAreWrittenWithoutReading();
    void failedDeviceSettingsDisconnect();
    void theUploadersOutputIsKept();

private:
    static UploadDownload::UploadDownloadManager *manager(const SuiteStory &story)
    {
        return story.list()->window()->findChild<UploadDownload::UploadDownloadManager *>();
    }
};

namespace
{
/// Statistics are shown, and so written back, with this many decimals.
const QMap<QString, int> decimals{{"Wh", 0},       {"Ah", 1},       {"chargetime_s", 2},
                                  {"lifetime", 2}, {"ah_total", 1}, {"totalchargetime", 2},
                                  {"wh_total", 1}};

double roundedTo(int places, double value)
{
    const double power = std::pow(10.0, places);
    return std::floor(value * power + 0.5) / power;
}

/// Element by element what a page says in the end: the latest copy of each, profiles and statistics
/// by id, deleted profiles and their statistics gone, numbers to six significant digits, profile
/// ids as positions.
QStringList resolved(const QString &json)
{
    const QJsonArray elements = QJsonDocument::fromJson(json.toUtf8()).array();
    QStringList order;
    QMap<QString, QJsonObject> latest;
    for (const QJsonValue &value : elements) {
        const QJsonObject element = value.toObject();
        QString key = element["element"].toString();
        if (key.startsWith("chemistry_"))
            key = "profile";
        if (element.contains("profile_id"))
            key += " " + QString::number(element["profile_id"].toInt());
        if (!latest.contains(key))
            order.append(key);
        latest[key] = element;
    }
    QMap<int, int> positions;
    for (const QString &key : qAsConst(order)) {
        const QJsonObject element = latest[key];
        if (key.startsWith("profile ") && !element["scheduled_for_deletion"].toBool())
            positions.insert(element["profile_id"].toInt(), positions.size());
    }
    QStringList result;
    for (const QString &key : qAsConst(order)) {
        QJsonObject element = latest[key];
        if (element.contains("profile_id")) {
            const int id = element["profile_id"].toInt();
            if (!positions.contains(id))
                continue;
            element["profile_id"] = positions[id];
        }
        QString text;
        for (const QString &field : element.keys()) {
            const QJsonValue value =
                decimals.contains(field)
                    ? QJsonValue(roundedTo(decimals[field], element[field].toDouble()))
                    : element[field];
            text += field + "=" +
                    (value.isDouble() ? QString::number(value.toDouble(), 'g', 6)
                                      : value.toVariant().toString()) +
                    " ";
        }
        result.append(text);
    }
    std::sort(result.begin(), result.end());
    return result;
}

QStringList commandsWithoutRepeats(const QStringList &commands)
{
    QStringList result;
    for (const QString &command : commands) {
        if (result.isEmpty() || result.last() != command)
            result.append(command);
    }
    return result;
}
} // namespace

void SuiteWriteTest::aPageComesBackFieldByField_data()
{
    QTest::addColumn<QString>("hardware");
    for (const char *hardware : {"24v", "48v", "72v", "48v-v1"})
        QTest::newRow(hardware) << hardware;
}

void SuiteWriteTest::aPageComesBackFieldByField()
{
    QFETCH(QString, hardware);
    SuiteStory story;
    story.plugIn({"--hardware", hardware});
    story.open();
    QVERIFY(story.connectCharger());
    const QStringList before = resolved(story.pageOnCharger());
    QVERIFY(before.size() > 6);
    QVERIFY(story.saveData());
    QVERIFY(story.isConnected());
    QVERIFY(story.boxes.seen().isEmpty());
    QCOMPARE(resolved(story.pageOnCharger()), before);
    // A second round changes nothing at all.
    const QByteArray written = story.charger().flash(0x9C00, 0xA000);
    QVERIFY(story.saveData());
    QCOMPARE(story.charger().flash(0x9C00, 0xA000), written);
}

void SuiteWriteTest::changesReachTheCharger()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    // Rows: Li Fast (default), Li Stnd, Li 85%, 52V, NiMH, 48V SLA.
    story.select(4);
    QTest::mouseClick(story.list()->window()->findChild<QPushButton *>("profileNameUpButton"),
                      Qt::LeftButton);
    QCOMPARE(story.titles().at(3), QStringLiteral("36V NiMH"));
    QTest::mouseClick(story.row(5)->findChild<QAbstractButton *>("defaultProfileButton"),
                      Qt::LeftButton);
    QTest::mouseClick(story.row(1)->findChild<QAbstractButton *>("activeProfileButton"),
                      Qt::LeftButton);
    story.boxes.push(QMessageBox::Yes);
    QTest::mouseClick(story.row(0)->findChild<QAbstractButton *>("deleteProfileButton"),
                      Qt::LeftButton);
    QTRY_COMPARE(story.list()->count(), 5);
    QVERIFY(story.saveData());
    QVERIFY(story.isConnected());

    QStringList profiles;
    const QJsonArray elements = QJsonDocument::fromJson(story.pageOnCharger().toUtf8()).array();
    for (const QJsonValue &value : elements) {
        const QJsonObject element = value.toObject();
        if (element.contains("title"))
            profiles.append(QString("%1 %2/%3 active=%4 default=%5")
                                .arg(element["profile_id"].toInt())
                                .arg(element["title"].toString(), element["description"].toString())
                                .arg(element["active"].toBool())
                                .arg(element["defaultprofile"].toBool()));
    }
    QCOMPARE(profiles, QStringList({"0 36V Li(10s)/Stnd Charge active=0 default=0",
                                    "1 48V Li(13s)/85% Charge active=1 default=0",
                                    "2 36V NiMH/Custom active=1 default=0",
                                    "3 52V Li(14s)/Fast Charge active=0 default=0",
                                    "4 48V SLA/Stnd Charge active=1 default=1"}));
    QCOMPARE(story.titles(),
             QStringList({"36V Li(10s)", "48V Li(13s)", "36V NiMH", "52V Li(14s)", "48V SLA"}));
}

void SuiteWriteTest::marksGoWithTheWrite()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    auto *lamp = story.row(1)->findChild<QAbstractButton *>("activeProfileButton");
    QTest::mouseClick(lamp, Qt::LeftButton);
    QCOMPARE(story.titles().at(1), QStringLiteral("36V Li(10s)**"));
    QTest::mouseClick(lamp, Qt::LeftButton);
    QCOMPARE(story.titles().at(1), QStringLiteral("36V Li(10s)"));
    QTest::mouseClick(lamp, Qt::LeftButton);
    // As soon as the write is done, before the read back fills the list anew.
    QStringList written;
    connect(manager(story), &UploadDownload::UploadDownloadManager::settingsWrite, this,
            [&] { written = story.titles(); });
    QVERIFY(story.saveData());
    QCOMPARE(written.value(1), QStringLiteral("36V Li(10s)"));
    QCOMPARE(story.titles().at(1), QStringLiteral("36V Li(10s)"));
    QCOMPARE(story.row(1)->getActiveStatus(), false);
}

void SuiteWriteTest::runsFollowInOrder()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    QSignalSpy written(manager(story), &UploadDownload::UploadDownloadManager::settingsWrite);
    QSignalSpy read(manager(story), &UploadDownload::UploadDownloadManager::settingsRead);
    const int before = story.charger().commands().size();
    QVERIFY(story.saveData());
    QCOMPARE(commandsWithoutRepeats(story.charger().commands().mid(before)),
             QStringList(
                 {"version", "read", "version", "erase", "version", "write", "version", "read"}));
    QCOMPARE(written.count(), 1);
    QCOMPARE(written.at(0).at(0).toBool(), true);
    QCOMPARE(read.count(), 1);
    QCOMPARE(read.at(0).at(0).toBool(), true);
}

void SuiteWriteTest::failuresOfTheUploader_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<bool>("pageStays");
    QTest::newRow("silent before the first read") << "silent@version:1" << true;
    QTest::newRow("silent at the first read") << "silent@read:1" << true;
    QTest::newRow("wrong checksum at the first read") << "bad-checksum@read:3" << true;
    QTest::newRow("silent before the erase") << "silent@version:2" << true;
    QTest::newRow("silent at the erase") << "silent@erase" << false;
    QTest::newRow("refused erase") << "wrong-reply=07@erase" << false;
    QTest::newRow("silent before the write") << "silent@version:3" << false;
    QTest::newRow("silent at a row") << "silent@write:2" << false;
    QTest::newRow("refused row") << "wrong-reply=07@write:1" << false;
    QTest::newRow("silent before the read back") << "silent@version:4" << false;
    QTest::newRow("silent at the read back") << "silent@read:10" << false;
    QTest::newRow("wrong checksum at the erase") << "bad-checksum@erase" << false;
    QTest::newRow("wrong checksum at a row") << "bad-checksum@write:2" << false;
    QTest::newRow("wrong checksum at the read back") << "bad-checksum@read:10" << false;
    QTest::newRow("cable pulled at the erase") << "unplug@erase" << true;
    QTest::newRow("cable pulled at a row") << "unplug@write:2" << false;
    QTest::newRow("cable pulled at the read back") << "unplug@read:10" << false;
    QTest::newRow("other bootloader meanwhile") << "version=0207" << true;
}

void SuiteWriteTest::failuresOfTheUploader()
{
    QFETCH(QString, fault);
    QFETCH(bool, pageStays);
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    const QByteArray before = story.charger().flash(0x9C00, 0xA000);
    story.charger().fault(fault);
    QVERIFY(story.saveData());
    QCOMPARE(story.boxes.titles(), QStringList{"Failed!"});
    QCOMPARE(story.boxes.seen().first().icon, QMessageBox::Warning);
    QVERIFY(!story.isConnected());
    QVERIFY(story.generator()->isMaster());
    QCOMPARE(story.list()->count(), 6);
    if (pageStays)
        QCOMPARE(story.charger().flash(0x9C00, 0xA000), before);

    // The user mends it, and nothing is lost: the rows are still there to look at.
    story.mend();
    story.charger().control("hardware 48v");
    QVERIFY(story.connectCharger());
    QVERIFY(story.saveData());
    QVERIFY(story.isConnected());
}

void SuiteWriteTest::aFailedEraseDoesNotWrite()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    story.charger().fault("wrong-reply=07@erase");
    QVERIFY(story.saveData());
    QVERIFY(!story.charger().commands().contains("write"));
    QVERIFY(SuiteStory::workingFile(UPLOADED_PROFILES_FILE_NAME).endsWith(":00000001FF\n"));
}

void SuiteWriteTest::aFailedWriteLeavesTheRegionEmpty()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    story.charger().fault("wrong-reply=07@write:1");
    story.charger().fault("lazy@write:1");
    QVERIFY(story.saveData());
    QCOMPARE(story.boxes.titles(), QStringList{"Failed!"});
    QByteArray blank;
    for (int i = 0; i < 512; ++i)
        blank += QByteArray::fromHex("FFFFFF00");
    QCOMPARE(story.charger().flash(0x9C00, 0xA000), blank);
    QCOMPARE(story.list()->count(), 6);
}

void SuiteWriteTest::aBadWriteIsFoundByTheReadBack()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    story.charger().fault("flip-bit=45@write:1"); // in the global settings
    QVERIFY(story.saveData());
    QCOMPARE(story.boxes.titles(), QStringList{"Import from HEX status"});
    QVERIFY(!story.isConnected());

    story.charger().control("hardware 48v");
    QVERIFY(story.connectCharger());
    QCOMPARE(story.list()->count(), 6);
}

void SuiteWriteTest::anotherChargerIsNotWritten_data()
{
    // The charger connected before says version 2, hardware version 4, barcode "0000".
    QTest::addColumn<int>("version");
    QTest::addColumn<int>("hardware");
    QTest::addColumn<QByteArray>("barcode");
    QTest::newRow("other version") << 3 << 4 << QByteArray("0000");
    QTest::newRow("other hardware version") << 2 << 5 << QByteArray("0000");
    QTest::newRow("other barcode") << 2 << 4 << QByteArray("0001");
}

void SuiteWriteTest::anotherChargerIsNotWritten()
{
    QFETCH(int, version);
    QFETCH(int, hardware);
    QFETCH(QByteArray, barcode);
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    QFile::remove(UPLOADED_PROFILES_FILE_NAME);
    FlashPage page;
    page.add(FlashPage::number(3, 1) + FlashPage::number(41, 1))
        .add(FlashPage::number(4, 1) + FlashPage::number(version, 1))
        .add(FlashPage::number(16, 1) + FlashPage::number(hardware, 1))
        .add(FlashPage::number(17, 1) + FlashPage::text(barcode, 5));
    QTemporaryDir folder;
    QFile file(folder.filePath("page.hex"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(page.toHex());
    file.close();
    story.charger().control("page " + file.fileName());
    const QByteArray before = story.charger().flash(0x9C00, 0xA000);

    story.action("saveDataAction")->trigger();
    QTRY_VERIFY(!story.isConnected());
    QDialog *dialog = SuiteStory::dialog();
    QVERIFY(dialog);
    QCOMPARE(dialog->findChild<QLabel *>("status")->text(), QStringLiteral("Failed!"));
    QCOMPARE(dialog->findChild<QLabel *>("errorIcon")->text(),
             QStringLiteral("Communication Error!"));
    QCOMPARE(dialog->findChild<QLabel *>("errorMessage")->text(),
             QStringLiteral("This Velantor doesn't match either the hardware version or the "
                            "barcode of the Velantor previously connected!"));
    dialog->findChild<QPushButton *>("okButton")->click();
    QTRY_VERIFY(!SuiteStory::dialog());
    QVERIFY(!QFileInfo::exists(UPLOADED_PROFILES_FILE_NAME));
    QCOMPARE(story.charger().flash(0x9C00, 0xA000), before);
    QVERIFY(!story.charger().commands().contains("erase"));
    QCOMPARE(story.list()->count(), 6);

    story.charger().control("hardware 48v");
    QVERIFY(story.connectCharger());
    QVERIFY(story.saveData());
    QVERIFY(story.isConnected());
}

void SuiteWriteTest::tooManyProfilesAreRefusedFirst()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    auto *importer = story.list()->window()->findChild<ImportProfiles::ImportProfilesMain *>();
    auto *generator = story.generator();
    while (story.list()->count() < 18) {
        auto *profile = new ProfileSettings;
        QVERIFY(profile->initializeStructSettings("Lithium", generator));
        emit importer->profileReadyForImport(profile, true, false);
    }
    const int before = story.charger().commands().size();
    story.action("saveDataAction")->trigger();
    QCOMPARE(story.boxes.seen().size(), 1);
    QCOMPARE(story.boxes.seen().first().title, QStringLiteral("Upload profiles status"));
    QCOMPARE(story.boxes.seen().first().icon, QMessageBox::NoIcon);
    QCOMPARE(story.boxes.seen().first().text,
             QStringLiteral("You currently have 18 profiles, but only 17 profiles can be exported "
                            "to the Velantor. Please delete some profiles and try again"));
    QVERIFY(!SuiteStory::dialog());
    QCOMPARE(story.charger().commands().size(), before);
    QVERIFY(story.isConnected());
    QCOMPARE(story.list()->count(), 18);

    story.boxes.push(QMessageBox::Yes);
    QTest::mouseClick(story.row(0)->findChild<QAbstractButton *>("deleteProfileButton"),
                      Qt::LeftButton);
    QCOMPARE(story.list()->count(), 17);
    QVERIFY(story.saveData());
    QVERIFY(story.isConnected());
    QCOMPARE(story.list()->count(), 17);
}

void SuiteWriteTest::namesThatNoChargerCanStoreAreRefused()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    const QByteArray before = story.charger().flash(0x9C00, 0xA000);
    story.select(0);
    story.press("editProfileButton");
    story.enter("Profile name", QString::fromUtf8("36\u00b0 Li"));
    story.action("saveDataAction")->trigger();
    QCOMPARE(story.boxes.titles(), QStringList{"Upload profiles status"});
    QVERIFY(story.boxes.seen().first().text.contains(
        QString::fromUtf8("\n\n36\u00b0 Li - Fast Charge\n\n")));
    QVERIFY(!SuiteStory::dialog());
    QVERIFY(story.isConnected());
    QCOMPARE(story.charger().flash(0x9C00, 0xA000), before);
    QCOMPARE(story.list()->count(), 6);
    QCOMPARE(story.titles().first(), QString::fromUtf8("36\u00b0 Li**"));

    story.enter("Profile name", "36 Li");
    QVERIFY(story.saveData());
    QCOMPARE(story.boxes.seen().size(), 1);
    QCOMPARE(story.profilesOnCharger().first()["title"].toString(), QStringLiteral("36 Li"));
}

void SuiteWriteTest::anImageThatCannotBeWrittenIsSaid()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    QVERIFY(QDir().mkdir(UPLOADED_PROFILES_FILE_NAME)); // not even root writes over a folder
    story.action("saveDataAction")->trigger();
    QTRY_COMPARE(story.boxes.seen().size(), 1);
    QCOMPARE(story.boxes.seen().first().title, QStringLiteral("Error while uploading!"));
    QCOMPARE(story.boxes.seen().first().icon, QMessageBox::Critical);
    QCOMPARE(story.boxes.seen().first().text,
             QStringLiteral("An error occured while exporting profiles to HEX. Please try "
                            "again."));
    QVERIFY(!story.charger().commands().contains("erase"));

    // The dialog stays as it is; its close control is the way out.
    QVERIFY(SuiteStory::dialog()->close());
    QTRY_VERIFY(!SuiteStory::dialog());
    QVERIFY(story.isConnected());
    QVERIFY(QDir().rmdir(UPLOADED_PROFILES_FILE_NAME));
    QVERIFY(story.saveData());
    QVERIFY(story.isConnected());
}

void SuiteWriteTest::missingFilesAreSaid_data()
{
    QTest::addColumn<QString>("missing");
    QTest::newRow("no uploader") << VEXA_FILE_NAME;
    QTest::newRow("no device table") << FILE_FOR_VEXA_NAME;
}

void SuiteWriteTest::missingFilesAreSaid()
{
    QFETCH(QString, missing);
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    const QByteArray before = story.charger().flash(0x9C00, 0xA000);
    const QString away = missing + QStringLiteral(".away");
    QVERIFY(QFile::rename(missing, away));
    QVERIFY(story.saveData());
    QCOMPARE(story.boxes.titles(), QStringList{"Failed!"});
    QVERIFY(!story.isConnected());
    QCOMPARE(story.charger().flash(0x9C00, 0xA000), before);

    QVERIFY(QFile::rename(away, missing));
    QVERIFY(story.connectCharger());
    QVERIFY(story.saveData());
    QVERIFY(story.isConnected());
}

void SuiteWriteTest::anUploaderThatDoesNothingLeavesTheOldState()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    const QByteArray before = story.charger().flash(0x9C00, 0xA000);
    QTest::mouseClick(story.row(1)->findChild<QAbstractButton *>("activeProfileButton"),
                      Qt::LeftButton);
    QVERIFY(!story.row(1)->getActiveStatus());
    // As after a second opening of the port that failed: it ends well all the same.
    story.replaceUploader("exit 0\n");
    QVERIFY(story.saveData());
    QVERIFY(story.boxes.seen().isEmpty());
    QVERIFY(story.isConnected());
    QCOMPARE(story.charger().flash(0x9C00, 0xA000), before);
    // The list shows the image of the last read, and with it what the charger still holds.
    QCOMPARE(story.list()->count(), 6);
    QVERIFY(story.row(1)->getActiveStatus());
}

void SuiteWriteTest::deviceSettingsAreWrittenWithoutReading()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    auto *window = story.list()->window();
    auto *generator = story.generator();
    HParser::StructSetting *brightness =
        generator->getUnitSettingsStruct()->getStructSettingByName("brightness");
    brightness->advancedEnabled = true;
    QVERIFY(brightness->setValue(3.0));
    const int before = story.charger().commands().size();
    QSignalSpy done(manager(story), &UploadDownload::UploadDownloadManager::unitSettingsWrite);
    window->findChild<ImportProfiles::ImportProfilesMain *>()->sendProfilesToUploader();
    QTRY_COMPARE(done.count(), 1);
    QCOMPARE(done.at(0).at(0).toBool(), true);
    QDialog *dialog = SuiteStory::dialog();
    QVERIFY(dialog);
    QCOMPARE(dialog->findChild<QLabel *>("status")->text(), QStringLiteral("Success!"));
    dialog->findChild<QPushButton *>("okButton")->click();
    QTRY_VERIFY(!SuiteStory::dialog());
    QCOMPARE(commandsWithoutRepeats(story.charger().commands().mid(before)),
             QStringList({"version", "erase", "version", "write"}));
    QVERIFY(story.pageOnCharger().contains("\"brightness\": 3"));
    QVERIFY(story.isConnected());
}

void SuiteWriteTest::failedDeviceSettingsDisconnect()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    story.charger().fault("wrong-reply=07@erase");
    QSignalSpy done(manager(story), &UploadDownload::UploadDownloadManager::unitSettingsWrite);
    story.list()
        ->window()
        ->findChild<ImportProfiles::ImportProfilesMain *>()
        ->sendProfilesToUploader();
    QTRY_COMPARE(done.count(), 1);
    QCOMPARE(done.at(0).at(0).toBool(), false);
    QVERIFY(!story.isConnected());
    QTRY_VERIFY(!SuiteStory::dialog());
    story.charger().control("hardware 48v"); // whose page was erased
    QVERIFY(story.connectCharger());
}

void SuiteWriteTest::theUploadersOutputIsKept()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    const QByteArray first = SuiteStory::workingFile("vexaLog.txt");
    QVERIFY(first.contains("hex file write success!"));
    QVERIFY(story.saveData());
    const QByteArray all = SuiteStory::workingFile("vexaLog.txt");
    QVERIFY(all.startsWith(first));
    QVERIFY(all.contains("Memory from 9c00 to a000 erased successfully!"));
    QVERIFY(all.contains("Flash Write success!"));
}

QTEST_MAIN(SuiteWriteTest)
#include "tst_suite_write.moc"
