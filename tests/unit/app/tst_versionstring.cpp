#include "app/versionstring.h"
#include "app/versionstringchecks.h"

#include <QProcess>
#include <QTest>

class VersionStringTest : public QObject
{
    Q_OBJECT

private slots:
    void readsText_data();
    void readsText();
    void compares_data();
    void compares();
    void ordersAnyPair();
    void copiesAreIndependent();
    void prints_data();
    void prints();
    void selfCheckPassesAndSaysSo();
};

namespace
{

/// What this program writes on standard output when it runs again with these arguments.
QByteArray outputOf(const QStringList &arguments)
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return "did not end well";
    return process.readAllStandardOutput();
}

} // namespace

void VersionStringTest::readsText_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    const auto row = [](const char *name, const char *given, const char *text, bool valid) {
        QTest::newRow(name) << QString::fromUtf8(given) << QString::fromUtf8(text) << valid;
    };
    row("three components", "1.2.3", "1.2.3", true);
    row("one component", "10", "10", true);
    row("zero", "0", "0", true);
    row("leading zeros", "007", "007", true);
    row("surrounding blanks", "  1.2 ", "1.2", true);
    row("surrounding line ends", "\t1.2\r\n", "1.2", true);
    row("beyond 32 bits", "99999999999.1", "99999999999.1", true);
    row("empty", "", "", false);
    row("blanks", "   ", "", false);
    row("dot behind", "1.", "1.", false);
    row("dot before", ".1", ".1", false);
    row("two dots", "1..2", "1..2", false);
    row("only a dot", ".", ".", false);
    row("leading v", "v1.2", "v1.2", false);
    row("letter behind", "1.2a", "1.2a", false);
    row("inner blank", "1 .2", "1 .2", false);
    row("minus", "-1", "-1", false);
    row("second line", "1.2\n3", "1.2\n3", false);
    row("comma", "1,2", "1,2", false);
}

void VersionStringTest::readsText()
{
    QFETCH(QString, given);
    QFETCH(QString, text);
    QFETCH(bool, valid);

    const VersionString version(given);
    QCOMPARE(version.toString(), text);
    QCOMPARE(version.isValid(), valid);
}

void VersionStringTest::compares_data()
{
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("right");
    QTest::addColumn<int>("expected");
    const auto row = [](const char *name, const char *left, const char *right, int expected) {
        QTest::newRow(name) << QString::fromLatin1(left) << QString::fromLatin1(right) << expected;
    };
    row("same", "1.2.3", "1.2.3", 0);
    row("same single", "10", "10", 0);
    row("last component", "1.2.0", "1.2.3", -1);
    row("shorter with equal prefix", "1.5.2", "1.5.2.5", -1);
    row("shorter with smaller component", "1.1.2", "1.5.2.5", -1);
    row("shorter with larger component", "1.6", "1.5.2.5", 1);
    row("single components", "45", "66", -1);
    row("integers, not text", "1.100", "1.39", 1);
    row("leading zero of a component", "1.039", "1.39", 0);
    row("leading zeros", "007", "7", 0);
    row("trailing zero counts", "1.2", "1.2.0", -1);
    row("first difference decides", "2.0.0", "1.9.9", 1);
    row("surrounding blanks", "  1.2 ", "1.2", 0);
    row("beyond 32 bits counts as zero", "1.99999999999", "1.0", 0);
    row("beyond 32 bits is below one", "99999999999", "1", -1);
    row("largest of 32 bits", "2147483647", "2147483646", 1);
    row("first beyond 32 bits", "2147483648", "0", 0);
    row("invalid is below zero", "v1.2", "0", -1);
    row("empty is below zero", "", "0", -1);
    row("two invalid", "v9", "", 0);
    row("limit of all bundles", "1.039", "999.999", -1);
}

void VersionStringTest::compares()
{
    QFETCH(QString, left);
    QFETCH(QString, right);
    QFETCH(int, expected);
    const VersionString a(left);
    const VersionString b(right);

    QCOMPARE(a.compare(b), expected);
    QCOMPARE(b.compare(a), -expected);
    QCOMPARE(a.equalTo(b), expected == 0);
    QCOMPARE(a.lessThan(b), expected < 0);
    QCOMPARE(a.greaterThan(b), expected > 0);
    QCOMPARE(a.lessThanEqualTo(b), expected <= 0);
    QCOMPARE(a.greaterThanEqualTo(b), expected >= 0);
    QCOMPARE(b.lessThan(a), expected > 0);
}

/// A sorted row of versions: each is below all later ones.
void VersionStringTest::ordersAnyPair()
{
    const QStringList sorted = {
        QStringLiteral("junk"),  QStringLiteral("0"),     QStringLiteral("0.0"),
        QStringLiteral("0.1"),   QStringLiteral("1"),     QStringLiteral("1.0"),
        QStringLiteral("1.0.0"), QStringLiteral("1.006"), QStringLiteral("1.39"),
        QStringLiteral("1.100"), QStringLiteral("2"),     QStringLiteral("10"),
    };
    for (int i = 0; i < sorted.size(); ++i) {
        for (int j = 0; j < sorted.size(); ++j) {
            const int expected = i < j ? -1 : i > j ? 1 : 0;
            QCOMPARE(VersionString(sorted.at(i)).compare(VersionString(sorted.at(j))), expected);
        }
    }
}

void VersionStringTest::copiesAreIndependent()
{
    VersionString a(QStringLiteral("1.2"));
    const VersionString copy = a;
    a = VersionString(QStringLiteral("v3"));
    QCOMPARE(copy.toString(), QStringLiteral("1.2"));
    QVERIFY(copy.isValid());
    QVERIFY(!a.isValid());
}

void VersionStringTest::prints_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("two components") << QStringLiteral("1.039") << QByteArray("Version: 1|39|\n");
    QTest::newRow("one component") << QStringLiteral("7") << QByteArray("Version: 7|\n");
    QTest::newRow("invalid") << QStringLiteral("v7") << QByteArray("Version: \n");
}

void VersionStringTest::prints()
{
    QFETCH(QString, version);
    QFETCH(QByteArray, line);
    QCOMPARE(outputOf({QStringLiteral("--print"), version}), line);
}

void VersionStringTest::selfCheckPassesAndSaysSo()
{
    QCOMPARE(outputOf({QStringLiteral("--self-check")}),
             QByteArray("Running VersionString tests\n"));
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.value(1) == QLatin1String("--print")) {
        VersionString(arguments.value(2)).print();
        return 0;
    }
    if (arguments.value(1) == QLatin1String("--self-check")) {
        runVersionStringChecks();
        return 0;
    }
    VersionStringTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_versionstring.moc"
