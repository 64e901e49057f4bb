#include "device/importfailure.h"

#include <QtTest>

using UploadDownload::ImportFailure;

class ImportFailureTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void tellsOfEachCode_data();
    void tellsOfEachCode();
    void linkFollowsTheSite();
};

void ImportFailureTest::init()
{
    qunsetenv("VELANTOR_SITE");
}

void ImportFailureTest::tellsOfEachCode_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("title");
    QTest::addColumn<int>("icon");
    QTest::addColumn<QString>("text");
    const QString title = QStringLiteral("Import from HEX status");
    const QString any =
        QStringLiteral("An error occurred while importing profiles from HEX. Please try again.");
    QTest::newRow("file not read")
        << 0 << title << int(QMessageBox::Warning)
        << QStringLiteral("An error occurred while reading profiles from HEX. Please try again.");
    QTest::newRow("checksum")
        << 1 << title << int(QMessageBox::Warning)
        << QStringLiteral("An error occurred while importing profiles from HEX: Invalid Checksum. "
                          "Please check firmware version and try again.");
    QTest::newRow("unknown type")
        << 2 << title << int(QMessageBox::Warning)
        << QStringLiteral("An error occurred while importing profiles from HEX: Invalid Type "
                          "Field. Please try again.");
    QTest::newRow("no page counter")
        << 3 << title << int(QMessageBox::Critical)
        << QStringLiteral("No page count when reading from Velantor! Please reset your Velantor "
                          "so it can recover.");
    QTest::newRow("outdated element")
        << 4 << QStringLiteral("Outdated Profiles") << int(QMessageBox::Warning)
        << QStringLiteral(
               "An error occurred while importing profiles.<br/><br/>This can happen when trying "
               "to connect to a Velantor with outdated firmware or outdated profiles. Please click "
               "<a href = \"https://www.velantor.example/velantor-suite-help#outdated_profiles\">"
               "here</a> for more information on how to upgrade to the latest firmware correctly.");
    QTest::newRow("beyond the known codes") << 5 << title << int(QMessageBox::Critical) << any;
    QTest::newRow("negative") << -1 << title << int(QMessageBox::Critical) << any;
}

void ImportFailureTest::tellsOfEachCode()
{
    QFETCH(int, code);
    QFETCH(QString, title);
    QFETCH(int, icon);
    QFETCH(QString, text);
    // The site of the build may be another one than the usual.
    qputenv("VELANTOR_SITE", "https://www.velantor.example");
    const ImportFailure shown = ImportFailure::of(code);
    QCOMPARE(shown.title, title);
    QCOMPARE(int(shown.icon), icon);
    QCOMPARE(shown.text, text);
}

void ImportFailureTest::linkFollowsTheSite()
{
    qputenv("VELANTOR_SITE", "http://mirror.example");
    QVERIFY(ImportFailure::of(4).text.contains(QStringLiteral(
        "<a href = \"http://mirror.example/velantor-suite-help#outdated_profiles\">here</a>")));
}

QTEST_GUILESS_MAIN(ImportFailureTest)
#include "tst_importfailure.moc"
