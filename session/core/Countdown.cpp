#include "session/core/Countdown.h"

#include <cstdint>

namespace kesta {

namespace {
// The integer part of a quotient by a positive divisor, rounded down as the
// time split has always done, so a negative total from a hand-edited options
// file splits the same way.
std::int64_t floorDiv(std::int64_t a, std::int64_t b)
{
    return a / b - (a % b < 0 ? 1 : 0);
}
} // namespace

void armCountdown(SessionState& session, const UserOptions& options, Int16 questionCount)
{
    const Int16 hours = mul16(options.values[3], 3600);
    const Int16 minutes = mul16(options.values[4], 60);
    const Int16 perQuestion = add16(add16(hours, minutes), options.values[5]);
    const std::int32_t total = std::int32_t { perQuestion } * questionCount;

    session.TimeHours = toInt16(floorDiv(total, 3600));
    session.TimeMinutes = toInt16(floorDiv(total, 60) % 60);
    session.TimeSeconds = toInt16(total % 60);
}

bool timeIsUp(const SessionState& session)
{
    return session.TimeSeconds == 0 && session.TimeMinutes == 0 && session.TimeHours == 0;
}

void countDownOneSecond(SessionState& session)
{
    if (session.TimeSeconds >= 1) {
        session.TimeSeconds = sub16(session.TimeSeconds, 1);
    } else if (session.TimeMinutes >= 1) {
        session.TimeMinutes = sub16(session.TimeMinutes, 1);
        session.TimeSeconds = 59;
    } else if (session.TimeHours >= 1) {
        session.TimeHours = sub16(session.TimeHours, 1);
        session.TimeMinutes = 59;
        session.TimeSeconds = 59;
    }
}

std::string timeCaption(const SessionState& session)
{
    return std::to_string(session.TimeHours) + ":" + std::to_string(session.TimeMinutes) + ":"
        + std::to_string(session.TimeSeconds);
}

} // namespace kesta
