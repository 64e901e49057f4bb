#pragma once

#include "uploader/image.h"
#include "uploader/options.h"
#include "uploader/session.h"

/// The steps that change a charger or hold it against a file.
namespace Uploader
{
/// Erases what the options name.
End erase(const Options &options, const IntelHexFile::bootloader_t &bldr);

/// Loads the input file and cuts it at the end of the writable flash.
End load(const std::string &file, const IntelHexFile::bootloader_t &bldr, Image *image);

/// Writes an image, or the part of it that the options name, and its EEPROM.
End write(const Options &options, const IntelHexFile::bootloader_t &bldr, const Image &image);

/// Compares the charger with an image.
End verify(const IntelHexFile::bootloader_t &bldr, const Image &image);

/// Sends the charger back to its own work.
End reset();

} // namespace Uploader
