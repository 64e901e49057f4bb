#include "simulator/textfile.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace simulator
{

std::optional<std::string> readTextFile(const std::string &path)
{
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        return std::nullopt;
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return std::nullopt;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

bool writeTextFile(const std::string &path, const std::string &text)
{
    // The leading dot keeps readers of a whole folder from taking the half-written file.
    const std::filesystem::path target(path);
    const std::string temporaryName =
        '.' + target.filename().string() + '.' + std::to_string(::getpid());
    const std::string temporary = (target.parent_path() / temporaryName).string();
    std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (file && std::rename(temporary.c_str(), path.c_str()) == 0)
        return true;
    std::remove(temporary.c_str());
    return false;
}

} // namespace simulator
