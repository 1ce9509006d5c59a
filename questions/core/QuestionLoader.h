#pragma once

#include "common/core/SafeFile.h"
#include "questions/core/QuestionList.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kesta {

inline constexpr int MaxQuestionLines = 10000; // lines kept of a file; more set the corrupt warning
inline constexpr int MaxQuestions = 1000;      // questions kept; more set the corrupt warning
// The longest text kept of a question, an explanation, an answer or the
// introduction, in UTF-8 bytes: some 2,500 words. A longer one keeps its
// first MaxFieldBytes and sets the corrupt warning. The view lays out a page
// of three such texts in a moment; one paragraph of a megabyte took it
// minutes and a few hundred megabytes.
inline constexpr std::size_t MaxFieldBytes = 16 * 1024;
// The longest line read, its marker left out: a text of MaxFieldBytes
// enciphered (four digits a byte at most, and a block of framing). A longer
// line is not deciphered: its text is lost and the corrupt warning is set.
inline constexpr std::size_t MaxLineBytes = 4 * MaxFieldBytes + 64;

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

// Deciphers one line, already stripped of its marker, appending its text to
// `text`. It raises for a line that cannot be deciphered; the loader lets
// that error pass.
using LineDecipher = std::function<void(std::string_view line, std::string& text)>;

// A decipher that runs one LineDecoder under the given pass phrase.
LineDecipher decipherWith(std::string_view passPhrase);

// How a load went: the conditions behind the corrupt warning, and the title
// as the menus read it.
struct LoadResult {
    bool tooManyLines = false;     // 10000 or more lines; all past line 9999 but the last were lost
    bool tooManyQuestions = false; // a question block beyond the 1000th
    int tooLongAt = 0;             // the first line whose text was lost, wholly or in part; 0 for none
    std::vector<int> badAnswers;   // questions whose answer is not exactly one character
    std::optional<std::string> title; // the first line's text; none when it is empty or marked

    bool corrupt() const { return tooManyLines || tooManyQuestions || tooLongAt != 0 || !badAnswers.empty(); }
};

// The rule that cuts text into lines: CR LF, a lone CR and a lone LF each end
// a line; a last line without an end still counts. It cuts from `begin` on in
// text that may grow at its end or move to the front between calls.
class LineCutter {
public:
    // The next line of data[begin, end) as a view into it; false when none is
    // whole there. `final`: nothing follows `end`, so a CR there ends its line
    // and a last line needs no end; otherwise more text must come first.
    bool cut(const char* data, std::size_t end, bool final, std::string_view& line);
    // The text from `begin` on has moved to the front.
    void moved();
    // The text from `end` on is gone.
    void dropped(std::size_t end) { scanned_ = std::min(scanned_, end); }

    std::size_t begin = 0; // where the next line starts

private:
    std::size_t nextLf(const char* data, std::size_t end);

    std::size_t lf_ = std::string::npos; // an LF found at or after begin
    std::size_t scanned_ = 0; // no LF between begin and here: a file of lone CRs is not scanned again per line
};

// The lines of a content in memory, as views into it.
class LineSplitter {
public:
    explicit LineSplitter(std::string_view content) : content_(content) {}
    bool next(std::string_view& line) { return cutter_.cut(content_.data(), content_.size(), true, line); }

private:
    std::string_view content_;
    LineCutter cutter_;
};

// The lines of a file read through the one reader a block at a time, cut as
// LineSplitter cuts a whole content; a line's view lasts until the next call.
// A line longer than Longest is given as its start, still longer than that,
// so memory stays at a block. Opening raises as safefile::read does (75 not a
// regular file, 9 larger than `limit`, 53 missing).
class FileLines {
public:
    static constexpr std::size_t Block = std::size_t{1} << 18;
    static constexpr std::size_t Longest = MaxLineBytes + 1; // a marker and the longest line read
    FileLines(const std::string& path, std::size_t limit, std::size_t block = Block,
              safefile::Links links = safefile::Links::Refuse);

    bool empty() const { return reader_.size() == 0; }
    bool next(std::string_view& line); // false when no line is left
    int number() const { return number_; } // of the line last given, from 1

private:
    void fill(); // moves the unread part to the front and reads more after it

    safefile::Reader reader_;
    std::string buffer_;
    std::size_t end_ = 0; // what has been read into the buffer
    LineCutter cutter_;
    bool atEnd_ = false;
    int number_ = 0;
};

// The question file reader: fills `list` from the enciphered file at
// `filename` (records 1..QuestionCount, the introduction in record 1, the
// empty record 0) without clearing it first, reporting progress and texts
// to `observer`. A text or a line past its bound (MaxFieldBytes,
// MaxLineBytes) is cut and makes the file corrupt. The file is read once, a
// block at a time, through a link (the question folder is its owner's
// alone): a file that is not a regular file raises 75, one larger than
// MaxBankBytes 9, a missing one 53;
// an undecipherable line raises whatever `decipher` raises.
LoadResult LoadQuestionFile(const std::string& filename, QuestionList& list, LoadObserver& observer,
                            const LineDecipher& decipher, std::size_t block = FileLines::Block);

// The same for lines already opened (the caller can then tell where a load failed).
LoadResult LoadQuestionLines(FileLines& lines, QuestionList& list, LoadObserver& observer,
                             const LineDecipher& decipher);

// The same for a file's content already in memory.
LoadResult LoadQuestionText(std::string_view content, QuestionList& list, LoadObserver& observer,
                            const LineDecipher& decipher);


// Length of UTF-8 text in UTF-16 code units: what "one character" means
// for an answer.
std::size_t Utf16Length(std::string_view text);

// The largest question file read. A bank of 1000 ordinary questions is about
// 3 MB; the largest one the loader can use (10000 lines) fits with lines of
// 3 KB, several pages of text each.
inline constexpr std::size_t MaxBankBytes = std::size_t{32} << 20;
inline constexpr const char* LoadingText = "Please wait while the questions are loaded...";
inline constexpr const char* ReadyText = "Ready";
inline constexpr const char* CorruptText =
    "The question file appears to be corrupt. As a result, some questions may not have answers.";

} // namespace kesta
