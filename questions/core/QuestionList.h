#pragma once

#include "common/core/FixedArray.h"
#include "common/core/Int16.h"

#include <string>

namespace kesta {

// One loaded question. Texts are UTF-8.
struct QuestionRecord {
    std::string Intro;       // the file's introduction; in record 1 only
    std::string Question;    // question text with its choices
    std::string Reserved;    // never written or read
    std::string Explanation; // explanation paragraphs
    std::string Answer;      // the correct letter
};

// The loaded test: records 1 to QuestionCount; record 0 is the empty record
// stored while loading and is never shown.
struct QuestionList {
    FixedArray<QuestionRecord, 0, 1000> Questions;
    Int16 QuestionCount = 0;
};

} // namespace kesta
