#include "randomuser.h"

#include "SSGenerator/formula.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "profiles/profilename.h"
#include "profiles/profilesettings.h"
#include "support/filedialoganswer.h"

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScrollBar>
#include <QTest>

using HParser::SettingKind;
using HParser::StructSetting;
using HParser::StructSettings;

namespace
{
struct DeviceField {
    const char *label;
    const char *member;
    double highest;
};
constexpr DeviceField deviceNumbers[] = {
    {"Brightness", "brightness", 9},
    {"Screensaver Delay", "screensaver_delay_m", 240},
    {"Longpress Time", "longpress_time_cs", 2},
    {"Cable Resistance", "cable_resistance_mOhm", 0.999},
    {"Current Tare Period", "current_tare_period_minutes", 255},
};
constexpr DeviceField deviceSwitch{"Rotate Display", "flip_display", 1};

StructSettings *recordOf(const SuiteStory &story, int row)
{
    return story.row(row)->getProfileSettings()->structSettings;
}

/// What closed goes in the event loop, which runs between any two deeds of a user.
void letItHappen()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QString asNumber(const QString &text)
{
    return QString::number(text.toDouble(), 'g', 6);
}
} // namespace

RandomUser::RandomUser(SuiteStory *story, Dice *dice, Diary *diary)
    : story(story), dice(dice), diary(diary)
{
}

void RandomUser::answer(QMessageBox::StandardButton button)
{
    story->boxes.push([button](QMessageBox *box) {
        if (QAbstractButton *found = box->button(button))
            found->click();
        else
            box->close();
    });
}

void RandomUser::answer(const QString &buttonText)
{
    story->boxes.push(buttonText);
}

QStringList RandomUser::takeBoxes()
{
    const QStringList titles = story->boxes.titles();
    for (const QString &title : titles)
        ++seen[title];
    story->boxes.clear();
    letItHappen();
    return titles;
}

void RandomUser::changeSomething()
{
    const int rows = story->list()->count();
    if (rows == 0 || (rows < 6 && dice->chance(30))) {
        makeProfile();
        return;
    }
    const int what = dice->below(100);
    if (what < 45)
        editProfile();
    else if (what < 57)
        makeProfile();
    else if (what < 70)
        moveRow();
    else if (what < 78)
        pressInRow("activeProfileButton");
    else if (what < 84)
        pressInRow("defaultProfileButton");
    else if (what < 95)
        deleteRow(anyRow(), dice->chance(70));
    else if (what < 97)
        deleteAll();
    else
        openInVain();
    takeBoxes();
}

void RandomUser::select(int row)
{
    story->list()->scrollToItem(story->list()->item(row));
    story->select(row);
}

void RandomUser::enter(const QString &field, const QString &text)
{
    const QByteArray name = field.toUtf8();
    story->type(name.constData(), text.isEmpty() ? QStringLiteral("x") : text);
    if (text.isEmpty())
        QTest::keyClick(story->field(name.constData()), Qt::Key_Backspace);
    QTest::keyClick(story->field(name.constData()), Qt::Key_Tab);
}

/// Characters that a charger's field can hold.
QString RandomUser::anyText(int longest)
{
    QString text;
    for (int size = dice->below(longest + 1); text.size() < size;)
        text.append(QChar(' ' + dice->below('~' - ' ' + 1)));
    return text;
}

QString RandomUser::anyNumber(double highest)
{
    switch (dice->below(12)) {
    case 0:
        return QStringLiteral("0");
    case 1:
        return QStringLiteral("-3");
    case 2:
        return QStringLiteral("99999");
    default:
        return QString::number(highest * 1.1 * dice->below(10001) / 10000, 'f', dice->below(3));
    }
}

void RandomUser::checkShown(const StructSetting *setting)
{
    const QString shown = story->shown(setting->descriptiveName.toUtf8().constData());
    const bool same = setting->settingKind == SettingKind::Num
                          ? asNumber(shown) == asNumber(setting->getValue())
                          : shown == setting->getValue();
    if (!same)
        diary->broken(QStringLiteral("the field %1 shows %2 and holds %3")
                          .arg(setting->descriptiveName, shown, setting->getValue()));
}

void RandomUser::changeField(const StructSetting *setting)
{
    const QString &name = setting->descriptiveName;
    const QWidget *field = story->field(name.toUtf8().constData());
    if (!field) {
        diary->broken(QStringLiteral("there is no field %1").arg(name));
        return;
    }
    if (!field->isEnabled())
        return;
    if (setting->settingKind == SettingKind::Bool) {
        story->tick(name.toUtf8().constData());
        diary->note(QStringLiteral("tick ") + name);
        return;
    }
    const QString number = anyNumber(setting->upperBound->toDouble());
    enter(name, number);
    diary->note(QStringLiteral("%1 = %2").arg(name, number));
    checkShown(setting);
}

void RandomUser::overrideDefaults()
{
    story->press("editAdvanced");
    diary->note(QStringLiteral("override"));
}

void RandomUser::editProfile()
{
    const int row = anyRow();
    select(row);
    diary->note(QStringLiteral("edit %1").arg(row));
    auto *edit = story->widget<QAbstractButton>("editProfileButton");
    if (!edit->isChecked())
        story->press("editProfileButton");
    if (dice->chance(40)) {
        const QString text = anyText(14);
        enter(QStringLiteral("Profile name"), text);
        diary->note(QStringLiteral("name = ") + text);
        const QString taken =
            recordOf(*story, row)->getStructSettingByName(QStringLiteral("title"))->getValue();
        if (taken != text.left(11))
            diary->broken(QStringLiteral("\"%1\" became the name \"%2\"").arg(text, taken));
    }
    if (dice->chance(20)) {
        const QString text = anyText(16);
        enter(QStringLiteral("Profile description"), text);
        diary->note(QStringLiteral("description = ") + text);
    }
    if (dice->chance(25))
        overrideDefaults();
    if (dice->chance(15))
        story->press("profileActiveButton");
    if (dice->chance(10))
        story->press("profileDefaultButton");
    if (dice->chance(15))
        story->press("profileModifiableButton");
    // The first two are the name and the description.
    const QList<StructSetting *> shown = recordOf(*story, row)->getStructSettings().mid(2);
    for (int changes = dice->below(5); changes > 0; --changes)
        changeField(dice->pick(shown));

    const int end = dice->below(10);
    if (end < 6) {
        story->press("editProfileButton");
        diary->note(QStringLiteral("done"));
    } else if (end < 8) {
        story->press("cancelChangesButton");
        diary->note(QStringLiteral("cancel"));
    }
}

QString RandomUser::startTypingName(int row)
{
    select(row);
    if (!story->widget<QAbstractButton>("editProfileButton")->isChecked())
        story->press("editProfileButton");
    const QString text = QStringLiteral("Unfinished%1").arg(dice->below(10));
    story->type("Profile name", text);
    diary->note(QStringLiteral("typing a name of %1").arg(row));
    return text;
}

void RandomUser::makeProfile()
{
    static const QStringList chemistries{QStringLiteral("Nickel"), QStringLiteral("Lead"),
                                         QStringLiteral("Lithium")};
    const int before = story->list()->count();
    story->press("addProfileButton");
    if (dice->chance(10)) {
        story->press(dice->pick(chemistries).toUtf8().constData());
        story->press("backButton");
        letItHappen();
    }
    const QString chemistry = dice->pick(chemistries);
    diary->note(QStringLiteral("new ") + chemistry);
    story->press(chemistry.toUtf8().constData());
    if (dice->chance(70))
        enter(QStringLiteral("Name"), anyText(14));
    if (dice->chance(50))
        enter(QStringLiteral("Bulk Current"), anyNumber(10));
    if (dice->chance(25)) {
        overrideDefaults();
        if (story->field("Start Current"))
            enter(QStringLiteral("Start Current"), anyNumber(2));
    }
    const bool really = dice->chance(85);
    story->press(really ? "finishButton" : "cancelButton");
    if (!QTest::qWaitFor([] { return !SuiteStory::dialog(); }, PATIENCE))
        diary->broken(QStringLiteral("the wizard stays"));
    letItHappen();
    made += really ? 1 : 0;
    if (story->list()->count() != before + (really ? 1 : 0))
        diary->broken(QStringLiteral("the wizard made %1 rows of %2")
                          .arg(story->list()->count())
                          .arg(before));
}

void RandomUser::moveRow()
{
    const int row = anyRow();
    const bool up = dice->chance(50);
    diary->note(QStringLiteral("move %1 %2").arg(row).arg(up ? "up" : "down"));
    QList<Values> expected = profilesInList(*story);
    const int place = qBound(0, up ? row - 1 : row + 1, expected.size() - 1);
    expected.move(row, place);
    select(row);
    story->press(up ? "profileNameUpButton" : "profileNameDownButton");
    const QStringList ids{QStringLiteral("profile_id"), QStringLiteral("stats.profile_id")};
    diary->broken(QStringLiteral("moved"), differences(expected, profilesInList(*story), ids));
}

void RandomUser::pressInRow(const char *button)
{
    const int row = anyRow();
    diary->note(QStringLiteral("%1 of %2").arg(QLatin1String(button)).arg(row));
    story->list()->scrollToItem(story->list()->item(row));
    QTest::mouseClick(story->row(row)->findChild<QAbstractButton *>(QLatin1String(button)),
                      Qt::LeftButton);
}

void RandomUser::deleteRow(int row, bool really)
{
    diary->note(QStringLiteral("delete %1%2").arg(row).arg(really ? "" : ", no"));
    const int before = story->list()->count();
    answer(really ? QMessageBox::Yes : QMessageBox::No);
    QTest::mouseClick(
        story->row(row)->findChild<QAbstractButton *>(QStringLiteral("deleteProfileButton")),
        Qt::LeftButton);
    if (story->list()->count() != before - (really ? 1 : 0))
        diary->broken(
            QStringLiteral("%1 of %2 rows are left").arg(story->list()->count()).arg(before));
}

void RandomUser::deleteDownTo(int rows)
{
    while (story->list()->count() > rows)
        deleteRow(story->list()->count() - 1, true);
}

void RandomUser::deleteAll()
{
    const bool really = dice->chance(50);
    diary->note(QStringLiteral("delete all%1").arg(really ? "" : ", no"));
    const int before = story->list()->count();
    answer(really ? QMessageBox::Yes : QMessageBox::No);
    story->press("deleteAllProfiles");
    if (story->list()->count() != (really ? 0 : before))
        diary->broken(
            QStringLiteral("%1 of all %2 rows are left").arg(story->list()->count()).arg(before));
}

void RandomUser::openInVain()
{
    switch (dice->below(6)) {
    case 0:
        diary->note(QStringLiteral("wizard, cancel"));
        story->press("addProfileButton");
        QTest::keyClick(SuiteStory::dialog(), Qt::Key_Escape);
        break;
    case 1: {
        diary->note(QStringLiteral("load, cancel"));
        const FileDialogAnswer none{QString()};
        story->press("openProfilesXML");
        break;
    }
    case 2: {
        diary->note(QStringLiteral("save, cancel"));
        const FileDialogAnswer none{QString()};
        story->press("saveProfilesXML");
        break;
    }
    case 3:
        diary->note(QStringLiteral("about"));
        story->action("actionAbout")->trigger();
        break;
    case 4:
        if (story->isConnected()) {
            diary->note(QStringLiteral("statistics"));
            story->action("actionAboutDevice")->trigger();
            story->press("&OK");
        }
        break;
    default:
        diary->note(QStringLiteral("help"));
        story->action("actionHelp_2")->trigger();
        break;
    }
    if (!QTest::qWaitFor([] { return !SuiteStory::dialog(); }, PATIENCE))
        diary->broken(QStringLiteral("a cancelled dialog stays"));
}

Values RandomUser::changeDeviceSettings()
{
    story->press("viewDeviceSettings");
    diary->note(QStringLiteral("device settings"));
    for (int changes = 1 + dice->below(3); changes > 0; --changes) {
        const int which = dice->below(int(std::size(deviceNumbers)) + 1);
        if (which == int(std::size(deviceNumbers))) {
            story->tick(deviceSwitch.label);
            diary->note(QStringLiteral("rotate"));
            continue;
        }
        const DeviceField &field = deviceNumbers[which];
        const QString number = anyNumber(field.highest);
        enter(QLatin1String(field.label), number);
        diary->note(QStringLiteral("%1 = %2").arg(QLatin1String(field.label), number));
    }
    return shownSettings();
}

Values RandomUser::shownSettings() const
{
    Values shown;
    for (const DeviceField &field : deviceNumbers)
        shown.insert(QLatin1String(field.member), asNumber(story->shown(field.label)));
    const bool rotated = story->shown(deviceSwitch.label) == QLatin1String("on");
    shown.insert(QLatin1String(deviceSwitch.member),
                 rotated ? QStringLiteral("true") : QStringLiteral("false"));
    return shown;
}

void RandomUser::cancelDeviceSettings()
{
    story->press("cancelChangesButton");
    diary->note(QStringLiteral("cancel"));
}

void RandomUser::loadDefaultSettings()
{
    story->press("resetDefaults");
    diary->note(QStringLiteral("load defaults"));
}

void RandomUser::leaveDeviceSettings()
{
    story->press("viewDeviceSettings");
}

void RandomUser::saveFile(const QString &path, bool withSettings)
{
    diary->note(QStringLiteral("save ") + QFileInfo(path).fileName());
    answer(QMessageBox::Yes); // the file may be there already
    const FileDialogAnswer dialog(path);
    story->action(withSettings ? "actionExportXMLProfilesAndSettings" : "actionExportXMLProfiles")
        ->trigger();
    if (!dialog.asked || !QFile::exists(path))
        diary->broken(QStringLiteral("the file was not saved"));
    takeBoxes();
}

void RandomUser::loadFile(const QString &path, bool replace)
{
    diary->note(
        QStringLiteral("%1 %2").arg(replace ? "replace by" : "add", QFileInfo(path).fileName()));
    if (story->list()->count() > 0)
        answer(replace ? QStringLiteral("&Replace Profiles") : QStringLiteral("&Add Profiles"));
    const FileDialogAnswer dialog(path);
    story->action("actionImportXML")->trigger();
    if (!dialog.asked)
        diary->broken(QStringLiteral("no file was asked for"));
}

void RandomUser::chooseModel()
{
    static const QStringList models{QStringLiteral("24V"), QStringLiteral("48V"),
                                    QStringLiteral("72V")};
    const QString wanted = dice->pick(models);
    const bool accept = dice->chance(60);
    diary->note(QStringLiteral("model %1%2").arg(wanted, accept ? "" : ", unless profiles go"));
    const QString before = story->model()->currentText();
    const QList<Values> rows = profilesInList(*story);
    answer(accept ? QMessageBox::Yes : QMessageBox::No);
    story->choose(wanted);
    takeBoxes();
    if (story->model()->currentText() == wanted)
        return;
    if (accept || story->model()->currentText() != before)
        diary->broken(QStringLiteral("the model is ") + story->model()->currentText());
    diary->broken(QStringLiteral("kept model"), differences(rows, profilesInList(*story)));
}
