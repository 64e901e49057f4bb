#pragma once

#include <cstdint>
#include <cstdio>

/// Numbers and bytes as text: hexadecimal digits, command line numbers, fields of a text file.
namespace IntelHexFile
{
/// What the byte readers return where there is no byte to be had.
constexpr std::uint32_t noByte = 65535;
/// What file_getnum returns for a field that is no number or longer than fieldLength.
constexpr std::uint32_t noNumber = 0xFFFFFFFF;
/// What file_getstring returns for a field that does not fit.
constexpr std::size_t fieldTooLong = 65535;
/// Longest number field of a text file, in characters.
constexpr std::size_t fieldLength = 10;

/// Two hexadecimal digits of either case to a byte; noByte when one of them is none. Reads no
/// further than the first character that is no digit.
std::uint32_t hexstringtobyte(const char *text);

/// Writes byte as two upper-case digits and a NUL: three characters. Returns 0, or 1 (and an empty
/// text) for a value above 255.
int bytetohexstring(char *text, std::uint32_t byte);

/// Takes two characters from file as one byte; noByte at the end of input and for other characters.
std::uint32_t extractbyte(std::FILE *file);

/// Reads a number, decimal or hexadecimal behind "0x". Returns what the reader of that base
/// returns; value is only touched on success.
std::uint32_t getnumberfromstring(const char *text, std::uint64_t *value);

/// Reads the decimal digits at the beginning of text. Returns their count; 0 when there is none or
/// the number is too large.
std::uint32_t getdecnumberfromstring(const char *text, std::uint64_t *value);

/// Reads pairs of hexadecimal digits, at most eight, behind the "0x" that text begins with or not.
/// Returns the number of pairs; 0 when there is none or a lone digit follows the last pair.
std::uint32_t gethexnumberfromstring(const char *text, std::uint64_t *value);

/// Reads one number field: characters equal to skip are passed over, then the field reaches to an
/// end character, which is taken too, or to the end of file. An empty field is 0, one longer than
/// fieldLength or without a number noNumber.
std::uint32_t file_getnum(std::FILE *file, char skip, char end);
std::uint32_t file_getnum(std::FILE *file, char skip, char end1, char end2);

/// The same for text, which gets at most size - 1 characters and a NUL. Returns the number of
/// characters, or fieldTooLong; the rest of such a field is passed over.
std::size_t file_getstring(std::FILE *file, char *text, std::size_t size, char skip, char end);

} // namespace IntelHexFile
