#include "HEXGeneratorParser/readfromhex.h"

#include "HEXGeneratorParser/hexutility.h"
#include "HEXGeneratorParser/writetohex.h"
#include "ImportProfiles/parsedfselement.h"
#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "support/capturedoutput.h"
#include "support/flashpage.h"
#include "support/workingdirectory.h"

#include <QRandomGenerator>
#include <QtTest>

#include <memory>
#include <optional>

using HEXGeneratorParser::ReadFromHEX;
using HEXGeneratorParser::WriteToHEX;
using HParser::StructSettings;
using ImportProfiles::ParsedFSElement;
using Properties = QMap<QString, QString>;
using Log = QList<Properties>;

namespace
{
constexpr int wordAddress = 0x9C00;
constexpr int imageSize = 0x30000;
const QString file = QStringLiteral("page.hex");

QString q(const char *text)
{
    return QString::fromLatin1(text);
}

QByteArray n(qint64 value, int width)
{
    return FlashPage::number(value, width);
}

QByteArray t(const char *text, int width)
{
    return FlashPage::text(text, width);
}

Properties properties(std::initializer_list<std::pair<const char *, const char *>> list)
{
    Properties result;
    for (const auto &property : list)
        result.insert(q(property.first), q(property.second));
    return result;
}

const QByteArray pageCounter = n(3, 1) + n(7, 1);
const QByteArray lithium = n(8, 1) + n(5, 1) + n(0, 1) + n(0b00000101, 1) + t("36V Li(10s)", 12) +
                           t("Fast", 14) + n(2100, 2) + n(200, 2) + n(2940, 2) + n(7900, 2) +
                           n(4200, 2) + n(150, 2);

QByteArray version(int number)
{
    return n(4, 1) + n(number, 1);
}

/// The type numbers and one more member of a log, for comparing orders: "4:2" is version 2.
QStringList summary(const Log &log)
{
    QStringList result;
    for (const Properties &element : log) {
        QString line = element.value(q("type"));
        for (const char *key : {"count", "version", "hardware_version", "profile_id"}) {
            if (element.contains(q(key)))
                line += QLatin1Char(':') + element.value(q(key));
        }
        result.append(line);
    }
    return result;
}
} // namespace

Q_DECLARE_METATYPE(FlashPage)
Q_DECLARE_METATYPE(std::optional<int>)

class ReadFromHEXTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void unreadableFiles_data();
    void unreadableFiles();
    void nothingReadYet();
    void restoresStreamOrder();
    void secondFileReplacesTheFirst();
    void structOfAType_data();
    void structOfAType();
    void structOfATypeWithoutHardware();
    void hardwareTypesAreCurrentValues();
    void firstStructOfATypeCounts();

    void elements_data();
    void elements();
    void blankPageIsAnEmptyLog();
    void silentPageIsOutdated();
    void blankWordEndsTheLog();
    void fillerIsNotLookedAt();
    void bitFields_data();
    void bitFields();
    void flagsOfWholeBytes_data();
    void flagsOfWholeBytes();
    void textWithoutEnd();
    void unusualMembers();
    void codes_data();
    void codes();
    void changedTitle();
    void numberBeyond63Bits();
    void superseded_data();
    void superseded();

    void fullPageRunsOnBehindIt();
    void fullImageEndsWithIt();
    void elementOverTheEndOfTheImage();
    void anyWordAddress_data();
    void anyWordAddress();

    void readsWhatWasWritten_data();
    void readsWhatWasWritten();
    void rowsLeftOutAreBlank_data();
    void rowsLeftOutAreBlank();
    void cutFiles();
    void cutPages();
    void flippedBits();
    void randomPages();

private:
    void store(const QByteArray &hexText);
    void load(const QByteArray &hexText, int address = wordAddress);
    Log parse();
    /// The thrown code, or nothing.
    std::optional<int> codeOf(const QByteArray &hexText, int address = wordAddress);

    HParser::Generator generator;
    std::unique_ptr<WorkingDirectory> directory;
    std::unique_ptr<ReadFromHEX> reader;
    QByteArray printed;
};

void ReadFromHEXTest::initTestCase()
{
    generator.parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/master.ss"));
    directory = std::make_unique<WorkingDirectory>();
}

void ReadFromHEXTest::store(const QByteArray &hexText)
{
    // A new file each time: some file systems flush one that is cut and written again.
    QFile::remove(file);
    directory->write(file, hexText);
}

void ReadFromHEXTest::load(const QByteArray &hexText, int address)
{
    store(hexText);
    reader = std::make_unique<ReadFromHEX>();
    QVERIFY(reader->read(file, address));
}

Log ReadFromHEXTest::parse()
{
    Log log;
    for (ParsedFSElement *element : reader->parseFSElements(&generator)) {
        log.append(element->getProperties());
        delete element;
    }
    return log;
}

std::optional<int> ReadFromHEXTest::codeOf(const QByteArray &hexText, int address)
{
    std::optional<int> code;
    load(hexText, address);
    printed = printedBy([&] {
        try {
            parse();
        } catch (int thrown) {
            code = thrown;
        }
    });
    return code;
}

void ReadFromHEXTest::unreadableFiles_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no records") << QByteArray("hello\n");
    QTest::newRow("only an end") << QByteArray(":00000001FF\n");
    QTest::newRow("no end") << FlashPage().add(pageCounter).toHex().chopped(13);
    QTest::newRow("damaged record") << QByteArray(":0400000001020304F1\n:00000001FF\n");
}

void ReadFromHEXTest::unreadableFiles()
{
    QFETCH(QByteArray, text);
    store(text);
    printedBy([&] { QVERIFY(!ReadFromHEX().read(file, wordAddress)); });
}

void ReadFromHEXTest::nothingReadYet()
{
    ReadFromHEX empty;
    QVERIFY(!empty.getBinaryData());
    QVERIFY(!empty.read(q("missing.hex"), wordAddress));
    QVERIFY(!empty.getBinaryData());
    printedBy([&] { QVERIFY(!empty.read(directory->path(), wordAddress)); });
}

void ReadFromHEXTest::restoresStreamOrder()
{
    load(FlashPage().addRaw(QByteArray("\x03\x00\xFD\x04\x05", 5)).toHex());
    const unsigned char *data = reader->getBinaryData();
    const unsigned char expected[] = {3, 0, 0xFD, 0, 4, 5, 0xFF, 0, 0xFF, 0xFF, 0xFF, 0};
    QVERIFY(std::equal(std::begin(expected), std::end(expected), data));
}

void ReadFromHEXTest::secondFileReplacesTheFirst()
{
    load(FlashPage().add(pageCounter).add(version(1)).toHex());
    store(FlashPage().add(version(2)).toHex());
    QVERIFY(reader->read(file, wordAddress));
    QCOMPARE(summary(parse()), QStringList{q("4:2")});
    QVERIFY(!reader->read(q("missing.hex"), wordAddress));
    QVERIFY(!reader->getBinaryData());
}

void ReadFromHEXTest::structOfAType_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");
    const QMap<int, const char *> names = {
        {3, "Page counter"},      {4, "Version"},  {5, "Global settings"}, {6, "Global stats"},
        {7, "Profile stats"},     {8, "Lithium"},  {9, "Nickel"},          {10, "Lead"},
        {16, "Hardware Version"}, {17, "Barcode"},
    };
    for (int type = -1; type <= 256; ++type)
        QTest::newRow(QByteArray::number(type)) << type << q(names.value(type));
}

void ReadFromHEXTest::structOfAType()
{
    QFETCH(int, type);
    QFETCH(QString, name);
    const StructSettings *found = ReadFromHEX::getProfileFromType(&generator, type);
    QCOMPARE(found ? found->getDescriptiveName() : QString(), name);
    QCOMPARE(found, name.isEmpty() ? nullptr : generator.getFSElementByName(name));
}

void ReadFromHEXTest::structOfATypeWithoutHardware()
{
    HParser::Generator firstGeneration;
    QVERIFY(!ReadFromHEX::getProfileFromType(&firstGeneration, 3));
    firstGeneration.parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/48V_FSv1.ss"));
    QVERIFY(!ReadFromHEX::getProfileFromType(&firstGeneration, 16));
    QVERIFY(!ReadFromHEX::getProfileFromType(&firstGeneration, 17));
    QVERIFY(ReadFromHEX::getProfileFromType(&firstGeneration, 10));
}

void ReadFromHEXTest::hardwareTypesAreCurrentValues()
{
    HParser::Generator other;
    other.parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/master.ss"));
    HParser::StructSetting *type =
        other.getHardwareVersionStruct()->getStructSettingByName(q("type"));
    type->setUpperBound(q("18"));
    type->setValue(18.0);
    QVERIFY(!ReadFromHEX::getProfileFromType(&other, 16));
    QCOMPARE(ReadFromHEX::getProfileFromType(&other, 18), other.getHardwareVersionStruct());
}

void ReadFromHEXTest::firstStructOfATypeCounts()
{
    QFile original(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/master.ss"));
    QVERIFY(original.open(QIODevice::ReadOnly));
    QString schema = QString::fromUtf8(original.readAll());
    QStringList order{q("Global settings"), q("Global stats"),     q("Page counter"), q("Version"),
                      q("Profile stats"),   q("Hardware Version"), q("Barcode")};
    for (const StructSettings *chemistry : generator.getChemistrySettings())
        order.append(chemistry->getDescriptiveName());
    QCOMPARE(order.size(), 10);

    // All structs claim a type at first, then all but the first, and so on.
    const QString type = q("num, auto, %1, %1, *1, 0, \"type\", \"not displayed\", \"type\", %1,");
    for (const int number : {3, 4, 5, 6, 7, 8, 9, 10, 16, 17})
        schema.replace(type.arg(number), type.arg(99));
    for (int i = 0; i < order.size(); ++i) {
        directory->write(q("same.ss"), schema.toUtf8());
        HParser::Generator same;
        same.parseSSFile(directory->path() + q("/same.ss"));
        const StructSettings *found = ReadFromHEX::getProfileFromType(&same, 99);
        QVERIFY2(found, qPrintable(order.at(i)));
        QCOMPARE(found->getDescriptiveName(), order.at(i));

        const int head = schema.indexOf(QLatin1Char('"') + order.at(i) + QLatin1Char('"'));
        const int place = schema.indexOf(type.arg(99), head);
        QVERIFY(head >= 0 && place > head);
        schema.replace(place, type.arg(99).size(), type.arg(100 + i));
    }
}

void ReadFromHEXTest::elements_data()
{
    QTest::addColumn<QByteArray>("dataBytes");
    QTest::addColumn<Properties>("expected");
    QTest::newRow("page counter") << pageCounter
                                  << properties({{"name", "Page counter"},
                                                 {"type", "3"},
                                                 {"count", "7"},
                                                 {"checksum", "246"}});
    QTest::newRow("hardware version") << n(16, 1) + n(5, 1)
                                      << properties({{"name", "Hardware Version"},
                                                     {"type", "16"},
                                                     {"hardware_version", "5"},
                                                     {"checksum", "235"}});
    QTest::newRow("barcode") << n(17, 1) + t("A1B2", 5)
                             << properties({{"name", "Barcode"},
                                            {"type", "17"},
                                            {"not_displayed", "A1B2"},
                                            {"checksum", "9"}}); // 17+65+49+66+50 = 247
    QTest::newRow("global settings")
        << n(5, 1) + n(9, 1) + n(240, 1) + n(1, 1) + n(75, 2) + n(3, 2) + n(1, 2) + n(999, 2) +
               n(100, 1) + n(255, 1) + n(-1000, 2) + n(2000, 2) + n(-1, 2) + n(-40, 1)
        << properties({{"name", "Global settings"},
                       {"type", "5"},
                       {"brightness", "9"},
                       {"screensaver_delay", "240"},
                       {"flip_display", "true"},
                       {"longpress_time", "0.75"},
                       {"shortpress_time", "0.03"},
                       {"debounce_time", "0.01"},
                       {"cable_resistance", "0.999"},
                       {"splashscreen_time", "10"},
                       {"current_tare_period", "255"},
                       {"voltage_gain_tweak", "-1000"},
                       {"current_gain_tweak", "2000"},
                       {"voltage_offset_tweak", "-1"},
                       {"temperature_limit", "-40"},
                       // 5+9+240+1+75+3+1+231+3+100+255+24+252+208+7+255+255+216 = 2140
                       {"checksum", "164"}});
    QTest::newRow("global stats")
        << n(6, 1) + n(3600, 4) + n(0, 4) + n(1234567, 4) + n(36000, 8) + n(Q_INT64_C(1) << 40, 8)
        << properties({{"name", "Global stats"},
                       {"type", "6"},
                       {"charge_time", "1"}, // 0.99999972
                       {"lifetime", "0"},
                       {"charge_cycles", "1.23457e+06"},
                       {"total_amps_low", "10"},
                       {"total_watts_low", "3.0542e+08"}, // 1099511627776 * 0.0002777777
                       // 6+16+14+135+214+18+160+140+1 = 704
                       {"checksum", "64"}});
    QTest::newRow("profile stats")
        << n(7, 1) + n(3, 1) + n(12340, 4) + n(5670, 4) + n(9000, 4) + n(10, 4)
        << properties({{"name", "Profile stats"},
                       {"type", "7"},
                       {"profile_id", "3"},
                       {"watt_hours", "1234"},
                       {"amp_hours", "56.7"},
                       {"charge_time", "2.5"}, // 2.4999993
                       {"charge_count", "10"},
                       // 7+3+52+48+38+22+40+35+10 = 255
                       {"checksum", "1"}});
    QTest::newRow("lithium profile") << lithium
                                     << properties({{"name", "Lithium"},
                                                    {"type", "8"},
                                                    {"profile_id", "5"},
                                                    {"chemistry", "0"},
                                                    {"active", "true"},
                                                    {"default", "false"},
                                                    {"modifiable", "true"},
                                                    {"scheduled_for_deletion", "false"},
                                                    {"extraneous1", "0"},
                                                    {"title", "36V Li(10s)"},
                                                    {"subtitle", "Fast"},
                                                    {"min_starting_voltage", "21"},
                                                    {"start_current", "0.2"},
                                                    {"bulk_start_voltage", "29.4"},
                                                    {"bulk_current", "7.9"},
                                                    {"full_voltage", "42"},
                                                    {"charge_complete_below_current", "0.15"},
                                                    {"checksum", "20"}});
    QTest::newRow("lead profile") << n(10, 1) + n(255, 1) + n(2, 1) + n(0b00001010, 1) + t("", 12) +
                                         t("", 14) + n(200, 2) + n(6300, 2) + n(50, 2) +
                                         n(9900, 2) + n(65535, 2)
                                  << properties({{"name", "Lead"},
                                                 {"type", "10"},
                                                 {"profile_id", "255"},
                                                 {"chemistry", "2"},
                                                 {"active", "false"},
                                                 {"default", "true"},
                                                 {"modifiable", "false"},
                                                 {"scheduled_for_deletion", "true"},
                                                 {"extraneous1", "0"},
                                                 {"title", ""},
                                                 {"subtitle", ""},
                                                 {"bulk_current", "0.2"},
                                                 {"full_voltage", "63"},
                                                 {"charge_complete_below_current", "0.05"},
                                                 {"max_time_at_full_voltage", "9.9"},
                                                 {"float_voltage", "655.35"},
                                                 // 10+255+2+10+200+156+24+50+172+38+255+255 = 1427
                                                 {"checksum", "109"}});
    QTest::newRow("nickel profile")
        << n(9, 1) + n(0, 1) + n(1, 1) + n(0b11110000, 1) + t("Ni", 12) + t("x", 14) + n(300, 2) +
               n(2010, 2) + n(8000, 2) + n(2400, 2) + n(70, 2) + n(2, 1) + n(41, 1) + n(99, 2) +
               n(3330, 2) + n(100, 2) + n(990, 2)
        << properties({{"name", "Nickel"},
                       {"type", "9"},
                       {"profile_id", "0"},
                       {"chemistry", "1"},
                       {"active", "false"},
                       {"default", "false"},
                       {"modifiable", "false"},
                       {"scheduled_for_deletion", "false"},
                       {"extraneous1", "15"},
                       {"title", "Ni"},
                       {"subtitle", "x"},
                       {"slow_start_current", "0.3"},
                       {"bulk_start_voltage", "20.1"},
                       {"bulk_current", "8"},
                       {"nominal_voltage", "24"},
                       {"charge_complete_at_-delta_v", "0.7"},
                       {"thermistor", "true"},
                       {"charge_complete_at_max_temperature", "41"},
                       {"charge_complete_at_dt_dt", "9.9"},
                       {"charge_complete_at_max_voltage", "33.3"},
                       {"top-up_current", "0.1"},
                       {"top-up_time", "9.9"},
                       // 9+1+240+78+105+120+44+1+218+7+64+31+96+9+70+2+41+99+2+13+100+222+3 = 1575
                       {"checksum", "217"}});
}

void ReadFromHEXTest::elements()
{
    QFETCH(QByteArray, dataBytes);
    QFETCH(Properties, expected);
    load(FlashPage().add(dataBytes).toHex());
    const Log log = parse();
    QCOMPARE(log.size(), 1);
    QCOMPARE(log.first(), expected);
}

void ReadFromHEXTest::blankPageIsAnEmptyLog()
{
    load(FlashPage().toHex());
    QVERIFY(parse().isEmpty());
}

void ReadFromHEXTest::silentPageIsOutdated()
{
    // Data elsewhere only: the page's own bytes stay zero.
    QCOMPARE(codeOf(FlashPage().add(pageCounter).toHex(0x100)), std::optional<int>(4));
    // Also where the data end exactly at its beginning.
    QCOMPARE(codeOf(FlashPage().add(pageCounter).toHex(wordAddress - 0x400)),
             std::optional<int>(4));
}

void ReadFromHEXTest::blankWordEndsTheLog()
{
    FlashPage page;
    page.add(pageCounter).add(version(2)).addRaw("\xFF").add(version(3)).add(n(1, 1));
    load(page.toHex());
    QCOMPARE(summary(parse()), (QStringList{q("3:7"), q("4:2")}));
}

void ReadFromHEXTest::fillerIsNotLookedAt()
{
    // The barcode's seven bytes leave two of its last word.
    const QByteArray barcode = n(17, 1) + t("A1B2", 5) + n(9, 1);
    load(FlashPage().addRaw(barcode, 0x03).add(version(2)).toHex());
    QCOMPARE(summary(parse()), (QStringList{q("17"), q("4:2")}));
}

void ReadFromHEXTest::bitFields_data()
{
    QTest::addColumn<int>("byte");
    QTest::addColumn<QStringList>("expected");
    const QString yes = q("true"), no = q("false");
    QTest::newRow("active, modifiable") << 0b00000101 << QStringList{yes, no, yes, no, q("0")};
    QTest::newRow("none") << 0 << QStringList{no, no, no, no, q("0")};
    QTest::newRow("all") << 0xFF << QStringList{yes, yes, yes, yes, q("15")};
    QTest::newRow("default") << 0b00000010 << QStringList{no, yes, no, no, q("0")};
    QTest::newRow("deleted") << 0b00001000 << QStringList{no, no, no, yes, q("0")};
    QTest::newRow("filler's lowest bit") << 0b00010000 << QStringList{no, no, no, no, q("1")};
    QTest::newRow("filler's highest bit") << 0b10000000 << QStringList{no, no, no, no, q("8")};
}

void ReadFromHEXTest::bitFields()
{
    QFETCH(int, byte);
    QFETCH(QStringList, expected);
    load(FlashPage().add(QByteArray(lithium).replace(3, 1, n(byte, 1))).toHex());
    const Log log = parse();
    QCOMPARE(log.size(), 1);
    const char *keys[] = {"active", "default", "modifiable", "scheduled_for_deletion",
                          "extraneous1"};
    for (int i = 0; i < expected.size(); ++i)
        QCOMPARE(log.first().value(q(keys[i])), expected.at(i));
}

void ReadFromHEXTest::flagsOfWholeBytes_data()
{
    QTest::addColumn<int>("byte");
    QTest::addColumn<QString>("expected");
    QTest::newRow("0") << 0 << q("false");
    QTest::newRow("1") << 1 << q("true");
    QTest::newRow("128") << 128 << q("true");
}

void ReadFromHEXTest::flagsOfWholeBytes()
{
    QFETCH(int, byte);
    QFETCH(QString, expected);
    load(FlashPage().add(n(5, 1) + n(9, 1) + n(0, 1) + n(byte, 1) + QByteArray(17, '\0')).toHex());
    QCOMPARE(parse().first().value(q("flip_display")), expected);
}

void ReadFromHEXTest::textWithoutEnd()
{
    load(FlashPage().add(QByteArray(lithium).replace(4, 12, "abcdefghijkl")).toHex());
    const Properties profile = parse().first();
    QCOMPARE(profile.value(q("title")), q("abcdefghijkl"));
    QCOMPARE(profile.value(q("subtitle")), q("Fast"));
}

void ReadFromHEXTest::unusualMembers()
{
    // A schema whose hardware version has a text in bits and a member of no kind.
    QFile original(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/master.ss"));
    QVERIFY(original.open(QIODevice::ReadOnly));
    const QString schema = QString::fromUtf8(original.readAll());
    const int place = schema.indexOf(q("\"hardware_version\""));
    QVERIFY(place > 0);
    const int line = schema.lastIndexOf(QLatin1Char('\n'), place) + 1;
    const QString more =
        q("char a[2]; // string, 8, \"a\", \"The Text\", \"\", -1, basic\n"
          "char c; // other, auto, \"c\"\n"
          "signed char d; // num, 8, -9, 9, *0.5, 1, \"d\", \"\", \"d\", 0, -1, basic\n");
    directory->write(q("odd.ss"), (schema.left(line) + more + schema.mid(line)).toUtf8());
    HParser::Generator odd;
    odd.parseSSFile(directory->path() + q("/odd.ss"));

    load(FlashPage().add(n(16, 1) + n(0xFF, 1) + n(0xFE, 1) + n(2, 1)).toHex());
    const QList<ParsedFSElement *> log = reader->parseFSElements(&odd);
    QCOMPARE(log.size(), 1);
    const Properties found = log.first()->getProperties();
    delete log.first();
    QCOMPARE(found.value(q("the_text"), q("missing")), QString());
    QCOMPARE(found.value(QString(), q("missing")), QString());
    // A number in bits is unsigned whatever its type says.
    QCOMPARE(found.value(q("d")), q("127"));
    QCOMPARE(found.value(q("hardware_version")), q("2"));
}

void ReadFromHEXTest::codes_data()
{
    QTest::addColumn<FlashPage>("page");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("output");
    const QByteArray none;
    const auto type = [](int number) { return FlashPage().addRaw(n(number, 1)); };
    QTest::newRow("type 0") << type(0) << 4 << none;
    QTest::newRow("type 1") << type(1) << 4 << none;
    QTest::newRow("type 2") << type(2) << 4 << none;
    QTest::newRow("type 11") << type(11) << 2 << QByteArray("Error! Invalid type\n");
    QTest::newRow("type 254") << type(254) << 2 << QByteArray("Error! Invalid type\n");
    QTest::newRow("outdated behind good ones")
        << FlashPage().add(pageCounter).add(version(2)).addRaw(n(2, 1)) << 4 << none;
    QTest::newRow("unknown behind good ones") << FlashPage().add(pageCounter).addRaw(n(15, 1)) << 2
                                              << QByteArray("Error! Invalid type\n");
    QTest::newRow("checksum one too high")
        << FlashPage().addRaw(pageCounter + n(247, 1)) << 1
        << QByteArray("ERROR: Checksums dont match! Expected : 246, Found : 247\n");
    QTest::newRow("sum 0 has checksum 0")
        << FlashPage().addRaw(n(3, 1) + n(253, 1) + n(1, 1)) << 1
        << QByteArray("ERROR: Checksums dont match! Expected : 0, Found : 1\n");
    QTest::newRow("the first fault counts")
        << FlashPage().addRaw(pageCounter + n(0, 1)).addRaw(n(2, 1)) << 1
        << QByteArray("ERROR: Checksums dont match! Expected : 246, Found : 0\n");
}

void ReadFromHEXTest::codes()
{
    QFETCH(FlashPage, page);
    QFETCH(int, code);
    QFETCH(QByteArray, output);
    QCOMPARE(codeOf(page.toHex()), std::optional<int>(code));
    QCOMPARE(printed, output);
}

void ReadFromHEXTest::changedTitle()
{
    QByteArray image = FlashPage().add(lithium).fileBytes();
    image.data()[4] = static_cast<char>(image.at(4) ^ 0x10); // data byte 5, in the title
    QCOMPARE(codeOf(FlashPage::toHex(image, wordAddress)), std::optional<int>(1));
    // '6' became '&': the sum is 16 less, the checksum that would fit 16 more.
    QCOMPARE(printed, QByteArray("ERROR: Checksums dont match! Expected : 36, Found : 20\n"));
}

void ReadFromHEXTest::numberBeyond63Bits()
{
    load(FlashPage().add(n(6, 1) + n(0, 12) + n(0, 8) + n(-1, 8)).toHex());
    const QByteArray words = lastWordsOf([this] {
        qInstallMessageHandler(nullptr);
        parse();
    });
    QVERIFY2(words.contains("\"number >= 0\""), words);
}

void ReadFromHEXTest::superseded_data()
{
    QTest::addColumn<FlashPage>("page");
    QTest::addColumn<QStringList>("expected");
    const QByteArray hardware1 = n(16, 1) + n(1, 1);
    const QByteArray hardware2 = n(16, 1) + n(2, 1);
    QTest::newRow("two versions") << FlashPage().add(version(1)).add(version(2))
                                  << QStringList{q("4:2")};
    QTest::newRow("with others between")
        << FlashPage().add(pageCounter).add(version(1)).add(lithium).add(version(2)).add(lithium)
        << QStringList{q("3:7"), q("8:5"), q("4:2"), q("8:5")};
    QTest::newRow("others stay as often as they come")
        << FlashPage().add(pageCounter).add(pageCounter).add(lithium).add(lithium)
        << QStringList{q("3:7"), q("3:7"), q("8:5"), q("8:5")};
    // The first removal shifts the list, so that the kept index of hardware 1 names version 2.
    QTest::newRow("kept indices are not corrected")
        << FlashPage().add(version(1)).add(hardware1).add(version(2)).add(hardware2)
        << QStringList{q("16:1"), q("16:2")};
    QTest::newRow("three versions")
        << FlashPage().add(version(1)).add(version(2)).add(version(3)) << QStringList{q("4:3")};
    QTest::newRow("three versions behind another element")
        << FlashPage().add(pageCounter).add(version(1)).add(version(2)).add(version(3))
        << QStringList{q("3:7"), q("4:3")};
}

void ReadFromHEXTest::superseded()
{
    QFETCH(FlashPage, page);
    QFETCH(QStringList, expected);
    load(page.toHex());
    QCOMPARE(summary(parse()), expected);
}

void ReadFromHEXTest::fullPageRunsOnBehindIt()
{
    FlashPage page;
    for (int i = 0; i < 512; ++i)
        page.add(pageCounter);
    QCOMPARE(page.fileBytes().size(), 2048);
    QCOMPARE(codeOf(page.toHex()), std::optional<int>(4));

    // Behind the page the bytes stand in file order: there the last byte of a word comes first.
    QByteArray longer = page.fileBytes() + QByteArray("\x03\x07\xF6\0\xFF", 5);
    longer += QByteArray(11, '\0');
    load(FlashPage::toHex(longer, wordAddress));
    QCOMPARE(parse().size(), 513);
}

void ReadFromHEXTest::fullImageEndsWithIt()
{
    FlashPage page;
    for (int i = 0; i < 512; ++i)
        page.add(pageCounter);
    QByteArray image = page.fileBytes();
    while (image.size() < imageSize - 2 * wordAddress)
        image += QByteArray("\x03\x07\xF6\0", 4);
    QCOMPARE(codeOf(FlashPage::toHex(image, wordAddress)), std::optional<int>(4));
}

void ReadFromHEXTest::elementOverTheEndOfTheImage()
{
    // The image's last word begins a profile; zeros follow, which sum up to no checksum.
    const QByteArray image = FlashPage().addRaw(lithium.left(3)).fileBytes();
    QCOMPARE(codeOf(FlashPage::toHex(image, imageSize / 2 - 2), imageSize / 2 - 2),
             std::optional<int>(1));
    // Here they do.
    const QByteArray zeroSum = FlashPage().addRaw(n(8, 1) + n(248, 1) + n(0, 1)).fileBytes();
    QCOMPARE(codeOf(FlashPage::toHex(zeroSum, imageSize / 2 - 2), imageSize / 2 - 2),
             std::optional<int>(4));
}

void ReadFromHEXTest::anyWordAddress_data()
{
    QTest::addColumn<int>("address");
    for (const int address :
         {0, 1, 0x9C01, imageSize / 2 - 1025, imageSize / 2 - 1023, imageSize / 2 - 1,
          imageSize / 2, imageSize / 2 + 1, 0x7FFFFFFF, -1, -0x7FFFFFFF - 1})
        QTest::newRow(QByteArray::number(address)) << address;
}

void ReadFromHEXTest::anyWordAddress()
{
    QFETCH(int, address);
    QByteArray everywhere;
    for (int i = 0; i < imageSize; ++i)
        everywhere += '\x03';
    QVERIFY(codeOf(FlashPage::toHex(everywhere, 0), address).has_value());
}

void ReadFromHEXTest::readsWhatWasWritten_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 60; ++seed)
        QTest::newRow(QByteArray::number(seed)) << seed;
}

namespace
{
/// An element of this name with random values that its limits allow.
std::unique_ptr<StructSettings> randomElement(const HParser::Generator &generator,
                                              const QString &name, QRandomGenerator *random)
{
    std::unique_ptr<StructSettings> element(generator.copyFlashstackElementSettings(name));
    element->buildFormulaTrees();
    for (HParser::StructSetting *setting : element->getDependancyOrderStructSettings()) {
        setting->advancedEnabled = true;
        if (setting->xmlName == QLatin1String("calculated"))
            continue;
        switch (setting->settingKind) {
        case HParser::SettingKind::Num: {
            const double low = setting->lowerBound->toDouble();
            // What a number loses to its six digits is not what is asked here.
            const double high = qMin(setting->upperBound->toDouble(), 99999.0);
            setting->setValue(low + (high - low) * random->generateDouble());
            break;
        }
        case HParser::SettingKind::Bool:
            setting->setValue(random->bounded(2) == 1);
            break;
        default: {
            QString text;
            for (int i = random->bounded(setting->arraySize + 2); i > 0; --i)
                text += QLatin1Char(static_cast<char>(32 + random->bounded(95)));
            setting->setValue(text);
        }
        }
    }
    return element;
}

/// Whether what was read says the same as what was written; a number that the charger stores in
/// coarser steps than it is shown in may differ by half a step.
bool sameValue(const HParser::StructSetting *written, const QString &text)
{
    if (written->settingKind != HParser::SettingKind::Num)
        return text == written->getValue();
    const double difference = qAbs(text.toDouble() - written->getValue().toDouble());
    return text == written->getValue() || difference <= written->scale->toDouble() / 2;
}
} // namespace

void ReadFromHEXTest::readsWhatWasWritten()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    const QStringList chemistries = {q("Lithium"), q("Nickel"), q("Lead")};
    std::vector<std::unique_ptr<StructSettings>> owned;
    QList<StructSettings *> profiles;
    QList<StructSettings *> stats;
    for (int i = random.bounded(18); i > 0; --i) {
        owned.push_back(randomElement(generator, chemistries.at(random.bounded(3)), &random));
        profiles.append(owned.back().get());
        if (random.bounded(2) == 0) {
            owned.push_back(randomElement(generator, q("Profile stats"), &random));
            stats.append(owned.back().get());
        }
    }
    generator.setUnitStatsExists(random.bounded(2) == 0);
    QVERIFY(WriteToHEX::write(file, profiles, stats, &generator));

    QList<StructSettings *> expected = {generator.getPageCounterStruct(),
                                        generator.getVersionInfoStruct(),
                                        generator.getUnitSettingsStruct()};
    expected += stats + profiles;
    if (generator.getUnitStatsExists())
        expected.append(generator.getUnitStatsStruct());
    expected << generator.getHardwareVersionStruct() << generator.getBarcodeStruct();

    reader = std::make_unique<ReadFromHEX>();
    QVERIFY(reader->read(file, wordAddress));
    const Log log = parse();
    QCOMPARE(log.size(), expected.size());
    for (int i = 0; i < log.size(); ++i) {
        QCOMPARE(log.at(i).value(q("name")), expected.at(i)->getDescriptiveName());
        for (const HParser::StructSetting *setting :
             expected.at(i)->getOriginalOrderStructSettings()) {
            if (setting->xmlName == QLatin1String("calculated") ||
                setting->xmlName == QLatin1String("checksum"))
                continue;
            const QString key =
                QString(setting->xmlName).replace(QLatin1Char(' '), QLatin1Char('_'));
            QVERIFY2(sameValue(setting, log.at(i).value(key)),
                     qPrintable(setting->name + QLatin1Char(' ') + log.at(i).value(key) +
                                q(" for ") + setting->getValue()));
        }
    }
}

void ReadFromHEXTest::rowsLeftOutAreBlank_data()
{
    QTest::addColumn<int>("words");
    QTest::addColumn<std::optional<int>>("code");
    QTest::newRow("one row to the brim") << 64 << std::optional<int>();
    QTest::newRow("two rows to the brim") << 128 << std::optional<int>();
    QTest::newRow("all but the last row") << 448 << std::optional<int>();
    QTest::newRow("cut off within a row") << 68 << std::optional<int>(4);
    QTest::newRow("the whole page") << 512 << std::optional<int>(4);
}

void ReadFromHEXTest::rowsLeftOutAreBlank()
{
    QFETCH(int, words);
    QFETCH(std::optional<int>, code);
    FlashPage page;
    for (int i = 0; i < words; ++i)
        page.add(pageCounter);
    QCOMPARE(codeOf(FlashPage::toHex(page.fileBytes(), wordAddress)), code);
}

void ReadFromHEXTest::cutFiles()
{
    FlashPage page;
    page.add(pageCounter).add(lithium).add(version(2)).addRaw("\xFF");
    const QByteArray text = FlashPage::toHex(page.fileBytes(), wordAddress);
    // The last line needs no end of its own.
    for (int length = 0; length < text.size() - 1; ++length) {
        store(text.left(length));
        printedBy([&] { QVERIFY(!ReadFromHEX().read(file, wordAddress)); });
    }
    load(text.chopped(1));
    QCOMPARE(parse().size(), 3);
}

void ReadFromHEXTest::cutPages()
{
    FlashPage page;
    page.add(pageCounter).add(lithium).add(version(2));
    const QByteArray bytes = page.fileBytes();
    for (int length = 4; length < bytes.size(); length += 4) {
        // Cut and blank behind it, as a page whose writing was interrupted.
        QByteArray cut = bytes.left(length);
        while (cut.size() < 2048)
            cut += QByteArray("\xFF\xFF\xFF\0", 4);
        const std::optional<int> code = codeOf(FlashPage::toHex(cut, wordAddress));
        const bool betweenElements = length == 4 || length == 64;
        QCOMPARE(code, betweenElements ? std::optional<int>() : std::optional<int>(1));
    }
}

void ReadFromHEXTest::flippedBits()
{
    FlashPage page;
    page.add(version(2)).add(lithium).add(pageCounter);
    QByteArray bytes = page.fileBytes();
    while (bytes.size() < 256)
        bytes += QByteArray("\xFF\xFF\xFF\0", 4);
    load(FlashPage::toHex(bytes, wordAddress));
    const Log undamaged = parse();

    int unnoticed = 0;
    for (int bit = 0; bit < 8 * bytes.size(); ++bit) {
        QByteArray damaged = bytes;
        damaged.data()[bit / 8] = static_cast<char>(damaged.at(bit / 8) ^ (1 << bit % 8));
        const std::optional<int> code = codeOf(FlashPage::toHex(damaged, wordAddress));
        if (code) {
            QVERIFY(*code == 1 || *code == 2 || *code == 4);
            continue;
        }
        load(FlashPage::toHex(damaged, wordAddress));
        QCOMPARE(parse(), undamaged);
        ++unnoticed;
    }
    // Behind the log: all but the first byte of its blank word. In the log: the two filler bytes
    // of the profile, and the phantom bytes of the words that end an element.
    QCOMPARE(unnoticed, 8 * (256 - page.fileBytes().size() - 1 + 2 + 3));
}

void ReadFromHEXTest::randomPages()
{
    QRandomGenerator random(19);
    const QByteArray elements[] = {pageCounter, lithium, version(2), n(16, 1) + n(1, 1),
                                   n(17, 1) + t("1234", 5)};
    for (int round = 0; round < 300; ++round) {
        FlashPage page;
        while (page.fileBytes().size() < 1500) {
            QByteArray element = elements[random.bounded(5)];
            if (random.bounded(8) == 0)
                element.data()[random.bounded(element.size())] =
                    static_cast<char>(random.bounded(256));
            // No lifetime statistics: their large numbers have a test of their own.
            if (element.at(0) != 6)
                page.add(element);
        }
        QByteArray bytes = page.fileBytes();
        for (int i = random.bounded(4); i > 0; --i)
            bytes.data()[random.bounded(bytes.size() / 4) * 4 + random.bounded(2)] =
                static_cast<char>(random.bounded(256));
        codeOf(FlashPage::toHex(bytes.left(1 + random.bounded(bytes.size())), wordAddress));
    }
}

QTEST_GUILESS_MAIN(ReadFromHEXTest)
#include "tst_readfromhex.moc"
