#include "session/core/QuestionDraw.h"

#include <cmath>

namespace kesta {

Int16 QuestionDraw::pick(Int16 count)
{
    // 53 random bits give every double of [0, 1) that the formula can tell apart.
    const double r = static_cast<double>(engine_() >> 11) * 0x1.0p-53;
    double value = std::floor(count * r + 1.0);
    // count × r may round up to count itself for the largest r.
    if (count > 0 && value > count)
        value = count;
    return toInt16(static_cast<std::int64_t>(value));
}

void shuffleQuestions(SessionState& session, Int16 questionCount, QuestionDraw& draw)
{
    session.QuestionOrder.erase();
    for (int i = 1; i <= questionCount; ++i) {
        draw.reseed();
        session.RandomPick = draw.pick(questionCount);
        for (int j = 1; j <= questionCount; ++j) {
            if (session.QuestionOrder[j] == session.RandomPick && j != i) {
                session.RandomPick = draw.pick(questionCount);
                j = 0; // the scan starts over with the new number
            }
        }
        session.QuestionOrder[i] = session.RandomPick;
    }
}

void drawLate(SessionState& session, Int16 questionCount, QuestionDraw& draw)
{
    const Int16 current = session.CurrentQuestion;
    if (session.QuestionOrder[current] != 0 || session.HighestReached > current)
        return;
    draw.reseed();
    session.RandomPick = draw.pick(questionCount);
    // Here HighestReached equals the current position, whose slot is still
    // empty, so at most questionCount - 1 numbers are taken and the loop ends.
    for (int j = 1; j <= session.HighestReached; ++j) {
        if (session.QuestionOrder[j] == session.RandomPick && current <= questionCount) {
            session.RandomPick = draw.pick(questionCount);
            j = 0;
        }
    }
    session.QuestionOrder[current] = session.RandomPick;
}

} // namespace kesta
