#include "textfile.h"

#include "IntelHexFile/hexfile.h"
#include "support/capturedoutput.h"

#include <QtTest>

#include <algorithm>
#include <ctime>
#include <numeric>
#include <vector>

using namespace IntelHexFile;

namespace
{
constexpr std::uint32_t blankWord = 0xFFFFFF00;

/// A record of the given bytes with its checksum, worked out apart from the code under test.
QByteArray record(const QByteArray &bytes)
{
    int sum = 0;
    for (const char byte : bytes)
        sum += static_cast<unsigned char>(byte);
    const QByteArray whole = bytes + static_cast<char>(-sum & 0xFF);
    return ':' + whole.toHex().toUpper() + '\n';
}

QByteArray dataRecord(int address, const QByteArray &data)
{
    QByteArray bytes;
    bytes.append(static_cast<char>(data.size()));
    bytes.append(static_cast<char>(address >> 8));
    bytes.append(static_cast<char>(address));
    bytes.append('\0');
    return record(bytes + data);
}

QByteArray upperRecord(int upper)
{
    QByteArray bytes = QByteArray::fromHex("02000004");
    bytes.append(static_cast<char>(upper >> 8));
    bytes.append(static_cast<char>(upper));
    return record(bytes);
}

const QByteArray endOfFile = ":00000001FF\n";

/// A load into fresh images, with all that comes out of it.
struct Loaded {
    explicit Loaded(const QByteArray &text, std::uint32_t eepromStart = 0,
                    std::uint32_t eepromEnd = 0)
        : flash(flashImageSize + 1, 0), eeprom(eepromImageSize + 1, 0)
    {
        flash.back() = eeprom.back() = guard;
        TextFile file(text);
        printed = printedBy([&] {
            top = loadhexfile(flash.data(), eeprom.data(), file, &eepromSeen, &eepromTop,
                              eepromStart, eepromEnd);
        });
        if (flash.back() != guard || eeprom.back() != guard)
            qFatal("a byte was stored behind the images");
    }

    QByteArray flashAt(std::size_t address, int count) const
    {
        return QByteArray(reinterpret_cast<const char *>(flash.data()) + address, count);
    }

    static constexpr unsigned char guard = 0xA5;
    std::vector<unsigned char> flash;
    std::vector<unsigned char> eeprom;
    char eepromSeen = 0;
    std::uint32_t eepromTop = 0;
    std::uint32_t top = 0;
    QByteArray printed;
};

/// rows of blank words
std::vector<unsigned char> blankImage(std::size_t size)
{
    std::vector<unsigned char> image(size, 0xFF);
    for (std::size_t i = 3; i < size; i += 4)
        image[i] = 0;
    return image;
}

QByteArray written(const std::vector<unsigned char> &image, std::uint32_t size, std::uint32_t base,
                   std::uint32_t rowSize = 256, std::uint32_t lineStep = 16, int *result = nullptr)
{
    TextFile file;
    const int status =
        makenewhexfile(image.data(), size, file, blankWord, 4, rowSize, lineStep, base);
    if (result)
        *result = status;
    return file.content();
}

} // namespace

class HexFileTest : public QObject
{
    Q_OBJECT

private slots:
    void readsOneRecord();
    void readsNoRecord_data();
    void readsNoRecord();
    void tellsTheEndRecordApart();

    void loads_data();
    void loads();
    void prints_data();
    void prints();
    void dataAtTheUpperAddress();
    void topIsTheHighestEnd();
    void everyTruncationFails();
    void everyFlippedDigitFails();
    void dataAboveTheImage();
    void dataAcrossTheTopOfTheImage();
    void theLastAddressOfAll();
    void eepromRange();
    void eepromRangeExceeded();
    void eepromAcrossItsTop();
    void loadsAFullImageQuickly();

    void writesOneRow();
    void skipsBlankRows();
    void upperAddressChanges();
    void upperAddressChangesWithItsDivisor();
    void writesTheBegunRow();
    void lineStepSmallerThanALine();
    void refusesAddressesWithoutUpperBytes_data();
    void refusesAddressesWithoutUpperBytes();
    void refusesSizesOfZero();
    void stopsBeyondTheImage_data();
    void stopsBeyondTheImage();
    void readsWhatItWrote_data();
    void readsWhatItWrote();
};

void HexFileTest::readsOneRecord()
{
    TextFile file("; a comment\r\n:0312340001aBfF0C\r\n");
    unsigned char bytes[longestRecord] = {};
    std::uint32_t address = 0;
    std::uint32_t type = 9;
    QCOMPARE(getfileline(bytes, &address, &type, file), 3u);
    QCOMPARE(address, 0x1234u);
    QCOMPARE(type, 0u);
    QCOMPARE(QByteArray(reinterpret_cast<char *>(bytes), 3), QByteArray("\x01\xAB\xFF", 3));
    QCOMPARE(getfileline(bytes, &address, &type, file), 0u);
    QCOMPARE(type, noRecord);
}

void HexFileTest::readsNoRecord_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no colon") << QByteArray("00000001FF");
    QTest::newRow("a colon alone") << QByteArray(":");
    QTest::newRow("no digit in the length") << QByteArray(":0G000001FF");
    QTest::newRow("no digit in the data") << QByteArray(":01000000XX00");
    QTest::newRow("no digit in the checksum") << QByteArray(":00000001F-");
    QTest::newRow("line ends early") << QByteArray(":100000000102\n:00000001FF");
    QTest::newRow("no checksum") << QByteArray(":0100000001");
}

void HexFileTest::readsNoRecord()
{
    QFETCH(QByteArray, text);
    TextFile file(text);
    unsigned char bytes[longestRecord];
    std::uint32_t address = 0;
    std::uint32_t type = 0;
    const QByteArray printed =
        printedBy([&] { QCOMPARE(getfileline(bytes, &address, &type, file), 0u); });
    QCOMPARE(type, noRecord);
    QCOMPARE(printed, QByteArray());
}

void HexFileTest::tellsTheEndRecordApart()
{
    TextFile file(":00000001FF");
    unsigned char bytes[longestRecord];
    std::uint32_t address = 7;
    std::uint32_t type = 0;
    QCOMPARE(getfileline(bytes, &address, &type, file), 0u);
    QCOMPARE(type, 1u);
    QCOMPARE(address, 0u);
}

void HexFileTest::loads_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<quint32>("top");
    QTest::addColumn<QByteArray>("start");
    const QByteArray four("\x01\x02\x03\x04", 4);
    QTest::newRow("plain") << dataRecord(0, four) + endOfFile << 4u << four;
    QTest::newRow("lower case") << dataRecord(0, QByteArray("\xAB\xCD\xEF\xFF", 4)).toLower() +
                                       endOfFile
                                << 4u << QByteArray("\xAB\xCD\xEF\xFF", 4);
    QTest::newRow("no line ends") << dataRecord(0, four).trimmed() + endOfFile.trimmed() << 4u
                                  << four;
    QTest::newRow("comments between and behind")
        << "; one\n" + dataRecord(0, four) + "# two\r\n" + endOfFile + "; three :00 \n"
        << 4u << four;
    QTest::newRow("other types are passed over")
        << record(QByteArray::fromHex("0400000512345678")) + dataRecord(0, four) +
               record(QByteArray::fromHex("0400000300001234")) + endOfFile
        << 4u << four;
    QTest::newRow("a record without data is passed over")
        << dataRecord(0x2000, QByteArray()) + dataRecord(0, four) + endOfFile << 4u << four;
    QTest::newRow("an upper address of one byte is passed over")
        << record(QByteArray::fromHex("0100000401")) + dataRecord(0, four) + endOfFile << 4u
        << four;
    QTest::newRow("what stands behind the end is not read")
        << dataRecord(0, four) + endOfFile + dataRecord(0, QByteArray(4, '\x55')) << 4u << four;
    QTest::newRow("an end record with data ends too")
        << dataRecord(0, four) + record(QByteArray::fromHex("0100000155")) << 4u << four;
    QTest::newRow("later records replace earlier ones")
        << dataRecord(0, QByteArray(4, '\x55')) + dataRecord(0, four) + endOfFile << 4u << four;
}

void HexFileTest::loads()
{
    QFETCH(QByteArray, text);
    const Loaded loaded(text);
    QCOMPARE(loaded.printed, QByteArray());
    QTEST(quint32(loaded.top), "top");
    QTEST(loaded.flashAt(0, 4), "start");
    QCOMPARE(loaded.flashAt(4, 4), QByteArray(4, '\0'));
    QCOMPARE(int(loaded.eepromSeen), 0);
}

void HexFileTest::prints_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("printed");
    QTest::newRow("empty file") << QByteArray() << QByteArray("Failed to open file!");
    QTest::newRow("no hex file") << QByteArray("<html>") << QByteArray("Failed to open file!");
    QTest::newRow("first checksum wrong")
        << QByteArray(":0112340001B7\n")
        << QByteArray("input file checksum b7 != b8 on line with address 1234\n"
                      "Failed to open file!");
    QTest::newRow("later checksum wrong")
        << QByteArray(":0112340001B8\n:0100000001FF\n:00000001FF\n")
        << QByteArray("input file checksum ff != fe on line with address 0\n"
                      "\nNo end of file reached?");
    QTest::newRow("no end record")
        << QByteArray(":0112340001B8\n") << QByteArray("\nNo end of file reached?");
    QTest::newRow("only the end record") << endOfFile << QByteArray();
}

void HexFileTest::prints()
{
    QFETCH(QByteArray, text);
    const Loaded loaded(text);
    QTEST(loaded.printed, "printed");
    QCOMPARE(loaded.top, 0u);
}

void HexFileTest::dataAtTheUpperAddress()
{
    const Loaded loaded(":020000040001F9\n:04380000FD000300C4\n:00000001FF\n");
    QCOMPARE(loaded.printed, QByteArray());
    QCOMPARE(loaded.top, 0x13804u);
    QCOMPARE(loaded.flashAt(0x13800, 4), QByteArray("\xFD\0\x03\0", 4));
    QCOMPARE(loaded.flashAt(0x3800, 4), QByteArray(4, '\0'));
}

void HexFileTest::topIsTheHighestEnd()
{
    const QByteArray data(2, '\x11');
    const Loaded loaded(upperRecord(1) + dataRecord(0x10, data) + upperRecord(0) +
                        dataRecord(0x8000, data) + endOfFile);
    QCOMPARE(loaded.top, 0x10012u);
}

void HexFileTest::everyTruncationFails()
{
    const QByteArray whole =
        upperRecord(0) + dataRecord(0, QByteArray(16, '\x11')) + endOfFile.trimmed();
    for (int length = 0; length < whole.size(); ++length) {
        const Loaded loaded(whole.left(length));
        QVERIFY2(loaded.top == 0, qPrintable(QString::number(length)));
        QVERIFY(!loaded.printed.isEmpty());
    }
    QCOMPARE(Loaded(whole).top, 16u);
}

void HexFileTest::everyFlippedDigitFails()
{
    const QByteArray whole = dataRecord(0x0120, QByteArray("\x12\x34\x56", 3)) + endOfFile;
    for (int at = 0; at < whole.size(); ++at) {
        if (whole.at(at) == '\n')
            continue;
        QByteArray broken = whole;
        broken[at] = whole.at(at) == '7' ? '8' : '7';
        QVERIFY2(Loaded(broken).top == 0, broken.constData());
    }
}

void HexFileTest::dataAboveTheImage()
{
    const Loaded loaded(dataRecord(0, QByteArray(1, '\x11')) + upperRecord(4) +
                        dataRecord(0x10, QByteArray(16, '\x22')) + endOfFile);
    QCOMPARE(loaded.printed, QByteArray("FLASH data range exceeded, 40010"));
    QCOMPARE(loaded.top, 0x40020u);
    QCOMPARE(loaded.flashAt(0, 1), QByteArray(1, '\x11'));
}

void HexFileTest::dataAcrossTheTopOfTheImage()
{
    const Loaded loaded(upperRecord(2) + dataRecord(0xFFF8, QByteArray(16, '\x22')) + endOfFile);
    QCOMPARE(loaded.printed, QByteArray("FLASH data range exceeded, 30001"));
    QCOMPARE(loaded.flashAt(0x2FFF8, 8), QByteArray(8, '\x22'));
}

void HexFileTest::theLastAddressOfAll()
{
    const Loaded loaded(upperRecord(0xFFFF) + dataRecord(0xFFF8, QByteArray(16, '\x22')) +
                        endOfFile);
    QCOMPARE(loaded.printed, QByteArray("FLASH data range exceeded, fffffff8"));
    QCOMPARE(loaded.top, 0xFFFFFFFFu);
    QCOMPARE(loaded.flashAt(0, 16), QByteArray(16, '\0'));
}

void HexFileTest::eepromRange()
{
    const Loaded loaded(dataRecord(0xFFE, QByteArray("\x01\x02\x03\x04", 4)) +
                            dataRecord(0x1010, QByteArray("\x05", 1)) + endOfFile,
                        0x1000, 0x1100);
    QCOMPARE(loaded.printed, QByteArray());
    QCOMPARE(loaded.top, 0x1000u);
    QCOMPARE(loaded.flashAt(0xFFE, 4), QByteArray("\x01\x02\0\0", 4));
    QCOMPARE(int(loaded.eepromSeen), 1);
    QCOMPARE(loaded.eepromTop, 0x11u);
    QCOMPARE(int(loaded.eeprom[0]), 3);
    QCOMPARE(int(loaded.eeprom[1]), 4);
    QCOMPARE(int(loaded.eeprom[0x10]), 5);
}

void HexFileTest::eepromRangeExceeded()
{
    const Loaded loaded(upperRecord(1) + dataRecord(0x3000, QByteArray(4, '\x11')) + endOfFile,
                        0x10000, 0x20000);
    QCOMPARE(loaded.printed, QByteArray("\nEEPROM data range exceeded, 13000, lowaddress == 3000"));
    QCOMPARE(loaded.eepromTop, 4096u);
    QCOMPARE(loaded.top, 0u);
}

void HexFileTest::eepromAcrossItsTop()
{
    const Loaded loaded(upperRecord(1) + dataRecord(0x0FFE, QByteArray(8, '\x11')) + endOfFile,
                        0x10000, 0x20000);
    QCOMPARE(loaded.printed, QByteArray("\nEEPROM data range exceeded, 11001, lowaddress == ffe"));
    QCOMPARE(loaded.eepromTop, 4096u);
    QCOMPARE(int(loaded.eeprom[0xFFF]), 0x11);
}

void HexFileTest::loadsAFullImageQuickly()
{
    QByteArray text;
    for (int upper = 0; upper < 3; ++upper) {
        text += upperRecord(upper);
        for (int address = 0; address < 0x10000; address += 16)
            text += dataRecord(address, QByteArray(16, static_cast<char>(address / 16)));
    }
    // Of the processor alone, whatever else the computer does.
    const std::clock_t before = std::clock();
    const Loaded loaded(text + endOfFile);
    // Far above what it takes, far below what a lock for each character would make of it.
    QVERIFY(std::clock() - before < CLOCKS_PER_SEC / 2);
    QCOMPARE(loaded.top, flashImageSize);
    QCOMPARE(loaded.flashAt(0x2FFF0, 16), QByteArray(16, '\xFF'));
}

void HexFileTest::writesOneRow()
{
    std::vector<unsigned char> image = blankImage(512);
    image[0] = 0xFD;
    image[1] = 0x00;
    image[2] = 0x03;
    int result = -1;
    const QList<QByteArray> lines = written(image, 4, 0x13800, 256, 16, &result).split('\n');
    QCOMPARE(result, 0);
    QCOMPARE(lines.size(), 1 + 16 + 1);
    QCOMPARE(lines.at(0), QByteArray(":020000040001F9"));
    QCOMPARE(lines.at(1), QByteArray(":10380000FD000300FFFFFF00FFFFFF00FFFFFF00C1"));
    QCOMPARE(lines.at(2), QByteArray(":10381000FFFFFF00FFFFFF00FFFFFF00FFFFFF00B4"));
    QCOMPARE(lines.at(16), QByteArray(":1038F000FFFFFF00FFFFFF00FFFFFF00FFFFFF00D4"));
    QCOMPARE(lines.at(17), QByteArray());
}

void HexFileTest::skipsBlankRows()
{
    QCOMPARE(written(blankImage(1024), 768, 0), QByteArray(":020000040000FA\n"));

    std::vector<unsigned char> image = blankImage(1024);
    image[512] = 0x00;
    const QByteArray text = written(image, 768, 0);
    QCOMPARE(text.count('\n'), 1 + 16);
    QVERIFY(text.startsWith(":020000040000FA\n:10020000"));
}

void HexFileTest::upperAddressChanges()
{
    std::vector<unsigned char> image = blankImage(0x20200);
    for (const std::size_t at : {0xFF00, 0x10000, 0x10100, 0x20000})
        image[at] = 0x12;
    const QByteArray text = written(image, 0x20100, 0);
    QCOMPARE(text.count(":02000004"), 3);
    QVERIFY(text.indexOf(":020000040000FA\n:10FF0000") == 0);
    QVERIFY(text.contains("\n:020000040001F9\n:10000000"));
    QVERIFY(text.contains("\n:10010000"));
    QVERIFY(text.contains("\n:020000040002F8\n:10000000"));
}

void HexFileTest::upperAddressChangesWithItsDivisor()
{
    // The first row begins at 65279, the second at 65535.
    std::vector<unsigned char> image = blankImage(0x300);
    image[0] = image[0x100] = 0x12;
    const QByteArray text = written(image, 0x200, 65279);
    QVERIFY(text.startsWith(":020000040000FA\n:10FEFF00"));
    QVERIFY(text.contains("\n:020000040001F9\n:10FFFF00"));
    QCOMPARE(text.count(":02000004"), 2);
}

void HexFileTest::writesTheBegunRow()
{
    std::vector<unsigned char> image = blankImage(512);
    image[256] = 0x01;
    QCOMPARE(written(image, 256, 0).count('\n'), 1);
    QCOMPARE(written(image, 257, 0).count('\n'), 1 + 16);
}

void HexFileTest::lineStepSmallerThanALine()
{
    std::vector<unsigned char> image = blankImage(64);
    std::iota(image.begin(), image.begin() + 32, static_cast<unsigned char>(0));
    const QList<QByteArray> lines = written(image, 33, 0, 32, 8).split('\n');
    QCOMPARE(lines.size(), 1 + 4 + 1);
    QVERIFY(lines.at(2).startsWith(":1000080008090A0B0C0D0E0F1011121314151617"));
    QVERIFY(lines.at(4).startsWith(":1000180018191A1B1C1D1E1FFFFFFF00FFFFFF00"));
}

void HexFileTest::refusesAddressesWithoutUpperBytes_data()
{
    QTest::addColumn<quint32>("base");
    QTest::addColumn<int>("result");
    QTest::addColumn<QByteArray>("printed");
    QTest::newRow("highest") << 0xFFFEFFFFu << 0 << QByteArray();
    QTest::newRow("too high") << 0xFFFF0000u << 1
                              << QByteArray("could not read high address high byte?");
}

void HexFileTest::refusesAddressesWithoutUpperBytes()
{
    QFETCH(quint32, base);
    int result = -1;
    QTEST(printedBy([&] { written(blankImage(512), 256, base, 256, 16, &result); }), "printed");
    QTEST(result, "result");
}

void HexFileTest::refusesSizesOfZero()
{
    const std::vector<unsigned char> image = blankImage(512);
    TextFile file;
    QCOMPARE(makenewhexfile(image.data(), 256, file, blankWord, 0, 256, 16, 0), 1);
    QCOMPARE(makenewhexfile(image.data(), 256, file, blankWord, 4, 0, 16, 0), 1);
    QCOMPARE(makenewhexfile(image.data(), 256, file, blankWord, 4, 256, 0, 0), 1);
    QCOMPARE(file.content(), QByteArray());
}

void HexFileTest::stopsBeyondTheImage_data()
{
    QTest::addColumn<quint32>("fillerSize");
    QTest::addColumn<quint32>("rowSize");
    QTest::addColumn<bool>("blank");
    QTest::addColumn<QByteArray>("words");
    QTest::newRow("a word across the end")
        << 5u << 8u << true
        << QByteArray("ASSERT: \"(i+j+k) < wholeNumRows\" in file "
                      "../IntelHexFile/hexfile.cpp, line ");
    QTest::newRow("a line across the end")
        << 4u << 8u << false
        << QByteArray("ASSERT: \"k < wholeNumRows\" in file ../IntelHexFile/hexfile.cpp, line ");
}

void HexFileTest::stopsBeyondTheImage()
{
    QFETCH(quint32, fillerSize);
    QFETCH(quint32, rowSize);
    QFETCH(bool, blank);
    QFETCH(QByteArray, words);
    // Exactly what the function may read: the sanitizer sees one byte more.
    const std::vector<unsigned char> image(rowSize + rowSize, blank ? 0xFF : 0x12);
    TextFile file;
    const QByteArray last = lastWordsOf([&] {
        makenewhexfile(image.data(), rowSize + 1, file, 0xFFFFFFFF, fillerSize, rowSize, 16, 0);
    });
    QVERIFY2(last.startsWith(words), last.constData());
}

void HexFileTest::readsWhatItWrote_data()
{
    QTest::addColumn<quint32>("base");
    QTest::addColumn<quint32>("size");
    QTest::newRow("the profile page") << 0x13800u << 2048u;
    QTest::newRow("one byte") << 0x13800u << 1u;
    QTest::newRow("from zero") << 0u << 0x2000u;
    QTest::newRow("across both upper addresses") << 0u << 0x2FF00u;
}

void HexFileTest::readsWhatItWrote()
{
    QFETCH(quint32, base);
    QFETCH(quint32, size);
    const std::uint32_t rows = (size + 255) / 256 * 256;
    std::vector<unsigned char> image(size / 256 * 256 + 256);
    std::uint32_t state = 1;
    for (unsigned char &byte : image)
        byte = static_cast<unsigned char>((state = state * 1664525 + 1013904223) >> 24);
    const Loaded loaded(written(image, size, base) + endOfFile);
    QCOMPARE(loaded.printed, QByteArray());
    QCOMPARE(loaded.top, base + rows);
    QVERIFY(std::equal(image.begin(), image.begin() + rows, loaded.flash.begin() + base));
}

QTEST_GUILESS_MAIN(HexFileTest)
#include "tst_hexfile.moc"
