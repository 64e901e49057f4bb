#include "textfile.h"

#include "IntelHexFile/hexnumber.h"
#include "IntelHexFile/optiontext.h"
#include "support/capturedoutput.h"

#include <QtTest>

#include <string>

using namespace IntelHexFile;

class HexNumberTest : public QObject
{
    Q_OBJECT

private slots:
    void hexStringToByte_data();
    void hexStringToByte();
    void byteToHexString();
    void extractByte();
    void numberFromString_data();
    void numberFromString();
    void failureLeavesTheValue();
    void fileNumber_data();
    void fileNumber();
    void fileNumberEndsAtEither();
    void fileNumbersFollowEachOther();
    void fileString();
    void fileStringTooLong();
    void killsDashes();
    void fileName();
};

void HexNumberTest::hexStringToByte_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<quint32>("byte");
    QTest::newRow("upper case") << QByteArray("AF") << 0xAFu;
    QTest::newRow("lower case") << QByteArray("af") << 0xAFu;
    QTest::newRow("mixed case") << QByteArray("fA") << 0xFAu;
    QTest::newRow("digits") << QByteArray("09") << 0x09u;
    QTest::newRow("only the first two count") << QByteArray("123") << 0x12u;
    QTest::newRow("empty") << QByteArray("") << 65535u;
    QTest::newRow("one digit") << QByteArray("1") << 65535u;
    QTest::newRow("first is none") << QByteArray("G0") << 65535u;
    QTest::newRow("second is none") << QByteArray("0g") << 65535u;
    QTest::newRow("between the digits and the letters") << QByteArray("0:") << 65535u;
    QTest::newRow("before the letters") << QByteArray("@0") << 65535u;
    QTest::newRow("before the small letters") << QByteArray("0`") << 65535u;
    QTest::newRow("not ASCII") << QByteArray("\xC3\xA9") << 65535u;
}

void HexNumberTest::hexStringToByte()
{
    QFETCH(QByteArray, text);
    QTEST(quint32(hexstringtobyte(text.constData())), "byte");
}

void HexNumberTest::byteToHexString()
{
    char text[3];
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        QCOMPARE(bytetohexstring(text, byte), 0);
        QCOMPARE(QByteArray(text), QByteArray::number(byte, 16).rightJustified(2, '0').toUpper());
    }
    QCOMPARE(bytetohexstring(text, 256), 1);
}

void HexNumberTest::extractByte()
{
    TextFile file("1fZ0A");
    QCOMPARE(extractbyte(file), 0x1Fu);
    QCOMPARE(extractbyte(file), 65535u);
    QCOMPARE(extractbyte(file), 65535u);
    QCOMPARE(extractbyte(file), 65535u);
}

void HexNumberTest::numberFromString_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<quint32>("consumed");
    QTest::addColumn<quint64>("value");
    QTest::newRow("decimal") << QByteArray("38400") << 5u << Q_UINT64_C(38400);
    QTest::newRow("zero") << QByteArray("0") << 1u << Q_UINT64_C(0);
    QTest::newRow("hexadecimal") << QByteArray("0x9C00") << 2u << Q_UINT64_C(0x9C00);
    QTest::newRow("lower case") << QByteArray("0x9c00") << 2u << Q_UINT64_C(0x9C00);
    QTest::newRow("leading zeros") << QByteArray("0x015000") << 3u << Q_UINT64_C(0x15000);
    QTest::newRow("eight pairs") << QByteArray("0x0123456789ABCDEF") << 8u
                                 << Q_UINT64_C(0x0123456789ABCDEF);
    QTest::newRow("a ninth pair is left")
        << QByteArray("0x0123456789ABCDEF77") << 8u << Q_UINT64_C(0x0123456789ABCDEF);
    QTest::newRow("decimal ends at a letter") << QByteArray("12ab") << 2u << Q_UINT64_C(12);
    QTest::newRow("largest decimal")
        << QByteArray("18446744073709551615") << 20u << Q_UINT64_C(18446744073709551615);
    QTest::newRow("decimal too large") << QByteArray("18446744073709551616") << 0u << quint64(77);
    QTest::newRow("no digit") << QByteArray("x") << 0u << quint64(77);
    QTest::newRow("empty") << QByteArray("") << 0u << quint64(77);
    QTest::newRow("0x alone") << QByteArray("0x") << 0u << quint64(77);
    QTest::newRow("no pair") << QByteArray("0x1") << 0u << quint64(77);
    QTest::newRow("a lone digit behind a pair") << QByteArray("0x9C0") << 0u << quint64(77);
    QTest::newRow("negative") << QByteArray("-1") << 0u << quint64(77);
}

void HexNumberTest::numberFromString()
{
    QFETCH(QByteArray, text);
    std::uint64_t value = 77;
    QTEST(quint32(getnumberfromstring(text.constData(), &value)), "consumed");
    QTEST(quint64(value), "value");
}

void HexNumberTest::failureLeavesTheValue()
{
    std::uint64_t value = 5;
    QCOMPARE(getdecnumberfromstring("a", &value), 0u);
    QCOMPARE(gethexnumberfromstring("xy", &value), 0u);
    QCOMPARE(value, std::uint64_t(5));
    QCOMPARE(gethexnumberfromstring("A000", &value), 2u);
    QCOMPARE(value, std::uint64_t(0xA000));
}

void HexNumberTest::fileNumber_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<quint32>("value");
    QTest::newRow("decimal") << QByteArray("38400\t") << 38400u;
    QTest::newRow("hexadecimal") << QByteArray("0x9C00\t") << 0x9C00u;
    QTest::newRow("one hexadecimal digit") << QByteArray("0x4\t") << 4u;
    QTest::newRow("to the end of file") << QByteArray("12") << 12u;
    QTest::newRow("leading separators") << QByteArray("\t\t\t12\t") << 12u;
    QTest::newRow("ten characters") << QByteArray("0xFFFFFF00\t") << 0xFFFFFF00u;
    QTest::newRow("eleven characters") << QByteArray("0x0FFFFFF00\t") << 0xFFFFFFFFu;
    QTest::newRow("beyond 32 bits") << QByteArray("9999999999\t") << 0xFFFFFFFFu;
    QTest::newRow("no number") << QByteArray("abc\t") << 0xFFFFFFFFu;
    QTest::newRow("0x alone") << QByteArray("0x\t") << 0xFFFFFFFFu;
    QTest::newRow("a letter behind") << QByteArray("12h\t") << 0xFFFFFFFFu;
    QTest::newRow("empty") << QByteArray("") << 0u;
    QTest::newRow("a very long field") << QByteArray(100000, '1') << 0xFFFFFFFFu;
}

void HexNumberTest::fileNumber()
{
    QFETCH(QByteArray, text);
    TextFile file(text);
    QTEST(quint32(file_getnum(file, '\t', '\t')), "value");
}

void HexNumberTest::fileNumberEndsAtEither()
{
    TextFile file("1\t2\n3");
    QCOMPARE(file_getnum(file, ' ', '\t', '\n'), 1u);
    QCOMPARE(file_getnum(file, ' ', '\t', '\n'), 2u);
    QCOMPARE(file_getnum(file, ' ', '\t', '\n'), 3u);
}

void HexNumberTest::fileNumbersFollowEachOther()
{
    TextFile file("99999999999999\t7\t\t\t0x08\t");
    QCOMPARE(file_getnum(file, '\t', '\t'), 0xFFFFFFFFu);
    QCOMPARE(file_getnum(file, '\t', '\t'), 7u);
    QCOMPARE(file_getnum(file, '\t', '\t'), 8u);
}

void HexNumberTest::fileString()
{
    TextFile file("\t\tCharger64\t\tnext");
    char text[10];
    QCOMPARE(file_getstring(file, text, sizeof text, '\t', '\t'), std::size_t(9));
    QCOMPARE(QByteArray(text), QByteArray("Charger64"));
    QCOMPARE(file_getstring(file, text, sizeof text, '\t', '\t'), std::size_t(4));
    QCOMPARE(QByteArray(text), QByteArray("next"));
    QCOMPARE(file_getstring(file, text, sizeof text, '\t', '\t'), std::size_t(0));
    QCOMPARE(QByteArray(text), QByteArray());
}

void HexNumberTest::fileStringTooLong()
{
    TextFile file("Charger642\t5");
    char text[10];
    QCOMPARE(file_getstring(file, text, sizeof text, '\t', '\t'), fieldTooLong);
    QCOMPARE(QByteArray(text), QByteArray("Charger64"));
    QCOMPARE(file_getnum(file, '\t', '\t'), 5u);
}

void HexNumberTest::killsDashes()
{
    QCOMPARE(QByteArray(killdashes("-- -s")), QByteArray("s"));
    QCOMPARE(QByteArray(killdashes("s-x")), QByteArray("s-x"));
    QCOMPARE(QByteArray(killdashes("--")), QByteArray());
}

void HexNumberTest::fileName()
{
    std::string name;
    std::size_t length = 0;
    QCOMPARE(printedBy([&] { length = getfilename(" -a-b.hex", &name); }), QByteArray());
    QCOMPARE(length, std::size_t(7));
    QCOMPARE(name, std::string("a-b.hex"));

    QCOMPARE(printedBy([&] { length = getfilename("--", &name); }),
             QByteArray("No file name specified!"));
    QCOMPARE(length, std::size_t(0));
}

QTEST_GUILESS_MAIN(HexNumberTest)
#include "tst_hexnumber.moc"
