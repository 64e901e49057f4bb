#pragma once

#include "updates/filedownloader.h"

#include <QMap>
#include <QObject>
#include <QString>

class QXmlStreamReader;

namespace NewFirmwareChecker
{

/// Asks the maker's site which bundle and which software are the latest, and fetches that bundle
/// on request. One check per object.
class NewFirmwareChecker : public QObject
{
    Q_OBJECT

public:
    explicit NewFirmwareChecker(QObject *parent = nullptr);

    /// Fetches the information document; infoDownloaded() or error() follows.
    void downloadXMLInfo();
    /// Fetches the latest bundle into the current directory; firmwareDownloaded() or error()
    /// follows. For after infoDownloaded().
    void downloadLatestFirmware();
    /// Drops what is being fetched; no signal follows.
    void cancel();

    /// Whether the latest bundle is newer than the one in use.
    bool downloadNeeded();
    /// Whether the latest software is newer than this one.
    bool isSoftwareUpdate();

signals:
    /// What the document says by the names of its elements; what it does not say is missing.
    void infoDownloaded(const QMap<QString, QString> &firmwareInfo,
                        const QMap<QString, QString> &softwareInfo);
    /// The bundle is stored, as a whole.
    void firmwareDownloaded();
    void error();

public slots:
    /// Takes an information document, whose damaged parts count as missing.
    void on_InfoDownloaded(const QByteArray &data);
    void on_firmwareInfoDownloadedError();
    /// Stores a bundle under its version. Whether it is of any use shows when it is unpacked.
    void on_firmwareDownloaded(const QByteArray &data);
    void on_firmwareDownloadedError();

private:
    void readSoftwareInfo(QXmlStreamReader *reader);

    FileDownloader downloader;
    QMap<QString, QString> firmwareInfo;
    QMap<QString, QString> softwareInfo;
    QString url;
};

} // namespace NewFirmwareChecker
