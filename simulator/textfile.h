#pragma once

#include <optional>
#include <string>

namespace simulator
{
/// The whole file, or nothing where it cannot be read.
std::optional<std::string> readTextFile(const std::string &path);

/// Writes the file beside its place and moves it there: a reader sees the old one or the whole new
/// one. False, with the old one left, where that fails.
bool writeTextFile(const std::string &path, const std::string &text);

} // namespace simulator
