#include "progress/core/ScoreSlots.h"

#include "common/core/SafeFile.h"
#include "support/DataTreeTest.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

namespace kesta {
namespace {

namespace fs = std::filesystem;

class ScoreSlotsTest : public test::DataTreeTest {
protected:
    std::string slot(int k) const { return base + ".score" + std::to_string(k); }

    // Puts `scores` into the slots of an empty User folder (see take), saves
    // the score "n", and tells which slot it went to and what the slots hold.
    std::string next(const std::string& scores)
    {
        take(scores);
        const std::string written = saveScore(data, base, "n").substr(base.size()) + ":";
        return written + slots();
    }
    // Each slot's score or "-", with "?" after an old score that lost its saving
    // time; then whatever else lies in the User folder but the lock and the progress file.
    std::string slots() const
    {
        std::string result;
        for (int k = 1; k <= 5; ++k) {
            const std::string score = test::exists(slot(k)) ? test::readFile(slot(k)) : "-";
            const bool old = score.size() == 1 && score[0] >= '1' && score[0] <= '5';
            result += " " + score + (old && fs::last_write_time(slot(k)) != saved(score[0] - '0') ? "?" : "");
        }
        for (const auto& entry : std::set<fs::directory_entry>(fs::directory_iterator(folders.UserDir), {})) {
            const std::string name = entry.path().filename().string();
            if (name != ".lock" && name.rfind(fs::path(base).filename().string(), 0) != 0)
                result += " +" + name;
        }
        return result;
    }
    static fs::file_time_type saved(int k) { return fs::file_time_type(std::chrono::hours(400000 + k)); }
    // Empties the User folder, then puts `scores` (from slot 1 on, "-" for none)
    // in the slots, each score k saved k hours after a fixed time.
    void take(const std::string& scores)
    {
        for (const auto& entry : fs::directory_iterator(folders.UserDir))
            if (entry.path() != fs::path(base))
                fs::remove(entry.path());
        for (int k = 1; k <= static_cast<int>(scores.size()); ++k)
            if (scores[k - 1] != '-')
                test::writeFile(slot(k), scores.substr(k - 1, 1)),
                    fs::last_write_time(slot(k), saved(scores[k - 1] - '0'));
    }
    // Runs `body` in a process of its own, which ends with it.
    template <typename Body> pid_t copy(Body body)
    {
        const pid_t pid = ::fork();
        return pid != 0 ? pid : ([&]() noexcept { body(), ::_exit(0); }(), pid); // an exception ends it too
    }

    std::string base = user("quiz.kqb.usr");
};

// A gap met during the rotation is logged and the rotation goes on. Tests
// with long names (a bank of 236 characters; as long as a slot's name allows)
// rotate the same way.
TEST_F(ScoreSlotsTest, TheNextSlotIsOneAboveTheHighestAndTheSixthDropsTheOldestKeepingEachScoresTime)
{
    for (const std::string& name :
        { std::string("quiz.kqb.usr"), std::string(232, 'q') + ".kqb.usr", std::string(244, 'q') + ".usr" }) {
        base = user(name);
        test::writeFile(base, "progress"); // the progress file itself is no slot
        EXPECT_EQ(next("") + next("1") + next("1-3") + next("1-34") + next("1234") + next("12345"),
            ".score1: n - - - -.score2: 1 n - - -.score4: 1 - 3 n -.score5: 1 - 3 4 n.score5: 1 2 3 4 n"
            ".score5: 2 3 4 5 n")
            << name.size();
        EXPECT_EQ(test::readFile(base) + "|" + log(), "progress|");
        fs::remove(base);
    }
    EXPECT_EQ(next("-23-5"), ".score5: 2 3 - 5 n");
    const std::string entries = log();
    EXPECT_TRUE(entries.find("Program_Data.DeleteFile\r\n") != std::string::npos
        && entries.find("Program_Data.Move_File\r\n") != std::string::npos && host.messages.empty());
}

// What a copy killed halfway through leaves (slots 1 to 5 held 1 to 5; the
// new score "w" waits under a name telling the last step done; the temporary
// files of what is written only under the lock) is finished and cleared by the
// next start, or by the next rotation before its own ("n"). Anything else stays.
TEST_F(ScoreSlotsTest, WhatAKilledCopyLeftIsFinishedByTheNextStartOrRotation)
{
    const std::string waiting = safefile::temporaryPrefix("quiz.kqb.usr.score5") + "step";
    const std::tuple<std::string, int, std::string> rows[] = { { "12345", 0, " 2 3 4 5 w" },
        { "-2345", 1, " 2 3 4 5 w" }, { "23-45", 2, " 2 3 4 5 w" }, // step 3 done, not recorded
        { "2345-", 5, " 2 3 4 5 w" }, { "23-45", 2, " 3 4 5 w n" }, { "1", -1, " 1 - - - -" } };
    for (const auto& [scores, done, expected] : rows) {
        take(scores);
        for (const std::string& stray : std::initializer_list<std::string> { ".quiz.kqb.usr.score1.Ab12Cd",
                 ".quiz.kqb.usr.score5.Ab12Cd", ".usrdata.usr.x1y2z3", ".quiz.kqb.usr.Ab12Cd",
                 "." + waiting + "0.Ab12Cd", ".quiz.kqb.usr.score1.Ab12C", ".other.usr.score1.Ab12Cd" })
            test::writeFile(user(stray), "");
        if (done >= 0)
            test::writeFile(user(waiting + std::to_string(done)), "w");
        expected.back() == 'n' ? (void)saveScore(data, base, "n")
                               : settleScores(folders.UserDir + "/", { "quiz.kqb.usr", "quiz.kqb.usr" });
        EXPECT_EQ(slots(), expected + " +.other.usr.score1.Ab12Cd +.quiz.kqb.usr.score1.Ab12C") << scores << done;
    }
}

// Real processes: two copies finishing at once each keep their score, and a
// copy killed at any moment of its rotations (it saves 6, 7 ... until it is
// killed) leaves, once the next start has settled it, the five scores up to
// the last one it finished or the one it was saving, and no temporary file. A
// lock held by a dead copy blocks no one.
TEST_F(ScoreSlotsTest, TwoCopiesAtOnceEachKeepTheirScoreAndAKilledCopyLeavesTheOldSetOrTheNew)
{
    ::alarm(60);
    const std::pair<std::string, std::string> races[]
        = { { "", " a b - - -" }, { "12", " 1 2 a b -" }, { "1234", " 2 3 4 a b" }, { "12345", " 3 4 5 a b" } };
    for (const auto& [scores, expected] : races) {
        take(scores);
        int go[2];
        ASSERT_EQ(::pipe(go), 0);
        char start; // both wait for the same moment
        const auto finish = [&](const char* score) {
            return copy([&, score] { return ::read(go[0], &start, 1) == 1 && !saveScore(data, base, score).empty(); });
        };
        const pid_t copies[] = { finish("a"), finish("b") };
        ::close(go[0]);
        ASSERT_EQ(::write(go[1], "go", 2), 2);
        ::close(go[1]);
        for (const pid_t copy : copies)
            ::waitpid(copy, nullptr, 0);
        std::string got = slots();
        if (got.find('b') < got.find('a'))
            std::swap(got[got.find('a')], got[got.find('b')]);
        EXPECT_EQ(got, expected);
    }
    int newest = 5;
    take("12345");
    for (int kill = 0; kill < 25; ++kill) {
        int finished[2];
        ASSERT_EQ(::pipe(finished), 0);
        const pid_t saving = copy([&] {
            for (int n = newest + 1;; ++n)
                if (saveScore(data, base, std::to_string(n)), ::write(finished[1], &n, sizeof n) < 0)
                    break;
        });
        ::close(finished[1]);
        ::usleep(static_cast<useconds_t>(200 + kill * 997 % 6000));
        ::kill(saving, SIGKILL), ::waitpid(saving, nullptr, 0);
        int last = newest; // the last score it finished
        while (::read(finished[0], &last, sizeof last) == sizeof last) { }
        ::close(finished[0]);
        settleScores(folders.UserDir + "/", { "quiz.kqb.usr" });
        newest = std::atoi(test::readFile(slot(5)).c_str());
        std::string expected;
        for (int k = 4; k >= 0; --k)
            expected += " " + std::to_string(newest - k);
        EXPECT_TRUE(newest == last || newest == last + 1) << newest << " " << last;
        ASSERT_EQ(slots(), expected);
    }
    ::alarm(0);
}

} // namespace
} // namespace kesta
