#include "support/linepeer.h"
#include "support/workingdirectory.h"

#include <QProcess>
#include <QtTest>

#include <map>

namespace
{
const QByteArray banner("Serial Uploader by Tolk Technologies (2011)\nVersion 1.2\n");
const QByteArray versionLine("\nBootloader Version is...1 6.");

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

/// Changes to the charger's record, by their place in the line.
using Record = std::map<int, QByteArray>;

/// The fields of the charger's record.
QByteArray deviceTable(const Record &changes = {})
{
    QList<QByteArray> fields{"v0106:",     "38400",  "Charger64", "0xA000", "0x015000", "0x00",
                             "0x0C00",     "0x0800", "0x0100",    "0x04",   "0x02",     "0x10",
                             "0xFFFFFF00", "0x04",   "0x00",      "0x00",   "0x00",     "0x00",
                             "0x00",       "0x00",   "0x00",      "0x00",   "0x00",     "0x013800"};
    for (const auto &change : changes)
        fields[change.first] = change.second;
    return fields.join('\t') + '\n';
}

/// A device with 16 bytes of EEPROM at 0x20000 of the image, in rows of two words of two bytes.
Record eepromFields()
{
    return {{14, "0x020000"}, {15, "0x020100"}, {16, "0x02"}, {17, "0x01"}, {18, "0x04"},
            {19, "0x02"},     {20, "0xFFFF"},   {21, "0x02"}, {22, "0x10"}};
}

/// Answers like a charger with a little memory, by word addresses of the flash and the EEPROM.
class TinyCharger
{
public:
    QByteArray operator()(const QByteArray &payload)
    {
        const auto at = [&](int i) { return int(static_cast<unsigned char>(payload.at(i))); };
        const int address = payload.size() < 5 ? 0 : at(2) | at(3) << 8 | at(4) << 16;
        switch (at(0)) {
        case 0:
            return at(1) == 2 ? LinePeer::framed(hex("000200000106")) : QByteArray();
        case 1:
            return LinePeer::framed(payload.left(5) +
                                    bytes(flash, address * 2, at(1) * 4, hex("FFFFFF00")));
        case 2:
            store(&flash, address * 2, payload.mid(5));
            return LinePeer::framed(hex("02"));
        case 3:
            return LinePeer::framed(hex("03"));
        case 4:
            return LinePeer::framed(payload.left(5) +
                                    bytes(eeprom, address * 2, at(1) * 2, hex("FF")));
        case 5:
            store(&eeprom, address * 2, payload.mid(5));
            return LinePeer::framed(hex("05"));
        }
        return QByteArray();
    }

private:
    using Memory = std::map<int, char>;

    static QByteArray bytes(const Memory &memory, int from, int count, const QByteArray &blank)
    {
        QByteArray result;
        for (int i = from; i < from + count; ++i) {
            const auto found = memory.find(i);
            result.append(found == memory.end() ? blank.at(i % blank.size()) : found->second);
        }
        return result;
    }

    static void store(Memory *memory, int from, const QByteArray &data)
    {
        for (int i = 0; i < data.size(); ++i)
            (*memory)[from + i] = data.at(i);
    }

    Memory flash;
    Memory eeprom;
};

} // namespace

Q_DECLARE_METATYPE(Record)

class VexaTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void argumentErrors_data();
    void argumentErrors();

    void portCannotBeOpened();
    void chargerIsSilent();
    void bootloaderIsNotFound();
    void noDeviceTable();
    void versionNotInTheTable();
    void assumedVersion();
    void secondOpeningFails();
    void uselessRecords_data();
    void uselessRecords();

    void erases();
    void bothErases();
    void erasesNothing();
    void inputFiles_data();
    void inputFiles();
    void writesAndVerifies();
    void firmwareIsWrittenInChunks();
    void cutsAtTheEndOfFlash_data();
    void cutsAtTheEndOfFlash();
    void writesUpToTheEndOfFlash();
    void writesARange();
    void reads_data();
    void reads();
    void readsWhatItWrote();
    void savesRowsOfAnySize_data();
    void savesRowsOfAnySize();
    void outputFileCannotBeOpened();
    void outputFileTakesNothing();
    void readFails();
    void verifyFails();
    void failedWriteLeavesTheEeprom();
    void eeprom();
    void resets();
    void doesItsStepsInOrder();
    void showsABootSequenceOfAnUnknownVersion();
    void probesPorts();
    void capturesTheLine();
    void throughput();

private:
    struct Run {
        QByteArray printed;
        QByteArray errors;
        int status;
    };

    /// Runs the program to its end, with the banner cut off.
    Run vexa(const QList<QByteArray> &arguments) const;
    /// The same, on the charger's line.
    Run onCharger(const QList<QByteArray> &arguments) const;

    std::unique_ptr<WorkingDirectory> folder;
    std::unique_ptr<LinePeer> charger;
};

void VexaTest::init()
{
    charger.reset();
    folder.reset();
    folder = std::make_unique<WorkingDirectory>();
    folder->write(QStringLiteral("device.txt"), deviceTable());
    charger = std::make_unique<LinePeer>(LinePeer::Echo::On, TinyCharger());
}

VexaTest::Run VexaTest::vexa(const QList<QByteArray> &arguments) const
{
    QStringList texts;
    for (const QByteArray &argument : arguments)
        texts.append(QString::fromUtf8(argument));
    QProcess process;
    process.start(QStringLiteral(VEXA), texts);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        qFatal("vexa.bin did not come to its end");
    const QByteArray printed = process.readAllStandardOutput();
    if (!printed.startsWith(banner))
        qFatal("no banner: %s", printed.constData());
    return {printed.mid(banner.size()), process.readAllStandardError(), process.exitCode()};
}

VexaTest::Run VexaTest::onCharger(const QList<QByteArray> &arguments) const
{
    return vexa(QList<QByteArray>{"-s", charger->path(), "-h", "-V"} + arguments);
}

void VexaTest::argumentErrors_data()
{
    QTest::addColumn<QList<QByteArray>>("arguments");
    QTest::addColumn<QByteArray>("printed");
    using Arguments = QList<QByteArray>;
    QTest::newRow("none") << Arguments{}
                          << QByteArray("\nPlease specify a serial port, with \"-s x\" where x is "
                                        "the port name (i.e. \\\\.\\COM1, /dev/ttyUSB0)");
    QTest::newRow("empty") << Arguments{""} << QByteArray("Incorrect usage!");
    QTest::newRow("read and write")
        << Arguments{"-s", "p", "-r", "a.hex", "-w", "b.hex"}
        << QByteArray("\nPlease choose to read or write, cannot do both in same operation");
    QTest::newRow("no file name") << Arguments{"-s", "p", "-w", "-"}
                                  << QByteArray("No file name specified!"
                                                "\nPlease enter a valid input filename!");
}

void VexaTest::argumentErrors()
{
    QFETCH(QList<QByteArray>, arguments);
    const Run run = vexa(arguments);
    QTEST(run.printed, "printed");
    QCOMPARE(run.status, 1);

    const Run unknown = vexa({"-q"});
    QVERIFY(unknown.printed.startsWith("Incorrect usage:\n "));
    QCOMPARE(unknown.status, 1);
}

void VexaTest::portCannotBeOpened()
{
    const Run run = vexa({"-s", "/dev/there-is-no-such-port", "-h", "-V"});
    QCOMPARE(run.printed, QByteArray("Can not open comport"));
    QCOMPARE(run.status, 1);

    const Run noTerminal = vexa({"-s", "/dev/null", "-h", "-V"});
    QCOMPARE(noTerminal.printed, QByteArray("Can not open comport"));
    QVERIFY2(noTerminal.errors.startsWith("unable to read portsettings on port "),
             noTerminal.errors.constData());
    QCOMPARE(noTerminal.status, 1);

    const Run badRate = vexa({"-s", charger->path(), "-M", "1234"});
    QCOMPARE(badRate.printed, QByteArray("invalid baudrateCan not open comport"));
    QCOMPARE(badRate.status, 1);
}

void VexaTest::chargerIsSilent()
{
    charger = std::make_unique<LinePeer>(LinePeer::Echo::On);
    QProcess process;
    QList<QByteArray> chunks;
    connect(&process, &QProcess::readyReadStandardOutput,
            [&] { chunks.append(process.readAllStandardOutput()); });
    process.start(QStringLiteral(VEXA),
                  {QStringLiteral("-s"), QString::fromUtf8(charger->path()), QStringLiteral("-h"),
                   QStringLiteral("-V"), QStringLiteral("-e")});
    QVERIFY(process.waitForFinished());
    // One chunk: a watcher looks for the version and the time-out together.
    QCOMPARE(chunks, QList<QByteArray>{banner + "\nBootloader Version is...\nTimeout!"
                                                "Version command send failed!"});
    QCOMPARE(process.exitCode(), 1);
}

void VexaTest::bootloaderIsNotFound()
{
    QProcess process;
    process.start(QStringLiteral(VEXA), {QStringLiteral("-s"), QString::fromUtf8(charger->path()),
                                         QStringLiteral("-h"), QStringLiteral("-e")});
    const QByteArray waiting("Finding device version, please power cycle and plug in");
    QByteArray printed;
    while (!printed.contains(waiting)) {
        QVERIFY(process.waitForReadyRead());
        printed += process.readAllStandardOutput();
    }
    QVERIFY(printed.startsWith(banner + waiting));
    // Long before the 30 seconds are over the line goes away, so that nothing can be sent any more.
    charger.reset();
    QVERIFY(process.waitForFinished());
    printed += process.readAllStandardOutput();
    QVERIFY2(printed.endsWith("timeout trying to find bootloader!"), printed.constData());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
}

void VexaTest::noDeviceTable()
{
    QFile::remove(QStringLiteral("device.txt"));
    const Run run = onCharger({"-e"});
    QCOMPARE(run.printed, versionLine + "Could not find device.txt file!");
    QCOMPARE(run.status, 1);
    QCOMPARE(charger->payloads(), QList<QByteArray>{hex("0002")});
}

void VexaTest::versionNotInTheTable()
{
    folder->write(QStringLiteral("device.txt"), deviceTable({{0, "v0107:"}}));
    const Run run = onCharger({"-e"});
    QCOMPARE(run.printed, versionLine + "\nCould not find entry for version v0106:");
    QCOMPARE(run.status, 1);
}

void VexaTest::assumedVersion()
{
    folder->write(QStringLiteral("device.txt"), deviceTable({{0, "v02f0:"}}));
    const Run run = vexa({"-s", charger->path(), "-h", "-B", "02F0", "-E", "0x9C00", "0xA000"});
    QCOMPARE(run.printed, QByteArray("\nMemory from 9c00 to a000 erased successfully!"));
    QCOMPARE(run.status, 0);
    QCOMPARE(charger->payloads(), QList<QByteArray>{hex("0301009C00")});
}

void VexaTest::secondOpeningFails()
{
    folder->write(QStringLiteral("device.txt"), deviceTable({{1, "12345"}}));
    const Run run = onCharger({"-e"});
    QCOMPARE(run.printed, versionLine + "invalid baudrateCan not open comport");
    QCOMPARE(run.status, 0);
}

void VexaTest::uselessRecords_data()
{
    QTest::addColumn<Record>("record");
    QTest::addColumn<QByteArray>("printed");
    QTest::newRow("word size") << Record{{9, "0"}} << QByteArray("Flash Word size cannot be 0!");
    QTest::newRow("row size") << Record{{8, "0"}} << QByteArray("Flash Row size cannot be 0!");
    QTest::newRow("page size") << Record{{7, "0"}} << QByteArray("Flash Page size cannot be 0!");
    QTest::newRow("verify row size")
        << Record{{11, "0"}} << QByteArray("Flash Verify row size cannot be 0!");
    QTest::newRow("row larger than the image")
        << Record{{8, "0x030100"}} << QByteArray("Flash Row size cannot exceed the image!");
    QTest::newRow("no number for a row")
        << Record{{8, "many"}} << QByteArray("Flash Row size cannot exceed the image!");
    QTest::newRow("filler longer than its value")
        << Record{{13, "5"}} << QByteArray("Flash Filler byte size cannot exceed 4!");
    QTest::newRow("row shorter than a line")
        << Record{{8, "0x0F"}} << QByteArray("Flash Row size cannot be below 16!");
    QTest::newRow("flash ends below the bootloader")
        << Record{{3, "0x0800"}}
        << QByteArray("Flash end address cannot lie inside the bootloader!");
    QTest::newRow("name") << Record{{2, QByteArray(30, 'x')}}
                          << QByteArray("\nDevice name in entry for version v0106: is too long!");
    QTest::newRow("EEPROM without rows")
        << Record{{22, "0x10"}} << QByteArray("EEPROM Row size cannot be 0 if eeprom exists!");
    const auto eepromWith = [](int field, const char *value) {
        Record record = eepromFields();
        record[field] = value;
        return record;
    };
    QTest::newRow("EEPROM without addresses")
        << eepromWith(17, "0") << QByteArray("EEPROM Address size cannot be 0 if eeprom exists!");
    QTest::newRow("EEPROM without verify rows")
        << eepromWith(19, "0")
        << QByteArray("EEPROM Verify row size cannot be 0 if eeprom exists!");
    QTest::newRow("EEPROM without filler")
        << eepromWith(21, "0")
        << QByteArray("EEPROM Filler byte size cannot be 0 if eeprom exists!");
    QTest::newRow("EEPROM filler longer than its value")
        << eepromWith(21, "5") << QByteArray("EEPROM Filler byte size cannot exceed 4!");
    QTest::newRow("EEPROM row larger than the image")
        << eepromWith(18, "0x1001") << QByteArray("EEPROM Row size cannot exceed the image!");
    QTest::newRow("EEPROM verify row larger than the image")
        << eepromWith(19, "0x1001") << QByteArray("EEPROM Row size cannot exceed the image!");
}

void VexaTest::uselessRecords()
{
    QFETCH(Record, record);
    QFETCH(QByteArray, printed);
    folder->write(QStringLiteral("device.txt"), deviceTable(record));
    const Run run = onCharger({"-r", "out.hex"});
    QCOMPARE(run.printed, versionLine + printed);
    QCOMPARE(run.status, 1);
}

void VexaTest::erases()
{
    const Run all = onCharger({"-e"});
    QCOMPARE(all.printed, versionLine + "\nErasing 25 pages from c00 to a000"
                                        "\nAll flash above bldr erased!");
    QCOMPARE(all.status, 0);
    const Run range = onCharger({"-E", "0x9C00", "0xA000"});
    QCOMPARE(range.printed, versionLine + "\nMemory from 9c00 to a000 erased successfully!");
    QCOMPARE(range.status, 0);
    QCOMPARE(charger->payloads(),
             (QList<QByteArray>{hex("0002"), hex("0325000C00"), hex("0002"), hex("0301009C00")}));
}

void VexaTest::bothErases()
{
    const Run run = onCharger({"-e", "-E", "0x9C00", "0xA000"});
    QCOMPARE(run.printed, versionLine + "\nPlease specify either erase all or a range, not both");
    QCOMPARE(run.status, 1);
    QCOMPARE(charger->payloads(), QList<QByteArray>{hex("0002")});
}

void VexaTest::erasesNothing()
{
    const Run run = onCharger({"-E", "0x9C00", "0x9C00"});
    QCOMPARE(run.printed, versionLine + "\nErase range failed!");
    QCOMPARE(run.status, 1);
}

void VexaTest::inputFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("printed");
    const QByteArray loaded("\nfile opened\nbuffers cleared");
    QTest::newRow("empty") << QByteArray("")
                           << loaded +
                                  "Failed to open file!\nhex file loadedhex file read failure!";
    QTest::newRow("only an end record")
        << QByteArray(":00000001FF") << loaded + "\nhex file loadedhex file read failure!";
    QTest::newRow("no end record") << QByteArray(":0138000000C7\n")
                                   << loaded + "\nNo end of file reached?\nhex file loaded"
                                               "hex file read failure!";
}

void VexaTest::inputFiles()
{
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, printed);
    folder->write(QStringLiteral("in.hex"), content);
    const Run run = onCharger({"-w", "in.hex"});
    QCOMPARE(run.printed, versionLine + printed);
    QCOMPARE(run.status, 1);

    const Run missing = onCharger({"-w", "missing.hex"});
    QCOMPARE(missing.printed, versionLine + "failed to find input file!");
    QCOMPARE(missing.status, 1);
}

namespace
{
/// Two rows of firmware: at word addresses 0xC00 and 0xC80, the second with two words only.
const QByteArray smallImage(":020000040000FA\n"
                            ":041800000102030DD1\n"
                            ":08190000556677008899880004\n"
                            ":00000001FF\n");
const QByteArray loadedTexts("\nfile opened\nbuffers cleared\nhex file loaded");
const QByteArray backspaces(20, '\b');
} // namespace

void VexaTest::writesAndVerifies()
{
    folder->write(QStringLiteral("in.hex"), smallImage);
    const Run run = onCharger({"-w", "in.hex", "-v", "in.hex"});
    // The top is byte 0x1908, word 0xC84; the rows are at 95 and 99 percent of it.
    QCOMPARE(run.printed,
             versionLine + loadedTexts + "\nNow writing from c00 to c84 word address\n" +
                 "Upload Progress  95%" + backspaces + "Upload Progress  99%" + backspaces +
                 "Upload Progress 100%\nFlash Write success!" +
                 "\nNow verifying flash from c00 to c84 word address\n" + "Verify Progress  95%" +
                 backspaces + "Verify Progress  96%" + backspaces + "Verify Progress  97%" +
                 backspaces + "Verify Progress  98%" + backspaces + "Verify Progress  99%" +
                 backspaces + "\nVerified Flash OK!");
    QCOMPARE(run.status, 0);

    const QByteArray blank = hex("FFFFFF00");
    QCOMPARE(
        charger->payloads(),
        (QList<QByteArray>{hex("0002"), hex("0201000C00") + hex("0102030D") + blank.repeated(63),
                           hex("0201800C00") + hex("5566770088998800") + blank.repeated(62),
                           hex("0104000C00"), hex("0104800C00")}));
}

void VexaTest::firmwareIsWrittenInChunks()
{
    folder->write(QStringLiteral("in.hex"), smallImage);
    QProcess process;
    QList<QByteArray> chunks;
    connect(&process, &QProcess::readyReadStandardOutput,
            [&] { chunks.append(process.readAllStandardOutput()); });
    process.start(QStringLiteral(VEXA),
                  {QStringLiteral("-s"), QString::fromUtf8(charger->path()), QStringLiteral("-h"),
                   QStringLiteral("-V"), QStringLiteral("-e"), QStringLiteral("-w"),
                   QStringLiteral("in.hex"), QStringLiteral("-v"), QStringLiteral("in.hex")});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);

    QCOMPARE(chunks.value(0), banner + versionLine +
                                  "\nErasing 25 pages from c00 to a000"
                                  "\nAll flash above bldr erased!");
    QCOMPARE(chunks.value(1), loadedTexts);
    QVERIFY(chunks.value(2).startsWith("\nNow writing from c00 to c84 word address\n"));
    // From here on a watcher may see several texts at once, but never those of the next phase.
    int written = 2;
    while (written < chunks.size() && !chunks.at(written).contains("Flash Write success!"))
        ++written;
    QVERIFY(written < chunks.size());
    QVERIFY(chunks.at(written).endsWith("\nFlash Write success!"));
    QVERIFY(chunks.last().endsWith("\nVerified Flash OK!"));
    QVERIFY(chunks.size() > written + 1);
}

void VexaTest::cutsAtTheEndOfFlash_data()
{
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<QByteArray>("top");
    QTest::newRow("a word above") << QByteArray(":04380000FD000300C4") << QByteArray("00009c02");
    QTest::newRow("a byte above") << QByteArray(":01380000FDCA") << QByteArray("00009c00");
}

void VexaTest::cutsAtTheEndOfFlash()
{
    QFETCH(QByteArray, record);
    QFETCH(QByteArray, top);
    folder->write(QStringLiteral("device.txt"), deviceTable({{3, "0x9C00"}}));
    folder->write(QStringLiteral("in.hex"), ":020000040001F9\n" + record + "\n:00000001FF\n");
    const Run run = onCharger({"-w", "in.hex"});
    QVERIFY2(run.printed.startsWith(versionLine + loadedTexts +
                                    "\nHex file defines memory unreachable (0x" + top +
                                    "). Truncating at address 0x00009c00"
                                    "\nNow writing from c00 to 9c00 word address\n"),
             run.printed.constData());
    QVERIFY(run.printed.endsWith("Upload Progress 100%\nFlash Write success!"));
    QCOMPARE(run.status, 0);
    QCOMPARE(charger->payloads(), QList<QByteArray>{hex("0002")});
}

void VexaTest::writesUpToTheEndOfFlash()
{
    folder->write(QStringLiteral("device.txt"), deviceTable({{3, "0x9C00"}}));
    folder->write(QStringLiteral("in.hex"), ":020000040001F9\n:0437FC00FD000300C9\n:00000001FF\n");
    const Run run = onCharger({"-w", "in.hex"});
    QVERIFY2(run.printed.startsWith(versionLine + loadedTexts +
                                    "\nNow writing from c00 to 9c00 word address\n"),
             run.printed.constData());
    QCOMPARE(run.status, 0);
    QCOMPARE(charger->payloads().size(), 2);
    QCOMPARE(charger->payloads().at(1).left(5), hex("0201809B00"));
}

void VexaTest::writesARange()
{
    folder->write(QStringLiteral("in.hex"), smallImage);
    const Run one = onCharger({"-W", "0x0C80", "0x0D00", "in.hex"});
    QCOMPARE(one.status, 0);
    QCOMPARE(charger->payloads().size(), 2);
    QCOMPARE(charger->payloads().at(1).left(5), hex("0201800C00"));
    // The percentage is that of the range's end, byte 0x1A00: 0x1900 is 96 of 100.
    QVERIFY2(one.printed.contains("\nNow writing from c80 to d00 word address\n"
                                  "Upload Progress  96%"),
             one.printed.constData());

    // Nothing of the bootloader is written.
    const int before = charger->payloads().size();
    const Run below = onCharger({"-W", "0x0100", "0x0200", "in.hex"});
    QVERIFY2(below.printed.contains("0xc00\nNow writing from c00 to c00 word address\n"),
             below.printed.constData());
    QCOMPARE(below.status, 0);
    QCOMPARE(charger->payloads().mid(before), QList<QByteArray>{hex("0002")});

    // Exactly what can be written is nothing to cut.
    const Run all = onCharger({"-W", "0x0C00", "0xA000", "in.hex"});
    QVERIFY2(all.printed.startsWith(versionLine + loadedTexts +
                                    "\nNow writing from c00 to a000 word address\n"),
             all.printed.constData());
    QCOMPARE(all.status, 0);

    const Run clipped = onCharger({"-W", "0x0000", "0x0B0000", "in.hex"});
    QVERIFY2(clipped.printed.startsWith(
                 versionLine + loadedTexts +
                 "\nTruncating lower range limit to lower range of writable flash, 0xc00"
                 "\nTruncating upper range limit to lower range of writable flash, 0xa000\n"
                 "\nNow writing from c00 to a000 word address\n"),
             clipped.printed.constData());
    QCOMPARE(clipped.status, 0);
}

void VexaTest::reads_data()
{
    QTest::addColumn<QList<QByteArray>>("arguments");
    QTest::addColumn<QByteArray>("flashEnd");
    QTest::addColumn<QByteArray>("printed");
    QTest::addColumn<int>("commands");
    QTest::addColumn<QByteArray>("file");
    using Arguments = QList<QByteArray>;
    const QByteArray blank(":020000040000FA\n:00000001FF");
    QTest::newRow("the profile page")
        << Arguments{"-l", "0x9C00", "0xA000", "out.hex"} << QByteArray("0xA000")
        << QByteArray("\nReading from word address 9c00 to a000hex file write success!") << 8
        << blank;
    QTest::newRow("a range that reaches beyond the flash")
        << Arguments{"-l", "0x9F80", "0xFFFFFFFF", "out.hex"} << QByteArray("0xA000")
        << QByteArray("\nReading from word address 9f80 to a000 (truncated)\n"
                      "hex file write success!")
        << 1 << blank;
    QTest::newRow("a range above the flash")
        << Arguments{"-l", "0x9C00", "0xA000", "out.hex"} << QByteArray("0x9C00")
        << QByteArray("\nReading from word address 9c00 to 9c00 (truncated)\n"
                      "hex file write success!")
        << 0 << QByteArray(":00000001FF");
    QTest::newRow("all") << Arguments{"-r", "out.hex"} << QByteArray("0x1000")
                         << QByteArray("\nReading from word address c00 to 1000"
                                       "hex file write success!")
                         << 8 << blank;
}

void VexaTest::reads()
{
    QFETCH(QList<QByteArray>, arguments);
    QFETCH(QByteArray, flashEnd);
    QFETCH(QByteArray, printed);
    QFETCH(int, commands);
    folder->write(QStringLiteral("device.txt"), deviceTable({{3, flashEnd}}));
    const Run run = onCharger(arguments);
    QCOMPARE(run.printed, versionLine + printed);
    QCOMPARE(run.status, 0);
    QCOMPARE(charger->payloads().size(), 1 + commands);
    QTEST(folder->read(QStringLiteral("out.hex")), "file");
}

void VexaTest::readsWhatItWrote()
{
    folder->write(QStringLiteral("in.hex"), smallImage);
    QCOMPARE(onCharger({"-w", "in.hex"}).status, 0);
    folder->write(QStringLiteral("out.hex"), "what was read before");
    QCOMPARE(onCharger({"-l", "0x0C00", "0x0D00", "out.hex"}).status, 0);
    const QByteArray text = folder->read(QStringLiteral("out.hex"));
    QVERIFY(text.startsWith(":020000040000FA\n:101800000102030DFFFFFF00FFFFFF00FFFFFF00"));
    QVERIFY(text.contains("\n:101900005566770088998800FFFFFF00FFFFFF00"));
    QVERIFY(text.endsWith("\n:00000001FF"));
    QCOMPARE(text.count('\n'), 1 + 32);
}

void VexaTest::savesRowsOfAnySize_data()
{
    QTest::addColumn<Record>("record");
    QTest::addColumn<char>("byte");
    QTest::addColumn<int>("lines");
    // Columns 8 and 11 hold row and verify row, 12 and 13 the filler.
    QTest::newRow("the shortest row") << Record{{8, "0x10"}} << '\x11' << 1;
    QTest::newRow("a line begins in the row and ends behind it")
        << Record{{8, "0x20"}, {11, "0x18"}} << '\x11' << 2;
    QTest::newRow("lines closer than their length") << Record{{11, "0x08"}} << '\x11' << 32;
    QTest::newRow("a filler ends behind the row")
        << Record{{8, "0x20"}, {12, "0xFFFFFF"}, {13, "0x03"}} << '\xFF' << 0;
}

void VexaTest::savesRowsOfAnySize()
{
    QFETCH(Record, record);
    QFETCH(char, byte);
    QFETCH(int, lines);
    charger = std::make_unique<LinePeer>(LinePeer::Echo::On, [byte](const QByteArray &payload) {
        return LinePeer::framed(payload.at(0) == 0 ? hex("000200000106")
                                                   : payload + QByteArray(payload.at(1) * 4, byte));
    });
    folder->write(QStringLiteral("device.txt"), deviceTable(record));
    // The range ends two bytes behind the beginning of its one row, at byte 0x1900.
    const Run run = onCharger({"-l", "0x0C80", "0x0C81", "out.hex"});
    QCOMPARE(run.printed, versionLine + "\nReading from word address c80 to c81"
                                        "hex file write success!");
    QCOMPARE(run.status, 0);
    const QByteArray text = folder->read(QStringLiteral("out.hex"));
    QVERIFY(lines == 0 || text.contains("\n:10190000" + QByteArray(32, '1')));
    QCOMPARE(text.count("\n:10"), lines);
}

void VexaTest::outputFileCannotBeOpened()
{
    const Run run = onCharger({"-r", "missing/out.hex"});
    QCOMPARE(run.printed, versionLine + "Could not open output file to write!");
    QCOMPARE(run.status, 1);
}

void VexaTest::outputFileTakesNothing()
{
    const Run run = onCharger({"-l", "0x9C00", "0xA000", "/dev/full"});
    QCOMPARE(run.printed, versionLine + "\nReading from word address 9c00 to a000"
                                        "hex file write failure!");
    QCOMPARE(run.status, 1);
}

void VexaTest::readFails()
{
    charger = std::make_unique<LinePeer>(LinePeer::Echo::On, [](const QByteArray &payload) {
        return LinePeer::framed(payload.at(0) == 0 ? hex("000200000106") : payload);
    });
    const Run run = onCharger({"-l", "0x9C00", "0xA000", "out.hex"});
    QCOMPARE(run.printed, versionLine + "\nReading from word address 9c00 to a000"
                                        "read at word address 39936 fail!");
    QCOMPARE(run.status, 1);
    QCOMPARE(folder->read(QStringLiteral("out.hex")), QByteArray());
}

void VexaTest::verifyFails()
{
    folder->write(QStringLiteral("in.hex"), smallImage);
    const Run run = onCharger({"-v", "in.hex"});
    QVERIFY2(run.printed.startsWith(
                 versionLine + loadedTexts +
                 "\nNow verifying flash from c00 to c84 word address\n" +
                 "\nverify fail at row address c00 with rowsize 10 at byte 0!\n1 != ff"),
             run.printed.constData());
    QCOMPARE(run.status, 1);

    // The EEPROM is not looked at any more.
    folder->write(QStringLiteral("device.txt"), deviceTable(eepromFields()));
    folder->write(QStringLiteral("both.hex"), ":041800000102030DD1\n:020000040002F8\n"
                                              ":050002000203040506E5\n:00000001FF\n");
    const Run both = onCharger({"-v", "both.hex"});
    QVERIFY2(both.printed.endsWith("\n0 != 0"), both.printed.constData());
    QCOMPARE(both.status, 1);
}

void VexaTest::failedWriteLeavesTheEeprom()
{
    charger = std::make_unique<LinePeer>(LinePeer::Echo::On, [](const QByteArray &payload) {
        return LinePeer::framed(payload.at(0) == 0 ? hex("000200000106") : hex("FF"));
    });
    folder->write(QStringLiteral("device.txt"), deviceTable(eepromFields()));
    folder->write(QStringLiteral("both.hex"), ":041800000102030DD1\n:020000040002F8\n"
                                              ":050002000203040506E5\n:00000001FF\n");
    const Run run = onCharger({"-w", "both.hex", "-v", "both.hex"});
    QCOMPARE(run.printed, versionLine + loadedTexts +
                              "\nNow writing from c00 to c02 word address\n"
                              "cmd does not match!255 != 2write fail!");
    QCOMPARE(run.status, 1);
    QCOMPARE(charger->payloads().size(), 2);
}

void VexaTest::eeprom()
{
    folder->write(QStringLiteral("device.txt"), deviceTable(eepromFields()));
    // 02 03 04 05 06 at EEPROM byte 2, and a word of flash
    folder->write(QStringLiteral("in.hex"), ":041800000102030DD1\n:020000040002F8\n"
                                            ":050002000203040506E5\n:00000001FF\n");
    const Run written = onCharger({"-w", "in.hex", "-v", "in.hex"});
    QVERIFY2(written.printed.contains("\nFlash Write success!"
                                      "\nNow writing EEPROM from 20000 to 20007 byte address\n"
                                      "\nEEprom write success!"
                                      "\nNow verifying flash from c00 to c02 word address\n"),
             written.printed.constData());
    QVERIFY2(written.printed.endsWith("\nVerified Flash OK!"
                                      "\nNow verifying eeprom from 0 to 3 word address"
                                      "\nVerified eeprom OK!"),
             written.printed.constData());
    QCOMPARE(written.status, 0);
    // Bytes 0 and 1 are filler, which is not read.
    QCOMPARE(
        charger->payloads().mid(2),
        (QList<QByteArray>{hex("0502000000FFFF0203"), hex("0502020000040506FF"), hex("0104000C00"),
                           hex("0401010000"), hex("0401020000"), hex("0401030000")}));

    const Run read = onCharger({"-r", "out.hex"});
    QCOMPARE(read.status, 0);
    const QByteArray text = folder->read(QStringLiteral("out.hex"));
    QVERIFY2(text.contains("\n:020000040002F8\n:10000000FFFF0203"), text.constData());
    // All 16 bytes that it has, and no more.
    QCOMPARE(charger->payloads().mid(charger->payloads().size() - 5),
             (QList<QByteArray>{hex("0140809F00"), hex("0402000000"), hex("0402020000"),
                                hex("0402040000"), hex("0402060000")}));

    // A range reads the rows of the EEPROM that lie in it: word 0x10001 is image byte 0x20002.
    const int before = charger->payloads().size();
    QCOMPARE(onCharger({"-l", "0x010001", "0x010003", "out.hex"}).status, 0);
    QCOMPARE(charger->payloads().mid(before),
             (QList<QByteArray>{hex("0002"), hex("0402000000"), hex("0402020000")}));
}

void VexaTest::resets()
{
    const Run run = onCharger({"-R"});
    QCOMPARE(run.printed, versionLine + "\nReset send successful!");
    QCOMPARE(run.status, 0);
    QVERIFY(charger->waitForBytes(12).endsWith(hex("555500000004")));
}

void VexaTest::doesItsStepsInOrder()
{
    // Whatever the order of the options, the charger is erased first and reset last.
    const Run run =
        onCharger({"-R", "-l", "0x9C00", "0x9C80", "out.hex", "-E", "0x9C00", "0xA000"});
    QCOMPARE(run.printed, versionLine + "\nMemory from 9c00 to a000 erased successfully!"
                                        "\nReading from word address 9c00 to 9c80"
                                        "hex file write success!"
                                        "\nReset send successful!");
    QCOMPARE(run.status, 0);
    QTRY_COMPARE(charger->payloads(), (QList<QByteArray>{hex("0002"), hex("0301009C00"),
                                                         hex("0140009C00"), hex("0000")}));
}

void VexaTest::showsABootSequenceOfAnUnknownVersion()
{
    charger = std::make_unique<LinePeer>();
    charger->write("CA\x01\x07");
    const Run run = vexa({"-s", charger->path(), "-b"});
    QVERIFY2(run.printed.endsWith("\nCould not find entry for version v0107:"
                                  "Device found on port: 0! Bootloader Version:0107:\n"),
             run.printed.constData());
    QCOMPARE(run.status, 1);
}

void VexaTest::probesPorts()
{
    const Run good = vexa({"-t", charger->path()});
    QCOMPARE(good.printed, "\nOpened port " + charger->path());
    QCOMPARE(good.status, 0);
    const Run bad = vexa({"-t", "/dev/there-is-no-such-port"});
    QCOMPARE(bad.printed, QByteArray("\nCan not open comport /dev/there-is-no-such-port"));
    QCOMPARE(bad.status, 1);
    const Run names = vexa({"-t", "!WINDOWS"});
    QCOMPARE(names.printed, QByteArray("\n0 ports found"));
    QCOMPARE(names.status, 1);

    // Names that another system has for its ports are files of the folder here.
    for (const char *name : {"\\\\.\\COM0", "\\\\.\\COM1", "\\\\.\\COM255", "\\\\.\\COM256"})
        QVERIFY(QFile::link(QString::fromUtf8(charger->path()), QString::fromUtf8(name)));
    const Run two = vexa({"-t", "!WIN"});
    QCOMPARE(two.printed, QByteArray("\nOpened port \\\\.\\COM1\nOpened port \\\\.\\COM255"
                                     "\n2 ports found"));
    QCOMPARE(two.status, 0);
}

void VexaTest::capturesTheLine()
{
    charger = std::make_unique<LinePeer>();
    QProcess process;
    process.start(QStringLiteral(VEXA), {QStringLiteral("-s"), QString::fromUtf8(charger->path()),
                                         QStringLiteral("-x"), QStringLiteral("line.log")});
    // The port is open as soon as it says so.
    QByteArray printed;
    while (!printed.contains("Copying to line.log")) {
        QVERIFY(process.waitForReadyRead());
        printed += process.readAllStandardOutput();
    }
    charger->write(QByteArray("\x00\x04\n\xFF", 4));
    QTRY_COMPARE(folder->read(QStringLiteral("line.log")), QByteArray("\x00\x04\n\xFF", 4));
    QCOMPARE(process.state(), QProcess::Running);
    process.kill();
    QVERIFY(process.waitForFinished());
}

void VexaTest::throughput()
{
    folder->write(QStringLiteral("device.txt"), deviceTable({{3, "0x1000"}}));
    const Run run = onCharger({"-g", "2"});
    QVERIFY2(run.printed.contains("\nPass 1 of 2"), run.printed.constData());
    QVERIFY(run.printed.contains("\nPass 2 of 2"));
    QCOMPARE(run.printed.count("Verified Flash OK!"), 2);
    QCOMPARE(run.status, 0);
    // Each pass erases first: writing alone can only clear bits.
    QCOMPARE(charger->payloads().count(hex("0301000C00")), 2);
    QList<QByteArray> rows;
    for (const QByteArray &payload : charger->payloads()) {
        if (payload.at(0) == 2)
            rows.append(payload.mid(5));
    }
    QCOMPARE(rows.size(), 16);
    QCOMPARE(QSet<QByteArray>(rows.begin(), rows.end()).size(), 16);
    // The chip has no fourth byte of a word, so none can be read back.
    for (const QByteArray &row : rows) {
        for (int i = 3; i < row.size(); i += 4)
            QCOMPARE(int(row.at(i)), 0);
    }
}

QTEST_GUILESS_MAIN(VexaTest)
#include "tst_vexa.moc"
