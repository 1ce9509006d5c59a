// The real windows driven as a user drives them: each window's controls reach
// the rules and show their outcome, each window hands over to the next, each
// is announced to a screen reader by its captions. The rules themselves
// (scoring, moving, the countdown, the files' contents) are the core tests'
// business; a row here checks what reaches the screen.
#include "app/ui/About.h"
#include "app/ui/ConfigWizard.h"
#include "app/ui/ProgressWindow.h"
#include "app/ui/Splash.h"
#include "common/ui/QtPrinter.h"
#include "common/ui/Widgets.h"
#include "progress/ui/Form2.h"
#include "session/core/QuestionPrint.h"
#include "session/ui/ConfirmDialogs.h"
#include "support/TestApp.h"

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QButtonGroup>
#include <QComboBox>
#include <QDateTime>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QProcess>
#include <QProgressBar>
#include <QTextBrowser>
#include <QTimer>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using namespace test;
using namespace std::chrono;

const std::string Asking = "Num_Label1 TimeLeft Option1 Option2 Option3 Option4 Command2 ViewAnswer EndExam";
const std::string Idle = "Select a new Domain Quiz or Exam from the file menu to begin ";
const std::string Loaded
    = "Load Existing Domain Quiz: Your previous Domain Quiz has been loaded.\r\nPress OK to continue.\n";
const std::string ProgressSaved = "Save Progress: Your current progress has been saved. \r\n\r\nIf you would like to "
    "open it at any time, go to the file menu, select 'Load Previous Exam or Domain Quiz', then choose the appropriate "
    "chapter.\n";
const std::string ScoreSaved = "Save Score: Your current progress and score has been saved. \r\n\r\nIf you would like "
    "to open it at any time, go to the file menu, select 'View Previous Scores', then choose the appropriate Exam or "
    "Domain Quiz.\n";

// --- start-up ------------------------------------------------------------------

// An incomplete installation ends the program at start: a missing data folder
// (or a failed known-folder lookup, which leaves the folders to be sought
// under the working folder, where there are none) with the re-installation
// message; a missing question folder as a logged fatal error.
TEST(StartupTest, AnIncompleteInstallationEndsTheProgram)
{
    const std::string reinstall = "MESSAGEBOX\\[KESTA DEMO\\|0\\] One or more required KESTA DEMO data directories are "
                                  "missing\\. A re-installation of KESTA DEMO is necessary\\.\nENDED 1\n$";
    const std::string tree = "appdata/MORVO/KESTA/All", questions = "program/Questions";
    const std::string folders[] = {"appdata/MORVO", "appdata/MORVO/KESTA", tree, tree + "/Log", tree + "/User",
        "" /* the known-folder lookup fails */, questions};
    const fs::path cwd = fs::current_path();
    for (const std::string& missing : folders) {
        SCOPED_TRACE(missing);
        TestApp t;
        const auto files = [&] {
            std::set<std::string> all;
            for (const auto& entry : fs::recursive_directory_iterator(t.dir.path()))
                all.insert(fs::relative(entry.path(), t.dir.path()).string());
            return all;
        };
        if (missing.empty())
            t.host.appData.reset(), fs::current_path(t.dir.path());
        else
            fs::remove_all(t.dir / missing);
        const std::set<std::string> before = files();
        EXPECT_EXIT(t.start(), ::testing::ExitedWithCode(1),
            missing == questions ? "\\[Brightquiver Error\\|1\\].*\\[76\\].*ENDED 1\n$" : reinstall);
        fs::current_path(cwd);
        std::string written;
        for (const std::string& file : files())
            written += before.count(file) ? "" : file + " ";
        // The window resets to idle, writing its page, before it tests the
        // folders: the page is all that can be written, and only into a log
        // folder that is there.
        EXPECT_EQ(written, missing == questions          ? tree + "/Log/ErrorLog.log "
                           : missing == tree + "/User" ? tree + "/Log/qtmp.htm "
                                                       : "");
    }
}

// --- driving the windows ---------------------------------------------------------

// What the user sees now: the shown windows, the main window's controls (when shown), the messages since the last look.
std::string look(TestApp& t)
{
    const Form1& f = *t.app->windows.form1;
    return row(windows(), f.isVisible() ? controls(f) : "", said(t.host));
}

// Chooses a test by its menu item and starts it by its button, the countdown out of the way; returns what it said.
std::string take(TestApp& t, QAction* choice)
{
    choice->trigger();
    click(t.app->windows.form1->Start_Test);
    t.app->windows.form1->Timer1->setInterval(24 * 3600 * 1000);
    return said(t.host);
}

// Answers the positions from the current one on by their buttons ('a' to 'd'), each followed by Next.
void answer(Form1& f, const std::string& letters)
{
    for (char letter : letters) {
        click(f.OptionGroup->button(letter - 'a' + 1));
        click(f.Command2);
    }
}

// The main window's header, the answer checked, and whether the page shows the question drawn for the position.
std::string at(TestApp& t)
{
    const Form1& f = *t.app->windows.form1;
    const SessionState& s = t.session();
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

// What a score item says of the quiz score saved in this file.
std::string scoreItem(const std::string& file)
{
    const QDateTime saved = QFileInfo(QString::fromStdString(file)).lastModified();
    return "KESTA Quiz Demo - Five (Saved on: " + QLocale::system().toString(saved, QLocale::ShortFormat).toStdString()
        + ")";
}

struct Row {
    const char* name;
    std::function<std::string(TestApp&, Form1&)> run; // drives the program, started idle; returns all it saw
    std::string expected;
};
void PrintTo(const Row& r, std::ostream* os) { *os << r.name; }

class WindowTest : public ::testing::TestWithParam<Row> { };
TEST_P(WindowTest, ShowsWhatTheRowExpects)
{
    TestApp t;
    EXPECT_EQ(GetParam().run(t, t.start()), GetParam().expected);
}

// Each window's controls reach the rules and show the outcome.
const Row controlRows[] = {
    {"MainWindowOpensIdleWithTheCatalogueAndClosingItAsksFirst", [](TestApp& t, Form1&) {
        writeFile(t.user("quiz.kqb.usr"), "000700300309\r\n002004001003005\r\naa"); // a quiz saved, no exam
        writeFile(t.user("exam.kqb.usr"), "");
        t.restart();
        Form1& f = t.start();
        std::string seen = row(f.windowTitle().toStdString(), items({f.quitMenuItem, f.AboutItem}), items(f.Chapter1),
            items(f.Review1), items(f.ch01), items(f.r01), items(f.mnuScore01), text(f.statusPanels[2]),
            f.ProgressBar1->geometry() == f.statusPanels[1]->geometry(), f.WebBrowser1->toPlainText().toStdString());
        t.host.modalScripts = {[&](QDialog& d) {
            seen += row("", look(t), d.windowTitle().toStdString(), text(asked(&d).Label1), text(asked(&d).OKButton));
            click(asked(&d).CancelButton);
        }};
        const bool closed = f.close();
        t.host.modalScripts = {press("OKButton")};
        EXPECT_EXIT(f.close(), ::testing::ExitedWithCode(0), "MODAL Dialog1\nENDED 0");
        return row(seen, closed, look(t));
    }, "KESTA DEMO|[Exit KESTA DEMO][About KESTA DEMO]|[KESTA Exam Demo - Three]|[KESTA Quiz Demo - Five]|[KESTA Exam "
       "Demo - Three(off)]|[KESTA Quiz Demo - Five]|[No scores available(off)]|Ready|1|" + Idle + "|Dialog1 Form1|||"
       "Exit KESTA DEMO|Are you sure you wish to exit KESTA DEMO?|OK|0|Form1||"},
    {"PrintQuestionsPrintsTheQuestionsInFileOrder", [](TestApp& t, Form1& f) {
        take(t, f.Review1[0]);
        f.mnuPrintQuestions->trigger();
        const QuestionList& list = t.app->state.questions;
        std::string inFileOrder, printed;
        for (int i = 1; i <= list.QuestionCount; ++i)
            inFileOrder += printText(list.Questions[i], i, 1) + " ";
        for (const std::string& page : t.host.fakePrinter.texts)
            printed += page + " ";
        t.host.printerInstalled = false;
        f.mnuPrintQuestions->trigger();
        const std::string seen = row(printed == inFileOrder, t.host.fakePrinter.documents, said(t.host));
        const QString pdf = QString::fromStdString(t.dir / "questions.pdf"); // the real printer prints what it is given
        printQuestionList(list, *QtPrinter::toPdf(pdf));
        QProcess pdftotext;
        pdftotext.start("pdftotext", {pdf, "-"});
        pdftotext.waitForFinished(20000);
        const QString paper = QString::fromUtf8(pdftotext.readAllStandardOutput());
        return row(seen, paper.normalized(QString::NormalizationForm_KC).simplified().toStdString()
                == QString::fromStdString(inFileOrder).simplified().toStdString());
    }, "1|1|KESTA DEMO: There was a problem printing to your printer.\n|1"},
    {"OptionsWizardShowsTheOptionsFinishWritesThemCancelKeepsThem", [](TestApp& t, Form1& f) {
        const std::string file = t.user("option.usr");
        writeFile(file, "7\r\n-2\r\n0\r\n2\r\n15\r\n3\r\n");
        auto wizard = [&](std::function<void(Config_Wizard_01&)> act) {
            std::string shown;
            t.host.modalScripts = {[&](QDialog& d) {
                auto& w = dynamic_cast<Config_Wizard_01&>(d);
                for (QComboBox* list : {w.Combo1, w.Combo2, w.Combo3, w.Combo4})
                    shown += list->currentText().toStdString() + " ";
                act(w);
            }};
            f.mnuOptions->trigger();
            settle();
            return row(shown, readFile(file), look(t), t.app->windows.Config_Wizard_01.isNull()) + "\n";
        };
        std::string seen = wizard([](Config_Wizard_01& w) { w.Combo1->setCurrentIndex(9), click(w.Cancel); });
        seen += wizard([](Config_Wizard_01& w) {
            w.Combo1->setCurrentIndex(2), w.Combo2->setCurrentIndex(0), w.Combo4->setCurrentIndex(12);
            QTest::keyClicks(w.Combo3, "\b\b45"); // typed over what the list shows
            click(w.Next);
        });
        EXPECT_EXIT(wizard([](Config_Wizard_01& w) { w.Combo2->setEditText("soon"), click(w.Next); }),
            ::testing::ExitedWithCode(1), "Run-time error '13'");
        return seen + row(readFile(file), exists(t.errorLog()));
    }, "0 2 15 3 |7\r\n-2\r\n0\r\n2\r\n15\r\n3\r\n|Form1|||1\n0 2 15 3 |7\r\n-2\r\n2\r\n0\r\n45\r\n12|Form1||"
       "KESTA DEMO: If "
       "you have modified the time per question, the change will take place upon loading a new chapter.\r\n\r\nIf you "
       "have modified the font size, the change will take place when a new question is loaded.\n|1\n"
       "7\r\n-2\r\n2\r\n0\r\n45\r\n12|0"},
    {"AboutBoxNamesTheProgramAndItsVersion", [](TestApp& t, Form1& f) {
        std::string seen;
        t.host.modalScripts = {[&](QDialog& d) {
            auto& about = dynamic_cast<frmAbout&>(d);
            seen = row(d.windowTitle().toStdString(), text(about.lblTitle), text(about.lblVersion),
                text(about.lblDescription));
            click(about.cmdSysInfo);
            click(about.cmdOK);
        }};
        f.AboutItem->trigger();
        settle();
        return row(seen, look(t), t.app->windows.frmAbout.isNull());
    }, "About KESTA DEMO|KESTA DEMO|Version 12.11.23|KESTA DEMO\nPractice exams and domain quizzes for the KESTA "
       "certification.|Form1||KESTA DEMO: System Information Is Unavailable At This Time\n|1"},
    {"SplashOpensTheMainWindowOnceWhateverDismissesIt", [](TestApp&, Form1&) {
        const std::function<void(frmSplash&)> triggers[] = {[](frmSplash& s) { click(&s); },
            [](frmSplash& s) { click(s.Frame1); }, [](frmSplash& s) { click(s.lblWarning); },
            [](frmSplash& s) { key(&s, Qt::Key_Space); },
            [](frmSplash& s) {
                s.Timer2->setInterval(1);
                (void)QTest::qWaitFor([splash = QPointer<frmSplash>(&s)] { return !splash; }); // gone once it fires
            }};
        std::string seen;
        for (const auto& trigger : triggers) {
            TestApp t; // a program of its own, at its splash
            QPointer<frmSplash> splash = new frmSplash(*t.app);
            splash->show();
            trigger(*splash);
            settle(); // the splash is gone, so nothing can open the main window again
            seen += row(t.app->windows.form1 && t.app->windows.form1->isVisible(), splash.isNull()) + " ";
        }
        return seen;
    }, "1|1 1|1 1|1 1|1 1|1 "},
    {"ProgressWindowRunsItsJobOnce", [](TestApp&, Form1&) {
        QPointer<frmProgressBar> window = new frmProgressBar;
        int runs = 0;
        QObject::connect(window, &frmProgressBar::PerformProcess, [&] {
            ++runs;
            window->Form_Activate(); // a message box during the job gives the focus back
        });
        window->Form_Activate();
        window->Form_Activate();
        settle();
        return row(runs, window.isNull());
    }, "1|1"},
};

// Each window hands over to the next.
const Row handOverRows[] = {
    // The main window's and the results window's controls on the way.
    {"AQuizTakenByButtonsAndKeysIsScoredReviewedClosedAndReopenedFromTheScoreMenu", [](TestApp& t, Form1& f) {
        f.Review1[0]->trigger();
        std::string seen = row(text(f.Start_Test), text(f.EndExam), f.mnuPrintQuestions->isEnabled(),
            text(f.statusPanels[2]), f.WebBrowser1->toPlainText().toStdString(), look(t)) + "\n";
        click(f.Start_Test);
        click(f.Command2); // nothing chosen yet
        seen += row(look(t), at(t)) + "\n";
        answer(f, "b");
        f.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&f));
        for (Qt::Key letter : {Qt::Key_C, Qt::Key_E, Qt::Key_D}) // typed to whatever has the focus; E is no answer
            key(QApplication::focusWidget() ? QApplication::focusWidget() : &f, letter);
        t.host.modalScripts = {[&](QDialog& d) {
            const QString page = d.findChild<QTextBrowser*>()->toPlainText();
            seen += at(t) + "|" + page.section("Explanation", 0, 0).toStdString();
            click(d.findChild<QWidget*>("OK"));
        }};
        click(f.ViewAnswer);
        click(f.Back_Command1);
        seen += row(look(t), t.app->windows.Dialog3.isNull(), at(t), f.Back_Command1->isVisible()) + "\n";
        click(f.Command2);
        seen += at(t) + "\n";
        click(f.Command2);
        answer(f, "dca");
        QPointer<Form2> r = &results(t);
        seen += row(look(t), review(t)) + "\n";
        click(r->Expl_Next);
        seen += review(t) + "\n";
        click(r->Expl_Back);
        seen += review(t) + "\n";
        r->close(); // the title bar's close box asks first
        QPointer<QDialog> closing = t.app->windows.Dialog2;
        click(r->Command3); // asking again brings the same question forward
        seen += row(look(t), closing == t.app->windows.Dialog2, text(asked(closing).Label1)) + "\n";
        click(qobject_cast<Dialog2*>(closing.data())->Command2);
        seen += row(look(t), r.isNull(), f.WebBrowser1->toPlainText().toStdString(),
                    text(f.mnuScore01[0]) == scoreItem(t.user("quiz.kqb.usr.score1"))) + "\n";
        f.mnuScore01[0]->trigger();
        return seen + row(look(t), review(t), f.Timer1->isActive());
    }, "Start Domain Quiz|End Domain Quiz|1|Ready|Intro one Intro two Intro three |Form1|Start_Test EndExam|\nForm1|"
       + Asking + "|KESTA DEMO: The Domain Quiz will now begin. Press OK to continue.\nKESTA DEMO: Please choose an "
       "answer from the choices below\n|Chapter: KESTA Quiz Demo - Five | Question 1 of 5|-1|1\n"
       "Chapter: KESTA Quiz Demo - Five | Question 2 of 5|4|1|Chapter: KESTA Quiz Demo - Five, Question 2 of 5\n\n"
       "Answer: A\n\nForm1|" + Asking + "||1|Chapter: KESTA Quiz Demo - Five | Question 1 of 5|2|1|0\n"
       "Chapter: KESTA Quiz Demo - Five | Question 2 of 5|4|1\n"
       "Form2||" + ScoreSaved + "|20%|Chapter: KESTA Quiz Demo - Five | Question 1 of 4|1|0|B\n"
       "20%|Chapter: KESTA Quiz Demo - Five | Question 2 of 4|1|1|D\n"
       "20%|Chapter: KESTA Quiz Demo - Five | Question 1 of 4|1|0|B\n"
       "Dialog2 Form2|||1|Are you sure you wish to close the Explanation window? This will reset the Domain Quiz.\n"
       "Form1|||1|" + Idle + "|1\nForm2||Open Existing Domain Quiz: Your previous Domain Quiz has been opened.\r\n"
       "Press OK to continue.\n|20%|Chapter: KESTA Quiz Demo - Five | Question 1 of 4|1|0|B|0"},
    {"SavedOnLeavingAndLoadedAfterTheRestart", [](TestApp& t, Form1& f) {
        take(t, f.Review1[0]);
        answer(f, "ab");
        t.host.modalScripts = {press("OKButton"), press("OKButton")}; // exit, and save first
        EXPECT_EXIT(f.quitMenuItem->trigger(), ::testing::ExitedWithCode(0),
            "\\[Save Progress\\|0\\] Your current progress has been saved\\..*MODAL Dialog1\nMODAL Form3\nENDED 0");
        t.restart();
        Form1& g = t.start();
        std::string seen = row(readFile(t.user("quiz.kqb.usr")).substr(0, 12), items(g.r01)) + "\n";
        g.r01[0]->trigger();
        const SessionState& s = t.session();
        seen += row(look(t), text(g.Num_Label1), g.Timer1->isActive(), s.UserAnswers[1] + s.UserAnswers[2]) + "\n";
        click(g.Back_Command1);
        return seen + at(t);
    }, "000700300330|[KESTA Quiz Demo - Five]\nForm1|Num_Label1 TimeLeft Option1 Option2 Option3 Option4 Back_Command1 "
       "Command2 ViewAnswer EndExam|" + Loaded + "|KESTA Quiz Demo - Five "
       "| Question 3 of 5|1|ab\nChapter: KESTA Quiz Demo - Five | Question 2 of 5|2|1"},
    {"RestoredPastTheEndIsFinishedByItsButton", [](TestApp& t, Form1&) {
        writeFile(t.user("quiz.kqb.usr"), "000700600509\r\n001002003004005\r\naaaba");
        t.restart();
        Form1& f = t.start();
        f.r01[0]->trigger();
        const std::string seen = row(look(t), f.WebBrowser1->toPlainText().toStdString()) + "\n";
        click(f.Finish);
        return seen + row(look(t), text(results(t).Label2));
    }, "Form1|Num_Label1 TimeLeft Option1 Option2 Option3 Option4 Back_Command1 Finish ViewAnswer EndExam|" + Loaded
       + "KESTA DEMO: Press the 'Finish' button to end and score your Domain Quiz.\n|Click 'Finish' to end and score "
       "your Domain Quiz, or click the 'Previous' button to go back and re-check your test \nForm2||" + ScoreSaved
       + "|80%"},
    {"TimeUpClosesEveryDialogSavesTheScoreAndOpensTheResults", [](TestApp& t, Form1& f) {
        take(t, f.Review1[0]);
        click(f.EndExam); // the End question is open, and the answer window too, when the time runs out
        std::string seen;
        t.host.modalScripts = {[&](QDialog& d) {
            QPointer<QDialog> answer(&d);
            (void)QTest::qWaitFor([&] { return f.Timer2->isActive(); });
            seen = row(f.WebBrowser1->toPlainText().toStdString(), controls(f), text(f.TimeLeft), t.host.beeps) + "\n";
            (void)QTest::qWaitFor([&] { return t.app->windows.form2 != nullptr; });
            seen += row(answer && answer->isVisible(), "");
        }};
        t.session().TimeMinutes = 0;
        t.session().TimeSeconds = 2;
        f.Timer1->setInterval(1);
        f.Timer2->setInterval(1);
        click(f.ViewAnswer);
        return seen + row(look(t), exists(t.user("quiz.kqb.usr.score1")), f.Timer2->isActive());
    }, "Time Up.|TimeLeft ViewAnswer|0:0:0|1\n0|Form2||" + ScoreSaved + "|1|0"},
    {"TheSixthScoreDropsTheOldestAndEachItemShowsWhenItsScoreWasSaved", [](TestApp& t, Form1& f) {
        auto slot = [&](unsigned k) { return t.user("quiz.kqb.usr.score" + std::to_string(k)); };
        for (unsigned k = 1; k <= 5; ++k) { // five scores, each saved on a day of its own
            writeFile(slot(k), "000000100000\r\n001\r\na");
            const sys_seconds noon = sys_days(year(2021) / 3 / k) + 12h;
            fs::last_write_time(slot(k), fs::file_time_type::clock::from_sys(noon));
        }
        take(t, f.Review1[0]);
        answer(f, "aaaaa");
        std::string shows, carries; // the slot whose time each item shows; the day each slot keeps
        for (QAction* item : f.mnuScore01)
            for (unsigned k = 1; k <= 5 && item->isVisible(); ++k)
                shows += text(item) == scoreItem(slot(k)) ? std::to_string(k) + " " : "";
        for (unsigned k = 1; k <= 5; ++k) {
            const QDate day = QFileInfo(QString::fromStdString(slot(k))).lastModified().date();
            carries += (day.year() == 2021 ? std::to_string(day.day()) : "new") + " ";
        }
        return row(shows, carries);
    }, "1 2 3 4 5 |2 3 4 5 new "},
    {"EachQuestionAnswersByItsButtonsEscAndCloseBoxAndIsLoadedAfresh", [](TestApp& t, Form1& f) {
        std::string seen = take(t, f.Chapter1[0]); // an exam
        click(f.EndExam);
        QPointer<QDialog> end = t.app->windows.Dialog;
        seen += row(look(t), end->windowTitle().toStdString(), text(asked(end).Label1), text(asked(end).OKButton),
            text(asked(end).CancelButton), "");
        key(end, Qt::Key_Escape);
        seen += row(look(t), end.isNull(), f.Timer1->isActive()) + "\n";
        take(t, f.Review1[0]); // then a quiz: its question is loaded afresh
        click(f.OptionGroup->button(3));
        click(f.EndExam);
        click(f.EndExam); // the one question comes forward again
        seen += row(look(t), text(asked(t.app->windows.Dialog).Label1), "");
        click(asked(t.app->windows.Dialog).CancelButton);
        click(f.EndExam);
        t.app->windows.Dialog->close();
        settle();
        seen += row(look(t), t.app->windows.Dialog.isNull(), f.Timer1->isActive(), t.session().UserAnswers[1]) + "\n";
        t.host.modalScripts = {press("OKButton"), press("CancelButton")}; // exit, without saving
        EXPECT_EXIT(f.quitMenuItem->trigger(), ::testing::ExitedWithCode(0), "MODAL Dialog1\nMODAL Form3\nENDED 0");
        t.host.modalScripts.clear(); // those answers were the ended child's
        f.quitMenuItem->trigger(); // the modal ones, answered with Esc
        click(f.ViewAnswer);
        t.host.modalScripts = {[&](QDialog& d) {
            seen += row(d.windowTitle().toStdString(), text(asked(&d).Label1), "");
            key(&d, Qt::Key_Escape);
        }};
        click(f.EndExam);
        click(asked(t.app->windows.Dialog).OKButton);
        seen += row(look(t), exists(t.user("quiz.kqb.usr"))) + "\n";
        take(t, f.Review1[0]);
        answer(f, "aaaaa");
        click(results(t).Command3);
        QPointer<QDialog> closing = t.app->windows.Dialog2;
        key(closing, Qt::Key_Escape);
        for (const std::string& name : t.host.modals)
            seen += name + " ";
        return seen + row(look(t), closing.isNull());
    }, "KESTA DEMO: The exam will now begin. Press OK to continue.\nDialog Form1|" + Asking + "||End Exam|Are you sure "
       "you wish to terminate the current exam?|Yes|No|Form1|" + Asking + "||1|1\nDialog Form1|" + Asking + "||Are you "
       "sure you wish to terminate the current Domain Quiz?|Form1|" + Asking + "||1|1|c\nSave Progress|Would you like "
       "to save your progress before continuing?|Form1|||0\nDialog1 Dialog3 Form3 Form2||" + ScoreSaved + "|1"},
    {"ATestChosenButNeverStartedIsNotOfferedForSaving", [](TestApp& t, Form1& f) {
        take(t, f.Review1[0]);
        answer(f, "ab");
        f.Save_Progress->trigger();
        const std::string saved = readFile(t.user("quiz.kqb.usr"));
        f.r01[0]->trigger(); // restored: leaving now would offer to save
        f.Chapter1[0]->trigger(); // but another test is chosen instead
        t.host.modalScripts = {press("OKButton")};
        EXPECT_EXIT(f.quitMenuItem->trigger(), ::testing::ExitedWithCode(0), "MODAL Dialog1\nENDED 0");
        click(f.EndExam);
        click(asked(t.app->windows.Dialog).OKButton);
        return row(look(t), t.host.modals.size(), exists(t.user("exam.kqb.usr")),
            readFile(t.user("quiz.kqb.usr")) == saved);
    }, "Form1||" + ProgressSaved + Loaded + "|0|0|1"},
};

// --- accessibility -----------------------------------------------------------------

// Shown in `window` and announced on its own (a list's editor and a page's scroll bars belong to their owner).
bool control(const QWidget* w, const QWidget* window)
{
    for (const QWidget* p = w->parentWidget(); p && p != window; p = p->parentWidget())
        if (p->inherits("QComboBox") || p->inherits("QAbstractScrollArea"))
            return false;
    return w->window() == window && w->isVisibleTo(window);
}

// Laid out before: above, or level and to the left.
bool before(const QWidget* a, const QWidget* b, const QWidget* window)
{
    const QRect ra(a->mapTo(window, QPoint()), a->size()), rb(b->mapTo(window, QPoint()), b->size());
    return ra.bottom() < rb.top() || (rb.bottom() >= ra.top() && ra.left() < rb.left());
}

// The controls not announced by their caption without the mnemonic marker (a
// list by the label naming it, a page or a progress bar by the name given
// it, never by its value), then the Tab stops from the one laid out first, "<" marking one that
// goes back up or left. Labels and frames are never reached by Tab.
std::string announced(QWidget* window)
{
    std::string wrong, tabs;
    const QList<QLabel*> labels = window->findChildren<QLabel*>();
    for (QWidget* w : window->findChildren<QWidget*>()) {
        auto named = std::find_if(labels.begin(), labels.end(), [w](QLabel* l) { return l->buddy() == w; });
        const QVariant caption = named != labels.end() ? (*named)->property("text")
            : w->inherits("QProgressBar")                ? QVariant() // its text is its value
                                                         : w->property(w->inherits("QGroupBox") ? "title" : "text");
        const bool frame = !caption.isValid() && w->focusPolicy() == Qt::NoFocus && !w->inherits("QProgressBar");
        if (!control(w, window) || frame)
            continue; // frames are not announced
        const QString name = QAccessible::queryAccessibleInterface(w)->text(QAccessible::Name);
        const QString expected = caption.isValid() ? ui::plainCaption(caption.toString()) : w->accessibleName();
        if (name != expected || (!caption.isValid() && name.isEmpty()))
            wrong += w->objectName().toStdString() + " ";
    }
    std::vector<QWidget*> chain;
    for (QWidget* w = window->nextInFocusChain(); w != window; w = w->nextInFocusChain())
        if (control(w, window) && (w->focusPolicy() & Qt::TabFocus) && w->isEnabled() && !w->focusProxy())
            chain.push_back(w);
    auto first = std::min_element(chain.begin(), chain.end(), [&](auto* a, auto* b) { return before(a, b, window); });
    std::rotate(chain.begin(), first, chain.end());
    for (std::size_t i = 0; i < chain.size(); ++i)
        tabs += (i && before(chain[i], chain[i - 1], window) ? "<" : "") + chain[i]->objectName().toStdString() + " ";
    return wrong + "|" + tabs;
}

// What announced() finds in the next modal dialog, which `open` opens.
std::string modal(TestApp& t, const std::function<void()>& open)
{
    std::string seen;
    t.host.modalScripts = {[&](QDialog& d) { seen = announced(&d); }};
    open();
    return seen;
}

// Each window is announced by its captions and Tab follows its layout.
const Row accessibilityRows[] = {
    // Tab enters the answer buttons once, at the one used last; the arrow keys move among them.
    {"MainWindow", [](TestApp& t, Form1& f) { return take(t, f.Review1[0]), answer(f, "b"), announced(&f); },
        "|WebBrowser1 Option2 Back_Command1 Command2 ViewAnswer EndExam "},
    {"OptionsWizard", [](TestApp& t, Form1& f) { return modal(t, [&] { f.mnuOptions->trigger(); }); },
        "|Combo1 Combo2 Combo3 Combo4 Cancel Next "},
    {"About", [](TestApp& t, Form1& f) { return modal(t, [&] { f.AboutItem->trigger(); }); }, "|cmdOK cmdSysInfo "},
    {"EndQuestionAndAnswerWindow", [](TestApp& t, Form1& f) {
        take(t, f.Review1[0]), click(f.EndExam);
        return announced(t.app->windows.Dialog) + modal(t, [&] { click(f.ViewAnswer); });
    }, "|OKButton CancelButton |WebBrowser1 OK "},
    {"ResultsAndCloseQuestion", [](TestApp& t, Form1& f) {
        take(t, f.Review1[0]), answer(f, "bbbbb"), click(results(t).Expl_Next), click(results(t).Command3);
        return announced(&results(t)) + announced(t.app->windows.Dialog2);
    }, "|WebBrowser1 Command3 Expl_Next Expl_Exit Expl_Back |Command2 Command1 "},
    {"SplashAndProgressWindow", [](TestApp& t, Form1&) {
        frmSplash splash(*t.app);
        frmProgressBar progress;
        return splash.Timer2->stop(), splash.Form_Load(), announced(&splash) + announced(&progress);
    }, "||"},
};

auto rowName = [](const auto& info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(Controls, WindowTest, ::testing::ValuesIn(controlRows), rowName);
INSTANTIATE_TEST_SUITE_P(HandOvers, WindowTest, ::testing::ValuesIn(handOverRows), rowName);
INSTANTIATE_TEST_SUITE_P(Accessibility, WindowTest, ::testing::ValuesIn(accessibilityRows), rowName);

} // namespace
} // namespace kesta
