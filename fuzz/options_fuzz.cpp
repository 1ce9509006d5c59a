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

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace kesta;

[[noreturn]] void fail(const char* what, std::string_view detail = {})
{
    std::fprintf(stderr, "options_fuzz: %s [%.*s]\n", what, static_cast<int>(detail.size()), detail.data());
    std::abort();
}

using Values = std::array<Int16, 7>;

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
    for (int k = 0; k <= 6; ++k)
        v[static_cast<std::size_t>(k)] = options.values[k];
    if (v[0] != 0)
        fail("option 0 was written");
    return v;
}

// The first lines of a text: CR LF, a lone CR or a lone LF ends a line.
std::vector<std::string_view> firstLines(std::string_view text, std::size_t wanted)
{
    std::vector<std::string_view> out;
    std::size_t start = 0;
    while (start < text.size() && out.size() < wanted) {
        std::size_t end = start;
        while (end < text.size() && text[end] != '\r' && text[end] != '\n')
            ++end;
        out.push_back(text.substr(start, end - start));
        if (end == text.size())
            break;
        start = end + (text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n' ? 2 : 1);
    }
    return out;
}

// True when `line` spells `value`: blanks around it, an optional sign,
// leading zeros, then the digits of its magnitude.
bool spells(std::string_view line, Int16 value)
{
    while (!line.empty() && (line.front() == ' ' || line.front() == '\t'))
        line.remove_prefix(1);
    while (!line.empty() && (line.back() == ' ' || line.back() == '\t'))
        line.remove_suffix(1);
    bool negative = false;
    if (!line.empty() && (line.front() == '-' || line.front() == '+')) {
        negative = line.front() == '-';
        line.remove_prefix(1);
    }
    if (line.empty())
        return false;
    for (const char c : line) {
        if (c < '0' || c > '9')
            return false;
    }
    while (line.size() > 1 && line.front() == '0')
        line.remove_prefix(1);
    const int magnitude = value < 0 ? -static_cast<int>(value) : value;
    if (line != std::to_string(magnitude))
        return false;
    return value == 0 || negative == (value < 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::optional<Values> values = parse(text);
    if (!values)
        return 0;

    const std::vector<std::string_view> lines = firstLines(text, 6);
    if (lines.size() != 6)
        fail("values read from fewer than six lines");
    for (std::size_t k = 1; k <= 6; ++k) {
        if (!spells(lines[k - 1], (*values)[k]))
            fail("a value is not the number its line holds", lines[k - 1]);
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
