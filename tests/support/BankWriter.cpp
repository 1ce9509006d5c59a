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

void writeNumberedBank(const std::string& path, const std::string& title, int count, const std::string& answers)
{
    std::vector<std::string> lines{title, "Intro one", "Intro two", "Intro three"};
    for (int k = 1; k <= count; ++k) {
        lines.insert(lines.end(), {"#Question " + std::to_string(k), "a) first", "b) second", "c) third", "d) fourth",
                                   "#Explanation " + std::to_string(k),
                                   "#" + std::string(1, answers[static_cast<std::size_t>(k - 1) % answers.size()])});
    }
    writeBankLines(path, lines);
}

} // namespace kesta::test
