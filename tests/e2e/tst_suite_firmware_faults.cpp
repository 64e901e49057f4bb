#include "app/filenames.h"
#include "firmwarestory.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <functional>

namespace
{
constexpr int firmware = 0x0C00; // word address

const QString flashingError = QStringLiteral("Flashing Error!");
const QString notInBootloader =
    QStringLiteral("Incorrect COM port or Velantor is not in Bootloader");
const QString knownBug = QStringLiteral("\"no stx char!\" - Known bug. Please try again.");
const QString watchdogTitle = QStringLiteral("Unknown Error!");

/// What goes wrong: before the click on "Update Firmware", or right behind it.
using Deed = std::function<void(SuiteStory &)>;

Deed fault(const QString &text)
{
    return [text](SuiteStory &story) {
        for (const QString &each : text.split(QLatin1Char(' ')))
            story.charger().fault(each);
    };
}

void nothing(SuiteStory &) {}
} // namespace
Q_DECLARE_METATYPE(Deed)

/// Firmware updates in which the uploader says what is wrong: what the user is told, what is left,
/// and that the next attempt goes well.
class SuiteFirmwareFaultsTest : public QObject
{
    Q_OBJECT

private slots:
    void tellsWhatWentWrong_data();
    void tellsWhatWentWrong();
    void aMissingDeviceTableIsTold();
    void diagnosticsAloneStopNothing();
    void otherFilesAreRefusedAtOnce_data();
    void otherFilesAreRefusedAtOnce();
};

void SuiteFirmwareFaultsTest::tellsWhatWentWrong_data()
{
    QTest::addColumn<Deed>("before");
    QTest::addColumn<Deed>("behind");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("icon");
    QTest::addColumn<QString>("marks");
    QTest::addColumn<QByteArray>("afterTimeout"); // what the uploader prints then
    const QByteArray noTimeout;
    const int none = QMessageBox::NoIcon;
    const Deed quiet = nothing;
    const QString load = QStringLiteral("-√--");
    QTest::newRow("no bootloader at the port")
        << Deed([](SuiteStory &story) { story.charger().control("leave"); }) << quiet
        << flashingError << notInBootloader << none << load
        << QByteArray("\\nBootloader Version is...\\nTimeout!Version command send failed!");
    // The version line and the time-out of the erase come as one.
    QTest::newRow("silent at the erase")
        << fault("silent@erase") << quiet << flashingError << notInBootloader << none << load
        << QByteArray("\\nBootloader Version is...1 6.\\nErasing 24 pages from c00 to "
                      "9c00\\nTimeout!\\nErase failed!");
    QTest::newRow("image gone") << fault("slow-erase=0.4")
                                << Deed([](SuiteStory &) { QVERIFY(QFile::remove("v1.040.hex")); })
                                << QStringLiteral("Flashing Error")
                                << QStringLiteral("Firmware file not found!")
                                << int(QMessageBox::Critical) << QStringLiteral("√!--")
                                << noTimeout;
    QTest::newRow("device table gone")
        << fault("slow=0.4@version")
        << Deed([](SuiteStory &) { QVERIFY(QFile::remove(FILE_FOR_VEXA_NAME)); }) << flashingError
        << QStringLiteral("\"device.txt\" not found! Please reinstall the program.") << none << load
        << noTimeout;
    QTest::newRow("port gone") << Deed([](SuiteStory &story) { story.charger().control("unplug"); })
                               << quiet << flashingError
                               << QStringLiteral("Cannot open COM port. Please try selecting a "
                                                 "different one.")
                               << none << load << noTimeout;
    QTest::newRow("flipped bit")
        << fault("flip-bit=9@write:2") << quiet << flashingError
        << QStringLiteral("Verification Failed. The firmware file could be corrupted.") << none
        << QStringLiteral("√√√!") << noTimeout;
    QTest::newRow("reply begins in its middle, and is wrong")
        << fault("bad-stx@version bad-checksum@version") << quiet << flashingError << knownBug
        << none << load << noTimeout;
    QTest::newRow("reply begins in its middle, and refuses")
        << fault("bad-stx@erase wrong-reply@erase") << quiet << flashingError << knownBug << none
        << load << noTimeout;
}

void SuiteFirmwareFaultsTest::tellsWhatWentWrong()
{
    QFETCH(Deed, before);
    QFETCH(Deed, behind);
    QFETCH(QString, title);
    QFETCH(QString, marks);
    QFETCH(QByteArray, afterTimeout);
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    FirmwareStory update(&story);
    QVERIFY(update.openTool());
    const QString bundle = update.save("new.velantor", FirmwareStory::smallBundle(1));

    // A second of the uploader's own time can be more than the watchdog's patience where many
    // programs share the processor: that attempt tells nothing here. In the end somebody else says
    // at once what the uploader would say.
    constexpr int attempts = 3;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        story.boxes.clear();
        story.mend();
        story.charger().control("enter");
        update.choose(bundle);
        QVERIFY(update.choosePort());
        before(story);
        if (attempt == attempts - 1 && !afterTimeout.isEmpty())
            story.replaceUploader("printf '" + afterTimeout + "'; exit 1\n");
        update.begin();
        QVERIFY(!update.isSubmitEnabled());
        behind(story);
        QVERIFY(update.waitForEnd());
        if (story.boxes.titles() != QStringList(watchdogTitle))
            break;
    }
    QCOMPARE(story.boxes.titles(), QStringList(title));
    QTEST(story.boxes.seen().constFirst().text, "text");
    QTEST(int(story.boxes.seen().constFirst().icon), "icon");
    QVERIFY(story.boxes.seen().constFirst().modal);
    QCOMPARE(update.marks(), marks);
    QVERIFY(!update.isCloseEnabled());
    QCOMPARE(update.widget<QProgressBar>("eraseFlashPB")->maximum(), 100);

    if (QFile::exists("uploader.bin"))
        story.bringUploaderBack();
    story.mend();
    story.charger().control("enter");
    story.boxes.clear();
    QVERIFY2(update.flash(bundle), FirmwareStory::log());
    const QByteArray image = FirmwareStory::smallImage(1);
    QCOMPARE(story.charger().flash(firmware, firmware + image.size() / 2), image);
}

void SuiteFirmwareFaultsTest::aMissingDeviceTableIsTold()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    FirmwareStory update(&story);
    QVERIFY(update.openTool());
    // Neither the bundle nor one before it has the table that keeps profiles.
    QByteArray text = FirmwareStory::smallBundle(1);
    text.replace("device_keep_profiles.txt", "some_other_table.txt");
    QVERIFY(QFile::remove(FILE_FOR_VEXA_KEEP_PROFILES));
    update.choose(update.save("bare.velantor", text));
    QVERIFY(update.choosePort());
    update.begin();
    QVERIFY(update.waitForEnd());
    QCOMPARE(story.boxes.titles(), QStringList(flashingError));
    QCOMPARE(story.boxes.seen().constFirst().text,
             QStringLiteral("\"device.txt\" not found! Please reinstall the program."));
    QCOMPARE(story.charger().commands(), QStringList("version"));

    update.overwriteProfiles(true);
    story.boxes.clear();
    QVERIFY2(update.flash(update.save("bare.velantor", text)), FirmwareStory::log());
}

void SuiteFirmwareFaultsTest::diagnosticsAloneStopNothing()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    FirmwareStory update(&story);
    QVERIFY(update.openTool());
    for (const char *text :
         {"bad-stx@version", "bad-stx@erase", "bad-stx@write:2", "bad-stx@read:2"})
        story.charger().fault(text);
    QVERIFY2(update.flash(update.save("new.velantor", FirmwareStory::smallBundle(2))),
             FirmwareStory::log());
    QCOMPARE(FirmwareStory::log().count("no stx char!"), 4);
}

void SuiteFirmwareFaultsTest::otherFilesAreRefusedAtOnce_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << QString() << "No File"
                          << "Please specify a file to flash to the Velatnor.";
    QTest::newRow("image") << "v1.039.hex"
                           << "Wrong File"
                           << "Please choose a .velantor file to flash to the Velantor.";
}

void SuiteFirmwareFaultsTest::otherFilesAreRefusedAtOnce()
{
    QFETCH(QString, path);
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    FirmwareStory update(&story);
    QVERIFY(update.openTool());
    update.choose(path);
    QVERIFY(update.choosePort());
    update.begin();
    QCOMPARE(story.boxes.seen().size(), 1);
    QTEST(story.boxes.seen().constFirst().title, "title");
    QTEST(story.boxes.seen().constFirst().text, "text");
    QCOMPARE(int(story.boxes.seen().constFirst().icon), int(QMessageBox::Information));
    QVERIFY(update.isSubmitEnabled() && update.isCloseEnabled());
    QCOMPARE(story.charger().commands(), QStringList());
}

QTEST_MAIN(SuiteFirmwareFaultsTest)
#include "tst_suite_firmware_faults.moc"
