#include "common/core/RuntimeError.h"
#include "session/core/Countdown.h"
#include "session/core/Navigation.h"
#include "session/core/QuestionDraw.h"
#include "session/core/QuestionPrint.h"
#include "support/RecordingHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <set>
#include <tuple>

namespace kesta {
namespace {

// Matches a call that raises the run-time error `number`.
auto raises(int number)
{
    return ::testing::Throws<RuntimeError>(::testing::Property(&RuntimeError::number, number));
}

// A seed source that counts its calls; `step` 0 gives the same seed every time.
struct Seeds {
    std::uint64_t next = 1;
    std::uint64_t step = 1;
    int calls = 0;
    QuestionDraw draw()
    {
        return QuestionDraw([this] {
            ++calls;
            return next += step;
        });
    }
};

// Shuffles `count` questions with `seeds`, checks the order is a permutation and returns it.
std::vector<int> shuffled(int count, Seeds& seeds)
{
    QuestionDraw draw = seeds.draw();
    SessionState s;
    s.QuestionOrder[count] = 7; // left over from an earlier test
    shuffleQuestions(s, static_cast<Int16>(count), draw);
    EXPECT_EQ(s.RandomPick, s.QuestionOrder[count]);
    EXPECT_EQ(s.QuestionOrder[0] + (count < 1000 ? s.QuestionOrder[count + 1] : 0), 0);
    std::vector<int> order, sorted(static_cast<std::size_t>(count));
    for (int i = 1; i <= count; ++i)
        order.push_back(s.QuestionOrder[i]);
    std::iota(sorted.begin(), sorted.end(), 1);
    EXPECT_TRUE(std::is_permutation(order.begin(), order.end(), sorted.begin(), sorted.end()));
    return order;
}

TEST(Shuffle, IsAPermutationDrawnWithOneSeedPerPositionThatNeverStalls)
{
    for (const int count : {1, 2, 999, 1000}) {
        Seeds seeds;
        shuffled(count, seeds);
        EXPECT_EQ(seeds.calls, count);
    }
    Seeds same { .step = 0 }, other { .next = 1000 };
    EXPECT_NE(shuffled(300, same), shuffled(300, other)); // never stalls on one seed, and seeds matter

    QuestionDraw draw = same.draw();
    SessionState s;
    s.QuestionOrder[1] = 3;
    shuffleQuestions(s, 0, draw);
    EXPECT_EQ(s.QuestionOrder[1], 0);
    EXPECT_THAT([&] { shuffleQuestions(s, 1001, draw); }, raises(err::SubscriptOutOfRange));

    // A pick covers 1..count and gives 1 for no questions.
    draw.reseed();
    std::set<int> seen;
    for (int k = 0; k < 500; ++k)
        seen.insert(draw.pick(10));
    EXPECT_EQ(seen, (std::set<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(draw.pick(0), 1);
}

TEST(LateDrawing, FillsOnlyAnEmptySlotAtTheFurthestPosition)
{
    Seeds seeds{.step = 0}; // only the one free number may come out, however long it takes
    QuestionDraw draw = seeds.draw();
    SessionState s;
    s.QuestionOrder[1] = 1;
    s.QuestionOrder[2] = 2;
    s.CurrentQuestion = s.HighestReached = 3;
    drawLate(s, 3, draw);
    EXPECT_EQ(s.QuestionOrder[3], 3);
    EXPECT_EQ(s.RandomPick, 3);

    const int callsBefore = seeds.calls;
    s.QuestionOrder[3] = 2;
    drawLate(s, 3, draw); // already drawn
    EXPECT_EQ(s.QuestionOrder[3], 2);
    s.QuestionOrder[2] = 0;
    s.CurrentQuestion = 2;
    drawLate(s, 3, draw); // an earlier position than the furthest one
    EXPECT_EQ(s.QuestionOrder[2], 0);
    EXPECT_EQ(seeds.calls, callsBefore);

    // Past the end: the first number drawn, necessarily one already in use.
    s.CurrentQuestion = s.HighestReached = 4;
    drawLate(s, 3, draw);
    EXPECT_TRUE(s.QuestionOrder[4] >= 1 && s.QuestionOrder[4] <= 3);
    EXPECT_EQ(seeds.calls, callsBefore + 1);
}

// --- the countdown ---

TEST(Countdown, SplitsTheWholeTestAndTicksDownToZero)
{
    SessionState s;
    const auto arm = [&](Int16 h, Int16 m, Int16 sec, Int16 count) {
        UserOptions options;
        options.values[3] = h;
        options.values[4] = m;
        options.values[5] = sec;
        armCountdown(s, options, count);
        return timeCaption(s);
    };
    EXPECT_EQ(arm(0, 1, 30, 1000), "25:0:0");
    EXPECT_EQ(arm(1, 0, 1, 3), "3:0:3");
    EXPECT_EQ(arm(9, 6, 7, 1000), "9101:56:40"); // the longest a question gets; the total is 32-bit
    EXPECT_EQ(arm(0, 1, 30, 0), "0:0:0");
    EXPECT_TRUE(timeIsUp(s));
    for (const auto& [h, m, sec] : {std::tuple<Int16, Int16, Int16>{9, 6, 8}, {10, 0, 0}, {0, 547, 0}})
        EXPECT_THAT([&] { arm(h, m, sec, 1); }, raises(err::Overflow));

    const auto tick = [&](Int16 h, Int16 m, Int16 sec) {
        s.TimeHours = h;
        s.TimeMinutes = m;
        s.TimeSeconds = sec;
        countDownOneSecond(s);
        return timeCaption(s);
    };
    EXPECT_EQ(tick(1, 0, 0), "0:59:59");
    EXPECT_EQ(tick(0, 1, 0), "0:0:59");
    EXPECT_EQ(tick(1, 5, 10), "1:5:9");
    EXPECT_FALSE(timeIsUp(s));
    EXPECT_EQ(tick(0, 0, 1), "0:0:0");
    EXPECT_EQ(tick(0, 0, 0), "0:0:0");
}

// --- answering and moving ---

TEST(Answering, LettersAndKeysMapToTheFourButtons)
{
    for (const auto& [key, option] : {std::pair{'a', 1}, {'B', 2}, {'c', 3}, {'D', 4}, {'e', 0}, {'1', 0}, {' ', 0}})
        EXPECT_EQ(optionForKey(key), option) << key;
    for (const auto& [letter, option] : {std::pair{"a", 1}, {"d", 4}, {"", 0}, {"A", 0}, {"e", 0}, {"ab", 0}})
        EXPECT_EQ(optionForLetter(letter), option) << letter;

    SessionState s;
    s.CurrentQuestion = 3;
    recordAnswer(s, 2);
    recordAnswer(s, 3);
    EXPECT_EQ(s.UserAnswers[3], "c");
    EXPECT_FALSE(s.OptionBChosen);
    EXPECT_TRUE(s.OptionCChosen);
    s.CurrentQuestion = 1001;
    EXPECT_THAT([&] { recordAnswer(s, 1); }, raises(err::SubscriptOutOfRange));
}

// A step as text: what moved and which buttons change, then the position reached.
std::string show(const NextStep& n, const SessionState& s)
{
    return (n.moved ? "moved restore " + std::to_string(n.restore) + (n.showBack ? " back " : " ") : "stay ") + n.caption
        + (n.pastEnd ? " end" : "") + " at " + std::to_string(s.CurrentQuestion) + "/" + std::to_string(s.HighestReached);
}

std::string show(const BackStep& b, const SessionState& s)
{
    return "restore " + std::to_string(b.restore) + (b.hideFinish ? " hideFinish" : "") + (b.hideBack ? " hideBack" : "")
        + (b.showNext ? " showNext" : "") + " at " + std::to_string(s.CurrentQuestion);
}

TEST(Moving, NextAndBackThroughATestOfFive)
{
    Seeds seeds;
    QuestionDraw draw = seeds.draw();
    SessionState s;
    shuffleQuestions(s, 5, draw);
    const auto order = s.QuestionOrder;
    const auto next = [&](bool answered = true) { return show(goNext(s, 5, answered, draw), s); };
    const auto back = [&] { return show(goBack(s, 5), s); };
    s.CurrentQuestion = 1;
    s.UserAnswers[2] = "b";
    EXPECT_EQ(next(false), "stay Next Question at 1/0");
    EXPECT_EQ(next(), "moved restore 2 back Next Question at 2/2");
    next();
    next();
    EXPECT_EQ(next(), "moved restore 0 back Finish at 5/5");
    EXPECT_EQ(next(false), "stay Finish at 5/5");
    EXPECT_EQ(next(), "moved restore 0 back Next Question end at 6/6"); // and a number drawn for slot 6
    EXPECT_TRUE(s.QuestionOrder[6] >= 1 && s.QuestionOrder[6] <= 5);
    for (int i = 1; i <= 5; ++i)
        EXPECT_EQ(s.QuestionOrder[i], order[i]);
    EXPECT_EQ(next(), "stay Next Question end at 6/6");

    // Back restores an answer but, unlike next, never unchecks.
    EXPECT_EQ(back(), "restore 0 hideFinish showNext at 5");
    s.CurrentQuestion = 3;
    s.UserAnswers[2] = "d";
    EXPECT_EQ(back(), "restore 4 hideFinish showNext at 2");
    s.UserAnswers[1] = "";
    EXPECT_EQ(back(), "restore 0 hideFinish hideBack at 1");
    s.CurrentQuestion = -32768;
    EXPECT_THAT([&] { goBack(s, 5); }, raises(err::Overflow));

    // A test of 1000 questions fails on slot 1001; one of 999 finishes.
    shuffleQuestions(s, 1000, draw);
    s.CurrentQuestion = s.HighestReached = 1000;
    EXPECT_THAT([&] { goNext(s, 1000, true, draw); }, raises(err::SubscriptOutOfRange));
    shuffleQuestions(s, 999, draw);
    s.CurrentQuestion = s.HighestReached = 999;
    EXPECT_TRUE(goNext(s, 999, true, draw).pastEnd);
    EXPECT_NE(s.QuestionOrder[1000], 0);
}

TEST(Pages, HeaderPageAndPrintedText)
{
    EXPECT_EQ(headerText("KESTA Exam Demo - One", 3, 40), "Chapter: KESTA Exam Demo - One | Question 3 of 40");
    QuestionList list;
    list.Questions[0].Question = "nothing";
    list.Questions[2].Question = "\tWhich one?<br>a)\tthis\t";
    SessionState s;
    s.QuestionOrder[1] = 2;
    EXPECT_EQ(pageText(s, list, 1), "   Which one?<br>a)   this   ");
    EXPECT_EQ(pageText(s, list, 2), "nothing"); // never drawn: record 0
    s.QuestionOrder[1] = 1001;
    EXPECT_THAT([&] { pageText(s, list, 1); }, raises(err::SubscriptOutOfRange));
    EXPECT_EQ(printText({"", "Q\tq", "", "E", "a"}, 12, 3), "Question 12\r\nQ\tq\r\nExplanation: \r\nE\r\nAnswer: \r\na3.");
}

TEST(Printing, OneTextPerQuestionThenOneDocumentUnlessItFails)
{
    QuestionList list;
    list.Questions[1] = {"intro", "Q one", "", "E one", "b"};
    list.Questions[2] = {"", "Q two", "", "E two", "c"};
    struct JammedPrinter : test::FakePrinter {
        void print(const std::string&) override { throw RuntimeError(482, "Printer error"); }
    } jammed;
    test::FakePrinter printers[3];
    const struct {
        Int16 count;
        test::FakePrinter* printer;
        int error;
        std::size_t texts;
    } cases[] = {{2, &printers[0], 0, 2}, {0, &printers[1], 0, 0}, {1001, &printers[2], err::SubscriptOutOfRange, 1000},
                 {3, &jammed, 482, 0}};
    for (const auto& c : cases) {
        list.QuestionCount = c.count;
        if (c.error) {
            EXPECT_THAT([&] { printQuestionList(list, *c.printer); }, raises(c.error));
        } else {
            printQuestionList(list, *c.printer);
        }
        EXPECT_EQ(c.printer->texts.size(), c.texts);
        EXPECT_EQ(c.printer->documents, c.error ? 0 : 1);
    }
    EXPECT_EQ(printers[0].texts.at(1), "Question 2\r\nQ two\r\nExplanation: \r\nE two\r\nAnswer: \r\nc1.");
}

} // namespace
} // namespace kesta
