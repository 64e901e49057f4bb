#include "device/uploadprofiles.h"

#include "app/filenames.h"
#include "device/uploaderprocess.h"

namespace UploadDownload
{

UploadProfiles::UploadProfiles(const QString &comPort, QObject *parent)
    : QObject(parent), comPort(comPort)
{
}

void UploadProfiles::start()
{
    eraseEEPROM();
}

void UploadProfiles::eraseEEPROM()
{
    eraseProcess = new QProcess(parent());
    connect(eraseProcess, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            &UploadProfiles::eraseFinished);
    connect(eraseProcess, &QProcess::errorOccurred, this, &UploadProfiles::errorUploading);
    startUploader(eraseProcess, comPort,
                  {QStringLiteral("-E"), PROFILE_PAGE_LOW, PROFILE_PAGE_HIGH});
}

void UploadProfiles::eraseFinished(int exitCode, QProcess::ExitStatus exitStatus)
{
    eraseProcess->kill();
    if (isSuccess(exitCode, exitStatus))
        flashEEPROM();
    else
        emit errorUploading();
}

void UploadProfiles::flashEEPROM()
{
    flashProcess = new QProcess(parent());
    connect(flashProcess, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            &UploadProfiles::flashFinished);
    connect(flashProcess, &QProcess::errorOccurred, this, &UploadProfiles::errorUploading);
    startUploader(flashProcess, comPort, {QStringLiteral("-w"), UPLOADED_PROFILES_FILE_NAME});
}

void UploadProfiles::flashFinished(int exitCode, QProcess::ExitStatus exitStatus)
{
    flashProcess->kill();
    if (isSuccess(exitCode, exitStatus))
        emit finished();
    else
        emit errorUploading();
}

} // namespace UploadDownload
