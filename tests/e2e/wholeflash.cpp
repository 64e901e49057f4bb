#include "wholeflash.h"

#include "app/filenames.h"
#include "firmwarestory.h"
#include "support/capturedoutput.h"

#include <QDir>
#include <QTest>

namespace
{
constexpr int firmware = 0x0C00; // word addresses
constexpr int profilePage = 0x9C00;
constexpr int flashEnd = 0xA000;
const QByteArray blankRow = QByteArray("\xFF\xFF\xFF\0", 4).repeated(0x40);
const QByteArray blankPage = blankRow.repeated(8);
} // namespace

BusyProgram::BusyProgram()
{
    // It ends with the test, however that ends.
    process.start(QStringLiteral("sh"),
                  {QStringLiteral("-c"), QStringLiteral("while kill -0 $PPID; do :; done")});
    if (!process.waitForStarted())
        qFatal("no shell");
}

BusyProgram::~BusyProgram()
{
    process.kill();
    process.waitForFinished();
}

void flashWholeImage(SuiteStory &story, bool overwriteProfiles, int milliseconds)
{
    story.open();
    const QByteArray page = story.charger().flash(profilePage, flashEnd);
    QVERIFY(page != blankPage);
    const QString directory = QDir::currentPath();

    FirmwareStory update(&story);
    QVERIFY(update.openTool());
    update.overwriteProfiles(overwriteProfiles);
    bool isFlashed = false;
    const QByteArray printed =
        printedBy([&] { isFlashed = update.flash(FirmwareStory::embeddedBundle(), milliseconds); });
    QVERIFY2(isFlashed, FirmwareStory::log());

    const QByteArray image =
        FirmwareStory::imageOf(SuiteStory::workingFile("v1.039.hex"), firmware, profilePage);
    QVERIFY(!image.contains(blankRow)); // it has no gap
    QVERIFY(story.charger().flash(firmware, profilePage) == image);
    QVERIFY(story.charger().flash(profilePage, flashEnd) == (overwriteProfiles ? blankPage : page));
    QTRY_COMPARE(story.chargerMode(), QStringLiteral("left"));

    for (const char *bar : {"eraseFlashPB", "loadFilePB", "uploadPB", "verifyPB"})
        QCOMPARE(update.widget<QProgressBar>(bar)->maximum(), 100);
    QCOMPARE(update.widget<QProgressBar>("uploadPB")->value(), 100);
    QCOMPARE(update.widget<QProgressBar>("verifyPB")->value(), 100);

    QCOMPARE(printed.count("Entering "), 3);
    const int loading = printed.indexOf("Entering loading state\n");
    const int uploading = printed.indexOf("Entering uploading state\n");
    const int verifying = printed.indexOf("Entering verifying state\n");
    QVERIFY2(loading >= 0 && loading < uploading && uploading < verifying, printed);

    const QByteArray log = FirmwareStory::log();
    QVERIFY(log.startsWith("FLASHING VELANTOR FIRMWARE\nHex File Name: v1.039.velantor\n"
                           "Output File Log Name : " +
                           FirmwareStory::logName().toUtf8() + "\n---------------------\n\n" +
                           "Serial Uploader by Tolk Technologies (2011)\nVersion 1.2\n" +
                           "\nBootloader Version is...1 6." +
                           (overwriteProfiles ? "\nErasing 25 pages from c00 to a000"
                                              : "\nErasing 24 pages from c00 to 9c00") +
                           "\nAll flash above bldr erased!"));
    QVERIFY(log.contains("\nNow writing from c00 to 9c00 word address\n"));
    for (const char *text :
         {"Upload Progress   8%", "Upload Progress  50%", "\nFlash Write success!",
          "Verify Progress  50%", "\nVerified Flash OK!"})
        QVERIFY2(log.contains(text), text);

    QCOMPARE(QDir::currentPath(), directory);
    // The bundle was unpacked once more, and its table lets profiles be written again.
    QCOMPARE(SuiteStory::workingFile(FILE_FOR_VEXA_NAME),
             SuiteStory::workingFile(FILE_FOR_VEXA_OVERWRITE_PROFILES));
}
