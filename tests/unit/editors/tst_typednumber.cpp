#include "editors/typednumber.h"

#include <QtTest>

#include <limits>

namespace
{
constexpr double largest = std::numeric_limits<double>::max();
}

class TypedNumberTest : public QObject
{
    Q_OBJECT

private slots:
    void reads_data();
    void reads();
};

void TypedNumberTest::reads_data()
{
    using V = QValidator;
    QTest::addColumn<QString>("text");
    QTest::addColumn<QValidator::State>("state");
    QTest::addColumn<double>("value");

    QTest::newRow("point") << "4.2" << V::Acceptable << 4.2;
    QTest::newRow("comma") << "4,2" << V::Acceptable << 4.2;
    QTest::newRow("no digit before the comma") << ",5" << V::Acceptable << 0.5;
    QTest::newRow("no digit behind the point") << "4." << V::Acceptable << 4.0;
    QTest::newRow("blanks around") << "  7 \t" << V::Acceptable << 7.0;
    QTest::newRow("line ends, as pasted") << "\n7.5\r\n" << V::Acceptable << 7.5;
    QTest::newRow("blank inside") << "1 000" << V::Acceptable << 1000.0;
    QTest::newRow("narrow blank inside") << QString("1\u202F000,5") << V::Acceptable << 1000.5;
    QTest::newRow("negative") << "-3.5" << V::Acceptable << -3.5;
    QTest::newRow("typographic minus") << QString("\u22123") << V::Acceptable << -3.0;
    QTest::newRow("plus") << "+3" << V::Acceptable << 3.0;
    QTest::newRow("exponent") << "1e1" << V::Acceptable << 10.0;
    QTest::newRow("capital exponent with sign") << "25E-1" << V::Acceptable << 2.5;
    QTest::newRow("Arabic digits") << QString("\u0664\u066B\u0662") << V::Acceptable << 4.2;
    QTest::newRow("leading zeros") << "007" << V::Acceptable << 7.0;
    QTest::newRow("larger than a double") << "1e400" << V::Acceptable << largest;
    QTest::newRow("below all doubles") << "-1e400" << V::Acceptable << -largest;
    QTest::newRow("huge exponent") << "1e99999999999999999999" << V::Acceptable << largest;
    QTest::newRow("smaller than a double") << "1e-400" << V::Acceptable << 0.0;
    QTest::newRow("many digits") << QString(400, '9') << V::Acceptable << largest;

    QTest::newRow("empty") << "" << V::Intermediate << 0.0;
    QTest::newRow("blanks alone") << "  " << V::Intermediate << 0.0;
    QTest::newRow("sign alone") << "-" << V::Intermediate << 0.0;
    QTest::newRow("comma alone") << "," << V::Intermediate << 0.0;
    QTest::newRow("exponent begun") << "2e" << V::Intermediate << 2.0;
    QTest::newRow("exponent with a sign alone") << "2e-" << V::Intermediate << 2.0;
    QTest::newRow("exponent without a number") << "e5" << V::Intermediate << 0.0;

    QTest::newRow("nan") << "nan" << V::Invalid << 0.0;
    QTest::newRow("inf") << "inf" << V::Invalid << 0.0;
    QTest::newRow("minus infinity") << "-Infinity" << V::Invalid << 0.0;
    QTest::newRow("word") << "five" << V::Invalid << 0.0;
    QTest::newRow("hexadecimal") << "0x10" << V::Invalid << 0.0;
    QTest::newRow("two points") << "1.2.3" << V::Invalid << 1.2;
    QTest::newRow("comma and point") << "1,000.5" << V::Invalid << 1.0;
    QTest::newRow("minus inside") << "1-2" << V::Invalid << 1.0;
    QTest::newRow("unit behind") << "4.2 V" << V::Invalid << 4.2;
    QTest::newRow("line end and word") << "4\nx" << V::Invalid << 4.0;
}

void TypedNumberTest::reads()
{
    QFETCH(QString, text);
    QFETCH(QValidator::State, state);
    QFETCH(double, value);
    QCOMPARE(TypedNumber::state(text), state);
    QVERIFY2(TypedNumber::value(text) == value, qPrintable(QString::number(value, 'g', 17)));
}

QTEST_GUILESS_MAIN(TypedNumberTest)
#include "tst_typednumber.moc"
