#pragma once

#include "questions/core/QuestionList.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kesta {

// What a question file load shows while it runs. Every member does nothing
// by default, so a caller overrides only what it displays.
class LoadObserver {
public:
    virtual ~LoadObserver() = default;
    virtual void progressShown(bool) {}                  // the progress bar appears or goes away
    virtual void progress(int) {}                        // the bar's new value
    virtual void status(const std::string&) {}           // the status text
    virtual void introduction(const std::string&) {}     // the introduction page (TABs already widened)
};

// Deciphers one line, already stripped of its marker. It raises for a line
// that cannot be deciphered; the loader lets that error pass.
using LineDecipher = std::function<std::string(const std::string& line)>;

// A decipher that runs DecryptString under the given pass phrase.
LineDecipher decipherWith(std::string passPhrase);

// How a load went: the three conditions behind the corrupt warning.
struct LoadResult {
    bool tooManyLines = false;     // 10000 or more lines; all past line 9999 but the last were lost
    bool tooManyQuestions = false; // a question block beyond the 1000th
    std::vector<int> badAnswers;   // questions whose answer is not exactly one character

    bool corrupt() const { return tooManyLines || tooManyQuestions || !badAnswers.empty(); }
};

// The question file reader: fills `list` from the enciphered file at
// `filename` (records 1..QuestionCount, the introduction in record 1, the
// empty record 0) without clearing it first, reporting progress and texts
// to `observer`. Throws RuntimeError 53 when the file cannot be opened and
// whatever `decipher` raises for an undecipherable line.
LoadResult LoadQuestionFile(const std::string& filename, QuestionList& list, LoadObserver& observer,
                            const LineDecipher& decipher);

// The loader's view of a file's lines: CR LF, a lone CR and a lone LF each
// end a line; a last line without an end still counts.
std::vector<std::string_view> SplitFileLines(std::string_view content);

// The whole content of a question file (a link is followed: the question
// folder belongs to the installation). Raises 53, 76 or 75 when it cannot be read.
std::string ReadWholeFile(const std::string& filename);

// Trims leading and trailing spaces (only spaces).
std::string TrimSpaces(std::string_view text);

// Length of UTF-8 text in UTF-16 code units: what "one character" means
// for an answer.
std::size_t Utf16Length(std::string_view text);

inline constexpr int MaxQuestionLines = 10000; // lines kept of a file; more set the corrupt warning
inline constexpr int MaxQuestions = 1000;      // questions kept; more set the corrupt warning
inline constexpr const char* LoadingText = "Please wait while the questions are loaded...";
inline constexpr const char* ReadyText = "Ready";
inline constexpr const char* CorruptText =
    "The question file appears to be corrupt. As a result, some questions may not have answers.";

} // namespace kesta
