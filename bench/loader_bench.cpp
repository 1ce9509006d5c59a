// Loading a full question file, and reading the titles of a Questions folder.
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace kesta;

std::string line(const std::string& text, bool marked = false)
{
    std::string out = marked ? "#" : "";
    out += EncryptString(text, QuestionPassPhrase);
    out += "\r\n";
    return out;
}

// A scratch folder with the benchmark's question files, removed at exit.
class BenchFolder {
public:
    BenchFolder() : path_(fs::temp_directory_path() / ("kesta-bench-" + std::to_string(::getpid())))
    {
        fs::create_directories(path_);
    }
    ~BenchFolder()
    {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    std::string file(const std::string& name) const { return (path_ / name).string(); }

private:
    fs::path path_;
};

const BenchFolder& folder()
{
    static const BenchFolder instance;
    return instance;
}

void write(const std::string& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

// 1000 questions of nine lines each (question, four choices, two explanation
// paragraphs, answer, blank) after the header: 9004 lines.
const std::string& fullBank()
{
    static const std::string path = [] {
        const std::string choice(40, 'c');
        std::string content = line("KESTA Exam Demo 1") + line(std::string(120, 'i')) + line(std::string(120, 'j')) +
                              line(std::string(120, 'k'));
        for (int k = 1; k <= 1000; ++k) {
            content += line("Question " + std::to_string(k) + std::string(90, 'q'), true);
            for (const char letter : {'a', 'b', 'c', 'd'})
                content += line(std::string(1, letter).append(") ").append(choice));
            content += line(std::string(200, 'e'), true) + line(std::string(150, 'f'));
            content += line("b", true) + "\r\n";
        }
        const std::string p = folder().file("full.kqb");
        write(p, content);
        return p;
    }();
    return path;
}

void BM_ReadFile1000Questions(benchmark::State& state)
{
    const std::string& path = fullBank();
    LoadObserver quiet;
    const LineDecipher decipher = decipherWith(std::string(QuestionPassPhrase));
    for (auto _ : state) {
        auto list = std::make_unique<QuestionList>();
        const LoadResult result = LoadQuestionFile(path, *list, quiet, decipher);
        if (result.corrupt() || list->QuestionCount != 1000)
            state.SkipWithError("the generated bank did not load cleanly");
        benchmark::DoNotOptimize(list.get());
    }
}
BENCHMARK(BM_ReadFile1000Questions)->Unit(benchmark::kMillisecond);

// The menus decipher the first line of each of the 42 catalogue files.
void BM_TitlesOf42Files(benchmark::State& state)
{
    std::vector<std::string> paths;
    for (int k = 1; k <= 42; ++k) {
        paths.push_back(folder().file("title" + std::to_string(k) + ".kqb"));
        write(paths.back(), line("KESTA Exam Demo " + std::to_string(k)) + line("intro") + line("intro") + line("intro"));
    }
    for (auto _ : state) {
        for (const std::string& path : paths) {
            std::ifstream in(path, std::ios::binary);
            std::string first;
            std::getline(in, first);
            if (!first.empty() && first.back() == '\r')
                first.pop_back();
            benchmark::DoNotOptimize(DecryptString(first, QuestionPassPhrase));
        }
    }
}
BENCHMARK(BM_TitlesOf42Files)->Unit(benchmark::kMicrosecond);

} // namespace
