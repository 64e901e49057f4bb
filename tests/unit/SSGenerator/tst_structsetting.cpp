#include "SSGenerator/formula.h"
#include "SSGenerator/structsetting.h"
#include "childprocess.h"

#include <QtTest>

#include <memory>

using namespace HParser;

namespace
{

using Setting = std::unique_ptr<StructSetting>;

Setting parse(const char *line)
{
    return std::make_unique<StructSetting>(QString::fromUtf8(line));
}

/// A number setting with trees of its own; texts as in a member line.
Setting numberWith(const char *lower, const char *upper, const char *decimals, const char *fallback,
                   const char *word = "basic")
{
    const QString line =
        QStringLiteral("long x; // num, auto, %1, %2, *1, %3, \"X\", \"\", \"x\", "
                       "%4, 0, %5")
            .arg(QLatin1String(lower), QLatin1String(upper), QLatin1String(decimals),
                 QLatin1String(fallback), QLatin1String(word));
    auto setting = std::make_unique<StructSetting>(line);
    setting->buildFormulaTrees({});
    return setting;
}

/// Joins settings that name each other, as a struct does.
void join(const QList<StructSetting *> &settings)
{
    for (StructSetting *setting : settings)
        setting->buildFormulaTrees(settings);
    for (StructSetting *setting : settings)
        setting->attachMemberSettingSignalsToContainerFormulaSlots();
    for (StructSetting *setting : settings)
        setting->attachMemberFormulaSignalsToThisSettingsSlot();
}

} // namespace

class TestStructSetting : public QObject
{
    Q_OBJECT

private slots:
    void parsesANumber();
    void parsesAFlag();
    void parsesAText();
    void parsesAList();
    void parsesListItems_data();
    void parsesListItems();
    void leavesAnUnknownKindWithoutValue();
    void beginsEmpty();

    void parsesDeclarations_data();
    void parsesDeclarations();
    void takesFlagDefaults_data();
    void takesFlagDefaults();
    void knowsBasicByTheExactWord_data();
    void knowsBasicByTheExactWord();
    void splitsTheCommentAtCommas();
    void diesOfBadLines_data();
    void diesOfBadLines();

    void readsNumbersWithSixDigits_data();
    void readsNumbersWithSixDigits();
    void keepsTheFullNumberBesideTheText();
    void rounds_data();
    void rounds();
    void clampsIntoBounds_data();
    void clampsIntoBounds();
    void reportsWhetherAValueFits();
    void followsTheDefaultWhileNotOverridden();
    void tellsOfAChangeOnce();
    void cutsTexts_data();
    void cutsTexts();
    void tellsOfTextChanges();
    void setsFlags();

    void takesDefaults();
    void roundsAndClampsTheDefault();
    void neverAppliesAListsDefault();
    void opensAndClosesAdvancedSettings();
    void ignoresAdvancedModeWhenBasic();

    void followsItsDependees();
    void followsANewDefault();
    void losesDigitsWhenADependeeChanges();
    void watchesItsFormulas_data();
    void watchesItsFormulas();
    void takesNewDecimals();
    void settlesAChain();
    void doesNotWatchTheDisplayIndex();
    void updatesItsValue();

    void copiesTheDeclarationOnly();
    void copyIsNotWatchedByTheOriginalsSettings();
    void takesTheFormulasOfAnother();
    void replacesItsUpperBound();
    void listsDependees();
};

void TestStructSetting::parsesANumber()
{
    const Setting setting =
        parse("unsigned short start_I;     // num, auto, 0.05, bulk_I, *0.001, 2, "
              "\"Start Current\", \"Amps\", \"start_current\", 0.2, 5, advanced");
    QCOMPARE(setting->name, QStringLiteral("start_I"));
    QCOMPARE(setting->cType, QStringLiteral("unsigned short"));
    QVERIFY(!setting->isArray);
    QCOMPARE(setting->arraySize, 0);
    QCOMPARE(int(setting->settingKind), 0);
    QCOMPARE(setting->bits, QStringLiteral("auto"));
    QCOMPARE(setting->lowerBound->toString(), QStringLiteral("0.05"));
    QCOMPARE(setting->upperBound->toString(), QStringLiteral("bulk_I"));
    QCOMPARE(setting->scale->toString(), QStringLiteral("0.001"));
    QCOMPARE(setting->decimals->toString(), QStringLiteral("2"));
    QCOMPARE(setting->descriptiveName, QStringLiteral("Start Current"));
    QCOMPARE(setting->unit, QStringLiteral("Amps"));
    QCOMPARE(setting->xmlName, QStringLiteral("start_current"));
    QCOMPARE(setting->defaultFormula->toString(), QStringLiteral("0.2"));
    QCOMPARE(setting->visualIndex->toString(), QStringLiteral("5"));
    QVERIFY(!setting->isBasic);
    QVERIFY(!setting->advancedEnabled);
    QVERIFY(!setting->lowerBound->getRootTree());
    QCOMPARE(setting->getValue(), QStringLiteral("0"));
}

void TestStructSetting::parsesAFlag()
{
    const Setting setting = parse(
        "unsigned char defaultprofile; // bool, 1, \"default\", \"defaultkey\", 0, -5, basic");
    QCOMPARE(setting->name, QStringLiteral("defaultprofile"));
    QCOMPARE(setting->cType, QStringLiteral("unsigned char"));
    QCOMPARE(int(setting->settingKind), 1);
    QCOMPARE(setting->bits, QStringLiteral("1"));
    QCOMPARE(setting->descriptiveName, QStringLiteral("default"));
    QCOMPARE(setting->xmlName, QStringLiteral("defaultkey"));
    QVERIFY(!setting->getDefaultBool());
    QCOMPARE(setting->visualIndex->toString(), QStringLiteral("-5"));
    QVERIFY(setting->isBasic);
    QVERIFY(!setting->lowerBound && !setting->upperBound && !setting->scale && !setting->decimals &&
            !setting->defaultFormula);
    QCOMPARE(setting->getValue(), QStringLiteral("false"));
}

void TestStructSetting::parsesAText()
{
    const Setting setting =
        parse("char title[12]; // string, auto, \"Name\", \"title\", \"Lithium\", 0, basic");
    QCOMPARE(setting->name, QStringLiteral("title"));
    QCOMPARE(setting->cType, QStringLiteral("char"));
    QVERIFY(setting->isArray);
    QCOMPARE(setting->arraySize, 12);
    QCOMPARE(int(setting->settingKind), 2);
    QCOMPARE(setting->bits, QStringLiteral("auto"));
    QCOMPARE(setting->descriptiveName, QStringLiteral("Name"));
    QCOMPARE(setting->xmlName, QStringLiteral("title"));
    QCOMPARE(setting->getDefaultText(), QStringLiteral("Lithium"));
    QCOMPARE(setting->visualIndex->toString(), QStringLiteral("0"));
    QVERIFY(setting->isBasic);
    QVERIFY(setting->getValue().isNull());
}

void TestStructSetting::parsesAList()
{
    const Setting setting = parse("char mode; // list, auto, \"Mode\", \"mode\", \"Slow\", 3, "
                                  "[\"Slow\", \"Fast one\", \"Very fast\"], basic");
    QCOMPARE(int(setting->settingKind), 3);
    QCOMPARE(setting->descriptiveName, QStringLiteral("Mode"));
    QCOMPARE(setting->xmlName, QStringLiteral("mode"));
    QCOMPARE(setting->getDefaultText(), QStringLiteral("Slow"));
    QCOMPARE(setting->visualIndex->toString(), QStringLiteral("3"));
    QCOMPARE(setting->listItems, (QStringList{QStringLiteral("Slow"), QStringLiteral("Fast one"),
                                              QStringLiteral("Very fast")}));
    QVERIFY(setting->isBasic);
}

void TestStructSetting::parsesListItems_data()
{
    QTest::addColumn<QString>("items");
    QTest::addColumn<QStringList>("expected");
    const QString a = QStringLiteral("a");
    const QString b = QStringLiteral("b");
    const QString c = QStringLiteral("c");
    QTest::newRow("plain") << QStringLiteral("\"a\", \"b\", \"c\"") << QStringList{a, b, c};
    QTest::newRow("brackets") << QStringLiteral("{ \"a\", \"b\" }") << QStringList{a, b};
    QTest::newRow("one") << QStringLiteral("(\"a\")") << QStringList{a};
    QTest::newRow("free characters between")
        << QStringLiteral("\"a\", \"b-b\", \"c\"") << QStringList{a, QStringLiteral("b-b"), c};
}

void TestStructSetting::parsesListItems()
{
    QFETCH(QString, items);
    const StructSetting setting(
        QStringLiteral("char x; // list, auto, \"X\", \"x\", \"a\", 0, %1, advanced").arg(items));
    QTEST(setting.listItems, "expected");
    QVERIFY(!setting.isBasic);
}

void TestStructSetting::leavesAnUnknownKindWithoutValue()
{
    const Setting setting = parse("char x; // number, 1, 2");
    QCOMPARE(int(setting->settingKind), -1);
    QCOMPARE(setting->name, QStringLiteral("x"));
    QCOMPARE(setting->getValue(), QStringLiteral("ERROR"));
    // Nothing to do, but nothing to fall over either.
    join({setting.get()});
    setting->setDefault();
    setting->updateValue();
    QCOMPARE(setting->getDependeeSettingsNames(), QStringList());
    QVERIFY(setting->setFormulaTrees(setting.get(), {}));
    const Setting copy(setting->deepCopy());
    QCOMPARE(copy->name, QStringLiteral("x"));
}

void TestStructSetting::beginsEmpty()
{
    const StructSetting setting;
    QVERIFY(setting.name.isEmpty());
    QCOMPARE(setting.getValue(), QStringLiteral("ERROR"));
    QVERIFY(!setting.advancedEnabled);
}

void TestStructSetting::parsesDeclarations_data()
{
    QTest::addColumn<QString>("declaration");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("cType");
    QTest::addColumn<bool>("isArray");
    QTest::addColumn<int>("arraySize");
    const auto row = [](const char *tag, const char *declaration, const char *name,
                        const char *cType, bool isArray = false, int arraySize = 0) {
        QTest::newRow(tag) << QString::fromLatin1(declaration) << QString::fromLatin1(name)
                           << QString::fromLatin1(cType) << isArray << arraySize;
    };
    row("three words", "unsigned long long ah_total", "ah_total", "unsigned long long");
    row("white space", "\t unsigned \t  int  x  ", "x", "unsigned int");
    row("upper case type", "Unsigned CHAR Wh", "Wh", "unsigned char");
    row("array", "char barcode[5]", "barcode", "char", true, 5);
    row("array without size", "char x[]", "x", "char", true, 0);
    row("array with a word for size", "char x[SIZE]", "x", "char", true, 0);
    row("array with a decimal size", "char x[010]", "x", "char", true, 10);
    row("no type", "x", "x", "");
}

void TestStructSetting::parsesDeclarations()
{
    QFETCH(QString, declaration);
    const StructSetting setting(declaration + QStringLiteral(";// bool, 1, \"X\", \"x\", 0, 0, "
                                                             "basic"));
    QTEST(setting.name, "name");
    QTEST(setting.cType, "cType");
    QTEST(setting.isArray, "isArray");
    QTEST(setting.arraySize, "arraySize");
}

void TestStructSetting::takesFlagDefaults_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("expected");
    QTest::newRow("one") << QStringLiteral("1") << true;
    QTest::newRow("one in blanks") << QStringLiteral("  1 ") << true;
    QTest::newRow("zero") << QStringLiteral("0") << false;
    QTest::newRow("word") << QStringLiteral("true") << false;
    QTest::newRow("one with a zero") << QStringLiteral("01") << false;
    QTest::newRow("blank") << QStringLiteral(" ") << false;
}

void TestStructSetting::takesFlagDefaults()
{
    QFETCH(QString, text);
    StructSetting setting(
        QStringLiteral("char x; // bool, 1, \"X\", \"x\",%1, 0, basic").arg(text));
    QTEST(setting.getDefaultBool(), "expected");
    setting.setDefault();
    QTEST(setting.getBool(), "expected");
}

void TestStructSetting::knowsBasicByTheExactWord_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<bool>("expected");
    QTest::newRow("basic") << QStringLiteral("basic") << true;
    QTest::newRow("advanced") << QStringLiteral("advanced") << false;
    QTest::newRow("capital") << QStringLiteral("Basic") << false;
    QTest::newRow("more") << QStringLiteral("basics") << false;
}

void TestStructSetting::knowsBasicByTheExactWord()
{
    QFETCH(QString, word);
    const QString number = QStringLiteral("char x; // num, auto, 0, 1, *1, 0, \"X\", \"\", \"x\", "
                                          "0, 0, %1");
    const QString flag = QStringLiteral("char x; // bool, 1, \"X\", \"x\", 0, 0, %1, more");
    const QString text = QStringLiteral("char x[3]; // string, auto, \"X\", \"x\", \"\", 0, %1");
    const QString list = QStringLiteral("char x; // list, auto, \"X\", \"x\", \"\", 0, \"i\", %1");
    for (const QString &line : {number, flag, text, list})
        QTEST(StructSetting(line.arg(word)).isBasic, "expected");
}

void TestStructSetting::splitsTheCommentAtCommas()
{
    // Slashes vanish everywhere, empty fields shift the later ones, blank ones do not.
    const Setting setting =
        parse("char x;num,,  //a uto , 0 ,1,x1,0,\"De  //scriptive\tName\",\"\", \"a b\",  2 + "
              " 3 ,4,basic, ignored");
    QCOMPARE(setting->bits, QStringLiteral("a uto"));
    QCOMPARE(setting->scale->toString(), QStringLiteral("1"));
    QCOMPARE(setting->descriptiveName, QStringLiteral("De scriptive Name"));
    QCOMPARE(setting->unit, QString());
    QCOMPARE(setting->xmlName, QStringLiteral("a b"));
    QCOMPARE(setting->defaultFormula->toString(), QStringLiteral("2 + 3"));
    QCOMPARE(setting->visualIndex->toString(), QStringLiteral("4"));
    QVERIFY(setting->isBasic);

    const Setting blank = parse("char x; // bool, , \"X\", \"x\", 1, 0, basic");
    QCOMPARE(blank->bits, QString());
    QCOMPARE(blank->descriptiveName, QStringLiteral("X"));

    const Setting degrees = parse("char x; // num, auto, 0, 1, *1, 0, \"T\", \"°C\", \"t\", 0, 0, "
                                  "basic");
    QCOMPARE(degrees->unit, QString::fromUtf8("°C"));
}

void TestStructSetting::diesOfBadLines_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("lastWords");
    const auto row = [](const char *name, const char *line, const QByteArray &lastWords) {
        QTest::newRow(name) << QString::fromUtf8(line) << lastWords;
    };
    const auto demand = [](const char *condition, const char *place) {
        return QByteArray("ASSERT: \"") + condition +
               "\" in file ../SSGenerator/structsetting.cpp, line " + place + '\n';
    };
    const QByteArray noOpeningQuote = demand("string.at(0) == '\"'", "409");
    const QByteArray noClosingQuote = demand("string.at(string.length()-1) == '\"'", "410");
    const QByteArray range = "ASSERT failure in QList<T>::at: \"index out of range\", file ";

    row("no declaration", "; // bool, 1, \"X\", \"x\", 0, 0, basic",
        demand("variableDeclarationPart.size() != 0", "30"));
    row("nothing at all", "", demand("variableDeclarationPart.size() != 0", "30"));
    row("no comment", "char x;", demand("commentDescriptorPart.size() != 0", "31"));
    row("blank declaration", "  ; // bool", range);
    row("slashes alone", "char x;//", range);
    row("number with too few fields",
        "char x; // num, auto, 0, 1, *1, 0, \"X\", \"\", \"x\", 0, basic", range);
    row("empty field shifts", "char x; // num, auto, 0, 1, *1, 0, \"X\", \"u\",, \"x\", 0, 1",
        range);
    row("flag with too few fields", "char x; // bool, 1, \"X\", \"x\", 0, 0", range);
    row("text with too few fields", "char x[2]; // string, auto, \"X\", \"x\", \"\", 0", range);
    row("list with too few fields", "char x; // list, auto, \"X\", \"x\", \"\"", range);
    row("no quotes", "char x; // bool, 1, X, \"x\", 0, 0, basic", noOpeningQuote);
    row("no closing quote", "char x; // bool, 1, \"X, \"x\", 0, 0, basic", noClosingQuote);
    row("comma inside quotes", "char x; // bool, 1, \"X, Y\", \"x\", 0, 0, basic", noClosingQuote);
    row("blank instead of quotes", "char x; // bool, 1, , \"x\", 0, 0, basic",
        "ASSERT: \"uint(i) < uint(size())\" in file ");
    row("list item without quotes",
        "char x; // list, auto, \"X\", \"x\", \"\", 0, \"a\", b, \"c\", basic", noOpeningQuote);
    row("no semicolon", "char x // bool, 1, \"X\", \"x\", 0, 0", "");
}

void TestStructSetting::diesOfBadLines()
{
    QFETCH(QString, line);
    QFETCH(QByteArray, lastWords);
    const ChildResult child = runInChild([&] { StructSetting setting(line); });
    // Without a semicolon the kind word is no longer alone, so that no kind is recognised.
    QCOMPARE(child.aborted, !lastWords.isEmpty());
    QVERIFY2(child.standardError.startsWith(lastWords), child.standardError);
}

void TestStructSetting::readsNumbersWithSixDigits_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("expected");
    QTest::newRow("whole") << 4.0 << QStringLiteral("4");
    QTest::newRow("fraction") << 0.087 << QStringLiteral("0.087");
    QTest::newRow("negative") << -2.5 << QStringLiteral("-2.5");
    QTest::newRow("six digits") << 123456.0 << QStringLiteral("123456");
    QTest::newRow("million") << 1000000.0 << QStringLiteral("1e+06");
    QTest::newRow("seven digits") << 1234567.0 << QStringLiteral("1.23457e+06");
    QTest::newRow("digits after the point") << 1234.567 << QStringLiteral("1234.57");
    QTest::newRow("small") << 0.0001 << QStringLiteral("0.0001");
}

void TestStructSetting::readsNumbersWithSixDigits()
{
    QFETCH(double, value);
    QFETCH(QString, expected);
    const Setting setting = numberWith("-1000", "2000000", "4", "0");
    const Setting coarse = numberWith("-1000", "2000000", "0", "0");
    StructSetting &chosen = value > 100000 ? *coarse : *setting;
    QVERIFY(chosen.setValue(value));
    QCOMPARE(chosen.getValue(), expected);
    QCOMPARE(chosen.getShownNumber(), expected.toDouble());
}

void TestStructSetting::keepsTheFullNumberBesideTheText()
{
    const Setting setting = numberWith("0", "2000000", "2", "0");
    setting->setValue(12345.67);
    QCOMPARE(setting->getNumber(), 12345.67);
    QCOMPARE(setting->getShownNumber(), 12345.7);
    setting->setValue(5.0);
    QCOMPARE(setting->getShownNumber(), 5.0);
}

void TestStructSetting::rounds_data()
{
    QTest::addColumn<QString>("decimals");
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("expected");
    const auto row = [](const char *name, const char *decimals, double value, double expected) {
        QTest::newRow(name) << QString::fromLatin1(decimals) << value << expected;
    };
    row("half of a tenth", "1", 5.55, 5.6);
    row("negative half goes up", "1", -2.25, -2.2);
    row("negative half of a whole", "0", -2.5, -2);
    row("half of a whole", "0", 2.5, 3);
    row("below half", "0", 2.4999, 2);
    row("three decimals", "3", 0.0874, 0.087);
    row("negative decimals", "0-1", 17, 20);
    row("hours of raw seconds", "2", 3600 * 0.0002777777, 1.00);
    row("beyond 32 bits", "0", 4294967295.0, -2147483648.0);
    row("beyond 32 bits by its decimals", "2", 30000000.0, -21474836.48);
    row("far below 32 bits", "1", -1e12, -214748364.8);
}

void TestStructSetting::rounds()
{
    QFETCH(QString, decimals);
    QFETCH(double, value);
    const Setting setting = numberWith("0", "1", qPrintable(decimals), "0");
    QTEST(setting->getRoundedValue(value), "expected");

    const Setting wide = numberWith("-10000000000000", "10000000000000", qPrintable(decimals), "0");
    QVERIFY(wide->setValue(value));
    QTEST(wide->getNumber(), "expected");
}

void TestStructSetting::clampsIntoBounds_data()
{
    QTest::addColumn<QString>("lower");
    QTest::addColumn<QString>("upper");
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("expected");
    const auto row = [](const char *name, const char *lower, const char *upper, double value,
                        double expected) {
        QTest::newRow(name) << QString::fromLatin1(lower) << QString::fromLatin1(upper) << value
                            << expected;
    };
    row("inside", "1", "8", 4.44, 4.44);
    row("lower bound", "1", "8", 1, 1);
    row("upper bound", "1", "8", 8, 8);
    row("below", "1", "8", 0.99, 1);
    row("above", "1", "8", 8.01, 8);
    row("infinity reads as the lower bound", "1", "8", qInf(), 1);
    row("largest finite number", "1", "8", std::numeric_limits<double>::max(), 8);
    row("negative infinity", "1", "8", -qInf(), 1);
    row("crossed bounds, low value", "8", "1", 0, 1);
    row("crossed bounds, high value", "8", "1", 9, 1);
    row("crossed bounds, value between", "8", "1", 4, 1);
    row("crossed bounds, infinity", "8", "1", qInf(), 1);
}

void TestStructSetting::clampsIntoBounds()
{
    QFETCH(QString, lower);
    QFETCH(QString, upper);
    QFETCH(double, value);
    const Setting setting = numberWith(qPrintable(lower), qPrintable(upper), "1", "0");
    QTEST(setting->getValueInBounds(value), "expected");
}

void TestStructSetting::reportsWhetherAValueFits()
{
    const Setting setting = numberWith("1", "8", "1", "4");
    QVERIFY(setting->setValue(8.0));
    QCOMPARE(setting->getNumber(), 8.0);
    QVERIFY(setting->setValue(4.04)); // rounding is no misfit
    QCOMPARE(setting->getNumber(), 4.0);
    QVERIFY(!setting->setValue(8.1));
    QCOMPARE(setting->getNumber(), 8.0);
    QVERIFY(setting->setValue(9.0)); // the clamped value was there already
    QVERIFY(!setting->setValue(0.0));
    QCOMPARE(setting->getNumber(), 1.0);
    QVERIFY(!setting->setValue(qQNaN()));

    // The bound has two decimals, the setting one: 40.8 is what a user gets at the bound, and comes
    // back from the charger as 40.8.
    const Setting fine = numberWith("1", "40.77", "1", "4");
    QVERIFY(!fine->setValue(50.0));
    QCOMPARE(fine->getValue(), QStringLiteral("40.8"));
    QVERIFY(fine->setValue(4.0));
    QVERIFY(fine->setValue(40.8));
    QVERIFY(fine->setValue(4.0));
    QVERIFY(!fine->setValue(40.9));
}

void TestStructSetting::followsTheDefaultWhileNotOverridden()
{
    const Setting setting = numberWith("1", "8", "1", "4", "advanced");
    QVERIFY(setting->setValue(7.0));
    QCOMPARE(setting->getNumber(), 4.0);
    QVERIFY(setting->setValue(700.0));
    QCOMPARE(setting->getNumber(), 4.0);

    setting->advancedEnabled = true;
    QVERIFY(setting->setValue(7.0));
    QCOMPARE(setting->getNumber(), 7.0);
    QVERIFY(!setting->setValue(9.0));
    QCOMPARE(setting->getNumber(), 8.0);

    // A default out of bounds is clamped without a report.
    const Setting outside = numberWith("1", "8", "1", "40", "advanced");
    QVERIFY(outside->setValue(2.0));
    QCOMPARE(outside->getNumber(), 8.0);
}

void TestStructSetting::tellsOfAChangeOnce()
{
    const Setting setting = numberWith("1", "8", "1", "4");
    QSignalSpy spy(setting.get(), &StructSetting::valueChanged);
    setting->setValue(5.0);
    QCOMPARE(spy.count(), 1);
    setting->setValue(5.04);
    QCOMPARE(spy.count(), 1);
    setting->setValue(9.0);
    QCOMPARE(spy.count(), 2);
    setting->setValue(10.0);
    QCOMPARE(spy.count(), 2);
}

void TestStructSetting::cutsTexts_data()
{
    QTest::addColumn<QString>("array");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");
    const QString long20 = QStringLiteral("abcdefghijklmnopqrst");
    QTest::newRow("short") << QStringLiteral("[12]") << QStringLiteral("Bike")
                           << QStringLiteral("Bike");
    QTest::newRow("exact") << QStringLiteral("[12]") << QStringLiteral("abcdefghijk")
                           << QStringLiteral("abcdefghijk");
    QTest::newRow("long") << QStringLiteral("[12]") << long20 << QStringLiteral("abcdefghijk");
    QTest::newRow("empty") << QStringLiteral("[12]") << QStringLiteral("") << QStringLiteral("");
    QTest::newRow("null") << QStringLiteral("[12]") << QString() << QStringLiteral("");
    QTest::newRow("room for the zero only")
        << QStringLiteral("[1]") << long20 << QStringLiteral("");
    QTest::newRow("no array") << QString() << long20 << long20;
}

void TestStructSetting::cutsTexts()
{
    QFETCH(QString, array);
    QFETCH(QString, value);
    StructSetting setting(
        QStringLiteral("char x%1; // string, auto, \"X\", \"x\", \"\", 0, basic").arg(array));
    setting.setValue(value);
    QTEST(setting.getValue(), "expected");
    QVERIFY(!setting.getValue().isNull());
}

void TestStructSetting::tellsOfTextChanges()
{
    StructSetting setting(
        QStringLiteral("char x[4]; // string, auto, \"X\", \"x\", \"\", 0, basic"));
    QSignalSpy spy(&setting, &StructSetting::valueChanged);
    setting.setValue(QStringLiteral("")); // the first text differs from none
    QCOMPARE(spy.count(), 1);
    setting.setValue(QString());
    QCOMPARE(spy.count(), 1);
    setting.setValue(QStringLiteral("abcd"));
    QCOMPARE(spy.count(), 2);
    setting.setValue(QStringLiteral("abc"));
    QCOMPARE(spy.count(), 2);
    setting.setValue(QStringLiteral("abcd")); // compared before it is cut
    QCOMPARE(spy.count(), 3);
    QCOMPARE(setting.getValue(), QStringLiteral("abc"));
}

void TestStructSetting::setsFlags()
{
    const Setting setting = parse("char x; // bool, 1, \"X\", \"x\", 0, 0, advanced");
    QSignalSpy spy(setting.get(), &StructSetting::valueChanged);
    setting->setValue(false);
    QCOMPARE(spy.count(), 0);
    setting->setValue(true);
    QCOMPARE(spy.count(), 1);
    QVERIFY(setting->getBool());
    QCOMPARE(setting->getValue(), QStringLiteral("true"));
    setting->setValue(true);
    QCOMPARE(spy.count(), 1);
    setting->setBoolSilently(false);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(setting->getValue(), QStringLiteral("false"));
}

void TestStructSetting::takesDefaults()
{
    const Setting flag = parse("char x; // bool, 1, \"X\", \"x\", 1, 0, basic");
    QSignalSpy flagSpy(flag.get(), &StructSetting::valueChanged);
    flag->setDefault();
    flag->setDefault();
    QVERIFY(flag->getBool());
    QCOMPARE(flagSpy.count(), 1);

    const Setting barcode =
        parse("char barcode[5]; // string, auto, \"barcode\", \"not displayed\", \"00000\", -2, "
              "basic");
    barcode->setDefault();
    QCOMPARE(barcode->getValue(), QStringLiteral("0000"));
    barcode->setValue(QStringLiteral("1234"));
    barcode->setDefault();
    QCOMPARE(barcode->getValue(), QStringLiteral("0000"));

    const Setting empty = parse("char x[5]; // string, auto, \"X\", \"x\", \"\", 0, basic");
    QSignalSpy emptySpy(empty.get(), &StructSetting::valueChanged);
    empty->setDefault();
    empty->setDefault();
    QCOMPARE(emptySpy.count(), 1);
    QVERIFY(!empty->getValue().isNull());

    const Setting number = numberWith("1", "8", "1", "4.0");
    QSignalSpy numberSpy(number.get(), &StructSetting::valueChanged);
    number->setDefault();
    number->setDefault();
    QCOMPARE(number->getNumber(), 4.0);
    QCOMPARE(numberSpy.count(), 1);
}

void TestStructSetting::roundsAndClampsTheDefault()
{
    const Setting rounded = numberWith("1", "8", "1", "4.17");
    rounded->setDefault();
    QCOMPARE(rounded->getNumber(), 4.2);

    const Setting clamped = numberWith("1", "8", "1", "43.2");
    clamped->setDefault();
    QCOMPARE(clamped->getNumber(), 8.0);

    // A value that is the default already is not looked at again.
    rounded->setUpperBound(QStringLiteral("3"));
    rounded->setDefault();
    QCOMPARE(rounded->getNumber(), 4.2);

    // Rounded before it is clamped: infinity has become a negative number by then.
    const Setting infinite = numberWith("1", "8", "1", "1/0");
    infinite->setDefault();
    QCOMPARE(infinite->getNumber(), 1.0);

    const Setting undefined = numberWith("0", "8", "1", "0/0");
    undefined->setDefault();
    QCOMPARE(undefined->getNumber(), 0.0);
}

void TestStructSetting::neverAppliesAListsDefault()
{
    const Setting list = parse("char x; // list, auto, \"X\", \"x\", \"Slow\", 0, \"Slow\", basic");
    list->setDefault();
    QVERIFY(list->getValue().isNull());
    list->setValue(QStringLiteral("Any length of text"));
    QCOMPARE(list->getValue(), QStringLiteral("Any length of text"));
    list->setDefault();
    QCOMPARE(list->getValue(), QStringLiteral("Any length of text"));
}

void TestStructSetting::opensAndClosesAdvancedSettings()
{
    const Setting setting = numberWith("1", "8", "1", "4", "advanced");
    setting->setDefault();
    QSignalSpy view(setting.get(), &StructSetting::enableView);
    setting->enableAdvancedMode(true);
    QCOMPARE(view.takeFirst().at(0).toBool(), true);
    QVERIFY(setting->advancedEnabled);
    setting->setValue(6.0);
    QCOMPARE(setting->getNumber(), 6.0);

    // Closed already when it takes its default.
    bool openAtChange = true;
    connect(setting.get(), &StructSetting::valueChanged, this,
            [&] { openAtChange = setting->advancedEnabled; });
    double seenAtSignal = 0;
    connect(setting.get(), &StructSetting::enableView, this,
            [&] { seenAtSignal = setting->getNumber(); });
    setting->enableAdvancedMode(false);
    QCOMPARE(view.takeFirst().at(0).toBool(), false);
    QVERIFY(!setting->advancedEnabled);
    QVERIFY(!openAtChange);
    QCOMPARE(setting->getNumber(), 4.0);
    QCOMPARE(seenAtSignal, 4.0); // the default stands before the widgets hear of it

    setting->enableAdvancedMode(false);
    QCOMPARE(view.count(), 1);
}

void TestStructSetting::ignoresAdvancedModeWhenBasic()
{
    const Setting setting = numberWith("1", "8", "1", "4");
    setting->setValue(6.0);
    QSignalSpy view(setting.get(), &StructSetting::enableView);
    setting->enableAdvancedMode(true);
    setting->enableAdvancedMode(false);
    QCOMPARE(view.count(), 0);
    QVERIFY(!setting->advancedEnabled);
    QCOMPARE(setting->getNumber(), 6.0);
}

void TestStructSetting::followsItsDependees()
{
    const Setting bulk = parse("short bulk_I; // num, auto, 0.2, 8.0, *0.001, 1, \"Bulk\", \"A\", "
                               "\"bulk\", 4.0, 0, basic");
    const Setting start = parse("short start_I; // num, auto, 0.05, bulk_I, *0.001, 2, \"Start\", "
                                "\"A\", \"start\", 0.2, 1, basic");
    join({bulk.get(), start.get()});
    bulk->setDefault();
    start->setValue(3.5);

    QSignalSpy spy(start.get(), &StructSetting::valueChanged);
    bulk->setValue(5.0);
    QCOMPARE(start->getNumber(), 3.5);
    QCOMPARE(spy.count(), 0);
    bulk->setValue(2.5);
    QCOMPARE(start->getNumber(), 2.5);
    QCOMPARE(spy.count(), 1);
    bulk->setValue(8.0); // what was cut does not come back
    QCOMPARE(start->getNumber(), 2.5);
}

void TestStructSetting::followsANewDefault()
{
    const Setting full = parse("short full_V; // num, auto, 12, 63, *0.01, 1, \"Full\", \"V\", "
                               "\"full\", 42, 0, basic");
    const Setting low = parse("short low_V; // num, auto, 5, full_V, *0.01, 1, \"Low\", \"V\", "
                              "\"low\", full_V / 2, 1, advanced");
    join({full.get(), low.get()});
    full->setDefault();
    QCOMPARE(low->getNumber(), 21.0);
    full->setValue(50.0);
    QCOMPARE(low->getNumber(), 25.0);

    low->enableAdvancedMode(true);
    low->setValue(40.0);
    full->setValue(52.0);
    QCOMPARE(low->getNumber(), 40.0);
    full->setValue(30.0);
    QCOMPARE(low->getNumber(), 30.0);
    low->enableAdvancedMode(false);
    QCOMPARE(low->getNumber(), 15.0);
}

void TestStructSetting::losesDigitsWhenADependeeChanges()
{
    const Setting limit = parse("long limit; // num, auto, 0, 100000000, *1, 0, \"L\", \"\", "
                                "\"l\", 1, 0, basic");
    const Setting total = parse("long total; // num, auto, 0, limit, *1, 0, \"T\", \"\", \"t\", 0, "
                                "1, basic");
    join({limit.get(), total.get()});
    limit->setValue(50000000.0);
    total->setValue(1234567.0);
    QCOMPARE(total->getNumber(), 1234567.0);
    limit->setValue(60000000.0);
    QCOMPARE(total->getNumber(), 1234570.0);
}

void TestStructSetting::watchesItsFormulas_data()
{
    QTest::addColumn<QString>("fields"); // lower and upper bound, scale and decimals; the default
    QTest::addColumn<QString>("fallback");
    QTest::newRow("lower bound") << QStringLiteral("a, 9, *1, 0") << QStringLiteral("9");
    QTest::newRow("upper bound") << QStringLiteral("0, a, *1, 0") << QStringLiteral("9");
    QTest::newRow("scale") << QStringLiteral("0, 9, *a, 0") << QStringLiteral("9");
    QTest::newRow("decimals") << QStringLiteral("0, 9, *1, a") << QStringLiteral("9");
    QTest::newRow("default") << QStringLiteral("0, 9, *1, 0") << QStringLiteral("a");
}

void TestStructSetting::watchesItsFormulas()
{
    QFETCH(QString, fields);
    QFETCH(QString, fallback);
    StructSetting named(
        QStringLiteral("int a; // num, auto, 0, 9, *1, 0, \"A\", \"\", \"a\", 1, 0, basic"));
    StructSetting setting(
        QStringLiteral("int b; // num, auto, %1, \"B\", \"\", \"b\", %2, 1, basic")
            .arg(fields, fallback));
    join({&named, &setting});
    int changes = 0;
    for (const Formula *formula : {setting.lowerBound, setting.upperBound, setting.scale,
                                   setting.decimals, setting.defaultFormula})
        connect(formula, &Formula::memberSettingChanged, this, [&changes] { ++changes; });
    named.setValue(2.0);
    QCOMPARE(changes, 1);
}

void TestStructSetting::takesNewDecimals()
{
    const Setting places =
        parse("int a; // num, auto, 0, 9, *1, 0, \"A\", \"\", \"a\", 1, 0, basic");
    const Setting setting =
        parse("int b; // num, auto, 0, 9, *1, a, \"B\", \"\", \"b\", 1, 1, basic");
    join({places.get(), setting.get()});
    places->setValue(2.0);
    setting->setValue(1.25);
    QCOMPARE(setting->getNumber(), 1.25);
    places->setValue(1.0);
    QCOMPARE(setting->getNumber(), 1.3);
}

void TestStructSetting::settlesAChain()
{
    QObject owner;
    QList<StructSetting *> chain = {new StructSetting(
        QStringLiteral("int s0; // num, auto, 0, 1000, *1, 1, \"s0\", \"\", \"s0\", 1, 0, basic"),
        &owner)};
    for (int i = 1; i < 100; ++i) {
        chain.append(new StructSetting(
            QStringLiteral("int s%1; // num, auto, 0, s%2+10, *1, 1, \"s%1\", \"\", \"s%1\", "
                           "s%2+1, 0, advanced")
                .arg(i)
                .arg(i - 1),
            &owner));
    }
    join(chain);
    QSignalSpy last(chain.last(), &StructSetting::valueChanged);
    chain.first()->setValue(5.0);
    QCOMPARE(chain.last()->getNumber(), 104.0);
    QCOMPARE(last.count(), 1);
}

void TestStructSetting::doesNotWatchTheDisplayIndex()
{
    const Setting source =
        parse("int a; // num, auto, 0, 9, *1, 0, \"A\", \"\", \"a\", 1, 0, basic");
    const Setting setting =
        parse("int b; // num, auto, 0, 9, *1, 0, \"B\", \"\", \"b\", 1, a, basic");
    join({source.get(), setting.get()});
    QSignalSpy spy(setting->visualIndex, &Formula::memberSettingChanged);
    source->setValue(5.0);
    QCOMPARE(spy.count(), 0);
    QCOMPARE(setting->visualIndex->toDouble(), 5.0);
}

void TestStructSetting::updatesItsValue()
{
    const Setting setting = numberWith("0", "100000000", "1", "4");
    setting->setValue(7.26);
    setting->setUpperBound(QStringLiteral("6"));
    QCOMPARE(setting->getNumber(), 7.3); // a new limit alone changes nothing
    setting->updateValue();
    QCOMPARE(setting->getNumber(), 6.0);

    setting->setUpperBound(QStringLiteral("100000000"));
    setting->setValue(1234567.0);
    setting->updateValue();
    QCOMPARE(setting->getNumber(), 1234570.0);

    const Setting text = parse("char x[4]; // string, auto, \"X\", \"x\", \"\", 0, basic");
    text->updateValue();
    QVERIFY(text->getValue().isNull());
}

void TestStructSetting::copiesTheDeclarationOnly()
{
    const Setting setting = parse("unsigned short x; // num, 4, 1, 8, *0.5, 2, \"The X\", \"V\", "
                                  "\"key\", 6, 3, advanced");
    setting->buildFormulaTrees({});
    setting->enableAdvancedMode(true);
    setting->setValue(7.0);
    const Setting copy(setting->deepCopy());
    QCOMPARE(copy->name, QStringLiteral("x"));
    QCOMPARE(copy->cType, QStringLiteral("unsigned short"));
    QCOMPARE(int(copy->settingKind), 0);
    QCOMPARE(copy->bits, QStringLiteral("4"));
    QCOMPARE(copy->lowerBound->toString(), QStringLiteral("1"));
    QCOMPARE(copy->upperBound->toString(), QStringLiteral("8"));
    QCOMPARE(copy->scale->toString(), QStringLiteral("0.5"));
    QCOMPARE(copy->decimals->toString(), QStringLiteral("2"));
    QCOMPARE(copy->defaultFormula->toString(), QStringLiteral("6"));
    QCOMPARE(copy->visualIndex->toString(), QStringLiteral("3"));
    QCOMPARE(copy->descriptiveName, QStringLiteral("The X"));
    QCOMPARE(copy->unit, QStringLiteral("V"));
    QCOMPARE(copy->xmlName, QStringLiteral("key"));
    QVERIFY(!copy->isBasic);
    QVERIFY(!copy->advancedEnabled);
    QCOMPARE(copy->getNumber(), 0.0);
    for (const Formula *formula : {copy->lowerBound, copy->upperBound, copy->scale, copy->decimals,
                                   copy->defaultFormula, copy->visualIndex})
        QVERIFY(!formula->getRootTree());
    QVERIFY(copy->lowerBound != setting->lowerBound);

    const Setting text =
        parse("char title[12]; // string, auto, \"Name\", \"title\", \"Lead\", 0, basic");
    text->setDefault();
    const Setting textCopy(text->deepCopy());
    QVERIFY(textCopy->getValue().isNull());
    QCOMPARE(textCopy->arraySize, 12);
    QVERIFY(textCopy->isArray && textCopy->isBasic);
    QCOMPARE(textCopy->getDefaultText(), QStringLiteral("Lead"));

    const Setting flag = parse("char x; // bool, 1, \"X\", \"x\", 1, 0, basic");
    flag->setDefault();
    const Setting flagCopy(flag->deepCopy());
    QVERIFY(!flagCopy->getBool());
    QVERIFY(flagCopy->getDefaultBool());

    const Setting list =
        parse("char x; // list, auto, \"X\", \"x\", \"b\", 0, \"a\", \"b\", basic");
    const Setting listCopy(list->deepCopy());
    QCOMPARE(listCopy->listItems, list->listItems);
    QCOMPARE(listCopy->getDefaultText(), QStringLiteral("b"));
}

void TestStructSetting::copyIsNotWatchedByTheOriginalsSettings()
{
    const Setting a = parse("int a; // num, auto, 0, 9, *1, 0, \"A\", \"\", \"a\", 9, 0, basic");
    const Setting b = parse("int b; // num, auto, 0, a, *1, 0, \"B\", \"\", \"b\", 5, 1, basic");
    join({a.get(), b.get()});
    a->setDefault();
    b->setDefault();
    const Setting aCopy(a->deepCopy());
    const Setting bCopy(b->deepCopy());
    join({aCopy.get(), bCopy.get()});
    aCopy->setDefault();
    bCopy->setDefault();

    QSignalSpy spy(bCopy->upperBound, &Formula::memberSettingChanged);
    a->setValue(2.0);
    QCOMPARE(spy.count(), 0);
    QCOMPARE(b->getNumber(), 2.0);
    QCOMPARE(bCopy->getNumber(), 5.0);
}

void TestStructSetting::takesTheFormulasOfAnother()
{
    const Setting setting = numberWith("0", "63", "1", "42");
    const Setting wide = numberWith("0", "103", "2", "50");
    const Setting narrow = numberWith("0", "34", "1", "20");
    setting->setValue(60.0);

    QVERIFY(setting->setFormulaTrees(wide.get(), {}));
    QCOMPARE(setting->getNumber(), 60.0);
    QCOMPARE(setting->upperBound->toDouble(), 103.0);
    QCOMPARE(setting->decimals->toDouble(), 2.0);
    QCOMPARE(setting->defaultFormula->toDouble(), 50.0);

    const Setting other = parse("long y; // num, auto, 61, 103, *0.5, 2, \"Y\", \"\", \"y\", 70, "
                                "0, basic");
    QVERIFY(!setting->setFormulaTrees(other.get(), {}));
    QCOMPARE(setting->getNumber(), 61.0);
    QCOMPARE(setting->scale->toString(), QStringLiteral("0.5"));
    QCOMPARE(setting->scale->toDouble(), 0.5);

    // The number itself is applied again, not its text of six digits.
    const Setting fine = numberWith("0", "99999", "4", "50");
    QVERIFY(setting->setFormulaTrees(fine.get(), {}));
    setting->setValue(1234.5678);
    QVERIFY(setting->setFormulaTrees(fine.get(), {}));
    QCOMPARE(setting->getNumber(), 1234.5678);

    QVERIFY(!setting->setFormulaTrees(narrow.get(), {}));
    QCOMPARE(setting->getNumber(), 34.0);

    const Setting advanced = numberWith("0", "63", "1", "42", "advanced");
    advanced->setDefault();
    QVERIFY(advanced->setFormulaTrees(narrow.get(), {})); // follows the new default
    QCOMPARE(advanced->getNumber(), 20.0);

    // Names are looked up anew.
    const Setting limit = numberWith("0", "9", "0", "7");
    const Setting named =
        parse("int y; // num, auto, 0, x, *1, 0, \"Y\", \"\", \"y\", 1, 0, basic");
    limit->setDefault();
    QVERIFY(!setting->setFormulaTrees(named.get(), {limit.get()}));
    QCOMPARE(setting->getNumber(), 7.0);
}

void TestStructSetting::replacesItsUpperBound()
{
    const Setting setting = numberWith("0", "8", "1", "4");
    setting->setUpperBound(QStringLiteral("15"));
    QCOMPARE(setting->upperBound->toString(), QStringLiteral("15"));
    QVERIFY(setting->setValue(15.0));

    const Setting limit = parse("int limit; // num, auto, 0, 99, *1, 0, \"L\", \"\", \"l\", 1, 0, "
                                "basic");
    limit->buildFormulaTrees({});
    limit->setValue(20.0);
    setting->setUpperBound(QStringLiteral("limit*2"), {limit.get()});
    QCOMPARE(setting->upperBound->toDouble(), 40.0);
    QVERIFY(!setting->setValue(41.0));
    QCOMPARE(setting->getNumber(), 40.0);
}

void TestStructSetting::listsDependees()
{
    QObject owner;
    QList<StructSetting *> settings;
    for (const char *name : {"lo", "hi", "def", "sc", "dec", "vis"}) {
        settings.append(new StructSetting(
            QStringLiteral(
                "int %1; // num, auto, 0, 9, *1, 0, \"The %1\", \"\", \"x\", 1, 0, basic")
                .arg(QLatin1String(name)),
            &owner));
    }
    const Setting setting = parse("int x; // num, auto, lo, hi+lo, *sc, dec, \"X\", \"\", \"x\", "
                                  "def, vis, basic");
    QCOMPARE(setting->getDependeeSettingsNames(), QStringList());
    setting->buildFormulaTrees(settings);
    QCOMPARE(setting->getDependeeSettingsNames(),
             (QStringList{QStringLiteral("The lo"), QStringLiteral("The hi"),
                          QStringLiteral("The lo"), QStringLiteral("The def"),
                          QStringLiteral("The sc"), QStringLiteral("The dec")}));

    const Setting flag = parse("char x; // bool, 1, \"X\", \"x\", 1, lo, basic");
    flag->buildFormulaTrees(settings);
    QCOMPARE(flag->getDependeeSettingsNames(), QStringList());
    QVERIFY(!flag->visualIndex->getRootTree());
}

QTEST_GUILESS_MAIN(TestStructSetting)
#include "tst_structsetting.moc"
