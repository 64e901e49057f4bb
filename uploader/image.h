#pragma once

#include "IntelHexFile/bootloader.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Uploader
{
/// What a charger holds, or is to hold: filler wherever nothing else is known. Both memories have a
/// row beyond their size, so that a row that begins inside can be read whole.
struct Image {
    explicit Image(const IntelHexFile::bootloader_t &bldr);

    std::vector<unsigned char> flash;
    std::vector<unsigned char> eeprom;
    std::uint32_t flashTop = 0; ///< end of what is known of the flash, a byte index
    std::uint32_t eepromTop = 0;
    bool hasEeprom = false; ///< there was data for the EEPROM
};

/// Byte indices of an image, the end excluded.
struct ByteRange {
    std::uint64_t from = 0;
    std::uint64_t to = 0;

    bool isEmpty() const { return from >= to; }
};

/// Whether the device has EEPROM at all.
bool hasEeprom(const IntelHexFile::bootloader_t &bldr);

/// First byte index above the writable flash, and never above the image.
std::uint32_t flashEndIndex(const IntelHexFile::bootloader_t &bldr);
/// First byte index above the bootloader, and never above flashEndIndex.
std::uint32_t flashStartIndex(const IntelHexFile::bootloader_t &bldr);

} // namespace Uploader
