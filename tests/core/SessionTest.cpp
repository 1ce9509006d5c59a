#include "session/core/Countdown.h"
#include "session/core/Navigation.h"
#include "session/core/QuestionDraw.h"
#include "session/core/QuestionPrint.h"
#include "support/Checks.h"
#include "support/RecordingHost.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kesta {
namespace {

using test::errorOf;

// A seed source that counts its calls; `step` 0 gives the same seed every time.
struct Seeds {
    std::uint64_t next = 1, step = 1;
    int calls = 0;
    QuestionDraw draw()
    {
        return QuestionDraw([this] { return ++calls, next += step; });
    }
};

std::string orderOf(const SessionState& s, int last)
{
    std::string order;
    for (int i = 1; i <= last; ++i)
        order += std::to_string(s.QuestionOrder[i]) + " ";
    return order;
}

TEST(ShuffleTest, APermutationDrawnWithOneSeedAPositionThatNeverStallsAndLateDrawingFillsOnlyTheFurthestSlot)
{
    std::vector<std::string> orders;
    for (const auto& [count, step] :
        { std::pair { 1, 1 }, { 2, 1 }, { 999, 1 }, { 1000, 1 }, { 300, 0 }, { 300, 1 } }) {
        Seeds seeds { .step = static_cast<std::uint64_t>(step) };
        QuestionDraw draw = seeds.draw();
        SessionState s;
        s.QuestionOrder[count] = 7; // left over from an earlier test
        shuffleQuestions(s, static_cast<Int16>(count), draw);
        orders.push_back(orderOf(s, count));
        std::vector<int> order(&s.QuestionOrder[1], &s.QuestionOrder[count] + 1);
        std::sort(order.begin(), order.end());
        EXPECT_TRUE(order.front() == 1 && std::adjacent_find(order.begin(), order.end()) == order.end()
            && order.back() == count && seeds.calls == count && s.RandomPick == s.QuestionOrder[count]
            && s.QuestionOrder[0] == 0 && (count == 1000 || s.QuestionOrder[count + 1] == 0));
        shuffleQuestions(s, 0, draw);
        EXPECT_EQ(s.QuestionOrder[1] + errorOf([&] { shuffleQuestions(s, 1001, draw); }) + draw.pick(0),
            err::SubscriptOutOfRange + 1); // a pick from none is 1
    }
    EXPECT_NE(orders[4], orders[5]); // seeds matter, and one seed does not stall it

    Seeds fixed{.step = 0}; // only the one free number may come out, however long it takes
    QuestionDraw draw = fixed.draw();
    SessionState s;
    s.QuestionOrder[1] = 1;
    s.QuestionOrder[2] = 2;
    s.CurrentQuestion = s.HighestReached = 3;
    drawLate(s, 3, draw);
    drawLate(s, 3, draw); // already drawn: nothing drawn
    s.QuestionOrder[2] = 0;
    s.CurrentQuestion = 2;
    drawLate(s, 3, draw); // an earlier position than the furthest: nothing drawn
    EXPECT_EQ(orderOf(s, 3) + std::to_string(s.RandomPick) + " " + std::to_string(fixed.calls), "1 0 3 3 1");
    s.CurrentQuestion = s.HighestReached = 4; // past the end: the first number drawn, though it is in use
    drawLate(s, 3, draw);
    EXPECT_TRUE(s.QuestionOrder[4] >= 1 && s.QuestionOrder[4] <= 3 && fixed.calls == 2);
}

TEST(CountdownTest, SplitsTheWholeTestAndTicksDownToZero)
{
    SessionState s;
    const std::pair<std::array<Int16, 4>, std::string> arms[] = {
        {{0, 1, 30, 1000}, "25:0:0"}, {{1, 0, 1, 3}, "3:0:3"}, {{0, 59, 59, 2}, "1:59:58"},
        {{9, 6, 7, 1000}, "9101:56:40"}, // the longest a question gets; the total is 32-bit
        {{0, 0, -30, 3}, "-1:-2:-30"},   // a hand-edited negative time splits downwards
        {{9, 6, 8, 1}, "error 6"}, {{10, 0, 0, 1}, "error 6"}, {{0, 547, 0, 1}, "error 6"}, {{0, 1, 30, 0}, "0:0:0"}};
    for (const auto& [time, caption] : arms) {
        UserOptions options;
        std::tie(options.values[3], options.values[4], options.values[5]) = std::tuple(time[0], time[1], time[2]);
        EXPECT_EQ(test::outcome([&] { return armCountdown(s, options, time[3]), timeCaption(s); }), caption);
    }
    const std::pair<std::array<Int16, 3>, std::string> ticks[] = {
        {{1, 0, 0}, "0:59:59"}, {{0, 1, 0}, "0:0:59"}, {{1, 5, 10}, "1:5:9"}, {{0, 0, 1}, "0:0:0"},
        {{0, 0, 0}, "0:0:0 up"}, {{1, 0, 1}, "1:0:0"}, {{0, 1, 1}, "0:1:0"}};
    for (const auto& [time, caption] : ticks) {
        std::tie(s.TimeHours, s.TimeMinutes, s.TimeSeconds) = std::tuple(time[0], time[1], time[2]);
        const bool up = timeIsUp(s);
        countDownOneSecond(s);
        EXPECT_EQ(timeCaption(s) + (up ? " up" : ""), caption);
    }
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
    const std::string order = orderOf(s, 5);
    // Each step as text: what moved and which buttons change, then the position reached.
    const auto next = [&](bool answered = true) {
        const NextStep n = goNext(s, 5, answered, draw);
        return (n.moved ? "moved " + std::to_string(n.restore) + (n.showBack ? " back " : " ") : "stay ") + n.caption +
               (n.pastEnd ? " end" : "") + " at " + std::to_string(s.CurrentQuestion) + "/" +
               std::to_string(s.HighestReached);
    };
    const auto back = [&](Int16 count = 5) {
        const BackStep b = goBack(s, count);
        return std::to_string(b.restore) + (b.hideFinish ? " hideFinish" : "") + (b.hideBack ? " hideBack" : "") +
               (b.showNext ? " showNext" : "") + " at " + std::to_string(s.CurrentQuestion);
    };
    for (int option = 1; option <= 4; ++option) {
        recordAnswer(s, option);
        EXPECT_EQ(s.UserAnswers[0] + std::to_string(s.OptionAChosen) + std::to_string(s.OptionBChosen) +
                      std::to_string(s.OptionCChosen) + std::to_string(s.OptionDChosen),
                  std::string(1, "abcd"[option - 1]) + std::string("0000").replace(option - 1, 1, "1"));
    }
    EXPECT_EQ(next(), "moved 0 Next Question at 1/1"); // from a restored position 0: nothing to go back to
    s.HighestReached = 0;
    s.UserAnswers[2] = "b";
    const std::string steps[] = {next(false), next(), next(), next(), next(), next(false), next(), next()};
    EXPECT_EQ(std::vector<std::string>(std::begin(steps), std::end(steps)),
              std::vector<std::string>({"stay Next Question at 1/0", "moved 2 back Next Question at 2/2",
                                        "moved 0 back Next Question at 3/3", "moved 0 back Next Question at 4/4",
                                        "moved 0 back Finish at 5/5", "stay Finish at 5/5",
                                        "moved 0 back Next Question end at 6/6", "stay Next Question end at 6/6"}));
    EXPECT_TRUE(s.QuestionOrder[6] >= 1 && s.QuestionOrder[6] <= 5 && orderOf(s, 5) == order); // slot 6 drawn too
    // Back restores an answer but, unlike next, never unchecks.
    s.UserAnswers[3] = "d";
    const std::string backs[] = {back(), back(), back(), back(1), back()};
    EXPECT_EQ(std::vector<std::string>(std::begin(backs), std::end(backs)),
              std::vector<std::string>({"0 hideFinish showNext at 5", "0 hideFinish showNext at 4",
                                        "4 hideFinish showNext at 3", "2 at 2", "0 hideFinish hideBack at 1"}));
    s.CurrentQuestion = -32768;
    EXPECT_EQ(errorOf([&] { goBack(s, 5); }), err::Overflow);
    // A test of 1000 questions fails on slot 1001; one of 999 finishes.
    s.CurrentQuestion = s.HighestReached = 1000;
    EXPECT_EQ(errorOf([&] { goNext(s, 1000, true, draw); }), err::SubscriptOutOfRange);
    s.CurrentQuestion = s.HighestReached = 999;
    EXPECT_TRUE(goNext(s, 999, true, draw).pastEnd);
}

TEST(PagesTest, TheHeaderThePageAndThePrintedText)
{
    EXPECT_EQ(headerText("KESTA Exam Demo", 3, 40), "Chapter: KESTA Exam Demo | Question 3 of 40");
    QuestionList list;
    list.Questions[0].Question = "nothing";
    list.Questions[2] = {"", "\tQ?<br>a)\tthis\t", "", "E two", "c"};
    list.Questions[1] = {"intro", "Q\tone", "", "E one", "b"};
    SessionState s;
    s.QuestionOrder[1] = 2;
    EXPECT_EQ(pageText(s, list, 1) + "|" + pageText(s, list, 2), "   Q?<br>a)   this   |nothing"); // 2: never drawn

    struct JammedPrinter : test::FakePrinter {
        void print(const std::string&) override { throw RuntimeError(482, "Printer error"); }
    } jammed;
    test::FakePrinter printers[3];
    const std::tuple<Int16, test::FakePrinter*, int, std::size_t> cases[] = {
        {2, &printers[0], 0, 2}, {1001, &printers[2], err::SubscriptOutOfRange, 1000}, {3, &jammed, 482, 0}};
    for (const auto& [count, printer, error, texts] : cases) {
        list.QuestionCount = count;
        EXPECT_EQ(errorOf([&] { printQuestionList(list, *printer); }), error);
        EXPECT_EQ(std::pair(printer->texts.size(), printer->documents), std::pair(texts, error ? 0 : 1));
    }
    EXPECT_EQ(printers[0].texts.at(0) + "|" + printers[0].texts.at(1),
              "Question 1\r\nQ\tone\r\nExplanation: \r\nE one\r\nAnswer: \r\nb1.|Question 2\r\n\tQ?<br>a)\tthis\t\r\n"
              "Explanation: \r\nE two\r\nAnswer: \r\nc1.");
}

} // namespace
} // namespace kesta
