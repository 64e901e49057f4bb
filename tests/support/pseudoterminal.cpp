#include "support/pseudoterminal.h"

#include <QDir>
#include <QFile>

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

PseudoTerminal::PseudoTerminal() : descriptor(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK))
{
    if (descriptor < 0 || grantpt(descriptor) != 0 || unlockpt(descriptor) != 0)
        qFatal("no pseudo-terminal for the test");
    name = QFile::decodeName(ptsname(descriptor)).mid(5); // without "/dev/"
}

PseudoTerminal::~PseudoTerminal()
{
    withdraw();
    close(descriptor);
}

void PseudoTerminal::announce()
{
    QDir().mkpath(QFileInfo(announcement()).path());
    QFile file(announcement());
    if (!file.open(QIODevice::WriteOnly) || file.write(name.toLatin1() + '\n') < 0)
        qFatal("cannot write %s", qPrintable(file.fileName()));
}

void PseudoTerminal::withdraw()
{
    QFile::remove(announcement());
}

QByteArray PseudoTerminal::receive()
{
    char buffer[256];
    const ssize_t size = read(descriptor, buffer, sizeof buffer);
    return size > 0 ? QByteArray(buffer, int(size)) : QByteArray();
}

QString PseudoTerminal::announcement() const
{
    QString file = name;
    file.replace(QLatin1Char('/'), QLatin1Char('-'));
    return qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/velantor-ports/") + file;
}
