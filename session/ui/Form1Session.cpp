// The session routines of the main window: choosing and starting a test,
// answering, moving between questions, the countdown, finishing and the
// windows that confirm or show something on the way. The rules live in
// session/core; these routines read the controls and apply the outcome.
#include "app/ui/Form1.h"
#include "app/ui/Trap.h"
#include "common/core/TestKind.h"
#include "progress/ui/Dialog3.h"
#include "progress/ui/Form2.h"
#include "session/core/Countdown.h"
#include "session/core/Navigation.h"
#include "session/core/QuestionDraw.h"
#include "session/core/QuestionPrint.h"
#include "session/ui/ConfirmDialogs.h"

#include <QAction>
#include <QButtonGroup>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <initializer_list>

namespace kesta {

namespace {

constexpr const char* ExamStartMessage = "The exam will now begin. Press OK to continue.";
constexpr const char* QuizStartMessage = "The Domain Quiz will now begin. Press OK to continue.";
constexpr const char* ChooseAnswerMessage = "Please choose an answer from the choices below";
constexpr const char* PrintFailedMessage = "There was a problem printing to your printer.";
constexpr const char* TimeUpAddress = "about:<b>Time Up.</b>";

void setWidgetsVisible(std::initializer_list<QWidget*> widgets, bool visible)
{
    for (QWidget* w : widgets)
        w->setVisible(visible);
}

// The details a choice routine logs: the question file it was loading.
template <std::int64_t Hi> std::string fileDetails(const FixedArray<CatalogueEntry, 0, Hi>& catalogue, int index)
{
    const std::string name = catalogue.inBounds(index) ? catalogue[index].FileName : std::string();
    return "[FILE]" + name + ".";
}

// Chooses entry `index` of a catalogue: back to idle, load its questions and
// arm the countdown. The entry is read only after the reset, so an index
// outside the catalogue fails there.
template <std::int64_t Hi>
void chooseTest(Form1& form, ProgramState& state, const FixedArray<CatalogueEntry, 0, Hi>& catalogue, int index,
    const char* endCaption, const char* startCaption)
{
    form.TimeLeft->setText("");
    form.Initialize();
    form.ReadOptions();
    const CatalogueEntry entry = catalogue[index];
    form.ReadFile(state.folders.questionFolder() + entry.FileName);
    state.session.TestName = entry.Title;
    state.session.TestFile = entry.FileName;
    armCountdown(state.session, state.options, state.questions.QuestionCount);
    form.EndExam->setText(endCaption);
    form.Start_Test->setText(startCaption);
    form.mnuPrintQuestions->setEnabled(true);
}

// Loads a dialog that shows itself modally and is unloaded when it returns.
template <typename D> void runModal(App& app, QPointer<QDialog>& slot)
{
    QPointer<D> dialog = new D(app);
    slot = dialog.data();
    app.host.execModal(*dialog);
    // The dialog may already be gone: running out of time unloads every dialog.
    App::unload(dialog);
}

} // namespace

// --- choosing and starting -------------------------------------------------

void Form1::Chapter1_Click(int Index)
{
    trap(
        "Chapter1_Click()",
        [&] { chooseTest(*this, state_, state_.catalogues.ExamCatalogue, Index, "End Exam", "Start Exam"); },
        fileDetails(state_.catalogues.ExamCatalogue, Index));
}

void Form1::Review1_Click(int Index)
{
    trap(
        "Review1_Click()",
        [&] {
            chooseTest(*this, state_, state_.catalogues.QuizCatalogue, Index, "End Domain Quiz", "Start Domain Quiz");
        },
        fileDetails(state_.catalogues.QuizCatalogue, Index));
}

void Form1::Start_Test_Click()
{
    trap("Start_Test_Click()", [&] {
        SessionState& s = state_.session;
        const Int16 count = state_.questions.QuestionCount;
        s.CurrentQuestion = 1;
        s.HighestReached = 0;
        s.RandomPick = 1;
        QuestionDraw draw([this] { return app_.host.randomSeed(); });
        shuffleQuestions(s, count, draw);

        switch (kindOf(s.TestName)) {
        case TestKind::Exam:
            app_.host.messageBox({ AppTitle, ExamStartMessage });
            break;
        case TestKind::DomainQuiz:
            app_.host.messageBox({ AppTitle, QuizStartMessage });
            break;
        case TestKind::Neither:
            break;
        }

        setWidgetsVisible({ ViewAnswer, Num_Label1, Option1, Option2, Option3, Option4, Label3, EndExam }, true);
        Start_Test->hide();
        Save_Progress->setEnabled(true);
        s.TestStarted = true;
        setWidgetsVisible({ Command2, Time_Left, TimeLeft }, true);
        Timer1->start();
        clearOptions();

        Num_Label1->setText(QString::fromStdString(headerText(s.TestName, s.CurrentQuestion, count)));
        showPage(pageText(s, state_.questions, 1));
    });
}

// --- answering ---------------------------------------------------------------

// The answer buttons and keys have no trap of their own: a failure takes the
// default path instead of escaping into the toolkit's signal delivery.
void Form1::Option1_Click()
{
    untrapped(app_.host, [&] { recordAnswer(state_.session, 1); });
}

void Form1::Option2_Click()
{
    untrapped(app_.host, [&] { recordAnswer(state_.session, 2); });
}

void Form1::Option3_Click()
{
    untrapped(app_.host, [&] { recordAnswer(state_.session, 3); });
}

void Form1::Option4_Click()
{
    untrapped(app_.host, [&] { recordAnswer(state_.session, 4); });
}

void Form1::Form_KeyPress(int keyAscii)
{
    if (const int option = optionForKey(keyAscii))
        checkOption(option);
}

// --- moving between questions --------------------------------------------

void Form1::Command2_Click()
{
    trap("Command2_Click()", [&] {
        SessionState& s = state_.session;
        const Int16 count = state_.questions.QuestionCount;
        const bool answered = OptionGroup->checkedButton() != nullptr;
        if (!answered)
            app_.host.messageBox({ AppTitle, ChooseAnswerMessage });

        QuestionDraw draw([this] { return app_.host.randomSeed(); });
        const NextStep step = goNext(s, count, answered, draw);
        if (step.moved) {
            if (step.restore != 0)
                checkOption(step.restore);
            else
                clearOptions();
            if (step.showBack)
                Back_Command1->show();
        }

        Command2->setText(step.caption);
        if (!step.pastEnd) {
            Finish->hide();
            Num_Label1->setText(QString::fromStdString(headerText(s.TestName, s.CurrentQuestion, count)));
            showPage(pageText(s, state_.questions, s.CurrentQuestion));
        } else {
            Command2->hide();
            Finish->show();
            Num_Label1->setText("");
            Finish_Click();
        }
    });
}

void Form1::Back_Command1_Click()
{
    trap("Back_Command1_Click()", [&] {
        SessionState& s = state_.session;
        const Int16 count = state_.questions.QuestionCount;
        const BackStep step = goBack(s, count);
        if (step.restore != 0)
            checkOption(step.restore);
        if (step.hideFinish)
            Finish->hide();
        Num_Label1->setText(QString::fromStdString(headerText(s.TestName, s.CurrentQuestion, count)));
        if (step.hideBack) {
            Back_Command1->hide();
        } else if (step.showNext) {
            Command2->setText(NextQuestionCaption);
            Command2->show();
        }
        showPage(pageText(s, state_.questions, s.CurrentQuestion));
    });
}

// --- the countdown -------------------------------------------------------------

void Form1::Timer1_Timer()
{
    trap("Timer1_Timer()", [&] {
        SessionState& s = state_.session;
        if (timeIsUp(s)) {
            app_.host.beep();
            setWidgetsVisible(
                { Back_Command1, Command2, Num_Label1, Option1, Option2, Option3, Option4, Label3 }, false);
            navigate(TimeUpAddress);
            Timer2->start();
            Timer1->stop();
            EndExam->hide();
        }
        countDownOneSecond(s);
        TimeLeft->setText(QString::fromStdString(timeCaption(s)));
    });
}

void Form1::Timer2_Timer()
{
    untrapped(app_.host, [&] {
        // No dialog may stay open over the results.
        Windows& w = app_.windows;
        for (QWidget* window : std::initializer_list<QWidget*> {
                 w.Config_Wizard_01, w.Dialog, w.Dialog1, w.Dialog2, w.Dialog3, w.Form3, w.frmAbout })
            App::unload(window);
        Save_Score_Click();
        hide();
        Form2::open(app_);
        Timer2->stop();
    });
}

// --- finishing and the windows on the way ----------------------------------------

void Form1::Finish_Click()
{
    trap("Finish_Click()", [&] {
        Timer1->stop();
        Save_Score_Click();
        hide();
        Form2::open(app_);
    });
}

void Form1::EndExam_Click()
{
    trap("EndExam_Click()", [&] {
        // Modeless: the test and its countdown go on while the question is
        // open. An open one comes forward; a closed one is loaded afresh.
        if (!app_.windows.Dialog || app_.windows.Dialog->isHidden())
            app_.windows.Dialog = new Dialog(app_);
        app_.windows.Dialog->show();
        app_.windows.Dialog->raise();
    });
}

void Form1::ViewAnswer_Click()
{
    trap("ViewAnswer_Click()", [&] { runModal<Dialog3>(app_, app_.windows.Dialog3); });
}

void Form1::quitMenuItem_Click()
{
    trap("quitMenuItem_Click()", [&] { runModal<Dialog1>(app_, app_.windows.Dialog1); });
}

// --- printing --------------------------------------------------------------------

void Form1::PrintQuestions()
{
    // Any failure abandons the job and says so once; the test itself goes on.
    Printer* printer = nullptr;
    try {
        printer = app_.host.printer();
        if (printer == nullptr)
            throw RuntimeError(482, "Printer error");
        printQuestionList(state_.questions, *printer);
    } catch (const std::exception&) {
        if (printer != nullptr)
            printer->killDoc();
        app_.host.messageBox({ AppTitle, PrintFailedMessage });
    }
}

} // namespace kesta
