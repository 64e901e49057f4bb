#include "app/workingfiles.h"

#include "app/filenames.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QStandardPaths>

namespace
{
const QString toolsRoot = QStringLiteral(":/Velantor Software Suite Files/");
const QString defaultProfilesRoot = toolsRoot + SAVED_PROFILES_DIRECTORY + QLatin1Char('/');

/// Replaces target by a copy with the same permissions. QFile::copy() goes by way of a temporary
/// file and its name, which can keep a start waiting for the disk.
void replaceFile(const QString &source, const QString &target)
{
    QFile::remove(target);
    QFile embedded(source);
    QFile copy(target);
    if (!embedded.open(QIODevice::ReadOnly) || !copy.open(QIODevice::WriteOnly))
        return;
    copy.write(embedded.readAll());
    copy.setPermissions(embedded.permissions());
}

QString inCurrentDirectory(const QString &name)
{
    return QDir::currentPath() + QDir::separator() + name;
}
} // namespace

bool WorkingFiles::enterWorkingDirectory()
{
    QDir directory(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
    if (!directory.mkpath(QStringLiteral(".")) || !directory.cd(directory.absolutePath()))
        return false;
    QDir::setCurrent(directory.absolutePath());
    return true;
}

void WorkingFiles::unpackToolsFrom(const QString &source)
{
    QDirIterator files(source, QDir::Files);
    while (files.hasNext()) {
        files.next();
        const QString target = inCurrentDirectory(files.fileName());
        replaceFile(files.filePath(), target);
        if (isProgramName(files.fileName())) {
            // Replacing a file needs its folder only, so nobody has to read or write this one.
            QFile::setPermissions(target, QFile::ExeOwner | QFile::ExeUser | QFile::ExeGroup |
                                              QFile::ExeOther);
        }
    }
}

void WorkingFiles::unpackTools()
{
    unpackToolsFrom(toolsRoot);
}

void WorkingFiles::makeSavedProfilesDirectory()
{
    if (!QDir(inCurrentDirectory(SAVED_PROFILES_DIRECTORY)).exists())
        QDir().mkdir(SAVED_PROFILES_DIRECTORY);
}

void WorkingFiles::unpackDefaultProfiles()
{
    makeSavedProfilesDirectory();
    QDirIterator files(defaultProfilesRoot, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        replaceFile(files.filePath(), inCurrentDirectory(SAVED_PROFILES_DIRECTORY) +
                                          QDir::separator() + files.fileName());
    }
}
