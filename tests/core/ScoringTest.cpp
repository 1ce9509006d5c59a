#include "progress/core/Scoring.h"

#include "common/core/RuntimeError.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace kesta {
namespace {

int errorOf(const std::function<void()>& body)
{
    try {
        body();
    } catch (const RuntimeError& error) {
        return error.number();
    }
    return 0;
}

// A test of `count` questions in natural order; record k's answer is "B",
// its question "Question k", its explanation "Explanation k". The first
// `correct` positions are answered "b", the rest "a".
struct Scenario {
    Scenario(int count, int correct)
    {
        questions.QuestionCount = static_cast<Int16>(count);
        for (int k = 1; k <= count; ++k) {
            auto& r = questions.Questions[k];
            r.Question = "Question " + std::to_string(k);
            r.Answer = "B";
            r.Explanation = "Explanation " + std::to_string(k);
            session.QuestionOrder[k] = static_cast<Int16>(k);
            session.UserAnswers[k] = k <= correct ? "b" : "a";
        }
        session.TestName = "KESTA Quiz Demo - Scoring";
    }
    Int16 score() { return scoreSession(session, questions, review); }

    // The arrays are large; keep them off the stack.
    SessionState session;
    QuestionList questions;
    ReviewState review;
};

std::unique_ptr<Scenario> scenario(int count, int correct)
{
    return std::make_unique<Scenario>(count, correct);
}

TEST(ScoringTest, PercentRoundsHalfToEven)
{
    struct Case {
        int count, correct, percent;
    };
    for (const Case c : { Case { 8, 1, 12 }, Case { 8, 3, 38 }, Case { 200, 199, 100 }, Case { 3, 2, 67 },
             Case { 3, 1, 33 }, Case { 4, 4, 100 }, Case { 300, 1, 0 } }) {
        auto s = scenario(c.count, c.correct);
        s->score();
        EXPECT_EQ(s->review.ScorePercent, c.percent) << c.correct << " of " << c.count;
        EXPECT_EQ(s->review.CorrectCount, c.correct);
        EXPECT_EQ(s->review.WrongCount, c.count - c.correct);
    }
    EXPECT_EQ(roundHalfEven(0.5), 0);
    EXPECT_EQ(roundHalfEven(1.5), 2);
    EXPECT_EQ(roundHalfEven(2.5), 2);
    EXPECT_EQ(roundHalfEven(2.5000001), 3);
}

TEST(ScoringTest, NoCorrectAnswerScoresZeroAndListsEveryPosition)
{
    auto s = scenario(5, 0);
    s->review.ScorePercent = 77;
    EXPECT_EQ(s->score(), 1);
    EXPECT_EQ(s->review.ScorePercent, 0);
    EXPECT_EQ(s->review.WrongCount, 5);
    EXPECT_EQ(s->review.ReviewIndex, 6);
    for (int i = 1; i <= 5; ++i)
        EXPECT_EQ(s->review.WrongPositions[i], i);

    auto empty = scenario(0, 0);
    EXPECT_EQ(empty->score(), 0);
    EXPECT_EQ(empty->review.ScorePercent, 0);
}

TEST(ScoringTest, IncorrectPositionsFollowTheExactUpperCasedText)
{
    auto s = scenario(7, 7);
    s->questions.Questions[1].Answer = "b"; // lower-case key against "b": equal
    s->session.UserAnswers[2] = "B"; // upper-case answer: equal
    s->session.UserAnswers[3] = ""; // unanswered
    s->session.UserAnswers[4] = "b "; // no trimming
    s->session.QuestionOrder[5] = 0; // never drawn
    s->questions.Questions[0].Answer = "";
    s->session.UserAnswers[5] = "";
    s->session.UserAnswers[6] = "c";

    EXPECT_EQ(s->score(), 3);
    EXPECT_EQ(s->review.WrongCount, 4);
    EXPECT_EQ(s->review.WrongPositions[1], 3);
    EXPECT_EQ(s->review.WrongPositions[2], 4);
    EXPECT_EQ(s->review.WrongPositions[3], 5);
    EXPECT_EQ(s->review.WrongPositions[4], 6);
    EXPECT_EQ(s->review.WrongPositions[5], 0);
    EXPECT_EQ(s->review.CorrectCount, 3);
    EXPECT_EQ(s->review.ScorePercent, 43);

    EXPECT_EQ(nextIncorrect(s->session, s->questions, 3), 4);
    EXPECT_EQ(nextIncorrect(s->session, s->questions, 6), 0);
    EXPECT_EQ(previousIncorrect(s->session, s->questions, 3), 0);
    EXPECT_EQ(previousIncorrect(s->session, s->questions, 7), 6);
}

TEST(ScoringTest, TheScoreProductIsSixteenBits)
{
    auto ok = scenario(400, 327);
    EXPECT_EQ(errorOf([&] { ok->score(); }), 0);
    EXPECT_EQ(ok->review.ScorePercent, 82);

    auto over = scenario(400, 328);
    EXPECT_EQ(errorOf([&] { over->score(); }), err::Overflow);

    auto tooMany = scenario(1000, 0);
    tooMany->questions.QuestionCount = 1001;
    EXPECT_EQ(errorOf([&] { tooMany->score(); }), err::SubscriptOutOfRange);
}

TEST(ScoringTest, PagesAndCaptions)
{
    auto s = scenario(3, 0);
    s->questions.Questions[2].Question = "Q\ttwo";
    s->questions.Questions[2].Explanation = "E\t\ttwo";
    s->questions.Questions[2].Answer = "c";
    s->session.UserAnswers[2] = "d";

    EXPECT_EQ(reviewPage(s->session, s->questions, 2),
        "Q   two<br><br><hr><br>Your answer: D<br><b>The correct answer is: C</b><br><br>Explanation: E      two");
    s->session.UserAnswers[2] = "";
    EXPECT_EQ(reviewPage(s->session, s->questions, 2),
        "Q   two<br><br><hr><br>Your answer: <br><b>The correct answer is: C</b><br><br>Explanation: E      two");

    s->questions.Questions[0] = { "", "Zero", "", "Nothing\there", "a" };
    EXPECT_EQ(reviewPageNone(s->questions),
        "Zero<br><br><hr><br>Your answer: NONE<br><b>The correct answer is: A</b><br><br>Explanation: Nothing   "
        "here");

    EXPECT_EQ(reviewCaption("KESTA Exam Demo 2", 1, 12), "Chapter: KESTA Exam Demo 2 | Question 1 of 12");

    s->session.CurrentQuestion = 2;
    EXPECT_EQ(answerPage(s->session, s->questions),
        "Chapter: KESTA Quiz Demo - Scoring, Question 2 of 3<br><br>Answer: C<br><br>Explanation: E      two");
    // Past the last position the order holds 0: record 0 answers.
    s->session.CurrentQuestion = 4;
    EXPECT_EQ(answerPage(s->session, s->questions),
        "Chapter: KESTA Quiz Demo - Scoring, Question 4 of 3<br><br>Answer: A<br><br>Explanation: Nothing   here");
}

} // namespace
} // namespace kesta
