#include "app/applicationglobalmap.h"

#include <QTest>

class ApplicationGlobalMapTest : public QObject
{
    Q_OBJECT

private slots:
    void unknownKeys();
    void textReplacesText();
    void numbers_data();
    void numbers();
    void wholeNumbers_data();
    void wholeNumbers();
    void accessorsShareTheText();
};

void ApplicationGlobalMapTest::unknownKeys()
{
    const QString key = QStringLiteral("never written");
    QVERIFY(ApplicationGlobalMap::getString(key).isEmpty());
    QCOMPARE(ApplicationGlobalMap::getDouble(key), 0.0);
    QCOMPARE(ApplicationGlobalMap::getInt64(key), 0LL);
    QCOMPARE(ApplicationGlobalMap::getDouble(QStringLiteral("also never written")), 0.0);
    QCOMPARE(ApplicationGlobalMap::getInt64(QStringLiteral("nor this")), 0LL);
}

void ApplicationGlobalMapTest::textReplacesText()
{
    const QString key = QStringLiteral("bundle_version");
    ApplicationGlobalMap::putString(key, QStringLiteral("1.039"));
    QCOMPARE(ApplicationGlobalMap::getString(key), QStringLiteral("1.039"));
    ApplicationGlobalMap::putString(key, QStringLiteral(" 1.1 "));
    QCOMPARE(ApplicationGlobalMap::getString(key), QStringLiteral(" 1.1 "));
    QVERIFY(ApplicationGlobalMap::getString(QStringLiteral("Bundle_version")).isEmpty());
}

void ApplicationGlobalMapTest::numbers_data()
{
    QTest::addColumn<double>("given");
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("read");
    QTest::newRow("six digits") << 1.2345678 << QStringLiteral("1.23457") << 1.23457;
    QTest::newRow("short") << 0.5 << QStringLiteral("0.5") << 0.5;
    QTest::newRow("large") << 1234567.0 << QStringLiteral("1.23457e+06") << 1234570.0;
    QTest::newRow("negative") << -0.087 << QStringLiteral("-0.087") << -0.087;
}

void ApplicationGlobalMapTest::numbers()
{
    QFETCH(double, given);
    const QString key = QStringLiteral("number");
    ApplicationGlobalMap::putDouble(key, given);
    QTEST(ApplicationGlobalMap::getString(key), "text");
    QTEST(ApplicationGlobalMap::getDouble(key), "read");
}

void ApplicationGlobalMapTest::wholeNumbers_data()
{
    QTest::addColumn<qlonglong>("given");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0LL << QStringLiteral("0");
    QTest::newRow("negative") << -42LL << QStringLiteral("-42");
    QTest::newRow("largest") << 9223372036854775807LL << QStringLiteral("9223372036854775807");
    QTest::newRow("smallest") << -9223372036854775807LL - 1
                              << QStringLiteral("-9223372036854775808");
}

void ApplicationGlobalMapTest::wholeNumbers()
{
    QFETCH(qlonglong, given);
    const QString key = QStringLiteral("whole number");
    ApplicationGlobalMap::putInt64(key, given);
    QTEST(ApplicationGlobalMap::getString(key), "text");
    QCOMPARE(ApplicationGlobalMap::getInt64(key), given);
}

void ApplicationGlobalMapTest::accessorsShareTheText()
{
    const QString key = QStringLiteral("shared");
    ApplicationGlobalMap::putString(key, QStringLiteral("010"));
    QCOMPARE(ApplicationGlobalMap::getInt64(key), 10LL);
    QCOMPARE(ApplicationGlobalMap::getDouble(key), 10.0);
    ApplicationGlobalMap::putString(key, QStringLiteral("1.5"));
    QCOMPARE(ApplicationGlobalMap::getInt64(key), 0LL);
    QCOMPARE(ApplicationGlobalMap::getDouble(key), 1.5);
    ApplicationGlobalMap::putString(key, QStringLiteral("text"));
    QCOMPARE(ApplicationGlobalMap::getDouble(key), 0.0);
}

QTEST_GUILESS_MAIN(ApplicationGlobalMapTest)
#include "tst_applicationglobalmap.moc"
