#pragma once

#include <QObject>
#include <QProcess>
#include <QString>

namespace UploadDownload
{

/// Writes fs_to_write.hex to the charger's profile page: one run of the uploader erases the page,
/// a second one writes it.
///
/// Neither this object nor its processes delete themselves: they live until their parent goes, and
/// a run that is still going then is killed. There is no time-out.
class UploadProfiles : public QObject
{
    Q_OBJECT

public:
    /// comPort: path of the port, such as "/dev/ttyUSB0".
    UploadProfiles(const QString &comPort, QObject *parent);

    /// Begins with the erasure and returns at once.
    void start();

signals:
    /// The page is written.
    void finished();
    /// The erasure or the writing failed. Emitted twice when the uploader crashes: for the crash
    /// and for its end. After a failed writing the charger's page is empty.
    void errorUploading();

private slots:
    void eraseFinished(int exitCode, QProcess::ExitStatus exitStatus);
    void flashFinished(int exitCode, QProcess::ExitStatus exitStatus);

private:
    void eraseEEPROM();
    void flashEEPROM();

    QString comPort;
    QProcess *eraseProcess = nullptr; ///< owned by the parent of this object
    QProcess *flashProcess = nullptr; ///< owned by the parent of this object
};

} // namespace UploadDownload
