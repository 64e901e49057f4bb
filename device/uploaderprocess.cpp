#include "device/uploaderprocess.h"

#include "app/filenames.h"

namespace UploadDownload
{

void startUploader(QProcess *process, const QString &comPort, const QStringList &job)
{
    // Every run speaks over the half-duplex cable (-h) and asks the bootloader for its version (-V)
    // instead of waiting for the charger to be switched on.
    const QStringList line{QStringLiteral("-s"), comPort, QStringLiteral("-h"),
                           QStringLiteral("-V")};
    process->setStandardOutputFile(UPLOADER_LOG_FILE_NAME, QIODevice::Append);
    process->start(QStringLiteral("./") + VEXA_FILE_NAME, line + job, QIODevice::ReadWrite);
}

bool isSuccess(int exitCode, QProcess::ExitStatus exitStatus)
{
    return exitCode == 0 && exitStatus == QProcess::NormalExit;
}

} // namespace UploadDownload
