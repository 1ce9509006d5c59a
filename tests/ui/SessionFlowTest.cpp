#include "common/ui/QtPrinter.h"
#include "progress/ui/Form2.h"
#include "session/core/QuestionPrint.h"
#include "session/ui/ConfirmDialogs.h"
#include "support/BankWriter.h"
#include "support/TestApp.h"

#include <QAction>
#include <QApplication>
#include <QButtonGroup>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using test::click;
using test::readFile;
using test::TestApp;
using test::topLevel;
using test::writeFile;

constexpr const char* QuizTitle = "KESTA Quiz Demo - Five";
constexpr const char* ExamTitle = "KESTA Exam Demo - Three";
constexpr const char* ScoreSaved
    = "Your current progress and score has been saved. \r\n\r\nIf you would like to open it at any time, go to the "
      "file menu, select 'View Previous Scores', then choose the appropriate Exam or Domain Quiz.";
constexpr const char* ProgressSaved
    = "Your current progress has been saved. \r\n\r\nIf you would like to open it at any time, go to the file menu, "
      "select 'Load Previous Exam or Domain Quiz', then choose the appropriate chapter.";

std::string text(const QWidget* w)
{
    if (auto* label = qobject_cast<const QLabel*>(w))
        return label->text().toStdString();
    return qobject_cast<const QAbstractButton*>(w)->text().toStdString();
}

void expectMessage(const MessageBoxRequest& m, const std::string& title, const std::string& body)
{
    EXPECT_EQ(m.title, title);
    EXPECT_EQ(m.text, body);
    EXPECT_EQ(m.icon, MessageIcon::None);
    EXPECT_EQ(m.buttons, MessageButtons::Ok);
}

// A program with a five-question quiz and a three-question exam installed
// and the default options, started and showing its idle page.
class SessionFlowTest : public ::testing::Test {
protected:
    SessionFlowTest()
    {
        test::writeNumberedBank(t.questionDir() + "/quiz.kqb", QuizTitle, 5, "bcdab");
        test::writeNumberedBank(t.questionDir() + "/exam.kqb", ExamTitle, 3);
        writeFile(t.userDir() + "/option.usr", "1\r\n0\r\n0\r\n1\r\n30\r\n5");
        f = &t.start();
    }

    SessionState& s() { return t.app->state.session; }
    QuestionList& questions() { return t.app->state.questions; }

    void chooseQuiz()
    {
        f->Review1[0]->trigger();
        TestApp::settle();
    }

    // Chooses the quiz, starts it and keeps the real timer from ticking
    // while the test drives the countdown itself.
    void startQuiz()
    {
        chooseQuiz();
        QTest::mouseClick(f->Start_Test, Qt::LeftButton);
        f->Timer1->setInterval(24 * 3600 * 1000);
        t.host.messages.clear();
    }

    // The page file as the page writer leaves it for position p.
    std::string pageOf(int p)
    {
        std::string question = questions().Questions[s().QuestionOrder[p]].Question;
        for (std::size_t at = question.find('\t'); at != std::string::npos; at = question.find('\t', at))
            question.replace(at, 1, "   ");
        return "<font size=5>\r\n" + question + "\r\n</font>\r\n";
    }

    // Clicks an answer button on its round indicator.
    void choose(QRadioButton* option)
    {
        QTest::mouseClick(option, Qt::LeftButton, {}, QPoint(8, option->height() / 2));
    }
    void next() { QTest::mouseClick(f->Command2, Qt::LeftButton); }
    void back() { QTest::mouseClick(f->Back_Command1, Qt::LeftButton); }

    // Types a key as the user would: it goes to whatever has the focus.
    void type(Qt::Key key)
    {
        QWidget* target = QApplication::focusWidget();
        QTest::keyClick(target != nullptr ? target : f, key);
    }

    int checkedOption() { return f->OptionGroup->checkedId() < 0 ? 0 : f->OptionGroup->checkedId(); }

    std::string header(int p)
    {
        return std::string("Chapter: ") + QuizTitle + " | Question " + std::to_string(p) + " of 5";
    }

    TestApp t;
    Form1* f = nullptr;
};

// --- choosing and starting -----------------------------------------------------

TEST_F(SessionFlowTest, ChoosingAQuizLoadsItAndArmsTheCountdown)
{
    EXPECT_FALSE(f->mnuPrintQuestions->isEnabled());
    chooseQuiz();
    EXPECT_EQ(s().TestName, QuizTitle);
    EXPECT_EQ(s().TestFile, "quiz.kqb");
    EXPECT_EQ(questions().QuestionCount, 5);
    EXPECT_EQ(s().TimeHours, 0); // 90 seconds a question
    EXPECT_EQ(s().TimeMinutes, 7);
    EXPECT_EQ(s().TimeSeconds, 30);
    EXPECT_EQ(text(f->Start_Test), "Start Domain Quiz");
    EXPECT_EQ(text(f->EndExam), "End Domain Quiz");
    EXPECT_EQ(text(f->TimeLeft), "");
    EXPECT_TRUE(f->Start_Test->isVisible());
    EXPECT_TRUE(f->mnuPrintQuestions->isEnabled());
    EXPECT_FALSE(f->Timer1->isActive());
    EXPECT_TRUE(t.host.messages.empty());

    f->Chapter1[0]->trigger();
    EXPECT_EQ(text(f->Start_Test), "Start Exam");
    EXPECT_EQ(text(f->EndExam), "End Exam");
    EXPECT_EQ(s().TestFile, "exam.kqb");
    EXPECT_EQ(questions().QuestionCount, 3);
    EXPECT_EQ(s().TimeMinutes, 4);
    EXPECT_EQ(s().TimeSeconds, 30);
}

TEST(SessionChoiceTest, ATimePerQuestionPast32767SecondsIsFatalAndNamesTheFile)
{
    TestApp t;
    test::writeNumberedBank(t.questionDir() + "/quiz.kqb", QuizTitle, 5);
    writeFile(t.userDir() + "/option.usr", "1\r\n0\r\n10\r\n0\r\n0\r\n5");
    Form1& f = t.start();
    EXPECT_EXIT(f.Review1[0]->trigger(), ::testing::ExitedWithCode(1), "Details: \\[FILE\\]quiz\\.kqb\\. ");
    const std::string log = readFile(t.errorLog());
    EXPECT_NE(log.find("Location: Form1.Review1_Click()"), std::string::npos) << log;
}

TEST_F(SessionFlowTest, StartingAnnouncesTheTestAndShowsTheFirstQuestion)
{
    chooseQuiz();
    QTest::mouseClick(f->Start_Test, Qt::LeftButton);
    ASSERT_EQ(t.host.messages.size(), 1U);
    expectMessage(t.host.messages[0], "KESTA DEMO", "The Domain Quiz will now begin. Press OK to continue.");

    std::set<int> drawn;
    for (int p = 1; p <= 5; ++p)
        drawn.insert(s().QuestionOrder[p]);
    EXPECT_EQ(drawn, (std::set<int> { 1, 2, 3, 4, 5 }));
    EXPECT_EQ(s().CurrentQuestion, 1);
    EXPECT_EQ(s().HighestReached, 0);
    EXPECT_TRUE(s().TestStarted);

    for (QWidget* w : std::initializer_list<QWidget*> { f->ViewAnswer, f->Num_Label1, f->Option1, f->Option2,
             f->Option3, f->Option4, f->Label3, f->EndExam, f->Command2, f->Time_Left, f->TimeLeft })
        EXPECT_TRUE(w->isVisible()) << w->objectName().toStdString();
    EXPECT_FALSE(f->Start_Test->isVisible());
    EXPECT_FALSE(f->Back_Command1->isVisible());
    EXPECT_FALSE(f->Finish->isVisible());
    EXPECT_EQ(checkedOption(), 0);
    EXPECT_TRUE(f->Save_Progress->isEnabled());
    EXPECT_TRUE(f->Timer1->isActive());
    EXPECT_EQ(f->Timer1->interval(), 1000);
    EXPECT_EQ(text(f->Command2), "Next Question");
    EXPECT_EQ(text(f->Num_Label1), header(1));
    EXPECT_EQ(readFile(t.pageFile()), pageOf(1));
}

TEST_F(SessionFlowTest, AnExamAnnouncesItselfAsTheExam)
{
    f->Chapter1[0]->trigger();
    QTest::mouseClick(f->Start_Test, Qt::LeftButton);
    ASSERT_EQ(t.host.messages.size(), 1U);
    expectMessage(t.host.messages[0], "KESTA DEMO", "The exam will now begin. Press OK to continue.");
    EXPECT_EQ(text(f->Num_Label1), std::string("Chapter: ") + ExamTitle + " | Question 1 of 3");
}

// --- answering and moving ------------------------------------------------------

TEST_F(SessionFlowTest, AnswersByButtonAndKeyStayWithTheirPositions)
{
    startQuiz();
    next(); // nothing chosen yet
    ASSERT_EQ(t.host.messages.size(), 1U);
    expectMessage(t.host.messages[0], "KESTA DEMO", "Please choose an answer from the choices below");
    EXPECT_EQ(s().CurrentQuestion, 1);
    EXPECT_EQ(readFile(t.pageFile()), pageOf(1));

    choose(f->Option2);
    EXPECT_EQ(s().UserAnswers[1], "b");
    EXPECT_TRUE(s().OptionBChosen);
    next();
    EXPECT_EQ(s().CurrentQuestion, 2);
    EXPECT_EQ(checkedOption(), 0);
    EXPECT_TRUE(f->Back_Command1->isVisible());
    EXPECT_EQ(text(f->Num_Label1), header(2));
    EXPECT_EQ(readFile(t.pageFile()), pageOf(2));

    f->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(f));
    type(Qt::Key_E); // not an answer
    EXPECT_EQ(s().UserAnswers[2], "");
    type(Qt::Key_C);
    EXPECT_EQ(checkedOption(), 3);
    EXPECT_EQ(s().UserAnswers[2], "c");
    type(Qt::Key_D);
    EXPECT_EQ(s().UserAnswers[2], "d");
    next();
    EXPECT_EQ(checkedOption(), 0);

    back();
    EXPECT_EQ(s().CurrentQuestion, 2);
    EXPECT_EQ(checkedOption(), 4);
    EXPECT_EQ(text(f->Num_Label1), header(2));
    EXPECT_EQ(readFile(t.pageFile()), pageOf(2));
    back();
    EXPECT_EQ(checkedOption(), 2);
    EXPECT_FALSE(f->Back_Command1->isVisible());
    EXPECT_EQ(s().HighestReached, 3);
    EXPECT_TRUE(t.host.messages.size() == 1U);
}

TEST_F(SessionFlowTest, GoingBackToAnUnansweredPositionKeepsTheCheckedButton)
{
    startQuiz();
    choose(f->Option1);
    next();
    choose(f->Option4);
    s().UserAnswers[1] = ""; // as a restored test can leave it
    back();
    EXPECT_EQ(checkedOption(), 4);
    EXPECT_EQ(s().UserAnswers[1], "");
    EXPECT_EQ(readFile(t.pageFile()), pageOf(1));
}

TEST_F(SessionFlowTest, FinishingOnTheLastQuestionScoresAndOpensTheResults)
{
    startQuiz();
    for (int p = 1; p <= 5; ++p) {
        EXPECT_EQ(text(f->Command2), p == 5 ? "Finish" : "Next Question") << p;
        f->checkOption(1 + p % 4);
        next();
    }
    EXPECT_EQ(s().CurrentQuestion, 6);
    EXPECT_EQ(s().HighestReached, 6);
    EXPECT_NE(s().QuestionOrder[6], 0);
    EXPECT_FALSE(f->Timer1->isActive());
    EXPECT_FALSE(f->isVisible());
    EXPECT_EQ(text(f->Num_Label1), "");
    EXPECT_FALSE(f->Command2->isVisibleTo(f));
    EXPECT_TRUE(f->Finish->isVisibleTo(f));
    ASSERT_EQ(t.host.messages.size(), 1U);
    expectMessage(t.host.messages[0], "Save Score", ScoreSaved);
    EXPECT_TRUE(fs::exists(t.userDir() + "/quiz.kqb.usr.score1"));
    EXPECT_FALSE(fs::exists(t.userDir() + "/quiz.kqb.usr"));
    ASSERT_NE(topLevel("Form2"), nullptr);
    EXPECT_EQ(t.app->windows.form2.data(), topLevel("Form2"));
}

// --- the countdown -------------------------------------------------------------

TEST_F(SessionFlowTest, RunningOutOfTimeClosesTheOpenDialogAndOpensTheResults)
{
    startQuiz();
    QTest::mouseClick(f->EndExam, Qt::LeftButton);
    ASSERT_NE(topLevel("Dialog"), nullptr);

    s().TimeMinutes = 0;
    s().TimeSeconds = 2;
    f->Timer1_Timer();
    EXPECT_EQ(text(f->TimeLeft), "0:0:1");
    f->Timer1_Timer();
    EXPECT_EQ(text(f->TimeLeft), "0:0:0");
    EXPECT_EQ(t.host.beeps, 0);
    EXPECT_TRUE(f->Timer1->isActive());

    f->Timer1_Timer();
    EXPECT_EQ(t.host.beeps, 1);
    EXPECT_EQ(text(f->TimeLeft), "0:0:0");
    EXPECT_EQ(f->WebBrowser1->toPlainText().toStdString(), "Time Up.");
    EXPECT_EQ(f->WebBrowser1->property("address").toString().toStdString(), "about:<b>Time Up.</b>");
    EXPECT_FALSE(f->Timer1->isActive());
    EXPECT_TRUE(f->Timer2->isActive());
    EXPECT_EQ(f->Timer2->interval(), 3000);
    for (QWidget* w : std::initializer_list<QWidget*> { f->Back_Command1, f->Command2, f->Num_Label1, f->Option1,
             f->Option2, f->Option3, f->Option4, f->Label3, f->EndExam })
        EXPECT_FALSE(w->isVisible()) << w->objectName().toStdString();
    EXPECT_TRUE(topLevel("Dialog") != nullptr); // the countdown does not wait for it
    EXPECT_TRUE(t.host.messages.empty());

    f->Timer2_Timer();
    TestApp::settle();
    EXPECT_EQ(topLevel("Dialog"), nullptr);
    EXPECT_TRUE(t.app->windows.Dialog.isNull());
    EXPECT_FALSE(f->Timer2->isActive());
    EXPECT_FALSE(f->isVisible());
    ASSERT_NE(topLevel("Form2"), nullptr);
    ASSERT_EQ(t.host.messages.size(), 1U);
    expectMessage(t.host.messages[0], "Save Score", ScoreSaved);
    EXPECT_TRUE(fs::exists(t.userDir() + "/quiz.kqb.usr.score1"));
}

TEST_F(SessionFlowTest, ANoTimeTestEndsOnTheFirstTick)
{
    writeFile(t.userDir() + "/option.usr", "1\r\n0\r\n0\r\n0\r\n0\r\n5");
    startQuiz();
    f->Timer1_Timer();
    EXPECT_EQ(t.host.beeps, 1);
    EXPECT_TRUE(f->Timer2->isActive());
    EXPECT_EQ(text(f->TimeLeft), "0:0:0");
}

// --- ending early and leaving ----------------------------------------------------

class EndEarlyTest : public SessionFlowTest, public ::testing::WithParamInterface<bool> { };

TEST_P(EndEarlyTest, YesOffersToSaveThenResetsTheProgram)
{
    const bool save = GetParam();
    startQuiz();
    QTest::mouseClick(f->EndExam, Qt::LeftButton);
    auto* dialog = qobject_cast<Dialog*>(topLevel("Dialog"));
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowTitle().toStdString(), "End Exam");
    EXPECT_EQ(text(dialog->Label1), "Are you sure you wish to terminate the current Domain Quiz?");
    EXPECT_EQ(text(dialog->OKButton), "Yes");
    EXPECT_EQ(text(dialog->CancelButton), "No");
    EXPECT_FALSE(dialog->isModal());

    std::string question;
    t.host.modalScripts.push_back([&](QDialog& form3) {
        question = form3.windowTitle().toStdString() + "|" + text(form3.findChild<QLabel*>("Label1")) + "|"
            + text(form3.findChild<QPushButton*>("OKButton")) + "|"
            + text(form3.findChild<QPushButton*>("CancelButton"));
        test::clickButton(form3, save ? "OKButton" : "CancelButton");
    });
    QTest::mouseClick(dialog->OKButton, Qt::LeftButton);
    TestApp::settle();

    EXPECT_EQ(t.host.modals, std::vector<std::string> { "Form3" });
    EXPECT_EQ(question, "Save Progress|Would you like to save your progress before continuing?|Yes|No");
    EXPECT_EQ(fs::exists(t.userDir() + "/quiz.kqb.usr"), save);
    if (save) {
        ASSERT_EQ(t.host.messages.size(), 1U);
        expectMessage(t.host.messages[0], "Save Progress", ProgressSaved);
    } else {
        EXPECT_TRUE(t.host.messages.empty());
    }
    EXPECT_EQ(topLevel("Dialog"), nullptr);
    EXPECT_FALSE(s().TestStarted);
    EXPECT_FALSE(f->Timer1->isActive());
    EXPECT_FALSE(f->Command2->isVisible());
    EXPECT_FALSE(f->mnuPrintQuestions->isEnabled());
    EXPECT_TRUE(f->isVisible());
}

INSTANTIATE_TEST_SUITE_P(SaveOrNot, EndEarlyTest, ::testing::Bool());

TEST_F(SessionFlowTest, NoInTheEndDialogLeavesTheTestRunning)
{
    startQuiz();
    choose(f->Option3);
    QTest::mouseClick(f->EndExam, Qt::LeftButton);
    QTest::mouseClick(f->EndExam, Qt::LeftButton); // the one dialog comes forward again
    auto* dialog = qobject_cast<Dialog*>(topLevel("Dialog"));
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog, t.app->windows.Dialog.data());
    QTest::mouseClick(dialog->CancelButton, Qt::LeftButton);
    TestApp::settle();
    EXPECT_EQ(topLevel("Dialog"), nullptr);
    EXPECT_TRUE(f->Timer1->isActive());
    EXPECT_TRUE(s().TestStarted);
    EXPECT_EQ(s().UserAnswers[1], "c");
    EXPECT_EQ(readFile(t.pageFile()), pageOf(1));
    EXPECT_TRUE(t.host.modals.empty());
}

TEST_F(SessionFlowTest, ExitDuringATestAsksAboutProgressThenEnds)
{
    startQuiz();
    t.host.modalScripts = { click("OKButton"), click("CancelButton") };
    EXPECT_EXIT(f->quitMenuItem->trigger(), ::testing::ExitedWithCode(0), "MODAL Dialog1\nMODAL Form3\nENDED 0\n");
    EXPECT_FALSE(fs::exists(t.userDir() + "/quiz.kqb.usr"));

    t.host.modalScripts = { click("OKButton"), click("OKButton") };
    EXPECT_EXIT(f->quitMenuItem->trigger(), ::testing::ExitedWithCode(0),
        "MESSAGEBOX\\[Save Progress\\|0\\] Your current progress has been saved\\. \r\n\r\n");
    EXPECT_TRUE(fs::exists(t.userDir() + "/quiz.kqb.usr"));
}

TEST_F(SessionFlowTest, ExitBeforeAnyTestEndsWithoutAskingAndCancelKeepsEverything)
{
    t.host.modalScripts.push_back(click("OKButton"));
    EXPECT_EXIT(f->quitMenuItem->trigger(), ::testing::ExitedWithCode(0), "MODAL Dialog1\nENDED 0\n");
    t.host.modalScripts.clear(); // the script was used up in the child only

    startQuiz();
    std::string seen;
    t.host.modalScripts.push_back([&](QDialog& d) {
        auto& dialog = dynamic_cast<Dialog1&>(d);
        seen = dialog.windowTitle().toStdString() + "|" + text(dialog.Label1) + "|" + text(dialog.OKButton) + "|"
            + dialog.OKButton->toolTip().toStdString() + "|" + text(dialog.CancelButton);
        test::clickButton(d, "CancelButton");
    });
    f->quitMenuItem->trigger();
    TestApp::settle();
    EXPECT_EQ(seen,
        "Exit KESTA DEMO|Are you sure you wish to exit KESTA DEMO?|OK|Click here to exit KESTA Halvergrove|Cancel");
    EXPECT_EQ(t.host.modals, std::vector<std::string> { "Dialog1" });
    EXPECT_TRUE(t.app->windows.Dialog1.isNull());
    EXPECT_TRUE(f->isVisible());
    EXPECT_TRUE(f->Timer1->isActive());
}

TEST_F(SessionFlowTest, ViewAnswerShowsTheAnswerWindowModally)
{
    startQuiz();
    QTest::mouseClick(f->ViewAnswer, Qt::LeftButton);
    TestApp::settle();
    EXPECT_EQ(t.host.modals, std::vector<std::string> { "Dialog3" });
    EXPECT_TRUE(t.app->windows.Dialog3.isNull());
    EXPECT_TRUE(f->Timer1->isActive());
}

// --- the confirmation dialogs' texts ---------------------------------------------

TEST_F(SessionFlowTest, DialogTextsFollowTheKindOfTest)
{
    struct Case {
        const char* name;
        const char* end;
        const char* close;
    };
    const Case cases[] = {
        { "KESTA Exam Demo 1", "Are you sure you wish to terminate the current exam?",
            "Are you sure you wish to close the Explanation window? This will reset the exam" },
        { "kesta quiz demo 2", "Are you sure you wish to terminate the current Domain Quiz?",
            "Are you sure you wish to close the Explanation window? This will reset the Domain Quiz." },
        { "Release notes", "Are you sure you wish to terminate the current exam?",
            "Are you sure you wish to close the Explanation window? This will reset the exam or quiz." },
    };
    for (const Case& c : cases) {
        s().TestName = c.name;
        Dialog end(*t.app);
        EXPECT_EQ(text(end.Label1), c.end) << c.name;
        Dialog2 close(*t.app);
        EXPECT_EQ(close.windowTitle().toStdString(), "Exit Explanation Dialog");
        EXPECT_EQ(text(close.Label1), c.close) << c.name;
        EXPECT_EQ(text(close.Command2), "OK");
        EXPECT_EQ(text(close.Command1), "Cancel");
        EXPECT_EQ(text(close.CancelButton), "Cancel");
    }
}

TEST_F(SessionFlowTest, ClosingTheResultsResetsAndShowsTheMainWindowAgain)
{
    startQuiz();
    s().TimeMinutes = 0;
    s().TimeSeconds = 0;
    f->Timer1_Timer();
    f->Timer2_Timer();
    ASSERT_NE(topLevel("Form2"), nullptr);

    auto* cancel = new Dialog2(*t.app);
    cancel->show();
    QTest::mouseClick(cancel->Command1, Qt::LeftButton);
    TestApp::settle();
    EXPECT_NE(topLevel("Form2"), nullptr);
    EXPECT_FALSE(f->isVisible());

    auto* confirm = new Dialog2(*t.app);
    confirm->show();
    QTest::mouseClick(confirm->Command2, Qt::LeftButton);
    TestApp::settle();
    EXPECT_EQ(topLevel("Form2"), nullptr);
    EXPECT_EQ(topLevel("Dialog2"), nullptr);
    EXPECT_TRUE(f->isVisible());
    EXPECT_FALSE(s().TestStarted);
    EXPECT_EQ(questions().QuestionCount, 0);
    EXPECT_EQ(readFile(t.pageFile()),
        "<font size=5>\r\nSelect a new Domain Quiz or Exam from the file menu to begin\r\n</font>\r\n");
}

// --- printing --------------------------------------------------------------------

TEST_F(SessionFlowTest, PrintingGoesInFileOrderAndAMissingPrinterIsReportedOnce)
{
    startQuiz();
    f->mnuPrintQuestions->trigger();
    const auto& printed = t.host.fakePrinter.texts;
    ASSERT_EQ(printed.size(), 5U);
    for (int i = 1; i <= 5; ++i) {
        const QuestionRecord& r = questions().Questions[i];
        EXPECT_EQ(printed[static_cast<std::size_t>(i - 1)],
            "Question " + std::to_string(i) + "\r\n" + r.Question + "\r\nExplanation: \r\n" + r.Explanation
                + "\r\nAnswer: \r\n" + r.Answer + "1.");
    }
    EXPECT_NE(printed[0].find("Question 1"), std::string::npos);
    EXPECT_EQ(questions().Questions[3].Answer, "d");
    EXPECT_EQ(t.host.fakePrinter.documents, 1);
    EXPECT_TRUE(t.host.messages.empty());

    t.host.printerInstalled = false;
    f->mnuPrintQuestions->trigger();
    ASSERT_EQ(t.host.messages.size(), 1U);
    expectMessage(t.host.messages[0], "KESTA DEMO", "There was a problem printing to your printer.");
    EXPECT_TRUE(s().TestStarted);
    EXPECT_TRUE(f->Timer1->isActive());
}

TEST(QtPrinterTest, PrintsTheQuestionTextsIntoOneDocumentAndDropsAnAbandonedOne)
{
    test::TempDir dir;
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
    EXPECT_EQ(printer->pageNumber(), 1);
    printQuestionList(list, *printer);
    ASSERT_TRUE(fs::exists(pdf.toStdString()));

    QProcess pdftotext;
    pdftotext.start("pdftotext", { "-layout", pdf, "-" });
    ASSERT_TRUE(pdftotext.waitForFinished(20000));
    const std::string printed = QString::fromUtf8(pdftotext.readAllStandardOutput()).simplified().toStdString();
    EXPECT_EQ(printed,
        "Question 1 What is 1? One. Explanation: Because. Answer: a1. "
        "Question 2 What is 2? Explanation: Two. Answer: b1.");
}

TEST(QtPrinterTest, CountsPagesAsTheTextGrows)
{
    test::TempDir dir;
    auto printer = QtPrinter::toPdf(QString::fromStdString(dir / "long.pdf"));
    for (int i = 0; i < 200; ++i)
        printer->print("line " + std::to_string(i));
    EXPECT_GT(printer->pageNumber(), 1);
    printer->endDoc();
    EXPECT_EQ(printer->pageNumber(), 1); // a new document begins
}

} // namespace
} // namespace kesta
