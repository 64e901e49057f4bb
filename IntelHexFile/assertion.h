#pragma once

#include <cstdio>
#include <cstdlib>

namespace IntelHexFile
{
/// Ends the process with the text that the application's other assertions print, so that a broken
/// invariant looks the same wherever it lies. This library is built without Qt.
[[noreturn]] inline void assertionFailed(const char *condition, const char *file, int line)
{
    std::fflush(stdout);
    std::fprintf(stderr, "ASSERT: \"%s\" in file %s, line %d\n", condition, file, line);
    std::abort();
}

} // namespace IntelHexFile
