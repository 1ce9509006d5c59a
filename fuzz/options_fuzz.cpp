// The options file: any bytes give six 16-bit values or are "corrupt" (run-time
// error 62, 13 or 6, which the program answers with the defaults). Lines after
// the sixth do not matter, and what the wizard writes reads back the same.
#include "FuzzTarget.h"
#include "app/core/Options.h"
#include "common/core/RuntimeError.h"

#include <algorithm>
#include <string>

using namespace kesta;

namespace {
std::string parse(std::string_view text)
{
    UserOptions options;
    try {
        parseOptions(text, options);
    } catch (const RuntimeError& e) {
        fuzz::expect(e.number() == err::InputPastEnd || e.number() == err::TypeMismatch || e.number() == err::Overflow,
                     "an unexpected error for a corrupt file");
        return "corrupt";
    }
    return formatOptions(options);
}
} // namespace

void fuzz::target(std::string_view input)
{
    const std::string values = parse(input);
    if (values == "corrupt")
        return;
    expect(parse(std::string(input) + "\r\nnot a number\r\n99999") == values, "a seventh line changed the values");
    expect(parse(values) == values, "the written options do not read back", values);
    expect(std::count(values.begin(), values.end(), '\n') == 5 && values.back() != '\n', "not six lines", values);
}
