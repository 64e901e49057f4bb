#include "simulator/memory.h"

#include <algorithm>

namespace simulator
{
namespace
{
const Bytes blankWord{0xFF, 0xFF, 0xFF, 0x00};
} // namespace

FlashMemory::FlashMemory() : image(imageSize)
{
    for (std::size_t index = 0; index < imageSize; index += pageSize)
        blankPage(index);
}

Bytes FlashMemory::read(std::size_t wordAddress, std::size_t count) const
{
    Bytes result;
    const std::size_t start = byteIndex(wordAddress);
    for (std::size_t index = start; index < start + count * wordSize; ++index)
        result.push_back(index < imageSize ? image[index] : blankWord[index % wordSize]);
    return result;
}

bool FlashMemory::writeRow(std::size_t wordAddress, const Bytes &row)
{
    const std::size_t start = byteIndex(wordAddress);
    if (row.size() != rowSize || wordAddress < bootloaderEnd || start + rowSize > imageSize)
        return false;
    for (std::size_t i = 0; i < rowSize; ++i)
        image[start + i] &= row[i];
    return true;
}

bool FlashMemory::erasePages(std::size_t wordAddress, std::size_t count)
{
    const std::size_t start = byteIndex(wordAddress) / pageSize * pageSize;
    if (start < byteIndex(bootloaderEnd) || start + count * pageSize > imageSize)
        return false;
    for (std::size_t page = 0; page < count; ++page)
        blankPage(start + page * pageSize);
    return true;
}

void FlashMemory::flipBit(std::size_t wordAddress, std::size_t bit)
{
    const std::size_t index = byteIndex(wordAddress) + bit / 8;
    if (index < imageSize)
        image[index] ^= static_cast<std::uint8_t>(1u << bit % 8);
}

bool FlashMemory::load(const std::string &hexText, std::string *error)
{
    std::vector<MemoryPiece> pieces;
    if (!readHexText(hexText, &pieces, error))
        return false;
    for (const MemoryPiece &piece : pieces) {
        if (piece.address + piece.bytes.size() > imageSize) {
            *error = "there is data behind the end of the flash memory";
            return false;
        }
    }
    blankPage(byteIndex(profilePage));
    for (const MemoryPiece &piece : pieces) {
        const std::size_t end = piece.address + piece.bytes.size();
        for (std::size_t page = piece.address / pageSize * pageSize; page < end; page += pageSize)
            blankPage(page);
    }
    for (const MemoryPiece &piece : pieces) {
        std::copy(piece.bytes.begin(), piece.bytes.end(),
                  image.begin() + static_cast<std::ptrdiff_t>(piece.address));
    }
    for (std::size_t index = wordSize - 1; index < imageSize; index += wordSize)
        image[index] = 0;
    return true;
}

std::string FlashMemory::save() const
{
    return writeHexText(image, blankWord);
}

std::size_t FlashMemory::byteIndex(std::size_t wordAddress)
{
    return wordAddress * wordSize / addressesPerWord;
}

void FlashMemory::blankPage(std::size_t index)
{
    for (std::size_t i = index; i < index + pageSize; ++i)
        image[i] = blankWord[i % wordSize];
}

EepromMemory::EepromMemory() : image(imageSize, 0xFF) {}

Bytes EepromMemory::read(std::size_t address, std::size_t count) const
{
    Bytes result;
    for (std::size_t index = address; index < address + count * wordSize; ++index)
        result.push_back(index < imageSize ? image[index] : 0xFF);
    return result;
}

bool EepromMemory::write(std::size_t address, const Bytes &bytes)
{
    if (bytes.empty() || address + bytes.size() > imageSize)
        return false;
    std::copy(bytes.begin(), bytes.end(), image.begin() + static_cast<std::ptrdiff_t>(address));
    return true;
}

std::string EepromMemory::save() const
{
    return writeHexText(image, {0xFF});
}

} // namespace simulator
