#include "progress/ui/Form2.h"
#include "support/BankWriter.h"
#include "support/TestApp.h"

#include <QAction>
#include <QDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <filesystem>
#include <gtest/gtest.h>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using test::exists;
using test::readFile;
using test::TestApp;
using test::writeFile;
using Texts = std::pair<std::string, std::string>;

constexpr const char* QuizName = "KESTA Quiz Demo - Five";
constexpr const char* ExamName = "KESTA Exam Demo 1";
constexpr Int16 Order[] = { 2, 4, 1, 3, 5 };
const std::string ReviewHead = std::string("Chapter: ") + QuizName + " | Question ";

// A program with one five-question quiz ("quiz.kqb", answers a b c d a) and
// one four-question exam listed after it in the folder ("zexam.kqb").
class ProgressFlowTest : public ::testing::Test {
protected:
    static bool shown(const QWidget* w) { return !w->isHidden(); }
    static bool contains(const std::string& text, const std::string& part)
    {
        return text.find(part) != std::string::npos;
    }
    static Texts texts(const MessageBoxRequest& m) { return { m.title, m.text }; }

    static Form1& startWithBanks(TestApp& app)
    {
        test::writeNumberedBank(app.questionDir() + "/quiz.kqb", QuizName, 5, "abcd");
        test::writeNumberedBank(app.questionDir() + "/zexam.kqb", ExamName, 4, "dcba");
        return app.start();
    }

    std::string user(const std::string& name) const { return t.userDir() + "/" + name; }
    std::string progressFile() const { return user("quiz.kqb.usr"); }
    std::string page() const { return readFile(t.pageFile()); }
    SessionState& session() { return t.app->state.session; }
    QuestionList& questions() { return t.app->state.questions; }
    const MessageBoxRequest& lastMessage() const { return t.host.messages.back(); }

    // Chooses and starts the quiz, then puts the session at `current`, 7:09 in,
    // with the order 2 4 1 3 5 and the positions before it answered b a c d b.
    void takeQuizTo(int current)
    {
        f.Review1_Click(0);
        f.Start_Test_Click();
        ASSERT_EQ(questions().QuestionCount, 5);
        SessionState& s = session();
        for (int p = 1; p <= 5; ++p) {
            s.QuestionOrder[p] = Order[p - 1];
            s.UserAnswers[p] = p < current ? std::string(1, "bacdb"[p - 1]) : "";
        }
        s.CurrentQuestion = static_cast<Int16>(current);
        s.HighestReached = static_cast<Int16>(std::min(current, 5));
        std::tie(s.TimeHours, s.TimeMinutes, s.TimeSeconds) = std::tuple(0, 7, 9);
    }

    // The quiz taken to its end in the order 1..5 with the given answers
    // ('-' for none); record k reads "Question k" and its answer is "abcda"[k-1].
    void answered(const std::string& answers)
    {
        takeQuizTo(6);
        for (std::size_t p = 1; p <= 5; ++p) {
            session().QuestionOrder[p] = static_cast<Int16>(p);
            session().UserAnswers[p] = answers[p - 1] == '-' ? "" : answers.substr(p - 1, 1);
        }
    }

    TestApp t;
    Form1& f = startWithBanks(t);
};

// --- saving ------------------------------------------------------------------

TEST_F(ProgressFlowTest, SavingProgressAndScoresWritesTheirOwnFiles)
{
    takeQuizTo(3);
    writeFile(user("usrdata.usr"), "left over");
    f.Save_Progress_Click();
    EXPECT_EQ(readFile(progressFile()), "000700300309\r\n002004001003005\r\nba");
    EXPECT_EQ(texts(lastMessage()),
        Texts("Save Progress",
            "Your current progress has been saved. \r\n\r\nIf you would like to open it at any time, go to the "
            "file menu, select 'Load Previous Exam or Domain Quiz', then choose the appropriate chapter."));
    EXPECT_EQ(readFile(user("usrdata.usr")), "");
    EXPECT_TRUE(f.r01[0]->isEnabled()); // the load menu reflects the new file at once
    EXPECT_FALSE(exists(user("quiz.kqb.usr.score1")));

    // Scores fill the next slot and never touch the progress file.
    const std::string progress = readFile(progressFile());
    writeFile(user("usrdata.usr"), "left over");
    session().CurrentQuestion = 2;
    f.Save_Score_Click();
    f.Save_Score_Click();
    EXPECT_EQ(readFile(progressFile()), progress);
    EXPECT_EQ(readFile(user("quiz.kqb.usr.score1")).substr(0, 12), "000700200309");
    EXPECT_TRUE(exists(user("quiz.kqb.usr.score2")));
    EXPECT_EQ(texts(lastMessage()),
        Texts("Save Score",
            "Your current progress and score has been saved. \r\n\r\nIf you would like to open it at any time, go "
            "to the file menu, select 'View Previous Scores', then choose the appropriate Exam or Domain Quiz."));
    EXPECT_EQ(readFile(user("usrdata.usr")), "");
    EXPECT_EQ(f.mnuScore01.size(), 3u);
}

TEST_F(ProgressFlowTest, ALinkPlantedAtTheProgressFileIsReplacedNotFollowed)
{
    takeQuizTo(2);
    writeFile(t.dir / "victim.txt", "precious");
    fs::create_symlink(t.dir / "victim.txt", progressFile());
    f.Save_Progress_Click();
    EXPECT_FALSE(fs::is_symlink(progressFile()));
    EXPECT_EQ(readFile(progressFile()).substr(0, 12), "000700200209");
    EXPECT_EQ(readFile(t.dir / "victim.txt"), "precious");
}

TEST_F(ProgressFlowTest, AFailedWriteStopsTheSaveWhereItHappens)
{
    takeQuizTo(2);
    fs::create_directory(progressFile()); // nothing can be renamed over a folder
    EXPECT_EXIT(f.Save_Progress_Click(), ::testing::ExitedWithCode(1), "Brightquiver Error");
    EXPECT_TRUE(contains(readFile(t.errorLog()), "Save_Progress_Click()"));
    EXPECT_FALSE(exists(user("usrdata.usr")));
}

// --- restoring ---------------------------------------------------------------

TEST_F(ProgressFlowTest, SavedProgressRoundTripsAtTheFirstMiddleLastAndPastTheEnd)
{
    for (const int current : { 1, 3, 5, 6 }) {
        SCOPED_TRACE(current);
        const bool past = current > 5;
        takeQuizTo(current);
        f.Save_Progress_Click();
        f.InitializeVariables();
        const std::size_t before = t.host.messages.size();
        f.r01_Click(0);

        const SessionState& s = session();
        EXPECT_EQ(std::tuple(s.TimeMinutes, s.TimeSeconds, s.TestStarted), std::tuple(7, 9, true));
        for (int p = 1; p <= 5; ++p) // the order entry of the current position becomes the position
            EXPECT_EQ(s.QuestionOrder[p], p == current ? current : Order[p - 1]) << p;
        EXPECT_EQ(s.UserAnswers[1], current > 1 ? "b" : "");
        EXPECT_EQ(s.UserAnswers[std::min(current, 5)], past ? "b" : "");
        ASSERT_EQ(t.host.messages.size(), before + (past ? 2 : 1));
        EXPECT_EQ(texts(t.host.messages[before]),
            Texts("Load Existing Domain Quiz", "Your previous Domain Quiz has been loaded.\r\nPress OK to continue."));
        EXPECT_EQ(std::pair(shown(f.Finish), shown(f.Command2)), std::pair(past, !past));
        if (past) {
            EXPECT_EQ(texts(lastMessage()),
                Texts("KESTA DEMO", "Press the 'Finish' button to end and score your Domain Quiz."));
            EXPECT_TRUE(contains(page(),
                "Click 'Finish' to end and score your Domain Quiz, or click the "
                "'Previous' button to go back and re-check your test"));
            EXPECT_EQ(f.Num_Label1->text(), "");
            continue;
        }
        EXPECT_EQ(std::tuple(s.CurrentQuestion, s.HighestReached, shown(f.Back_Command1)),
            std::tuple(current, current, current >= 2));
        EXPECT_EQ(f.Num_Label1->text().toStdString(), QuizName + (" | Question " + std::to_string(current) + " of 5"));
        EXPECT_TRUE(contains(page(), "Question " + std::to_string(current))); // the record numbered like the position
        for (QWidget* w :
            std::initializer_list<QWidget*> { f.Option1, f.Option4, f.Label3, f.EndExam, f.ViewAnswer, f.TimeLeft })
            EXPECT_TRUE(shown(w)) << w->objectName().toStdString();
        EXPECT_FALSE(shown(f.Start_Test) || f.Option1->isChecked() || f.Option2->isChecked());
        EXPECT_TRUE(f.Timer1->isActive() && f.Save_Progress->isEnabled());
    }
}

TEST_F(ProgressFlowTest, RestoreProblemsAreReportedOrIgnored)
{
    // A missing progress file is reported under the exam routine's name.
    EXPECT_EXIT(f.r01_Click(0), ::testing::ExitedWithCode(1), "Brightquiver Error");
    const std::string log = readFile(t.errorLog());
    EXPECT_TRUE(contains(log, "[53]") && contains(log, "Form1.Restore_PracticeExam()")) << log;

    // A score whose test is gone is listed but does nothing.
    writeFile(user("quiz.kqb.usr.score1"), "000000600500\r\n001002003004005\r\naaaaa");
    f.Adjust_Menu();
    ASSERT_TRUE(f.mnuScore01[0]->isEnabled());
    t.app->state.catalogues.QuizCatalogue[0].FileName = "renamed.kqb";
    f.mnuScore01[0]->trigger();
    TestApp::settle();
    EXPECT_TRUE(f.isVisible() && t.host.messages.empty());
    EXPECT_FALSE(t.app->windows.form2);
}

TEST_F(ProgressFlowTest, ScoreMenuListsExamsFirstThenEachTestsSlotsInOrder)
{
    const char* names[]
        = { "zexam.kqb.usr.score2", "quiz.kqb.usr.score1", "quiz.kqb.usr.score2", "quiz.kqb.usr.score3" };
    for (const int i : { 3, 1, 2, 0 }) // written out of slot order
        writeFile(user(names[i]), "000000100000\r\n001\r\na");
    f.Adjust_Menu();
    f.Adjust_Menu(); // rebuilding does not duplicate anything

    std::vector<std::string> expected, captions;
    for (const char* name : names)
        expected.push_back((name[0] == 'z' ? ExamName : QuizName)
            + (" (Saved on: "
                + QLocale::system().toString(QFileInfo(user(name).c_str()).lastModified(), QLocale::ShortFormat) + ")")
                  .toStdString());
    ASSERT_EQ(f.mnuScore01.size(), 5u);
    for (QAction* item : f.mnuScore01)
        if (item->isVisible() && item->isEnabled())
            captions.push_back(item->text().toStdString());
    EXPECT_EQ(captions, expected);
    EXPECT_EQ(f.mnuScore01[3]->data().toString().toStdString(), user(names[3]));
}

// --- the results window ------------------------------------------------------

TEST_F(ProgressFlowTest, ReviewWalksThreeWrongAnswersBackAndForth)
{
    answered("acad-"); // positions 2, 3 and 5 wrong
    Form2* r = Form2::open(*t.app);
    auto at = [&](int n, bool next, bool back, const std::string& part) {
        SCOPED_TRACE(n);
        EXPECT_TRUE(contains(page(), part));
        EXPECT_EQ(std::tuple(r->QuestionNumber->text().toStdString(), shown(r->Expl_Next), shown(r->Expl_Back)),
            std::tuple(ReviewHead + std::to_string(n) + " of 3", next, back));
    };
    EXPECT_EQ(r->Label2->text(), "40%");
    at(1, true, false, "Your answer: C<br><b>The correct answer is: B</b>");
    QTest::mouseClick(r->Expl_Next, Qt::LeftButton);
    at(2, true, true, "Your answer: A<br><b>The correct answer is: C</b>");
    QTest::mouseClick(r->Expl_Next, Qt::LeftButton);
    at(3, false, true, "Your answer: <br><b>The correct answer is: A</b>");
    QTest::mouseClick(r->Expl_Back, Qt::LeftButton);
    at(2, true, true, "Your answer: A<br>");
    QTest::mouseClick(r->Expl_Back, Qt::LeftButton);
    at(1, true, false, "Question 2\r\n");
}

TEST_F(ProgressFlowTest, OnlyNextShowsAnUndrawnPositionAsNone)
{
    answered("xbcdx");
    session().QuestionOrder[5] = 0;
    questions().Questions[0].Question = "Record zero";
    Form2* r = Form2::open(*t.app);
    QTest::mouseClick(r->Expl_Next, Qt::LeftButton);
    const std::string shownPage = page();
    EXPECT_TRUE(contains(shownPage, "Record zero<br><br><hr><br>Your answer: NONE<br>"));
    r->Expl_Next_Click(); // finds nothing more: caption and page stay
    EXPECT_EQ(page(), shownPage);
    EXPECT_EQ(r->QuestionNumber->text().toStdString(), ReviewHead + "2 of 2");
}

TEST_F(ProgressFlowTest, PerfectAndOneWrongScoresShowNoNavigation)
{
    answered("ABCDA");
    Form2* r = Form2::open(*t.app);
    EXPECT_EQ(r->Label2->text(), "100%");
    EXPECT_EQ(r->WebBrowser1->toPlainText(), "CONGRATULATIONS! You've got a Perfect Score!");
    EXPECT_EQ(r->QuestionNumber->text(), "");
    EXPECT_FALSE(shown(r->Expl_Next) || shown(r->Expl_Back));

    delete r;
    answered("abcdb");
    r = Form2::open(*t.app);
    EXPECT_EQ(r->Label2->text(), "80%");
    EXPECT_EQ(r->QuestionNumber->text().toStdString(), ReviewHead + "1 of 1");
    EXPECT_FALSE(shown(r->Expl_Next) || shown(r->Expl_Back));
}

TEST_F(ProgressFlowTest, MoreThan327CorrectAnswersOverflowWithoutALogEntry)
{
    questions().QuestionCount = 400;
    for (int k = 1; k <= 400; ++k) {
        questions().Questions[k].Answer = "a";
        session().QuestionOrder[k] = static_cast<Int16>(k);
        session().UserAnswers[k] = k <= 328 ? "a" : "";
    }
    EXPECT_EXIT(Form2::open(*t.app), ::testing::ExitedWithCode(1), "Run-time error '6'");
    EXPECT_FALSE(exists(t.errorLog()));
}

// --- the whole way round -----------------------------------------------------

TEST_F(ProgressFlowTest, AFinishedQuizIsScoredSavedAndReopenedFromTheScoreMenu)
{
    f.Review1_Click(0);
    f.Start_Test_Click();
    for (int p = 1; p <= 5; ++p) {
        const int option = (questions().Questions[session().QuestionOrder[p]].Answer[0] | 0x20) - 'a' + 1;
        f.checkOption(p == 2 ? option % 4 + 1 : option); // one wrong answer
        QTest::mouseClick(f.Command2, Qt::LeftButton);
    }
    TestApp::settle();
    QPointer<Form2> results = static_cast<Form2*>(t.app->windows.form2.data());
    ASSERT_TRUE(results);
    EXPECT_EQ(results->Label2->text(), "80%");
    EXPECT_FALSE(f.isVisible());

    results->close(); // the title bar's close button asks first
    TestApp::settle();
    QPointer<QDialog> asked = t.app->windows.Dialog2;
    ASSERT_TRUE(asked && asked->isVisible() && results->isVisible());
    QTest::mouseClick(results->Command3, Qt::LeftButton); // asking again brings the same dialog forward
    ASSERT_EQ(t.app->windows.Dialog2, asked);
    test::clickButton(*asked, "Command2");
    TestApp::settle();
    EXPECT_TRUE(exists(user("quiz.kqb.usr.score1")));
    ASSERT_FALSE(results);
    ASSERT_TRUE(f.isVisible());

    f.mnuScore01[0]->trigger();
    TestApp::settle();
    auto* reopened = static_cast<Form2*>(t.app->windows.form2.data());
    ASSERT_NE(reopened, nullptr);
    EXPECT_EQ(reopened->Label2->text(), "80%");
    EXPECT_EQ(reopened->QuestionNumber->text().toStdString(), ReviewHead + "1 of 1");
    EXPECT_FALSE(f.isVisible() || f.Timer1->isActive());
    EXPECT_EQ(texts(lastMessage()),
        Texts("Open Existing Domain Quiz", "Your previous Domain Quiz has been opened.\r\nPress OK to continue."));
}

} // namespace
} // namespace kesta
