#include "firmwareflashing.h"
#include "support/patience.h"

#include <QDir>
#include <QPointer>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QtTest>

using FirmwareTool::FirmwareFlasher;
using namespace std::chrono_literals;

namespace
{

/// What a run over a bundle tells the uploader.
const QString ARGUMENTS = QStringLiteral("-s /dev/ttyUSB0 -h -V -e -w %1 -v %1");

} // namespace

class FirmwareFlasherTest : public FirmwareFlashing
{
    Q_OBJECT

private slots:
    void keepsWhatIsChosen();
    void startsTheUploader();
    void choosesTheDeviceTable_data();
    void choosesTheDeviceTable();
    void choosesNoTableOfABadBundle_data();
    void choosesNoTableOfABadBundle();
    void flashesNothingElse_data();
    void flashesNothingElse();
    void flashesNoOtherBundle();
    void flashesOverNoOtherTable();
    void followsTheUploader_data();
    void followsTheUploader();
    void examinesEachChunkAlone();
    void finishesInOrder();
    void keepsMarksOfEarlierAttempts();
    void showsItsMarks();
    void clearsErrorsOfEarlierAttempts();
    void endsAnAttemptBeforeTheNext();
    void logsWhatTheUploaderPrints_data();
    void logsWhatTheUploaderPrints();
    void namesTheLog();
    void needsNoLog_data();
    void needsNoLog();
    void logsBehindALink();
    void staysInItsFolder_data();
    void staysInItsFolder();
    void reportsThatTheUploaderCannotStart();
    void forgetsAnUploaderThatCannotStart();
    void reportsThatTheUploaderEnded();
    void endsTheUploaderWithItsWindow();
    void endsTheUploaderOnFailure();
    void survivesItsWindow_data();
    void survivesItsWindow();
    void staysQuietBehindABox();
};

void FirmwareFlasherTest::keepsWhatIsChosen()
{
    FirmwareFlasher fresh(form, &form->ui);
    QCOMPARE(fresh.getHexPath(), "NOPATH");
    QCOMPARE(fresh.toString(), "Path : NOPATH");
    QCOMPARE(fresh.getCOMPort(), "");
    fresh.setHexPath("/a/b.velantor");
    QCOMPARE(fresh.getHexPath(), "/a/b.velantor");
    QCOMPARE(fresh.toString(), "Path : /a/b.velantor");
    fresh.setHexPath("");
    QCOMPARE(fresh.getHexPath(), "NOPATH");
    fresh.setComPort("ttyUSB0");
    QCOMPARE(fresh.getCOMPort(), "/dev/ttyUSB0");
    fresh.setComPort("pts/3");
    QCOMPARE(fresh.getCOMPort(), "/dev/pts/3");
}

void FirmwareFlasherTest::startsTheUploader()
{
    QCOMPARE(form->rows(), "0/100 0/100 0/100 0/100");
    QCOMPARE(linesOf([this] { startFlashing(); }), QByteArray());
    QCOMPARE(form->rows(), ERASING_ROWS);
    QCOMPARE(form->ui.eraseFlashPB->minimum(), 0);
    QCOMPARE(form->buttons(), "");

    QCOMPARE(uploader->folder.read("v9.hex"), QByteArray(":00000001FF\n"));
    const auto *process = form->findChild<QProcess *>(QString(), Qt::FindDirectChildrenOnly);
    QVERIFY(process);
    QCOMPARE(process->program(), "./vexa.bin");
    const QStringList arguments{"-s", "/dev/ttyUSB0", "-h", "-V",    "-e",
                                "-w", "v9.hex",       "-v", "v9.hex"};
    QCOMPARE(process->arguments(), arguments);
    QTRY_COMPARE(process->state(), QProcess::Running);
    QCOMPARE(process->openMode() & QIODevice::ReadWrite, QIODevice::ReadWrite);
    QTRY_COMPARE(uploader->runs(), QStringList{ARGUMENTS.arg("v9.hex")});
    QCOMPARE(answers->titles(), QStringList());
}

void FirmwareFlasherTest::choosesTheDeviceTable_data()
{
    QTest::addColumn<QList<bool>>("overwrite");
    QTest::addColumn<QByteArray>("table");

    QTest::newRow("at first") << QList<bool>{} << QByteArray("v0106:\t0x9C00\n");
    QTest::newRow("overwrite") << QList<bool>{true} << QByteArray("v0106:\t0xA000\n");
    QTest::newRow("keep again") << QList<bool>{true, false} << QByteArray("v0106:\t0x9C00\n");
}

void FirmwareFlasherTest::choosesTheDeviceTable()
{
    QFETCH(QList<bool>, overwrite);
    for (const bool choice : overwrite)
        flasher->setOverwriteProfiles(choice);
    startFlashing();
    QTEST(uploader->folder.read("device.txt"), "table");
    // The window's end leaves the table in place.
    form->close();
    QTRY_VERIFY(!form);
    QTEST(uploader->folder.read("device.txt"), "table");
}

void FirmwareFlasherTest::choosesNoTableOfABadBundle_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("table");

    QTest::newRow("gone") << "gone.velantor" << QByteArray("old");
    QTest::newRow("without the table that overwrites") << "fw.velantor" << QByteArray();
}

void FirmwareFlasherTest::choosesNoTableOfABadBundle()
{
    QFETCH(QString, path);
    uploader->folder.write("device.txt", "old");
    uploader->folder.write("device_keep_profiles.txt", "keep");
    uploader->folder.write("fw.velantor",
                           HEADER + bundleMember("device_keep_profiles.txt", "keep\n") + FIRMWARE);
    flasher->setHexPath(path);
    startFlashing();
    QTEST(uploader->folder.read("device.txt"), "table");
}

void FirmwareFlasherTest::flashesNothingElse_data()
{
    QTest::addColumn<QByteArray>("bundle");
    QTest::addColumn<QString>("firmware");

    QTest::newRow("whole") << HEADER + TABLES + FIRMWARE << "v9.hex";
    QTest::newRow("no header") << TABLES + FIRMWARE << "v9.hex";
    QTest::newRow("empty") << QByteArray() << "";
    QTest::newRow("no bundle") << QByteArray("Dear reader,\n") << "";
    QTest::newRow("no firmware") << HEADER + TABLES << "";
    QTest::newRow("firmware without end line")
        << HEADER + TABLES + "////// v9.hex //////\n:020000040000FA\n:00000001FF\n"
        << "";
    QTest::newRow("firmware cut in a line")
        << HEADER + TABLES + "////// v9.hex //////\n:020000040000FA\n:000"
        << "";
    QTest::newRow("firmware's start line alone") << HEADER + TABLES + "////// v9.hex //////"
                                                 << "";
    // Without tables the uploader itself says what is missing, before it erases anything.
    QTest::newRow("no tables") << HEADER + FIRMWARE << "v9.hex";
}

void FirmwareFlasherTest::flashesNothingElse()
{
    QFETCH(QByteArray, bundle);
    QFETCH(QString, firmware);
    uploader->folder.write("fw.velantor", bundle);
    // From another bundle.
    uploader->folder.write("v8.hex", ":00000001FF\n");
    uploader->folder.write("v9.hex", ":00000001FF\n");
    startFlashing();
    QTRY_COMPARE(uploader->runs(), QStringList{ARGUMENTS.arg(firmware)});
    QCOMPARE(form->findChild<QProcess *>()->arguments().size(), 9);
}

void FirmwareFlasherTest::flashesNoOtherBundle()
{
    startFlashing();
    QTRY_COMPARE(uploader->runs(), QStringList{ARGUMENTS.arg("v9.hex")});
    flasher->setHexPath("gone.velantor");
    startFlashing();
    QTRY_COMPARE(uploader->runs(), QStringList{ARGUMENTS.arg("")});
    flasher->setHexPath("");
    startFlashing();
    QTRY_COMPARE(uploader->runs(), QStringList{ARGUMENTS.arg("")});
}

void FirmwareFlasherTest::flashesOverNoOtherTable()
{
    // A table that stays although another was chosen might erase the profiles.
    QVERIFY(QDir().mkpath("device.txt/cannot be removed"));
    startFlashing();
    QTRY_COMPARE(uploader->runs(), QStringList{ARGUMENTS.arg("")});
}

void FirmwareFlasherTest::followsTheUploader_data()
{
    QTest::addColumn<QByteArrayList>("before");
    QTest::addColumn<QByteArray>("chunk");
    QTest::addColumn<QByteArray>("printed"); ///< since the start
    QTest::addColumn<QString>("title");      ///< of the box; empty: none
    QTest::addColumn<QString>("rows");

    const QByteArrayList erasing;
    const QByteArrayList loading{ERASED};
    const QByteArrayList uploading{ERASED, LOADED};
    const QByteArrayList verifying{ERASED, LOADED, WRITTEN};
    const QByteArray toLoading = "Entering loading state\n";
    const QByteArray toUploading = toLoading + "Entering uploading state\n";
    const QByteArray toVerifying = toUploading + "Entering verifying state\n";
    const QString none;
    const QString failed = "Flashing Error!";
    const QString noErase = QStringLiteral("0/100 0/100\u221A 0/100 0/100");

    QTest::newRow("erasing: no image") << erasing << QByteArray("failed to find input file!")
                                       << QByteArray("Error2\n") << "Flashing Error"
                                       << "100/100 0/100! 0/100 0/100";
    QTest::newRow("erasing: erased") << erasing << ERASED << toLoading << none << LOADING_ROWS;
    QTest::newRow("erasing: no port") << erasing << QByteArray("Can not open comport\n")
                                      << QByteArray("Error4\n") << failed << noErase;
    QTest::newRow("erasing: no answer")
        << erasing << QByteArray("\nBootloader Version is...\nTimeout!Version command send failed!")
        << QByteArray("Error1\n") << failed << noErase;
    QTest::newRow("erasing: no table")
        << erasing << QByteArray("1 6.Could not find device.txt file!") << QByteArray("Error3\n")
        << failed << noErase;
    QTest::newRow("erasing: no begin of a reply") << erasing << QByteArray("\nno stx char!\n")
                                                  << QByteArray("Error13\n") << failed << noErase;
    QTest::newRow("erasing: other texts")
        << erasing
        << QByteArray("Version 1.2 hex file loaded Flash Write success Verified Flash OK verify "
                      "fail 50% Timeout! can not open comport")
        << QByteArray() << none << ERASING_ROWS;

    QTest::newRow("erasing: no image before erased")
        << erasing << ERASED + "failed to find input file!" << QByteArray("Error2\n")
        << "Flashing Error"
        << "100/100 0/100! 0/100 0/100";
    QTest::newRow("erasing: erased before no port")
        << erasing << "Can not open comport" + ERASED << toLoading << none << LOADING_ROWS;
    QTest::newRow("erasing: erased before no answer")
        << erasing << ERASED + "\nTimeout!" << toLoading << none << LOADING_ROWS;
    QTest::newRow("erasing: erased before no begin")
        << erasing << "no stx char!" + ERASED << toLoading << none << LOADING_ROWS;
    QTest::newRow("erasing: no port before no answer")
        << erasing << QByteArray("Bootloader Version is...\nTimeout!\nCan not open comport")
        << QByteArray("Error4\n") << failed << noErase;
    QTest::newRow("erasing: no answer before no table")
        << erasing
        << QByteArray("Could not find device.txt file!Bootloader Version is...\nTimeout!")
        << QByteArray("Error1\n") << failed << noErase;
    QTest::newRow("erasing: no answer before no begin")
        << erasing << QByteArray("Bootloader Version is...\nno stx char!\nTimeout!")
        << QByteArray("Error1\n") << failed << noErase;
    QTest::newRow("erasing: no table before no begin")
        << erasing << QByteArray("no stx char!\nCould not find device.txt file!")
        << QByteArray("Error3\n") << failed << noErase;

    QTest::newRow("loading: loaded") << loading << LOADED << toUploading << none << UPLOADING_ROWS;
    QTest::newRow("loading: no image")
        << loading << QByteArray("failed to find input file!") << toLoading + "Error2\n"
        << "Flashing Error" << QStringLiteral("100/100\u221A 0/100! 0/100 0/100");
    QTest::newRow("loading: loaded before no image")
        << loading << "failed to find input file!" + LOADED << toUploading << none
        << UPLOADING_ROWS;
    QTest::newRow("loading: other texts")
        << loading
        << QByteArray("Can not open comport Bootloader Version is...Timeout! no stx char! Could "
                      "not find device.txt file! All flash above bldr erased! Flash Write success "
                      "verify fail Verified Flash OK Hex file loaded 50%")
        << toLoading << none << LOADING_ROWS;

    QTest::newRow("uploading: progress")
        << uploading << QByteArray("\nNow writing\nUpload Progress  42%") << toUploading << none
        << QStringLiteral("100/100\u221A 100/100\u221A 42/100 0/100");
    QTest::newRow("uploading: the last progress")
        << uploading << QByteArray("Upload Progress  42%\b\bUpload Progress  43%\b\b")
        << toUploading << none << QStringLiteral("100/100\u221A 100/100\u221A 43/100 0/100");
    QTest::newRow("uploading: hundred")
        << uploading << QByteArray("Upload Progress 100%") << toUploading << none
        << QStringLiteral("100/100\u221A 100/100\u221A 100/100 0/100");
    QTest::newRow("uploading: one digit")
        << uploading << QByteArray("Upload Progress   7%") << toUploading << none
        << QStringLiteral("100/100\u221A 100/100\u221A 7/100 0/100");
    QTest::newRow("uploading: progress of nothing")
        << uploading << QByteArray("Upload Progress   0%") << toUploading << none << UPLOADING_ROWS;
    QTest::newRow("uploading: garbage for a progress")
        << uploading << QByteArray("zz%") << toUploading << none << UPLOADING_ROWS;
    QTest::newRow("uploading: written")
        << uploading << QByteArray("Upload Progress  42%\nFlash Write success!") << toVerifying
        << none << VERIFYING_ROWS;
    QTest::newRow("uploading: other texts")
        << uploading
        << QByteArray(
               "failed to find input file! Can not open comport Bootloader Version "
               "is...Timeout! no stx char! verify fail Verified Flash OK Flash write success")
        << toUploading << none << UPLOADING_ROWS;

    QTest::newRow("verifying: progress")
        << verifying << QByteArray("\nNow verifying\nVerify Progress  42%") << toVerifying << none
        << QStringLiteral("100/100\u221A 100/100\u221A 100/100\u221A 42/100");
    QTest::newRow("verifying: hundred")
        << verifying << QByteArray("Verify Progress 100%") << toVerifying << none
        << QStringLiteral("100/100\u221A 100/100\u221A 100/100\u221A 100/100");
    QTest::newRow("verifying: different")
        << verifying << QByteArray("Verify Progress  42%\nverify fail at row address 600")
        << toVerifying + "Error5\n"
        << failed << QStringLiteral("100/100\u221A 100/100\u221A 100/100\u221A 0/100!");
    QTest::newRow("verifying: verified")
        << verifying << VERIFIED << toVerifying << none << DONE_ROWS;
    QTest::newRow("verifying: verified before different")
        << verifying << "verify fail" + VERIFIED << toVerifying << none << DONE_ROWS;
    QTest::newRow("verifying: other texts")
        << verifying
        << QByteArray("failed to find input file! Can not open comport Bootloader Version "
                      "is...Timeout! no stx char! Verify fail Verified flash OK")
        << toVerifying << none << VERIFYING_ROWS;
}

void FirmwareFlasherTest::followsTheUploader()
{
    QFETCH(QByteArrayList, before);
    QFETCH(QByteArray, chunk);
    QFETCH(QString, title);
    QFETCH(QString, rows);
    QSignalSpy flashed(flasher, &FirmwareFlasher::flashed);
    QSignalSpy reset(flasher, &FirmwareFlasher::resetVelantorSignalFF);
    QSignalSpy connected(flasher, &FirmwareFlasher::connectVelantorSignalFF);
    QString rowsUnderBox;
    QString buttonsUnderBox;
    QWidget *parentOfBox = nullptr;
    answers->push([&](QMessageBox *box) {
        rowsUnderBox = form->rows();
        buttonsUnderBox = form->buttons();
        parentOfBox = box->parentWidget();
        box->close();
    });

    const QByteArray printed = linesOf([&] {
        QVERIFY(reaches(before));
        QVERIFY(hears(chunk));
        if (!title.isEmpty())
            QTRY_COMPARE(form->buttons(), "Update Firmware");
    });
    QTEST(printed, "printed");
    QCOMPARE(form->rows(), rows);
    const bool done = rows == DONE_ROWS;
    QCOMPARE(flashed.size(), done ? 1 : 0);
    QCOMPARE(reset.size(), done ? 1 : 0);
    QCOMPARE(connected.size(), 0);
    QCOMPARE(uploaderId() == 0, done || !title.isEmpty());
    if (title.isEmpty()) {
        QCOMPARE(answers->titles(), QStringList());
        QCOMPARE(form->buttons(), done ? "Update Firmware, Close" : "");
    } else {
        QCOMPARE(answers->titles(), QStringList{title});
        QCOMPARE(rowsUnderBox, rows);
        QCOMPARE(buttonsUnderBox, "");
        QCOMPARE(parentOfBox, form.data());
    }
}

void FirmwareFlasherTest::examinesEachChunkAlone()
{
    // A text that comes in two parts is not recognised.
    QVERIFY(reaches({"All flash above ", "bldr erased!"}));
    QCOMPARE(form->rows(), ERASING_ROWS);
    // Nor is a second one in the same chunk, which belongs to the next state.
    QVERIFY(hears(ERASED + LOADED + WRITTEN + VERIFIED));
    QCOMPARE(form->rows(), LOADING_ROWS);
    QVERIFY(hears("Upload Progress  10%"));
    QCOMPARE(form->rows(), LOADING_ROWS);
    QVERIFY(hears(LOADED + WRITTEN));
    QCOMPARE(form->rows(), UPLOADING_ROWS);
}

void FirmwareFlasherTest::finishesInOrder()
{
    QStringList events;
    const auto note = [&](const QString &event) {
        events.append(event + ": " + (form->rows() == DONE_ROWS ? "done" : form->rows()) + ", [" +
                      form->buttons() + "], " + (uploaderId() ? "running" : "ended"));
    };
    connect(flasher, &FirmwareFlasher::flashed, this, [&] { note("flashed"); });
    connect(flasher, &FirmwareFlasher::resetVelantorSignalFF, this,
            [&](const QString &port) { note("reset " + port); });
    QVERIFY(reaches({ERASED, LOADED, WRITTEN}));
    const qint64 pid = uploaderId();
    QVERIFY(hears(VERIFIED));
    const QStringList expected{"flashed: done, [], ended", "reset /dev/ttyUSB0: done, [], ended"};
    QCOMPARE(events, expected);
    QCOMPARE(form->buttons(), "Update Firmware, Close");
    QTRY_VERIFY(!isRunning(pid));
}

void FirmwareFlasherTest::keepsMarksOfEarlierAttempts()
{
    QVERIFY(reaches({ERASED, LOADED, WRITTEN, VERIFIED}));
    QCOMPARE(form->rows(), DONE_ROWS);
    startFlashing();
    QCOMPARE(form->rows(), QStringLiteral("100/0\u221A 0/100\u221A 0/100\u221A 0/100\u221A"));
    QVERIFY(hears(ERASED));
    QCOMPARE(form->rows(), QStringLiteral("100/100\u221A 100/0\u221A 0/100\u221A 0/100\u221A"));
}

void FirmwareFlasherTest::showsItsMarks()
{
    for (QLabel *mark :
         {form->ui.eraseFlashCM, form->ui.loadFileCM, form->ui.uploadCM, form->ui.verifyCM})
        mark->hide();
    QVERIFY(reaches({ERASED, LOADED, WRITTEN, VERIFIED}));
    QCOMPARE(form->rows(), DONE_ROWS);
}

void FirmwareFlasherTest::clearsErrorsOfEarlierAttempts()
{
    QVERIFY(reaches({"failed to find input file!"}));
    QTRY_COMPARE(form->rows(), "100/100 0/100! 0/100 0/100");
    startFlashing();
    QCOMPARE(form->rows(), ERASING_ROWS);
    QVERIFY(hears(ERASED));
    QVERIFY(hears(LOADED));
    QVERIFY(hears(WRITTEN));
    QVERIFY(hears("verify fail"));
    QTRY_VERIFY(form->rows().endsWith("0/100!"));
    startFlashing();
    // Only the row of the load is marked anew from the start.
    QCOMPARE(form->rows(), QStringLiteral("100/0\u221A 0/100\u221A 0/100\u221A 0/100!"));
}

void FirmwareFlasherTest::endsAnAttemptBeforeTheNext()
{
    QVERIFY(reaches({ERASED}));
    const qint64 first = uploaderId();
    QVERIFY(isRunning(first));
    startFlashing();
    // Nothing of the load is left on the bars.
    QCOMPARE(form->rows(), QStringLiteral("100/0\u221A 0/100\u221A 0/100 0/100"));
    QCOMPARE(form->findChildren<QProcess *>().size(), 1);
    QTRY_VERIFY(!isRunning(first));
    QVERIFY(hears(ERASED));
    QCOMPARE(form->rows(), LOADING_ROWS);
}

void FirmwareFlasherTest::logsWhatTheUploaderPrints_data()
{
    QTest::addColumn<QByteArrayList>("chunks");

    QTest::newRow("nothing") << QByteArrayList{};
    QTest::newRow("a whole run") << QByteArrayList{ERASED, LOADED, WRITTEN, VERIFIED};
    QTest::newRow("a failed run") << QByteArrayList{ERASED, "failed to find input file!"};
    QTest::newRow("control characters") << QByteArrayList{"\r\n\n\r\b\t", "\x1b[2J"};
    QTest::newRow("UTF-8") << QByteArrayList{"4\xC2\xB0 \xE2\x82\xAC", "\xF0\x9F\x94\x8B"};
    QTest::newRow("a character in two chunks") << QByteArrayList{"\xC3", "\xA4"};
    QTest::newRow("no UTF-8") << QByteArrayList{"\xFF\xFE\x80", "\xEF\xBB\xBF"};
    QTest::newRow("zero bytes") << QByteArrayList{QByteArray("a\0b\0", 4), QByteArray("\0", 1)};
}

void FirmwareFlasherTest::logsWhatTheUploaderPrints()
{
    QFETCH(QByteArrayList, chunks);
    flasher->setHexPath(QStringLiteral("/nowhere/\u00FC \u03A9.velantor"));
    QVERIFY(reaches(chunks));
    QTRY_COMPARE(logged(), "FLASHING VELANTOR FIRMWARE\n"
                           "Hex File Name: /nowhere/\xC3\xBC \xCE\xA9.velantor\n"
                           "Output File Log Name : " +
                               logFile().toUtf8() +
                               "\n"
                               "---------------------\n\n" +
                               chunks.join());
}

void FirmwareFlasherTest::namesTheLog()
{
    const QLocale english = QLocale::c();
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    // A log's name has whole seconds.
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
    startFlashing();
    const QDateTime after = QDateTime::currentDateTime();
    QLocale::setDefault(english);
    const QDateTime named =
        english.toDateTime(logFile(), "'outputlog-'ddd-MMMM-d-yyyy--h-m-s-ap'.txt'");
    QVERIFY2(named.isValid() && named > before && named <= after, qPrintable(logFile()));
}

void FirmwareFlasherTest::needsNoLog_data()
{
    QTest::addColumn<QString>("obstacle");

    QTest::newRow("a file in place of the folder") << "file";
    QTest::newRow("a link that leads nowhere") << "link";
}

void FirmwareFlasherTest::needsNoLog()
{
    QFETCH(QString, obstacle);
    if (obstacle == "file")
        uploader->folder.write("logs", "precious");
    else
        QVERIFY(QFile::link("nowhere/logs", "logs"));
    uploader->plan({FakeUploader::SPEAK});
    QCOMPARE(linesOf([this] { flasher->startFlashing(); }), QByteArray("Could not open file!\n"));
    QCOMPARE(QDir::currentPath(), uploader->folder.path());

    uploader->say(ERASED);
    QTRY_COMPARE(form->rows(), LOADING_ROWS);
    uploader->say(LOADED);
    QTRY_COMPARE(form->rows(), UPLOADING_ROWS);
    now += 4s;
    flasher->checkAppFrozen();
    QCOMPARE(answers->seen().size(), 1);
    QCOMPARE(answers->seen().first().text, NO_PROGRESS.arg(""));
    if (obstacle == "file")
        QCOMPARE(uploader->folder.read("logs"), QByteArray("precious"));
}

void FirmwareFlasherTest::logsBehindALink()
{
    QTemporaryDir elsewhere;
    QVERIFY(QDir(elsewhere.path()).mkpath("deep/logs"));
    QVERIFY(QFile::link(elsewhere.filePath("deep/logs"), "logs"));
    uploader->plan({FakeUploader::SPEAK});
    flasher->startFlashing();
    QCOMPARE(QDir::currentPath(), uploader->folder.path());
    QCOMPARE(QDir(elsewhere.filePath("deep/logs")).entryList(QDir::Files).size(), 1);
    QTRY_COMPARE(uploader->runs(), QStringList{ARGUMENTS.arg("v9.hex")});
}

void FirmwareFlasherTest::staysInItsFolder_data()
{
    QTest::addColumn<bool>("hasLogs");

    QTest::newRow("first log") << false;
    QTest::newRow("one more log") << true;
}

void FirmwareFlasherTest::staysInItsFolder()
{
    QFETCH(bool, hasLogs);
    if (hasLogs) {
        QVERIFY(QDir().mkdir("logs"));
        uploader->folder.write("logs/outputlog-Sun-November-15-2020--8-5-9-am.txt", "old");
    }
    uploader->plan({FakeUploader::SPEAK});
    flasher->startFlashing();
    QCOMPARE(QDir::currentPath(), uploader->folder.path());
    QCOMPARE(QDir("logs").entryList(QDir::Files).size(), hasLogs ? 2 : 1);
    if (hasLogs) {
        QCOMPARE(uploader->folder.read("logs/outputlog-Sun-November-15-2020--8-5-9-am.txt"),
                 QByteArray("old"));
    }
}

void FirmwareFlasherTest::reportsThatTheUploaderCannotStart()
{
    uploader->remove();
    flasher->startFlashing();
    QCOMPARE(form->rows(), ERASING_ROWS);
    now += 3s;
    flasher->checkAppFrozen();
    QCoreApplication::processEvents();
    QCOMPARE(answers->titles(), QStringList());
    QCOMPARE(form->rows(), ERASING_ROWS);
    now += 1s;
    flasher->checkAppFrozen();
    QCOMPARE(answers->titles(), QStringList{"Unknown Error!"});
    QCOMPARE(form->buttons(), "Update Firmware, Close");
}

void FirmwareFlasherTest::forgetsAnUploaderThatCannotStart()
{
    uploader->remove();
    flasher->startFlashing();
    // Before the event loop tells that there is none. The end of the test awaits the end of all.
    delete flasher;
    QCOMPARE(form->findChildren<QProcess *>().size(), 0);
    QCOMPARE(qApp->findChildren<QProcess *>().size(), 1);
}

void FirmwareFlasherTest::reportsThatTheUploaderEnded()
{
    uploader->plan({"printf 'Incorrect usage!'; exit 1"});
    flasher->startFlashing();
    auto *process = form->findChild<QProcess *>();
    QVERIFY(process);
    QTRY_COMPARE(process->state(), QProcess::NotRunning);
    QVERIFY(logged().endsWith("\n\nIncorrect usage!"));
    QCOMPARE(form->rows(), ERASING_ROWS);
    QCOMPARE(answers->titles(), QStringList());
    now += 4s;
    flasher->checkAppFrozen();
    QCOMPARE(answers->titles(), QStringList{"Unknown Error!"});
    QVERIFY(answers->seen().first().text.contains(logFile()));
}

void FirmwareFlasherTest::endsTheUploaderWithItsWindow()
{
    QVERIFY(reaches({ERASED, LOADED}));
    const qint64 pid = uploaderId();
    QVERIFY(isRunning(pid));
    form->close();
    QTRY_VERIFY(!form);
    QVERIFY(!flasher);
    QTRY_VERIFY(!isRunning(pid));
    QCOMPARE(answers->titles(), QStringList());
}

void FirmwareFlasherTest::endsTheUploaderOnFailure()
{
    // A run that goes on must not flash any further behind the box. Its object is the one that told
    // of the failure: it has to outlive the box, which is open within that signal.
    startFlashing();
    QPointer<QProcess> process = form->findChild<QProcess *>();
    const qint64 pid = uploaderId();
    bool ended = false;
    bool kept = false;
    answers->push([&](QMessageBox *box) {
        ended = QTest::qWaitFor(
            [&] { return !process || process->state() == QProcess::NotRunning; }, PATIENCE);
        // What the loop of the box may delete is deleted now.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        kept = process;
        box->close();
    });
    QVERIFY(hears("no stx char!"));
    QTRY_COMPARE(form->buttons(), "Update Firmware");
    QVERIFY(ended);
    QVERIFY(kept);
    QVERIFY(!isRunning(pid));
    QTRY_VERIFY(!process);
}

void FirmwareFlasherTest::survivesItsWindow_data()
{
    QTest::addColumn<QString>("moment");
    QTest::addColumn<QByteArrayList>("chunks");

    const QByteArrayList whole{ERASED, LOADED, WRITTEN, VERIFIED};
    QTest::newRow("box of a failure") << "box" << QByteArrayList{"Can not open comport"};
    QTest::newRow("box of the verify")
        << "box" << QByteArrayList{ERASED, LOADED, WRITTEN, "verify fail"};
    QTest::newRow("box of the watchdog") << "watchdog" << QByteArrayList{ERASED};
    QTest::newRow("flashed") << "flashed" << whole;
    QTest::newRow("reset") << "reset" << whole;
}

void FirmwareFlasherTest::survivesItsWindow()
{
    QFETCH(QString, moment);
    QFETCH(QByteArrayList, chunks);
    int resets = 0;
    connect(flasher, &FirmwareFlasher::resetVelantorSignalFF, this, [&] {
        ++resets;
        if (moment == "reset")
            delete form;
    });
    if (moment == "flashed")
        connect(flasher, &FirmwareFlasher::flashed, this, [this] { delete form; });
    answers->push([this](QMessageBox *) { form->close(); });

    QVERIFY(reaches(chunks));
    if (moment == "watchdog") {
        now += 4s;
        flasher->checkAppFrozen();
    }
    QTRY_VERIFY(!form);
    QVERIFY(!flasher);
    QCOMPARE(answers->seen().size(), moment == "box" || moment == "watchdog" ? 1 : 0);
    QCOMPARE(resets, moment == "reset" ? 1 : 0);
}

void FirmwareFlasherTest::staysQuietBehindABox()
{
    startFlashing();
    QPointer<QProcess> process = form->findChild<QProcess *>();
    QString rows;
    answers->push([&](QMessageBox *box) {
        // What the uploader still managed to say, and the watchdog, come while the box is open.
        flasher->readStream();
        now += 100s;
        flasher->checkAppFrozen();
        rows = form->rows();
        box->close();
    });
    QVERIFY(hears("no stx char!"));
    QTRY_COMPARE(form->buttons(), "Update Firmware");
    QCOMPARE(rows, QStringLiteral("0/100 0/100\u221A 0/100 0/100"));
    QCOMPARE(answers->titles(), QStringList{"Flashing Error!"});
    QTRY_VERIFY(!process);
}

QTEST_MAIN(FirmwareFlasherTest)
#include "tst_firmwareflasher.moc"
