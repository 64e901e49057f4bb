#include "e2e/vexarun.h"
#include "support/filecontent.h"
#include "support/simulatorprocess.h"
#include "support/workingdirectory.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#define S QStringLiteral

namespace
{
const QByteArray versionText = QByteArray(vexaBanner) + "\nBootloader Version is...1 6.";
const QByteArray loadedText = "\nfile opened\nbuffers cleared\nhex file loaded";
const QByteArray writingText = "\nNow writing from c00 to 9d00 word address\n";
const QByteArray verifyingText = "\nNow verifying flash from c00 to 9d00 word address\n";

const QStringList erasing{S("-E"), S("0x9C00"), S("0xA000")};
const QStringList erasingAll{S("-e")};
const QStringList writing{S("-w"), S("page.hex")}; // two rows of the profile page
const QStringList verifying{S("-v"), S("page.hex")};
const QStringList reading{S("-l"), S("0x9C00"), S("0xA000"), S("read.hex")};
const QStringList flashing{S("-e"), S("-w"), S("page.hex"), S("-v"), S("page.hex")};
const QStringList resetting{S("-R")};

QByteArray tableText()
{
    return neededContentOf(S(VELANTOR_BUNDLE_MEMBERS "/device_overwrite_profiles.txt"));
}
} // namespace

/// What the uploader says, and how it ends, when something goes wrong.
class VexaFaultsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { folder.reset(); }

    void chargerMisbehaves_data();
    void chargerMisbehaves();
    void chargerIsOnlyOdd_data();
    void chargerIsOnlyOdd();
    void cableIsPulled_data();
    void cableIsPulled();
    void portGoesAwayBetweenTheTwoOpenings();
    void chargerHasLeftItsBootloader();
    void portIsNotThere();
    void filesAreMissing_data();
    void filesAreMissing();
    void optionsContradict_data();
    void optionsContradict();

private:
    static VexaRun vexa(const QString &port, const QStringList &arguments)
    {
        return runVexa(QStringList{S("-s"), port, S("-h"), S("-V")} + arguments);
    }

    QScopedPointer<WorkingDirectory> folder;
};

void VexaFaultsTest::init()
{
    folder.reset(new WorkingDirectory);
    folder->write(S("device.txt"), tableText());
    folder->write(S("page.hex"), hexText({{0x13800, patternImage(512, 1)}}));
}

void VexaFaultsTest::chargerMisbehaves_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("output"); // without progress

    const QByteArray asked = QByteArray(vexaBanner) + "\nBootloader Version is...";
    QTest::newRow("no version") << S("silent@version") << reading
                                << asked + "\nTimeout!Version command send failed!";
    QTest::newRow("not even an echo")
        << S("dead@version") << reading << asked + "\nTimeout!Version command send failed!";
    QTest::newRow("unknown version")
        << S("version=0107") << reading << asked + "1 7.\nCould not find entry for version v0107:";

    QTest::newRow("no answer to an erase")
        << S("silent@erase") << erasing << versionText + "\nTimeout!\nErase range failed!";
    QTest::newRow("no answer to the erase of everything")
        << S("silent@erase") << erasingAll
        << versionText + "\nErasing 25 pages from c00 to a000\nTimeout!\nErase failed!";
    QTest::newRow("half an answer to an erase")
        << S("truncate@erase") << erasing << versionText + "\nTimeout!\nErase range failed!";
    QTest::newRow("lost echo of an erase")
        << S("lost-echo@erase") << erasing << versionText + "\nTimeout!\nErase range failed!";
    // 03 and then a checksum of FC in place of FD.
    QTest::newRow("wrong checksum of an erase")
        << S("bad-checksum@erase") << erasing
        << versionText + "checksum error: 252 != 253\nErase range failed!";
    QTest::newRow("answer to something else")
        << S("wrong-reply=10@erase") << erasing
        << versionText + "cmd does not match!16 != 3\nErase range failed!";
    QTest::newRow("erase of a charger that is too slow")
        << S("slow-erase=300") << erasing << versionText + "\nTimeout!\nErase range failed!";

    QTest::newRow("no answer to the second row")
        << S("silent@write:2") << writing
        << versionText + loadedText + writingText + "\nTimeout!write fail!";
    QTest::newRow("wrong checksum of a row")
        << S("bad-checksum@write") << writing
        << versionText + loadedText + writingText + "checksum error: 253 != 254write fail!";
    QTest::newRow("refused row") << S("wrong-reply=ff@write") << writing
                                 << versionText + loadedText + writingText +
                                        "cmd does not match!255 != 2write fail!";

    // Words are counted in decimal: 0x9D00 is 40192.
    QTest::newRow("no answer to the third read")
        << S("silent@read:3") << reading
        << versionText + "\nReading from word address 9c00 to a000\nTimeout!"
                         "read at word address 40192 fail!";
    QTest::newRow("half an answer to a read")
        << S("truncate=100@read") << reading
        << versionText + "\nReading from word address 9c00 to a000\nTimeout!"
                         "read at word address 39936 fail!";

    QTest::newRow("no answer while verifying")
        << S("silent@read:7") << flashing
        << versionText + "\nErasing 25 pages from c00 to a000\nAll flash above bldr erased!" +
               loadedText + writingText + "\nFlash Write success!" + verifyingText +
               "\nTimeout!Flash Read fail!";
}

void VexaFaultsTest::chargerMisbehaves()
{
    QFETCH(QString, fault);
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, output);
    SimulatorProcess simulator({S("--fault"), fault});
    const VexaRun run = vexa(simulator.port(), arguments);
    QCOMPARE(run.withoutProgress(), output);
    QCOMPARE(run.status, 1);
    // Nothing is tried twice.
    const QString last = simulator.commands().last();
    const QStringList commands = simulator.commands();
    const int rows =
        fault.contains(QLatin1Char(':')) ? fault.section(QLatin1Char(':'), 1).toInt() : 1;
    QCOMPARE(commands.count(last), rows);
    // The charger is well again, and so is the line.
    simulator.control(S("clear"));
    QCOMPARE(vexa(simulator.port(), erasing).status, 0);
}

void VexaFaultsTest::chargerIsOnlyOdd_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("remark");
    QTest::newRow("wrong start of the version")
        << S("bad-stx@version") << erasing << QByteArray("...\nno stx char!1 6.");
    QTest::newRow("wrong start of an erase")
        << S("bad-stx@erase") << erasingAll
        << QByteArray("c00 to a000\nno stx char!\nAll flash above bldr erased!");
    QTest::newRow("wrong second start")
        << S("reply=550003fd04@erase") << erasing
        << QByteArray("\nno second stx char!\nMemory from 9c00 to a000 erased successfully!");
    // The checksum stands behind an escape: 03+F9 gives 04, 03+F8 gives 05.
    QTest::newRow("answer with the checksum 04")
        << S("reply=555503f9050404@erase") << erasing << QByteArray();
    QTest::newRow("answer with the checksum 05")
        << S("reply=555503f8050504@erase") << erasing << QByteArray();
    QTest::newRow("slow, but in time") << S("slow-erase=0.2") << erasing << QByteArray();
}

void VexaFaultsTest::chargerIsOnlyOdd()
{
    QFETCH(QString, fault);
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, remark);
    // At the line's pace, so that an answer arrives in pieces.
    SimulatorProcess simulator({S("--pace"), S("--fault"), fault});
    const VexaRun run = vexa(simulator.port(), arguments);
    QVERIFY2(run.output.contains(remark), run.output.constData());
    QCOMPARE(run.status, 0);
}

void VexaFaultsTest::cableIsPulled_data()
{
    QTest::addColumn<QString>("when");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("end");
    QTest::newRow("at the version")
        << S("version") << reading << QByteArray("Version command send failed!");
    QTest::newRow("at the erase") << S("erase") << erasing << QByteArray("\nErase range failed!");
    QTest::newRow("while writing") << S("write:2") << writing << QByteArray("write fail!");
    QTest::newRow("while reading")
        << S("read:4") << reading << QByteArray("read at word address 40320 fail!");
    QTest::newRow("while verifying") << S("read:4") << verifying << QByteArray("Flash Read fail!");
}

void VexaFaultsTest::cableIsPulled()
{
    QFETCH(QString, when);
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, end);
    SimulatorProcess simulator(
        {S("--page"), folder->path() + S("/page.hex"), S("--fault"), S("unplug@") + when});
    const VexaRun run = vexa(simulator.port(), arguments);
    QVERIFY2(run.output.endsWith(end), run.output.constData());
    QCOMPARE(run.status, 1);
    QCOMPARE(simulator.port(), S("unplugged"));
}

void VexaFaultsTest::portGoesAwayBetweenTheTwoOpenings()
{
    SimulatorProcess simulator;
    // The table is a pipe, so that the run stops between version and second opening until the cable
    // is out.
    const QByteArray table = QFile::encodeName(folder->path() + S("/device.txt"));
    QVERIFY(::unlink(table.constData()) == 0);
    QVERIFY(::mkfifo(table.constData(), 0600) == 0);
    const QString port = simulator.port();
    std::thread owner([&simulator, &table] {
        const int pipe = ::open(table.constData(), O_WRONLY); // waits for the uploader
        simulator.control(S("unplug"));
        const QByteArray text = tableText();
        if (::write(pipe, text.constData(), static_cast<size_t>(text.size())) != text.size())
            qFatal("cannot write the table");
        ::close(pipe);
    });
    const VexaRun run = vexa(port, erasing);
    owner.join();
    QCOMPARE(run.output, versionText + "Can not open comport");
    QCOMPARE(run.status, 0);
}

void VexaFaultsTest::chargerHasLeftItsBootloader()
{
    SimulatorProcess simulator;
    QCOMPARE(vexa(simulator.port(), resetting).status, 0);
    const VexaRun run = vexa(simulator.port(), flashing);
    QCOMPARE(run.status, 1);
    // What a program that watches looks for, in one piece.
    const QRegularExpression sign(S("Bootloader Version is.*Timeout"),
                                  QRegularExpression::DotMatchesEverythingOption);
    bool seen = false;
    for (const QByteArray &chunk : run.chunks)
        seen |= sign.match(QString::fromLatin1(chunk)).hasMatch();
    QVERIFY(seen);
    QCOMPARE(simulator.commands(), QStringList{S("version")} + QStringList{S("reset")});
}

void VexaFaultsTest::portIsNotThere()
{
    const VexaRun run = vexa(S("/dev/pts/none"), reading);
    QVERIFY2(run.output.endsWith("Can not open comport"), run.output.constData());
    QCOMPARE(run.status, 1);
}

void VexaFaultsTest::filesAreMissing_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content"); // null for no file
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("end");
    QTest::newRow("no table") << S("device.txt") << QByteArray() << reading
                              << QByteArray("Could not find device.txt file!");
    QTest::newRow("table without rows") << S("device.txt") << QByteArray("v0105:\t1\n") << reading
                                        << QByteArray("\nCould not find entry for version v0106:");
    QTest::newRow("nothing to write")
        << S("page.hex") << QByteArray() << writing << QByteArray("failed to find input file!");
    QTest::newRow("nothing to verify")
        << S("page.hex") << QByteArray() << verifying << QByteArray("failed to find input file!");
    QTest::newRow("nothing to flash") << S("page.hex") << QByteArray() << flashing
                                      << QByteArray("\nAll flash above bldr erased!"
                                                    "failed to find input file!");
    QTest::newRow("file without an end")
        << S("page.hex") << QByteArray(":020000040001F9\n:0138000001C6\n") << writing
        << loadedText.left(loadedText.indexOf("\nhex")) +
               QByteArray("\nNo end of file reached?\nhex file loadedhex file read failure!");
    QTest::newRow("file of nothing")
        << S("page.hex") << QByteArray("\n") << writing
        << QByteArray("\nbuffers clearedFailed to open file!\nhex file loaded"
                      "hex file read failure!");
    QTest::newRow("nowhere to read to")
        << S("unused") << QByteArray()
        << QStringList{S("-l"), S("0x9C00"), S("0xA000"), S("none/read.hex")}
        << QByteArray("Could not open output file to write!");
}

void VexaFaultsTest::filesAreMissing()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, end);
    if (content.isNull())
        QFile::remove(name);
    else
        folder->write(name, content);
    SimulatorProcess simulator;
    const VexaRun run = vexa(simulator.port(), arguments);
    QVERIFY2(run.output.startsWith(versionText), run.output.constData());
    QVERIFY2(run.output.endsWith(end), run.output.constData());
    QCOMPARE(run.status, 1);
    QVERIFY(!simulator.commands().contains(S("write")));
}

void VexaFaultsTest::optionsContradict_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("end");
    QTest::newRow("both ways to erase")
        << QStringList{S("-e")} + erasing
        << QByteArray("\nPlease specify either erase all or a range, not both");
    QTest::newRow("read and write")
        << QStringList{S("-r"), S("all.hex")} + writing
        << QByteArray("\nPlease choose to read or write, cannot do both in same operation");
    QTest::newRow("read and verify")
        << QStringList{S("-r"), S("all.hex")} + verifying
        << QByteArray("\nPlease choose to read or verify, will not do both");
    QTest::newRow("two ways to the version")
        << QStringList{S("-B"), S("0106")} + erasing
        << QByteArray("\nPlease specify a bootloader version (-B) or use of the version command "
                      "(-V), but not both.");
}

void VexaFaultsTest::optionsContradict()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, end);
    SimulatorProcess simulator({S("--page"), folder->path() + S("/page.hex")});
    const QByteArray before = simulator.flash(0, 0x18000);
    const VexaRun run = vexa(simulator.port(), arguments);
    QVERIFY2(run.output.endsWith(end), run.output.constData());
    QCOMPARE(run.status, 1);
    QCOMPARE(simulator.flash(0, 0x18000), before);
}

QTEST_GUILESS_MAIN(VexaFaultsTest)
#include "tst_vexa_faults.moc"
