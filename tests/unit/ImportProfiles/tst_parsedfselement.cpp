#include "ImportProfiles/parsedfselement.h"

#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "support/capturedoutput.h"

#include <QtTest>

#include <memory>

using HParser::StructSettings;
using ImportProfiles::ParsedFSElement;
using Properties = QMap<QString, QString>;

namespace
{
QString q(const char *text)
{
    return QString::fromLatin1(text);
}
} // namespace

class ParsedFSElementTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void startsEmpty();
    void laterPropertiesReplaceEarlierOnes();
    void keepsIdAndStatus();
    void print();

    void withoutStruct_data();
    void withoutStruct();
    void takesValues_data();
    void takesValues();
    void copiesWhatTheGeneratorHolds();
    void barcodeIsNotFoundByItsTag();

private:
    std::unique_ptr<StructSettings> converted(const Properties &properties) const;

    std::unique_ptr<HParser::Generator> generator;
};

void ParsedFSElementTest::init()
{
    generator = std::make_unique<HParser::Generator>();
    generator->parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/master.ss"));
}

std::unique_ptr<StructSettings> ParsedFSElementTest::converted(const Properties &properties) const
{
    ParsedFSElement element;
    element.setProperties(properties);
    return std::unique_ptr<StructSettings>(element.toStructSettings(generator.get()));
}

void ParsedFSElementTest::startsEmpty()
{
    const ParsedFSElement element;
    QVERIFY(element.getProperties().isEmpty());
    QVERIFY(!element.toStructSettings(generator.get()));
}

void ParsedFSElementTest::laterPropertiesReplaceEarlierOnes()
{
    ParsedFSElement element;
    element.setProperties({{q("a"), q("1")}, {q("b"), q("2")}});
    element.setProperties({{q("b"), q("3")}});
    QCOMPARE(element.getProperties(), (Properties{{q("b"), q("3")}}));
}

void ParsedFSElementTest::keepsIdAndStatus()
{
    ParsedFSElement element;
    element.setID(7);
    QCOMPARE(element.getID(), 7);
    QVERIFY(!element.getActiveStatus() && !element.getDefaultStatus() &&
            !element.getModifiableStatus());
    element.setActiveStatus(true);
    QVERIFY(element.getActiveStatus() && !element.getDefaultStatus());
    element.setDefaultStatus(true);
    QVERIFY(element.getDefaultStatus() && !element.getModifiableStatus());
    element.setModifiableStatus(true);
    QVERIFY(element.getModifiableStatus());
}

void ParsedFSElementTest::print()
{
    ParsedFSElement element;
    element.setID(3);
    element.setDefaultStatus(true);
    element.setProperties({{q("name"), q("Lead")}, {q("title"), q("Old")}});
    QCOMPARE(printedBy([&] { element.print(); }),
             QByteArray("ID : 3\nisActive : 0\nisDefault : 1\nisModifiable : 0\n"
                        "name : Lead\ntitle : Old\n"));
}

void ParsedFSElementTest::withoutStruct_data()
{
    QTest::addColumn<Properties>("properties");
    QTest::newRow("no name") << Properties{{q("brightness"), q("3")}};
    QTest::newRow("unknown name") << Properties{{q("name"), q("Silver")}};
    QTest::newRow("other case") << Properties{{q("name"), q("lead")}};
}

void ParsedFSElementTest::withoutStruct()
{
    QFETCH(Properties, properties);
    QVERIFY(!converted(properties));
}

void ParsedFSElementTest::takesValues_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("member");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *key, const char *text, const char *member,
                        const char *expected) {
        QTest::newRow(name) << q(key) << q(text) << q(member) << q(expected);
    };
    row("number", "max_time_at_full_voltage", "2.5", "full_V_max_time", "2.5");
    row("number beyond its bounds", "full_voltage", "1000", "full_V", "63");
    row("no number", "full_voltage", "many", "full_V", "12");
    row("empty number keeps its default", "full_voltage", "", "full_V", "43.2");
    row("flag", "default", "true", "defaultprofile", "true");
    row("flag in upper case is false", "active", "TRUE", "active", "false");
    row("empty flag keeps its default", "active", "", "active", "true");
    row("text", "title", "Old Truck", "title", "Old Truck");
    row("too long a text", "title", "abcdefghijkl", "title", "abcdefghijk");
    row("empty text keeps its default", "subtitle", "", "description", "Custom");
    row("another member's key", "full_V", "50", "full_V", "43.2");
}

void ParsedFSElementTest::takesValues()
{
    QFETCH(QString, key);
    QFETCH(QString, text);
    QFETCH(QString, member);
    QFETCH(QString, expected);
    const auto lead = converted({{q("name"), q("Lead")}, {key, text}});
    QVERIFY(lead);
    QCOMPARE(lead->getDescriptiveName(), q("Lead"));
    QCOMPARE(lead->getStructSettingByName(member)->getValue(), expected);
    QVERIFY(lead->getStructSettingByName(member)->advancedEnabled);
}

void ParsedFSElementTest::copiesWhatTheGeneratorHolds()
{
    HParser::StructSetting *version =
        generator->getVersionInfoStruct()->getStructSettingByName(q("version"));
    version->setValue(12.0);
    const auto same = converted({{q("name"), q("Version")}});
    QVERIFY(generator->getVersionInfoStruct()->compare(same.get()));
    const auto other = converted({{q("name"), q("Version")}, {q("version"), q("13")}});
    QVERIFY(!generator->getVersionInfoStruct()->compare(other.get()));
    QCOMPARE(version->getValue(), q("12"));
}

void ParsedFSElementTest::barcodeIsNotFoundByItsTag()
{
    const auto barcode = converted({{q("name"), q("Barcode")}, {q("not_displayed"), q("1234")}});
    QCOMPARE(barcode->getStructSettingByName(q("barcode"))->getValue(), q("0000"));
}

QTEST_GUILESS_MAIN(ParsedFSElementTest)
#include "tst_parsedfselement.moc"
