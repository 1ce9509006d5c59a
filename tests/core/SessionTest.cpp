#include "common/core/RuntimeError.h"
#include "session/core/Countdown.h"
#include "session/core/Navigation.h"
#include "session/core/QuestionDraw.h"
#include "session/core/QuestionPrint.h"
#include "support/RecordingHost.h"

#include <gtest/gtest.h>
#include <set>

namespace kesta {
namespace {

// Asserts that `statement` raises the run-time error `number`.
#define EXPECT_RUNTIME_ERROR(statement, expected)                                                                      \
    do {                                                                                                               \
        try {                                                                                                          \
            statement;                                                                                                 \
            ADD_FAILURE() << "no error raised";                                                                        \
        } catch (const RuntimeError& error) {                                                                          \
            EXPECT_EQ(error.number(), expected);                                                                       \
        }                                                                                                              \
    } while (false)

// A seed source that counts its calls; `step` 0 gives the same seed every time.
struct Seeds {
    std::uint64_t next = 1;
    std::uint64_t step = 1;
    int calls = 0;
    QuestionDraw draw()
    {
        return QuestionDraw([this] {
            ++calls;
            next += step;
            return next;
        });
    }
};

void expectPermutation(const SessionState& s, int count)
{
    std::set<int> seen;
    for (int i = 1; i <= count; ++i) {
        ASSERT_GE(s.QuestionOrder[i], 1) << "position " << i;
        ASSERT_LE(s.QuestionOrder[i], count) << "position " << i;
        seen.insert(s.QuestionOrder[i]);
    }
    EXPECT_EQ(static_cast<int>(seen.size()), count);
    if (count < 1000) {
        EXPECT_EQ(s.QuestionOrder[count + 1], 0);
    }
    EXPECT_EQ(s.QuestionOrder[0], 0);
}

// --- the shuffle -----------------------------------------------------------------

class ShuffleTest : public ::testing::TestWithParam<int> { };

TEST_P(ShuffleTest, IsAPermutationDrawnWithOneSeedPerPosition)
{
    const int count = GetParam();
    Seeds seeds;
    QuestionDraw draw = seeds.draw();
    SessionState s;
    s.QuestionOrder[count] = 7; // left over from an earlier test
    shuffleQuestions(s, static_cast<Int16>(count), draw);
    expectPermutation(s, count);
    EXPECT_EQ(s.RandomPick, s.QuestionOrder[count]);
    EXPECT_EQ(seeds.calls, count);
}

INSTANTIATE_TEST_SUITE_P(Counts, ShuffleTest, ::testing::Values(1, 2, 999, 1000));

TEST(Shuffle, NeverStallsEvenWhenEverySeedIsTheSame)
{
    Seeds seeds;
    seeds.step = 0;
    QuestionDraw draw = seeds.draw();
    SessionState s;
    shuffleQuestions(s, 1000, draw);
    expectPermutation(s, 1000);
}

TEST(Shuffle, DifferentSeedsGiveDifferentOrdersAndNoQuestionsGiveNone)
{
    Seeds first;
    Seeds second;
    second.next = 1000;
    QuestionDraw a = first.draw();
    QuestionDraw b = second.draw();
    SessionState one;
    SessionState two;
    shuffleQuestions(one, 50, a);
    shuffleQuestions(two, 50, b);
    bool differ = false;
    for (int i = 1; i <= 50; ++i)
        differ = differ || one.QuestionOrder[i] != two.QuestionOrder[i];
    EXPECT_TRUE(differ);

    SessionState empty;
    empty.QuestionOrder[1] = 3;
    shuffleQuestions(empty, 0, a);
    EXPECT_EQ(empty.QuestionOrder[1], 0);
    EXPECT_RUNTIME_ERROR(shuffleQuestions(empty, 1001, a), err::SubscriptOutOfRange);
}

TEST(Shuffle, PickCoversOneToCountAndGivesOneForNoQuestions)
{
    Seeds seeds;
    QuestionDraw draw = seeds.draw();
    draw.reseed();
    std::set<int> seen;
    for (int k = 0; k < 2000; ++k) {
        const int pick = draw.pick(10);
        ASSERT_GE(pick, 1);
        ASSERT_LE(pick, 10);
        seen.insert(pick);
    }
    EXPECT_EQ(seen.size(), 10U);
    EXPECT_EQ(draw.pick(0), 1);
    EXPECT_EQ(draw.pick(1), 1);
}

TEST(LateDrawing, FillsOnlyAnEmptySlotAtTheFurthestPosition)
{
    Seeds seeds;
    QuestionDraw draw = seeds.draw();
    SessionState s;
    s.QuestionOrder[1] = 1;
    s.QuestionOrder[2] = 2;
    s.CurrentQuestion = 3;
    s.HighestReached = 3;
    seeds.step = 0; // only the one free number may come out, however long it takes
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
}

TEST(LateDrawing, PastTheEndStoresTheFirstNumberDrawn)
{
    Seeds seeds;
    QuestionDraw draw = seeds.draw();
    SessionState s;
    shuffleQuestions(s, 5, draw);
    s.CurrentQuestion = 6;
    s.HighestReached = 6;
    const int callsBefore = seeds.calls;
    drawLate(s, 5, draw);
    EXPECT_GE(s.QuestionOrder[6], 1);
    EXPECT_LE(s.QuestionOrder[6], 5); // necessarily a number already in use
    EXPECT_EQ(seeds.calls, callsBefore + 1);
}

// --- the countdown ---------------------------------------------------------------

UserOptions perQuestion(Int16 hours, Int16 minutes, Int16 seconds)
{
    UserOptions options;
    options.values[3] = hours;
    options.values[4] = minutes;
    options.values[5] = seconds;
    return options;
}

TEST(Countdown, SplitsTheWholeTestIntoHoursMinutesAndSeconds)
{
    SessionState s;
    armCountdown(s, perQuestion(0, 1, 30), 1000);
    EXPECT_EQ(timeCaption(s), "25:0:0");
    armCountdown(s, perQuestion(0, 1, 30), 5);
    EXPECT_EQ(timeCaption(s), "0:7:30");
    armCountdown(s, perQuestion(1, 0, 1), 3);
    EXPECT_EQ(timeCaption(s), "3:0:3");
    armCountdown(s, perQuestion(0, 1, 30), 0);
    EXPECT_EQ(timeCaption(s), "0:0:0");
    EXPECT_TRUE(timeIsUp(s));
    // 9:06:07 is the longest time a question can get; the total is 32-bit.
    armCountdown(s, perQuestion(9, 6, 7), 1000);
    EXPECT_EQ(timeCaption(s), "9101:56:40");
}

TEST(Countdown, TimePerQuestionPast32767SecondsIsAnOverflow)
{
    SessionState s;
    EXPECT_RUNTIME_ERROR(armCountdown(s, perQuestion(9, 6, 8), 1), err::Overflow);
    EXPECT_RUNTIME_ERROR(armCountdown(s, perQuestion(10, 0, 0), 1), err::Overflow);
    EXPECT_RUNTIME_ERROR(armCountdown(s, perQuestion(0, 547, 0), 1), err::Overflow);
}

TEST(Countdown, TicksBorrowFromMinutesThenHoursAndStopAtZero)
{
    SessionState s;
    s.TimeHours = 1;
    countDownOneSecond(s);
    EXPECT_EQ(timeCaption(s), "0:59:59");
    s.TimeHours = 0;
    s.TimeMinutes = 1;
    s.TimeSeconds = 0;
    countDownOneSecond(s);
    EXPECT_EQ(timeCaption(s), "0:0:59");
    s.TimeSeconds = 1;
    s.TimeMinutes = 0;
    EXPECT_FALSE(timeIsUp(s));
    countDownOneSecond(s);
    EXPECT_EQ(timeCaption(s), "0:0:0");
    EXPECT_TRUE(timeIsUp(s));
    countDownOneSecond(s);
    EXPECT_EQ(timeCaption(s), "0:0:0");
    s.TimeHours = 1;
    s.TimeMinutes = 5;
    s.TimeSeconds = 10;
    countDownOneSecond(s);
    EXPECT_EQ(timeCaption(s), "1:5:9");
}

// --- answering and moving --------------------------------------------------------

TEST(Answering, LettersAndKeysMapToTheFourButtons)
{
    EXPECT_EQ(optionForKey('a'), 1);
    EXPECT_EQ(optionForKey('B'), 2);
    EXPECT_EQ(optionForKey('c'), 3);
    EXPECT_EQ(optionForKey('D'), 4);
    for (int key : { 'e', 'E', '1', '\r', ' ', '@' })
        EXPECT_EQ(optionForKey(key), 0) << key;
    EXPECT_EQ(optionForLetter("a"), 1);
    EXPECT_EQ(optionForLetter("d"), 4);
    for (const char* other : { "", "A", "e", "ab" })
        EXPECT_EQ(optionForLetter(other), 0) << other;

    SessionState s;
    s.CurrentQuestion = 3;
    recordAnswer(s, 2);
    recordAnswer(s, 3);
    EXPECT_EQ(s.UserAnswers[3], "c");
    EXPECT_FALSE(s.OptionBChosen);
    EXPECT_TRUE(s.OptionCChosen);
    s.CurrentQuestion = 1001;
    EXPECT_RUNTIME_ERROR(recordAnswer(s, 1), err::SubscriptOutOfRange);
}

class MoveTest : public ::testing::Test {
protected:
    MoveTest()
    {
        s.TestName = "KESTA Quiz Demo - Five";
        shuffleQuestions(s, 5, draw);
        s.CurrentQuestion = 1;
    }
    NextStep next(bool answered = true) { return goNext(s, 5, answered, draw); }

    Seeds seeds;
    QuestionDraw draw = seeds.draw();
    SessionState s;
};

TEST_F(MoveTest, NextWithoutAnAnswerStaysPut)
{
    const NextStep step = next(false);
    EXPECT_FALSE(step.moved);
    EXPECT_EQ(s.CurrentQuestion, 1);
    EXPECT_EQ(s.HighestReached, 0);
    EXPECT_STREQ(step.caption, "Next Question");
    EXPECT_FALSE(step.pastEnd);

    s.CurrentQuestion = 5;
    EXPECT_STREQ(next(false).caption, "Finish");
    EXPECT_EQ(s.CurrentQuestion, 5);
}

TEST_F(MoveTest, NextRestoresTheAnswerOrUnchecksAndCaptionsTheLastQuestionFinish)
{
    s.UserAnswers[2] = "b";
    NextStep step = next();
    EXPECT_TRUE(step.moved);
    EXPECT_EQ(s.CurrentQuestion, 2);
    EXPECT_EQ(s.HighestReached, 2);
    EXPECT_EQ(step.restore, 2);
    EXPECT_TRUE(step.showBack);
    EXPECT_STREQ(step.caption, "Next Question");

    next();
    next();
    step = next();
    EXPECT_EQ(s.CurrentQuestion, 5);
    EXPECT_EQ(step.restore, 0);
    EXPECT_STREQ(step.caption, "Finish");
    EXPECT_FALSE(step.pastEnd);
}

TEST_F(MoveTest, FinishOnTheLastQuestionRunsPastTheEndAndDrawsForThatSlot)
{
    int order[6] = {};
    for (int i = 1; i <= 5; ++i)
        order[i] = s.QuestionOrder[i];
    s.CurrentQuestion = 5;
    s.HighestReached = 5;
    const NextStep step = next();
    EXPECT_TRUE(step.pastEnd);
    EXPECT_EQ(s.CurrentQuestion, 6);
    EXPECT_EQ(s.HighestReached, 6);
    EXPECT_GE(s.QuestionOrder[6], 1);
    EXPECT_LE(s.QuestionOrder[6], 5);
    for (int i = 1; i <= 5; ++i)
        EXPECT_EQ(s.QuestionOrder[i], order[i]);

    // Already past the end: nothing moves, the test is finished again.
    const NextStep again = next();
    EXPECT_FALSE(again.moved);
    EXPECT_TRUE(again.pastEnd);
    EXPECT_EQ(s.CurrentQuestion, 6);
}

TEST(Moving, ATestOf1000QuestionsFailsOnSlot1001And999Finish)
{
    Seeds seeds;
    QuestionDraw draw = seeds.draw();
    SessionState s;
    shuffleQuestions(s, 1000, draw);
    s.CurrentQuestion = 1000;
    s.HighestReached = 1000;
    EXPECT_RUNTIME_ERROR(goNext(s, 1000, true, draw), err::SubscriptOutOfRange);

    shuffleQuestions(s, 999, draw);
    s.CurrentQuestion = 999;
    s.HighestReached = 999;
    EXPECT_TRUE(goNext(s, 999, true, draw).pastEnd);
    EXPECT_EQ(s.CurrentQuestion, 1000);
    EXPECT_NE(s.QuestionOrder[1000], 0);
}

TEST_F(MoveTest, BackRestoresAnAnswerButLeavesTheButtonsForAnUnansweredPosition)
{
    s.CurrentQuestion = 3;
    s.UserAnswers[2] = "d";
    BackStep step = goBack(s, 5);
    EXPECT_EQ(s.CurrentQuestion, 2);
    EXPECT_EQ(step.restore, 4);
    EXPECT_TRUE(step.hideFinish);
    EXPECT_FALSE(step.hideBack);
    EXPECT_TRUE(step.showNext);

    step = goBack(s, 5);
    EXPECT_EQ(s.CurrentQuestion, 1);
    EXPECT_EQ(step.restore, 0); // no unchecking, unlike the next button
    EXPECT_TRUE(step.hideBack);
    EXPECT_FALSE(step.showNext);
}

TEST_F(MoveTest, BackFromPastTheEndShowsTheLastQuestionAgain)
{
    s.CurrentQuestion = 6;
    const BackStep step = goBack(s, 5);
    EXPECT_EQ(s.CurrentQuestion, 5);
    EXPECT_TRUE(step.hideFinish);
    EXPECT_TRUE(step.showNext);

    s.CurrentQuestion = -32768;
    EXPECT_RUNTIME_ERROR(goBack(s, 5), err::Overflow);
}

TEST(Pages, HeaderAndQuestionPageOfAPosition)
{
    EXPECT_EQ(headerText("KESTA Exam Demo - One", 3, 40), "Chapter: KESTA Exam Demo - One | Question 3 of 40");
    EXPECT_EQ(headerText("", 1, 0), "Chapter:  | Question 1 of 0");

    QuestionList list;
    list.QuestionCount = 2;
    list.Questions[0].Question = "nothing";
    list.Questions[2].Question = "\tWhich one?<br>a)\tthis\t";
    SessionState s;
    s.QuestionOrder[1] = 2;
    EXPECT_EQ(pageText(s, list, 1), "   Which one?<br>a)   this   ");
    EXPECT_EQ(pageText(s, list, 2), "nothing"); // never drawn: record 0
    s.QuestionOrder[1] = 1001;
    EXPECT_RUNTIME_ERROR(pageText(s, list, 1), err::SubscriptOutOfRange);
}

// --- printing --------------------------------------------------------------------

TEST(Printing, OneTextPerQuestionInFileOrderThenOneDocument)
{
    QuestionList list;
    list.QuestionCount = 2;
    list.Questions[1] = { "intro", "Q\tone", "", "Because.", "b" };
    list.Questions[2] = { "", "Q two", "", "E two", "c" };
    test::FakePrinter printer;
    printQuestionList(list, printer);
    ASSERT_EQ(printer.texts.size(), 2U);
    EXPECT_EQ(printer.texts[0], "Question 1\r\nQ\tone\r\nExplanation: \r\nBecause.\r\nAnswer: \r\nb1.");
    EXPECT_EQ(printer.texts[1], "Question 2\r\nQ two\r\nExplanation: \r\nE two\r\nAnswer: \r\nc1.");
    EXPECT_EQ(printer.documents, 1);

    EXPECT_EQ(printText({ "", "Q", "", "E", "a" }, 12, 3), "Question 12\r\nQ\r\nExplanation: \r\nE\r\nAnswer: \r\na3.");
}

TEST(Printing, NoQuestionsEndAnEmptyDocumentAndFailuresLeaveItUnended)
{
    QuestionList list;
    test::FakePrinter empty;
    printQuestionList(list, empty);
    EXPECT_TRUE(empty.texts.empty());
    EXPECT_EQ(empty.documents, 1);

    list.QuestionCount = 1001;
    test::FakePrinter tooMany;
    EXPECT_RUNTIME_ERROR(printQuestionList(list, tooMany), err::SubscriptOutOfRange);
    EXPECT_EQ(tooMany.texts.size(), 1000U);
    EXPECT_EQ(tooMany.documents, 0);

    struct JammedPrinter : test::FakePrinter {
        void print(const std::string&) override { throw RuntimeError(482, "Printer error"); }
    } jammed;
    list.QuestionCount = 3;
    EXPECT_RUNTIME_ERROR(printQuestionList(list, jammed), 482);
    EXPECT_EQ(jammed.documents, 0);
}

} // namespace
} // namespace kesta
