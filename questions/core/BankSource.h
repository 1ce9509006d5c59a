#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace kesta {

// The plain-text source of a question file, one source line per file line
// (the format is described in docs/question-banks.md):
//
//   Title: TEXT        the plain title line (first line only)
//   Intro: TEXT        a plain introduction line (header lines 2-4)
//   Question: TEXT     a marked line opening a question
//   Explanation: TEXT  a marked line opening an explanation
//   Answer: TEXT       a marked answer line
//   #: TEXT            a marked line in the header
//   Raw: LINE          a file line copied as it stands, for a text no other
//                      form can hold (empty, or with a line break)
//   \TEXT              a plain line whose text would look like a form above
//                      (in any case) or starts with a byte-order mark
//   (empty)            an empty file line
//   TEXT               any other line: a plain continuation line
//
// Marked lines take their keyword from the loader's own cycle (question,
// explanation, answer), so a source names each line by the role the program
// will give it. The two directions are inverses: dumping a built file gives
// its source back byte for byte, but for what an editor may add and the tool
// drops (a byte-order mark at the start, CR LF line ends, a last line
// without its end); a source for which that would not hold is refused.

// A source or question file that cannot be converted: what() says why, line() where.
class BankSourceError : public std::runtime_error {
public:
    BankSourceError(int line, const std::string& message);
    int line() const noexcept { return line_; } // 1-based line of the source or file
private:
    int line_;
};

// The role the loader gives a file line.
enum class LineRole { Empty, Title, Intro, Question, Explanation, Answer, MarkedHeader, Plain };

// Follows a file line by line as the loader does: the first four non-empty
// lines are the header, marked body lines cycle question, explanation, answer.
class LineRoles {
public:
    LineRole next(int fileLine, std::string_view line);

private:
    int header_ = 1;
    int section_ = 0;
};

// Turns a source into question-file bytes (lines end in CR LF).
// Throws BankSourceError for a source that would not dump back unchanged.
std::string BuildBank(std::string_view source, std::string_view passPhrase);

// Turns question-file bytes into their source. Throws BankSourceError, naming
// the line, for a line that cannot be deciphered.
std::string DumpBank(std::string_view bank, std::string_view passPhrase);

// The failure for file line `line` that cannot be deciphered under `passPhrase`,
// in an author's words: a pass phrase other than the program's (for the file
// as a whole, line 0), no question file at all while no title has been read
// (`titleRead` false), or a damaged line.
BankSourceError Undecipherable(int line, std::string_view rawLine, std::string_view passPhrase, bool titleRead);

// Why an enciphered line (its marker removed) cannot be deciphered, as "it ...".
std::string WhyUndecipherable(std::string_view line);

// The missing parts of a question that has no answer line, and what to write.
std::string MissingParts(bool hasExplanation);

// `text` in quotes, cut short with "..." when long.
std::string Quoted(std::string_view text);

} // namespace kesta
