#include "firmwareflashing.h"
#include "support/patience.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QtTest>

using FirmwareTool::FirmwareFlasher;
using namespace std::chrono_literals;

Q_DECLARE_METATYPE(std::chrono::milliseconds)

/// How the flasher notices that the uploader makes no progress.
class FirmwareWatchdogTest : public FirmwareFlashing
{
    Q_OBJECT

private slots:
    void countsSilence_data();
    void countsSilence();
    void isSilentOnlyWithoutProgress_data();
    void isSilentOnlyWithoutProgress();
    void watchesAgainAndAgain();
    void watchesNothingThatIsOver();
    void watchesInTime();
};

void FirmwareWatchdogTest::countsSilence_data()
{
    QTest::addColumn<std::chrono::milliseconds>("silence");
    QTest::addColumn<bool>("hung");

    QTest::newRow("none") << 0ms << false;
    QTest::newRow("3 s") << std::chrono::milliseconds(3s) << false;
    QTest::newRow("almost 4 s") << 3999ms << false;
    QTest::newRow("4 s") << std::chrono::milliseconds(4s) << true;
    QTest::newRow("9 s") << std::chrono::milliseconds(9s) << true;
}

void FirmwareWatchdogTest::countsSilence()
{
    QFETCH(std::chrono::milliseconds, silence);
    QFETCH(bool, hung);
    QVERIFY(reaches({ERASED}));
    const qint64 pid = uploaderId();
    const QString log = logFile();
    QString buttonsUnderBox;
    answers->push([&](QMessageBox *box) {
        buttonsUnderBox = form->buttons();
        box->close();
    });
    now += silence;
    const QByteArray printed = linesOf([this] { flasher->checkAppFrozen(); });
    // The rows stay as they are.
    QCOMPARE(form->rows(), LOADING_ROWS);
    if (!hung) {
        QCOMPARE(printed, QByteArray());
        QCOMPARE(answers->titles(), QStringList());
        QCOMPARE(form->buttons(), "");
        QVERIFY(isRunning(pid));
        return;
    }
    QCOMPARE(printed, QByteArray("Error9\n"));
    QCOMPARE(answers->titles(), QStringList{"Unknown Error!"});
    QCOMPARE(answers->seen().first().text, NO_PROGRESS.arg(log));
    QCOMPARE(buttonsUnderBox, "");
    QCOMPARE(form->buttons(), "Update Firmware, Close");
    QTRY_VERIFY(!isRunning(pid));
    // It is over: nothing is reported twice.
    now += 100s;
    flasher->checkAppFrozen();
    QCOMPARE(answers->seen().size(), 1);
}

void FirmwareWatchdogTest::isSilentOnlyWithoutProgress_data()
{
    QTest::addColumn<QByteArrayList>("before");
    QTest::addColumn<QByteArray>("chunk");
    QTest::addColumn<bool>("progress");

    const QByteArrayList uploading{ERASED, LOADED};
    const QByteArrayList verifying{ERASED, LOADED, WRITTEN};
    QTest::newRow("words while erasing") << QByteArrayList{} << QByteArray("Version 1.2") << false;
    QTest::newRow("percentage while erasing") << QByteArrayList{} << QByteArray(" 50%") << false;
    QTest::newRow("erased") << QByteArrayList{} << ERASED << true;
    QTest::newRow("words while loading") << QByteArrayList{ERASED} << QByteArray("hex") << false;
    QTest::newRow("loaded") << QByteArrayList{ERASED} << LOADED << true;
    QTest::newRow("words while uploading") << uploading << QByteArray("Now writing") << false;
    QTest::newRow("percentage while uploading") << uploading << QByteArray(" 50%") << true;
    QTest::newRow("same percentage while uploading") << uploading << QByteArray("  0%") << true;
    QTest::newRow("written") << uploading << WRITTEN << true;
    QTest::newRow("words while verifying") << verifying << QByteArray("Now verifying") << false;
    QTest::newRow("percentage while verifying") << verifying << QByteArray(" 50%") << true;
}

void FirmwareWatchdogTest::isSilentOnlyWithoutProgress()
{
    QFETCH(QByteArrayList, before);
    QFETCH(QByteArray, chunk);
    QFETCH(bool, progress);
    QVERIFY(reaches(before));
    now += 3s;
    QVERIFY(hears(chunk));
    now += 3s;
    flasher->checkAppFrozen();
    QCOMPARE(answers->seen().size(), progress ? 0 : 1);
}

void FirmwareWatchdogTest::watchesAgainAndAgain()
{
    QVERIFY(!flasher->findChild<QTimer *>());
    startFlashing();
    QPointer<QTimer> timer = flasher->findChild<QTimer *>();
    QVERIFY(timer);
    QCOMPARE(timer->interval(), 5000);
    QVERIFY(!timer->isSingleShot());
    QVERIFY(timer->isActive());

    // It outlives an attempt that failed, and serves the next one.
    QVERIFY(hears("no stx char!"));
    QTRY_COMPARE(form->buttons(), "Update Firmware");
    QVERIFY(timer && timer->isActive());
    startFlashing();
    QCOMPARE(flasher->findChildren<QTimer *>(), QList<QTimer *>{timer});
    QVERIFY(timer->isActive());

    // It ends with what it reports, and comes back with the next attempt.
    now += 4s;
    flasher->checkAppFrozen();
    QTRY_VERIFY(!timer);
    startFlashing();
    QCOMPARE(flasher->findChildren<QTimer *>().size(), 1);
    QVERIFY(flasher->findChild<QTimer *>()->isActive());
    QVERIFY(hears(ERASED));
    QCOMPARE(form->rows(), LOADING_ROWS);
}

void FirmwareWatchdogTest::watchesNothingThatIsOver()
{
    QVERIFY(reaches({ERASED, LOADED, WRITTEN, VERIFIED}));
    now += 100s;
    flasher->checkAppFrozen();
    QVERIFY(reaches({"Can not open comport"}));
    QTRY_COMPARE(answers->seen().size(), 1);
    now += 100s;
    flasher->checkAppFrozen();
    QCOMPARE(answers->titles(), QStringList{"Flashing Error!"});
    QCOMPARE(form->buttons(), "Update Firmware, Close");
}

void FirmwareWatchdogTest::watchesInTime()
{
    delete flasher;
    flasher = new FirmwareFlasher(form, &form->ui);
    flasher->setHexPath("fw.velantor");
    flasher->setComPort("ttyUSB0");
    QElapsedTimer silence;
    silence.start();
    startFlashing();
    int looks = 0;
    connect(flasher->findChild<QTimer *>(), &QTimer::timeout, this, [&] { ++looks; });
    QTRY_COMPARE(answers->titles(), QStringList{"Unknown Error!"});
    // Not later than the next look: 9 seconds in all, however slow this machine is.
    QTRY_COMPARE(looks, 1);
    QVERIFY2(silence.elapsed() >= 4000, qPrintable(QString::number(silence.elapsed())));
    QTRY_COMPARE(form->buttons(), "Update Firmware, Close");
}

QTEST_MAIN(FirmwareWatchdogTest)
#include "tst_firmwarewatchdog.moc"
