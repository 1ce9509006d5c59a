#include "progress/core/Scoring.h"

#include "common/core/RuntimeError.h"

#include <gtest/gtest.h>
#include <memory>

namespace kesta {
namespace {

// A test of `count` questions in natural order; record k's answer is "B",
// its question "Question k"; the first `correct` positions are answered "b", the rest "a".
struct Scenario {
    Scenario(int count, int correct)
    {
        questions.QuestionCount = static_cast<Int16>(count);
        session.TestName = "KESTA Quiz Demo - Scoring";
        for (int k = 1; k <= count; ++k) {
            questions.Questions[k] = {"", "Question " + std::to_string(k), "", "Explanation", "B"};
            session.QuestionOrder[k] = static_cast<Int16>(k);
            session.UserAnswers[k] = k <= correct ? "b" : "a";
        }
    }
    // The first wrong position, or the run-time error's number negated.
    int score()
    {
        try {
            return scoreSession(session, questions, review);
        } catch (const RuntimeError& error) {
            return -error.number();
        }
    }
    std::string wrong() const
    {
        std::string list;
        for (int i = 1; i <= review.WrongCount + 1; ++i)
            list += std::to_string(review.WrongPositions[i]) + " ";
        return list;
    }

    SessionState session;
    QuestionList questions;
    ReviewState review;
};

TEST(ScoringTest, PercentRoundsHalfToEvenAndListsEveryWrongPosition)
{
    const struct {
        int count, correct, percent, first;
    } cases[] = {{8, 1, 12, 2}, {8, 3, 38, 4}, {200, 199, 100, 200}, {3, 2, 67, 3}, {3, 1, 33, 2}, {4, 4, 100, 0},
                 {300, 1, 0, 2}, {5, 0, 0, 1}, {0, 0, 0, 0}, {400, 327, 82, 328}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.correct) + " of " + std::to_string(c.count));
        auto s = std::make_unique<Scenario>(c.count, c.correct);
        s->review.ScorePercent = 77;
        EXPECT_EQ(s->score(), c.first);
        EXPECT_EQ(s->review.ScorePercent, c.percent);
        EXPECT_EQ(s->review.CorrectCount, c.correct);
        EXPECT_EQ(s->review.WrongCount, c.count - c.correct);
        EXPECT_EQ(s->review.ReviewIndex, c.count - c.correct + 1);
    }
    auto none = std::make_unique<Scenario>(5, 0);
    none->score();
    EXPECT_EQ(none->wrong(), "1 2 3 4 5 0 ");
    EXPECT_EQ(roundHalfEven(0.5), 0);
    EXPECT_EQ(roundHalfEven(1.5), 2);
    EXPECT_EQ(roundHalfEven(2.5), 2);
    EXPECT_EQ(roundHalfEven(2.5000001), 3);
}

TEST(ScoringTest, AnswersCompareUpperCasedButUntrimmedAndOverflowsAreFatal)
{
    auto s = std::make_unique<Scenario>(7, 7);
    s->questions.Questions[1].Answer = "b"; // lower-case key against "b": equal
    s->session.UserAnswers[2] = "B";         // upper-case answer: equal
    s->session.UserAnswers[3] = "";          // unanswered
    s->session.UserAnswers[4] = "b ";        // no trimming
    s->session.QuestionOrder[5] = 0;         // never drawn: record 0, whose answer is empty
    s->session.UserAnswers[5] = "";
    s->session.UserAnswers[6] = "c";
    EXPECT_EQ(s->score(), 3);
    EXPECT_EQ(s->wrong(), "3 4 5 6 0 ");
    EXPECT_EQ(s->review.ScorePercent, 43);
    EXPECT_EQ(nextIncorrect(s->session, s->questions, 3), 4);
    EXPECT_EQ(nextIncorrect(s->session, s->questions, 6), 0);
    EXPECT_EQ(previousIncorrect(s->session, s->questions, 3), 0);
    EXPECT_EQ(previousIncorrect(s->session, s->questions, 7), 6);

    EXPECT_EQ(std::make_unique<Scenario>(400, 328)->score(), -err::Overflow); // 328 * 100 is past 16 bits
    auto tooMany = std::make_unique<Scenario>(1000, 0);
    tooMany->questions.QuestionCount = 1001;
    EXPECT_EQ(tooMany->score(), -err::SubscriptOutOfRange);
}

TEST(ScoringTest, PagesAndCaptions)
{
    auto s = std::make_unique<Scenario>(3, 0);
    s->questions.Questions[2] = {"", "Q\ttwo", "", "E\t\ttwo", "c"};
    s->questions.Questions[0] = {"", "Zero", "", "Nothing\there", "a"};
    const std::string tail = "<br><b>The correct answer is: C</b><br><br>Explanation: E      two";
    s->session.UserAnswers[2] = "d";
    EXPECT_EQ(reviewPage(s->session, s->questions, 2), "Q   two<br><br><hr><br>Your answer: D" + tail);
    s->session.UserAnswers[2] = "";
    EXPECT_EQ(reviewPage(s->session, s->questions, 2), "Q   two<br><br><hr><br>Your answer: " + tail);
    EXPECT_EQ(reviewPageNone(s->questions), "Zero<br><br><hr><br>Your answer: NONE<br><b>The correct answer is: "
                                            "A</b><br><br>Explanation: Nothing   here");
    EXPECT_EQ(reviewCaption("KESTA Exam Demo 2", 1, 12), "Chapter: KESTA Exam Demo 2 | Question 1 of 12");

    s->session.CurrentQuestion = 2;
    EXPECT_EQ(answerPage(s->session, s->questions),
              "Chapter: KESTA Quiz Demo - Scoring, Question 2 of 3<br><br>Answer: C<br><br>Explanation: E      two");
    s->session.CurrentQuestion = 4; // past the last position the order holds 0: record 0 answers
    EXPECT_EQ(answerPage(s->session, s->questions),
              "Chapter: KESTA Quiz Demo - Scoring, Question 4 of 3<br><br>Answer: A<br><br>Explanation: Nothing   here");
}

} // namespace
} // namespace kesta
