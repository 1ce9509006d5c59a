// `kesta-qbank build` and `dump`, which must be inverses. The first byte picks
// the direction. Odd: the rest is a source, refused naming its line or built
// into one CR LF line per source line whose dump is the source, byte for byte
// but for what build drops (a BOM first, the CR of CR LF, a missing last LF).
// Even: the rest is a file, which dumps to a source or fails naming the line,
// and a dump that opens with a title is itself a source that builds into a
// file dumping to the same text.
#include "FuzzTarget.h"
#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"

using namespace kesta;

void fuzz::target(std::string_view input)
{
    if (input.empty())
        return;
    const bool build = input.front() % 2 != 0;
    const std::string_view text = input.substr(1);
    std::string output;
    try {
        output = build ? BuildBank(text, QuestionPassPhrase) : DumpBank(text, QuestionPassPhrase);
    } catch (const BankSourceError& e) {
        return expect(e.line() >= 1, "a refusal names no line", e.what());
    }
    if (build) {
        std::string source(text.substr(text.starts_with("\xEF\xBB\xBF") ? 3 : 0));
        for (std::size_t at = source.find("\r\n"); at != std::string::npos; at = source.find("\r\n", at))
            source.erase(at, 1);
        if (!source.ends_with('\n'))
            source += '\n';
        expect(std::ranges::count(output, '\n') == std::ranges::count(source, '\n') && output.ends_with("\r\n"),
            "not one CR LF line per source line");
        return expect(
            DumpBank(output, QuestionPassPhrase) == source, "the dump of a built file differs from its source");
    }
    const bool titled = output.starts_with("Title: ") || output.starts_with("Raw: ");
    expect(output.empty()
            || (output.ends_with('\n')
                && (!titled || DumpBank(BuildBank(output, QuestionPassPhrase), QuestionPassPhrase) == output)),
        "a dump leaves its last line open, or dump, build, dump changes it", output);
}
