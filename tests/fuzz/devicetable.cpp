// The device table, a text file that bundles bring and users edit.

#include "IntelHexFile/bootloader.h"
#include "fuzz/target.h"

#include <cstring>

namespace
{
using namespace IntelHexFile;

constexpr const char *shippedLine =
    "\nv0106:\t38400\tCharger64\t0xA000\t0x015000\t0x00\t0x0C00\t0x0800\t0x0100\t0x04\t0x02\t0x10\t"
    "0xFFFFFF00\t0x04\n";

int load(std::string text, const std::string &key, bootloader_t *record)
{
    std::FILE *file = fmemopen(text.data(), text.size(), "r");
    fuzz::require(file, "text can be read");
    const int result = bootloader_loadfromfile(key.c_str(), file, record);
    std::fclose(file);
    return result;
}

/// The conversions that a run makes with a record before it looks at the charger.
void convertAddresses(const bootloader_t &record)
{
    for (const std::uint64_t address : {record.flashEnd, record.bootloaderEnd, 0xFFFFFFFFu}) {
        byteIndexOf(address, record);
        wordAddressOf(address, record);
        eepromAddressOf(address, record);
    }
    pageSpan(record);
}

void look(const std::string &text, const std::string &key)
{
    bootloader_t record;
    const int result = load(text, key, &record);
    fuzz::require(result == recordLoaded || result == keyNotFound || result == nameTooLong ||
                      result == fieldMissing,
                  "the result is a known one");
    fuzz::require(std::memchr(record.deviceName, '\0', sizeof record.deviceName),
                  "the name has an end");
    convertAddresses(record);
    if (result == keyNotFound)
        return;
    if (result == recordLoaded)
        fuzz::require(record.wordSize && record.addressSize && record.rowSize &&
                          record.flashFillerSize,
                      "a good record has its sizes");

    bootloader_t again;
    fuzz::require(load(text + shippedLine, key, &again) == result &&
                      again.maxBaud == record.maxBaud && again.flashEnd == record.flashEnd &&
                      again.eepromMaxSize == record.eepromMaxSize &&
                      std::strcmp(again.deviceName, record.deviceName) == 0,
                  "lines behind the first match do not matter");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    look(text, "v0106:");
    // Whatever stands at the beginning: a key with characters of every kind that is found at once.
    const std::string key = text.substr(0, std::min<std::size_t>(text.find('\t'), 8));
    if (!key.empty() && key.find('\0') == std::string::npos)
        look(text, key);
    return 0;
}
