#pragma once

#include <string>
#include <vector>

namespace kesta::test {

struct BankQuestion {
    std::string question;             // first question line
    std::vector<std::string> choices; // further question lines
    std::string explanation;
    std::string answer;
};

// Writes an enciphered question file: the title line, three introduction
// lines, then each question as its marked first line, its choices, the
// marked explanation and the marked answer. Lines end in CR LF.
void writeBank(const std::string& path, const std::string& title, const std::vector<BankQuestion>& questions,
               const std::vector<std::string>& intro = {"Intro one", "Intro two", "Intro three"});

// A bank of `count` questions: question k reads "Question k", its answer is
// the letter answers[(k-1) % answers.size()], its explanation "Explanation k".
void writeNumberedBank(const std::string& path, const std::string& title, int count,
                       const std::string& answers = "abcd");

// Writes raw lines: each is enciphered, a leading "#" is kept as the marker,
// and an empty line stays empty. Lines are joined with `lineEnd`.
void writeBankLines(const std::string& path, const std::vector<std::string>& lines,
                    const std::string& lineEnd = "\r\n");

} // namespace kesta::test
