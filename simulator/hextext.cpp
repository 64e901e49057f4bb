#include "simulator/hextext.h"

#include <algorithm>
#include <numeric>
#include <sstream>

namespace simulator
{
namespace
{
constexpr std::size_t recordLength = 16;
constexpr std::size_t recordOverhead = 5; // length 1 + address 2 + type 1 + checksum 1

enum RecordType : std::uint8_t {
    Data = 0,
    End = 1,
    SegmentAddress = 2,
    SegmentStart = 3,
    LinearAddress = 4,
    LinearStart = 5,
};

std::string recordText(std::uint8_t type, std::size_t address, const Bytes &data)
{
    Bytes record{static_cast<std::uint8_t>(data.size()), static_cast<std::uint8_t>(address >> 8),
                 static_cast<std::uint8_t>(address), type};
    for (const std::uint8_t byte : data)
        record.push_back(byte);
    const unsigned sum = std::accumulate(record.begin(), record.end(), 0u);
    record.push_back(static_cast<std::uint8_t>(0u - sum));
    std::string text = toHex(record);
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return ':' + text + '\n';
}

bool isBlank(const Bytes &line, const Bytes &blank)
{
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] != blank[i % blank.size()])
            return false;
    }
    return true;
}

// The bytes of one record without the colon; an empty result says why in *error.
Bytes recordBytes(const std::string &line, std::string *error)
{
    Bytes record;
    if (!fromHex(line, &record)) {
        *error = "holds something other than hex digits";
        return {};
    }
    if (record.size() < recordOverhead || record.size() != record[0] + recordOverhead) {
        *error = "has a wrong length";
        return {};
    }
    if (std::accumulate(record.begin(), record.end(), 0u) % 256 != 0) {
        *error = "has a wrong checksum";
        return {};
    }
    return record;
}
} // namespace

bool readHexText(const std::string &text, std::vector<MemoryPiece> *pieces, std::string *error)
{
    std::vector<MemoryPiece> found;
    std::istringstream lines(text);
    std::string line;
    std::size_t base = 0;
    for (int number = 1; std::getline(lines, line); ++number) {
        const std::size_t colon = line.find(':');
        if (colon == std::string::npos)
            continue;
        const std::size_t last = line.find_last_not_of(" \t\r");
        std::string reason;
        const Bytes record = recordBytes(line.substr(colon + 1, last - colon), &reason);
        if (record.empty()) {
            *error = "line " + std::to_string(number) + ' ' + reason;
            return false;
        }
        const Bytes data(record.begin() + 4, record.end() - 1);
        const std::size_t offset = record[1] * 256u + record[2];
        switch (record[3]) {
        case Data:
            found.push_back({base + offset, data});
            break;
        case End:
            *pieces = found;
            return true;
        case SegmentAddress:
        case LinearAddress:
            if (data.size() != 2) {
                *error = "line " + std::to_string(number) + " has no address of two bytes";
                return false;
            }
            base = data[0] * 256u + data[1];
            base *= record[3] == LinearAddress ? 0x10000 : 0x10;
            break;
        case SegmentStart:
        case LinearStart:
            break;
        default:
            *error = "line " + std::to_string(number) + " is of an unknown type";
            return false;
        }
    }
    *error = "there is no end record";
    return false;
}

std::string writeHexText(const Bytes &memory, const Bytes &blank)
{
    std::string text;
    std::size_t base = 0;
    for (std::size_t address = 0; address < memory.size(); address += recordLength) {
        const std::size_t end = std::min(address + recordLength, memory.size());
        const Bytes line(memory.begin() + static_cast<std::ptrdiff_t>(address),
                         memory.begin() + static_cast<std::ptrdiff_t>(end));
        if (isBlank(line, blank))
            continue;
        if (address >> 16 != base) {
            base = address >> 16;
            const Bytes upper{static_cast<std::uint8_t>(base >> 8),
                              static_cast<std::uint8_t>(base)};
            text += recordText(LinearAddress, 0, upper);
        }
        text += recordText(Data, address & 0xFFFF, line);
    }
    return text + recordText(End, 0, {});
}

} // namespace simulator
