#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

class QFile;
class QProcess;
class QTextStream;
class QTimer;
class QWidget;
class VelantorBundle;

namespace Ui
{
class VelantorFirmwareToolWindow;
}

namespace FirmwareTool
{

/// How far an attempt is. The first four are the rows of the window, from above.
enum class FlasherState {
    Erasing = 1, ///< started, the erase has not ended
    Loading,     ///< erased, the image is not loaded
    Uploading,   ///< the image is being written
    Verifying,   ///< flash and image are being compared
    Done,        ///< verified
    Stopped      ///< nothing runs
};

/// Updates the charger's firmware by one run of the uploader over what it prints, and shows the
/// four steps in the window of the firmware tool.
///
/// The end of the uploader is not watched: where it prints nothing that is known, the watchdog
/// reports it 4 to 9 seconds after the last progress. Failures are shown by FirmwareErrors. The
/// uploader is ended when this object goes.
class FirmwareFlasher : public QObject
{
    Q_OBJECT

public:
    /// The time since any fixed moment; must never go back.
    using Clock = std::function<std::chrono::milliseconds()>;
    static std::chrono::milliseconds steadyTime();

    /// parent is the window, over which all boxes are shown; ui is its form and lives as long as
    /// it.
    FirmwareFlasher(QObject *parent, Ui::VelantorFirmwareToolWindow *ui, Clock clock = steadyTime);
    ~FirmwareFlasher() override;

    /// The chosen bundle; "NOPATH" while none is chosen.
    QString getHexPath() const { return hexPath; }
    /// Path of the port, such as "/dev/ttyUSB0".
    QString getCOMPort() const { return comPort; }
    /// "Path : " and the chosen bundle.
    QString toString() const;

    /// An empty path means that no bundle is chosen.
    void setHexPath(const QString &path);
    /// name: bare, such as "ttyUSB0".
    void setComPort(const QString &name);
    /// Whether the charger's profiles may be erased; not so at first.
    void setOverwriteProfiles(bool overwrite) { overwriteProfiles = overwrite; }

    /// Unpacks the bundle into the current directory and begins to flash. Returns at once; an
    /// attempt that still goes on is ended before.
    void startFlashing();

public slots:
    /// Takes what the uploader has printed since the last time, and looks at it once.
    void readStream();
    /// Ends an attempt that makes no progress.
    void checkAppFrozen();

signals:
    /// The charger holds the new firmware.
    void flashed();
    /// The charger at that port, a path, should leave its bootloader.
    void resetVelantorSignalFF(QString port);
    /// Never emitted.
    void connectVelantorSignalFF();

private:
    using FormError = void (*)(Ui::VelantorFirmwareToolWindow *ui, QWidget *parent);

    void extractRequiredFiles();
    bool isDeviceTableAsChosen() const;
    QString firmwareFile() const;
    void initializeVexaLogFile();
    void writeToLog(const QByteArray &bytes);
    void cleanUI();

    void examineErasing(const char *text);
    void examineLoading(const char *text);
    void examineUploading(const char *text);
    void examineVerifying(const char *text);
    void enterNextState(const char *announcement);
    void fail(FormError error);
    void finish();

    void updateGUI();
    void updateUITimestamp();
    void updateUploadingProgressBar(const char *text);
    void updateVerifyingProgressBar(const char *text);
    void startTimeoutTimer();
    void enableButtons();
    void endUploader();
    void cleanup();

    QWidget *window() const;

    Ui::VelantorFirmwareToolWindow *ui;
    Clock clock;
    QString hexPath;
    std::unique_ptr<VelantorBundle> bundle;
    QString comPort;
    bool overwriteProfiles = false;
    QPointer<QProcess> process;             ///< a child of the window, which may delete it first
    std::unique_ptr<QFile> log;             ///< none where it could not be opened
    std::unique_ptr<QTextStream> logStream; ///< of log, so it has to go before
    FlasherState state = FlasherState::Erasing;
    std::chrono::milliseconds timestamp{0}; ///< the last sign of progress
    QTimer *timer = nullptr;                ///< the watchdog, a child
};

} // namespace FirmwareTool
