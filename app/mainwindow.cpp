#include "app/mainwindow.h"

#include "HEXGeneratorParser/hexmanager.h"
#include "HEXGeneratorParser/hexutility.h"
#include "HEXGeneratorParser/selfcheck.h"
#include "ImportProfiles/importprofilesmain.h"
#include "SSGenerator/generator.h"
#include "app/configfile.h"
#include "app/filenames.h"
#include "app/messagedialogs.h"
#include "app/panelayout.h"
#include "app/versionstringchecks.h"
#include "app/workingfiles.h"
#include "bundles/hardwaredropdown.h"
#include "bundles/velantorbundlemanager.h"
#include "device/uploaddownloadmanager.h"
#include "editors/displayunitstats.h"
#include "editors/settingspanemanager.h"
#include "firmware/velantorfirmwaretoolwindow.h"
#include "profiles/profilename.h"
#include "profiles/profilenameslistmanager.h"
#include "profiles/profilesettings.h"
#include "ui_mainwindow.h"
#include "updates/newfirmwarechecker.h"
#include "updates/newfirmwarecheckermanager.h"
#include "updates/updatecheckerdialog.h"
#include "xml/xmlmanager.h"

#include <QAction>
#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QIcon>
#include <QLabel>
#include <QMessageBox>
#include <QPalette>
#include <QPointer>
#include <QResizeEvent>
#include <QStyle>
#include <QThread>
#include <QTimer>

#include <chrono>
#include <cstdlib>

namespace
{
/// An empty widget for the tool bar, of a fixed width.
QWidget *spacer(int width, QWidget *parent)
{
    auto *widget = new QWidget(parent);
    widget->setFixedWidth(width);
    return widget;
}

/// An empty widget for the tool bar that takes all the room there is.
QWidget *expandingSpacer(QWidget *parent)
{
    auto *widget = new QWidget(parent);
    widget->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    return widget;
}

/// Checks for a newer bundle, and fetches it, in front of the user; returns when that is over.
void fetchNewBundle(QWidget *parent)
{
    using NewFirmwareChecker::UpdateCheckerDialog;
    auto *dialog = new UpdateCheckerDialog(parent);
    QEventLoop loop;
    QObject::connect(dialog, &UpdateCheckerDialog::destroyed, &loop, &QEventLoop::quit);
    dialog->checkForNewBundle();
    loop.exec();
}

/// The sheet of the tool bar writes what is disabled black, which needs a light ground on every
/// desktop.
void keepLight(QToolBar *bar)
{
    if (bar->palette().color(QPalette::Window).lightness() >= 128)
        return;
    const QPalette light(QColor(239, 239, 239));
    bar->setPalette(light);
    // Under a style sheet nobody takes a palette from the parent.
    for (QWidget *entry : bar->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly))
        entry->setPalette(light);
}
} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent), ui(std::make_unique<Ui::MainWindow>())
{
    runTests();
    setWorkingDirectory();
    WorkingFiles::unpackTools();
    WorkingFiles::unpackDefaultProfiles();

    bundleManager = std::make_unique<VelantorBundleManager>(this, fetchNewBundle);
    bundleManager->extractLatestValidBundle();
    installationChecks();
    startupChecksPassed = true;

    generator = new HParser::Generator(nullptr);
    generator->setHFileLocation(MASTER_SS_FILE_NAME);
    generator->setTooltipFileLoc(TOOLTIP_FILE_NAME);
    generator->parseSSAndTooltips();
    connect(this, &MainWindow::disconnectVelantor, generator,
            &HParser::Generator::loadMasterSSFile);

    ui->setupUi(this);
    panes = std::make_unique<PaneLayout>(ui.get());
    setWindowTitle(tr("Velantor Software Suite") + tr(" For Firmware v1.0+"));
    setButtonIcons();
    createManagers();
    connectManagers();
    extraUIAdditions();
    connectActions();
    if (QCoreApplication::arguments().contains(QStringLiteral("-f")))
        runFirmwareToolAlone();
    resize(size());
    // When the event loop runs, the window is there, and what comes up comes up over it.
    QTimer::singleShot(0, this, &MainWindow::readConfigFile);
}

MainWindow::~MainWindow()
{
    // The rows and the managers hold structs of the schema: they go first.
    delete centralWidget();
    delete generator;
}

void MainWindow::runTests()
{
    Q_ASSERT(HEXGeneratorParser::HexUtility::machineIsLittleEndian());
    HEXGeneratorParser::runWriteToHexChecks();
    HEXGeneratorParser::runHexBufferChecks();
    HEXGeneratorParser::runHexUtilityChecks();
    runVersionStringChecks();
}

void MainWindow::setWorkingDirectory()
{
    if (!WorkingFiles::enterWorkingDirectory()) {
        MessageDialogs::mainFolderNotFound(this);
        std::exit(1);
    }
}

void MainWindow::installationChecks()
{
    if (!QFile::exists(MASTER_SS_FILE_NAME)) {
        MessageDialogs::ssFileMissing(this);
        std::exit(1);
    }
    WorkingFiles::makeSavedProfilesDirectory();
    if (!QFile::exists(VEXA_FILE_NAME)) {
        MessageDialogs::vexaMissing(this);
        std::exit(1);
    }
    if (!QFile::exists(FILE_FOR_VEXA_NAME)) {
        MessageDialogs::deviceTxtMissing(this);
        std::exit(1);
    }
}

void MainWindow::setButtonIcons()
{
    ui->addProfileButton->setIcon(QIcon(QStringLiteral(":/new/images/new_file.ico")));
    ui->openProfilesXML->setIcon(style()->standardIcon(QStyle::SP_DialogOpenButton));
    ui->saveProfilesXML->setIcon(style()->standardIcon(QStyle::SP_DialogSaveButton));
    ui->deleteAllProfiles->setIcon(style()->standardIcon(QStyle::SP_DialogDiscardButton));
}

void MainWindow::createManagers()
{
    settingsPane = new SettingsPaneManager(ui.get(), generator, this);
    listManager = new ProfileNamesListManager(this, ui->profileNamesList, ui->addProfileButton,
                                              ui->unitSettingsDisplay, ui->profileNameUpButton,
                                              ui->profileNameDownButton, generator, settingsPane);
    importer = new ImportProfiles::ImportProfilesMain(this, generator, this);
    xmlManager =
        new XMLGeneratorParser::XMLManager(this, ui->profileNamesList, importer, generator, this);
    hexManager =
        new HEXGeneratorParser::HEXManager(this, ui->profileNamesList, generator, importer, this);
    uploadDownload = new UploadDownload::UploadDownloadManager(hexManager, this);
    configFile = new ConfigFile(this);
    firmwareCheckerManager = new NewFirmwareChecker::NewFirmwareCheckerManager(this);
    hardwareDropdown = new HardwareDropdown(generator, this);
}

/// Receivers of one signal run in the order of these lines.
void MainWindow::connectManagers()
{
    using HEXGeneratorParser::HEXManager;
    using HParser::Generator;
    using ImportProfiles::ImportProfilesMain;
    using List = ProfileNamesListManager;
    using NewFirmwareChecker::NewFirmwareCheckerManager;
    using UploadDownload::UploadDownloadManager;
    using XMLGeneratorParser::XMLManager;

    connect(this, &MainWindow::disconnectVelantor, settingsPane,
            &SettingsPaneManager::disconnectSettingsChanges);
    connect(this, &MainWindow::disconnectVelantor, listManager, &List::disableMarkingChanges);
    connect(this, &MainWindow::resetVelantorSignal, uploadDownload,
            &UploadDownloadManager::on_disconnectButtonPressed);
    connect(this, &MainWindow::exportToXML, xmlManager, &XMLManager::on_exportAsXMLButtonClicked);
    connect(this, &MainWindow::importFromXML, xmlManager,
            &XMLManager::on_importFromXMLButtonClicked);
    connect(this, &MainWindow::masterConnectVelantorSignal, uploadDownload,
            &UploadDownloadManager::on_connectButtonPressed);
    connect(this, &MainWindow::resetVelantorWithPort, uploadDownload,
            &UploadDownloadManager::onResetFromFirmware);

    connect(generator, &Generator::strictSSFileLoaded, hexManager, &HEXManager::importFSElements);
    connect(generator, &Generator::strictSSFileLoaded, hardwareDropdown,
            &HardwareDropdown::disable);
    connect(generator, &Generator::masterSSFileLoaded, hardwareDropdown, &HardwareDropdown::enable);

    connect(settingsPane, &SettingsPaneManager::resize, this, &MainWindow::resizeMainWindow);
    connect(settingsPane, &SettingsPaneManager::saveUnitSettings, importer,
            &ImportProfilesMain::sendProfilesToUploader);

    connect(listManager, &List::settingsPaneUpdateNeeded, settingsPane,
            &SettingsPaneManager::updateSettingsPane);
    connect(listManager, &List::quickSettingsPaneUpdateNeeded, settingsPane,
            &SettingsPaneManager::quickUpdateSettingsPane);
    connect(listManager, &List::noMoreProfilesLeft, settingsPane,
            &SettingsPaneManager::on_profilesListEmpty);
    connect(listManager, &List::currentProfileDeleted, settingsPane,
            &SettingsPaneManager::currentProfileDeleted);
    connect(listManager, &List::revertHardwareLimits, hardwareDropdown,
            &HardwareDropdown::revertLimits);

    connect(importer, &ImportProfilesMain::profileReadyForImport, listManager,
            &List::on_profileReadyForImport);
    connect(importer, &ImportProfilesMain::profilesLastImported, uploadDownload,
            &UploadDownloadManager::saveUnitSettingsToVel);

    connect(xmlManager, &XMLManager::deleteAllProfiles, listManager,
            &List::deleteAllProfilesNoConfirmation);
    connect(xmlManager, &XMLManager::unitSettingsRead_xml, this, &MainWindow::unitSettingsRead);

    connect(hexManager, &HEXManager::deleteAllProfiles, listManager,
            &List::deleteAllProfilesNoConfirmation);
    connect(hexManager, &HEXManager::sortedFSElements, generator, &Generator::chooseNewSSFile);
    connect(hexManager, &HEXManager::unitSettingsRead_hex, uploadDownload,
            &UploadDownloadManager::unitSettingsRead);
    connect(hexManager, &HEXManager::velantorAndSSMatch, uploadDownload,
            &UploadDownloadManager::continueWithWrite);

    connect(uploadDownload, &UploadDownloadManager::deleteAllProfiles, listManager,
            &List::deleteAllProfilesNoConfirmation);
    connect(uploadDownload, &UploadDownloadManager::settingsWrite, listManager,
            &List::profilesWrittenToVelantor);
    connect(uploadDownload, &UploadDownloadManager::settingsWrite, this,
            &MainWindow::velantorConnected);
    connect(uploadDownload, &UploadDownloadManager::settingsRead, this,
            &MainWindow::velantorConnected);
    connect(uploadDownload, &UploadDownloadManager::settingsRead, settingsPane,
            &SettingsPaneManager::saveUnitSettingsBackup);
    connect(uploadDownload, &UploadDownloadManager::settingsRead, listManager,
            &List::enableMarkingChanges);
    connect(uploadDownload, &UploadDownloadManager::unitSettingsWrite, this,
            &MainWindow::velantorConnected);
    connect(uploadDownload, &UploadDownloadManager::unitSettingsRead, this,
            &MainWindow::unitSettingsRead);
    // A read is told before its import: only here are the device settings those of the charger.
    connect(uploadDownload, &UploadDownloadManager::unitSettingsRead, settingsPane,
            &SettingsPaneManager::saveUnitSettingsBackup);

    connect(configFile, &ConfigFile::parsed, this, &MainWindow::checkForUpdates);
    connect(firmwareCheckerManager, &NewFirmwareCheckerManager::newBundle, this,
            &MainWindow::reloadBundle);

    connect(hardwareDropdown, &HardwareDropdown::newLimits, listManager,
            &List::deleteAllOutOfBoundsProfiles);
}

void MainWindow::extraUIAdditions()
{
    QToolBar *bar = ui->mainToolBar;
    bar->setIconSize(QSize(20, 20));
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->setStyleSheet(QStringLiteral("QToolButton:disabled {   color: black;}"));
    bar->setFloatable(false);
    bar->setMovable(false);
    bar->setContextMenuPolicy(Qt::PreventContextMenu);

    // Connected is what makes the action disabled, so the lamp lights by itself.
    QIcon lamp(QStringLiteral(":/new/images/LEDoff.png"));
    lamp.addFile(QStringLiteral(":/new/images/LEDon.png"), QSize(), QIcon::Disabled);
    connectAction = bar->addAction(lamp, tr("Connect"));
    connectAction->setObjectName(QStringLiteral("connectAction"));
    connectAction->setToolTip(tr("Connect to Velantor"));

    disconnectAction =
        bar->addAction(QIcon(QStringLiteral(":/new/images/redLEDon.png")), tr("Disconnect"));
    disconnectAction->setObjectName(QStringLiteral("disconnectAction"));
    disconnectAction->setToolTip(tr("Disconnect and Restart Velantor"));

    readDataAction =
        bar->addAction(QIcon(QStringLiteral(":/new/images/download.png")), tr("Read Data"));
    readDataAction->setObjectName(QStringLiteral("readDataAction"));
    readDataAction->setToolTip(tr("Read Data from Velantor"));

    saveDataAction =
        bar->addAction(QIcon(QStringLiteral(":/new/images/upload.png")), tr("Save Data"));
    saveDataAction->setObjectName(QStringLiteral("saveDataAction"));
    saveDataAction->setToolTip(tr("Save Data to Velantor"));

    for (QAction *action : {disconnectAction, readDataAction, saveDataAction})
        action->setEnabled(false);

    bar->addWidget(expandingSpacer(bar));
    modelLabel = new QLabel(tr("Velantor Model:"), bar);
    setModelLabelFont();
    bar->addWidget(modelLabel);
    bar->addWidget(spacer(8, bar));
    hardwareDropdown->setObjectName(QStringLiteral("hardwareDropdown"));
    hardwareDropdown->setAccessibleName(tr("Velantor Model"));
    bar->addWidget(hardwareDropdown);
    bar->addWidget(spacer(15, bar));
    auto *logo = new QLabel(bar);
    logo->setPixmap(QPixmap(QStringLiteral(":/new/images/tolk_logo.png")));
    bar->addWidget(logo);

    keepLight(bar);

    setWindowIcon(QIcon(QStringLiteral(":/new/images/icon_linux.png")));
    ui->statusBar->hide();
}

void MainWindow::setModelLabelFont()
{
    QFont larger = font();
    larger.setPointSize(larger.pointSize() + 1);
    modelLabel->setFont(larger);
}

/// Receivers of one sender run in the order of these lines.
void MainWindow::connectActions()
{
    using NewFirmwareChecker::NewFirmwareCheckerManager;
    using UploadDownload::UploadDownloadManager;

    connect(ui->actionExportXMLProfiles, &QAction::triggered, this, &MainWindow::exportProfilesXML);
    connect(ui->saveProfilesXML, &QPushButton::clicked, this, &MainWindow::exportProfilesXML);
    connect(ui->actionExportXMLProfilesAndSettings, &QAction::triggered, this,
            &MainWindow::exportProfilesSettingsXML);
    connect(ui->openProfilesXML, &QPushButton::clicked, this,
            &MainWindow::on_importFromXMLButtonClicked);
    connect(ui->actionImportXML, &QAction::triggered, this,
            &MainWindow::on_importFromXMLButtonClicked);
    connect(ui->viewDeviceSettings, &QPushButton::clicked, this, &MainWindow::resizeMainWindow);
    connect(ui->viewDeviceSettings, &QPushButton::clicked, settingsPane,
            &SettingsPaneManager::on_viewDeviceSettingsClicked);
    for (QAction *action : {ui->actionConnectToVel, connectAction})
        connect(action, &QAction::triggered, this, &MainWindow::onConnect);
    for (QAction *action : {ui->actionDisconnectAndRestart, disconnectAction})
        connect(action, &QAction::triggered, this, &MainWindow::onDisconnectAndReset);
    connect(ui->actionHelp_2, &QAction::triggered, this, &MainWindow::on_actionHelp);
    connect(ui->actionAbout, &QAction::triggered, this, &MainWindow::on_actionAbout);
    connect(ui->actionAboutDevice, &QAction::triggered, this, &MainWindow::on_actionAboutDevice);
    connect(ui->actionFlashFirmware, &QAction::triggered, this, &MainWindow::on_flashFirmware);
    connect(ui->actionExit, &QAction::triggered, this, &MainWindow::on_actionExit);
    connect(ui->actionImportHEX, &QAction::triggered, hexManager,
            &HEXGeneratorParser::HEXManager::on_importFromHEXButtonClicked);
    // The entry of the menu shows the page; only the button hides it again.
    connect(ui->actionEditGlobalSettings, &QAction::triggered, settingsPane,
            [this] { settingsPane->on_viewDeviceSettingsClicked(true); });
    for (QAction *action : {ui->actionWriteProfiles, saveDataAction}) {
        connect(action, &QAction::triggered, settingsPane,
                &SettingsPaneManager::unitSettingsUISaved);
        connect(action, &QAction::triggered, uploadDownload,
                &UploadDownloadManager::on_writeButtonPressed);
    }
    for (QAction *action : {ui->actionReadProfiles, readDataAction})
        connect(action, &QAction::triggered, uploadDownload,
                &UploadDownloadManager::on_readButtonPressed);
    connect(ui->actionDeleteAllProfiles, &QAction::triggered, listManager,
            &ProfileNamesListManager::deleteAllProfilesAskConfirmation);
    connect(ui->deleteAllProfiles, &QPushButton::clicked, listManager,
            &ProfileNamesListManager::deleteAllProfilesAskConfirmation);
    connect(ui->actionChangeAutoUpdates, &QAction::triggered, configFile, &ConfigFile::editFile);
    connect(ui->actionCheckNewFirmware, &QAction::triggered, firmwareCheckerManager,
            &NewFirmwareCheckerManager::on_checkFirmwareButtonPressed);
    connect(ui->actionCheckNewSoftware, &QAction::triggered, firmwareCheckerManager,
            &NewFirmwareCheckerManager::onCheckForSoftwareUpdates);
}

void MainWindow::readConfigFile()
{
    configFile->readFile();
}

void MainWindow::checkForUpdates()
{
    if (!configFile->isAuto())
        return;
    using NewFirmwareChecker::NewFirmwareChecker;
    if (firmwareChecker) {
        // Two checks at a time would ask twice.
        firmwareChecker->cancel();
        firmwareChecker->deleteLater();
    }
    firmwareChecker = new NewFirmwareChecker(this);
    connect(firmwareChecker, &NewFirmwareChecker::infoDownloaded, this, &MainWindow::newUpdateInfo);
    connect(firmwareChecker, &NewFirmwareChecker::firmwareDownloaded, this,
            &MainWindow::newFirmware);
    connect(firmwareChecker, &NewFirmwareChecker::error, this,
            &MainWindow::errorDownloadingUpdates);
    firmwareChecker->downloadXMLInfo();
}

void MainWindow::newUpdateInfo()
{
    if (firmwareChecker->isSoftwareUpdate())
        MessageDialogs::softwareUpdateNeeded(this);
    if (!firmwareChecker->downloadNeeded())
        return;
    QMessageBox box(QMessageBox::Question, tr("New Firmware!"),
                    tr("There is a new version of firmware available! Would you like to download "
                       "it?"),
                    QMessageBox::Yes | QMessageBox::No, this);
    if (box.exec() == QMessageBox::Yes)
        firmwareChecker->downloadLatestFirmware();
}

void MainWindow::newFirmware()
{
    MessageDialogs::firmwareDownloaded(this);
    reloadBundleWhenIdle();
}

void MainWindow::errorDownloadingUpdates()
{
    QMessageBox box(QMessageBox::Warning, tr("Error!"),
                    tr("There was an error while attempting to check for and download updates! "
                       "Check your internet connection or try again later."),
                    QMessageBox::Ok, this);
    box.exec();
}

/// A download can end while a file is loaded, the charger is read or written, or its firmware is
/// flashed. All that uses the schema or the files of the bundle, and all of it has a modal window
/// in front or an event loop of its own.
void MainWindow::reloadBundleWhenIdle()
{
    using namespace std::chrono_literals;
    if (QApplication::activeModalWidget() || QThread::currentThread()->loopLevel() > 1)
        QTimer::singleShot(100ms, this, &MainWindow::reloadBundleWhenIdle);
    else
        reloadBundle();
}

void MainWindow::reloadBundle()
{
    if (!startupChecksPassed)
        return;
    bundleManager->extractLatestValidBundle();
    generator->parseSSFile(MASTER_SS_FILE_NAME);
}

void MainWindow::on_actionHelp()
{
    MessageDialogs::helpVelantorProfileEditor(this);
}

void MainWindow::on_actionAbout()
{
    MessageDialogs::aboutVelantorProfileEditor(this);
}

void MainWindow::on_actionAboutDevice()
{
    auto *stats = new DisplayUnitStats(generator, this);
    stats->setWindowTitle(tr("Device Stats"));
    stats->show();
}

void MainWindow::on_flashFirmware()
{
    openFirmwareTool();
}

FirmwareTool::VelantorFirmwareToolWindow *MainWindow::openFirmwareTool()
{
    using FirmwareTool::VelantorFirmwareToolWindow;

    auto *tool = new VelantorFirmwareToolWindow(this);
    connect(tool, &VelantorFirmwareToolWindow::flashed, this, &MainWindow::reloadBundle);
    connect(tool, &VelantorFirmwareToolWindow::resetVelantorSignalFT, this,
            &MainWindow::onDisconnectAndResetWithPort);
    connect(tool, &VelantorFirmwareToolWindow::connectVelantorSignalFT, this,
            &MainWindow::onConnect);
    return tool;
}

void MainWindow::runFirmwareToolAlone()
{
    const QPointer<FirmwareTool::VelantorFirmwareToolWindow> tool(openFirmwareTool());
    QEventLoop loop;
    connect(tool, &FirmwareTool::VelantorFirmwareToolWindow::closing, &loop, &QEventLoop::quit);
    loop.exec();
    // exit() destroys no window, and with it no uploader that still runs.
    delete tool;
    std::exit(0);
}

void MainWindow::on_actionExit()
{
    QCoreApplication::quit();
}

void MainWindow::velantorConnected(bool connected)
{
    if (connected == velantorIsConnected)
        return;
    velantorIsConnected = connected;

    for (QAction *action :
         {ui->actionExportHEX, ui->actionImportHEX, ui->actionDisconnectAndRestart,
          ui->actionWriteProfiles, ui->actionReadProfiles, ui->actionAboutDevice, saveDataAction,
          readDataAction})
        action->setEnabled(connected);

    connectAction->setEnabled(!connected);
    ui->actionConnectToVel->setEnabled(!connected);
    disconnectAction->setEnabled(connected);
    if (connected) {
        connectAction->setToolTip(tr("Connected!"));
        connectAction->setText(tr("Connected!"));
        resize(size());
    } else {
        connectAction->setToolTip(tr("Connect to Velantor"));
        connectAction->setText(tr("Connect"));
        emit disconnectVelantor();
    }
}

void MainWindow::unitSettingsRead(bool available)
{
    unitSettingsAvailable = available;
    velantorConnected(!connectAction->isEnabled());
}

void MainWindow::onConnect()
{
    emit masterConnectVelantorSignal();
}

void MainWindow::onDisconnectAndReset()
{
    emit disconnectVelantor();
    emit resetVelantorSignal();
}

void MainWindow::onDisconnectAndResetWithPort(const QString &port)
{
    emit resetVelantorWithPort(port);
    emit disconnectVelantor();
}

void MainWindow::disableToolbarActions(bool disable)
{
    for (QWidget *widget :
         {static_cast<QWidget *>(ui->menuBar), static_cast<QWidget *>(ui->mainToolBar),
          static_cast<QWidget *>(ui->addProfileButton),
          static_cast<QWidget *>(ui->viewDeviceSettings)})
        widget->setEnabled(!disable);
}

void MainWindow::on_importFromXMLButtonClicked()
{
    emit importFromXML(unitSettingsAvailable);
}

void MainWindow::exportProfilesXML()
{
    settingsPane->takeTypedText();
    emit exportToXML(false);
}

void MainWindow::exportProfilesSettingsXML()
{
    settingsPane->takeTypedText();
    emit exportToXML(true);
}

void MainWindow::resizeMainWindow()
{
    const QSize now = size();
    resize(now - QSize(1, 1));
    if (size() == now)
        resize(now + QSize(1, 1)); // there is no smaller size
    resize(now);
}

void MainWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    if (startupChecksPassed && panes)
        panes->place(event->size());
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    // The suite's font comes after the window was built.
    if (event->type() == QEvent::FontChange && modelLabel)
        setModelLabelFont();
}
