#pragma once

#include <string>

namespace simulator
{
/// Tells programs of the same user that a simulated charger is plugged in: a file in the folder
/// velantor-ports of the user's runtime directory, holding the port's bare name, for as long as
/// this object lives. Without a runtime directory nobody is told.
class Announcement
{
public:
    /// runtimeDirectory is $XDG_RUNTIME_DIR or empty; portName is such as "pts/3".
    Announcement(const std::string &runtimeDirectory, const std::string &portName);
    ~Announcement();
    Announcement(const Announcement &) = delete;
    Announcement &operator=(const Announcement &) = delete;

    /// The file, or empty where there is none.
    std::string file() const { return path; }

private:
    std::string path;
};

} // namespace simulator
