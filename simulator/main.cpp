#include "simulator/simulation.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>

namespace
{
// Signals that end the program arrive as a readable descriptor, so that it can put its things away.
int quitSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, signal);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    signal(SIGPIPE, SIG_IGN);
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

int complain(const std::string &text)
{
    std::fprintf(stderr, "velantor-sim: %s\n", text.c_str());
    return 1;
}
} // namespace

int main(int argc, char **argv)
{
    std::string error;
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const std::optional<simulator::Options> options = simulator::parseOptions(arguments, &error);
    if (!options)
        return complain(error + "; see --help");
    if (options->help) {
        std::cout << simulator::usageText();
        return 0;
    }
    const pid_t parent = getppid();
    if (options->withParent && (prctl(PR_SET_PDEATHSIG, SIGTERM) != 0 || getppid() != parent))
        return complain("the parent is gone");
    const int quit = quitSignals();

    simulator::Simulation simulation(*options);
    if (!simulation.start(&error))
        return complain(error);
    std::cout << simulation.portPath() << std::endl;
    simulation.run(quit);
    if (!simulation.saveAll(&error))
        return complain(error);
    return 0;
}
