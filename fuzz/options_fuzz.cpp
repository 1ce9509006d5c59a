// The options file: any bytes give six 16-bit values or are corrupt (run-time
// error 62, 13 or 6, which the program answers with the defaults). Lines after
// the sixth do not matter, and what the wizard writes reads back the same.
#include "FuzzTarget.h"
#include "app/core/Options.h"

using namespace kesta;

void fuzz::target(std::string_view input)
{
    const auto parse = [](std::string_view text) { // the values as the wizard writes them; "" when corrupt
        UserOptions options;
        return raised([&] { parseOptions(text, options); }, { err::InputPastEnd, err::TypeMismatch, err::Overflow })
            ? std::string() : formatOptions(options);
    };
    if (const std::string values = parse(input); !values.empty())
        expect(parse(std::string(input) + "\r\nnot a number\r\n99999") == values && parse(values) == values
                && std::ranges::count(values, '\n') == 5,
            "a seventh line changes the values, or they are not six lines that read back", values);
}
