#include "progress/core/ProgressFile.h"

#include "common/core/RuntimeError.h"
#include "common/core/SafeFile.h"

#include <limits>
#include <string_view>

namespace kesta {

namespace {

constexpr const char* LineEnd = "\r\n";
constexpr std::int64_t FirstOrderIndex = 14; // 12 places of line 1, then its CR LF
// Spaces are skipped wherever they stand, but a file may hold gigabytes of
// them. The program writes at most about 4000 characters; a file that runs on
// past this many bytes is treated as too long, as one with a 1002nd character
// is, and reading stops there: scanning this much takes milliseconds.
constexpr std::size_t ScanLimit = std::size_t{16} << 20;

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
    safefile::Reader file(path, std::numeric_limits<std::size_t>::max());
    saved.SavedChars.erase();
    saved.SavedCharCount = 0;
    char block[16 * 1024];
    for (std::size_t scanned = 0; const std::size_t n = file.read(block, sizeof block);) {
        scanned += n;
        if (scanned > ScanLimit)
            throw err::make(err::SubscriptOutOfRange);
        for (const char c : std::string_view(block, n)) {
            if (c == ' ')
                continue;
            // A 1002nd character fails here, before anything past it is read.
            saved.SavedChars[saved.SavedCharCount] = std::string(1, c);
            saved.SavedCharCount = add16(saved.SavedCharCount, 1);
        }
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
