#include "device/connectdialog.h"

#include "device/comdevicewatcher.h"
#include "device/downloadprofiles.h"
#include "device/portdropdown.h"
#include "device/transferfailedbox.h"
#include "ui_connectdialog.h"

#include <QMessageBox>
#include <QPointer>

namespace UploadDownload
{

ConnectDialog::ConnectDialog(QWidget *parent)
    : QDialog(parent),
      ui(std::make_unique<Ui::ConnectDialog>()),
      watcher(new COMDeviceWatcher(this))
{
    ui->setupUi(this);
    ports =
        std::make_unique<PortDropdown>(ui->comPortsDropdown, PortDropdown::BuiltInPorts::LeftOut);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    setWindowTitle(tr("Connect"));
    ui->dialogTitleLabel->setText(tr("Connect to Velantor"));
    ui->okButton->setText(tr("Connect"));
    ui->okButton->setFocusPolicy(Qt::NoFocus);
    connect(ui->okButton, &QPushButton::clicked, this, &ConnectDialog::on_okButtonPressed);

    ports->insertPorts();
    if (ui->comPortsDropdown->count() > 0)
        ui->comPortsDropdown->setCurrentIndex(0);
    else
        showNoPort();

    connect(watcher, &COMDeviceWatcher::devicesAdded, this, &ConnectDialog::onDevicesConnected);
    connect(watcher, &COMDeviceWatcher::devicesRemoved, this,
            &ConnectDialog::onDevicesDisconnected);
    watcher->startWatching();
    showStopped(tr("Stopped"), 0);
}

ConnectDialog::~ConnectDialog() = default;

void ConnectDialog::setFileLocation(const QString &location)
{
    fileLocation = location;
}

bool ConnectDialog::setCOMAndOK(const QString &com, bool automatic)
{
    const int index = ui->comPortsDropdown->findText(com);
    if (index < 0)
        return false;
    okByProgram = automatic;
    ui->comPortsDropdown->setCurrentIndex(index);
    on_okButtonPressed();
    return true;
}

QString ConnectDialog::formatCOMPort(const QString &com)
{
    return QStringLiteral("/dev/") + com;
}

void ConnectDialog::on_okButtonPressed()
{
    ui->okButton->setEnabled(false);
    ui->status->setText(tr("Working..."));
    ui->progressBar->setRange(0, 0);

    const QString com = ui->comPortsDropdown->currentText();
    emit COMPortChosen(com);

    auto *download = new DownloadProfiles(formatCOMPort(com), parent());
    connect(download, &DownloadProfiles::finished, this, &ConnectDialog::connectSuccess);
    connect(download, &DownloadProfiles::errorDownloading, this, &ConnectDialog::connectFail);
    download->start();
}

void ConnectDialog::connectSuccess()
{
    showStopped(tr("Connected!"), 100);
    // The import may show boxes, and this dialog may go while they wait.
    const QPointer<ConnectDialog> guard(this);
    emit settingsRead();
    if (guard)
        close();
}

void ConnectDialog::connectFail()
{
    emit settingsWrite(false);
    showStopped(tr("Failed!"), 0);
    ui->okButton->setText(tr("Try Again"));
    ui->okButton->setEnabled(true);

    const QPointer<ConnectDialog> guard(this);
    const QPointer<QMessageBox> box(newTransferFailedBox(this));
    box->setStandardButtons(QMessageBox::Cancel | QMessageBox::Ok);
    const int answer = box->exec();
    delete box;
    if (guard && answer == QMessageBox::Cancel)
        close();
}

void ConnectDialog::onDevicesConnected(QList<QextPortInfo> added)
{
    for (const QextPortInfo &port : qAsConst(added))
        ports->add(port);
    if (!ui->okButton->isEnabled() && ui->comPortsDropdown->count() > 0) {
        ui->okButton->setEnabled(true);
        ui->errorMessage->clear();
    }
    ui->comPortsDropdown->setCurrentIndex(0);
}

void ConnectDialog::onDevicesDisconnected(QList<QextPortInfo> removed)
{
    ports->remove(removed);
    if (ui->comPortsDropdown->count() == 0)
        showNoPort();
}

void ConnectDialog::showNoPort()
{
    ui->errorMessage->setText(tr("No COM Port available!"));
    ui->okButton->setEnabled(false);
}

void ConnectDialog::showStopped(const QString &status, int percent)
{
    ui->status->setText(status);
    ui->progressBar->setRange(0, 100);
    ui->progressBar->setValue(percent);
}

} // namespace UploadDownload
