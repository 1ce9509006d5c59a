#pragma once

#include "common/core/FixedArray.h"
#include "common/core/Int16.h"

#include <string>

namespace kesta {

// The test in session. Positions are 1-based; slot 0 of the arrays is never
// used, so a test holds at most 1000 questions.
struct SessionState {
    std::string TestName; // catalogue title of the chosen test
    std::string TestFile; // its question file's name
    Int16 CurrentQuestion = 0;
    Int16 HighestReached = 0;
    Int16 RandomPick = 0;
    FixedArray<Int16, 0, 1000> QuestionOrder;      // position -> question record index; 0 = not drawn
    FixedArray<std::string, 0, 1000> UserAnswers;  // position -> "a".."d" or ""
    bool OptionAChosen = false;
    bool OptionBChosen = false;
    bool OptionCChosen = false;
    bool OptionDChosen = false;
    Int16 TimeHours = 0;
    Int16 TimeMinutes = 0;
    Int16 TimeSeconds = 0;
    bool TestStarted = false; // a test was started: leaving or ending it offers to save progress
};

} // namespace kesta
