#pragma once

#include <random>

/// All chance of a soak, from one seed. Draws are the same everywhere, unlike those of the standard
/// library's distributions.
class Dice
{
public:
    explicit Dice(unsigned seed) : engine(seed) {}
    Dice(const Dice &) = delete;
    Dice &operator=(const Dice &) = delete;

    /// From 0 up to, but not including, bound, which is above 0.
    int below(int bound) { return static_cast<int>(engine() % static_cast<unsigned>(bound)); }
    bool chance(int percent) { return below(100) < percent; }
    /// One of a list, which is not empty.
    template <class List> auto pick(const List &list) { return list.at(below(int(list.size()))); }

private:
    std::mt19937 engine;
};
