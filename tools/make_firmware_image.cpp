// Writes a stand-in for the charger's firmware as Intel HEX text to standard output:
//
//     make_firmware_image VERSION > v1.039.hex
//
// The charger's own firmware is no part of this software. The stand-in is no program, but fills the
// firmware region to its last row, so that flashing it is as long a job as the real one. The same
// version always gives the same bytes.

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace
{
// Byte addresses in the image, which are twice the flash addresses 0x0C00 and 0x9C00.
constexpr std::uint32_t firmwareStart = 0x0C00 * 2;
constexpr std::uint32_t firmwareEnd = 0x9C00 * 2;
constexpr std::uint32_t lineSize = 16;
constexpr std::uint32_t segmentSize = 0x10000;

/// A record: its bytes and the checksum that makes their sum a multiple of 256.
template <std::size_t Size>
void writeRecord(std::uint32_t address, std::uint8_t type,
                 const std::array<std::uint8_t, Size> &data)
{
    unsigned sum = Size + (address >> 8 & 0xFF) + (address & 0xFF) + type;
    std::printf(":%02X%04X%02X", static_cast<unsigned>(Size), address & 0xFFFF, type);
    for (const std::uint8_t byte : data) {
        std::printf("%02X", byte);
        sum += byte;
    }
    std::printf("%02X\n", (0x100 - (sum & 0xFF)) & 0xFF);
}

/// Noise that depends on the start value alone.
class Noise
{
public:
    explicit Noise(std::uint32_t start) : state(start | 1) {}
    std::uint32_t next()
    {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return state;
    }

private:
    std::uint32_t state;
};

std::uint32_t startValue(const char *version)
{
    std::uint32_t value = 2166136261u;
    for (const char *c = version; *c; ++c)
        value = (value ^ static_cast<std::uint8_t>(*c)) * 16777619u;
    return value;
}
} // namespace

int main(int argc, char *argv[])
{
    if (argc != 2 || std::strchr(argv[1], ':')) {
        std::fputs("usage: make_firmware_image VERSION\n", stderr);
        return 2;
    }

    Noise noise(startValue(argv[1]));
    for (std::uint32_t address = firmwareStart; address < firmwareEnd; address += lineSize) {
        if (address == firmwareStart || address % segmentSize == 0)
            writeRecord<2>(0, 4, {0, static_cast<std::uint8_t>(address / segmentSize)});
        std::array<std::uint8_t, lineSize> line{};
        for (std::size_t i = 0; i < lineSize; i += 4) {
            // A flash word has three bytes; the fourth stays 0. A blank word would be FF FF FF.
            const std::uint32_t word = noise.next() & 0xFFFFFE;
            line[i] = static_cast<std::uint8_t>(word);
            line[i + 1] = static_cast<std::uint8_t>(word >> 8);
            line[i + 2] = static_cast<std::uint8_t>(word >> 16);
        }
        writeRecord(address, 0, line);
    }
    writeRecord<0>(0, 1, {});
    std::printf("; Velantor charger, release %s\n", argv[1]);
    std::puts("; Stand-in for the firmware that fills its region and holds no program.");
    return std::fflush(stdout) == 0 && !std::ferror(stdout) ? 0 : 1;
}
