#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Uploader
{
/// A range of word addresses, as the user gave it.
struct AddressRange {
    std::uint32_t low = 0;
    std::uint32_t high = 0;
};

/// What the command line asks for. A text that is empty was not given.
struct Options {
    std::string port;
    std::uint32_t maxBaud = 10000000;
    bool halfDuplex = false;

    bool askVersion = false;
    std::optional<std::uint16_t> assumedVersion; ///< major byte high, minor byte low

    bool eraseAll = false;
    std::optional<AddressRange> eraseRange;
    bool writeAll = false;
    std::optional<AddressRange> writeRange;
    bool verify = false;
    std::string inputFile; ///< of writing and verifying alike
    bool readAll = false;
    std::optional<AddressRange> readRange;
    std::string outputFile; ///< of reading
    bool reset = false;

    bool waitForBoot = false;
    std::optional<std::uint64_t> testPasses;
    std::string probedPort;
    std::string captureFile;

    bool writes() const { return writeAll || writeRange; }
    bool reads() const { return readAll || readRange; }
};

/// Options, or the complaint about the first mistake.
struct ParsedOptions {
    std::optional<Options> options;
    std::string complaint;
};

/// Reads the command line. Blanks and dashes before an option's letter mean nothing.
ParsedOptions parseOptions(int argc, const char *const *argv);

} // namespace Uploader
