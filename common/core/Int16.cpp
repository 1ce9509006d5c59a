#include "common/core/Int16.h"

namespace kesta {

Int16 parseInt16(std::string_view text)
{
    auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    bool negative = false;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (text.empty())
        throw err::make(err::TypeMismatch);
    std::int64_t value = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            throw err::make(err::TypeMismatch);
        value = value * 10 + (c - '0');
        if (value > 100000) // far past 16 bits; stop before the wider type could overflow
            throw err::make(err::Overflow);
    }
    return toInt16(negative ? -value : value);
}

} // namespace kesta
