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
    try {
        DumpBank("\r\n#ZZ", QuestionPassPhrase);
        ADD_FAILURE();
    } catch (const BankSourceError& error) {
        EXPECT_EQ(error.line(), 2);
    }
}

struct ToolRun {
    int status = -1;
    std::string out, err;
};

class QbankToolTest : public ::testing::Test {
protected:
    ToolRun qbank(const std::vector<std::string>& args)
    {
        std::string command = "'" KESTA_QBANK "'";
        for (const std::string& arg : args)
            command += " '" + arg + "'";
        const int raw = std::system((command + " >" + dir / "out" + " 2>" + dir / "err" + " </dev/null").c_str());
        return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, readFile(dir / "out"), readFile(dir / "err")};
    }

    test::TempDir dir;
};

// Usage errors exit with 2, failures with 1 and one line naming the file and the line; neither prints output.
TEST_F(QbankToolTest, EveryCommandAnswersWithItsOutputOrOneLineNamingFileAndLine)
{
    const std::string text = "Caf\xC3\xA9 \"q\"", hex = EncryptString(text, QuestionPassPhrase);
    const std::string bank = dir / "bank.kqb", source = dir / "source.txt";
    writeFile(source, Head + "Question: Q\nExplanation: E\nAnswer: a\n");
    writeFile(dir / "empty.kqb", "");
    writeFile(dir / "text.kqb", "not a bank\n");
    writeFile(dir / "marked.kqb", "#" + hex + "\r\n");
    const std::string aiken = dir / "quiz.aiken";
    writeFile(aiken, "Which port?\nA) TCP 443\nB) TCP 80\nC) TCP 22\nD) TCP 25\nANSWER: A\n\nShort?\nA. yes\nB. no\nANSWER: A\n");
    ::mkfifo((dir / "pipe.kqb").c_str(), 0600);
    const std::string usage = "kesta-qbank: ";
    const struct {
        std::vector<std::string> args;
        int status;
        std::string out, err;
    } cases[] = {
        {{"encrypt-line", text}, 0, hex + "\n", ""},
        {{"decrypt-line", hex}, 0, text + "\n", ""},
        {{"--key", "K", "encrypt-line", text}, 0, EncryptString(text, "K") + "\n", ""},
        {{"decrypt-line", EncryptString(text, "K"), "--key=K"}, 0, text + "\n", ""},
        {{"build", source, "-o", bank}, 0, "", ""},
        {{"check", bank}, 0, "Title: T\nQuestions: 1\nCorrupt: no\n", ""},
        {{"check", "--json", bank}, 0,
         "{\"title\": \"T\", \"intro\": \"a\\r\\n\\r\\nb\\r\\n\\r\\nc\", \"question_count\": 1, \"corrupt\": false, "
         "\"questions\": [{\"question\": \"Q\", \"explanation\": \"E\", \"answer\": \"a\"}]}\n",
         ""},
        {{}, 2, "", usage + "no command given"},
        {{"frobnicate"}, 2, "", usage + "unknown command frobnicate"},
        {{"encrypt-line", "a", "b"}, 2, "", usage + "encrypt-line takes 1 operand"},
        {{"build", source}, 2, "", usage + "build needs -o"},
        {{"dump", bank, "-o", "x"}, 2, "", usage + "-o does not belong to dump"},
        {{"dump", "--json", bank}, 2, "", usage + "--json does not belong to dump"},
        {{"import", "--from", "aiken", aiken, "--title", "KESTA Quiz Demo 7", "-o", dir / "aiken.kqb", "--source-out",
          dir / "aiken.txt"},
         0, aiken + ": imported 1 questions, skipped 1\n", aiken + ":8: skipped: 2 choices; the program shows four"},
        {{"import", "--strict", "--from", "aiken", aiken, "--title", "T", "-o", dir / "strict.kqb"}, 1, "",
         aiken + ":8: skipped: 2 choices; the program shows four"},
        {{"import", "--from", "xml", aiken, "--title", "T", "-o", bank}, 2, "", usage + "the format is aiken or gift, not xml"},
        {{"import", "--from", "gift", aiken, "--title", "T"}, 2, "", usage + "import needs -o BANK, --source-out FILE or both"},
        {{"export", "--to", "gift", dir / "aiken.kqb"}, 0,
         "[html]Which port? {\n=TCP 443\n~TCP 80\n~TCP 22\n~TCP 25\n####The correct answer is A.\n}\n\n", ""},
        {{"encrypt-line", "a", "--key"}, 2, "", usage + "--key needs a value"},
        {{"--key", "", "encrypt-line", "a"}, 2, "", usage + "--key needs a non-empty pass phrase"},
        {{"encrypt-line", ""}, 1, "", usage + "an empty text has no enciphered form"},
        {{"decrypt-line", "ZZ"}, 1, "", usage + "the line cannot be deciphered: run-time error 13 (Type mismatch)"},
        {{"dump", dir / "none.kqb"}, 1, "", dir / "none.kqb: cannot be read (File not found)"},
        {{"check", dir / "empty.kqb"}, 1, "", dir / "empty.kqb: empty; not a question file"},
        {{"dump", dir / "empty.kqb"}, 1, "", dir / "empty.kqb: empty; not a question file"},
        {{"check", dir / "text.kqb"}, 1, "", dir / "text.kqb:1: cannot be deciphered: run-time error 13 (Type mismatch)"},
        {{"dump", dir / "text.kqb"}, 1, "", dir / "text.kqb:1: cannot be deciphered: run-time error 13 (Type mismatch)"},
        {{"check", dir / "marked.kqb"}, 1, "",
         dir / "marked.kqb:1: not a question file: its first line is no title the program can read"},
        {{"check", dir / "pipe.kqb"}, 1, "", dir / "pipe.kqb: not a regular file (a link, a pipe or a device); nothing was read"},
        {{"build", dir / "empty.kqb", "-o", bank}, 1, "", dir / "empty.kqb:1: the source is empty; it must start with 'Title: TEXT'"},
        {{"build", source, "-o", dir / "no/bank.kqb"}, 1, "", dir / "no/bank.kqb: cannot be written: run-time error 76 (Path not found)"},
    };
    for (const auto& c : cases) {
        const ToolRun run = qbank(c.args);
        EXPECT_EQ(run.status, c.status) << run.err;
        EXPECT_EQ(run.out, c.out);
        EXPECT_EQ(run.err.substr(0, run.err.find('\n')), c.err);
    }
    // The bank is installed as it is: readable by all, written by its owner; no temporary file stays.
    struct stat st {};
    ASSERT_EQ(::stat(bank.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0666 & ~[] { const mode_t m = ::umask(0); ::umask(m); return m; }());
    for (const auto& entry : fs::directory_iterator(dir.path()))
        EXPECT_NE(entry.path().filename().string().front(), '.') << entry.path();
}

TEST_F(QbankToolTest, CheckReportsEveryCorruptionCondition)
{
    std::vector<std::string> lines = {"Title", "i1", "i2", "i3", "#Q1", "#E1", "#ab", "#Q2", "#E2", "#c"};
    for (int k = 3; k <= 1001; ++k)
        lines.insert(lines.end(), {"#Q" + std::to_string(k), "#E", "#a"});
    lines.resize(10050);
    test::writeBankLines(dir / "bad.kqb", lines);
    EXPECT_EQ(qbank({"check", dir / "bad.kqb"}).out,
              "Title: Title\nQuestions: 1000\nCorrupt: yes\n  question 1: the answer \"ab\" is not exactly one character\n"
              "  more than 1000 questions: the blocks past the 1000th run into question 1000\n"
              "  10000 or more lines: every line after line 9999 but the last is lost\n");
}

TEST_F(QbankToolTest, EveryDemoBankLoadsAndDumpsToItsSource)
{
    int banks = 0;
    for (const auto& entry : fs::directory_iterator(KESTA_BANK_SOURCE_DIR)) {
        const fs::path bank = fs::path(KESTA_BUILT_QUESTIONS) / (entry.path().stem().string() + ".kqb");
        const ToolRun check = qbank({"check", bank.string()});
        EXPECT_NE(check.out.find("Corrupt: no\n"), std::string::npos) << bank;
        EXPECT_EQ(qbank({"dump", bank.string()}).out, readFile(entry.path().string())) << bank;
        ++banks;
    }
    EXPECT_GT(banks, 0);
}

} // namespace
} // namespace kesta
