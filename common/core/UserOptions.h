#pragma once

#include "common/core/FixedArray.h"
#include "common/core/Int16.h"

namespace kesta {

// The six user options, indices 1 to 6 (0 exists and is never used):
// 1 and 2 carried unchanged, 3 hours, 4 minutes and 5 seconds per question,
// 6 the question font size (0 means no font tag). All zero until first read.
struct UserOptions {
    FixedArray<Int16, 0, 6> values;

    Int16 fontSize() const { return values[6]; }
};

} // namespace kesta
