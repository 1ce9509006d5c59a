#pragma once

// What every fuzz target shares: libFuzzer's entry point hands the input to
// the target's own `kesta::fuzz::target` as text, and a broken invariant ends
// the run as a finding that names it. A target is then only its parser call
// and the invariant it checks. Each target is one translation unit, so the
// entry point is defined here once per program.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace kesta::fuzz {

// The target's body; `input` holds the fuzzer's bytes.
void target(std::string_view input);

// Reports the broken invariant `what`, with the text that broke it, and aborts.
[[noreturn]] inline void fail(const char* what, std::string_view detail = {})
{
    std::fprintf(stderr, "invariant broken: %s [%.*s]\n", what, static_cast<int>(detail.size()), detail.data());
    std::abort();
}

inline void expect(bool holds, const char* what, std::string_view detail = {})
{
    if (!holds)
        fail(what, detail);
}

} // namespace kesta::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kesta::fuzz::target(std::string_view(reinterpret_cast<const char*>(data), size));
    return 0;
}
