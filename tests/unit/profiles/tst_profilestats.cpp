#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "profiles/profilestats.h"

#include <QTest>

class ProfileStatsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void takesARecord();
    void recordIsPrivate();
    void unknownRecord();

private:
    HParser::Generator generator;
};

void ProfileStatsTest::initTestCase()
{
    generator.parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/master.ss"));
}

void ProfileStatsTest::takesARecord()
{
    ProfileStats stats;
    QVERIFY(stats.initializeStructSettings(QStringLiteral("Profile stats"), &generator));
    QCOMPARE(stats.structSettings->getStructType(), QStringLiteral("profile_stats"));
    QVERIFY(stats.structSettings->getStructSettingByName(QStringLiteral("profile_id")));
    // The formulas are built: 120 h in 4 charges is 30 h a charge.
    const auto member = [&](const char *name) {
        return stats.structSettings->getStructSettingByName(QLatin1String(name));
    };
    member("chargetime_s")->setValue(120.0);
    member("charge_count")->setValue(4.0);
    member("average_time")->setDefault();
    QCOMPARE(member("average_time")->getValue(), QStringLiteral("30"));
}

void ProfileStatsTest::recordIsPrivate()
{
    ProfileStats stats;
    QVERIFY(stats.initializeStructSettings(QStringLiteral("Profile stats"), &generator));
    QVERIFY(stats.structSettings != generator.getProfileStatsStruct());
    const QString member = QStringLiteral("Wh");
    stats.structSettings->getStructSettingByName(member)->setValue(7.0);
    QCOMPARE(generator.getProfileStatsStruct()->getStructSettingByName(member)->getValue(),
             QStringLiteral("0"));
}

void ProfileStatsTest::unknownRecord()
{
    ProfileStats stats;
    QVERIFY(!stats.initializeStructSettings(QStringLiteral("profile_stats"), &generator));
}

QTEST_GUILESS_MAIN(ProfileStatsTest)
#include "tst_profilestats.moc"
