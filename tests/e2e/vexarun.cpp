#include "e2e/vexarun.h"

#include <QRegularExpression>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <vector>

extern char **environ;

namespace
{
constexpr int patience = 60000; // milliseconds of silence after which a run counts as hung

struct Pipe {
    int readEnd = -1;
    int writeEnd = -1;

    // A pipe that keeps every write apart shows what a watcher would see of each flush.
    Pipe()
    {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC | O_DIRECT) != 0)
            qFatal("no pipe");
        readEnd = ends[0];
        writeEnd = ends[1];
    }
    ~Pipe()
    {
        closeWriteEnd();
        ::close(readEnd);
    }
    void closeWriteEnd()
    {
        if (writeEnd >= 0)
            ::close(writeEnd);
        writeEnd = -1;
    }
};

pid_t spawn(const QStringList &arguments, const Pipe &output, const Pipe &errors)
{
    std::vector<QByteArray> texts{QByteArray(VELANTOR_VEXA)};
    for (const QString &argument : arguments)
        texts.push_back(argument.toLocal8Bit());
    std::vector<char *> pointers;
    for (QByteArray &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output.writeEnd, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors.writeEnd, STDERR_FILENO);
    pid_t child = 0;
    if (posix_spawn(&child, VELANTOR_VEXA, &actions, nullptr, pointers.data(), environ) != 0)
        qFatal("cannot start %s", VELANTOR_VEXA);
    posix_spawn_file_actions_destroy(&actions);
    return child;
}

QByteArray record(int type, int address, const QByteArray &data)
{
    QByteArray bytes;
    bytes.append(static_cast<char>(data.size()));
    bytes.append(static_cast<char>(address >> 8));
    bytes.append(static_cast<char>(address));
    bytes.append(static_cast<char>(type));
    bytes.append(data);
    int sum = 0;
    for (const char byte : bytes)
        sum += static_cast<unsigned char>(byte);
    bytes.append(static_cast<char>(-sum));
    return ':' + bytes.toHex().toUpper() + '\n';
}

QByteArray upperAddress(int upper)
{
    const char bytes[] = {static_cast<char>(upper >> 8), static_cast<char>(upper)};
    return record(4, 0, QByteArray(bytes, sizeof bytes));
}
} // namespace

QByteArray VexaRun::withoutProgress() const
{
    QString text = QString::fromLatin1(output);
    text.remove(
        QRegularExpression(QStringLiteral("(Upload|Verify) Progress [ \\d]{3}%(\\x08{20})?")));
    return text.toLatin1();
}

QList<int> VexaRun::progress(const QByteArray &kind) const
{
    const QRegularExpression pattern(QString::fromLatin1(kind) +
                                     QStringLiteral(" Progress ([ \\d]{3})%"));
    QList<int> found;
    auto matches = pattern.globalMatch(QString::fromLatin1(output));
    while (matches.hasNext())
        found.append(matches.next().captured(1).trimmed().toInt());
    return found;
}

VexaRun runVexa(const QStringList &arguments)
{
    VexaRun run;
    Pipe output;
    Pipe errors;
    const pid_t child = spawn(arguments, output, errors);
    output.closeWriteEnd();
    errors.closeWriteEnd();

    for (int open = 2; open > 0;) {
        pollfd ends[] = {{output.readEnd, POLLIN, 0}, {errors.readEnd, POLLIN, 0}};
        if (::poll(ends, 2, patience) == 0) {
            ::kill(child, SIGKILL);
            qFatal("vexa.bin hangs: %s", run.output.constData());
        }
        open = 2;
        for (const pollfd &end : ends) {
            char buffer[65536];
            if (end.revents == 0)
                continue;
            const ssize_t size = ::read(end.fd, buffer, sizeof buffer);
            if (size <= 0) {
                --open;
                continue;
            }
            const QByteArray chunk(buffer, static_cast<int>(size));
            if (end.fd == errors.readEnd) {
                run.errors += chunk;
            } else {
                run.output += chunk;
                run.chunks.append(chunk);
            }
        }
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

QByteArray hexText(const QList<ImagePiece> &pieces)
{
    QByteArray text;
    int upper = 0;
    for (const ImagePiece &piece : pieces) {
        for (int at = 0; at < piece.second.size(); at += 16) {
            const int address = piece.first + at;
            if (address >> 16 != upper) {
                upper = address >> 16;
                text += upperAddress(upper);
            }
            text += record(0, address & 0xFFFF, piece.second.mid(at, 16));
        }
    }
    return text + ":00000001FF\n";
}

QByteArray savedHexText(const QList<ImagePiece> &rows)
{
    QByteArray text = upperAddress(0);
    int upper = 0;
    for (const ImagePiece &row : rows) {
        // The format's own arithmetic: 65535, and only from the address 65535 on.
        if (row.first > 65534 && row.first / 65535 != upper) {
            upper = row.first / 65535;
            text += upperAddress(upper);
        }
        for (int at = 0; at < row.second.size(); at += 16)
            text += record(0, (row.first + at) & 0xFFFF, row.second.mid(at, 16));
    }
    return text + ":00000001FF";
}

QByteArray patternImage(int size, int seed)
{
    QByteArray image;
    for (int i = 0; i < size; ++i)
        image.append(i % 4 == 3 ? '\0' : static_cast<char>(i * 7 + seed + i / 256));
    return image;
}
