#include "IntelHexFile/hexnumber.h"

namespace IntelHexFile
{
namespace
{
constexpr std::uint32_t noDigit = 16;
constexpr std::uint32_t mostPairs = 8;

std::uint32_t digitValue(int character)
{
    if (character >= '0' && character <= '9')
        return static_cast<std::uint32_t>(character - '0');
    if (character >= 'a' && character <= 'f')
        return static_cast<std::uint32_t>(character - 'a' + 10);
    if (character >= 'A' && character <= 'F')
        return static_cast<std::uint32_t>(character - 'A' + 10);
    return noDigit;
}

bool isHexadecimal(const char *text)
{
    return text[0] == '0' && text[1] == 'x';
}

/// A field of a table may have an odd number of digits; it is never longer than 32 bits.
std::uint32_t fieldValue(const char *field)
{
    const bool hexadecimal = isHexadecimal(field);
    const std::uint32_t base = hexadecimal ? 16 : 10;
    const char *at = hexadecimal ? field + 2 : field;
    std::uint64_t value = 0;
    if (!*at)
        return hexadecimal ? noNumber : 0;
    for (; *at; ++at) {
        const std::uint32_t digit = digitValue(*at);
        if (digit >= base)
            return noNumber;
        value = value * base + digit;
    }
    return value > noNumber ? noNumber : static_cast<std::uint32_t>(value);
}

std::size_t readField(std::FILE *file, char *text, std::size_t size, char skip, char end1,
                      char end2)
{
    int character = std::getc(file);
    while (character != EOF && character == static_cast<unsigned char>(skip))
        character = std::getc(file);

    std::size_t length = 0;
    bool tooLong = false;
    while (character != EOF && character != static_cast<unsigned char>(end1) &&
           character != static_cast<unsigned char>(end2)) {
        if (length + 1 < size)
            text[length++] = static_cast<char>(character);
        else
            tooLong = true;
        character = std::getc(file);
    }
    if (size > 0)
        text[length] = '\0';
    return tooLong ? fieldTooLong : length;
}

} // namespace

std::uint32_t hexstringtobyte(const char *text)
{
    const std::uint32_t high = digitValue(static_cast<unsigned char>(text[0]));
    if (high == noDigit)
        return noByte;
    const std::uint32_t low = digitValue(static_cast<unsigned char>(text[1]));
    return low == noDigit ? noByte : high * 16 + low;
}

int bytetohexstring(char *text, std::uint32_t byte)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    text[0] = '\0';
    if (byte > 0xFF)
        return 1;
    text[0] = digits[byte >> 4];
    text[1] = digits[byte & 0xF];
    text[2] = '\0';
    return 0;
}

std::uint32_t extractbyte(std::FILE *file)
{
    // A page is read in a few milliseconds only without a lock for every character.
    const int high = getc_unlocked(file);
    const int low = high == EOF ? EOF : getc_unlocked(file);
    if (low == EOF)
        return noByte;
    const char text[] = {static_cast<char>(high), static_cast<char>(low), '\0'};
    return hexstringtobyte(text);
}

std::uint32_t getnumberfromstring(const char *text, std::uint64_t *value)
{
    return isHexadecimal(text) ? gethexnumberfromstring(text, value)
                               : getdecnumberfromstring(text, value);
}

std::uint32_t getdecnumberfromstring(const char *text, std::uint64_t *value)
{
    std::uint64_t number = 0;
    std::uint32_t length = 0;
    for (; text[length] >= '0' && text[length] <= '9'; ++length) {
        const auto digit = static_cast<std::uint64_t>(text[length] - '0');
        if (number > (UINT64_MAX - digit) / 10)
            return 0;
        number = number * 10 + digit;
    }
    if (length > 0)
        *value = number;
    return length;
}

std::uint32_t gethexnumberfromstring(const char *text, std::uint64_t *value)
{
    const char *at = isHexadecimal(text) ? text + 2 : text;
    std::uint64_t number = 0;
    std::uint32_t pairs = 0;
    while (pairs < mostPairs) {
        const std::uint32_t byte = hexstringtobyte(at);
        if (byte == noByte)
            break;
        number = number << 8 | byte;
        at += 2;
        ++pairs;
    }
    // Dropping the last digit of "0x9C0" would give another address, which may get erased.
    if (pairs == 0 || (pairs < mostPairs && digitValue(static_cast<unsigned char>(*at)) != noDigit))
        return 0;
    *value = number;
    return pairs;
}

std::uint32_t file_getnum(std::FILE *file, char skip, char end)
{
    return file_getnum(file, skip, end, end);
}

std::uint32_t file_getnum(std::FILE *file, char skip, char end1, char end2)
{
    char field[fieldLength + 1];
    if (readField(file, field, sizeof field, skip, end1, end2) == fieldTooLong)
        return noNumber;
    return fieldValue(field);
}

std::size_t file_getstring(std::FILE *file, char *text, std::size_t size, char skip, char end)
{
    return readField(file, text, size, skip, end, end);
}

} // namespace IntelHexFile
