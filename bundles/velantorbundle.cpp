#include "bundles/velantorbundle.h"

#include "app/filenames.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegExp>

namespace
{
const QString memberMark = QStringLiteral("//////");
const QString headerMark = QStringLiteral("...");

/// The next line without its end. Carriage returns are no part of a bundle's text.
QByteArray nextLine(QFile &file)
{
    QByteArray line = file.readLine();
    if (line.endsWith('\n'))
        line.chop(1);
    if (line.contains('\r'))
        line.replace('\r', QByteArray());
    return line;
}

/// A bundle may come from anywhere: it must not write outside the current directory.
bool staysInCurrentDirectory(const QString &name)
{
    return !name.isEmpty() && QDir::isRelativePath(name) &&
           !name.split(QLatin1Char('/')).contains(QStringLiteral(".."));
}

/// Every start unpacks the bundle over what the start before has written. Leaving equal files alone
/// spares the disk, and the wait where a file system flushes a truncated file as it is closed.
bool holds(const QString &name, const QByteArray &content)
{
    QFile file(name);
    return file.size() == content.size() && file.open(QIODevice::ReadOnly) &&
           file.readAll() == content;
}

bool writeFile(const QByteArray &content, const QString &name)
{
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        return false;
    file.write(content);
    return true;
}
} // namespace

VelantorBundle::VelantorBundle(QString path) : bundlePath(std::move(path)), hexFileName() {}

QString VelantorBundle::getBundleVersion(const QString &path)
{
    VelantorBundle bundle(path);
    bundle.parseKeyValuePairs();
    const QString version = bundle.valueFromKey(VELANTOR_BUNDLE_VERSION_KEY);
    if (!version.isEmpty())
        return version;

    const QString name = QFileInfo(path).fileName();
    if (!name.contains(QRegExp(QStringLiteral("(\\d+\\.)*\\d+.*\\.velantor"))))
        return QStringLiteral("0");
    const QRegExp number(QStringLiteral("(\\d+\\.)*\\d+"));
    number.indexIn(name);
    return number.cap();
}

void VelantorBundle::parseKeyValuePairs()
{
    QFile file(bundlePath);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return;
    if (QString::fromUtf8(nextLine(file)) != headerMark)
        return;

    const QRegExp keyAndValue(QStringLiteral("^\\s*[\\w\\.]*\\s*\\=\\s*[\\w\\.]*\\s*$"));
    while (!file.atEnd()) {
        const QByteArray bytes = nextLine(file);
        // A header that is never closed takes in all members: the cheap look comes first.
        if (!bytes.contains('=') && bytes != "...")
            continue;
        const QString line = QString::fromUtf8(bytes);
        if (line == headerMark)
            return;
        if (keyAndValue.indexIn(line) >= 0)
            extractAndStoreKeyValuePair(line);
    }
}

QString VelantorBundle::valueFromKey(const QString &key)
{
    return keyValuePairs[key];
}

bool VelantorBundle::parseBundle()
{
    parseKeyValuePairs();

    QFile file(bundlePath);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;

    while (!file.atEnd()) {
        // Start-up waits for these lines: only those that can be marks become text.
        QByteArray line = nextLine(file);
        if (!line.startsWith("//////") || !matchesStartLine(QString::fromUtf8(line)))
            continue;

        const QString firmwareSoFar = hexFileName;
        const QString name = parseFileName(QString::fromUtf8(line));
        QByteArray content;
        line = nextLine(file);
        // At the end of the file the line read last is not content, whatever it is.
        while (!file.atEnd() &&
               !(line.contains("END FILE") && matchesEndLine(QString::fromUtf8(line)))) {
            content += line;
            content += '\n';
            line = nextLine(file);
        }
        if (!staysInCurrentDirectory(name))
            hexFileName = firmwareSoFar; // a file elsewhere is no firmware of this bundle
        else if (!holds(name, content))
            writeFile(content, name);
    }
    return allowOverwriteProfiles(true);
}

bool VelantorBundle::allowOverwriteProfiles(bool allow)
{
    QFile::remove(FILE_FOR_VEXA_NAME);
    QFile table(allow ? FILE_FOR_VEXA_OVERWRITE_PROFILES : FILE_FOR_VEXA_KEEP_PROFILES);
    if (!table.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    table.copy(FILE_FOR_VEXA_NAME);
    return true;
}

bool VelantorBundle::matchesStartLine(const QString &line) const
{
    return line.size() >= 2 * memberMark.size() && line.startsWith(memberMark) &&
           line.endsWith(memberMark);
}

bool VelantorBundle::matchesEndLine(const QString &line) const
{
    static const QRegExp endMark(QStringLiteral("\\\\\\\\\\\\\\s*END FILE\\s*\\\\\\\\\\\\"));
    return endMark.indexIn(line) >= 0;
}

QString VelantorBundle::parseFileName(const QString &line)
{
    const QString name = QString(line).remove(memberMark).trimmed();
    if (name.endsWith(QLatin1String(".hex")) || name.endsWith(QLatin1String(".HEX")))
        hexFileName = name;
    return name;
}

void VelantorBundle::extractAndStoreKeyValuePair(const QString &line)
{
    const QStringList parts = line.split(QLatin1Char('='), Qt::SkipEmptyParts);
    if (parts.size() == 2)
        keyValuePairs.insert(parts.at(0).trimmed(), parts.at(1).trimmed());
}

bool VelantorBundle::saveFile(const QString &content, const QString &fileName)
{
    return writeFile(content.toUtf8(), fileName);
}
