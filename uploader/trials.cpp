#include "uploader/trials.h"

#include "IntelHexFile/rs232.h"
#include "uploader/output.h"
#include "uploader/programming.h"

#include <chrono>
#include <cstdio>
#include <random>

#include <unistd.h>

namespace Uploader
{
namespace
{
using namespace IntelHexFile;

constexpr int probeBaud = 9600;
constexpr int highestComName = 255;
constexpr useconds_t capturePause = 1000;

bool canOpen(const std::string &port)
{
    const bool opened = OpenComport(portNumber, probeBaud, port.c_str()) == 0;
    CloseComport(portNumber);
    return opened;
}

/// Random data wherever the writable flash can hold a bit: a byte that is 0 in an erased word is
/// one that the chip does not have.
void fillAtRandom(Image *image, const bootloader_t &bldr, std::mt19937 *random)
{
    image->flashTop = flashEndIndex(bldr);
    for (std::uint32_t i = flashStartIndex(bldr); i < image->flashTop; ++i)
        image->flash[i] &= static_cast<unsigned char>((*random)());
}

} // namespace

End showBootSequence(const Options &options)
{
    Session session(options);
    if (const End end = session.open())
        return end;
    if (const End end = session.identify())
        return end;
    const End record = session.findRecord();
    const bootloader_t &bldr = session.record();
    std::printf("Device found on port: %d! Bootloader Version:%02x%02x:%s\n", portNumber,
                bldr.versionNumber >> 8, bldr.versionNumber & 0xFF, bldr.deviceName);
    return record ? record : 0;
}

End probePorts(const std::string &port)
{
    if (port.compare(0, 4, "!WIN") != 0) {
        const bool opened = canOpen(port);
        std::printf(opened ? "\nOpened port %s" : "\nCan not open comport %s", port.c_str());
        return opened ? 0 : 1;
    }
    int found = 0;
    for (int number = 1; number <= highestComName; ++number) {
        const std::string name = "\\\\.\\COM" + std::to_string(number);
        if (canOpen(name)) {
            std::printf("\nOpened port %s", name.c_str());
            ++found;
        }
    }
    std::printf("\n%d ports found", found);
    return found > 0 ? 0 : 1;
}

End capture(const Options &options)
{
    Session session(options);
    if (const End end = session.open())
        return end;
    std::FILE *file = std::fopen(options.captureFile.c_str(), "wb");
    if (!file) {
        std::printf("Could not open output file to write!");
        return 1;
    }
    std::printf("\nCopying to %s", options.captureFile.c_str());
    endPhase();
    // Ends with the process, or when the file takes no more.
    unsigned char buffer[4096];
    bool written = true;
    while (written) {
        const int size = PollComport(portNumber, buffer, sizeof buffer);
        if (size == 0) {
            usleep(capturePause);
            continue;
        }
        std::fwrite(buffer, 1, static_cast<std::size_t>(size), file);
        written = std::fflush(file) == 0;
    }
    std::fclose(file);
    std::printf("hex file write failure!");
    return 1;
}

End testThroughput(std::uint64_t passes, const bootloader_t &bldr)
{
    Options everything;
    everything.eraseAll = everything.writeAll = true;
    std::mt19937 random(std::random_device{}());
    for (std::uint64_t pass = 1; pass <= passes; ++pass) {
        Image image(bldr);
        fillAtRandom(&image, bldr, &random);
        std::printf("\nPass %llu of %llu", static_cast<unsigned long long>(pass),
                    static_cast<unsigned long long>(passes));
        const auto start = std::chrono::steady_clock::now();
        End end = erase(everything, bldr);
        if (!end)
            end = write(everything, bldr, image);
        if (!end)
            end = verify(bldr, image);
        if (end)
            return end;
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        const std::uint32_t bytes = image.flashTop - flashStartIndex(bldr);
        std::printf("\n%u bytes in %.1f seconds, %.0f bytes per second", bytes, seconds.count(),
                    bytes / seconds.count());
        endPhase();
    }
    return std::nullopt;
}

} // namespace Uploader
