#include "childprocess.h"

#include <QTemporaryFile>

#include <csignal>
#include <cstdio>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

QByteArray contentOf(QTemporaryFile &file)
{
    file.seek(0);
    return file.readAll();
}

} // namespace

ChildResult runInChild(const std::function<void()> &code)
{
    QTemporaryFile output;
    QTemporaryFile error;
    if (!output.open() || !error.open())
        qFatal("no files for the child's words");
    std::fflush(nullptr);

    const pid_t child = fork();
    if (child == 0) {
        dup2(output.handle(), STDOUT_FILENO);
        dup2(error.handle(), STDERR_FILENO);
        const rlimit noCore = {0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        std::signal(SIGABRT, SIG_DFL);
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
            std::fprintf(stderr, "%s\n", qPrintable(text));
        });
        code();
        std::fflush(nullptr);
        _exit(0);
    }

    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child)
        qFatal("no child process");
    ChildResult result;
    result.aborted = WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
    result.standardOutput = contentOf(output);
    result.standardError = contentOf(error);
    return result;
}
