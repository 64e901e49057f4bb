#pragma once

#include <QMainWindow>

#include <memory>

class ConfigFile;
class HardwareDropdown;
class PaneLayout;
class ProfileNamesListManager;
class SettingsPaneManager;
class VelantorBundleManager;
class QAction;
class QLabel;

namespace FirmwareTool
{
class VelantorFirmwareToolWindow;
}
namespace HEXGeneratorParser
{
class HEXManager;
}
namespace HParser
{
class Generator;
}
namespace ImportProfiles
{
class ImportProfilesMain;
}
namespace NewFirmwareChecker
{
class NewFirmwareChecker;
class NewFirmwareCheckerManager;
} // namespace NewFirmwareChecker
namespace Ui
{
class MainWindow;
}
namespace UploadDownload
{
class UploadDownloadManager;
}
namespace XMLGeneratorParser
{
class XMLManager;
}

/// The application's one window and its switchboard: makes the managers, joins their signals, and
/// shows in tool bar and menus whether a charger is connected. Each feature lives in its manager.
///
/// The constructor is the whole start-up: self-check, working directory, embedded files, bundle,
/// schema, form, managers. It ends the process where the installation is not usable. With the
/// option "-f" among the application's arguments it runs the firmware tool alone and ends the
/// process when that closes.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    /// The schema in force. Stays owned by the window.
    HParser::Generator *getGenerator() const { return generator; }

signals:
    void importFromXML(bool unitSettingsAvailable);
    void exportToXML(bool withUnitSettings);
    /// The link to the charger has fallen: the master schema comes back, change marks go.
    void disconnectVelantor();
    void resetVelantorSignal();
    void resetVelantorWithPort(const QString &port);
    void masterConnectVelantorSignal();

public slots:
    /// Reads whether updates are looked for, or asks the user.
    void readConfigFile();
    /// Begins a check on the maker's site, in place of one that is under way; nothing where the
    /// user wants none.
    void checkForUpdates();
    /// Tells of new software and offers a new bundle, as the check has found.
    void newUpdateInfo();
    /// Tells that a bundle was fetched, and takes it into use as soon as nothing else goes on.
    void newFirmware();
    void errorDownloadingUpdates();
    /// Takes the newest usable bundle into use again.
    void reloadBundle();

    void on_actionHelp();
    void on_actionAbout();
    /// Shows the charger's lifetime statistics in a window of their own; a new one per call.
    void on_actionAboutDevice();
    /// Opens the firmware tool.
    void on_flashFirmware();
    void on_actionExit();

    void velantorConnected(bool connected);
    void unitSettingsRead(bool available);
    void onConnect();
    void onDisconnectAndReset();
    void onDisconnectAndResetWithPort(const QString &port);
    void disableToolbarActions(bool disable);

    void on_importFromXMLButtonClicked();
    void exportProfilesXML();
    void exportProfilesSettingsXML();

    /// Forces a resizeEvent that ends at the same size.
    void resizeMainWindow();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void runTests();
    void setWorkingDirectory();
    void installationChecks();
    void setButtonIcons();
    void createManagers();
    void connectManagers();
    void extraUIAdditions();
    void setModelLabelFont();
    void connectActions();
    void reloadBundleWhenIdle();
    FirmwareTool::VelantorFirmwareToolWindow *openFirmwareTool();
    [[noreturn]] void runFirmwareToolAlone();

    std::unique_ptr<Ui::MainWindow> ui;
    std::unique_ptr<PaneLayout> panes;
    QLabel *modelLabel = nullptr;
    /// The latest check that was not asked for.
    NewFirmwareChecker::NewFirmwareChecker *firmwareChecker = nullptr;
    ProfileNamesListManager *listManager = nullptr;
    SettingsPaneManager *settingsPane = nullptr;
    ImportProfiles::ImportProfilesMain *importer = nullptr;
    XMLGeneratorParser::XMLManager *xmlManager = nullptr;
    HEXGeneratorParser::HEXManager *hexManager = nullptr;
    UploadDownload::UploadDownloadManager *uploadDownload = nullptr;
    NewFirmwareChecker::NewFirmwareCheckerManager *firmwareCheckerManager = nullptr;
    std::unique_ptr<VelantorBundleManager> bundleManager;
    HardwareDropdown *hardwareDropdown = nullptr;
    HParser::Generator *generator = nullptr;
    QAction *saveDataAction = nullptr;
    QAction *readDataAction = nullptr;
    QAction *connectAction = nullptr;
    QAction *disconnectAction = nullptr;
    /// The installation was found whole; nothing of this class works before.
    bool startupChecksPassed = false;
    /// The charger's own settings are loaded; told to the import of profile files.
    bool unitSettingsAvailable = false;
    /// The state of the connection as last told.
    bool velantorIsConnected = false;
    ConfigFile *configFile = nullptr;
};
