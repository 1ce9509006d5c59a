#include "progress/core/ScoreSlots.h"

#include "common/core/ProgramData.h"
#include "support/RecordingHost.h"
#include "support/TempDir.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace kesta {
namespace {

using test::exists;
using test::readFile;
using test::writeFile;

class ScoreSlotsTest : public ::testing::Test {
protected:
    ScoreSlotsTest()
    {
        folders.derive(dir.path() + "/");
        std::filesystem::create_directories(folders.LogDir);
        std::filesystem::create_directories(folders.UserDir);
    }

    std::string slot(int k) const { return base + ".score" + std::to_string(k); }

    test::TempDir dir;
    test::RecordingHost host;
    DataFolders folders;
    UserOptions options;
    ErrorReporter reporter { host, folders };
    ProgramData data { reporter, folders, options };
    std::string base = dir.path() + "/MORVO/KESTA/All/User/quiz.kqb.usr";
};

TEST_F(ScoreSlotsTest, FirstScoreGoesToSlotOneAndEachNextAboveTheHighest)
{
    EXPECT_EQ(NextScoreSlot(data, base), slot(1));
    for (int k = 1; k <= 4; ++k) {
        writeFile(slot(k), "score " + std::to_string(k));
        EXPECT_EQ(NextScoreSlot(data, base), slot(k + 1));
    }
    // The progress file itself is no slot.
    writeFile(base, "progress");
    EXPECT_EQ(NextScoreSlot(data, base), slot(5));
    EXPECT_EQ(readFile(base), "progress");
}

TEST_F(ScoreSlotsTest, OnlyTheHighestExistingSlotDecides)
{
    writeFile(slot(1), "one");
    writeFile(slot(3), "three");
    EXPECT_EQ(NextScoreSlot(data, base), slot(4));
    EXPECT_FALSE(exists(slot(2)));

    std::filesystem::remove(slot(1));
    std::filesystem::remove(slot(3));
    writeFile(slot(4), "four");
    EXPECT_EQ(NextScoreSlot(data, base), slot(5));
}

TEST_F(ScoreSlotsTest, SixthScoreDropsTheOldestAndShiftsTheOthersDown)
{
    for (int k = 1; k <= 5; ++k)
        writeFile(slot(k), "score " + std::to_string(k));

    EXPECT_EQ(NextScoreSlot(data, base), slot(5));

    for (int k = 1; k <= 4; ++k)
        EXPECT_EQ(readFile(slot(k)), "score " + std::to_string(k + 1)) << k;
    EXPECT_FALSE(exists(slot(5)));
    EXPECT_FALSE(exists(folders.errorLogPath()));
}

TEST_F(ScoreSlotsTest, AGapDuringTheRotationIsLoggedAndTheRotationGoesOn)
{
    for (int k : { 2, 3, 5 })
        writeFile(slot(k), "score " + std::to_string(k));

    EXPECT_EQ(NextScoreSlot(data, base), slot(5));

    EXPECT_EQ(readFile(slot(1)), "score 2");
    EXPECT_EQ(readFile(slot(2)), "score 3");
    EXPECT_FALSE(exists(slot(3)));
    EXPECT_EQ(readFile(slot(4)), "score 5");
    // Deleting the missing slot 1 and moving the missing slot 4 are reported, not fatal.
    const std::string log = readFile(folders.errorLogPath());
    EXPECT_NE(log.find("DeleteFile"), std::string::npos);
    EXPECT_NE(log.find("Move_File"), std::string::npos);
    EXPECT_TRUE(host.messages.empty());
}

} // namespace
} // namespace kesta
