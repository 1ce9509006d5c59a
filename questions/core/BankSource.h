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
//   (empty)            an empty file line
//   TEXT               any other line: a plain continuation line
//
// Marked lines take their keyword from the loader's own cycle (question,
// explanation, answer), so a source names each line by the role the program
// will give it. The two directions are exact inverses: building a source
// and dumping the result gives the source back byte for byte, and a source
// for which that would not hold is refused.

// A source or question file that cannot be converted: what() says why, line() where.
class BankSourceError : public std::runtime_error {
public:
    BankSourceError(int line, const std::string& message);
    int line() const noexcept { return line_; } // 1-based line of the source or file
private:
    int line_;
};

// Turns a source into question-file bytes (lines end in CR LF).
// Throws BankSourceError for a source that would not dump back unchanged.
std::string BuildBank(std::string_view source, std::string_view passPhrase);

// Turns question-file bytes into their source. Throws BankSourceError, naming
// the line, for a line that cannot be deciphered.
std::string DumpBank(std::string_view bank, std::string_view passPhrase);

} // namespace kesta
