#include "IntelHexFile/bootloader.h"

#include <algorithm>

namespace IntelHexFile
{
unsigned char VERSION_CMD[6] = {0x00, 0x02};
unsigned char RESET_CMD[3] = {0x00, 0x00};
unsigned char READ_CMD[6] = {0x01};
unsigned char WRITE_CMD[6] = {0x02, 0x01};
unsigned char ERASE_CMD[6] = {0x03};
unsigned char READEEPROM_CMD[6] = {0x04};
unsigned char WRITEEEPROM_CMD[6] = {0x05};
unsigned char VERIFY_OK_CMD[2] = {0x08};

unsigned char nullval = 0;
unsigned char *nullpointer = &nullval;

namespace
{
constexpr std::uint32_t shortCommand = 2;
constexpr std::uint32_t addressedCommand = 5;
constexpr std::uint32_t verifyOkCommand = 1;
/// Pages or words of one command: the count is a byte.
constexpr std::uint32_t mostUnits = 255;
constexpr std::uint32_t highestAddress = 0xFFFFFF;

/// Where the address stands in a command that has one.
void setAddress(unsigned char *cmd, std::uint32_t wordAddress)
{
    cmd[2] = static_cast<unsigned char>(wordAddress);
    cmd[3] = static_cast<unsigned char>(wordAddress >> 8);
    cmd[4] = static_cast<unsigned char>(wordAddress >> 16);
}

/// Sends a command and takes its reply. Returns 1 or 0.
int exchange(const unsigned char *cmd, std::uint32_t cmdLen, const unsigned char *data,
             std::uint32_t dataLen, unsigned char *buffer, std::uint32_t *length, int port,
             const bootloader_t &bldr)
{
    const std::uint32_t sent = sendcmd(cmd, cmdLen, data, dataLen, port);
    if (sent == 0)
        return 0;
    return receivecmd(cmd, buffer, length, port, bldr.halfDuplex ? sent : 0);
}

int erasePages(unsigned char *buffer, int port, const bootloader_t &bldr, std::uint64_t pages,
               std::uint64_t start)
{
    if (start > highestAddress)
        return commandFailed;
    ERASE_CMD[1] = static_cast<unsigned char>(pages);
    setAddress(ERASE_CMD, static_cast<std::uint32_t>(start));
    std::uint32_t length = 0;
    if (!exchange(ERASE_CMD, addressedCommand, nullpointer, 0, buffer, &length, port, bldr))
        return commandFailed;
    return buffer[0] == ERASE_CMD[0] ? commandDone : wrongReply;
}

} // namespace

std::uint64_t byteIndexOf(std::uint64_t wordAddress, const bootloader_t &bldr)
{
    return bldr.addressSize == 0 ? 0 : wordAddress * bldr.wordSize / bldr.addressSize;
}

std::uint64_t wordAddressOf(std::uint64_t byteIndex, const bootloader_t &bldr)
{
    return bldr.wordSize == 0 ? 0 : byteIndex * bldr.addressSize / bldr.wordSize;
}

std::uint64_t eepromAddressOf(std::uint64_t byteIndex, const bootloader_t &bldr)
{
    return bldr.eepromWordSize == 0 ? 0 : byteIndex * bldr.eepromAddressSize / bldr.eepromWordSize;
}

std::uint64_t pageSpan(const bootloader_t &bldr)
{
    return wordAddressOf(bldr.pageSize, bldr);
}

std::uint32_t bootloader_getversion(unsigned char *buffer, int port, bootloader_t bldr)
{
    std::uint32_t length = 0;
    if (!exchange(VERSION_CMD, shortCommand, nullpointer, 0, buffer, &length, port, bldr))
        return 0;
    return length;
}

int bootloader_eraseall(unsigned char *buffer, int port, bootloader_t bldr)
{
    const std::uint64_t span = pageSpan(bldr);
    if (span == 0 || bldr.flashEnd < bldr.bootloaderEnd)
        return commandFailed;
    std::uint64_t pages = (bldr.flashEnd - bldr.bootloaderEnd) / span;
    if (pages == 0)
        return commandFailed;

    std::uint64_t start = bldr.bootloaderEnd;
    while (pages > 0) {
        const std::uint64_t now = std::min<std::uint64_t>(pages, mostUnits);
        std::printf("\nErasing %x pages from %x to %x", static_cast<std::uint32_t>(now),
                    static_cast<std::uint32_t>(start),
                    static_cast<std::uint32_t>(start + now * span));
        const int result = erasePages(buffer, port, bldr, now, start);
        if (result != commandDone)
            return result;
        start += now * span;
        pages -= now;
    }
    return commandDone;
}

int bootloader_eraserange(unsigned char *buffer, int port, bootloader_t bldr, std::uint32_t from,
                          std::uint32_t to)
{
    const std::uint64_t span = pageSpan(bldr);
    if (span == 0)
        return commandFailed;
    const std::uint32_t start = std::min(from, to);
    const std::uint64_t pages = (std::max(from, to) - start) / span;
    if (pages == 0)
        return emptyRange;
    // The count has one byte: a longer range would erase something else than what was asked for.
    if (pages > mostUnits)
        return commandFailed;
    return erasePages(buffer, port, bldr, pages, start);
}

int bootloader_writerow(const unsigned char *row, unsigned char *buffer, bootloader_t bldr,
                        std::uint32_t wordAddress, int port, bool isEeprom)
{
    unsigned char *cmd = isEeprom ? WRITEEEPROM_CMD : WRITE_CMD;
    const std::uint32_t size = isEeprom ? bldr.eepromRowSize : bldr.rowSize;
    if (wordAddress > highestAddress)
        return commandFailed;
    if (isEeprom) {
        const std::uint32_t words = bldr.eepromWordSize == 0 ? 0 : size / bldr.eepromWordSize;
        if (words == 0 || words > mostUnits)
            return commandFailed;
        cmd[1] = static_cast<unsigned char>(words);
    }
    setAddress(cmd, wordAddress);
    std::uint32_t length = 0;
    if (!exchange(cmd, addressedCommand, row, size, buffer, &length, port, bldr))
        return commandFailed;
    return buffer[0] == cmd[0] ? commandDone : wrongReply;
}

std::uint32_t bootloader_read(unsigned char *buffer, std::uint32_t wordCount,
                              std::uint32_t wordAddress, unsigned char highByte, int port,
                              bool isEeprom, bootloader_t bldr)
{
    if (wordCount == 0 || wordCount > mostUnits || wordAddress > 0xFFFF)
        return readFailed;
    unsigned char *cmd = isEeprom ? READEEPROM_CMD : READ_CMD;
    cmd[1] = static_cast<unsigned char>(wordCount);
    setAddress(cmd, wordAddress);
    cmd[4] = isEeprom ? 0 : highByte;
    std::uint32_t length = 0;
    if (!exchange(cmd, addressedCommand, nullpointer, 0, buffer, &length, port, bldr))
        return readFailed;
    return length;
}

unsigned char bootloader_sendverifyOK(unsigned char *buffer, int port, bootloader_t bldr)
{
    std::uint32_t length = 0;
    if (!exchange(VERIFY_OK_CMD, verifyOkCommand, nullpointer, 0, buffer, &length, port, bldr))
        return 0;
    return buffer[0];
}

int bootloader_sendreset(int port)
{
    return sendcmd(RESET_CMD, shortCommand, nullpointer, 0, port) > 0 ? 1 : 0;
}

} // namespace IntelHexFile
