#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "childprocess.h"

#include <QtTest>

#include <memory>

using namespace HParser;

namespace
{

QString delivered(const char *file)
{
    return QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + QString::fromLatin1(file);
}

QByteArray member(const QByteArray &name, const QByteArray &fallback, const QByteArray &upper)
{
    return "char " + name + "; // num, auto, 0, " + upper + ", *1, 0, \"" + name + "\", \"\", \"" +
           name + "\", " + fallback + ", 0, basic\n";
}

QByteArray element(const QByteArray &name, const QByteArray &kind,
                   const QByteArray &members = member("version", "1", "255"))
{
    return "struct s { // Settings : \"" + name + "\", " + kind + "\n" + members + "}\n";
}

const QByteArray address = "#define PROFILESTARTADDRESS 0x9C00\n";
const QByteArray masterMark = "#define MASTERSSFILE\n";
const QByteArray unitSettings = element("Global settings", "global_settings");
const QByteArray unitStats = element("Global stats", "global_stats");
const QByteArray profileStats = element("Profile stats", "profile_stats");
const QByteArray pageCounter = element("Page counter", "page_counter");
const QByteArray version = element("Version", "version");
const QByteArray hardware = element("Hardware Version", "hw_version");
const QByteArray barcode = element("Barcode", "barcode");
const QByteArray singletons = unitSettings + unitStats + profileStats + pageCounter + version;
const QByteArray chemistries = element("Nickel", "chemistry") + element("Lead", "chemistry") +
                               element("Lithium", "chemistry", member("bulk_I", "4", "8.0"));
/// The smallest complete strict schema.
const QByteArray strict = address + singletons + chemistries;

} // namespace

class TestGenerator : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void beginsEmpty();
    void needsAFileName();
    void parsesAFile();
    void parsesTwice();
    void tellsWhenFinished();
    void buildsTheUnitSettingsTwice();

    void readsDefines_data();
    void readsDefines();
    void countsProfileTypes_data();
    void countsProfileTypes();
    void recognisesHeads_data();
    void recognisesHeads();
    void readsBodies();
    void readsUtf8AndLineEnds();
    void laterSingletonReplacesTheEarlier();
    void keepsReplacedStructsAlive();
    void strictSchemaMayLackHardware();
    void diesOfBadSchemas_data();
    void diesOfBadSchemas();
    void diesOfAMissingFile();

    void findsElementsByName();
    void looksUpInOrder_data();
    void looksUpInOrder();
    void copiesElements();

    void choosesTheStrictFile_data();
    void choosesTheStrictFile();
    void loadsTheChosenFile();
    void keepsItsStructsWithoutAChoice();
    void loadsTheMasterFile();
    void readsTheVoltageClassFromTheLimits_data();
    void readsTheVoltageClassFromTheLimits();

    void readsHelpTexts_data();
    void readsHelpTexts();
    void hasNoHelpTextsWithoutAFile();
    void keepsHelpTextsOverLaterParses();

private:
    QString write(const QByteArray &schema, const char *name = "test.ss");

    std::unique_ptr<QTemporaryDir> folder;
};

void TestGenerator::init()
{
    folder = std::make_unique<QTemporaryDir>();
    QVERIFY(folder->isValid());
}

QString TestGenerator::write(const QByteArray &schema, const char *name)
{
    QFile file(folder->filePath(QString::fromLatin1(name)));
    if (!file.open(QIODevice::WriteOnly) || file.write(schema) != schema.size())
        qFatal("cannot write a schema");
    return file.fileName();
}

void TestGenerator::beginsEmpty()
{
    const Generator generator;
    QCOMPARE(generator.getHFileLocation(), QString());
    QVERIFY(!generator.isMaster());
    QVERIFY(!generator.getUnitStatsExists());
    QCOMPARE(generator.getProfileStartWordAddress(), 0);
    QVERIFY(!generator.getUnitSettingsStruct() && !generator.getUnitStatsStruct() &&
            !generator.getProfileStatsStruct() && !generator.getPageCounterStruct() &&
            !generator.getVersionInfoStruct() && !generator.getHardwareVersionStruct() &&
            !generator.getBarcodeStruct());
    QVERIFY(generator.getChemistrySettings().isEmpty());
    QVERIFY(generator.getTooltips().isEmpty());
    QVERIFY(!generator.getFSElementByName(QStringLiteral("Version")));
    QCOMPARE(generator.hwVersion(), 0);
}

void TestGenerator::needsAFileName()
{
    Generator generator;
    QSignalSpy finished(&generator, &Generator::finished);
    QVERIFY(!generator.parseSSFile());
    QVERIFY(!generator.parseSSAndTooltips());
    QCOMPARE(finished.count(), 0);
}

void TestGenerator::parsesAFile()
{
    Generator generator;
    generator.setHFileLocation(delivered("master.ss"));
    QCOMPARE(generator.getHFileLocation(), delivered("master.ss"));
    QVERIFY(!generator.getVersionInfoStruct()); // the path alone does nothing
    QVERIFY(generator.parseSSFile());
    QVERIFY(generator.isMaster());
    QCOMPARE(generator.getProfileStartWordAddress(), 39936);
    QCOMPARE(generator.getVersionInfoStruct()->getDescriptiveName(), QStringLiteral("Version"));
    QCOMPARE(generator.getVersionInfoStruct()->getStructType(), QStringLiteral("version"));
    QCOMPARE(generator.getHardwareVersionStruct()->getDescriptiveName(),
             QStringLiteral("Hardware Version"));

    generator.parseSSFile(write(strict));
    QCOMPARE(generator.getHFileLocation(), folder->filePath(QStringLiteral("test.ss")));
    QVERIFY(!generator.isMaster());
}

void TestGenerator::parsesTwice()
{
    Generator generator;
    generator.parseSSFile(delivered("master.ss"));
    StructSettings *before = generator.getUnitSettingsStruct();
    generator.setUnitStatsExists(true);
    before->getStructSettingByName(QStringLiteral("brightness"))->advancedEnabled = true;
    before->getStructSettingByName(QStringLiteral("brightness"))->setValue(9.0);

    QVERIFY(generator.parseSSFile());
    QVERIFY(generator.getUnitSettingsStruct() != before);
    QCOMPARE(generator.getChemistrySettings().size(), 3);
    QVERIFY(!generator.getUnitStatsExists());
    QCOMPARE(generator.getUnitSettingsStruct()
                 ->getStructSettingByName(QStringLiteral("brightness"))
                 ->getNumber(),
             5.0);
}

void TestGenerator::tellsWhenFinished()
{
    Generator generator;
    int chemistriesAtSignal = 0;
    connect(&generator, &Generator::finished, this,
            [&] { chemistriesAtSignal = generator.getChemistrySettings().size(); });
    QSignalSpy finished(&generator, &Generator::finished);
    generator.parseSSFile(delivered("master.ss"));
    QCOMPARE(finished.count(), 1);
    QCOMPARE(chemistriesAtSignal, 3);
}

void TestGenerator::buildsTheUnitSettingsTwice()
{
    Generator generator;
    generator.parseSSFile(delivered("master.ss"));
    const StructSettings *unit = generator.getUnitSettingsStruct();
    StructSetting *shortPress = unit->getStructSettingByName(QStringLiteral("shortpress_time_cs"));
    const StructSetting *longPress =
        unit->getStructSettingByName(QStringLiteral("longpress_time_cs"));
    QSignalSpy changes(longPress->lowerBound, &Formula::memberSettingChanged);
    shortPress->advancedEnabled = true;
    shortPress->setValue(0.03);
    QCOMPARE(changes.count(), 1);

    // A limit declared behind its setting holds back the first default, not the second.
    Generator late;
    const auto heldBack = [&late] {
        return late.getUnitSettingsStruct()
            ->getStructSettingByName(QStringLiteral("b"))
            ->getNumber();
    };
    double atSignal = 0;
    connect(&late, &Generator::finished, this, [&] { atSignal = heldBack(); });
    late.parseSSFile(write(address +
                           element("Global settings", "global_settings",
                                   member("b", "5", "a") + member("a", "7", "9")) +
                           unitStats + profileStats + pageCounter + version + chemistries));
    QCOMPARE(heldBack(), 5.0);
    QCOMPARE(atSignal, 5.0);
}

void TestGenerator::readsDefines_data()
{
    QTest::addColumn<QByteArray>("defines");
    QTest::addColumn<int>("start");
    QTest::addColumn<bool>("master");
    const auto row = [](const char *name, const char *defines, int start, bool master = false) {
        QTest::newRow(name) << QByteArray(defines) << start << master;
    };
    row("hexadecimal", "#define PROFILESTARTADDRESS 0x9C00\n", 39936);
    row("decimal", "#define PROFILESTARTADDRESS 39936\n", 39936);
    row("octal", "#define PROFILESTARTADDRESS 0777\n", 511);
    row("white space", "  #  define\tPROFILESTARTADDRESS   1 \n", 1);
    row("no white space", "#definePROFILESTARTADDRESS 1\n", 1);
    row("last token counts", "#define PROFILESTARTADDRESS 5 // words, then 7\n", 7);
    row("longer word", "#define PROFILESTARTADDRESSES 3\n", 3);
    row("first line counts", "#define PROFILESTARTADDRESS 1\n#define PROFILESTARTADDRESS 2\n", 1);
    row("not at the beginning of a line",
        "x #define PROFILESTARTADDRESS 1\n#define PROFILESTARTADDRESS 2\n", 2);
    row("master", "#define PROFILESTARTADDRESS 1\n#define MASTERSSFILE\n", 1, true);
    row("master without white space", "#define PROFILESTARTADDRESS 1\n#defineMASTERSSFILE\n", 1,
        true);
    row("master with more on the line", "#define PROFILESTARTADDRESS 1\n #define MASTERSSFILES 0\n",
        1, true);
    row("space between hash and word is no master",
        "#define PROFILESTARTADDRESS 1\n# define MASTERSSFILE\n", 1);
    row("lower case is no master", "#define PROFILESTARTADDRESS 1\n#define masterssfile\n", 1);
}

void TestGenerator::readsDefines()
{
    QFETCH(QByteArray, defines);
    const QByteArray body = singletons + hardware + barcode + chemistries;
    for (const QByteArray &schema : {defines + body, body + defines}) {
        Generator generator;
        generator.parseSSFile(write(schema));
        QTEST(generator.getProfileStartWordAddress(), "start");
        QTEST(generator.isMaster(), "master");
    }
}

void TestGenerator::countsProfileTypes_data()
{
    QTest::addColumn<QByteArray>("define");
    QTest::addColumn<int>("expected");
    const auto row = [](const char *name, const char *define, int expected) {
        QTest::newRow(name) << QByteArray(define) << expected;
    };
    row("absent", "", 3);
    row("two", "#define NUMPROFILETYPES 2\n", 2);
    row("none", "#define NUMPROFILETYPES 0\n", 0);
    row("hexadecimal", " #define  NUMPROFILETYPES 0x4\n", 4);
    row("space between hash and word", "# define NUMPROFILETYPES 2\n", 3);
    row("no white space", "#defineNUMPROFILETYPES 2\n", 3);
    row("longer word", "#define NUMPROFILETYPESX 2\n", 3);
    row("first line counts", "#define NUMPROFILETYPES 1\n#define NUMPROFILETYPES 2\n", 1);
}

void TestGenerator::countsProfileTypes()
{
    QFETCH(QByteArray, define);
    QFETCH(int, expected);
    for (int count = 0; count <= 4; ++count) {
        QByteArray schema = address + define + singletons;
        for (int i = 0; i < count; ++i)
            schema += element("Chemistry " + QByteArray::number(i), "chemistry");
        const QString file = write(schema);
        const ChildResult child = runInChild([&] { Generator().parseSSFile(file); });
        QCOMPARE(child.aborted, count != expected);
    }
}

void TestGenerator::recognisesHeads_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QString>("name"); // null: not a head
    const auto row = [](const char *tag, const char *head, const char *name) {
        QTest::newRow(tag) << QByteArray(head) << QString::fromLatin1(name);
    };
    row("usual", "struct a { // Settings : \"Li Ion 2\", chemistry", "Li Ion 2");
    row("tight", "struct a{//Settings:\"X\",chemistry", "X");
    row("no blank before the identifier", "structa { // Settings : \"X\", chemistry", "X");
    row("white space everywhere", " \tstruct  a  {  //  Settings  :  \" X \"  ,  chemistry  ",
        " X ");
    row("empty name", "struct a { // Settings : \"\", chemistry", "");
    row("trailing comment", "struct a { // Settings : \"X\", chemistry // words", nullptr);
    row("hyphen in the name", "struct a { // Settings : \"Li-Ion\", chemistry", nullptr);
    row("unknown kind", "struct a { // Settings : \"X\", chemistries", nullptr);
    row("kind in capitals", "struct a { // Settings : \"X\", CHEMISTRY", nullptr);
    row("no identifier", "struct { // Settings : \"X\", chemistry", nullptr);
    row("no comment", "struct a {", nullptr);
    row("something in front", "typedef struct a { // Settings : \"X\", chemistry", nullptr);
}

void TestGenerator::recognisesHeads()
{
    QFETCH(QByteArray, head);
    QFETCH(QString, name);
    const bool isHead = !name.isNull();
    const QByteArray count = "#define NUMPROFILETYPES " + QByteArray::number(isHead ? 1 : 0) + "\n";
    Generator generator;
    // The lines behind an unknown head are no members, so they may be anything.
    generator.parseSSFile(write(address + count + singletons + head + "\n" +
                                (isHead ? member("x", "1", "2") : QByteArray("no member\n")) +
                                "}\n"));
    QCOMPARE(generator.getChemistrySettings().size(), isHead ? 1 : 0);
    if (isHead) {
        const StructSettings *chemistry = generator.getChemistrySettings().constFirst();
        QCOMPARE(chemistry->getDescriptiveName(), name);
        QCOMPARE(chemistry->getStructType(), QStringLiteral("chemistry"));
        QCOMPARE(chemistry->getOriginalOrderStructSettings().size(), 1);
    }
}

void TestGenerator::readsBodies()
{
    const QByteArray head = "struct a { // Settings : \"Last\", chemistry\n";
    const auto membersOf = [&](const QByteArray &body) {
        Generator generator;
        generator.parseSSFile(
            write(address + "#define NUMPROFILETYPES 1\n" + singletons + head + body));
        return generator.getChemistrySettings()
            .constFirst()
            ->getOriginalOrderStructSettings()
            .size();
    };
    const QByteArray one = member("a", "1", "2");
    QCOMPARE(membersOf("}\n"), 0);
    QCOMPARE(membersOf(one + "\n  \t\n" + one + " \t} \n" + one), 2); // blank lines mean nothing
    QCOMPARE(membersOf(one + one), 2);                                // never closed
    QCOMPARE(membersOf(one), 1);
    // Anything else in a body is read as a member.
    QCOMPARE(membersOf(one + "} x\n" + one), 3);
    const QString file = write(strict + head + one + "};\n");
    const ChildResult child = runInChild([&] { Generator().parseSSFile(file); });
    QVERIFY(child.aborted);
    QCOMPARE(child.standardError,
             QByteArray("ASSERT: \"commentDescriptorPart.size() != 0\" in file "
                        "../SSGenerator/structsetting.cpp, line 31\n"));
}

void TestGenerator::readsUtf8AndLineEnds()
{
    QByteArray schema = address + singletons +
                        element("Nickel", "chemistry",
                                "char t; // num, auto, 0, 9, *1, 0, \"T\", \"\xC2\xB0"
                                "C\", \"t\", 1, 0, basic\n") +
                        element("Lead", "chemistry") + element("Lithium", "chemistry");
    schema.replace("\n", "\r\n");
    Generator generator;
    generator.parseSSFile(write(schema));
    QCOMPARE(generator.getChemistrySettingsByName(QStringLiteral("Nickel"))
                 ->getStructSettingByName(QStringLiteral("t"))
                 ->unit,
             QString::fromUtf8("°C"));
    QCOMPARE(generator.getChemistrySettingsByName(QStringLiteral("Lead"))
                 ->getOriginalOrderStructSettings()
                 .constFirst()
                 ->isBasic,
             true);
}

void TestGenerator::laterSingletonReplacesTheEarlier()
{
    Generator generator;
    generator.parseSSFile(write(strict + element("Second version", "version")));
    QCOMPARE(generator.getVersionInfoStruct()->getDescriptiveName(),
             QStringLiteral("Second version"));
    QVERIFY(!generator.getFSElementByName(QStringLiteral("Version")));
}

void TestGenerator::keepsReplacedStructsAlive()
{
    auto generator = std::make_unique<Generator>();
    generator->parseSSFile(write(strict));
    const QPointer<StructSettings> before(generator->getVersionInfoStruct());
    generator->parseSSFile();
    QVERIFY(before);
    QCOMPARE(before->getStructSettingByName(QStringLiteral("version"))->getValue(),
             QStringLiteral("1"));
    generator.reset();
    QVERIFY(!before);
}

void TestGenerator::strictSchemaMayLackHardware()
{
    Generator generator;
    generator.parseSSFile(delivered("master.ss"));
    generator.parseSSFile(write(strict));
    QVERIFY(!generator.getHardwareVersionStruct());
    QVERIFY(!generator.getBarcodeStruct());
    QVERIFY(!generator.getFSElementByName(QStringLiteral("Barcode")));
    QVERIFY(!generator.getVeficationFSElementByName(QStringLiteral("Barcode")));
    QVERIFY(!generator.copyFlashstackElementSettings(QStringLiteral("Hardware Version")));
    QVERIFY(generator.getFSElementByName(QStringLiteral("Lithium")));
}

void TestGenerator::diesOfBadSchemas_data()
{
    QTest::addColumn<QByteArray>("schema");
    QTest::addColumn<QByteArray>("condition");
    QTest::addColumn<int>("line");
    const auto row = [](const char *name, const QByteArray &schema, const char *condition,
                        int line) {
        QTest::newRow(name) << schema << QByteArray(condition) << line;
    };
    const QByteArray all = singletons + chemistries;
    row("empty file", "", "false", 489);
    row("no start address", all, "false", 489);
    row("start address without number", "#define PROFILESTARTADDRESS\n" + all,
        "conversionSuccessful", 482);
    row("start address with a word", "#define PROFILESTARTADDRESS 0x9C00h\n" + all,
        "conversionSuccessful", 482);
    row("start address beyond 32 bits", "#define PROFILESTARTADDRESS 0x19C000000\n" + all,
        "conversionSuccessful", 482);
    row("profile types without number", address + "#define NUMPROFILETYPES\n" + all,
        "conversionSuccessful", 529);
    row("profile types with a word", address + "#define NUMPROFILETYPES three\n" + all,
        "conversionSuccessful", 529);
    row("master without hardware version", address + masterMark + all + barcode,
        "hardwareVersion != NULL", 156);
    row("master without barcode", address + masterMark + all + hardware, "barcodeStruct != NULL",
        157);
    row("no version", address + unitSettings + unitStats + profileStats + pageCounter + chemistries,
        "versionInfo != NULL", 160);
    row("no page counter",
        address + unitSettings + unitStats + profileStats + version + chemistries,
        "pageCounter != NULL", 161);
    row("no unit stats",
        address + unitSettings + profileStats + pageCounter + version + chemistries,
        "globalStats != NULL", 162);
    row("no unit settings",
        address + unitStats + profileStats + pageCounter + version + chemistries,
        "globalSettings != NULL", 163);
    row("no profile stats",
        address + unitSettings + unitStats + pageCounter + version + chemistries,
        "profileStats != NULL", 164);
    row("two chemistries",
        address + singletons + element("A", "chemistry") + element("B", "chemistry"),
        "chemistrySettings.size() == parseNumProfiles(fileContentsList)", 165);
    row("four chemistries", address + all + element("A", "chemistry"),
        "chemistrySettings.size() == parseNumProfiles(fileContentsList)", 165);
    row("nothing but the address, master", address + masterMark, "hardwareVersion != NULL", 156);
    row("nothing but the address", address, "versionInfo != NULL", 160);
    // A struct behind a head that is none is skipped, whatever it holds.
    const QByteArray others = unitSettings + unitStats + profileStats + pageCounter + chemistries;
    row("version in a hyphened name", address + others + element("Ver-sion", "version"),
        "versionInfo != NULL", 160);
    row("version with a comment at its head",
        address + others + element("Version", "version // strict"), "versionInfo != NULL", 160);
    row("profile types are counted last", address + "#define NUMPROFILETYPES x\n" + unitSettings,
        "versionInfo != NULL", 160);
}

void TestGenerator::diesOfBadSchemas()
{
    QFETCH(QByteArray, schema);
    QFETCH(QByteArray, condition);
    QFETCH(int, line);
    const QString file = write(schema);
    const ChildResult child = runInChild([&] { Generator().parseSSFile(file); });
    const QByteArray lastWords = "ASSERT: \"" + condition +
                                 "\" in file ../SSGenerator/generator.cpp, line " +
                                 QByteArray::number(line) + "\n";
    QVERIFY(child.aborted);
    QCOMPARE(child.standardError, lastWords);

    // What another schema held before makes up for nothing.
    const QString good =
        write(address + masterMark + singletons + hardware + barcode + chemistries, "good.ss");
    const ChildResult later = runInChild([&] {
        Generator generator;
        generator.parseSSFile(good);
        generator.parseSSFile(file);
    });
    QVERIFY(later.aborted);
    QCOMPARE(later.standardError, lastWords);
}

void TestGenerator::diesOfAMissingFile()
{
    const ChildResult child = runInChild(
        [this] { Generator().parseSSFile(folder->filePath(QStringLiteral("none.ss"))); });
    QVERIFY(child.aborted);
    QCOMPARE(child.standardError,
             QByteArray("ASSERT: \"false\" in file ../SSGenerator/generator.cpp, line 300\n"));
}

void TestGenerator::findsElementsByName()
{
    Generator generator;
    generator.parseSSFile(delivered("master.ss"));
    const auto find = [&](const char *name) {
        return generator.getFSElementByName(QString::fromLatin1(name));
    };
    QCOMPARE(find("Global settings"), generator.getUnitSettingsStruct());
    QCOMPARE(find("Global stats"), generator.getUnitStatsStruct());
    QCOMPARE(find("Profile stats"), generator.getProfileStatsStruct());
    QCOMPARE(find("Version"), generator.getVersionInfoStruct());
    QCOMPARE(find("Page counter"), generator.getPageCounterStruct());
    QCOMPARE(find("Hardware Version"), generator.getHardwareVersionStruct());
    QCOMPARE(find("Barcode"), generator.getBarcodeStruct());
    QCOMPARE(find("Nickel"), generator.getChemistrySettings().at(0));
    QCOMPARE(find("Lithium"), generator.getChemistrySettings().at(2));
    QVERIFY(!find("lithium"));
    QVERIFY(!find(""));

    QCOMPARE(generator.getChemistrySettingsByName(QStringLiteral("Lead")),
             generator.getChemistrySettings().at(1));
    QVERIFY(!generator.getChemistrySettingsByName(QStringLiteral("Version")));

    const auto verify = [&](const char *name) {
        return generator.getVeficationFSElementByName(QString::fromLatin1(name));
    };
    QCOMPARE(verify("Version"), generator.getVersionInfoStruct());
    QCOMPARE(verify("Hardware Version"), generator.getHardwareVersionStruct());
    QCOMPARE(verify("Barcode"), generator.getBarcodeStruct());
    for (const char *name :
         {"Global settings", "Global stats", "Profile stats", "Page counter", "Lithium"})
        QVERIFY2(!verify(name), name);
}

void TestGenerator::looksUpInOrder_data()
{
    QTest::addColumn<QByteArray>("lookUp");
    QTest::addColumn<QList<QByteArray>>("kinds");
    QTest::newRow("all elements") << QByteArray("element")
                                  << QList<QByteArray>{"global_settings", "global_stats",
                                                       "profile_stats",   "version",
                                                       "page_counter",    "hw_version",
                                                       "barcode",         "chemistry"};
    QTest::newRow("what tells chargers apart")
        << QByteArray("verification") << QList<QByteArray>{"version", "hw_version", "barcode"};
    QTest::newRow("copies") << QByteArray("copy")
                            << QList<QByteArray>{"global_settings", "profile_stats", "global_stats",
                                                 "version",         "page_counter",  "hw_version",
                                                 "barcode",         "chemistry"};
}

/// Structs of one name: what comes first is found, and what stands in front is then renamed.
void TestGenerator::looksUpInOrder()
{
    QFETCH(QByteArray, lookUp);
    QFETCH(QList<QByteArray>, kinds);
    QStringList found;
    QStringList expected;
    QList<QByteArray> renamed;
    for (const QByteArray &kind : qAsConst(kinds)) {
        QByteArray schema = address;
        for (const char *each :
             {"barcode", "chemistry", "chemistry", "chemistry", "hw_version", "page_counter",
              "version", "profile_stats", "global_stats", "global_settings"})
            schema += element(renamed.contains(each) ? "Other" : "Same", each);
        Generator generator;
        generator.parseSSFile(write(schema));
        const QString name = QStringLiteral("Same");
        const std::unique_ptr<StructSettings> copy(generator.copyFlashstackElementSettings(name));
        const StructSettings *result = lookUp == "copy" ? copy.get()
                                       : lookUp == "element"
                                           ? generator.getFSElementByName(name)
                                           : generator.getVeficationFSElementByName(name);
        QVERIFY(result);
        found.append(result->getStructType());
        expected.append(QString::fromLatin1(kind));
        if (kind == "chemistry" && lookUp == "element")
            QCOMPARE(result, generator.getChemistrySettings().constFirst());
        renamed.append(kind);
    }
    QCOMPARE(found, expected);
}

void TestGenerator::copiesElements()
{
    Generator generator;
    generator.parseSSFile(delivered("master.ss"));
    for (const char *name :
         {"Global settings", "Global stats", "Profile stats", "Version", "Page counter",
          "Hardware Version", "Barcode", "Nickel", "Lead", "Lithium"}) {
        const QString text = QString::fromLatin1(name);
        const std::unique_ptr<StructSettings> copy(generator.copyFlashstackElementSettings(text));
        QVERIFY2(copy, name);
        QCOMPARE(copy->getDescriptiveName(), text);
        QVERIFY(copy.get() != generator.getFSElementByName(text));
        QVERIFY(!copy->parent());
        const StructSetting *type = copy->getStructSettingByName(QStringLiteral("type"));
        QVERIFY(!type->upperBound->getRootTree());
        QCOMPARE(type->getNumber(), 0.0);
    }
    QVERIFY(!generator.copyFlashstackElementSettings(QStringLiteral("Zinc")));
}

void TestGenerator::choosesTheStrictFile_data()
{
    QTest::addColumn<double>("version");
    QTest::addColumn<double>("hardware");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, double version, double hardware, const char *expected) {
        QTest::newRow(name) << version << hardware << QString::fromLatin1(expected);
    };
    row("first flash stack", 1, 2, "48V_FSv1.ss");
    row("first flash stack, no hardware", 1, 0, "48V_FSv1.ss");
    row("hardware 1", 2, 1, "48V_FSv2.ss");
    row("hardware 4", 2, 4, "48V_FSv2.ss");
    row("hardware 2", 2, 2, "24V_rev7.ss");
    row("hardware 5", 2, 5, "72V_rev7.ss");
    row("hardware 3", 2, 3, "");
    row("hardware 0", 2, 0, "");
    row("flash stack 10", 10, 5, "72V_rev7.ss");
    row("nothing read", 0, 0, "");
}

void TestGenerator::choosesTheStrictFile()
{
    QFETCH(double, version);
    QFETCH(double, hardware);
    Generator generator;
    generator.parseSSFile(delivered("master.ss"));
    const QString name = QStringLiteral("version");
    generator.getVersionInfoStruct()->getStructSettingByName(name)->setValue(version);
    generator.getHardwareVersionStruct()->getStructSettingByName(name)->setValue(hardware);
    QTEST(generator.ssFileMatchingCurrentState(), "expected");
}

void TestGenerator::loadsTheChosenFile()
{
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(QStringLiteral(VELANTOR_BUNDLE_MEMBERS)));
    Generator generator;
    int classAtSignal = 0;
    connect(&generator, &Generator::strictSSFileLoaded, this,
            [&] { classAtSignal = generator.hwVersion(); });
    generator.parseSSFile(QStringLiteral("master.ss"));
    generator.getHardwareVersionStruct()
        ->getStructSettingByName(QStringLiteral("version"))
        ->setValue(2.0);
    QSignalSpy strictLoaded(&generator, &Generator::strictSSFileLoaded);
    QSignalSpy masterLoaded(&generator, &Generator::masterSSFileLoaded);
    generator.chooseNewSSFile();
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(generator.getHFileLocation(), QStringLiteral("24V_rev7.ss"));
    QVERIFY(!generator.isMaster());
    QCOMPARE(generator.hwVersion(), 24);
    QCOMPARE(classAtSignal, 24);
    QCOMPARE(strictLoaded.count(), 1);
    QCOMPARE(masterLoaded.count(), 0);
}

void TestGenerator::keepsItsStructsWithoutAChoice()
{
    Generator generator;
    generator.parseSSFile(delivered("master.ss"));
    const StructSettings *versionInfo = generator.getVersionInfoStruct();
    QSignalSpy finished(&generator, &Generator::finished);
    QSignalSpy strictLoaded(&generator, &Generator::strictSSFileLoaded);
    generator.chooseNewSSFile();
    QCOMPARE(generator.getVersionInfoStruct(), versionInfo);
    QCOMPARE(generator.getHFileLocation(), QString());
    QCOMPARE(finished.count(), 0);
    QCOMPARE(strictLoaded.count(), 0); // the master stays in force

    Generator strictGenerator;
    strictGenerator.parseSSFile(delivered("24V_rev7.ss"));
    QSignalSpy strictAgain(&strictGenerator, &Generator::strictSSFileLoaded);
    strictGenerator.chooseNewSSFile();
    QCOMPARE(strictGenerator.hwVersion(), 24);
    QCOMPARE(strictAgain.count(), 1);
}

void TestGenerator::loadsTheMasterFile()
{
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(QStringLiteral(VELANTOR_BUNDLE_MEMBERS)));
    Generator generator;
    generator.parseSSFile(QStringLiteral("72V_rev7.ss"));
    QSignalSpy masterLoaded(&generator, &Generator::masterSSFileLoaded);
    bool masterAtSignal = false;
    connect(&generator, &Generator::masterSSFileLoaded, this,
            [&] { masterAtSignal = generator.isMaster(); });
    generator.loadMasterSSFile();
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(masterLoaded.count(), 1);
    QVERIFY(masterAtSignal);
    QCOMPARE(generator.getHFileLocation(), QStringLiteral("master.ss"));
    QVERIFY(generator.isMaster());
}

void TestGenerator::readsTheVoltageClassFromTheLimits_data()
{
    QTest::addColumn<QString>("limit");
    QTest::addColumn<int>("expected");
    QTest::newRow("15.0") << QStringLiteral("15.0") << 24;
    QTest::newRow("8.0") << QStringLiteral("8.0") << 48;
    QTest::newRow("8.9") << QStringLiteral("8.9") << 48;
    QTest::newRow("5") << QStringLiteral("5") << 72;
    QTest::newRow("4.9") << QStringLiteral("4.9") << 0;
    QTest::newRow("10") << QStringLiteral("10") << 0;
    QTest::newRow("beyond 32 bits") << QStringLiteral("4294967304") << 0;
    QTest::newRow("infinity") << QStringLiteral("1/0") << 0;
}

void TestGenerator::readsTheVoltageClassFromTheLimits()
{
    QFETCH(QString, limit);
    Generator generator;
    generator.parseSSFile(delivered("master.ss"));
    generator.getChemistrySettingsByName(QStringLiteral("Lithium"))
        ->getStructSettingByName(QStringLiteral("bulk_I"))
        ->setUpperBound(limit);
    QTEST(generator.hwVersion(), "expected");
}

void TestGenerator::readsHelpTexts_data()
{
    using Texts = QMap<QString, QString>;
    using Sections = QMap<int, QMap<QString, QString>>;
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<Sections>("expected");
    const auto text = [](const char *key, const char *value) {
        return Texts{{QString::fromUtf8(key), QString::fromUtf8(value)}};
    };
    const auto row = [](const char *name, const char *file, const Sections &expected) {
        QTest::newRow(name) << QByteArray(file) << expected;
    };
    row("section of two digits", "Type 10: // Lead\nbulk_I \"A level.\";\n",
        {{10, text("bulk_I", "A level.")}});
    row("two sections", "Type 5:\na \"one\";\n\n \t\nType 8:\nb \"two\";\n",
        {{5, text("a", "one")}, {8, text("b", "two")}});
    row("section without texts", "Type 5:\nType 8:\n", {{5, {}}, {8, {}}});
    row("section that comes again", "Type 5:\na \"one\"\nType 8:\nType 5:\nb \"two\"\n",
        {{5, text("b", "two")}, {8, {}}});
    row("key that comes again", "Type 5:\na \"one\"\na \"two\"\n", {{5, text("a", "two")}});
    row("before the first section", "a \"one\"\nType 5:\n", {{5, {}}});
    row("no section", "a \"one\"\n", {{0, text("a", "one")}});
    row("empty file", "", {{0, {}}});
    row("first number of the line counts", "12 is Type 5\n", {{12, {}}});
    row("words of a section in a text", "Type 8:\na \"as for Type 5\"\nb \"two\"\n",
        {{8, {}}, {5, text("b", "two")}});
    row("no digit after the word", "Type 8:\nType x \"one\"\n", {{8, text("Type", "one")}});
    row("leading white space", "Type 8:\n\t a \"one\"\n", {{8, text("a", "one")}});
    row("no blank behind the key", "Type 8:\na\"one\"\n", {{8, text("a\"", "one")}});
    row("character that is no letter", "Type 8:\n-a \"one\"\n", {{8, text("-", "one")}});
    row("quotes inside are dropped", "Type 8:\na \"say \"hello\" twice\"; \"x\"\n",
        {{8, text("a", "say hello twice; x")}});
    row("no quotes", "Type 8:\na one\n", {{8, text("a", "")}});
    row("one quote", "Type 8:\na \"one\n", {{8, text("a", "")}});
    row("empty text", "Type 8:\na \"\";\n", {{8, text("a", "")}});
    row("commas and degrees",
        "Type 8:\na \"50-60\xC2\xB0"
        "C, or less\";\r\n",
        {{8, text("a", "50-60\xC2\xB0"
                       "C, or less")}});
}

void TestGenerator::readsHelpTexts()
{
    using Sections = QMap<int, QMap<QString, QString>>;
    QFETCH(QByteArray, file);
    QFETCH(Sections, expected);
    Generator generator;
    generator.setHFileLocation(delivered("master.ss"));
    generator.setTooltipFileLoc(write(file, "tips.txt"));
    QVERIFY(generator.parseSSAndTooltips());
    QCOMPARE(generator.getTooltips(), expected);
}

void TestGenerator::hasNoHelpTextsWithoutAFile()
{
    Generator generator;
    generator.setHFileLocation(delivered("master.ss"));
    QVERIFY(generator.parseSSAndTooltips());
    QVERIFY(generator.getTooltips().isEmpty());
    generator.setTooltipFileLoc(folder->filePath(QStringLiteral("none.txt")));
    QVERIFY(generator.parseSSAndTooltips());
    QVERIFY(generator.getTooltips().isEmpty());
}

void TestGenerator::keepsHelpTextsOverLaterParses()
{
    Generator generator;
    generator.setHFileLocation(delivered("master.ss"));
    generator.setTooltipFileLoc(delivered("setting_tooltips.txt"));
    QVERIFY(generator.parseSSAndTooltips());
    generator.setTooltipFileLoc(QString());
    generator.parseSSFile(delivered("24V_rev7.ss"));
    QCOMPARE(generator.getTooltips().size(), 4);
    generator.setHFileLocation(QString());
    QVERIFY(!generator.parseSSAndTooltips());
    QCOMPARE(generator.getTooltips().size(), 4);
    generator.setHFileLocation(delivered("master.ss"));
    QVERIFY(generator.parseSSAndTooltips());
    QVERIFY(generator.getTooltips().isEmpty());
}

QTEST_GUILESS_MAIN(TestGenerator)
#include "tst_generator.moc"
