#include "uploader/options.h"

#include "IntelHexFile/hexnumber.h"
#include "IntelHexFile/optiontext.h"

#include <cstring>

namespace Uploader
{
namespace
{
using namespace IntelHexFile;

const char *const usage =
    "-s [port]              serial port to use (required)\n"
    " -M [baud]              highest baud rate to use\n"
    " -V                     get the bootloader version by command\n"
    " -B [version]           assume this bootloader version, i.e. 02F0\n"
    " -b                     wait for a boot sequence and show the bootloader version\n"
    " -h                     half-duplex line\n"
    " -r [file]              read all flash from the bootloader's end into the file\n"
    " -l [low] [high] [file] read this word address range into the file\n"
    " -E [low] [high]        erase the pages of this word address range\n"
    " -e                     erase all flash above the bootloader\n"
    " -w [file]              write the hex file from the bootloader's end on\n"
    " -W [low] [high] [file] write this word address range of the hex file\n"
    " -v [file]              compare flash with the hex file\n"
    " -f [file]              erase, write, verify and reset in one\n"
    " -R                     reset the chip\n"
    " -g [passes]            write and verify random data this many times\n"
    " -t [port]              try to open a port\n"
    " -x [file]              copy everything received on the port into the file, without end\n";

const char *const badPort = "\nPlease enter a valid port name!";
const char *const badRange = "\nPlease enter a valid word address range, i.e. 0x1000 0x1400!";
const char *const badInput = "\nPlease enter a valid input filename!";
const char *const badOutput = "\nPlease enter a valid output filename!";
const char *const badFlashFile = "\nPlease specify a filename to flash!";
const char *const badBaud = "\nPlease enter a decimal maximum baud rate!";
const char *const badPasses = "\nPlease enter a decimal number of passes for test!";
const char *const badVersion = "\nPlease enter a valid bootloader version, i.e. 02F0!";

/// Reads a whole decimal number.
bool decimalNumber(const char *text, std::uint64_t *value)
{
    const std::size_t length = getdecnumberfromstring(text, value);
    return length > 0 && length == std::strlen(text);
}

/// Reads a whole address. A rest behind the number would be a typing mistake, and a mistaken
/// address can erase what nobody wanted to lose.
bool address(const char *text, std::uint32_t *value)
{
    const bool hexadecimal = text[0] == '0' && text[1] == 'x';
    std::uint64_t number = 0;
    const std::size_t consumed = getnumberfromstring(text, &number);
    const std::size_t length = hexadecimal ? 2 + 2 * consumed : consumed;
    if (consumed == 0 || length != std::strlen(text) || number > UINT32_MAX)
        return false;
    *value = static_cast<std::uint32_t>(number);
    return true;
}

class Parser
{
public:
    Parser(int argc, const char *const *argv) : argc(argc), argv(argv) {}

    ParsedOptions parse()
    {
        while (const char *argument = next()) {
            const char letter = *killdashes(argument);
            if (letter == '\0')
                return {std::nullopt, "Incorrect usage!"};
            if (const char *complaint = option(letter))
                return {std::nullopt, complaint};
            if (unknown)
                return {std::nullopt, std::string("Incorrect usage:\n ") + usage};
        }
        if (const char *complaint = contradiction())
            return {std::nullopt, complaint};
        return {options, std::string()};
    }

private:
    /// The next argument, or a null pointer.
    const char *next() { return at < argc ? argv[at++] : nullptr; }

    /// Takes an option with its arguments. Returns a complaint, or a null pointer.
    const char *option(char letter)
    {
        switch (letter) {
        case 's':
            return text(&options.port, badPort);
        case 't':
            return text(&options.probedPort, badPort);
        case 'M':
            return maxBaud();
        case 'B':
            return version();
        case 'V':
            options.askVersion = true;
            return nullptr;
        case 'b':
            options.waitForBoot = true;
            return nullptr;
        case 'h':
            options.halfDuplex = true;
            return nullptr;
        case 'e':
            options.eraseAll = true;
            return nullptr;
        case 'E':
            return range(&options.eraseRange);
        case 'r':
            options.readAll = true;
            return fileName(&options.outputFile, badOutput);
        case 'l':
            return rangeWithFile(&options.readRange, &options.outputFile, badOutput);
        case 'w':
            options.writeAll = true;
            return fileName(&options.inputFile, badInput);
        case 'W':
            return rangeWithFile(&options.writeRange, &options.inputFile, badInput);
        case 'v':
            options.verify = true;
            return fileName(&options.inputFile, badInput);
        case 'f':
            options.eraseAll = options.writeAll = options.verify = options.reset = true;
            return fileName(&options.inputFile, badFlashFile);
        case 'R':
            options.reset = true;
            return nullptr;
        case 'g':
            return passes();
        case 'x':
            return fileName(&options.captureFile, badOutput);
        default:
            unknown = true;
            return nullptr;
        }
    }

    const char *text(std::string *to, const char *complaint)
    {
        const char *argument = next();
        if (!argument || !*argument)
            return complaint;
        *to = argument;
        return nullptr;
    }

    const char *fileName(std::string *to, const char *complaint)
    {
        const char *argument = next();
        return argument && getfilename(argument, to) > 0 ? nullptr : complaint;
    }

    const char *range(std::optional<AddressRange> *to)
    {
        const char *low = next();
        const char *high = next();
        AddressRange given;
        if (!low || !high || !address(low, &given.low) || !address(high, &given.high))
            return badRange;
        *to = given;
        return nullptr;
    }

    const char *rangeWithFile(std::optional<AddressRange> *to, std::string *file,
                              const char *complaint)
    {
        if (const char *rangeComplaint = range(to))
            return rangeComplaint;
        if ((*to)->low > (*to)->high)
            return badRange;
        return fileName(file, complaint);
    }

    const char *maxBaud()
    {
        const char *argument = next();
        std::uint64_t baud = 0;
        if (!argument || !decimalNumber(argument, &baud) || baud == 0 || baud > INT32_MAX)
            return badBaud;
        options.maxBaud = static_cast<std::uint32_t>(baud);
        return nullptr;
    }

    const char *version()
    {
        const char *argument = next();
        std::uint64_t number = 0;
        if (!argument || std::strlen(argument) != 4 ||
            gethexnumberfromstring(argument, &number) != 2)
            return badVersion;
        options.assumedVersion = static_cast<std::uint16_t>(number);
        return nullptr;
    }

    const char *passes()
    {
        const char *argument = next();
        std::uint64_t number = 0;
        if (!argument || !decimalNumber(argument, &number) || number == 0)
            return badPasses;
        options.testPasses = number;
        return nullptr;
    }

    /// What cannot be done in one run, or not without a port.
    const char *contradiction() const
    {
        const bool programs = options.reads() || options.writes() || options.verify ||
                              options.eraseAll || options.eraseRange || options.reset;
        if (options.reads() && options.writes())
            return "\nPlease choose to read or write, cannot do both in same operation";
        if (options.reads() && options.verify)
            return "\nPlease choose to read or verify, will not do both";
        if (options.assumedVersion && options.askVersion)
            return "\nPlease specify a bootloader version (-B) or use of the version command (-V), "
                   "but not both.";
        if (options.testPasses && programs)
            return "\nCannot perform bootloader operation when performing throughput test.";
        if (options.port.empty() && options.probedPort.empty())
            return "\nPlease specify a serial port, with \"-s x\" where x is the port name (i.e. "
                   "\\\\.\\COM1, /dev/ttyUSB0)";
        return nullptr;
    }

    int argc;
    const char *const *argv;
    int at = 1;
    bool unknown = false;
    Options options;
};

} // namespace

ParsedOptions parseOptions(int argc, const char *const *argv)
{
    return Parser(argc, argv).parse();
}

} // namespace Uploader
