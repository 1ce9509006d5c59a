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

using test::readFile;
using test::writeFile;

struct ToolRun {
    int status = -1;
    std::string out;
    std::string err;
};

std::string shellQuote(const std::string& arg)
{
    std::string quoted = "'";
    for (const char c : arg) {
        if (c == '\'')
            quoted += "'\\''";
        else
            quoted += c;
    }
    return quoted + "'";
}

class QbankToolTest : public ::testing::Test {
protected:
    ToolRun qbank(const std::vector<std::string>& args)
    {
        std::string command = shellQuote(KESTA_QBANK);
        for (const std::string& arg : args)
            command += " " + shellQuote(arg);
        command += " >" + shellQuote(dir / "stdout") + " 2>" + shellQuote(dir / "stderr") + " </dev/null";
        const int raw = std::system(command.c_str());
        ToolRun run;
        run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        run.out = readFile(dir / "stdout");
        run.err = readFile(dir / "stderr");
        return run;
    }

    // Builds `source` into a bank and returns the tool's run.
    ToolRun build(const std::string& source, const std::string& bank = "bank.kqb", std::vector<std::string> extra = {})
    {
        writeFile(dir / "source.txt", source);
        std::vector<std::string> args = {"build", dir / "source.txt", "-o", dir / bank};
        args.insert(args.end(), extra.begin(), extra.end());
        return qbank(args);
    }

    test::TempDir dir;
};

const std::string richSource = "Title: KESTA Exam Demo 9\n"
                               "Intro: Welcome, \"candidate\".\n"
                               "\n"
                               "Intro: \tTabbed intro\n"
                               "Intro: Third line \xE2\x80\x94 with a dash\n"
                               "Question: Which is right?\n"
                               "a) one\n"
                               "\\Answer: looks like a keyword\n"
                               "\\\\starts with a backslash\n"
                               "\\#: looks like a marked line\n"
                               "Explanation: Because.\n"
                               "  a second, indented paragraph  \n"
                               "Answer: b \n"
                               "ignored after the answer\n"
                               "\n"
                               "Question: \xE4\xB8\xAD\xE6\x96\x87?\n"
                               "Explanation: <br><br>\n"
                               "Answer: d\n";

TEST_F(QbankToolTest, LinesEncipherAndDecipher)
{
    const std::string text = "Caf\xC3\xA9 \xF0\x9F\x98\x80 \"quoted\"";
    ToolRun run = qbank({"encrypt-line", text});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, EncryptString(text, QuestionPassPhrase) + "\n");

    const std::string hex = run.out.substr(0, run.out.size() - 1);
    run = qbank({"decrypt-line", hex});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, text + "\n");

    // Another pass phrase enciphers differently and only it deciphers its line.
    run = qbank({"--key", "other phrase", "encrypt-line", text});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.substr(0, run.out.size() - 1), hex);
    EXPECT_EQ(run.out, EncryptString(text, "other phrase") + "\n");
    run = qbank({"decrypt-line", run.out.substr(0, run.out.size() - 1), "--key=other phrase"});
    EXPECT_EQ(run.out, text + "\n");
}

TEST_F(QbankToolTest, ExitStatusTellsUsageErrorsFromFatalFailures)
{
    const struct {
        std::vector<std::string> args;
        int status;
    } cases[] = {
        {{}, 2},
        {{"frobnicate"}, 2},
        {{"encrypt-line"}, 2},
        {{"encrypt-line", "a", "b"}, 2},
        {{"build", "x.txt"}, 2},
        {{"dump", "x", "-o", "y"}, 2},
        {{"dump", "--json", "x"}, 2},
        {{"encrypt-line", "a", "--key"}, 2},
        {{"encrypt-line", "a", "--key", ""}, 2},
        {{"check", "--bogus", "x"}, 2},
        {{"decrypt-line", "ZZ"}, 1},                // type mismatch
        {{"decrypt-line", "ABC"}, 1},               // odd length
        {{"dump", "/nonexistent/bank.kqb"}, 1},
        {{"check", "/nonexistent/bank.kqb"}, 1},
        {{"build", "/nonexistent/source.txt", "-o", "/nonexistent/x.kqb"}, 1},
    };
    for (const auto& c : cases) {
        std::string shown;
        for (const std::string& a : c.args)
            shown += a + " ";
        const ToolRun run = qbank(c.args);
        EXPECT_EQ(run.status, c.status) << shown;
        EXPECT_FALSE(run.err.empty()) << shown;
        EXPECT_TRUE(run.out.empty()) << shown;
    }
}

TEST_F(QbankToolTest, DumpGivesTheSourceBackByteForByte)
{
    ASSERT_EQ(build(richSource).status, 0);
    const std::string bank = readFile(dir / "bank.kqb");
    EXPECT_EQ(bank.substr(bank.size() - 2), "\r\n");
    EXPECT_EQ(std::count(bank.begin(), bank.end(), '\n'), std::count(richSource.begin(), richSource.end(), '\n'));
    const ToolRun run = qbank({"dump", dir / "bank.kqb"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, richSource);

    // The bank holds what the source says, as the program loads it.
    auto list = std::make_unique<QuestionList>();
    LoadObserver quiet;
    EXPECT_FALSE(LoadQuestionFile(dir / "bank.kqb", *list, quiet, decipherWith(std::string(QuestionPassPhrase))).corrupt());
    EXPECT_EQ(list->QuestionCount, 2);
    EXPECT_EQ(list->Questions[1].Question,
              "Which is right?\r\na) one\r\nAnswer: looks like a keyword\r\n\\starts with a backslash\r\n"
              "#: looks like a marked line");
    EXPECT_EQ(list->Questions[1].Explanation, "Because.\r\n\r\n  a second, indented paragraph");
    EXPECT_EQ(list->Questions[1].Answer, "b");
}

TEST_F(QbankToolTest, AnyDecipherableBankDumpsToASourceThatRebuildsIt)
{
    // Texts no plain source line can hold: a marked header line, line breaks
    // inside a text, lines that decipher to nothing, lower-case digits.
    const std::string silentEmpty(62, '0');
    std::string bank = EncryptString("Title", QuestionPassPhrase) + "\r\n";
    bank += "#" + EncryptString("marked intro", QuestionPassPhrase) + "\r\n";
    bank += silentEmpty + "\r\n";
    bank += EncryptString("Intro: two\r\nlines", QuestionPassPhrase) + "\r\n";
    bank += "#" + EncryptString("Q\nwith LF", QuestionPassPhrase) + "\r";
    bank += "#" + silentEmpty + "\n";
    std::string lower = EncryptString("b", QuestionPassPhrase);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
    bank += "#" + lower + "\r\n";
    bank += EncryptString("Raw: plain text that looks like a form", QuestionPassPhrase);
    writeFile(dir / "odd.kqb", bank);

    ToolRun run = qbank({"dump", dir / "odd.kqb"});
    ASSERT_EQ(run.status, 0) << run.err;
    const std::string source = run.out;
    EXPECT_NE(source.find("#: marked intro\n"), std::string::npos);
    EXPECT_NE(source.find("Raw: " + silentEmpty + "\n"), std::string::npos);
    EXPECT_NE(source.find("\\Raw: plain text"), std::string::npos);

    ASSERT_EQ(build(source, "rebuilt.kqb").status, 0);
    EXPECT_EQ(qbank({"dump", dir / "rebuilt.kqb"}).out, source);
    const std::string original = qbank({"check", "--json", dir / "odd.kqb"}).out;
    EXPECT_EQ(qbank({"check", "--json", dir / "rebuilt.kqb"}).out, original);
    EXPECT_NE(original.find("\"question\": \"Q\\nwith LF\""), std::string::npos);
}

TEST_F(QbankToolTest, BuildRefusesSourcesThatWouldNotReadBack)
{
    writeFile(dir / "bank.kqb", "previous content");
    const struct {
        std::string source;
        std::string lineNamed;
    } cases[] = {
        {"Title: T\nIntro: a\nIntro: b\nIntro: c\nQuestion: \n", "line 5"},       // empty text
        {"Title: T\nIntro: a\nIntro: b\nIntro: c\nQuestion:\n", "line 5"},
        {"Title: T\nIntro: a\nIntro: b\nIntro: c\nQuestion: q\nAnswer: a\n", "line 6"}, // out of the cycle
        {"Title: T\nIntro: a\nIntro: b\nIntro: c\nQuestion: q\nExplanation: e\nAnswer: a", "line 7"}, // no final LF
        {"Title: T\r\nIntro: a\n", "line 1"},
        {"Intro: a\n", "line 1"},
        {"Title: T\nTitle: again\n", "line 2"},
        {"Title: T\nIntro: a\nIntro: b\nIntro: c\nIntro: d\n", "line 5"},
        {"Title: T\nIntro: a\nIntro: b\nIntro: c\nQuestion:no space\n", "line 5"},
        {"Title: T\n\\needless escape\n", "line 2"},
        {"Title: T\nRaw: ZZZZ\n", "line 2"},
        {"Title: T\nRaw: " + EncryptString("expressible", QuestionPassPhrase) + "\n", "line 2"},
        {"Title: T\nbad \xFF utf-8\n", "line 2"},
        {"", "line 1"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.source);
        const ToolRun run = build(c.source);
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.err.find(c.lineNamed + ":"), std::string::npos) << run.err;
        EXPECT_EQ(readFile(dir / "bank.kqb"), "previous content");
    }
    EXPECT_EQ(build("Title: T\n", "fresh.kqb").status, 0);
    for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
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
    EXPECT_NE(run.out.find("question 1: the answer \"ab\""), std::string::npos);
    EXPECT_EQ(run.out.find("question 2:"), std::string::npos);
    EXPECT_NE(run.out.find("more than 1000 questions"), std::string::npos);
    EXPECT_NE(run.out.find("10000 or more lines"), std::string::npos);

    test::writeBankLines(dir / "good.kqb", {"Title", "i1", "i2", "i3", "#Q1", "#E1", "#a"});
    EXPECT_EQ(qbank({"check", dir / "good.kqb"}).out, "Title: Title\nQuestions: 1\nCorrupt: no\n");

    test::writeBankLines(dir / "broken.kqb", {"Title", "i1", "i2", "i3", "#Q1"});
    writeFile(dir / "broken.kqb", readFile(dir / "broken.kqb") + "#NOT HEX\r\n");
    const ToolRun broken = qbank({"check", dir / "broken.kqb"});
    EXPECT_EQ(broken.status, 1);
    EXPECT_TRUE(broken.out.empty());
}

TEST_F(QbankToolTest, JsonHoldsEveryLoadedFieldEscaped)
{
    test::writeBankLines(dir / "json.kqb", {"T \"quoted\" \\ title", "In\ttro", "two", "three", "#Q \x01\x1F\x7F",
                                            "a) caf\xC3\xA9", "#<br><br>", "#b ", "#\xED\xA0\x80", "#E", "#c"});
    const ToolRun run = qbank({"check", "--json", dir / "json.kqb"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "{\"title\": \"T \\\"quoted\\\" \\\\ title\", "
                       "\"intro\": \"In\\ttro\\r\\n\\r\\ntwo\\r\\n\\r\\nthree\", "
                       "\"question_count\": 2, \"corrupt\": false, \"questions\": ["
                       "{\"question\": \"Q \\u0001\\u001f\\u007f\\r\\na) caf\xC3\xA9\", "
                       "\"explanation\": \"The correct answer is b .<br><br>\", \"answer\": \"b\"}, "
                       "{\"question\": \"\\ud800\", \"explanation\": \"E\", \"answer\": \"c\"}]}\n");

    // --key applies to check too.
    ASSERT_EQ(build("Title: Keyed\nIntro: i\n", "keyed.kqb", {"--key", "K"}).status, 0);
    EXPECT_EQ(qbank({"check", "--json", "--key", "K", dir / "keyed.kqb"}).out,
              "{\"title\": \"Keyed\", \"intro\": \"i\", \"question_count\": 0, \"corrupt\": false, \"questions\": []}\n");
}

TEST_F(QbankToolTest, EveryBuiltDemoBankLoadsWithoutCorruption)
{
    namespace fs = std::filesystem;
    if (!fs::is_directory(KESTA_BUILT_QUESTIONS))
        GTEST_SKIP() << "no built question banks";
    int banks = 0;
    for (const auto& entry : fs::directory_iterator(KESTA_BUILT_QUESTIONS)) {
        if (entry.path().extension() != ".kqb")
            continue;
        ++banks;
        SCOPED_TRACE(entry.path().string());
        auto list = std::make_unique<QuestionList>();
        LoadObserver quiet;
        const LoadResult result =
            LoadQuestionFile(entry.path().string(), *list, quiet, decipherWith(std::string(QuestionPassPhrase)));
        EXPECT_FALSE(result.corrupt());
        EXPECT_GE(list->QuestionCount, 10);

        const fs::path source = fs::path(KESTA_BANK_SOURCE_DIR) / (entry.path().stem().string() + ".txt");
        if (fs::exists(source)) {
            EXPECT_EQ(qbank({"dump", entry.path().string()}).out, readFile(source.string()));
        }
    }
    if (banks == 0)
        GTEST_SKIP() << "no built question banks";
}

} // namespace
} // namespace kesta
