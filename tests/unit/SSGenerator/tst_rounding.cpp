#include "SSGenerator/rounding.h"

#include <QtTest>

#include <limits>

namespace
{

constexpr qint32 LOWEST = std::numeric_limits<qint32>::min();
constexpr qint32 HIGHEST = std::numeric_limits<qint32>::max();

} // namespace

class TestRounding : public QObject
{
    Q_OBJECT

private slots:
    void truncates_data();
    void truncates();
    void rounds_data();
    void rounds();
};

void TestRounding::truncates_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<qint32>("expected");
    QTest::newRow("zero") << 0.0 << 0;
    QTest::newRow("towards zero") << 2.9 << 2;
    QTest::newRow("negative towards zero") << -2.9 << -2;
    QTest::newRow("largest") << 2147483647.0 << HIGHEST;
    QTest::newRow("largest with a fraction") << 2147483647.9 << HIGHEST;
    QTest::newRow("one too large") << 2147483648.0 << LOWEST;
    QTest::newRow("smallest") << -2147483648.0 << LOWEST;
    QTest::newRow("smallest with a fraction") << -2147483648.9 << LOWEST;
    QTest::newRow("above the smallest") << -2147483647.9 << -HIGHEST;
    QTest::newRow("one too small") << -2147483649.0 << LOWEST;
    QTest::newRow("huge") << 1e300 << LOWEST;
    QTest::newRow("hugely negative") << -1e300 << LOWEST;
    QTest::newRow("infinity") << qInf() << LOWEST;
    QTest::newRow("negative infinity") << -qInf() << LOWEST;
    QTest::newRow("not a number") << qQNaN() << LOWEST;
}

void TestRounding::truncates()
{
    QFETCH(double, value);
    QTEST(qint32(HParser::truncatedToInt32(value)), "expected");
}

void TestRounding::rounds_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<qint32>("expected");
    QTest::newRow("zero") << 0.0 << 0;
    QTest::newRow("negative zero") << -0.0 << 0;
    QTest::newRow("below half") << 2.4 << 2;
    QTest::newRow("half") << 2.5 << 3;
    QTest::newRow("one half") << 0.5 << 1;
    QTest::newRow("negative one half") << -0.5 << 0;
    QTest::newRow("negative half") << -2.5 << -2;
    QTest::newRow("negative below half") << -2.4 << -2;
    QTest::newRow("negative above half") << -2.6 << -3;
    QTest::newRow("negative whole") << -3.0 << -3;
    QTest::newRow("largest") << 2147483647.0 << HIGHEST;
    QTest::newRow("largest, rounded down") << 2147483647.25 << HIGHEST;
    QTest::newRow("largest, rounded up") << 2147483647.5 << LOWEST;
    QTest::newRow("too large") << 4294967295.0 << LOWEST;
    QTest::newRow("smallest") << -2147483648.0 << LOWEST;
    QTest::newRow("above the smallest") << -2147483647.0 << -HIGHEST;
    QTest::newRow("half above the smallest") << -2147483647.5 << -HIGHEST;
    QTest::newRow("too small") << -3000000000.0 << LOWEST;
    QTest::newRow("huge") << 1e300 << LOWEST;
    QTest::newRow("hugely negative") << -1e300 << LOWEST;
    QTest::newRow("infinity") << qInf() << LOWEST;
    QTest::newRow("negative infinity") << -qInf() << LOWEST;
    QTest::newRow("not a number") << qQNaN() << LOWEST;
}

void TestRounding::rounds()
{
    QFETCH(double, value);
    QTEST(qint32(HParser::roundedToInt32(value)), "expected");
}

QTEST_GUILESS_MAIN(TestRounding)
#include "tst_rounding.moc"
