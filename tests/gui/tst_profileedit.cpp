#include "ImportProfiles/importprofilesmain.h"
#include "ImportProfiles/parsedfselement.h"
#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/profileedit.h"
#include "editors/settingscheckbox.h"
#include "editors/settingslineedit.h"
#include "profiles/profilesettings.h"
#include "profiles/profilestats.h"
#include "support/messageboxanswers.h"
#include "support/schemarecord.h"

#include <QApplication>
#include <QFrame>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QRandomGenerator>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using HParser::StructSetting;
using HParser::StructSettings;

class ProfileEditTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void places_data();
    void places();
    void everythingFitsItsPlace_data();
    void everythingFitsItsPlace();
    void overrideButton();
    void showsTheOverrideState_data();
    void showsTheOverrideState();
    void buttonFollowsTheProfile();
    void editModeEnablesTheForm_data();
    void editModeEnablesTheForm();
    void editModeIsToldInOrder();
    void buttonTellsTheProfile();
    void stateThatStaysIsNotTold();
    void advancedFollowBasicWhileTheButtonIsUp();
    void advancedStayWhileTheButtonIsDown();
    void overriddenValueStaysInItsBounds();
    void buttonUpThrowsOverriddenValuesAway();
    void editModeWithTheButtonUpGivesDefaults();
    void thermistorHidesNothing();
    void showsStats();
    void hiddenMembersHaveNoField();
    void tabGoesAsTheEyeDoes_data();
    void tabGoesAsTheEyeDoes();
    void longListMovesTheRestDown();
    void longNamesWidenTheForm();
    void recordWithoutVisibleSettings();
    void goneFormLeavesTheProfileAlone();
    void visitOfAnImportedProfileChangesNothing_data();
    void visitOfAnImportedProfileChangesNothing();

private:
    void make(const QString &chemistry);
    /// A form on a record of one's own.
    void makeOwn(const QStringList &memberLines);
    void makeForm() { form = std::make_unique<ProfileEdit>(&generator, &profile); }
    StructSetting *member(const char *name) const
    {
        return profile.structSettings->getStructSettingByName(name);
    }
    QWidget *fieldOf(const char *name) const;
    void type(const char *name, const QString &text);
    QString shown(const char *name) const
    {
        return qobject_cast<QLineEdit *>(fieldOf(name))->text();
    }
    template <class Widget> Widget *child(const char *name) const
    {
        return form->findChild<Widget *>(name);
    }
    QPushButton *button() const { return child<QPushButton>("editAdvanced"); }

    HParser::Generator generator;
    ProfileSettings profile;
    ProfileStats stats;
    std::unique_ptr<StructSettings> ownRecord;
    std::unique_ptr<ProfileEdit> form;
};

namespace
{

const StructSetting *settingOf(const QWidget *field)
{
    if (const auto *edit = qobject_cast<const SettingsLineEdit *>(field))
        return edit->getSetting();
    if (const auto *box = qobject_cast<const SettingsCheckBox *>(field))
        return box->getSetting();
    return nullptr;
}

QRect edges(int left, int top, int right, int bottom)
{
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

/// A record of this chemistry as a charger may hold it, values anywhere within their bounds; the
/// advanced ones all, some or none of them at their defaults.
ImportProfiles::ParsedFSElement *randomElement(const QString &chemistry,
                                               const HParser::Generator &generator,
                                               QRandomGenerator *random, QObject *owner)
{
    const std::unique_ptr<StructSettings> record(
        generator.copyFlashstackElementSettings(chemistry));
    record->buildFormulaTrees();
    const int changedOfThree = random->bounded(4);
    for (StructSetting *setting : record->getDependancyOrderStructSettings()) {
        setting->advancedEnabled = setting->isBasic || random->bounded(3) < changedOfThree;
        if (setting->settingKind == HParser::SettingKind::Bool) {
            setting->setValue(random->bounded(2) == 1);
        } else if (setting->settingKind == HParser::SettingKind::Num) {
            const double lowest = setting->lowerBound->toDouble();
            const double highest = setting->upperBound->toDouble();
            const int step = random->bounded(7); // the bounds themselves come often
            setting->setValue(step < 5 ? lowest + random->bounded(1.0) * (highest - lowest)
                                       : (step == 5 ? lowest : highest));
        }
    }
    record->getStructSettingByName("profile_id")->setValue(3.0);
    QMap<QString, QString> properties = {{"name", chemistry}};
    for (const StructSetting *setting : record->getOriginalOrderStructSettings())
        properties.insert(setting->xmlName, setting->getValue());
    auto *element = new ImportProfiles::ParsedFSElement(owner);
    element->setProperties(properties);
    return element;
}

QVector<double> numbersOf(const StructSettings *record)
{
    QVector<double> numbers;
    for (const StructSetting *setting : record->getOriginalOrderStructSettings())
        numbers += setting->getNumber();
    return numbers;
}

/// What a widget needs to show all its text.
QSize neededBy(const QWidget *widget)
{
    const QFontMetrics metrics(widget->font());
    if (const auto *edit = qobject_cast<const QLineEdit *>(widget)) {
        constexpr int frame = 4;
        return {metrics.horizontalAdvance(edit->text()) + frame,
                metrics.tightBoundingRect("0").height() + frame};
    }
    return {widget->sizeHint().width(), metrics.height()};
}

} // namespace

void ProfileEditTest::initTestCase()
{
    QApplication::setFont(QFont("Arial", 9)); // the suite's
    generator.setHFileLocation(VELANTOR_BUNDLE_MEMBERS "/master.ss");
    generator.setTooltipFileLoc(VELANTOR_BUNDLE_MEMBERS "/setting_tooltips.txt");
    QVERIFY(generator.parseSSAndTooltips());
}

void ProfileEditTest::init()
{
    profile = ProfileSettings();
    QVERIFY(stats.initializeStructSettings("Profile stats", &generator));
}

void ProfileEditTest::cleanup()
{
    form.reset();
    ownRecord.reset();
}

void ProfileEditTest::make(const QString &chemistry)
{
    form.reset();
    profile = ProfileSettings();
    QVERIFY(profile.initializeStructSettings(chemistry, &generator));
    makeForm();
}

void ProfileEditTest::makeOwn(const QStringList &memberLines)
{
    ownRecord = schemaRecord(memberLines);
    profile.structSettings = ownRecord.get();
    makeForm();
}

QWidget *ProfileEditTest::fieldOf(const char *name) const
{
    for (QWidget *field : form->findChildren<QWidget *>()) {
        const StructSetting *setting = settingOf(field);
        if (setting && setting->name == name)
            return field;
    }
    return nullptr;
}

void ProfileEditTest::type(const char *name, const QString &text)
{
    QWidget *field = fieldOf(name);
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Return);
}

void ProfileEditTest::places_data()
{
    QTest::addColumn<QString>("chemistry");
    QTest::addColumn<bool>("withStats");
    for (const char *chemistry : {"Nickel", "Lead", "Lithium"}) {
        QTest::addRow("%s", chemistry) << chemistry << false;
        QTest::addRow("%s with statistics", chemistry) << chemistry << true;
    }
}

void ProfileEditTest::places()
{
    QFETCH(QString, chemistry);
    QFETCH(bool, withStats);
    QVERIFY(profile.initializeStructSettings(chemistry, &generator));
    if (withStats)
        profile.setProfileStats(&stats);
    makeForm();
    QCOMPARE(form->minimumSize(), QSize(450, 540));
    QCOMPARE(child<QWidget>("profileSettings")->geometry(), edges(0, -4, 449, 115));
    QCOMPARE(child<QFrame>("hline")->geometry(), edges(30, 116, 419, 125));
    QCOMPARE(button()->geometry(), edges(10, 126, 439, 152));
    QCOMPARE(child<QWidget>("profileSettingsAdvanced")->geometry(), edges(0, 156, 449, 375));
    QCOMPARE(child<QFrame>("hline2")->geometry(), edges(30, 374, 419, 383));
    QCOMPARE(child<QLabel>("label")->geometry(), edges(180, 384, 279, 400));
    QCOMPARE(child<QLabel>("label")->text(), "Profile Stats");
    QCOMPARE(child<QWidget>("profileStats")->geometry(), edges(0, 403, 449, 537));
}

void ProfileEditTest::everythingFitsItsPlace_data()
{
    places_data();
}

void ProfileEditTest::everythingFitsItsPlace()
{
    QFETCH(QString, chemistry);
    QFETCH(bool, withStats);
    QVERIFY(profile.initializeStructSettings(chemistry, &generator));
    if (withStats)
        profile.setProfileStats(&stats);
    makeForm();
    form->grab();
    for (const char *name : {"profileSettings", "profileSettingsAdvanced", "profileStats"}) {
        const auto *part = child<QWidget>(name);
        for (const QWidget *widget : part->findChildren<QWidget *>()) {
            const QSize needed = neededBy(widget);
            QVERIFY2(needed.width() <= widget->width(), qPrintable(widget->objectName()));
            QVERIFY2(needed.height() <= widget->height(), qPrintable(widget->objectName()));
            QVERIFY(widget->x() >= 0 && widget->geometry().right() < part->width());
            const int middle = widget->geometry().center().y();
            QVERIFY(middle - needed.height() / 2 >= 0);
            QVERIFY(middle + needed.height() / 2 <= part->height());
        }
    }
}

void ProfileEditTest::overrideButton()
{
    make("Lithium");
    QCOMPARE(button()->text(), "Override Defaults");
    QVERIFY(button()->isCheckable());
    QCOMPARE(button()->toolTip(),
             "<html><head/><body><p>Can generally be left at defaults. Leaving this button clicked "
             "disables autopopulating defaults.</p></body></html>");
    QCOMPARE(button()->styleSheet(),
             "QPushButton#editAdvanced:enabled{\ncolor:red;\n}\n\n"
             "QPushButton#editAdvanced:!enabled{\ncolor:rgb(161, 160, 160);\n}");
}

void ProfileEditTest::showsTheOverrideState_data()
{
    QTest::addColumn<bool>("state");
    QTest::newRow("on") << true;
    QTest::newRow("off") << false;
}

void ProfileEditTest::showsTheOverrideState()
{
    QFETCH(bool, state);
    QVERIFY(profile.initializeStructSettings("Lead", &generator));
    profile.structSettings->setAdvancedSettingsEdited(state);
    makeForm();
    QCOMPARE(button()->isChecked(), state);
}

void ProfileEditTest::buttonFollowsTheProfile()
{
    make("Lead");
    QSignalSpy opened(form.get(), &ProfileEdit::editAdvancedSignal);
    profile.structSettings->setAdvancedSettingsEdited(true);
    QVERIFY(button()->isChecked());
    profile.structSettings->setAdvancedSettingsEdited(false);
    QVERIFY(!button()->isChecked());
    QCOMPARE(opened.count(), 0);
}

void ProfileEditTest::editModeEnablesTheForm_data()
{
    QTest::addColumn<bool>("overridden");
    QTest::newRow("button down") << true;
    QTest::newRow("button up") << false;
}

void ProfileEditTest::editModeEnablesTheForm()
{
    QFETCH(bool, overridden);
    QVERIFY(profile.initializeStructSettings("Nickel", &generator));
    profile.structSettings->setAdvancedSettingsEdited(overridden);
    makeForm();

    form->enableEditingSlot(false);
    for (const char *name : {"bulk_I", "external_thermistor", "start_I"})
        QVERIFY(!fieldOf(name)->isEnabled());
    QVERIFY(!button()->isEnabled());

    form->enableEditingSlot(true);
    QVERIFY(button()->isEnabled());
    QVERIFY(fieldOf("bulk_I")->isEnabled());
    QVERIFY(fieldOf("external_thermistor")->isEnabled());
    QCOMPARE(fieldOf("start_I")->isEnabled(), overridden);

    QTest::mouseClick(button(), Qt::LeftButton);
    QCOMPARE(fieldOf("start_I")->isEnabled(), !overridden);

    form->enableEditingSlot(false);
    for (const char *name : {"bulk_I", "external_thermistor", "start_I"})
        QVERIFY(!fieldOf(name)->isEnabled());
    QVERIFY(!button()->isEnabled());
}

void ProfileEditTest::editModeIsToldInOrder()
{
    make("Lithium");
    QStringList told;
    connect(form.get(), &ProfileEdit::editAdvancedSignal, this, [&](bool on) {
        told += QString("advanced %1, button %2").arg(on).arg(button()->isEnabled());
    });
    connect(form.get(), &ProfileEdit::enableEditingSignal, this,
            [&](bool on) { told += QString("editing %1").arg(on); });
    form->enableEditingSlot(true);
    QCOMPARE(told, QStringList({"advanced 0, button 1", "editing 1"}));
    told.clear();
    QTest::mouseClick(button(), Qt::LeftButton);
    QCOMPARE(told, QStringList({"advanced 1, button 1"}));
    told.clear();
    form->enableEditingSlot(false);
    QCOMPARE(told, QStringList({"advanced 1, button 0", "editing 0"}));
}

void ProfileEditTest::buttonTellsTheProfile()
{
    make("Lithium");
    form->enableEditingSlot(true);
    QSignalSpy changes(profile.structSettings, &StructSettings::advancedEditedChanged);
    QTest::mouseClick(button(), Qt::LeftButton);
    QVERIFY(profile.structSettings->getAdvancedSettingsEdited());
    QTest::mouseClick(button(), Qt::LeftButton);
    QVERIFY(!profile.structSettings->getAdvancedSettingsEdited());
    QCOMPARE(changes.count(), 2);
}

void ProfileEditTest::stateThatStaysIsNotTold()
{
    make("Lithium");
    QSignalSpy changes(profile.structSettings, &StructSettings::advancedEditedChanged);
    form->enableEditingSlot(true);
    form->enableEditingSlot(false);
    QCOMPARE(changes.count(), 0);
}

void ProfileEditTest::advancedFollowBasicWhileTheButtonIsUp()
{
    make("Lithium");
    form->enableEditingSlot(true);
    type("full_V", "36");
    QCOMPARE(member("min_start_V")->getValue(), "18");
    QCOMPARE(member("bulk_start_V")->getValue(), "25.2");
    QCOMPARE(shown("full_V"), "36.0");
    QCOMPARE(shown("min_start_V"), "18.0");
    QCOMPARE(shown("bulk_start_V"), "25.2");
}

void ProfileEditTest::advancedStayWhileTheButtonIsDown()
{
    make("Lithium");
    form->enableEditingSlot(true);
    QTest::mouseClick(button(), Qt::LeftButton);
    type("full_V", "36");
    QCOMPARE(shown("min_start_V"), "21.0");
    QCOMPARE(shown("bulk_start_V"), "29.4");
}

void ProfileEditTest::overriddenValueStaysInItsBounds()
{
    make("Lithium");
    form->enableEditingSlot(true);
    QTest::mouseClick(button(), Qt::LeftButton);
    type("full_V", "24");
    QCOMPARE(shown("bulk_start_V"), "24.0");
    QCOMPARE(shown("min_start_V"), "21.0"); // at most 9/10 of 24
    type("bulk_start_V", "99");
    QCOMPARE(shown("bulk_start_V"), "24.0");
}

void ProfileEditTest::buttonUpThrowsOverriddenValuesAway()
{
    make("Lithium");
    form->enableEditingSlot(true);
    QTest::mouseClick(button(), Qt::LeftButton);
    type("start_I", "1.5");
    QCOMPARE(member("start_I")->getValue(), "1.5");
    QTest::mouseClick(button(), Qt::LeftButton);
    QCOMPARE(member("start_I")->getValue(), "0.2");
    QCOMPARE(shown("start_I"), "0.20");
}

void ProfileEditTest::editModeWithTheButtonUpGivesDefaults()
{
    for (const bool on : {true, false}) {
        make("Lithium");
        member("start_I")->advancedEnabled = true;
        QVERIFY(member("start_I")->setValue(1.5));
        form->enableEditingSlot(on);
        QCOMPARE(member("start_I")->getValue(), "0.2");
    }
}

void ProfileEditTest::thermistorHidesNothing()
{
    make("Nickel");
    auto *box = qobject_cast<QCheckBox *>(fieldOf("external_thermistor"));
    QVERIFY(box);
    QVERIFY(child<QWidget>("profileSettings")->isAncestorOf(box));
    for (int state = 0; state < 2; ++state) {
        box->click();
        QCOMPARE(member("external_thermistor")->getBool(), box->isChecked());
        for (const char *name : {"max_T", "dTdt"}) {
            QVERIFY(child<QWidget>("profileSettingsAdvanced")->isAncestorOf(fieldOf(name)));
            QVERIFY(!fieldOf(name)->isHidden());
        }
    }
}

void ProfileEditTest::showsStats()
{
    QVERIFY(profile.initializeStructSettings("Lead", &generator));
    makeForm();
    QCOMPARE(child<QWidget>("profileStats")->findChild<QLabel *>()->text(),
             "No stats yet for this profile!");
    profile.setProfileStats(&stats);
    makeForm();
    form->enableEditingSlot(true);
    QCOMPARE(child<QWidget>("profileStats")->findChildren<QLineEdit *>().size(), 7);
    for (const QWidget *field : child<QWidget>("profileStats")->findChildren<QLineEdit *>())
        QVERIFY(!field->isEnabled());
}

void ProfileEditTest::hiddenMembersHaveNoField()
{
    for (const char *chemistry : {"Nickel", "Lead", "Lithium"}) {
        make(chemistry);
        for (const char *name : {"type", "extraneous1", "checksum", "profile_id", "active",
                                 "defaultprofile", "modifiable", "title", "description"})
            QVERIFY2(!fieldOf(name), name);
    }
}

void ProfileEditTest::tabGoesAsTheEyeDoes_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::newRow("Nickel") << QStringList(
        {"Nominal Voltage", "Bulk Current", "Thermistor Reqd?", "Override Defaults",
         "Slow Start Current", "Bulk Start Voltage", "-Delta V Termination", "Max Temp Termination",
         "dT/dt Termination", "Top-up Current", "Top-up Time", "Max Voltage"});
    QTest::newRow("Lead") << QStringList({"Full Voltage", "Bulk Current", "Override Defaults",
                                          "Float Voltage", "Charge Complete Current",
                                          "Max Time at Full Voltage"});
    QTest::newRow("Lithium") << QStringList({"Full Voltage", "Bulk Current", "Override Defaults",
                                             "Min Starting Voltage", "Start Current",
                                             "Bulk Start Voltage", "Charge Complete Current"});
}

void ProfileEditTest::tabGoesAsTheEyeDoes()
{
    QFETCH(QStringList, names);
    QVERIFY(profile.initializeStructSettings(QTest::currentDataTag(), &generator));
    profile.structSettings->setAdvancedSettingsEdited(true);
    QScrollArea area;
    area.setWidgetResizable(true);
    auto *inArea = new ProfileEdit(&generator, &profile);
    area.setWidget(inArea);
    inArea->enableEditingSlot(true);
    area.show();
    QApplication::setActiveWindow(&area);
    QVERIFY(QTest::qWaitForWindowActive(&area));

    QStringList visited;
    area.setFocus();
    for (int press = 0; press < names.size(); ++press) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        const QWidget *at = QApplication::focusWidget();
        const auto *push = qobject_cast<const QPushButton *>(at);
        visited += push ? push->text() : at->accessibleName();
    }
    QCOMPARE(visited, names);
}

void ProfileEditTest::longListMovesTheRestDown()
{
    QStringList lines;
    for (int i = 0; i < 40; ++i) {
        lines += QString("unsigned char m%1; // num, auto, 0, 9, *1, 0, \"Member %1\", \"V\", "
                         "\"m%1\", 1, %1, %2")
                     .arg(i)
                     .arg(i % 2 ? "basic" : "advanced");
    }
    makeOwn(lines);
    form->resize(form->minimumSize());
    form->grab();
    int below = -4;
    for (const char *name : {"profileSettings", "hline", "editAdvanced", "profileSettingsAdvanced",
                             "label", "profileStats"}) {
        const QRect place = child<QWidget>(name)->geometry();
        QVERIFY2(place.top() >= below, name);
        below = place.bottom();
    }
    QVERIFY(below < form->minimumHeight());
    // Nor does one row lie on another.
    for (const char *name : {"profileSettings", "profileSettingsAdvanced"}) {
        const auto fields = child<QWidget>(name)->findChildren<QLineEdit *>();
        QCOMPARE(fields.size(), 20);
        for (int i = 1; i < fields.size(); ++i)
            QVERIFY(fields.at(i)->y() > fields.at(i - 1)->geometry().bottom());
        QVERIFY(fields.last()->geometry().bottom() < child<QWidget>(name)->height());
    }
}

void ProfileEditTest::longNamesWidenTheForm()
{
    const QString name(120, 'W');
    makeOwn(
        {QString("unsigned char a; // num, auto, 0, 9, *1, 0, \"%1\", \"V\", \"a\", 1, 0, basic")
             .arg(name),
         QString("unsigned char b; // num, auto, 0, 9, *1, 0, \"%1\", \"V\", \"b\", 1, 1, "
                 "advanced")
             .arg(name)});
    form->resize(form->minimumSize());
    form->grab();
    for (const QLabel *label : form->findChildren<QLabel *>()) {
        QVERIFY(label->width() >= label->sizeHint().width());
        QVERIFY(form->rect().contains(
            QRect(label->mapTo(form.get(), QPoint(0, 10)), QSize(label->width(), 1))));
    }
}

void ProfileEditTest::recordWithoutVisibleSettings()
{
    makeOwn({"unsigned char type; // num, auto, 1, 1, *1, 0, \"t\", \"\", \"t\", 1, -1, basic"});
    form->enableEditingSlot(true);
    QTest::mouseClick(button(), Qt::LeftButton);
    QVERIFY(ownRecord->getAdvancedSettingsEdited());
    QCOMPARE(form->minimumSize(), QSize(450, 540));
}

void ProfileEditTest::goneFormLeavesTheProfileAlone()
{
    make("Nickel");
    form->enableEditingSlot(true);
    form.reset();
    QVERIFY(member("bulk_I")->setValue(2.0));
    profile.structSettings->setAdvancedSettingsEdited(true);
    QCOMPARE(member("bulk_I")->getValue(), "2");
}

void ProfileEditTest::visitOfAnImportedProfileChangesNothing_data()
{
    QTest::addColumn<QString>("schema");
    QTest::addColumn<QString>("chemistry");
    for (const char *schema : {"master", "24V_rev7", "48V_FSv1", "48V_FSv2", "72V_rev7"}) {
        for (const char *chemistry : {"Nickel", "Lead", "Lithium"})
            QTest::addRow("%s, %s", schema, chemistry) << schema << chemistry;
    }
}

void ProfileEditTest::visitOfAnImportedProfileChangesNothing()
{
    QFETCH(QString, schema);
    QFETCH(QString, chemistry);
    MessageBoxAnswers noBox;
    HParser::Generator hardware;
    hardware.parseSSFile(VELANTOR_BUNDLE_MEMBERS "/" + schema + ".ss");
    ImportProfiles::ImportProfilesMain importer(nullptr, &hardware);
    QRandomGenerator random(7);
    int overridden = 0;
    for (int round = 0; round < 60; ++round) {
        QObject owner;
        const auto imported = importer.createProfileSettings(
            {randomElement(chemistry, hardware, &random, &owner)}, {}, {});
        QCOMPARE(imported.size(), 1);
        profile = *imported.first();
        delete imported.first();
        ownRecord.reset(profile.structSettings);
        overridden += ownRecord->getAdvancedSettingsEdited();
        const bool wasOverridden = ownRecord->getAdvancedSettingsEdited();
        const std::unique_ptr<StructSettings> before(ownRecord->deepCopyWithValues());
        QVERIFY(before->compare(ownRecord.get()));
        const auto numbers = numbersOf(ownRecord.get());

        form = std::make_unique<ProfileEdit>(&hardware, &profile);
        for (const bool editing : {false, true, false}) {
            form->enableEditingSlot(editing);
            for (auto *field : form->findChildren<SettingsLineEdit *>())
                field->saveSetting();
            QVERIFY(ownRecord->compare(before.get()));
            QCOMPARE(numbersOf(ownRecord.get()), numbers);
            QCOMPARE(ownRecord->getAdvancedSettingsEdited(), wasOverridden);
            QCOMPARE(button()->isChecked(), wasOverridden);
            QCOMPARE(importer.areAdvancedSettingsDefault(ownRecord.get()), !wasOverridden);
        }
        form.reset();
    }
    QVERIFY(overridden > 10 && overridden < 55);
    QVERIFY(noBox.seen().isEmpty());
}

QTEST_MAIN(ProfileEditTest)
#include "tst_profileedit.moc"
