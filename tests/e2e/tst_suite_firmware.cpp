#include "SSGenerator/generator.h"
#include "firmwarestory.h"
#include "wholeflash.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <cerrno>
#include <csignal>
#include <sys/stat.h>

namespace
{
constexpr int firmware = 0x0C00; // word address
} // namespace

/// Firmware updates from the menu of the suite to the memory of the charger.
class SuiteFirmwareTest : public QObject
{
    Q_OBJECT

private slots:
    void flashesAWholeImage_data();
    void flashesAWholeImage();
    void profilesOutliveAnUpdate();
    void disconnectsFromTheCharger();
    void closingEndsTheUploader_data();
    void closingEndsTheUploader();
};

void SuiteFirmwareTest::flashesAWholeImage_data()
{
    QTest::addColumn<bool>("overwrite");
    QTest::addColumn<bool>("isBusy");
    QTest::newRow("profiles kept") << false << false;
    QTest::newRow("profiles overwritten") << true << false;
    QTest::newRow("beside a busy program") << false << true;
}

void SuiteFirmwareTest::flashesAWholeImage()
{
    QFETCH(bool, overwrite);
    QFETCH(bool, isBusy);
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    const std::unique_ptr<BusyProgram> busy(isBusy ? new BusyProgram : nullptr);
    flashWholeImage(story, overwrite, 4 * PATIENCE);
}

void SuiteFirmwareTest::profilesOutliveAnUpdate()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v", "--reenter", "0.5"});
    story.open();
    QVERIFY(story.connectCharger());
    const QStringList titles = story.titles();
    QVERIFY(titles.size() > 1);
    QVERIFY(story.disconnectCharger());
    QTRY_COMPARE(story.chargerMode(), QStringLiteral("bootloader"));

    FirmwareStory update(&story);
    QVERIFY(update.openTool());
    const QString bundle = update.save("new.velantor", FirmwareStory::smallBundle(1));
    QVERIFY2(update.flash(bundle), FirmwareStory::log());
    QTest::mouseClick(update.widget<QPushButton>("closeButton"), Qt::LeftButton);
    QTRY_VERIFY(!update.tool());

    QTRY_COMPARE(story.chargerMode(), QStringLiteral("bootloader"));
    QVERIFY(story.connectCharger());
    QCOMPARE(story.titles(), titles);
    QVERIFY(story.boxes.seen().isEmpty());
}

void SuiteFirmwareTest::disconnectsFromTheCharger()
{
    SuiteStory story;
    story.plugIn({"--hardware", "72v"});
    story.open();
    QVERIFY(story.connectCharger());
    QVERIFY(!story.generator()->isMaster());
    const QStringList titles = story.titles();

    FirmwareStory update(&story);
    QVERIFY(update.openTool());
    const QString bundle = update.save("new.velantor", FirmwareStory::smallBundle(2));
    QVERIFY2(update.flash(bundle), FirmwareStory::log());
    QTest::mouseClick(update.widget<QPushButton>("closeButton"), Qt::LeftButton);
    QTRY_VERIFY(!update.tool());

    QVERIFY(!story.isConnected());
    QVERIFY(!story.action("saveDataAction")->isEnabled());
    QVERIFY(!story.action("readDataAction")->isEnabled());
    QCOMPARE(story.action("connectAction")->text(), QStringLiteral("Connect"));
    QVERIFY(story.generator()->isMaster());
    QVERIFY(story.model()->isEnabled());
    QCOMPARE(story.titles(), titles);
    for (int i = 0; i < story.list()->count(); ++i)
        story.select(i);
    QVERIFY(story.boxes.seen().isEmpty());
}

void SuiteFirmwareTest::closingEndsTheUploader_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QByteArray>("state"); // of which the log tells this
    QTest::addColumn<bool>("byMenu");
    for (const bool byMenu : {true, false}) {
        const char *way = byMenu ? "by the menu" : "by the window";
        QTest::addRow("erasing, %s", way) << "slow-erase=0.8" << QByteArray() << byMenu;
        QTest::addRow("loading, %s", way)
            << "slow-erase=0.2" << QByteArray("All flash above bldr erased!") << byMenu;
        QTest::addRow("uploading, %s", way)
            << "slow=0.5@write:2" << QByteArray("Now writing from") << byMenu;
        QTest::addRow("verifying, %s", way)
            << "slow=0.5@read:2" << QByteArray("Flash Write success!") << byMenu;
    }
}

void SuiteFirmwareTest::closingEndsTheUploader()
{
    QFETCH(QString, fault);
    QFETCH(QByteArray, state);
    QFETCH(bool, byMenu);
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    const QString directory = QDir::currentPath();
    FirmwareStory update(&story);
    QVERIFY(update.openTool());
    const bool isLoading = state.startsWith("All flash");
    update.choose(update.save("new.velantor", FirmwareStory::smallBundle(3)));
    QVERIFY(update.choosePort());
    story.charger().fault(fault);
    update.begin();
    if (isLoading) {
        // Whoever opens a pipe waits for its other end.
        QVERIFY(QFile::remove("v1.040.hex"));
        QCOMPARE(mkfifo("v1.040.hex", 0600), 0);
    }
    const auto *uploader = update.tool()->findChild<QProcess *>();
    QVERIFY(uploader);
    QVERIFY(QTest::qWaitFor([&] { return uploader->state() == QProcess::Running; }, PATIENCE));
    const auto id = static_cast<pid_t>(uploader->processId());
    QVERIFY2(QTest::qWaitFor([&] { return FirmwareStory::log().contains(state); }, PATIENCE),
             FirmwareStory::log());
    QCOMPARE(kill(id, 0), 0);
    QVERIFY(!update.isCloseEnabled());

    if (byMenu)
        update.widget<QAction>("actionExit")->trigger();
    else
        QVERIFY(update.tool()->close());
    QTRY_VERIFY(!update.tool());
    QTRY_VERIFY(kill(id, 0) == -1 && errno == ESRCH);
    QCOMPARE(QDir::currentPath(), directory);
    QVERIFY(story.boxes.seen().isEmpty());

    // The port is free, and the profiles are where they were.
    if (isLoading)
        QVERIFY(QFile::remove("v1.040.hex"));
    story.mend();
    QVERIFY(update.openTool());
    QVERIFY2(update.flash(update.save("new.velantor", FirmwareStory::smallBundle(4))),
             FirmwareStory::log());
    const QByteArray image = FirmwareStory::smallImage(4);
    QCOMPARE(story.charger().flash(firmware, firmware + image.size() / 2), image);
    story.charger().control("enter");
    QVERIFY(update.tool()->close());
    QTRY_VERIFY(!update.tool());
    QVERIFY(story.connectCharger());
}

QTEST_MAIN(SuiteFirmwareTest)
#include "tst_suite_firmware.moc"
