// Restoring a progress file: any file restores or raises run-time error 9 (too
// long), 13 (a place without a digit) or 6; at most 1001 characters are kept.
// The same bytes also describe a session (one byte a position: its place in
// the order and its answer letter or none) that, saved with the program's
// writer and restored, gives the same text again.
#include "FuzzTarget.h"
#include "progress/core/ProgressFile.h"

#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace kesta;

// The reader takes only a path: each input goes through one file of this process, in TMPDIR when it is set.
static int restore(std::string_view text, Int16 count, SessionState& session)
{
    static const std::string path = std::filesystem::temp_directory_path() / ("kesta-fuzz-" + std::to_string(getpid()));
    std::ofstream(path, std::ios::binary) << text; // a folder not writable leaves no file: error 53, a finding
    auto saved = std::make_unique<SavedProgress>();
    return fuzz::raised([&] {
        readSavedChars(path, *saved);
        fuzz::expect(saved->SavedCharCount <= 1001, "more than 1001 characters kept");
        decodeSavedProgress(*saved, count, session);
    }, { err::SubscriptOutOfRange, err::TypeMismatch, err::Overflow });
}

void fuzz::target(std::string_view input)
{
    for (const Int16 count : { Int16 { 0 }, Int16 { 1 }, static_cast<Int16>(input.size() / 4 % 1001) })
        restore(input, count, *std::make_unique<SessionState>());
    auto session = std::make_unique<SessionState>(), back = std::make_unique<SessionState>();
    const auto count = static_cast<Int16>(std::min<std::size_t>(input.size(), 200));
    for (Int16 p = 1; p <= count; ++p) { // bit 2 leaves a position unanswered, bits 0 and 1 pick its letter
        session->QuestionOrder[p] = static_cast<unsigned char>(input[p - 1]);
        session->UserAnswers[p] = input[p - 1] & 4 ? "" : std::string(1, "abcd"[input[p - 1] & 3]);
    }
    const std::string text = progressText(*session, count);
    expect(restore(text, count, *back) == 0 && progressText(*back, count) == text,
        "a saved session does not restore to the same text", text);
}
