#include "uploader/programming.h"

#include "IntelHexFile/hexfile.h"
#include "uploader/output.h"

#include <algorithm>
#include <cstdio>

namespace Uploader
{
namespace
{
using namespace IntelHexFile;

std::uint32_t flashAddress(std::uint64_t byteIndex, const bootloader_t &bldr)
{
    return static_cast<std::uint32_t>(wordAddressOf(byteIndex, bldr));
}

End eraseAll(const bootloader_t &bldr)
{
    unsigned char reply[replySize];
    if (bootloader_eraseall(reply, portNumber, bldr) != commandDone) {
        std::printf("\nErase failed!");
        return 1;
    }
    std::printf("\nAll flash above bldr erased!");
    return std::nullopt;
}

End eraseRange(const AddressRange &range, const bootloader_t &bldr)
{
    unsigned char reply[replySize];
    if (bootloader_eraserange(reply, portNumber, bldr, range.low, range.high) != commandDone) {
        std::printf("\nErase range failed!");
        return 1;
    }
    std::printf("\nMemory from %x to %x erased successfully!", range.low, range.high);
    return std::nullopt;
}

/// What of an image is to be written: all of it from the bootloader's end on, or the range that the
/// options name as far as it can be written.
ByteRange flashToWrite(const Options &options, const bootloader_t &bldr, const Image &image)
{
    ByteRange bytes{flashStartIndex(bldr), image.flashTop};
    if (options.writeAll)
        return bytes;
    AddressRange range = *options.writeRange;
    if (range.low < bldr.bootloaderEnd) {
        std::printf("\nTruncating lower range limit to lower range of writable flash, 0x%x",
                    bldr.bootloaderEnd);
        range.low = bldr.bootloaderEnd;
    }
    if (range.high > bldr.flashEnd) {
        std::printf("\nTruncating upper range limit to lower range of writable flash, 0x%x\n",
                    bldr.flashEnd);
        range.high = bldr.flashEnd;
    }
    const auto index = [&bldr](std::uint32_t wordAddress) {
        return std::min<std::uint64_t>(byteIndexOf(wordAddress, bldr), flashEndIndex(bldr));
    };
    bytes.from = index(range.low);
    bytes.to = std::max(bytes.from, index(range.high));
    return bytes;
}

End writeFlash(ByteRange bytes, const bootloader_t &bldr, const Image &image)
{
    std::printf("\nNow writing from %x to %x word address\n", flashAddress(bytes.from, bldr),
                flashAddress(bytes.to, bldr));
    unsigned char reply[replySize];
    int shown = 0;
    for (std::uint64_t i = bytes.from; i < bytes.to; i += bldr.rowSize) {
        const unsigned char *row = image.flash.data() + i;
        const bool blank = isFilled(row, bldr.rowSize, bldr.flashFiller, bldr.flashFillerSize);
        if (!blank && bootloader_writerow(row, reply, bldr, flashAddress(i, bldr), portNumber,
                                          false) != commandDone) {
            std::printf("write fail!");
            return 1;
        }
        const auto percentage = static_cast<int>(i * 100 / bytes.to);
        if (percentage != shown) {
            shown = percentage;
            showProgress("Upload", percentage);
        }
    }
    std::printf("Upload Progress 100%%");
    std::printf("\nFlash Write success!");
    return std::nullopt;
}

End writeEeprom(const bootloader_t &bldr, const Image &image)
{
    const auto start = static_cast<std::uint32_t>(bldr.eepromStart);
    std::printf("\nNow writing EEPROM from %x to %x byte address\n", start,
                start + image.eepromTop);
    unsigned char reply[replySize];
    for (std::uint64_t i = 0; i < image.eepromTop; i += bldr.eepromRowSize) {
        if (bootloader_writerow(image.eeprom.data() + i, reply, bldr,
                                static_cast<std::uint32_t>(eepromAddressOf(i, bldr)), portNumber,
                                true) != commandDone) {
            std::printf("eeprom write fail!");
            return 1;
        }
    }
    std::printf("\nEEprom write success!");
    return std::nullopt;
}

End verifyFlash(const bootloader_t &bldr, const Image &image)
{
    std::printf("\nNow verifying flash from %x to %x word address\n",
                flashAddress(flashStartIndex(bldr), bldr), flashAddress(image.flashTop, bldr));
    if (bootloader_verify(flashStartIndex(bldr), image.flashTop, image.flash.data(), portNumber,
                          bldr.verifyRowSize, false, bldr) != verified)
        return 1;
    std::printf("\nVerified Flash OK!");
    return std::nullopt;
}

End verifyEeprom(const bootloader_t &bldr, const Image &image)
{
    std::printf("\nNow verifying eeprom from %x to %x word address", 0u,
                static_cast<std::uint32_t>(eepromAddressOf(image.eepromTop, bldr)));
    if (bootloader_verify(0, image.eepromTop, image.eeprom.data(), portNumber,
                          bldr.eepromVerifyRowSize, true, bldr) != verified)
        return 1;
    std::printf("\nVerified eeprom OK!");
    return std::nullopt;
}

} // namespace

End erase(const Options &options, const bootloader_t &bldr)
{
    if (options.eraseAll && options.eraseRange) {
        std::printf("\nPlease specify either erase all or a range, not both");
        return 1;
    }
    End end;
    if (options.eraseAll)
        end = eraseAll(bldr);
    else if (options.eraseRange)
        end = eraseRange(*options.eraseRange, bldr);
    else
        return std::nullopt;
    endPhase();
    return end;
}

End load(const std::string &file, const bootloader_t &bldr, Image *image)
{
    std::FILE *stream = std::fopen(file.c_str(), "r");
    if (!stream) {
        std::printf("failed to find input file!");
        return 1;
    }
    std::printf("\nfile opened");
    *image = Image(bldr);
    std::printf("\nbuffers cleared");
    const bool eeprom = hasEeprom(bldr);
    char eepromSeen = 0;
    const std::uint32_t top =
        loadhexfile(image->flash.data(), image->eeprom.data(), stream, &eepromSeen,
                    &image->eepromTop, eeprom ? static_cast<std::uint32_t>(bldr.eepromStart) : 0,
                    eeprom ? static_cast<std::uint32_t>(bldr.eepromEnd) : 0);
    std::fclose(stream);
    std::printf("\nhex file loaded");
    endPhase();
    if (top == 0) {
        std::printf("hex file read failure!");
        return 1;
    }

    image->hasEeprom = eepromSeen != 0;
    image->flashTop = top;
    if (top > byteIndexOf(bldr.flashEnd, bldr))
        std::printf("\nHex file defines memory unreachable (0x%08x). Truncating at address 0x%08x",
                    flashAddress(top, bldr), bldr.flashEnd);
    image->flashTop = std::min(top, flashEndIndex(bldr));
    return std::nullopt;
}

End write(const Options &options, const bootloader_t &bldr, const Image &image)
{
    End end = writeFlash(flashToWrite(options, bldr, image), bldr, image);
    endPhase();
    if (!end && image.hasEeprom) {
        end = writeEeprom(bldr, image);
        endPhase();
    }
    return end;
}

End verify(const bootloader_t &bldr, const Image &image)
{
    End end = verifyFlash(bldr, image);
    if (!end && image.hasEeprom)
        end = verifyEeprom(bldr, image);
    endPhase();
    return end;
}

End reset()
{
    if (!bootloader_sendreset(portNumber)) {
        std::printf("send reset failed!");
        return 1;
    }
    std::printf("\nReset send successful!");
    return std::nullopt;
}

} // namespace Uploader
