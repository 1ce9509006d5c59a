#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"
#include "support/BankWriter.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include <sys/wait.h>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using test::readFile;
using test::writeFile;

struct ToolRun {
    int status = -1;
    std::string out, err;
};

std::unique_ptr<QuestionList> loaded(const std::string& path)
{
    auto list = std::make_unique<QuestionList>();
    LoadObserver quiet;
    EXPECT_FALSE(LoadQuestionFile(path, *list, quiet, decipherWith(std::string(QuestionPassPhrase))).corrupt());
    return list;
}

class QbankToolTest : public ::testing::Test {
protected:
    ToolRun qbank(const std::vector<std::string>& args)
    {
        std::string command = "'" KESTA_QBANK "'";
        for (const std::string& arg : args) {
            command += " '";
            for (const char c : arg)
                command += c == '\'' ? std::string("'\\''") : std::string(1, c);
            command += "'";
        }
        const int raw = std::system((command + " >" + dir / "out" + " 2>" + dir / "err" + " </dev/null").c_str());
        return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, readFile(dir / "out"), readFile(dir / "err")};
    }
    ToolRun build(const std::string& source, const std::string& bank, std::vector<std::string> extra = {})
    {
        writeFile(dir / "source.txt", source);
        extra.insert(extra.begin(), {"build", dir / "source.txt", "-o", dir / bank});
        return qbank(extra);
    }

    test::TempDir dir;
};

TEST_F(QbankToolTest, LinesEncipherAndDecipherUnderAnyKey)
{
    const std::string text = "Caf\xC3\xA9 \xF0\x9F\x98\x80 \"quoted\"";
    const std::string hex = EncryptString(text, QuestionPassPhrase);
    EXPECT_EQ(qbank({"encrypt-line", text}).out, hex + "\n");
    EXPECT_EQ(qbank({"decrypt-line", hex}).out, text + "\n");

    const std::string other = EncryptString(text, "other phrase");
    const ToolRun run = qbank({"--key", "other phrase", "encrypt-line", text});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, other + "\n");
    EXPECT_EQ(qbank({"decrypt-line", other, "--key=other phrase"}).out, text + "\n");
}

TEST_F(QbankToolTest, UsageErrorsExitWith2AndFailuresWith1WithoutOutput)
{
    const std::pair<std::vector<std::string>, int> cases[] = {
        {{}, 2}, {{"frobnicate"}, 2}, {{"encrypt-line"}, 2}, {{"encrypt-line", "a", "b"}, 2},
        {{"build", "x.txt"}, 2}, {{"dump", "x", "-o", "y"}, 2}, {{"dump", "--json", "x"}, 2},
        {{"encrypt-line", "a", "--key"}, 2}, {{"encrypt-line", "a", "--key", ""}, 2},
        {{"decrypt-line", "ZZ"}, 1}, {{"decrypt-line", "ABC"}, 1}, {{"dump", "/nonexistent/bank.kqb"}, 1},
        {{"check", "/nonexistent/bank.kqb"}, 1}, {{"build", "/nonexistent/source.txt", "-o", "/nonexistent/x.kqb"}, 1},
    };
    for (const auto& [args, status] : cases) {
        SCOPED_TRACE(args.empty() ? "" : args[0] + " " + args.back());
        const ToolRun run = qbank(args);
        EXPECT_EQ(run.status, status);
        EXPECT_FALSE(run.err.empty());
        EXPECT_TRUE(run.out.empty());
    }
}

TEST_F(QbankToolTest, BuildThenDumpGivesTheSourceBackByteForByte)
{
    const std::string source = "Title: KESTA Exam Demo 9\nIntro: Welcome, \"candidate\".\n\nIntro: \tTabbed intro\n"
                               "Intro: Third \xE2\x80\x94 dash\nQuestion: Which is right?\na) one\n"
                               "\\Answer: looks like a keyword\n\\\\starts with a backslash\n\\#: looks marked\n"
                               "Explanation: Because.\n  a second, indented paragraph  \nAnswer: b \n"
                               "ignored after the answer\n\nQuestion: \xE4\xB8\xAD?\nExplanation: <br><br>\nAnswer: d\n";
    ASSERT_EQ(build(source, "bank.kqb").status, 0);
    const std::string bank = readFile(dir / "bank.kqb");
    EXPECT_EQ(bank.substr(bank.size() - 2), "\r\n");
    EXPECT_EQ(std::count(bank.begin(), bank.end(), '\n'), std::count(source.begin(), source.end(), '\n'));
    EXPECT_EQ(qbank({"dump", dir / "bank.kqb"}).out, source);

    const auto list = loaded(dir / "bank.kqb");
    EXPECT_EQ(list->QuestionCount, 2);
    EXPECT_EQ(list->Questions[1].Question, "Which is right?\r\na) one\r\nAnswer: looks like a keyword\r\n"
                                           "\\starts with a backslash\r\n#: looks marked");
    EXPECT_EQ(list->Questions[1].Explanation, "Because.\r\n\r\n  a second, indented paragraph");
    EXPECT_EQ(list->Questions[1].Answer, "b");
}

TEST_F(QbankToolTest, AnyDecipherableBankDumpsToASourceThatRebuildsIt)
{
    // Texts no plain source line holds: a marked header line, line breaks in a
    // text, lines that decipher to nothing, lower-case digits.
    const auto enc = [](const std::string& text) { return EncryptString(text, QuestionPassPhrase); };
    const std::string silentEmpty(62, '0');
    std::string lower = enc("b");
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
    writeFile(dir / "odd.kqb", enc("Title") + "\r\n#" + enc("marked intro") + "\r\n" + silentEmpty + "\r\n"
                  + enc("Intro: two\r\nlines") + "\r\n#" + enc("Q\nwith LF") + "\r#" + silentEmpty + "\n#" + lower
                  + "\r\n" + enc("Raw: plain text that looks like a form"));

    const ToolRun run = qbank({"dump", dir / "odd.kqb"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("#: marked intro\n"), std::string::npos);
    EXPECT_NE(run.out.find("Raw: " + silentEmpty + "\n"), std::string::npos);
    EXPECT_NE(run.out.find("\\Raw: plain text"), std::string::npos);
    ASSERT_EQ(build(run.out, "rebuilt.kqb").status, 0);
    EXPECT_EQ(qbank({"dump", dir / "rebuilt.kqb"}).out, run.out);
    const std::string json = qbank({"check", "--json", dir / "odd.kqb"}).out;
    EXPECT_EQ(qbank({"check", "--json", dir / "rebuilt.kqb"}).out, json);
    EXPECT_NE(json.find("\"question\": \"Q\\nwith LF\""), std::string::npos);
}

TEST_F(QbankToolTest, BuildRefusesSourcesThatWouldNotReadBackAndKeepsTheOldBank)
{
    writeFile(dir / "bank.kqb", "previous content");
    const std::string head = "Title: T\nIntro: a\nIntro: b\nIntro: c\n";
    const std::pair<std::string, std::string> cases[] = {
        {head + "Question: \n", "line 5"}, // empty text
        {head + "Question: q\nAnswer: a\n", "line 6"}, // out of the cycle
        {head + "Question: q\nExplanation: e\nAnswer: a", "line 7"}, // no final LF
        {head + "Intro: d\n", "line 5"},
        {head + "Question:no space\n", "line 5"},
        {"Title: T\r\nIntro: a\n", "line 1"},
        {"Intro: a\n", "line 1"},
        {"Title: T\nTitle: again\n", "line 2"},
        {"Title: T\n\\needless escape\n", "line 2"},
        {"Title: T\nRaw: ZZZZ\n", "line 2"},
        {"Title: T\nRaw: " + EncryptString("expressible", QuestionPassPhrase) + "\n", "line 2"},
        {"Title: T\nbad \xFF utf-8\n", "line 2"},
        {"", "line 1"},
    };
    for (const auto& [source, lineNamed] : cases) {
        SCOPED_TRACE(source);
        const ToolRun run = build(source, "bank.kqb");
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.err.find(lineNamed + ":"), std::string::npos) << run.err;
        EXPECT_EQ(readFile(dir / "bank.kqb"), "previous content");
    }
    EXPECT_EQ(build("Title: T\n", "fresh.kqb").status, 0);
    for (const auto& entry : fs::directory_iterator(dir.path()))
        EXPECT_EQ(entry.path().filename().string().find(".kqb."), std::string::npos) << "temporary file left behind";
}

TEST_F(QbankToolTest, CheckReportsEveryCorruptionCondition)
{
    std::vector<std::string> lines = {"Title", "i1", "i2", "i3", "#Q1", "#E1", "#ab", "#Q2", "#E2", "#c"};
    for (int k = 3; k <= 1001; ++k)
        lines.insert(lines.end(), {"#Q" + std::to_string(k), "#E", "#a"});
    lines.resize(10050);
    test::writeBankLines(dir / "bad.kqb", lines);
    const ToolRun run = qbank({"check", dir / "bad.kqb"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out.substr(0, run.out.find("  ")), "Title: Title\nQuestions: 1000\nCorrupt: yes\n");
    for (const char* reason : {"question 1: the answer \"ab\"", "more than 1000 questions", "10000 or more lines"})
        EXPECT_NE(run.out.find(reason), std::string::npos) << reason;
    EXPECT_EQ(run.out.find("question 2:"), std::string::npos);

    test::writeBankLines(dir / "good.kqb", {"Title", "i1", "i2", "i3", "#Q1", "#E1", "#a"});
    EXPECT_EQ(qbank({"check", dir / "good.kqb"}).out, "Title: Title\nQuestions: 1\nCorrupt: no\n");
    writeFile(dir / "good.kqb", readFile(dir / "good.kqb") + "#NOT HEX\r\n");
    const ToolRun broken = qbank({"check", dir / "good.kqb"}); // no partial output
    EXPECT_EQ(broken.status, 1);
    EXPECT_EQ(broken.out, "");
}

TEST_F(QbankToolTest, JsonHoldsEveryLoadedFieldEscaped)
{
    test::writeBankLines(dir / "json.kqb", {"T \"quoted\" \\ title", "In\ttro", "two", "three", "#Q \x01\x1F\x7F",
                                            "a) caf\xC3\xA9", "#<br><br>", "#b ", "#\xED\xA0\x80", "#E", "#c"});
    EXPECT_EQ(qbank({"check", "--json", dir / "json.kqb"}).out,
              "{\"title\": \"T \\\"quoted\\\" \\\\ title\", \"intro\": \"In\\ttro\\r\\n\\r\\ntwo\\r\\n\\r\\nthree\", "
              "\"question_count\": 2, \"corrupt\": false, \"questions\": ["
              "{\"question\": \"Q \\u0001\\u001f\\u007f\\r\\na) caf\xC3\xA9\", "
              "\"explanation\": \"The correct answer is b .<br><br>\", \"answer\": \"b\"}, "
              "{\"question\": \"\\ud800\", \"explanation\": \"E\", \"answer\": \"c\"}]}\n");

    ASSERT_EQ(build("Title: Keyed\nIntro: i\n", "keyed.kqb", {"--key", "K"}).status, 0);
    EXPECT_EQ(qbank({"check", "--json", "--key", "K", dir / "keyed.kqb"}).out,
              "{\"title\": \"Keyed\", \"intro\": \"i\", \"question_count\": 0, \"corrupt\": false, \"questions\": []}\n");
}

TEST_F(QbankToolTest, EveryDemoBankLoadsAndDumpsToItsSource)
{
    int banks = 0;
    for (const auto& entry : fs::directory_iterator(KESTA_BANK_SOURCE_DIR)) {
        if (entry.path().extension() != ".txt")
            continue;
        const fs::path bank = fs::path(KESTA_BUILT_QUESTIONS) / (entry.path().stem().string() + ".kqb");
        SCOPED_TRACE(bank.string());
        ASSERT_TRUE(fs::exists(bank));
        EXPECT_GE(loaded(bank.string())->QuestionCount, 10);
        EXPECT_EQ(qbank({"dump", bank.string()}).out, readFile(entry.path().string()));
        ++banks;
    }
    EXPECT_GT(banks, 0);
}

} // namespace
} // namespace kesta
