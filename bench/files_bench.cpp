// Time and peak resident memory for the files nobody should hand the program
// but anyone can: a huge sparse options file, a question file of nothing but
// line ends, a 200 MB file handed to kesta-qbank check; check of a 7 MB
// bank; and one score rotation. Each case runs in a child process of its own, so the peak memory
// reported ("peak_MB", the child's maximum resident set) is that case's alone,
// plus the few megabytes of the benchmark process it starts as.
#include "BenchBanks.h"
#include "app/core/Options.h"
#include "common/core/ProgramData.h"
#include "progress/core/ScoreSlots.h"
#include "questions/core/QuestionLoader.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <memory>

#include <sys/resource.h>
#include <sys/wait.h>

namespace {

using namespace kesta;

// Answers every message box and records nothing: the cases only need to run.
struct QuietHost final : Host {
    MessageAnswer messageBox(const MessageBoxRequest&) override { return MessageAnswer::Ok; }
    void execModal(QDialog&) override {}
    [[noreturn]] void endProgram(int status) override { std::_Exit(status); }
    std::chrono::system_clock::time_point now() override { return {}; }
    std::uint64_t randomSeed() override { return 1; }
    void beep() override {}
    Printer* printer() override { return nullptr; }
    std::optional<std::string> knownFolder(std::int32_t) override { return std::nullopt; }
    bool startSystemInformation() override { return false; }
};

// Runs `child` in a process of its own; the seconds it took and its peak resident megabytes.
std::pair<double, double> measure(const std::function<void()>& child)
{
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = ::fork();
    if (pid == 0) {
        child();
        std::_Exit(0);
    }
    int status = 0;
    struct rusage usage {};
    ::wait4(pid, &status, 0, &usage);
    return {std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), usage.ru_maxrss / 1024.0};
}

void report(benchmark::State& state, const std::function<void()>& child)
{
    double peak = 0;
    for (auto _ : state) {
        const auto [seconds, megabytes] = measure(child);
        state.SetIterationTime(seconds);
        peak = std::max(peak, megabytes);
    }
    state.counters["peak_MB"] = peak;
}

std::string sized(const std::string& name, std::uintmax_t bytes, char fill)
{
    const std::string path = bench::scratch().path(name);
    if (fill == 0) { // sparse: no disk space, any size
        std::ofstream(path, std::ios::binary) << "1\r\n";
        std::filesystem::resize_file(path, bytes);
        return path;
    }
    std::ofstream out(path, std::ios::binary);
    const std::string chunk(1 << 20, fill);
    for (std::uintmax_t written = 0; written < bytes; written += chunk.size())
        out << chunk;
    return path;
}

void qbank(const std::string& command, const std::string& path)
{
    std::freopen("/dev/null", "w", stdout);
    std::freopen("/dev/null", "w", stderr);
    ::execl(KESTA_QBANK, "kesta-qbank", command.c_str(), path.c_str(), static_cast<char*>(nullptr));
}

void BM_OptionsFileOfOneGigabyte(benchmark::State& state)
{
    const std::string base = bench::scratch().path("appdata") + "/";
    std::filesystem::create_directories(base + "MORVO/KESTA/All/User");
    DataFolders folders;
    folders.derive(base);
    report(state, [&] {
        sized("appdata/MORVO/KESTA/All/User/option.usr", std::uintmax_t{1} << 30, 0);
        QuietHost host;
        UserOptions options;
        ReadOptions(host, folders, options);
    });
}
BENCHMARK(BM_OptionsFileOfOneGigabyte)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);

// 50 MB is refused by its size; 30 MB, under the ceiling, is split line by line.
void BM_QuestionFileOfLineEnds(benchmark::State& state)
{
    const std::string path = sized("ends.kqb", static_cast<std::uintmax_t>(state.range(0)) << 20, '\n');
    report(state, [&] {
        auto list = std::make_unique<QuestionList>();
        LoadObserver quiet;
        try {
            LoadQuestionFile(path, *list, quiet, decipherWith(QuestionPassPhrase));
        } catch (const RuntimeError&) {
        }
    });
}
BENCHMARK(BM_QuestionFileOfLineEnds)->Arg(50)->Arg(30)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);

void BM_QbankCheckOf200Megabytes(benchmark::State& state)
{
    const std::string path = sized("huge.kqb", std::uintmax_t{200} << 20, 'A');
    report(state, [&] { qbank("check", path); });
}
BENCHMARK(BM_QbankCheckOf200Megabytes)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);

void BM_QbankCheckOf7Megabytes(benchmark::State& state)
{
    const std::string path = bench::scratch().write("long.kqb", bench::longBankText());
    report(state, [&] { qbank("check", path); });
    state.counters["file_MB"] = static_cast<double>(std::filesystem::file_size(path)) / (1 << 20);
}
BENCHMARK(BM_QbankCheckOf7Megabytes)->UseManualTime()->Iterations(20)->Unit(benchmark::kMillisecond);

// A sixth score with all five slots taken: the lock, the new score put on
// disk first, slot 1 deleted, four moves, and the new score renamed into slot 5.
void BM_ScoreRotation(benchmark::State& state)
{
    const std::string base = bench::scratch().path("scores") + "/";
    std::filesystem::create_directories(base + "MORVO/KESTA/All/Log");
    std::filesystem::create_directories(base + "MORVO/KESTA/All/User");
    DataFolders folders;
    folders.derive(base);
    const std::string progress = folders.UserDir + "/quiz.kqb.usr";
    for (int k = 1; k <= 5; ++k)
        std::ofstream(progress + ".score" + std::to_string(k)) << "013000300405\r\n001\r\na";
    report(state, [&] {
        QuietHost host;
        UserOptions options;
        ErrorReporter reporter(host, folders);
        ProgramData data(reporter, folders, options);
        saveScore(data, progress, "013000300405\r\n001\r\na");
    });
}
BENCHMARK(BM_ScoreRotation)->UseManualTime()->Iterations(20)->Unit(benchmark::kMillisecond);

} // namespace
