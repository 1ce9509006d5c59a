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

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
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

void removeTemp()
{
    if (!tempPath.empty())
        ::unlink(tempPath.c_str());
}

void writeTemp(std::string_view bytes)
{
    std::FILE* f = std::fopen(tempPath.c_str(), "wb");
    if (f == nullptr)
        fail("cannot write the temporary file", tempPath);
    if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), f) != bytes.size())
        fail("short write to the temporary file", tempPath);
    std::fclose(f);
}

// Records what the load shows, checking the order of events as they come.
class Recorder : public LoadObserver {
public:
    void progressShown(bool shown) override { shownEvents.push_back(shown); }
    void progress(int value) override
    {
        if (value != lastProgress + 1 && !(lastProgress == 0 && value == 1))
            fail("progress does not count up by one");
        if (value < 1 || value > 100)
            fail("progress outside 1..100");
        lastProgress = value;
        ++progressCalls;
    }
    void status(const std::string& text) override { statuses.push_back(text); }
    void introduction(const std::string& page) override
    {
        if (page.find('\t') != std::string::npos)
            fail("introduction page still holds a TAB");
        ++introductions;
    }

    std::vector<bool> shownEvents;
    std::vector<std::string> statuses;
    int lastProgress = 0;
    int progressCalls = 0;
    int introductions = 0;
};

// The file's lines as the format defines them: CR LF, a lone CR and a lone
// LF each end a line; a last line without an end still counts.
std::vector<std::string_view> lines(std::string_view content)
{
    std::vector<std::string_view> out;
    std::size_t start = 0;
    while (start < content.size()) {
        std::size_t end = start;
        while (end < content.size() && content[end] != '\r' && content[end] != '\n')
            ++end;
        out.push_back(content.substr(start, end - start));
        if (end == content.size())
            break;
        start = end + (content[end] == '\r' && end + 1 < content.size() && content[end + 1] == '\n' ? 2 : 1);
    }
    return out;
}

bool hasSpaceAtEnds(const std::string& s)
{
    return !s.empty() && (s.front() == ' ' || s.back() == ' ');
}

// What a plain-text file must load to, derived from the format alone.
struct Expected {
    bool throws = false;
    int questions = 0;
    bool tooManyQuestions = false;
    std::string intro;
    int headerLines = 0;
};

Expected expectPlain(const std::vector<std::string_view>& fileLines)
{
    Expected e;
    long markedBody = 0;
    for (const std::string_view raw : fileLines) {
        if (raw.empty())
            continue;
        const bool marked = raw.front() == '#';
        const std::string_view text = marked ? raw.substr(1) : raw;
        if (text.substr(0, 2) == "!!")
            e.throws = true;
        ++e.headerLines;
        if (e.headerLines <= 2)
            e.intro = std::string(text);
        else if (e.headerLines <= 4)
            e.intro.append("\r\n\r\n").append(text);
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
    std::string pattern = std::string(dir != nullptr && *dir != '\0' ? dir : "/tmp") + "/kesta-loader-fuzz-XXXXXX";
    const int fd = ::mkstemp(pattern.data());
    if (fd < 0)
        fail("cannot create a temporary file", pattern);
    ::close(fd);
    tempPath = pattern;
    std::atexit(removeTemp);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string_view content(reinterpret_cast<const char*>(data), size);
    const bool plain = !content.empty() && content.front() == '\x01';
    if (plain)
        content.remove_prefix(1);
    writeTemp(content);

    const LineDecipher identity = [](const std::string& line) -> std::string {
        if (line.rfind("!!", 0) == 0)
            throw err::make(err::TypeMismatch);
        return line;
    };
    const LineDecipher real = decipherWith(std::string(QuestionPassPhrase));

    auto list = std::make_unique<QuestionList>();
    Recorder recorder;
    LoadResult result;
    try {
        result = LoadQuestionFile(tempPath, *list, recorder, plain ? identity : real);
    } catch (const RuntimeError&) {
        // The fatal report for an undecipherable line. Anything else escapes
        // to libFuzzer as a finding.
        const std::vector<std::string_view> fileLines = lines(content);
        if (plain && fileLines.size() < MaxQuestionLines && !expectPlain(fileLines).throws)
            fail("a load raised though every line deciphers");
        return 0;
    }

    const int count = list->QuestionCount;
    if (count < 0 || count > MaxQuestions)
        fail("QuestionCount outside 0..1000", std::to_string(count));

    const std::vector<std::string_view> fileLines = lines(content);
    if (result.tooManyLines != (fileLines.size() >= MaxQuestionLines))
        fail("the too-many-lines warning does not match the line count", std::to_string(fileLines.size()));

    // Progress: one step a round (lines + 1 rounds, at most 10000), from 1, stopping at 100.
    const std::size_t rounds = std::min<std::size_t>(fileLines.size(), MaxQuestionLines - 1) + 1;
    if (recorder.lastProgress != static_cast<int>(std::min<std::size_t>(rounds + 1, 100)))
        fail("progress bar ends at the wrong value", std::to_string(recorder.lastProgress));
    if (recorder.introductions != 1)
        fail("the introduction was not shown exactly once");
    if (recorder.statuses != std::vector<std::string>{LoadingText, ReadyText})
        fail("status texts out of order");
    if (recorder.shownEvents != std::vector<bool>{true, false})
        fail("progress bar not shown and hidden once");

    std::vector<int> bad;
    for (int k = 1; k <= count; ++k) {
        const QuestionRecord& r = list->Questions[k];
        if (hasSpaceAtEnds(r.Question) || hasSpaceAtEnds(r.Explanation) || hasSpaceAtEnds(r.Answer))
            fail("a stored text is not trimmed");
        if (k > 1 && !r.Intro.empty())
            fail("an introduction outside record 1");
        if (Utf16Length(r.Answer) != 1)
            bad.push_back(k);
    }
    if (bad != result.badAnswers)
        fail("the bad-answer list does not match the answers");

    if (plain && fileLines.size() < MaxQuestionLines) {
        const Expected e = expectPlain(fileLines);
        if (e.throws)
            fail("an undecipherable line was loaded");
        if (count != e.questions)
            fail("question count differs from the marked lines", std::to_string(count));
        if (result.tooManyQuestions != e.tooManyQuestions)
            fail("the too-many-questions warning does not match the file");
        if (list->Questions[1].Intro != e.intro)
            fail("introduction differs from header lines 2 to 4", list->Questions[1].Intro);
    }
    return 0;
}
