#include "fuzz/mutator.h"

#include <algorithm>

namespace fuzz
{
namespace
{
constexpr std::size_t mostChanges = 4;
constexpr std::size_t longestUnit = 1 << 16;

std::ptrdiff_t offset(std::size_t place)
{
    return static_cast<std::ptrdiff_t>(place);
}
} // namespace

Unit Mutator::next()
{
    Unit unit = (*seeds)[below(seeds->size())];
    for (std::size_t changes = 1 + below(mostChanges); changes > 0; --changes)
        change(&unit);
    if (unit.size() > longestUnit)
        unit.resize(longestUnit);
    return unit;
}

void Mutator::change(Unit *unit)
{
    if (unit->empty()) {
        unit->push_back(static_cast<std::uint8_t>(below(256)));
        return;
    }
    switch (below(8)) {
    case 0:
        unit->insert(unit->begin() + offset(below(unit->size() + 1)),
                     static_cast<std::uint8_t>(below(256)));
        return;
    case 1:
        cut(unit);
        return;
    case 2:
        unit->resize(below(unit->size())); // a file that was not written to its end
        return;
    case 3:
        repeat(unit);
        return;
    case 4:
        graft(unit);
        return;
    default:
        changeByte(&(*unit)[below(unit->size())]);
    }
}

void Mutator::changeByte(std::uint8_t *byte)
{
    // Ends of ranges, and what formats are built from.
    static constexpr std::uint8_t telling[] = {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x55, 0x7F, 0x80,
                                               0xFE, 0xFF, '0',  '9',  'F',  'x',  ':',  '=',  '.',
                                               '/',  '\\', ' ',  '\t', '\n', '\r', '|'};
    switch (below(4)) {
    case 0:
        *byte = static_cast<std::uint8_t>(below(256));
        return;
    case 1:
        *byte = telling[below(sizeof telling)];
        return;
    case 2:
        *byte = static_cast<std::uint8_t>(*byte + (below(2) == 0 ? 1 : 255));
        return;
    default:
        *byte = static_cast<std::uint8_t>(*byte ^ 1u << below(8));
    }
}

void Mutator::cut(Unit *unit)
{
    const std::size_t from = below(unit->size());
    const std::size_t size = 1 + below(std::min<std::size_t>(unit->size() - from, 64));
    unit->erase(unit->begin() + offset(from), unit->begin() + offset(from + size));
}

void Mutator::repeat(Unit *unit)
{
    const std::size_t from = below(unit->size());
    const std::size_t size = 1 + below(std::min<std::size_t>(unit->size() - from, 64));
    const Unit piece(unit->begin() + offset(from), unit->begin() + offset(from + size));
    unit->insert(unit->begin() + offset(below(unit->size() + 1)), piece.begin(), piece.end());
}

void Mutator::graft(Unit *unit)
{
    const Unit &other = (*seeds)[below(seeds->size())];
    unit->resize(below(unit->size() + 1));
    unit->insert(unit->end(), other.begin() + offset(below(other.size() + 1)), other.end());
}

} // namespace fuzz
