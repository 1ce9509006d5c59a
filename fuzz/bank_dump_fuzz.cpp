// `kesta-qbank dump`: any bytes dump to a source or fail naming the line, and
// a dump is itself a source: it builds, and the result dumps to the same text.
#include "FuzzTarget.h"
#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"

#include <string>

using namespace kesta;

void fuzz::target(std::string_view bank)
{
    std::string source;
    try {
        source = DumpBank(bank, QuestionPassPhrase);
    } catch (const BankSourceError& e) {
        expect(e.line() >= 1, "a dump failure names no line", e.what());
        return;
    }
    expect(source.empty() || source.back() == '\n', "the dump's last line has no line end");
    if (!source.empty())
        expect(DumpBank(BuildBank(source, QuestionPassPhrase), QuestionPassPhrase) == source, "dump, build, dump changed it");
}
