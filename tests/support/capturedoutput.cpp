#include "support/capturedoutput.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
/// Redirects a descriptor into a temporary file as long as it lives.
class Redirection
{
public:
    explicit Redirection(int descriptor)
        : descriptor(descriptor), original(dup(descriptor)), file(std::tmpfile())
    {
        std::fflush(nullptr);
        if (original < 0 || !file || dup2(fileno(file), descriptor) < 0)
            qFatal("cannot redirect an output");
    }

    ~Redirection()
    {
        std::fflush(nullptr);
        dup2(original, descriptor);
        close(original);
        std::fclose(file);
    }

    Redirection(const Redirection &) = delete;
    Redirection &operator=(const Redirection &) = delete;

    QByteArray text()
    {
        std::fflush(nullptr);
        QByteArray result;
        std::rewind(file);
        char buffer[4096];
        while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, file))
            result.append(buffer, static_cast<int>(count));
        return result;
    }

private:
    int descriptor;
    int original;
    std::FILE *file;
};

} // namespace

QByteArray printedBy(const std::function<void()> &action)
{
    Redirection output(STDOUT_FILENO);
    action();
    return output.text();
}

QByteArray lastWordsOf(const std::function<void()> &action)
{
    Redirection errors(STDERR_FILENO);
    const pid_t child = fork();
    if (child < 0)
        qFatal("cannot fork");
    if (child == 0) {
        const rlimit none{0, 0};
        setrlimit(RLIMIT_CORE, &none);
        // The test's own handler would describe the crash; only the assertion should speak.
        std::signal(SIGABRT, SIG_DFL);
        action();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status))
        return "survived";
    if (!WIFSIGNALED(status) || WTERMSIG(status) != SIGABRT)
        return "died otherwise";
    return errors.text();
}
