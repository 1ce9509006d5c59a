#include "support/BankWriter.h"

#include "questions/core/Cipher.h"
#include "support/TempDir.h"

namespace kesta::test {

std::string bankText(const std::vector<std::string>& lines, const std::vector<std::string>& ends, bool endLast)
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

void writeBankLines(const std::string& path, const std::vector<std::string>& lines)
{
    writeFile(path, bankText(lines));
}

void writeBank(const std::string& path, const std::string& title, const std::vector<BankQuestion>& questions,
               const std::vector<std::string>& intro)
{
    std::vector<std::string> lines{title};
    lines.insert(lines.end(), intro.begin(), intro.end());
    for (const BankQuestion& q : questions) {
        lines.push_back("#" + q.question);
        lines.insert(lines.end(), q.choices.begin(), q.choices.end());
        lines.push_back("#" + q.explanation);
        lines.push_back("#" + q.answer);
    }
    writeBankLines(path, lines);
}

void writeNumberedBank(const std::string& path, const std::string& title, int count, const std::string& answers)
{
    std::vector<BankQuestion> questions;
    for (int k = 1; k <= count; ++k) {
        questions.push_back({"Question " + std::to_string(k),
                             {"a) first", "b) second", "c) third", "d) fourth"},
                             "Explanation " + std::to_string(k),
                             std::string(1, answers[static_cast<std::size_t>(k - 1) % answers.size()])});
    }
    writeBank(path, title, questions);
}

} // namespace kesta::test
