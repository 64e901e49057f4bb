#include "ImportProfiles/importprofilesmain.h"

#include "HEXGeneratorParser/readfromhex.h"
#include "HEXGeneratorParser/writetohex.h"
#include "ImportProfiles/parsedfselement.h"
#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "profiles/profilesettings.h"
#include "profiles/profileshare.h"
#include "profiles/profilestats.h"
#include "support/capturedoutput.h"
#include "support/flashpage.h"
#include "support/messageboxanswers.h"
#include "support/workingdirectory.h"

#include <QRandomGenerator>
#include <QtTest>

#include <memory>
#include <vector>

using HParser::StructSetting;
using HParser::StructSettings;
using ImportProfiles::ImportProfilesMain;
using ImportProfiles::ParsedFSElement;
using Properties = QMap<QString, QString>;
using Texts = std::initializer_list<std::pair<const char *, const char *>>;

namespace
{
QString q(const char *text)
{
    return QString::fromLatin1(text);
}

Properties with(Properties properties, Texts changes)
{
    for (const auto &change : changes)
        properties.insert(q(change.first), q(change.second));
    return properties;
}

Properties of(const char *name, Texts values)
{
    return with({{q("name"), q(name)}}, values);
}

const Properties lithium = of("Lithium", {{"type", "8"},
                                          {"profile_id", "0"},
                                          {"chemistry", "0"},
                                          {"active", "true"},
                                          {"default", "false"},
                                          {"modifiable", "true"},
                                          {"scheduled_for_deletion", "false"},
                                          {"extraneous1", "0"},
                                          {"title", "36V Li"},
                                          {"subtitle", "Fast"},
                                          {"min_starting_voltage", "20"},
                                          {"start_current", "0.3"},
                                          {"bulk_start_voltage", "30"},
                                          {"bulk_current", "5"},
                                          {"full_voltage", "41"},
                                          {"charge_complete_below_current", "0.2"},
                                          {"checksum", "1"}});
const Properties lead = of("Lead", {{"type", "10"},
                                    {"profile_id", "0"},
                                    {"chemistry", "2"},
                                    {"active", "false"},
                                    {"default", "true"},
                                    {"modifiable", "false"},
                                    {"scheduled_for_deletion", "false"},
                                    {"title", "Truck"},
                                    {"subtitle", "Float"},
                                    {"bulk_current", "4"},
                                    {"full_voltage", "43.2"},
                                    {"charge_complete_below_current", "0.15"},
                                    {"max_time_at_full_voltage", "4"},
                                    {"float_voltage", "40.6"}});
const Properties stats = of("Profile stats", {{"type", "7"},
                                              {"profile_id", "0"},
                                              {"watt_hours", "1200"},
                                              {"amp_hours", "30"},
                                              {"charge_time", "6"},
                                              {"charge_count", "10"}});
const Properties pageCounter = of("Page counter", {{"type", "3"}, {"count", "1"}});

QString valueOf(const ProfileSettings *profile, const char *member)
{
    return profile->structSettings->getStructSettingByName(q(member))->getValue();
}

QString valueOf(const StructSettings *element, const char *member)
{
    return element->getStructSettingByName(q(member))->getValue();
}

bool liesInBounds(const StructSettings *settings)
{
    for (const StructSetting *setting : settings->getOriginalOrderStructSettings()) {
        if (setting->settingKind == HParser::SettingKind::Num &&
            setting->getValueInBounds(setting->getNumber()) != setting->getNumber())
            return false;
    }
    return true;
}

/// Bytes of a page without lifetime statistics that holds these elements.
int imageSize(const QList<StructSettings *> &elements, const HParser::Generator &generator)
{
    int size = 4 + 4 + 32; // page counter, version, global settings
    if (generator.getHardwareVersionStruct())
        size += 4 + 12; // and the barcode
    const QMap<QString, int> sizes = {
        {q("Profile stats"), 28}, {q("Lithium"), 60}, {q("Nickel"), 68}, {q("Lead"), 56}};
    for (const StructSettings *element : elements)
        size += sizes.value(element->getDescriptiveName());
    return size;
}
} // namespace

Q_DECLARE_METATYPE(ProfileSettings *)
Q_DECLARE_METATYPE(QList<ProfileSettings *>)

class ImportProfilesMainTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    // Sorting
    void emptyLogHasNoPageCounter();
    void pageCounterAlone();
    void deviceElementsStayAppliedWithoutPageCounter();
    void latestCopyTakesTheFirstOnesPlace();
    void statisticsAreSortedTheSameWay();
    void sortingAddsToWhatIsThere();
    void deviceElements();
    void laterGlobalSettingsWinMemberByMember();
    void formerValuesDoNotBoundLaterOnes();
    void defaultsDoNotBoundValues();
    void limitsMayFollowEachOther();
    void barcodeDoesNotReachTheStruct();
    void lifetimeStatistics();
    void schemaWithoutHardwareAndBarcode();
    void unknownType();
    void unknownChemistry();

    // Copying into a struct
    void nullElement();
    void freshStructGetsItsDefaults();
    void valuesOutOfBoundsAreClamped();
    void textsThatAreNoNumbers_data();
    void textsThatAreNoNumbers();

    // Building
    void buildsAProfile();
    void emptyTexts();
    void emptyValuesKeepDefaults();
    void recordTellsWhatItsPropertiesLeaveOpen();
    void boundsDependOnOtherMembers();
    void bounds_data();
    void bounds();
    void limitThatCutsTheDefaultIsNoLessALimit();
    void finerNumbersAreRounded();
    void hiddenMembersKeepTheLimitInstead();
    void incompatibleProfilesAreNamed();
    void misfitBeforeTheNameIsNamedAsWell();
    void tellsHowManyAreBuilt();
    void unknownStructsAreDropped();
    void advancedSettings_data();
    void advancedSettings();
    void advancedFlagsAndTexts_data();
    void advancedFlagsAndTexts();
    void hiddenAdvancedSettingsDoNotCount();
    void statisticsFindTheirProfile();
    void averages();
    void noChargesYet();
    void missingStatisticsAreZero();
    void statisticsOfAnotherSchema();
    void ids_data();
    void ids();
    void idsRunOut();

    // Handing over
    void handsOverFlags();
    void deletedProfilesVanish();
    void uploaderGetsAllProfiles();
    void handedOverProfilesBelongToTheirRows();
    void uploadersProfilesLiveUntilTheNext();
    void emptied();

    // Together with pages
    void importOfAnExport_data();
    void importOfAnExport();
    void fullPageIsFast();

private:
    ParsedFSElement *element(const Properties &properties);
    QList<ParsedFSElement *> elements(std::initializer_list<Properties> list);
    void load(const char *schema);
    QList<ProfileSettings *> build(const QList<ParsedFSElement *> &profiles,
                                   const QList<ParsedFSElement *> &statistics = {},
                                   const QList<int> &usedIDs = {});

    std::unique_ptr<QObject> owner;
    std::unique_ptr<HParser::Generator> generator;
    std::unique_ptr<ImportProfilesMain> importer;
};

void ImportProfilesMainTest::initTestCase()
{
    qRegisterMetaType<ProfileSettings *>();
    qRegisterMetaType<QList<ProfileSettings *>>();
}

void ImportProfilesMainTest::init()
{
    owner = std::make_unique<QObject>();
    load("master.ss");
}

void ImportProfilesMainTest::load(const char *schema)
{
    generator = std::make_unique<HParser::Generator>();
    generator->parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + q(schema));
    importer = std::make_unique<ImportProfilesMain>(nullptr, generator.get());
}

ParsedFSElement *ImportProfilesMainTest::element(const Properties &properties)
{
    auto *result = new ParsedFSElement(owner.get());
    result->setProperties(properties);
    return result;
}

QList<ParsedFSElement *> ImportProfilesMainTest::elements(std::initializer_list<Properties> list)
{
    QList<ParsedFSElement *> result;
    for (const Properties &properties : list)
        result.append(element(properties));
    return result;
}

QList<ProfileSettings *> ImportProfilesMainTest::build(const QList<ParsedFSElement *> &profiles,
                                                       const QList<ParsedFSElement *> &statistics,
                                                       const QList<int> &usedIDs)
{
    return importer->createProfileSettings(profiles, statistics, usedIDs);
}

void ImportProfilesMainTest::emptyLogHasNoPageCounter()
{
    int code = -1;
    try {
        importer->sortElements({});
    } catch (int thrown) {
        code = thrown;
    }
    QCOMPARE(code, 3);
}

void ImportProfilesMainTest::pageCounterAlone()
{
    importer->sortElements(elements({with(pageCounter, {{"count", "9"}})}));
    QVERIFY(importer->getProfileElements().isEmpty());
    QVERIFY(importer->getProfileStatElements().isEmpty());
    QCOMPARE(valueOf(generator->getPageCounterStruct(), "count"), q("9"));
}

void ImportProfilesMainTest::deviceElementsStayAppliedWithoutPageCounter()
{
    QVERIFY_EXCEPTION_THROWN(
        importer->sortElements(elements({of("Version", {{"version", "4"}}), lithium})), int);
    QCOMPARE(valueOf(generator->getVersionInfoStruct(), "version"), q("4"));
    QCOMPARE(importer->getProfileElements().size(), 1);
}

void ImportProfilesMainTest::latestCopyTakesTheFirstOnesPlace()
{
    const auto log =
        elements({pageCounter, of("Version", {}), with(lithium, {{"profile_id", "3"}}), pageCounter,
                  pageCounter, with(lead, {{"profile_id", "1"}}), pageCounter, pageCounter,
                  pageCounter, with(lead, {{"profile_id", "3"}})});
    importer->sortElements(log);
    QCOMPARE(importer->getProfileElements(), (QList<ParsedFSElement *>{log.at(9), log.at(5)}));
}

void ImportProfilesMainTest::statisticsAreSortedTheSameWay()
{
    const auto log =
        elements({with(stats, {{"profile_id", "2"}}), with(stats, {{"profile_id", "0"}}),
                  with(stats, {{"profile_id", "2"}}), with(lithium, {}),
                  with(stats, {{"profile_id", "2"}}), pageCounter});
    importer->sortElements(log);
    QCOMPARE(importer->getProfileStatElements(), (QList<ParsedFSElement *>{log.at(4), log.at(1)}));
    QCOMPARE(importer->getProfileElements(), QList<ParsedFSElement *>{log.at(3)});
}

void ImportProfilesMainTest::sortingAddsToWhatIsThere()
{
    const auto first = elements({pageCounter, lithium, stats});
    const auto second = elements({pageCounter, lead, lithium, stats});
    importer->sortElements(first);
    importer->sortElements(second);
    QCOMPARE(importer->getProfileElements(), (QList<ParsedFSElement *>{first.at(1), second.at(2)}));
    QCOMPARE(importer->getProfileStatElements(),
             (QList<ParsedFSElement *>{first.at(2), second.at(3)}));
    importer->emptyProfilesAndStats();
    importer->sortElements(second);
    QCOMPARE(importer->getProfileElements(), QList<ParsedFSElement *>{second.at(2)});
}

void ImportProfilesMainTest::deviceElements()
{
    importer->sortElements(elements(
        {of("Page counter", {{"type", "3"}, {"count", "200"}, {"checksum", "53"}}),
         of("Version", {{"type", "4"}, {"version", "2"}, {"checksum", "250"}}),
         of("Hardware Version", {{"type", "16"}, {"hardware_version", "5"}, {"checksum", "235"}}),
         of("Global settings", {{"brightness", "7"},
                                {"flip_display", "true"},
                                {"cable_resistance", "0.123"},
                                {"voltage_gain_tweak", "-12"}})}));
    QCOMPARE(valueOf(generator->getPageCounterStruct(), "count"), q("200"));
    QCOMPARE(valueOf(generator->getPageCounterStruct(), "checksum"), q("53"));
    QCOMPARE(valueOf(generator->getVersionInfoStruct(), "version"), q("2"));
    QCOMPARE(valueOf(generator->getHardwareVersionStruct(), "version"), q("5"));
    QCOMPARE(valueOf(generator->getUnitSettingsStruct(), "brightness"), q("7"));
    QCOMPARE(valueOf(generator->getUnitSettingsStruct(), "flip_display"), q("true"));
    QCOMPARE(valueOf(generator->getUnitSettingsStruct(), "cable_resistance_mOhm"), q("0.123"));
    QCOMPARE(valueOf(generator->getUnitSettingsStruct(), "voltage_gain_tweak_vv"), q("-12"));
}

void ImportProfilesMainTest::laterGlobalSettingsWinMemberByMember()
{
    const StructSettings *settings = generator->getUnitSettingsStruct();
    importer->sortElements(elements(
        {of("Global settings", {{"brightness", "2"}, {"screensaver_delay", "30"}}),
         of("Global settings", {{"brightness", "8"}, {"screensaver_delay", ""}}), pageCounter}));
    QCOMPARE(valueOf(settings, "brightness"), q("8"));
    QCOMPARE(valueOf(settings, "screensaver_delay_m"), q("30"));
    importer->sortElements(elements({of("Global settings", {{"brightness", "1"}}), pageCounter}));
    QCOMPARE(valueOf(settings, "brightness"), q("1"));
    QCOMPARE(valueOf(settings, "screensaver_delay_m"), q("30"));
}

void ImportProfilesMainTest::formerValuesDoNotBoundLaterOnes()
{
    // A long press takes at least twice as long as a short one, which comes behind it.
    importer->sortElements(
        elements({of("Global settings", {{"longpress_time", "0.8"}, {"shortpress_time", "0.03"}}),
                  of("Global settings", {{"longpress_time", "0.05"}, {"shortpress_time", "0.02"}}),
                  pageCounter}));
    QCOMPARE(valueOf(generator->getUnitSettingsStruct(), "longpress_time_cs"), q("0.05"));
    QCOMPARE(valueOf(generator->getUnitSettingsStruct(), "shortpress_time_cs"), q("0.02"));
}

void ImportProfilesMainTest::defaultsDoNotBoundValues()
{
    // The default of a short press, 0.02, would make this long press 0.04.
    importer->sortElements(
        elements({of("Global settings", {{"longpress_time", "0.03"}, {"shortpress_time", "0.01"}}),
                  pageCounter}));
    QCOMPARE(valueOf(generator->getUnitSettingsStruct(), "longpress_time_cs"), q("0.03"));
    QCOMPARE(valueOf(generator->getUnitSettingsStruct(), "shortpress_time_cs"), q("0.01"));
}

void ImportProfilesMainTest::limitsMayFollowEachOther()
{
    // Each limit stands behind what it bounds, and its own limit behind it.
    const QString line = q("int %1; // num, auto, 0, %2, *1, 0, \"%1\", \"\", \"%1\", 1, 0, basic");
    StructSettings settings;
    settings.setOriginalOrderStructSettings({new StructSetting(line.arg(q("a"), q("b"))),
                                             new StructSetting(line.arg(q("b"), q("c"))),
                                             new StructSetting(line.arg(q("c"), q("9")))});
    importer->importSSFileStruct(element(of("", {{"a", "7"}, {"b", "8"}, {"c", "9"}})), &settings);
    QCOMPARE(valueOf(&settings, "a"), q("7"));
    QCOMPARE(valueOf(&settings, "b"), q("8"));
    QCOMPARE(valueOf(&settings, "c"), q("9"));
}

void ImportProfilesMainTest::barcodeDoesNotReachTheStruct()
{
    importer->sortElements(
        elements({of("Barcode", {{"not_displayed", "A1B2"}, {"checksum", "9"}}), pageCounter}));
    QCOMPARE(valueOf(generator->getBarcodeStruct(), "barcode"), q("0000"));
    QCOMPARE(valueOf(generator->getBarcodeStruct(), "checksum"), q("9"));
}

void ImportProfilesMainTest::lifetimeStatistics()
{
    importer->sortElements(elements({pageCounter}));
    QVERIFY(!generator->getUnitStatsExists());
    importer->sortElements(elements(
        {pageCounter, of("Global stats", {{"charge_cycles", "12"}, {"lifetime", "2.5"}})}));
    QVERIFY(generator->getUnitStatsExists());
    QCOMPARE(valueOf(generator->getUnitStatsStruct(), "charge_cycles"), q("12"));
    QCOMPARE(valueOf(generator->getUnitStatsStruct(), "lifetime"), q("2.5"));
    importer->sortElements(elements({pageCounter}));
    QVERIFY(generator->getUnitStatsExists());
}

void ImportProfilesMainTest::schemaWithoutHardwareAndBarcode()
{
    load("48V_FSv1.ss");
    importer->sortElements(elements({lithium, pageCounter}));
    QCOMPARE(importer->getProfileElements().size(), 1);
}

void ImportProfilesMainTest::unknownType()
{
    const QByteArray words = lastWordsOf([this] {
        qInstallMessageHandler(nullptr);
        importer->sortElements(elements({of("Silver", {{"type", "11"}}), pageCounter}));
    });
    QVERIFY2(words.contains("\"type==8 || type==9 || type==10\""), words);
}

void ImportProfilesMainTest::unknownChemistry()
{
    importer->sortElements(elements({of("Silver", {{"type", "9"}}), pageCounter}));
    QVERIFY(importer->getProfileElements().isEmpty());
}

void ImportProfilesMainTest::nullElement()
{
    StructSettings *settings = generator->getUnitSettingsStruct();
    QCOMPARE(importer->importSSFileStruct(nullptr, settings), -1);
    std::unique_ptr<StructSettings> fresh(generator->copyFlashstackElementSettings(q("Version")));
    QCOMPARE(importer->importSSFileStruct(nullptr, fresh.get()), -1);
    QVERIFY(fresh->getOriginalOrderStructSettings().first()->lowerBound->getRootTree());
}

void ImportProfilesMainTest::freshStructGetsItsDefaults()
{
    std::unique_ptr<StructSettings> fresh(
        generator->copyFlashstackElementSettings(q("Global settings")));
    QCOMPARE(importer->importSSFileStruct(element(of("Global settings", {{"brightness", "3"}})),
                                          fresh.get()),
             0);
    QCOMPARE(valueOf(fresh.get(), "brightness"), q("3"));
    QCOMPARE(valueOf(fresh.get(), "screensaver_delay_m"), q("5"));
    QVERIFY(fresh->getStructSettingByName(q("screensaver_delay_m"))->advancedEnabled);
}

void ImportProfilesMainTest::valuesOutOfBoundsAreClamped()
{
    QCOMPARE(importer->importSSFileStruct(
                 element(of("Global settings", {{"brightness", "12"}, {"flip_display", "TRUE"}})),
                 generator->getUnitSettingsStruct()),
             0);
    QCOMPARE(valueOf(generator->getUnitSettingsStruct(), "brightness"), q("9"));
    QCOMPARE(valueOf(generator->getUnitSettingsStruct(), "flip_display"), q("false"));
}

void ImportProfilesMainTest::textsThatAreNoNumbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("brightness"); // 7 before, 5 by default, 0 to 9
    QTest::addColumn<bool>("fits");          // as top-up time, 0 to 9.9 hours
    QTest::newRow("word") << q("bright") << q("0") << true;
    QTest::newRow("infinity") << q("inf") << q("0") << false;
    QTest::newRow("negative infinity") << q("-inf") << q("0") << false;
    QTest::newRow("beyond all numbers") << q("1e999") << q("0") << false;
    QTest::newRow("not a number") << q("nan") << q("5") << false;
}

void ImportProfilesMainTest::textsThatAreNoNumbers()
{
    QFETCH(QString, text);
    QFETCH(bool, fits);
    StructSettings *settings = generator->getUnitSettingsStruct();
    importer->importSSFileStruct(element(of("Global settings", {{"brightness", "7"}})), settings);
    Properties strange = of("Global settings", {});
    strange.insert(q("brightness"), text);
    importer->importSSFileStruct(element(strange), settings);
    QTEST(valueOf(settings, "brightness"), "brightness");

    MessageBoxAnswers boxes;
    Properties nickel = of("Nickel", {{"title", "n"}});
    nickel.insert(q("top-up_time"), text);
    QCOMPARE(build(elements({nickel})).size(), fits ? 1 : 0);
    QCOMPARE(boxes.seen().size(), fits ? 0 : 1);
}

void ImportProfilesMainTest::buildsAProfile()
{
    const auto profiles = build(elements({with(lithium, {{"profile_id", "7"}}), lead}));
    QCOMPARE(profiles.size(), 2);
    const ProfileSettings *profile = profiles.first();
    QCOMPARE(profile->chemistry, q("Lithium"));
    QVERIFY(!profile->getStats());
    for (const auto &[member, expected] :
         std::initializer_list<std::pair<const char *, const char *>>{
             {"type", "8"},
             {"profile_id", "7"},
             {"chemistry", "0"},
             {"active", "true"},
             {"defaultprofile", "false"},
             {"modifiable", "true"},
             {"scheduled_for_deletion", "false"},
             {"extraneous1", "0"},
             {"title", "36V Li"},
             {"description", "Fast"},
             {"min_start_V", "20"},
             {"start_I", "0.3"},
             {"bulk_start_V", "30"},
             {"bulk_I", "5"},
             {"full_V", "41"},
             {"complete_I", "0.2"},
             {"checksum", "1"}})
        QCOMPARE(valueOf(profile, member), q(expected));
    QVERIFY(profile->getModifiable());
    QVERIFY(profile->structSettings->getAdvancedSettingsEdited());
    QCOMPARE(profiles.last()->chemistry, q("Lead"));
    QVERIFY(!profiles.last()->getModifiable());
    QCOMPARE(valueOf(profiles.last(), "defaultprofile"), q("true"));
}

void ImportProfilesMainTest::emptyTexts()
{
    Properties nameless = lithium;
    nameless.remove(q("title"));
    const auto profiles = build(elements({nameless, with(lithium, {{"subtitle", ""}})}));
    QCOMPARE(valueOf(profiles.at(0), "title"), QString());
    QCOMPARE(valueOf(profiles.at(0), "description"), q("Fast"));
    QCOMPARE(valueOf(profiles.at(1), "description"), QString());
}

void ImportProfilesMainTest::emptyValuesKeepDefaults()
{
    const auto profiles = build(elements({of("Lead", {{"title", "t"}, {"full_voltage", ""}})}));
    QCOMPARE(profiles.size(), 1);
    QCOMPARE(valueOf(profiles.first(), "full_V"), q("43.2"));
    QCOMPARE(valueOf(profiles.first(), "float_V"), q("40.6"));
    QCOMPARE(valueOf(profiles.first(), "active"), q("true"));
    QVERIFY(
        profiles.first()->structSettings->getStructSettingByName(q("float_V"))->advancedEnabled);
    // Neither the record's own status nor a property says that it may be changed.
    QVERIFY(!profiles.first()->getModifiable());
}

void ImportProfilesMainTest::recordTellsWhatItsPropertiesLeaveOpen()
{
    ParsedFSElement *open = element(of("Lead", {{"title", "open"}}));
    open->setModifiableStatus(true);
    ParsedFSElement *locked = element(of("Lead", {{"title", "locked"}, {"modifiable", "false"}}));
    locked->setModifiableStatus(true);
    const auto profiles = build({open, locked});
    QVERIFY(profiles.at(0)->getModifiable());
    QVERIFY(!profiles.at(1)->getModifiable());
}

void ImportProfilesMainTest::boundsDependOnOtherMembers()
{
    // Each of these fits only the full voltage that comes behind it in the record.
    const auto profiles =
        build(elements({with(lithium, {{"full_voltage", "60"},
                                       {"min_starting_voltage", "54"},
                                       {"bulk_start_voltage", "59.9"},
                                       {"bulk_current", "8"},
                                       {"start_current", "7.95"},
                                       {"charge_complete_below_current", "6.4"}})}));
    QCOMPARE(profiles.size(), 1);
    QCOMPARE(valueOf(profiles.first(), "min_start_V"), q("54"));
    QCOMPARE(valueOf(profiles.first(), "bulk_start_V"), q("59.9"));
    QCOMPARE(valueOf(profiles.first(), "start_I"), q("7.95"));
    QCOMPARE(valueOf(profiles.first(), "complete_I"), q("6.4"));
}

void ImportProfilesMainTest::bounds_data()
{
    QTest::addColumn<QByteArray>("schema");
    QTest::addColumn<QString>("current");
    QTest::addColumn<bool>("fits");
    QTest::newRow("48 V, on the bound") << QByteArray("48V_FSv2.ss") << q("8") << true;
    QTest::newRow("48 V, above") << QByteArray("48V_FSv2.ss") << q("8.1") << false;
    QTest::newRow("48 V, lower bound") << QByteArray("48V_FSv2.ss") << q("0.2") << true;
    QTest::newRow("48 V, below") << QByteArray("48V_FSv2.ss") << q("0.1") << false;
    QTest::newRow("24 V") << QByteArray("24V_rev7.ss") << q("15") << true;
    QTest::newRow("24 V, above") << QByteArray("24V_rev7.ss") << q("15.1") << false;
    QTest::newRow("72 V, above") << QByteArray("72V_rev7.ss") << q("8") << false;
    QTest::newRow("72 V") << QByteArray("72V_rev7.ss") << q("5") << true;
}

void ImportProfilesMainTest::bounds()
{
    QFETCH(QByteArray, schema);
    QFETCH(QString, current);
    QFETCH(bool, fits);
    load(schema);
    MessageBoxAnswers boxes;
    Properties properties = with(lithium, {{"full_voltage", "30"},
                                           {"bulk_start_voltage", "25"},
                                           {"start_current", "0.1"},
                                           {"charge_complete_below_current", "0.1"}});
    properties.insert(q("bulk_current"), current);
    QCOMPARE(build(elements({properties})).size(), fits ? 1 : 0);
    QCOMPARE(boxes.seen().size(), fits ? 0 : 1);
}

void ImportProfilesMainTest::limitThatCutsTheDefaultIsNoLessALimit()
{
    // 42 V by default, 34 V at most: a new profile holds what 42 is cut to.
    load("24V_rev7.ss");
    MessageBoxAnswers boxes;
    const auto profiles =
        build(elements({with(lithium, {{"title", "Too much"}, {"full_voltage", "42"}}),
                        with(lithium, {{"title", "Good"}, {"full_voltage", "34"}})}));
    QCOMPARE(profiles.size(), 1);
    QCOMPARE(valueOf(profiles.first(), "title"), q("Good"));
    QCOMPARE(boxes.titles(), QStringList{q("Incompatible Profiles")});
}

void ImportProfilesMainTest::finerNumbersAreRounded()
{
    // The charger counts in mA and 10 mV, a user in tenths: that is no misfit.
    MessageBoxAnswers boxes;
    const auto profiles =
        build(elements({with(lithium, {{"bulk_current", "4.944"}, {"full_voltage", "41.26"}})}));
    QCOMPARE(profiles.size(), 1);
    QCOMPARE(valueOf(profiles.first(), "bulk_I"), q("4.9"));
    QCOMPARE(valueOf(profiles.first(), "full_V"), q("41.3"));
    QVERIFY(boxes.seen().isEmpty());
}

void ImportProfilesMainTest::hiddenMembersKeepTheLimitInstead()
{
    // The schema fixes the number of the chemistry; no user sees or sets it.
    MessageBoxAnswers boxes;
    const auto profiles = build(elements({with(lithium, {{"chemistry", "3"}})}));
    QCOMPARE(profiles.size(), 1);
    QCOMPARE(valueOf(profiles.first(), "chemistry"), q("0"));
    QVERIFY(boxes.seen().isEmpty());
}

void ImportProfilesMainTest::incompatibleProfilesAreNamed()
{
    load("72V_rev7.ss");
    MessageBoxAnswers boxes;
    const auto profiles = build(
        elements({with(lithium, {{"title", "Too much"}, {"bulk_current", "8"}}),
                  with(lithium, {{"title", "Good"}}),
                  with(lead, {{"title", "Also"}, {"subtitle", ""}, {"full_voltage", "104"}})}),
        elements({stats}));
    QCOMPARE(profiles.size(), 1);
    QCOMPARE(valueOf(profiles.first(), "title"), q("Good"));
    QVERIFY(profiles.first()->getStats());
    QCOMPARE(boxes.titles(), QStringList{q("Incompatible Profiles")});
    QCOMPARE(boxes.seen().first().text,
             q("The following profiles aren't compatible with the 72V Velantor's hardware limits. "
               "\n\nToo much - Fast\nAlso - \n\nThey can not be imported."));
}

void ImportProfilesMainTest::misfitBeforeTheNameIsNamedAsWell()
{
    MessageBoxAnswers boxes;
    QVERIFY(build(elements({with(lithium, {{"profile_id", "300"}})})).isEmpty());
    QCOMPARE(boxes.seen().size(), 1);
    QVERIFY2(boxes.seen().first().text.contains(q("\n36V Li - Fast\n")),
             qPrintable(boxes.seen().first().text));
}

void ImportProfilesMainTest::tellsHowManyAreBuilt()
{
    MessageBoxAnswers boxes;
    QStringList told;
    connect(importer.get(), &ImportProfilesMain::profilesBuilt, this, [&](int done, int count) {
        told.append(
            QStringLiteral("%1 of %2, %3 boxes").arg(done).arg(count).arg(boxes.seen().size()));
    });
    build(elements({lithium, with(lithium, {{"bulk_current", "99"}}), of("Silver", {})}));
    QCOMPARE(told, QStringList({q("0 of 3, 0 boxes"), q("1 of 3, 0 boxes"), q("2 of 3, 0 boxes"),
                                q("3 of 3, 0 boxes")}));
    QCOMPARE(boxes.seen().size(), 1);
}

void ImportProfilesMainTest::unknownStructsAreDropped()
{
    MessageBoxAnswers boxes;
    const auto profiles =
        build(elements({of("Silver", {{"title", "x"}}), of("Version", {}), {}, lithium}),
              elements({of("Silver", {{"profile_id", "0"}})}));
    QCOMPARE(profiles.size(), 1);
    QVERIFY(!profiles.first()->getStats());
    QVERIFY(boxes.seen().isEmpty());
}

void ImportProfilesMainTest::advancedSettings_data()
{
    QTest::addColumn<Properties>("profile");
    QTest::addColumn<bool>("edited");
    const Properties plain = of("Nickel", {{"title", "n"},
                                           {"nominal_voltage", "24"},
                                           {"bulk_current", "4"},
                                           {"slow_start_current", "0.5"},
                                           {"bulk_start_voltage", "19.2"},
                                           {"charge_complete_at_-delta_v", "0.2"},
                                           {"thermistor", "false"},
                                           {"charge_complete_at_max_temperature", "55"},
                                           {"charge_complete_at_dt_dt", "1"},
                                           {"charge_complete_at_max_voltage", "33.6"},
                                           {"top-up_current", "0.5"},
                                           {"top-up_time", "1"}});
    QTest::newRow("all defaults of its own basic values") << plain << false;
    QTest::newRow("a default that a limit cuts")
        << with(plain, {{"nominal_voltage", "48"},
                        {"bulk_start_voltage", "38.4"},
                        {"charge_complete_at_-delta_v", "0.4"},
                        {"charge_complete_at_max_voltage", "63"}})
        << false;
    QTest::newRow("a number") << with(plain, {{"top-up_time", "1.1"}}) << true;
    QTest::newRow("a basic flag") << with(plain, {{"thermistor", "true"}}) << false;
    QTest::newRow("the defaults of other basic values")
        << with(plain, {{"nominal_voltage", "26"}}) << true;
    QTest::newRow("hidden and basic members do not count")
        << with(plain, {{"modifiable", "false"}, {"subtitle", "other"}, {"checksum", "8"}})
        << false;
    const Properties leadLike =
        with(lead, {{"bulk_current", "0.2"}, {"charge_complete_below_current", "0.16"}});
    QTest::newRow("a number on its limit") << leadLike << true;
    QTest::newRow("defaults of another chemistry")
        << with(leadLike, {{"charge_complete_below_current", "0.15"}}) << false;
}

void ImportProfilesMainTest::advancedSettings()
{
    QFETCH(Properties, profile);
    QFETCH(bool, edited);
    const auto profiles = build(elements({profile}));
    QCOMPARE(profiles.size(), 1);
    QCOMPARE(profiles.first()->structSettings->getAdvancedSettingsEdited(), edited);
    QCOMPARE(importer->areAdvancedSettingsDefault(profiles.first()->structSettings), !edited);
}

void ImportProfilesMainTest::advancedFlagsAndTexts_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("isDefault");
    const QString flag = q("unsigned char a; // bool, auto, \"a\", \"a\", 1, 0, ");
    QTest::newRow("flag at its default") << flag + q("advanced") << q("true") << true;
    QTest::newRow("other flag") << flag + q("advanced") << q("false") << false;
    QTest::newRow("other flag, basic") << flag + q("basic") << q("false") << true;
    const QString text = q("char a[6]; // string, auto, \"a\", \"a\", \"none\", 0, ");
    QTest::newRow("text at its default") << text + q("advanced") << q("none") << true;
    QTest::newRow("other text") << text + q("advanced") << q("some") << false;
    QTest::newRow("other text, basic") << text + q("basic") << q("some") << true;
}

void ImportProfilesMainTest::advancedFlagsAndTexts()
{
    QFETCH(QString, line);
    QFETCH(QString, value);
    QFETCH(bool, isDefault);
    auto *setting = new StructSetting(line);
    StructSettings settings;
    settings.setOriginalOrderStructSettings({setting});
    settings.setStructSettings({setting});
    if (setting->settingKind == HParser::SettingKind::Bool)
        setting->setValue(value == q("true"));
    else
        setting->setValue(value);
    QCOMPARE(importer->areAdvancedSettingsDefault(&settings), isDefault);
}

void ImportProfilesMainTest::hiddenAdvancedSettingsDoNotCount()
{
    StructSettings *settings = generator->getUnitSettingsStruct();
    QVERIFY(importer->areAdvancedSettingsDefault(settings));
    StructSetting *hidden = settings->getStructSettingByName(q("shortpress_time_cs"));
    QVERIFY(!hidden->isBasic);
    hidden->advancedEnabled = true;
    hidden->setValue(0.03);
    QVERIFY(importer->areAdvancedSettingsDefault(settings));
    StructSetting *shown = settings->getStructSettingByName(q("cable_resistance_mOhm"));
    shown->advancedEnabled = true;
    shown->setValue(0.1);
    QVERIFY(!importer->areAdvancedSettingsDefault(settings));
}

void ImportProfilesMainTest::statisticsFindTheirProfile()
{
    const auto profiles =
        build(elements({with(lithium, {{"profile_id", "5"}}), with(lead, {{"profile_id", "2"}}),
                        with(lead, {{"profile_id", "9"}})}),
              elements({with(stats, {{"profile_id", "2"}, {"watt_hours", "1"}}),
                        with(stats, {{"profile_id", "5"}, {"watt_hours", "2"}}),
                        with(stats, {{"profile_id", "5"}, {"watt_hours", "3"}}),
                        with(stats, {{"profile_id", "7"}, {"watt_hours", "4"}})}));
    QCOMPARE(valueOf(profiles.at(0)->getStats()->structSettings, "Wh"), q("2"));
    QCOMPARE(valueOf(profiles.at(1)->getStats()->structSettings, "Wh"), q("1"));
    QVERIFY(!profiles.at(2)->getStats());
}

void ImportProfilesMainTest::averages()
{
    const auto profiles = build(elements({lithium}), elements({stats}));
    const StructSettings *counted = profiles.first()->getStats()->structSettings;
    QCOMPARE(valueOf(counted, "Wh"), q("1200"));
    QCOMPARE(valueOf(counted, "Ah"), q("30"));
    QCOMPARE(valueOf(counted, "chargetime_s"), q("6"));
    QCOMPARE(valueOf(counted, "charge_count"), q("10"));
    QCOMPARE(valueOf(counted, "average_Wh"), q("120"));
    QCOMPARE(valueOf(counted, "average_Ah"), q("3"));
    QCOMPARE(valueOf(counted, "average_time"), q("0.6"));
}

void ImportProfilesMainTest::noChargesYet()
{
    // Something by nothing is infinite, which reads as the lower bound.
    const auto profiles =
        build(elements({lithium}), elements({with(stats, {{"charge_count", "0"}})}));
    QCOMPARE(valueOf(profiles.first()->getStats()->structSettings, "average_Wh"), q("0"));
}

void ImportProfilesMainTest::missingStatisticsAreZero()
{
    const auto profiles = build(elements({lithium}), elements({of("Profile stats", {})}));
    const StructSettings *counted = profiles.first()->getStats()->structSettings;
    QCOMPARE(valueOf(counted, "charge_count"), q("0"));
    QCOMPARE(valueOf(counted, "Wh"), q("0"));
}

void ImportProfilesMainTest::statisticsOfAnotherSchema()
{
    QFile delivered(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/master.ss"));
    QVERIFY(delivered.open(QIODevice::ReadOnly));
    QByteArray schema = delivered.readAll();
    const auto change = [&schema](const QByteArray &before, const QByteArray &after) {
        QVERIFY(schema.contains(before));
        schema.replace(before, after);
    };
    change("\"watt_hours\", 0, 0, basic", "\"watt_hours\", 0, 0, advanced");
    change("\"amp_hours\", 0, 1, basic", "\"amp_hours\", 7, 1, basic");
    const WorkingDirectory directory;
    directory.write(q("other.ss"), schema);
    generator->parseSSFile(q("other.ss"));

    Properties counted = stats;
    counted.remove(q("amp_hours"));
    const auto profiles = build(elements({lithium}), elements({counted}));
    const StructSettings *record = profiles.first()->getStats()->structSettings;
    // An advanced figure is not opened, so it keeps its default; a missing one is 0, whatever the
    // default.
    QCOMPARE(valueOf(record, "Wh"), q("0"));
    QCOMPARE(valueOf(record, "Ah"), q("0"));
    QCOMPARE(valueOf(record, "charge_count"), q("10"));
}

void ImportProfilesMainTest::ids_data()
{
    QTest::addColumn<QStringList>("ids");
    QTest::addColumn<QList<int>>("usedIDs");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("without a place")
        << QStringList{q("255"), q("255")} << QList<int>() << QStringList{q("0"), q("1")};
    QTest::newRow("taken") << QStringList{q("1")} << QList<int>{0, 1} << QStringList{q("2")};
    QTest::newRow("free") << QStringList{q("4")} << QList<int>{0, 1} << QStringList{q("4")};
    QTest::newRow("a free id is not remembered")
        << QStringList{q("0"), q("0"), q("255")} << QList<int>()
        << QStringList{q("0"), q("0"), q("0")};
    QTest::newRow("an assigned id is remembered")
        << QStringList{q("255"), q("0")} << QList<int>() << QStringList{q("0"), q("1")};
    QTest::newRow("gaps are filled") << QStringList{q("2"), q("0"), q("255")} << QList<int>{2, 0, 3}
                                     << QStringList{q("1"), q("4"), q("5")};
}

void ImportProfilesMainTest::ids()
{
    QFETCH(QStringList, ids);
    QFETCH(QList<int>, usedIDs);
    QFETCH(QStringList, expected);
    QList<ParsedFSElement *> profiles;
    QList<ParsedFSElement *> statistics;
    for (const QString &id : ids) {
        Properties profile = lithium;
        profile.insert(q("profile_id"), id);
        profiles.append(element(profile));
        Properties counted = stats;
        counted.insert(q("profile_id"), id);
        statistics.append(element(counted));
    }
    const auto built = build(profiles, statistics, usedIDs);
    QCOMPARE(built.size(), expected.size());
    for (int i = 0; i < built.size(); ++i) {
        QCOMPARE(valueOf(built.at(i), "profile_id"), expected.at(i));
        QCOMPARE(valueOf(built.at(i)->getStats()->structSettings, "profile_id"), expected.at(i));
    }
}

void ImportProfilesMainTest::idsRunOut()
{
    QList<int> usedIDs;
    for (int id = 0; id < 255; ++id)
        usedIDs.append(id);
    const auto built =
        build(elements({with(lithium, {{"profile_id", "255"}}), lithium}), {}, usedIDs);
    QCOMPARE(valueOf(built.at(0), "profile_id"), q("255"));
    QCOMPARE(valueOf(built.at(1), "profile_id"), q("0"));
}

void ImportProfilesMainTest::handsOverFlags()
{
    QSignalSpy ready(importer.get(), &ImportProfilesMain::profileReadyForImport);
    QSignalSpy last(importer.get(), &ImportProfilesMain::profilesLastImported);
    importer->importProfilesAndStats(elements({lithium, lead}), elements({stats}), {});
    QCOMPARE(ready.size(), 2);
    QCOMPARE(ready.at(0).at(1).toBool(), true);
    QCOMPARE(ready.at(0).at(2).toBool(), false);
    QCOMPARE(ready.at(1).at(1).toBool(), false);
    QCOMPARE(ready.at(1).at(2).toBool(), true);
    QCOMPARE(valueOf(ready.at(1).at(0).value<ProfileSettings *>(), "title"), q("Truck"));
    QVERIFY(last.isEmpty());
}

void ImportProfilesMainTest::deletedProfilesVanish()
{
    const auto log = elements({lithium, with(lead, {{"profile_id", "1"}}), stats,
                               with(lithium, {{"scheduled_for_deletion", "true"}}), pageCounter});
    importer->sortElements(log);
    QSignalSpy ready(importer.get(), &ImportProfilesMain::profileReadyForImport);
    importer->importProfilesAndStats(importer->getProfileElements(),
                                     importer->getProfileStatElements(), {});
    QCOMPARE(ready.size(), 1);
    QCOMPARE(valueOf(ready.first().first().value<ProfileSettings *>(), "title"), q("Truck"));
}

void ImportProfilesMainTest::uploaderGetsAllProfiles()
{
    importer->sortElements(
        elements({with(lithium, {{"scheduled_for_deletion", "true"}, {"profile_id", "4"}}), lead,
                  with(stats, {{"profile_id", "4"}}), pageCounter}));
    QSignalSpy ready(importer.get(), &ImportProfilesMain::profileReadyForImport);
    QSignalSpy last(importer.get(), &ImportProfilesMain::profilesLastImported);
    for (int time = 0; time < 2; ++time) {
        importer->sendProfilesToUploader();
        QCOMPARE(last.size(), 1);
        const auto profiles = last.takeFirst().first().value<QList<ProfileSettings *>>();
        QCOMPARE(profiles.size(), 2);
        QCOMPARE(valueOf(profiles.at(0), "profile_id"), q("4"));
        QVERIFY(profiles.at(0)->getStats());
        QCOMPARE(valueOf(profiles.at(0), "scheduled_for_deletion"), q("true"));
        QCOMPARE(valueOf(profiles.at(1), "title"), q("Truck"));
    }
    QVERIFY(ready.isEmpty());
}

void ImportProfilesMainTest::handedOverProfilesBelongToTheirRows()
{
    std::vector<ProfileShare> rows;
    std::vector<QPointer<StructSettings>> records;
    QPointer<StructSettings> counted;
    connect(importer.get(), &ImportProfilesMain::profileReadyForImport, this,
            [&](ProfileSettings *profile) {
                rows.emplace_back(profile);
                records.emplace_back(profile->structSettings);
                if (profile->getStats())
                    counted = profile->getStats()->structSettings;
            });
    importer->importProfilesAndStats(elements({lithium, lead}), elements({stats}), {});
    QCOMPARE(records.size(), std::size_t(2));
    rows.erase(rows.begin());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!records.at(0));
    QVERIFY(!counted);
    QVERIFY(records.at(1));
    rows.clear();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!records.at(1));
}

void ImportProfilesMainTest::uploadersProfilesLiveUntilTheNext()
{
    importer->sortElements(elements({lithium, stats, pageCounter}));
    std::vector<QPointer<StructSettings>> records;
    connect(importer.get(), &ImportProfilesMain::profilesLastImported, this,
            [&](const QList<ProfileSettings *> &profiles) {
                records.emplace_back(profiles.first()->structSettings);
                records.emplace_back(profiles.first()->getStats()->structSettings);
            });
    importer->sendProfilesToUploader();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(records.at(0) && records.at(1));
    importer->sendProfilesToUploader();
    QVERIFY(records.at(0) && records.at(1));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!records.at(0) && !records.at(1));
    QVERIFY(records.at(2) && records.at(3));
}

void ImportProfilesMainTest::emptied()
{
    importer->sortElements(elements({lithium, stats, pageCounter}));
    importer->emptyProfilesAndStats();
    QVERIFY(importer->getProfileElements().isEmpty());
    QVERIFY(importer->getProfileStatElements().isEmpty());
    QSignalSpy last(importer.get(), &ImportProfilesMain::profilesLastImported);
    importer->sendProfilesToUploader();
    QVERIFY(last.first().first().value<QList<ProfileSettings *>>().isEmpty());
}

void ImportProfilesMainTest::importOfAnExport_data()
{
    QTest::addColumn<QByteArray>("schema");
    QTest::addColumn<quint32>("seed");
    for (const char *schema :
         {"master.ss", "48V_FSv1.ss", "48V_FSv2.ss", "24V_rev7.ss", "72V_rev7.ss"}) {
        for (quint32 seed = 1; seed <= 8; ++seed)
            QTest::addRow("%s %u", schema, seed) << QByteArray(schema) << seed;
    }
}

void ImportProfilesMainTest::importOfAnExport()
{
    QFETCH(QByteArray, schema);
    QFETCH(quint32, seed);
    load(schema);
    const WorkingDirectory directory;
    MessageBoxAnswers boxes;

    // Profiles with random values, as a user could have entered them.
    QRandomGenerator random(seed);
    QList<ProfileSettings *> written;
    QList<StructSettings *> profileStructs;
    QList<StructSettings *> statStructs;
    const QStringList chemistries = {q("Lithium"), q("Nickel"), q("Lead")};
    for (int id = 0; id < 11; ++id) {
        auto *profile = new ProfileSettings;
        QVERIFY(
            profile->initializeStructSettings(chemistries.at(random.bounded(3)), generator.get()));
        for (StructSetting *setting : profile->structSettings->getDependancyOrderStructSettings()) {
            setting->advancedEnabled = true;
            if (setting->name == q("scheduled_for_deletion"))
                continue;
            if (setting->settingKind == HParser::SettingKind::Bool) {
                setting->setValue(random.bounded(2) == 1);
            } else if (setting->settingKind == HParser::SettingKind::String) {
                setting->setValue(QString(random.bounded(12), QLatin1Char('x')));
            } else if (setting->xmlName != q("checksum")) {
                const double low = setting->lowerBound->toDouble();
                const double high = setting->upperBound->toDouble();
                setting->setValue(low + (high - low) * random.generateDouble());
            }
        }
        // Rounding may have led a value over a bound that is finer than its decimals.
        if (!liesInBounds(profile->structSettings)) {
            --id;
            continue;
        }
        profile->setProfileID(id);
        if (random.bounded(2) == 0) {
            auto *counted = new ProfileStats;
            QVERIFY(counted->initializeStructSettings(q("Profile stats"), generator.get()));
            profile->setProfileStats(counted);
            profile->setProfileID(id);
            counted->structSettings->getStructSettingByName(q("charge_count"))
                ->setValue(double(random.bounded(1000)));
            statStructs.append(counted->structSettings);
        }
        written.append(profile);
        profileStructs.append(profile->structSettings);
    }
    // Lifetime statistics move the end of the page away from the end of a row, behind which there
    // would be no blank word.
    generator->setUnitStatsExists(imageSize(profileStructs + statStructs, *generator) % 256 == 0);
    QVERIFY(HEXGeneratorParser::WriteToHEX::write(q("page.hex"), profileStructs, statStructs,
                                                  generator.get()));
    HEXGeneratorParser::ReadFromHEX reader;
    QVERIFY(reader.read(q("page.hex"), generator->getProfileStartWordAddress()));
    const QList<ParsedFSElement *> log = reader.parseFSElements(generator.get());
    for (ParsedFSElement *record : log)
        record->setParent(owner.get());
    importer->sortElements(log);

    const auto read = build(importer->getProfileElements(), importer->getProfileStatElements());
    QVERIFY(boxes.seen().isEmpty());
    QCOMPARE(read.size(), written.size());
    for (int i = 0; i < read.size(); ++i) {
        for (const StructSetting *setting :
             written.at(i)->structSettings->getOriginalOrderStructSettings()) {
            if (setting->xmlName != q("checksum"))
                QCOMPARE(
                    read.at(i)->structSettings->getStructSettingByName(setting->name)->getValue(),
                    setting->getValue());
        }
        QCOMPARE(read.at(i)->getStats() != nullptr, written.at(i)->getStats() != nullptr);
        if (read.at(i)->getStats())
            QCOMPARE(valueOf(read.at(i)->getStats()->structSettings, "charge_count"),
                     valueOf(written.at(i)->getStats()->structSettings, "charge_count"));
    }
}

void ImportProfilesMainTest::fullPageIsFast()
{
    // 17 profiles with statistics, all that a page has room for. The limit is generous: it holds
    // under sanitizers on a busy machine, and still shows a cost that grows out of hand.
    FlashPage page;
    page.add(FlashPage::number(3, 1) + FlashPage::number(0, 1));
    for (int id = 0; id < 17; ++id) {
        page.add(FlashPage::number(7, 1) + FlashPage::number(id, 1) + QByteArray(16, '\1'));
        page.add(FlashPage::number(9, 1) + FlashPage::number(id, 1) + FlashPage::number(1, 1) +
                 FlashPage::number(5, 1) + FlashPage::text("title", 12) +
                 FlashPage::text("text", 14) + FlashPage::number(500, 2) +
                 FlashPage::number(2880, 2) + FlashPage::number(8000, 2) +
                 FlashPage::number(3600, 2) + FlashPage::number(30, 2) + FlashPage::number(0, 1) +
                 FlashPage::number(55, 1) + FlashPage::number(10, 2) + FlashPage::number(5040, 2) +
                 FlashPage::number(500, 2) + FlashPage::number(100, 2));
    }
    const WorkingDirectory directory;
    directory.write(q("page.hex"), page.toHex());
    QSignalSpy ready(importer.get(), &ImportProfilesMain::profileReadyForImport);
    QElapsedTimer timer;
    timer.start();
    HEXGeneratorParser::ReadFromHEX reader;
    QVERIFY(reader.read(q("page.hex"), generator->getProfileStartWordAddress()));
    const auto log = reader.parseFSElements(generator.get());
    for (ParsedFSElement *record : log)
        record->setParent(owner.get());
    importer->sortElements(log);
    importer->importProfilesAndStats(importer->getProfileElements(),
                                     importer->getProfileStatElements(), {});
    const qint64 elapsed = timer.elapsed();
    QCOMPARE(ready.size(), 17);
    QVERIFY2(elapsed < 1000, qPrintable(QString::number(elapsed)));
}

QTEST_MAIN(ImportProfilesMainTest)
#include "tst_importprofilesmain.moc"
