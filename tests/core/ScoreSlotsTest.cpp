#include "progress/core/ScoreSlots.h"

#include "support/DataTreeTest.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kesta {
namespace {

namespace fs = std::filesystem;

class ScoreSlotsTest : public test::DataTreeTest {
protected:
    std::string slot(int k) const { return base + ".score" + std::to_string(k); }

    // Writes the given slots, each saved k hours after a fixed time, takes the
    // next slot and tells which score and which saving time each slot then holds.
    std::string next(std::initializer_list<int> existing)
    {
        for (const int k : existing) {
            test::writeFile(slot(k), std::to_string(k));
            fs::last_write_time(slot(k), saved(k));
        }
        std::string result = NextScoreSlot(data, base).substr(base.size()) + ":";
        for (int k = 1; k <= 5; ++k) {
            if (!test::exists(slot(k))) {
                result += " -";
                continue;
            }
            const std::string score = test::readFile(slot(k));
            result += " " + score + (fs::last_write_time(slot(k)) == saved(std::stoi(score)) ? "" : "?");
        }
        return result;
    }
    static fs::file_time_type saved(int k) { return fs::file_time_type(std::chrono::hours(400000 + k)); }

    std::string base = user("quiz.kqb.usr");
};

// A gap met during the rotation is logged and the rotation goes on.
TEST_F(ScoreSlotsTest, TheNextSlotIsOneAboveTheHighestAndTheSixthDropsTheOldestKeepingEachScoresTime)
{
    test::writeFile(base, "progress"); // the progress file itself is no slot
    const std::string steps[] = {next({}), next({1}), next({1, 3}), next({4}), next({2}), next({5})};
    EXPECT_EQ(std::vector<std::string>(std::begin(steps), std::end(steps)),
              std::vector<std::string>({".score1: - - - - -", ".score2: 1 - - - -", ".score4: 1 - 3 - -",
                                        ".score5: 1 - 3 4 -", ".score5: 1 2 3 4 -", ".score5: 2 3 4 5 -"}));
    EXPECT_EQ(test::readFile(base) + "|" + log(), "progress|");
    fs::remove(slot(1)), fs::remove(slot(4));
    EXPECT_EQ(next({5}), ".score5: 3 4 - 5 -");
    const std::string entries = log();
    EXPECT_TRUE(entries.find("Program_Data.DeleteFile\r\n") != std::string::npos &&
                entries.find("Program_Data.Move_File\r\n") != std::string::npos && host.messages.empty());
}

} // namespace
} // namespace kesta
