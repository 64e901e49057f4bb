#pragma once

#include <cstdint>

namespace HParser
{

/// value without its fraction. What does not fit 32 bits, NaN and the infinities among it, gives
/// -2147483648: the charger's formats rely on this one answer, whatever the compiler.
std::int32_t truncatedToInt32(double value);

/// value rounded to the nearest integer, halves upwards (-2.5 gives -2); what does not fit gives
/// -2147483648.
std::int32_t roundedToInt32(double value);

} // namespace HParser
