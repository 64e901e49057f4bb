#include "SSGenerator/formula.h"
#include "SSGenerator/formulanode.h"
#include "SSGenerator/structsetting.h"
#include "childprocess.h"

#include <QtTest>

#include <cmath>

using namespace HParser;

namespace
{

/// A basic number without limits of its own making, named a, b, c...
StructSetting *number(const QString &name, double value, QObject *parent)
{
    const QString line =
        QStringLiteral("long %1; // num, auto, -100000000, 100000000, *1, 3, \"%2\", \"\", "
                       "\"%1\", 0, 0, basic")
            .arg(name, QStringLiteral("Name of ") + name);
    auto *setting = new StructSetting(line, parent);
    setting->buildFormulaTrees({});
    setting->setValue(value);
    return setting;
}

} // namespace

class TestFormula : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void evaluates_data();
    void evaluates();
    void followsItsSettings();
    void readsSettingsWithSixDigits();
    void readsAFlagAsZero();
    void readsATextAsItsNumber();
    void dividesByZero();
    void keepsTheText();
    void shapesTheTree();
    void numbersOfTheTree_data();
    void numbersOfTheTree();
    void cutsOnePairOfParenthesesOnly();
    void leavesAnUnknownNameUnbound();
    void cannotReadSomeTexts_data();
    void cannotReadSomeTexts();
    void keepsTheHalfThatCanBeRead();
    void replacesItsText();
    void keepsTheOldTextWhereTheNewOneFails();
    void diesOfSomeTexts_data();
    void diesOfSomeTexts();
    void capturesParentheses_data();
    void capturesParentheses();
    void findsSettingsByVariableName();
    void listsDependees();
    void tellsOfChangesOncePerMention();
    void hasNoTreeBeforeTheBuild();

private:
    QList<StructSetting *> settings;
    QObject *owner = nullptr;
};

void TestFormula::init()
{
    owner = new QObject;
    settings = {number(QStringLiteral("a"), 7, owner),
                number(QStringLiteral("b"), 2, owner),
                number(QStringLiteral("c"), 3, owner),
                number(QStringLiteral("bulk_I"), 4, owner),
                number(QStringLiteral("nominal_full_V"), 36, owner),
                number(QStringLiteral("shortpress_time_cs"), 0.02, owner),
                number(QStringLiteral("x1_y2"), 5, owner),
                number(QStringLiteral("zero"), 0, owner)};
}

void TestFormula::cleanup()
{
    delete owner;
}

void TestFormula::evaluates_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("expected");

    const auto row = [](const char *name, const char *text, double expected) {
        QTest::newRow(name) << QString::fromLatin1(text) << expected;
    };
    row("negative number", "-1000", -1000);
    row("number with plus", "+5", 5);
    row("fraction", "0.5", 0.5);
    row("leading zeros", "007", 7);
    row("largest 64-bit number", "18446744073709551615", 18446744073709551615.0);
    row("differences group to the left", "1-2-3", -4);
    row("quotients group to the left", "10/2/5", 1);
    row("quotient, then product", "8/4*2", 4);
    row("difference, then sum", "8-4+2", 6);
    row("product before sum", "2+3*4", 14);
    row("product before sum, turned", "3*4+2", 14);
    row("quotient before difference", "9-8/4", 7);
    row("two products in a sum", "2*3+4*5", 26);
    row("parentheses first", "(2+3)*4", 20);
    row("parentheses last", "4*(2+3)", 20);
    row("two parentheses", "(2+3)*(4+5)", 45);
    row("sum of parentheses keeps both", "(2+3)-(4+5)", -4);
    row("parentheses in parentheses", "2*(3+(4-1)*2)", 18);
    row("parenthesised number", "(5)", 5);
    row("no integer division", "7/2", 3.5);
    row("minus a negative number", "a--5", 12);
    row("plus a negative number", "a+-5", 2);
    row("times a negative number", "b*-3", -6);
    row("minus a number with plus", "a-+5", 2);
    row("negative number first", "-5+a", 2);
    row("negative number after a split", "a--5-b", 10);
    row("differences of settings", "a-b-c", 2);
    row("quotient and product of settings", "a/b*c", 10.5);
    row("current share", "(bulk_I*4)/5", 3.2);
    row("blanks do not matter", "(nominal_full_V * 8) / 10", 28.8);
    row("cell share", "nominal_full_V / 120", 0.3);
    row("tabs and line ends", " 1\t+\n 2 ", 3);
    row("blanks inside a number vanish", "1 0 0", 100);
    row("setting times number", "shortpress_time_cs*2", 0.04);
    row("digits and underscores in a name", "x1_y2*2", 10);
    row("outer pair around a quotient", "(a/b)", 3.5);
    // The unclosed pair reaches to the end and loses its last character with its first.
    row("unclosed pair", "(ab", 7);
}

void TestFormula::evaluates()
{
    QFETCH(QString, text);
    QFETCH(double, expected);
    Formula formula(text);
    formula.buildFormulaTree(settings);
    QVERIFY(formula.getRootTree());
    QCOMPARE(formula.toDouble(), expected);
}

void TestFormula::followsItsSettings()
{
    Formula formula(QStringLiteral("(bulk_I*4)/5"));
    formula.buildFormulaTree(settings);
    settings.at(3)->setValue(5.0);
    QCOMPARE(formula.toDouble(), 4.0);
}

void TestFormula::readsSettingsWithSixDigits()
{
    Formula formula(QStringLiteral("a"));
    formula.buildFormulaTree(settings);
    settings.at(0)->setValue(1234.567);
    QCOMPARE(formula.toDouble(), 1234.57);
    settings.at(0)->setValue(1234567.0);
    QCOMPARE(formula.toDouble(), 1234570.0);
    settings.at(0)->setValue(-1.0);
    QCOMPARE(formula.toDouble(), -1.0);
}

void TestFormula::readsAFlagAsZero()
{
    StructSetting flag(QStringLiteral("char on; // bool, 1, \"on\", \"on\", 1, 0, basic"));
    flag.setValue(true);
    Formula formula(QStringLiteral("on+1"));
    formula.buildFormulaTree({&flag});
    QCOMPARE(formula.toDouble(), 1.0);
}

void TestFormula::readsATextAsItsNumber()
{
    StructSetting text(QStringLiteral("char t[9]; // string, auto, \"t\", \"t\", \"\", 0, basic"));
    Formula formula(QStringLiteral("t+1"));
    formula.buildFormulaTree({&text});
    text.setValue(QStringLiteral("12.5"));
    QCOMPARE(formula.toDouble(), 13.5);
    text.setValue(QStringLiteral("twelve"));
    QCOMPARE(formula.toDouble(), 1.0);
}

void TestFormula::dividesByZero()
{
    Formula infinite(QStringLiteral("(a/zero)"));
    infinite.buildFormulaTree(settings);
    QVERIFY(std::isinf(infinite.toDouble()) && infinite.toDouble() > 0);

    Formula undefined(QStringLiteral("zero/zero"));
    undefined.buildFormulaTree(settings);
    QVERIFY(std::isnan(undefined.toDouble()));
}

void TestFormula::keepsTheText()
{
    Formula formula(QStringLiteral(" ( a + 1 ) "));
    formula.buildFormulaTree(settings);
    QCOMPARE(formula.toString(), QStringLiteral(" ( a + 1 ) "));
}

void TestFormula::shapesTheTree()
{
    Formula formula(QStringLiteral("a-2*c"));
    formula.buildFormulaTree(settings);
    const auto *difference = qobject_cast<FormulaNodeMathOp *>(formula.getRootTree());
    QVERIFY(difference);
    QCOMPARE(difference->getFormulaNodeType(), QStringLiteral("MathOp"));
    QCOMPARE(int(difference->getOpType()), 1);
    QCOMPARE(difference->getLeftChild()->getFormulaNodeType(), QStringLiteral("NodeVar"));
    QCOMPARE(qobject_cast<FormulaNodeVar *>(difference->getLeftChild())->getSetting(),
             settings.at(0));
    const auto *product = qobject_cast<FormulaNodeMathOp *>(difference->getRightChild());
    QVERIFY(product);
    QCOMPARE(int(product->getOpType()), 2);
    QCOMPARE(product->getLeftChild()->getFormulaNodeType(), QStringLiteral("Num"));
    QCOMPARE(product->getLeftChild()->evaluate(), 2.0);

    for (const char *text : {"-1000", "+5", "18446744073709551615"}) {
        Formula one(QString::fromLatin1(text));
        one.buildFormulaTree(settings);
        QCOMPARE(one.getRootTree()->getFormulaNodeType(), QStringLiteral("Num"));
    }
}

void TestFormula::numbersOfTheTree_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("opType");
    QTest::newRow("sum") << QStringLiteral("1+2") << 0;
    QTest::newRow("difference") << QStringLiteral("1-2") << 1;
    QTest::newRow("product") << QStringLiteral("1*2") << 2;
    QTest::newRow("quotient") << QStringLiteral("1/2") << 3;
}

void TestFormula::numbersOfTheTree()
{
    QFETCH(QString, text);
    Formula formula(text);
    formula.buildFormulaTree({});
    const auto *operation = qobject_cast<FormulaNodeMathOp *>(formula.getRootTree());
    QVERIFY(operation);
    QTEST(int(operation->getOpType()), "opType");
}

void TestFormula::cutsOnePairOfParenthesesOnly()
{
    Formula formula(QStringLiteral("((a))"));
    formula.buildFormulaTree(settings);
    const auto *operand = qobject_cast<FormulaNodeVar *>(formula.getRootTree());
    QVERIFY(operand);
    QVERIFY(!operand->getSetting());

    Formula number(QStringLiteral("((5))"));
    number.buildFormulaTree(settings);
    QCOMPARE(number.getRootTree()->getFormulaNodeType(), QStringLiteral("NodeVar"));
}

void TestFormula::leavesAnUnknownNameUnbound()
{
    Formula formula(QStringLiteral("A"));
    formula.buildFormulaTree(settings);
    const auto *operand = qobject_cast<FormulaNodeVar *>(formula.getRootTree());
    QVERIFY(operand);
    QVERIFY(!operand->getSetting());
}

void TestFormula::cannotReadSomeTexts_data()
{
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *text) {
        QTest::newRow(name) << QString::fromLatin1(text);
    };
    row("unknown character", "$");
    row("fraction without a digit before", ".5");
    row("minus before a name", "-a");
    row("minus before parentheses", "-(1 - 3)");
    row("two operators", "a*/b");
    row("unknown character as second operand", "a+$");
    row("name with a leading underscore", "_a");
    row("name with a first letter beyond ASCII", "\xE4"
                                                 "b");
    row("empty parentheses", "()");
    row("lone opening parenthesis", "(");
    row("unclosed single letter", "(a");
    row("unclosed second operand", "a*(b+c");
}

void TestFormula::cannotReadSomeTexts()
{
    QFETCH(QString, text);
    Formula formula(text);
    const ChildResult child = runInChild([&] {
        formula.buildFormulaTree(settings);
        std::puts(formula.getRootTree() ? "tree" : "no tree");
    });
    QVERIFY(!child.aborted);
    QCOMPARE(child.standardOutput, QByteArray("Failed to match!\nno tree\n"));
    QCOMPARE(child.standardError, QByteArray());
}

void TestFormula::keepsTheHalfThatCanBeRead()
{
    Formula formula(QStringLiteral("a+($)"));
    const ChildResult child = runInChild([&] {
        formula.buildFormulaTree(settings);
        const auto *sum = qobject_cast<FormulaNodeMathOp *>(formula.getRootTree());
        std::puts(sum && sum->getLeftChild() && !sum->getRightChild() ? "half" : "other");
    });
    QCOMPARE(child.standardOutput, QByteArray("Failed to match!\nhalf\n"));
}

void TestFormula::replacesItsText()
{
    Formula formula(QStringLiteral("1"));
    formula.buildFormulaTree(settings);
    QVERIFY(formula.setFormula(QStringLiteral("b * 3"), settings));
    QCOMPARE(formula.toString(), QStringLiteral("b * 3"));
    QCOMPARE(formula.toDouble(), 6.0);
}

void TestFormula::keepsTheOldTextWhereTheNewOneFails()
{
    Formula formula(QStringLiteral("b*4"));
    formula.buildFormulaTree(settings);
    QVERIFY(!formula.setFormula(QStringLiteral("$"), settings));
    QCOMPARE(formula.toString(), QStringLiteral("b*4"));
    QVERIFY(formula.getRootTree());
    QCOMPARE(formula.toDouble(), 8.0);
}

void TestFormula::diesOfSomeTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("lastWords");
    const auto row = [](const char *name, const char *text, const char *lastWords) {
        QTest::newRow(name) << QString::fromLatin1(text) << QByteArray(lastWords);
    };
    const char *empty = "ASSERT: \"uint(i) < uint(size())\" in file ";
    const char *range = "ASSERT failure in QList<T>::at: \"index out of range\", file ";
    row("empty", "", empty);
    row("white space", " \t ", empty);
    row("operator at the end", "a+", range);
    row("operator at the end of a sum", "a+b*", range);
    row("unknown operator", "a%b", range);
    row("unknown operator in a sum", "1+a%b", range);
    row("unknown operator between numbers", "5%3", range);
    row("number before parentheses", "2(3)", range);
    row("exponent", "1.5e3", range);
    row("point without digits", "5.", range);
    row("point before an operator", "5.+1", range);
    row("name before parentheses", "a(b)", range);
}

void TestFormula::diesOfSomeTexts()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, lastWords);
    const ChildResult built = runInChild([&] { Formula(text).buildFormulaTree(settings); });
    QVERIFY(built.aborted);
    QVERIFY2(built.standardError.startsWith(lastWords), built.standardError);

    const ChildResult replaced =
        runInChild([&] { Formula(QStringLiteral("1")).setFormula(text, settings); });
    QVERIFY(replaced.aborted);
    QVERIFY2(replaced.standardError.startsWith(lastWords), replaced.standardError);
}

void TestFormula::capturesParentheses_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("start");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *text, int start, const char *expected) {
        QTest::newRow(name) << QString::fromLatin1(text) << start << QString::fromLatin1(expected);
    };
    row("whole text", "(a+b)", 0, "(a+b)");
    row("first of two", "(a)*(b)", 0, "(a)");
    row("second of two", "(a)*(b)", 4, "(b)");
    row("nested", "2*((a)+(b))*3", 2, "((a)+(b))");
    row("inner pair", "2*((a)+(b))*3", 3, "(a)");
    row("no partner", "1+(a+(b)", 2, "(a+(b)");
    row("last character", "1+(", 2, "(");
    row("empty pair", "()", 0, "()");
}

void TestFormula::capturesParentheses()
{
    QFETCH(QString, text);
    QFETCH(int, start);
    QTEST(Formula::captureStuffInParentheses(text, start), "expected");
}

void TestFormula::findsSettingsByVariableName()
{
    QCOMPARE(Formula::getSettingByVariableName(settings, QStringLiteral("b")), settings.at(1));
    QVERIFY(!Formula::getSettingByVariableName(settings, QStringLiteral("B")));
    QVERIFY(!Formula::getSettingByVariableName(settings, QString()));

    const QList<StructSetting *> twice = {settings.at(2), number(QStringLiteral("c"), 9, owner)};
    QCOMPARE(Formula::getSettingByVariableName(twice, QStringLiteral("c")), settings.at(2));
}

void TestFormula::listsDependees()
{
    Formula formula(QStringLiteral("c*(a+1)-a/c"));
    QCOMPARE(formula.getDependeeSettingsNames(formula.getRootTree()), QStringList());
    formula.buildFormulaTree(settings);
    QCOMPARE(formula.getDependeeSettingsNames(formula.getRootTree()),
             (QStringList{QStringLiteral("Name of c"), QStringLiteral("Name of a"),
                          QStringLiteral("Name of a"), QStringLiteral("Name of c")}));
}

void TestFormula::tellsOfChangesOncePerMention()
{
    Formula formula(QStringLiteral("a*a+b"));
    formula.buildFormulaTree(settings);
    QSignalSpy spy(&formula, &Formula::memberSettingChanged);
    settings.at(0)->setValue(8.0);
    QCOMPARE(spy.count(), 0);

    formula.attachSettingValueChangedSignals();
    settings.at(0)->setValue(9.0);
    QCOMPARE(spy.count(), 2);
    settings.at(1)->setValue(9.0);
    QCOMPARE(spy.count(), 3);
    settings.at(2)->setValue(9.0);
    QCOMPARE(spy.count(), 3);
}

void TestFormula::hasNoTreeBeforeTheBuild()
{
    Formula formula(QStringLiteral("1"));
    QVERIFY(!formula.getRootTree());
    QVERIFY(runInChild([&] { formula.toDouble(); }).aborted);
}

QTEST_GUILESS_MAIN(TestFormula)
#include "tst_formula.moc"
