#include "support/workingdirectory.h"

#include "support/filecontent.h"

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
    writeFile(folder.filePath(name), content);
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
    return contentOf(folder.filePath(name));
}
