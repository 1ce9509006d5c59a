// Start-up to the idle main window with a full Questions folder: 42 question
// files of 1000 questions each, enough to fill both catalogues (31 exams,
// 11 quizzes). Measures creating the application object, loading the main
// window (the catalogue scan, the menus, the idle page) and showing it; the
// splash's four seconds are not part of it. Peak resident memory is reported
// as a counter.
//
// Run headless: QT_QPA_PLATFORM=offscreen startup_bench
// "startup_bench --write-banks DIR" only writes the 42 files into DIR, for
// measuring the installed program from outside with the same data.
#include "app/ui/App.h"
#include "app/ui/Form1.h"
#include "questions/core/Cipher.h"

#include <QApplication>
#include <QCoreApplication>
#include <QEvent>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace kesta;
using Clock = std::chrono::steady_clock;

constexpr int Files = 42;
constexpr int QuestionsPerFile = 1000;

std::string line(const std::string& text, bool marked = false)
{
    std::string out = marked ? "#" : "";
    out += EncryptString(text, QuestionPassPhrase);
    out += "\r\n";
    return out;
}

// The introduction and 1000 questions of nine lines each (question, four
// choices, two explanation lines, answer, blank): about 9,000 lines. The same
// body serves every file; only the title line differs.
std::string body()
{
    const std::string choice(40, 'c');
    std::string content = line(std::string(120, 'i')) + line(std::string(120, 'j')) + line(std::string(120, 'k'));
    for (int k = 1; k <= QuestionsPerFile; ++k) {
        content += line("Question " + std::to_string(k) + " " + std::string(90, 'q'), true);
        for (const char letter : {'a', 'b', 'c', 'd'})
            content += line(std::string(1, letter) + ") " + choice);
        content += line(std::string(200, 'e'), true) + line(std::string(150, 'f'));
        content += line("b", true) + "\r\n";
    }
    return content;
}

// Exams and quizzes alternate while both catalogues have room; the rest are
// exams, so the 42 files fill 31 exam and 11 quiz slots and every menu item is built.
void writeBanks(const fs::path& folder)
{
    fs::create_directories(folder);
    const std::string rest = body();
    int exams = 0;
    int quizzes = 0;
    for (int k = 1; k <= Files; ++k) {
        const bool quiz = k % 2 == 0 && quizzes < 11;
        const std::string title =
            quiz ? "KESTA Quiz Demo " + std::to_string(++quizzes) : "KESTA Exam Demo " + std::to_string(++exams);
        char name[32];
        std::snprintf(name, sizeof name, "bank%02d.kqb", k);
        std::ofstream out(folder / name, std::ios::binary);
        out << line(title) << rest;
        if (!out)
            throw std::runtime_error("cannot write " + (folder / name).string());
    }
}

// What the start-up asks of the platform, answered without a user: any
// message box or request to end means the start-up did not reach idle.
class BenchHost final : public Host {
public:
    explicit BenchHost(std::string appData) : appData_(std::move(appData)) {}

    MessageAnswer messageBox(const MessageBoxRequest& request) override
    {
        std::fprintf(stderr, "unexpected message box: %s\n", request.text.c_str());
        std::abort();
    }
    void execModal(QDialog& /*dialog*/) override { std::abort(); }
    [[noreturn]] void endProgram(int status) override
    {
        std::fprintf(stderr, "the program ended with %d during start-up\n", status);
        std::_Exit(status == 0 ? 1 : status);
    }
    std::chrono::system_clock::time_point now() override { return std::chrono::system_clock::now(); }
    std::uint64_t randomSeed() override { return ++seed_; }
    void beep() override {}
    Printer* printer() override { return nullptr; }
    std::optional<std::string> knownFolder(std::int32_t /*folderId*/) override { return appData_; }
    bool startSystemInformation() override { return false; }

private:
    std::string appData_;
    std::uint64_t seed_ = 0;
};

// A program folder with the 42 files and an all-users data tree, made once
// per process and removed at exit.
class Installation {
public:
    Installation() : root_(fs::temp_directory_path() / ("kesta-startup-" + std::to_string(::getpid())))
    {
        for (const char* folder : {"appdata/MORVO/KESTA/All/Log", "appdata/MORVO/KESTA/All/User"})
            fs::create_directories(root_ / folder);
        writeBanks(root_ / "program" / "Questions");
    }
    ~Installation()
    {
        std::error_code ignored;
        fs::remove_all(root_, ignored);
    }
    std::string appData() const { return (root_ / "appdata").string(); }
    std::string programDir() const { return (root_ / "program").string(); }

private:
    fs::path root_;
};

const Installation& installation()
{
    static const Installation instance;
    return instance;
}

// Peak resident set of the process so far, in MiB (VmHWM).
double peakResidentMiB()
{
    std::ifstream status("/proc/self/status");
    std::string key;
    while (status >> key) {
        if (key == "VmHWM:") {
            double kib = 0;
            status >> kib;
            return kib / 1024.0;
        }
        status.ignore(4096, '\n');
    }
    return 0;
}

void settle()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

// One start: the application object, the main window loaded and shown, and
// the events that showing it queues handled. Returns the program, still running.
std::unique_ptr<App> startToIdle(BenchHost& host)
{
    auto app = std::make_unique<App>(host, installation().programDir());
    app->showMainWindow();
    QCoreApplication::processEvents();
    return app;
}

double milliseconds(Clock::duration d)
{
    return std::chrono::duration<double, std::milli>(d).count();
}

void BM_StartToIdleMainWindow(benchmark::State& state)
{
    BenchHost host(installation().appData());

    // The first start in a process also loads fonts and styles; it is what a user waits for.
    static double firstStart = [&] {
        const auto t0 = Clock::now();
        auto app = startToIdle(host);
        const double ms = milliseconds(Clock::now() - t0);
        if (!app->windows.form1->Chapter1[30]->isVisible() || !app->windows.form1->Review1[10]->isVisible())
            std::fprintf(stderr, "the catalogue is not full: the generated files were not all classified\n");
        app.reset();
        settle();
        return ms;
    }();

    for (auto _ : state) {
        auto app = startToIdle(host);
        state.PauseTiming();
        app.reset();
        settle();
        state.ResumeTiming();
    }
    state.counters["first_start_ms"] = firstStart;
    state.counters["peak_rss_MiB"] = peakResidentMiB();
}
BENCHMARK(BM_StartToIdleMainWindow)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::strcmp(argv[1], "--write-banks") == 0) {
        writeBanks(argv[2]);
        return 0;
    }
    const auto t0 = Clock::now();
    QApplication application(argc, argv);
    const double qappMs = milliseconds(Clock::now() - t0);
    std::fprintf(stderr, "QApplication: %.1f ms, peak resident before any window: %.1f MiB\n", qappMs,
                 peakResidentMiB());

    installation(); // the files are written before anything is timed
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
