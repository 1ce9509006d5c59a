#pragma once

#include "common/core/Host.h"
#include "questions/core/QuestionList.h"

#include <string>

namespace kesta {

// Printing the loaded test as plain text, in the order of its question file.

// One question as printed: number, question, explanation and answer, each
// after a CR LF, then the printer's page number and a full stop. TABs stay.
std::string printText(const QuestionRecord& record, int index, int pageNumber);

// Prints records 1..QuestionCount and ends the document once (an empty
// document for no questions). Raises 9 for a count past 1000 and whatever the
// printer raises; the document is then left unfinished.
void printQuestionList(const QuestionList& questions, Printer& printer);

} // namespace kesta
