#include "IntelHexFile/bootloader.h"

namespace IntelHexFile
{
namespace
{
/// Shows how far the comparison has come, each percentage once.
class Progress
{
public:
    explicit Progress(std::uint32_t top) : top(top) {}

    void show(std::uint64_t index)
    {
        const auto percentage = static_cast<int>(index * 100 / top);
        if (percentage == shown)
            return;
        shown = percentage;
        std::printf("Verify Progress %3d%%", percentage);
        for (int i = 0; i < 20; ++i)
            std::putchar('\b');
        std::fflush(stdout);
    }

private:
    std::uint32_t top;
    int shown = 0;
};

/// Size of the common beginning; size when nothing differs.
std::uint32_t firstDifference(const unsigned char *row, const unsigned char *read,
                              std::uint32_t size)
{
    std::uint32_t i = 0;
    while (i < size && row[i] == read[i])
        ++i;
    return i;
}

void describe(const unsigned char *row, const unsigned char *read, std::uint32_t size,
              std::uint32_t wordAddress, std::uint32_t difference)
{
    std::printf("\nverify fail at row address %x with rowsize %x at byte %x!", wordAddress, size,
                difference);
    for (std::uint32_t i = 0; i < size; ++i)
        std::printf(i < difference ? "\n%x = %x" : "\n%x != %x", row[i], read[i]);
}

} // namespace

int bootloader_verify(std::uint32_t from, std::uint32_t to, const unsigned char *image, int port,
                      std::uint32_t rowBytes, bool isEeprom, bootloader_t bldr)
{
    const std::uint32_t wordSize = isEeprom ? bldr.eepromWordSize : bldr.wordSize;
    const std::uint32_t filler = isEeprom ? bldr.eepromFiller : bldr.flashFiller;
    const std::uint32_t fillerSize = isEeprom ? bldr.eepromFillerSize : bldr.flashFillerSize;
    if (wordSize == 0 || rowBytes == 0) {
        std::printf("Flash Read fail!");
        return verifyReadFailed;
    }

    unsigned char reply[replySize];
    Progress progress(to);
    for (std::uint64_t i = from; i < to; i += rowBytes) {
        const unsigned char *row = image + i;
        if (!isFilled(row, rowBytes, filler, fillerSize)) {
            const auto wordAddress = static_cast<std::uint32_t>(isEeprom ? eepromAddressOf(i, bldr)
                                                                         : wordAddressOf(i, bldr));
            const std::uint32_t length =
                bootloader_read(reply, rowBytes / wordSize, wordAddress, 0, port, isEeprom, bldr);
            if (length != readFailed && length <= readDataOffset) {
                std::printf("Written flash ends at word address %x, verify failure!", wordAddress);
                return verifyReadEmpty;
            }
            // A reply that is too short must not be compared with what the buffer held before.
            if (length == readFailed || length < readDataOffset + rowBytes) {
                std::printf("Flash Read fail!");
                return verifyReadFailed;
            }
            const unsigned char *read = reply + readDataOffset;
            const std::uint32_t difference = firstDifference(row, read, rowBytes);
            if (difference != rowBytes) {
                describe(row, read, rowBytes, wordAddress, difference);
                return different;
            }
        }
        if (!isEeprom)
            progress.show(i);
    }
    return verified;
}

} // namespace IntelHexFile
