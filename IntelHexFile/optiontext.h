#pragma once

#include <string>

namespace IntelHexFile
{
/// The text behind its leading blanks and dashes.
const char *killdashes(const char *text);

/// Copies an option's file name behind leading blanks and dashes. Returns its length; 0, with a
/// complaint on standard output, when nothing is left.
std::size_t getfilename(const char *text, std::string *out);

} // namespace IntelHexFile
