#include "HEXGeneratorParser/hexbufferread.h"

#include "HEXGeneratorParser/hexbuffer.h"
#include "support/capturedoutput.h"

#include <QRandomGenerator>
#include <QtTest>

#include <vector>

using HEXGeneratorParser::HEXBuffer;
using HEXGeneratorParser::HexBufferRead;

namespace
{
using Bytes = std::vector<unsigned char>;

QByteArray assertionOf(const std::function<void()> &action)
{
    return lastWordsOf([&] {
        qInstallMessageHandler(nullptr);
        action();
    });
}
} // namespace

class HexBufferReadTest : public QObject
{
    Q_OBJECT

private slots:
    void stepsOverPhantomBytes();
    void peeksWithoutMoving();
    void bitsComeFromTheLowEnd();
    void bitsAcrossWords();
    void wholeBytesOnlyBehindWholeBytes();
    void numbers_data();
    void numbers();
    void numbersBeyond63Bits_data();
    void numbersBeyond63Bits();
    void strings_data();
    void strings();
    void finishMovesToTheNextWord_data();
    void finishMovesToTheNextWord();
    void sumIsThatOfTheElement();
    void readsZerosBehindItsImage();
    void readsWhatTheWriterPacked();
};

void HexBufferReadTest::stepsOverPhantomBytes()
{
    Bytes image = {1, 2, 3, 99, 4, 5, 6, 99, 7};
    HexBufferRead reader(image.data());
    for (int expected = 1; expected <= 7; ++expected)
        QCOMPARE(int(reader.readByte()), expected);
}

void HexBufferReadTest::peeksWithoutMoving()
{
    Bytes image = {1, 2, 3, 99, 4, 5, 6, 99, 7};
    HexBufferRead reader(image.data());
    QCOMPARE(int(reader.readByte()), 1);
    QCOMPARE(int(reader.peekByte(0)), 2);
    QCOMPARE(int(reader.peekByte(2)), 4);
    QCOMPARE(int(reader.peekByte(5)), 7);
    QCOMPARE(int(reader.readByte()), 2);
}

void HexBufferReadTest::bitsComeFromTheLowEnd()
{
    Bytes image = {0b00001011, 0x80};
    HexBufferRead reader(image.data());
    for (const bool expected : {true, true, false, true, false, false, false, false})
        QCOMPARE(reader.readBit(), expected);
    QCOMPARE(int(reader.readByte()), 0x80);
}

void HexBufferReadTest::bitsAcrossWords()
{
    Bytes image = {0xF4, 10, 20, 99, 0b11001101};
    HexBufferRead reader(image.data());
    QCOMPARE(reader.readBits(0), QByteArray());
    QCOMPARE(reader.readBits(3), QByteArray(1, 0b100));
    QCOMPARE(reader.readBits(5), QByteArray(1, 0b11110));
    QCOMPARE(reader.readBits(20), QByteArray("\x0A\x14\x0D"));
    QCOMPARE(reader.readBits(4), QByteArray(1, 0b1100));
}

void HexBufferReadTest::wholeBytesOnlyBehindWholeBytes()
{
    for (const bool peek : {false, true}) {
        const QByteArray words = assertionOf([peek] {
            Bytes image = {1, 2, 3, 0};
            HexBufferRead reader(image.data());
            reader.readBits(3);
            peek ? reader.peekByte(0) : reader.readByte();
        });
        QVERIFY2(words.contains("\"bitIndex == 0\""), words);
    }
}

void HexBufferReadTest::numbers_data()
{
    QTest::addColumn<QString>("cType");
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<qlonglong>("expected");
    const auto row = [](const char *cType, const char *stream, qlonglong expected) {
        const QByteArray name = QByteArray(cType) + " " + stream;
        QTest::newRow(name) << QString::fromLatin1(cType) << QByteArray::fromHex(stream)
                            << expected;
    };
    row("unsigned char", "C8", 200);
    row("char", "7F", 127);
    row("char", "FF", -1);
    row("signed char", "80", -128);
    row("unsigned short", "B005", 1456);
    row("short", "18FC", -1000);
    row("int", "0080", -32768);
    row("signed int", "18FC", -1000);
    row("unsigned int", "18FC", 64536);
    row("unsigned long", "04030201", 16909060);
    row("unsigned long", "FFFFFFFF", 4294967295LL);
    row("long", "FFFFFFFF", -1);
    row("long", "00000080", -2147483648LL);
    row("unsigned long long", "FFFFFFFFFFFFFF7F", 9223372036854775807LL);
    row("long long", "FFFFFFFFFFFFFF7F", 9223372036854775807LL);
    row("long long", "FEFFFFFFFFFFFFFF", -2);
    row("long long", "0100000000000080", -9223372036854775807LL);
}

void HexBufferReadTest::numbers()
{
    QFETCH(QString, cType);
    QFETCH(QByteArray, stream);
    QFETCH(qlonglong, expected);
    Bytes image;
    for (int i = 0; i < stream.size(); ++i) {
        if (i % 3 == 0 && i > 0)
            image.push_back(0);
        image.push_back(static_cast<unsigned char>(stream.at(i)));
    }
    HexBufferRead reader(image.data(), static_cast<int>(image.size()));
    QCOMPARE(qlonglong(reader.readData(cType)), expected);
}

void HexBufferReadTest::numbersBeyond63Bits_data()
{
    QTest::addColumn<QString>("cType");
    QTest::addColumn<int>("lowByte");
    QTest::newRow("unsigned, top bit set") << QStringLiteral("unsigned long long") << 1;
    QTest::newRow("least signed") << QStringLiteral("long long") << 0;
}

void HexBufferReadTest::numbersBeyond63Bits()
{
    QFETCH(QString, cType);
    QFETCH(int, lowByte);
    const QByteArray words = assertionOf([&] {
        Bytes image = {static_cast<unsigned char>(lowByte), 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0, 0};
        HexBufferRead(image.data()).readData(cType);
    });
    QVERIFY2(words.contains("\"number >= 0\""), words);
}

void HexBufferReadTest::strings_data()
{
    QTest::addColumn<QByteArray>("image");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("expected");
    QTest::newRow("filled up") << QByteArray("hi\0\0\0", 5) << 4 << QStringLiteral("hi");
    QTest::newRow("empty") << QByteArray(5, '\0') << 4 << QString();
    QTest::newRow("over a word's end")
        << QByteArray("hel\0lo\0", 7) << 6 << QStringLiteral("hello");
    QTest::newRow("rubbish behind the end") << QByteArray("h\0x\0y", 5) << 4 << QStringLiteral("h");
    QTest::newRow("beyond ASCII") << QByteArray("\xB0\x43\0\0", 4) << 3
                                  << QStringLiteral("\u00b0C");
    QTest::newRow("without an end") << QByteArray("abc\0de", 6) << 5 << QStringLiteral("abcde");
}

void HexBufferReadTest::strings()
{
    QFETCH(QByteArray, image);
    QFETCH(int, length);
    QFETCH(QString, expected);
    Bytes bytes(image.begin(), image.end());
    QCOMPARE(HexBufferRead(bytes.data()).readString(length), expected);
}

void HexBufferReadTest::finishMovesToTheNextWord_data()
{
    QTest::addColumn<int>("bytesRead");
    QTest::addColumn<int>("next");
    QTest::newRow("nothing read") << 0 << 1;
    QTest::newRow("one byte") << 1 << 4;
    QTest::newRow("two bytes") << 2 << 4;
    QTest::newRow("a whole word") << 3 << 4;
    QTest::newRow("four bytes") << 4 << 7;
}

void HexBufferReadTest::finishMovesToTheNextWord()
{
    QFETCH(int, bytesRead);
    QFETCH(int, next);
    Bytes image = {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0};
    HexBufferRead reader(image.data());
    for (int i = 0; i < bytesRead; ++i)
        reader.readByte();
    reader.finishReadingStruct();
    QCOMPARE(reader.sumBytesStruct(), 0);
    QCOMPARE(int(reader.readByte()), next);
    QCOMPARE(reader.sumBytesStruct(), next);
}

void HexBufferReadTest::sumIsThatOfTheElement()
{
    Bytes image = {0xFF, 1, 2, 0, 3, 0xFF, 0xFF, 0, 5};
    HexBufferRead reader(image.data());
    QCOMPARE(reader.sumBytesStruct(), 0);
    reader.readByte();
    QCOMPARE(reader.sumBytesStruct(), 0xFF);
    reader.readBits(3);
    QCOMPARE(reader.sumBytesStruct(), 0xFF);
    reader.readBits(5);
    QCOMPARE(reader.sumBytesStruct(), 0x100);
    reader.readByte();
    reader.readByte();
    QCOMPARE(reader.sumBytesStruct(), 0x105);
    reader.finishReadingStruct();
    QCOMPARE(reader.sumBytesStruct(), 0);
}

void HexBufferReadTest::readsZerosBehindItsImage()
{
    Bytes image = {0xFF, 0xFF};
    HexBufferRead reader(image.data(), static_cast<int>(image.size()));
    QCOMPARE(reader.readData(QStringLiteral("unsigned long")), 0xFFFFLL);
    QCOMPARE(reader.readString(100), QString());
    QVERIFY(!reader.readBit());
    reader.readBits(7);
    QCOMPARE(int(reader.peekByte(1000)), 0);
    QCOMPARE(reader.sumBytesStruct(), 2 * 0xFF);
}

void HexBufferReadTest::readsWhatTheWriterPacked()
{
    QRandomGenerator random(20230323);
    for (int round = 0; round < 200; ++round) {
        HEXBuffer buffer(2048);
        QList<QByteArray> parts;
        QList<int> bitCounts; // -1 for whole bytes, -2 for an element's end
        for (int part = 0; part < 20; ++part) {
            const int kind = random.bounded(3);
            if (kind == 0) {
                buffer.finishWritingStruct();
                parts.append(QByteArray());
                bitCounts.append(-2);
                continue;
            }
            QByteArray bytes(1 + random.bounded(9), '\0');
            for (char &byte : bytes)
                byte = static_cast<char>(random.bounded(256));
            if (kind == 1) {
                buffer.appendBytes(bytes);
                bitCounts.append(-1);
            } else {
                const int count = bytes.size() * 8 - random.bounded(8);
                buffer.appendBits(bytes, count);
                buffer.appendBits(QByteArray(1, '\0'), (8 - count % 8) % 8);
                const int used = (count - 1) % 8 + 1;
                const unsigned last =
                    static_cast<unsigned char>(bytes.back()) & (0xFFU >> (8 - used));
                bytes.back() = static_cast<char>(static_cast<unsigned char>(last));
                bitCounts.append(count);
            }
            parts.append(bytes);
        }
        if (bitCounts.first() == -2)
            continue; // an element without bytes is a blank word, which no reader walks over

        Bytes image;
        for (int i = 0; i < buffer.size(); ++i)
            image.push_back(buffer.getByte(i));
        HexBufferRead reader(image.data(), buffer.size());
        for (int part = 0; part < parts.size(); ++part) {
            const int bits = bitCounts.at(part);
            if (bits == -2) {
                reader.finishReadingStruct();
            } else if (bits == -1) {
                for (const char byte : parts.at(part))
                    QCOMPARE(static_cast<char>(reader.readByte()), byte);
            } else {
                QCOMPARE(reader.readBits(bits), parts.at(part));
                reader.readBits((8 - bits % 8) % 8);
            }
        }
    }
}

QTEST_GUILESS_MAIN(HexBufferReadTest)
#include "tst_hexbufferread.moc"
