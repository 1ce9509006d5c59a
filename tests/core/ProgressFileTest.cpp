#include "progress/core/ProgressFile.h"

#include "common/core/RuntimeError.h"
#include "support/TempDir.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>

namespace kesta {
namespace {

using test::writeFile;

// Runs `body` and returns the number of the run-time error it raised, 0 for none.
int errorOf(const std::function<void()>& body)
{
    try {
        body();
    } catch (const RuntimeError& error) {
        return error.number();
    }
    return 0;
}

// A session of `count` questions in order count..1 (reversed), all answered from `letters`.
SessionState sessionOf(int count, const std::string& letters = "abcd")
{
    SessionState s;
    for (int p = 1; p <= count; ++p) {
        s.QuestionOrder[p] = static_cast<Int16>(count + 1 - p);
        s.UserAnswers[p] = std::string(1, letters[static_cast<std::size_t>(p - 1) % letters.size()]);
    }
    return s;
}

TEST(ProgressTextTest, WritesTheDocumentedExampleByteForByte)
{
    SessionState s;
    s.TimeHours = 1;
    s.TimeMinutes = 30;
    s.TimeSeconds = 5;
    s.CurrentQuestion = 3;
    s.HighestReached = 4;
    const Int16 order[] = { 2, 4, 1, 3 };
    for (int p = 1; p <= 4; ++p)
        s.QuestionOrder[p] = order[p - 1];
    s.UserAnswers[1] = "b";
    s.UserAnswers[2] = "a";
    s.UserAnswers[3] = "c";

    EXPECT_EQ(progressText(s, 4), "013000300405\r\n002004001003\r\nbac");
}

TEST(ProgressTextTest, PadsWithSignedComparisonsAndNeverCuts)
{
    EXPECT_EQ(pad2(0), "00");
    EXPECT_EQ(pad2(9), "09");
    EXPECT_EQ(pad2(10), "10");
    EXPECT_EQ(pad2(100), "100");
    EXPECT_EQ(pad2(-5), "0-5");
    EXPECT_EQ(pad2(-12), "0-12");

    EXPECT_EQ(pad3(0), "000");
    EXPECT_EQ(pad3(9), "009");
    EXPECT_EQ(pad3(10), "010");
    EXPECT_EQ(pad3(99), "099");
    EXPECT_EQ(pad3(100), "100");
    EXPECT_EQ(pad3(250), "250");
    EXPECT_EQ(pad3(1000), "1000");
    EXPECT_EQ(pad3(-5), "00-5");
    EXPECT_EQ(pad3(-50), "00-50");
}

TEST(ProgressTextTest, TenQuestionsAtTheLastPositionWriteTenTwice)
{
    SessionState s = sessionOf(10);
    s.CurrentQuestion = 10;
    s.HighestReached = 10;
    const std::string text = progressText(s, 10);
    EXPECT_EQ(text.substr(0, 14), "000001001000\r\n");
    EXPECT_EQ(text.substr(14, 32), "010009008007006005004003002001\r\n");
    EXPECT_EQ(text.substr(46), "abcdabcdab");
}

TEST(ProgressTextTest, UnansweredPositionsLeaveNoMarkAndNoLineEndFollows)
{
    SessionState s = sessionOf(4);
    s.UserAnswers[2] = "";
    s.UserAnswers[4] = "";
    const std::string text = progressText(s, 4);
    EXPECT_EQ(text.substr(text.rfind('\n') + 1), "ac");

    EXPECT_EQ(progressText(SessionState {}, 0), "000000000000\r\n\r\n");
}

TEST(ProgressTextTest, APositionBeyondTheArraysIsABoundsFailure)
{
    EXPECT_EQ(errorOf([] { progressText(SessionState {}, 1000); }), 0);
    EXPECT_EQ(errorOf([] { progressText(SessionState {}, 1001); }), err::SubscriptOutOfRange);
}

class RestoreTest : public ::testing::Test {
protected:
    // Writes `text` as the progress file, reads and decodes it for `count` positions.
    void restore(const std::string& text, Int16 count)
    {
        writeFile(path, text);
        readSavedChars(path, saved);
        decodeSavedProgress(saved, count, session);
    }

    test::TempDir dir;
    std::string path = dir / "quiz.kqb.usr";
    SavedProgress saved;
    SessionState session;
};

TEST_F(RestoreTest, RoundTripsASavedSession)
{
    SessionState original = sessionOf(7);
    original.TimeHours = 2;
    original.TimeMinutes = 59;
    original.TimeSeconds = 7;
    original.CurrentQuestion = 6;
    original.HighestReached = 7;

    restore(progressText(original, 7), 7);

    EXPECT_EQ(session.TimeHours, 2);
    EXPECT_EQ(session.TimeMinutes, 59);
    EXPECT_EQ(session.TimeSeconds, 7);
    EXPECT_EQ(session.CurrentQuestion, 6);
    EXPECT_EQ(session.HighestReached, 7);
    for (int p = 1; p <= 7; ++p) {
        EXPECT_EQ(session.QuestionOrder[p], original.QuestionOrder[p]) << p;
        EXPECT_EQ(session.UserAnswers[p], original.UserAnswers[p]) << p;
    }
    EXPECT_EQ(saved.SavedCharCount, 14 + 21 + 2 + 7);
}

TEST_F(RestoreTest, SkipsSpacesWhereverTheyStandAndStoresLineEnds)
{
    restore(" 01 3000300405\r\n 002 004001003 \r\nb a c ", 4);

    EXPECT_EQ(saved.SavedCharCount, 31);
    EXPECT_EQ(saved.SavedChars[12], "\r");
    EXPECT_EQ(saved.SavedChars[13], "\n");
    EXPECT_EQ(session.TimeHours, 1);
    EXPECT_EQ(session.TimeMinutes, 30);
    EXPECT_EQ(session.CurrentQuestion, 3);
    EXPECT_EQ(session.HighestReached, 4);
    EXPECT_EQ(session.TimeSeconds, 5);
    EXPECT_EQ(session.QuestionOrder[2], 4);
    EXPECT_EQ(session.UserAnswers[1], "b");
    EXPECT_EQ(session.UserAnswers[3], "c");
    EXPECT_EQ(session.UserAnswers[4], "");
}

TEST_F(RestoreTest, AnswersAfterAnUnansweredPositionMoveForward)
{
    SessionState original = sessionOf(4);
    original.UserAnswers[2] = "";
    session.UserAnswers[4] = "stale";

    restore(progressText(original, 4), 4);

    // Written "a", "", "c", "d": read back one slot earlier from position 2 on.
    EXPECT_EQ(session.UserAnswers[1], "a");
    EXPECT_EQ(session.UserAnswers[2], "c");
    EXPECT_EQ(session.UserAnswers[3], "d");
    EXPECT_EQ(session.UserAnswers[4], "");
}

TEST_F(RestoreTest, ANonDigitInAFixedPlaceIsATypeMismatch)
{
    EXPECT_EQ(errorOf([&] { restore("01x000300405\r\n002\r\na", 1); }), err::TypeMismatch);
    EXPECT_EQ(errorOf([&] { restore("013000300405\r\n0a2\r\na", 1); }), err::TypeMismatch);
    // A signed value written with its zeros in front cannot be read back.
    EXPECT_EQ(errorOf([&] { restore("0-5000300405\r\n\r\n", 0); }), err::TypeMismatch);
    // Positions past the file read empty slots.
    EXPECT_EQ(errorOf([&] { restore("013000300405\r\n002", 2); }), err::TypeMismatch);
}

TEST_F(RestoreTest, AMissingFileIsFileNotFoundAndALinkIsRefused)
{
    EXPECT_EQ(errorOf([&] { readSavedChars(dir / "absent.usr", saved); }), err::FileNotFound);

    writeFile(dir / "elsewhere", "013000300405\r\n\r\n");
    std::filesystem::create_symlink(dir / "elsewhere", path);
    EXPECT_EQ(errorOf([&] { readSavedChars(path, saved); }), err::PathFileAccess);
}

TEST_F(RestoreTest, AtMost1001CharactersAreStored)
{
    // 246 answered positions take 14 + 738 + 2 + 246 = 1000 characters.
    SessionState full = sessionOf(246);
    full.CurrentQuestion = 246;
    EXPECT_EQ(errorOf([&] { restore(progressText(full, 246), 246); }), 0);
    EXPECT_EQ(session.QuestionOrder[246], 1);
    EXPECT_EQ(session.UserAnswers[246], "b");

    // Spaces do not count towards the limit.
    EXPECT_EQ(errorOf([&] { restore(progressText(full, 246) + "x" + std::string(50, ' '), 246); }), 0);
    EXPECT_EQ(saved.SavedCharCount, 1001);

    SessionState over = sessionOf(247);
    EXPECT_EQ(errorOf([&] { restore(progressText(over, 247), 247); }), err::SubscriptOutOfRange);
}

} // namespace
} // namespace kesta
