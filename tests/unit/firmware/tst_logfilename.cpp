#include "firmware/logfilename.h"

#include <QLocale>
#include <QtTest>

class LogFileNameTest : public QObject
{
    Q_OBJECT

private slots:
    void names_data();
    void names();
    void namesInEnglish();
};

void LogFileNameTest::names_data()
{
    QTest::addColumn<QDate>("date");
    QTest::addColumn<QTime>("time");
    QTest::addColumn<QString>("name");

    QTest::newRow("morning") << QDate(2026, 11, 15) << QTime(8, 5, 9)
                             << "outputlog-Sun-November-15-2026--8-5-9-am.txt";
    QTest::newRow("evening") << QDate(2026, 5, 1) << QTime(23, 59, 58)
                             << "outputlog-Fri-May-1-2026--11-59-58-pm.txt";
    QTest::newRow("noon") << QDate(2024, 2, 29) << QTime(12, 0, 0)
                          << "outputlog-Thu-February-29-2024--12-0-0-pm.txt";
    QTest::newRow("midnight") << QDate(2025, 12, 31) << QTime(0, 0, 1)
                              << "outputlog-Wed-December-31-2025--12-0-1-am.txt";
}

void LogFileNameTest::names()
{
    QFETCH(QDate, date);
    QFETCH(QTime, time);
    QTEST(FirmwareTool::logFileName(QDateTime(date, time)), "name");
}

void LogFileNameTest::namesInEnglish()
{
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const QString name = FirmwareTool::logFileName(QDateTime(QDate(2026, 3, 3), QTime(15, 4, 5)));
    QLocale::setDefault(QLocale::c());
    QCOMPARE(name, "outputlog-Tue-March-3-2026--3-4-5-pm.txt");
}

QTEST_GUILESS_MAIN(LogFileNameTest)
#include "tst_logfilename.moc"
