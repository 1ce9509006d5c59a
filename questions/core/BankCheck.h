#pragma once

#include "common/core/SafeFile.h"
#include "questions/core/QuestionList.h"

#include <string>
#include <string_view>
#include <vector>

namespace kesta {

// Whether a question file will work in the program: the one check behind
// kesta-qbank build, import and check. A bank works when its title puts it
// in a menu, it has a question, every answer is one letter a to d once the
// loader has trimmed it, its last question is complete, and it stays within
// what the loader reads (1000 questions, fewer than 10,000 lines, no text
// or line past MaxFieldBytes or MaxLineBytes).

// One thing that keeps a bank from working.
struct BankProblem {
    int line = 0; // the file line (the source line of a built bank) it belongs to; 0 for the bank as a whole
    int question = 0; // the question it belongs to; 0 for none
    std::string text; // what is wrong, and what to write instead

    bool operator==(const BankProblem&) const = default;
};

// What the check found.
struct BankCheck {
    std::string title;
    bool exam = false; // its title puts it in "Select Exam"
    bool quiz = false; // and in "Select Domain Quiz"
    int questions = 0;
    bool corrupt = false; // the program warns that the file appears to be corrupt
    std::vector<BankProblem> problems; // in file order, those of the whole bank last
};

// Checks the question file in `bank`, loading it into `list` as the program
// does. Throws BankSourceError for a line that cannot be deciphered, and for
// a file whose first line is no title: it is no question file.
BankCheck CheckBankText(std::string_view bank, std::string_view passPhrase, QuestionList& list);

// The same for the file at `path`, read a block at a time; opening raises as
// the loader's does. The program follows a link in its question folder, a
// bank handed over by name is read only as itself.
BankCheck CheckBankFile(const std::string& path, std::string_view passPhrase, QuestionList& list,
    safefile::Links links = safefile::Links::Refuse);

} // namespace kesta
