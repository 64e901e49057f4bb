#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace fuzz
{
using Unit = std::vector<std::uint8_t>;

/// Changes copies of seeds. Its sequence of changes is the same in every run.
class Mutator
{
public:
    /// Knows no other seeds than these, which must outlive it and not be empty.
    explicit Mutator(const std::vector<Unit> *seeds) : seeds(seeds) {}

    /// Some seed with a few changes.
    Unit next();

private:
    /// A number below limit, which must not be 0.
    std::size_t below(std::size_t limit) { return random() % limit; }
    void change(Unit *unit);
    void changeByte(std::uint8_t *byte);
    void cut(Unit *unit);
    void repeat(Unit *unit);
    void graft(Unit *unit);

    const std::vector<Unit> *seeds;
    std::mt19937 random{1};
};

} // namespace fuzz
