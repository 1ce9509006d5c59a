// Restoring a progress file: any file restores or raises run-time error 9 (too
// long), 13 (a place without a digit) or 6; at most 1001 characters are kept.
// An input starting with 0x01 describes a session instead (one byte a
// position: its answer letter or none): saved with the program's writer,
// spaced out and restored, it comes back, answers shifted past unanswered
// positions as the format has it.
#include "FuzzTarget.h"
#include "common/core/RuntimeError.h"
#include "progress/core/ProgressFile.h"

#include <cstdio>
#include <memory>
#include <string>
#include <unistd.h>

using namespace kesta;

namespace {
// The reader takes only a path: each input goes through one file of this process.
std::string restore(std::string_view text, Int16 count, SessionState& session)
{
    static const std::string path = "/tmp/kesta-progress-fuzz-" + std::to_string(::getpid());
    std::FILE* file = std::fopen(path.c_str(), "wb");
    std::fwrite(text.data(), 1, text.size(), file);
    std::fclose(file);
    auto saved = std::make_unique<SavedProgress>();
    try {
        readSavedChars(path, *saved);
        fuzz::expect(saved->SavedCharCount <= 1001, "more than 1001 characters kept");
        decodeSavedProgress(*saved, count, session);
        return "";
    } catch (const RuntimeError& e) {
        fuzz::expect(e.number() == err::SubscriptOutOfRange || e.number() == err::TypeMismatch || e.number() == err::Overflow,
                     "an unexpected error", std::to_string(e.number()));
        return "error";
    }
}
} // namespace

void fuzz::target(std::string_view input)
{
    auto session = std::make_unique<SessionState>();
    if (input.empty() || input.front() != '\x01') {
        for (const Int16 count : {Int16{0}, Int16{1}, static_cast<Int16>(input.size() / 4 % 1001)})
            restore(input, count, *session);
        return;
    }
    const auto count = static_cast<Int16>(std::min<std::size_t>(input.size() - 1, 200));
    std::string answers;
    for (Int16 p = 1; p <= count; ++p) {
        session->QuestionOrder[p] = static_cast<Int16>(static_cast<unsigned char>(input[static_cast<std::size_t>(p)]) % 200);
        const char letter = "abcd "[static_cast<unsigned char>(input[static_cast<std::size_t>(p)]) % 5];
        session->UserAnswers[p] = letter == ' ' ? "" : std::string(1, letter);
        answers += session->UserAnswers[p];
    }
    std::string text = progressText(*session, count), spaced;
    for (const char c : text)
        spaced += std::string(1, c) + (c % 3 == 0 ? " " : "");
    auto back = std::make_unique<SessionState>();
    expect(restore(spaced, count, *back).empty(), "a saved session does not restore", spaced);
    answers.resize(static_cast<std::size_t>(count), '\0');
    std::string restored;
    for (Int16 p = 1; p <= count; ++p)
        restored += back->UserAnswers[p].empty() ? std::string(1, '\0') : back->UserAnswers[p];
    expect(restored == answers, "the answers did not come back shifted past unanswered positions", restored);
    back->UserAnswers = session->UserAnswers;
    expect(progressText(*back, count) == text, "the order or the countdown did not come back", progressText(*back, count));
}
