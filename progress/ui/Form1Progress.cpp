// Saved progress, restoring it and the score history of the main window.
#include "app/ui/Form1.h"
#include "app/ui/Trap.h"
#include "common/core/TestKind.h"
#include "common/ui/Widgets.h"
#include "progress/core/ProgressFile.h"
#include "progress/core/ScoreSlots.h"
#include "progress/core/Scoring.h"
#include "progress/ui/Form2.h"

#include <QAction>
#include <QDateTime>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>

namespace kesta {

namespace {

// The menu named in this message is not the menu's caption; the text stands as users know it.
constexpr const char* ProgressSavedText
    = "Your current progress has been saved. \r\n\r\nIf you would like to open it at any time, go to the file menu, "
      "select 'Load Previous Exam or Domain Quiz', then choose the appropriate chapter.";
constexpr const char* ScoreSavedText
    = "Your current progress and score has been saved. \r\n\r\nIf you would like to open it at any time, go to the "
      "file menu, select 'View Previous Scores', then choose the appropriate Exam or Domain Quiz.";

std::string progressPath(const ProgramState& state, const std::string& testFile)
{
    return state.folders.DataDir + "/User/" + testFile + ".usr";
}

std::string kindWord(const std::string& testName)
{
    switch (kindOf(testName)) {
    case TestKind::Exam:
        return "Exam";
    case TestKind::DomainQuiz:
        return "Domain Quiz";
    case TestKind::Neither:
        break;
    }
    return {};
}

void notify(App& app, const std::string& title, const std::string& text)
{
    app.host.messageBox({ title, text, MessageIcon::None, MessageButtons::Ok });
}

// Resuming a saved test (from the load menus) and reopening a score (from the
// score menu) share every step except the messages, the header and the finish state.
enum class RestoreMode { Resume, Reopen };

void restoreSession(Form1& form, App& app, const std::string& path, const std::string& testName, RestoreMode mode)
{
    ProgramState& state = app.state;
    SessionState& s = state.session;
    const Int16 count = state.questions.QuestionCount;
    const bool resume = mode == RestoreMode::Resume;

    s.QuestionOrder.erase();
    s.UserAnswers.erase();
    state.saved.SavedChars.erase();
    form.Save_Progress->setEnabled(true);
    readSavedChars(path, state.saved);
    form.ViewAnswer->show();
    decodeSavedProgress(state.saved, count, s);

    const std::string kind = kindWord(s.TestName);
    if (resume)
        notify(app, "Load Existing " + kind, "Your previous " + kind + " has been loaded.\r\nPress OK to continue.");
    else
        notify(app, "Open Existing " + kind, "Your previous " + kind + " has been opened.\r\nPress OK to continue.");

    for (QWidget* w : std::initializer_list<QWidget*> {
             form.Num_Label1, form.Option1, form.Option2, form.Option3, form.Option4, form.Label3 })
        w->show();
    form.Back_Command1->setVisible(s.CurrentQuestion >= 2);
    form.EndExam->show();

    const std::string position = " | Question " + std::to_string(s.CurrentQuestion) + " of " + std::to_string(count);
    form.Num_Label1->setText(QString::fromStdString((resume ? testName : "Chapter: " + s.TestName) + position));

    // The page is the record numbered like the position, and the order is made to agree with it.
    form.showPage(expandTabs(state.questions.Questions[s.CurrentQuestion].Question));
    s.QuestionOrder[s.CurrentQuestion] = s.CurrentQuestion;

    if (resume)
        form.Start_Test->hide();
    form.Command2->show();
    form.Time_Left->show();
    form.TimeLeft->show();
    form.Timer1->start();
    form.clearOptions();

    if (s.CurrentQuestion >= std::int64_t { count } + 1) {
        form.Command2->hide();
        form.Finish->show();
        form.Num_Label1->setText("");
        if (resume) {
            notify(app, AppTitle, "Press the 'Finish' button to end and score your " + kind + ".");
            form.showPage("Click 'Finish' to end and score your " + kind
                + ", or click the 'Previous' button to go back and re-check your test");
        }
    }
}

} // namespace

// --- saving ----------------------------------------------------------------

void Form1::Save_Progress_Click()
{
    trap("Save_Progress_Click()", [&] {
        const std::string text = progressText(state_.session, state_.questions.QuestionCount);
        writeUserFile(progressPath(state_, state_.session.TestFile), text);
        notify(app_, "Save Progress", ProgressSavedText);
        writeUserFile(state_.folders.DataDir + "/User/usrdata.usr", state_.saved.UserData);
        Adjust_Menu();
    });
}

void Form1::Save_Score_Click()
{
    trap("Save_Score_Click()", [&] {
        const std::string text = progressText(state_.session, state_.questions.QuestionCount);
        saveScore(app_.data, progressPath(state_, state_.session.TestFile), text);
        notify(app_, "Save Score", ScoreSavedText);
        writeUserFile(state_.folders.DataDir + "/User/usrdata.usr", state_.saved.UserData);
        Adjust_Menu();
    });
}

// --- restoring -------------------------------------------------------------

void Form1::ch01_Click(int Index)
{
    trap("ch01_Click()", [&] {
        Chapter1_Click(Index);
        Restore_PracticeExam(Index);
        state_.session.TestStarted = true;
    });
}

void Form1::r01_Click(int Index)
{
    untrapped(app_.host, [&] {
        Review1_Click(Index);
        RestoreDomainQuiz(Index);
        state_.session.TestStarted = true;
    });
}

void Form1::Restore_PracticeExam(int Index)
{
    trap("Restore_PracticeExam()", [&] {
        const auto& catalogue = state_.catalogues.ExamCatalogue;
        if (!catalogue.inBounds(Index))
            return;
        const CatalogueEntry& entry = catalogue[Index];
        restoreSession(*this, app_, progressPath(state_, entry.FileName), entry.Title, RestoreMode::Resume);
    });
}

// The quiz copy reports under the exam routine's name, as the log has always shown it.
void Form1::RestoreDomainQuiz(int Index)
{
    trap("Restore_PracticeExam()", [&] {
        const auto& catalogue = state_.catalogues.QuizCatalogue;
        if (!catalogue.inBounds(Index))
            return;
        const CatalogueEntry& entry = catalogue[Index];
        restoreSession(*this, app_, progressPath(state_, entry.FileName), entry.Title, RestoreMode::Resume);
    });
}

void Form1::OpenSavedTest(const std::string& path)
{
    untrapped(app_.host, [&] { restoreSession(*this, app_, path, state_.session.TestName, RestoreMode::Reopen); });
}

// --- the score history -----------------------------------------------------

void Form1::ResetScoreMenu()
{
    while (mnuScore01.size() > 1) {
        delete mnuScore01.back();
        mnuScore01.pop_back();
    }
}

void Form1::Check_File_ViewScore(const std::string& file_to_check, const std::string& Title)
{
    trap("Check_File_ViewScore()", [&] {
        if (!app_.data.File_Exists(file_to_check))
            return;
        const QDateTime saved = QFileInfo(QString::fromStdString(file_to_check)).lastModified();
        const QString date = QLocale::system().toString(saved, QLocale::ShortFormat);

        const std::size_t n = mnuScore01.size() - 1;
        QAction* item = mnuScore01[n];
        item->setVisible(true);
        item->setEnabled(true);
        item->setText(ui::literalCaption(QString::fromStdString(Title) + " (Saved on: " + date + ")"));
        item->setData(QString::fromStdString(file_to_check));

        // The next item waits, hidden, for the next score.
        const int next = static_cast<int>(n) + 1;
        QAction* spare = ui::action(mnuViewScore, QString("mnuScore01(%1)").arg(next), "");
        spare->setVisible(false);
        connect(spare, &QAction::triggered, this, [this, next] { mnuScore01_Click(next); });
        mnuScore01.push_back(spare);
    });
}

void Form1::mnuScore01_Click(int Index)
{
    untrapped(app_.host, [&] {
        const std::string path = mnuScore01.at(static_cast<std::size_t>(Index))->data().toString().toStdString();
        const std::string name = FileNameOf(path);
        std::string testFile;
        for (int k = 1; k <= 5; ++k) {
            const auto at = name.find(".usr.score" + std::to_string(k));
            if (at != std::string::npos)
                testFile = name.substr(0, at);
        }
        // An empty catalogue slot never matches, whatever the tag holds.
        auto reopen = [&](const auto& catalogue, auto choose) {
            for (std::int64_t i = catalogue.lowerBound; i <= catalogue.upperBound; ++i) {
                if (!catalogue[i].FileName.empty() && catalogue[i].FileName == testFile) {
                    (this->*choose)(static_cast<int>(i));
                    OpenSavedTest(path);
                    Timer1->stop();
                    hide();
                    Form2::open(app_);
                    return true;
                }
            }
            return false;
        };
        if (!reopen(state_.catalogues.ExamCatalogue, &Form1::Chapter1_Click))
            reopen(state_.catalogues.QuizCatalogue, &Form1::Review1_Click);
    });
}

} // namespace kesta
