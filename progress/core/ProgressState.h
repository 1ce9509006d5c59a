#pragma once

#include "common/core/FixedArray.h"
#include "common/core/Int16.h"

#include <string>

namespace kesta {

// The characters of a progress file being restored, spaces left out.
struct SavedProgress {
    FixedArray<std::string, 0, 1000> SavedChars;
    Int16 SavedCharCount = 0;
    std::string UserData; // written to usrdata.usr after every save; nothing ever sets it
};

// The results window's values, recomputed each time it opens.
struct ReviewState {
    Int16 ScorePercent = 0;
    Int16 CorrectCount = 0;
    Int16 WrongCount = 0;
    Int16 ReviewIndex = 0;
    FixedArray<Int16, 0, 1000> WrongPositions;
};

} // namespace kesta
