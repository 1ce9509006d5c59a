#pragma once

#include "questions/core/Cipher.h"

#include <string>
#include <vector>

namespace kesta::test {

// The bytes of a question file: each line enciphered ("#" kept as the marker,
// "=" writes the rest as it stands, empty stays empty), line i ended with
// ends[i % size], the last line too unless `endLast` is false.
inline std::string bankText(
    const std::vector<std::string>& lines, const std::vector<std::string>& ends = { "\r\n" }, bool endLast = true)
{
    std::string content;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string& line = lines[i];
        if (!line.empty() && line[0] == '=')
            content += line.substr(1);
        else if (!line.empty())
            content += (line[0] == '#' ? "#" : "") + EncryptString(line.substr(line[0] == '#'), QuestionPassPhrase);
        if (endLast || i + 1 < lines.size())
            content += ends[i % ends.size()];
    }
    return content;
}

// A bank of `count` questions: question k reads "Qk", its explanation "Ek",
// its answer is the letter answers[(k-1) % answers.size()].
inline std::string numberedBank(const std::string& title, int count, const std::string& answers)
{
    std::vector<std::string> lines { title, "i1", "i2", "i3" };
    for (int k = 1; k <= count; ++k)
        lines.insert(lines.end(),
            { "#Q" + std::to_string(k), "#E" + std::to_string(k),
                "#" + std::string(1, answers[static_cast<std::size_t>(k - 1) % answers.size()]) });
    return bankText(lines);
}

} // namespace kesta::test
