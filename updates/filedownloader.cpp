#include "updates/filedownloader.h"

#include <QNetworkReply>
#include <QUrl>

namespace NewFirmwareChecker
{
namespace
{
constexpr int expectedSize = 262144;

/// What the network may be ahead of us.
constexpr qint64 readAhead = 256 * 1024;

bool isWebAddress(const QUrl &url)
{
    return (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https")) &&
           !url.host().isEmpty();
}
} // namespace

FileDownloader::FileDownloader(QObject *parent) : QObject(parent)
{
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      QStringLiteral("Tolk-Tech-Velantor-Profile-Editor"));
    // Otherwise a small reply could unpack itself to any size before a byte of it is counted.
    request.setRawHeader("Accept-Encoding", "identity");
    received.reserve(expectedSize);
}

FileDownloader::~FileDownloader()
{
    reset();
}

void FileDownloader::startDownloading(const QString &address)
{
    reset();
    url = address;
    const QUrl wanted(url);
    // The library would also read files of this computer. The empty address it refuses.
    request.setUrl(isWebAddress(wanted) ? wanted : QUrl());
    reply = manager.get(request);
    reply->setReadBufferSize(readAhead);
    connect(reply, &QNetworkReply::metaDataChanged, this, &FileDownloader::checkAnnouncedSize);
    connect(reply, &QNetworkReply::readyRead, this, &FileDownloader::onReadyRead);
    // Queued: whoever hears of the end may show a box, or drop this object with the reply.
    connect(reply, &QNetworkReply::finished, this, &FileDownloader::onDoneReading,
            Qt::QueuedConnection);
    connect(reply, &QNetworkReply::errorOccurred, this, &FileDownloader::onError);
    connect(reply, &QNetworkReply::downloadProgress, this, &FileDownloader::onDownloadProgress);
}

void FileDownloader::reset()
{
    if (reply) {
        reply->disconnect(this);
        reply->abort();
        reply->deleteLater();
        reply = nullptr;
    }
    failed = false;
    received.resize(0); // keeps the room
}

void FileDownloader::onReadyRead()
{
    if (failed)
        return;
    received += reply->readAll();
    if (received.size() > largestSize)
        giveUp();
}

void FileDownloader::onDoneReading()
{
    // What was queued by a download that was dropped since is not about this one.
    if (!reply || !reply->isFinished())
        return;
    onReadyRead();
    const bool succeeded = !failed && isSuccess();
    reply->deleteLater();
    reply = nullptr;
    if (succeeded)
        emit finished(received);
    else
        emit error();
}

void FileDownloader::onError()
{
    failed = true;
}

void FileDownloader::onDownloadProgress(qint64 numBytes)
{
    emit downloadProgress(numBytes);
}

void FileDownloader::checkAnnouncedSize()
{
    if (reply->header(QNetworkRequest::ContentLengthHeader).toLongLong() > largestSize)
        giveUp();
}

/// A redirect that is not followed ends without an error, and what it carries is not the file. So
/// does, now and then, a reply whose connection breaks.
bool FileDownloader::isSuccess() const
{
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QVariant announced = reply->header(QNetworkRequest::ContentLengthHeader);
    return status >= 200 && status < 300 &&
           (!announced.isValid() || announced.toLongLong() == received.size());
}

void FileDownloader::giveUp()
{
    failed = true;
    received.resize(0);
    reply->abort();
}

} // namespace NewFirmwareChecker
