// The order of a test is drawn when it starts; at the 1000-question limit the
// draw with its re-scan on every collision must still feel instant.
#include "session/core/QuestionDraw.h"

#include <benchmark/benchmark.h>
#include <chrono>

namespace {

void BM_Shuffle(benchmark::State& state)
{
    const auto count = static_cast<kesta::Int16>(state.range(0));
    std::uint64_t seed = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    kesta::QuestionDraw draw([&seed] { return ++seed; });
    kesta::SessionState session;
    for (auto _ : state) {
        kesta::shuffleQuestions(session, count, draw);
        benchmark::DoNotOptimize(session.QuestionOrder[count]);
    }
}

BENCHMARK(BM_Shuffle)->Arg(40)->Arg(250)->Arg(1000)->Unit(benchmark::kMillisecond);

} // namespace
