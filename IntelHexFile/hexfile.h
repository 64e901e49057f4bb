#pragma once

#include <cstdint>
#include <cstdio>

/// Intel HEX text (INHX32) to and from images of the charger's memory. Plain functions on streams
/// and buffers that the caller opens, owns and closes; all complaints go to standard output.
namespace IntelHexFile
{
/// Size of a flash image in bytes; every buffer given to loadhexfile has it.
constexpr std::uint32_t flashImageSize = 0x30000;
/// Size of an EEPROM image in bytes.
constexpr std::uint32_t eepromImageSize = 0x1000;

/// Most data bytes of one record; the size of the buffer given to getfileline.
constexpr std::uint32_t longestRecord = 255;
/// The type that getfileline delivers when there is no whole, good record.
constexpr std::uint32_t noRecord = 0xFFFF;

/// Reads the next record into buffer (longestRecord bytes), passing over anything before its colon.
/// Returns the number of data bytes: 0 at the end of input, on an error (a wrong checksum is
/// complained about) and for a record without data. *type is noRecord in the first two cases;
/// *address, the record's 16 bits, is delivered with a good record only.
std::uint32_t getfileline(unsigned char *buffer, std::uint32_t *address, std::uint32_t *type,
                          std::FILE *file);

/// Loads all records of file. Bytes at eepromStart up to but not including eepromEnd go to
/// eepromBuffer, set *eepromSeen and raise *eepromTop; with both limits 0 everything is flash.
/// Returns the image's top address, 0 on failure. Data above either image is not stored, but the
/// top tells of it: it can lie above flashImageSize.
std::uint32_t loadhexfile(unsigned char *flashBuffer, unsigned char *eepromBuffer, std::FILE *file,
                          char *eepromSeen, std::uint32_t *eepromTop, std::uint32_t eepromStart,
                          std::uint32_t eepromEnd);

/// Writes the rows of data that are not wholly filler (words of fillerSize bytes, most significant
/// byte first), without the end record. data must hold size bytes rounded down to whole rows plus
/// one row, which is where a read beyond the image is stopped by an assertion. A line of 16 bytes
/// is written every lineStep bytes of a row. Returns 0, or 1 when a number cannot be formatted: an
/// address above 65535 * 65536, or a size of zero that would describe no rows.
int makenewhexfile(const unsigned char *data, std::uint32_t size, std::FILE *file,
                   std::uint32_t filler, std::uint32_t fillerSize, std::uint32_t rowSize,
                   std::uint32_t lineStep, std::uint32_t baseAddress);

} // namespace IntelHexFile
