#include "HEXGeneratorParser/hexbuffer.h"

#include "support/capturedoutput.h"
#include "support/inchild.h"
#include "support/workingdirectory.h"

#include <QFile>
#include <QFileInfo>
#include <QtTest>

#include <csignal>

#include <sys/resource.h>

using HEXGeneratorParser::HEXBuffer;

namespace
{
QByteArray raw(std::initializer_list<int> bytes)
{
    QByteArray result;
    for (const int byte : bytes)
        result.append(static_cast<char>(byte));
    return result;
}

QByteArray content(const HEXBuffer &buffer)
{
    QByteArray result;
    for (int i = 0; i < buffer.size(); ++i)
        result.append(static_cast<char>(buffer.getByte(i)));
    return result;
}

/// What an action says on standard error when an assertion ends it.
QByteArray assertionOf(const std::function<void()> &action)
{
    return lastWordsOf([&] {
        qInstallMessageHandler(nullptr);
        action();
    });
}
} // namespace

class HEXBufferTest : public QObject
{
    Q_OBJECT

private slots:
    void startsEmpty();
    void bytesGetAPhantomByteBehindEachThird();
    void phantomByteComesWithTheNextByte();
    void emptyArraysAppendNothing();
    void bitsFillAByteFromTheLowEnd();
    void runsOfBitsCrossWords();
    void bytesFollowFullBytesOnly();
    void finish_data();
    void finish();
    void sumIsThatOfTheElement();
    void fewerBitsThanAskedFor();
    void print();

    void writesIntelHex_data();
    void writesIntelHex();
    void leavesOutBlankRows();
    void unwritableFile();
    void replacesAFile();
    void failedWriteKeepsTheFormerFile();
    void folderThatTakesNoNewFile();
};

void HEXBufferTest::startsEmpty()
{
    const HEXBuffer buffer(2048);
    QCOMPARE(buffer.size(), 0);
    QCOMPARE(buffer.sumBytesStruct(), 0);
}

void HEXBufferTest::bytesGetAPhantomByteBehindEachThird()
{
    HEXBuffer buffer(2048);
    buffer.appendBytes(raw({120, 200, 10, 20, 30, 40, 50}));
    QCOMPARE(buffer.size(), 9);
    QCOMPARE(content(buffer), raw({120, 200, 10, 0, 20, 30, 40, 0, 50}));
}

void HEXBufferTest::phantomByteComesWithTheNextByte()
{
    HEXBuffer buffer(2048);
    buffer.appendBytes(raw({1, 2, 3}));
    QCOMPARE(buffer.size(), 3);
    buffer.appendByte(4);
    QCOMPARE(content(buffer), raw({1, 2, 3, 0, 4}));
}

void HEXBufferTest::emptyArraysAppendNothing()
{
    HEXBuffer buffer(2048);
    buffer.appendBytes(QByteArray());
    buffer.appendBits(QByteArray(), 0);
    QCOMPARE(buffer.size(), 0);
}

void HEXBufferTest::bitsFillAByteFromTheLowEnd()
{
    HEXBuffer buffer(2048);
    for (const bool bit : {true, true, false, true})
        buffer.appendBit(bit);
    QCOMPARE(content(buffer), raw({0b00001011}));
    for (int i = 0; i < 4; ++i)
        buffer.appendBit(false);
    QCOMPARE(content(buffer), raw({0b00001011}));
    buffer.appendBit(false);
    QCOMPARE(content(buffer), raw({0b00001011, 0}));
    buffer.appendBit(true);
    QCOMPARE(content(buffer), raw({0b00001011, 0b00000010}));
}

void HEXBufferTest::runsOfBitsCrossWords()
{
    HEXBuffer buffer(2048);
    buffer.appendBits(raw({0xAA}), 1);
    buffer.appendBits(raw({0xAA}), 2);
    buffer.appendBits(raw({0xFE}), 5);
    QCOMPARE(content(buffer), raw({0b11110100}));
    buffer.appendBits(raw({10, 20, 0xCD}), 20);
    QCOMPARE(content(buffer), raw({0xF4, 10, 20, 0, 0b00001101}));
}

void HEXBufferTest::bytesFollowFullBytesOnly()
{
    HEXBuffer full(2048);
    full.appendBits(raw({0x02}), 3);
    full.appendBits(raw({0xFF}), 5);
    full.appendByte(7);
    QCOMPARE(content(full), raw({0b11111010, 7}));

    const QByteArray words = assertionOf([] {
        HEXBuffer buffer(2048);
        buffer.appendBits(raw({0x02}), 3);
        buffer.appendByte(7);
    });
    QVERIFY2(words.contains("\"lastBitAdded==7\""), words);
}

void HEXBufferTest::finish_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("times");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("nothing written") << raw({}) << 1 << raw({0xFF, 0xFF, 0xFF, 0});
    QTest::newRow("one byte") << raw({0x10}) << 1 << raw({0x10, 0xFF, 0xFF, 0});
    QTest::newRow("two bytes") << raw({0x10, 0x20}) << 1 << raw({0x10, 0x20, 0xFF, 0});
    QTest::newRow("a whole word") << raw({0x10, 0x20, 0x30}) << 1 << raw({0x10, 0x20, 0x30, 0});
    QTest::newRow("a word and a byte")
        << raw({1, 2, 3, 4}) << 1 << raw({1, 2, 3, 0, 4, 0xFF, 0xFF, 0});
    QTest::newRow("twice") << raw({0x10}) << 2 << raw({0x10, 0xFF, 0xFF, 0});
}

void HEXBufferTest::finish()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, times);
    QFETCH(QByteArray, expected);
    HEXBuffer buffer(2048);
    buffer.appendBytes(bytes);
    for (int i = 0; i < times; ++i)
        buffer.finishWritingStruct();
    QCOMPARE(content(buffer), expected);
    QCOMPARE(buffer.sumBytesStruct(), 0);
    buffer.appendByte(0x40);
    QCOMPARE(content(buffer), expected + raw({0x40}));
}

void HEXBufferTest::sumIsThatOfTheElement()
{
    HEXBuffer buffer(2048);
    buffer.appendByte(40);
    QCOMPARE(buffer.sumBytesStruct(), 40);
    for (const bool bit : {true, false, true})
        buffer.appendBit(bit);
    QCOMPARE(buffer.sumBytesStruct(), 45);
    for (int i = 0; i < 5; ++i)
        buffer.appendBit(false);
    buffer.appendBytes(raw({150, 200}));
    QCOMPARE(buffer.sumBytesStruct(), 395);
    buffer.finishWritingStruct();
    QCOMPARE(buffer.sumBytesStruct(), 0);
    buffer.appendByte(9);
    QCOMPARE(buffer.sumBytesStruct(), 9);
}

void HEXBufferTest::fewerBitsThanAskedFor()
{
    const QByteArray words = assertionOf([] { HEXBuffer(2048).appendBits(raw({0xFF}), 9); });
    QVERIFY2(words.contains("\"uint(i) < uint(size())\""), words);
}

void HEXBufferTest::print()
{
    HEXBuffer buffer(2048);
    buffer.appendBytes(raw({0, 10, 0xFF}));
    QCOMPARE(printedBy([&] { buffer.print(); }), QByteArray("0x00 0x0a 0xff \n"));
}

void HEXBufferTest::writesIntelHex_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("dataRecords");
    QTest::newRow("nothing") << 0 << 0;
    QTest::newRow("a word") << 3 << 16;
    QTest::newRow("a full row") << 192 << 16;
    QTest::newRow("one word more") << 193 << 32;
}

void HEXBufferTest::writesIntelHex()
{
    QFETCH(int, bytes);
    QFETCH(int, dataRecords);
    const WorkingDirectory directory;
    HEXBuffer buffer(2048);
    for (int i = 0; i < bytes; ++i)
        buffer.appendByte(static_cast<char>(i + 1));
    if (bytes > 0)
        buffer.finishWritingStruct();
    QVERIFY(buffer.writeToFile(QStringLiteral("image.hex"), 0x9C00));

    QList<QByteArray> lines = directory.read(QStringLiteral("image.hex")).split('\n');
    QCOMPARE(lines.takeLast(), QByteArray());
    QCOMPARE(lines.takeLast(), QByteArray(":00000001FF"));
    QCOMPARE(lines.takeFirst(), QByteArray(":020000040001F9"));
    QCOMPARE(lines.size(), dataRecords);
    for (int i = 0; i < lines.size(); ++i) {
        const QByteArray record = QByteArray::fromHex(lines.at(i).mid(1));
        QCOMPARE(record.size(), 21);
        QCOMPARE(lines.at(i), ":" + record.toHex().toUpper());
        int sum = 0;
        for (const char byte : record)
            sum += static_cast<unsigned char>(byte);
        QCOMPARE(sum % 256, 0);
        QCOMPARE(record.left(4), raw({16, 0x38 + i / 16, i * 16 % 256, 0}));
        // First and third byte of each word have changed places.
        for (int k = 0; k < 16; ++k) {
            const int place = k % 4;
            const int number = (i * 16 + k) / 4 * 3 + 2 - place;
            const int expected = place == 3 ? 0 : number < bytes ? (number + 1) % 256 : 0xFF;
            QCOMPARE(int(static_cast<unsigned char>(record.at(4 + k))), expected);
        }
    }
}

void HEXBufferTest::leavesOutBlankRows()
{
    const WorkingDirectory directory;
    HEXBuffer buffer(2048);
    buffer.appendBytes(QByteArray(192, 'a'));
    buffer.appendBytes(QByteArray(192, '\xFF'));
    buffer.appendBytes(QByteArray(192, 'b'));
    QVERIFY(buffer.writeToFile(QStringLiteral("image.hex"), 0x9C00));
    const QByteArray text = directory.read(QStringLiteral("image.hex"));
    QCOMPARE(text.count(":10"), 32);
    QVERIFY(text.contains(":1038F000"));
    QVERIFY(!text.contains(":103900"));
    QVERIFY(text.contains(":103A0000"));
}

void HEXBufferTest::unwritableFile()
{
    const WorkingDirectory directory;
    const HEXBuffer buffer(2048);
    QVERIFY(!buffer.writeToFile(QStringLiteral("no/such/folder.hex"), 0x9C00));
    QVERIFY(!buffer.writeToFile(directory.path(), 0x9C00));
}

void HEXBufferTest::replacesAFile()
{
    const WorkingDirectory directory;
    directory.write(QStringLiteral("image.hex"), "former");
    HEXBuffer buffer(2048);
    buffer.appendByte(1);
    QVERIFY(buffer.writeToFile(QStringLiteral("image.hex"), 0x9C00));
    QVERIFY(directory.read(QStringLiteral("image.hex")).startsWith(":02"));
    QCOMPARE(QDir().entryList(QDir::Files), QStringList{QStringLiteral("image.hex")});
}

void HEXBufferTest::failedWriteKeepsTheFormerFile()
{
    const WorkingDirectory directory;
    directory.write(QStringLiteral("image.hex"), "former");
    HEXBuffer buffer(2048);
    buffer.appendByte(1);

    // As on a full disk: files of this process cannot grow beyond 64 bytes.
    rlimit before{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit tight{64, before.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &tight);
    const bool written = buffer.writeToFile(QStringLiteral("image.hex"), 0x9C00);
    setrlimit(RLIMIT_FSIZE, &before);

    QVERIFY(!written);
    QCOMPARE(directory.read(QStringLiteral("image.hex")), QByteArray("former"));
    QCOMPARE(QDir().entryList(QDir::Files), QStringList{QStringLiteral("image.hex")});
}

void HEXBufferTest::folderThatTakesNoNewFile()
{
    const WorkingDirectory directory;
    directory.write(QStringLiteral("image.hex"), "former");
    // The file itself may be written by everybody.
    QVERIFY(QFile::setPermissions(QStringLiteral("image.hex"), QFile::Permissions(0x6666)));
    QVERIFY(QFile::setPermissions(directory.path(), QFile::Permissions(0x5555)));
    const int result = inChild([] {
        HEXBuffer buffer(2048);
        buffer.appendByte(1);
        if (!becomeOrdinaryUser())
            return 2;
        return buffer.writeToFile(QStringLiteral("image.hex"), 0x9C00) ? 0 : 1;
    });
    QVERIFY(QFile::setPermissions(directory.path(), QFile::Permissions(0x7777)));
    QCOMPARE(result, 0);
    QVERIFY(directory.read(QStringLiteral("image.hex")).startsWith(":020000040001F9\n"));
}

QTEST_GUILESS_MAIN(HEXBufferTest)
#include "tst_hexbuffer.moc"
