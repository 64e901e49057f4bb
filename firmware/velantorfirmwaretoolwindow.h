#pragma once

#include <QDir>
#include <QList>
#include <QMainWindow>
#include <QString>

#include <memory>

#include <qextserialenumerator.h>

class COMDeviceWatcher;
class PortDropdown;

namespace Ui
{
class VelantorFirmwareToolWindow;
}

namespace FirmwareTool
{
class FirmwareFlasher;

/// Lets the user pick a bundle and a port and update the charger's firmware.
///
/// Shows itself, application-modal, and deletes itself on close. A flash that is under way ends
/// with it, uploader included.
class VelantorFirmwareToolWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit VelantorFirmwareToolWindow(QWidget *parent);
    ~VelantorFirmwareToolWindow() override;

signals:
    /// The charger holds the new firmware.
    void flashed();
    /// The window is about to close; told once, however it is closed.
    void closing();
    /// The charger at that port, a path, should leave its bootloader.
    void resetVelantorSignalFT(QString port);
    /// Never emitted.
    void connectVelantorSignalFT();

public slots:
    void exitProgram();
    void helpProgram();
    void on_deleteProfilesCB_toggled(bool checked);
    /// Begins to flash what is chosen.
    void on_submitButton_clicked();
    void on_selectFileButton_clicked();
    void on_fileInputBox_textEdited(QString text);
    void onDevicesConnected(QList<QextPortInfo> added);
    void onDevicesDisconnected(QList<QextPortInfo> removed);
    void resetVelantorSlotFT(QString port);

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void extraUIAdditions();
    void setFile(const QString &path);
    void startFlashing();
    void prepareToClose();

    std::unique_ptr<Ui::VelantorFirmwareToolWindow> ui;
    std::unique_ptr<PortDropdown> ports;
    std::unique_ptr<FirmwareFlasher> flasher; ///< works on ui
    QDir lastDirectory;                       ///< where the last file was chosen
    COMDeviceWatcher *watcher = nullptr;      ///< a child of this window
    bool closingTold = false;
};

} // namespace FirmwareTool
