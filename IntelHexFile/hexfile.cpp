#include "IntelHexFile/hexfile.h"

#include "IntelHexFile/assertion.h"
#include "IntelHexFile/hexnumber.h"

#include <algorithm>
#include <cstring>

namespace IntelHexFile
{
namespace
{
constexpr std::uint32_t bytesPerLine = 16;
/// Lines carry the low 16 bits of an address, but the charger's tools have always divided by this
/// number to get the upper bits. Both sides of the format count on it.
constexpr std::uint64_t upperAddressDivisor = 65535;

enum RecordType : std::uint32_t { dataRecord = 0, endRecord = 1, upperAddressRecord = 4 };

/// Where the records of a file go, and what is known of the image so far.
struct Load {
    unsigned char *flashBuffer;
    unsigned char *eepromBuffer;
    char *eepromSeen;
    std::uint32_t *eepromTop;
    std::uint32_t eepromStart;
    std::uint32_t eepromEnd;
    std::uint64_t top = 0;

    bool isEeprom(std::uint64_t address) const
    {
        return address >= eepromStart && address < eepromEnd;
    }
};

/// False when the byte lies beyond the EEPROM, which ends its record. The one offset directly
/// behind the image has no place in it either, and is dropped without a word.
bool storeEeprom(const Load &load, std::uint64_t address, unsigned char byte,
                 std::uint32_t recordAddress)
{
    *load.eepromSeen = 1;
    const std::uint64_t offset = address - load.eepromStart;
    if (offset > eepromImageSize) {
        std::printf("\nEEPROM data range exceeded, %x, lowaddress == %x",
                    static_cast<std::uint32_t>(address), recordAddress);
        *load.eepromTop = eepromImageSize;
        return false;
    }
    if (offset < eepromImageSize) {
        load.eepromBuffer[offset] = byte;
        *load.eepromTop = std::max(*load.eepromTop, static_cast<std::uint32_t>(offset) + 1);
    }
    return true;
}

/// The same for flash.
bool storeFlash(const Load &load, std::uint64_t address, unsigned char byte)
{
    if (address > flashImageSize) {
        std::printf("FLASH data range exceeded, %x", static_cast<std::uint32_t>(address));
        return false;
    }
    if (address < flashImageSize)
        load.flashBuffer[address] = byte;
    return true;
}

void storeRecord(Load *load, const unsigned char *bytes, std::uint32_t length, std::uint64_t upper,
                 std::uint32_t recordAddress)
{
    const std::uint64_t start = upper * 0x10000 + recordAddress;
    const std::uint64_t end = start + length;
    if (length > 0 && !load->isEeprom(end - 1))
        load->top = std::max(load->top, end);
    else if (length > 0 && !load->isEeprom(start))
        load->top = std::max<std::uint64_t>(load->top, load->eepromStart);

    for (std::uint32_t i = 0; i < length; ++i) {
        const bool stored = load->isEeprom(start + i)
                                ? storeEeprom(*load, start + i, bytes[i], recordAddress)
                                : storeFlash(*load, start + i, bytes[i]);
        if (!stored)
            return;
    }
}

/// One line of text that is being put together, with its checksum.
class Line
{
public:
    explicit Line(const char *head) : length(std::strlen(head)) { std::memcpy(text, head, length); }

    /// False when the value is no byte, which then stays out.
    bool append(std::uint32_t byte)
    {
        if (bytetohexstring(text + length, byte) != 0)
            return false;
        length += 2;
        sum += byte;
        return true;
    }

    /// head: the sum of the bytes that the line's beginning stands for.
    bool appendChecksum(std::uint32_t head) { return append((0 - sum - head) & 0xFF); }

    void writeTo(std::FILE *file)
    {
        text[length++] = '\n';
        std::fwrite(text, 1, length, file);
    }

private:
    char text[64];
    std::size_t length;
    std::uint32_t sum = 0;
};

/// 0, or 1 when the upper address has more than 16 bits.
int writeUpperAddress(std::FILE *file, std::uint64_t upper)
{
    Line line(":02000004");
    if (!line.append(static_cast<std::uint32_t>(upper >> 8))) {
        std::printf("could not read high address high byte?");
        return 1;
    }
    if (!line.append(static_cast<std::uint32_t>(upper & 0xFF))) {
        std::printf("could not read high address low byte?");
        return 1;
    }
    line.appendChecksum(0x02 + 0x04);
    line.writeTo(file);
    return 0;
}

void writeLine(std::FILE *file, const unsigned char *bytes, std::uint64_t address)
{
    Line line(":10");
    if (!line.append(address >> 8 & 0xFF) || !line.append(address & 0xFF) || !line.append(0x00))
        std::printf("Byte conv error?!");
    for (std::uint32_t i = 0; i < bytesPerLine; ++i) {
        if (!line.append(bytes[i]))
            std::printf("Byte conv error on byte %x?!", i);
    }
    if (!line.appendChecksum(0x10))
        std::printf("Byte conv error on checksum?!");
    line.writeTo(file);
}

} // namespace

std::uint32_t getfileline(unsigned char *buffer, std::uint32_t *address, std::uint32_t *type,
                          std::FILE *file)
{
    *type = noRecord;
    int character;
    do {
        character = getc_unlocked(file);
    } while (character != ':' && character != EOF);
    if (character == EOF)
        return 0;

    enum { length, addressHigh, addressLow, recordType, headSize };
    std::uint32_t head[headSize];
    std::uint32_t sum = 0;
    for (std::uint32_t &byte : head) {
        byte = extractbyte(file);
        if (byte == noByte)
            return 0;
        sum += byte;
    }
    for (std::uint32_t i = 0; i < head[length]; ++i) {
        const std::uint32_t byte = extractbyte(file);
        if (byte == noByte)
            return 0;
        buffer[i] = static_cast<unsigned char>(byte);
        sum += byte;
    }
    const std::uint32_t checksum = extractbyte(file);
    if (checksum == noByte)
        return 0;
    const std::uint32_t recordAddress = head[addressHigh] * 256 + head[addressLow];
    const std::uint32_t expected = (0 - sum) & 0xFF;
    if (checksum != expected) {
        std::printf("input file checksum %x != %x on line with address %x\n", checksum, expected,
                    recordAddress);
        return 0;
    }
    *address = recordAddress;
    *type = head[recordType];
    return head[length];
}

std::uint32_t loadhexfile(unsigned char *flashBuffer, unsigned char *eepromBuffer, std::FILE *file,
                          char *eepromSeen, std::uint32_t *eepromTop, std::uint32_t eepromStart,
                          std::uint32_t eepromEnd)
{
    Load load{flashBuffer, eepromBuffer, eepromSeen, eepromTop, eepromStart, eepromEnd};
    unsigned char bytes[longestRecord];
    std::uint32_t address = 0;
    std::uint32_t type = noRecord;
    std::uint64_t upper = 0;

    std::uint32_t length = getfileline(bytes, &address, &type, file);
    if (type == noRecord) {
        std::printf("Failed to open file!");
        return 0;
    }
    while (type != endRecord) {
        if (type == dataRecord)
            storeRecord(&load, bytes, length, upper, address);
        else if (type == upperAddressRecord && length >= 2)
            upper = bytes[0] * 256u + bytes[1];

        length = getfileline(bytes, &address, &type, file);
        if (type == noRecord) {
            std::printf("\nNo end of file reached?");
            return 0;
        }
    }
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(load.top, UINT32_MAX));
}

int makenewhexfile(const unsigned char *data, std::uint32_t size, std::FILE *file,
                   std::uint32_t filler, std::uint32_t fillerSize, std::uint32_t rowSize,
                   std::uint32_t lineStep, std::uint32_t baseAddress)
{
    if (fillerSize == 0 || rowSize == 0 || lineStep == 0)
        return 1;

    // The rows that hold the image, in bytes: what the caller promised to have.
    const std::uint64_t wholeNumRows = (std::uint64_t{size} / rowSize + 1) * rowSize;
    const auto isFiller = [&](std::uint64_t i) {
        for (std::uint64_t j = 0; j < rowSize; j += fillerSize) {
            std::uint32_t word = 0;
            for (std::uint64_t k = 0; k < fillerSize; ++k) {
                if (!((i + j + k) < wholeNumRows))
                    assertionFailed("(i+j+k) < wholeNumRows", "../IntelHexFile/hexfile.cpp",
                                    __LINE__);
                word = word << 8 | data[i + j + k];
            }
            if (word != filler)
                return false;
        }
        return true;
    };

    std::uint64_t upper = baseAddress / upperAddressDivisor;
    if (writeUpperAddress(file, upper) != 0)
        return 1;
    for (std::uint64_t i = 0; i < size; i += rowSize) {
        if (isFiller(i))
            continue;
        const std::uint64_t rowAddress = i + baseAddress;
        if (rowAddress > upperAddressDivisor - 1 && rowAddress / upperAddressDivisor != upper) {
            upper = rowAddress / upperAddressDivisor;
            if (writeUpperAddress(file, upper) != 0)
                return 1;
        }
        for (std::uint64_t j = 0; j < rowSize; j += lineStep) {
            for (std::uint64_t k = i + j; k < i + j + bytesPerLine; ++k) {
                if (!(k < wholeNumRows))
                    assertionFailed("k < wholeNumRows", "../IntelHexFile/hexfile.cpp", __LINE__);
            }
            writeLine(file, data + i + j, rowAddress + j);
        }
    }
    return 0;
}

} // namespace IntelHexFile
