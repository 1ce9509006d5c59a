#include "progress/ui/Form2.h"

#include "common/core/ErrorTrap.h"
#include "common/ui/Widgets.h"
#include "progress/core/Scoring.h"
#include "app/ui/PageView.h"
#include "session/ui/ConfirmDialogs.h"

#include <QCloseEvent>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QTextBrowser>
#include <algorithm>

namespace kesta {

namespace {

// Design sizes in pixels (15 twips each).
constexpr int FormWidth = 780;
constexpr int FormHeight = 600;
constexpr int Frame2Width = 700;
constexpr int Frame2Height = 40;
constexpr int BrowserTop = 56;
constexpr int ButtonWidth = 190;
constexpr int ButtonHeight = 30;
constexpr int RowStep = 36;
constexpr int Frame1Width = 2 * ButtonWidth + 36;
constexpr int Frame1Height = 3 * RowStep + 6;

} // namespace

Form2::Form2(App& app)
    : QWidget(nullptr, Qt::Window)
    , app_(app)
{
    setObjectName("Form2");
    setWindowTitle("Results");
    resize(FormWidth, FormHeight);
    buildControls();
    Form_Load();
}

Form2::~Form2() = default;

Form2* Form2::open(App& app)
{
    if (!app.windows.form2)
        app.windows.form2 = new Form2(app);
    auto* window = qobject_cast<Form2*>(app.windows.form2.data());
    window->show();
    window->raise();
    return window;
}

void Form2::buildControls()
{
    Frame2 = ui::frame(this, "Frame2", QRect(0, 8, Frame2Width, Frame2Height));
    Label1 = ui::label(Frame2, "Label1", "Score:", QRect(8, 9, 52, 22));
    Label2 = ui::label(Frame2, "Label2", "", QRect(62, 9, 60, 22));
    QuestionNumber = ui::label(Frame2, "QuestionNumber", "", QRect(140, 9, Frame2Width - 148, 22));
    QFont bold = Label2->font();
    bold.setBold(true);
    Label2->setFont(bold);

    WebBrowser1 = new PageBrowser(this);
    WebBrowser1->setObjectName("WebBrowser1");
    WebBrowser1->setAccessibleName("Results page");
    WebBrowser1->setOpenLinks(false);
    WebBrowser1->setGeometry(0, BrowserTop, FormWidth - ui::twips(1400), 300);

    // Two columns: print, close and exit on the left; next and back on the
    // right, level with the second and third left buttons.
    Frame1 = ui::frame(this, "Frame1", QRect(0, 0, Frame1Width, Frame1Height));
    const int left = 12;
    const int right = left + ButtonWidth + 12;
    auto row = [](int r) { return 3 + r * RowStep; };
    cmdPrintQuestions
        = ui::button(Frame1, "cmdPrintQuestions", "Print Questions", QRect(left, row(0), ButtonWidth, ButtonHeight));
    Command3 = ui::button(Frame1, "Command3", "Close Explanation", QRect(left, row(1), ButtonWidth, ButtonHeight),
        "Click here to close the Explanation window and return to the main screen");
    Expl_Exit = ui::button(Frame1, "Expl_Exit", "Exit", QRect(left, row(2), ButtonWidth, ButtonHeight),
        "Click here to exit KESTA Halvergrove");
    Expl_Next = ui::button(Frame1, "Expl_Next", "Next Explanation", QRect(right, row(1), ButtonWidth, ButtonHeight),
        "Click here to see the explaination for the next question you answered incorrectly");
    Expl_Back = ui::button(Frame1, "Expl_Back", "Previous Explanation", QRect(right, row(2), ButtonWidth, ButtonHeight),
        "Click here to see the explaination for the previous question");
    cmdPrintQuestions->hide();
    Expl_Next->hide();
    Expl_Back->hide();
    // Tab goes row by row, left to right, not column by column as the buttons were made.
    ui::setTabChain({WebBrowser1, cmdPrintQuestions, Command3, Expl_Next, Expl_Exit, Expl_Back});

    for (QWidget* w : { static_cast<QWidget*>(Frame1), static_cast<QWidget*>(Frame2) })
        ui::setFontFamily(w, "Arial");

    connect(Command3, &QPushButton::clicked, this, [this] { Command3_Click(); });
    connect(Expl_Exit, &QPushButton::clicked, this, [this] { Expl_Exit_Click(); });
    connect(Expl_Next, &QPushButton::clicked, this, [this] { Expl_Next_Click(); });
    connect(Expl_Back, &QPushButton::clicked, this, [this] { Expl_Back_Click(); });
}

void Form2::Form_Load()
{
    untrapped(app_.host, [&] {
        ProgramState& s = app_.state;
        ReviewState& review = s.review;
        review.ScorePercent = 0;
        Expl_Exit->setText(QString("Exit ") + AppTitle);

        ReviewPosition = scoreSession(s.session, s.questions, review);
        Label2->setText(QString::number(review.ScorePercent) + "%");

        // Decided on the rounded percentage: one wrong answer in 200 still gets this page.
        if (review.ScorePercent == 100) {
            showAddress(*WebBrowser1, PerfectScoreAddress);
        } else {
            showReviewCaption(1);
            showPage(reviewPage(s.session, s.questions, ReviewPosition));
            if (review.WrongCount >= 2)
                Expl_Next->show();
        }
        review.ReviewIndex = 1;
    });
}

void Form2::Expl_Next_Click()
{
    untrapped(app_.host, [&] {
        ProgramState& s = app_.state;
        ReviewState& review = s.review;
        review.ReviewIndex = add16(review.ReviewIndex, 1);
        if (review.ReviewIndex == review.WrongCount)
            Expl_Next->hide();
        if (review.ReviewIndex > 1)
            Expl_Back->show();

        const Int16 found = nextIncorrect(s.session, s.questions, ReviewPosition);
        if (found == 0)
            return;
        ReviewPosition = found;
        showReviewCaption(review.ReviewIndex);
        if (s.session.QuestionOrder[ReviewPosition] != 0)
            showPage(reviewPage(s.session, s.questions, ReviewPosition));
        else
            showPage(reviewPageNone(s.questions));
    });
}

void Form2::Expl_Back_Click()
{
    untrapped(app_.host, [&] {
        ProgramState& s = app_.state;
        ReviewState& review = s.review;
        review.ReviewIndex = sub16(review.ReviewIndex, 1);
        if (review.ReviewIndex < review.WrongCount) {
            Expl_Back->show();
            Expl_Next->show();
        }
        const Int16 found = previousIncorrect(s.session, s.questions, ReviewPosition);
        if (found != 0) {
            ReviewPosition = found;
            showReviewCaption(review.ReviewIndex);
            showPage(reviewPage(s.session, s.questions, ReviewPosition));
        }
        if (review.ReviewIndex < 2)
            Expl_Back->hide();
    });
}

void Form2::Command3_Click()
{
    // Modeless: a second request only brings the open confirmation forward.
    if (!app_.windows.Dialog2 || app_.windows.Dialog2->isHidden())
        app_.windows.Dialog2 = new Dialog2(app_);
    app_.windows.Dialog2->show();
    app_.windows.Dialog2->raise();
    app_.windows.Dialog2->activateWindow();
}

void Form2::Expl_Exit_Click()
{
    QPointer<Dialog1> dialog = new Dialog1(app_);
    app_.windows.Dialog1 = dialog.data();
    app_.host.execModal(*dialog);
    // "OK" ends the program inside the dialog; "Cancel" comes back here.
    App::unload(dialog);
}

void Form2::showReviewCaption(Int16 rank)
{
    const ProgramState& s = app_.state;
    QuestionNumber->setText(QString::fromStdString(reviewCaption(s.session.TestName, rank, s.review.WrongCount)));
}

void Form2::showPage(std::string text)
{
    showPageText(app_, *WebBrowser1, std::move(text));
}

void Form2::ArrangeControls()
{
    ui::arrangePage(*this, size(), WebBrowser1, Frame1, Frame2);
}

void Form2::Form_Resize()
{
    trapFatal(app_.reporter, "Form2", "Form_Resize()", [&] { ArrangeControls(); });
}

void Form2::closeEvent(QCloseEvent* event)
{
    // The title bar's close button asks like "Close Explanation"; confirming there unloads the window.
    event->ignore();
    Command3_Click();
}

void Form2::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    Form_Resize();
}

} // namespace kesta
