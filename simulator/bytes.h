#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simulator
{
using Bytes = std::vector<std::uint8_t>;

/// "55 0A": two upper-case digits for each byte, with blanks between.
std::string toHex(const Bytes &bytes);

/// Reads pairs of hex digits, blanks between pairs allowed. False, with *bytes untouched, for any
/// other text; empty text is an empty row of bytes.
bool fromHex(const std::string &text, Bytes *bytes);

/// A non-negative number, decimal or hexadecimal behind "0x". False for any other text.
bool parseNumber(const std::string &text, unsigned long *number);

/// A number of seconds from 0 to 3600, with an optional fraction. False for any other text.
bool parseSeconds(const std::string &text, double *seconds);

} // namespace simulator
