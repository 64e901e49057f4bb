#include "HEXGeneratorParser/hexutility.h"

#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "support/capturedoutput.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using HEXGeneratorParser::HexUtility;

namespace
{
QString schemaFile(const char *name)
{
    return QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + QLatin1String(name);
}

QByteArray assertionOf(const std::function<void()> &action)
{
    return lastWordsOf([&] {
        qInstallMessageHandler(nullptr);
        action();
    });
}
} // namespace

class HexUtilityTest : public QObject
{
    Q_OBJECT

private slots:
    void byteCount_data();
    void byteCount();
    void unknownType_data();
    void unknownType();
    void signedness_data();
    void signedness();
    void twosComplement_data();
    void twosComplement();
    void byteBufferToNum_data();
    void byteBufferToNum();
    void byteBufferToBool();
    void displayFormula();
    void checksum_data();
    void checksum();
    void checksumOfANegativeSum();
    void littleEndian();
    void alignment();
    void alignmentOfABrokenWord();
    void elementSizes_data();
    void elementSizes();
    void bitsThatFillNoByte();
    void profilesAllowed_data();
    void profilesAllowed();
    void everyElementTakesRoom_data();
    void everyElementTakesRoom();
};

void HexUtilityTest::byteCount_data()
{
    QTest::addColumn<int>("expected");
    QTest::newRow("char") << 1;
    QTest::newRow("signed char") << 1;
    QTest::newRow("unsigned char") << 1;
    QTest::newRow("short") << 2;
    QTest::newRow("signed short") << 2;
    QTest::newRow("unsigned short") << 2;
    QTest::newRow("int") << 2;
    QTest::newRow("signed int") << 2;
    QTest::newRow("unsigned int") << 2;
    QTest::newRow("long") << 4;
    QTest::newRow("signed long") << 4;
    QTest::newRow("unsigned long") << 4;
    QTest::newRow("long long") << 8;
    QTest::newRow("unsigned long long") << 8;
}

void HexUtilityTest::byteCount()
{
    QFETCH(int, expected);
    QCOMPARE(HexUtility::calculateByteCount(QString::fromLatin1(QTest::currentDataTag())),
             expected);
}

void HexUtilityTest::unknownType_data()
{
    QTest::addColumn<QString>("cType");
    QTest::newRow("signed long long") << QStringLiteral("signed long long");
    QTest::newRow("upper case") << QStringLiteral("Char");
    QTest::newRow("none") << QString();
    QTest::newRow("float") << QStringLiteral("float");
}

void HexUtilityTest::unknownType()
{
    QFETCH(QString, cType);
    const QByteArray words = assertionOf([&] { HexUtility::calculateByteCount(cType); });
    QVERIFY2(words.contains("\"numBytes != 0\""), words);
}

void HexUtilityTest::signedness_data()
{
    QTest::addColumn<bool>("expected");
    QTest::newRow("int") << HexUtility::signedType;
    QTest::newRow("signed int") << HexUtility::signedType;
    QTest::newRow("char") << HexUtility::signedType;
    QTest::newRow("long long") << HexUtility::signedType;
    QTest::newRow("unsigned int") << HexUtility::unsignedType;
    QTest::newRow("unsigned long long") << HexUtility::unsignedType;
    QTest::newRow("unsigned") << HexUtility::unsignedType;
    QTest::newRow("long unsigned") << HexUtility::signedType;
    QTest::newRow("unsignedly int") << HexUtility::signedType;
}

void HexUtilityTest::signedness()
{
    QFETCH(bool, expected);
    QCOMPARE(HexUtility::signedOrUnsigned(QString::fromLatin1(QTest::currentDataTag())), expected);
}

void HexUtilityTest::twosComplement_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("count");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *name, const char *bytes, int count, const char *expected) {
        QTest::newRow(name) << QByteArray::fromHex(bytes) << count << QByteArray::fromHex(expected);
    };
    row("carry through zeros", "0000FD", 3, "000003");
    row("no further than count", "12345678", 3, "EECBA978");
    row("zero stays", "0000", 2, "0000");
    row("all bits", "FFFF", 2, "0100");
    row("least number", "0080", 2, "0080");
    row("count 0", "12", 0, "12");
    row("negative count", "12", -1, "12");
}

void HexUtilityTest::twosComplement()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, count);
    QFETCH(QByteArray, expected);
    HexUtility::twosComplement(reinterpret_cast<unsigned char *>(bytes.data()), count);
    QCOMPARE(bytes, expected);
}

void HexUtilityTest::byteBufferToNum_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<qulonglong>("expected");
    QTest::newRow("none") << QByteArray() << 0ULL;
    QTest::newRow("one") << QByteArray::fromHex("FE") << 0xFEULL;
    QTest::newRow("low byte first") << QByteArray::fromHex("010203") << 0x030201ULL;
    QTest::newRow("eight") << QByteArray::fromHex("01020304050607F8") << 0xF807060504030201ULL;
    QTest::newRow("no more than eight")
        << QByteArray::fromHex("010203040506070809") << 0x0807060504030201ULL;
}

void HexUtilityTest::byteBufferToNum()
{
    QFETCH(QByteArray, bytes);
    QFETCH(qulonglong, expected);
    QCOMPARE(qulonglong(HexUtility::byteBufferToNum(bytes)), expected);
}

void HexUtilityTest::byteBufferToBool()
{
    QVERIFY(HexUtility::byteBufferToBool(QByteArray::fromHex("01")));
    QVERIFY(HexUtility::byteBufferToBool(QByteArray::fromHex("80")));
    QVERIFY(!HexUtility::byteBufferToBool(QByteArray::fromHex("0001")));
    const QByteArray words = assertionOf([] { HexUtility::byteBufferToBool(QByteArray()); });
    QVERIFY2(words.contains("\"uint(i) < uint(size())\""), words);
}

void HexUtilityTest::displayFormula()
{
    const HParser::StructSetting setting(QStringLiteral(
        "unsigned long t; // num, auto, 0, 9, *0.0002777777, 2, \"t\", \"h\", \"t\", 0, 0, basic"));
    QCOMPARE(HexUtility::applyDisplayFormula(3600, &setting), 0.0002777777 * 3600.0);
    QCOMPARE(HexUtility::applyDisplayFormula(-1, &setting), -0.0002777777);
    // The text counts: a number alone is one.
    const HParser::StructSetting quotient(QStringLiteral(
        "unsigned char t; // num, auto, 0, 9, *1 / 4, 2, \"t\", \"h\", \"t\", 0, 0, basic"));
    QCOMPARE(HexUtility::applyDisplayFormula(8, &quotient), 0.0);
}

void HexUtilityTest::checksum_data()
{
    QTest::addColumn<int>("total");
    QTest::addColumn<int>("lowByte");
    QTest::newRow("40") << 0x10203040 << 0xC0;
    QTest::newRow("00") << 0x11223300 << 0x00;
    QTest::newRow("FF") << 0x112233FF << 0x01;
    QTest::newRow("01") << 0x11223301 << 0xFF;
    QTest::newRow("12") << 0x11223312 << 0xEE;
    QTest::newRow("59") << 0x11223359 << 0xA7;
    QTest::newRow("D8") << 0x112233D8 << 0x28;
}

void HexUtilityTest::checksum()
{
    QFETCH(int, total);
    QFETCH(int, lowByte);
    QCOMPARE(HexUtility::getChecksumFromChecksumTotal(total) & 0xFF, lowByte);
    QVERIFY(HexUtility::getChecksumFromChecksumTotal(total) <= 0);
}

void HexUtilityTest::checksumOfANegativeSum()
{
    const QByteArray words = assertionOf([] { HexUtility::getChecksumFromChecksumTotal(-1); });
    QVERIFY2(words.contains("\"checksumTotal >= 0\""), words);
}

void HexUtilityTest::littleEndian()
{
    QVERIFY(HexUtility::machineIsLittleEndian());
}

void HexUtilityTest::alignment()
{
    QByteArray bytes = QByteArray::fromHex("0300FD00AABBCCDD");
    HexUtility::fixBytesAlignment(reinterpret_cast<unsigned char *>(bytes.data()), 8);
    QCOMPARE(bytes.toHex().toUpper(), QByteArray("FD000300CCBBAADD"));
    HexUtility::fixBytesAlignment(reinterpret_cast<unsigned char *>(bytes.data()), 0);
    QCOMPARE(bytes.toHex().toUpper(), QByteArray("FD000300CCBBAADD"));
}

void HexUtilityTest::alignmentOfABrokenWord()
{
    const QByteArray words = assertionOf([] {
        unsigned char bytes[8] = {};
        HexUtility::fixBytesAlignment(bytes, 6);
    });
    QVERIFY2(words.contains("\"size%4 == 0\""), words);
}

void HexUtilityTest::elementSizes_data()
{
    QTest::addColumn<int>("expected");
    QTest::newRow("Global settings") << 32;
    QTest::newRow("Global stats") << 40;
    QTest::newRow("Version") << 4;
    QTest::newRow("Page counter") << 4;
    QTest::newRow("Hardware Version") << 4;
    QTest::newRow("Barcode") << 12;
    QTest::newRow("Lithium") << 60;
    QTest::newRow("Nickel") << 68;
    QTest::newRow("Lead") << 56;
    // 28 bytes in the image: the three averages are counted though they are not stored.
    QTest::newRow("Profile stats") << 44;
}

void HexUtilityTest::elementSizes()
{
    QFETCH(int, expected);
    HParser::Generator generator;
    generator.parseSSFile(schemaFile("master.ss"));
    const auto *element =
        generator.getFSElementByName(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(element);
    QCOMPARE(HexUtility::getFlashStackStructSize(element), expected);
}

void HexUtilityTest::bitsThatFillNoByte()
{
    const QByteArray words = assertionOf([] {
        HParser::StructSettings element;
        element.setOriginalOrderStructSettings({new HParser::StructSetting(
            QStringLiteral("unsigned char a; // bool, 3, \"a\", \"a\", 0, -1, basic"))});
        HexUtility::getFlashStackStructSize(&element);
    });
    QVERIFY2(words.contains("\"numBitsOccupied%8 == 0\""), words);
}

void HexUtilityTest::profilesAllowed_data()
{
    QTest::addColumn<int>("expected");
    // (2048 - 32 - 40 - 4 - 4 - 4 - 12) / (68 + 44), and without hardware version and barcode.
    QTest::newRow("master.ss") << 17;
    QTest::newRow("48V_FSv1.ss") << 17;
    QTest::newRow("48V_FSv2.ss") << 17;
    QTest::newRow("24V_rev7.ss") << 17;
    QTest::newRow("72V_rev7.ss") << 17;
}

void HexUtilityTest::profilesAllowed()
{
    QFETCH(int, expected);
    HParser::Generator generator;
    generator.parseSSFile(schemaFile(QTest::currentDataTag()));
    QCOMPARE(HexUtility::numProfilesAllowed(&generator), expected);
    generator.setUnitStatsExists(true);
    QCOMPARE(HexUtility::numProfilesAllowed(&generator), expected);
}

void HexUtilityTest::everyElementTakesRoom_data()
{
    QTest::addColumn<QString>("element");
    QTest::addColumn<int>("expected");
    // 60 bytes more make 80 of the image. The page has room for 17 profiles of 112 and 48 over.
    QTest::newRow("Global settings") << QStringLiteral("global_settings") << 16;
    QTest::newRow("Global stats") << QStringLiteral("global_stats") << 16;
    QTest::newRow("Version") << QStringLiteral("version") << 16;
    QTest::newRow("Page counter") << QStringLiteral("page_counter") << 16;
    QTest::newRow("Hardware Version") << QStringLiteral("hardwareVersion") << 16;
    QTest::newRow("Barcode") << QStringLiteral("barcode") << 16;
    // 1952 / (148 + 44), 1952 / (140 + 44), 1952 / (136 + 44) and 1952 / (68 + 124)
    QTest::newRow("Nickel") << QStringLiteral("chemistry_nickel") << 10;
    QTest::newRow("Lithium") << QStringLiteral("chemistry_lithium") << 10;
    QTest::newRow("Lead") << QStringLiteral("chemistry_lead") << 10;
    QTest::newRow("Profile stats") << QStringLiteral("profile_stats") << 10;
}

void HexUtilityTest::everyElementTakesRoom()
{
    QFETCH(QString, element);
    QFETCH(int, expected);
    QFile master(schemaFile("master.ss"));
    QVERIFY(master.open(QIODevice::ReadOnly));
    QByteArray schema = master.readAll();
    const int head = schema.indexOf("struct " + element.toLatin1() + " {");
    QVERIFY(head >= 0);
    schema.insert(
        schema.indexOf("    unsigned char checksum;", head),
        "    char more[60]; // string, auto, \"more\", \"not displayed\", \"\", -1, basic\n");

    const QTemporaryDir folder;
    QFile wide(folder.filePath(QStringLiteral("wide.ss")));
    QVERIFY(wide.open(QIODevice::WriteOnly));
    wide.write(schema);
    wide.close();
    HParser::Generator generator;
    generator.parseSSFile(wide.fileName());
    QCOMPARE(HexUtility::numProfilesAllowed(&generator), expected);
}

QTEST_GUILESS_MAIN(HexUtilityTest)
#include "tst_hexutility.moc"
