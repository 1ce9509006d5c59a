#include "questions/core/QuestionLoader.h"

#include "common/core/RuntimeError.h"
#include "questions/core/Cipher.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <tuple>

namespace kesta {
namespace {

using Lines = std::vector<std::string>;

// Records what a load shows, in order.
struct RecordingObserver final : LoadObserver {
    void progressShown(bool shown) override { events.push_back(shown ? "shown" : "hidden"); }
    void progress(int value) override
    {
        if (values.empty())
            events.push_back("progress " + std::to_string(value));
        values.push_back(value);
    }
    void status(const std::string& text) override { events.push_back("status " + text); }
    void introduction(const std::string& text) override { events.push_back("page " + text); }
    Lines events;
    std::vector<int> values;
};

// Enciphers each line ("#" kept as the marker, "=" writes the rest verbatim,
// empty stays empty) and ends line i with ends[i % size]; the last line too unless `endLast` is false.
std::string bankText(const Lines& lines, const Lines& ends = {"\r\n"}, bool endLast = true)
{
    std::string content;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string& line = lines[i];
        if (!line.empty() && line[0] == '=')
            content += line.substr(1);
        else if (!line.empty())
            content += (line[0] == '#' ? "#" + EncryptString(line.substr(1), QuestionPassPhrase)
                                       : EncryptString(line, QuestionPassPhrase));
        if (endLast || i + 1 < lines.size())
            content += ends[i % ends.size()];
    }
    return content;
}

Lines withHeader(Lines body)
{
    body.insert(body.begin(), {"Title", "Intro one", "Intro two", "Intro three"});
    return body;
}

const std::string intro = "Intro one\r\n\r\nIntro two\r\n\r\nIntro three";

class QuestionLoaderTest : public ::testing::Test {
protected:
    // Loads the lines into a fresh list with a fresh observer.
    LoadResult load(const Lines& lines, const Lines& ends = {"\r\n"}, bool endLast = true)
    {
        test::writeFile(path, bankText(lines, ends, endLast));
        list = std::make_unique<QuestionList>();
        observer = RecordingObserver();
        return loadFile();
    }
    LoadResult loadFile() { return LoadQuestionFile(path, *list, observer, decipherWith(std::string(QuestionPassPhrase))); }
    // Record k as "question | explanation | answer".
    std::string q(int k) const
    {
        const QuestionRecord& r = list->Questions[k];
        return r.Question + " | " + r.Explanation + " | " + r.Answer;
    }

    test::TempDir dir;
    std::string path = dir / "bank.kqb";
    std::unique_ptr<QuestionList> list = std::make_unique<QuestionList>();
    RecordingObserver observer;
};

TEST_F(QuestionLoaderTest, ReadsTitleIntroAndQuestionBlocks)
{
    EXPECT_FALSE(load(withHeader({"plain before any question is ignored", "#First question", "a) one", "#Explanation",
                                  "Second paragraph", "#  b ", "after the answer: ignored", "#Second", "#Why", "#c"}))
                     .corrupt());
    EXPECT_EQ(list->QuestionCount, 2);
    EXPECT_EQ(list->Questions[1].Intro, intro);
    EXPECT_EQ(list->Questions[2].Intro, "");
    EXPECT_EQ(q(1), "First question\r\na) one | Explanation\r\n\r\nSecond paragraph | b");
    EXPECT_EQ(q(2), "Second | Why | c");

    // A bare break explanation names the untrimmed answer, except for the last question.
    load(withHeader({"#Q1", "#<br><br>", "#b ", "#Q2", "#<br><br>", "#c", "#Q3", "#<br><br>", "#d"}));
    EXPECT_EQ(q(1), "Q1 | The correct answer is b .<br><br> | b");
    EXPECT_EQ(q(2), "Q2 | The correct answer is c.<br><br> | c");
    EXPECT_EQ(q(3), "Q3 | <br><br> | d");
}

TEST_F(QuestionLoaderTest, IntroIsTheNextThreeNonEmptyLinesMarkedOrNot)
{
    load({"Title", "", "#Intro\twith tab", "", "two", "", "", "three", "", "#Q", "", "#E", "#a"});
    EXPECT_EQ(observer.events, (Lines{"progress 1", "shown", "status " + std::string(LoadingText),
                                      "page Intro   with tab\r\n\r\ntwo\r\n\r\nthree", "status Ready", "hidden"}));
    EXPECT_EQ(list->Questions[1].Intro, "Intro\twith tab\r\n\r\ntwo\r\n\r\nthree");
    EXPECT_EQ(q(1), "Q | E | a");

    // Without a body no question loads, but the intro is shown; the list is filled, not cleared.
    list->Questions[3].Question = "left from before";
    test::writeFile(path, bankText(withHeader({"plain body line"})));
    observer = RecordingObserver();
    EXPECT_FALSE(loadFile().corrupt());
    EXPECT_EQ(list->QuestionCount, 0);
    EXPECT_EQ(observer.events.at(3), "page " + intro);
    EXPECT_EQ(list->Questions[3].Question, "left from before");
    load({});
    EXPECT_EQ(list->QuestionCount, 0);
}

TEST_F(QuestionLoaderTest, ProgressCountsOneRoundMoreThanLinesAndStopsAt100)
{
    for (const int n : {1, 97, 98, 150}) {
        SCOPED_TRACE(n);
        Lines lines(static_cast<std::size_t>(n));
        lines[0] = "Title";
        load(lines);
        EXPECT_EQ(observer.values.back(), std::min(n + 2, 100));
        EXPECT_EQ(observer.values.size(), static_cast<std::size_t>(std::min(n + 1, 99)) + 1);
    }
}

TEST_F(QuestionLoaderTest, AnswersMustBeOneCharacter)
{
    const std::pair<std::string, bool> cases[] = {
        {"#b", false}, {"# b ", false}, {"#\xC3\xA9", false}, {"#ab", true}, {"#   ", true},
        {"#\xF0\x9F\x98\x80", true},         // two UTF-16 units
        {"=#" + std::string(62, '0'), true}, // deciphers to nothing: 31 bytes are no whole block
    };
    for (const auto& [answerLine, bad] : cases) {
        SCOPED_TRACE(answerLine);
        const LoadResult result = load(withHeader({"#Q1", "#E1", "#a", "#Q2", "#E2", answerLine, "#Q3", "#E3", "#c"}));
        EXPECT_EQ(result.corrupt(), bad);
        EXPECT_EQ(result.badAnswers, bad ? std::vector<int>{2} : std::vector<int>{});
    }
}

TEST_F(QuestionLoaderTest, AThousandQuestionsLoadSilentlyAndMoreRunIntoTheLast)
{
    Lines lines = withHeader({});
    for (int k = 1; k <= 1000; ++k)
        lines.insert(lines.end(), {"#Q" + std::to_string(k), "a) " + std::to_string(k), "#E" + std::to_string(k), "#a"});
    EXPECT_FALSE(load(lines).corrupt());
    EXPECT_EQ(list->QuestionCount, 1000);
    EXPECT_EQ(q(1000), "Q1000\r\na) 1000 | E1000 | a");

    lines.insert(lines.end(), {"#Q1001", "a) 1001", "#E1001", "#b"});
    const LoadResult result = load(lines);
    EXPECT_TRUE(result.tooManyQuestions);
    EXPECT_FALSE(result.tooManyLines);
    EXPECT_TRUE(result.badAnswers.empty());
    EXPECT_EQ(list->QuestionCount, 1000);
    EXPECT_EQ(q(1000), "Q1000\r\na) 1000\r\na) 1001 | E1001 | b");
}

TEST_F(QuestionLoaderTest, TenThousandLinesOrMoreAreCorruptAndOnlyTheLastLineSurvives)
{
    // After line 9999, the explanation: nothing; the last line; the last of four; an empty last line.
    const std::tuple<Lines, bool, std::string> cases[] = {{{}, false, ""}, {{"#a"}, true, "a"},
                                                          {{"#lost", "lost too", "", "#z"}, true, "z"},
                                                          {{"#lost", ""}, true, ""}};
    for (const auto& [tail, tooMany, answer] : cases) {
        SCOPED_TRACE(tail.size());
        Lines lines = withHeader({"#Q"});
        lines.resize(9998);
        lines.push_back("#E");
        lines.insert(lines.end(), tail.begin(), tail.end());
        EXPECT_EQ(load(lines).tooManyLines, tooMany);
        EXPECT_EQ(observer.values.back(), 100);
        EXPECT_EQ(q(1), "Q | E | " + answer);
    }
}

TEST_F(QuestionLoaderTest, CrLfCrAndLfAllEndLines)
{
    for (const Lines& ends : {Lines{"\r\n"}, Lines{"\r"}, Lines{"\n"}, Lines{"\r\n", "\n", "\r", "\n\r\n"}}) {
        load(withHeader({"#Q", "a) x", "", "#E", "#a"}), ends, ends.size() == 1);
        EXPECT_EQ(list->QuestionCount, 1);
        EXPECT_EQ(q(1), "Q\r\na) x | E | a");
    }
    EXPECT_EQ(SplitFileLines("a\r\n\r\nb\n\rc\r"), (std::vector<std::string_view>{"a", "", "b", "", "c"}));
}

TEST_F(QuestionLoaderTest, FailuresReachTheCaller)
{
    const auto errorOf = [](const std::function<void()>& body) {
        try {
            body();
        } catch (const RuntimeError& error) {
            return error.number();
        }
        return 0;
    };
    test::writeFile(path, bankText({"Title", "=#XYZ"}));
    EXPECT_EQ(errorOf([&] { loadFile(); }), err::TypeMismatch);
    EXPECT_EQ(errorOf([&] { LoadQuestionFile(dir / "missing.kqb", *list, observer, decipherWith("k")); }),
              err::FileNotFound);
}

} // namespace
} // namespace kesta
