#include "e2e/vexarun.h"
#include "support/filecontent.h"
#include "support/patience.h"
#include "support/simulatorprocess.h"
#include "support/workingdirectory.h"

#include <QElapsedTimer>
#include <QTest>

namespace
{
constexpr int profilePage = 0x9C00;    // word addresses
constexpr int profilePageEnd = 0xA000; // exclusive
constexpr int firmware = 0x0C00;
const QByteArray blankRow = QByteArray("\xFF\xFF\xFF\0", 4).repeated(64);

QString bundleFile(const char *name)
{
    return QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + QLatin1String(name);
}

// Rows of an image from a word address on that are not blank, by byte address.
QList<ImagePiece> rowsOf(const QByteArray &image, int wordAddress)
{
    QList<ImagePiece> rows;
    for (int at = 0; at < image.size(); at += blankRow.size()) {
        if (image.mid(at, blankRow.size()) != blankRow)
            rows.append({2 * wordAddress + at, image.mid(at, blankRow.size())});
    }
    return rows;
}

const QByteArray versionText = QByteArray(vexaBanner) + "\nBootloader Version is...1 6.";
const QByteArray loadedText = "\nfile opened\nbuffers cleared\nhex file loaded";
} // namespace

/// The uploader against a charger that does what it should.
class VexaRunsTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { folder.reset(new WorkingDirectory); }
    void cleanup() { folder.reset(); }

    void readsTheProfilePage_data();
    void readsTheProfilePage();
    void readsNothingBeyondTheTablesEnd();
    void readsAllFlash();
    void erasesTheProfilePage();
    void writesTheProfilePage();
    void writtenPageReadsBackFieldByField();
    void flashesFirmware_data();
    void flashesFirmware();
    void verifiesGoodFlash();
    void tellsWhereFlashDiffers();
    void writesARange();
    void cutsARangeToWritableFlash();
    void doesAllInOne();
    void resets();
    void takesTheVersionFromItsOption();
    void findsAChargerAtPowerOn();
    void waitsForABootSequence();
    void changesTheBaudRate_data();
    void changesTheBaudRate();
    void writesAndVerifiesEeprom();
    void readsAtThePaceOfTheLine();
    void writeAndVerifyShareOneFile();
    void opensAPortForTrial();

private:
    void useTable(const char *name)
    {
        folder->write(QStringLiteral("device.txt"), neededContentOf(bundleFile(name)));
    }
    void useOverwriteTable() { useTable("device_overwrite_profiles.txt"); }
    /// A run with the arguments that all runs of the suite begin with.
    VexaRun vexa(SimulatorProcess *simulator, const QStringList &arguments)
    {
        return runVexa(QStringList{QStringLiteral("-s"), simulator->port(), QStringLiteral("-h"),
                                   QStringLiteral("-V")} +
                       arguments);
    }

    QScopedPointer<WorkingDirectory> folder;
};

#define S QStringLiteral

void VexaRunsTest::readsTheProfilePage_data()
{
    QTest::addColumn<QString>("hardware");
    QTest::newRow("24 V") << S("24v");
    QTest::newRow("48 V") << S("48v");
    QTest::newRow("72 V") << S("72v");
    QTest::newRow("first 48 V") << S("48v-v1");
}

void VexaRunsTest::readsTheProfilePage()
{
    QFETCH(QString, hardware);
    SimulatorProcess simulator({S("--hardware"), hardware});
    useOverwriteTable();
    const VexaRun run = vexa(&simulator, {S("-l"), S("0x9C00"), S("0xA000"), S("fs_to_read.hex")});
    QCOMPARE(run.output, versionText + "\nReading from word address 9c00 to a000"
                                       "hex file write success!");
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.status, 0);
    const QByteArray page = simulator.flash(profilePage, profilePageEnd);
    QCOMPARE(folder->read(S("fs_to_read.hex")), savedHexText(rowsOf(page, profilePage)));
    // 0x800 bytes, 256 at a time.
    QStringList expected{S("version")};
    for (int i = 0; i < 8; ++i)
        expected.append(S("read"));
    QCOMPARE(simulator.commands(), expected);
    QVERIFY(simulator.log().contains(S("in  read 55 55 01 40 00 9C 00 23 04")));
}

void VexaRunsTest::readsNothingBeyondTheTablesEnd()
{
    SimulatorProcess simulator({S("--hardware"), S("48v")});
    useTable("device_keep_profiles.txt");
    const VexaRun run = vexa(&simulator, {S("-l"), S("0x9C00"), S("0xA000"), S("fs_to_read.hex")});
    QCOMPARE(run.status, 0);
    QVERIFY(run.output.endsWith("hex file write success!"));
    const QByteArray text = folder->read(S("fs_to_read.hex"));
    QVERIFY(text.endsWith(":00000001FF"));
    QVERIFY2(!text.contains(":10"), text.constData());
    QCOMPARE(simulator.commands(), QStringList{S("version")});
}

void VexaRunsTest::readsAllFlash()
{
    const QByteArray program = patternImage(3 * 256, 1);
    folder->write(
        S("charger.hex"),
        hexText({{2 * firmware, program}, {0xFF00, program}, {2 * profilePage, program}}));
    SimulatorProcess simulator({S("--page"), folder->path() + S("/charger.hex")});
    useOverwriteTable();
    const VexaRun run = vexa(&simulator, {S("-r"), S("all.hex")});
    QCOMPARE(run.output, versionText + "\nReading from word address c00 to a000"
                                       "hex file write success!");
    QCOMPARE(run.status, 0);
    QCOMPARE(folder->read(S("all.hex")),
             savedHexText(rowsOf(simulator.flash(firmware, profilePageEnd), firmware)));
}

void VexaRunsTest::erasesTheProfilePage()
{
    SimulatorProcess simulator({S("--hardware"), S("48v")});
    useOverwriteTable();
    const VexaRun run = vexa(&simulator, {S("-E"), S("0x9C00"), S("0xA000")});
    QCOMPARE(run.output, versionText + "\nMemory from 9c00 to a000 erased successfully!");
    QCOMPARE(run.status, 0);
    QCOMPARE(simulator.commands(), (QStringList{S("version"), S("erase")}));
    QVERIFY(simulator.log().contains(S("in  erase 55 55 03 01 00 9C 00 60 04")));
    QCOMPARE(simulator.flash(profilePage, profilePageEnd), blankRow.repeated(8));
}

void VexaRunsTest::writesTheProfilePage()
{
    SimulatorProcess simulator;
    useOverwriteTable();
    // Two rows, a blank one, and part of another.
    const QByteArray page = patternImage(2 * 256, 3) + blankRow + patternImage(40, 9);
    folder->write(S("fs_to_write.hex"), hexText({{2 * profilePage, page}}));
    const VexaRun run = vexa(&simulator, {S("-w"), S("fs_to_write.hex")});
    // The image ends at byte 0x13800 + 0x328, which is the word address 0x9D94.
    QCOMPARE(run.withoutProgress(),
             versionText + loadedText +
                 "\nNow writing from c00 to 9d94 word address\n\nFlash Write success!");
    QCOMPARE(run.status, 0);
    QCOMPARE(run.progress("Upload").last(), 100);
    QCOMPARE(simulator.commands(), (QStringList{S("version"), S("write"), S("write"), S("write")}));
    QCOMPARE(simulator.flash(profilePage, profilePageEnd),
             (page + QByteArray("\xFF\xFF\xFF\0", 4).repeated(512)).left(0x800));
}

void VexaRunsTest::writtenPageReadsBackFieldByField()
{
    SimulatorProcess from({S("--hardware"), S("72v")});
    SimulatorProcess to({S("--hardware"), S("24v")});
    useOverwriteTable();
    QCOMPARE(vexa(&from, {S("-l"), S("0x9C00"), S("0xA000"), S("page.hex")}).status, 0);
    QCOMPARE(vexa(&to, {S("-E"), S("0x9C00"), S("0xA000")}).status, 0);
    QCOMPARE(vexa(&to, {S("-w"), S("page.hex")}).status, 0);
    QCOMPARE(vexa(&to, {S("-v"), S("page.hex")}).status, 0);
    QCOMPARE(to.flash(profilePage, profilePageEnd), from.flash(profilePage, profilePageEnd));
}

void VexaRunsTest::flashesFirmware_data()
{
    QTest::addColumn<QByteArray>("table");
    QTest::addColumn<QByteArray>("erased");
    QTest::addColumn<bool>("withPage"); // the file holds a profile page, too
    QTest::addColumn<QByteArray>("cut");
    QTest::addColumn<QByteArray>("end");
    const QByteArray keep("device_keep_profiles.txt");
    const QByteArray overwrite("device_overwrite_profiles.txt");
    QTest::newRow("profiles kept") << keep << QByteArray("24 pages from c00 to 9c00") << false
                                   << QByteArray() << QByteArray("1000");
    QTest::newRow("profiles overwritten") << overwrite << QByteArray("25 pages from c00 to a000")
                                          << false << QByteArray() << QByteArray("1000");
    QTest::newRow("profiles kept against a file that has some")
        << keep << QByteArray("24 pages from c00 to 9c00") << true
        << QByteArray("\nHex file defines memory unreachable (0x00009c80). "
                      "Truncating at address 0x00009c00")
        << QByteArray("9c00");
    QTest::newRow("profiles overwritten by those of the file")
        << overwrite << QByteArray("25 pages from c00 to a000") << true << QByteArray()
        << QByteArray("9c80");
}

void VexaRunsTest::flashesFirmware()
{
    QFETCH(QByteArray, table);
    QFETCH(QByteArray, erased);
    QFETCH(bool, withPage);
    QFETCH(QByteArray, cut);
    QFETCH(QByteArray, end);

    SimulatorProcess simulator({S("--hardware"), S("48v")});
    const QByteArray pageBefore = simulator.flash(profilePage, profilePageEnd);
    QVERIFY(pageBefore != blankRow.repeated(8));
    useTable(table.constData());
    const QByteArray program = patternImage(0x800, 5); // up to word address 0x1000
    const QByteArray row = patternImage(256, 77);
    QList<ImagePiece> pieces{{2 * firmware, program}};
    if (withPage)
        pieces.append({2 * profilePage, row});
    folder->write(S("firmware.hex"), hexText(pieces));

    const VexaRun run =
        vexa(&simulator, {S("-e"), S("-w"), S("firmware.hex"), S("-v"), S("firmware.hex")});
    QCOMPARE(run.withoutProgress(),
             versionText + "\nErasing " + erased + "\nAll flash above bldr erased!" + loadedText +
                 cut + "\nNow writing from c00 to " + end +
                 " word address\n\nFlash Write success!" + "\nNow verifying flash from c00 to " +
                 end + " word address\n\nVerified Flash OK!");
    QCOMPARE(run.status, 0);
    for (const char *kind : {"Upload", "Verify"}) {
        const QList<int> percentages = run.progress(kind);
        QVERIFY(!percentages.isEmpty());
        for (int i = 1; i < percentages.size(); ++i)
            QVERIFY(percentages[i] > percentages[i - 1]);
    }
    QCOMPARE(run.progress("Upload").last(), 100);

    QCOMPARE(simulator.flash(firmware, 0x1000), program);
    QCOMPARE(simulator.flash(0x1000, profilePage),
             blankRow.repeated((profilePage - 0x1000) / 0x80));
    const bool kept = table.contains("keep");
    QCOMPARE(simulator.flash(profilePage, profilePageEnd), kept       ? pageBefore
                                                           : withPage ? row + blankRow.repeated(7)
                                                                      : blankRow.repeated(8));
    // 36 pages are 0x24, 37 are 0x25.
    QVERIFY(simulator.log()
                .filter(S("in  erase "))
                .first()
                .startsWith(kept ? S("in  erase 55 55 03 24 00 0C 00")
                                 : S("in  erase 55 55 03 25 00 0C 00")));
    // No reset: that is for the program that watches.
    QVERIFY(!simulator.commands().contains(S("reset")));
}

void VexaRunsTest::verifiesGoodFlash()
{
    SimulatorProcess simulator({S("--hardware"), S("24v")});
    useOverwriteTable();
    folder->copyHere(S(VELANTOR_SOURCE_DIR "/simulator/pages/24v.hex"));
    const VexaRun run = vexa(&simulator, {S("-v"), S("24v.hex")});
    QVERIFY(run.output.endsWith("\nVerified Flash OK!"));
    QVERIFY(run.output.startsWith(versionText + loadedText + "\nNow verifying flash from c00 to "));
    QCOMPARE(run.status, 0);
    QVERIFY(!simulator.commands().contains(S("write")));
}

void VexaRunsTest::tellsWhereFlashDiffers()
{
    SimulatorProcess simulator;
    useOverwriteTable();
    const QByteArray page = QByteArray("\x10\x20\x30\0", 4).repeated(64);
    folder->write(S("page.hex"), hexText({{2 * profilePage, page}}));
    // The fifth byte of the third line of 16 bytes: 0x25 is bit 296 and has bit 0 of 0x10 turned
    // on.
    simulator.fault(S("flip-bit=288"));
    const VexaRun run = vexa(&simulator, {S("-w"), S("page.hex"), S("-v"), S("page.hex")});
    QCOMPARE(run.status, 1);
    const QByteArray text = run.withoutProgress();
    const QByteArray good = "\n10 = 10\n20 = 20\n30 = 30\n0 = 0";
    const QByteArray behind = "\n10 != 10\n20 != 20\n30 != 30\n0 != 0";
    QCOMPARE(text.mid(text.indexOf("\nverify fail")),
             "\nverify fail at row address 9c10 with rowsize 10 at byte 4!" + good +
                 "\n10 != 11\n20 != 20\n30 != 30\n0 != 0" + behind + behind);
}

void VexaRunsTest::writesARange()
{
    SimulatorProcess simulator;
    useOverwriteTable();
    const QByteArray page = patternImage(0x400, 1);
    folder->write(S("page.hex"), hexText({{2 * profilePage, page}}));
    const VexaRun run = vexa(&simulator, {S("-W"), S("0x9C80"), S("0x9D80"), S("page.hex")});
    QCOMPARE(run.withoutProgress(),
             versionText + loadedText +
                 "\nNow writing from 9c80 to 9d80 word address\n\nFlash Write success!");
    QCOMPARE(run.status, 0);
    QCOMPARE(simulator.flash(profilePage, 0x9E00), blankRow + page.mid(256, 512) + blankRow);
}

void VexaRunsTest::cutsARangeToWritableFlash()
{
    SimulatorProcess simulator;
    useOverwriteTable();
    folder->write(S("page.hex"),
                  hexText({{0x1700, patternImage(256, 1)}, {0x1800, patternImage(256, 2)}}));
    const VexaRun run = vexa(&simulator, {S("-W"), S("0x0100"), S("0xB000"), S("page.hex")});
    QCOMPARE(run.withoutProgress(),
             versionText + loadedText +
                 "\nTruncating lower range limit to lower range of writable flash, 0xc00"
                 "\nTruncating upper range limit to lower range of writable flash, 0xa000\n"
                 "\nNow writing from c00 to a000 word address\n\nFlash Write success!");
    QCOMPARE(run.status, 0);
    QCOMPARE(simulator.commands(), (QStringList{S("version"), S("write")}));
    QCOMPARE(simulator.flash(firmware, 0x0C80), patternImage(256, 2));
}

void VexaRunsTest::doesAllInOne()
{
    SimulatorProcess simulator({S("--hardware"), S("48v")});
    useOverwriteTable();
    folder->write(S("firmware.hex"), hexText({{2 * firmware, patternImage(0x300, 8)}}));
    const VexaRun run = vexa(&simulator, {S("-f"), S("firmware.hex")});
    QCOMPARE(run.withoutProgress(),
             versionText + "\nErasing 25 pages from c00 to a000\nAll flash above bldr erased!" +
                 loadedText + "\nNow writing from c00 to d80 word address\n" +
                 "\nFlash Write success!\nNow verifying flash from c00 to d80 word address\n" +
                 "\nVerified Flash OK!\nReset send successful!");
    QCOMPARE(run.status, 0);
    QStringList commands = simulator.commands();
    QCOMPARE(commands.removeAll(S("read")), 0x300 / 16);
    QCOMPARE(commands, (QStringList{S("version"), S("erase"), S("write"), S("write"), S("write"),
                                    S("reset")}));
    QTRY_VERIFY(simulator.log().contains(S("--  left the bootloader")));
}

void VexaRunsTest::resets()
{
    SimulatorProcess simulator;
    useOverwriteTable();
    const VexaRun run = vexa(&simulator, {S("-R")});
    QCOMPARE(run.output, versionText + "\nReset send successful!");
    QCOMPARE(run.status, 0);
    QTRY_VERIFY(simulator.log().contains(S("in  reset 55 55 00 00 00 04")));
    QTRY_VERIFY(simulator.log().contains(S("--  left the bootloader")));
}

void VexaRunsTest::takesTheVersionFromItsOption()
{
    SimulatorProcess simulator({S("--hardware"), S("48v")});
    useOverwriteTable();
    const VexaRun run = runVexa({S("-s"), simulator.port(), S("-h"), S("-B"), S("0106"), S("-l"),
                                 S("0x9C00"), S("0x9C80"), S("row.hex")});
    QCOMPARE(run.output, QByteArray(vexaBanner) + "\nReading from word address 9c00 to 9c80"
                                                  "hex file write success!");
    QCOMPARE(run.status, 0);
    QCOMPARE(simulator.commands(), QStringList{S("read")});

    const VexaRun unknown =
        runVexa({S("-s"), simulator.port(), S("-h"), S("-B"), S("02F0"), S("-R")});
    QCOMPARE(unknown.status, 1);
    QVERIFY(unknown.output.contains("\nCould not find entry for version v02f0"));
}

void VexaRunsTest::findsAChargerAtPowerOn()
{
    SimulatorProcess simulator({S("--hardware"), S("48v"), S("--power-on")});
    useOverwriteTable();
    const VexaRun run = runVexa(
        {S("-s"), simulator.port(), S("-h"), S("-l"), S("0x9C00"), S("0x9C80"), S("row.hex")});
    QCOMPARE(run.status, 0);
    QVERIFY(run.output.startsWith(vexaBanner));
    QVERIFY(run.output.contains("Finding device version, please power cycle and plug in"));
    QVERIFY(run.output.endsWith("hex file write success!"));
    QCOMPARE(simulator.commands(), (QStringList{S("sync"), S("read")}));
    QCOMPARE(folder->read(S("row.hex")),
             savedHexText(rowsOf(simulator.flash(profilePage, 0x9C80), profilePage)));
}

void VexaRunsTest::waitsForABootSequence()
{
    SimulatorProcess simulator({S("--power-on")});
    useOverwriteTable();
    const VexaRun run = runVexa({S("-s"), simulator.port(), S("-h"), S("-b")});
    QCOMPARE(run.status, 0);
    QVERIFY(run.output.endsWith("Device found on port: 0! Bootloader Version:0106:Charger64\n"));
}

void VexaRunsTest::changesTheBaudRate_data()
{
    QTest::addColumn<QStringList>("limit");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("no limit") << QStringList()
                              << QStringList{S("--  9600 baud"), S("--  38400 baud")};
    QTest::newRow("limit between")
        << QStringList{S("-M"), S("19200")} << QStringList{S("--  9600 baud"), S("--  19200 baud")};
    QTest::newRow("limit below both")
        << QStringList{S("-M"), S("4800")} << QStringList{S("--  4800 baud")};
    QTest::newRow("limit above both") << QStringList{S("-M"), S("115200")}
                                      << QStringList{S("--  9600 baud"), S("--  38400 baud")};
}

void VexaRunsTest::changesTheBaudRate()
{
    QFETCH(QStringList, limit);
    QFETCH(QStringList, expected);
    SimulatorProcess simulator;
    useOverwriteTable();
    const VexaRun run = vexa(&simulator, limit + QStringList{S("-E"), S("0x9C00"), S("0xA000")});
    QCOMPARE(run.status, 0);
    QCOMPARE(simulator.log().filter(S(" baud")), expected);
    if (expected.size() == 2) {
        const QStringList log = simulator.log();
        QVERIFY(log.indexOf(expected[1]) > log.indexOf(S("in  version 55 55 00 02 FE 04")));
    }
}

void VexaRunsTest::writesAndVerifiesEeprom()
{
    SimulatorProcess simulator;
    // A device with EEPROM at 0x20000: words of 2 bytes, rows of 16 and 32.
    folder->write(S("device.txt"),
                  "v0106:\t38400\tOther\t0xA000\t0\t0\t0x0C00\t0x0800\t0x0100\t0x04\t0x02\t0x10\t"
                  "0xFFFFFF00\t0x04\t0x20000\t0x21000\t0x02\t0x02\t0x10\t0x20\t0xFFFF\t0x02\t"
                  "0x1000\n");
    QByteArray eeprom;
    for (int i = 0; i < 0x40; ++i)
        eeprom.append(static_cast<char>(i + 0x40));
    folder->write(S("both.hex"),
                  hexText({{2 * firmware, patternImage(256, 4)}, {0x20000, eeprom}}));
    const VexaRun run = vexa(&simulator, {S("-w"), S("both.hex"), S("-v"), S("both.hex")});
    QCOMPARE(run.status, 0);
    QCOMPARE(simulator.eeprom(0, 0x40), eeprom);
    QCOMPARE(simulator.flash(firmware, 0x0C80), patternImage(256, 4));
    const QByteArray text = run.withoutProgress();
    QVERIFY2(text.contains("\nFlash Write success!\nNow writing EEPROM from "), text.constData());
    QVERIFY2(text.contains(" byte address\n\nEEprom write success!\nNow verifying flash from "),
             text.constData());
    QVERIFY2(text.contains("\nVerified Flash OK!\nNow verifying eeprom from 0 to 40 word address"),
             text.constData());
    QVERIFY2(text.endsWith("\nVerified eeprom OK!"), text.constData());
    QCOMPARE(simulator.commands().count(S("eeprom-write")), 4);
    QCOMPARE(simulator.commands().count(S("eeprom-read")), 2);

    simulator.fault(S("reply=5555050505"
                      "0505000404@eeprom-write:2"));
    const VexaRun failed = vexa(&simulator, {S("-w"), S("both.hex")});
    QCOMPARE(failed.status, 1);
    QVERIFY2(failed.output.endsWith("eeprom write fail!"), failed.output.constData());
}

void VexaRunsTest::readsAtThePaceOfTheLine()
{
    SimulatorProcess simulator({S("--hardware"), S("48v"), S("--pace")});
    useOverwriteTable();
    QElapsedTimer timer;
    timer.start();
    const VexaRun run = vexa(&simulator, {S("-l"), S("0x9C00"), S("0xA000"), S("fs_to_read.hex")});
    QCOMPARE(run.status, 0);
    QCOMPARE(folder->read(S("fs_to_read.hex")),
             savedHexText(rowsOf(simulator.flash(profilePage, profilePageEnd), profilePage)));
    // The version takes 6 + 10 bytes at 9600 baud, each row at least 9 + 265 at 38400.
    const double seconds = 16 * 10 / 9600.0 + 8 * 274 * 10 / 38400.0;
    QVERIFY2(timer.elapsed() >= 1000 * seconds, qPrintable(QString::number(timer.elapsed())));
}

void VexaRunsTest::writeAndVerifyShareOneFile()
{
    SimulatorProcess simulator;
    useOverwriteTable();
    folder->write(S("a.hex"), hexText({{2 * profilePage, patternImage(256, 1)}}));
    folder->write(S("b.hex"), hexText({{2 * profilePage, patternImage(256, 2)}}));
    QCOMPARE(vexa(&simulator, {S("-w"), S("a.hex"), S("-v"), S("b.hex")}).status, 0);
    QCOMPARE(simulator.flash(profilePage, 0x9C80), patternImage(256, 2));
}

void VexaRunsTest::opensAPortForTrial()
{
    SimulatorProcess simulator;
    const VexaRun run = runVexa({S("-t"), simulator.port()});
    QCOMPARE(run.status, 0);
    QVERIFY(simulator.commands().isEmpty());
}

QTEST_GUILESS_MAIN(VexaRunsTest)
#include "tst_vexa_runs.moc"
