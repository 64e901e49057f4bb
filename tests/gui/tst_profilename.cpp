#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "profiles/profilename.h"
#include "profiles/profilenamelistwidget.h"
#include "profiles/profilesettings.h"

#include <QEvent>
#include <QHelpEvent>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>

#include <memory>

using HParser::StructSetting;

Q_DECLARE_METATYPE(ProfileName *)

class ProfileNameTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void form_data();
    void form();
    void freshRow();
    void rowClearsBothFlagsSilently();
    void activeLook();
    void defaultLook();
    void clicksOnlyAsk_data();
    void clicksOnlyAsk();
    void deleteAsks();
    void highlights();
    void rowBackgroundIsPainted();
    void pointerChangesOnlyTheDeleteButton();
    void toolTipsAreReadable_data();
    void toolTipsAreReadable();
    void titleIsPlainText();
    void titleAndDescriptionFollow();

    void plainTitleWithoutOriginals();
    void marksChanges();
    void marksHiddenMembers();
    void endsMarking();
    void originalsAreACopy();

    void restoresBackup();
    void restoresOverrideState_data();
    void restoresOverrideState();
    void restoresValuesBehindTheirBounds();
    void restoresTheLastBackup();
    void restoreWithoutBackup();
    void restoredFlagsShowAndAreAskedFor();

    void clones();
    void cloneGoesOnWithTheEdit();
    void cloneKeepsTheOverrideToGoBackTo();
    void placesRows();
    void removedRowGoesWithItsItem();
    void unplacedItemTakesItsRow();
    void listTakesAllRows();

private:
    StructSetting *member(const char *name) const
    {
        return profile.structSettings->getStructSettingByName(QLatin1String(name));
    }
    ProfileName *row() const { return item->profileName; }
    template <class Widget> Widget *child(const char *name) const
    {
        return row()->findChild<Widget *>(QLatin1String(name));
    }

    HParser::Generator generator;
    ProfileSettings profile;
    std::unique_ptr<ProfileNameListWidget> item;
};

namespace
{

const QString greenLight = QStringLiteral(":/new/images/greenlight.PNG");
const QString noLight = QStringLiteral(":/new/images/nolight.PNG");
const QString black = QStringLiteral("color: black; border:none;");
const QString grey = QStringLiteral("color: rgb(170,170,170); border:none;");
const QString red = QStringLiteral("color: rgb(255,0,0); border:none;");
const QString paleGrey = QStringLiteral("color: rgb(180,180,180); border:none;");

bool shows(const QPushButton *button, const QString &picture)
{
    const QImage expected = QIcon(picture).pixmap(16, 16).toImage();
    return !expected.isNull() && button->icon().pixmap(16, 16).toImage() == expected;
}

/// An item that says when it goes.
class WatchedItem : public ProfileNameListWidget
{
public:
    WatchedItem(ProfileSettings *settings, int *gone) : ProfileNameListWidget(settings), gone(gone)
    {
    }
    ~WatchedItem() override { ++*gone; }

private:
    int *gone;
};

} // namespace

void ProfileNameTest::initTestCase()
{
    qRegisterMetaType<ProfileName *>();
    generator.parseSSFile(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/master.ss"));
}

void ProfileNameTest::init()
{
    profile = ProfileSettings();
    QVERIFY(profile.initializeStructSettings(QStringLiteral("Lithium"), &generator));
    member("title")->setValue(QStringLiteral("Commuter"));
    member("description")->setValue(QStringLiteral("14s to 80%"));
    item = std::make_unique<ProfileNameListWidget>(&profile);
}

void ProfileNameTest::cleanup()
{
    item.reset();
}

void ProfileNameTest::form_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QRect>("geometry");
    QTest::addColumn<int>("points");
    QTest::addColumn<bool>("bold");
    QTest::addColumn<QString>("text");
    QTest::newRow("title") << QStringLiteral("profileTitle") << QRect(2, 5, 111, 20) << 10 << true
                           << QStringLiteral("Commuter");
    QTest::newRow("subtitle") << QStringLiteral("profileSubtitle") << QRect(2, 25, 111, 16) << 10
                              << false << QStringLiteral("14s to 80%");
    QTest::newRow("line") << QStringLiteral("line") << QRect(103, 8, 5, 30) << 0 << false
                          << QString();
    QTest::newRow("active") << QStringLiteral("activeProfileButton") << QRect(115, 15, 16, 16) << 0
                            << false << QStringLiteral("");
    QTest::newRow("default") << QStringLiteral("defaultProfileButton") << QRect(137, 13, 20, 20)
                             << 12 << false << QStringLiteral("D");
    QTest::newRow("delete") << QStringLiteral("deleteProfileButton") << QRect(160, 13, 16, 16) << 11
                            << true << QStringLiteral("x");
}

void ProfileNameTest::form()
{
    QFETCH(QString, name);
    QFETCH(int, points);
    QFETCH(QString, text);
    QCOMPARE(row()->size(), QSize(184, 46));
    auto *widget = row()->findChild<QWidget *>(name);
    QVERIFY(widget);
    QTEST(widget->geometry(), "geometry");
    if (points > 0) {
        QCOMPARE(widget->font().pointSize(), points);
        QCOMPARE(widget->font().family(), QStringLiteral("Sans"));
        QTEST(widget->font().bold(), "bold");
    }
    if (!text.isNull())
        QCOMPARE(widget->property("text").toString(), text);
}

void ProfileNameTest::freshRow()
{
    QCOMPARE(item->sizeHint(), QSize(0, 46));
    QCOMPARE(row()->getListItem(), item.get());
    QCOMPARE(row()->getProfileSettings(), &profile);
    QCOMPARE(row()->getTitle(), QStringLiteral("Commuter"));
    QCOMPARE(row()->getSubtitle(), QStringLiteral("14s to 80%"));
    QVERIFY(!row()->isEditing());
    QVERIFY(!row()->getOriginalValues());
    QVERIFY(!item->listWidget());

    auto *active = child<QPushButton>("activeProfileButton");
    QCOMPARE(active->styleSheet(), QStringLiteral("border:none;"));
    QCOMPARE(active->iconSize(), QSize(16, 16));
    QVERIFY(shows(active, noLight));
    QCOMPARE(active->toolTip(), QStringLiteral("Not Active"));
    auto *isDefault = child<QPushButton>("defaultProfileButton");
    QCOMPARE(isDefault->styleSheet(), grey);
    QCOMPARE(isDefault->toolTip(), QStringLiteral("Not Default"));
    auto *remove = child<QPushButton>("deleteProfileButton");
    QCOMPARE(remove->styleSheet(), paleGrey);
    QCOMPARE(remove->toolTip(), QStringLiteral("Delete Profile"));
    for (const QPushButton *button : {active, isDefault, remove}) {
        QCOMPARE(button->cursor().shape(), Qt::PointingHandCursor);
        QVERIFY(!button->accessibleName().isEmpty());
    }

    ProfileName bare(nullptr);
    QCOMPARE(bare.getTitle(), QStringLiteral("Title"));
    QCOMPARE(bare.getSubtitle(), QStringLiteral("Subtitle"));
    QVERIFY(!bare.getProfileSettings());
}

void ProfileNameTest::rowClearsBothFlagsSilently()
{
    member("active")->setValue(true);
    member("defaultprofile")->setValue(true);
    QSignalSpy activeChanges(member("active"), &StructSetting::valueChanged);
    QSignalSpy defaultChanges(member("defaultprofile"), &StructSetting::valueChanged);

    const ProfileNameListWidget other(&profile);
    QVERIFY(!other.profileName->getActiveStatus());
    QVERIFY(!other.profileName->getDefaultStatus());
    QCOMPARE(member("active")->getValue(), QStringLiteral("false"));
    QCOMPARE(member("defaultprofile")->getValue(), QStringLiteral("false"));
    QCOMPARE(activeChanges.count(), 0);
    QCOMPARE(defaultChanges.count(), 0);
}

void ProfileNameTest::activeLook()
{
    auto *button = child<QPushButton>("activeProfileButton");
    QSignalSpy changes(member("active"), &StructSetting::valueChanged);
    // Whoever hears of the change finds the row showing it.
    QStringList looks;
    connect(member("active"), &StructSetting::valueChanged, button,
            [&] { looks.append(button->toolTip()); });
    row()->setActive(true);
    QVERIFY(shows(button, greenLight));
    QCOMPARE(button->toolTip(), QStringLiteral("Active"));
    QCOMPARE(member("active")->getValue(), QStringLiteral("true"));
    QVERIFY(row()->getActiveStatus());
    row()->setActive(true);
    QCOMPARE(changes.count(), 1);

    row()->setActive(false);
    QVERIFY(shows(button, noLight));
    QCOMPARE(button->toolTip(), QStringLiteral("Not Active"));
    QVERIFY(!row()->getActiveStatus());
    QCOMPARE(changes.count(), 2);
    QCOMPARE(looks, QStringList({QStringLiteral("Active"), QStringLiteral("Not Active")}));
    QCOMPARE(button->styleSheet(), QStringLiteral("border:none;"));
}

void ProfileNameTest::defaultLook()
{
    auto *button = child<QPushButton>("defaultProfileButton");
    QSignalSpy changes(member("defaultprofile"), &StructSetting::valueChanged);
    QStringList looks;
    connect(member("defaultprofile"), &StructSetting::valueChanged, button,
            [&] { looks.append(button->toolTip()); });
    row()->setDefault(true);
    QCOMPARE(button->styleSheet(), black);
    QCOMPARE(button->toolTip(), QStringLiteral("Default"));
    QCOMPARE(member("defaultprofile")->getValue(), QStringLiteral("true"));
    QVERIFY(row()->getDefaultStatus());
    QVERIFY(!row()->getActiveStatus());

    row()->setDefault(false);
    QCOMPARE(button->styleSheet(), grey);
    QCOMPARE(button->toolTip(), QStringLiteral("Not Default"));
    QVERIFY(!row()->getDefaultStatus());
    QCOMPARE(changes.count(), 2);
    QCOMPARE(looks, QStringList({QStringLiteral("Default"), QStringLiteral("Not Default")}));
}

void ProfileNameTest::clicksOnlyAsk_data()
{
    QTest::addColumn<bool>("state");
    QTest::newRow("on") << true;
    QTest::newRow("off") << false;
}

void ProfileNameTest::clicksOnlyAsk()
{
    QFETCH(bool, state);
    row()->setActive(state);
    row()->setDefault(state);
    QSignalSpy activeAsked(row(), &ProfileName::activeStatusChangeRequest);
    QSignalSpy defaultAsked(row(), &ProfileName::defaultStatusChangeRequest);

    QTest::mouseClick(child<QPushButton>("activeProfileButton"), Qt::LeftButton);
    QCOMPARE(activeAsked.count(), 1);
    QCOMPARE(activeAsked.first().at(0).value<ProfileName *>(), row());
    QCOMPARE(activeAsked.first().at(1).toBool(), !state);
    QCOMPARE(row()->getActiveStatus(), state);
    QCOMPARE(defaultAsked.count(), 0);

    QTest::mouseClick(child<QPushButton>("defaultProfileButton"), Qt::LeftButton);
    QCOMPARE(defaultAsked.count(), 1);
    QCOMPARE(defaultAsked.first().at(0).value<ProfileName *>(), row());
    QCOMPARE(defaultAsked.first().at(1).toBool(), !state);
    QCOMPARE(row()->getDefaultStatus(), state);
    QCOMPARE(activeAsked.count(), 1);
}

void ProfileNameTest::deleteAsks()
{
    QSignalSpy asked(row(), &ProfileName::deleteMeSignal);
    QTest::mouseClick(child<QPushButton>("deleteProfileButton"), Qt::LeftButton);
    QCOMPARE(asked.count(), 1);
    QCOMPARE(asked.first().at(0).value<ProfileName *>(), row());
}

void ProfileNameTest::highlights()
{
    row()->highlight();
    QCOMPARE(row()->styleSheet(), QStringLiteral("background-color:rgb(200,200,200);"));
    for (const char *name : {"profileTitle", "profileSubtitle"})
        QVERIFY(child<QLabel>(name)->font().italic());
    QVERIFY(child<QLabel>("profileTitle")->font().bold());

    row()->dehighlight();
    QCOMPARE(row()->styleSheet(), QStringLiteral("background-color:rgb(255,255,255);"));
    for (const char *name : {"profileTitle", "profileSubtitle"}) {
        QVERIFY(!child<QLabel>(name)->font().italic());
        QCOMPARE(child<QLabel>(name)->font().pointSize(), 10);
    }
    QVERIFY(child<QLabel>("profileTitle")->font().bold());
}

void ProfileNameTest::rowBackgroundIsPainted()
{
    const QPoint besideAllChildren(178, 2);
    row()->highlight();
    QCOMPARE(row()->grab().toImage().pixelColor(besideAllChildren), QColor(200, 200, 200));
    row()->dehighlight();
    QCOMPARE(row()->grab().toImage().pixelColor(besideAllChildren), QColor(255, 255, 255));
}

void ProfileNameTest::pointerChangesOnlyTheDeleteButton()
{
    row()->highlight();
    const auto others = [this] {
        return QStringList({row()->styleSheet(),
                            child<QWidget>("activeProfileButton")->styleSheet(),
                            child<QWidget>("defaultProfileButton")->styleSheet(),
                            child<QWidget>("profileTitle")->styleSheet(), row()->getTitle()});
    };
    const QStringList before = others();
    auto *remove = child<QPushButton>("deleteProfileButton");

    QEvent enter(QEvent::Enter);
    QCoreApplication::sendEvent(row(), &enter);
    QCOMPARE(remove->styleSheet(), red);
    QCOMPARE(others(), before);
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(row(), &leave);
    QCOMPARE(remove->styleSheet(), paleGrey);
    QCOMPARE(others(), before);
}

void ProfileNameTest::toolTipsAreReadable_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("text");
    QTest::newRow("lamp") << "activeProfileButton"
                          << "Not Active";
    QTest::newRow("default mark") << "defaultProfileButton"
                                  << "Not Default";
    QTest::newRow("delete control") << "deleteProfileButton"
                                    << "Delete Profile";
}

void ProfileNameTest::toolTipsAreReadable()
{
    QFETCH(QString, button);
    QFETCH(QString, text);
    auto *widget = child<QWidget>(qPrintable(button));
    const QPoint middle(8, 8);
    QHelpEvent help(QEvent::ToolTip, middle, widget->mapToGlobal(middle));
    QCoreApplication::sendEvent(widget, &help);
    QCOMPARE(QToolTip::text(), text);

    const auto windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (!window->inherits("QTipLabel") || !window->isVisible())
            continue;
        const QImage shown = window->grab().toImage();
        int darkest = 255;
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x)
                darkest = qMin(darkest, shown.pixelColor(x, y).value());
        }
        QVERIFY(darkest < 60);
        QToolTip::hideText();
        return;
    }
    QFAIL("there is no tooltip");
}

void ProfileNameTest::titleIsPlainText()
{
    row()->setTitle(QStringLiteral("<b>A</b>&B"));
    row()->setSubtitle(QStringLiteral("<i>"));
    QCOMPARE(row()->getTitle(), QStringLiteral("<b>A</b>&B"));
    QCOMPARE(row()->getSubtitle(), QStringLiteral("<i>"));
    QCOMPARE(child<QLabel>("profileTitle")->textFormat(), Qt::PlainText);
    QCOMPARE(child<QLabel>("profileSubtitle")->textFormat(), Qt::PlainText);
}

void ProfileNameTest::titleAndDescriptionFollow()
{
    member("title")->setValue(QStringLiteral("New"));
    member("description")->setValue(QStringLiteral("Text"));
    QCOMPARE(row()->getTitle(), QStringLiteral("Commuter"));
    row()->updateTitle();
    QCOMPARE(row()->getTitle(), QStringLiteral("New"));
    QCOMPARE(row()->getSubtitle(), QStringLiteral("14s to 80%"));
    row()->updateDescription();
    QCOMPARE(row()->getSubtitle(), QStringLiteral("Text"));
}

void ProfileNameTest::plainTitleWithoutOriginals()
{
    member("title")->setValue(QStringLiteral("New"));
    member("description")->setValue(QStringLiteral("Text"));
    row()->setTitle(QStringLiteral("Old**"));
    row()->settingValueChanged();
    QCOMPARE(row()->getTitle(), QStringLiteral("New"));
    QCOMPARE(row()->getSubtitle(), QStringLiteral("Text"));
}

void ProfileNameTest::marksChanges()
{
    row()->saveCurrentValuesAsOriginal();
    row()->settingValueChanged();
    QCOMPARE(row()->getTitle(), QStringLiteral("Commuter"));

    member("bulk_I")->setValue(3.5);
    row()->settingValueChanged();
    QCOMPARE(row()->getTitle(), QStringLiteral("Commuter**"));
    row()->settingValueChanged();
    QCOMPARE(row()->getTitle(), QStringLiteral("Commuter**"));

    member("bulk_I")->setValue(4.0);
    row()->settingValueChanged();
    QCOMPARE(row()->getTitle(), QStringLiteral("Commuter"));

    member("title")->setValue(QStringLiteral("Racer"));
    row()->settingValueChanged();
    QCOMPARE(row()->getTitle(), QStringLiteral("Racer**"));
    member("title")->setValue(QStringLiteral("Commuter"));
    member("description")->setValue(QStringLiteral("Other"));
    row()->settingValueChanged();
    QCOMPARE(row()->getTitle(), QStringLiteral("Commuter**"));
    QCOMPARE(row()->getSubtitle(), QStringLiteral("Other"));
}

void ProfileNameTest::marksHiddenMembers()
{
    row()->saveCurrentValuesAsOriginal();
    row()->setActive(true);
    row()->settingValueChanged();
    QCOMPARE(row()->getTitle(), QStringLiteral("Commuter**"));
}

void ProfileNameTest::endsMarking()
{
    row()->saveCurrentValuesAsOriginal();
    member("bulk_I")->setValue(3.5);
    row()->removeOriginalValues();
    QVERIFY(!row()->getOriginalValues());
    row()->settingValueChanged();
    QCOMPARE(row()->getTitle(), QStringLiteral("Commuter"));
}

void ProfileNameTest::originalsAreACopy()
{
    row()->saveCurrentValuesAsOriginal();
    QVERIFY(row()->getOriginalValues());
    QVERIFY(row()->getOriginalValues() != profile.structSettings);
    member("bulk_I")->setValue(1.0);
    QCOMPARE(
        row()->getOriginalValues()->getStructSettingByName(QStringLiteral("bulk_I"))->getValue(),
        QStringLiteral("4"));
}

void ProfileNameTest::restoresBackup()
{
    row()->saveBackups();
    member("title")->setValue(QStringLiteral("Edited"));
    member("description")->setValue(QString());
    member("bulk_I")->setValue(1.5);
    member("full_V")->setValue(50.0);
    row()->setActive(true);
    member("modifiable")->setValue(false);

    QSignalSpy told(member("modifiable"), &StructSetting::valueChanged);
    row()->restoreBackup();
    QCOMPARE(told.count(), 1);
    QCOMPARE(member("title")->getValue(), QStringLiteral("Commuter"));
    QCOMPARE(member("description")->getValue(), QStringLiteral("14s to 80%"));
    QCOMPARE(member("bulk_I")->getValue(), QStringLiteral("4"));
    QCOMPARE(member("full_V")->getValue(), QStringLiteral("42"));
    QCOMPARE(member("active")->getValue(), QStringLiteral("false"));
    QCOMPARE(member("modifiable")->getValue(), QStringLiteral("true"));
    // 70 % of the full voltage again.
    QCOMPARE(member("bulk_start_V")->getValue(), QStringLiteral("29.4"));
}

void ProfileNameTest::restoresOverrideState_data()
{
    QTest::addColumn<bool>("edited");
    QTest::newRow("with override") << true;
    QTest::newRow("without override") << false;
}

void ProfileNameTest::restoresOverrideState()
{
    QFETCH(bool, edited);
    profile.structSettings->setAdvancedSettingsEdited(edited);
    for (StructSetting *setting : profile.structSettings->getOriginalOrderStructSettings())
        setting->enableAdvancedMode(edited);
    const QString before = edited ? QStringLiteral("0.35") : QStringLiteral("0.2");
    member("start_I")->setValue(0.35);
    QCOMPARE(member("start_I")->getValue(), before);
    row()->saveBackups();

    profile.structSettings->setAdvancedSettingsEdited(!edited);
    for (StructSetting *setting : profile.structSettings->getOriginalOrderStructSettings())
        setting->enableAdvancedMode(!edited);
    member("start_I")->setValue(0.6);
    member("bulk_I")->setValue(3.0);

    // The state comes before the values, which it opens or closes.
    QString valueAtSignal;
    connect(profile.structSettings, &HParser::StructSettings::advancedEditedChanged, row(),
            [&] { valueAtSignal = member("bulk_I")->getValue(); });
    row()->restoreBackup();
    QCOMPARE(valueAtSignal, QStringLiteral("3"));
    QCOMPARE(member("bulk_I")->getValue(), QStringLiteral("4"));
    QCOMPARE(profile.structSettings->getAdvancedSettingsEdited(), edited);
    QCOMPARE(member("start_I")->getValue(), before);
    for (const StructSetting *setting : profile.structSettings->getOriginalOrderStructSettings())
        QCOMPARE(setting->advancedEnabled, edited);
}

/// The bulk start voltage lies in the record before the full voltage, its upper bound.
void ProfileNameTest::restoresValuesBehindTheirBounds()
{
    profile.structSettings->setAdvancedSettingsEdited(true);
    for (StructSetting *setting : profile.structSettings->getOriginalOrderStructSettings())
        setting->enableAdvancedMode(true);
    member("full_V")->setValue(60.0);
    member("bulk_start_V")->setValue(55.0);
    member("min_start_V")->setValue(54.0);
    row()->saveBackups();

    member("full_V")->setValue(20.0);
    QCOMPARE(member("bulk_start_V")->getValue(), QStringLiteral("20"));
    QCOMPARE(member("min_start_V")->getValue(), QStringLiteral("18"));
    row()->restoreBackup();
    QCOMPARE(member("full_V")->getValue(), QStringLiteral("60"));
    QCOMPARE(member("bulk_start_V")->getValue(), QStringLiteral("55"));
    QCOMPARE(member("min_start_V")->getValue(), QStringLiteral("54"));
}

void ProfileNameTest::restoresTheLastBackup()
{
    row()->saveBackups();
    member("bulk_I")->setValue(3.0);
    row()->saveBackups();
    member("bulk_I")->setValue(2.0);
    row()->restoreBackup();
    QCOMPARE(member("bulk_I")->getValue(), QStringLiteral("3"));
    member("bulk_I")->setValue(1.0);
    row()->restoreBackup();
    QCOMPARE(member("bulk_I")->getValue(), QStringLiteral("3"));
}

void ProfileNameTest::restoreWithoutBackup()
{
    member("bulk_I")->setValue(1.0);
    row()->restoreBackup();
    QCOMPARE(member("bulk_I")->getValue(), QStringLiteral("1"));
}

void ProfileNameTest::restoredFlagsShowAndAreAskedFor()
{
    row()->setActive(true);
    row()->setDefault(true);
    row()->saveBackups();
    QSignalSpy actives(row(), &ProfileName::activeStatusChangeRequest);
    QSignalSpy defaults(row(), &ProfileName::defaultStatusChangeRequest);
    row()->restoreBackup();
    QCOMPARE(actives.count() + defaults.count(), 0);

    row()->setActive(false);
    row()->setDefault(false);
    row()->restoreBackup();
    QVERIFY(shows(child<QPushButton>("activeProfileButton"), greenLight));
    QCOMPARE(child<QPushButton>("defaultProfileButton")->styleSheet(), black);
    QCOMPARE(actives.count(), 1);
    QCOMPARE(actives.first().at(1).toBool(), true);
    QCOMPARE(defaults.count(), 1);
    QCOMPARE(defaults.first().at(1).toBool(), true);
}

void ProfileNameTest::clones()
{
    row()->saveCurrentValuesAsOriginal();
    row()->setActive(true);
    row()->setDefault(true);
    row()->setTitle(QStringLiteral("Commuter**"));
    row()->setSubtitle(QStringLiteral("shown"));

    const std::unique_ptr<ProfileNameListWidget> copy(ProfileNameListWidget::clone(item.get()));
    ProfileName *name = copy->profileName;
    QVERIFY(name != row());
    QCOMPARE(name->getProfileSettings(), &profile);
    QCOMPARE(name->getTitle(), QStringLiteral("Commuter**"));
    QCOMPARE(name->getSubtitle(), QStringLiteral("shown"));
    QVERIFY(name->getActiveStatus());
    QVERIFY(name->getDefaultStatus());
    QCOMPARE(member("active")->getValue(), QStringLiteral("true"));
    QCOMPARE(member("defaultprofile")->getValue(), QStringLiteral("true"));
    QCOMPARE(name->findChild<QWidget *>(QStringLiteral("activeProfileButton"))->toolTip(),
             QStringLiteral("Active"));
    QCOMPARE(name->findChild<QWidget *>(QStringLiteral("defaultProfileButton"))->toolTip(),
             QStringLiteral("Default"));
    QVERIFY(!name->getOriginalValues());
    QVERIFY(!name->isEditing());
    QVERIFY(!copy->listWidget());

    row()->setActive(false);
    row()->setDefault(false);
    const std::unique_ptr<ProfileNameListWidget> plain(ProfileNameListWidget::clone(item.get()));
    QVERIFY(!plain->profileName->getActiveStatus());
    QVERIFY(!plain->profileName->getDefaultStatus());
}

void ProfileNameTest::cloneGoesOnWithTheEdit()
{
    row()->saveBackups();
    row()->setEditing(true);
    member("bulk_I")->setValue(1.0);

    const std::unique_ptr<ProfileNameListWidget> copy(ProfileNameListWidget::clone(item.get()));
    item.reset();
    QVERIFY(copy->profileName->isEditing());
    copy->profileName->restoreBackup();
    QCOMPARE(member("bulk_I")->getValue(), QStringLiteral("4"));
}

void ProfileNameTest::cloneKeepsTheOverrideToGoBackTo()
{
    const auto setOverride = [this](bool on) {
        profile.structSettings->setAdvancedSettingsEdited(on);
        for (StructSetting *setting : profile.structSettings->getOriginalOrderStructSettings())
            setting->enableAdvancedMode(on);
    };
    setOverride(true);
    member("start_I")->setValue(0.35);
    row()->saveBackups();
    setOverride(false);
    QCOMPARE(member("start_I")->getValue(), QStringLiteral("0.2"));

    const std::unique_ptr<ProfileNameListWidget> copy(ProfileNameListWidget::clone(item.get()));
    copy->profileName->restoreBackup();
    QVERIFY(profile.structSettings->getAdvancedSettingsEdited());
    QCOMPARE(member("start_I")->getValue(), QStringLiteral("0.35"));
}

void ProfileNameTest::placesRows()
{
    QListWidget list;
    ProfileNameListWidget::qlistWidget = &list;
    auto *first = new ProfileNameListWidget(&profile);
    auto *second = new ProfileNameListWidget(&profile);
    auto *third = new ProfileNameListWidget(&profile);
    auto *fourth = new ProfileNameListWidget(&profile);
    second->appendToList();
    first->prependToList();
    fourth->appendToList();
    third->insertInList(2);

    const QList<ProfileNameListWidget *> expected = {first, second, third, fourth};
    QCOMPARE(list.count(), 4);
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(list.item(i), expected.at(i));
        QCOMPARE(list.itemWidget(list.item(i)), expected.at(i)->profileName);
    }
}

void ProfileNameTest::removedRowGoesWithItsItem()
{
    QListWidget list;
    ProfileNameListWidget::qlistWidget = &list;
    int gone = 0;
    auto *placed = new WatchedItem(&profile, &gone);
    placed->appendToList();
    const QPointer<ProfileName> name = placed->profileName;

    QCOMPARE(list.takeItem(0), placed);
    QVERIFY(name);
    QCOMPARE(name->getTitle(), QStringLiteral("Commuter"));
    QCOMPARE(gone, 0);
    QTRY_VERIFY(!name);
    QCOMPARE(gone, 1);
}

void ProfileNameTest::unplacedItemTakesItsRow()
{
    const QPointer<ProfileName> name = row();
    item.reset();
    QVERIFY(!name);

    // An item that was taken may be deleted before its row goes.
    QListWidget list;
    ProfileNameListWidget::qlistWidget = &list;
    int gone = 0;
    auto *placed = new WatchedItem(&profile, &gone);
    placed->appendToList();
    const QPointer<ProfileName> placedName = placed->profileName;
    delete list.takeItem(0);
    QCOMPARE(gone, 1);
    QTRY_VERIFY(!placedName);
}

void ProfileNameTest::listTakesAllRows()
{
    int gone = 0;
    QPointer<ProfileName> name;
    {
        QListWidget list;
        ProfileNameListWidget::qlistWidget = &list;
        for (int i = 0; i < 3; ++i) {
            auto *placed = new WatchedItem(&profile, &gone);
            placed->appendToList();
            name = placed->profileName;
        }
    }
    QCOMPARE(gone, 3);
    QVERIFY(!name);

    QListWidget list;
    ProfileNameListWidget::qlistWidget = &list;
    (new WatchedItem(&profile, &gone))->appendToList();
    list.clear();
    QCOMPARE(gone, 4);
}

QTEST_MAIN(ProfileNameTest)
#include "tst_profilename.moc"
