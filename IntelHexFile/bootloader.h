#pragma once

#include "IntelHexFile/frame.h"

#include <cstdint>
#include <cstdio>
#include <ctime>

/// The commands of the charger's bootloader. Addresses on the wire are word addresses, least
/// significant byte first; an image holds wordSize bytes for each addressSize of them.
///
/// Every buffer takes replySize bytes. Nothing is ever repeated: a command fails or succeeds.
namespace IntelHexFile
{
/// One bootloader version: a line of device.txt, in whose order of meaning the fields stand.
struct bootloader_t {
    std::uint32_t versionNumber = 0; ///< major byte high, minor byte low
    std::uint32_t maxBaud = 0;       ///< rate of the programming phase
    char deviceName[32] = {};
    std::uint32_t flashEnd = 0;      ///< word address at which writable flash ends, exclusive
    std::uint32_t reservedWord = 0;  ///< consulted by nothing
    std::uint32_t bootloaderEnd = 0; ///< first word address above the bootloader
    std::uint32_t pageSize = 0;      ///< erase page, image bytes
    std::uint32_t rowSize = 0;       ///< write row, image bytes
    std::uint32_t wordSize = 0;      ///< image bytes of a flash word
    std::uint32_t addressSize = 0;   ///< address units of a flash word
    std::uint32_t verifyRowSize = 0; ///< image bytes of a verify read and of a saved line
    long eepromStart = 0;            ///< range of the EEPROM in the image
    long eepromEnd = 0;
    std::uint32_t eepromMaxSize = 0; ///< with eepromStart 0: there is no EEPROM
    std::uint32_t eepromWordSize = 0;
    std::uint32_t eepromAddressSize = 0;
    std::uint32_t eepromRowSize = 0;
    std::uint32_t eepromVerifyRowSize = 0;
    std::uint32_t eepromFiller = 0; ///< an erased word
    std::uint32_t eepromFillerSize = 0;
    std::uint32_t flashFiller = 0; ///< an erased word
    std::uint32_t flashFillerSize = 0;
    char halfDuplex = 0; ///< 1: every sent byte comes back; not from the file
};

/// Command templates; address, count and high bytes are filled in before each use.
extern unsigned char VERSION_CMD[6];
extern unsigned char RESET_CMD[3];
extern unsigned char READ_CMD[6];
extern unsigned char WRITE_CMD[6];
extern unsigned char ERASE_CMD[6];
extern unsigned char READEEPROM_CMD[6];
extern unsigned char WRITEEEPROM_CMD[6];
extern unsigned char VERIFY_OK_CMD[2];

/// The data of commands without data.
extern unsigned char nullval;
extern unsigned char *nullpointer;

/// What bootloader_read returns on failure.
constexpr std::uint32_t readFailed = 65535;
/// What bootloader_identify returns.
enum IdentifyResult : std::uint32_t { identified = 0, identifyTimeout = 65534, syncFailed = 65535 };
/// What erasing and writing return.
enum CommandResult : int { commandDone = 0, commandFailed = 1, wrongReply = 3, emptyRange = 4 };
/// What bootloader_verify returns.
enum VerifyResult : int { verified = 0, verifyReadFailed = 1, verifyReadEmpty = 2, different = 3 };

/// Place of a word address in an image, and back.
std::uint64_t byteIndexOf(std::uint64_t wordAddress, const bootloader_t &bldr);
std::uint64_t wordAddressOf(std::uint64_t byteIndex, const bootloader_t &bldr);
/// Word address of a byte of the EEPROM image.
std::uint64_t eepromAddressOf(std::uint64_t byteIndex, const bootloader_t &bldr);
/// Word addresses of an erase page; 0 for a record without pages.
std::uint64_t pageSpan(const bootloader_t &bldr);

/// Fills buffer with copies of value, most significant byte first. Does nothing without valueSize.
void fillhexbuffer(unsigned char *buffer, std::uint32_t size, std::uint32_t value,
                   std::uint32_t valueSize);
/// Whether bytes are what fillhexbuffer makes of them; never without valueSize.
bool isFilled(const unsigned char *bytes, std::uint32_t size, std::uint32_t value,
              std::uint32_t valueSize);

/// How long a charger that is being powered on is waited for, in ticks of the process clock.
struct IdentifyTimes {
    std::clock_t syncInterval = 20000;
    std::clock_t giveUp = 30000000;
};

/// Calls a charger that is being powered on and waits for its answer, showing a spinner. Bytes 0
/// and 1 of buffer become the version, major first.
std::uint32_t bootloader_identify(unsigned char *buffer, int port, IdentifyTimes times = {});

/// Asks for the version, which is bytes 4 and 5 of buffer, major first. Returns the reply's length,
/// 0 on failure.
std::uint32_t bootloader_getversion(unsigned char *buffer, int port, bootloader_t bldr);

/// Erases everything from the bootloader's end to flashEnd. Returns a CommandResult.
int bootloader_eraseall(unsigned char *buffer, int port, bootloader_t bldr);

/// Erases the pages between two word addresses, in either order, wherever they lie. More than one
/// command can name (255 pages) is refused. Returns a CommandResult.
int bootloader_eraserange(unsigned char *buffer, int port, bootloader_t bldr, std::uint32_t from,
                          std::uint32_t to);

/// Writes a row of rowSize (eepromRowSize) bytes. Returns a CommandResult.
int bootloader_writerow(const unsigned char *row, unsigned char *buffer, bootloader_t bldr,
                        std::uint32_t wordAddress, int port, bool isEeprom);

/// Reads words; the data stand from byte readDataOffset of buffer on. Returns the reply's length,
/// or readFailed, which is also the answer for what a command cannot name: no words or more than
/// 255, or word addresses of more than 16 bits.
std::uint32_t bootloader_read(unsigned char *buffer, std::uint32_t wordCount,
                              std::uint32_t wordAddress, unsigned char highByte, int port,
                              bool isEeprom, bootloader_t bldr);
/// The echo of the command stands before the data of a reply.
constexpr std::uint32_t readDataOffset = 5;

/// Compares memory with the bytes from up to to of image, in rows of rowBytes; rows of filler count
/// as equal. image must reach one row beyond to. Prints the progress (flash only) and what differs;
/// returns a VerifyResult.
int bootloader_verify(std::uint32_t from, std::uint32_t to, const unsigned char *image, int port,
                      std::uint32_t rowBytes, bool isEeprom, bootloader_t bldr);

/// Returns the first byte of the reply, 0 on failure.
unsigned char bootloader_sendverifyOK(unsigned char *buffer, int port, bootloader_t bldr);

/// Sends the charger back to its own work; there is no reply. Returns 1 on success.
int bootloader_sendreset(int port);

/// What bootloader_loadfromfile returns.
enum LoadResult : int { recordLoaded = 0, keyNotFound = 3, nameTooLong = 4, fieldMissing = 5 };

/// Finds the first place of file at which key stands and reads the record behind it into *bldr;
/// fields that the line lacks are 0. A field that must not be 0 is complained about.
int bootloader_loadfromfile(const char *key, std::FILE *file, bootloader_t *bldr);

} // namespace IntelHexFile
