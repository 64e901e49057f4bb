#pragma once

#include "simulator/bytes.h"

#include <cstddef>
#include <string>
#include <vector>

namespace simulator
{
/// Bytes that lie together in memory.
struct MemoryPiece {
    std::size_t address = 0;
    Bytes bytes;
};

/// Reads Intel HEX text up to its end record: data, extended linear and extended segment address
/// records; start addresses and text between the records are passed over. False, with the line and
/// the reason in *error, for a bad record and for text without an end record.
bool readHexText(const std::string &text, std::vector<MemoryPiece> *pieces, std::string *error);

/// The whole memory from address 0 on as Intel HEX text, in records of 16 bytes. Records that hold
/// only copies of blank, a pattern whose length divides 16, are left out.
std::string writeHexText(const Bytes &memory, const Bytes &blank);

} // namespace simulator
