#include "common/ui/QtPrinter.h"
#include "progress/ui/Form2.h"
#include "session/core/Navigation.h"
#include "session/core/QuestionPrint.h"
#include "session/ui/ConfirmDialogs.h"
#include "support/BankWriter.h"
#include "support/TestApp.h"
#include "support/UiChecks.h"

#include <QAction>
#include <QApplication>
#include <QButtonGroup>
#include <QProcess>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using namespace test;

constexpr const char* QuizTitle = "KESTA Quiz Demo - Five";
const std::string ScoreSaved = box("Save Score",
    "Your current progress and score has been saved. \r\n\r\nIf you would like to open it at any time, go to the "
    "file menu, select 'View Previous Scores', then choose the appropriate Exam or Domain Quiz.");
const std::string ProgressSaved = box("Save Progress",
    "Your current progress has been saved. \r\n\r\nIf you would like to open it at any time, go to the file menu, "
    "select 'Load Previous Exam or Domain Quiz', then choose the appropriate chapter.");

// A program with a five-question quiz and a three-question exam installed
// and the default options, started and showing its idle page.
class SessionFlowTest : public ::testing::Test {
protected:
    SessionFlowTest()
    {
        writeNumberedBank(t.questionDir() + "/quiz.kqb", QuizTitle, 5, "bcdab");
        writeNumberedBank(t.questionDir() + "/exam.kqb", "KESTA Exam Demo - Three", 3);
        writeFile(t.userDir() + "/option.usr", "1\r\n0\r\n0\r\n1\r\n30\r\n5");
        f = &t.start();
    }

    SessionState& s() { return t.app->state.session; }

    // Chooses the quiz, starts it and keeps the real timer from ticking
    // while the test drives the countdown itself.
    void startQuiz()
    {
        f->Review1[0]->trigger();
        QTest::mouseClick(f->Start_Test, Qt::LeftButton);
        f->Timer1->setInterval(24 * 3600 * 1000);
        t.host.messages.clear();
    }

    // Position p, its header and its page file as the page writer leaves it.
    std::string position(int p)
    {
        return row(p, std::string("Chapter: ") + QuizTitle + " | Question " + std::to_string(p) + " of 5",
            "<font size=5>\r\n" + pageText(s(), t.app->state.questions, static_cast<Int16>(p)) + "\r\n</font>\r\n");
    }
    std::string shownPosition() { return row(s().CurrentQuestion, text(f->Num_Label1), readFile(t.pageFile())); }

    // Clicks an answer button on its round indicator.
    void choose(QRadioButton* b) { QTest::mouseClick(b, Qt::LeftButton, {}, QPoint(8, b->height() / 2)); }
    void next() { QTest::mouseClick(f->Command2, Qt::LeftButton); }
    void back() { QTest::mouseClick(f->Back_Command1, Qt::LeftButton); }
    void endExam() { QTest::mouseClick(f->EndExam, Qt::LeftButton); }
    int checkedOption() { return f->OptionGroup->checkedId() < 0 ? 0 : f->OptionGroup->checkedId(); }
    bool saved(const char* file) { return fs::exists(t.userDir() + "/quiz.kqb." + file); }

    TestApp t;
    Form1* f = nullptr;
};

// --- choosing and starting -----------------------------------------------------

TEST_F(SessionFlowTest, ChoosingArmsA90SecondsAQuestionCountdownAndStartingAnnouncesAnExamOrAQuizOnly)
{
    EXPECT_FALSE(f->mnuPrintQuestions->isEnabled());
    // Chooses, then starts the test under the given name.
    auto start = [&](QAction* choice, const char* name) {
        f->Initialize();
        t.host.messages.clear();
        choice->trigger();
        const std::string chosen = row(s().TestName, s().TestFile, t.app->state.questions.QuestionCount, s().TimeHours,
            s().TimeMinutes, s().TimeSeconds, text(f->Start_Test), text(f->EndExam), text(f->TimeLeft),
            f->Start_Test->isVisible(), f->mnuPrintQuestions->isEnabled(), f->Timer1->isActive(), messages(t.host));
        s().TestName = name;
        QTest::mouseClick(f->Start_Test, Qt::LeftButton);
        return row(chosen, messages(t.host), f->Timer1->interval());
    };
    const std::string quiz = "KESTA Quiz Demo - Five|quiz.kqb|5|0|7|30|Start Domain Quiz|End Domain Quiz||1|1|0||";
    EXPECT_EQ(start(f->Review1[0], QuizTitle),
        quiz + box("KESTA DEMO", "The Domain Quiz will now begin. Press OK to continue.") + "|1000");
    EXPECT_EQ(start(f->Chapter1[0], "KESTA Exam Demo - Three"),
        "KESTA Exam Demo - Three|exam.kqb|3|0|4|30|Start Exam|End Exam||1|1|0||"
            + box("KESTA DEMO", "The exam will now begin. Press OK to continue.") + "|1000");
    EXPECT_EQ(start(f->Review1[0], "Release notes"), quiz + "|1000");
}

TEST(SessionChoiceTest, ATimePerQuestionPast32767SecondsIsFatalAndNamesTheFile)
{
    TestApp t;
    writeNumberedBank(t.questionDir() + "/quiz.kqb", QuizTitle, 5);
    writeFile(t.userDir() + "/option.usr", "1\r\n0\r\n10\r\n0\r\n0\r\n5");
    Form1& f = t.start();
    EXPECT_EXIT(f.Review1[0]->trigger(), ::testing::ExitedWithCode(1), "Details: \\[FILE\\]quiz\\.kqb\\. ");
    EXPECT_NE(readFile(t.errorLog()).find("Location: Form1.Review1_Click()"), std::string::npos);
}

// --- answering and moving ------------------------------------------------------

TEST_F(SessionFlowTest, StartingShowsTheShuffledQuestionsWhoseAnswersByButtonAndKeyStayWithTheirPositions)
{
    startQuiz();
    EXPECT_EQ(std::set<int>(&s().QuestionOrder[1], &s().QuestionOrder[6]), (std::set<int> { 1, 2, 3, 4, 5 }));
    EXPECT_EQ(row(s().HighestReached, s().TestStarted, f->Save_Progress->isEnabled(), f->Timer1->isActive(),
                  text(f->Command2), shownControls(*f)),
        "0|1|1|1|Next Question|ViewAnswer Num_Label1 Option1 Option2 Option3 Option4 Label3 EndExam Command2 "
        "Time_Left TimeLeft ");
    next(); // nothing chosen yet
    EXPECT_EQ(messages(t.host), box("KESTA DEMO", "Please choose an answer from the choices below"));
    EXPECT_EQ(row(shownPosition(), checkedOption()), row(position(1), 0));

    choose(f->Option2);
    EXPECT_EQ(row(s().UserAnswers[1], s().OptionBChosen), "b|1");
    next();
    EXPECT_EQ(row(shownPosition(), checkedOption(), f->Back_Command1->isVisible()), row(position(2), 0, true));

    f->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(f));
    const std::pair<Qt::Key, const char*> keys[] = { { Qt::Key_E, "|0" }, { Qt::Key_C, "c|3" }, { Qt::Key_D, "d|4" } };
    for (auto [key, answered] : keys) { // typed to whatever has the focus; e is not an answer
        QTest::keyClick(QApplication::focusWidget() != nullptr ? QApplication::focusWidget() : f, key);
        EXPECT_EQ(row(s().UserAnswers[2], checkedOption()), answered);
    }
    next();

    back(); // onto an answered position: its answer is checked again
    EXPECT_EQ(row(shownPosition(), checkedOption()), row(position(2), 4));
    s().UserAnswers[1] = ""; // as a restored test can leave it
    back(); // onto an unanswered one: the buttons stay as they are
    EXPECT_EQ(row(shownPosition(), checkedOption(), s().UserAnswers[1]), row(position(1), 4, ""));
    EXPECT_EQ(row(f->Back_Command1->isVisible(), s().HighestReached, t.host.messages.size()), "0|3|1");
}

TEST_F(SessionFlowTest, FinishingOnTheLastQuestionScoresAndOpensTheResults)
{
    startQuiz();
    for (int p = 1; p <= 5; ++p) {
        EXPECT_EQ(text(f->Command2), p == 5 ? "Finish" : "Next Question") << p;
        f->checkOption(1 + p % 4);
        next();
    }
    EXPECT_EQ(row(s().HighestReached, s().QuestionOrder[6] != 0, f->Timer1->isActive(), f->isVisible(),
                  text(f->Num_Label1), shownControls(*f), saved("usr.score1"), saved("usr")),
        "6|1|0|0||ViewAnswer Num_Label1 Option1 Option2 Option3 Option4 Label3 EndExam Back_Command1 Finish "
        "Time_Left TimeLeft |1|0");
    EXPECT_EQ(messages(t.host), ScoreSaved);
    EXPECT_TRUE(topLevel("Form2") != nullptr && t.app->windows.form2.data() == topLevel("Form2"));
}

// --- the countdown -------------------------------------------------------------

TEST_F(SessionFlowTest, RunningOutOfTimeClosesTheOpenDialogAndOpensTheResultsWhoseClosingResets)
{
    startQuiz();
    endExam();
    ASSERT_NE(topLevel("Dialog"), nullptr);
    s().TimeMinutes = 0;
    s().TimeSeconds = 2;
    for (const char* left : { "0:0:1|0|1", "0:0:0|0|1", "0:0:0|1|0" }) {
        f->Timer1_Timer();
        EXPECT_EQ(row(text(f->TimeLeft), t.host.beeps, f->Timer1->isActive()), left);
    }
    // The countdown does not wait for the open dialog.
    EXPECT_EQ(row(f->WebBrowser1->toPlainText().toStdString(),
                  f->WebBrowser1->property("address").toString().toStdString(), f->Timer2->isActive(),
                  f->Timer2->interval(), shownControls(*f), topLevel("Dialog") != nullptr, messages(t.host)),
        "Time Up.|about:<b>Time Up.</b>|1|3000|ViewAnswer Time_Left TimeLeft |1|");
    f->Timer2_Timer();
    TestApp::settle();
    EXPECT_EQ(row(topLevel("Dialog") == nullptr, t.app->windows.Dialog.isNull(), f->Timer2->isActive(), f->isVisible(),
                  topLevel("Form2") != nullptr),
        "1|1|0|0|1");
    EXPECT_EQ(messages(t.host), ScoreSaved);
    for (bool confirm : { false, true }) {
        auto* dialog = new Dialog2(*t.app);
        dialog->show();
        EXPECT_EQ(row(dialog->windowTitle().toStdString(), text(dialog->Command2), text(dialog->Command1),
                      text(dialog->CancelButton)),
            "Exit Explanation Dialog|OK|Cancel|Cancel");
        QTest::mouseClick(confirm ? dialog->Command2 : dialog->Command1, Qt::LeftButton);
        TestApp::settle();
        EXPECT_EQ(row(topLevel("Form2") != nullptr, f->isVisible()), row(!confirm, confirm));
    }
    EXPECT_EQ(row(topLevel("Dialog2") == nullptr, s().TestStarted, t.app->state.questions.QuestionCount), "1|0|0");
    EXPECT_EQ(readFile(t.pageFile()),
        "<font size=5>\r\nSelect a new Domain Quiz or Exam from the file menu to begin\r\n</font>\r\n");
}

TEST_F(SessionFlowTest, ANoTimeTestEndsOnTheFirstTick)
{
    writeFile(t.userDir() + "/option.usr", "1\r\n0\r\n0\r\n0\r\n0\r\n5");
    startQuiz();
    f->Timer1_Timer();
    EXPECT_EQ(row(t.host.beeps, f->Timer2->isActive()), "1|1");
}

// --- ending early and leaving ----------------------------------------------------

// 0: No in the end dialog; 1: Yes, then not saving; 2: Yes, then saving.
class EndEarlyTest : public SessionFlowTest, public ::testing::WithParamInterface<int> { };

TEST_P(EndEarlyTest, NoLeavesTheTestRunningAndYesOffersToSaveThenResetsTheProgram)
{
    const int answer = GetParam();
    startQuiz();
    choose(f->Option3);
    endExam();
    endExam(); // the one dialog comes forward again
    auto* dialog = qobject_cast<Dialog*>(topLevel("Dialog"));
    ASSERT_TRUE(dialog != nullptr && dialog == t.app->windows.Dialog.data());
    EXPECT_EQ(row(captions(*dialog), dialog->isModal()),
        "End Exam|Are you sure you wish to terminate the current Domain Quiz?|Yes|No|0");
    std::string asked;
    t.host.modalScripts.push_back([&](QDialog& form3) {
        asked = captions(form3);
        clickButton(form3, answer == 2 ? "OKButton" : "CancelButton");
    });
    QTest::mouseClick(answer == 0 ? dialog->CancelButton : dialog->OKButton, Qt::LeftButton);
    TestApp::settle();
    EXPECT_EQ(topLevel("Dialog"), nullptr);
    if (answer == 0) {
        EXPECT_EQ(row(f->Timer1->isActive(), s().UserAnswers[1], t.host.modals.size(), shownPosition()),
            row(true, "c", 0, position(1)));
        return;
    }
    EXPECT_EQ(row(t.host.modals.size(), asked, saved("usr"), messages(t.host)),
        row(1, "Save Progress|Would you like to save your progress before continuing?|Yes|No", answer == 2,
            answer == 2 ? ProgressSaved : ""));
    EXPECT_EQ(row(s().TestStarted, f->Timer1->isActive(), f->Command2->isVisible(), f->mnuPrintQuestions->isEnabled(),
                  f->isVisible()),
        "0|0|0|0|1");
}

INSTANTIATE_TEST_SUITE_P(NoOrYesWithoutOrWithSaving, EndEarlyTest, ::testing::Values(0, 1, 2));

TEST_F(SessionFlowTest, ExitOffersToSaveOnlyDuringATestAndCancelKeepsItRunning)
{
    t.host.modalScripts = { click("OKButton") };
    EXPECT_EXIT(f->quitMenuItem->trigger(), ::testing::ExitedWithCode(0), "MODAL Dialog1\nENDED 0\n");
    startQuiz();
    t.host.modalScripts = { click("OKButton"), click("CancelButton") };
    EXPECT_EXIT(f->quitMenuItem->trigger(), ::testing::ExitedWithCode(0), "MODAL Dialog1\nMODAL Form3\nENDED 0\n");
    EXPECT_FALSE(saved("usr"));
    t.host.modalScripts = { click("OKButton"), click("OKButton") };
    EXPECT_EXIT(f->quitMenuItem->trigger(), ::testing::ExitedWithCode(0),
        "MESSAGEBOX\\[Save Progress\\|0\\] Your current progress has been saved\\. \r\n\r\n");
    EXPECT_TRUE(saved("usr"));
    t.host.modalScripts = { click("CancelButton") }; // the scripts above were used up in the children only
    f->quitMenuItem->trigger();
    TestApp::settle();
    EXPECT_EQ(t.host.modals, std::vector<std::string> { "Dialog1" });
    EXPECT_EQ(row(t.app->windows.Dialog1.isNull(), f->isVisible(), f->Timer1->isActive()), "1|1|1");
}

// --- the confirmation texts ----------------------------------------------------

TEST_F(SessionFlowTest, TheConfirmationTextsFollowTheKindOfTest)
{
    const std::string terminate = "Are you sure you wish to terminate the current ",
                      reset = "Are you sure you wish to close the Explanation window? This will reset the ";
    const std::string cases[][3] = { { "KESTA Exam Demo 1", "exam?", "exam" },
        { "kesta quiz demo 2", "Domain Quiz?", "Domain Quiz." }, { "Release notes", "exam?", "exam or quiz." } };
    for (const auto& [name, ending, resetting] : cases) {
        s().TestName = name;
        EXPECT_EQ(
            row(text(Dialog(*t.app).Label1), text(Dialog2(*t.app).Label1)), row(terminate + ending, reset + resetting));
    }
}

// --- printing and the answer window --------------------------------------------------------------------

TEST_F(SessionFlowTest, PrintingGoesInFileOrderAMissingPrinterIsReportedOnceAndTheAnswerWindowIsModal)
{
    startQuiz();
    f->mnuPrintQuestions->trigger();
    std::vector<std::string> inFileOrder;
    for (int i = 1; i <= 5; ++i)
        inFileOrder.push_back(printText(t.app->state.questions.Questions[i], i, 1));
    EXPECT_EQ(t.host.fakePrinter.texts, inFileOrder);
    EXPECT_EQ(row(t.host.fakePrinter.documents, messages(t.host)), "1|");
    t.host.printerInstalled = false;
    f->mnuPrintQuestions->trigger();
    QTest::mouseClick(f->ViewAnswer, Qt::LeftButton); // the answer window is modal and freed after
    TestApp::settle();
    EXPECT_EQ(messages(t.host), box("KESTA DEMO", "There was a problem printing to your printer."));
    EXPECT_EQ(row(t.host.modals == std::vector<std::string> { "Dialog3" }, t.app->windows.Dialog3.isNull(),
                  f->Timer1->isActive()),
        "1|1|1");
}

TEST(QtPrinterTest, PrintsOneDocumentDropsAnAbandonedOneAndCountsPages)
{
    TempDir dir;
    const QString pdf = QString::fromStdString(dir / "questions.pdf");
    auto printer = QtPrinter::toPdf(pdf);
    printer->print("dropped");
    printer->killDoc();
    printer->endDoc(); // nothing left to print: no sheet, no file
    EXPECT_FALSE(fs::exists(pdf.toStdString()));
    QuestionList list;
    list.QuestionCount = 2;
    list.Questions[1] = { "", "What is 1?\tOne.", "", "Because.", "a" };
    list.Questions[2] = { "", "What is 2?", "", "Two.", "b" };
    printQuestionList(list, *printer);
    QProcess pdftotext;
    pdftotext.start("pdftotext", { "-layout", pdf, "-" });
    ASSERT_TRUE(pdftotext.waitForFinished(20000));
    EXPECT_EQ(QString::fromUtf8(pdftotext.readAllStandardOutput()).simplified().toStdString(),
        "Question 1 What is 1? One. Explanation: Because. Answer: a1. Question 2 What is 2? Explanation: Two. Answer: "
        "b1.");

    for (int i = 0; i < 200; ++i)
        printer->print("line " + std::to_string(i));
    EXPECT_GT(printer->pageNumber(), 1);
    printer->endDoc();
    EXPECT_EQ(printer->pageNumber(), 1); // a new document begins
}

} // namespace
} // namespace kesta
