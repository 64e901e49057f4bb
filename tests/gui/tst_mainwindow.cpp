#include "HEXGeneratorParser/hexmanager.h"
#include "ImportProfiles/importprofilesmain.h"
#include "SSGenerator/formula.h"
#include "SSGenerator/generator.h"
#include "SSGenerator/structsetting.h"
#include "SSGenerator/structsettings.h"
#include "app/filenames.h"
#include "app/look.h"
#include "app/mainwindow.h"
#include "device/uploaddownloadmanager.h"
#include "firmware/velantorfirmwaretoolwindow.h"
#include "profiles/profilename.h"
#include "profiles/profilenameslistmanager.h"
#include "profiles/profilesettings.h"
#include "support/filedialoganswer.h"
#include "support/messageboxanswers.h"
#include "support/updatepreference.h"
#include "xml/xmlmanager.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QStatusBar>
#include <QStyle>
#include <QTemporaryDir>
#include <QTest>
#include <QToolBar>

#include <functional>
#include <memory>
#include <utility>

using FirmwareTool::VelantorFirmwareToolWindow;

namespace
{
/// The look that the program gets once its window is there.
struct SuiteLook {
    SuiteLook() { setSuiteLook(); }
    ~SuiteLook()
    {
        qApp->setStyleSheet(QString());
        QApplication::setFont(before);
    }
    const QFont before = QApplication::font();
};

/// Does something at each event of one type.
class When : public QObject
{
public:
    When(QObject *watched, QEvent::Type type, std::function<void()> action)
        : type(type), action(std::move(action))
    {
        watched->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == type)
            action();
        return QObject::eventFilter(watched, event);
    }

private:
    QEvent::Type type;
    std::function<void()> action;
};

/// A desktop that writes white on dark.
struct DarkDesktop {
    DarkDesktop() { QApplication::setPalette(QPalette(QColor(53, 53, 53), QColor(40, 40, 40))); }
    ~DarkDesktop() { QApplication::setPalette(before); }
    const QPalette before = QApplication::palette();
};
} // namespace

/// The window as a switchboard: its form, its tool bar's states, its signals.
class MainWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void titleAndSizes();
    void theLookReachesTheWindowThatIsThere();
    void lineEditsAreReadableOnEveryDesktop_data();
    void lineEditsAreReadableOnEveryDesktop();
    void menusHoldTheirEntriesInOrder_data();
    void menusHoldTheirEntriesInOrder();
    void textsOfTheForm_data();
    void textsOfTheForm();
    void actionsStandInOrder();
    void widgetsStandInOrder();
    void toolTipsOfTheForm_data();
    void toolTipsOfTheForm();
    void namesAreAsLongAsTheChargerHoldsThem();
    void buttonsHaveTheirPictures();
    void toolBarFillsInOrder();
    void toolBarFitsTheSmallestWindow_data();
    void toolBarFitsTheSmallestWindow();
    void modelIsReachedByTab();
    void toolBarHasItsPictures_data();
    void toolBarHasItsPictures();
    void startsDisconnected();
    void connectedTurnsTheToolBar();
    void lampLightsWhereConnectIsDisabled();
    void toolBarIsReadableOnADarkDesktop();
    void disconnectedTwiceSaysNothing();
    void anyFallOfTheLinkBringsTheMasterBack_data();
    void anyFallOfTheLinkBringsTheMasterBack();
    void masterIsBackBeforeOthersHear();
    void loadedUnitSettingsChangeNoState();
    void connectAsksTheManager();
    void disconnectTellsThenResets();
    void eachDisconnectEntryTells_data();
    void eachDisconnectEntryTells();
    void disconnectWithPortResetsThenTells();
    void exportsCarryWhetherSettingsGoAlong();
    void importsTellWhetherSettingsAreLoaded();
    void settingsOfAFileCountAsLoaded();
    void imagesAreImportedOnRequest();
    void entriesOfNoMenuDoNothing_data();
    void entriesOfNoMenuDoNothing();
    void toolbarAndMenuDisableTogether();
    void resizingEndsAtTheSameSize_data();
    void resizingEndsAtTheSameSize();
    void windowUsesTheAnchors();
    void deleteAllAsksOnlyWithRows_data();
    void deleteAllAsksOnlyWithRows();
    void helpAndAboutShowTheirBoxes();
    void reloadedBundleBringsTheMasterBack();
    void unpackedFilesStandInTheWorkingDirectory();
    void degreeSignsSurviveTheBundle();
    void theMenuOpensTheFirmwareTool();
    void flashedFirmwareReloadsTheBundle();
    void afterAFlashTheChargerIsResetThenTold();
    void theFirmwareToolMayAskForAConnect();
    void thePaneIsEmptyAtFirst();
    void theDeviceButtonShowsAndHidesThePage();
    void theDeviceButtonResizesFirst();
    void rowsComeIntoThePane();
    void cancelMovesWithTheView();
    void anEmptyListShowsThePageAnew();
    void aToldReadCanBeSavedTo();
    void cancelComesBackToWhatWasRead();
    void editsCountAsSavedBeforeAWriteBegins_data();
    void editsCountAsSavedBeforeAWriteBegins();
    void aFallenLinkUnhooksThePane();
    void aFallenLinkUnhooksThePaneBeforeTheMarksGo();
    void cancelAfterAFailedReadKnowsTheSchemaOnly();
    void statisticsOpenAnewEachTime();
    void theManagerCanEmptyTheList();
    void rowsBehindADisconnectAreMarked();
    void aWriteTakesTheMarksBeforeItConnects();
    void startsWithTheSchemasOwnLimits();
    void anotherModelChecksTheRows_data();
    void anotherModelChecksTheRows();
    void aStrictSchemaLocksTheModel();
    void theLinkFallsWhileAQuestionIsOpen_data();
    void theLinkFallsWhileAQuestionIsOpen();
    void rowsGoWhileTheModelIsAskedAbout();
    void theLinkFallsWhileTheWizardIsOpen();

private:
    void addRow();
    /// Connects and opens the page, as a read of a charger of this brightness does.
    void showSettingsOfACharger(double brightness);
    HParser::StructSetting *deviceSetting(const char *name) const
    {
        return generator()->getUnitSettingsStruct()->getStructSettingByName(QLatin1String(name));
    }

    QAction *action(const char *name) const
    {
        return window->findChild<QAction *>(QLatin1String(name));
    }
    HParser::Generator *generator() const { return window->getGenerator(); }
    QComboBox *model() const { return window->findChild<QComboBox *>("hardwareDropdown"); }
    QLabel *modelLabel() const
    {
        auto *bar = window->findChild<QToolBar *>("mainToolBar");
        return qobject_cast<QLabel *>(bar->widgetForAction(bar->actions().at(5)));
    }
    HParser::StructSetting *member(const char *chemistry, const char *name) const;
    double lithiumLimit(const char *name) const
    {
        return member("Lithium", name)->upperBound->toDouble();
    }
    VelantorFirmwareToolWindow *firmwareTool() const
    {
        return window->findChild<VelantorFirmwareToolWindow *>();
    }
    UploadDownload::UploadDownloadManager *manager() const
    {
        return window->findChild<UploadDownload::UploadDownloadManager *>();
    }

    std::unique_ptr<QTemporaryDir> home;
    std::unique_ptr<MainWindow> window;
};

void MainWindowTest::init()
{
    home = std::make_unique<QTemporaryDir>();
    qputenv("XDG_DATA_HOME", home->path().toUtf8());
    chooseManualUpdates();
    window = std::make_unique<MainWindow>();
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
}

void MainWindowTest::cleanup()
{
    window.reset();
    QDir::setCurrent(QDir::rootPath());
    home.reset();
}

void MainWindowTest::titleAndSizes()
{
    QCOMPARE(window->windowTitle(), QStringLiteral("Velantor Software Suite For Firmware v1.0+"));
    QCOMPARE(window->size(), QSize(707, 730));
    QCOMPARE(window->minimumSize(), QSize(700, 350));
    QVERIFY(!window->windowIcon().isNull());
    QVERIFY(window->findChild<QStatusBar *>()->isHidden());
}

void MainWindowTest::theLookReachesTheWindowThatIsThere()
{
    const SuiteLook look;
    QWidget *connectButton =
        window->findChild<QToolBar *>()->widgetForAction(action("connectAction"));
    for (const QWidget *widget :
         {static_cast<QWidget *>(window.get()), static_cast<QWidget *>(window->menuBar()),
          static_cast<QWidget *>(window->findChild<QMenu *>()), connectButton,
          window->findChild<QWidget *>(QStringLiteral("profileNameUpButton"))}) {
        QCOMPARE(widget->font().family(), QStringLiteral("Arial"));
        QCOMPARE(widget->font().pointSize(), 9);
    }
    QCOMPARE(modelLabel()->font().family(), QStringLiteral("Arial"));
    QCOMPARE(modelLabel()->font().pointSize(), 10);
    QCOMPARE(qApp->styleSheet(),
             QStringLiteral("QLineEdit{border-color: rgb(176, 174, 171);border-width:  2px;"
                            "border-style: inset;border-radius: 3px;padding: 1px;padding-top: "
                            "0px;padding-bottom: 0px;}QLineEdit:!enabled{border: none;color: "
                            "black;}"));
}

void MainWindowTest::lineEditsAreReadableOnEveryDesktop_data()
{
    QTest::addColumn<QPalette>("desktop");
    QTest::newRow("light") << QPalette(QColor(239, 239, 239));
    QTest::newRow("dark") << QPalette(QColor(40, 40, 40), QColor(30, 30, 30));
    QTest::newRow("darkest") << QPalette(Qt::black, Qt::black);
}

void MainWindowTest::lineEditsAreReadableOnEveryDesktop()
{
    QFETCH(QPalette, desktop);
    struct Desktop {
        ~Desktop() { QApplication::setPalette(before); }
        const QPalette before = QApplication::palette();
    } const restored;
    window.reset();
    QApplication::setPalette(desktop);
    window = std::make_unique<MainWindow>();
    window->show();
    const SuiteLook look;
    QDialog dialog(window.get());
    (new QLineEdit("MMM", &dialog))->resize(100, 24);
    addRow();
    auto *list = window->findChild<QListWidget *>("profileNamesList");
    emit list->itemClicked(list->item(0));
    auto *edit = window->findChild<QPushButton *>("editProfileButton");
    for (const bool editing : {false, true}) {
        if (editing)
            edit->click();
        const auto lineEdits = window->findChildren<QLineEdit *>();
        QVERIFY(lineEdits.size() > 5);
        for (QLineEdit *lineEdit : lineEdits) {
            if (lineEdit->parent() == &dialog)
                lineEdit->setEnabled(editing);
            const QRect inside(QPoint(3, 3), lineEdit->size() - QSize(6, 6));
            const QImage picture = lineEdit->grab(inside).toImage();
            int darkest = 255;
            for (int y = 0; y < picture.height(); ++y) {
                for (int x = 0; x < picture.width(); ++x)
                    darkest = qMin(darkest, qGray(picture.pixel(x, y)));
            }
            const int ground = qGray(picture.pixel(picture.width() - 1, 0));
            QVERIFY2(ground > 200, qPrintable(lineEdit->objectName()));
            QVERIFY2(lineEdit->text().isEmpty() || darkest < 130,
                     qPrintable(lineEdit->objectName()));
        }
    }
}

void MainWindowTest::menusHoldTheirEntriesInOrder_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("entries");
    QTest::newRow("File") << 0 << "File"
                          << QStringList{"Save Profiles to File...",
                                         "Save Profiles and Device Settings to File...",
                                         "Load Profiles from File...",
                                         "--",
                                         "Connect to Velantor...",
                                         "Disconnect and Reset Velantor",
                                         "Save Data to Velantor...",
                                         "Read Data from Velantor",
                                         "--",
                                         "Check for new Software...",
                                         "Check for new Firmware...",
                                         "Change Auto Update...",
                                         "--",
                                         "Update Velantor Firmware...",
                                         "--",
                                         "Exit"};
    QTest::newRow("Edit") << 1 << "Edit"
                          << QStringList{"Edit Device Settings", "--", "Delete all Profiles..."};
    QTest::newRow("Help") << 2 << "Help"
                          << QStringList{"Getting Started...", "About...", "--",
                                         "View Device Stats..."};
}

void MainWindowTest::menusHoldTheirEntriesInOrder()
{
    QFETCH(int, position);
    QFETCH(QString, title);
    QFETCH(QStringList, entries);
    const QList<QAction *> menus = window->menuBar()->actions();
    QCOMPARE(menus.size(), 3);
    QCOMPARE(menus.at(position)->text(), title);
    QStringList found;
    for (const QAction *entry : menus.at(position)->menu()->actions())
        found.append(entry->isSeparator() ? QStringLiteral("--") : entry->text());
    QCOMPARE(found, entries);
}

void MainWindowTest::textsOfTheForm_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("checkable");
    QTest::newRow("new profile") << "addProfileButton"
                                 << "New Profile" << false;
    QTest::newRow("up") << "profileNameUpButton"
                        << "Move Up" << false;
    QTest::newRow("down") << "profileNameDownButton"
                          << "Move Down" << false;
    QTest::newRow("edit") << "editProfileButton"
                          << "Edit Profile" << true;
    QTest::newRow("save") << "saveChangesButton"
                          << "Save Settings to Velantor" << false;
    QTest::newRow("cancel") << "cancelChangesButton"
                            << "Cancel" << false;
    QTest::newRow("device") << "viewDeviceSettings"
                            << "View Device Settings" << true;
    QTest::newRow("active") << "profileActiveButton"
                            << "Active?" << true;
    QTest::newRow("default") << "profileDefaultButton"
                             << "Default?" << true;
    QTest::newRow("editable") << "profileModifiableButton"
                              << "Editable?" << true;
    QTest::newRow("defaults") << "resetDefaults"
                              << "Load Defaults" << false;
}

void MainWindowTest::textsOfTheForm()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    QFETCH(bool, checkable);
    auto *button = window->findChild<QAbstractButton *>(name);
    QVERIFY(button);
    QCOMPARE(button->text(), text);
    QCOMPARE(button->isCheckable(), checkable);
}

void MainWindowTest::actionsStandInOrder()
{
    QStringList found;
    for (const QAction *entry :
         window->findChildren<QAction *>(QString(), Qt::FindDirectChildrenOnly))
        found.append(entry->objectName() + ": " + entry->text());
    QCOMPARE(found,
             QStringList({"actionHelp: Help...",
                          "actionAbout: About...",
                          "actionExit: Exit",
                          "actionExportXMLProfiles: Save Profiles to File...",
                          "actionImportXML: Load Profiles from File...",
                          "actionExportHEX: Export as HEX...",
                          "actionImportHEX: Import from HEX...",
                          "actionEditGlobalSettings: Edit Device Settings",
                          "actionWriteProfiles: Save Data to Velantor...",
                          "actionReadProfiles: Read Data from Velantor",
                          "actionFlashFirmware: Update Velantor Firmware...",
                          "actionDeleteAllProfiles: Delete all Profiles...",
                          "actionHelp_2: Getting Started...",
                          "actionNew_firmware_tool: new firmware tool",
                          "actionCheckNewFirmware: Check for new Firmware...",
                          "actionAboutDevice: View Device Stats...",
                          "actionConnectToVel: Connect to Velantor...",
                          "actionDisconnectAndRestart: Disconnect and Reset Velantor",
                          "actionExportXMLProfilesAndSettings: Save Profiles and Device Settings "
                          "to File...",
                          "actionCheckNewSoftware: Check for new Software...",
                          "actionEditAutoUpdates: Edit Auto Updates...",
                          "actionChangeAutoUpdates: Change Auto Update..."}));
}

void MainWindowTest::widgetsStandInOrder()
{
    QStringList found;
    for (const QWidget *widget :
         window->centralWidget()->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly))
        found.append(widget->objectName() + ": " + widget->metaObject()->className());
    QCOMPARE(found, QStringList({"profileNamesList: QListWidget",
                                 "addProfileButton: QPushButton",
                                 "profileNameUpButton: QPushButton",
                                 "profileNameDownButton: QPushButton",
                                 "settingsList: QFrame",
                                 "editProfileButton: QPushButton",
                                 "saveChangesButton: QPushButton",
                                 "cancelChangesButton: QPushButton",
                                 "containerScroll: QScrollArea",
                                 "viewDeviceSettings: QPushButton",
                                 "profileActiveButton: QCheckBox",
                                 "profileDefaultButton: QCheckBox",
                                 "profileModifiableButton: QCheckBox",
                                 "profileSettingsName: QLineEdit",
                                 "profileSettingsDescription: QLineEdit",
                                 "unitSettingsDisplay: QScrollArea",
                                 "unitSettingsTitle: QLabel",
                                 "resetDefaults: QPushButton",
                                 "openProfilesXML: QPushButton",
                                 "saveProfilesXML: QPushButton",
                                 "deleteAllProfiles: QPushButton"}));
    QCOMPARE(window->findChild<QLabel *>("unitSettingsTitle")->text(),
             QStringLiteral("Device Settings"));
}

void MainWindowTest::toolTipsOfTheForm_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    const QString head = QStringLiteral("<html><head/><body><p>");
    const QString tail = QStringLiteral("</p></body></html>");
    QTest::newRow("open") << "openProfilesXML"
                          << "Open Profiles from File";
    QTest::newRow("save") << "saveProfilesXML"
                          << "Save Profiles to File";
    QTest::newRow("delete all") << "deleteAllProfiles"
                                << "Delete All Profiles";
    QTest::newRow("active") << "profileActiveButton"
                            << head +
                                   "Check this button for the profile to be in the active "
                                   "profile list on the Velantor." +
                                   tail;
    QTest::newRow("default") << "profileDefaultButton"
                             << head +
                                    "Default profile will be preselected by the Velatnor on "
                                    "powerup. To select a different profile you must first "
                                    "press and hold the top button to get to the profile "
                                    "list." +
                                    tail;
    QTest::newRow("editable") << "profileModifiableButton"
                              << head +
                                     "Check this button to allow the profile parameters to be "
                                     "changed from onboard the Velatnor itself. Otherwise "
                                     "profile can only be deactivated or deleted, but not "
                                     "modified through the buttons." +
                                     tail;
}

void MainWindowTest::toolTipsOfTheForm()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    QCOMPARE(window->findChild<QWidget *>(name)->toolTip(), text);
}

void MainWindowTest::namesAreAsLongAsTheChargerHoldsThem()
{
    QCOMPARE(window->findChild<QLineEdit *>("profileSettingsName")->maxLength(), 11);
    QCOMPARE(window->findChild<QLineEdit *>("profileSettingsDescription")->maxLength(), 13);
}

void MainWindowTest::buttonsHaveTheirPictures()
{
    const auto shown = [this](const char *name) {
        return window->findChild<QPushButton *>(name)->icon().pixmap(16, 16).toImage();
    };
    const auto standard = [this](QStyle::StandardPixmap picture) {
        return window->style()->standardIcon(picture).pixmap(16, 16).toImage();
    };
    const QIcon newFile(QStringLiteral(":/new/images/new_file.ico"));
    QVERIFY(!newFile.pixmap(16, 16).isNull());
    QCOMPARE(shown("addProfileButton"), newFile.pixmap(16, 16).toImage());
    QCOMPARE(shown("openProfilesXML"), standard(QStyle::SP_DialogOpenButton));
    QCOMPARE(shown("saveProfilesXML"), standard(QStyle::SP_DialogSaveButton));
    QCOMPARE(shown("deleteAllProfiles"), standard(QStyle::SP_DialogDiscardButton));
}

void MainWindowTest::toolBarHasItsPictures_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("picture");
    QTest::newRow("disconnect") << "disconnectAction"
                                << ":/new/images/redLEDon.png";
    QTest::newRow("read") << "readDataAction"
                          << ":/new/images/download.png";
    QTest::newRow("save") << "saveDataAction"
                          << ":/new/images/upload.png";
}

void MainWindowTest::toolBarHasItsPictures()
{
    QFETCH(QString, name);
    QFETCH(QString, picture);
    const QPixmap expected(picture);
    QVERIFY(!expected.isNull());
    QCOMPARE(window->findChild<QAction *>(name)->icon().pixmap(expected.size()).toImage(),
             expected.toImage());
}

void MainWindowTest::toolBarFillsInOrder()
{
    auto *bar = window->findChild<QToolBar *>("mainToolBar");
    const QList<QAction *> entries = bar->actions();
    QStringList texts;
    QStringList tips;
    for (int i = 0; i < 4; ++i) {
        texts.append(entries.at(i)->text());
        tips.append(entries.at(i)->toolTip());
        QVERIFY(!entries.at(i)->icon().isNull());
    }
    QCOMPARE(texts, QStringList({"Connect", "Disconnect", "Read Data", "Save Data"}));
    QCOMPARE(tips, QStringList({"Connect to Velantor", "Disconnect and Restart Velantor",
                                "Read Data from Velantor", "Save Data to Velantor"}));
    const QSizePolicy middle = bar->widgetForAction(entries.at(4))->sizePolicy();
    QCOMPARE(middle.horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(middle.verticalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(entries.size(), 10);
    auto *label = qobject_cast<QLabel *>(bar->widgetForAction(entries.at(5)));
    QVERIFY(label);
    QCOMPARE(label->text(), QStringLiteral("Velantor Model:"));
    QCOMPARE(label->font().pointSize(), window->font().pointSize() + 1);
    QCOMPARE(bar->widgetForAction(entries.at(6))->width(), 8);
    auto *model = qobject_cast<QComboBox *>(bar->widgetForAction(entries.at(7)));
    QVERIFY(model);
    QCOMPARE(model->currentText(), QStringLiteral("48V"));
    QCOMPARE(model->accessibleName(), QStringLiteral("Velantor Model"));
    QCOMPARE(bar->widgetForAction(entries.at(8))->width(), 15);
    auto *logo = qobject_cast<QLabel *>(bar->widgetForAction(entries.last()));
    QVERIFY(logo);
    QCOMPARE(logo->pixmap(Qt::ReturnByValue).toImage(),
             QPixmap(QStringLiteral(":/new/images/tolk_logo.png")).toImage());
    QCOMPARE(bar->iconSize(), QSize(20, 20));
    QCOMPARE(bar->toolButtonStyle(), Qt::ToolButtonTextBesideIcon);
    QCOMPARE(bar->styleSheet(), QStringLiteral("QToolButton:disabled {   color: black;}"));
    QVERIFY(!bar->isFloatable());
    QVERIFY(!bar->isMovable());
}

void MainWindowTest::toolBarFitsTheSmallestWindow_data()
{
    QTest::addColumn<bool>("connected");
    QTest::newRow("disconnected") << false;
    QTest::newRow("connected") << true;
}

void MainWindowTest::toolBarFitsTheSmallestWindow()
{
    QFETCH(bool, connected);
    const SuiteLook look;
    window->resize(700, 350);
    if (connected)
        emit manager()->settingsRead(true);
    QCoreApplication::processEvents();
    auto *bar = window->findChild<QToolBar *>("mainToolBar");
    for (QAction *entry : bar->actions()) {
        const QWidget *widget = bar->widgetForAction(entry);
        QVERIFY2(widget->isVisible(), qPrintable(entry->text()));
        QVERIFY(widget->geometry().right() < bar->width());
    }
    QVERIFY(model()->width() >= model()->sizeHint().width());
    QVERIFY(modelLabel()->width() >= modelLabel()->sizeHint().width());
}

void MainWindowTest::modelIsReachedByTab()
{
    const SuiteLook look;
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    for (int tabs = 0; tabs < 60 && !model()->hasFocus(); ++tabs)
        QTest::keyClick(window->windowHandle(), Qt::Key_Tab);
    QVERIFY(model()->hasFocus());
}

void MainWindowTest::startsDisconnected()
{
    QVERIFY(action("connectAction")->isEnabled());
    QVERIFY(action("actionConnectToVel")->isEnabled());
    for (const char *name :
         {"disconnectAction", "readDataAction", "saveDataAction", "actionDisconnectAndRestart",
          "actionWriteProfiles", "actionReadProfiles", "actionAboutDevice"})
        QVERIFY2(!action(name)->isEnabled(), name);
}

void MainWindowTest::connectedTurnsTheToolBar()
{
    QSignalSpy disconnected(window.get(), &MainWindow::disconnectVelantor);
    emit manager()->settingsRead(true);
    QVERIFY(!action("connectAction")->isEnabled());
    QVERIFY(!action("actionConnectToVel")->isEnabled());
    QCOMPARE(action("connectAction")->text(), QStringLiteral("Connected!"));
    QCOMPARE(action("connectAction")->toolTip(), QStringLiteral("Connected!"));
    for (const char *name :
         {"disconnectAction", "readDataAction", "saveDataAction", "actionDisconnectAndRestart",
          "actionWriteProfiles", "actionReadProfiles", "actionExportHEX", "actionImportHEX",
          "actionAboutDevice"})
        QVERIFY2(action(name)->isEnabled(), name);
    QCOMPARE(disconnected.count(), 0);

    emit manager()->settingsRead(false);
    QCOMPARE(action("connectAction")->text(), QStringLiteral("Connect"));
    QCOMPARE(action("connectAction")->toolTip(), QStringLiteral("Connect to Velantor"));
    startsDisconnected();
    for (const char *name : {"actionExportHEX", "actionImportHEX"})
        QVERIFY2(!action(name)->isEnabled(), name);
    QCOMPARE(disconnected.count(), 1);
}

void MainWindowTest::lampLightsWhereConnectIsDisabled()
{
    const QIcon icon = action("connectAction")->icon();
    const QPixmap off(QStringLiteral(":/new/images/LEDoff.png"));
    const QPixmap on(QStringLiteral(":/new/images/LEDon.png"));
    QVERIFY(!off.isNull() && !on.isNull() && off.toImage() != on.toImage());
    QCOMPARE(icon.pixmap(off.size(), QIcon::Normal).toImage(), off.toImage());
    QCOMPARE(icon.pixmap(on.size(), QIcon::Disabled).toImage(), on.toImage());
}

void MainWindowTest::toolBarIsReadableOnADarkDesktop()
{
    const DarkDesktop dark;
    window = std::make_unique<MainWindow>();
    window->resize(900, 600);
    window->show();
    const SuiteLook look;
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    auto *bar = window->findChild<QToolBar *>("mainToolBar");
    // The difference of the brightest and the darkest place of the text, behind the picture.
    const auto contrast = [&](const QWidget *widget, int left) {
        const QRect text(widget->mapTo(window.get(), QPoint(left, 4)),
                         widget->size() - QSize(left + 4, 8));
        const QImage image = window->grab(text).toImage();
        int darkest = 255;
        int lightest = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                darkest = qMin(darkest, qGray(image.pixel(x, y)));
                lightest = qMax(lightest, qGray(image.pixel(x, y)));
            }
        }
        return lightest - darkest;
    };
    for (const bool connected : {false, true}) {
        window->velantorConnected(connected);
        QCoreApplication::processEvents();
        for (const char *name : {"connectAction", "disconnectAction", "saveDataAction"})
            QVERIFY2(contrast(bar->widgetForAction(action(name)), 30) > 120, name);
        QVERIFY(contrast(modelLabel(), 0) > 120);
        QVERIFY(contrast(model(), 4) > 80);
    }
}

void MainWindowTest::disconnectedTwiceSaysNothing()
{
    QSignalSpy disconnected(window.get(), &MainWindow::disconnectVelantor);
    window->velantorConnected(false);
    QCOMPARE(disconnected.count(), 0);
}

void MainWindowTest::anyFallOfTheLinkBringsTheMasterBack_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("a failed import or a disconnect") << 0;
    QTest::newRow("a failed read or write") << 1;
    QTest::newRow("failed device settings") << 2;
}

void MainWindowTest::anyFallOfTheLinkBringsTheMasterBack()
{
    QFETCH(int, way);
    emit manager()->settingsWrite(true);
    QVERIFY(!action("connectAction")->isEnabled());
    generator()->parseSSFile(REV7_24V_SS_FILE_NAME);
    QVERIFY(!generator()->isMaster());
    if (way == 0)
        emit manager()->settingsRead(false);
    else if (way == 1)
        emit manager()->settingsWrite(false);
    else
        emit manager()->unitSettingsWrite(false);
    QVERIFY(generator()->isMaster());
    QVERIFY(action("connectAction")->isEnabled());
}

void MainWindowTest::masterIsBackBeforeOthersHear()
{
    emit manager()->unitSettingsWrite(true);
    generator()->parseSSFile(REV7_24V_SS_FILE_NAME);
    bool masterWhenHeard = false;
    connect(window.get(), &MainWindow::disconnectVelantor, this,
            [&] { masterWhenHeard = generator()->isMaster(); });
    window->velantorConnected(false);
    QVERIFY(masterWhenHeard);
}

void MainWindowTest::loadedUnitSettingsChangeNoState()
{
    QSignalSpy disconnected(window.get(), &MainWindow::disconnectVelantor);
    emit manager()->unitSettingsRead(true);
    QVERIFY(action("connectAction")->isEnabled());
    emit manager()->settingsRead(true);
    emit manager()->unitSettingsRead(false);
    QVERIFY(!action("connectAction")->isEnabled());
    QCOMPARE(disconnected.count(), 0);
}

void MainWindowTest::connectAsksTheManager()
{
    QSignalSpy asked(window.get(), &MainWindow::masterConnectVelantorSignal);
    action("connectAction")->trigger();
    action("actionConnectToVel")->trigger();
    QCOMPARE(asked.count(), 2);
    for (QWidget *dialog : QApplication::topLevelWidgets()) {
        if (dialog != window.get() && dialog->isVisible())
            dialog->close();
    }
}

void MainWindowTest::disconnectTellsThenResets()
{
    QStringList order;
    connect(window.get(), &MainWindow::disconnectVelantor, this, [&] { order.append("tell"); });
    connect(window.get(), &MainWindow::resetVelantorSignal, this, [&] { order.append("reset"); });
    MessageBoxAnswers answers; // no port was ever chosen: the reset says so
    window->onDisconnectAndReset();
    QCOMPARE(order, QStringList({"tell", "reset"}));
    QCOMPARE(answers.titles(), QStringList({"Failed Opening Serial Port"}));
}

void MainWindowTest::eachDisconnectEntryTells_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("menu") << QByteArray("actionDisconnectAndRestart");
    QTest::newRow("tool bar") << QByteArray("disconnectAction");
}

void MainWindowTest::eachDisconnectEntryTells()
{
    QFETCH(QByteArray, name);
    emit manager()->settingsRead(true);
    QSignalSpy reset(window.get(), &MainWindow::resetVelantorSignal);
    MessageBoxAnswers answers;
    action(name.constData())->trigger();
    QCOMPARE(reset.count(), 1);
    QVERIFY(action("connectAction")->isEnabled());
}

void MainWindowTest::disconnectWithPortResetsThenTells()
{
    QStringList order;
    connect(window.get(), &MainWindow::disconnectVelantor, this, [&] { order.append("tell"); });
    connect(window.get(), &MainWindow::resetVelantorWithPort, this,
            [&](const QString &port) { order.append("reset " + port); });
    MessageBoxAnswers answers;
    window->onDisconnectAndResetWithPort(QStringLiteral("/dev/none-there"));
    QCOMPARE(order, QStringList({"reset /dev/none-there", "tell"}));
}

void MainWindowTest::exportsCarryWhetherSettingsGoAlong()
{
    QSignalSpy exports(window.get(), &MainWindow::exportToXML);
    auto *button = window->findChild<QPushButton *>("saveProfilesXML");
    const QList<std::function<void()>> ways = {
        [&] { window->exportProfilesXML(); },
        [&] { action("actionExportXMLProfiles")->trigger(); },
        [&] { button->click(); },
        [&] { window->exportProfilesSettingsXML(); },
        [&] { action("actionExportXMLProfilesAndSettings")->trigger(); },
    };
    for (const auto &way : ways) {
        FileDialogAnswer cancel{QString()};
        way();
        QVERIFY(cancel.asked && cancel.saving);
    }
    QCOMPARE(exports.count(), ways.size());
    for (int i = 0; i < ways.size(); ++i)
        QCOMPARE(exports.at(i).at(0).toBool(), i >= 3);
}

void MainWindowTest::importsTellWhetherSettingsAreLoaded()
{
    QSignalSpy imports(window.get(), &MainWindow::importFromXML);
    auto *button = window->findChild<QPushButton *>("openProfilesXML");
    for (const bool loaded : {false, true}) {
        emit manager()->unitSettingsRead(loaded);
        FileDialogAnswer cancel{QString()};
        button->click();
        QVERIFY(cancel.asked && !cancel.saving);
        FileDialogAnswer cancelAgain{QString()};
        action("actionImportXML")->trigger();
        QVERIFY(cancelAgain.asked);
    }
    QCOMPARE(imports.count(), 4);
    for (int i = 0; i < 4; ++i)
        QCOMPARE(imports.at(i).at(0).toBool(), i >= 2);
}

void MainWindowTest::settingsOfAFileCountAsLoaded()
{
    QSignalSpy imports(window.get(), &MainWindow::importFromXML);
    emit window->findChild<XMLGeneratorParser::XMLManager *>()->unitSettingsRead_xml(true);
    FileDialogAnswer cancel{QString()};
    action("actionImportXML")->trigger();
    QVERIFY(cancel.asked);
    QVERIFY(imports.last().first().toBool());
}

void MainWindowTest::imagesAreImportedOnRequest()
{
    emit manager()->settingsRead(true);
    FileDialogAnswer cancel{QString()};
    action("actionImportHEX")->trigger();
    QVERIFY(cancel.asked && !cancel.saving);
    QCOMPARE(cancel.title, QStringLiteral("Select HEX File to Import Profiles"));
}

void MainWindowTest::entriesOfNoMenuDoNothing_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char *name :
         {"actionHelp", "actionExportHEX", "actionNew_firmware_tool", "actionEditAutoUpdates"})
        QTest::newRow(name) << QByteArray(name);
}

void MainWindowTest::entriesOfNoMenuDoNothing()
{
    QFETCH(QByteArray, name);
    emit manager()->settingsRead(true);
    MessageBoxAnswers boxes;
    FileDialogAnswer file{QString()};
    const auto shown = [this] {
        QStringList names;
        for (const QWidget *widget : QApplication::topLevelWidgets()) {
            if (widget->isVisible() && widget != window.get())
                names.append(QString::fromLatin1(widget->metaObject()->className()));
        }
        return names;
    };
    QVERIFY(action(name.constData())->isEnabled());
    action(name.constData())->trigger();
    QCOMPARE(shown(), QStringList());
    QVERIFY(boxes.seen().isEmpty());
    QVERIFY(!file.asked);
}

void MainWindowTest::toolbarAndMenuDisableTogether()
{
    const QList<QWidget *> together{window->menuBar(), window->findChild<QWidget *>("mainToolBar"),
                                    window->findChild<QWidget *>("addProfileButton"),
                                    window->findChild<QWidget *>("viewDeviceSettings")};
    window->disableToolbarActions(true);
    for (const QWidget *widget : together)
        QVERIFY(!widget->isEnabled());
    window->disableToolbarActions(false);
    for (const QWidget *widget : together)
        QVERIFY(widget->isEnabled());
}

void MainWindowTest::resizingEndsAtTheSameSize_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("any") << QSize(900, 600);
    QTest::newRow("smallest") << QSize(700, 350);
    QTest::newRow("smallest width") << QSize(700, 600);
}

void MainWindowTest::resizingEndsAtTheSameSize()
{
    QFETCH(QSize, size);
    window->resize(size);
    // What stands at a wrong place comes back to the right one, though the size is the same.
    auto *button = window->findChild<QWidget *>("viewDeviceSettings");
    QTRY_COMPARE(button->y(), size.height() - 97);
    button->move(button->x(), 0);
    window->resizeMainWindow();
    QCOMPARE(window->size(), size);
    QTRY_COMPARE(button->y(), size.height() - 97);
}

void MainWindowTest::windowUsesTheAnchors()
{
    window->resize(1600, 1000);
    QTRY_COMPARE(window->findChild<QWidget *>("viewDeviceSettings")->y(), 1000 - 97);
    QCOMPARE(window->findChild<QWidget *>("settingsList")->width(), 1600 - 216);
    window->resize(700, 350);
    QTRY_COMPARE(window->findChild<QWidget *>("viewDeviceSettings")->y(), 350 - 97);
}

void MainWindowTest::deleteAllAsksOnlyWithRows_data()
{
    QTest::addColumn<bool>("byMenu");
    QTest::newRow("menu") << true;
    QTest::newRow("button") << false;
}

void MainWindowTest::deleteAllAsksOnlyWithRows()
{
    QFETCH(bool, byMenu);
    const auto deleteAll = [&] {
        if (byMenu)
            action("actionDeleteAllProfiles")->trigger();
        else
            window->findChild<QPushButton *>("deleteAllProfiles")->click();
    };
    MessageBoxAnswers answers;
    deleteAll();
    QVERIFY(answers.seen().isEmpty());
    addRow();
    answers.push(QMessageBox::Yes);
    deleteAll();
    QCOMPARE(answers.titles(), QStringList("Delete All Profiles?"));
    QCOMPARE(window->findChild<QListWidget *>("profileNamesList")->count(), 0);
}

void MainWindowTest::helpAndAboutShowTheirBoxes()
{
    MessageBoxAnswers answers;
    action("actionHelp_2")->trigger();
    action("actionAbout")->trigger();
    QCOMPARE(answers.titles(), QStringList({"Basic Usage", "About Velantor Software Suite"}));
    QVERIFY(answers.seen().at(1).text.contains("Build: v1.105 - RELEASE - "));
    QVERIFY(answers.seen().at(1).text.contains("Velantor Bundle Version: v1.039"));
}

void MainWindowTest::reloadedBundleBringsTheMasterBack()
{
    generator()->parseSSFile(REV7_24V_SS_FILE_NAME);
    QVERIFY(!generator()->isMaster());
    QVERIFY(QFile::remove(REV7_72V_SS_FILE_NAME));
    QSignalSpy loaded(generator(), &HParser::Generator::masterSSFileLoaded);
    window->reloadBundle();
    QVERIFY(generator()->isMaster());
    QCOMPARE(generator()->getHFileLocation(), MASTER_SS_FILE_NAME);
    QVERIFY(QFile::exists(REV7_72V_SS_FILE_NAME)); // the bundle was unpacked
    QCOMPARE(loaded.count(), 0);
}

void MainWindowTest::unpackedFilesStandInTheWorkingDirectory()
{
    QCOMPARE(QDir::current().canonicalPath(),
             QDir(home->path() + "/tst_mainwindow").canonicalPath());
    for (const char *name :
         {"vexa.bin", "device.txt", "v1.039.velantor", "master.ss", "24V_rev7.ss", "48V_FSv1.ss",
          "48V_FSv2.ss", "72V_rev7.ss", "setting_tooltips.txt", "device_keep_profiles.txt",
          "device_overwrite_profiles.txt", "checksums", "saved_profiles/24v_default_profiles.xml",
          "saved_profiles/48v_default_profiles.xml", "saved_profiles/72v_default_profiles.xml"})
        QVERIFY2(QFileInfo::exists(QLatin1String(name)), name);
}

void MainWindowTest::degreeSignsSurviveTheBundle()
{
    QFile schema(MASTER_SS_FILE_NAME);
    QVERIFY(schema.open(QIODevice::ReadOnly));
    QFile member(QStringLiteral(VELANTOR_BUNDLE_MEMBERS "/") + MASTER_SS_FILE_NAME);
    QVERIFY(member.open(QIODevice::ReadOnly));
    const QByteArray text = schema.readAll();
    QVERIFY(text.contains("\"\xC2\xB0"
                          "C\""));
    QCOMPARE(text, member.readAll());
}

void MainWindowTest::theMenuOpensTheFirmwareTool()
{
    QVERIFY(action("actionFlashFirmware")->isEnabled());
    action("actionFlashFirmware")->trigger();
    const QPointer<VelantorFirmwareToolWindow> tool = firmwareTool();
    QVERIFY(tool);
    QCOMPARE(tool->parentWidget(), window.get());
    QVERIFY(tool->isVisible());
    tool->close();
    QTRY_VERIFY(!tool);
    QVERIFY(window->isVisible());
    window->on_flashFirmware();
    QVERIFY(firmwareTool());
}

void MainWindowTest::flashedFirmwareReloadsTheBundle()
{
    generator()->parseSSFile(REV7_24V_SS_FILE_NAME);
    QVERIFY(!generator()->isMaster());
    QVERIFY(QFile::remove(REV7_72V_SS_FILE_NAME));
    window->on_flashFirmware();
    QVERIFY(!generator()->isMaster());
    emit firmwareTool()->flashed();
    QVERIFY(generator()->isMaster());
    QVERIFY(QFile::exists(REV7_72V_SS_FILE_NAME));
}

void MainWindowTest::afterAFlashTheChargerIsResetThenTold()
{
    emit manager()->settingsRead(true);
    QVERIFY(action("disconnectAction")->isEnabled());
    QStringList order;
    connect(window.get(), &MainWindow::resetVelantorWithPort, this,
            [&](const QString &port) { order.append("reset " + port); });
    connect(manager(), &UploadDownload::UploadDownloadManager::settingsRead, this,
            [&](bool success) { order.append(success ? "read" : "not read"); });
    connect(window.get(), &MainWindow::disconnectVelantor, this, [&] { order.append("tell"); });
    window->on_flashFirmware();
    MessageBoxAnswers answers;
    emit firmwareTool()->resetVelantorSignalFT(QStringLiteral("/dev/none-there"));
    // The port is gone, which ends the link; it is told at its fall and at the end. The reset's
    // own receiver ran before this test's.
    QCOMPARE(answers.titles(), QStringList("Failed Opening Serial Port"));
    QCOMPARE(order, QStringList({"tell", "not read", "reset /dev/none-there", "tell"}));
    QVERIFY(action("connectAction")->isEnabled());
}

void MainWindowTest::theFirmwareToolMayAskForAConnect()
{
    QSignalSpy asked(window.get(), &MainWindow::masterConnectVelantorSignal);
    window->on_flashFirmware();
    emit firmwareTool()->connectVelantorSignalFT();
    QCOMPARE(asked.count(), 1);
}

void MainWindowTest::thePaneIsEmptyAtFirst()
{
    for (const char *name :
         {"profileSettingsName", "profileSettingsDescription", "editProfileButton",
          "profileActiveButton", "profileDefaultButton", "profileModifiableButton",
          "containerScroll", "cancelChangesButton", "saveChangesButton", "unitSettingsDisplay",
          "unitSettingsTitle", "resetDefaults"})
        QVERIFY2(!window->findChild<QWidget *>(name)->isVisible(), name);
    for (const char *name : {"addProfileButton", "viewDeviceSettings"})
        QVERIFY2(window->findChild<QWidget *>(name)->isEnabled(), name);
}

void MainWindowTest::theDeviceButtonShowsAndHidesThePage()
{
    auto *button = window->findChild<QAbstractButton *>("viewDeviceSettings");
    auto *page = window->findChild<QWidget *>("unitSettingsDisplay");
    auto *defaults = window->findChild<QWidget *>("resetDefaults");
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(page->isVisible());
    QCOMPARE(defaults->y(), window->findChild<QWidget *>("settingsList")->y() + 4);
    QVERIFY(defaults->geometry().bottom() < page->y());
    window->resize(1000, 600);
    QTRY_COMPARE(defaults->geometry().right(),
                 window->findChild<QWidget *>("cancelChangesButton")->geometry().right());
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(!page->isVisible());
    // The entry of the menu only ever shows it.
    action("actionEditGlobalSettings")->trigger();
    action("actionEditGlobalSettings")->trigger();
    QVERIFY(page->isVisible());
    QVERIFY(button->isChecked());
}

void MainWindowTest::theDeviceButtonResizesFirst()
{
    const auto *page = window->findChild<QWidget *>("unitSettingsDisplay");
    QList<bool> pageAtResize;
    const When resized(window.get(), QEvent::Resize,
                       [&] { pageAtResize.append(page->isVisible()); });
    window->findChild<QAbstractButton *>("viewDeviceSettings")->click();
    QVERIFY(page->isVisible());
    QVERIFY(!pageAtResize.isEmpty());
    QVERIFY(!pageAtResize.first());
}

void MainWindowTest::rowsComeIntoThePane()
{
    addRow();
    addRow();
    auto *list = window->findChild<QListWidget *>("profileNamesList");
    auto *scroll = window->findChild<QWidget *>("containerScroll");
    auto *active = window->findChild<QAbstractButton *>("profileActiveButton");
    QVERIFY(!scroll->isVisible());
    emit list->itemClicked(list->item(0));
    QVERIFY(scroll->isVisible());
    QVERIFY(active->isChecked());
    auto *row = window->findChild<ProfileName *>();
    row->findChild<QAbstractButton *>("activeProfileButton")->click();
    QVERIFY(!active->isChecked());

    MessageBoxAnswers answers;
    answers.push(QMessageBox::Yes);
    row->findChild<QAbstractButton *>("deleteProfileButton")->click();
    QVERIFY(!scroll->isVisible());
    emit list->itemClicked(list->item(0));
    QVERIFY(scroll->isVisible());
    answers.push(QMessageBox::Yes);
    action("actionDeleteAllProfiles")->trigger();
    QVERIFY(!scroll->isVisible());
}

void MainWindowTest::cancelMovesWithTheView()
{
    addRow();
    auto *list = window->findChild<QListWidget *>("profileNamesList");
    auto *button = window->findChild<QAbstractButton *>("viewDeviceSettings");
    const auto *cancel = window->findChild<QWidget *>("cancelChangesButton");
    const auto *save = window->findChild<QWidget *>("saveChangesButton");
    // Without a profile the page goes as it came, and a profile finds all in its place.
    QTest::mouseClick(button, Qt::LeftButton);
    QTest::mouseClick(button, Qt::LeftButton);
    emit list->itemClicked(list->item(0));
    const QRect above = cancel->geometry();
    QCOMPARE(above.top(), window->findChild<QWidget *>("settingsList")->y() + 4);
    // Back by the row and by the button.
    for (const bool byRow : {true, false}) {
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(cancel->y(), save->y());
        QCOMPARE(cancel->size(), save->size());
        if (byRow)
            emit list->itemClicked(list->item(0));
        else
            QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(cancel->geometry(), above);
    }
}

void MainWindowTest::anEmptyListShowsThePageAnew()
{
    showSettingsOfACharger(7.0);
    addRow();
    deviceSetting("brightness")->setValue(3.0);
    const auto *save = window->findChild<QAbstractButton *>("saveChangesButton");
    QCOMPARE(save->text(), QStringLiteral("Save Settings to Velantor*"));
    emit manager()->deleteAllProfiles();
    QVERIFY(window->findChild<QWidget *>("unitSettingsDisplay")->isVisible());
    QCOMPARE(save->text(), QStringLiteral("Save to Velantor*"));
}

void MainWindowTest::showSettingsOfACharger(double brightness)
{
    emit manager()->settingsRead(true);
    deviceSetting("brightness")->advancedEnabled = true;
    deviceSetting("brightness")->setValue(brightness);
    emit manager()->unitSettingsRead(true);
    window->findChild<QAbstractButton *>("viewDeviceSettings")->click();
}

void MainWindowTest::aToldReadCanBeSavedTo()
{
    window->findChild<QAbstractButton *>("viewDeviceSettings")->click();
    const auto *save = window->findChild<QWidget *>("saveChangesButton");
    QVERIFY(!save->isEnabled());
    emit manager()->settingsRead(true);
    QVERIFY(save->isEnabled());
    emit manager()->settingsRead(false);
    QVERIFY(!save->isEnabled());
}

void MainWindowTest::cancelComesBackToWhatWasRead()
{
    // A read is told before its values are there.
    showSettingsOfACharger(7.0);
    deviceSetting("brightness")->setValue(3.0);
    window->findChild<QAbstractButton *>("cancelChangesButton")->click();
    QCOMPARE(deviceSetting("brightness")->getValue(), QStringLiteral("7"));
}

void MainWindowTest::editsCountAsSavedBeforeAWriteBegins_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("menu") << QByteArray("actionWriteProfiles");
    QTest::newRow("tool bar") << QByteArray("saveDataAction");
}

void MainWindowTest::editsCountAsSavedBeforeAWriteBegins()
{
    QFETCH(QByteArray, name);
    showSettingsOfACharger(7.0);
    deviceSetting("brightness")->setValue(3.0);
    auto *button = window->findChild<QAbstractButton *>("viewDeviceSettings");
    QCOMPARE(button->text(), QStringLiteral("View Device Settings*"));
    // The write begins by refusing more profiles than a charger holds.
    for (int row = 0; row < 18; ++row)
        addRow();
    MessageBoxAnswers answers;
    QString whenItBegins;
    answers.push([&](QMessageBox *box) {
        whenItBegins = button->text();
        box->close();
    });
    action(name.constData())->trigger();
    QCOMPARE(answers.titles(), QStringList({"Upload profiles status"}));
    QCOMPARE(whenItBegins, QStringLiteral("View Device Settings"));
}

void MainWindowTest::aFallenLinkUnhooksThePane()
{
    showSettingsOfACharger(7.0);
    auto *save = window->findChild<QWidget *>("saveChangesButton");
    QVERIFY(save->isEnabled());
    window->velantorConnected(false);
    QVERIFY(!save->isEnabled());
}

void MainWindowTest::aFallenLinkUnhooksThePaneBeforeTheMarksGo()
{
    showSettingsOfACharger(7.0);
    addRow();
    auto *row = window->findChild<ProfileName *>();
    row->findChild<QAbstractButton *>("activeProfileButton")->click();
    QVERIFY(row->getTitle().endsWith("**"));
    QStringList titles;
    const When disabled(window->findChild<QWidget *>("saveChangesButton"), QEvent::EnabledChange,
                        [&] { titles.append(row->getTitle()); });
    window->velantorConnected(false);
    QCOMPARE(titles.size(), 1);
    QVERIFY(titles.first().endsWith("**"));
    QVERIFY(!row->getTitle().endsWith("**"));
}

void MainWindowTest::cancelAfterAFailedReadKnowsTheSchemaOnly()
{
    // The link falls before the settings to come back to are taken.
    showSettingsOfACharger(7.0);
    emit manager()->settingsRead(false);
    QCOMPARE(deviceSetting("brightness")->getValue(), QStringLiteral("5"));
    deviceSetting("brightness")->setValue(9.0);
    window->findChild<QAbstractButton *>("cancelChangesButton")->click();
    QCOMPARE(deviceSetting("brightness")->getValue(), QStringLiteral("5"));
}

void MainWindowTest::statisticsOpenAnewEachTime()
{
    emit manager()->settingsRead(true);
    action("actionAboutDevice")->trigger();
    action("actionAboutDevice")->trigger();
    const QList<QDialog *> dialogs = window->findChildren<QDialog *>("DisplayUnitStats");
    QCOMPARE(dialogs.size(), 2);
    for (QDialog *dialog : dialogs) {
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Device Stats"));
        QVERIFY(dialog->isVisible());
        QVERIFY(!dialog->isModal());
        dialog->close();
    }
    QTRY_VERIFY(window->findChildren<QDialog *>("DisplayUnitStats").isEmpty());
}

void MainWindowTest::addRow()
{
    auto *profile = new ProfileSettings;
    QVERIFY(profile->initializeStructSettings("Lithium", generator()));
    emit window->findChild<ImportProfiles::ImportProfilesMain *>()->profileReadyForImport(
        profile, true, false);
}

void MainWindowTest::theManagerCanEmptyTheList()
{
    auto *list = window->findChild<QListWidget *>("profileNamesList");
    addRow();
    addRow();
    QCOMPARE(list->count(), 2);
    emit manager()->deleteAllProfiles();
    QCOMPARE(list->count(), 0);
}

void MainWindowTest::rowsBehindADisconnectAreMarked()
{
    // Each told read enables the marks, after the fall of the link has disabled them.
    emit manager()->settingsRead(true);
    emit manager()->settingsRead(false);
    addRow();
    auto *row = window->findChild<ProfileName *>();
    QVERIFY(!row->getTitle().endsWith("**"));
    row->findChild<QAbstractButton *>("activeProfileButton")->click();
    QVERIFY(row->getTitle().endsWith("**"));
}

void MainWindowTest::aWriteTakesTheMarksBeforeItConnects()
{
    emit manager()->settingsRead(true);
    emit manager()->settingsRead(false);
    addRow();
    auto *row = window->findChild<ProfileName *>();
    row->findChild<QAbstractButton *>("activeProfileButton")->click();
    QVERIFY(row->getTitle().endsWith("**"));
    QString whenConnected;
    connect(action("connectAction"), &QAction::changed, this, [&] {
        if (whenConnected.isEmpty())
            whenConnected = row->getTitle();
    });
    emit manager()->settingsWrite(true);
    QVERIFY(!action("connectAction")->isEnabled());
    QVERIFY(!whenConnected.isEmpty());
    QVERIFY(!whenConnected.endsWith("**"));
}

HParser::StructSetting *MainWindowTest::member(const char *chemistry, const char *name) const
{
    return generator()
        ->getChemistrySettingsByName(QLatin1String(chemistry))
        ->getStructSettingByName(QLatin1String(name));
}

void MainWindowTest::startsWithTheSchemasOwnLimits()
{
    // A bundle's schema may allow less than the table of the models: it stands at the start.
    const HParser::Generator *before = generator();
    QVERIFY(before->isMaster());
    QCOMPARE(lithiumLimit("full_V"), 63.0);
    QCOMPARE(member("Lithium", "full_V")->upperBound->toString().trimmed(), QStringLiteral("63"));
    QCOMPARE(member("Lithium", "bulk_I")->upperBound->toString().trimmed(), QStringLiteral("8.0"));
}

void MainWindowTest::anotherModelChecksTheRows_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<QString>("model");
    QTest::addColumn<int>("rows");
    QTest::addColumn<double>("limit");
    QTest::newRow("kept") << int(QMessageBox::No) << "48V" << 1 << 63.0;
    QTest::newRow("removed") << int(QMessageBox::Yes) << "24V" << 0 << 34.0;
}

void MainWindowTest::anotherModelChecksTheRows()
{
    QFETCH(int, answer);
    QFETCH(QString, model);
    QFETCH(int, rows);
    QFETCH(double, limit);
    addRow(); // a full voltage of 42
    MessageBoxAnswers answers;
    answers.push(QMessageBox::StandardButton(answer));
    this->model()->setCurrentText(QStringLiteral("24V"));
    QCOMPARE(answers.seen().size(), 1);
    QVERIFY(answers.seen().first().text.contains("the 24V Velantor's hardware limits"));
    QCOMPARE(this->model()->currentText(), model);
    QCOMPARE(window->findChild<QListWidget *>("profileNamesList")->count(), rows);
    QCOMPARE(lithiumLimit("full_V"), limit);
}

void MainWindowTest::aStrictSchemaLocksTheModel()
{
    bool enabledAtImport = false;
    connect(window->findChild<HEXGeneratorParser::HEXManager *>(),
            &HEXGeneratorParser::HEXManager::deleteAllProfiles, this,
            [&] { enabledAtImport = model()->isEnabled(); });
    QVERIFY(
        QFile::copy(VELANTOR_SOURCE_DIR "/simulator/pages/72v.hex", DOWNLOADED_PROFILES_FILE_NAME));
    generator()->parseSSFile(REV7_72V_SS_FILE_NAME);
    emit generator()->strictSSFileLoaded();
    QVERIFY(enabledAtImport); // which comes first
    QVERIFY(window->findChild<QListWidget *>("profileNamesList")->count() > 0);
    QCOMPARE(model()->currentText(), QStringLiteral("72V"));
    QVERIFY(!model()->isEnabled());

    emit manager()->settingsRead(true);
    emit manager()->settingsRead(false);
    QVERIFY(generator()->isMaster());
    QCOMPARE(model()->currentText(), QStringLiteral("72V"));
    QVERIFY(model()->isEnabled());
    QCOMPARE(lithiumLimit("full_V"), 103.0);
}

void MainWindowTest::theLinkFallsWhileAQuestionIsOpen_data()
{
    QTest::addColumn<bool>("rowsGo");
    QTest::addColumn<bool>("all");
    QTest::newRow("one row") << false << false;
    QTest::newRow("one row, which a read has replaced") << true << false;
    QTest::newRow("all rows") << false << true;
    QTest::newRow("all rows, which a read has replaced") << true << true;
}

void MainWindowTest::theLinkFallsWhileAQuestionIsOpen()
{
    QFETCH(bool, rowsGo);
    QFETCH(bool, all);
    showSettingsOfACharger(7.0);
    addRow();
    auto *list = window->findChild<QListWidget *>("profileNamesList");
    emit list->itemClicked(list->item(0));
    window->findChild<QAbstractButton *>("editProfileButton")->click();
    const QPointer<ProfileName> row = window->findChild<ProfileName *>();
    MessageBoxAnswers answers;
    answers.push([&](QMessageBox *box) {
        if (rowsGo) {
            emit manager()->deleteAllProfiles();
            addRow();
            QTRY_VERIFY(!row);
        }
        emit manager()->settingsRead(false);
        box->button(QMessageBox::Yes)->click();
    });
    if (all)
        action("actionDeleteAllProfiles")->trigger();
    else
        row->findChild<QAbstractButton *>("deleteProfileButton")->click();
    QCOMPARE(answers.seen().size(), 1);
    QVERIFY(generator()->isMaster());
    QVERIFY(model()->isEnabled());
    // Who was asked about one row has not agreed to the loss of another.
    QCOMPARE(list->count(), rowsGo && !all ? 1 : 0);
    QVERIFY(!window->findChild<QWidget *>("containerScroll")->isVisible());
}

void MainWindowTest::rowsGoWhileTheModelIsAskedAbout()
{
    addRow(); // a full voltage of 42
    addRow();
    auto *list = window->findChild<QListWidget *>("profileNamesList");
    emit list->itemClicked(list->item(1));
    MessageBoxAnswers answers;
    answers.push([&](QMessageBox *box) {
        emit manager()->deleteAllProfiles();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        window->reloadBundle();
        box->button(QMessageBox::Yes)->click();
    });
    model()->setCurrentText(QStringLiteral("24V"));
    QCOMPARE(list->count(), 0);
    QCOMPARE(model()->currentText(), QStringLiteral("24V"));
    QVERIFY(!window->findChild<QWidget *>("containerScroll")->isVisible());
}

void MainWindowTest::theLinkFallsWhileTheWizardIsOpen()
{
    emit manager()->settingsRead(true);
    generator()->parseSSFile(REV7_72V_SS_FILE_NAME);
    window->findChild<QAbstractButton *>("addProfileButton")->click();
    auto *wizard = window->findChild<QDialog *>("NewProfileWizard");
    QVERIFY(wizard);
    wizard->findChild<QAbstractButton *>("Lithium")->click();
    emit manager()->settingsRead(false);
    QVERIFY(generator()->isMaster());
    wizard->findChild<QAbstractButton *>("finishButton")->click();
    auto *list = window->findChild<QListWidget *>("profileNamesList");
    QCOMPARE(list->count(), 1);
    QVERIFY(window->findChild<QWidget *>("containerScroll")->isVisible());
    // It marks no changes: there is no charger to differ from.
    auto *row = window->findChild<ProfileName *>();
    row->findChild<QAbstractButton *>("activeProfileButton")->click();
    QVERIFY(!row->getTitle().endsWith("**"));
}

QTEST_MAIN(MainWindowTest)
#include "tst_mainwindow.moc"
