// Fuzzes the options reader with any bytes.
//
// Contract: the text either yields six 16-bit values or is "corrupt" (a
// kesta::RuntimeError: a missing line, a line that is not a number, a number
// that does not fit in 16 bits), which the program answers with the default
// file. Each value read must be the number its line holds, and lines after
// the sixth must not matter.
#include "app/core/Options.h"
#include "common/core/RuntimeError.h"
#include "common/core/UserOptions.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace {

using namespace kesta;

[[noreturn]] void fail(const char* what, std::string_view detail = {})
{
    std::fprintf(stderr, "options_fuzz: %s [%.*s]\n", what, static_cast<int>(detail.size()), detail.data());
    std::abort();
}

using Values = std::array<Int16, 7>; // options 1..6

// The six values, or nothing for a corrupt file.
std::optional<Values> parse(std::string_view text)
{
    UserOptions options;
    try {
        parseOptions(text, options);
    } catch (const RuntimeError& e) {
        if (e.number() != err::InputPastEnd && e.number() != err::TypeMismatch && e.number() != err::Overflow)
            fail("an unexpected error for a corrupt file", std::to_string(e.number()));
        return std::nullopt;
    }
    Values v{};
    for (int k = 1; k <= 6; ++k)
        v[static_cast<std::size_t>(k)] = options.values[k];
    return v;
}

// True when `line` spells `value`: blanks around it, an optional sign,
// leading zeros, then the digits of its magnitude.
bool spells(std::string_view line, Int16 value)
{
    const std::size_t first = line.find_first_not_of(" \t"), last = line.find_last_not_of(" \t");
    line = first == std::string_view::npos ? std::string_view() : line.substr(first, last - first + 1);
    if (line.starts_with('+') && !line.starts_with("+-"))
        line.remove_prefix(1);
    int number = 0;
    const auto [end, ec] = std::from_chars(line.data(), line.data() + line.size(), number);
    return ec == std::errc() && end == line.data() + line.size() && number == value;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::optional<Values> values = parse(text);
    if (!values)
        return 0;

    // Each of the first six lines (CR LF, a lone CR or a lone LF ends one) spells its value.
    std::string_view rest = text;
    for (std::size_t k = 1; k <= 6; ++k) {
        const std::size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
        if (rest.empty() || !spells(rest.substr(0, end), (*values)[k]))
            fail("a value is not the number its line holds", rest.substr(0, end));
        rest.remove_prefix(std::min(rest.size(), end + (rest.substr(end, 2) == "\r\n" ? 2 : 1)));
    }

    // Lines after the sixth are ignored, whatever they hold.
    const std::optional<Values> extended = parse(std::string(text) + "\r\nnot a number\r\n99999");
    if (!extended || *extended != *values)
        fail("a seventh line changed the values");

    // What the wizard writes back must read back the same.
    UserOptions options;
    for (int k = 1; k <= 6; ++k)
        options.values[k] = (*values)[static_cast<std::size_t>(k)];
    const std::string written = formatOptions(options);
    if (parse(written) != values)
        fail("the written options do not read back", written);
    if (written.find("\r\n\r\n") != std::string::npos || written.size() < 11 || written.back() == '\n')
        fail("the written file is not six lines without a final line end", written);
    return 0;
}
