#include "uploader/session.h"

#include "IntelHexFile/hexfile.h"
#include "IntelHexFile/rs232.h"

#include <algorithm>
#include <cstdio>

namespace Uploader
{
namespace
{
using namespace IntelHexFile;

const char *const deviceTable = "device.txt";
constexpr std::uint32_t versionBaud = 9600;
constexpr std::uint32_t longestFiller = sizeof bootloader_t::flashFiller;
/// A row that is saved takes at least one line of text.
constexpr std::uint32_t bytesPerLine = 16;

/// What makes a record useless that reads well; a null pointer when nothing does. Beyond this point
/// every row fits an image and every loop over one comes to its end.
const char *complaintAbout(const bootloader_t &bldr)
{
    if (pageSpan(bldr) == 0)
        return "Flash Page size cannot be 0!";
    if (bldr.verifyRowSize == 0)
        return "Flash Verify row size cannot be 0!";
    if (bldr.rowSize > flashImageSize || bldr.verifyRowSize > flashImageSize)
        return "Flash Row size cannot exceed the image!";
    if (bldr.flashFillerSize > longestFiller)
        return "Flash Filler byte size cannot exceed 4!";
    if (bldr.rowSize < bytesPerLine)
        return "Flash Row size cannot be below 16!";
    if (bldr.flashEnd < bldr.bootloaderEnd)
        return "Flash end address cannot lie inside the bootloader!";
    if (bldr.eepromMaxSize == 0)
        return nullptr;
    if (bldr.eepromAddressSize == 0)
        return "EEPROM Address size cannot be 0 if eeprom exists!";
    if (bldr.eepromFillerSize == 0)
        return "EEPROM Filler byte size cannot be 0 if eeprom exists!";
    if (bldr.eepromFillerSize > longestFiller)
        return "EEPROM Filler byte size cannot exceed 4!";
    if (bldr.eepromVerifyRowSize == 0)
        return "EEPROM Verify row size cannot be 0 if eeprom exists!";
    if (bldr.eepromRowSize > eepromImageSize || bldr.eepromVerifyRowSize > eepromImageSize)
        return "EEPROM Row size cannot exceed the image!";
    return nullptr;
}

} // namespace

Session::Session(const Options &options) : options(options)
{
    bldr.halfDuplex = options.halfDuplex ? 1 : 0;
}

Session::~Session()
{
    CloseComport(portNumber);
}

End Session::begin()
{
    using Step = End (Session::*)();
    for (const Step step :
         {&Session::open, &Session::findVersion, &Session::findRecord, &Session::changeRate}) {
        if (const End end = (this->*step)())
            return end;
    }
    return std::nullopt;
}

End Session::open()
{
    if (openAt(versionBaud))
        return std::nullopt;
    std::printf("Can not open comport");
    return 1;
}

End Session::findVersion()
{
    if (options.assumedVersion) {
        setVersion(static_cast<unsigned char>(*options.assumedVersion >> 8),
                   static_cast<unsigned char>(*options.assumedVersion));
        return std::nullopt;
    }
    if (!options.askVersion)
        return identify();

    std::printf("\nBootloader Version is...");
    unsigned char reply[replySize];
    if (bootloader_getversion(reply, portNumber, bldr) == 0) {
        std::printf("Version command send failed!");
        return 1;
    }
    std::printf("%x %x.", reply[4], reply[5]);
    setVersion(reply[4], reply[5]);
    return std::nullopt;
}

End Session::identify()
{
    std::printf("Finding device version, please power cycle and plug in");
    unsigned char version[replySize];
    if (bootloader_identify(version, portNumber) != identified) {
        std::printf("timeout trying to find bootloader!");
        return 0;
    }
    setVersion(version[0], version[1]);
    return std::nullopt;
}

End Session::findRecord()
{
    std::FILE *file = std::fopen(deviceTable, "r");
    if (!file) {
        std::printf("Could not find device.txt file!");
        return 1;
    }
    const std::string key = versionKey();
    const int result = bootloader_loadfromfile(key.c_str(), file, &bldr);
    std::fclose(file);

    if (result == keyNotFound)
        std::printf("\nCould not find entry for version %s", key.c_str());
    else if (result == nameTooLong)
        std::printf("\nDevice name in entry for version %s is too long!", key.c_str());
    if (result != recordLoaded)
        return 1;
    if (const char *complaint = complaintAbout(bldr)) {
        std::printf("%s", complaint);
        return 1;
    }
    return std::nullopt;
}

End Session::changeRate()
{
    CloseComport(portNumber);
    if (openAt(bldr.maxBaud))
        return std::nullopt;
    std::printf("Can not open comport");
    return 0;
}

bool Session::openAt(std::uint32_t baud) const
{
    const auto rate = static_cast<int>(std::min(baud, options.maxBaud));
    return OpenComport(portNumber, rate, options.port.c_str()) == 0;
}

void Session::setVersion(unsigned char major, unsigned char minor)
{
    bldr.versionNumber = static_cast<std::uint32_t>(major) << 8 | minor;
}

std::string Session::versionKey() const
{
    char key[16];
    std::snprintf(key, sizeof key, "v%04x:", bldr.versionNumber);
    return key;
}

} // namespace Uploader
