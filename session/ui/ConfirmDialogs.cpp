#include "session/ui/ConfirmDialogs.h"

#include "app/ui/Form1.h"
#include "common/core/TestKind.h"
#include "common/ui/Widgets.h"

#include <QLabel>
#include <QPushButton>

namespace kesta {

namespace {
constexpr int Width = 420;
constexpr int Height = 150;

// Shows the save question modally, as ending or leaving a started test does.
void offerSave(App& app)
{
    auto* form3 = new Form3(app);
    app.windows.Form3 = form3;
    app.host.execModal(*form3);
    App::unload(form3);
}
} // namespace

ConfirmDialog::ConfirmDialog(
    App& app, const char* name, const char* title, const char* label, const char* okCaption, const char* cancelCaption)
    : QDialog(app.windows.form1)
    , app_(app)
{
    setObjectName(name);
    setWindowTitle(title);
    setFixedSize(Width, Height);
    Label1 = ui::label(this, "Label1", label, QRect(16, 16, Width - 32, 64));
    Label1->setWordWrap(true);
    OKButton = ui::button(this, "OKButton", okCaption, QRect(Width / 2 - 130, 100, 120, 30));
    CancelButton = ui::button(this, "CancelButton", cancelCaption, QRect(Width / 2 + 10, 100, 120, 30));
    ui::setTabChain({OKButton, CancelButton});
    ui::setFontFamily(this, "Arial");
}

Dialog::Dialog(App& app)
    : ConfirmDialog(app, "Dialog", "End Exam", "Are you sure you wish to terminate the current exam?", "Yes", "No")
{
    switch (kindOf(app.state.session.TestName)) {
    case TestKind::Exam:
        Label1->setText("Are you sure you wish to terminate the current exam?");
        break;
    case TestKind::DomainQuiz:
        Label1->setText("Are you sure you wish to terminate the current Domain Quiz?");
        break;
    case TestKind::Neither:
        break;
    }
    connect(OKButton, &QPushButton::clicked, this, [this] { OKButton_Click(); });
    connect(CancelButton, &QPushButton::clicked, this, [this] { CancelButton_Click(); });
}

void Dialog::OKButton_Click()
{
    if (app_.state.session.TestStarted)
        offerSave(app_);
    app_.windows.form1->InitializeVariables();
    App::unload(this);
}

void Dialog::CancelButton_Click()
{
    App::unload(this);
}

Dialog1::Dialog1(App& app)
    : ConfirmDialog(app, "Dialog1", "Exit Quandrel", "Are you sure you wish to exit the Halvergrove?", "OK", "Cancel")
{
    OKButton->setToolTip("Click here to exit KESTA Halvergrove");
    Label1->setText(QString("Are you sure you wish to exit ") + AppTitle + "?");
    setWindowTitle(QString("Exit ") + AppTitle);
    connect(OKButton, &QPushButton::clicked, this, [this] { OKButton_Click(); });
    connect(CancelButton, &QPushButton::clicked, this, [this] { CancelButton_Click(); });
}

void Dialog1::OKButton_Click()
{
    TerminateOK = true;
    if (app_.state.session.TestStarted)
        offerSave(app_);
    app_.host.endProgram(0);
}

void Dialog1::CancelButton_Click()
{
    // Shown modally: ending the dialog returns to its opener, which unloads it.
    QDialog::reject();
}

Dialog2::Dialog2(App& app)
    : ConfirmDialog(app, "Dialog2", "Exit Explanation Dialog",
        "Are you sure you wish to close the Explanation window? This will reset the exam or quiz.", "OK", "Cancel")
{
    // The laid-out OK and Cancel buttons stay without actions; Command2 and Command1 act.
    OKButton->hide();
    CancelButton->hide();
    Command2 = ui::button(this, "Command2", "OK", OKButton->geometry());
    Command1 = ui::button(this, "Command1", "Cancel", CancelButton->geometry());
    ui::setTabChain({Command2, Command1});
    switch (kindOf(app.state.session.TestName)) {
    case TestKind::Exam:
        Label1->setText("Are you sure you wish to close the Explanation window? This will reset the exam");
        break;
    case TestKind::DomainQuiz:
        Label1->setText("Are you sure you wish to close the Explanation window? This will reset the Domain Quiz.");
        break;
    case TestKind::Neither:
        break;
    }
    connect(Command2, &QPushButton::clicked, this, [this] { Command2_Click(); });
    connect(Command1, &QPushButton::clicked, this, [this] { Command1_Click(); });
}

void Dialog2::Command2_Click()
{
    App::unload(app_.windows.form2);
    app_.windows.form1->InitializeVariables();
    app_.windows.form1->show();
    App::unload(this);
}

void Dialog2::Command1_Click()
{
    App::unload(this);
}

Form3::Form3(App& app)
    : ConfirmDialog(
        app, "Form3", "Save Progress", "Would you like to save your progress before continuing?", "Yes", "No")
{
    connect(OKButton, &QPushButton::clicked, this, [this] { OKButton_Click(); });
    connect(CancelButton, &QPushButton::clicked, this, [this] { CancelButton_Click(); });
}

void Form3::OKButton_Click()
{
    app_.windows.form1->Save_Progress_Click();
    accept();
}

void Form3::CancelButton_Click()
{
    QDialog::reject();
}

} // namespace kesta
