#pragma once

#include <QDir>
#include <QFileInfo>
#include <QString>

namespace fuzz
{
/// The pattern for a QTemporaryDir that takes thousands of files a second: in memory where the
/// system has a place for that.
inline QString ramFolder()
{
    const QFileInfo memory(QStringLiteral("/dev/shm"));
    const QString place =
        memory.isDir() && memory.isWritable() ? memory.filePath() : QDir::tempPath();
    return place + QStringLiteral("/velantor-fuzz-XXXXXX");
}

} // namespace fuzz
