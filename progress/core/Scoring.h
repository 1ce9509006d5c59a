#pragma once

#include "common/core/Int16.h"
#include "progress/core/ProgressState.h"
#include "questions/core/QuestionList.h"
#include "session/core/SessionState.h"

#include <string>

namespace kesta {

// Scoring a session and the pages of the results and answer windows. The
// score is never kept as a running count: it is derived from the session as
// it stands each time the results window opens.

// Upper-cases ASCII letters only; answers are the letters a to d.
std::string upperAscii(std::string text);

// Every TAB becomes three blanks, as on every page the program shows.
std::string expandTabs(std::string text);

// A position is incorrect when no question was drawn for it or its answer,
// upper-cased, is not exactly the upper-cased correct answer. An unanswered
// position is therefore always incorrect. Raises 9 for a position or a
// question number beyond the arrays.
bool isIncorrect(const SessionState& session, const QuestionList& questions, std::int64_t position);

// The first incorrect position after `from`, up to the question count; 0 when there is none.
Int16 nextIncorrect(const SessionState& session, const QuestionList& questions, Int16 from);
// The first incorrect position below `from`, down to 1; 0 when there is none.
Int16 previousIncorrect(const SessionState& session, const QuestionList& questions, Int16 from);

// Rounds to the nearest whole number, a half to the even neighbour (12.5 -> 12, 37.5 -> 38).
Int16 roundHalfEven(double value);

// Scores the session into `review`: the incorrect positions in ascending
// order, the counts and the percentage; ReviewIndex is left one past the last
// incorrect rank. Returns the first incorrect position, 0 when there is none.
// Raises 9 for more than 1000 questions and 6 when the correct count times
// 100 does not fit in 16 bits (more than 327 correct answers).
Int16 scoreSession(const SessionState& session, const QuestionList& questions, ReviewState& review);

// The review page of one position: question, the user's answer, the correct
// answer and the explanation, TABs expanded.
std::string reviewPage(const SessionState& session, const QuestionList& questions, Int16 position);
// The page for a position without a drawn question: record 0 with the answer "NONE".
std::string reviewPageNone(const QuestionList& questions);
// "Chapter: <test> | Question <rank> of <wrong count>".
std::string reviewCaption(const std::string& testName, Int16 rank, Int16 wrongCount);

// The answer window's page: the correct answer and the explanation of the
// current position, without the question itself.
std::string answerPage(const SessionState& session, const QuestionList& questions);

// The page shown when every answer is correct, as an "about:" address.
inline constexpr const char* PerfectScoreAddress = "about:CONGRATULATIONS! You've got a Perfect Score!";

} // namespace kesta
