#include "soak.h"

#include "HEXGeneratorParser/hexmanager.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "app/look.h"
#include "profiles/profilename.h"

#include <QApplication>
#include <QDir>
#include <QTest>

#include <cstdio>

namespace
{
const QStringList ids{QStringLiteral("profile_id"), QStringLiteral("stats.profile_id")};
const QString anyStats = QStringLiteral("stats.");

constexpr int settlingRounds = 10;
// Time-outs of the uploader count its processor time: on a busy computer each takes its while.
constexpr int longPatience = 4 * PATIENCE;

bool isLie(const QString &fault)
{
    return fault.startsWith(QLatin1String("lazy")) ||
           fault.startsWith(QLatin1String("wrong-reply"));
}

bool isImportFailure(const QStringList &boxes)
{
    return boxes.contains(QStringLiteral("Import from HEX status")) ||
           boxes.contains(QStringLiteral("Outdated Profiles"));
}

QString counted(const QMap<QString, int> &counts)
{
    QStringList parts;
    for (auto count = counts.begin(); count != counts.end(); ++count)
        parts.append(QStringLiteral("%1 %2").arg(count.key()).arg(count.value()));
    return parts.isEmpty() ? QStringLiteral("none") : parts.join(QStringLiteral(", "));
}
} // namespace

Soak::Soak(const Options &options)
    : options(options), dice(options.seed), mishaps(&dice), user(&story, &dice, &diary)
{
    plugIn();
    story.open();
    setSuiteLook();
    household = std::make_unique<Household>(&story, &user, &diary);
}

void Soak::plugIn()
{
    static const QStringList all{QStringLiteral("24v"), QStringLiteral("48v"),
                                 QStringLiteral("72v"), QStringLiteral("48v-v1")};
    hardware = options.hardware.isEmpty() ? dice.pick(all) : options.hardware;
    diary.note(QStringLiteral("charger ") + hardware);
    story.plugIn({QStringLiteral("--hardware"), hardware, QStringLiteral("--reenter"),
                  QStringLiteral("0.05")});
    isWrittenByUs = false;
    onCharger = ChargerPage::read(story);
    keepPage();
}

void Soak::keepPage()
{
    story.charger().control(QStringLiteral("save ") + files.filePath(QStringLiteral("good.hex")));
}

void Soak::repairCharger()
{
    story.mend();
    const ChargerPage now = ChargerPage::read(story);
    const bool isWhole = now.complaint.isEmpty() && now.others.keys() == onCharger.others.keys() &&
                         !now.settings.isEmpty();
    if (isWhole) {
        onCharger = now;
        keepPage();
        return;
    }
    story.charger().control(QStringLiteral("page ") + files.filePath(QStringLiteral("good.hex")));
    onCharger = ChargerPage::read(story);
}

int Soak::allowedProfiles() const
{
    return story.mainWindow()
        ->findChild<HEXGeneratorParser::HEXManager *>()
        ->getNumProfilesAllowed();
}

Values Soak::settingsInMemory() const
{
    Values values;
    const HParser::StructSettings *settings = story.generator()->getUnitSettingsStruct();
    for (const QString &member : onCharger.settings.keys())
        values.insert(member, settings->getStructSettingByName(member)->getValue());
    return values;
}

void Soak::playRound()
{
    beforeConnecting();
    if (!connectAtLast())
        return;
    whileConnected();
    if (!stuck)
        write();
    if (!stuck && story.isConnected() && dice.chance(10))
        readAgain();
    if (!stuck && story.isConnected())
        disconnectFromCharger();
    if (stuck)
        return;
    checkMarks();
    household->checkNothingIsLeft();
}

void Soak::beforeConnecting()
{
    if (dice.chance(8) && options.hardware.isEmpty())
        plugIn();
    if (!dice.chance(30))
        return;
    if (dice.chance(25))
        loadProfiles();
    for (int changes = dice.below(3); changes > 0; --changes)
        user.changeSomething();
    if (dice.chance(30))
        user.chooseModel();
    if (dice.chance(30)) {
        user.saveFile(files.filePath(QStringLiteral("mine.xml")), false);
        haveFile = true;
    }
    if (dice.chance(20))
        connectImpatiently();
}

void Soak::loadProfiles()
{
    const QString sets[] = {QStringLiteral("saved_profiles/24v_default_profiles.xml"),
                            QStringLiteral("saved_profiles/48v_default_profiles.xml"),
                            QStringLiteral("saved_profiles/72v_default_profiles.xml")};
    const QString file = haveFile && dice.chance(50)
                             ? files.filePath(QStringLiteral("mine.xml"))
                             : QDir::current().filePath(sets[dice.below(3)]);
    user.loadFile(file, dice.chance(50));
    user.takeBoxes(); // not all of them fit each model
}

Soak::Connecting Soak::tryToConnect(const QString &fault)
{
    ++connects;
    diary.note(QStringLiteral("connect ") + fault);
    QDialog *dialog = SuiteStory::dialog();
    auto *ports = dialog->findChild<QComboBox *>(QStringLiteral("comPortsDropdown"));
    auto *button = dialog->findChild<QPushButton *>(QStringLiteral("okButton"));
    const QString port = story.charger().portName();
    const auto isListed = [=] { return button->isEnabled() && ports->findText(port) >= 0; };
    if (!QTest::qWaitFor(isListed, PATIENCE)) {
        diary.broken(QStringLiteral("the charger's port is not listed"));
        stuck = true;
        return Connecting::Closed;
    }
    ports->setCurrentText(port);
    const QList<Values> rows = profilesInList(story);
    user.answer(dice.chance(50) ? QMessageBox::Ok : QMessageBox::Cancel);
    mishaps.lay(&story.charger(), fault);
    QTest::mouseClick(button, Qt::LeftButton);
    const auto hasEnded = [] {
        if (qobject_cast<QMessageBox *>(QApplication::activeModalWidget()))
            return false;
        const QDialog *open = SuiteStory::dialog();
        return !open || open->findChild<QPushButton *>(QStringLiteral("okButton"))->isEnabled();
    };
    if (!QTest::qWaitFor(hasEnded, longPatience)) {
        diary.broken(QStringLiteral("a connect does not end"));
        stuck = true;
    }
    mishaps.settle(&story.charger(), !story.isConnected());
    const QStringList boxes = user.takeBoxes();
    if (story.isConnected()) {
        if (!boxes.isEmpty())
            diary.broken(QStringLiteral("boxes of a good connect"), boxes);
        return Connecting::Connected;
    }
    if (boxes.isEmpty())
        diary.broken(QStringLiteral("nothing tells why the connect failed"));
    if (!isImportFailure(boxes))
        diary.broken(QStringLiteral("rows of a failed connect"),
                     differences(rows, profilesInList(story)));
    return SuiteStory::dialog() ? Connecting::StillOpen : Connecting::Closed;
}

bool Soak::connectAtLast()
{
    for (int tries = 0; tries < 5 && !stuck; ++tries) {
        if (!SuiteStory::dialog() && !story.startConnecting()) {
            diary.broken(QStringLiteral("there is no dialog to connect"));
            return false;
        }
        const bool mishap = tries < 2 && dice.chance(25);
        const QString fault = mishap ? mishaps.whileReading() : QString();
        retries += tries > 0 ? 1 : 0;
        if (tryToConnect(fault) == Connecting::Connected) {
            checkConnected();
            return true;
        }
        story.mend();
    }
    diary.broken(QStringLiteral("an honest charger cannot be connected"));
    stuck = true;
    return false;
}

/// The dialog is closed while it reads: the run goes on to its end and nothing comes of it.
void Soak::connectImpatiently()
{
    diary.note(QStringLiteral("connect, escape"));
    const QList<Values> rows = profilesInList(story);
    if (!story.startConnecting())
        return;
    auto *button = SuiteStory::dialog()->findChild<QPushButton *>(QStringLiteral("okButton"));
    if (dice.chance(70) && button->isEnabled())
        QTest::mouseClick(button, Qt::LeftButton);
    QTest::keyClick(SuiteStory::dialog(), Qt::Key_Escape);
    // The event loop takes the dialog away before it hears of anything else.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    if (!QTest::qWaitFor([] { return Resources::now().children == 1; }, longPatience))
        diary.broken(QStringLiteral("the abandoned run does not end"));
    user.takeBoxes();
    if (story.isConnected() || SuiteStory::dialog())
        diary.broken(QStringLiteral("an abandoned connect connects"));
    diary.broken(QStringLiteral("rows of an abandoned connect"),
                 differences(rows, profilesInList(story)));
}

void Soak::checkConnected()
{
    const QStringList but = isWrittenByUs ? ids : ids + QStringList(anyStats);
    diary.broken(QStringLiteral("connected"),
                 differences(onCharger.profiles, profilesInList(story), but));
    diary.broken(QStringLiteral("settings when connected"),
                 differences(onCharger.settings, settingsInMemory()));
    wantedSettings = onCharger.settings;
    const QString model = hardware.left(2) + QLatin1Char('V');
    if (story.generator()->isMaster() || story.model()->isEnabled() ||
        story.model()->currentText() != model)
        diary.broken(QStringLiteral("the model in force is ") + story.model()->currentText());
    if (dice.chance(10))
        diary.broken(QStringLiteral("page after connecting"),
                     differences(onCharger.profiles, ChargerPage::read(story).profiles));
}

void Soak::whileConnected()
{
    for (int changes = 1 + dice.below(6); changes > 0; --changes)
        user.changeSomething();
    if (dice.chance(10))
        loadProfiles();
    if (dice.chance(25))
        useDeviceSettings();
    if (!stuck && story.isConnected() && dice.chance(10))
        readAgain();
    if (story.isConnected() && story.list()->count() > 0 && dice.chance(50))
        user.changeSomething();
}

void Soak::useDeviceSettings()
{
    const Values before = wantedSettings;
    const Values shown = user.changeDeviceSettings();
    for (auto value = shown.begin(); value != shown.end(); ++value)
        wantedSettings[value.key()] = value.value();
    if (dice.chance(15)) {
        user.loadDefaultSettings();
        const Values defaults = user.shownSettings();
        for (auto value = defaults.begin(); value != defaults.end(); ++value)
            wantedSettings[value.key()] = value.value();
    }
    const int end = dice.below(3);
    if (end == 0) {
        user.cancelDeviceSettings();
        wantedSettings = before;
    }
    diary.broken(QStringLiteral("settings as shown"),
                 differences(wantedSettings, settingsInMemory()));
    if (end == 1)
        saveDeviceSettings();
    else
        user.leaveDeviceSettings();
}

void Soak::saveDeviceSettings()
{
    const QList<Values> rows = profilesInList(story);
    const QString fault = dice.chance(30) ? mishaps.whileWritingSettings() : QString();
    diary.note(QStringLiteral("save settings ") + fault);
    mishaps.lay(&story.charger(), fault);
    story.press("saveChangesButton");
    if (!story.endSaving()) {
        diary.broken(QStringLiteral("saving the settings does not end"));
        stuck = true;
        return;
    }
    ++writes;
    const bool done = story.isConnected();
    mishaps.settle(&story.charger(), !done);
    const QStringList boxes = user.takeBoxes();
    user.leaveDeviceSettings();
    diary.broken(QStringLiteral("rows when settings were saved"),
                 differences(rows, profilesInList(story)));
    if (!done) {
        if (boxes.isEmpty())
            diary.broken(QStringLiteral("nothing tells that the settings were not saved"));
        comeBack();
        return;
    }
    diary.broken(QStringLiteral("boxes of saved settings"), boxes);
    const ChargerPage page = ChargerPage::read(story);
    if (isLie(fault) && !page.complaint.isEmpty()) {
        repairCharger();
        readAgain();
        return;
    }
    const QStringList but = isWrittenByUs ? QStringList() : QStringList(anyStats);
    diary.broken(QStringLiteral("profiles when settings were saved"),
                 differences(onCharger.profiles, page.profiles, but));
    diary.broken(QStringLiteral("saved settings"), differences(wantedSettings, page.settings));
    onCharger = page;
    keepPage();
}

void Soak::readAgain()
{
    const QList<Values> rows = profilesInList(story);
    const QString fault = dice.chance(30) ? mishaps.whileReading() : QString();
    diary.note(QStringLiteral("read ") + fault);
    mishaps.lay(&story.charger(), fault);
    if (!story.readData()) {
        diary.broken(QStringLiteral("a read does not end"));
        stuck = true;
        return;
    }
    mishaps.settle(&story.charger(), !story.isConnected());
    const QStringList boxes = user.takeBoxes();
    if (story.isConnected()) {
        diary.broken(QStringLiteral("boxes of a good read"), boxes);
        checkConnected();
        return;
    }
    if (boxes.isEmpty())
        diary.broken(QStringLiteral("nothing tells why the read failed"));
    if (!isImportFailure(boxes))
        diary.broken(QStringLiteral("rows of a failed read"),
                     differences(rows, profilesInList(story)));
    comeBack();
}

/// After a failure: the charger is put right and connected again. Rows that are still there are
/// kept in a file meanwhile and take the place of the charger's.
void Soak::comeBack()
{
    ++retries;
    if (!story.generator()->isMaster())
        diary.broken(QStringLiteral("no master schema after a failure"));
    const QList<Values> rows = profilesInList(story);
    const QString file = files.filePath(QStringLiteral("rescue.xml"));
    user.saveFile(file, false);
    repairCharger();
    if (!connectAtLast())
        return;
    user.loadFile(file, true);
    QStringList boxes = user.takeBoxes();
    boxes.removeAll(QStringLiteral("Add Profiles to List?"));
    diary.broken(QStringLiteral("boxes of the rescued rows"), boxes);
    diary.broken(QStringLiteral("rescued rows"),
                 differences(rows, profilesInList(story),
                             ids + QStringList{anyStats, QStringLiteral("extraneous1")}));
}

bool Soak::tooManyAreRefused()
{
    const int allowed = allowedProfiles();
    if (story.list()->count() <= allowed)
        return false;
    diary.note(QStringLiteral("save too many"));
    const QList<Values> rows = profilesInList(story);
    story.action("saveDataAction")->trigger();
    const QStringList boxes = user.takeBoxes();
    if (boxes != QStringList(QStringLiteral("Upload profiles status")) || SuiteStory::dialog())
        diary.broken(QStringLiteral("too many profiles were not refused"));
    diary.broken(QStringLiteral("refused rows"), differences(rows, profilesInList(story)));
    diary.broken(QStringLiteral("page of refused rows"),
                 differences(onCharger.profiles, ChargerPage::read(story).profiles));
    return true;
}

void Soak::write()
{
    if (tooManyAreRefused())
        user.deleteDownTo(3 + dice.below(allowedProfiles() - 2));
    user.takeBoxes();
    for (int tries = 0; tries < 4 && !stuck; ++tries) {
        const bool mishap = tries < 2 && dice.chance(30);
        if (writeOnce(mishap ? mishaps.whileWriting() : QString()))
            return;
        if (!stuck)
            comeBack();
    }
    diary.broken(QStringLiteral("an honest charger cannot be written"));
    stuck = true;
}

bool Soak::writeOnce(const QString &fault)
{
    ++writes;
    QList<Values> expected = profilesInList(story);
    if (!expected.isEmpty() && dice.chance(10)) {
        const int row = dice.below(expected.size());
        const QString name = user.startTypingName(row);
        // Editing may have put values right that follow their defaults.
        expected = profilesInList(story);
        expected[row][QStringLiteral("title")] = name;
    }
    diary.note(QStringLiteral("save ") + fault);
    mishaps.lay(&story.charger(), fault);
    if (!story.saveData()) {
        diary.broken(QStringLiteral("a write does not end"));
        stuck = true;
        return false;
    }
    const bool done = story.isConnected();
    mishaps.settle(&story.charger(), !done);
    const QStringList boxes = user.takeBoxes();
    if (!done) {
        checkFailedWrite(expected, boxes);
        return false;
    }
    if (isLie(fault)) {
        checkAfterLie();
        return true;
    }
    diary.broken(QStringLiteral("boxes of a good write"), boxes);
    checkWritten(expected);
    return true;
}

void Soak::checkWritten(const QList<Values> &expected)
{
    const ChargerPage page = ChargerPage::read(story);
    if (!page.complaint.isEmpty())
        diary.broken(QStringLiteral("written page: ") + page.complaint);
    diary.broken(QStringLiteral("profiles on the charger"), differences(expected, page.profiles));
    diary.broken(QStringLiteral("rows read back"), differences(expected, profilesInList(story)));
    QStringList titles;
    for (const Values &profile : expected)
        titles.append(profile[QStringLiteral("title")]);
    if (story.titles() != titles)
        diary.broken(QStringLiteral("titles after a write"), story.titles());
    diary.broken(QStringLiteral("settings on the charger"),
                 differences(wantedSettings, page.settings));
    diary.broken(QStringLiteral("settings read back"),
                 differences(wantedSettings, settingsInMemory()));
    for (const QString &element : onCharger.others.keys()) {
        // Numbers of the charger are rounded by the first write, and stay from then on.
        if (isWrittenByUs || element != QLatin1String("global_stats"))
            diary.broken(element, differences(onCharger.others[element], page.others[element]));
    }
    onCharger = page;
    isWrittenByUs = true;
    keepPage();
}

/// The charger said that it did what it was told, and did not: what the suite has read back is what
/// the charger holds.
void Soak::checkAfterLie()
{
    const ChargerPage page = ChargerPage::read(story);
    if (page.complaint.isEmpty())
        diary.broken(QStringLiteral("rows of a lying charger"),
                     differences(page.profiles, profilesInList(story)));
    else
        diary.broken(QStringLiteral("a broken page was read back: ") + page.complaint);
    story.charger().control(QStringLiteral("page ") + files.filePath(QStringLiteral("good.hex")));
    onCharger = ChargerPage::read(story);
    readAgain();
}

void Soak::checkFailedWrite(const QList<Values> &expected, const QStringList &boxes)
{
    if (!isImportFailure(boxes))
        diary.broken(QStringLiteral("rows of a failed write"),
                     differences(expected, profilesInList(story)));
}

void Soak::disconnectFromCharger()
{
    const QList<Values> rows = profilesInList(story);
    const bool pulled = dice.chance(5);
    diary.note(pulled ? QStringLiteral("pull, disconnect") : QStringLiteral("disconnect"));
    if (pulled)
        story.charger().control(QStringLiteral("unplug"));
    if (!story.disconnectCharger())
        diary.broken(QStringLiteral("still connected"));
    const QStringList boxes = user.takeBoxes();
    const QStringList expected =
        pulled ? QStringList(QStringLiteral("Failed Opening Serial Port")) : QStringList();
    if (boxes != expected)
        diary.broken(QStringLiteral("boxes of a disconnect: ") + boxes.join(QLatin1Char(' ')));
    checkDisconnected(rows);
    const auto isBack = [this] { return story.chargerMode() == QLatin1String("bootloader"); };
    if (pulled)
        story.mend();
    else if (!QTest::qWaitFor(isBack, PATIENCE))
        diary.broken(QStringLiteral("the charger did not restart"));
}

void Soak::checkDisconnected(const QList<Values> &rows)
{
    if (!story.generator()->isMaster() || !story.model()->isEnabled())
        diary.broken(QStringLiteral("no master schema after a disconnect"));
    diary.broken(QStringLiteral("rows after a disconnect"),
                 differences(rows, profilesInList(story)));
}

void Soak::checkMarks()
{
    int marked = 0;
    for (int i = 0; i < story.list()->count(); ++i) {
        const ProfileName *row = story.row(i);
        marked += row->getDefaultStatus() ? 1 : 0;
        if (row->getDefaultStatus() && !row->getActiveStatus())
            diary.broken(QStringLiteral("the default profile is not active"));
    }
    if (marked > 1)
        diary.broken(QStringLiteral("%1 default profiles").arg(marked));
}

void Soak::report(int round) const
{
    int boxes = 0;
    for (const int count : user.boxesSeen())
        boxes += count;
    std::printf("round %d: %d connects, %d writes, %d retries, faults %d laid %d struck, %d boxes, "
                "%s\n",
                round, connects, writes, retries, mishaps.laidCount(), mishaps.struckCount(), boxes,
                qPrintable(household->figures()));
    std::fflush(stdout);
}

void Soak::summary() const
{
    std::printf("faults that struck: %s\nboxes: %s\n%d broken laws\n",
                qPrintable(counted(mishaps.struck())), qPrintable(counted(user.boxesSeen())),
                diary.brokenCount());
    std::fflush(stdout);
}

bool Soak::run()
{
    constexpr int enough = 20;
    for (int round = 1; round <= options.rounds && !stuck; ++round) {
        diary.begin(round);
        playRound();
        if (round == settlingRounds)
            household->settle();
        if (round % 10 == 0 || round == options.rounds)
            report(round);
        stuck = stuck || diary.brokenCount() >= enough;
    }
    if (options.rounds > settlingRounds && !stuck)
        household->checkGrowth();
    summary();
    return diary.brokenCount() == 0 && !stuck;
}
