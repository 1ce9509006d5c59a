#include "progress/core/ProgressFile.h"

#include "common/core/SafeFile.h"
#include "progress/core/ScoreSlots.h"
#include "progress/core/Scoring.h"
#include "support/Checks.h"
#include "support/DataTreeTest.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using test::writeFile;

// A session of `count` questions in order count..1, answered "abcdabcd..."; time 1:30:05, at 3, furthest 4.
SessionState sessionOf(int count)
{
    SessionState s;
    std::tie(s.TimeHours, s.TimeMinutes, s.TimeSeconds, s.CurrentQuestion, s.HighestReached)
        = std::tuple(1, 30, 5, 3, 4);
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
    std::tie(s.TimeHours, s.CurrentQuestion, s.HighestReached, s.TimeSeconds) = std::tuple(100, -5, 250, -12);
    EXPECT_EQ(progressText(s, 0), "1003000-52500-12\r\n\r\n");
    for (const auto& [value, two, three] : {std::tuple<Int16, const char*, const char*>{0, "00", "000"},
                                           {9, "09", "009"}, {10, "10", "010"}, {99, "99", "099"}, {100, "100", "100"},
                                           {1000, "1000", "1000"}, {-12, "0-12", "00-12"}})
        EXPECT_EQ(pad2(value) + "|" + pad3(value), std::string(two) + "|" + three);
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

TEST_F(RestoreTest, ASavedSessionComesBackWithSpacesSkippedAndAnswersShiftedPastUnansweredPositionsUpTo1001Characters)
{
    const std::string text = progressText(sessionOf(7), 7);
    std::string spaced = " ";
    for (const char c : text)
        spaced += std::string(1, c) + (c == '\r' ? "" : " ");
    SessionState unanswered = sessionOf(4);
    unanswered.UserAnswers[2] = "";
    const std::string full = progressText(sessionOf(246), 246), one = progressText(sessionOf(1), 1);
    const std::tuple<std::string, int, std::string> cases[] = {
        { spaced + std::string(70000, ' '), 7, "44 " + text },
        // Written "a", "", "c", "d": read back one slot earlier from position 2 on.
        { progressText(unanswered, 4), 4, "31 013000300405\r\n004003002001\r\nacd" },
        { "01x000300405\r\n002\r\na", 1, "error 13" },
        { "013000300405\r\n0a2\r\na", 1, "error 13" },
        { "0-5000300405\r\n\r\n", 0, "error 13" }, // a negative value with its zeros in front does not read back
        { "013000300405\r\n002", 2, "error 13" }, // positions past the file read empty slots
        // At most 1001 characters are stored: 246 answered positions take 14 + 738 + 2 + 246 = 1000.
        { full + "x" + std::string(50, ' '), 246, "1001 " + full },
        { progressText(sessionOf(247), 247), 247, "error 9" },
        // Reading stops 16 MiB into a file, blanks or not.
        { one + std::string((16 << 20) - one.size(), ' '), 1, "20 " + one },
        { one + std::string((16 << 20) - one.size() + 1, ' '), 1, "error 9" },
    };
    for (const auto& [file, count, expected] : cases)
        EXPECT_EQ(restore(file, count), expected) << file.substr(0, 40);
    EXPECT_EQ(test::errorOf([&] { readSavedChars(dir / "absent.usr", saved); }), err::FileNotFound);
}

// A test of `count` questions in natural order; record k's answer is "B",
// its question "Q k"; the first `correct` positions are answered "b", the rest "a".
struct Scenario {
    Scenario(int count, int correct)
    {
        questions.QuestionCount = static_cast<Int16>(count);
        session.TestName = "KESTA Quiz Demo";
        for (int k = 1; k <= count; ++k) {
            questions.Questions[k] = {"", "Q " + std::to_string(k), "", "E", "B"};
            session.QuestionOrder[k] = static_cast<Int16>(k);
            session.UserAnswers[k] = k <= correct ? "b" : "a";
        }
    }
    // The first wrong position, the percentage, the counts and the wrong positions, or the error.
    std::string score()
    {
        review.ScorePercent = 77;
        review.WrongPositions[1000] = 5;
        return test::outcome([&] {
            const Int16 first = scoreSession(session, questions, review);
            std::string out = std::to_string(first) + " " +
                              std::to_string(review.ScorePercent) + "% " + std::to_string(review.CorrectCount) + "/" +
                              std::to_string(review.WrongCount) + " next rank " + std::to_string(review.ReviewIndex) + ":";
            for (int i = 1; i <= std::min(review.WrongCount + 1, 6); ++i)
                out += " " + std::to_string(review.WrongPositions[i]);
            return out + " " + std::to_string(review.WrongPositions[1000]);
        });
    }

    SessionState session;
    QuestionList questions;
    ReviewState review;
};

TEST(ScoringTest, ThePercentRoundsHalfToEvenAndEveryWrongPositionIsListed)
{
    const std::tuple<int, int, std::string> cases[] = {
        {8, 1, "2 12% 1/7 next rank 8: 2 3 4 5 6 7 0"},     {8, 3, "4 38% 3/5 next rank 6: 4 5 6 7 8 0 0"},
        {200, 199, "200 100% 199/1 next rank 2: 200 0 0"}, {3, 2, "3 67% 2/1 next rank 2: 3 0 0"},
        {4, 4, "0 100% 4/0 next rank 1: 0 0"},             {300, 1, "2 0% 1/299 next rank 300: 2 3 4 5 6 7 0"},
        {5, 0, "1 0% 0/5 next rank 6: 1 2 3 4 5 0 0"},     {0, 0, "0 0% 0/0 next rank 1: 0 0"},
        {400, 327, "328 82% 327/73 next rank 74: 328 329 330 331 332 333 0"},
        {400, 328, "error 6"}, // 328 * 100 is past 16 bits
    };
    for (const auto& [count, correct, expected] : cases)
        EXPECT_EQ(std::make_unique<Scenario>(count, correct)->score(), expected) << correct << " of " << count;
    auto thousand = std::make_unique<Scenario>(1000, 0);
    EXPECT_EQ(nextIncorrect(thousand->session, thousand->questions, 999), 1000); // the last position is searched too
}

TEST(ScoringTest, AnswersCompareUpperCasedButUntrimmedAndTheSearchesFindTheNeighbours)
{
    auto s = std::make_unique<Scenario>(7, 7);
    s->questions.Questions[1].Answer = "b"; // lower-case key against "b": equal
    s->session.UserAnswers[2] = "B";         // upper-case answer: equal
    s->session.UserAnswers[3] = "";          // unanswered
    s->session.UserAnswers[4] = "b ";        // no trimming
    s->session.QuestionOrder[5] = 0;         // never drawn: record 0, whose answer is empty
    s->session.UserAnswers[5] = "";
    s->session.UserAnswers[6] = "c";
    EXPECT_EQ(s->score(), "3 43% 3/4 next rank 5: 3 4 5 6 0 0");
    const auto next = [&](int from) { return nextIncorrect(s->session, s->questions, static_cast<Int16>(from)); };
    const auto previous = [&](int from) { return previousIncorrect(s->session, s->questions, static_cast<Int16>(from)); };
    EXPECT_EQ(std::vector<int>({next(3), next(6), previous(3), previous(7), previous(4)}), std::vector<int>({4, 0, 0, 6, 3}));
}

TEST(ScoringTest, PagesShowTheAnswersUpperCasedWithTabsWidened)
{
    auto s = std::make_unique<Scenario>(3, 0);
    s->questions.Questions[2] = {"", "Q\ttwo", "", "E\t\ttwo", "c"};
    s->questions.Questions[0] = {"", "Zero", "", "Nothing\there", "a"};
    const std::string tail = "<br><b>The correct answer is: C</b><br><br>Explanation: E      two";
    s->session.UserAnswers[2] = "d";
    EXPECT_EQ(reviewPage(s->session, s->questions, 2), "Q   two<br><br><hr><br>Your answer: D" + tail);
    s->session.UserAnswers[2] = "";
    EXPECT_EQ(reviewPage(s->session, s->questions, 2), "Q   two<br><br><hr><br>Your answer: " + tail);
    EXPECT_EQ(reviewPageNone(s->questions), "Zero<br><br><hr><br>Your answer: NONE<br><b>The correct answer is: "
                                            "A</b><br><br>Explanation: Nothing   here");
    EXPECT_EQ(reviewCaption("KESTA Exam Demo 2", 1, 12), "Chapter: KESTA Exam Demo 2 | Question 1 of 12");
    s->session.CurrentQuestion = 2;
    EXPECT_EQ(answerPage(s->session, s->questions),
              "Chapter: KESTA Quiz Demo, Question 2 of 3<br><br>Answer: C<br><br>Explanation: E      two");
    s->session.CurrentQuestion = 4; // past the last position the order holds 0: record 0 answers
    EXPECT_EQ(answerPage(s->session, s->questions),
              "Chapter: KESTA Quiz Demo, Question 4 of 3<br><br>Answer: A<br><br>Explanation: Nothing   here");
    EXPECT_EQ(upperAscii("az\xC3\xA9{`"), "AZ\xC3\xA9{`");
    EXPECT_EQ(previousIncorrect(s->session, s->questions, 2), 1); // the first position is searched too
}

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
    const std::string gaps = next("-23-5"); // each gap met is logged
    EXPECT_EQ(gaps + "|" + locations() + std::to_string(host.messages.size()),
        ".score5: 2 3 - 5 n|Program_Data.DeleteFile\nProgram_Data.Move_File\n0");
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
