#include "firmwarestory.h"

#include <QDir>
#include <QFile>
#include <QTest>

namespace
{
constexpr int firmware = 0x0C00; // word addresses
constexpr int flashEnd = 0xA000;
const QString watchdogTitle = QStringLiteral("Unknown Error!");
} // namespace

/// Firmware updates that come to a halt without a word that the suite knows: the watchdog tells the
/// user, seconds later, and the next attempt goes well.
class SuiteFirmwareWatchdogTest : public QObject
{
    Q_OBJECT

private slots:
    void theWatchdogEndsASilentAttempt_data();
    void theWatchdogEndsASilentAttempt();
    void badBundlesReachNoCharger_data();
    void badBundlesReachNoCharger();
};

void SuiteFirmwareWatchdogTest::theWatchdogEndsASilentAttempt_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QByteArray>("log");
    // Where many programs share the processor, the watchdog comes before the uploader's time-out.
    QTest::newRow("silent in the upload")
        << "silent@write:2" << QByteArray("Now writing from c00 to d80 word address");
    QTest::newRow("silent in the comparison")
        << "silent@read:2" << QByteArray("Now verifying flash from c00 to d80 word address");
    QTest::newRow("refused row") << "wrong-reply@write:3" << QByteArray("write fail!");
    QTest::newRow("refused erase") << "wrong-reply@erase" << QByteArray("Erase failed!");
    QTest::newRow("a charger that the device table does not know")
        << "version=0107" << QByteArray("\nCould not find entry for version v0107:");
    // The uploader goes on, but a percent of a whole image takes it longer than the watchdog waits.
    QTest::newRow("slower than patience") << "slow=0.9@read" << QByteArray("Flash Write success!");
}

void SuiteFirmwareWatchdogTest::theWatchdogEndsASilentAttempt()
{
    QFETCH(QString, fault);
    QFETCH(QByteArray, log);
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    FirmwareStory update(&story);
    QVERIFY(update.openTool());
    const QString bundle = update.save("new.velantor", FirmwareStory::smallBundle(3));
    const bool isSlow = fault.startsWith(QLatin1String("slow"));
    update.choose(isSlow ? FirmwareStory::embeddedBundle() : bundle);
    QVERIFY(update.choosePort());
    story.charger().fault(fault);
    update.begin();
    QVERIFY(update.waitForEnd());
    QCOMPARE(story.boxes.titles(), QStringList(watchdogTitle));
    QCOMPARE(story.boxes.seen().constFirst().text,
             QStringLiteral("Please make sure you selected a valid Velantor firmware file, the "
                            "correct COM port, <br>and it is in bootloader mode.<br><br>           "
                            "        The log file \"logs/%1\"<br>will contain more information")
                 .arg(FirmwareStory::logName()));
    QCOMPARE(int(story.boxes.seen().constFirst().icon), int(QMessageBox::NoIcon));
    QVERIFY2(FirmwareStory::log().contains(log), FirmwareStory::log());
    QVERIFY(update.isCloseEnabled());

    story.mend();
    story.boxes.clear();
    QVERIFY2(update.flash(bundle), FirmwareStory::log());
}

void SuiteFirmwareWatchdogTest::badBundlesReachNoCharger_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("name");
    const QByteArray good = FirmwareStory::smallBundle(4);
    const QString name = "bad.velantor";
    QTest::newRow("no bundle") << QByteArray("Dear Sir or Madam,\n") << name;
    QTest::newRow("empty") << QByteArray() << name;
    QTest::newRow("cut off in the image") << good.left(good.size() - 100) << name;
    QTest::newRow("no image") << QByteArray(good).replace(".hex", ".txt") << name;
    QTest::newRow("image leads outside")
        << QByteArray(good).replace("v1.040.hex", "../v1.040.hex") << name;
    QTest::newRow("image at an absolute path")
        << QByteArray(good).replace("v1.040.hex", "%OUTSIDE%/v1.040.hex") << name;
    QByteArray members;
    for (int i = 0; i < 10000; ++i)
        members += "////// " + QByteArray::number(i) + " //////\n\\\\\\ END FILE \\\\\\\n";
    QTest::newRow("10,000 members") << good + members << name;
    QTest::newRow("too large") << good + QByteArray(17 << 20, '\n') << name;
    QTest::newRow("folder") << QByteArray() << "logs.velantor";
    QTest::newRow("missing") << QByteArray() << "fw.velantor.bak";
}

void SuiteFirmwareWatchdogTest::badBundlesReachNoCharger()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, name);
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    FirmwareStory update(&story);
    QVERIFY(update.openTool());
    // An image of this name is still there from an earlier update.
    const QString good = update.save("good.velantor", FirmwareStory::smallBundle(5));
    QVERIFY2(update.flash(good), FirmwareStory::log());
    story.charger().control("enter");
    const QByteArray flash = story.charger().flash(firmware, flashEnd);
    const int commands = story.charger().commands().size();

    const QString outside = QDir::cleanPath(QDir::currentPath() + "/..");
    QString bad = name;
    if (name.startsWith(QLatin1String("logs")))
        QVERIFY(QDir().mkdir(name));
    else if (!name.endsWith(QLatin1String("bak")))
        bad = update.save(name, content.replace("%OUTSIDE%", QFile::encodeName(outside)));
    const QStringList beside = QDir(outside).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    update.choose(bad);
    QVERIFY(update.choosePort());
    update.begin();
    QVERIFY(update.waitForEnd());
    QCOMPARE(story.boxes.titles(), QStringList(watchdogTitle));
    QVERIFY2(FirmwareStory::log().contains("Please enter a valid input filename!"),
             FirmwareStory::log());
    QCOMPARE(story.charger().commands().size(), commands);
    QCOMPARE(story.charger().flash(firmware, flashEnd), flash);
    QVERIFY(update.isCloseEnabled());
    QCOMPARE(QDir(outside).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), beside);
    QVERIFY(!QFile::exists("9999"));

    story.boxes.clear();
    QVERIFY2(update.flash(good), FirmwareStory::log());
}

QTEST_MAIN(SuiteFirmwareWatchdogTest)
#include "tst_suite_firmware_watchdog.moc"
