#include "progress/core/ProgressFile.h"

#include "common/core/RuntimeError.h"
#include "common/core/SafeFile.h"

namespace kesta {

namespace {

constexpr const char* LineEnd = "\r\n";
constexpr std::int64_t FirstOrderIndex = 14; // 12 places of line 1, then its CR LF

// One stored character taken as a decimal digit.
int digitAt(const SavedProgress& saved, std::int64_t index)
{
    const std::string& c = saved.SavedChars[index];
    if (c.size() != 1 || c[0] < '0' || c[0] > '9')
        throw err::make(err::TypeMismatch);
    return c[0] - '0';
}

Int16 number2(const SavedProgress& saved, std::int64_t index)
{
    return toInt16(10 * digitAt(saved, index) + digitAt(saved, index + 1));
}

Int16 number3(const SavedProgress& saved, std::int64_t index)
{
    return toInt16(100 * digitAt(saved, index) + 10 * digitAt(saved, index + 1) + digitAt(saved, index + 2));
}

} // namespace

// The comparisons are signed on purpose: a negative value also counts as
// "below 10" and gets its zeros in front of the minus sign.
std::string pad2(Int16 value)
{
    const std::string digits = std::to_string(value);
    return value < 10 ? "0" + digits : digits;
}

std::string pad3(Int16 value)
{
    const std::string digits = std::to_string(value);
    if (value < 10)
        return "00" + digits;
    if (value < 100)
        return "0" + digits;
    return digits;
}

std::string progressText(const SessionState& session, Int16 questionCount)
{
    std::string text = pad2(session.TimeHours) + pad2(session.TimeMinutes) + pad3(session.CurrentQuestion)
        + pad3(session.HighestReached) + pad2(session.TimeSeconds) + LineEnd;
    for (std::int64_t position = 1; position <= questionCount; ++position)
        text += pad3(session.QuestionOrder[position]);
    text += LineEnd;
    for (std::int64_t position = 1; position <= questionCount; ++position)
        text += session.UserAnswers[position];
    return text;
}

void readSavedChars(const std::string& path, SavedProgress& saved)
{
    const std::string content = safefile::read(path, safefile::SmallFileLimit);
    saved.SavedChars.erase();
    saved.SavedCharCount = 0;
    for (const char c : content) {
        if (c == ' ')
            continue;
        saved.SavedChars[saved.SavedCharCount] = std::string(1, c);
        saved.SavedCharCount = add16(saved.SavedCharCount, 1);
    }
}

void decodeSavedProgress(const SavedProgress& saved, Int16 questionCount, SessionState& session)
{
    session.TimeHours = number2(saved, 0);
    session.TimeMinutes = number2(saved, 2);
    session.CurrentQuestion = number3(saved, 4);
    session.HighestReached = number3(saved, 7);
    session.TimeSeconds = number2(saved, 10);

    session.UserAnswers.erase();
    std::int64_t index = FirstOrderIndex;
    for (std::int64_t position = 1; position <= questionCount; ++position, index += 3)
        session.QuestionOrder[position] = number3(saved, index);

    index += 2; // line 2's CR LF
    for (std::int64_t position = 1; position <= questionCount; ++position, ++index)
        session.UserAnswers[position] = saved.SavedChars[index];
}

} // namespace kesta
