#include "updates/newfirmwarecheckermanager.h"

#include "updates/updatecheckerdialog.h"

#include <QWidget>

namespace NewFirmwareChecker
{

NewFirmwareCheckerManager::NewFirmwareCheckerManager(QObject *parent) : QObject(parent) {}

void NewFirmwareCheckerManager::on_checkFirmwareButtonPressed()
{
    auto *dialog = new UpdateCheckerDialog(window());
    connect(dialog, &UpdateCheckerDialog::newBundle, this, &NewFirmwareCheckerManager::newBundle);
    dialog->checkForNewBundle();
}

void NewFirmwareCheckerManager::onCheckForSoftwareUpdates()
{
    (new UpdateCheckerDialog(window()))->checkForNewSoftware();
}

QWidget *NewFirmwareCheckerManager::window() const
{
    return qobject_cast<QWidget *>(parent());
}

} // namespace NewFirmwareChecker
