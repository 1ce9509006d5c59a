// Fuzzes restoring a progress file: reading it character by character into
// SavedChars and decoding the fixed places.
//
// Contract: any file restores or raises kesta::RuntimeError (a bad
// character, a read past the stored characters, an overlong file); at most
// 1001 characters are stored; decoded values stay within what their digits
// can express.
//
// An input is a progress file as it stands; it is decoded for the number of
// positions its line 2 suggests and for one other count. An input starting
// with byte 0x01 instead describes a session (the rest): the harness saves
// it with the program's own writer, sprinkles spaces into the text, restores
// it and checks that everything comes back, answers shifted past unanswered
// positions as the format dictates.
#include "common/core/RuntimeError.h"
#include "progress/core/ProgressFile.h"
#include "progress/core/ProgressState.h"
#include "session/core/SessionState.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

using namespace kesta;

constexpr std::int64_t MaxStored = 1001; // slots 0..1000

[[noreturn]] void fail(const char* what, std::string_view detail = {})
{
    std::fprintf(stderr, "progress_fuzz: %s [%.*s]\n", what, static_cast<int>(detail.size()), detail.data());
    std::abort();
}

// The reader takes only a path, so each input goes through one temporary
// file of this process.
std::string tempPath;

// Reads `content` through the file; false when the read raised (it must then
// be because the file is too long).
bool readBack(std::string_view content, SavedProgress& saved)
{
    std::FILE* file = std::fopen(tempPath.c_str(), "wb");
    if (file == nullptr || std::fwrite(content.data(), 1, content.size(), file) != content.size())
        fail("cannot write the temporary file", tempPath);
    std::fclose(file);
    std::string kept(content);
    std::erase(kept, ' ');
    const auto stored = static_cast<std::int64_t>(kept.size());
    try {
        readSavedChars(tempPath, saved);
    } catch (const RuntimeError& e) {
        if (e.number() != err::SubscriptOutOfRange || stored <= MaxStored)
            fail("reading raised for a file that fits", std::to_string(e.number()));
        return false;
    }
    if (stored > MaxStored || saved.SavedCharCount != stored)
        fail("more than 1001 characters stored, or SavedCharCount differs from the non-space characters");
    for (std::int64_t i = 0; i < MaxStored; ++i) {
        if (saved.SavedChars[i] != (i < stored ? kept.substr(static_cast<std::size_t>(i), 1) : std::string()))
            fail("stored characters differ from the file");
    }
    return true;
}

void checkDecode(const SavedProgress& saved, Int16 questionCount)
{
    auto session = std::make_unique<SessionState>();
    try {
        decodeSavedProgress(saved, questionCount, *session);
    } catch (const RuntimeError& e) {
        if (e.number() != err::TypeMismatch && e.number() != err::SubscriptOutOfRange)
            fail("decoding raised an unexpected error", std::to_string(e.number()));
        return;
    }
    // Each value is built from two or three single digits.
    auto within = [](Int16 v, int hi) { return v >= 0 && v <= hi; };
    if (!within(session->TimeHours, 99) || !within(session->TimeMinutes, 99) || !within(session->TimeSeconds, 99) ||
        !within(session->CurrentQuestion, 999) || !within(session->HighestReached, 999))
        fail("a line-1 value outside what its digits express");
    for (std::int64_t p = 1; p <= 1000; ++p) {
        const bool unused = p > questionCount && (session->QuestionOrder[p] != 0 || !session->UserAnswers[p].empty());
        if (!within(session->QuestionOrder[p], 999) || session->UserAnswers[p].size() > 1 || unused)
            fail("an order entry outside 0..999, a long answer, or a position past the count written");
    }
    // The places decoded must have held digits.
    for (std::int64_t i = 0; i < 12; ++i) {
        if (saved.SavedChars[i].size() != 1 || !std::isdigit(static_cast<unsigned char>(saved.SavedChars[i][0])))
            fail("line 1 decoded over a non-digit");
    }
}

// A raw progress file.
void fuzzFile(std::string_view content)
{
    auto saved = std::make_unique<SavedProgress>();
    if (!readBack(content, *saved))
        return;
    // The loaded test decides the count; a matching test has one position
    // per three digits of line 2.
    std::int64_t line2 = 0;
    for (std::int64_t i = 14; i < MaxStored && saved->SavedChars[i] != "\r" && !saved->SavedChars[i].empty(); ++i)
        ++line2;
    checkDecode(*saved, static_cast<Int16>(std::min<std::int64_t>(line2 / 3, 1000)));
    checkDecode(*saved, static_cast<Int16>(std::hash<std::string_view>{}(content) % 1001));
}

// A session saved and restored.
void fuzzSession(std::string_view in)
{
    std::size_t at = 0;
    auto next = [&]() -> unsigned { return at < in.size() ? static_cast<unsigned char>(in[at++]) : 0u; };
    auto next16 = [&]() -> unsigned { const unsigned hi = next(); return hi << 8 | next(); };

    auto session = std::make_unique<SessionState>();
    session->TimeHours = static_cast<Int16>(next() % 100);
    session->TimeMinutes = static_cast<Int16>(next() % 100);
    session->CurrentQuestion = static_cast<Int16>(next16() % 1000);
    session->HighestReached = static_cast<Int16>(next16() % 1000);
    session->TimeSeconds = static_cast<Int16>(next() % 100);
    // 14 + 3q + 2 + q characters must fit the 1001 slots.
    const auto count = static_cast<Int16>(next() % 247);
    std::vector<std::string> answered;
    for (Int16 p = 1; p <= count; ++p) {
        session->QuestionOrder[p] = static_cast<Int16>(next16() % 1000);
        session->UserAnswers[p] = std::string("abcd").substr(next() % 5, 1);
        if (!session->UserAnswers[p].empty())
            answered.push_back(session->UserAnswers[p]);
    }
    const std::string text = progressText(*session, count);

    // Spaces are skipped wherever they stand.
    std::string spaced;
    for (const char c : text) {
        const unsigned r = next();
        if (r >= 250)
            spaced.append(r - 249, ' ');
        spaced.push_back(c);
    }
    spaced.append(next() >= 200 ? 1 : 0, ' ');

    auto saved = std::make_unique<SavedProgress>();
    if (!readBack(spaced, *saved))
        fail("a saved session of at most 246 positions could not be read back");
    auto restored = std::make_unique<SessionState>();
    decodeSavedProgress(*saved, count, *restored); // an error escapes as a finding
    if (restored->TimeHours != session->TimeHours || restored->TimeMinutes != session->TimeMinutes ||
        restored->TimeSeconds != session->TimeSeconds || restored->CurrentQuestion != session->CurrentQuestion ||
        restored->HighestReached != session->HighestReached)
        fail("line 1 did not come back", text);
    for (Int16 p = 1; p <= count; ++p) {
        // Answers close up over unanswered positions; the last positions read
        // the empty slots after the file.
        const auto i = static_cast<std::size_t>(p - 1);
        if (restored->QuestionOrder[p] != session->QuestionOrder[p] ||
            restored->UserAnswers[p] != (i < answered.size() ? answered[i] : std::string()))
            fail("the question order or the answers (shifted as saved) did not come back", text);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    const char* dir = std::getenv("TMPDIR");
    tempPath = std::string(dir != nullptr && *dir != '\0' ? dir : "/tmp") + "/kesta-progress-fuzz-";
    tempPath += std::to_string(::getpid());
    std::atexit([] { ::unlink(tempPath.c_str()); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    if (!input.empty() && input.front() == '\x01')
        fuzzSession(input.substr(1));
    else
        fuzzFile(input);
    return 0;
}
