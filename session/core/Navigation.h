#pragma once

#include "common/core/Int16.h"
#include "questions/core/QuestionList.h"
#include "session/core/QuestionDraw.h"
#include "session/core/SessionState.h"

#include <string>

namespace kesta {

// Answering and moving between positions, as state changes on the session
// that tell the main window what to show. The window only applies them.

inline constexpr const char* NextQuestionCaption = "Next Question";
inline constexpr const char* FinishCaption = "Finish";

// Answer buttons are numbered 1..4 for the letters "a".."d"; 0 is none.
int optionForLetter(const std::string& letter); // exact lower-case letters only
int optionForKey(int keyAscii); // 'A'/'a'..'D'/'d'

// Records a click of answer button 1..4 at the current position and marks it
// as the one chosen last. Raises 9 when the position is outside 0..1000.
void recordAnswer(SessionState& session, int option);

// What the next button leads to.
struct NextStep {
    bool moved = false; // the position advanced
    int restore = 0; // when moved: the button to check, 0 = uncheck all four
    bool showBack = false; // the previous button becomes visible
    const char* caption = NextQuestionCaption; // the next button's caption
    bool pastEnd = false; // the test ran past its last question: finish it
};

// The next button: without a checked answer nothing moves (the window asks
// for one); otherwise the position advances, its answer is restored and a
// question is drawn for it when none was. Raises 9 when the position
// passes slot 1000 (a test of 1000 questions being finished).
NextStep goNext(SessionState& session, Int16 questionCount, bool answerChecked, QuestionDraw& draw);

// What the previous button leads to.
struct BackStep {
    int restore = 0; // the button to check; 0 = leave the buttons as they are
    bool hideFinish = false;
    bool hideBack = false; // back at position 1
    bool showNext = false; // the next button shows again, captioned "Next Question"
};

// The previous button: one position back. Unlike the next button, an
// unanswered position keeps whatever button is checked. Raises 6 below
// -32768 and 9 outside the arrays.
BackStep goBack(SessionState& session, Int16 questionCount);

// "Chapter: <test> | Question <p> of <count>".
std::string headerText(const std::string& testName, Int16 position, Int16 questionCount);

// The page of a position: the question of the record drawn for it, each TAB
// shown as three blanks. Raises 9 for a position or record outside the arrays.
std::string pageText(const SessionState& session, const QuestionList& questions, Int16 position);

} // namespace kesta
