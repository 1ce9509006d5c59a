#include "progress/core/ProgressFile.h"

#include "common/core/RuntimeError.h"
#include "support/TempDir.h"

#include <array>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tuple>

namespace kesta {
namespace {

using test::writeFile;

// Matches a call that raises the run-time error `number`.
auto raises(int number)
{
    return ::testing::Throws<RuntimeError>(::testing::Property(&RuntimeError::number, number));
}

// A session of `count` questions in order count..1, answered "abcdabcd..."; time 1:30:05, at 3 of 4.
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

TEST(ProgressTextTest, WritesTheDocumentedExampleByteForByte)
{
    SessionState s = sessionOf(4);
    for (int p = 1; p <= 4; ++p)
        s.QuestionOrder[p] = std::array<Int16, 4>{2, 4, 1, 3}[static_cast<std::size_t>(p - 1)];
    s.UserAnswers[1] = "b";
    s.UserAnswers[2] = "a";
    s.UserAnswers[4] = "";
    EXPECT_EQ(progressText(s, 4), "013000300405\r\n002004001003\r\nbac");
    EXPECT_EQ(progressText(SessionState{}, 0), "000000000000\r\n\r\n");
    EXPECT_NO_THROW(progressText(SessionState{}, 1000));
    EXPECT_THAT([] { progressText(SessionState{}, 1001); }, raises(err::SubscriptOutOfRange));
}

TEST(ProgressTextTest, PadsWithSignedComparisonsAndNeverCuts)
{
    const std::tuple<Int16, const char*, const char*> cases[] = {
        {0, "00", "000"}, {9, "09", "009"}, {10, "10", "010"}, {99, "99", "099"}, {100, "100", "100"},
        {250, "250", "250"}, {1000, "1000", "1000"}, {-5, "0-5", "00-5"}, {-12, "0-12", "00-12"},
    };
    for (const auto& [value, two, three] : cases) {
        EXPECT_EQ(pad2(value), two);
        EXPECT_EQ(pad3(value), three);
    }
}

class RestoreTest : public ::testing::Test {
protected:
    // Writes `text` as the progress file, reads and decodes it for `count` positions.
    void restore(const std::string& text, int count)
    {
        writeFile(path, text);
        readSavedChars(path, saved);
        decodeSavedProgress(saved, static_cast<Int16>(count), session);
    }

    test::TempDir dir;
    std::string path = dir / "quiz.kqb.usr";
    SavedProgress saved;
    SessionState session;
};

TEST_F(RestoreTest, RoundTripsASavedSessionAndSkipsSpaces)
{
    const SessionState original = sessionOf(7);
    std::string text = progressText(original, 7);
    for (std::size_t i = 0; i < text.size(); i += 4)
        text.insert(i, " ");
    restore(text, 7);
    EXPECT_EQ(saved.SavedCharCount, 14 + 21 + 2 + 7);
    EXPECT_EQ(saved.SavedChars[12], "\r");
    EXPECT_EQ(saved.SavedChars[13], "\n");
    EXPECT_EQ(progressText(session, 7), progressText(original, 7));
}

TEST_F(RestoreTest, AnswersAfterAnUnansweredPositionMoveForward)
{
    SessionState original = sessionOf(4);
    original.UserAnswers[2] = "";
    session.UserAnswers[4] = "stale";
    restore(progressText(original, 4), 4);
    // Written "a", "", "c", "d": read back one slot earlier from position 2 on.
    EXPECT_EQ(session.UserAnswers[1] + session.UserAnswers[2] + session.UserAnswers[3], "acd");
    EXPECT_EQ(session.UserAnswers[4], "");
}

TEST_F(RestoreTest, FailuresCarryTheirRunTimeNumbers)
{
    const std::pair<std::string, int> cases[] = {
        {"01x000300405\r\n002\r\na", 1}, {"013000300405\r\n0a2\r\na", 1},
        {"0-5000300405\r\n\r\n", 0}, // a signed value with its zeros in front cannot be read back
        {"013000300405\r\n002", 2},  // positions past the file read empty slots
    };
    for (const auto& [text, count] : cases)
        EXPECT_THAT([&] { restore(text, count); }, raises(err::TypeMismatch)) << text;

    EXPECT_THAT([&] { readSavedChars(dir / "absent.usr", saved); }, raises(err::FileNotFound));
    writeFile(dir / "elsewhere", "013000300405\r\n\r\n");
    std::filesystem::create_symlink(dir / "elsewhere", dir / "link.usr");
    EXPECT_THAT([&] { readSavedChars(dir / "link.usr", saved); }, raises(err::PathFileAccess));
}

TEST_F(RestoreTest, AtMost1001CharactersAreStored)
{
    // 246 answered positions take 14 + 738 + 2 + 246 = 1000 characters.
    const std::string full = progressText(sessionOf(246), 246);
    EXPECT_NO_THROW(restore(full, 246));
    EXPECT_EQ(session.QuestionOrder[246], 1);
    EXPECT_EQ(session.UserAnswers[246], "b");
    EXPECT_NO_THROW(restore(full + "x" + std::string(50, ' '), 246)); // spaces do not count
    EXPECT_EQ(saved.SavedCharCount, 1001);
    EXPECT_THAT([&] { restore(progressText(sessionOf(247), 247), 247); }, raises(err::SubscriptOutOfRange));
}

} // namespace
} // namespace kesta
