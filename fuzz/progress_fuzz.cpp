// Restoring a progress file: any file restores or raises run-time error 9 (too
// long), 13 (a place without a digit) or 6; at most 1001 characters are kept,
// whatever number of questions the test has.
#include "FuzzTarget.h"
#include "progress/core/ProgressFile.h"

#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace kesta;

// The reader takes only a path: each input goes through one file of this process, in TMPDIR when it is set.
static void restore(std::string_view text, Int16 count, SessionState& session)
{
    static const std::string path = std::filesystem::temp_directory_path() / ("kesta-fuzz-" + std::to_string(getpid()));
    std::ofstream(path, std::ios::binary) << text; // a folder not writable leaves no file: error 53, a finding
    auto saved = std::make_unique<SavedProgress>();
    fuzz::raised([&] {
        readSavedChars(path, *saved);
        fuzz::expect(saved->SavedCharCount <= 1001, "more than 1001 characters kept");
        decodeSavedProgress(*saved, count, session);
    }, { err::SubscriptOutOfRange, err::TypeMismatch, err::Overflow });
}

void fuzz::target(std::string_view input)
{
    for (const Int16 count : { Int16 { 0 }, Int16 { 1 }, static_cast<Int16>(input.size() / 4 % 1001) })
        restore(input, count, *std::make_unique<SessionState>());
}
