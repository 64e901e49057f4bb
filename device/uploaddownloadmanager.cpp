#include "device/uploaddownloadmanager.h"

#include "HEXGeneratorParser/hexmanager.h"
#include "app/filenames.h"
#include "device/communicationdialog.h"
#include "device/connectdialog.h"
#include "device/importfailure.h"
#include "device/resetframe.h"

#include <QMessageBox>
#include <QSerialPort>
#include <QTextStream>
#include <QWidget>

#include <optional>

namespace UploadDownload
{

using HEXGeneratorParser::HEXManager;

namespace
{

void showBox(QWidget *parent, QMessageBox::Icon icon, const QString &title, const QString &text)
{
    QMessageBox(icon, title, text, QMessageBox::Ok, parent).exec();
}

} // namespace

UploadDownloadManager::UploadDownloadManager(HEXManager *hexManager, QObject *parent)
    : QObject(parent), hexManager(hexManager)
{
}

QString UploadDownloadManager::formatCOMPort(const QString &name)
{
    return QStringLiteral("/dev/") + name;
}

QString UploadDownloadManager::unformatCOMPort(QString path)
{
    return path.remove(QStringLiteral("/dev/"));
}

void UploadDownloadManager::on_connectButtonPressed()
{
    auto *dialog = new ConnectDialog(window());
    connect(dialog, &ConnectDialog::COMPortChosen, this, &UploadDownloadManager::on_COMPortChosen);
    dialog->setFileLocation(DOWNLOADED_PROFILES_FILE_NAME);
    dialog->show();
    connect(dialog, &ConnectDialog::settingsRead, this, &UploadDownloadManager::importFSElements);
}

void UploadDownloadManager::on_COMPortChosen(QString com)
{
    comPort = com;
}

void UploadDownloadManager::on_readButtonPressed()
{
    auto *dialog = new CommunicationDialog(window(), CommunicationDialog::ReadOnly);
    dialog->setCOMPort(formatCOMPort(comPort));
    connect(dialog, &CommunicationDialog::settingsWrite, this,
            &UploadDownloadManager::settingsWrite);
    connect(dialog, &CommunicationDialog::settingsRead, this,
            &UploadDownloadManager::importFSElements);
    dialog->startRequiredComm();
}

void UploadDownloadManager::importFSElements()
{
    emit settingsRead(true);
    // The import may change the schema, which starts a second import from within;
    // what that one throws comes out here as well.
    std::optional<int> failure;
    try {
        hexManager->importFSElements();
    } catch (int code) {
        failure = code;
    }
    if (failure) {
        const ImportFailure shown = ImportFailure::of(*failure);
        showBox(window(), shown.icon, shown.title, shown.text);
        emit settingsRead(false);
    }
}

void UploadDownloadManager::on_writeButtonPressed()
{
    const int current = hexManager->getCurrentNumProfiles();
    const int allowed = hexManager->getNumProfilesAllowed();
    if (current > allowed) {
        showBox(window(), QMessageBox::NoIcon, tr("Upload profiles status"),
                tr("You currently have %1 profiles, but only %2 profiles can be "
                   "exported to the Velantor. Please delete some profiles and try "
                   "again")
                    .arg(current)
                    .arg(allowed));
        return;
    }

    if (refuse(hexManager->getUnstorableProfiles()))
        return;

    writeDialog = new CommunicationDialog(window(), CommunicationDialog::ReadWriteRead);
    writeDialog->setCOMPort(formatCOMPort(comPort));
    connect(writeDialog, &CommunicationDialog::settingsWrite, this,
            &UploadDownloadManager::settingsWrite);
    connect(writeDialog, &CommunicationDialog::settingsRead, hexManager,
            &HEXManager::compareVelantorAndSS);
    connect(this, &UploadDownloadManager::continueWrite, writeDialog, &CommunicationDialog::write);
    writeDialog->startRequiredComm();
}

/// A page with texts that its fields do not hold could not be read again, and with it all profiles
/// would be gone. True when there are such profiles, which the user was told.
bool UploadDownloadManager::refuse(const QStringList &unstorableProfiles)
{
    if (unstorableProfiles.isEmpty())
        return false;
    showBox(window(), QMessageBox::NoIcon, tr("Upload profiles status"),
            tr("The Velantor cannot store all characters of these names and descriptions:\n\n%1\n\n"
               "Please use only plain letters, digits and signs, without accents, and try again")
                .arg(unstorableProfiles.join(QLatin1Char('\n'))));
    return true;
}

void UploadDownloadManager::continueWithWrite(bool success)
{
    if (!success) {
        if (writeDialog)
            writeDialog->verificationFailed();
        emit settingsWrite(false);
        return;
    }

    if (!hexManager->exportProfiles(QString())) {
        showBox(window(), QMessageBox::Critical, tr("Error while uploading!"),
                tr("An error occured while exporting profiles to HEX. Please try "
                   "again."));
        return;
    }
    if (writeDialog) {
        // What comes next from the dialog is the read back.
        disconnect(writeDialog, &CommunicationDialog::settingsRead, hexManager,
                   &HEXManager::compareVelantorAndSS);
        connect(writeDialog, &CommunicationDialog::settingsRead, this,
                &UploadDownloadManager::importFSElements);
    }
    emit continueWrite();
    writeDialog.clear();
}

void UploadDownloadManager::saveUnitSettingsToVel(QList<ProfileSettings *> profileSettings)
{
    if (refuse(HEXManager::getUnstorableProfiles(profileSettings)))
        return;
    if (!hexManager->exportProfiles(profileSettings)) {
        showBox(window(), QMessageBox::Critical, tr("Error while uploading!"),
                tr("An error occured while exporting settings to HEX. Please try "
                   "again."));
        return;
    }
    auto *dialog = new CommunicationDialog(window(), CommunicationDialog::WriteSettings);
    dialog->setCOMPort(formatCOMPort(comPort));
    connect(dialog, &CommunicationDialog::settingsWrite, this,
            &UploadDownloadManager::unitSettingsWrite);
    dialog->startRequiredComm();
}

void UploadDownloadManager::on_disconnectButtonPressed()
{
    emit settingsRead(false);

    QSerialPort port(formatCOMPort(comPort));
    if (!sendResetFrame(&port))
        showBox(window(), QMessageBox::Information, tr("Failed Opening Serial Port"),
                openFailureText(port.error()));
}

void UploadDownloadManager::onResetFromFirmware(QString newCOMPort)
{
    comPort = unformatCOMPort(newCOMPort);
    on_disconnectButtonPressed();
}

void UploadDownloadManager::onResetFinished(int, QProcess::ExitStatus) {}

void UploadDownloadManager::onResetFailed(QProcess::ProcessError error)
{
    QTextStream(stdout) << "Error resetting: " << int(error) << Qt::endl;
}

QWidget *UploadDownloadManager::window() const
{
    return qobject_cast<QWidget *>(parent());
}

} // namespace UploadDownload
