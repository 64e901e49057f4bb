#include "device/communicationdialog.h"

#include "device/downloadprofiles.h"
#include "device/transferfailedbox.h"
#include "device/uploadprofiles.h"
#include "ui_communicationdialog.h"

#include <QMessageBox>
#include <QPointer>

namespace UploadDownload
{

namespace
{

QString titleOf(CommunicationDialog::Mode mode)
{
    switch (mode) {
    case CommunicationDialog::ReadOnly:
        return CommunicationDialog::tr("Reading from Velantor");
    case CommunicationDialog::WriteSettings:
        return CommunicationDialog::tr("Writing Settings");
    case CommunicationDialog::WriteOnly:
        return CommunicationDialog::tr("Writing");
    case CommunicationDialog::ReadWriteRead:
        return CommunicationDialog::tr("Writing to Velantor");
    }
    return QString();
}

} // namespace

CommunicationDialog::CommunicationDialog(QWidget *parent, Mode mode)
    : QDialog(parent), ui(std::make_unique<Ui::CommunicationDialog>()), mode(mode)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    ui->setupUi(this);
    displayRequiredUi();
    show();
}

CommunicationDialog::~CommunicationDialog() = default;

void CommunicationDialog::setCOMPort(const QString &path)
{
    comPort = path;
}

int CommunicationDialog::startRequiredComm()
{
    switch (mode) {
    case ReadOnly:
    case ReadWriteRead:
        ui->okButton->setEnabled(false);
        read();
        return 1;
    case WriteSettings:
    case WriteOnly:
        ui->okButton->setEnabled(false);
        write();
        return 1;
    }
    return 0;
}

void CommunicationDialog::verificationFailed()
{
    showEnd(tr("Failed!"), 0);
    ui->errorIcon->setText(tr("Communication Error!"));
    ui->errorIcon->adjustSize();
    ui->errorMessage->setText(
        tr("This Velantor doesn't match either the hardware version or the barcode of the Velantor "
           "previously connected!"));
    ui->errorIcon->show();
    ui->errorMessage->show();
    ui->okButton->setEnabled(true);
    // The form leaves no room for an error; the wrapped text needs as many lines as it needs.
    resize(width(), qMax(height(), layout()->totalHeightForWidth(width())));
}

void CommunicationDialog::write()
{
    mayBeClosed = false;
    auto *upload = new UploadProfiles(comPort, this);
    connect(upload, &UploadProfiles::finished, this, &CommunicationDialog::writeSuccess);
    connect(upload, &UploadProfiles::errorUploading, this, &CommunicationDialog::writeFail);
    upload->start();
}

void CommunicationDialog::read()
{
    auto *download = new DownloadProfiles(comPort, this);
    connect(download, &DownloadProfiles::finished, this, &CommunicationDialog::readSuccess);
    connect(download, &DownloadProfiles::errorDownloading, this, &CommunicationDialog::readFail);
    download->start();
}

void CommunicationDialog::readSuccess()
{
    if (mode == ReadOnly)
        close();
    if (mode == ReadWriteRead) {
        if (finishedReads > 0) {
            showEnd(tr("Success!"), 100);
            ui->okButton->setEnabled(true);
        }
        ++finishedReads;
    }
    emit settingsRead();
}

void CommunicationDialog::readFail()
{
    writeFail();
}

void CommunicationDialog::writeSuccess()
{
    mayBeClosed = true;
    if (mode == WriteSettings) {
        ui->okButton->setEnabled(true);
        showEnd(tr("Success!"), 100);
    } else {
        showWorking();
        read();
    }
    emit settingsWrite(true);
}

void CommunicationDialog::writeFail()
{
    showEnd(tr("Failed!"), 0);
    emit settingsWrite(false);

    // A crash of the uploader comes here while its process is still telling of it: until that is
    // over the dialog, which owns the process, must not go.
    mayBeClosed = false;
    const QPointer<CommunicationDialog> guard(this);
    const QPointer<QMessageBox> box(newTransferFailedBox(this));
    box->setStandardButtons(QMessageBox::Ok);
    box->exec();
    delete box;
    if (!guard)
        return;
    mayBeClosed = true;
    close();
}

void CommunicationDialog::reject()
{
    if (mayBeClosed)
        QDialog::reject();
}

void CommunicationDialog::displayRequiredUi()
{
    setWindowTitle(tr("Progress"));
    ui->title->setText(titleOf(mode));
    ui->errorIcon->hide();
    ui->errorMessage->hide();
    showWorking();
    if (mode == ReadOnly)
        ui->okButton->hide();
}

void CommunicationDialog::showWorking()
{
    ui->bar->setMaximum(0);
    ui->status->setText(tr("Working..."));
}

void CommunicationDialog::showEnd(const QString &status, int percent)
{
    ui->bar->setMaximum(100);
    ui->bar->setValue(percent);
    ui->status->setText(status);
}

} // namespace UploadDownload
