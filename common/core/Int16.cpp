#include "common/core/Int16.h"

#include <cmath>

namespace kesta {

Int16 parseInt16(std::string_view text)
{
    auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    const bool negative = !text.empty() && text.front() == '-';
    if (!text.empty() && (negative || text.front() == '+'))
        text.remove_prefix(1);
    // Digits with at most one point; from_chars alone would also take "inf" and exponents.
    if (text.empty() || text == "." || text.find_first_not_of("0123456789.") != std::string_view::npos)
        throw err::make(err::TypeMismatch);
    double value{};
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    if (end != text.data() + text.size())
        throw err::make(err::TypeMismatch);
    if (code != std::errc()) // hundreds of digits: past any double, and past 16 bits
        throw err::make(err::Overflow);
    // The default rounding mode rounds a half to the even neighbour.
    const double rounded = std::nearbyint(negative ? -value : value);
    if (rounded < -32768.0 || rounded > 32767.0)
        throw err::make(err::Overflow);
    return static_cast<Int16>(rounded);
}

} // namespace kesta
