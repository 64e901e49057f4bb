#pragma once

#include "uploader/options.h"
#include "uploader/session.h"

namespace Uploader
{
/// Reads what the options name into their output file, as Intel HEX text.
End read(const Options &options, const IntelHexFile::bootloader_t &bldr);

} // namespace Uploader
