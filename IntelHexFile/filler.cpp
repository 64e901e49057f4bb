#include "IntelHexFile/bootloader.h"

namespace IntelHexFile
{
namespace
{
/// Byte i of endless copies of value.
unsigned char fillerByte(std::uint32_t i, std::uint32_t value, std::uint32_t valueSize)
{
    const std::uint32_t fromBelow = valueSize - 1 - i % valueSize;
    return fromBelow < sizeof value ? static_cast<unsigned char>(value >> 8 * fromBelow) : 0;
}

} // namespace

void fillhexbuffer(unsigned char *buffer, std::uint32_t size, std::uint32_t value,
                   std::uint32_t valueSize)
{
    if (valueSize == 0)
        return;
    for (std::uint32_t i = 0; i < size; ++i)
        buffer[i] = fillerByte(i, value, valueSize);
}

bool isFilled(const unsigned char *bytes, std::uint32_t size, std::uint32_t value,
              std::uint32_t valueSize)
{
    if (valueSize == 0)
        return false;
    for (std::uint32_t i = 0; i < size; ++i) {
        if (bytes[i] != fillerByte(i, value, valueSize))
            return false;
    }
    return true;
}

} // namespace IntelHexFile
