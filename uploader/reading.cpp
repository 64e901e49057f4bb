#include "uploader/reading.h"

#include "IntelHexFile/hexfile.h"
#include "uploader/image.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace Uploader
{
namespace
{
using namespace IntelHexFile;

constexpr std::uint32_t lineBytes = 16;

/// Reads whole rows from the beginning of bytes on, until its end is passed. The memory has room
/// for one row beyond its size.
End readRows(ByteRange bytes, bool isEeprom, const bootloader_t &bldr,
             std::vector<unsigned char> *memory)
{
    const std::uint32_t rowSize = isEeprom ? bldr.eepromRowSize : bldr.rowSize;
    const std::uint32_t wordSize = isEeprom ? bldr.eepromWordSize : bldr.wordSize;
    unsigned char reply[replySize];
    for (std::uint64_t i = bytes.from; i < bytes.to; i += rowSize) {
        const auto wordAddress = static_cast<std::uint32_t>(isEeprom ? eepromAddressOf(i, bldr)
                                                                     : wordAddressOf(i, bldr));
        const std::uint32_t length =
            bootloader_read(reply, rowSize / wordSize, wordAddress, 0, portNumber, isEeprom, bldr);
        // A reply that is too short must not be filled up with what the buffer held before.
        if (length == readFailed || length < readDataOffset + rowSize) {
            std::printf("read at word address %d fail!", static_cast<int>(wordAddress));
            return 1;
        }
        std::memcpy(memory->data() + i, reply + readDataOffset, rowSize);
    }
    return std::nullopt;
}

/// Tells what will be read, and returns what of it is flash.
ByteRange flashToRead(const Options &options, const bootloader_t &bldr)
{
    if (options.readAll) {
        std::printf("\nReading from word address %x to %x", bldr.bootloaderEnd, bldr.flashEnd);
        return {flashStartIndex(bldr), flashEndIndex(bldr)};
    }
    const AddressRange &range = *options.readRange;
    std::printf("\nReading from word address %x to ", range.low);
    if (range.high > bldr.flashEnd)
        std::printf("%x (truncated)\n", bldr.flashEnd);
    else
        std::printf("%x", range.high);
    return {byteIndexOf(range.low, bldr),
            std::min<std::uint64_t>(byteIndexOf(range.high, bldr), flashEndIndex(bldr))};
}

/// What of the EEPROM is to be read: whole rows, as offsets into it.
ByteRange eepromToRead(const Options &options, const bootloader_t &bldr)
{
    if (!hasEeprom(bldr))
        return {};
    const std::uint64_t size = std::min(bldr.eepromMaxSize, eepromImageSize);
    if (options.readAll)
        return {0, size};
    const auto start = static_cast<std::uint64_t>(bldr.eepromStart);
    const auto offset = [&](std::uint32_t wordAddress) {
        const std::uint64_t index = byteIndexOf(wordAddress, bldr);
        return index < start ? 0 : std::min(index - start, size);
    };
    const std::uint64_t from = offset(options.readRange->low);
    return {from / bldr.eepromRowSize * bldr.eepromRowSize, offset(options.readRange->high)};
}

/// False when something could not be written.
bool save(std::FILE *file, ByteRange flash, ByteRange eeprom, const Image &image,
          const bootloader_t &bldr)
{
    int result = 0;
    if (!flash.isEmpty()) {
        // Whole rows, since the lines of the last one may reach behind it.
        const std::uint64_t rows = (flash.to + bldr.rowSize - 1) / bldr.rowSize;
        result |= makenewhexfile(
            image.flash.data(), static_cast<std::uint32_t>(rows * bldr.rowSize), file,
            bldr.flashFiller, bldr.flashFillerSize, bldr.rowSize, bldr.verifyRowSize, 0);
    }
    if (!eeprom.isEmpty()) {
        // Rows of an EEPROM may be shorter than a line of text, which reads 16 bytes always.
        const std::uint64_t lines = (eeprom.to + lineBytes - 1) / lineBytes;
        result |= makenewhexfile(image.eeprom.data(), static_cast<std::uint32_t>(lines * lineBytes),
                                 file, bldr.eepromFiller, bldr.eepromFillerSize, lineBytes,
                                 lineBytes, static_cast<std::uint32_t>(bldr.eepromStart));
    }
    std::fputs(":00000001FF", file);
    return result == 0 && !std::ferror(file);
}

} // namespace

End read(const Options &options, const bootloader_t &bldr)
{
    std::FILE *file = std::fopen(options.outputFile.c_str(), "w");
    if (!file) {
        std::printf("Could not open output file to write!");
        return 1;
    }
    Image image(bldr);
    const ByteRange flash = flashToRead(options, bldr);
    const ByteRange eeprom = eepromToRead(options, bldr);
    End end = readRows(flash, false, bldr, &image.flash);
    if (!end)
        end = readRows(eeprom, true, bldr, &image.eeprom);
    const bool saved = end || save(file, flash, eeprom, image, bldr);
    // A full disk may only come to light when the file is closed.
    if (std::fclose(file) != 0 || !saved) {
        std::printf("hex file write failure!");
        return 1;
    }
    if (!end)
        std::printf("hex file write success!");
    return end;
}

} // namespace Uploader
