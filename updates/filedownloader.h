#pragma once

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QObject>
#include <QString>

class QNetworkReply;

namespace NewFirmwareChecker
{

/// Fetches one file at a time by HTTP or HTTPS into memory.
///
/// Each download ends with either finished() or error(), which come from the event loop and never
/// from within startDownloading(). Only a reply of success counts, with as many bytes as it
/// announced: redirects are not followed and are errors. Of a reply without a size the library may
/// miss that its end is missing. There is no time-out; reset() ends a download that takes too long.
class FileDownloader : public QObject
{
    Q_OBJECT

public:
    explicit FileDownloader(QObject *parent = nullptr);
    ~FileDownloader() override;

    /// A download of more bytes than this is an error, as soon as that shows.
    void setLargestSize(qint64 bytes) { largestSize = bytes; }
    /// Ends a running download, then begins this one. Addresses other than of HTTP and HTTPS are
    /// errors.
    void startDownloading(const QString &url);
    /// Drops a running download, of which nothing will be heard any more.
    void reset();

signals:
    void finished(const QByteArray &data);
    void error();
    /// numBytes: received so far.
    void downloadProgress(qint64 numBytes);

private slots:
    void onReadyRead();
    void onDoneReading();
    void onError();
    void onDownloadProgress(qint64 numBytes);

private:
    void checkAnnouncedSize();
    bool isSuccess() const;
    void giveUp();

    QString url;
    QNetworkRequest request;
    QNetworkAccessManager manager;
    QNetworkReply *reply = nullptr;
    bool failed = false;
    QByteArray received;
    qint64 largestSize = 16 * 1024 * 1024;
};

} // namespace NewFirmwareChecker
