// Intel HEX text, as it comes from chargers, from bundles and from users.

#include "simulator/hextext.h"
#include "IntelHexFile/hexfile.h"
#include "fuzz/target.h"

#include <cstring>
#include <memory>

namespace
{
using namespace IntelHexFile;

constexpr std::uint32_t blankWord = 0xFFFFFF00;
constexpr std::uint32_t blankWordSize = 4;
constexpr std::uint32_t rowSize = 256;
constexpr std::uint32_t lineStep = 16;

std::vector<unsigned char> blankFlash()
{
    std::vector<unsigned char> bytes(flashImageSize, 0xFF);
    for (std::size_t i = blankWordSize - 1; i < bytes.size(); i += blankWordSize)
        bytes[i] = 0x00;
    return bytes;
}

/// The memory of a charger; bytes of exactly the promised sizes, so that a sanitizer sees more.
struct Image {
    std::unique_ptr<unsigned char[]> flash{new unsigned char[flashImageSize]};
    std::unique_ptr<unsigned char[]> eeprom{new unsigned char[eepromImageSize]};
    char eepromSeen = 0;
    std::uint32_t eepromTop = 0;
    std::uint32_t top = 0;

    Image()
    {
        static const std::vector<unsigned char> blank = blankFlash();
        std::memcpy(flash.get(), blank.data(), flashImageSize);
        std::memset(eeprom.get(), 0xFF, eepromImageSize);
    }

    void load(const std::string &text, std::uint32_t eepromStart = 0, std::uint32_t eepromEnd = 0)
    {
        std::string content = text;
        std::FILE *file = fmemopen(content.data(), content.size(), "r");
        fuzz::require(file, "text can be read");
        top = loadhexfile(flash.get(), eeprom.get(), file, &eepromSeen, &eepromTop, eepromStart,
                          eepromEnd);
        std::fclose(file);
    }

    std::uint32_t usedFlash() const { return std::min(top, flashImageSize); }
};

/// Perhaps also where there is none, in the text between records.
bool hasSegmentAddress(const std::string &text)
{
    constexpr std::size_t typeOffset = 7;
    for (std::size_t colon = text.find(':'); colon != std::string::npos;
         colon = text.find(':', colon + 1)) {
        if (colon + typeOffset < text.size() && text.compare(colon + typeOffset, 2, "02") == 0)
            return true;
    }
    return false;
}

/// The reader of the simulator is another one and stricter: it knows blanks between digits and
/// segment addresses, which ours does not, and refuses lines that ours finds a record in.
void compareWithOtherReader(const std::string &text, const Image &image)
{
    std::vector<simulator::MemoryPiece> pieces;
    std::string error;
    if (text.find_first_of(" \t") != std::string::npos ||
        !simulator::readHexText(text, &pieces, &error))
        return;
    if (hasSegmentAddress(text))
        return;

    Image expected;
    std::size_t top = 0;
    for (const simulator::MemoryPiece &piece : pieces) {
        for (std::size_t i = 0; i < piece.bytes.size(); ++i) {
            if (piece.address + i < flashImageSize)
                expected.flash[piece.address + i] = piece.bytes[i];
        }
        if (!piece.bytes.empty())
            top = std::max(top, piece.address + piece.bytes.size());
    }
    fuzz::require(image.top == std::min<std::size_t>(top, UINT32_MAX), "both readers see one top");
    fuzz::require(
        std::equal(image.flash.get(), image.flash.get() + flashImageSize, expected.flash.get()),
        "both readers see one image");
}

/// Only bases of whole rows: elsewhere the upper address, which the writer divides by 65535, and
/// the lower one can belong to different pieces of 64 KiB.
void requireRoundTrip(const Image &image, std::uint32_t base)
{
    const std::uint32_t size = std::min(image.usedFlash(), flashImageSize - base);
    std::vector<unsigned char> rows(image.flash.get(), image.flash.get() + size);
    rows.resize(size / rowSize * rowSize + rowSize, 0xFF);

    char *written = nullptr;
    std::size_t writtenSize = 0;
    std::FILE *file = open_memstream(&written, &writtenSize);
    fuzz::require(makenewhexfile(rows.data(), size, file, blankWord, blankWordSize, rowSize,
                                 lineStep, base) == 0,
                  "an image can be written");
    std::fputs(":00000001FF\n", file);
    std::fclose(file);

    Image again;
    again.load(std::string(written, writtenSize));
    std::free(written);
    fuzz::require(again.top <= base + rows.size(), "nothing is added behind an image");
    fuzz::require(std::memcmp(rows.data(), again.flash.get() + base, size) == 0,
                  "what was written is read again");
}

void loadWithEeprom(const std::string &text, std::uint32_t start, std::uint32_t end)
{
    Image image;
    image.load(text, start, end);
    fuzz::require(image.eepromTop <= eepromImageSize, "EEPROM data lies inside the EEPROM");
    fuzz::require(image.eepromTop == 0 || image.eepromSeen == 1, "EEPROM data is reported");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    Image image;
    image.load(text);
    compareWithOtherReader(text, image);
    // So that every input is plain text, its length decides what it is read with.
    requireRoundTrip(image, size % 3 == 0 ? 0x13800 : 0);

    static constexpr std::uint32_t limits[][2] = {
        {0x13800, 0x14000}, {0x1000, 0x3000}, {0, 0x10000},
        {1, UINT32_MAX},    {0x3000, 0x1000}, {0x7FF000, 0x800000},
    };
    const auto &limit = limits[size % std::size(limits)];
    loadWithEeprom(text, limit[0], limit[1]);
    return 0;
}
