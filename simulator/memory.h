#pragma once

#include "simulator/hextext.h"

#include <string>

namespace simulator
{
/// The program flash of a charger. Addresses are word addresses, two to a flash word; a word is
/// four bytes in the image, three of data and one that does not exist and always reads 0.
/// Programming only clears bits, as in the real cells: a row has to be erased before it is written.
class FlashMemory
{
public:
    static constexpr std::size_t imageSize = 0x30000;  ///< bytes
    static constexpr std::size_t wordSize = 4;         ///< bytes
    static constexpr std::size_t addressesPerWord = 2; ///< word addresses
    static constexpr std::size_t pageSize = 0x800;     ///< bytes, the smallest piece to erase
    static constexpr std::size_t rowSize = 0x100;      ///< bytes, the piece that is written at once
    static constexpr std::size_t bootloaderEnd = 0x0C00; ///< word address; below nothing changes
    static constexpr std::size_t profilePage = 0x9C00;   ///< word address

    FlashMemory();

    /// Count words; words behind the end of the memory read as erased.
    Bytes read(std::size_t wordAddress, std::size_t count) const;
    /// Programs one row. False, with nothing changed, for a row that is not rowSize bytes long, not
    /// inside the memory or inside the bootloader.
    bool writeRow(std::size_t wordAddress, const Bytes &row);
    /// Erases count pages from the one that holds wordAddress. False, with nothing changed, where
    /// one of them is not inside the memory or belongs to the bootloader.
    bool erasePages(std::size_t wordAddress, std::size_t count);
    /// Turns one bit over, whatever it was. Bits behind the end of the memory do not exist.
    void flipBit(std::size_t wordAddress, std::size_t bit);

    /// Blanks the profile page and every page that the Intel HEX text mentions, then takes over the
    /// text. False, with the reason in *error and nothing changed, for bad text and for data behind
    /// the end of the memory.
    bool load(const std::string &hexText, std::string *error);
    /// The memory as Intel HEX text, blank stretches left out.
    std::string save() const;

private:
    static std::size_t byteIndex(std::size_t wordAddress);
    void blankPage(std::size_t index);

    Bytes image;
};

/// The data EEPROM, which the charger itself does not have but other devices on the same protocol
/// do. Addresses count bytes.
class EepromMemory
{
public:
    static constexpr std::size_t imageSize = 0x1000; ///< bytes
    static constexpr std::size_t wordSize = 2;       ///< bytes

    EepromMemory();

    /// Count words; words behind the end read as erased.
    Bytes read(std::size_t address, std::size_t count) const;
    /// Stores bytes. False, with nothing changed, where they do not fit or are none.
    bool write(std::size_t address, const Bytes &bytes);
    /// The memory as Intel HEX text from address 0 on, blank stretches left out.
    std::string save() const;

private:
    Bytes image;
};

} // namespace simulator
