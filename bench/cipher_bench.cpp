// Deciphering throughput, counted in bytes of ciphertext.
#include "questions/core/Cipher.h"
#include "questions/core/Rijndael.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using kesta::CRijndael;

CRijndael::Bytes passPhraseBytes()
{
    CRijndael::Bytes key;
    for (const char c : kesta::QuestionPassPhrase) {
        key.push_back(static_cast<std::uint8_t>(c));
        key.push_back(0);
    }
    return key;
}

// Whole messages through DecryptData: the block cipher and the framing.
void BM_DecryptData(benchmark::State& state)
{
    const CRijndael::Bytes key = passPhraseBytes();
    const CRijndael::Bytes message(static_cast<std::size_t>(state.range(0)), 0x5A);
    const CRijndael::Bytes cipher = CRijndael().EncryptData(message, key);
    for (auto _ : state) {
        CRijndael engine;
        benchmark::DoNotOptimize(engine.DecryptData(cipher, key));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(cipher.size()));
}
BENCHMARK(BM_DecryptData)->Arg(60)->Arg(1 << 10)->Arg(64 << 10);

// The same on the round tables alone, as on a processor without AES instructions.
void BM_DecryptDataPortable(benchmark::State& state)
{
    CRijndael::allowHardware(false);
    BM_DecryptData(state);
    CRijndael::allowHardware(true);
}
BENCHMARK(BM_DecryptDataPortable)->Arg(60)->Arg(1 << 10)->Arg(64 << 10);

// One question-file line as the loader deciphers it: hex in, UTF-8 out.
void BM_DecryptString(benchmark::State& state)
{
    const std::string text(static_cast<std::size_t>(state.range(0)), 'q');
    const std::string line = kesta::EncryptString(text, kesta::QuestionPassPhrase);
    for (auto _ : state)
        benchmark::DoNotOptimize(kesta::DecryptString(line, kesta::QuestionPassPhrase));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(line.size() / 2));
}
BENCHMARK(BM_DecryptString)->Arg(40)->Arg(200)->Arg(2000);

} // namespace
