#include "resources.h"

#include "support/filecontent.h"

#include <QByteArray>
#include <QDir>

#include <malloc.h>
#include <unistd.h>

#include <cstddef>

#ifdef __SANITIZE_ADDRESS__
// Not every compiler brings the header that declares it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace
{
qint64 allocatedBytes()
{
#ifdef __SANITIZE_ADDRESS__
    return static_cast<qint64>(__sanitizer_get_current_allocated_bytes());
#else
    const struct mallinfo2 info = mallinfo2();
    return static_cast<qint64>(info.uordblks + info.hblkhd);
#endif
}

qint64 residentBytes()
{
    const QByteArray pages = contentOf(QStringLiteral("/proc/self/statm")).split(' ').value(1);
    return pages.toLongLong() * sysconf(_SC_PAGESIZE);
}

/// Parent of a process, from its line of state; the program's name in it may hold anything.
qint64 parentIn(const QByteArray &state)
{
    return state.mid(state.lastIndexOf(')') + 2).split(' ').value(1).toLongLong();
}
} // namespace

Resources Resources::now()
{
    Resources result;
    result.heap = allocatedBytes();
    result.resident = residentBytes();
    // Less "." and "..", and the one that lists them.
    result.descriptors = QDir(QStringLiteral("/proc/self/fd"))
                             .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
                             .size() -
                         1;
    const QStringList processes =
        QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")}, QDir::Dirs);
    for (const QString &process : processes) {
        if (parentIn(contentOf(QStringLiteral("/proc/%1/stat").arg(process))) == getpid())
            ++result.children;
    }
    return result;
}
