#pragma once

#include "common/core/RuntimeError.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>

namespace kesta {

// The program's counters are signed 16-bit values whose arithmetic raises
// "Overflow" (error 6) instead of wrapping. These helpers are the only way
// such a counter changes, so no undefined or wrapped value can arise.
using Int16 = std::int16_t;

// Narrows a wider value to 16 bits; raises error 6 when it does not fit.
constexpr Int16 toInt16(std::int64_t value)
{
    if (value < std::numeric_limits<Int16>::min() || value > std::numeric_limits<Int16>::max())
        throw err::make(err::Overflow);
    return static_cast<Int16>(value);
}

constexpr Int16 add16(Int16 a, std::int64_t b) { return toInt16(std::int64_t{a} + b); }
constexpr Int16 sub16(Int16 a, std::int64_t b) { return toInt16(std::int64_t{a} - b); }
constexpr Int16 mul16(Int16 a, std::int64_t b) { return toInt16(std::int64_t{a} * b); }

// Converts decimal text to a 16-bit value the way the program reads numbers
// from its own files and its lists: surrounding blanks are ignored, a sign
// and a fraction are allowed, and the value is rounded to the nearest
// integer, a half to the even one ("5.5" is 6, "4.5" is 4). Raises error 13
// for text that is not a number and error 6 when the rounded value does not
// fit in 16 bits.
Int16 parseInt16(std::string_view text);

} // namespace kesta
