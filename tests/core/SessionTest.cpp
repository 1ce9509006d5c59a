#include "session/core/Countdown.h"
#include "session/core/Navigation.h"
#include "session/core/QuestionDraw.h"
#include "session/core/QuestionPrint.h"
#include "support/Checks.h"
#include "support/RecordingHost.h"

#include <gtest/gtest.h>

#include <numeric>
#include <set>

namespace kesta {
namespace {

using test::errorOf;

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

std::vector<int> orderOf(const SessionState& s, int from, int to)
{
    std::vector<int> order;
    for (int i = from; i <= to; ++i)
        order.push_back(s.QuestionOrder[i]);
    return order;
}

TEST(ShuffleTest, APermutationDrawnWithOneSeedAPositionThatNeverStalls)
{
    for (const int count : {1, 2, 999, 1000}) {
        Seeds seeds;
        QuestionDraw draw = seeds.draw();
        SessionState s;
        s.QuestionOrder[count] = 7; // left over from an earlier test
        shuffleQuestions(s, static_cast<Int16>(count), draw);
        std::vector<int> order = orderOf(s, 1, count), sorted(static_cast<std::size_t>(count));
        std::iota(sorted.begin(), sorted.end(), 1);
        EXPECT_TRUE(std::is_permutation(order.begin(), order.end(), sorted.begin()));
        EXPECT_EQ(std::vector<int>({seeds.calls, s.RandomPick, s.QuestionOrder[0], count < 1000 ? s.QuestionOrder[count + 1] : 0}),
                  std::vector<int>({count, s.QuestionOrder[count], 0, 0}));
    }
    Seeds same{.step = 0}, other{.next = 1000};
    QuestionDraw a = same.draw(), b = other.draw();
    SessionState x, y;
    shuffleQuestions(x, 300, a);
    shuffleQuestions(y, 300, b);
    EXPECT_NE(orderOf(x, 1, 300), orderOf(y, 1, 300)); // seeds matter, and one seed does not stall it
    x.QuestionOrder[1] = 3;
    shuffleQuestions(x, 0, a);
    EXPECT_EQ(x.QuestionOrder[1], 0);
    EXPECT_EQ(errorOf([&] { shuffleQuestions(x, 1001, a); }), err::SubscriptOutOfRange);
    std::set<int> seen; // a pick covers 1..count, and gives 1 for none
    for (int k = 0; k < 500; ++k)
        seen.insert(a.pick(10));
    EXPECT_EQ(seen, (std::set<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(a.pick(0), 1);
}

TEST(ShuffleTest, LateDrawingFillsOnlyAnEmptySlotAtTheFurthestPosition)
{
    Seeds seeds{.step = 0}; // only the one free number may come out, however long it takes
    QuestionDraw draw = seeds.draw();
    SessionState s;
    s.QuestionOrder[1] = 1;
    s.QuestionOrder[2] = 2;
    s.CurrentQuestion = s.HighestReached = 3;
    drawLate(s, 3, draw);
    EXPECT_EQ(std::vector<int>({s.QuestionOrder[3], s.RandomPick}), std::vector<int>({3, 3}));
    const int calls = seeds.calls;
    s.QuestionOrder[3] = 2;
    drawLate(s, 3, draw); // already drawn
    s.QuestionOrder[2] = 0;
    s.CurrentQuestion = 2;
    drawLate(s, 3, draw); // an earlier position than the furthest one
    EXPECT_EQ(std::vector<int>({s.QuestionOrder[2], s.QuestionOrder[3], seeds.calls}), std::vector<int>({0, 2, calls}));
    s.CurrentQuestion = s.HighestReached = 4; // past the end: the first number drawn, though it is in use
    drawLate(s, 3, draw);
    EXPECT_TRUE(s.QuestionOrder[4] >= 1 && s.QuestionOrder[4] <= 3);
    EXPECT_EQ(seeds.calls, calls + 1);
}

TEST(CountdownTest, SplitsTheWholeTestAndTicksDownToZero)
{
    SessionState s;
    const auto arm = [&](Int16 h, Int16 m, Int16 sec, Int16 count) {
        UserOptions options;
        options.values[3] = h;
        options.values[4] = m;
        options.values[5] = sec;
        return test::outcome([&] { return armCountdown(s, options, count), timeCaption(s); });
    };
    EXPECT_EQ(arm(0, 1, 30, 1000), "25:0:0");
    EXPECT_EQ(arm(1, 0, 1, 3), "3:0:3");
    EXPECT_EQ(arm(0, 59, 59, 2), "1:59:58");
    EXPECT_EQ(arm(9, 6, 7, 1000), "9101:56:40"); // the longest a question gets; the total is 32-bit
    EXPECT_EQ(arm(0, 0, -30, 3), "-1:-2:-30");   // a hand-edited negative time splits downwards
    EXPECT_EQ(arm(0, 1, 30, 0), "0:0:0");
    EXPECT_TRUE(timeIsUp(s));
    for (const auto& [h, m, sec] : {std::tuple<Int16, Int16, Int16>{9, 6, 8}, {10, 0, 0}, {0, 547, 0}})
        EXPECT_EQ(arm(h, m, sec, 1), "error 6");

    const auto tick = [&](Int16 h, Int16 m, Int16 sec) {
        s.TimeHours = h;
        s.TimeMinutes = m;
        s.TimeSeconds = sec;
        const bool up = timeIsUp(s);
        countDownOneSecond(s);
        return timeCaption(s) + (up ? " up" : "");
    };
    const std::pair<std::tuple<Int16, Int16, Int16>, std::string> ticks[] = {
        {{1, 0, 0}, "0:59:59"}, {{0, 1, 0}, "0:0:59"}, {{1, 5, 10}, "1:5:9"}, {{0, 0, 1}, "0:0:0"},
        {{0, 0, 0}, "0:0:0 up"}, {{1, 0, 1}, "1:0:0"}, {{0, 1, 1}, "0:1:0"}};
    for (const auto& [time, caption] : ticks)
        EXPECT_EQ(std::apply(tick, time), caption);
}

// A step as text: what moved and which buttons change, then the position reached.
std::string show(const NextStep& n, const SessionState& s)
{
    return (n.moved ? "moved restore " + std::to_string(n.restore) + (n.showBack ? " back " : " ") : "stay ") + n.caption +
           (n.pastEnd ? " end" : "") + " at " + std::to_string(s.CurrentQuestion) + "/" + std::to_string(s.HighestReached);
}

std::string show(const BackStep& b, const SessionState& s)
{
    return "restore " + std::to_string(b.restore) + (b.hideFinish ? " hideFinish" : "") + (b.hideBack ? " hideBack" : "") +
           (b.showNext ? " showNext" : "") + " at " + std::to_string(s.CurrentQuestion);
}

TEST(NavigationTest, AnswersStayWithTheirPositionsWhileNextAndBackMove)
{
    for (const auto& [key, option] : {std::pair{'a', 1}, {'B', 2}, {'c', 3}, {'D', 4}, {'e', 0}, {'@', 0}, {'`', 0}})
        EXPECT_EQ(optionForKey(key), option) << key;
    for (const auto& [letter, option] : {std::pair{"a", 1}, {"d", 4}, {"", 0}, {"A", 0}, {"e", 0}})
        EXPECT_EQ(optionForLetter(letter), option) << letter;

    Seeds seeds;
    QuestionDraw draw = seeds.draw();
    SessionState s;
    shuffleQuestions(s, 5, draw);
    const std::vector<int> order = orderOf(s, 1, 5);
    const auto next = [&](bool answered = true) { return show(goNext(s, 5, answered, draw), s); };
    const auto back = [&] { return show(goBack(s, 5), s); };
    for (int option = 1; option <= 4; ++option) {
        recordAnswer(s, option);
        EXPECT_EQ(s.UserAnswers[0] + std::to_string(s.OptionAChosen) + std::to_string(s.OptionBChosen) +
                      std::to_string(s.OptionCChosen) + std::to_string(s.OptionDChosen),
                  std::string(1, "abcd"[option - 1]) + std::string("0000").replace(option - 1, 1, "1"));
    }
    EXPECT_EQ(next(), "moved restore 0 Next Question at 1/1"); // from a restored position 0: nothing to go back to
    s.CurrentQuestion = 1;
    s.HighestReached = 0;
    recordAnswer(s, 2);
    s.UserAnswers[2] = "b";
    EXPECT_EQ(next(false), "stay Next Question at 1/0");
    EXPECT_EQ(next(), "moved restore 2 back Next Question at 2/2");
    next();
    next();
    EXPECT_EQ(next(), "moved restore 0 back Finish at 5/5");
    EXPECT_EQ(next(false), "stay Finish at 5/5");
    EXPECT_EQ(next(), "moved restore 0 back Next Question end at 6/6"); // and a number drawn for slot 6
    EXPECT_TRUE(s.QuestionOrder[6] >= 1 && s.QuestionOrder[6] <= 5);
    EXPECT_EQ(orderOf(s, 1, 5), order);
    EXPECT_EQ(next(), "stay Next Question end at 6/6");
    // Back restores an answer but, unlike next, never unchecks.
    EXPECT_EQ(back(), "restore 0 hideFinish showNext at 5");
    s.CurrentQuestion = 3;
    recordAnswer(s, 4);
    s.CurrentQuestion = 4;
    EXPECT_EQ(back(), "restore 4 hideFinish showNext at 3");
    EXPECT_EQ(show(goBack(s, 1), s), "restore 2 at 2");
    EXPECT_EQ(back(), "restore 2 hideFinish hideBack at 1");
    s.CurrentQuestion = -32768;
    EXPECT_EQ(errorOf([&] { goBack(s, 5); }), err::Overflow);
    s.CurrentQuestion = 1001;
    EXPECT_EQ(errorOf([&] { recordAnswer(s, 1); }), err::SubscriptOutOfRange);
    // A test of 1000 questions fails on slot 1001; one of 999 finishes.
    shuffleQuestions(s, 1000, draw);
    s.CurrentQuestion = s.HighestReached = 1000;
    EXPECT_EQ(errorOf([&] { goNext(s, 1000, true, draw); }), err::SubscriptOutOfRange);
    shuffleQuestions(s, 999, draw);
    s.CurrentQuestion = s.HighestReached = 999;
    EXPECT_TRUE(goNext(s, 999, true, draw).pastEnd);
}

TEST(PagesTest, TheHeaderThePageAndThePrintedText)
{
    EXPECT_EQ(headerText("KESTA Exam Demo", 3, 40), "Chapter: KESTA Exam Demo | Question 3 of 40");
    QuestionList list;
    list.Questions[0].Question = "nothing";
    list.Questions[2].Question = "\tWhich?<br>a)\tthis\t";
    SessionState s;
    s.QuestionOrder[1] = 2;
    EXPECT_EQ(pageText(s, list, 1), "   Which?<br>a)   this   ");
    EXPECT_EQ(pageText(s, list, 2), "nothing"); // never drawn: record 0
    s.QuestionOrder[1] = 1001;
    EXPECT_EQ(errorOf([&] { pageText(s, list, 1); }), err::SubscriptOutOfRange);

    list.Questions[1] = {"intro", "Q\tone", "", "E one", "b"};
    list.Questions[2] = {"", "Q two", "", "E two", "c"};
    struct JammedPrinter : test::FakePrinter {
        void print(const std::string&) override { throw RuntimeError(482, "Printer error"); }
    } jammed;
    test::FakePrinter printers[3];
    const std::tuple<Int16, test::FakePrinter*, int, std::size_t> cases[] = {
        {2, &printers[0], 0, 2}, {0, &printers[1], 0, 0}, {1001, &printers[2], err::SubscriptOutOfRange, 1000},
        {3, &jammed, 482, 0}};
    for (const auto& [count, printer, error, texts] : cases) {
        list.QuestionCount = count;
        EXPECT_EQ(errorOf([&] { printQuestionList(list, *printer); }), error);
        EXPECT_EQ(std::pair(printer->texts.size(), printer->documents), std::pair(texts, error ? 0 : 1));
    }
    EXPECT_EQ(printers[0].texts.at(0), "Question 1\r\nQ\tone\r\nExplanation: \r\nE one\r\nAnswer: \r\nb1.");
    EXPECT_EQ(printers[0].texts.at(1), "Question 2\r\nQ two\r\nExplanation: \r\nE two\r\nAnswer: \r\nc1.");
}

} // namespace
} // namespace kesta
