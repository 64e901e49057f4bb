#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "profiles/profilesettings.h"
#include "profiles/profilestats.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryFile>
#include <QTest>

using HParser::StructSetting;
using HParser::StructSettings;

class ProfileSettingsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void startsEmpty();
    void takesARecord_data();
    void takesARecord();
    void modifiableWhateverTheSchemaSays();
    void recordIsPrivate();
    void unknownRecord();
    void modifiableTellsNobody();
    void newProfile();
    void idWithoutStats();
    void idWithStats();
    void idIsKeptInBounds_data();
    void idIsKeptInBounds();
    void scheduledForDeletion();
    void prints();

private:
    HParser::Generator generator;
};

namespace
{

StructSetting *member(const StructSettings *record, const char *name)
{
    return record->getStructSettingByName(QLatin1String(name));
}

QString value(const StructSettings *record, const char *name)
{
    return member(record, name)->getValue();
}

} // namespace

void ProfileSettingsTest::initTestCase()
{
    generator.parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/master.ss"));
}

void ProfileSettingsTest::startsEmpty()
{
    const ProfileSettings profile;
    QVERIFY(profile.chemistry.isEmpty());
    QVERIFY(!profile.getStats());
}

void ProfileSettingsTest::takesARecord_data()
{
    QTest::addColumn<QString>("chemistry");
    QTest::newRow("lithium") << QStringLiteral("Lithium");
    QTest::newRow("nickel") << QStringLiteral("Nickel");
    QTest::newRow("lead") << QStringLiteral("Lead");
}

void ProfileSettingsTest::takesARecord()
{
    QFETCH(QString, chemistry);
    ProfileSettings profile;
    QVERIFY(profile.initializeStructSettings(chemistry, &generator));
    QCOMPARE(profile.chemistry, chemistry);
    QCOMPARE(profile.structSettings->getDescriptiveName(), chemistry);
    QCOMPARE(value(profile.structSettings, "title"), chemistry);
    QCOMPARE(value(profile.structSettings, "description"), QStringLiteral("Custom"));
    QVERIFY(profile.getModifiable());
    QCOMPARE(value(profile.structSettings, "modifiable"), QStringLiteral("true"));
}

void ProfileSettingsTest::modifiableWhateverTheSchemaSays()
{
    QFile delivered(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/master.ss"));
    QVERIFY(delivered.open(QIODevice::ReadOnly));
    QTemporaryFile locked;
    QVERIFY(locked.open());
    locked.write(delivered.readAll().replace("\"modifiable\", 1,", "\"modifiable\", 0,"));
    locked.close();
    HParser::Generator other;
    other.parseSSFile(locked.fileName());
    QCOMPARE(value(other.getChemistrySettingsByName(QStringLiteral("Lead")), "modifiable"),
             QStringLiteral("false"));

    ProfileSettings profile;
    QVERIFY(profile.initializeStructSettings(QStringLiteral("Lead"), &other));
    QVERIFY(profile.getModifiable());
}

void ProfileSettingsTest::recordIsPrivate()
{
    ProfileSettings one;
    ProfileSettings other;
    QVERIFY(one.initializeStructSettings(QStringLiteral("Lithium"), &generator));
    QVERIFY(other.initializeStructSettings(QStringLiteral("Lithium"), &generator));
    member(one.structSettings, "bulk_I")->setValue(0.2);
    member(one.structSettings, "title")->setValue(QStringLiteral("Mine"));

    QCOMPARE(value(other.structSettings, "bulk_I"), QStringLiteral("4"));
    QCOMPARE(value(other.structSettings, "title"), QStringLiteral("Lithium"));
    const StructSettings *schema = generator.getChemistrySettingsByName(QStringLiteral("Lithium"));
    QCOMPARE(value(schema, "bulk_I"), QStringLiteral("4"));
    // The copy's own formulas are alive: the completion current is at most 4/5 of the bulk current.
    member(one.structSettings, "complete_I")->advancedEnabled = true;
    QVERIFY(!member(one.structSettings, "complete_I")->setValue(1.0));
    QCOMPARE(value(one.structSettings, "complete_I"), QStringLiteral("0.16"));
}

void ProfileSettingsTest::unknownRecord()
{
    ProfileSettings profile;
    QVERIFY(!profile.initializeStructSettings(QStringLiteral("NoSuchRecord"), &generator));
    QCOMPARE(profile.chemistry, QStringLiteral("NoSuchRecord"));
    QVERIFY(!profile.initializeStructSettings(QStringLiteral("lithium"), &generator));
    QVERIFY(!profile.initializeStructSettings(QString(), &generator));
    QVERIFY(profile.initializeStructSettings(QStringLiteral("Lithium"), &generator));
    QCOMPARE(profile.chemistry, QStringLiteral("Lithium"));
}

void ProfileSettingsTest::modifiableTellsNobody()
{
    ProfileSettings profile;
    QVERIFY(profile.initializeStructSettings(QStringLiteral("Lead"), &generator));
    QSignalSpy changes(member(profile.structSettings, "modifiable"), &StructSetting::valueChanged);

    profile.setModifiable(false);
    QVERIFY(!profile.getModifiable());
    QCOMPARE(value(profile.structSettings, "modifiable"), QStringLiteral("false"));
    profile.setModifiable(true);
    QVERIFY(profile.getModifiable());
    QCOMPARE(changes.count(), 0);
}

void ProfileSettingsTest::newProfile()
{
    ProfileSettings profile;
    QVERIFY(profile.initializeStructSettings(QStringLiteral("Nickel"), &generator));
    profile.setScheduledForDeletion(true);
    profile.initializeNewProfile();
    QCOMPARE(value(profile.structSettings, "profile_id"), QStringLiteral("255"));
    QCOMPARE(value(profile.structSettings, "scheduled_for_deletion"), QStringLiteral("false"));
}

void ProfileSettingsTest::idWithoutStats()
{
    ProfileSettings profile;
    QVERIFY(profile.initializeStructSettings(QStringLiteral("Lithium"), &generator));
    QSignalSpy changes(member(profile.structSettings, "profile_id"), &StructSetting::valueChanged);
    profile.setProfileID(3);
    QCOMPARE(value(profile.structSettings, "profile_id"), QStringLiteral("3"));
    QCOMPARE(changes.count(), 1);
}

void ProfileSettingsTest::idWithStats()
{
    ProfileSettings profile;
    ProfileStats stats;
    QVERIFY(profile.initializeStructSettings(QStringLiteral("Lithium"), &generator));
    QVERIFY(stats.initializeStructSettings(QStringLiteral("Profile stats"), &generator));

    profile.setProfileID(2);
    profile.setProfileStats(&stats);
    QCOMPARE(profile.getStats(), &stats);
    QCOMPARE(value(stats.structSettings, "profile_id"), QStringLiteral("0"));

    profile.setProfileID(3);
    QCOMPARE(value(profile.structSettings, "profile_id"), QStringLiteral("3"));
    QCOMPARE(value(stats.structSettings, "profile_id"), QStringLiteral("3"));

    profile.setProfileStats(nullptr);
    profile.setProfileID(4);
    QCOMPARE(value(stats.structSettings, "profile_id"), QStringLiteral("3"));
}

void ProfileSettingsTest::idIsKeptInBounds_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("expected");
    QTest::newRow("first") << 0 << QStringLiteral("0");
    QTest::newRow("last") << 254 << QStringLiteral("254");
    QTest::newRow("no place") << 255 << QStringLiteral("255");
    QTest::newRow("above") << 300 << QStringLiteral("255");
    QTest::newRow("below") << -1 << QStringLiteral("0");
}

void ProfileSettingsTest::idIsKeptInBounds()
{
    QFETCH(int, id);
    ProfileSettings profile;
    QVERIFY(profile.initializeStructSettings(QStringLiteral("Lead"), &generator));
    profile.setProfileID(id);
    QTEST(value(profile.structSettings, "profile_id"), "expected");
}

void ProfileSettingsTest::scheduledForDeletion()
{
    ProfileSettings profile;
    QVERIFY(profile.initializeStructSettings(QStringLiteral("Lead"), &generator));
    QSignalSpy changes(member(profile.structSettings, "scheduled_for_deletion"),
                       &StructSetting::valueChanged);
    profile.setScheduledForDeletion(true);
    profile.setScheduledForDeletion(true);
    QCOMPARE(value(profile.structSettings, "scheduled_for_deletion"), QStringLiteral("true"));
    QCOMPARE(changes.count(), 1);
}

void ProfileSettingsTest::prints()
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--print")});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.readAllStandardOutput(), QByteArray("Title : Pack\nSubtitle : Winter\n"));
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (application.arguments().value(1) == QLatin1String("--print")) {
        HParser::Generator generator;
        generator.parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/master.ss"));
        ProfileSettings profile;
        profile.initializeStructSettings(QStringLiteral("Lithium"), &generator);
        member(profile.structSettings, "title")->setValue(QStringLiteral("Pack"));
        member(profile.structSettings, "description")->setValue(QStringLiteral("Winter"));
        profile.print();
        return 0;
    }
    ProfileSettingsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_profilesettings.moc"
