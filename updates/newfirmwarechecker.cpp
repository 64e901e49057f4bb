#include "updates/newfirmwarechecker.h"

#include "app/applicationglobalmap.h"
#include "app/buildinfo.h"
#include "app/versionstring.h"
#include "bundles/velantorbundle.h"

#include <QSaveFile>
#include <QStringList>
#include <QXmlStreamReader>

namespace NewFirmwareChecker
{
namespace
{
/// The document has a few hundred bytes.
constexpr qint64 largestInformation = 1024 * 1024;

const QString platformName = QStringLiteral("Linux");
const QString currentVersionTag = QStringLiteral("current_version");
const QString downloadLinkTag = QStringLiteral("download_link");
const QString softwareVersionTag = QStringLiteral("sw_version");
const QStringList bundleTags{currentVersionTag, downloadLinkTag, QStringLiteral("download_size"),
                             QStringLiteral("build_type"), QStringLiteral("hardware_version")};
const QStringList softwareTags{softwareVersionTag, QStringLiteral("sw_link")};

/// A network that asks its users to log in answers with a page of its own. Kept as a bundle, that
/// page would count as the newest one, at every start, and nothing in the suite could remove it.
bool isWebPage(const QByteArray &data)
{
    return data.trimmed().startsWith('<');
}

bool isNewer(const QString &latest, const QString &installed)
{
    return VersionString(latest).greaterThan(VersionString(installed));
}
} // namespace

NewFirmwareChecker::NewFirmwareChecker(QObject *parent)
    : QObject(parent),
      downloader(this),
      url(siteUrl(QStringLiteral("/downloads/latest_bundle_info_new.xml")))
{
}

void NewFirmwareChecker::downloadXMLInfo()
{
    downloader.disconnect(this);
    connect(&downloader, &FileDownloader::finished, this, &NewFirmwareChecker::on_InfoDownloaded);
    connect(&downloader, &FileDownloader::error, this,
            &NewFirmwareChecker::on_firmwareInfoDownloadedError);
    downloader.setLargestSize(largestInformation);
    downloader.startDownloading(url);
}

void NewFirmwareChecker::downloadLatestFirmware()
{
    downloader.disconnect(this);
    connect(&downloader, &FileDownloader::finished, this,
            &NewFirmwareChecker::on_firmwareDownloaded);
    connect(&downloader, &FileDownloader::error, this,
            &NewFirmwareChecker::on_firmwareDownloadedError);
    downloader.setLargestSize(VelantorBundle::longestBundle);
    downloader.startDownloading(firmwareInfo[downloadLinkTag]);
}

void NewFirmwareChecker::cancel()
{
    downloader.reset();
}

bool NewFirmwareChecker::downloadNeeded()
{
    return isNewer(firmwareInfo[currentVersionTag],
                   ApplicationGlobalMap::getString(QStringLiteral("bundle_version")));
}

bool NewFirmwareChecker::isSoftwareUpdate()
{
    QString installed = SOFTWARE_VERSION;
    if (installed.startsWith(QLatin1Char('v')))
        installed.remove(0, 1);
    return BUILD_TYPE == QLatin1String("RELEASE") &&
           isNewer(softwareInfo[softwareVersionTag], installed);
}

void NewFirmwareChecker::on_InfoDownloaded(const QByteArray &data)
{
    QXmlStreamReader reader(data);
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (bundleTags.contains(reader.name())) {
            const QString tag = reader.name().toString();
            reader.readNext();
            firmwareInfo[tag] = reader.text().toString();
            reader.readNext(); // the end of the element
        }
        if (reader.name() == QLatin1String("os") &&
            reader.attributes().value(QLatin1String("name")) == platformName)
            readSoftwareInfo(&reader);
    }
    emit infoDownloaded(firmwareInfo, softwareInfo);
}

/// Takes the elements in a row that follow each other with white space in between.
void NewFirmwareChecker::readSoftwareInfo(QXmlStreamReader *reader)
{
    reader->readNextStartElement();
    // Behind damage the reader keeps the name that it read last.
    while (!reader->atEnd() && softwareTags.contains(reader->name())) {
        const QString tag = reader->name().toString();
        reader->readNext();
        softwareInfo[tag] = reader->text().toString();
        reader->readNext(); // the end of the element
        reader->readNext(); // white space
        reader->readNext(); // the next element
    }
}

void NewFirmwareChecker::on_firmwareInfoDownloadedError()
{
    emit error();
}

void NewFirmwareChecker::on_firmwareDownloaded(const QByteArray &data)
{
    // The version comes from the network, and a file's name is made of it: digits and dots only.
    const VersionString version(firmwareInfo[currentVersionTag]);
    if (!version.isValid() || data.isEmpty() || isWebPage(data)) {
        emit error();
        return;
    }
    QSaveFile file(QLatin1Char('v') + version.toString() + QStringLiteral(".velantor"));
    // A full disk shows when the buffer is emptied, of which commit() does not tell.
    const bool stored = file.open(QIODevice::WriteOnly) && file.write(data) == data.size() &&
                        file.flush() && file.commit();
    if (stored)
        emit firmwareDownloaded();
    else
        emit error();
}

void NewFirmwareChecker::on_firmwareDownloadedError()
{
    emit error();
}

} // namespace NewFirmwareChecker
