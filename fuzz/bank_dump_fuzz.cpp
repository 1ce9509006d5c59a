// `kesta-qbank dump`: any bytes dump to a source or fail naming the line, and
// a dump is itself a source: it builds, and the result dumps to the same text.
#include "FuzzTarget.h"
#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"

using namespace kesta;

void fuzz::target(std::string_view bank)
{
    std::string source;
    try {
        source = DumpBank(bank, QuestionPassPhrase);
    } catch (const BankSourceError& e) {
        return expect(e.line() >= 1, "a dump failure names no line", e.what());
    }
    expect(source.empty() || (source.ends_with('\n')
               && DumpBank(BuildBank(source, QuestionPassPhrase), QuestionPassPhrase) == source),
        "a dump leaves its last line open, or dump, build, dump changes it", source);
}
