#include "support/workingdirectory.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

WorkingDirectory::WorkingDirectory() : before(QDir::currentPath())
{
    if (!folder.isValid() || !QDir::setCurrent(folder.path()))
        qFatal("no working directory for the test");
}

WorkingDirectory::~WorkingDirectory()
{
    QDir::setCurrent(before);
}

void WorkingDirectory::write(const QString &name, const QByteArray &content) const
{
    QFile file(folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
}

void WorkingDirectory::copyHere(const QString &file) const
{
    const QString target = folder.filePath(QFileInfo(file).fileName());
    QFile::remove(target);
    if (!QFile::copy(file, target))
        qFatal("cannot copy %s", qPrintable(file));
}

QByteArray WorkingDirectory::read(const QString &name) const
{
    QFile file(folder.filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
