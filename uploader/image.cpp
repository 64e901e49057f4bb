#include "uploader/image.h"

#include "IntelHexFile/hexfile.h"

#include <algorithm>

namespace Uploader
{
using namespace IntelHexFile;

namespace
{
/// Bytes of a line of text.
constexpr std::uint32_t line = 16;

/// A row, behind which a line may begin.
std::uint32_t spareFlash(const bootloader_t &bldr)
{
    return std::max(bldr.rowSize, bldr.verifyRowSize) + line;
}

/// A row, or a line of text where that is longer.
std::uint32_t spareEeprom(const bootloader_t &bldr)
{
    return hasEeprom(bldr) ? std::max({bldr.eepromRowSize, bldr.eepromVerifyRowSize, line}) : line;
}

} // namespace

Image::Image(const bootloader_t &bldr)
    : flash(flashImageSize + spareFlash(bldr)), eeprom(eepromImageSize + spareEeprom(bldr))
{
    fillhexbuffer(flash.data(), static_cast<std::uint32_t>(flash.size()), bldr.flashFiller,
                  bldr.flashFillerSize);
    fillhexbuffer(eeprom.data(), static_cast<std::uint32_t>(eeprom.size()), bldr.eepromFiller,
                  bldr.eepromFillerSize);
}

bool hasEeprom(const bootloader_t &bldr)
{
    return bldr.eepromMaxSize != 0;
}

std::uint32_t flashEndIndex(const bootloader_t &bldr)
{
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(byteIndexOf(bldr.flashEnd, bldr), flashImageSize));
}

std::uint32_t flashStartIndex(const bootloader_t &bldr)
{
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(byteIndexOf(bldr.bootloaderEnd, bldr), flashEndIndex(bldr)));
}

} // namespace Uploader
