#include "session/core/Navigation.h"

#include <algorithm>
#include <array>

namespace kesta {

namespace {
constexpr std::array<const char*, 4> Letters = { "a", "b", "c", "d" };
} // namespace

int optionForLetter(const std::string& letter)
{
    for (std::size_t i = 0; i < Letters.size(); ++i) {
        if (letter == Letters[i])
            return static_cast<int>(i) + 1;
    }
    return 0;
}

int optionForKey(int keyAscii)
{
    if (keyAscii >= 'A' && keyAscii <= 'D')
        return keyAscii - 'A' + 1;
    if (keyAscii >= 'a' && keyAscii <= 'd')
        return keyAscii - 'a' + 1;
    return 0;
}

void recordAnswer(SessionState& session, int option)
{
    session.OptionAChosen = option == 1;
    session.OptionBChosen = option == 2;
    session.OptionCChosen = option == 3;
    session.OptionDChosen = option == 4;
    session.UserAnswers[session.CurrentQuestion] = Letters.at(static_cast<std::size_t>(option - 1));
}

NextStep goNext(SessionState& session, Int16 questionCount, bool answerChecked, QuestionDraw& draw)
{
    NextStep step;
    if (answerChecked && session.CurrentQuestion <= questionCount) {
        session.CurrentQuestion = add16(session.CurrentQuestion, 1);
        step.moved = true;
        step.restore = optionForLetter(session.UserAnswers[session.CurrentQuestion]);
        step.showBack = session.CurrentQuestion > 1;
        session.HighestReached = std::max(session.HighestReached, session.CurrentQuestion);
        drawLate(session, questionCount, draw);
    }
    if (session.CurrentQuestion == questionCount)
        step.caption = FinishCaption;
    step.pastEnd = session.CurrentQuestion > questionCount;
    return step;
}

BackStep goBack(SessionState& session, Int16 questionCount)
{
    BackStep step;
    session.CurrentQuestion = sub16(session.CurrentQuestion, 1);
    step.restore = optionForLetter(session.UserAnswers[session.CurrentQuestion]);
    step.hideFinish = session.CurrentQuestion <= questionCount;
    if (session.CurrentQuestion == 1)
        step.hideBack = true;
    else
        step.showNext = session.CurrentQuestion <= questionCount;
    return step;
}

std::string headerText(const std::string& testName, Int16 position, Int16 questionCount)
{
    return "Chapter: " + testName + " | Question " + std::to_string(position) + " of " + std::to_string(questionCount);
}

std::string pageText(const SessionState& session, const QuestionList& questions, Int16 position)
{
    const std::string& question = questions.Questions[session.QuestionOrder[position]].Question;
    std::string text;
    text.reserve(question.size());
    for (char c : question) {
        if (c == '\t')
            text += "   ";
        else
            text += c;
    }
    return text;
}

} // namespace kesta
