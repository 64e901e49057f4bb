#include "SSGenerator/rounding.h"

#include <cmath>
#include <limits>

std::int32_t HParser::truncatedToInt32(double value)
{
    // Both limits are exact doubles; NaN fails the comparison.
    const bool fits = value > -2147483649.0 && value < 2147483648.0;
    return fits ? static_cast<std::int32_t>(value) : std::numeric_limits<std::int32_t>::min();
}

std::int32_t HParser::roundedToInt32(double value)
{
    if (value >= 0)
        return truncatedToInt32(value + 0.5);
    // Truncation goes towards zero, so the fraction is first made positive.
    const double below = std::trunc(value - 1.0);
    return truncatedToInt32(below + std::trunc(value - below + 0.5));
}
