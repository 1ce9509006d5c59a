#include "questions/core/QuestionLoader.h"

#include "questions/core/Cipher.h"
#include "support/BankWriter.h"
#include "support/Checks.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <memory>

namespace kesta {
namespace {

using Lines = std::vector<std::string>;
using test::bankText;

// Records what a load shows: the first progress value, the last, and the rest in order.
struct RecordingObserver final : LoadObserver {
    void progressShown(bool shown) override { events += shown ? "shown " : "hidden "; }
    void progress(int value) override
    {
        if (values.empty())
            events += "progress " + std::to_string(value) + " ";
        values.push_back(value);
    }
    void status(const std::string& text) override { events += "[" + text + "] "; }
    void introduction(const std::string& text) override { events += "page " + text + " "; }
    std::string events;
    std::vector<int> values;
};

Lines withHeader(Lines body)
{
    body.insert(body.begin(), {"Title", "I1", "I2", "I3"});
    return body;
}

class QuestionLoaderTest : public ::testing::Test {
protected:
    // Loads the text into a list whose record 3 holds a question from before,
    // and describes the whole outcome: the count, the warnings, the title, the
    // records, the events, or the run-time error raised.
    // The file is also read from disk a few bytes at a time, which must give the same.
    std::string load(const std::string& content)
    {
        test::writeFile(dir / "bank.kqb", content);
        const std::string whole = load(content, 0);
        for (const std::size_t block : {1, 5})
            EXPECT_EQ(load(content, block), whole) << block;
        return whole;
    }
    std::string load(const std::string& content, std::size_t block)
    {
        list = std::make_unique<QuestionList>();
        list->Questions[3].Question = "earlier";
        observer = RecordingObserver();
        return test::outcome([&] {
            const LineDecipher decipher = decipherWith(QuestionPassPhrase);
            const LoadResult r = block == 0 ? LoadQuestionText(content, *list, observer, decipher)
                                            : LoadQuestionFile(dir / "bank.kqb", *list, observer, decipher, block);
            std::string out = std::to_string(list->QuestionCount) + (r.tooManyLines ? " lines" : "") +
                              (r.tooManyQuestions ? " questions" : "") + (r.tooLongAt ? " long@" + std::to_string(r.tooLongAt) : "") +
                              (r.corrupt() ? " corrupt" : "") + " bad";
            for (const int k : r.badAnswers)
                out += " " + std::to_string(k);
            out += " title " + r.title.value_or("none") + "\n";
            for (int k = 0; k <= std::min<int>(list->QuestionCount + 1, 3); ++k) {
                const QuestionRecord& q = list->Questions[k];
                out += q.Intro + "|" + q.Question + "|" + q.Explanation + "|" + q.Answer + "\n";
            }
            return out + observer.events;
        });
    }
    std::string load(const Lines& lines, const Lines& ends = {"\r\n"}, bool endLast = true)
    {
        return load(bankText(lines, ends, endLast));
    }

    test::TempDir dir;
    std::unique_ptr<QuestionList> list = std::make_unique<QuestionList>();
    RecordingObserver observer;
};

const std::string intro = "I1\r\n\r\nI2\r\n\r\nI3";
const std::string shown = "progress 1 shown [" + std::string(LoadingText) + "] page " + intro + " [Ready] hidden ";

TEST_F(QuestionLoaderTest, ReadsHeaderAndQuestionBlocksIntoRecords)
{
    const std::string longest(MaxFieldBytes, 'r'), cut(MaxFieldBytes - 1, 'q');
    const std::pair<Lines, std::string> cases[] = {
        {withHeader({"plain before a question", "#First", "a) one", "#Expl", "more", "#  b ", "after the answer",
                     "#Second", "#Why", "#c"}),
         "2 bad title Title\n|||\n" + intro + "|First\r\na) one|Expl\r\n\r\nmore|b\n|Second|Why|c\n|earlier||\n"},
        // A bare break explanation names the untrimmed answer, but not in the last question.
        {withHeader({"#Q1", "#<br><br>", "#b ", "#Q2", "#<br><br>", "#c"}),
         "2 bad title Title\n|||\n" + intro + "|Q1|The correct answer is b .<br><br>|b\n|Q2|<br><br>|c\n|earlier||\n"},
        // A file ending inside a block gives its last question what was read before.
        {withHeader({"#Q1", "#E1", "#a", "#Q2", "more"}),
         "2 bad title Title\n|||\n" + intro + "|Q1|E1|a\n|Q2\r\nmore|E1|a\n|earlier||\n"},
        // Empty lines are no header lines; marked header lines count; the title is only the first line.
        {{"", "Title", "#I1", "", "I2", "I3", "#Q", "", "#E", "#a"},
         "1 bad title none\n|||\n" + intro + "|Q|E|a\n|||\n"},
        {{"#Title", "I1", "I2", "I3", "plain body line"}, "0 bad title none\n|||\n" + intro + "|||\n"},
        {{}, "0 bad title none\n|||\n|||\n"},
        {withHeader({"#Q", "#E", "#ab", "#Q2", "#E", "#   ", "#Q3", "#E", "=#" + std::string(62, '0'), "#Q4", "#E",
                     "#\xF0\x9F\x98\x80", "#Q5", "#E", "#\xC3\xA9", "#Q6", "#E", "#a\xF0\x9F\x98\x80"}),
         "6 corrupt bad 1 2 3 4 6 title Title\n|||\n" + intro + "|Q|E|ab\n|Q2|E|\n|Q3|E|\n"},
        {withHeader({"#Q", "=#XYZ"}), "error 13"},
        // A text of MaxFieldBytes is whole, a longer one is cut where a character starts; a line too long for a
        // text is not deciphered (and one too long for the buffer keeps the lone CR that ends it).
        {withHeader({"#" + longest, "#E", "#a"}), "1 bad title Title\n|||\n" + intro + "|" + longest + "|E|a\n|||\n"},
        {withHeader({"#" + cut + "\xC3\xA9", "=#" + std::string(262142, 'A') + "\r#" + EncryptString("a", QuestionPassPhrase)}),
         "1 long@5 corrupt bad title Title\n|||\n" + intro + "|" + cut + "||a\n|||\n"},
    };
    for (const auto& [lines, expected] : cases) {
        SCOPED_TRACE(lines.size());
        std::string got = load(lines);
        EXPECT_EQ(got.substr(0, got.find("progress 1")), expected);
    }
    load(withHeader({"#Q", "#E", "#a"})); // the progress counts one step a line and one more, up to 100
    EXPECT_EQ(observer.events + std::to_string(observer.values.back()) + " " + std::to_string(observer.values.size()),
              shown + "9 9");
    // CR LF, CR and LF all end lines, mixed too; a tab widens only on the page.
    const std::string expected = "1 bad title Title\n|||\nI\tone\r\n\r\nI2\r\n\r\nI3|Q\r\na) x|E|a\n|||\n";
    for (const Lines& ends : {Lines{"\r\n"}, Lines{"\r"}, Lines{"\n"}, Lines{"\r\n", "\n", "\r", "\n\r\n"}})
        EXPECT_EQ(load({"Title", "I\tone", "I2", "I3", "#Q", "a) x", "", "#E", "#a"}, ends, ends.size() == 1),
                  expected + "progress 1 shown [" + LoadingText + "] page I   one\r\n\r\nI2\r\n\r\nI3 [Ready] hidden ");
}

TEST_F(QuestionLoaderTest, AThousandQuestionsLoadSilentlyAndMoreRunIntoTheLast)
{
    Lines lines = withHeader({});
    for (int k = 1; k <= 1001; ++k)
        lines.insert(lines.end(), {"#Q" + std::to_string(k), "a) " + std::to_string(k), "#E" + std::to_string(k), "#a"});
    lines.back() = "#b";
    const std::string more = load(lines), thousandth = list->Questions[1000].Question + "|" +
                                                        list->Questions[1000].Explanation + list->Questions[1000].Answer;
    lines.resize(lines.size() - 4);
    const std::string exact = load(lines);
    EXPECT_EQ(more.substr(0, more.find('\n')) + "|" + thousandth + "|" + exact.substr(0, exact.find('\n')),
              "1000 questions corrupt bad title Title|Q1000\r\na) 1000\r\na) 1001|E1001b|1000 bad title Title");
}

TEST_F(QuestionLoaderTest, OfTenThousandLinesOrMoreOnlyTheLastSurvivesPastLine9999)
{
    // After line 9999, the explanation: nothing, the last line, the last of four, an empty last line.
    const std::pair<Lines, std::string> cases[] = {
        {{}, "1 corrupt bad 1"}, {{"#a"}, "1 lines corrupt bad"}, {{"#lost", "lost too", "", "#z"}, "1 lines corrupt bad"},
        {{"#lost", ""}, "1 lines corrupt bad 1"}};
    for (const auto& [tail, expected] : cases) {
        Lines lines = withHeader({"#Q"});
        lines.resize(9998);
        lines.push_back("#E");
        lines.insert(lines.end(), tail.begin(), tail.end());
        const std::string got = load(lines);
        EXPECT_EQ(got.substr(0, got.find(" title")) + " " + list->Questions[1].Answer + std::to_string(observer.values.back()),
                  expected + " " + (tail.empty() || tail.back().empty() ? "" : tail.back().substr(1)) + "100");
    }
}

} // namespace
} // namespace kesta
