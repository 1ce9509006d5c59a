// The real windows driven as a user drives them: each window's controls reach
// the rules and show their outcome, and each window hands over to the next.
// The rules themselves (scoring, moving, the countdown, the files' contents)
// are the core tests' business; a row here checks what reaches the screen.
#include "app/ui/About.h"
#include "app/ui/ConfigWizard.h"
#include "progress/ui/Form2.h"
#include "session/ui/ConfirmDialogs.h"
#include "support/TestApp.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QTextBrowser>
#include <QTimer>
#include <gtest/gtest.h>
#include <set>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using namespace test;

const std::string Answers = "Num_Label1 Time_Left TimeLeft Label3 Option1 Option2 Option3 Option4 ";
const std::string Asking = Answers + "Command2 ViewAnswer EndExam";
const std::string Idle = "Select a new Domain Quiz or Exam from the file menu to begin ";
const std::string Loaded = "Load Existing Domain Quiz: Your previous Domain Quiz has been loaded.\r\nPress OK to "
                           "continue.\n";
const std::string ScoreSaved = "Save Score: Your current progress and score has been saved. \r\n\r\nIf you would like "
    "to open it at any time, go to the file menu, select 'View Previous Scores', then choose the appropriate Exam or "
    "Domain Quiz.\n";

// The files and folders under `root`.
std::set<std::string> files(const std::string& root)
{
    std::set<std::string> all;
    for (const auto& entry : fs::recursive_directory_iterator(root))
        all.insert(fs::relative(entry.path(), root).string());
    return all;
}

// An incomplete installation ends the program at start: a missing data folder
// (or a failed known-folder lookup, which leaves the folders to be sought
// under the working folder, where there are none) with the re-installation
// message; a missing question folder as a logged fatal error. The window
// resets to idle, writing its page, before it tests the folders: the page is
// all that can be written, and only into a log folder that is there.
TEST(StartupTest, AnIncompleteInstallationEndsTheProgram)
{
    const std::string reinstall = "MESSAGEBOX\\[KESTA DEMO\\|0\\] One or more required KESTA DEMO data directories are "
                                  "missing\\. A re-installation of KESTA DEMO is necessary\\.\nENDED 1\n$";
    const std::string tree = "appdata/MORVO/KESTA/All", questions = "program/Questions";
    for (const std::string& missing : std::initializer_list<std::string> {"appdata/MORVO", "appdata/MORVO/KESTA", tree,
             tree + "/Log", tree + "/User", "" /* the known-folder lookup fails */, questions}) {
        SCOPED_TRACE(missing);
        TestApp t;
        missing.empty() ? t.host.appData.reset() : (void)fs::remove_all(t.dir / missing);
        const std::set<std::string> before = files(t.dir.path());
        EXPECT_EXIT((fs::current_path(t.dir.path()), t.start()), ::testing::ExitedWithCode(1), // no folders here either
            missing == questions ? "\\[Brightquiver Error\\|1\\].*\\[76\\].*ENDED 1\n$"
                                 : "kesta-demo: missing data folder: " + (missing.empty() ? "/MORVO" : ".*/" + missing)
                    + "\n" + reinstall);
        std::string written;
        for (const std::string& file : files(t.dir.path()))
            written += before.count(file) ? "" : file + " ";
        EXPECT_EQ(written, missing == questions ? tree + "/Log/ErrorLog.log "
                : missing == tree + "/User" ? tree + "/Log/qtmp.htm " : "");
    }
}

// Answers the positions from the current one on by their buttons ('a' to 'd'), each followed by Next.
void answer(Form1& f, const std::string& letters)
{
    for (char letter : letters)
        click(f.OptionGroup->button(letter - 'a' + 1)), click(f.Command2);
}

// Chooses a test by its menu item, starts it by its button with the countdown out of the way, and answers the
// first positions; returns the look.
std::string take(TestApp& t, QAction* choice, const std::string& letters = "")
{
    Form1& f = *t.app->windows.form1;
    return choice->trigger(), click(f.Start_Test), f.Timer1->setInterval(86400000), answer(f, letters), t.look();
}

// The main window's header, the answer checked, and whether the page shows the question drawn for the position.
std::string at(TestApp& t)
{
    const Form1& f = *t.app->windows.form1;
    const SessionState& s = t.app->state.session;
    const QString drawn = QString("Question %1 ").arg(s.QuestionOrder[s.CurrentQuestion]);
    return row(text(f.Num_Label1), f.OptionGroup->checkedId(), f.WebBrowser1->toPlainText().startsWith(drawn));
}

Form2& results(TestApp& t) { return *qobject_cast<Form2*>(t.app->windows.form2.data()); }
ConfirmDialog& asked(QDialog* dialog) { return *qobject_cast<ConfirmDialog*>(dialog); }

// The results window's score, caption, navigation shown, and the answer given on its page.
std::string review(TestApp& t)
{
    const Form2& r = results(t);
    const QString page = r.WebBrowser1->toPlainText();
    return row(text(r.Label2), text(r.QuestionNumber), r.Expl_Next->isVisible(), r.Expl_Back->isVisible(),
        page.mid(page.indexOf("Your answer: ") + 13, 1).toStdString());
}

struct Row {
    const char* name;
    std::function<std::string(TestApp&, Form1&)> run; // drives the program, started idle; returns all it saw
    std::string expected;
};
void PrintTo(const Row& r, std::ostream* os) { *os << r.name; } // names the row in the test listing

class WindowTest : public ::testing::TestWithParam<Row> { };
TEST_P(WindowTest, ShowsWhatTheRowExpects)
{
    TestApp t;
    EXPECT_EQ(GetParam().run(t, t.start()), GetParam().expected);
}

// Each window's controls reach the rules and show the outcome.
const Row controlRows[] = {
    {"MainWindowOpensIdleWithTheCatalogueClosingItAsksFirstAndAboutNamesTheVersion", [](TestApp& t, Form1&) {
        writeFile(t.user("quiz.kqb.usr"), "000700300309\r\n002004001003005\r\naa"); // a quiz saved, the exam empty
        writeFile(t.user("exam.kqb.usr"), "");
        Form1& f = (t.restart(), t.start());
        std::string seen = row(f.windowTitle().toStdString(), items({f.quitMenuItem, f.AboutItem}), items(f.Chapter1),
            items(f.Review1), items(f.ch01), items(f.r01), items(f.mnuScore01), text(f.statusPanels[2]),
            f.ProgressBar1->geometry() == f.statusPanels[1]->geometry(), f.WebBrowser1->toPlainText().toStdString());
        t.host.modalScripts = {[&](QDialog& d) {
            seen += row("", t.look(), d.windowTitle().toStdString(), text(asked(&d).Label1), text(asked(&d).OKButton));
            click(asked(&d).CancelButton);
        }};
        const bool closed = f.close();
        t.host.modalScripts = {[&](QDialog& d) { // the About box: the version, and no system information here
            seen += row("", d.windowTitle().toStdString(), text(dynamic_cast<frmAbout&>(d).lblVersion));
            click(d.findChild<QWidget*>("cmdSysInfo")), click(d.findChild<QWidget*>("cmdOK"));
        }};
        f.AboutItem->trigger(), settle();
        t.host.modalScripts = {press("OKButton")};
        EXPECT_EXIT(f.close(), ::testing::ExitedWithCode(0), "MODAL Dialog1\nENDED 0");
        return row(seen, closed, t.look());
    }, "KESTA DEMO|[Exit KESTA DEMO][About KESTA DEMO]|[KESTA Exam Demo - Three]|[KESTA Quiz Demo - Five]|[KESTA Exam "
       "Demo - Three(off)]|[KESTA Quiz Demo - Five]|[No scores available(off)]|Ready|1|" + Idle + "|Dialog1 Form1|||"
       "Exit KESTA DEMO|Are you sure you wish to exit KESTA DEMO?|OK|About KESTA DEMO|Version 12.11.23|0|Form1||KESTA DEMO: "
       "System Information Is Unavailable At This Time\n"},
    {"OptionsWizardShowsTheOptionsFinishWritesThemCancelKeepsThem", [](TestApp& t, Form1& f) {
        const std::string file = t.user("option.usr");
        writeFile(file, "7\r\n-2\r\n0\r\n2\r\n15\r\n3\r\n");
        std::string seen;
        auto wizard = [&](std::function<void(Config_Wizard_01&)> act) {
            t.host.modalScripts = {[&](QDialog& d) { act(dynamic_cast<Config_Wizard_01&>(d)); }};
            f.mnuOptions->trigger(), settle();
            return seen += row(readFile(file), t.look(), t.app->windows.Config_Wizard_01.isNull()) + "\n";
        };
        wizard([&](Config_Wizard_01& w) {
            for (QComboBox* list : {w.Combo1, w.Combo2, w.Combo3, w.Combo4})
                seen += list->currentText().toStdString() + " ";
            w.Combo1->setCurrentIndex(9), click(w.Cancel);
        });
        wizard([](Config_Wizard_01& w) {
            w.Combo1->setCurrentIndex(2), w.Combo2->setCurrentIndex(0), w.Combo4->setCurrentIndex(12);
            QTest::keyClicks(w.Combo3, "\b\b45"), click(w.Next); // typed over what the list shows
        });
        EXPECT_EXIT(wizard([](Config_Wizard_01& w) { w.Combo2->setEditText("soon"), click(w.Next); }),
            ::testing::ExitedWithCode(1), "Run-time error '13'");
        return seen + row(readFile(file), exists(t.user("../Log/ErrorLog.log")));
    }, "0 2 15 3 7\r\n-2\r\n0\r\n2\r\n15\r\n3\r\n|Form1|||1\n7\r\n-2\r\n2\r\n0\r\n45\r\n12|Form1||KESTA DEMO: If you "
       "have modified the time per question, the change will take place upon loading a new chapter.\r\n\r\nIf you have "
       "modified the font size, the change will take place when a new question is loaded.\n|1\n"
       "7\r\n-2\r\n2\r\n0\r\n45\r\n12|0"},
};

// Each window hands over to the next.
const Row handOverRows[] = {
    // The main window's and the results window's controls on the way.
    {"AQuizTakenByButtonsAndKeysIsScoredReviewedClosedAndReopenedFromTheScoreMenu", [](TestApp& t, Form1& f) {
        f.Review1[0]->trigger();
        f.mnuPrintQuestions->trigger(); // the questions in file order; then no printer
        t.host.printerInstalled = false;
        f.mnuPrintQuestions->trigger();
        std::string seen = row(text(f.Start_Test), text(f.EndExam), text(f.statusPanels[2]),
            f.WebBrowser1->toPlainText().toStdString(), t.host.fakePrinter.texts.at(4).starts_with("Question 5\r\n"),
            t.host.fakePrinter.documents, t.look()) + "\n";
        click(f.Start_Test), click(f.Command2); // nothing chosen yet
        seen += row(t.look(), at(t)) + "\n";
        answer(f, "b");
        EXPECT_TRUE((f.activateWindow(), QTest::qWaitForWindowActive(&f)));
        auto focus = [&]() -> QWidget* { return QApplication::focusWidget() ? QApplication::focusWidget() : &f; };
        for (Qt::Key letter : {Qt::Key_C, Qt::Key_E, Qt::Key_D}) // typed to whatever has the focus; E is no answer
            key(focus(), letter);
        f.WebBrowser1->setFocus(); // Tab follows the layout, entering the answers once, at the one last focused
        for (int stop = 0; stop < 6; ++stop)
            key(focus(), Qt::Key_Tab), seen += focus()->objectName().toStdString() + " ";
        t.host.modalScripts = {[&](QDialog& d) {
            const QString page = d.findChild<QTextBrowser*>()->toPlainText();
            seen += "\n" + at(t) + "|" + page.section("Explanation", 0, 0).toStdString();
            click(d.findChild<QWidget*>("OK"));
        }};
        click(f.ViewAnswer), click(f.Back_Command1);
        seen += row(t.look(), at(t), f.Back_Command1->isVisible()) + "\n";
        click(f.Command2);
        seen += at(t) + "\n";
        click(f.Command2), answer(f, "dca");
        QPointer<Form2> r = &results(t);
        seen += row(t.look(), review(t)) + "\n";
        for (QPushButton* step : {r->Expl_Next, r->Expl_Back})
            click(step), seen += review(t) + "\n";
        r->close(); // the title bar's close box asks first
        QPointer<QDialog> closing = t.app->windows.Dialog2;
        click(r->Command3); // asking again brings the same question forward
        seen += row(t.look(), closing == t.app->windows.Dialog2, text(asked(closing).Label1)) + "\n";
        key(closing, Qt::Key_Escape); // as No
        seen += row(t.look(), closing.isNull()) + "\n";
        click(r->Command3), click(qobject_cast<Dialog2*>(t.app->windows.Dialog2.data())->Command2);
        seen += row(t.look(), r.isNull(), f.WebBrowser1->toPlainText().toStdString()) + "\n";
        // The score item shows when its slot file was saved.
        const QDateTime saved = QFileInfo(QString::fromStdString(t.user("quiz.kqb.usr.score1"))).lastModified();
        seen += row(text(f.mnuScore01[0]) == "KESTA Quiz Demo - Five (Saved on: "
            + QLocale::system().toString(saved, QLocale::ShortFormat).toStdString() + ")", "");
        f.mnuScore01[0]->trigger();
        return seen + row(t.look(), review(t), f.Timer1->isActive());
    }, "Start Domain Quiz|End Domain Quiz|Ready|Intro one Intro two Intro three |1|1|Form1|Start_Test EndExam|KESTA "
       "DEMO: There was a problem printing to your printer.\n\nForm1|"
       + Asking + "|KESTA DEMO: The Domain Quiz will now begin. Press OK to continue.\nKESTA DEMO: Please choose an "
       "answer from the choices below\n|Chapter: KESTA Quiz Demo - Five | Question 1 of 5|-1|1\n"
       "Option2 Back_Command1 Command2 ViewAnswer EndExam WebBrowser1 \n"
       "Chapter: KESTA Quiz Demo - Five | Question 2 of 5|4|1|Chapter: KESTA Quiz Demo - Five, Question 2 of 5\n\n"
       "Answer: A\n\nForm1|" + Asking + "||Chapter: KESTA Quiz Demo - Five | Question 1 of 5|2|1|0\n"
       "Chapter: KESTA Quiz Demo - Five | Question 2 of 5|4|1\n"
       "Form2||" + ScoreSaved + "|20%|Chapter: KESTA Quiz Demo - Five | Question 1 of 4|1|0|B\n"
       "20%|Chapter: KESTA Quiz Demo - Five | Question 2 of 4|1|1|D\n"
       "20%|Chapter: KESTA Quiz Demo - Five | Question 1 of 4|1|0|B\n"
       "Dialog2 Form2|||1|Are you sure you wish to close the Explanation window? This will reset the Domain Quiz.\n"
       "Form2|||1\nForm1|||1|" + Idle + "\n1|Form2||Open Existing Domain Quiz: Your previous Domain Quiz has been "
       "opened.\r\nPress OK to continue.\n|20%|Chapter: KESTA Quiz Demo - Five | Question 1 of 4|1|0|B|0"},
    // A quiz left in the middle and an exam left past its end, each restored as it was left.
    {"SavedOnLeavingAndLoadedAfterTheRestart", [](TestApp& t, Form1& f) {
        take(t, f.Review1[0], "ab");
        t.host.modalScripts = {press("OKButton"), press("OKButton")}; // exit, and save first
        EXPECT_EXIT(f.quitMenuItem->trigger(), ::testing::ExitedWithCode(0),
            "\\[Save Progress\\|0\\] Your current progress has been saved\\..*MODAL Dialog1\nMODAL Form3\nENDED 0");
        writeFile(t.user("exam.kqb.usr"), "000700400309\r\n001002003\r\nacc");
        Form1& g = (t.restart(), t.start());
        std::string seen = row(readFile(t.user("quiz.kqb.usr")).substr(0, 12), items(g.r01), items(g.ch01)) + "\n";
        g.r01[0]->trigger();
        seen += row(t.look(), text(g.Num_Label1), g.Timer1->isActive()) + "\n";
        click(g.Back_Command1);
        seen += at(t) + "\n";
        g.ch01[0]->trigger();
        seen += row(t.look(), g.WebBrowser1->toPlainText().toStdString()) + "\n";
        click(g.Finish);
        return seen + row(t.look(), text(results(t).Label2));
    }, "000700300330|[KESTA Quiz Demo - Five]|[KESTA Exam Demo - Three]\nForm1|" + Answers + "Back_Command1 Command2 "
       "ViewAnswer EndExam|" + Loaded + "|KESTA Quiz Demo - Five | Question 3 of 5|1\nChapter: KESTA Quiz Demo - "
       "Five | Question 2 of 5|2|1\nForm1|" + Answers + "Back_Command1 Finish ViewAnswer EndExam|Load Existing Exam: "
       "Your previous Exam has been loaded.\r\nPress OK to continue.\nKESTA DEMO: Press the 'Finish' button to end and "
       "score your Exam.\n|Click 'Finish' to end and score your Exam, or click the 'Previous' button to go back and "
       "re-check your test \nForm2||" + ScoreSaved + "|67%"},
    {"TimeUpClosesEveryDialogSavesTheScoreAndOpensTheResults", [](TestApp& t, Form1& f) {
        // The End question is open, and the answer window too, when the time runs out.
        take(t, f.Review1[0]), click(f.EndExam);
        std::string seen;
        t.host.modalScripts = {[&](QDialog& d) {
            QPointer<QDialog> answer(&d);
            (void)QTest::qWaitFor([&] { return f.Timer2->isActive(); });
            seen = row(f.WebBrowser1->toPlainText().toStdString(), t.look(), text(f.TimeLeft), t.host.beeps) + "\n";
            (void)QTest::qWaitFor([&] { return t.app->windows.form2 != nullptr; });
            seen += row(answer && answer->isVisible(), "");
        }};
        t.app->state.session.TimeMinutes = 0, t.app->state.session.TimeSeconds = 2;
        f.Timer1->setInterval(1), f.Timer2->setInterval(1);
        click(f.ViewAnswer);
        return seen + row(t.look(), exists(t.user("quiz.kqb.usr.score1")), f.Timer2->isActive());
    }, "Time Up.|Dialog Dialog3 Form1|Time_Left TimeLeft ViewAnswer||0:0:0|1\n0|Form2||" + ScoreSaved + "|1|0"},
    // Esc and the close box answer No: a confirmation so closed is unloaded and the next one asks afresh.
    {"EachQuestionAnswersByItsButtonsEscAndCloseBoxAndIsLoadedAfresh", [](TestApp& t, Form1& f) {
        std::string seen = take(t, f.Chapter1[0]); // an exam
        click(f.EndExam);
        QPointer<QDialog> end = t.app->windows.Dialog;
        seen += row(end->windowTitle().toStdString(), text(asked(end).Label1), text(asked(end).OKButton),
            text(asked(end).CancelButton), "");
        key(end, Qt::Key_Escape);
        seen += row(t.look(), end.isNull(), f.Timer1->isActive()) + "\n";
        take(t, f.Review1[0]); // then a quiz
        click(f.OptionGroup->button(3)), click(f.EndExam), click(f.EndExam); // the one question comes forward again
        seen += row(t.look(), text(asked(t.app->windows.Dialog).Label1), "");
        t.app->windows.Dialog->close(), settle();
        seen += row(t.look(), t.app->windows.Dialog.isNull(), f.Timer1->isActive(), f.OptionGroup->checkedId()) + "\n";
        f.quitMenuItem->trigger(), click(f.ViewAnswer); // the modal ones take Esc
        t.host.modalScripts = {[&](QDialog& d) {
            seen += row(d.windowTitle().toStdString(), text(asked(&d).Label1), "");
            key(&d, Qt::Key_Escape);
        }};
        click(f.EndExam), click(asked(t.app->windows.Dialog).OKButton);
        for (const std::string& name : t.host.modals)
            seen += name + " ";
        return seen + row(t.look(), exists(t.user("quiz.kqb.usr")));
    }, "Form1|" + Asking + "|KESTA DEMO: The exam will now begin. Press OK to continue.\nEnd Exam|Are you sure you "
       "wish to terminate the current exam?|Yes|No|Form1|" + Asking + "||1|1\nDialog Form1|" + Asking + "||Are you "
       "sure you wish to terminate the current Domain Quiz?|Form1|" + Asking + "||1|1|3\nSave Progress|Would you like "
       "to save your progress before continuing?|Dialog1 Dialog3 Form3 Form1|||0"},
    {"ATestChosenButNeverStartedIsNotOfferedForSaving", [](TestApp& t, Form1& f) {
        take(t, f.Review1[0], "ab");
        f.Save_Progress->trigger();
        const std::string saved = readFile(t.user("quiz.kqb.usr"));
        f.r01[0]->trigger(); // restored: leaving now would offer to save
        f.Chapter1[0]->trigger(); // but another test is chosen instead
        t.host.modalScripts = {press("OKButton")};
        EXPECT_EXIT(f.quitMenuItem->trigger(), ::testing::ExitedWithCode(0), "MODAL Dialog1\nENDED 0");
        click(f.EndExam), click(asked(t.app->windows.Dialog).OKButton);
        return row(t.look(), t.host.modals.size(), exists(t.user("exam.kqb.usr")),
            readFile(t.user("quiz.kqb.usr")) == saved);
    }, "Form1||Save Progress: Your current progress has been saved. \r\n\r\nIf you would like to open it at any time, "
       "go to the file menu, select 'Load Previous Exam or Domain Quiz', then choose the appropriate chapter.\n"
       + Loaded + "|0|0|1"},
};

auto rowName = [](const auto& info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(Controls, WindowTest, ::testing::ValuesIn(controlRows), rowName);
INSTANTIATE_TEST_SUITE_P(HandOvers, WindowTest, ::testing::ValuesIn(handOverRows), rowName);

} // namespace
} // namespace kesta
