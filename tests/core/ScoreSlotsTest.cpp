#include "progress/core/ScoreSlots.h"

#include "support/DataTreeTest.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace kesta {
namespace {

class ScoreSlotsTest : public test::DataTreeTest {
protected:
    std::string slot(int k) const { return base + ".score" + std::to_string(k); }
    // Writes the given slots, takes the next one and tells which slots then hold which score.
    std::string next(std::initializer_list<int> existing)
    {
        for (const int k : existing)
            test::writeFile(slot(k), std::to_string(k));
        std::string result = NextScoreSlot(data, base).substr(base.size()) + ":";
        for (int k = 1; k <= 6; ++k)
            result += " " + (test::exists(slot(k)) ? test::readFile(slot(k)) : "-");
        return result;
    }

    std::string base = dir.path() + "/MORVO/KESTA/All/User/quiz.kqb.usr";
};

TEST_F(ScoreSlotsTest, TheNextSlotIsOneAboveTheHighest)
{
    test::writeFile(base, "progress"); // the progress file itself is no slot
    EXPECT_EQ(next({}), ".score1: - - - - - -");
    EXPECT_EQ(next({1, 3}), ".score4: 1 - 3 - - -");
    EXPECT_EQ(next({4}), ".score5: 1 - 3 4 - -");
    EXPECT_EQ(test::readFile(base), "progress");
}

TEST_F(ScoreSlotsTest, TheSixthScoreDropsTheOldestAndShiftsTheOthersDown)
{
    EXPECT_EQ(next({1, 2, 3, 4, 5}), ".score5: 2 3 4 5 - -");
    EXPECT_FALSE(test::exists(folders.errorLogPath()));
}

TEST_F(ScoreSlotsTest, AGapDuringTheRotationIsLoggedAndTheRotationGoesOn)
{
    EXPECT_EQ(next({2, 3, 5}), ".score5: 2 3 - 5 - -");
    // Deleting the missing slot 1 and moving the missing slot 4 are reported, not fatal.
    const std::string log = test::readFile(folders.errorLogPath());
    EXPECT_NE(log.find("DeleteFile"), std::string::npos);
    EXPECT_NE(log.find("Move_File"), std::string::npos);
    EXPECT_TRUE(host.messages.empty());
}

} // namespace
} // namespace kesta
