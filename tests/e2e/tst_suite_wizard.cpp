#include "SSGenerator/generator.h"
#include "SSGenerator/structsettings.h"
#include "suitestory.h"

#include <QTest>

/// Stories of new profiles: from the wizard into the list and onto the charger.
class SuiteWizardTest : public QObject
{
    Q_OBJECT

private slots:
    void aNewProfileReachesTheCharger_data();
    void aNewProfileReachesTheCharger();
    void oneOfEachChemistry();
    void overriddenInTheWizard();
    void anotherChemistryStartsAnew();
    void cancelMakesNoProfile();
    void theModelLimitsNewProfiles();
};

void SuiteWizardTest::aNewProfileReachesTheCharger_data()
{
    QTest::addColumn<QByteArray>("chemistry");
    QTest::addColumn<QByteArray>("voltage");
    QTest::addColumn<QString>("member");
    QTest::addColumn<QJsonObject>("expected");
    const auto profile = [](const char *element, int chemistry, const QJsonObject &values) {
        QJsonObject all{{"element", element},
                        {"profile_id", 6},
                        {"chemistry", chemistry},
                        {"active", true},
                        {"defaultprofile", false},
                        {"modifiable", true},
                        {"scheduled_for_deletion", false},
                        {"extraneous1", 0},
                        {"title", "Bicycle"},
                        {"description", "Slow"},
                        {"bulk_I", 2}};
        for (auto value = values.begin(); value != values.end(); ++value)
            all[value.key()] = value.value();
        return all;
    };
    QTest::newRow("Lithium") << QByteArray("Lithium") << QByteArray("Full Voltage") << "full_V"
                             << profile("chemistry_lithium", 0,
                                        {{"full_V", 36},
                                         {"min_start_V", 18},
                                         {"start_I", 0.2},
                                         {"bulk_start_V", 25.2},
                                         {"complete_I", 0.15}});
    QTest::newRow("Lead") << QByteArray("Lead") << QByteArray("Full Voltage") << "full_V"
                          << profile("chemistry_lead", 2,
                                     {{"full_V", 36},
                                      {"full_V_min_I", 0.15},
                                      {"full_V_max_time", 4},
                                      {"float_V", 33.8}}); // 36 * 94 / 100 is 33.84
    QTest::newRow("Nickel") << QByteArray("Nickel") << QByteArray("Nominal Voltage")
                            << "nominal_full_V"
                            << profile("chemistry_nickel", 1,
                                       {{"nominal_full_V", 36},
                                        {"start_I", 0.5},
                                        {"bulk_start_V", 28.8},
                                        {"delta_V", 0.3},
                                        {"external_thermistor", false},
                                        {"max_T", 55},
                                        {"dTdt", 1},
                                        {"max_V", 50.4},
                                        {"topup_I", 0.5},
                                        {"topup_time", 1}});
}

void SuiteWizardTest::aNewProfileReachesTheCharger()
{
    QFETCH(QByteArray, chemistry);
    QFETCH(QByteArray, voltage);
    QFETCH(QString, member);
    QFETCH(QJsonObject, expected);
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    story.press("addProfileButton");
    QVERIFY(story.dialog());
    QCOMPARE(story.dialog()->windowTitle(), QStringLiteral("Profile Wizard"));
    story.press(chemistry.constData());
    QCOMPARE(story.shown("Name"), QString(chemistry));
    QCOMPARE(story.shown("Description"), QStringLiteral("Custom"));
    story.enter("Name", "Bicycle");
    story.enter("Description", "Slow");
    story.enter(voltage.constData(), "36");
    story.type("Bulk Current", "2"); // Finish takes what is still being typed
    story.press("finishButton");
    QTRY_VERIFY(!story.dialog());

    QCOMPARE(story.list()->count(), 7);
    QCOMPARE(story.titles().last(), QStringLiteral("Bicycle"));
    QCOMPARE(story.shown("Profile name"), QStringLiteral("Bicycle")); // it is in view
    QCOMPARE(story.shown("Bulk Current"), QStringLiteral("2.0"));
    QVERIFY(story.saveData());
    QVERIFY(story.isConnected());
    QCOMPARE(story.profilesOnCharger().size(), 7);
    // Whether a new profile is active is its lamp's business.
    expected["active"] = story.profilesOnCharger().last()["active"];
    QCOMPARE(story.profilesOnCharger().last(), expected);
    QCOMPARE(story.titles().last(), QStringLiteral("Bicycle"));
}

void SuiteWizardTest::oneOfEachChemistry()
{
    SuiteStory story;
    story.plugIn({"--hardware", "72v"});
    story.open();
    QVERIFY(story.connectCharger());
    const int before = story.list()->count();
    for (const char *chemistry : {"Nickel", "Lead", "Lithium"}) {
        story.press("addProfileButton");
        story.press(chemistry);
        story.press("finishButton");
        QTRY_VERIFY(!story.dialog());
    }
    QCOMPARE(story.titles().mid(before), QStringList({"Nickel", "Lead", "Lithium"}));
    QVERIFY(story.saveData());
    const QList<QJsonObject> profiles = story.profilesOnCharger().mid(before);
    QCOMPARE(profiles.size(), 3);
    QCOMPARE(profiles.at(0)["bulk_I"].toDouble(), 5.0); // 8 by default, more than 72 V allow
    QCOMPARE(profiles.at(1)["full_V"].toDouble(), 43.2);
    QCOMPARE(profiles.at(2)["full_V"].toDouble(), 42.0);
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(profiles.at(i)["profile_id"].toInt(), before + i);
        QCOMPARE(profiles.at(i)["description"].toString(), QStringLiteral("Custom"));
    }
}

void SuiteWizardTest::overriddenInTheWizard()
{
    SuiteStory story;
    story.plugIn({"--hardware", "48v"});
    story.open();
    QVERIFY(story.connectCharger());
    story.press("addProfileButton");
    story.press("Lithium");
    QVERIFY(story.field("Full Voltage")->isEnabled());
    QVERIFY(!story.field("Start Current")->isEnabled());
    story.press("editAdvanced");
    story.enter("Start Current", "1.25");
    story.press("finishButton");
    QTRY_VERIFY(!story.dialog());
    QVERIFY(story.widget<QAbstractButton>("editAdvanced")->isChecked());
    QVERIFY(!story.field("Start Current")->isEnabled()); // it is in view, not being edited
    QCOMPARE(story.shown("Start Current"), QStringLiteral("1.25"));
    QVERIFY(story.saveData());
    QCOMPARE(story.profilesOnCharger().last()["start_I"].toDouble(), 1.25);
}

void SuiteWizardTest::anotherChemistryStartsAnew()
{
    SuiteStory story;
    story.open();
    story.press("addProfileButton");
    QVERIFY(!story.widget("backButton")->isEnabled());
    QVERIFY(!story.widget("finishButton")->isEnabled());
    story.press("Lithium");
    story.enter("Name", "Bicycle");
    story.press("backButton");
    story.press("Nickel");
    QCOMPARE(story.shown("Name"), QStringLiteral("Nickel"));
    QVERIFY(!story.field("Full Voltage"));
    story.press("finishButton");
    QTRY_VERIFY(!story.dialog());
    QCOMPARE(story.titles(), QStringList({"Nickel"}));
}

void SuiteWizardTest::cancelMakesNoProfile()
{
    SuiteStory story;
    story.open();
    story.press("addProfileButton");
    story.press("Lead");
    story.enter("Name", "Bicycle");
    story.press("cancelButton");
    QTRY_VERIFY(!story.dialog());
    QCOMPARE(story.list()->count(), 0);
    QVERIFY(!story.widget("containerScroll")->isVisible());
}

void SuiteWizardTest::theModelLimitsNewProfiles()
{
    SuiteStory story;
    story.open();
    story.choose("24V");
    story.press("addProfileButton");
    story.press("Lithium");
    QCOMPARE(story.shown("Full Voltage"), QStringLiteral("34.0"));
    story.enter("Bulk Current", "99");
    QCOMPARE(story.shown("Bulk Current"), QStringLiteral("15.0"));
    story.press("finishButton");
    QTRY_VERIFY(!story.dialog());
    QCOMPARE(story.shown("Full Voltage"), QStringLiteral("34.0"));
}

QTEST_MAIN(SuiteWizardTest)
#include "tst_suite_wizard.moc"
