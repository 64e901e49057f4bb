#include "uploader/output.h"

#include <cstdio>

#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Uploader
{
namespace
{
constexpr std::size_t bufferSize = 1 << 16;
constexpr int waits = 1000;
constexpr useconds_t waitMicroseconds = 1000;

bool isPipe(int descriptor)
{
    struct stat status;
    return fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode);
}

} // namespace

void bufferOutput()
{
    static char buffer[bufferSize];
    std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
}

void endPhase()
{
    std::fflush(stdout);
    if (!isPipe(STDOUT_FILENO))
        return;
    int unread = 0;
    for (int i = 0; i < waits && ioctl(STDOUT_FILENO, FIONREAD, &unread) == 0 && unread > 0; ++i)
        usleep(waitMicroseconds);
}

void showProgress(const char *action, int percentage)
{
    std::printf("%s Progress %3d%%", action, percentage);
    for (int i = 0; i < 20; ++i)
        std::putchar('\b');
    std::fflush(stdout);
}

} // namespace Uploader
