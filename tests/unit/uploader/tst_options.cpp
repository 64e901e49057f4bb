#include "support/capturedoutput.h"
#include "uploader/options.h"

#include <QtTest>

#include <vector>

using namespace Uploader;

namespace
{
ParsedOptions parsed(const QList<QByteArray> &arguments)
{
    std::vector<const char *> argv{"vexa.bin"};
    for (const QByteArray &argument : arguments)
        argv.push_back(argument.constData());
    return parseOptions(int(argv.size()), argv.data());
}

/// Arguments in one text, at each blank.
QList<QByteArray> split(const char *text)
{
    return QByteArray(text).split(' ');
}

Options optionsOf(const char *text)
{
    const ParsedOptions result = parsed(split(text));
    if (!result.options)
        qFatal("%s: %s", text, result.complaint.c_str());
    return *result.options;
}

} // namespace

class OptionsTest : public QObject
{
    Q_OBJECT

private slots:
    void letters_data();
    void letters();
    void nothingElseIsSet();
    void connection();
    void version();
    void erasing();
    void writing();
    void reading();
    void trials();
    void flashInOne();
    void lastFileCounts();
    void fileNamesLoseTheirDashes();
    void addresses_data();
    void addresses();
    void argumentsOfTheSuite_data();
    void argumentsOfTheSuite();
    void complaints_data();
    void complaints();
    void emptyFileNameIsSaidTwice();
    void unknownLetter();
    void longArguments();
};

void OptionsTest::letters_data()
{
    QTest::addColumn<QByteArray>("option");
    QTest::newRow("a dash") << QByteArray("-s");
    QTest::newRow("two dashes") << QByteArray("--s");
    QTest::newRow("no dash") << QByteArray("s");
    QTest::newRow("blanks and dashes") << QByteArray(" - -s");
    QTest::newRow("only the first letter counts") << QByteArray("-serial");
}

void OptionsTest::letters()
{
    QFETCH(QByteArray, option);
    const ParsedOptions result = parsed({option, "/dev/ttyUSB0"});
    QVERIFY(result.options);
    QCOMPARE(result.options->port, std::string("/dev/ttyUSB0"));
    QCOMPARE(result.complaint, std::string());
}

void OptionsTest::nothingElseIsSet()
{
    const Options options = optionsOf("-s p");
    QCOMPARE(options.maxBaud, 10000000u);
    QVERIFY(!options.halfDuplex && !options.askVersion && !options.assumedVersion);
    QVERIFY(!options.eraseAll && !options.eraseRange && !options.verify && !options.reset);
    QVERIFY(!options.writes() && !options.reads());
    QVERIFY(!options.waitForBoot && !options.testPasses);
    QVERIFY(options.inputFile.empty() && options.outputFile.empty());
    QVERIFY(options.probedPort.empty() && options.captureFile.empty());
}

void OptionsTest::connection()
{
    const Options options = optionsOf("-s p -h -M 19200");
    QVERIFY(options.halfDuplex);
    QCOMPARE(options.maxBaud, 19200u);
}

void OptionsTest::version()
{
    QVERIFY(optionsOf("-s p -V").askVersion);
    QCOMPARE(int(*optionsOf("-s p -B 02F0").assumedVersion), 0x02F0);
    QCOMPARE(int(*optionsOf("-s p -B abcd").assumedVersion), 0xABCD);
    QVERIFY(optionsOf("-s p -b").waitForBoot);
}

void OptionsTest::erasing()
{
    QVERIFY(optionsOf("-s p -e").eraseAll);
    const Options options = optionsOf("-s p -E 0x9C00 0xA000");
    QVERIFY(!options.eraseAll);
    QCOMPARE(options.eraseRange->low, 0x9C00u);
    QCOMPARE(options.eraseRange->high, 0xA000u);
    // The lower address need not come first.
    QCOMPARE(optionsOf("-s p -E 0xA000 0x9C00").eraseRange->low, 0xA000u);
}

void OptionsTest::writing()
{
    const Options all = optionsOf("-s p -w a.hex -v a.hex -R");
    QVERIFY(all.writeAll && all.writes() && all.verify && all.reset && !all.writeRange);
    QCOMPARE(all.inputFile, std::string("a.hex"));

    const Options range = optionsOf("-s p -W 0x1000 0x1400 a.hex");
    QVERIFY(!range.writeAll && range.writes());
    QCOMPARE(range.writeRange->low, 0x1000u);
    QCOMPARE(range.writeRange->high, 0x1400u);
    QCOMPARE(range.inputFile, std::string("a.hex"));
}

void OptionsTest::reading()
{
    const Options all = optionsOf("-s p -r a.hex");
    QVERIFY(all.readAll && all.reads() && !all.readRange);
    QCOMPARE(all.outputFile, std::string("a.hex"));

    const Options range = optionsOf("-s p -l 4096 5120 a.hex");
    QVERIFY(!range.readAll && range.reads());
    QCOMPARE(range.readRange->low, 4096u);
    QCOMPARE(range.readRange->high, 5120u);
    QCOMPARE(range.outputFile, std::string("a.hex"));
}

void OptionsTest::trials()
{
    QVERIFY(*optionsOf("-s p -g 3").testPasses == 3);
    QCOMPARE(optionsOf("-t /dev/ttyUSB1").probedPort, std::string("/dev/ttyUSB1"));
    QCOMPARE(optionsOf("-s p -x log").captureFile, std::string("log"));
}

void OptionsTest::flashInOne()
{
    const Options options = optionsOf("-s p -f a.hex");
    QVERIFY(options.eraseAll && options.writeAll && options.verify && options.reset);
    QCOMPARE(options.inputFile, std::string("a.hex"));
}

void OptionsTest::lastFileCounts()
{
    QCOMPARE(optionsOf("-s p -w a.hex -v b.hex").inputFile, std::string("b.hex"));
    QCOMPARE(optionsOf("-s p -v b.hex -w a.hex").inputFile, std::string("a.hex"));
    QCOMPARE(optionsOf("-s p -W 0 1 a.hex -f c.hex").inputFile, std::string("c.hex"));
}

void OptionsTest::fileNamesLoseTheirDashes()
{
    QCOMPARE(parsed({"-s", "p", "-w", " --a -b.hex"}).options->inputFile, std::string("a -b.hex"));
}

void OptionsTest::addresses_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("good");
    QTest::addColumn<quint32>("value");
    QTest::newRow("hexadecimal") << QByteArray("0x9C00") << true << 0x9C00u;
    QTest::newRow("lower case") << QByteArray("0x9c00") << true << 0x9C00u;
    QTest::newRow("decimal") << QByteArray("4096") << true << 4096u;
    QTest::newRow("zero") << QByteArray("0") << true << 0u;
    QTest::newRow("highest") << QByteArray("0xFFFFFFFF") << true << 0xFFFFFFFFu;
    QTest::newRow("leading zeros") << QByteArray("0x0000000000009C00") << true << 0x9C00u;
    QTest::newRow("beyond 32 bits") << QByteArray("0x0100000000") << false << 0u;
    QTest::newRow("decimal beyond 32 bits") << QByteArray("4294967296") << false << 0u;
    QTest::newRow("more than eight pairs") << QByteArray("0x000000000000009C00") << false << 0u;
    // Read as pairs, this would be another address.
    QTest::newRow("an odd number of digits") << QByteArray("0x9C0") << false << 0u;
    QTest::newRow("a rest behind it") << QByteArray("0x9C00h") << false << 0u;
    QTest::newRow("hexadecimal without 0x") << QByteArray("9C00") << false << 0u;
    QTest::newRow("no number") << QByteArray("file.hex") << false << 0u;
    QTest::newRow("0x alone") << QByteArray("0x") << false << 0u;
    QTest::newRow("empty") << QByteArray() << false << 0u;
    QTest::newRow("negative") << QByteArray("-1") << false << 0u;
}

void OptionsTest::addresses()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, good);
    const ParsedOptions low = parsed({"-s", "p", "-E", text, "1"});
    const ParsedOptions high = parsed({"-s", "p", "-E", "1", text});
    QCOMPARE(bool(low.options), good);
    QCOMPARE(bool(high.options), good);
    if (good) {
        QTEST(quint32(low.options->eraseRange->low), "value");
        QTEST(quint32(high.options->eraseRange->high), "value");
    }
}

void OptionsTest::argumentsOfTheSuite_data()
{
    QTest::addColumn<QByteArray>("arguments");
    QTest::newRow("erase") << QByteArray("-s /dev/ttyUSB0 -h -V -E 0x9C00 0xA000");
    QTest::newRow("write") << QByteArray("-s /dev/ttyUSB0 -h -V -w fs_to_write.hex");
    QTest::newRow("read") << QByteArray("-s /dev/ttyUSB0 -h -V -l 0x9C00 0xA000 fs_to_read.hex");
    QTest::newRow("flash") << QByteArray("-s /dev/ttyUSB0 -h -V -e -w fw.hex -v fw.hex");
}

void OptionsTest::argumentsOfTheSuite()
{
    QFETCH(QByteArray, arguments);
    const Options options = optionsOf(arguments.constData());
    QCOMPARE(options.port, std::string("/dev/ttyUSB0"));
    QVERIFY(options.halfDuplex && options.askVersion);
}

void OptionsTest::complaints_data()
{
    QTest::addColumn<QByteArray>("arguments");
    QTest::addColumn<QByteArray>("complaint");

    const QByteArray port("\nPlease enter a valid port name!");
    const QByteArray range("\nPlease enter a valid word address range, i.e. 0x1000 0x1400!");
    const QByteArray input("\nPlease enter a valid input filename!");
    const QByteArray output("\nPlease enter a valid output filename!");
    const QByteArray flash("\nPlease specify a filename to flash!");
    const QByteArray baud("\nPlease enter a decimal maximum baud rate!");
    const QByteArray version("\nPlease enter a valid bootloader version, i.e. 02F0!");
    const QByteArray passes("\nPlease enter a decimal number of passes for test!");
    const QByteArray noPort(
        "\nPlease specify a serial port, with \"-s x\" where x is the port name "
        "(i.e. \\\\.\\COM1, /dev/ttyUSB0)");
    const QByteArray readWrite(
        "\nPlease choose to read or write, cannot do both in same operation");
    const QByteArray readVerify("\nPlease choose to read or verify, will not do both");
    const QByteArray twoVersions("\nPlease specify a bootloader version (-B) or use of the version "
                                 "command (-V), but not both.");
    const QByteArray test("\nCannot perform bootloader operation when performing throughput test.");

    QTest::newRow("port missing") << QByteArray("-s") << port;
    QTest::newRow("port to try missing") << QByteArray("-t") << port;
    QTest::newRow("no port") << QByteArray("-h -V") << noPort;
    for (const char *option : {"-E", "-l", "-W"}) {
        QTest::addRow("%s: no address", option) << QByteArray("-s p ") + option << range;
        QTest::addRow("%s: one address", option)
            << QByteArray("-s p ") + option + " 0x1000" << range;
        QTest::addRow("%s: no number", option)
            << QByteArray("-s p ") + option + " 0x1000 a.hex" << range;
    }
    QTest::newRow("read range upside down") << QByteArray("-s p -l 0x1400 0x1000 a.hex") << range;
    QTest::newRow("write range upside down") << QByteArray("-s p -W 0x1400 0x1000 a.hex") << range;
    QTest::newRow("-l without file") << QByteArray("-s p -l 0x1000 0x1400") << output;
    QTest::newRow("-W without file") << QByteArray("-s p -W 0x1000 0x1400") << input;
    QTest::newRow("-r without file") << QByteArray("-s p -r") << output;
    QTest::newRow("-x without file") << QByteArray("-s p -x") << output;
    QTest::newRow("-w without file") << QByteArray("-s p -w") << input;
    QTest::newRow("-v without file") << QByteArray("-s p -v") << input;
    QTest::newRow("-f without file") << QByteArray("-s p -f") << flash;
    QTest::newRow("-M without rate") << QByteArray("-s p -M") << baud;
    QTest::newRow("-M hexadecimal") << QByteArray("-s p -M 0x2580") << baud;
    QTest::newRow("-M with a rest") << QByteArray("-s p -M 9600bd") << baud;
    QTest::newRow("-M 0") << QByteArray("-s p -M 0") << baud;
    QTest::newRow("-M far too high") << QByteArray("-s p -M 99999999999999999999") << baud;
    QTest::newRow("-M above the numbers of a rate") << QByteArray("-s p -M 2147483648") << baud;
    QTest::newRow("-B without version") << QByteArray("-s p -B") << version;
    QTest::newRow("-B no number") << QByteArray("-s p -B 02G0") << version;
    QTest::newRow("-B too short") << QByteArray("-s p -B 2F0") << version;
    QTest::newRow("-B too long") << QByteArray("-s p -B 0002F0") << version;
    QTest::newRow("-B with 0x") << QByteArray("-s p -B 0x02F0") << version;
    QTest::newRow("-g 0") << QByteArray("-s p -g 0") << passes;
    QTest::newRow("-g without number") << QByteArray("-s p -g") << passes;
    QTest::newRow("-g no number") << QByteArray("-s p -g x") << passes;
    QTest::newRow("read and write") << QByteArray("-s p -r a.hex -w b.hex") << readWrite;
    QTest::newRow("read and write, no port") << QByteArray("-r a.hex -w b.hex") << readWrite;
    QTest::newRow("read a range and write a range")
        << QByteArray("-s p -l 0 1 a.hex -W 0 1 b.hex") << readWrite;
    QTest::newRow("read and flash") << QByteArray("-s p -r a.hex -f b.hex") << readWrite;
    QTest::newRow("read and verify") << QByteArray("-s p -r a.hex -v b.hex") << readVerify;
    QTest::newRow("read a range and verify")
        << QByteArray("-s p -l 0 1 a.hex -v b.hex") << readVerify;
    QTest::newRow("two versions") << QByteArray("-s p -V -B 0106") << twoVersions;
    for (const char *option :
         {"-r f", "-l 0 1 f", "-E 0 1", "-e", "-w f", "-W 0 1 f", "-v f", "-f f", "-R"})
        QTest::addRow("test with %s", option) << QByteArray("-s p -g 1 ") + option << test;
}

void OptionsTest::complaints()
{
    QFETCH(QByteArray, arguments);
    QFETCH(QByteArray, complaint);
    const ParsedOptions result = parsed(arguments.split(' '));
    QVERIFY(!result.options);
    QCOMPARE(QByteArray::fromStdString(result.complaint), complaint);
}

void OptionsTest::emptyFileNameIsSaidTwice()
{
    std::string complaint;
    QCOMPARE(printedBy([&] {
                 complaint = parsed({"-s", "p", "-w", "--"}).complaint;
             }),
             QByteArray("No file name specified!"));
    QCOMPARE(complaint, std::string("\nPlease enter a valid input filename!"));
}

void OptionsTest::unknownLetter()
{
    for (const char *argument : {"-q", "S", "--?", "-1"}) {
        const ParsedOptions result = parsed({"-s", "p", argument});
        QVERIFY(!result.options);
        QVERIFY(result.complaint.compare(0, 18, "Incorrect usage:\n ") == 0);
        QVERIFY(result.complaint.find("-s [port]") != std::string::npos);
        // Its explanations stand below each other.
        QList<QByteArray> lines = QByteArray::fromStdString(result.complaint).split('\n');
        QCOMPARE(lines.takeFirst(), QByteArray("Incorrect usage:"));
        QCOMPARE(lines.takeLast(), QByteArray());
        for (const QByteArray &line : lines)
            QVERIFY2(line.size() > 24 && line.at(23) == ' ' && line.at(24) != ' ',
                     line.constData());
    }
    for (const char *argument : {"", "-", "- -"})
        QCOMPARE(parsed({"-s", "p", argument}).complaint, std::string("Incorrect usage!"));
}

void OptionsTest::longArguments()
{
    const QByteArray text(100000, 'x');
    QCOMPARE(parsed({"-s", text, "-w", text}).options->inputFile.size(), std::size_t(100000));
    QVERIFY(!parsed({text}).options || parsed({text}).options->captureFile.empty());
    QVERIFY(!parsed({"-s", "p", "-M", QByteArray(100000, '9')}).options);
    QVERIFY(!parsed({"-s", "p", "-E", "0x" + QByteArray(100000, '1'), "1"}).options);
    QVERIFY(!parsed({"-s", "p", "-B", text}).options);
}

QTEST_GUILESS_MAIN(OptionsTest)
#include "tst_options.moc"
