// The main function of a fuzz target without libFuzzer: runs every seed, then so many mutated
// seeds. As their sequence is fixed, a fast machine sees no more than a slow one. An input that
// ends the process is kept in the current directory.

#include "fuzz/mutator.h"
#include "fuzz/target.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <fcntl.h>
#include <unistd.h>

/// Present where a sanitizer is.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace
{
const fuzz::Unit *running = nullptr;
std::string brokenInput;

/// Called when nothing in the process can be trusted any more: system calls only.
void keepInput()
{
    if (!running)
        return;
    const int file = open(brokenInput.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (file < 0 || write(file, running->data(), running->size()) < 0)
        return;
    running = nullptr;
    static constexpr char text[] = "The input is kept in the file broken-input.\n";
    if (write(STDERR_FILENO, text, sizeof text - 1) < 0)
        return;
}

void onSignal(int number)
{
    keepInput();
    std::signal(number, SIG_DFL);
    std::raise(number);
}

void watchForDeath()
{
    if (__sanitizer_set_death_callback)
        __sanitizer_set_death_callback(keepInput);
    else
        std::signal(SIGSEGV, onSignal);
    std::signal(SIGABRT, onSignal);
}

void run(const fuzz::Unit &unit)
{
    running = &unit;
    LLVMFuzzerTestOneInput(unit.data(), unit.size());
    running = nullptr;
}

fuzz::Unit readFile(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return fuzz::Unit(std::istreambuf_iterator<char>(file), {});
}

/// The seeds in the order of their names: the order of a folder is left to the file system.
std::vector<fuzz::Unit> readSeeds(char **paths, int count)
{
    std::vector<std::filesystem::path> files;
    for (int i = 0; i < count; ++i) {
        if (!std::filesystem::is_directory(paths[i])) {
            files.emplace_back(paths[i]);
            continue;
        }
        for (const auto &entry : std::filesystem::directory_iterator(paths[i]))
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    std::vector<fuzz::Unit> seeds;
    for (const auto &file : files) {
        if (std::filesystem::is_regular_file(file))
            seeds.push_back(readFile(file));
    }
    return seeds;
}

} // namespace

int main(int argc, char **argv)
{
    const unsigned long mutations = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 0;
    const std::vector<fuzz::Unit> seeds = readSeeds(argv + 2, argc - 2);
    if (seeds.empty()) {
        std::fprintf(stderr, "usage: %s MUTATIONS SEEDS...\n", argv[0]);
        return 1;
    }
    // The parsers complain on standard output, once for each bad input.
    if (!std::freopen("/dev/null", "w", stdout))
        return 1;

    // In full: a target may go to another folder.
    brokenInput = (std::filesystem::current_path() / "broken-input").string();
    watchForDeath();
    run(fuzz::Unit());
    for (const fuzz::Unit &seed : seeds)
        run(seed);

    fuzz::Mutator mutator(&seeds);
    for (unsigned long i = 0; i < mutations; ++i)
        run(mutator.next());
    std::fprintf(stderr, "%zu seeds, %lu mutations\n", seeds.size(), mutations);
    return 0;
}
