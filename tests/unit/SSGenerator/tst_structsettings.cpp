#include "SSGenerator/formula.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "childprocess.h"

#include <QtTest>

#include <memory>

using namespace HParser;

namespace
{

using Struct = std::unique_ptr<StructSettings>;

/// A struct of these member lines, as the parser makes it, without trees.
Struct parse(const QStringList &lines)
{
    auto element = std::make_unique<StructSettings>();
    element->setDescriptiveName(QStringLiteral("Lithium"));
    element->setStructType(QStringLiteral("chemistry"));
    QList<StructSetting *> members;
    for (const QString &line : lines)
        members.append(new StructSetting(line));
    element->setOriginalOrderStructSettings(members);
    element->setStructSettings(StructSettings::sortByVisualIndex(members));
    return element;
}

QString number(const char *name, const char *lower, const char *upper, const char *fallback,
               const char *index, const char *word = "basic")
{
    return QStringLiteral("short %1; // num, auto, %2, %3, *0.001, 1, \"The %1\", \"\", \"%1\", "
                          "%4, %5, %6")
        .arg(QLatin1String(name), QLatin1String(lower), QLatin1String(upper),
             QLatin1String(fallback), QLatin1String(index), QLatin1String(word));
}

/// A profile in small: limits and defaults that name members declared before and after.
Struct profile()
{
    Struct element = parse(
        {number("type", "8", "8", "8", "-1"),
         QStringLiteral("char active; // bool, 1, \"active\", \"active\", 1, -4, basic"),
         QStringLiteral("char title[12]; // string, auto, \"Name\", \"title\", \"Lithium\", 0, "
                        "basic"),
         number("min_start_V", "5.07", "(full_V * 9)/10", "full_V / 2", "4", "advanced"),
         number("start_I", "0.1", "bulk_I", "0.2", "5", "advanced"),
         number("bulk_I", "0.2", "8.0", "4.0", "3"), number("full_V", "12", "63", "42", "2")});
    element->buildFormulaTrees();
    return element;
}

StructSetting *member(const Struct &element, const char *name)
{
    return element->getStructSettingByName(QLatin1String(name));
}

QStringList namesOf(const QList<StructSetting *> &settings)
{
    QStringList names;
    for (const StructSetting *setting : settings)
        names.append(setting->name);
    return names;
}

/// How many connections wait for the changes that formula passes on.
int listenersOf(const Formula *formula)
{
    struct Access : QObject {
        using QObject::receivers;
    };
    return (formula->*&Access::receivers)(SIGNAL(memberSettingChanged()));
}

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

class TestStructSettings : public QObject
{
    Q_OBJECT

private slots:
    void beginsEmpty();
    void ownsItsSettings();
    void sortsByVisualIndex_data();
    void sortsByVisualIndex();
    void readsTheIndexFromItsText();
    void findsSettings();
    void tellsOfTheOverrideStateEveryTime();

    void appliesDefaults();
    void appliesDefaultsInDeclarationOrder();
    void joinsMembersOnceHoweverOftenBuilt_data();
    void joinsMembersOnceHoweverOftenBuilt();
    void rebuildPartsFromMembersNoLongerNamed();

    void copiesWithoutValues();
    void copyTakesDefaultsOnceBuilt();
    void copyFollowsItsOwnMembers();
    void copiesWithValues();
    void copiesValuesBoundByLaterMembers();
    void copiesValuesThatTheirLimitsForbid();
    void takesValuesBoundByLaterMembers();
    void takesOnlyWhatBothHave();

    void comparesValues();
    void comparesNameAndKind();
    void comparesSixDigits();
    void comparesOnlyStructsWithTheSameMembers();

    void ordersByDependency_data();
    void ordersByDependency();
    void takesTheFormulasOfAnother();
    void stopsAtTheFirstMisfit();
};

void TestStructSettings::beginsEmpty()
{
    const StructSettings element;
    QCOMPARE(element.getDescriptiveName(), QString());
    QCOMPARE(element.getStructType(), QString());
    QVERIFY(element.getStructSettings().isEmpty());
    QVERIFY(element.getOriginalOrderStructSettings().isEmpty());
    QVERIFY(!element.getAdvancedSettingsEdited());
    QVERIFY(!element.getStructSettingByName(QStringLiteral("type")));
}

void TestStructSettings::ownsItsSettings()
{
    Struct element = profile();
    const QPointer<StructSetting> type(member(element, "type"));
    QVERIFY(type);
    element.reset();
    QVERIFY(!type);
}

void TestStructSettings::sortsByVisualIndex_data()
{
    QTest::addColumn<QStringList>("indices"); // of members a, b, c...
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const char *indices, const char *expected) {
        QTest::newRow(name) << words(indices) << words(expected);
    };
    row("in order", "0 1 2", "a b c");
    row("turned", "2 1 0", "c b a");
    row("hidden", "-1 0 -2 1", "b d");
    row("all hidden", "-1 -1 -2", "");
    row("last possible index", "2 0 1", "b c a");
    row("index as large as the struct", "3 0 1", "b c");
    row("fraction", "0.5 0 1", "b c");
    row("whole number with a point", "1.0 0", "b a");
    row("same index twice", "1 0 1", "b a");
    row("gap", "0 3 4 -1 -1", "a b c");
}

void TestStructSettings::sortsByVisualIndex()
{
    QFETCH(QStringList, indices);
    QStringList lines;
    for (int i = 0; i < indices.size(); ++i) {
        const QByteArray name(1, char('a' + i));
        lines.append(number(name, "0", "9", "0", qPrintable(indices.at(i))));
    }
    const Struct element = parse(lines);
    QTEST(namesOf(element->getStructSettings()), "expected");
    const Struct copy(element->deepCopy());
    QTEST(namesOf(copy->getStructSettings()), "expected");
    QCOMPARE(copy->getOriginalOrderStructSettings().size(), indices.size());
}

void TestStructSettings::readsTheIndexFromItsText()
{
    // A sum is no plain number: it reads as 0, where the tree would say 1.
    const Struct element =
        parse({number("a", "0", "9", "0", "0+1"), number("b", "0", "9", "0", "1"),
               QStringLiteral("char c; // unknown")});
    element->buildFormulaTrees();
    QCOMPARE(namesOf(StructSettings::sortByVisualIndex(element->getOriginalOrderStructSettings())),
             words("a b"));
}

void TestStructSettings::findsSettings()
{
    const Struct element = parse(
        {QStringLiteral("long Wh; // num, auto, 0, 9, *1, 0, \"Watt Hours\", \"Wh\", \"w\", 0, 0, "
                        "basic"),
         QStringLiteral(
             "long average_Wh; // num, auto, 0, 9, *1, 0, \"Watt Hours\", \"Wh/Charge\", "
             "\"calculated\", 0, 1, basic"),
         number("hidden", "0", "1", "0", "-1"), number("hidden", "0", "2", "0", "-2")});
    const QList<StructSetting *> members = element->getOriginalOrderStructSettings();
    QCOMPARE(element->getStructSettingByName(QStringLiteral("average_Wh")), members.at(1));
    QCOMPARE(element->getStructSettingByName(QStringLiteral("hidden")), members.at(2));
    QVERIFY(!element->getStructSettingByName(QStringLiteral("wh")));
    QCOMPARE(element->getStructSettingByDescriptiveName(QStringLiteral("Watt Hours")),
             members.at(0));
    QVERIFY(!element->getStructSettingByDescriptiveName(QStringLiteral("Wh")));
}

void TestStructSettings::tellsOfTheOverrideStateEveryTime()
{
    StructSettings element;
    QSignalSpy spy(&element, &StructSettings::advancedEditedChanged);
    QList<bool> statesAtSignal;
    connect(&element, &StructSettings::advancedEditedChanged, this,
            [&] { statesAtSignal.append(element.getAdvancedSettingsEdited()); });
    element.setAdvancedSettingsEdited(true);
    element.setAdvancedSettingsEdited(true);
    element.setAdvancedSettingsEdited(false);
    QCOMPARE(spy.count(), 3);
    QCOMPARE(spy.at(1).at(0).toBool(), true);
    QCOMPARE(spy.at(2).at(0).toBool(), false);
    QCOMPARE(statesAtSignal, (QList<bool>{true, true, false}));
}

void TestStructSettings::appliesDefaults()
{
    const Struct element = profile();
    QCOMPARE(member(element, "type")->getValue(), QStringLiteral("8"));
    QCOMPARE(member(element, "active")->getValue(), QStringLiteral("true"));
    QCOMPARE(member(element, "title")->getValue(), QStringLiteral("Lithium"));
    QCOMPARE(member(element, "bulk_I")->getValue(), QStringLiteral("4"));
    QCOMPARE(member(element, "full_V")->getValue(), QStringLiteral("42"));
    // Both name members that are declared after them.
    QCOMPARE(member(element, "min_start_V")->getValue(), QStringLiteral("21"));
    QCOMPARE(member(element, "start_I")->getValue(), QStringLiteral("0.2"));
}

void TestStructSettings::appliesDefaultsInDeclarationOrder()
{
    const Struct element =
        parse({number("b", "0", "a", "5", "0"), number("a", "0", "9", "7", "1")});
    element->buildFormulaTrees();
    QCOMPARE(member(element, "a")->getNumber(), 7.0);
    // The default of b came while its limit was still 0; it takes it at the next build.
    QCOMPARE(member(element, "b")->getNumber(), 0.0);
    element->buildFormulaTrees();
    QCOMPARE(member(element, "b")->getNumber(), 5.0);
}

void TestStructSettings::joinsMembersOnceHoweverOftenBuilt_data()
{
    QTest::addColumn<int>("builds");
    QTest::newRow("once") << 1;
    QTest::newRow("twice") << 2;
    QTest::newRow("at every import of a day") << 20;
}

void TestStructSettings::joinsMembersOnceHoweverOftenBuilt()
{
    QFETCH(int, builds);
    // The mean names its member twice, and so hears of it twice.
    const Struct element =
        parse({number("a", "0", "9", "7", "0"), number("b", "0", "(a + a) / 2", "5", "1")});
    for (int i = 0; i < builds; ++i)
        element->buildFormulaTrees();
    const StructSetting *b = member(element, "b");
    QSignalSpy spy(b->upperBound, &Formula::memberSettingChanged);
    member(element, "a")->setValue(4.0);
    QCOMPARE(spy.count(), 2);
    QCOMPARE(b->getNumber(), 4.0);
    for (const Formula *formula :
         {b->lowerBound, b->upperBound, b->scale, b->decimals, b->defaultFormula})
        QCOMPARE(listenersOf(formula), formula == b->upperBound ? 2 : 1); // one is the spy
}

void TestStructSettings::rebuildPartsFromMembersNoLongerNamed()
{
    const Struct element = parse({number("a", "0", "9", "7", "0"), number("c", "0", "9", "8", "1"),
                                  number("b", "0", "a", "5", "2")});
    element->buildFormulaTrees();
    Formula *limit = member(element, "b")->upperBound;
    QVERIFY(limit->setFormula(QStringLiteral("c"), element->getOriginalOrderStructSettings()));
    QSignalSpy spy(limit, &Formula::memberSettingChanged);
    member(element, "a")->setValue(6.0);
    QCOMPARE(spy.count(), 1); // a new text alone joins and parts nothing

    element->buildFormulaTrees();
    spy.clear();
    member(element, "a")->setValue(6.0);
    QCOMPARE(spy.count(), 0);
    member(element, "c")->setValue(4.0);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(member(element, "b")->getNumber(), 4.0);
}

void TestStructSettings::copiesWithoutValues()
{
    const Struct element = profile();
    element->setAdvancedSettingsEdited(true);
    member(element, "bulk_I")->setValue(6.0);
    const Struct copy(element->deepCopy());
    QCOMPARE(copy->getDescriptiveName(), QStringLiteral("Lithium"));
    QCOMPARE(copy->getStructType(), QStringLiteral("chemistry"));
    QVERIFY(copy->getAdvancedSettingsEdited());
    QCOMPARE(namesOf(copy->getOriginalOrderStructSettings()),
             words("type active title min_start_V start_I bulk_I full_V"));
    QCOMPARE(namesOf(copy->getStructSettings()), words("title full_V bulk_I min_start_V start_I"));
    QCOMPARE(copy->getStructSettings().at(2), member(copy, "bulk_I"));
    QVERIFY(member(copy, "bulk_I") != member(element, "bulk_I"));
    QVERIFY(!member(copy, "bulk_I")->upperBound->getRootTree());
    QCOMPARE(member(copy, "bulk_I")->getNumber(), 0.0);
    QVERIFY(member(copy, "title")->getValue().isNull());
}

void TestStructSettings::copyTakesDefaultsOnceBuilt()
{
    const Struct element = profile();
    const Struct fresh(element->deepCopy());
    fresh->buildFormulaTrees();
    QVERIFY(element->compare(fresh.get()));
    member(element, "bulk_I")->setValue(6.0);
    QVERIFY(!element->compare(fresh.get()));
}

void TestStructSettings::copyFollowsItsOwnMembers()
{
    const Struct element = profile();
    member(element, "start_I")->enableAdvancedMode(true);
    member(element, "start_I")->setValue(3.0);
    const Struct copy(element->deepCopyWithValues());
    member(copy, "bulk_I")->setValue(2.0);
    QCOMPARE(member(copy, "start_I")->getNumber(), 2.0);
    QCOMPARE(member(element, "start_I")->getNumber(), 3.0);
    member(element, "bulk_I")->setValue(1.0);
    QCOMPARE(member(element, "start_I")->getNumber(), 1.0);
    QCOMPARE(member(copy, "start_I")->getNumber(), 2.0);
}

void TestStructSettings::copiesWithValues()
{
    const Struct element = profile();
    member(element, "active")->setValue(false);
    member(element, "title")->setValue(QStringLiteral("Bike"));
    member(element, "bulk_I")->setValue(5.5);
    member(element, "start_I")->enableAdvancedMode(true);
    member(element, "start_I")->setValue(1.7);
    const Struct copy(element->deepCopyWithValues());
    QVERIFY(element->compare(copy.get()));
    QCOMPARE(member(copy, "active")->getValue(), QStringLiteral("false"));
    QCOMPARE(member(copy, "title")->getValue(), QStringLiteral("Bike"));
    QCOMPARE(member(copy, "bulk_I")->getNumber(), 5.5);
    QCOMPARE(member(copy, "start_I")->getNumber(), 1.7);
    QVERIFY(!copy->getAdvancedSettingsEdited());
    for (const StructSetting *setting : copy->getOriginalOrderStructSettings())
        QVERIFY(setting->advancedEnabled);
    QVERIFY(!member(element, "full_V")->advancedEnabled);
}

void TestStructSettings::copiesValuesBoundByLaterMembers()
{
    const Struct element = profile();
    member(element, "full_V")->setValue(60.0);
    member(element, "min_start_V")->enableAdvancedMode(true);
    member(element, "min_start_V")->setValue(50.0); // above 0.9 times the default full voltage
    member(element, "bulk_I")->setValue(8.0);
    member(element, "start_I")->enableAdvancedMode(true);
    member(element, "start_I")->setValue(7.0);
    const Struct copy(element->deepCopyWithValues());
    QCOMPARE(member(copy, "min_start_V")->getNumber(), 50.0);
    QCOMPARE(member(copy, "start_I")->getNumber(), 7.0);
    QVERIFY(element->compare(copy.get()));
}

void TestStructSettings::copiesValuesThatTheirLimitsForbid()
{
    const Struct element = profile();
    member(element, "full_V")->setValue(60.0);
    member(element, "full_V")->setUpperBound(QStringLiteral("34"));
    const Struct copy(element->deepCopyWithValues());
    QCOMPARE(member(copy, "full_V")->getNumber(), 34.0);
}

void TestStructSettings::takesValuesBoundByLaterMembers()
{
    const QStringList lines{number("a", "b*2", "9", "3", "0"), number("b", "c*2", "9", "2", "1"),
                            number("c", "0", "9", "1", "2"), number("free", "0", "9", "0", "3")};
    const Struct source = parse(lines);
    source->buildFormulaTrees();
    const Struct element = parse(lines);
    element->buildFormulaTrees();
    for (StructSetting *setting : element->getOriginalOrderStructSettings())
        setting->advancedEnabled = true;
    member(source, "a")->advancedEnabled = true;
    member(source, "b")->advancedEnabled = true;
    member(source, "c")->advancedEnabled = true;
    member(source, "c")->setValue(0.0);
    member(source, "b")->setValue(0.0);
    member(source, "a")->setValue(0.0);
    member(element, "c")->setValue(2.0);
    QCOMPARE(member(element, "a")->getNumber(), 8.0);

    QVERIFY(element->takeValuesOf(source.get()));
    QVERIFY(element->compare(source.get()));
    for (const StructSetting *setting : element->getOriginalOrderStructSettings())
        QVERIFY(setting->advancedEnabled);

    member(source, "free")->advancedEnabled = true;
    member(source, "free")->setValue(8.0);
    member(element, "free")->setUpperBound(QStringLiteral("5"));
    QVERIFY(!element->takeValuesOf(source.get()));
    QCOMPARE(member(element, "free")->getNumber(), 5.0);
}

void TestStructSettings::takesOnlyWhatBothHave()
{
    const Struct longer = parse({number("a", "0", "9", "1", "0"), number("b", "0", "9", "1", "1"),
                                 number("c", "0", "9", "1", "2")});
    const Struct shorter =
        parse({number("a", "0", "9", "2", "0"), number("x", "0", "9", "2", "1")});
    longer->buildFormulaTrees();
    shorter->buildFormulaTrees();
    QVERIFY(longer->takeValuesOf(shorter.get()));
    QCOMPARE(member(longer, "a")->getNumber(), 2.0);
    QCOMPARE(member(longer, "b")->getNumber(), 1.0);
    QCOMPARE(member(longer, "c")->getNumber(), 1.0);
    QVERIFY(!member(longer, "b")->advancedEnabled);
    member(longer, "a")->setValue(7.0);
    QVERIFY(shorter->takeValuesOf(longer.get()));
    QCOMPARE(member(shorter, "a")->getNumber(), 7.0);
    QCOMPARE(member(shorter, "x")->getNumber(), 2.0);
}

void TestStructSettings::comparesValues()
{
    const Struct element = profile();
    for (const StructSetting *setting : element->getOriginalOrderStructSettings()) {
        const Struct copy(element->deepCopyWithValues());
        QVERIFY(element->compare(copy.get()));
        StructSetting *changed = copy->getStructSettingByName(setting->name);
        if (changed->settingKind == SettingKind::Bool)
            changed->setValue(!changed->getBool());
        else if (changed->settingKind == SettingKind::String)
            changed->setValue(QStringLiteral("other"));
        else if (changed->name != QLatin1String("type"))
            changed->setValue(changed->getNumber() + 0.1);
        else
            continue;
        QVERIFY2(!element->compare(copy.get()), qPrintable(setting->name));
    }
}

void TestStructSettings::comparesNameAndKind()
{
    const Struct element = profile();
    const Struct copy(element->deepCopyWithValues());
    copy->setDescriptiveName(QStringLiteral("Lead"));
    QVERIFY(!element->compare(copy.get()));
    copy->setDescriptiveName(QStringLiteral("Lithium"));
    copy->setStructType(QStringLiteral("barcode"));
    QVERIFY(!element->compare(copy.get()));
    copy->setStructType(QStringLiteral("chemistry"));
    QVERIFY(element->compare(copy.get()));
}

void TestStructSettings::comparesSixDigits()
{
    const Struct one = parse({number("a", "0", "10000000", "0", "0")});
    one->buildFormulaTrees();
    const Struct other(one->deepCopyWithValues());
    member(one, "a")->setValue(123456.7);
    member(other, "a")->setValue(123456.8);
    QVERIFY(one->compare(other.get()));
    member(other, "a")->setValue(123458.0);
    QVERIFY(!one->compare(other.get()));
}

void TestStructSettings::comparesOnlyStructsWithTheSameMembers()
{
    const Struct element = parse({number("a", "0", "9", "0", "0")});
    const Struct other = parse({number("b", "0", "9", "0", "0")});
    QVERIFY(runInChild([&] { element->compare(other.get()); }).aborted);
}

void TestStructSettings::ordersByDependency_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("free members keep their order")
        << QStringList{number("b", "0", "9", "0", "0"), number("a", "0", "9", "0", "1")}
        << words("b a");
    QTest::newRow("dependee before")
        << QStringList{number("a", "0", "9", "0", "0"), number("b", "0", "a", "0", "1"),
                       number("c", "0", "9", "0", "2")}
        << words("a b c");
    QTest::newRow("dependee behind")
        << QStringList{number("b", "0", "a", "0", "0"), number("a", "0", "9", "0", "1"),
                       number("c", "0", "9", "0", "2")}
        << words("a c b");
    QTest::newRow("deferred for a deferred one")
        << QStringList{number("c", "0", "b", "0", "0"), number("b", "0", "a", "0", "1"),
                       number("d", "0", "b+a", "0", "2"), number("a", "0", "9", "0", "3")}
        << words("a c b d");
    QTest::newRow("one of two dependees behind")
        << QStringList{number("a", "0", "9", "0", "0"), number("c", "a", "b", "0", "1"),
                       number("b", "0", "9", "0", "2")}
        << words("a b c");
    QTest::newRow("itself") << QStringList{number("a", "0", "a", "0", "0"),
                                           number("b", "0", "9", "0", "1")}
                            << words("b a");
    QTest::newRow("flags and texts need nothing")
        << QStringList{number("b", "0", "a", "0", "0"),
                       QStringLiteral("char f; // bool, 1, \"f\", \"f\", 1, 1, basic"),
                       QStringLiteral("char t[4]; // string, auto, \"t\", \"t\", \"\", 2, basic"),
                       number("a", "0", "9", "0", "3")}
        << words("f t a b");
}

void TestStructSettings::ordersByDependency()
{
    QFETCH(QStringList, lines);
    const Struct element = parse(lines);
    for (StructSetting *setting : element->getOriginalOrderStructSettings())
        setting->buildFormulaTrees(element->getOriginalOrderStructSettings());
    QTEST(namesOf(element->getDependancyOrderStructSettings()), "expected");
}

void TestStructSettings::takesTheFormulasOfAnother()
{
    const Struct element = profile();
    const Struct wide = profile();
    member(wide, "full_V")->setUpperBound(QStringLiteral("103"));
    member(element, "full_V")->setValue(60.0);
    const Struct copy(element->deepCopyWithValues());
    QVERIFY(copy->setFormulaTrees(wide.get()));
    QVERIFY(copy->compare(element.get()));
    QVERIFY(member(copy, "full_V")->setValue(100.0));
    // The new trees name the copy's own members.
    QCOMPARE(member(copy, "min_start_V")->upperBound->toDouble(), 90.0);
    member(copy, "full_V")->setValue(20.0);
    QCOMPARE(member(copy, "min_start_V")->getNumber(), 18.0);
}

void TestStructSettings::stopsAtTheFirstMisfit()
{
    const Struct element = profile();
    member(element, "bulk_I")->setValue(7.0);
    member(element, "full_V")->setValue(60.0);
    const Struct narrow = profile();
    member(narrow, "bulk_I")->setUpperBound(QStringLiteral("5"));
    member(narrow, "full_V")->setUpperBound(QStringLiteral("34"));
    const Struct copy(element->deepCopyWithValues());
    QVERIFY(!copy->setFormulaTrees(narrow.get()));
    QCOMPARE(member(copy, "bulk_I")->getNumber(), 5.0);
    QCOMPARE(member(copy, "full_V")->getNumber(), 60.0);
    QCOMPARE(member(copy, "full_V")->upperBound->toString(), QStringLiteral("63"));

    // What others depend on comes first: the bulk current has its new limit when the start current,
    // which is declared before it, does not fit.
    const Struct other = profile();
    member(other, "bulk_I")->setUpperBound(QStringLiteral("15"));
    member(other, "start_I")->setUpperBound(QStringLiteral("1"));
    member(element, "start_I")->enableAdvancedMode(true);
    member(element, "start_I")->setValue(3.0);
    const Struct second(element->deepCopyWithValues());
    QVERIFY(!second->setFormulaTrees(other.get()));
    QCOMPARE(member(second, "start_I")->getNumber(), 1.0);
    QCOMPARE(member(second, "bulk_I")->upperBound->toString(), QStringLiteral("15"));
}

QTEST_GUILESS_MAIN(TestStructSettings)
#include "tst_structsettings.moc"
