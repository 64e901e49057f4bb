#include "simulator/bytes.h"

#include <cctype>
#include <cstdlib>

namespace simulator
{
namespace
{
int digitValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    return -1;
}
} // namespace

std::string toHex(const Bytes &bytes)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(bytes.size() * 3);
    for (const std::uint8_t byte : bytes) {
        if (!text.empty())
            text += ' ';
        text += digits[byte >> 4];
        text += digits[byte & 0x0F];
    }
    return text;
}

bool fromHex(const std::string &text, Bytes *bytes)
{
    Bytes result;
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] == ' ') {
            ++i;
            continue;
        }
        const int high = digitValue(text[i]);
        const int low = i + 1 < text.size() ? digitValue(text[i + 1]) : -1;
        if (high < 0 || low < 0)
            return false;
        result.push_back(static_cast<std::uint8_t>(high * 16 + low));
        i += 2;
    }
    *bytes = result;
    return true;
}

bool parseNumber(const std::string &text, unsigned long *number)
{
    const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const std::string digits = hex ? text.substr(2) : text;
    if (digits.empty() || digits.size() > 9)
        return false;
    unsigned long value = 0;
    for (const char digit : digits) {
        const int one = digitValue(digit);
        if (one < 0 || (!hex && one > 9))
            return false;
        value = value * (hex ? 16 : 10) + static_cast<unsigned long>(one);
    }
    *number = value;
    return true;
}

bool parseSeconds(const std::string &text, double *seconds)
{
    if (text.empty() || !std::isdigit(static_cast<unsigned char>(text[0])))
        return false;
    char *end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (*end != '\0' || !(value >= 0 && value <= 3600))
        return false;
    *seconds = value;
    return true;
}

} // namespace simulator
