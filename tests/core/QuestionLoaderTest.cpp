#include "questions/core/QuestionLoader.h"

#include "common/core/RuntimeError.h"
#include "questions/core/Cipher.h"
#include "support/BankWriter.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <memory>

namespace kesta {
namespace {

using test::writeBankLines;

// Records what a load shows, in order.
class RecordingObserver final : public LoadObserver {
public:
    void progressShown(bool shown) override { events.push_back(shown ? "shown" : "hidden"); }
    void progress(int value) override
    {
        if (values.empty())
            events.push_back("progress " + std::to_string(value));
        values.push_back(value);
    }
    void status(const std::string& text) override { events.push_back("status " + text); }
    void introduction(const std::string& page) override
    {
        events.push_back("page");
        this->page = page;
    }

    std::vector<std::string> events;
    std::vector<int> values;
    std::string page;
};

class QuestionLoaderTest : public ::testing::Test {
protected:
    // Loads raw bank lines (see writeBankLines) written with `lineEnd`.
    LoadResult load(const std::vector<std::string>& lines, const std::string& lineEnd = "\r\n")
    {
        writeBankLines(path, lines, lineEnd);
        return loadFile();
    }
    LoadResult loadFile() { return LoadQuestionFile(path, *list, observer, decipherWith(std::string(QuestionPassPhrase))); }

    const QuestionRecord& q(int k) const { return list->Questions[k]; }
    int count() const { return list->QuestionCount; }

    test::TempDir dir;
    std::string path = dir / "bank.kqb";
    std::unique_ptr<QuestionList> list = std::make_unique<QuestionList>();
    RecordingObserver observer;
};

const std::vector<std::string> header = {"Title", "Intro one", "Intro two", "Intro three"};

std::vector<std::string> withHeader(std::vector<std::string> body)
{
    body.insert(body.begin(), header.begin(), header.end());
    return body;
}

TEST_F(QuestionLoaderTest, ReadsTitleIntroAndQuestionBlocks)
{
    const LoadResult result = load(withHeader({"plain before any question is ignored", "#First question", "a) one",
                                               "b) two", "#Explanation one", "Second paragraph", "#  b ",
                                               "after the answer: ignored", "#Second", "#Why", "#c"}));
    EXPECT_FALSE(result.corrupt());
    ASSERT_EQ(count(), 2);
    EXPECT_EQ(q(1).Intro, "Intro one\r\n\r\nIntro two\r\n\r\nIntro three");
    EXPECT_EQ(q(1).Question, "First question\r\na) one\r\nb) two");
    EXPECT_EQ(q(1).Explanation, "Explanation one\r\n\r\nSecond paragraph");
    EXPECT_EQ(q(1).Answer, "b");
    EXPECT_EQ(q(2).Question, "Second");
    EXPECT_EQ(q(2).Explanation, "Why");
    EXPECT_EQ(q(2).Answer, "c");
    EXPECT_EQ(q(2).Intro, "");
    EXPECT_EQ(q(0).Question, "");
    EXPECT_EQ(q(1).Reserved, "");
}

TEST_F(QuestionLoaderTest, ShowsProgressStatusAndPageInOrder)
{
    load({"Title", "Intro\twith tab", "two", "three", "#Q", "#E", "#a"});
    EXPECT_EQ(observer.events,
              (std::vector<std::string>{"progress 1", "shown", "status " + std::string(LoadingText), "page",
                                        "status Ready", "hidden"}));
    EXPECT_EQ(observer.page, "Intro   with tab\r\n\r\ntwo\r\n\r\nthree");
    EXPECT_EQ(q(1).Intro, "Intro\twith tab\r\n\r\ntwo\r\n\r\nthree");
}

TEST_F(QuestionLoaderTest, ProgressCountsOneRoundMoreThanLinesAndStopsAt100)
{
    for (const int n : {1, 5, 97, 98, 150}) {
        SCOPED_TRACE(n);
        std::vector<std::string> lines(static_cast<std::size_t>(n));
        lines[0] = "Title";
        observer = RecordingObserver();
        load(lines);
        const int rounds = n + 1;
        EXPECT_EQ(observer.values.back(), std::min(n + 2, 100));
        EXPECT_EQ(observer.values.size(), static_cast<std::size_t>(std::min(rounds, 99)) + 1);
    }
}

TEST_F(QuestionLoaderTest, EmptyLinesAreNoHeaderLines)
{
    load({"Title", "", "", "Intro one", "", "Intro two", "", "", "Intro three", "", "#Q", "", "#E", "#d"});
    EXPECT_EQ(q(1).Intro, "Intro one\r\n\r\nIntro two\r\n\r\nIntro three");
    EXPECT_EQ(q(1).Question, "Q");
    EXPECT_EQ(count(), 1);

    // A marked header line is a header line like any other.
    load({"Title", "#Marked intro", "two", "three", "#Q", "#E", "#d"});
    EXPECT_EQ(q(1).Intro, "Marked intro\r\n\r\ntwo\r\n\r\nthree");
}

TEST_F(QuestionLoaderTest, BareBreakExplanationNamesTheAnswerExceptForTheLastQuestion)
{
    load(withHeader({"#Q1", "#<br><br>", "#b ", "#Q2", "#<br><br>", "#c", "#Q3", "#<br><br>", "#d"}));
    ASSERT_EQ(count(), 3);
    EXPECT_EQ(q(1).Explanation, "The correct answer is b .<br><br>"); // the untrimmed answer
    EXPECT_EQ(q(1).Answer, "b");
    EXPECT_EQ(q(2).Explanation, "The correct answer is c.<br><br>");
    EXPECT_EQ(q(3).Explanation, "<br><br>");
}

TEST_F(QuestionLoaderTest, AnswersMustBeOneCharacter)
{
    // A line that deciphers to nothing: 31 bytes are no whole block.
    const std::string silentEmpty = "#" + std::string(62, '0');
    const struct {
        std::string answerLine;
        bool bad;
    } cases[] = {
        {"#b", false}, {"# b ", false}, {"#\xC3\xA9", false}, {"#ab", true}, {"#   ", true},
        {"#\xF0\x9F\x98\x80", true}, // two UTF-16 units
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.answerLine);
        list = std::make_unique<QuestionList>();
        const LoadResult result = load(withHeader({"#Q1", "#E1", "#a", "#Q2", "#E2", c.answerLine, "#Q3", "#E3", "#c"}));
        EXPECT_EQ(result.corrupt(), c.bad);
        EXPECT_EQ(result.badAnswers, c.bad ? std::vector<int>{2} : std::vector<int>{});
    }

    // An answer line that deciphers to nothing, written by hand.
    std::string content;
    for (const std::string& line : withHeader({"#Q1", "#E1"}))
        content += (line[0] == '#' ? "#" + EncryptString(line.substr(1), QuestionPassPhrase)
                                   : EncryptString(line, QuestionPassPhrase)) + "\r\n";
    test::writeFile(path, content + silentEmpty + "\r\n");
    const LoadResult result = loadFile();
    EXPECT_EQ(q(1).Answer, "");
    EXPECT_EQ(result.badAnswers, std::vector<int>{1});
}

std::vector<std::string> numberedBody(int questions)
{
    std::vector<std::string> body;
    for (int k = 1; k <= questions; ++k) {
        const std::string n = std::to_string(k);
        body.insert(body.end(), {"#Q" + n, "a) " + n, "#E" + n, "#a"});
    }
    return body;
}

TEST_F(QuestionLoaderTest, AThousandQuestionsLoadSilentlyAndMoreRunIntoTheLast)
{
    std::vector<std::string> lines = withHeader(numberedBody(1000));
    LoadResult result = load(lines);
    EXPECT_FALSE(result.corrupt());
    EXPECT_EQ(count(), 1000);
    EXPECT_EQ(q(1000).Question, "Q1000\r\na) 1000");

    lines.insert(lines.end(), {"#Q1001", "a) 1001", "#E1001", "#b"});
    list = std::make_unique<QuestionList>();
    result = load(lines);
    EXPECT_TRUE(result.tooManyQuestions);
    EXPECT_FALSE(result.tooManyLines);
    EXPECT_TRUE(result.badAnswers.empty());
    EXPECT_EQ(count(), 1000);
    EXPECT_EQ(q(1000).Question, "Q1000\r\na) 1000\r\na) 1001");
    EXPECT_EQ(q(1000).Explanation, "E1001");
    EXPECT_EQ(q(1000).Answer, "b");
    EXPECT_EQ(q(999).Question, "Q999\r\na) 999");
}

TEST_F(QuestionLoaderTest, WithoutBodyNoQuestionIsLoadedButTheIntroIsShown)
{
    const LoadResult result = load(withHeader({"plain body line"}));
    EXPECT_FALSE(result.corrupt());
    EXPECT_EQ(count(), 0);
    EXPECT_EQ(observer.page, "Intro one\r\n\r\nIntro two\r\n\r\nIntro three");

    // An empty file: no header, no page text, no question.
    test::writeFile(path, "");
    list = std::make_unique<QuestionList>();
    EXPECT_FALSE(loadFile().corrupt());
    EXPECT_EQ(count(), 0);
}

TEST_F(QuestionLoaderTest, TheListIsFilledNotCleared)
{
    list->Questions[3].Question = "left from before";
    list->Questions[1].Intro = "old intro";
    load(withHeader(numberedBody(2)));
    EXPECT_EQ(q(3).Question, "left from before");
    EXPECT_EQ(q(1).Intro, "Intro one\r\n\r\nIntro two\r\n\r\nIntro three");
}

TEST_F(QuestionLoaderTest, TenThousandLinesOrMoreAreCorruptAndOnlyTheLastLineSurvives)
{
    // Lines 5..9998 are empty; line 9999 is the explanation.
    auto fileOf = [](int lines, const std::vector<std::string>& tail) {
        std::vector<std::string> all = withHeader({"#Q"});
        all.resize(static_cast<std::size_t>(9998));
        all.push_back("#E");
        all.insert(all.end(), tail.begin(), tail.end());
        EXPECT_EQ(all.size(), static_cast<std::size_t>(lines));
        return all;
    };

    LoadResult result = load(fileOf(9999, {}));
    EXPECT_FALSE(result.tooManyLines);
    EXPECT_EQ(observer.values.back(), 100);

    list = std::make_unique<QuestionList>();
    result = load(fileOf(10000, {"#a"}));
    EXPECT_TRUE(result.tooManyLines);
    EXPECT_EQ(q(1).Answer, "a");

    list = std::make_unique<QuestionList>();
    result = load(fileOf(10003, {"#lost", "lost too", "", "#z"}));
    EXPECT_TRUE(result.tooManyLines);
    EXPECT_TRUE(result.corrupt());
    EXPECT_EQ(q(1).Question, "Q");
    EXPECT_EQ(q(1).Explanation, "E");
    EXPECT_EQ(q(1).Answer, "z");

    // When the last line is empty, nothing of the tail survives.
    list = std::make_unique<QuestionList>();
    result = load(fileOf(10001, {"#lost", ""}));
    EXPECT_TRUE(result.tooManyLines);
    EXPECT_EQ(q(1).Answer, "");
}

TEST_F(QuestionLoaderTest, LoneCrAndLoneLfEndLinesToo)
{
    const std::vector<std::string> lines = withHeader({"#Q", "a) x", "", "#E", "#a"});
    for (const std::string end : {"\r\n", "\r", "\n"}) {
        list = std::make_unique<QuestionList>();
        load(lines, end);
        EXPECT_EQ(q(1).Question, "Q\r\na) x");
        EXPECT_EQ(q(1).Answer, "a");
    }

    // Mixed ends, and a last line without one.
    std::string content;
    const char* ends[] = {"\r\n", "\n", "\r", "\n\r\n"};
    const std::vector<std::string> mixed = withHeader({"#Q", "#E", "#d"});
    for (std::size_t i = 0; i < mixed.size(); ++i) {
        const std::string& line = mixed[i];
        content += line[0] == '#' ? "#" + EncryptString(line.substr(1), QuestionPassPhrase)
                                  : EncryptString(line, QuestionPassPhrase);
        if (i + 1 < mixed.size())
            content += ends[i % 4];
    }
    test::writeFile(path, content);
    list = std::make_unique<QuestionList>();
    loadFile();
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(q(1).Answer, "d");
    EXPECT_EQ(SplitFileLines("a\r\n\r\nb\n\rc\r"), (std::vector<std::string_view>{"a", "", "b", "", "c"}));
}

TEST_F(QuestionLoaderTest, FailuresReachTheCaller)
{
    try {
        LoadQuestionFile(dir / "missing.kqb", *list, observer, decipherWith("k"));
        ADD_FAILURE() << "a missing file loaded";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.number(), err::FileNotFound);
    }

    test::writeFile(path, EncryptString("Title", QuestionPassPhrase) + "\r\n#XYZ\r\n");
    try {
        loadFile();
        ADD_FAILURE() << "an undecipherable line loaded";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.number(), err::TypeMismatch);
    }

    // The decipher sees each line without its marker.
    writeBankLines(path, withHeader({"#Q", "#E", "#a"}));
    std::vector<std::string> seen;
    LoadQuestionFile(path, *list, observer, [&](const std::string& line) {
        seen.push_back(line);
        return DecryptString(line, QuestionPassPhrase);
    });
    ASSERT_EQ(seen.size(), 7u);
    for (const std::string& line : seen)
        EXPECT_NE(line.front(), '#');
}

} // namespace
} // namespace kesta
