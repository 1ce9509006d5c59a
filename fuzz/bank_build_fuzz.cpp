// `kesta-qbank build`: a source is refused naming its line, or builds a file
// of one CR LF line per source line whose dump is the source, byte for byte.
#include "FuzzTarget.h"
#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"

using namespace kesta;

void fuzz::target(std::string_view source)
{
    std::string bank;
    try {
        bank = BuildBank(source, QuestionPassPhrase);
    } catch (const BankSourceError& e) {
        return expect(e.line() >= 1, "a refusal names no line", e.what());
    }
    expect(std::ranges::count(bank, '\n') == std::ranges::count(source, '\n') && bank.ends_with("\r\n"),
        "not one CR LF line per source line");
    expect(DumpBank(bank, QuestionPassPhrase) == source, "the dump of a built file differs from its source");
}
