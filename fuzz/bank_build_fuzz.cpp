// Fuzzes `kesta-qbank build` with question-bank sources.
//
// Contract: a source is either refused with kesta::BankSourceError or builds
// to a question file whose dump is the source, byte for byte. The built file
// must also load in the program without a fatal error.
#include "common/core/RuntimeError.h"
#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace kesta;

[[noreturn]] void fail(const char* what, std::string_view detail = {})
{
    std::fprintf(stderr, "bank_build_fuzz: %s [%.*s]\n", what, static_cast<int>(detail.size()), detail.data());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view source(reinterpret_cast<const char*>(data), size);
    std::string bank;
    try {
        bank = BuildBank(source, QuestionPassPhrase);
    } catch (const BankSourceError&) {
        return 0; // refused cleanly; anything else escapes as a finding
    }

    // One CR LF-ended file line per source line.
    std::size_t sourceLines = 0;
    for (const char c : source)
        sourceLines += c == '\n' ? 1 : 0;
    if (bank.size() < 2 || bank.compare(bank.size() - 2, 2, "\r\n") != 0)
        fail("the built file does not end in CR LF");
    if (SplitFileLines(bank).size() != sourceLines)
        fail("the built file has another number of lines than the source");

    std::string dumped;
    try {
        dumped = DumpBank(bank, QuestionPassPhrase);
    } catch (const BankSourceError& e) {
        fail("a built file does not dump", e.what());
    }
    if (dumped != source)
        fail("dump of the built file differs from the source", dumped);

    // Every non-empty line of a built file deciphers.
    for (const std::string_view line : SplitFileLines(bank)) {
        if (line.empty())
            continue;
        try {
            (void)DecryptString(line.substr(line.front() == '#' ? 1 : 0), QuestionPassPhrase);
        } catch (const RuntimeError&) {
            fail("a built line raises in the program", line);
        }
    }
    return 0;
}
