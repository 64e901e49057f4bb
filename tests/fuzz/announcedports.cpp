// The files by which simulated chargers announce themselves, in a folder that is open to any
// program of the user. An input: the contents of such files with a "|" between them, in which
// "{own}" stands for the number of a terminal that exists.

#include "announcedports.h"

#include "fuzz/ramfolder.h"
#include "fuzz/target.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <unistd.h>

namespace
{
/// A pseudo-terminal, so that there is one to announce.
class Terminal
{
public:
    Terminal() : descriptor(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        char path[64] = {};
        if (descriptor >= 0 && grantpt(descriptor) == 0 && unlockpt(descriptor) == 0 &&
            ptsname_r(descriptor, path, sizeof path) == 0)
            number = QByteArray(path).mid(static_cast<int>(sizeof "/dev/pts/") - 1);
    }
    ~Terminal()
    {
        if (descriptor >= 0)
            close(descriptor);
    }
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    /// Empty where the system has no terminals to give.
    QByteArray number;

private:
    int descriptor;
};

/// A user's runtime directory.
class RuntimeDirectory
{
public:
    RuntimeDirectory()
    {
        fuzz::require(QDir(folder.path()).mkdir(QStringLiteral("velantor-ports")),
                      "there is a folder");
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(folder.path()));
    }

    void announce(const QList<QByteArray> &contents) const
    {
        for (int i = 0; i < contents.size(); ++i) {
            QFile file(nameOf(i));
            fuzz::require(file.open(QIODevice::WriteOnly), "a file can be written");
            file.write(contents.at(i));
        }
    }

    void withdraw(int count) const
    {
        for (int i = 0; i < count; ++i)
            QFile::remove(nameOf(i));
    }

private:
    QString nameOf(int i) const
    {
        return folder.filePath(QStringLiteral("velantor-ports/%1").arg(i));
    }

    QTemporaryDir folder{fuzz::ramFolder()};
};

/// Whether it exists is not looked at: the terminals of other programs come and go.
bool isTerminalName(const QByteArray &name)
{
    const QByteArray number = name.mid(4);
    return name.startsWith("pts/") && number.size() < 10 &&
           std::all_of(number.begin(), number.end(), [](char c) { return c >= '0' && c <= '9'; }) &&
           number == QByteArray::number(number.toLongLong());
}

/// By number; each name once.
bool risesByNumber(const QStringList &names)
{
    for (int i = 1; i < names.size(); ++i) {
        if (names.at(i - 1).mid(4).toInt() >= names.at(i).mid(4).toInt())
            return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const Terminal terminal;
    static const RuntimeDirectory runtime;
    constexpr int mostFiles = 16;

    QByteArray text(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const QList<QByteArray> contents =
        text.replace("{own}", terminal.number).split('|').mid(0, mostFiles);
    runtime.announce(contents);
    const QStringList names = announcedPorts();
    runtime.withdraw(contents.size());

    fuzz::require(risesByNumber(names), "ports are listed by their numbers");
    for (const QString &name : names)
        fuzz::require(isTerminalName(name.toLatin1()), "a port has the name of a terminal");
    const QByteArray own = "pts/" + terminal.number;
    const bool announced = contents.contains(own) || contents.contains(own + '\n');
    fuzz::require(names.contains(QString::fromLatin1(own)) ==
                      (announced && !terminal.number.isEmpty()),
                  "a port is listed when it is announced");
    return 0;
}
