// Fuzzes the question-file loader with whole files.
//
// Contract: any file loads or raises kesta::RuntimeError (an undecipherable
// line is fatal); QuestionCount stays within 0..1000, the corrupt warning's
// conditions match the file, and the load reports progress as it should.
//
// The input is the file itself, deciphered with the program's pass phrase.
// An input starting with byte 0x01 is instead a plain-text file (the rest)
// read with a decipher that returns each line as it stands, so the fuzzer can
// reach the structural limits (1000 questions, 10000 lines) that enciphered
// mutations seldom get to; there a line starting "!!" stands for an
// undecipherable one.
#include "common/core/RuntimeError.h"
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using namespace kesta;

[[noreturn]] void fail(const char* what, std::string_view detail = {})
{
    std::fprintf(stderr, "loader_fuzz: %s [%.*s]\n", what, static_cast<int>(detail.size()), detail.data());
    std::abort();
}

// The loader reads only from a path, so each input goes through one
// temporary file of this process.
std::string tempPath;

// Records what the load shows; the bar counts up by one within 1..100.
struct Recorder : LoadObserver {
    void progress(int value) override
    {
        if (value < 1 || value > 100 || (value != lastProgress + 1 && !(lastProgress == 0 && value == 1)))
            fail("progress does not count up by one within 1..100", std::to_string(value));
        lastProgress = value;
    }
    void introduction(const std::string& page) override
    {
        if (page.find('\t') != std::string::npos)
            fail("introduction page still holds a TAB");
        ++introductions;
    }

    int lastProgress = 0;
    int introductions = 0;
};

// The file's lines as the format defines them: CR LF, a lone CR and a lone
// LF each end a line; a last line without an end still counts.
std::vector<std::string_view> lines(std::string_view content)
{
    std::vector<std::string_view> out;
    while (!content.empty()) {
        const std::size_t end = std::min(content.find_first_of("\r\n"), content.size());
        out.push_back(content.substr(0, end));
        content.remove_prefix(std::min(content.size(), end + (content.substr(end, 2) == "\r\n" ? 2 : 1)));
    }
    return out;
}

// What a plain-text file must load to, derived from the format alone.
struct Expected {
    bool throws = false;
    int questions = 0;
    bool tooManyQuestions = false;
    std::string intro;
};

Expected expectPlain(const std::vector<std::string_view>& fileLines)
{
    Expected e;
    long headerLines = 0, markedBody = 0;
    for (const std::string_view raw : fileLines) {
        if (raw.empty())
            continue;
        const bool marked = raw.front() == '#';
        const std::string text(marked ? raw.substr(1) : raw);
        e.throws = e.throws || text.starts_with("!!");
        if (++headerLines <= 4)
            e.intro = headerLines <= 2 ? text : e.intro + "\r\n\r\n" + text;
        else if (marked)
            ++markedBody;
    }
    const long blocks = (markedBody + 2) / 3; // every third marked line opens a question
    e.questions = static_cast<int>(std::min<long>(blocks, MaxQuestions));
    e.tooManyQuestions = blocks > MaxQuestions;
    return e;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    const char* dir = std::getenv("TMPDIR");
    tempPath = std::string(dir != nullptr && *dir != '\0' ? dir : "/tmp") + "/kesta-loader-fuzz-";
    tempPath += std::to_string(::getpid());
    std::atexit([] { ::unlink(tempPath.c_str()); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string_view content(reinterpret_cast<const char*>(data), size);
    const bool plain = !content.empty() && content.front() == '\x01';
    if (plain)
        content.remove_prefix(1);
    std::FILE* file = std::fopen(tempPath.c_str(), "wb");
    if (file == nullptr || std::fwrite(content.data(), 1, content.size(), file) != content.size())
        fail("cannot write the temporary file", tempPath);
    std::fclose(file);

    const LineDecipher identity = [](const std::string& line) -> std::string {
        return line.starts_with("!!") ? throw err::make(err::TypeMismatch) : line;
    };
    const LineDecipher decipher = plain ? identity : decipherWith(std::string(QuestionPassPhrase));
    const std::vector<std::string_view> fileLines = lines(content);
    // The line limit cuts a plain file short, so only a shorter one is fully predictable.
    const std::optional<Expected> e =
        plain && fileLines.size() < MaxQuestionLines ? std::optional(expectPlain(fileLines)) : std::nullopt;

    auto list = std::make_unique<QuestionList>();
    Recorder recorder;
    LoadResult result;
    try {
        result = LoadQuestionFile(tempPath, *list, recorder, decipher);
    } catch (const RuntimeError&) {
        // The fatal report for an undecipherable line. Anything else escapes
        // to libFuzzer as a finding.
        if (e && !e->throws)
            fail("a load raised though every line deciphers");
        return 0;
    }

    const int count = list->QuestionCount;
    if (count < 0 || count > MaxQuestions)
        fail("QuestionCount outside 0..1000", std::to_string(count));
    if (result.tooManyLines != (fileLines.size() >= MaxQuestionLines))
        fail("the too-many-lines warning does not match the line count", std::to_string(fileLines.size()));

    // Progress: one step a round (lines + 1 rounds, at most 10000), from 1, stopping at 100.
    const std::size_t rounds = std::min<std::size_t>(fileLines.size(), MaxQuestionLines - 1) + 1;
    if (recorder.lastProgress != static_cast<int>(std::min<std::size_t>(rounds + 1, 100)))
        fail("progress bar ends at the wrong value", std::to_string(recorder.lastProgress));
    if (recorder.introductions != 1)
        fail("the introduction was not shown exactly once");

    std::vector<int> bad;
    for (int k = 1; k <= count; ++k) {
        const QuestionRecord& r = list->Questions[k];
        for (const std::string* text : {&r.Question, &r.Explanation, &r.Answer}) {
            if (!text->empty() && (text->front() == ' ' || text->back() == ' '))
                fail("a stored text is not trimmed");
        }
        if (k > 1 && !r.Intro.empty())
            fail("an introduction outside record 1");
        if (Utf16Length(r.Answer) != 1)
            bad.push_back(k);
    }
    if (bad != result.badAnswers)
        fail("the bad-answer list does not match the answers");

    if (e && (e->throws || count != e->questions || result.tooManyQuestions != e->tooManyQuestions))
        fail("an undecipherable line loaded, or the question count or its warning differs from the marked lines");
    if (e && list->Questions[1].Intro != e->intro)
        fail("introduction differs from header lines 2 to 4", list->Questions[1].Intro);
    return 0;
}
