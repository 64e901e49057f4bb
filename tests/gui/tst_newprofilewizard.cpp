#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "editors/newprofileedit.h"
#include "editors/newprofilewizard.h"
#include "editors/profileedit.h"
#include "editors/screenroom.h"
#include "editors/settingscheckbox.h"
#include "editors/settingslineedit.h"
#include "profiles/profilesettings.h"
#include "profiles/profileshare.h"
#include "support/schemarecord.h"
#include "support/workingdirectory.h"

#include <QApplication>
#include <QFile>
#include <QFrame>
#include <QLabel>
#include <QLayout>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <memory>

Q_DECLARE_METATYPE(ProfileSettings *)

using HParser::StructSetting;
using HParser::StructSettings;

/// The wizard of a new profile and its form.
class NewProfileWizardTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void opensByItself();
    void asksForTheChemistry();
    void isAsLargeAsItsFormAndTheScreen();
    void formPlaces_data();
    void formPlaces();
    void formCanBeEditedAtOnce();
    void overrideTellsInOrder();
    void showsTheSettingsOfTheChemistry_data();
    void showsTheSettingsOfTheChemistry();
    void finishAtOnceGivesDefaults_data();
    void finishAtOnceGivesDefaults();
    void finishTakesWhatWasTyped();
    void finishTakesTheFieldBeingEdited_data();
    void finishTakesTheFieldBeingEdited();
    void nameStopsAtTheLengthOfTheRecord();
    void overrideIsStoredInTheProfile();
    void advancedFollowTheButtonAlone_data();
    void advancedFollowTheButtonAlone();
    void backStartsAnew();
    void oldFormCannotWriteIntoTheNewProfile();
    void backForgetsTheOverride();
    void backAfterTypingForgetsIt();
    void twoAtOnceShareNothing();
    void finishedProfileIsNewAndStays();
    void finishedProfileBelongsToItsRows();
    void longRecordIsScrolledTo();
    void recordWithoutVisibleSettings();
    void cancelHandsNothingOn_data();
    void cancelHandsNothingOn();
    void returnInAFieldOnlyEndsTheTyping();
    void returnActsOnTheButtonWithTheFocus();
    void tabGoesAsTheEyeDoes();
    void chemistriesComeFromTheSchema();
    void mnemonicsOfTheDesktopMeanNothing();
    void goneSchemaKeepsTheFirstStep();

private:
    template <class Widget = QWidget> Widget *child(const char *name) const
    {
        return wizard->findChild<Widget *>(name);
    }
    QPushButton *button(const char *name) const { return child<QPushButton>(name); }
    void open()
    {
        wizard = new NewProfileWizard(&generator);
        QVERIFY(QTest::qWaitForWindowActive(wizard));
        made = std::make_unique<QSignalSpy>(wizard.data(), &NewProfileWizard::newProfileMade);
    }
    void choose(const char *chemistry) { QTest::mouseClick(button(chemistry), Qt::LeftButton); }
    SettingsLineEdit *fieldOf(const char *name) const;
    void type(const char *name, const QString &text);
    ProfileSettings *profile() const { return made->at(0).at(0).value<ProfileSettings *>(); }
    QString valueOf(const char *name) const
    {
        return profile()->structSettings->getStructSettingByName(name)->getValue();
    }
    void settle() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    HParser::Generator generator;
    QPointer<NewProfileWizard> wizard;
    std::unique_ptr<QSignalSpy> made;
};

namespace
{
QRect edges(int left, int top, int right, int bottom)
{
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

const QString noChemistry = "------------------";
} // namespace

void NewProfileWizardTest::initTestCase()
{
    qRegisterMetaType<ProfileSettings *>();
    QApplication::setFont(QFont("Arial", 9)); // the suite's
    generator.setTooltipFileLoc(VELANTOR_BUNDLE_MEMBERS "/setting_tooltips.txt");
}

void NewProfileWizardTest::init()
{
    generator.setHFileLocation(VELANTOR_BUNDLE_MEMBERS "/master.ss");
    QVERIFY(generator.parseSSAndTooltips());
}

void NewProfileWizardTest::cleanup()
{
    made.reset();
    delete wizard;
}

SettingsLineEdit *NewProfileWizardTest::fieldOf(const char *name) const
{
    for (auto *field : wizard->findChildren<SettingsLineEdit *>()) {
        if (field->isVisible() && field->getSetting() && field->getSetting()->name == name)
            return field;
    }
    return nullptr;
}

void NewProfileWizardTest::type(const char *name, const QString &text)
{
    SettingsLineEdit *field = fieldOf(name);
    field->setFocus();
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(field, text);
}

void NewProfileWizardTest::opensByItself()
{
    open();
    QVERIFY(wizard->isVisible());
    QCOMPARE(wizard->windowTitle(), "Profile Wizard");
    QCOMPARE(wizard->windowModality(), Qt::ApplicationModal);
    QCOMPARE(wizard->minimumSize(), wizard->maximumSize());
    QVERIFY(child<QLabel>("title"));
    QCOMPARE(button("backButton")->text(), "< Back");
    QCOMPARE(button("cancelButton")->text(), "Cancel");
    QCOMPARE(button("finishButton")->text(), "Finish");
}

void NewProfileWizardTest::asksForTheChemistry()
{
    open();
    QVERIFY(child("setChem")->isVisible());
    QVERIFY(!child("editSettings")->isVisible());
    QVERIFY(!button("backButton")->isEnabled());
    QVERIFY(!button("finishButton")->isEnabled());
    QVERIFY(button("cancelButton")->isEnabled());
    QCOMPARE(child<QLabel>("subtitle")->text(), noChemistry);

    QStringList texts;
    for (const QLabel *label : child("setChem")->findChildren<QLabel *>())
        texts += label->text();
    QCOMPARE(texts, QStringList("Please choose which type of battery chemistry this profile will "
                                "be charging:"));
    QStringList chemistries;
    for (const QPushButton *button : child("setChem")->findChildren<QPushButton *>())
        chemistries += button->text();
    QCOMPARE(chemistries, QStringList({"Nickel", "Lead", "Lithium"}));
    QCOMPARE(wizard->focusWidget(), button("Nickel"));
}

void NewProfileWizardTest::isAsLargeAsItsFormAndTheScreen()
{
    open();
    const QSize room = wizard->screen()->availableSize();
    QVERIFY(wizard->width() <= room.width());
    QVERIFY(wizard->height() < room.height());
    constexpr int titleBar = 30;
    QCOMPARE(roomOnScreen(wizard), room - QSize(0, titleBar));
    QCOMPARE(wizard->size(), QSize(474, 616).boundedTo(roomOnScreen(wizard)));

    choose("Nickel");
    wizard->setFixedSize(474, 616); // the form's
    wizard->grab();
    const auto *pages = wizard->findChild<QScrollArea *>();
    auto *form = wizard->findChild<NewProfileEdit *>();
    const QRect inSight(form->mapTo(pages->viewport(), QPoint(0, 0)), form->size());
    QVERIFY(form->width() >= 430 && form->height() >= 510);
    QVERIFY(pages->viewport()->rect().contains(inSight));
}

void NewProfileWizardTest::formPlaces_data()
{
    QTest::addColumn<QString>("part");
    QTest::addColumn<QRect>("place");
    QTest::newRow("name") << "profileName" << edges(0, 0, 429, 90);
    QTest::newRow("line") << "hline" << edges(20, 90, 409, 99);
    QTest::newRow("basic") << "profileSettings" << edges(0, 94, 429, 213);
    QTest::newRow("second line") << "hline2" << edges(20, 210, 409, 219);
    QTest::newRow("button") << "editAdvanced" << edges(0, 220, 429, 246);
    QTest::newRow("advanced") << "profileSettingsAdvanced" << edges(0, 250, 429, 509);
}

void NewProfileWizardTest::formPlaces()
{
    QFETCH(QString, part);
    for (const char *chemistry : {"Nickel", "Lead", "Lithium"}) {
        ProfileSettings profile;
        QVERIFY(profile.initializeStructSettings(chemistry, &generator));
        const NewProfileEdit form(&generator, &profile);
        QTEST(form.findChild<QWidget *>(part)->geometry(), "place");
        QCOMPARE(form.minimumSize(), QSize(430, 510));
    }
}

void NewProfileWizardTest::formCanBeEditedAtOnce()
{
    ProfileSettings profile;
    QVERIFY(profile.initializeStructSettings("Nickel", &generator));
    const NewProfileEdit form(&generator, &profile);
    for (const char *part : {"profileName", "profileSettings"}) {
        for (const QWidget *field : form.findChild<QWidget *>(part)->findChildren<QWidget *>())
            QVERIFY(field->isEnabled());
    }
    const auto *box = form.findChild<SettingsCheckBox *>();
    QVERIFY(box && box->isEnabled());
    for (const auto *field :
         form.findChild<QWidget *>("profileSettingsAdvanced")->findChildren<QLineEdit *>())
        QVERIFY(!field->isEnabled());

    const auto *button = form.findChild<QPushButton *>("editAdvanced");
    QCOMPARE(button->text(), "Override Defaults");
    QVERIFY(button->isCheckable() && !button->isChecked() && button->isEnabled());
    QVERIFY(!button->isDefault() && !button->autoDefault());
    QCOMPARE(button->styleSheet(), "QPushButton{\ncolor:red;\n}");
    QCOMPARE(button->toolTip(),
             "<html><head/><body><p>Can generally be left at defaults. Leaving this button clicked "
             "disables autopopulating defaults.</p></body></html>");
}

void NewProfileWizardTest::overrideTellsInOrder()
{
    ProfileSettings profile;
    QVERIFY(profile.initializeStructSettings("Lead", &generator));
    NewProfileEdit form(&generator, &profile);
    QStringList told;
    connect(profile.structSettings, &StructSettings::advancedEditedChanged, &form,
            [&told](bool on) { told += QString("profile %1").arg(on); });
    connect(&form, &NewProfileEdit::editAdvancedSignal, &form,
            [&told](bool on) { told += QString("form %1").arg(on); });
    auto *button = form.findChild<QPushButton *>("editAdvanced");
    button->click();
    QCOMPARE(told, QStringList({"profile 1", "form 1"}));
    for (const auto *field :
         form.findChild<QWidget *>("profileSettingsAdvanced")->findChildren<QLineEdit *>())
        QVERIFY(field->isEnabled());
    button->click();
    QCOMPARE(told.mid(2), QStringList({"profile 0", "form 0"}));
    const auto fields =
        form.findChild<QWidget *>("profileSettingsAdvanced")->findChildren<QLineEdit *>();
    for (const auto *field : fields)
        QVERIFY(!field->isEnabled());

    // The fields are closed before the first default comes.
    button->click();
    int enabled = -1;
    StructSetting *first = profile.structSettings->getStructSettingByName("float_V");
    QVERIFY(first->setValue(42.0));
    connect(first, &StructSetting::valueChanged, &form, [&fields, &enabled] {
        enabled = std::count_if(fields.begin(), fields.end(),
                                [](const QLineEdit *field) { return field->isEnabled(); });
    });
    button->click();
    QCOMPARE(enabled, 0);
}

void NewProfileWizardTest::showsTheSettingsOfTheChemistry_data()
{
    QTest::addColumn<int>("fields");
    QTest::newRow("Nickel") << 12;
    QTest::newRow("Lead") << 7;
    QTest::newRow("Lithium") << 8;
}

void NewProfileWizardTest::showsTheSettingsOfTheChemistry()
{
    open();
    choose(QTest::currentDataTag());
    QVERIFY(child("editSettings")->isVisible());
    QVERIFY(!child("setChem")->isVisible());
    QCOMPARE(child<QLabel>("subtitle")->text(), QString(QTest::currentDataTag()));
    QVERIFY(button("backButton")->isEnabled());
    QVERIFY(button("finishButton")->isEnabled());
    QTEST(wizard->findChildren<SettingsLineEdit *>().size(), "fields");
    QCOMPARE(wizard->focusWidget(), fieldOf("title"));
    QCOMPARE(fieldOf("title")->text(), QString(QTest::currentDataTag()));
}

void NewProfileWizardTest::finishAtOnceGivesDefaults_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<QString>("value");
    QTest::newRow("Nickel") << "nominal_full_V"
                            << "36";
    QTest::newRow("Lead") << "full_V"
                          << "43.2";
    QTest::newRow("Lithium") << "bulk_start_V"
                             << "29.4";
}

void NewProfileWizardTest::finishAtOnceGivesDefaults()
{
    open();
    choose(QTest::currentDataTag());
    QTest::mouseClick(button("finishButton"), Qt::LeftButton);
    QCOMPARE(made->count(), 1);
    QCOMPARE(profile()->chemistry, QString(QTest::currentDataTag()));
    QCOMPARE(valueOf("title"), QString(QTest::currentDataTag()));
    QCOMPARE(valueOf("description"), "Custom");
    QCOMPARE(valueOf("profile_id"), "255");
    QCOMPARE(valueOf("scheduled_for_deletion"), "false");
    QVERIFY(profile()->getModifiable());
    QVERIFY(!profile()->structSettings->getAdvancedSettingsEdited());
    QFETCH(QString, member);
    QTEST(valueOf(member.toUtf8()), "value");
    settle();
    QVERIFY(!wizard);
    // The profile outlives its form.
    QCOMPARE(valueOf("description"), "Custom");
    QVERIFY(profile()->structSettings->getStructSettingByName("bulk_I")->setValue(2.0));
}

void NewProfileWizardTest::finishTakesWhatWasTyped()
{
    open();
    choose("Lithium");
    type("title", "Commuter");
    type("full_V", "36");
    type("bulk_I", "99");
    type("description", "to work");
    QTest::mouseClick(button("finishButton"), Qt::LeftButton);
    QCOMPARE(valueOf("title"), "Commuter");
    QCOMPARE(valueOf("description"), "to work");
    QCOMPARE(valueOf("full_V"), "36");
    QCOMPARE(valueOf("min_start_V"), "18");
    QCOMPARE(valueOf("bulk_I"), "8");
}

void NewProfileWizardTest::finishTakesTheFieldBeingEdited_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("value");
    QTest::newRow("text") << "title"
                          << "Tandem"
                          << "Tandem";
    QTest::newRow("number") << "full_V"
                            << "48"
                            << "48";
    QTest::newRow("number beyond its bound") << "full_V"
                                             << "480"
                                             << "63";
    QTest::newRow("number that ends with its point") << "full_V"
                                                     << "40."
                                                     << "40";
    QTest::newRow("number without its exponent") << "full_V"
                                                 << "40e"
                                                 << "40";
    QTest::newRow("sign alone") << "full_V"
                                << "-"
                                << "12";
    QTest::newRow("point alone") << "full_V"
                                 << "."
                                 << "12";
    QTest::newRow("nothing") << "full_V"
                             << ""
                             << "12";
    QTest::newRow("no name") << "title"
                             << ""
                             << "";
}

void NewProfileWizardTest::finishTakesTheFieldBeingEdited()
{
    QFETCH(QString, member);
    QFETCH(QString, text);
    for (const bool byMouse : {true, false}) {
        open();
        choose("Lithium");
        type(member.toUtf8(), text);
        if (text.isEmpty())
            QTest::keyClick(wizard->focusWidget(), Qt::Key_Delete);
        QString handedOn;
        connect(wizard, &NewProfileWizard::newProfileMade, this,
                [this, &handedOn, name = member.toUtf8()](ProfileSettings *) {
                    handedOn = valueOf(name);
                    // Nor does a second click in between hand anything on.
                    button("finishButton")->click();
                });
        if (byMouse)
            QTest::mouseClick(button("finishButton"), Qt::LeftButton);
        else // as a screen reader does it: the focus stays in the field
            button("finishButton")->click();
        QCOMPARE(made->count(), 1);
        QTEST(handedOn, "value");
        settle();
        QVERIFY(!wizard);
        QTEST(valueOf(member.toUtf8()), "value");
    }
}

void NewProfileWizardTest::nameStopsAtTheLengthOfTheRecord()
{
    open();
    choose("Lead");
    type("title", "abcdefghijklmnop");
    type("description", "abcdefghijklmnop");
    QCOMPARE(fieldOf("title")->text(), "abcdefghijk");
    QCOMPARE(fieldOf("description")->text(), "abcdefghijklm");
}

void NewProfileWizardTest::overrideIsStoredInTheProfile()
{
    open();
    choose("Lithium");
    QTest::mouseClick(button("editAdvanced"), Qt::LeftButton);
    type("start_I", "1.5");
    button("finishButton")->click();
    QVERIFY(profile()->structSettings->getAdvancedSettingsEdited());
    QCOMPARE(valueOf("start_I"), "1.5");
    settle();

    ProfileEdit later(&generator, profile());
    later.enableEditingSlot(false);
    QVERIFY(later.findChild<QPushButton *>("editAdvanced")->isChecked());
    QCOMPARE(valueOf("start_I"), "1.5");
}

void NewProfileWizardTest::advancedFollowTheButtonAlone_data()
{
    QTest::addColumn<bool>("byMouse");
    QTest::newRow("by mouse") << true;
    QTest::newRow("by a screen reader") << false;
}

void NewProfileWizardTest::advancedFollowTheButtonAlone()
{
    QFETCH(bool, byMouse);
    const auto press = [this, byMouse] {
        if (byMouse)
            QTest::mouseClick(button("editAdvanced"), Qt::LeftButton);
        else
            button("editAdvanced")->click();
    };
    open();
    choose("Lithium");
    QVERIFY(!fieldOf("start_I")->isEnabled());
    press();
    QVERIFY(fieldOf("start_I")->isEnabled());
    type("start_I", "1.5");
    press();
    QVERIFY(!fieldOf("start_I")->isEnabled());
    QCOMPARE(fieldOf("start_I")->text(), "0.20");
}

void NewProfileWizardTest::backStartsAnew()
{
    open();
    choose("Lithium");
    type("title", "Commuter");
    type("full_V", "36");
    QTest::mouseClick(button("backButton"), Qt::LeftButton);
    QVERIFY(child("setChem")->isVisible());
    QVERIFY(!child("editSettings")->isVisible());
    QVERIFY(!child("editSettings")->layout());
    QVERIFY(!button("backButton")->isEnabled());
    QVERIFY(!button("finishButton")->isEnabled());
    QCOMPARE(child<QLabel>("subtitle")->text(), noChemistry);

    choose("Lead");
    settle();
    QCOMPARE(wizard->findChildren<NewProfileEdit *>().size(), 1);
    QCOMPARE(fieldOf("title")->text(), "Lead");
    QCOMPARE(fieldOf("full_V")->text(), "43.2");
    QTest::mouseClick(button("backButton"), Qt::LeftButton);
    choose("Lithium");
    QCOMPARE(fieldOf("title")->text(), "Lithium");
    button("finishButton")->click();
    QCOMPARE(made->count(), 1);
    QCOMPARE(profile()->chemistry, "Lithium");
    QCOMPARE(valueOf("full_V"), "42");
}

void NewProfileWizardTest::oldFormCannotWriteIntoTheNewProfile()
{
    open();
    choose("Lithium");
    auto *oldButton = button("editAdvanced");
    auto *oldTitle = fieldOf("title");
    QTest::mouseClick(button("backButton"), Qt::LeftButton);
    choose("Lithium");
    // The old form still waits for its deletion.
    oldTitle->setText("Ghost");
    oldTitle->saveSetting();
    oldButton->click();
    button("finishButton")->click();
    QCOMPARE(valueOf("title"), "Lithium");
    QVERIFY(!profile()->structSettings->getAdvancedSettingsEdited());
    settle();
    QCOMPARE(valueOf("title"), "Lithium");
}

void NewProfileWizardTest::backForgetsTheOverride()
{
    open();
    choose("Lead");
    QTest::mouseClick(button("editAdvanced"), Qt::LeftButton);
    QTest::mouseClick(button("backButton"), Qt::LeftButton);
    settle();
    choose("Lead");
    QVERIFY(!button("editAdvanced")->isChecked());
    button("finishButton")->click();
    QVERIFY(!profile()->structSettings->getAdvancedSettingsEdited());
}

void NewProfileWizardTest::cancelHandsNothingOn_data()
{
    QTest::addColumn<bool>("chosen");
    QTest::addColumn<QString>("way");
    for (const char *way : {"button", "escape", "cross"}) {
        QTest::addRow("%s, choosing", way) << false << way;
        QTest::addRow("%s, editing", way) << true << way;
    }
}

void NewProfileWizardTest::cancelHandsNothingOn()
{
    QFETCH(bool, chosen);
    QFETCH(QString, way);
    open();
    if (chosen) {
        choose("Nickel");
        type("title", "Tandem");
        button("editAdvanced")->click();
    }
    if (way == "escape")
        QTest::keyClick(wizard->focusWidget(), Qt::Key_Escape);
    else if (way == "cross")
        wizard->close();
    else
        QTest::mouseClick(button("cancelButton"), Qt::LeftButton);
    QVERIFY(!wizard || !wizard->isVisible());
    settle();
    QVERIFY(!wizard);
    QCOMPARE(made->count(), 0);

    // Nothing of it is in the next one.
    open();
    choose("Nickel");
    QCOMPARE(fieldOf("title")->text(), "Nickel");
    QVERIFY(!button("editAdvanced")->isChecked());
    QVERIFY(!fieldOf("start_I")->isEnabled());
}

void NewProfileWizardTest::twoAtOnceShareNothing()
{
    open();
    const QPointer<NewProfileWizard> first = wizard;
    const auto firstMade = std::move(made);
    choose("Lithium");
    type("title", "First");
    button("editAdvanced")->click();
    type("start_I", "1.5");

    open();
    choose("Lithium");
    QCOMPARE(fieldOf("title")->text(), "Lithium");
    QCOMPARE(fieldOf("start_I")->text(), "0.20");
    type("title", "Second");
    button("finishButton")->click();
    settle();
    QVERIFY(!wizard && first);
    QCOMPARE(firstMade->count(), 0);
    const ProfileSettings *second = profile();
    QCOMPARE(valueOf("title"), "Second");
    QCOMPARE(valueOf("start_I"), "0.2");

    wizard = first;
    button("finishButton")->click();
    made->clear();
    QCOMPARE(firstMade->count(), 1);
    const auto *other = firstMade->at(0).at(0).value<ProfileSettings *>();
    QVERIFY(other != second && other->structSettings != second->structSettings);
    QCOMPARE(other->structSettings->getStructSettingByName("title")->getValue(), "First");
    QCOMPARE(other->structSettings->getStructSettingByName("start_I")->getValue(), "1.5");
    QVERIFY(!second->structSettings->getAdvancedSettingsEdited());
}

void NewProfileWizardTest::backAfterTypingForgetsIt()
{
    open();
    choose("Lithium");
    type("title", "Commuter");
    const QPointer<QObject> record = fieldOf("title")->getSetting()->parent();
    // As a screen reader does it: the focus stays in the field.
    button("backButton")->click();
    QVERIFY(wizard->focusWidget() == button("Nickel"));
    settle();
    QVERIFY(!record);
    choose("Lithium");
    QCOMPARE(fieldOf("title")->text(), "Lithium");
    button("finishButton")->click();
    QCOMPARE(valueOf("title"), "Lithium");
}

void NewProfileWizardTest::finishedProfileIsNewAndStays()
{
    const WorkingDirectory folder;
    QFile master(VELANTOR_BUNDLE_MEMBERS "/master.ss");
    QVERIFY(master.open(QIODevice::ReadOnly));
    QByteArray text = master.readAll();
    text.replace("\"scheduled_for_deletion\", 0", "\"scheduled_for_deletion\", 1");
    folder.write("own.ss", text);
    generator.parseSSFile("own.ss");
    open();
    choose("Lead");
    button("finishButton")->click();
    QCOMPARE(valueOf("profile_id"), "255");
    QCOMPARE(valueOf("scheduled_for_deletion"), "false");
}

void NewProfileWizardTest::finishedProfileBelongsToItsRows()
{
    open();
    choose("Lead");
    auto share = std::make_unique<ProfileShare>();
    QPointer<HParser::StructSettings> record;
    connect(wizard, &NewProfileWizard::newProfileMade, this, [&](ProfileSettings *profile) {
        *share = ProfileShare(profile);
        record = profile->structSettings;
    });
    button("finishButton")->click();
    settle();
    QVERIFY(!wizard);
    QVERIFY(record);
    share.reset();
    settle();
    QVERIFY(!record);
}

void NewProfileWizardTest::returnInAFieldOnlyEndsTheTyping()
{
    open();
    choose("Lithium");
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter}) {
        type("full_V", "36");
        QTest::keyClick(fieldOf("full_V"), key);
        QVERIFY(wizard->isVisible());
        QVERIFY(child("editSettings")->isVisible());
        QCOMPARE(made->count(), 0);
        QCOMPARE(fieldOf("full_V")->text(), "36.0");
        QVERIFY(!button("editAdvanced")->isChecked());
    }
    for (const QPushButton *any : wizard->findChildren<QPushButton *>())
        QVERIFY2(!any->isDefault(), qPrintable(any->text()));
}

void NewProfileWizardTest::returnActsOnTheButtonWithTheFocus()
{
    open();
    button("Lead")->setFocus();
    QTest::keyClick(button("Lead"), Qt::Key_Return);
    QCOMPARE(child<QLabel>("subtitle")->text(), "Lead");
    button("finishButton")->setFocus();
    QTest::keyClick(button("finishButton"), Qt::Key_Enter);
    QCOMPARE(made->count(), 1);
}

void NewProfileWizardTest::tabGoesAsTheEyeDoes()
{
    open();
    choose("Nickel");
    QTest::mouseClick(button("backButton"), Qt::LeftButton);
    settle();
    choose("Lithium");
    QTest::mouseClick(button("editAdvanced"), Qt::LeftButton);
    fieldOf("title")->setFocus();

    const QStringList expected = {"Name",
                                  "Description",
                                  "Full Voltage",
                                  "Bulk Current",
                                  "Override Defaults",
                                  "Min Starting Voltage",
                                  "Start Current",
                                  "Bulk Start Voltage",
                                  "Charge Complete Current",
                                  "< Back",
                                  "Cancel",
                                  "Finish",
                                  "Name"};
    QStringList visited;
    for (int press = 0; press < expected.size(); ++press) {
        QWidget *at = QApplication::focusWidget();
        const auto *push = qobject_cast<const QPushButton *>(at);
        visited += push ? push->text() : at->accessibleName();
        QTest::keyClick(at, Qt::Key_Tab);
    }
    QCOMPARE(visited, expected);
}

void NewProfileWizardTest::chemistriesComeFromTheSchema()
{
    const WorkingDirectory folder;
    QFile master(VELANTOR_BUNDLE_MEMBERS "/master.ss");
    QVERIFY(master.open(QIODevice::ReadOnly));
    QByteArray text = master.readAll();
    text.replace("NUMPROFILETYPES 3", "NUMPROFILETYPES 8");
    const int lead = text.indexOf("struct chemistry_lead");
    const QByteArray leadStruct = text.mid(lead, text.indexOf("}", lead) + 1 - lead);
    for (const QByteArray &name : {QByteArray("Sodium"), QByteArray("Zinc"), QByteArray("Air"),
                                   QByteArray("Silver"), QByteArray(90, 'W')}) {
        QByteArray further = leadStruct;
        text += "\n" + further.replace("\"Lead\", chemistry", '"' + name + "\", chemistry") + "\n";
    }
    folder.write("own.ss", text);
    generator.parseSSFile("own.ss");
    open();
    QCOMPARE(child("setChem")->findChildren<QPushButton *>().size(), 8);
    wizard->grab();
    for (const QPushButton *chemistry : child("setChem")->findChildren<QPushButton *>()) {
        QVERIFY(chemistry->width() >= chemistry->sizeHint().width());
        QVERIFY(child("setChem")->rect().contains(chemistry->geometry()));
    }
    choose("Sodium");
    QCOMPARE(child<QLabel>("subtitle")->text(), "Sodium");
    button("finishButton")->click();
    QCOMPARE(profile()->chemistry, "Sodium");
}

void NewProfileWizardTest::longRecordIsScrolledTo()
{
    const WorkingDirectory folder;
    QFile master(VELANTOR_BUNDLE_MEMBERS "/master.ss");
    QVERIFY(master.open(QIODevice::ReadOnly));
    QByteArray text = master.readAll();
    const int end = text.indexOf("}", text.indexOf("struct chemistry_lead"));
    QByteArray further;
    for (int i = 7; i < 47; ++i) {
        further += "    unsigned char m" + QByteArray::number(i) +
                   "; // num, auto, 0, 9, *1, 0, \"" + QByteArray(60, 'W') + "\", \"Volts\", \"m" +
                   QByteArray::number(i) + "\", 1, " + QByteArray::number(i) +
                   (i % 2 ? ", basic\n" : ", advanced\n");
    }
    text.insert(end, further);
    folder.write("own.ss", text);
    generator.parseSSFile("own.ss");
    open();
    const QSize size = wizard->size();
    choose("Lead");
    QCOMPARE(wizard->size(), size);
    QTest::mouseClick(button("editAdvanced"), Qt::LeftButton);
    const auto fields = child<NewProfileEdit>("NewProfileEdit")->findChildren<SettingsLineEdit *>();
    QCOMPARE(fields.size(), 47);
    const auto *pages = wizard->findChild<QScrollArea *>();
    QTRY_VERIFY(pages->verticalScrollBar()->maximum() > 0);
    fieldOf("title")->setFocus();
    for (const SettingsLineEdit *field : fields) {
        if (field == fields.at(24)) // behind "Override Defaults"
            QTest::keyClick(wizard->focusWidget(), Qt::Key_Tab);
        QCOMPARE(wizard->focusWidget(), field);
        const QRect place(field->mapTo(pages->viewport(), QPoint(0, 0)), field->size());
        QVERIFY2(pages->viewport()->rect().intersects(place),
                 qPrintable(field->getSetting()->name));
        QTest::keyClick(wizard->focusWidget(), Qt::Key_Tab);
    }
    button("finishButton")->click();
    QCOMPARE(valueOf("m46"), "1");
}

void NewProfileWizardTest::recordWithoutVisibleSettings()
{
    ProfileSettings hidden;
    const auto record = schemaRecord(
        {"unsigned char type; // num, auto, 1, 1, *1, 0, \"t\", \"\", \"t\", 1, -1, basic"});
    hidden.structSettings = record.get();
    NewProfileEdit form(&generator, &hidden);
    form.focusFirstField();
    form.findChild<QPushButton *>("editAdvanced")->click();
    QVERIFY(record->getAdvancedSettingsEdited());
    QCOMPARE(form.minimumSize(), QSize(430, 510));
}

void NewProfileWizardTest::mnemonicsOfTheDesktopMeanNothing()
{
    open();
    button("Lithium")->setText("Li&thium");
    choose("Lithium");
    QCOMPARE(child<QLabel>("subtitle")->text(), "Lithium");
}

void NewProfileWizardTest::goneSchemaKeepsTheFirstStep()
{
    open();
    button("Lithium")->setObjectName("Gone");
    choose("Gone");
    QVERIFY(child("setChem")->isVisible());
    QVERIFY(!button("finishButton")->isEnabled());
    choose("Lead");
    button("finishButton")->click();
    QCOMPARE(profile()->chemistry, "Lead");
}

QTEST_MAIN(NewProfileWizardTest)
#include "tst_newprofilewizard.moc"
