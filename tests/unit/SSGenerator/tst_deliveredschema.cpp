#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"

#include <QtTest>

#include <algorithm>

using namespace HParser;

namespace
{

QString delivered(const QString &file)
{
    return QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + file;
}

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

QStringList namesOf(const QList<StructSetting *> &settings)
{
    QStringList names;
    for (const StructSetting *setting : settings)
        names.append(setting->name);
    return names;
}

QString textOf(const Formula *formula)
{
    return formula ? formula->toString() : QString();
}

/// A member in the form of a line of the list of members.
QString describe(const QString &element, const StructSetting *setting)
{
    static const QStringList kinds = words("num bool string list");
    QString fallback = textOf(setting->defaultFormula);
    if (setting->settingKind == SettingKind::Bool)
        fallback = setting->getDefaultBool() ? QStringLiteral("1") : QStringLiteral("0");
    else if (setting->settingKind == SettingKind::String)
        fallback = setting->getDefaultText();
    QString name = setting->name;
    if (setting->isArray)
        name += QStringLiteral("[%1]").arg(setting->arraySize);
    return QStringList{element,
                       setting->cType,
                       name,
                       kinds.value(int(setting->settingKind)),
                       setting->bits,
                       textOf(setting->lowerBound),
                       textOf(setting->upperBound),
                       textOf(setting->scale),
                       textOf(setting->decimals),
                       setting->descriptiveName,
                       setting->unit,
                       setting->xmlName,
                       fallback,
                       textOf(setting->visualIndex),
                       setting->isBasic ? QStringLiteral("basic") : QStringLiteral("advanced")}
        .join(QLatin1Char('|'));
}

QStringList describe(const Generator &generator)
{
    QStringList lines;
    QList<StructSettings *> elements = {
        generator.getUnitSettingsStruct(), generator.getUnitStatsStruct(),
        generator.getProfileStatsStruct(), generator.getPageCounterStruct(),
        generator.getVersionInfoStruct(),  generator.getHardwareVersionStruct(),
        generator.getBarcodeStruct()};
    elements += generator.getChemistrySettings();
    for (const StructSettings *element : qAsConst(elements)) {
        if (!element)
            continue;
        for (const StructSetting *setting : element->getOriginalOrderStructSettings())
            lines.append(describe(element->getDescriptiveName(), setting));
    }
    return lines;
}

/// The lines of a list beside this test, without its comments.
QStringList linesOf(const char *list)
{
    QFile file(QStringLiteral(VELANTOR_SOURCE_DIR "/tests/unit/SSGenerator/") +
               QString::fromLatin1(list));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no such list");
    QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [](const QString &line) {
                                   return line.isEmpty() || line.startsWith(QLatin1Char('#'));
                               }),
                lines.end());
    return lines;
}

/// The upper bounds that tell the models apart.
struct Limits {
    const char *bulkCurrent;
    const char *nominalVoltage;
    const char *fullVoltage;
};

/// The members of the master schema with other limits.
QStringList withLimits(QStringList members, const Limits &limits)
{
    const auto setUpper = [&members](const char *element, const char *name, const char *upper) {
        for (QString &member : members) {
            QStringList columns = member.split(QLatin1Char('|'));
            if (columns.at(0) == QLatin1String(element) && columns.at(2) == QLatin1String(name)) {
                columns[6] = QLatin1String(upper);
                member = columns.join(QLatin1Char('|'));
            }
        }
    };
    for (const char *chemistry : {"Nickel", "Lead", "Lithium"})
        setUpper(chemistry, "bulk_I", limits.bulkCurrent);
    setUpper("Nickel", "nominal_full_V", limits.nominalVoltage);
    setUpper("Nickel", "max_V", limits.fullVoltage);
    setUpper("Lead", "full_V", limits.fullVoltage);
    setUpper("Lithium", "full_V", limits.fullVoltage);
    return members;
}

} // namespace

class TestDeliveredSchema : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void headsOfTheFiles_data();
    void headsOfTheFiles();
    void membersOfTheMaster();
    void membersOfTheStrictFiles_data();
    void membersOfTheStrictFiles();
    void visualLists_data();
    void visualLists();
    void defaults_data();
    void defaults();
    void nickelFollowsTheBulkCurrent();
    void longPressIsTwiceAShortPress();
    void averagesDivideByTheCycles();
    void everyChemistryCopiesWithItsValues();
    void helpTexts();

private:
    Generator master;
};

void TestDeliveredSchema::initTestCase()
{
    master.setHFileLocation(delivered(QStringLiteral("master.ss")));
    master.setTooltipFileLoc(delivered(QStringLiteral("setting_tooltips.txt")));
    QVERIFY(master.parseSSAndTooltips());
}

void TestDeliveredSchema::headsOfTheFiles_data()
{
    QTest::addColumn<bool>("master");
    QTest::addColumn<bool>("hasHardware");
    QTest::addColumn<int>("hwVersion");
    QTest::newRow("master.ss") << true << true << 48;
    QTest::newRow("48V_FSv1.ss") << false << false << 48;
    QTest::newRow("48V_FSv2.ss") << false << true << 48;
    QTest::newRow("24V_rev7.ss") << false << true << 24;
    QTest::newRow("72V_rev7.ss") << false << true << 72;
}

void TestDeliveredSchema::headsOfTheFiles()
{
    QFETCH(bool, hasHardware);
    Generator generator;
    generator.parseSSFile(delivered(QString::fromLatin1(QTest::currentDataTag())));
    QTEST(generator.isMaster(), "master");
    QTEST(generator.hwVersion(), "hwVersion");
    QCOMPARE(generator.getProfileStartWordAddress(), 0x9C00);
    QCOMPARE(generator.getHardwareVersionStruct() != nullptr, hasHardware);
    QCOMPARE(generator.getBarcodeStruct() != nullptr, hasHardware);
    QStringList chemistries;
    for (const StructSettings *chemistry : generator.getChemistrySettings())
        chemistries.append(chemistry->getDescriptiveName());
    QCOMPARE(chemistries, words("Nickel Lead Lithium"));
}

void TestDeliveredSchema::membersOfTheMaster()
{
    const QStringList found = describe(master);
    const QStringList expected = linesOf("delivered_members.txt");
    for (int i = 0; i < qMin(found.size(), expected.size()); ++i)
        QCOMPARE(found.at(i), expected.at(i));
    QCOMPARE(found.size(), expected.size());
    QVERIFY(found.join(QLatin1Char('\n')).contains(QString::fromUtf8("|°C/min|")));
}

void TestDeliveredSchema::membersOfTheStrictFiles_data()
{
    QTest::addColumn<QStringList>("expected");
    const QStringList all = linesOf("delivered_members.txt");
    QTest::newRow("48V_FSv2.ss") << all;
    QTest::newRow("24V_rev7.ss") << withLimits(all, {"15.0", "24", "34"});
    QTest::newRow("72V_rev7.ss") << withLimits(all, {"5.0", "72", "103"});
    QTest::newRow("48V_FSv1.ss") << all.filter(
        QRegularExpression(QStringLiteral("^(?!Hardware Version|Barcode)")));
}

void TestDeliveredSchema::membersOfTheStrictFiles()
{
    Generator generator;
    generator.parseSSFile(delivered(QString::fromLatin1(QTest::currentDataTag())));
    QTEST(describe(generator), "expected");
}

void TestDeliveredSchema::visualLists_data()
{
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<int>("members");
    const auto row = [](const char *element, int members, const char *expected) {
        QTest::newRow(element) << words(expected) << members;
    };
    row("Global settings", 15,
        "brightness flip_display screensaver_delay_m longpress_time_cs cable_resistance_mOhm "
        "current_tare_period_minutes");
    row("Global stats", 7, "totalchargetime lifetime charge_cycles ah_total wh_total");
    row("Profile stats", 10, "Wh Ah chargetime_s charge_count average_Wh average_Ah average_time");
    row("Page counter", 3, "");
    row("Version", 3, "");
    row("Hardware Version", 3, "");
    row("Barcode", 3, "");
    row("Nickel", 22,
        "title description nominal_full_V bulk_I external_thermistor start_I bulk_start_V delta_V "
        "max_T dTdt topup_I topup_time max_V");
    row("Lead", 16, "title description full_V bulk_I float_V full_V_min_I full_V_max_time");
    row("Lithium", 17,
        "title description full_V bulk_I min_start_V start_I bulk_start_V complete_I");
}

void TestDeliveredSchema::visualLists()
{
    const StructSettings *element =
        master.getFSElementByName(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(element);
    QTEST(namesOf(element->getStructSettings()), "expected");
    QTEST(element->getOriginalOrderStructSettings().size(), "members");
}

void TestDeliveredSchema::defaults_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("element");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *file, const char *element, const char *name,
                        const char *expected) {
        QTest::addRow("%s %s %s", file, element, name)
            << QString::fromLatin1(file) << QString::fromLatin1(element)
            << QString::fromLatin1(name) << QString::fromLatin1(expected);
    };
    row("master.ss", "Lithium", "type", "8");
    row("master.ss", "Lithium", "title", "Lithium");
    row("master.ss", "Lithium", "description", "Custom");
    row("master.ss", "Lithium", "active", "true");
    row("master.ss", "Lithium", "defaultprofile", "false");
    row("master.ss", "Lithium", "full_V", "42");
    row("master.ss", "Lithium", "bulk_I", "4");
    row("master.ss", "Lithium", "min_start_V", "21");
    row("master.ss", "Lithium", "start_I", "0.2");
    row("master.ss", "Lithium", "bulk_start_V", "29.4");
    row("master.ss", "Lithium", "complete_I", "0.15");
    row("master.ss", "Lead", "full_V", "43.2");
    row("master.ss", "Lead", "float_V", "40.6"); // 43.2 * 94 / 100 is 40.608
    row("master.ss", "Lead", "full_V_min_I", "0.15");
    row("master.ss", "Nickel", "bulk_start_V", "28.8");
    row("master.ss", "Nickel", "delta_V", "0.3");
    row("master.ss", "Nickel", "max_V", "50.4");
    row("master.ss", "Nickel", "bulk_I", "8");
    row("master.ss", "Global settings", "longpress_time_cs", "0.8");
    row("master.ss", "Global settings", "cable_resistance_mOhm", "0.087");
    row("master.ss", "Global settings", "brightness", "5");
    row("master.ss", "Barcode", "barcode", "0000");
    row("master.ss", "Profile stats", "average_Wh", "0");
    // The delivered defaults are those of 48 V; smaller models clamp them.
    row("24V_rev7.ss", "Lithium", "full_V", "34");
    row("24V_rev7.ss", "Lithium", "min_start_V", "17");
    row("24V_rev7.ss", "Lead", "full_V", "34");
    row("24V_rev7.ss", "Nickel", "nominal_full_V", "24");
    row("24V_rev7.ss", "Nickel", "max_V", "33.6");
    row("72V_rev7.ss", "Nickel", "bulk_I", "5");
    row("72V_rev7.ss", "Lithium", "bulk_I", "4");
}

void TestDeliveredSchema::defaults()
{
    QFETCH(QString, file);
    QFETCH(QString, element);
    QFETCH(QString, name);
    Generator generator;
    generator.parseSSFile(delivered(file));
    QTEST(generator.getFSElementByName(element)->getStructSettingByName(name)->getValue(),
          "expected");
}

void TestDeliveredSchema::nickelFollowsTheBulkCurrent()
{
    const QScopedPointer<StructSettings> nickel(
        master.getChemistrySettingsByName(QStringLiteral("Nickel"))->deepCopyWithValues());
    StructSetting *start = nickel->getStructSettingByName(QStringLiteral("start_I"));
    QVERIFY(start->setValue(6.0));
    nickel->getStructSettingByName(QStringLiteral("bulk_I"))->setValue(3.0);
    QCOMPARE(start->getNumber(), 3.0);
}

void TestDeliveredSchema::longPressIsTwiceAShortPress()
{
    const QScopedPointer<StructSettings> unit(master.getUnitSettingsStruct()->deepCopyWithValues());
    StructSetting *longPress = unit->getStructSettingByName(QStringLiteral("longpress_time_cs"));
    QVERIFY(!longPress->setValue(0.01));
    QCOMPARE(longPress->getNumber(), 0.04);
    unit->getStructSettingByName(QStringLiteral("shortpress_time_cs"))->setValue(0.03);
    QCOMPARE(longPress->getNumber(), 0.06);
}

void TestDeliveredSchema::averagesDivideByTheCycles()
{
    const QScopedPointer<StructSettings> stats(
        master.getProfileStatsStruct()->deepCopyWithValues());
    const auto setting = [&stats](const char *name) {
        return stats->getStructSettingByName(QLatin1String(name));
    };
    setting("Wh")->setValue(1000.0);
    setting("average_Wh")->setDefault(); // divides by no cycles
    QCOMPARE(setting("average_Wh")->getValue(), QStringLiteral("0"));
    setting("charge_count")->setValue(8.0);
    setting("average_Wh")->setDefault();
    QCOMPARE(setting("average_Wh")->getValue(), QStringLiteral("125"));
    QCOMPARE(setting("average_Wh")->upperBound->toDouble(), 1000.0);
}

void TestDeliveredSchema::everyChemistryCopiesWithItsValues()
{
    for (const StructSettings *chemistry : master.getChemistrySettings()) {
        const QScopedPointer<StructSettings> profile(chemistry->deepCopyWithValues());
        QVERIFY(chemistry->compare(profile.data()));
        // Every number at its upper bound, then every number at its lower one.
        for (const bool upper : {true, false}) {
            for (StructSetting *setting : profile->getDependancyOrderStructSettings()) {
                if (setting->settingKind == SettingKind::Num)
                    setting->setValue(
                        (upper ? setting->upperBound : setting->lowerBound)->toDouble());
            }
            const QScopedPointer<StructSettings> copy(profile->deepCopyWithValues());
            QVERIFY(profile->compare(copy.data()));
        }
    }
}

void TestDeliveredSchema::helpTexts()
{
    const QMap<int, QMap<QString, QString>> tooltips = master.getTooltips();
    QMap<int, QMap<QString, QString>> expected;
    for (const QString &line : linesOf("delivered_tooltips.txt")) {
        const QChar bar = QLatin1Char('|');
        expected[line.section(bar, 0, 0).toInt()][line.section(bar, 1, 1)] = line.section(bar, 2);
    }
    QCOMPARE(tooltips.keys(), (QList<int>{5, 8, 9, 10}));
    QCOMPARE(tooltips.keys(), expected.keys());
    for (const int type : expected.keys()) {
        QCOMPARE(tooltips.value(type).keys(), expected.value(type).keys());
        for (const QString &key : expected.value(type).keys())
            QCOMPARE(tooltips.value(type).value(key), expected.value(type).value(key));
    }
    QVERIFY(tooltips.value(9)
                .value(QStringLiteral("max_T"))
                .contains(QString::fromUtf8("50-60°C is usually fine")));
    QVERIFY(!tooltips.value(5).contains(QStringLiteral("current_tare_period_minutes")));
    QVERIFY(!tooltips.value(8).contains(QStringLiteral("title")));

    // Every text belongs to a member of the struct with this type number.
    for (const char *name : {"Global settings", "Nickel", "Lead", "Lithium"}) {
        const StructSettings *element = master.getFSElementByName(QString::fromLatin1(name));
        const int type =
            element->getStructSettingByName(QStringLiteral("type"))->getValue().toInt();
        for (const QString &key : tooltips.value(type).keys()) {
            QVERIFY2(element->getStructSettingByName(key), qPrintable(key));
            QVERIFY(!tooltips.value(type).value(key).isEmpty());
            QVERIFY(!tooltips.value(type).value(key).contains(QLatin1Char('"')));
        }
    }
}

QTEST_GUILESS_MAIN(TestDeliveredSchema)
#include "tst_deliveredschema.moc"
