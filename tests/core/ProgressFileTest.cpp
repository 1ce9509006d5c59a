#include "progress/core/ProgressFile.h"

#include "support/Checks.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kesta {
namespace {

using test::writeFile;

// A session of `count` questions in order count..1, answered "abcdabcd..."; time 1:30:05, at 3, furthest 4.
SessionState sessionOf(int count)
{
    SessionState s;
    s.TimeHours = 1;
    s.TimeMinutes = 30;
    s.TimeSeconds = 5;
    s.CurrentQuestion = 3;
    s.HighestReached = 4;
    for (int p = 1; p <= count; ++p) {
        s.QuestionOrder[p] = static_cast<Int16>(count + 1 - p);
        s.UserAnswers[p] = std::string(1, "abcd"[(p - 1) % 4]);
    }
    return s;
}

TEST(ProgressFileTest, FieldsArePaddedWithSignedComparisonsAndNeverCut)
{
    SessionState s = sessionOf(4);
    s.UserAnswers[3] = "";
    EXPECT_EQ(progressText(s, 4), "013000300405\r\n004003002001\r\nabd");
    s.TimeHours = 100;
    s.CurrentQuestion = -5;
    s.HighestReached = 250;
    s.TimeSeconds = -12;
    EXPECT_EQ(progressText(s, 0), "1003000-52500-12\r\n\r\n");
    for (const auto& [value, two, three] : {std::tuple<Int16, const char*, const char*>{0, "00", "000"},
                                           {9, "09", "009"}, {10, "10", "010"}, {99, "99", "099"}, {100, "100", "100"},
                                           {1000, "1000", "1000"}, {-12, "0-12", "00-12"}})
        EXPECT_EQ(pad2(value) + "|" + pad3(value), std::string(two) + "|" + three);
    EXPECT_EQ(test::errorOf([] { progressText(SessionState{}, 1001); }), err::SubscriptOutOfRange);
}

class RestoreTest : public ::testing::Test {
protected:
    // Writes `text` as the progress file, reads and decodes it for `count`
    // positions over a session that holds stale answers, and describes it.
    std::string restore(const std::string& text, int count)
    {
        writeFile(path, text);
        session.UserAnswers[count] = "stale";
        return test::outcome([&] {
            readSavedChars(path, saved);
            decodeSavedProgress(saved, static_cast<Int16>(count), session);
            return std::to_string(saved.SavedCharCount) + " " + progressText(session, static_cast<Int16>(count));
        });
    }

    test::TempDir dir;
    std::string path = dir / "quiz.kqb.usr";
    SavedProgress saved;
    SessionState session;
};

TEST_F(RestoreTest, ASavedSessionComesBackWithSpacesSkippedAndAnswersShiftedPastUnansweredPositions)
{
    const std::string text = progressText(sessionOf(7), 7);
    std::string spaced = " ";
    for (const char c : text)
        spaced += std::string(1, c) + (c == '\r' ? "" : " ");
    SessionState unanswered = sessionOf(4);
    unanswered.UserAnswers[2] = "";
    const std::tuple<std::string, int, std::string> cases[] = {
        {spaced + std::string(70000, ' '), 7, "44 " + text},
        // Written "a", "", "c", "d": read back one slot earlier from position 2 on.
        {progressText(unanswered, 4), 4, "31 013000300405\r\n004003002001\r\nacd"},
        {"01x000300405\r\n002\r\na", 1, "error 13"}, {"013000300405\r\n0a2\r\na", 1, "error 13"},
        {"0-5000300405\r\n\r\n", 0, "error 13"}, // a negative value with its zeros in front does not read back
        {"013000300405\r\n002", 2, "error 13"},  // positions past the file read empty slots
    };
    for (const auto& [file, count, expected] : cases)
        EXPECT_EQ(restore(file, count), expected) << file;
}

TEST_F(RestoreTest, AtMost1001CharactersAreStored)
{
    // 246 answered positions take 14 + 738 + 2 + 246 = 1000 characters.
    const std::string full = progressText(sessionOf(246), 246), one = progressText(sessionOf(1), 1);
    EXPECT_EQ(restore(full + "x" + std::string(50, ' '), 246), "1001 " + full);
    EXPECT_EQ(restore(progressText(sessionOf(247), 247), 247), "error 9");
    // Reading stops 16 MiB into a file, blanks or not.
    EXPECT_EQ(restore(one + std::string((16 << 20) - one.size(), ' '), 1), "20 " + one);
    EXPECT_EQ(restore(one + std::string((16 << 20) - one.size() + 1, ' '), 1), "error 9");
    EXPECT_EQ(test::errorOf([&] { readSavedChars(dir / "absent.usr", saved); }), err::FileNotFound);
}

} // namespace
} // namespace kesta
