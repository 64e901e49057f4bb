#include "bundles/memberfile.h"

#include "app/filenames.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace
{
bool staysInCurrentDirectory(const QString &name)
{
    if (name.isEmpty() || !QDir::isRelativePath(name))
        return false;
    QString path;
    for (const QString &part : name.split(QLatin1Char('/'))) {
        path += part;
        if (part == QLatin1String("..") || QFileInfo(path).isSymLink())
            return false;
        path += QLatin1Char('/');
    }
    return true;
}

bool belongsToTheUser(const QString &path)
{
    const QString folder = path.section(QLatin1Char('/'), 0, 0);
    return path == CONFIG_FILE || path == UPLOADER_LOG_FILE_NAME || folder == LOG_DIRECTORY ||
           (folder == SAVED_PROFILES_DIRECTORY && QFileInfo::exists(path));
}

/// Every start unpacks the bundle over what the start before has written. Leaving equal files alone
/// spares the disk, and the wait where a file system flushes a truncated file as it is closed.
bool holds(const QString &name, const QByteArray &content)
{
    QFile file(name);
    return file.size() == content.size() && file.open(QIODevice::ReadOnly) &&
           file.readAll() == content;
}
} // namespace

bool MemberFile::mayWrite(const QString &name)
{
    if (!staysInCurrentDirectory(name))
        return false;
    const QString path = QDir::cleanPath(name);
    if (isProgramName(path) || path.endsWith(BUNDLE_EXTENSION) || belongsToTheUser(path))
        return false;
    const QFileInfo target(path);
    return target.isFile() || !target.exists();
}

bool MemberFile::write(const QByteArray &content, const QString &name)
{
    if (holds(name, content))
        return true;
    QFile file(name);
    return file.open(QIODevice::WriteOnly | QIODevice::Text) &&
           file.write(content) == content.size() && file.flush();
}
