// Loading a question file against deciphering its ciphertext alone, for a
// bank of 1000 questions and one of 60,000 lines; and the titles of a full
// Questions folder. The load should cost at most twice the cipher's time.
#include "BenchBanks.h"
#include "app/core/Catalogue.h"
#include "questions/core/QuestionLoader.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace {

using namespace kesta;

const std::string& bankPath(int which)
{
    static const std::string paths[] = {bench::scratch().write("full.kqb", bench::bankText(1000)),
                                        bench::scratch().write("long.kqb", bench::longBankText())};
    return paths[which];
}

// Every line's ciphertext, hex already decoded: what the block cipher alone has to decipher.
std::vector<std::uint8_t> ciphertextOf(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::string content((std::istreambuf_iterator<char>(in)), {});
    std::vector<std::uint8_t> bytes;
    LineSplitter lines(content);
    for (std::string_view line; lines.next(line);) {
        line.remove_prefix(!line.empty() && line.front() == '#');
        for (std::size_t i = 0; i + 1 < line.size(); i += 2)
            bytes.push_back(static_cast<std::uint8_t>(std::stoi(std::string(line.substr(i, 2)), nullptr, 16)));
    }
    return bytes;
}

void BM_DecipherAlone(benchmark::State& state)
{
    std::vector<std::uint8_t> bytes = ciphertextOf(bankPath(static_cast<int>(state.range(0))));
    std::vector<std::uint8_t> key;
    for (const char c : QuestionPassPhrase.substr(0, 16))
        key.insert(key.end(), {static_cast<std::uint8_t>(c), 0});
    CRijndael cipher;
    cipher.gkey(8, 8, key);
    for (auto _ : state) {
        for (std::size_t p = 0; p + 32 <= bytes.size(); p += 32)
            cipher.Decrypt(std::span(bytes).subspan(p, 32));
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(BM_DecipherAlone)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_ReadFile(benchmark::State& state)
{
    const std::string& path = bankPath(static_cast<int>(state.range(0)));
    LoadObserver quiet;
    const LineDecipher decipher = decipherWith(QuestionPassPhrase);
    for (auto _ : state) {
        auto list = std::make_unique<QuestionList>();
        benchmark::DoNotOptimize(LoadQuestionFile(path, *list, quiet, decipher));
    }
}
BENCHMARK(BM_ReadFile)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The menus decipher the title line of each of the 42 catalogue files, however large each file is.
void BM_TitlesOf42Banks(benchmark::State& state)
{
    std::vector<std::string> paths;
    for (int k = 1; k <= 42; ++k)
        paths.push_back(bench::scratch().write("title" + std::to_string(k) + ".kqb",
                                               bench::bankText(100, "KESTA Exam Demo " + std::to_string(k))));
    for (auto _ : state) {
        for (const std::string& path : paths)
            benchmark::DoNotOptimize(DecryptString(*titleLine(path), QuestionPassPhrase));
    }
}
BENCHMARK(BM_TitlesOf42Banks)->Unit(benchmark::kMicrosecond);

} // namespace
