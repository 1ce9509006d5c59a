#pragma once

// What every fuzz target shares: libFuzzer's entry point hands the input to
// the target's own `kesta::fuzz::target` as text, and a broken invariant ends
// the run as a finding that names it. Each target is one translation unit, so
// the entry point is defined here once per program.

#include "common/core/RuntimeError.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory> // the question list and the session are too large for the stack
#include <string>

namespace kesta::fuzz {

void target(std::string_view input); // `input` holds the fuzzer's bytes

inline void expect(bool holds, const char* what, std::string_view detail = {})
{
    if (holds)
        return;
    std::fprintf(stderr, "invariant broken: %s [%.*s]\n", what, static_cast<int>(detail.size()), detail.data());
    std::abort();
}

// Runs `parse`: 0 when it returns, else the number of the run-time error it
// raised, which must be one of those the program is prepared to answer.
template <class Parse> int raised(Parse&& parse, std::initializer_list<int> allowed)
{
    try {
        parse();
    } catch (const RuntimeError& e) {
        expect(std::ranges::count(allowed, e.number()), "an unexpected run-time error", std::to_string(e.number()));
        return e.number();
    }
    return 0;
}

} // namespace kesta::fuzz

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    kesta::fuzz::target(std::string_view(reinterpret_cast<const char*>(data), size));
    return 0;
}
