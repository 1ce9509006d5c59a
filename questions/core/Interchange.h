#pragma once

#include "questions/core/QuestionList.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kesta {

// Question exchange with other programs: Aiken and GIFT text in, a bank
// source (docs/question-banks.md) out, and a loaded bank back out as Aiken
// or GIFT. Only what the program can show is converted: one text, four
// choices, one right answer. Every other question is left out and reported
// with the reason, never changed to fit.

// The formats questions are exchanged in.
enum class QuestionFormat { Aiken, Gift };

// What the bank's header says, the input formats having no header of their
// own, and how the choices are laid out.
struct ImportSettings {
    std::string title; // the bank's title line, as it stands
    std::vector<std::string> intro; // 0 to 3 introduction paragraphs (HTML); defaults complete them
    // Inputs tend to write the right answer first. Unless kept in order, the
    // choices are dealt so that over a bank the right answers fall on each
    // letter about equally; the same input and seed give the same bank.
    bool keepOrder = false;
    std::uint64_t seed = 0;
};

// The explanation of a question that comes without one. It does not repeat
// the answer, which the pages show beside it.
inline constexpr std::string_view NoExplanation = "This question comes without an explanation.";

// A question that was left out.
struct SkippedQuestion {
    int line = 0; // import: 1-based input line where it starts; export: its number in the bank
    std::string reason; // why, in a few words ("3 choices; the program shows four")
};

// The outcome of an import.
struct ImportResult {
    std::string source; // a bank source that BuildBank accepts
    int imported = 0; // questions in the source
    std::vector<SkippedQuestion> skipped; // in input order
};

// The outcome of an export.
struct ExportResult {
    std::string text; // Aiken or GIFT text, UTF-8 with LF line ends
    int exported = 0; // questions in the text
    std::vector<SkippedQuestion> skipped; // in bank order
};

inline constexpr std::size_t MaxIntroLines = 3; // the header's introduction lines

// Converts Aiken or GIFT text (UTF-8, an optional BOM, CR LF or LF line ends)
// into a bank source. Throws std::invalid_argument for settings no header can
// hold: more than three intro lines, an empty title or intro line, or one with
// a line break or invalid UTF-8.
ImportResult importQuestions(QuestionFormat format, std::string_view text, const ImportSettings& settings);

// Writes the loaded questions (records 1 to QuestionCount) as Aiken or GIFT
// text. A record must hold its choices in the importer's layout (the last
// four lines "a) " to "d) ", each possibly led by <br>) and a letter a to d
// as its answer; other records are reported. Raises only what the list
// raises for a QuestionCount past its last record (RuntimeError 9).
ExportResult exportQuestions(QuestionFormat format, const QuestionList& list);

} // namespace kesta
