#include "IntelHexFile/bootloader.h"
#include "IntelHexFile/hexnumber.h"

#include <string>

namespace IntelHexFile
{
namespace
{
constexpr std::size_t longestName = 29;
constexpr char separator = '\t';

/// Leaves file behind the first place at which key stands, whatever stands around it.
bool findKey(const std::string &key, std::FILE *file)
{
    std::string window;
    for (int character = std::getc(file); character != EOF; character = std::getc(file)) {
        window += static_cast<char>(character);
        if (window.size() > key.size())
            window.erase(0, 1);
        if (window == key)
            return true;
    }
    return false;
}

/// The rest of the line, by any line ending.
std::string restOfLine(std::FILE *file)
{
    std::string line;
    for (int character = std::getc(file);
         character != EOF && character != '\n' && character != '\r'; character = std::getc(file))
        line += static_cast<char>(character);
    return line;
}

/// The fields of one line, in turn. A line that is too short must not go on in the next one.
class Fields
{
public:
    explicit Fields(std::string *line)
        : file(line->empty() ? nullptr : fmemopen(line->data(), line->size(), "r"))
    {
    }
    ~Fields()
    {
        if (file)
            std::fclose(file);
    }
    Fields(const Fields &) = delete;
    Fields &operator=(const Fields &) = delete;

    std::uint32_t number() { return file ? file_getnum(file, separator, separator, '\n') : 0; }

    /// False when the text does not fit.
    bool name(char *text)
    {
        return !file ||
               file_getstring(file, text, longestName + 1, separator, separator) != fieldTooLong;
    }

private:
    std::FILE *file;
};

bool read(Fields *fields, bootloader_t *bldr)
{
    bldr->maxBaud = fields->number();
    if (!fields->name(bldr->deviceName))
        return false;
    bldr->flashEnd = fields->number();
    fields->number(); // of no known meaning
    bldr->reservedWord = fields->number();
    bldr->bootloaderEnd = fields->number();
    bldr->pageSize = fields->number();
    bldr->rowSize = fields->number();
    bldr->wordSize = fields->number();
    bldr->addressSize = fields->number();
    bldr->verifyRowSize = fields->number();
    bldr->flashFiller = fields->number();
    bldr->flashFillerSize = fields->number();
    bldr->eepromStart = fields->number();
    bldr->eepromEnd = fields->number();
    bldr->eepromWordSize = fields->number();
    bldr->eepromAddressSize = fields->number();
    bldr->eepromRowSize = fields->number();
    bldr->eepromVerifyRowSize = fields->number();
    bldr->eepromFiller = fields->number();
    bldr->eepromFillerSize = fields->number();
    bldr->eepromMaxSize = fields->number();
    return true;
}

/// The complaint about the first field that must not be 0; a null pointer when all are well.
const char *complaintAbout(const bootloader_t &bldr)
{
    if (bldr.wordSize == 0)
        return "Flash Word size cannot be 0!";
    if (bldr.addressSize == 0)
        return "Flash Address size cannot be 0!";
    if (bldr.flashFillerSize == 0)
        return "Flash Filler byte size cannot be 0!";
    if (bldr.rowSize == 0)
        return "Flash Row size cannot be 0!";
    if (bldr.eepromMaxSize == 0 && bldr.eepromStart == 0)
        return nullptr;
    if (bldr.eepromRowSize == 0)
        return "EEPROM Row size cannot be 0 if eeprom exists!";
    if (bldr.eepromWordSize == 0)
        return "EEPROM Word size cannot be 0 if eeprom exists!";
    if (bldr.eepromMaxSize == 0)
        return "EEPROM Max size cannot be 0 if eeprom exists!";
    if (bldr.eepromStart == 0)
        return "EEPROM start address cannot be 0 if eeprom exists!";
    if (bldr.eepromEnd == 0)
        return "EEPROM end address cannot be 0 if eeprom exists!";
    return nullptr;
}

} // namespace

int bootloader_loadfromfile(const char *key, std::FILE *file, bootloader_t *bldr)
{
    std::rewind(file);
    if (!findKey(key, file))
        return keyNotFound;
    std::string line = restOfLine(file);
    Fields fields(&line);
    if (!read(&fields, bldr))
        return nameTooLong;
    if (const char *complaint = complaintAbout(*bldr)) {
        std::printf("%s", complaint);
        return fieldMissing;
    }
    return recordLoaded;
}

} // namespace IntelHexFile
