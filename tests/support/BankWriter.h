#pragma once

#include <string>
#include <vector>

namespace kesta::test {

// The bytes of a question file: each line enciphered ("#" kept as the marker,
// "=" writes the rest as it stands, empty stays empty), line i ended with
// ends[i % size], the last line too unless `endLast` is false.
std::string bankText(const std::vector<std::string>& lines, const std::vector<std::string>& ends = {"\r\n"},
                     bool endLast = true);

// Writes bankText(lines) to `path`.
void writeBankLines(const std::string& path, const std::vector<std::string>& lines);

// A bank of `count` questions: question k reads "Question k", its answer is
// the letter answers[(k-1) % answers.size()], its explanation "Explanation k".
void writeNumberedBank(const std::string& path, const std::string& title, int count,
                       const std::string& answers = "abcd");

} // namespace kesta::test
