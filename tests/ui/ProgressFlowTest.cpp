#include "progress/core/ProgressFile.h"
#include "progress/ui/Dialog3.h"
#include "progress/ui/Form2.h"
#include "session/ui/ConfirmDialogs.h"
#include "support/BankWriter.h"
#include "support/TestApp.h"

#include <QAction>
#include <QDateTime>
#include <QFile>
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

constexpr const char* QuizName = "KESTA Quiz Demo - Five";
constexpr const char* ExamName = "KESTA Exam Demo 1";

bool shown(const QWidget* w)
{
    return !w->isHidden();
}
bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

// A program with one five-question quiz ("quiz.kqb", answers a b c d a) and
// one four-question exam listed after it in the folder ("zexam.kqb").
class ProgressFlowTest : public ::testing::Test {
protected:
    ProgressFlowTest()
        : f(startWithBanks(t))
    {
    }

    static Form1& startWithBanks(TestApp& app)
    {
        test::writeNumberedBank(app.questionDir() + "/quiz.kqb", QuizName, 5, "abcd");
        test::writeNumberedBank(app.questionDir() + "/zexam.kqb", ExamName, 4, "dcba");
        return app.start();
    }

    std::string user(const std::string& name) const { return t.userDir() + "/" + name; }
    std::string progressFile() const { return user("quiz.kqb.usr"); }
    SessionState& session() { return t.app->state.session; }
    QuestionList& questions() { return t.app->state.questions; }
    const MessageBoxRequest& lastMessage() const { return t.host.messages.back(); }

    // Chooses and starts the quiz, then puts the session at `current` with a
    // known order and the positions before it answered.
    void takeQuizTo(int current)
    {
        f.Review1_Click(0);
        f.Start_Test_Click();
        ASSERT_EQ(questions().QuestionCount, 5);
        SessionState& s = session();
        const Int16 order[] = { 2, 4, 1, 3, 5 };
        const char* answers[] = { "b", "a", "c", "d", "b" };
        for (int p = 1; p <= 5; ++p) {
            s.QuestionOrder[p] = order[p - 1];
            s.UserAnswers[p] = p < current ? answers[p - 1] : "";
        }
        s.CurrentQuestion = static_cast<Int16>(current);
        s.HighestReached = static_cast<Int16>(std::min(current, 5));
        s.TimeHours = 0;
        s.TimeMinutes = 7;
        s.TimeSeconds = 9;
    }

    // Fills the session as if the quiz had been taken in the order 1..5 with
    // the given answers (record k's answer is "abcda"[k-1]).
    void quizAnswered(const std::string& answers)
    {
        session().TestName = QuizName;
        session().TestFile = "quiz.kqb";
        questions().QuestionCount = 5;
        for (int k = 1; k <= 5; ++k) {
            QuestionRecord& r = questions().Questions[k];
            r.Question = "Question " + std::to_string(k);
            r.Answer = std::string(1, "abcda"[k - 1]);
            r.Explanation = "Explanation " + std::to_string(k);
        }
        for (int p = 1; p <= 5; ++p) {
            session().QuestionOrder[p] = static_cast<Int16>(p);
            session().UserAnswers[p] = answers.substr(static_cast<std::size_t>(p - 1), 1);
        }
        session().CurrentQuestion = 6;
    }

    TestApp t;
    Form1& f;
};

// --- saving ------------------------------------------------------------------

TEST_F(ProgressFlowTest, SaveProgressWritesTheSnapshotAndRecreatesAnEmptyUserDataFile)
{
    takeQuizTo(3);
    writeFile(user("usrdata.usr"), "left over");
    f.Save_Progress_Click();

    EXPECT_EQ(readFile(progressFile()), "000700300309\r\n002004001003005\r\nba");
    EXPECT_EQ(lastMessage().title, "Save Progress");
    EXPECT_EQ(lastMessage().text,
        "Your current progress has been saved. \r\n\r\nIf you would like to open it at any time, go to the "
        "file menu, select 'Load Previous Exam or Domain Quiz', then choose the appropriate chapter.");
    EXPECT_EQ(lastMessage().icon, MessageIcon::None);
    EXPECT_TRUE(exists(user("usrdata.usr")));
    EXPECT_EQ(readFile(user("usrdata.usr")), "");
    // The load menu reflects the new file at once.
    EXPECT_TRUE(f.r01[0]->isEnabled());
    EXPECT_FALSE(exists(user("quiz.kqb.usr.score1")));

    // Saving again replaces the file.
    session().CurrentQuestion = 4;
    f.Save_Progress_Click();
    EXPECT_EQ(readFile(progressFile()).substr(0, 12), "000700400309");
}

TEST_F(ProgressFlowTest, SaveScoreFillsTheNextSlotAndLeavesTheProgressFileAlone)
{
    takeQuizTo(6);
    f.Save_Progress_Click();
    const std::string progress = readFile(progressFile());
    session().CurrentQuestion = 2;

    f.Save_Score_Click();
    f.Save_Score_Click();

    EXPECT_EQ(readFile(progressFile()), progress);
    EXPECT_EQ(readFile(user("quiz.kqb.usr.score1")).substr(0, 12), "000700200509");
    EXPECT_TRUE(exists(user("quiz.kqb.usr.score2")));
    EXPECT_EQ(lastMessage().title, "Save Score");
    EXPECT_EQ(lastMessage().text,
        "Your current progress and score has been saved. \r\n\r\nIf you would like to open it at any time, go "
        "to the file menu, select 'View Previous Scores', then choose the appropriate Exam or Domain Quiz.");
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

TEST_F(ProgressFlowTest, SavedProgressRoundTripsAtTheFirstMiddleAndLastPosition)
{
    for (const int current : { 1, 3, 5 }) {
        SCOPED_TRACE(current);
        takeQuizTo(current);
        f.Save_Progress_Click();
        f.InitializeVariables();
        const std::size_t before = t.host.messages.size();

        f.r01_Click(0);

        const SessionState& s = session();
        EXPECT_EQ(s.CurrentQuestion, current);
        EXPECT_EQ(s.HighestReached, current);
        EXPECT_EQ(s.TimeMinutes, 7);
        EXPECT_EQ(s.TimeSeconds, 9);
        EXPECT_TRUE(s.TestStarted);
        const Int16 order[] = { 2, 4, 1, 3, 5 };
        for (int p = 1; p <= 5; ++p)
            EXPECT_EQ(s.QuestionOrder[p], p == current ? current : order[p - 1]) << p;
        EXPECT_EQ(s.UserAnswers[1], current > 1 ? "b" : "");
        EXPECT_EQ(s.UserAnswers[current], "");

        ASSERT_EQ(t.host.messages.size(), before + 1);
        EXPECT_EQ(lastMessage().title, "Load Existing Domain Quiz");
        EXPECT_EQ(lastMessage().text, "Your previous Domain Quiz has been loaded.\r\nPress OK to continue.");

        EXPECT_EQ(shown(f.Back_Command1), current >= 2);
        EXPECT_EQ(f.Num_Label1->text().toStdString(),
            std::string(QuizName) + " | Question " + std::to_string(current) + " of 5");
        // The page is the record numbered like the position.
        EXPECT_TRUE(contains(readFile(t.pageFile()), "Question " + std::to_string(current)));
        for (QWidget* w : std::initializer_list<QWidget*> { f.Num_Label1, f.Option1, f.Option4, f.Label3, f.EndExam,
                 f.ViewAnswer, f.Command2, f.Time_Left, f.TimeLeft })
            EXPECT_TRUE(shown(w)) << w->objectName().toStdString();
        EXPECT_FALSE(shown(f.Start_Test));
        EXPECT_FALSE(shown(f.Finish));
        EXPECT_FALSE(f.Option1->isChecked() || f.Option2->isChecked());
        EXPECT_TRUE(f.Timer1->isActive());
        EXPECT_TRUE(f.Save_Progress->isEnabled());
    }
}

TEST_F(ProgressFlowTest, ProgressSavedPastTheEndRestoresIntoTheFinishState)
{
    takeQuizTo(6);
    f.Save_Progress_Click();
    f.InitializeVariables();
    const std::size_t before = t.host.messages.size();

    f.r01_Click(0);

    const Int16 order[] = { 2, 4, 1, 3, 5 };
    for (int p = 1; p <= 5; ++p)
        EXPECT_EQ(session().QuestionOrder[p], order[p - 1]) << p;
    EXPECT_EQ(session().UserAnswers[5], "b");
    ASSERT_EQ(t.host.messages.size(), before + 2);
    EXPECT_EQ(t.host.messages[before].title, "Load Existing Domain Quiz");
    EXPECT_EQ(lastMessage().title, "KESTA DEMO");
    EXPECT_EQ(lastMessage().text, "Press the 'Finish' button to end and score your Domain Quiz.");
    EXPECT_TRUE(contains(readFile(t.pageFile()),
        "Click 'Finish' to end and score your Domain Quiz, or click the "
        "'Previous' button to go back and re-check your test"));
    EXPECT_FALSE(shown(f.Command2));
    EXPECT_TRUE(shown(f.Finish));
    EXPECT_EQ(f.Num_Label1->text(), "");
}

TEST_F(ProgressFlowTest, ExamRestoreGoesThroughTheExamCatalogueAndTexts)
{
    f.Chapter1_Click(0);
    f.Start_Test_Click();
    f.Save_Progress_Click();
    EXPECT_TRUE(exists(user("zexam.kqb.usr")));
    EXPECT_TRUE(f.ch01[0]->isEnabled());
    f.InitializeVariables();

    f.ch01_Click(0);

    EXPECT_EQ(lastMessage().title, "Load Existing Exam");
    EXPECT_EQ(lastMessage().text, "Your previous Exam has been loaded.\r\nPress OK to continue.");
    EXPECT_EQ(f.Num_Label1->text().toStdString(), std::string(ExamName) + " | Question 1 of 4");
    EXPECT_TRUE(session().TestStarted);
}

TEST_F(ProgressFlowTest, AMissingProgressFileIsReportedUnderTheExamRoutinesName)
{
    EXPECT_EXIT(f.r01_Click(0), ::testing::ExitedWithCode(1), "Brightquiver Error");
    const std::string log = readFile(t.errorLog());
    EXPECT_TRUE(contains(log, "[53]"));
    EXPECT_TRUE(contains(log, "Form1.Restore_PracticeExam()"));
}

// --- the score menu ----------------------------------------------------------

TEST_F(ProgressFlowTest, ScoreMenuListsExamsFirstThenEachTestsSlotsInOrder)
{
    auto plant = [&](const std::string& name, const QDateTime& when) {
        writeFile(user(name), "000000100000\r\n001\r\na");
        QFile file(QString::fromStdString(user(name)));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(when, QFileDevice::FileModificationTime));
    };
    const QDateTime base(QDate(2031, 3, 4), QTime(9, 15));
    plant("quiz.kqb.usr.score3", base.addDays(3));
    plant("quiz.kqb.usr.score1", base.addDays(1));
    plant("quiz.kqb.usr.score2", base.addDays(2));
    plant("zexam.kqb.usr.score2", base);
    f.Adjust_Menu();

    auto caption = [](const std::string& title, const QDateTime& when) {
        return title + (" (Saved on: " + QLocale::system().toString(when, QLocale::ShortFormat) + ")").toStdString();
    };
    ASSERT_EQ(f.mnuScore01.size(), 5u);
    EXPECT_EQ(f.mnuScore01[0]->text().toStdString(), caption(ExamName, base));
    EXPECT_EQ(f.mnuScore01[1]->text().toStdString(), caption(QuizName, base.addDays(1)));
    EXPECT_EQ(f.mnuScore01[2]->text().toStdString(), caption(QuizName, base.addDays(2)));
    EXPECT_EQ(f.mnuScore01[3]->text().toStdString(), caption(QuizName, base.addDays(3)));
    EXPECT_EQ(f.mnuScore01[3]->data().toString().toStdString(), user("quiz.kqb.usr.score3"));
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(f.mnuScore01[static_cast<std::size_t>(i)]->isVisible()
            && f.mnuScore01[static_cast<std::size_t>(i)]->isEnabled());
    EXPECT_FALSE(f.mnuScore01[4]->isVisible());
    EXPECT_EQ(f.mnuScore01[4]->objectName(), "mnuScore01(4)");

    // Rebuilding does not duplicate anything.
    f.Adjust_Menu();
    EXPECT_EQ(f.mnuScore01.size(), 5u);
}

TEST_F(ProgressFlowTest, AScoreWhoseTestIsGoneIsListedButDoesNothing)
{
    writeFile(user("quiz.kqb.usr.score1"), "000000600500\r\n001002003004005\r\naaaaa");
    f.Adjust_Menu();
    ASSERT_TRUE(f.mnuScore01[0]->isEnabled());
    t.app->state.catalogues.QuizCatalogue[0].FileName = "renamed.kqb";
    const std::size_t before = t.host.messages.size();

    f.mnuScore01[0]->trigger();
    TestApp::settle();

    EXPECT_TRUE(f.isVisible());
    EXPECT_FALSE(t.app->windows.form2);
    EXPECT_EQ(t.host.messages.size(), before);
}

// --- the results window ------------------------------------------------------

TEST_F(ProgressFlowTest, ReviewWalksThreeWrongAnswersBackAndForth)
{
    quizAnswered("acadx"); // positions 2, 3 and 5 wrong, 5 left unanswered
    session().UserAnswers[5] = "";
    Form2* r = Form2::open(*t.app);
    auto caption = [&] { return r->QuestionNumber->text().toStdString(); };
    const std::string head = std::string("Chapter: ") + QuizName + " | Question ";

    EXPECT_EQ(r->windowTitle(), "Results");
    EXPECT_EQ(r->Label2->text(), "40%");
    EXPECT_EQ(r->Expl_Exit->text(), "Exit KESTA DEMO");
    EXPECT_EQ(caption(), head + "1 of 3");
    EXPECT_TRUE(contains(readFile(t.pageFile()), "Question 2<br>"));
    EXPECT_TRUE(contains(readFile(t.pageFile()), "Your answer: C<br><b>The correct answer is: B</b>"));
    EXPECT_TRUE(shown(r->Expl_Next));
    EXPECT_FALSE(shown(r->Expl_Back));
    EXPECT_FALSE(shown(r->cmdPrintQuestions));

    QTest::mouseClick(r->Expl_Next, Qt::LeftButton);
    EXPECT_EQ(caption(), head + "2 of 3");
    EXPECT_TRUE(contains(readFile(t.pageFile()), "Your answer: A<br><b>The correct answer is: C</b>"));
    EXPECT_TRUE(shown(r->Expl_Next));
    EXPECT_TRUE(shown(r->Expl_Back));

    QTest::mouseClick(r->Expl_Next, Qt::LeftButton);
    EXPECT_EQ(caption(), head + "3 of 3");
    EXPECT_TRUE(contains(readFile(t.pageFile()), "Your answer: <br><b>The correct answer is: A</b>"));
    EXPECT_FALSE(shown(r->Expl_Next));
    EXPECT_TRUE(shown(r->Expl_Back));

    QTest::mouseClick(r->Expl_Back, Qt::LeftButton);
    EXPECT_EQ(caption(), head + "2 of 3");
    EXPECT_TRUE(shown(r->Expl_Next));
    EXPECT_TRUE(shown(r->Expl_Back));

    QTest::mouseClick(r->Expl_Back, Qt::LeftButton);
    EXPECT_EQ(caption(), head + "1 of 3");
    EXPECT_TRUE(contains(readFile(t.pageFile()), "Question 2<br>"));
    EXPECT_TRUE(shown(r->Expl_Next));
    EXPECT_FALSE(shown(r->Expl_Back));
    EXPECT_EQ(t.app->state.review.ReviewIndex, 1);
}

TEST_F(ProgressFlowTest, OnlyNextShowsAnUndrawnPositionAsNone)
{
    quizAnswered("xbcdx");
    session().QuestionOrder[5] = 0;
    questions().Questions[0].Question = "Record zero";
    Form2* r = Form2::open(*t.app);
    EXPECT_EQ(r->QuestionNumber->text().toStdString(), std::string("Chapter: ") + QuizName + " | Question 1 of 2");

    QTest::mouseClick(r->Expl_Next, Qt::LeftButton);
    EXPECT_TRUE(contains(readFile(t.pageFile()), "Record zero<br><br><hr><br>Your answer: NONE<br>"));

    // A second Next finds nothing more: caption and page stay.
    const std::string page = readFile(t.pageFile());
    r->Expl_Next_Click();
    EXPECT_EQ(readFile(t.pageFile()), page);
    EXPECT_EQ(r->QuestionNumber->text().toStdString(), std::string("Chapter: ") + QuizName + " | Question 2 of 2");
}

TEST_F(ProgressFlowTest, APerfectScoreShowsTheCongratulationPageOnly)
{
    quizAnswered("ABCDA");
    Form2* r = Form2::open(*t.app);

    EXPECT_EQ(r->Label2->text(), "100%");
    EXPECT_EQ(r->WebBrowser1->property("address").toString(), "about:CONGRATULATIONS! You've got a Perfect Score!");
    EXPECT_EQ(r->WebBrowser1->toPlainText(), "CONGRATULATIONS! You've got a Perfect Score!");
    EXPECT_EQ(r->QuestionNumber->text(), "");
    EXPECT_FALSE(shown(r->Expl_Next));
    EXPECT_FALSE(shown(r->Expl_Back));
    EXPECT_EQ(t.app->windows.form2, r);
}

TEST_F(ProgressFlowTest, OneWrongAnswerShowsNoNavigation)
{
    quizAnswered("abcdb");
    Form2* r = Form2::open(*t.app);
    EXPECT_EQ(r->Label2->text(), "80%");
    EXPECT_EQ(r->QuestionNumber->text().toStdString(), std::string("Chapter: ") + QuizName + " | Question 1 of 1");
    EXPECT_FALSE(shown(r->Expl_Next));
    EXPECT_FALSE(shown(r->Expl_Back));
}

TEST_F(ProgressFlowTest, MoreThan327CorrectAnswersOverflowWithoutALogEntry)
{
    QuestionList& q = questions();
    q.QuestionCount = 400;
    for (int k = 1; k <= 400; ++k) {
        q.Questions[k].Answer = "a";
        session().QuestionOrder[k] = static_cast<Int16>(k);
        session().UserAnswers[k] = k <= 328 ? "a" : "";
    }
    EXPECT_EXIT(Form2::open(*t.app), ::testing::ExitedWithCode(1), "Run-time error '6'");
    EXPECT_FALSE(exists(t.errorLog()));
}

TEST_F(ProgressFlowTest, LeavingTheResultsWindowAlwaysAsksFirst)
{
    quizAnswered("abcdb");
    f.hide();
    Form2* r = Form2::open(*t.app);

    t.host.modalScripts.push_back(test::click("CancelButton"));
    QTest::mouseClick(r->Expl_Exit, Qt::LeftButton);
    ASSERT_EQ(t.host.modals.size(), 1u);
    EXPECT_EQ(t.host.modals[0], "Dialog1");
    EXPECT_TRUE(r->isVisible());

    r->close(); // the title bar's close button
    TestApp::settle();
    ASSERT_TRUE(t.app->windows.Dialog2);
    EXPECT_TRUE(t.app->windows.Dialog2->isVisible());
    EXPECT_TRUE(r->isVisible());

    // Asking again brings the same dialog forward.
    QPointer<QDialog> first = t.app->windows.Dialog2;
    QTest::mouseClick(r->Command3, Qt::LeftButton);
    EXPECT_EQ(t.app->windows.Dialog2, first);

    test::clickButton(*t.app->windows.Dialog2, "Command2");
    TestApp::settle();
    EXPECT_FALSE(t.app->windows.form2);
    EXPECT_TRUE(f.isVisible());
}

TEST_F(ProgressFlowTest, ViewAnswerShowsTheCurrentAnswerAndExplanation)
{
    quizAnswered("abcda");
    session().QuestionOrder[2] = 4;
    session().CurrentQuestion = 2;
    QPointer<Dialog3> d = new Dialog3(*t.app);

    EXPECT_EQ(d->windowTitle(), "View Answer");
    EXPECT_EQ(d->OK->toolTip(), "Click OK to go back to the main exam window.");
    EXPECT_TRUE(contains(readFile(t.pageFile()),
        std::string("Chapter: ") + QuizName
            + ", Question 2 of 5<br><br>Answer: D<br><br>Explanation: "
              "Explanation 4"));
    EXPECT_FALSE(contains(readFile(t.pageFile()), "Question 4"));
    d->show();
    QTest::mouseClick(d->OK, Qt::LeftButton);
    TestApp::settle();
    EXPECT_FALSE(d);
}

// --- the whole way round -----------------------------------------------------

TEST_F(ProgressFlowTest, AFinishedQuizIsScoredSavedAndReopenedFromTheScoreMenu)
{
    f.Review1_Click(0);
    f.Start_Test_Click();
    SessionState& s = session();
    for (int p = 1; p <= 5; ++p) {
        const std::string answer = questions().Questions[s.QuestionOrder[p]].Answer;
        int option = answer.empty() ? 1 : (answer[0] | 0x20) - 'a' + 1;
        if (p == 2)
            option = option % 4 + 1; // one wrong answer
        f.checkOption(option);
        QTest::mouseClick(f.Command2, Qt::LeftButton);
    }
    TestApp::settle();
    QPointer<QWidget> results = t.app->windows.form2;
    ASSERT_TRUE(results);
    EXPECT_EQ(static_cast<Form2*>(results.data())->Label2->text(), "80%");
    EXPECT_FALSE(f.isVisible());
    EXPECT_TRUE(exists(user("quiz.kqb.usr.score1")));

    static_cast<Form2*>(results.data())->Command3_Click();
    test::clickButton(*t.app->windows.Dialog2, "Command2");
    TestApp::settle();
    ASSERT_FALSE(results);
    ASSERT_TRUE(f.isVisible());
    EXPECT_TRUE(contains(f.mnuScore01[0]->text().toStdString(), std::string(QuizName) + " (Saved on: "));

    f.mnuScore01[0]->trigger();
    TestApp::settle();
    auto* reopened = static_cast<Form2*>(t.app->windows.form2.data());
    ASSERT_NE(reopened, nullptr);
    EXPECT_EQ(reopened->Label2->text(), "80%");
    EXPECT_EQ(
        reopened->QuestionNumber->text().toStdString(), std::string("Chapter: ") + QuizName + " | Question 1 of 1");
    EXPECT_FALSE(f.isVisible());
    EXPECT_FALSE(f.Timer1->isActive());
    EXPECT_EQ(lastMessage().title, "Open Existing Domain Quiz");
    EXPECT_EQ(lastMessage().text, "Your previous Domain Quiz has been opened.\r\nPress OK to continue.");
}

} // namespace
} // namespace kesta
