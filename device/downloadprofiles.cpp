#include "device/downloadprofiles.h"

#include "app/filenames.h"
#include "device/uploaderprocess.h"

namespace UploadDownload
{

DownloadProfiles::DownloadProfiles(const QString &comPort, QObject *parent)
    : QObject(parent), comPort(comPort)
{
}

void DownloadProfiles::start()
{
    downloadHEX();
}

void DownloadProfiles::downloadHEX()
{
    downloadProcess = new QProcess(parent());
    connect(downloadProcess, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            &DownloadProfiles::downloadHEXFinished);
    connect(downloadProcess, &QProcess::errorOccurred, this, &DownloadProfiles::errorDownloading);
    startUploader(
        downloadProcess, comPort,
        {QStringLiteral("-l"), PROFILE_PAGE_LOW, PROFILE_PAGE_HIGH, DOWNLOADED_PROFILES_FILE_NAME});
}

void DownloadProfiles::downloadHEXFinished(int exitCode, QProcess::ExitStatus exitStatus)
{
    downloadProcess->kill();
    if (isSuccess(exitCode, exitStatus))
        emit finished();
    else
        emit errorDownloading();
}

} // namespace UploadDownload
