#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "profiles/profilesettings.h"
#include "profiles/profileshare.h"
#include "profiles/profilestats.h"

#include <QPointer>
#include <QTest>

#include <memory>

using HParser::StructSetting;
using HParser::StructSettings;

class ProfileShareTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void lastShareEndsAll();
    void copiedShareCounts();
    void anotherProfileLetsGo();
    void staysForOneTakenInTime();
    void endsOnceHoweverOftenItWasTaken();
    void endsBehindWhoeverUsesIt();
    void staysUntilTheFirstShare();
    void othersMayGoBeforeTheirShares();

private:
    /// What is over when the event loop runs.
    static void settle() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    HParser::Generator generator;
    ProfileSettings *profile = nullptr;
    QPointer<StructSettings> record;
    QPointer<StructSettings> stats;
};

void ProfileShareTest::initTestCase()
{
    generator.parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/master.ss"));
}

void ProfileShareTest::init()
{
    profile = new ProfileSettings;
    QVERIFY(profile->initializeStructSettings("Lithium", &generator));
    auto *counted = new ProfileStats;
    QVERIFY(counted->initializeStructSettings("Profile stats", &generator));
    profile->setProfileStats(counted);
    record = profile->structSettings;
    stats = counted->structSettings;
}

void ProfileShareTest::lastShareEndsAll()
{
    ProfileShare::handOver(profile);
    auto first = std::make_unique<ProfileShare>(profile);
    auto second = std::make_unique<ProfileShare>(profile);
    first.reset();
    settle();
    QVERIFY(record);
    QVERIFY(stats);
    second.reset();
    QVERIFY(record);
    QVERIFY(stats);
    settle();
    QVERIFY(!record);
    QVERIFY(!stats);
}

void ProfileShareTest::copiedShareCounts()
{
    ProfileShare::handOver(profile);
    auto first = std::make_unique<ProfileShare>(profile);
    auto copy = std::make_unique<ProfileShare>(*first);
    first.reset();
    settle();
    QVERIFY(record);
    copy.reset();
    settle();
    QVERIFY(!record);
}

void ProfileShareTest::anotherProfileLetsGo()
{
    ProfileShare::handOver(profile);
    ProfileShare share(profile);
    share = ProfileShare(profile);
    settle();
    QVERIFY(record);
    share = ProfileShare();
    settle();
    QVERIFY(!record);
}

void ProfileShareTest::staysForOneTakenInTime()
{
    ProfileShare::handOver(profile);
    auto share = std::make_unique<ProfileShare>(profile);
    share.reset();
    share = std::make_unique<ProfileShare>(profile);
    settle();
    QVERIFY(record);
    QCOMPARE(profile->chemistry, QStringLiteral("Lithium"));
    share.reset();
    settle();
    QVERIFY(!record);
}

void ProfileShareTest::endsOnceHoweverOftenItWasTaken()
{
    ProfileShare::handOver(profile);
    for (int i = 0; i < 3; ++i)
        const ProfileShare share(profile);
    QVERIFY(record);
    settle();
    QVERIFY(!record);
}

void ProfileShareTest::endsBehindWhoeverUsesIt()
{
    ProfileShare::handOver(profile);
    auto share = std::make_unique<ProfileShare>(profile);
    StructSetting *title = record->getStructSettingByName(QStringLiteral("title"));
    connect(title, &StructSetting::valueChanged, this, [&share] { share.reset(); });
    title->setValue(QStringLiteral("Truck"));
    QVERIFY(!share);
    QCOMPARE(title->getValue(), QStringLiteral("Truck"));
    settle();
    QVERIFY(!record);
}

void ProfileShareTest::staysUntilTheFirstShare()
{
    ProfileShare::handOver(profile);
    settle();
    QVERIFY(record);
    destroy(profile);
    QVERIFY(!record);
    QVERIFY(!stats);
}

void ProfileShareTest::othersMayGoBeforeTheirShares()
{
    {
        const ProfileShare share(profile);
        settle();
        QVERIFY(record);
        destroy(profile);
    }
    settle();
    QVERIFY(!record);
}

QTEST_GUILESS_MAIN(ProfileShareTest)
#include "tst_profileshare.moc"
