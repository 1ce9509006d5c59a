#include "progress/core/Scoring.h"

#include "session/core/Navigation.h"

#include <cmath>

namespace kesta {

std::string upperAscii(std::string text)
{
    for (char& c : text) {
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    }
    return text;
}

std::string expandTabs(std::string text)
{
    for (auto p = text.find('\t'); p != std::string::npos; p = text.find('\t', p + 3))
        text.replace(p, 1, "   ");
    return text;
}

bool isIncorrect(const SessionState& session, const QuestionList& questions, std::int64_t position)
{
    const Int16 question = session.QuestionOrder[position];
    // Both sides are evaluated, as the record is looked up even for an undrawn position.
    const bool differs = upperAscii(session.UserAnswers[position]) != upperAscii(questions.Questions[question].Answer);
    return question == 0 || differs;
}

Int16 nextIncorrect(const SessionState& session, const QuestionList& questions, Int16 from)
{
    for (std::int64_t position = std::int64_t { from } + 1; position <= questions.QuestionCount; ++position) {
        if (isIncorrect(session, questions, position))
            return static_cast<Int16>(position);
    }
    return 0;
}

Int16 previousIncorrect(const SessionState& session, const QuestionList& questions, Int16 from)
{
    for (std::int64_t position = std::int64_t { from } - 1; position >= 1; --position) {
        if (isIncorrect(session, questions, position))
            return static_cast<Int16>(position);
    }
    return 0;
}

Int16 roundHalfEven(double value)
{
    const double whole = std::floor(value);
    const double fraction = value - whole;
    double rounded = whole;
    if (fraction > 0.5 || (fraction == 0.5 && std::fmod(whole, 2.0) != 0.0))
        rounded = whole + 1.0;
    return toInt16(static_cast<std::int64_t>(rounded));
}

Int16 scoreSession(const SessionState& session, const QuestionList& questions, ReviewState& review)
{
    review.ScorePercent = 0;
    review.WrongPositions.erase();
    review.ReviewIndex = 1;
    review.CorrectCount = 0;
    Int16 first = 0;
    for (std::int64_t position = 1; position <= questions.QuestionCount; ++position) {
        if (isIncorrect(session, questions, position)) {
            if (first == 0)
                first = static_cast<Int16>(position);
            review.WrongPositions[review.ReviewIndex] = static_cast<Int16>(position);
            review.ReviewIndex = add16(review.ReviewIndex, 1);
        }
    }
    review.WrongCount = sub16(review.ReviewIndex, 1);
    review.CorrectCount = sub16(questions.QuestionCount, review.WrongCount);
    if (review.CorrectCount != 0) {
        // The product is a 16-bit value; only the division is done in floating point.
        const Int16 product = mul16(review.CorrectCount, 100);
        review.ScorePercent = roundHalfEven(static_cast<double>(product) / questions.QuestionCount);
    }
    return first;
}

namespace {
std::string pageOf(const QuestionRecord& record, const std::string& answerLine)
{
    return expandTabs(record.Question + answerLine + "<br><b>The correct answer is: " + upperAscii(record.Answer)
        + "</b>" + "<br><br>Explanation: " + record.Explanation);
}
} // namespace

std::string reviewPage(const SessionState& session, const QuestionList& questions, Int16 position)
{
    const QuestionRecord& record = questions.Questions[session.QuestionOrder[position]];
    return pageOf(record, "<br><br><hr><br>Your answer: " + upperAscii(session.UserAnswers[position]));
}

std::string reviewPageNone(const QuestionList& questions)
{
    return pageOf(questions.Questions[0], "<br><br><hr><br>Your answer: NONE");
}

std::string reviewCaption(const std::string& testName, Int16 rank, Int16 wrongCount)
{
    return headerText(testName, rank, wrongCount); // the results window numbers the wrong answers as the exam did
}

std::string answerPage(const SessionState& session, const QuestionList& questions)
{
    const Int16 position = session.CurrentQuestion;
    const QuestionRecord& record = questions.Questions[session.QuestionOrder[position]];
    return expandTabs("Chapter: " + session.TestName + ", Question " + std::to_string(position) + " of "
        + std::to_string(questions.QuestionCount) + "<br><br>Answer: " + upperAscii(record.Answer)
        + "<br><br>Explanation: " + record.Explanation);
}

} // namespace kesta
