#include "profiles/profilename.h"
#include "suitestory.h"

#include <QLineEdit>
#include <QTest>
#include <QToolBar>

/// Stories of editing: what the fields show, what the rows say of it, and what the charger holds
/// after a write.
class SuiteEditingTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aBasicValueTakesTheAdvancedOnesAlong();
    void overriddenValuesStay();
    void cancelBringsEverythingBack();
    void aSavedProfileReachesTheCharger();
    void whatIsBeingTypedIsWritten_data();
    void whatIsBeingTypedIsWritten();
    void eachProfileKeepsItsEditMode();
    void viewingChangesNothing();
    void movingWhileEditing();
    void deletingWhileEditing();
    void readingAgainWhileEditing();
    void theChargerGoesWhileEditing();
    void theProgramEndsWhileEditing_data();
    void theProgramEndsWhileEditing();

private:
    /// Rows: Li Fast (default), Li Stnd (overridden), Li 85%, 52V, NiMH, 48V SLA.
    void connectAndSelect(int row);

    std::unique_ptr<SuiteStory> story;
};

void SuiteEditingTest::init()
{
    story = std::make_unique<SuiteStory>();
    story->plugIn({"--hardware", "48v"});
    story->open();
}

void SuiteEditingTest::cleanup()
{
    story.reset();
}

void SuiteEditingTest::connectAndSelect(int row)
{
    QVERIFY(story->connectCharger());
    story->select(row);
}

void SuiteEditingTest::aBasicValueTakesTheAdvancedOnesAlong()
{
    connectAndSelect(0);
    QCOMPARE(story->shown("Profile name"), QStringLiteral("36V Li(10s)"));
    QCOMPARE(story->shown("Profile description"), QStringLiteral("Fast Charge"));
    QCOMPARE(story->shown("Full Voltage"), QStringLiteral("42.0"));
    QCOMPARE(story->shown("Min Starting Voltage"), QStringLiteral("21.0"));
    QVERIFY(!story->field("Full Voltage")->isEnabled());
    QVERIFY(!story->widget("cancelChangesButton")->isEnabled());
    QVERIFY(!story->widget<QAbstractButton>("editAdvanced")->isChecked());

    story->press("editProfileButton");
    QVERIFY(story->field("Full Voltage")->isEnabled());
    QVERIFY(!story->field("Min Starting Voltage")->isEnabled());
    story->enter("Full Voltage", "36");
    QCOMPARE(story->shown("Full Voltage"), QStringLiteral("36.0"));
    QCOMPARE(story->shown("Min Starting Voltage"), QStringLiteral("18.0"));
    QCOMPARE(story->shown("Bulk Start Voltage"), QStringLiteral("25.2"));
    QCOMPARE(story->titles().at(0), QStringLiteral("36V Li(10s)**"));

    // Beyond the limits of the charger, twice.
    for (int time = 0; time < 2; ++time) {
        story->enter("Full Voltage", "99");
        QCOMPARE(story->shown("Full Voltage"), QStringLiteral("63.0"));
        QCOMPARE(story->shown("Min Starting Voltage"), QStringLiteral("31.5"));
    }
    story->enter("Full Voltage", "42");
    QCOMPARE(story->titles().at(0), QStringLiteral("36V Li(10s)"));
}

void SuiteEditingTest::overriddenValuesStay()
{
    connectAndSelect(0);
    story->press("editProfileButton");
    story->press("editAdvanced");
    QVERIFY(story->field("Min Starting Voltage")->isEnabled());
    story->enter("Min Starting Voltage", "20");
    story->enter("Full Voltage", "40");
    QCOMPARE(story->shown("Min Starting Voltage"), QStringLiteral("20.0"));
    QCOMPARE(story->shown("Bulk Start Voltage"), QStringLiteral("29.4"));
    // Below what the full voltage allows they are dragged along: (full voltage * 9) / 10.
    story->enter("Full Voltage", "20");
    QCOMPARE(story->shown("Min Starting Voltage"), QStringLiteral("18.0"));
    QCOMPARE(story->shown("Bulk Start Voltage"), QStringLiteral("20.0"));

    story->press("editAdvanced");
    QCOMPARE(story->shown("Min Starting Voltage"), QStringLiteral("10.0"));
    QCOMPARE(story->shown("Bulk Start Voltage"), QStringLiteral("14.0"));
    QVERIFY(!story->field("Min Starting Voltage")->isEnabled());

    // A profile whose values are not the defaults comes with the button down.
    story->select(1);
    QVERIFY(story->widget<QAbstractButton>("editAdvanced")->isChecked());
    QVERIFY(!story->widget("editAdvanced")->isEnabled());
    QCOMPARE(story->shown("Charge Complete Current"), QStringLiteral("0.25"));
}

void SuiteEditingTest::cancelBringsEverythingBack()
{
    connectAndSelect(1);
    story->press("editProfileButton");
    story->enter("Profile name", "Bicycle");
    QCOMPARE(story->titles().at(1), QStringLiteral("Bicycle**"));
    story->enter("Profile description", "Slow");
    story->enter("Bulk Current", "2");
    story->enter("Charge Complete Current", "0.5");
    story->press("editAdvanced");
    QCOMPARE(story->shown("Charge Complete Current"), QStringLiteral("0.15"));
    story->press("profileActiveButton");
    story->press("profileModifiableButton");
    story->type("Full Voltage", "30"); // still being typed
    story->press("cancelChangesButton");

    QCOMPARE(story->titles().at(1), QStringLiteral("36V Li(10s)"));
    QCOMPARE(story->row(1)->getSubtitle(), QStringLiteral("Stnd Charge"));
    QCOMPARE(story->shown("Profile name"), QStringLiteral("36V Li(10s)"));
    QCOMPARE(story->shown("Profile description"), QStringLiteral("Stnd Charge"));
    QCOMPARE(story->shown("Bulk Current"), QStringLiteral("3.5"));
    QCOMPARE(story->shown("Full Voltage"), QStringLiteral("42.0"));
    QCOMPARE(story->shown("Charge Complete Current"), QStringLiteral("0.25"));
    QVERIFY(story->widget<QAbstractButton>("editAdvanced")->isChecked());
    QVERIFY(story->widget<QAbstractButton>("profileActiveButton")->isChecked());
    QVERIFY(story->widget<QAbstractButton>("profileModifiableButton")->isChecked());
    QVERIFY(story->row(1)->getActiveStatus());
    QVERIFY(!story->widget<QAbstractButton>("editProfileButton")->isChecked());
    QVERIFY(!story->field("Full Voltage")->isEnabled());

    const QList<QJsonObject> before = story->profilesOnCharger();
    QVERIFY(story->saveData());
    QList<QJsonObject> after = story->profilesOnCharger();
    QCOMPARE(after.at(1), before.at(1));
}

void SuiteEditingTest::aSavedProfileReachesTheCharger()
{
    connectAndSelect(0);
    const QList<QJsonObject> before = story->profilesOnCharger();
    story->press("editProfileButton");
    story->enter("Profile name", "Bicycle");
    story->enter("Full Voltage", "40");
    story->press("editProfileButton");
    QVERIFY(!story->field("Full Voltage")->isEnabled());

    story->select(2);
    story->press("editProfileButton");
    story->press("editAdvanced");
    story->enter("Start Current", "0.35");
    story->enter("Charge Complete Current", "9");
    QCOMPARE(story->shown("Charge Complete Current"), QStringLiteral("3.20")); // bulk current 4
    story->press("profileModifiableButton");
    story->press("editProfileButton");

    QCOMPARE(story->titles().at(0), QStringLiteral("Bicycle**"));
    QCOMPARE(story->titles().at(2), QStringLiteral("48V Li(13s)**"));
    QVERIFY(story->saveData());
    QVERIFY(story->isConnected());
    QVERIFY(story->boxes.seen().isEmpty());
    QCOMPARE(story->titles().at(0), QStringLiteral("Bicycle"));

    QList<QJsonObject> expected = before;
    for (int i = 0; i < expected.size(); ++i)
        expected[i]["profile_id"] = i;
    expected[0]["title"] = "Bicycle";
    expected[0]["full_V"] = 40;
    expected[0]["min_start_V"] = 20;
    expected[0]["bulk_start_V"] = 28;
    expected[2]["start_I"] = 0.35;
    expected[2]["complete_I"] = 3.2;
    expected[2]["modifiable"] = true;
    const QList<QJsonObject> after = story->profilesOnCharger();
    QCOMPARE(after.size(), expected.size());
    for (int i = 0; i < expected.size(); ++i)
        QCOMPARE(after.at(i), expected.at(i));

    // Read back, it opens as it was left.
    story->select(2);
    QCOMPARE(story->shown("Start Current"), QStringLiteral("0.35"));
    QVERIFY(story->widget<QAbstractButton>("editAdvanced")->isChecked());
}

void SuiteEditingTest::whatIsBeingTypedIsWritten_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("member");
    QTest::addColumn<QVariant>("written");
    QTest::newRow("name") << QByteArray("Profile name") << "Bicycle"
                          << "title" << QVariant("Bicycle");
    QTest::newRow("description") << QByteArray("Profile description") << "Slow"
                                 << "description" << QVariant("Slow");
    QTest::newRow("number") << QByteArray("Full Voltage") << "40"
                            << "full_V" << QVariant(40);
}

void SuiteEditingTest::whatIsBeingTypedIsWritten()
{
    QFETCH(QByteArray, field);
    QFETCH(QString, typed);
    QFETCH(QString, member);
    QFETCH(QVariant, written);
    connectAndSelect(0);
    story->press("editProfileButton");
    story->type(field.constData(), typed);
    QVERIFY(story->field(field.constData())->hasFocus());
    // A button of the tool bar takes no focus: nobody has left the field.
    auto *bar = story->widget<QToolBar>("mainToolBar");
    QTest::mouseClick(bar->widgetForAction(story->action("saveDataAction")), Qt::LeftButton);
    QVERIFY(story->endSaving());
    QCOMPARE(story->profilesOnCharger().at(0)[member].toVariant().toString(), written.toString());
}

void SuiteEditingTest::eachProfileKeepsItsEditMode()
{
    connectAndSelect(0);
    story->press("editProfileButton");
    story->select(4);
    QVERIFY(!story->widget<QAbstractButton>("editProfileButton")->isChecked());
    QVERIFY(!story->field("Nominal Voltage")->isEnabled());
    QVERIFY(!story->widget("cancelChangesButton")->isEnabled());
    story->select(0);
    QVERIFY(story->widget<QAbstractButton>("editProfileButton")->isChecked());
    QVERIFY(story->field("Full Voltage")->isEnabled());

    // What is typed belongs to the profile that it is typed for.
    story->type("Profile name", "Bicycle");
    story->select(4);
    QCOMPARE(story->titles().at(0), QStringLiteral("Bicycle**"));
    QCOMPARE(story->titles().at(4), QStringLiteral("36V NiMH"));
    QCOMPARE(story->shown("Profile name"), QStringLiteral("36V NiMH"));
}

void SuiteEditingTest::viewingChangesNothing()
{
    QVERIFY(story->connectCharger());
    for (int row = 0; row < 6; ++row) {
        story->select(row);
        story->press("editProfileButton");
        story->press("editProfileButton");
    }
    for (const QString &title : story->titles())
        QVERIFY2(!title.endsWith("**"), qPrintable(title));
    QList<QJsonObject> before = story->profilesOnCharger();
    for (int i = 0; i < before.size(); ++i)
        before[i]["profile_id"] = i;
    QVERIFY(story->saveData());
    QCOMPARE(story->profilesOnCharger(), before);
}

void SuiteEditingTest::movingWhileEditing()
{
    connectAndSelect(0);
    story->press("editProfileButton");
    story->enter("Bulk Current", "5");
    story->press("profileNameDownButton");
    QCOMPARE(story->titles().at(1), QStringLiteral("36V Li(10s)**"));
    // The pane goes on with the same profile.
    QVERIFY(story->widget<QAbstractButton>("editProfileButton")->isChecked());
    story->enter("Bulk Current", "6");
    story->enter("Profile name", "Bicycle");
    QVERIFY(story->titles().at(1).startsWith("Bicycle"));
    story->select(0);
    story->select(1);
    QVERIFY(story->widget<QAbstractButton>("editProfileButton")->isChecked());
    QCOMPARE(story->shown("Bulk Current"), QStringLiteral("6.0"));
    story->press("cancelChangesButton");
    QCOMPARE(story->shown("Bulk Current"), QStringLiteral("8.0"));
    QCOMPARE(story->shown("Profile name"), QStringLiteral("36V Li(10s)"));
    QVERIFY(story->saveData());
    QCOMPARE(story->profilesOnCharger().at(1)["bulk_I"].toDouble(), 8.0);
    QCOMPARE(story->profilesOnCharger().at(1)["description"].toString(),
             QStringLiteral("Fast Charge"));
}

void SuiteEditingTest::deletingWhileEditing()
{
    connectAndSelect(0);
    story->press("editProfileButton");
    story->type("Profile name", "Bicycle");
    story->boxes.push(QMessageBox::Yes);
    QTest::mouseClick(story->row(0)->findChild<QAbstractButton *>("deleteProfileButton"),
                      Qt::LeftButton);
    QTRY_COMPARE(story->list()->count(), 5);
    QVERIFY(!story->widget("containerScroll")->isVisible());
    QVERIFY(!story->widget("profileSettingsName")->isVisible());
    story->select(0);
    QCOMPARE(story->shown("Profile description"), QStringLiteral("Stnd Charge"));
    QVERIFY(!story->widget<QAbstractButton>("editProfileButton")->isChecked());

    story->press("editProfileButton");
    story->boxes.push(QMessageBox::Yes);
    story->press("deleteAllProfiles");
    QTRY_COMPARE(story->list()->count(), 0);
    QVERIFY(!story->widget("containerScroll")->isVisible());
}

void SuiteEditingTest::readingAgainWhileEditing()
{
    connectAndSelect(0);
    story->press("editProfileButton");
    story->enter("Bulk Current", "5");
    story->type("Profile name", "Bicycle");
    QVERIFY(story->readData());
    QVERIFY(story->isConnected());
    QCOMPARE(story->titles().at(0), QStringLiteral("36V Li(10s)"));
    QVERIFY(!story->widget("containerScroll")->isVisible());
    story->select(0);
    QCOMPARE(story->shown("Bulk Current"), QStringLiteral("8.0"));
    QVERIFY(!story->field("Bulk Current")->isEnabled());
}

void SuiteEditingTest::theChargerGoesWhileEditing()
{
    connectAndSelect(0);
    story->press("editProfileButton");
    story->enter("Bulk Current", "5");
    QVERIFY(story->disconnectCharger());
    // The rows stay, and so does the edit.
    QCOMPARE(story->titles().at(0), QStringLiteral("36V Li(10s)"));
    QVERIFY(story->widget<QAbstractButton>("editProfileButton")->isChecked());
    story->enter("Bulk Current", "6");
    QCOMPARE(story->shown("Bulk Current"), QStringLiteral("6.0"));
    story->press("cancelChangesButton");
    QCOMPARE(story->shown("Bulk Current"), QStringLiteral("8.0"));
}

void SuiteEditingTest::theProgramEndsWhileEditing_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QString>("typed");
    QTest::newRow("name") << QByteArray("Profile name") << "Bicycle";
    QTest::newRow("value") << QByteArray("Full Voltage") << "40";
    QTest::newRow("device setting") << QByteArray("Brightness") << "3";
}

void SuiteEditingTest::theProgramEndsWhileEditing()
{
    QFETCH(QByteArray, field);
    QFETCH(QString, typed);
    connectAndSelect(0);
    story->press("editProfileButton");
    if (field == "Brightness")
        story->press("viewDeviceSettings");
    story->type(field.constData(), typed);
    story->action("actionAboutDevice")->trigger();
    story
        ->closeWindow(); // in whatever order the parts go, none of them speaks to one that has gone
    QVERIFY(!SuiteStory::dialog());
}

QTEST_MAIN(SuiteEditingTest)
#include "tst_suite_editing.moc"
