#include "HEXGeneratorParser/writetohex.h"

#include "HEXGeneratorParser/hexbuffer.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "support/capturedoutput.h"
#include "support/flashpage.h"
#include "support/workingdirectory.h"

#include <QtTest>

#include <memory>

using HEXGeneratorParser::HEXBuffer;
using HEXGeneratorParser::WriteToHEX;
using HParser::StructSettings;

namespace
{
QString schemaFile(const char *name)
{
    return QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + QLatin1String(name);
}

QByteArray n(qint64 value, int width)
{
    return FlashPage::number(value, width);
}

QByteArray t(const char *text, int width)
{
    return FlashPage::text(text, width);
}

/// The default elements of the delivered schema, from their tables.
const QByteArray pageCounter = n(3, 1) + n(0, 1);
const QByteArray version = n(4, 1) + n(0, 1);
const QByteArray hardwareVersion = n(16, 1) + n(0, 1);
const QByteArray barcode = n(17, 1) + t("0000", 5);
const QByteArray globalSettings = n(5, 1) + n(5, 1) + n(5, 1) + n(0, 1) + n(80, 2) + n(2, 2) +
                                  n(1, 2) + n(87, 2) + n(20, 1) + n(30, 1) + n(0, 2) + n(0, 2) +
                                  n(0, 2) + n(70, 1);
const QByteArray globalStats = n(6, 1) + n(0, 4) + n(0, 4) + n(0, 4) + n(0, 8) + n(0, 8);
const QByteArray profileStats = n(7, 1) + n(0, 1) + n(0, 4) + n(0, 4) + n(0, 4) + n(0, 4);
const QByteArray lithium = n(8, 1) + n(0, 1) + n(0, 1) + n(0b00000101, 1) + t("Lithium", 12) +
                           t("Custom", 14) + n(2100, 2) + n(200, 2) + n(2940, 2) + n(4000, 2) +
                           n(4200, 2) + n(150, 2);
const QByteArray nickel = n(9, 1) + n(0, 1) + n(1, 1) + n(0b00000101, 1) + t("Nickel", 12) +
                          t("Custom", 14) + n(500, 2) + n(2880, 2) + n(8000, 2) + n(3600, 2) +
                          n(30, 2) + n(0, 1) + n(55, 1) + n(10, 2) + n(5040, 2) + n(500, 2) +
                          n(100, 2);
const QByteArray lead = n(10, 1) + n(0, 1) + n(2, 1) + n(0b00000101, 1) + t("Lead", 12) +
                        t("Custom", 14) + n(4000, 2) + n(4320, 2) + n(150, 2) + n(4000, 2) +
                        n(4060, 2);

QByteArray fileBytes(HEXBuffer *buffer)
{
    QByteArray bytes;
    for (int i = 0; i < buffer->size(); ++i)
        bytes.append(static_cast<char>(buffer->getByte(i)));
    for (int word = 0; word < bytes.size(); word += 4)
        qSwap(bytes.data()[word], bytes.data()[word + 2]);
    return bytes;
}

QByteArray serialized(const StructSettings *element)
{
    HEXBuffer buffer(2048);
    WriteToHEX::serializeElement(&buffer, element);
    return fileBytes(&buffer);
}

/// The bytes that Intel HEX text holds from the page's start on.
QByteArray bytesOf(const QByteArray &hexText)
{
    QByteArray bytes;
    for (const QByteArray &line : hexText.split('\n')) {
        const QByteArray record = QByteArray::fromHex(line.mid(1));
        if (record.size() != 21)
            continue;
        const int address = static_cast<unsigned char>(record.at(1)) * 256 +
                            static_cast<unsigned char>(record.at(2)) - 0x3800;
        if (bytes.size() < address)
            bytes.append(QByteArray(address - bytes.size(), '?'));
        bytes.append(record.mid(4, 16));
    }
    return bytes;
}

/// The bytes of a page up to the end of its last row.
QByteArray wholeRows(const FlashPage &page)
{
    QByteArray bytes = page.fileBytes();
    while (bytes.size() % 256 != 0)
        bytes += QByteArray("\xFF\xFF\xFF\0", 4);
    return bytes;
}

std::unique_ptr<StructSettings> element(const HParser::Generator &generator, const char *name)
{
    std::unique_ptr<StructSettings> copy(
        generator.copyFlashstackElementSettings(QString::fromLatin1(name)));
    copy->buildFormulaTrees();
    for (HParser::StructSetting *setting : copy->getOriginalOrderStructSettings())
        setting->advancedEnabled = true;
    return copy;
}

HParser::StructSetting *member(const std::unique_ptr<StructSettings> &element, const char *name)
{
    return element->getStructSettingByName(QString::fromLatin1(name));
}

QByteArray assertionOf(const std::function<void()> &action)
{
    return lastWordsOf([&] {
        qInstallMessageHandler(nullptr);
        action();
    });
}
} // namespace

class WriteToHEXTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void numbers_data();
    void numbers();
    void strings_data();
    void strings();
    void flags();

    void defaultElements_data();
    void defaultElements();
    void filledProfile();
    void filledStatistics();
    void filledGlobalSettings();
    void sixSignificantDigits();
    void longTitleLosesItsEnd();
    void charactersBeyondAsciiTakeMoreRoom();
    void storableTexts_data();
    void storableTexts();
    void checksumEndsTheElement();
    void memberOfUnknownKindTakesNoRoom();
    void scaleIsAFormula();
    void bitsThatAreNoNumber();

    void image_data();
    void image();
    void imageWithoutHardwareAndBarcode();
    void fullPage();
    void tooMuchForAPage();
    void unwritableFile();

private:
    HParser::Generator generator;
};

void WriteToHEXTest::initTestCase()
{
    generator.parseSSFile(schemaFile("master.ss"));
}

void WriteToHEXTest::numbers_data()
{
    QTest::addColumn<QString>("cType");
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("scale");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *name, const char *cType, double value, double scale,
                        const char *bytes) {
        QTest::newRow(name) << QString::fromLatin1(cType) << value << scale
                            << QByteArray::fromHex(bytes);
    };
    row("145.6 by 0.1", "int", 145.6, 0.1, "B005");
    row("14.56 by 0.01", "int", 14.56, 0.01, "B005");
    row("four bytes", "long", 16909060, 1, "04030201");
    row("23", "unsigned char", 23, 1, "17");
    row("200", "unsigned char", 200, 1, "C8");
    row("negative", "signed int", -1000, 1, "18FC");
    row("minus one in eight bytes", "long long", -1, 1, "FFFFFFFFFFFFFFFF");
    row("half upwards", "unsigned char", 2.5, 1, "03");
    // By division it would be 1.4999999999999998.
    row("a tie by the reciprocal of the scale", "int", 0.15, 0.1, "0200");
    row("negative half upwards", "signed char", -2.5, 1, "FE");
    row("below a negative half", "signed char", -2.6, 1, "FD");
    row("just below a half", "unsigned char", 2.4, 1, "02");
    row("high bytes are dropped", "unsigned char", 0x1234, 1, "34");
    row("largest 32-bit number", "unsigned long", 2147483647, 1, "FFFFFF7F");
    row("least 32-bit number", "long", -2147483648.0, 1, "00000080");
    row("above 32 bits", "unsigned long", 4294967295.0, 1, "00000080");
    row("above 32 bits, in eight bytes", "unsigned long long", 1e15, 1, "00000080FFFFFFFF");
    row("below 32 bits", "long long", -1e15, 1, "00000080FFFFFFFF");
    row("infinite", "unsigned short", std::numeric_limits<double>::infinity(), 1, "0000");
    row("not a number", "unsigned long", std::numeric_limits<double>::quiet_NaN(), 1, "00000080");
    row("an hour", "unsigned long", 1, 0.0002777777, "100E0000");
    row("scale 0", "unsigned long", 1, 0, "00000080");
}

void WriteToHEXTest::numbers()
{
    QFETCH(QString, cType);
    QFETCH(double, value);
    QFETCH(double, scale);
    QFETCH(QByteArray, expected);
    QCOMPARE(WriteToHEX::getBinaryRep(cType, value, scale).toHex(), expected.toHex());
}

void WriteToHEXTest::strings_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("fits exactly") << QStringLiteral("hello") << 6 << QByteArray("hello\0", 6);
    QTest::newRow("one character") << QStringLiteral("h") << 2 << QByteArray("h\0", 2);
    QTest::newRow("filled up") << QStringLiteral("hi") << 4 << QByteArray("hi\0\0", 4);
    QTest::newRow("empty") << QString() << 4 << QByteArray(4, '\0');
    QTest::newRow("too long") << QStringLiteral("abcdefghijkl") << 12
                              << QByteArray("abcdefghijk\0", 12);
    QTest::newRow("room for the end only") << QStringLiteral("a") << 1 << QByteArray(1, '\0');
    QTest::newRow("no room") << QStringLiteral("a") << 0 << QByteArray();
    QTest::newRow("beyond ASCII") << QStringLiteral("\u00b0C") << 4
                                  << QByteArray("\xC2\xB0\x43\0\0", 5);
}

void WriteToHEXTest::strings()
{
    QFETCH(QString, text);
    QFETCH(int, length);
    QFETCH(QByteArray, expected);
    QCOMPARE(WriteToHEX::getBinaryRep(text, length), expected);
}

void WriteToHEXTest::flags()
{
    QCOMPARE(WriteToHEX::getBinaryRep(true), QByteArray("\1", 1));
    QCOMPARE(WriteToHEX::getBinaryRep(false), QByteArray("\0", 1));
}

void WriteToHEXTest::defaultElements_data()
{
    QTest::addColumn<QByteArray>("dataBytes");
    QTest::addColumn<int>("imageBytes");
    QTest::newRow("Page counter") << pageCounter << 4;
    QTest::newRow("Version") << version << 4;
    QTest::newRow("Global settings") << globalSettings << 32;
    QTest::newRow("Global stats") << globalStats << 40;
    QTest::newRow("Profile stats") << profileStats << 28;
    QTest::newRow("Lithium") << lithium << 60;
    QTest::newRow("Nickel") << nickel << 68;
    QTest::newRow("Lead") << lead << 56;
    QTest::newRow("Hardware Version") << hardwareVersion << 4;
    QTest::newRow("Barcode") << barcode << 12;
}

void WriteToHEXTest::defaultElements()
{
    QFETCH(QByteArray, dataBytes);
    QFETCH(int, imageBytes);
    const StructSettings *struct_ =
        generator.getFSElementByName(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(struct_);
    const QByteArray bytes = serialized(struct_);
    QCOMPARE(bytes.toHex(), FlashPage().add(dataBytes).fileBytes().toHex());
    QCOMPARE(bytes.size(), imageBytes);
    if (dataBytes == pageCounter) {
        QCOMPARE(bytes.toHex(), QByteArray("fd000300"));
    }
}

void WriteToHEXTest::filledProfile()
{
    const auto profile = element(generator, "Nickel");
    member(profile, "profile_id")->setValue(16.0);
    member(profile, "active")->setValue(false);
    member(profile, "defaultprofile")->setValue(true);
    member(profile, "modifiable")->setValue(false);
    member(profile, "scheduled_for_deletion")->setValue(true);
    member(profile, "extraneous1")->setValue(1.0);
    member(profile, "title")->setValue(QStringLiteral("24V NiMH"));
    member(profile, "description")->setValue(QStringLiteral("Over night"));
    member(profile, "nominal_full_V")->setValue(24.0);
    member(profile, "bulk_I")->setValue(7.9);
    member(profile, "start_I")->setValue(0.3);
    member(profile, "bulk_start_V")->setValue(20.1);
    member(profile, "delta_V")->setValue(0.7);
    member(profile, "external_thermistor")->setValue(true);
    member(profile, "max_T")->setValue(41.0);
    member(profile, "dTdt")->setValue(9.9);
    member(profile, "max_V")->setValue(33.3);
    member(profile, "topup_I")->setValue(0.1);
    member(profile, "topup_time")->setValue(9.9);
    const QByteArray expected = n(9, 1) + n(16, 1) + n(1, 1) + n(0b00011010, 1) +
                                t("24V NiMH", 12) + t("Over night", 14) + n(300, 2) + n(2010, 2) +
                                n(7900, 2) + n(2400, 2) + n(70, 2) + n(1, 1) + n(41, 1) + n(99, 2) +
                                n(3330, 2) + n(100, 2) + n(990, 2);
    QCOMPARE(serialized(profile.get()).toHex(), FlashPage().add(expected).fileBytes().toHex());
}

void WriteToHEXTest::filledStatistics()
{
    const auto stats = element(generator, "Profile stats");
    member(stats, "profile_id")->setValue(3.0);
    member(stats, "Wh")->setValue(1234.0);
    member(stats, "Ah")->setValue(56.7);
    member(stats, "chargetime_s")->setValue(2.5);
    member(stats, "charge_count")->setValue(10.0);
    const QByteArray expected =
        n(7, 1) + n(3, 1) + n(12340, 4) + n(5670, 4) + n(9000, 4) + n(10, 4);
    QCOMPARE(serialized(stats.get()).toHex(), FlashPage().add(expected).fileBytes().toHex());
}

void WriteToHEXTest::filledGlobalSettings()
{
    const auto settings = element(generator, "Global settings");
    member(settings, "brightness")->setValue(9.0);
    member(settings, "flip_display")->setValue(true);
    member(settings, "voltage_gain_tweak_vv")->setValue(-1000.0);
    member(settings, "current_gain_tweak_vv")->setValue(-1.0);
    member(settings, "voltage_offset_tweak_lsb")->setValue(3276.0);
    const QByteArray expected = n(5, 1) + n(9, 1) + n(5, 1) + n(1, 1) + n(80, 2) + n(2, 2) +
                                n(1, 2) + n(87, 2) + n(20, 1) + n(30, 1) + n(-1000, 2) + n(-1, 2) +
                                n(3276, 2) + n(70, 1);
    QCOMPARE(serialized(settings.get()).toHex(), FlashPage().add(expected).fileBytes().toHex());
}

void WriteToHEXTest::sixSignificantDigits()
{
    const auto stats = element(generator, "Global stats");
    member(stats, "charge_cycles")->setValue(1234567.0);
    const QByteArray expected = n(6, 1) + n(0, 4) + n(0, 4) + n(1234570, 4) + n(0, 8) + n(0, 8);
    QCOMPARE(serialized(stats.get()).toHex(), FlashPage().add(expected).fileBytes().toHex());
}

void WriteToHEXTest::longTitleLosesItsEnd()
{
    const auto profile = element(generator, "Lead");
    member(profile, "title")->setValue(QStringLiteral("abcdefghijkl"));
    QByteArray expected = lead;
    expected.replace(4, 12, t("abcdefghijk", 12));
    QCOMPARE(serialized(profile.get()).toHex(), FlashPage().add(expected).fileBytes().toHex());
}

void WriteToHEXTest::charactersBeyondAsciiTakeMoreRoom()
{
    const auto profile = element(generator, "Lead");
    member(profile, "title")->setValue(QStringLiteral("\u00e4"));
    QByteArray expected = lead;
    expected.replace(4, 12, QByteArray("\xC3\xA4") + QByteArray(11, '\0'));
    QCOMPARE(serialized(profile.get()).toHex(), FlashPage().add(expected).fileBytes().toHex());
}

void WriteToHEXTest::storableTexts_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("storable");
    QTest::newRow("default") << "title"
                             << "Lithium" << true;
    QTest::newRow("empty") << "title"
                           << "" << true;
    QTest::newRow("last of ASCII") << "title"
                                   << "a~\x7f" << true;
    QTest::newRow("first beyond ASCII") << "title" << QString(QChar(0x80)) << false;
    QTest::newRow("umlaut") << "title" << QString::fromUtf8("M\u00fcller") << false;
    QTest::newRow("in the description") << "description" << QString::fromUtf8("\u00b0C") << false;
    QTest::newRow("half of two") << "title" << QString(QChar(0xd83d)) << false;
}

void WriteToHEXTest::storableTexts()
{
    QFETCH(QString, member);
    QFETCH(QString, text);
    QFETCH(bool, storable);
    const std::unique_ptr<HParser::StructSettings> profile(
        generator.copyFlashstackElementSettings(QStringLiteral("Lithium")));
    profile->buildFormulaTrees();
    profile->getStructSettingByName(member)->setValue(text);
    QCOMPARE(WriteToHEX::canStoreTexts(profile.get()), storable);
}

void WriteToHEXTest::checksumEndsTheElement()
{
    StructSettings odd;
    odd.setOriginalOrderStructSettings(
        {new HParser::StructSetting(
             QStringLiteral("unsigned char a; // bool, auto, \"a\", \"a\", 0, -1, basic")),
         new HParser::StructSetting(
             QStringLiteral("unsigned char c; // bool, auto, \"c\", \"checksum\", 0, -1, basic")),
         new HParser::StructSetting(
             QStringLiteral("unsigned char b; // bool, auto, \"b\", \"b\", 0, -1, basic"))});
    odd.getStructSettingByName(QStringLiteral("a"))->setValue(true);
    odd.getStructSettingByName(QStringLiteral("b"))->setValue(true);
    QCOMPARE(serialized(&odd).toHex(), QByteArray("ffff0100"));
}

void WriteToHEXTest::memberOfUnknownKindTakesNoRoom()
{
    StructSettings odd;
    auto *unknown = new HParser::StructSetting();
    unknown->bits = QStringLiteral("auto");
    odd.setOriginalOrderStructSettings(
        {unknown, new HParser::StructSetting(QStringLiteral(
                      "unsigned char a; // bool, auto, \"a\", \"a\", 0, -1, basic"))});
    odd.getOriginalOrderStructSettings().last()->setValue(true);
    QCOMPARE(serialized(&odd).toHex(), QByteArray("ffff0100"));
}

void WriteToHEXTest::scaleIsAFormula()
{
    StructSettings odd;
    odd.setOriginalOrderStructSettings({new HParser::StructSetting(QStringLiteral(
        "unsigned char a; // num, auto, 0, 9, *1 / 4, 2, \"a\", \"\", \"a\", 0, 0, basic"))});
    odd.buildFormulaTrees();
    odd.getStructSettingByName(QStringLiteral("a"))->setValue(2.0);
    QCOMPARE(serialized(&odd).toHex(), QByteArray("ffff0800"));
}

void WriteToHEXTest::bitsThatAreNoNumber()
{
    const QByteArray words = assertionOf([] {
        StructSettings odd;
        odd.setOriginalOrderStructSettings({new HParser::StructSetting(
            QStringLiteral("unsigned char a; // bool, 1x, \"a\", \"a\", 0, -1, basic"))});
        serialized(&odd);
    });
    QVERIFY2(words.contains(R"~("setting->size.contains(QRegExp("^\\d+$"))")~"), words);
}

void WriteToHEXTest::image_data()
{
    QTest::addColumn<QList<QByteArray>>("profiles");
    QTest::addColumn<QList<int>>("withStats");
    QTest::addColumn<bool>("globalStatsExist");
    QTest::newRow("no profile") << QList<QByteArray>() << QList<int>() << false;
    QTest::newRow("lifetime statistics") << QList<QByteArray>() << QList<int>() << true;
    QTest::newRow("all chemistries, some statistics")
        << QList<QByteArray>{lead, lithium, nickel, lithium} << QList<int>{1, 3} << true;
}

void WriteToHEXTest::image()
{
    QFETCH(QList<QByteArray>, profiles);
    QFETCH(QList<int>, withStats);
    QFETCH(bool, globalStatsExist);
    const WorkingDirectory directory;

    const QMap<QByteArray, const char *> names = {
        {lithium, "Lithium"}, {nickel, "Nickel"}, {lead, "Lead"}};
    std::vector<std::unique_ptr<StructSettings>> owned;
    QList<StructSettings *> profileStructs;
    QList<StructSettings *> statStructs;
    FlashPage page;
    page.add(pageCounter).add(version).add(globalSettings);
    for (const int id : withStats) {
        owned.push_back(element(generator, "Profile stats"));
        member(owned.back(), "profile_id")->setValue(double(id));
        statStructs.append(owned.back().get());
        page.add(QByteArray(profileStats).replace(1, 1, n(id, 1)));
    }
    for (int id = 0; id < profiles.size(); ++id) {
        owned.push_back(element(generator, names.value(profiles.at(id))));
        member(owned.back(), "profile_id")->setValue(double(id));
        profileStructs.append(owned.back().get());
        page.add(QByteArray(profiles.at(id)).replace(1, 1, n(id, 1)));
    }
    if (globalStatsExist)
        page.add(globalStats);
    page.add(hardwareVersion).add(barcode);

    generator.setUnitStatsExists(globalStatsExist);
    QVERIFY(WriteToHEX::write(QStringLiteral("out.hex"), profileStructs, statStructs, &generator));
    const QByteArray text = directory.read(QStringLiteral("out.hex"));
    QVERIFY(text.startsWith(":020000040001F9\n:10380000"));
    QVERIFY(text.endsWith("\n:00000001FF\n"));
    QCOMPARE(bytesOf(text).toHex(), wholeRows(page).toHex());
}

void WriteToHEXTest::imageWithoutHardwareAndBarcode()
{
    const WorkingDirectory directory;
    HParser::Generator firstGeneration;
    firstGeneration.parseSSFile(schemaFile("48V_FSv1.ss"));
    QVERIFY(WriteToHEX::write(QStringLiteral("out.hex"), {}, {}, &firstGeneration));
    FlashPage page;
    page.add(pageCounter).add(version).add(globalSettings);
    QCOMPARE(bytesOf(directory.read(QStringLiteral("out.hex"))).toHex(), wholeRows(page).toHex());
}

void WriteToHEXTest::fullPage()
{
    const WorkingDirectory directory;
    const auto profile = element(generator, "Nickel");
    const auto stats = element(generator, "Profile stats");
    QList<StructSettings *> profiles;
    QList<StructSettings *> statistics;
    FlashPage page;
    page.add(pageCounter).add(version).add(globalSettings);
    for (int i = 0; i < 17; ++i) {
        statistics.append(stats.get());
        page.add(profileStats);
    }
    for (int i = 0; i < 17; ++i) {
        profiles.append(profile.get());
        page.add(nickel);
    }
    page.add(globalStats).add(hardwareVersion).add(barcode);
    generator.setUnitStatsExists(true);
    QVERIFY(WriteToHEX::write(QStringLiteral("out.hex"), profiles, statistics, &generator));
    QCOMPARE(bytesOf(directory.read(QStringLiteral("out.hex"))).toHex(), wholeRows(page).toHex());
    QVERIFY(page.fileBytes().size() <= 2048);
}

void WriteToHEXTest::tooMuchForAPage()
{
    const WorkingDirectory directory; // here, for what dies leaves its folders behind
    const QByteArray words = assertionOf([this] {
        const auto profile = element(generator, "Nickel");
        QList<StructSettings *> profiles;
        for (int i = 0; i < 30; ++i)
            profiles.append(profile.get());
        WriteToHEX::write(QStringLiteral("out.hex"), profiles, {}, &generator);
    });
    QVERIFY2(words.contains("\"hexBuffer.size() <= 2048\""), words);
}

void WriteToHEXTest::unwritableFile()
{
    const WorkingDirectory directory;
    QVERIFY(!WriteToHEX::write(QStringLiteral("no/such/folder.hex"), {}, {}, &generator));
}

QTEST_GUILESS_MAIN(WriteToHEXTest)
#include "tst_writetohex.moc"
