#pragma once

#include "common/core/Int16.h"
#include "questions/core/QuestionList.h"
#include "session/core/SessionState.h"

#include <cstdint>
#include <functional>
#include <random>

namespace kesta {

// Where the generator's seeds come from; the host gives a new one per call.
using SeedSource = std::function<std::uint64_t()>;

// The generator that draws question numbers. It is re-seeded before each
// position is drawn, so no two runs of a test share an order even when the
// program is started twice within one clock tick.
class QuestionDraw {
public:
    explicit QuestionDraw(SeedSource seeds)
        : seeds_(std::move(seeds))
    {
    }

    void reseed() { engine_.seed(seeds_()); }

    // The integer part of count × r + 1 with r uniform in [0, 1): 1..count
    // for a positive count, 1 for none.
    Int16 pick(Int16 count);

private:
    SeedSource seeds_;
    std::mt19937_64 engine_;
};

// Fills QuestionOrder[1..questionCount] with a random permutation of
// 1..questionCount; RandomPick keeps the last number drawn. Each position is
// drawn afresh and scanned against every position; a collision draws again
// and restarts the scan. Raises 9 for more than 1000 questions.
void shuffleQuestions(SessionState& session, Int16 questionCount, QuestionDraw& draw);

// Draws a question for the current position when none was drawn for it yet
// (an order left incomplete, or the slot just past the last question).
// Collisions are re-drawn only within the test; past its end any number is
// stored as drawn.
void drawLate(SessionState& session, Int16 questionCount, QuestionDraw& draw);

} // namespace kesta
