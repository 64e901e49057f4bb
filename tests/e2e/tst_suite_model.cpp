#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "profiles/profilename.h"
#include "profiles/profilesettings.h"
#include "suitestory.h"

#include <QTest>

/// Stories of choosing the charger's model with profiles in the list.
class SuiteModelTest : public QObject
{
    Q_OBJECT

private slots:
    void profilesThatFitStay();
    void profilesThatDoNotFitAreKeptOnNo();
    void profilesThatDoNotFitGoOnYes();
    void theChargerDecidesWhileItIsConnected();

private:
    /// Makes a profile with the wizard.
    static void make(SuiteStory &story, const char *chemistry, const QString &name,
                     const char *voltage, const QString &volts, const QString &amperes);
    static double limit(const SuiteStory &story, int row, const char *member)
    {
        return story.row(row)
            ->getProfileSettings()
            ->structSettings->getStructSettingByName(QLatin1String(member))
            ->upperBound->toDouble();
    }
};

void SuiteModelTest::make(SuiteStory &story, const char *chemistry, const QString &name,
                          const char *voltage, const QString &volts, const QString &amperes)
{
    story.press("addProfileButton");
    story.press(chemistry);
    story.enter("Name", name);
    story.enter(voltage, volts);
    story.enter("Bulk Current", amperes);
    story.press("finishButton");
    QTRY_VERIFY(!SuiteStory::dialog());
}

void SuiteModelTest::profilesThatFitStay()
{
    SuiteStory story;
    story.open();
    make(story, "Lithium", "Li 10s", "Full Voltage", "42", "4");
    make(story, "Lead", "SLA", "Full Voltage", "43.2", "5");
    story.choose("72V");
    QVERIFY(story.boxes.seen().isEmpty());
    QCOMPARE(story.titles(), QStringList({"Li 10s", "SLA"}));
    QCOMPARE(limit(story, 0, "full_V"), 103.0);
    QCOMPARE(limit(story, 1, "bulk_I"), 5.0);
    // The one in view takes what 72 V allow.
    QCOMPARE(story.shown("Profile name"), QStringLiteral("SLA"));
    story.press("editProfileButton");
    story.enter("Full Voltage", "90");
    QCOMPARE(story.shown("Full Voltage"), QStringLiteral("90.0"));
    story.enter("Bulk Current", "6");
    QCOMPARE(story.shown("Bulk Current"), QStringLiteral("5.0"));
}

void SuiteModelTest::profilesThatDoNotFitAreKeptOnNo()
{
    SuiteStory story;
    story.open();
    make(story, "Lithium", "Li 10s", "Full Voltage", "42", "4");
    make(story, "Lithium", "Li 6s", "Full Voltage", "25", "4");
    story.select(0);
    story.boxes.push(QMessageBox::No);
    story.choose("24V");
    QCOMPARE(story.boxes.seen().size(), 1); // and no second one for the way back
    QCOMPARE(story.boxes.seen().first().text,
             QStringLiteral("The following profiles aren't compatible with the 24V Velantor's "
                            "hardware limits. \n\nLi 10s - Custom\n\nThey must be removed. Are "
                            "you sure you would like to continue?"));
    QCOMPARE(story.model()->currentText(), QStringLiteral("48V"));
    QCOMPARE(story.titles(), QStringList({"Li 10s", "Li 6s"}));
    QCOMPARE(limit(story, 0, "full_V"), 63.0);
    QCOMPARE(limit(story, 1, "bulk_I"), 8.0);
    QCOMPARE(story.shown("Profile name"), QStringLiteral("Li 10s"));
    QCOMPARE(story.shown("Full Voltage"), QStringLiteral("42.0"));
    story.press("editProfileButton");
    story.enter("Full Voltage", "60");
    QCOMPARE(story.shown("Full Voltage"), QStringLiteral("60.0"));
    // New profiles have the former limits, too.
    make(story, "Lead", "SLA", "Full Voltage", "60", "4");
    QCOMPARE(story.shown("Full Voltage"), QStringLiteral("60.0"));

    // Escape is no Yes either.
    story.boxes.push([](QMessageBox *box) { QTest::keyClick(box, Qt::Key_Escape); });
    story.choose("24V");
    QCOMPARE(story.model()->currentText(), QStringLiteral("48V"));
    QCOMPARE(story.list()->count(), 3);
}

void SuiteModelTest::profilesThatDoNotFitGoOnYes()
{
    SuiteStory story;
    story.open();
    make(story, "Lithium", "Li 10s", "Full Voltage", "42", "4");
    make(story, "Lithium", "Li 6s", "Full Voltage", "25", "4");
    make(story, "Nickel", "NiMH", "Nominal Voltage", "36", "4");
    story.select(1);
    story.boxes.push(QMessageBox::Yes);
    story.choose("24V");
    QCOMPARE(story.model()->currentText(), QStringLiteral("24V"));
    QCOMPARE(story.titles(), QStringList({"Li 6s"}));
    QCOMPARE(story.shown("Profile name"), QStringLiteral("Li 6s"));
    story.press("editProfileButton");
    story.enter("Full Voltage", "60");
    QCOMPARE(story.shown("Full Voltage"), QStringLiteral("34.0"));
    story.enter("Bulk Current", "60");
    QCOMPARE(story.shown("Bulk Current"), QStringLiteral("15.0"));

    // The one in view goes with the next model: nothing is left to show.
    story.boxes.push(QMessageBox::Yes);
    story.choose("48V");
    QCOMPARE(story.model()->currentText(), QStringLiteral("48V"));
    QCOMPARE(story.boxes.seen().size(), 2);
    QCOMPARE(story.list()->count(), 0);
    QVERIFY(!story.widget("containerScroll")->isVisible());
    QVERIFY(!story.widget("profileNameUpButton")->isEnabled());
}

void SuiteModelTest::theChargerDecidesWhileItIsConnected()
{
    SuiteStory story;
    story.plugIn({"--hardware", "72v"});
    story.open();
    QVERIFY(story.connectCharger());
    QVERIFY(story.boxes.seen().isEmpty());
    QCOMPARE(story.model()->currentText(), QStringLiteral("72V"));
    QVERIFY(!story.model()->isEnabled());
    QCOMPARE(story.titles().size(), 5);
    QCOMPARE(limit(story, 0, "full_V"), 103.0);
    QVERIFY(story.readData());
    QCOMPARE(story.model()->currentText(), QStringLiteral("72V"));
    QVERIFY(!story.model()->isEnabled());

    QVERIFY(story.disconnectCharger());
    QCOMPARE(story.model()->currentText(), QStringLiteral("72V"));
    QVERIFY(story.model()->isEnabled());
    QCOMPARE(story.generator()->hwVersion(), 72);
    QCOMPARE(story.titles().size(), 5);
    story.boxes.push(QMessageBox::No);
    story.choose("48V");
    QCOMPARE(story.boxes.seen().size(), 1);
    QCOMPARE(story.model()->currentText(), QStringLiteral("72V"));
    QCOMPARE(story.titles().size(), 5);
}

QTEST_MAIN(SuiteModelTest)
#include "tst_suite_model.moc"
