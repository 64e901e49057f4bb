#pragma once

#include "uploader/options.h"
#include "uploader/session.h"

/// What the tool can do beside programming: looking for chargers and trying lines.
namespace Uploader
{
/// Waits for a boot sequence and shows what was found.
End showBootSequence(const Options &options);

/// Tries to open a port; behind "!WIN", every COM name from 1 to 255.
End probePorts(const std::string &port);

/// Copies all that arrives into a file, without end.
End capture(const Options &options);

/// Erases the flash above the bootloader, writes random data and compares it, many times.
End testThroughput(std::uint64_t passes, const IntelHexFile::bootloader_t &bldr);

} // namespace Uploader
