#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

/// What every fuzz target defines: feeds one input to its parser. Returns 0; whatever else goes
/// wrong ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace fuzz
{
/// Ends the process when a law does not hold that must hold for every input.
inline void require(bool holds, const char *law)
{
    if (holds)
        return;
    std::fprintf(stderr, "BROKEN LAW: %s\n", law);
    std::abort();
}

/// Takes an input apart from its beginning. Behind its end there are zeros.
class Input
{
public:
    Input(const std::uint8_t *data, std::size_t size) : at(data), left(size) {}

    bool isEmpty() const { return left == 0; }

    std::uint8_t byte()
    {
        if (left == 0)
            return 0;
        --left;
        return *at++;
    }

    /// Four bytes, the least significant first.
    std::uint32_t number()
    {
        std::uint32_t value = 0;
        for (int shift = 0; shift < 32; shift += 8)
            value |= std::uint32_t{byte()} << shift;
        return value;
    }

    /// The next size bytes, or what is left.
    std::vector<std::uint8_t> bytes(std::size_t size)
    {
        size = std::min(size, left);
        const std::vector<std::uint8_t> taken(at, at + size);
        at += size;
        left -= size;
        return taken;
    }

    std::vector<std::uint8_t> rest() { return bytes(left); }

private:
    const std::uint8_t *at;
    std::size_t left;
};

} // namespace fuzz
