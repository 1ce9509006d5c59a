#include "progress/core/Scoring.h"

#include "support/Checks.h"

#include <gtest/gtest.h>

#include <memory>

namespace kesta {
namespace {

// A test of `count` questions in natural order; record k's answer is "B",
// its question "Q k"; the first `correct` positions are answered "b", the rest "a".
struct Scenario {
    Scenario(int count, int correct)
    {
        questions.QuestionCount = static_cast<Int16>(count);
        session.TestName = "KESTA Quiz Demo";
        for (int k = 1; k <= count; ++k) {
            questions.Questions[k] = {"", "Q " + std::to_string(k), "", "E", "B"};
            session.QuestionOrder[k] = static_cast<Int16>(k);
            session.UserAnswers[k] = k <= correct ? "b" : "a";
        }
    }
    // The first wrong position, the percentage, the counts and the wrong positions, or the error.
    std::string score()
    {
        review.ScorePercent = 77;
        review.WrongPositions[1000] = 5;
        return test::outcome([&] {
            const Int16 first = scoreSession(session, questions, review);
            std::string out = std::to_string(first) + " " +
                              std::to_string(review.ScorePercent) + "% " + std::to_string(review.CorrectCount) + "/" +
                              std::to_string(review.WrongCount) + " next rank " + std::to_string(review.ReviewIndex) + ":";
            for (int i = 1; i <= std::min(review.WrongCount + 1, 6); ++i)
                out += " " + std::to_string(review.WrongPositions[i]);
            return out + " " + std::to_string(review.WrongPositions[1000]);
        });
    }

    SessionState session;
    QuestionList questions;
    ReviewState review;
};

TEST(ScoringTest, ThePercentRoundsHalfToEvenAndEveryWrongPositionIsListed)
{
    const std::tuple<int, int, std::string> cases[] = {
        {8, 1, "2 12% 1/7 next rank 8: 2 3 4 5 6 7 0"},     {8, 3, "4 38% 3/5 next rank 6: 4 5 6 7 8 0 0"},
        {200, 199, "200 100% 199/1 next rank 2: 200 0 0"}, {3, 2, "3 67% 2/1 next rank 2: 3 0 0"},
        {4, 4, "0 100% 4/0 next rank 1: 0 0"},             {300, 1, "2 0% 1/299 next rank 300: 2 3 4 5 6 7 0"},
        {5, 0, "1 0% 0/5 next rank 6: 1 2 3 4 5 0 0"},     {0, 0, "0 0% 0/0 next rank 1: 0 0"},
        {400, 327, "328 82% 327/73 next rank 74: 328 329 330 331 332 333 0"},
        {400, 328, "error 6"}, // 328 * 100 is past 16 bits
    };
    for (const auto& [count, correct, expected] : cases)
        EXPECT_EQ(std::make_unique<Scenario>(count, correct)->score(), expected) << correct << " of " << count;
    auto tooMany = std::make_unique<Scenario>(1000, 0);
    EXPECT_EQ(nextIncorrect(tooMany->session, tooMany->questions, 999), 1000); // the last position is searched too
    tooMany->questions.QuestionCount = 1001;
    EXPECT_EQ(tooMany->score(), "error 9");
}

TEST(ScoringTest, AnswersCompareUpperCasedButUntrimmedAndTheSearchesFindTheNeighbours)
{
    auto s = std::make_unique<Scenario>(7, 7);
    s->questions.Questions[1].Answer = "b"; // lower-case key against "b": equal
    s->session.UserAnswers[2] = "B";         // upper-case answer: equal
    s->session.UserAnswers[3] = "";          // unanswered
    s->session.UserAnswers[4] = "b ";        // no trimming
    s->session.QuestionOrder[5] = 0;         // never drawn: record 0, whose answer is empty
    s->session.UserAnswers[5] = "";
    s->session.UserAnswers[6] = "c";
    EXPECT_EQ(s->score(), "3 43% 3/4 next rank 5: 3 4 5 6 0 0");
    const auto next = [&](int from) { return nextIncorrect(s->session, s->questions, static_cast<Int16>(from)); };
    const auto previous = [&](int from) { return previousIncorrect(s->session, s->questions, static_cast<Int16>(from)); };
    EXPECT_EQ(std::vector<int>({next(3), next(6), previous(3), previous(7), previous(4)}), std::vector<int>({4, 0, 0, 6, 3}));
}

TEST(ScoringTest, PagesShowTheAnswersUpperCasedWithTabsWidened)
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
              "Chapter: KESTA Quiz Demo, Question 2 of 3<br><br>Answer: C<br><br>Explanation: E      two");
    s->session.CurrentQuestion = 4; // past the last position the order holds 0: record 0 answers
    EXPECT_EQ(answerPage(s->session, s->questions),
              "Chapter: KESTA Quiz Demo, Question 4 of 3<br><br>Answer: A<br><br>Explanation: Nothing   here");
    EXPECT_EQ(upperAscii("az\xC3\xA9{`"), "AZ\xC3\xA9{`");
    EXPECT_EQ(previousIncorrect(s->session, s->questions, 2), 1); // the first position is searched too
}

} // namespace
} // namespace kesta
