#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

namespace UploadDownload
{

/// First word address of the charger's profile page, as the uploader takes it.
inline const QString PROFILE_PAGE_LOW = QStringLiteral("0x9C00");
/// Word address behind the profile page.
inline const QString PROFILE_PAGE_HIGH = QStringLiteral("0xA000");

/// Starts the uploader of the working directory in process, for the port at the path comPort.
///
/// job holds the options of the one thing to do. What the uploader prints is appended to
/// vexaLog.txt. Returns at once; the process's signals tell the rest.
void startUploader(QProcess *process, const QString &comPort, const QStringList &job);

/// Whether a run did its job, which its end alone tells.
bool isSuccess(int exitCode, QProcess::ExitStatus exitStatus);

} // namespace UploadDownload
