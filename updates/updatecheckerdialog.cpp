#include "updates/updatecheckerdialog.h"

#include "app/applicationglobalmap.h"
#include "app/buildinfo.h"
#include "app/messagedialogs.h"
#include "ui_updatecheckerdialog.h"
#include "updates/newfirmwarechecker.h"

#include <QPointer>

namespace NewFirmwareChecker
{
namespace
{
/// A version as it is shown. It may come from the network, where it can have any length.
QString shown(const QString &version)
{
    constexpr int longest = 40;
    return QLatin1Char('v') +
           (version.size() > longest ? version.left(longest) + QChar(0x2026) : version);
}
} // namespace

UpdateCheckerDialog::UpdateCheckerDialog(QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::UpdateCheckerDialog>())
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
}

UpdateCheckerDialog::~UpdateCheckerDialog() = default;

void UpdateCheckerDialog::checkForNewBundle()
{
    setWindowTitle(tr("Firmware Checker"));
    ui->installedVersion->setText(
        shown(ApplicationGlobalMap::getString(QStringLiteral("bundle_version"))));
    show();
    makeChecker();
    connect(checker, &NewFirmwareChecker::infoDownloaded, this,
            &UpdateCheckerDialog::onFirmwareInfoDownloaded);
    connect(checker, &NewFirmwareChecker::firmwareDownloaded, this,
            &UpdateCheckerDialog::onFirmwareDownloaded);
    checker->downloadXMLInfo();
    showWorking(tr("Checking for Firmware Updates..."));
}

void UpdateCheckerDialog::checkForNewSoftware()
{
    setWindowTitle(tr("Software Updates"));
    ui->title->setText(tr("Software Checker"));
    ui->installedVersion->setText(SOFTWARE_VERSION);
    show();
    makeChecker();
    connect(checker, &NewFirmwareChecker::infoDownloaded, this,
            &UpdateCheckerDialog::onSoftwareInfoDownloaded);
    showWorking(tr("Checking for Software Updates..."));
    checker->downloadXMLInfo();
}

void UpdateCheckerDialog::done(int result)
{
    // The dialog goes a little later: nothing may arrive in between.
    if (checker)
        checker->cancel();
    QDialog::done(result);
}

void UpdateCheckerDialog::onFirmwareInfoDownloaded(const QMap<QString, QString> &info)
{
    ui->latestVersion->setText(shown(info.value(QStringLiteral("current_version"))));
    if (checker->downloadNeeded()) {
        showWorking(tr("Downloading Firmware..."));
        checker->downloadLatestFirmware();
    } else {
        showEnd(tr("Firmware already up-to-date"), 100);
    }
}

void UpdateCheckerDialog::onSoftwareInfoDownloaded(const QMap<QString, QString> & /*firmwareInfo*/,
                                                   const QMap<QString, QString> &softwareInfo)
{
    ui->latestVersion->setText(shown(softwareInfo.value(QStringLiteral("sw_version"))));
    if (checker->isSoftwareUpdate()) {
        showEnd(tr("Update available ") + QStringLiteral("<a href = \"") + softwareDownloadUrl() +
                    QStringLiteral("\">") + tr("here") + QStringLiteral("</a>!"),
                100);
        MessageDialogs::softwareUpdateNeeded(this);
    } else {
        showEnd(tr("Software already up-to-date"), 100);
    }
}

void UpdateCheckerDialog::onFirmwareDownloaded()
{
    // Taking the bundle into use can ask the user, and who was asked may have closed everything.
    const QPointer<UpdateCheckerDialog> alive(this);
    emit newBundle();
    if (!alive)
        return;
    showEnd(tr("Latest Firmware Downloaded!"), 100);
    MessageDialogs::firmwareDownloaded(this);
}

void UpdateCheckerDialog::onError()
{
    showEnd(tr("Error!"), 0);
    MessageDialogs::firmwareCheckerError(this);
}

void UpdateCheckerDialog::onMainButtonPressed()
{
    close();
}

void UpdateCheckerDialog::makeChecker()
{
    checker = new NewFirmwareChecker(this);
    connect(checker, &NewFirmwareChecker::error, this, &UpdateCheckerDialog::onError);
    connect(ui->mainButton, &QPushButton::clicked, this, &UpdateCheckerDialog::onMainButtonPressed);
}

void UpdateCheckerDialog::showWorking(const QString &status)
{
    ui->status->setText(status);
    ui->progressBar->setRange(0, 0);
    ui->progressBar->setValue(0);
}

void UpdateCheckerDialog::showEnd(const QString &status, int percent)
{
    ui->status->setText(status);
    ui->progressBar->setRange(0, 100);
    ui->progressBar->setValue(percent);
    ui->mainButton->setText(tr("Close"));
}

} // namespace NewFirmwareChecker
