// Time and peak resident memory for the files nobody should hand the program
// but anyone can: a huge sparse options file, a question file of nothing but
// line ends, a 200 MB file handed to kesta-qbank check; check of a 7 MB
// bank; and one score rotation. Each case runs in a child process of its own, so the peak memory
// reported ("peak_MB", the child's maximum resident set) is that case's alone,
// plus the few megabytes of the benchmark process it starts as. With the
// windows built, the main window also shows quizzes of hostile pages (an
// image that names a device or a pipe, one huge question): the time is from
// choosing the quiz to its first question on screen.
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
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef KESTA_BENCH_WINDOWS
#include "app/ui/App.h"
#include "app/ui/Form1.h"

#include <QAction>
#include <QApplication>
#endif

namespace {

using namespace kesta;

// Answers every message box and records nothing: the cases only need to run.
struct QuietHost final : Host {
    std::optional<std::string> appData;
    MessageAnswer messageBox(const MessageBoxRequest&) override { return MessageAnswer::Ok; }
    void execModal(QDialog&) override {}
    [[noreturn]] void endProgram(int status) override { std::_Exit(status); }
    std::chrono::system_clock::time_point now() override { return {}; }
    std::uint64_t randomSeed() override { return 1; }
    void beep() override {}
    Printer* printer() override { return nullptr; }
    std::optional<std::string> knownFolder(std::int32_t) override { return appData; }
    bool startSystemInformation() override { return false; }
};

struct Measured {
    double seconds;
    double megabytes; // peak resident
    bool killed;      // ended by a signal: out of time or of memory
};

// Runs `child` in a process of its own, which may take at most 30 s and 2 GB:
// the seconds it took (or those it reports itself, when it times only a part
// of its work), its peak resident megabytes and whether it was killed.
Measured measure(const std::function<double()>& child)
{
    int seconds[2];
    if (::pipe(seconds) != 0)
        std::abort();
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = ::fork();
    if (pid == 0) {
        const rlimit memory{rlim_t{2} << 30, rlim_t{2} << 30};
        ::setrlimit(RLIMIT_AS, &memory);
        ::alarm(30);
        const double part = child();
        (void)!::write(seconds[1], &part, sizeof part);
        std::_Exit(0);
    }
    ::close(seconds[1]);
    int status = 0;
    struct rusage usage {};
    ::wait4(pid, &status, 0, &usage);
    double part = -1;
    const bool reported = ::read(seconds[0], &part, sizeof part) == sizeof part && part >= 0;
    ::close(seconds[0]);
    const double whole = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return {reported ? part : whole, usage.ru_maxrss / 1024.0, WIFSIGNALED(status)};
}

void reportTimed(benchmark::State& state, const std::function<double()>& child)
{
    double peak = 0;
    bool killed = false;
    for (auto _ : state) {
        const Measured m = measure(child);
        state.SetIterationTime(m.seconds);
        peak = std::max(peak, m.megabytes);
        killed = killed || m.killed;
    }
    state.counters["peak_MB"] = peak;
    state.counters["killed"] = killed;
}

void report(benchmark::State& state, const std::function<void()>& child)
{
    reportTimed(state, [&] { return child(), -1.0; });
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
    if (!std::freopen("/dev/null", "w", stdout) || !std::freopen("/dev/null", "w", stderr))
        std::_Exit(127); // its output would garble the figures
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

#ifdef KESTA_BENCH_WINDOWS
// Installs a program whose Questions hold `bank` alone, with its data tree,
// and returns the child that runs it: it chooses the quiz, starts it and
// returns the seconds until its first question is on screen (the
// introduction shown on the way).
std::function<double()> firstQuestionOf(const std::string& name, const std::string& bank)
{
    const std::string root = bench::scratch().path(name);
    for (const char* folder : {"/program/Questions", "/appdata/MORVO/KESTA/All/Log", "/appdata/MORVO/KESTA/All/User"})
        std::filesystem::create_directories(root + folder);
    bench::scratch().write(name + "/program/Questions/quiz.kqb", bank);
    return [root] {
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
        int argc = 1;
        char program[] = "files_bench";
        char* argv[] = {program, nullptr};
        QApplication application(argc, argv);
        QuietHost host;
        host.appData = root + "/appdata";
        App app(host, root + "/program");
        app.showMainWindow();
        QApplication::processEvents();
        const auto start = std::chrono::steady_clock::now();
        app.windows.form1->Review1[0]->trigger();
        QApplication::processEvents();
        app.windows.form1->Start_Test_Click();
        QApplication::processEvents();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
}

// A quiz of one question whose introduction shows an image read from a device
// (0) or from a named pipe nobody writes (1).
void BM_FirstQuestionAfterAnImageOf(benchmark::State& state)
{
    std::string source = "/dev/zero";
    if (state.range(0) == 1)
        ::mkfifo((source = bench::scratch().path("image.fifo")).c_str(), 0666);
    const std::string bank = bench::line("KESTA Quiz Demo - Image") +
                             bench::line("<img src=\"" + source + "\" width=10 height=10>") + bench::line("i2") +
                             bench::line("i3") + bench::line("Question<br>a) 1", true) + bench::line("E", true) +
                             bench::line("a", true);
    reportTimed(state, firstQuestionOf("image" + std::to_string(state.range(0)), bank));
}
BENCHMARK(BM_FirstQuestionAfterAnImageOf)->Arg(0)->Arg(1)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

// A quiz whose one question is a paragraph of state.range(0) KiB: words
// (range(1) 0) or a single word (1).
void BM_FirstQuestionOfKilobytes(benchmark::State& state)
{
    std::string text;
    while (text.size() < static_cast<std::size_t>(state.range(0)) << 10)
        text += state.range(1) == 0 ? "lorem ipsum " : "xxxxxxxxxxxx";
    const std::string bank = bench::line("KESTA Quiz Demo - Huge") + bench::line("i1") + bench::line("i2") +
                             bench::line("i3") + bench::line(text, true) + bench::line("<br>a) 1") +
                             bench::line("E", true) + bench::line("a", true);
    reportTimed(state, firstQuestionOf("huge" + std::to_string(state.range(0)) + std::to_string(state.range(1)), bank));
    state.counters["bank_MB"] = static_cast<double>(bank.size()) / (1 << 20);
}
BENCHMARK(BM_FirstQuestionOfKilobytes)
    ->Args({1024, 0})
    ->Args({1024, 1})
    ->Args({8000, 0})
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
#endif

} // namespace
