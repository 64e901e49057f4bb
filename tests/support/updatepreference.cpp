#include "support/updatepreference.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace
{
void choose(const char *value)
{
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
    QFile file(folder.filePath(QStringLiteral("config.txt")));
    if (!folder.mkpath(QStringLiteral(".")) || !file.open(QIODevice::WriteOnly))
        qFatal("no place for the preference");
    file.write(QByteArray("automatic_updates ") + value + '\n');
}
} // namespace

void chooseManualUpdates()
{
    choose("false");
}

void chooseAutomaticUpdates()
{
    choose("true");
}
