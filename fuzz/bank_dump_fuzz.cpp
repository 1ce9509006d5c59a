// Fuzzes `kesta-qbank dump` with question-file bytes.
//
// Contract: any bytes either dump to a source or fail with
// kesta::BankSourceError naming the line. A dump is itself a source: it
// builds, and the result dumps back to the same text.
#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"

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
    std::fprintf(stderr, "bank_dump_fuzz: %s [%.*s]\n", what, static_cast<int>(detail.size()), detail.data());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bank(reinterpret_cast<const char*>(data), size);
    std::string source;
    try {
        source = DumpBank(bank, QuestionPassPhrase);
    } catch (const BankSourceError& e) {
        if (e.line() < 1)
            fail("a dump failure names no line", e.what());
        return 0; // failed cleanly; anything else escapes as a finding
    }
    if (!source.empty() && source.back() != '\n')
        fail("the dump's last line has no line end");
    if (source.empty())
        return 0; // an empty file dumps to nothing, which is no source to build

    std::string rebuilt;
    try {
        rebuilt = BuildBank(source, QuestionPassPhrase);
    } catch (const BankSourceError& e) {
        fail("a dump is refused as a source", e.what());
    }
    std::string again;
    try {
        again = DumpBank(rebuilt, QuestionPassPhrase);
    } catch (const BankSourceError& e) {
        fail("a rebuilt dump does not dump", e.what());
    }
    if (again != source)
        fail("dump -> build -> dump changed the text", again);
    return 0;
}
