#include "firmware/velantorfirmwaretoolwindow.h"

#include "device/comdevicewatcher.h"
#include "device/portdropdown.h"
#include "firmware/firmwareerrors.h"
#include "firmware/firmwareflasher.h"
#include "firmware/firmwaremessagedialogs.h"
#include "ui_velantorfirmwaretoolwindow.h"

#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>
#include <QRegularExpression>
#include <QTextStream>

namespace FirmwareTool
{

VelantorFirmwareToolWindow::VelantorFirmwareToolWindow(QWidget *parent)
    : QMainWindow(parent), ui(std::make_unique<Ui::VelantorFirmwareToolWindow>())
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Velantor Firmware Tool"));
    setWindowModality(Qt::ApplicationModal);
    extraUIAdditions();
    flasher = std::make_unique<FirmwareFlasher>(this, ui.get());
    lastDirectory = QDir::current();
    connect(flasher.get(), &FirmwareFlasher::flashed, this, &VelantorFirmwareToolWindow::flashed);
    connect(flasher.get(), &FirmwareFlasher::resetVelantorSignalFF, this,
            &VelantorFirmwareToolWindow::resetVelantorSlotFT);
    connect(flasher.get(), &FirmwareFlasher::connectVelantorSignalFF, this,
            &VelantorFirmwareToolWindow::connectVelantorSignalFT);
    show();
}

VelantorFirmwareToolWindow::~VelantorFirmwareToolWindow() = default;

void VelantorFirmwareToolWindow::extraUIAdditions()
{
    connect(ui->actionLoad_File, &QAction::triggered, this,
            &VelantorFirmwareToolWindow::on_selectFileButton_clicked);
    connect(ui->actionExit, &QAction::triggered, this, &VelantorFirmwareToolWindow::exitProgram);
    connect(ui->closeButton, &QPushButton::clicked, this, &VelantorFirmwareToolWindow::exitProgram);
    connect(ui->actionHelp, &QAction::triggered, this, &VelantorFirmwareToolWindow::helpProgram);
    ui->submitButton->installEventFilter(this);

    ports =
        std::make_unique<PortDropdown>(ui->comPortsDropdown, PortDropdown::BuiltInPorts::Listed);
    ports->insertPorts();
    ui->comPortsDropdown->setCurrentIndex(0);

    watcher = new COMDeviceWatcher(this);
    connect(watcher, &COMDeviceWatcher::devicesAdded, this,
            &VelantorFirmwareToolWindow::onDevicesConnected);
    connect(watcher, &COMDeviceWatcher::devicesRemoved, this,
            &VelantorFirmwareToolWindow::onDevicesDisconnected);
    watcher->startWatching();
}

void VelantorFirmwareToolWindow::exitProgram()
{
    prepareToClose();
    close();
}

void VelantorFirmwareToolWindow::closeEvent(QCloseEvent *event)
{
    // The window's close control and the end of the session leave nothing out.
    prepareToClose();
    QMainWindow::closeEvent(event);
}

bool VelantorFirmwareToolWindow::eventFilter(QObject *watched, QEvent *event)
{
    // The focus comes back to the button that it was taken from, unless the user has moved it.
    if (event->type() == QEvent::EnabledChange && ui->submitButton->isEnabled() &&
        focusWidget() == this)
        ui->submitButton->setFocus();
    return QMainWindow::eventFilter(watched, event);
}

void VelantorFirmwareToolWindow::prepareToClose()
{
    if (closingTold)
        return;
    closingTold = true;

    // An older installation kept one of its two device tables under this name.
    const QString leftOver = QStringLiteral("./device_overwrite.txt");
    if (QFile::exists(leftOver)) {
        const QString table = QStringLiteral("./device.txt");
        QFile::remove(table);
        QFile::rename(leftOver, table);
    }
    emit closing();
}

void VelantorFirmwareToolWindow::helpProgram()
{
    FirmwareMessageDialogs::firmwareToolHelp(this);
}

void VelantorFirmwareToolWindow::on_deleteProfilesCB_toggled(bool checked)
{
    flasher->setOverwriteProfiles(checked);
}

void VelantorFirmwareToolWindow::on_submitButton_clicked()
{
    const QString path = flasher->getHexPath();
    if (path == QStringLiteral("NOPATH")) {
        FirmwareMessageDialogs::noFile(this);
        return;
    }
    static const QRegularExpression bundle(QStringLiteral(".*\\.velantor\\b"));
    if (!bundle.match(path).hasMatch()) {
        FirmwareMessageDialogs::wrongFile(this);
        return;
    }
    startFlashing();
}

void VelantorFirmwareToolWindow::startFlashing()
{
    // From a button that is disabled the focus goes on to the next one, "Browse...", which a key
    // that is pressed twice would then press.
    if (ui->submitButton->hasFocus())
        setFocus();
    ui->submitButton->setEnabled(false);
    ui->closeButton->setEnabled(false);
    try {
        flasher->setComPort(ui->comPortsDropdown->currentText());
        flasher->startFlashing();
    } catch (int code) {
        QTextStream(stdout) << "Error " << code << "." << Qt::endl;
        const QPointer<VelantorFirmwareToolWindow> guard(this);
        FirmwareErrors::error10(this);
        if (guard)
            exitProgram();
    }
}

void VelantorFirmwareToolWindow::on_selectFileButton_clicked()
{
    const QString path = QFileDialog::getOpenFileName(
        this, tr("Select Velantor Firmware File"), lastDirectory.path(),
        tr("Velantor Firmware Files (*.velantor);;All Files (*.*)"));
    if (path.isEmpty())
        return;
    lastDirectory = QFileInfo(path).dir();
    ui->fileInputBox->setText(path);
    setFile(path);
}

void VelantorFirmwareToolWindow::on_fileInputBox_textEdited(QString text)
{
    setFile(text);
}

void VelantorFirmwareToolWindow::setFile(const QString &path)
{
    flasher->setHexPath(path);
    ui->fileSelectedLabel->setText(tr("File Selected : ") + QFileInfo(path).fileName());
}

void VelantorFirmwareToolWindow::onDevicesConnected(QList<QextPortInfo> added)
{
    for (const QextPortInfo &port : qAsConst(added))
        ports->add(port);
}

void VelantorFirmwareToolWindow::onDevicesDisconnected(QList<QextPortInfo> removed)
{
    ports->remove(removed);
}

void VelantorFirmwareToolWindow::resetVelantorSlotFT(QString port)
{
    emit resetVelantorSignalFT(port);
}

} // namespace FirmwareTool
