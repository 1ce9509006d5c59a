#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"
#include "support/BankWriter.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>

#include <sys/stat.h>
#include <sys/wait.h>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using test::readFile;
using test::writeFile;

const std::string Head = "Title: T\nIntro: a\nIntro: b\nIntro: c\n";

// The line BuildBank names when it refuses `source`, 0 when it builds one that dumps back unchanged.
int refusedLine(const std::string& source)
{
    try {
        return DumpBank(BuildBank(source, QuestionPassPhrase), QuestionPassPhrase) == source ? 0 : -1;
    } catch (const BankSourceError& error) {
        return error.line();
    }
}

TEST(BankSourceTest, BuildAndDumpAreInversesAndBuildRefusesWhatWouldNotReadBack)
{
    const std::pair<std::string, int> cases[] = {
        {"Title: KESTA Exam Demo 9\nIntro: Welcome, \"candidate\".\n\nIntro: \tTabbed\nIntro: \xE2\x80\x94 dash\n"
         "Question: Which?\na) one\n\\Answer: looks like a keyword\n\\\\starts with a backslash\n\\#: looks marked\n"
         "\\Raw: looks raw\nExplanation: Because.\n  indented  \nAnswer: b \nafter the answer\n\nQuestion: \xE4\xB8\xAD?\n"
         "Explanation: <br><br>\nAnswer: d\n",
         0},
        {"Title: T\n", 0}, {"", 1}, {Head + "Question: \n", 5}, {Head + "Question: q\nAnswer: a\n", 6},
        {Head + "Question: q\nExplanation: e\nAnswer: a", 7}, {Head + "Intro: d\n", 5}, {Head + "Question:no space\n", 5},
        {"Title: T\r\nIntro: a\n", 1}, {"Intro: a\n", 1}, {"Title: T\nTitle: again\n", 2},
        {"Title: T\n\\needless escape\n", 2}, {"Title: T\nRaw: ZZZZ\n", 2},
        {"Title: T\nRaw: " + EncryptString("expressible", QuestionPassPhrase) + "\n", 2}, {"Title: T\nbad \xFF utf-8\n", 2},
        {Head + "#: x\n", 5}, {"Title: T\nRaw: " + std::string(62, '0') + "\n", 0},
    };
    for (const auto& [source, line] : cases)
        EXPECT_EQ(refusedLine(source), line) << source;

    // Texts no plain source line holds dump to escapes that build the same file again.
    const auto enc = [](const std::string& text) { return EncryptString(text, QuestionPassPhrase); };
    std::string lower = enc("b");
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
    const std::string odd = enc("Title") + "\r\n#" + enc("marked intro") + "\r\n" + std::string(62, '0') + "\r\n" +
                            enc("two\r\nlines") + "\r\n#" + enc("Q\nLF") + "\r#" + lower + "\n" + enc("Raw: looks raw");
    const std::string source = DumpBank(odd, QuestionPassPhrase);
    EXPECT_EQ(source, "Title: Title\n#: marked intro\nRaw: " + std::string(62, '0') + "\nRaw: " + enc("two\r\nlines") +
                          "\nRaw: #" + enc("Q\nLF") + "\nExplanation: b\n\\Raw: looks raw\n");
    EXPECT_EQ(DumpBank(BuildBank(source, QuestionPassPhrase), QuestionPassPhrase), source);
}

class QbankToolTest : public ::testing::Test {
protected:
    // Runs the tool: its status, its output and the first line it wrote to stderr.
    std::string qbank(const std::vector<std::string>& args)
    {
        std::string command = "'" KESTA_QBANK "'";
        for (const std::string& arg : args)
            command += " '" + arg + "'";
        const int raw = std::system((command + " >" + dir / "out" + " 2>" + dir / "err" + " </dev/null").c_str());
        const std::string err = readFile(dir / "err");
        return std::to_string(WIFEXITED(raw) ? WEXITSTATUS(raw) : -1) + "|" + readFile(dir / "out") + "|" +
               err.substr(0, err.find('\n'));
    }

    test::TempDir dir;
};

// Usage errors exit with 2, failures with 1 and one line naming the file and the line; neither prints output.
TEST_F(QbankToolTest, EveryCommandAnswersWithItsOutputOrOneLineNamingFileAndLine)
{
    const std::string text = "Caf\xC3\xA9 \"q\"", hex = EncryptString(text, QuestionPassPhrase), keyed = EncryptString(text, "K");
    const std::string bank = dir / "bank.kqb", source = dir / "source.txt", aiken = dir / "quiz.aiken";
    writeFile(source, Head + "Question: Q\nExplanation: E\nAnswer: a\n");
    writeFile(dir / "empty.kqb", "");
    writeFile(dir / "text.kqb", "\nnot a bank\n");
    writeFile(dir / "marked.kqb", "#" + hex + "\r\n");
    writeFile(aiken, "Which port?\nA) TCP 443\nB) TCP 80\nC) TCP 22\nD) TCP 25\nANSWER: A\n\nShort?\nA. yes\nB. no\nANSWER: A\n");
    test::writeFile(dir / "bad.kqb", test::bankText({"Title", "i1", "i2", "i3", "#Q1", "#E1", "#ab", "#Q2", "#E2", "#c"}));
    ::mkfifo((dir / "pipe.kqb").c_str(), 0600);
    const std::string usage = "kesta-qbank: ";
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"encrypt-line", text}, "0|" + hex + "\n|"},
        {{"--key", "K", "decrypt-line", keyed}, "0|" + text + "\n|"},
        {{"build", source, "-o", bank}, "0||"},
        {{"check", "--json", bank}, "0|{\"title\": \"T\", \"intro\": \"a\\r\\n\\r\\nb\\r\\n\\r\\nc\", \"question_count\": 1, "
                                    "\"corrupt\": false, \"questions\": [{\"question\": \"Q\", \"explanation\": \"E\", "
                                    "\"answer\": \"a\"}]}\n|"},
        {{"check", dir / "bad.kqb"}, "0|Title: Title\nQuestions: 2\nCorrupt: yes\n  question 1: the answer \"ab\" is "
                                     "not exactly one character\n|"},
        {{}, "2||" + usage + "no command given"},
        {{"build", source}, "2||" + usage + "build needs -o"},
        {{"encrypt-line", ""}, "1||" + usage + "an empty text has no enciphered form"},
        {{"decrypt-line", "ZZ"}, "1||" + usage + "the line cannot be deciphered: run-time error 13 (Type mismatch)"},
        {{"dump", dir / "none.kqb"}, "1||" + dir / "none.kqb: cannot be read (File not found)"},
        {{"check", dir / "text.kqb"}, "1||" + dir / "text.kqb:2: cannot be deciphered: run-time error 13 (Type mismatch)"},
        {{"dump", dir / "text.kqb"}, "1||" + dir / "text.kqb:2: cannot be deciphered: run-time error 13 (Type mismatch)"},
        {{"check", dir / "marked.kqb"}, "1||" + dir / "marked.kqb:1: not a question file: its first line is no title the program can read"},
        {{"check", dir / "pipe.kqb"}, "1||" + dir / "pipe.kqb: not a regular file (a link, a pipe or a device); nothing was read"},
        {{"build", dir / "empty.kqb", "-o", bank}, "1||" + dir / "empty.kqb:1: the source is empty; it must start with 'Title: TEXT'"},
        {{"build", source, "-o", dir / "no/bank.kqb"}, "1||" + dir / "no/bank.kqb: cannot be written: run-time error 76 (Path not found)"},
        {{"import", "--from", "aiken", aiken, "--title", "KESTA Quiz Demo 7", "-o", dir / "aiken.kqb", "--source-out", dir / "aiken.txt"},
         "0|" + aiken + ": imported 1 questions, skipped 1\n|" + aiken + ":8: skipped: 2 choices; the program shows four"},
        {{"import", "--strict", "--from", "aiken", aiken, "--title", "T", "-o", dir / "strict.kqb"},
         "1||" + aiken + ":8: skipped: 2 choices; the program shows four"},
        {{"import", "--from", "gift", aiken, "--title", "T"}, "2||" + usage + "import needs -o BANK, --source-out FILE or both"},
        {{"export", "--to", "gift", dir / "aiken.kqb"},
         "0|[html]Which port? {\n=TCP 443\n~TCP 80\n~TCP 22\n~TCP 25\n####The correct answer is A.\n}\n\n|"},
    };
    for (const auto& [args, expected] : cases)
        EXPECT_EQ(qbank(args), expected);
    // A bank is installed as it is: readable by all, written by its owner; no temporary file stays, no strict bank is made.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    EXPECT_EQ(fs::status(bank).permissions(), fs::perms(0666 & ~mask));
    for (const auto& entry : fs::directory_iterator(dir.path()))
        EXPECT_TRUE(entry.path().filename().string().front() != '.' && entry.path().filename() != "strict.kqb");
    EXPECT_EQ(readFile(dir / "aiken.txt").substr(0, 26), "Title: KESTA Quiz Demo 7\nI");
}

} // namespace
} // namespace kesta
