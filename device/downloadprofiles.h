#pragma once

#include <QObject>
#include <QProcess>
#include <QString>

namespace UploadDownload
{

/// Reads the charger's profile page into fs_to_read.hex by one run of the uploader.
///
/// Neither this object nor its process deletes itself: they live until their parent goes, and a run
/// that is still going then is killed. There is no time-out.
class DownloadProfiles : public QObject
{
    Q_OBJECT

public:
    /// comPort: path of the port, such as "/dev/ttyUSB0".
    DownloadProfiles(const QString &comPort, QObject *parent);

    /// Begins to read and returns at once.
    void start();

signals:
    /// The uploader says that the page is read. An old fs_to_read.hex stays where it wrote none.
    void finished();
    /// The reading failed. Emitted twice when the uploader crashes: for the crash and for its end.
    void errorDownloading();

private slots:
    void downloadHEXFinished(int exitCode, QProcess::ExitStatus exitStatus);

private:
    void downloadHEX();

    QString comPort;
    QProcess *downloadProcess = nullptr; ///< owned by the parent of this object
};

} // namespace UploadDownload
