#include "simulator/announcement.h"

#include "simulator/textfile.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

namespace simulator
{
namespace
{
const std::string prefix = "velantor-sim-"; // followed by the process id

// A simulator that was killed could not take its file along.
void removeLeftOvers(const std::filesystem::path &folder)
{
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        if (name.compare(0, prefix.size(), prefix) != 0)
            continue;
        const long process = std::strtol(name.c_str() + prefix.size(), nullptr, 10);
        if (process > 0 && ::kill(static_cast<pid_t>(process), 0) != 0 && errno == ESRCH)
            std::filesystem::remove(entry.path(), error);
    }
}
} // namespace

Announcement::Announcement(const std::string &runtimeDirectory, const std::string &portName)
{
    if (runtimeDirectory.empty())
        return;
    const std::filesystem::path folder = std::filesystem::path(runtimeDirectory) / "velantor-ports";
    std::error_code ignored;
    std::filesystem::create_directory(folder, ignored);
    removeLeftOvers(folder);
    const std::string file = (folder / (prefix + std::to_string(::getpid()))).string();
    if (writeTextFile(file, portName + '\n'))
        path = file;
}

Announcement::~Announcement()
{
    if (!path.empty())
        ::unlink(path.c_str());
}

} // namespace simulator
