#pragma once

#include "common/core/Int16.h"
#include "common/core/UserOptions.h"
#include "session/core/SessionState.h"

#include <string>

namespace kesta {

// The one countdown of a whole test, kept in TimeHours, TimeMinutes and
// TimeSeconds of the session.

// Arms the countdown for a test of `questionCount` questions from the
// options' hours, minutes and seconds per question. The time per question is
// formed in 16 bits and raises 6 past 32767 seconds; the total is 32-bit.
void armCountdown(SessionState& session, const UserOptions& options, Int16 questionCount);

// True when all three parts are 0: the tick that finds this ends the test.
bool timeIsUp(const SessionState& session);

// Takes one second off, borrowing from minutes and then hours; at 0:0:0 nothing changes.
void countDownOneSecond(SessionState& session);

// "H:M:S" in plain decimal without leading zeros, e.g. "1:5:9".
std::string timeCaption(const SessionState& session);

} // namespace kesta
