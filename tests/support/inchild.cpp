#include "support/inchild.h"

#include <QtGlobal>

#include <sys/wait.h>
#include <unistd.h>

int inChild(const std::function<int()> &function)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(function());
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status))
        qFatal("a child has died");
    return WEXITSTATUS(status);
}

bool becomeOrdinaryUser()
{
    constexpr uid_t nobody = 65534;
    return geteuid() != 0 || setresuid(nobody, nobody, nobody) == 0;
}
