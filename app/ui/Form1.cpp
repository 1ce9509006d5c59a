#include "app/ui/Form1.h"

#include "app/ui/PageView.h"
#include "app/ui/Trap.h"
#include "common/ui/Widgets.h"
#include "session/ui/ConfirmDialogs.h"

#include <QAction>
#include <QApplication>
#include <QButtonGroup>
#include <QCloseEvent>
#include <QFrame>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QStatusBar>
#include <QTextBrowser>
#include <QTimer>
#include <cstdio>

namespace kesta {

namespace {

constexpr const char* IdleText = "Select a new Domain Quiz or Exam from the file menu to begin";

// Design sizes of the main window and its frames, in pixels (15 twips each).
constexpr int FormWidth = 860;
constexpr int FormHeight = 640;
constexpr int Frame1Width = 720;
constexpr int Frame1Height = 150;
constexpr int Frame2Width = 720;
constexpr int Frame2Height = 44;
constexpr int BrowserTop = 56;

} // namespace

Form1::Form1(App& app) : app_(app), state_(app.state)
{
    setObjectName("Form1");
    resize(FormWidth, FormHeight);
    buildMenus();
    buildControls();
    connectRoutines();
}

Form1::~Form1() = default;

void Form1::buildMenus()
{
    // The fixed captions carry keyboard mnemonics; Qt shows the marker only as
    // an underline, and screen readers announce the caption without it. The
    // catalogue and score items take their captions from the files and get none.
    QMenuBar* bar = menuBar();
    mnuFile = ui::menu(bar, "mnuFile", "&File");
    mnuNew = ui::menu(mnuFile, "mnuNew", "&New Domain Quiz or Exam");
    mnuPracticeExams = ui::menu(mnuNew, "mnuPracticeExams", "Select &Exam");
    mnuReviewQuizzes = ui::menu(mnuNew, "mnuReviewQuizzes", "Select Domain &Quiz");
    Restore = ui::menu(mnuFile, "Restore", "&Load Previous Domain Quiz or Exam");
    mnuLoadP = ui::menu(Restore, "mnuLoadP", "Load &Exam");
    mnuLoadReview = ui::menu(Restore, "mnuLoadReview", "Load Domain &Quiz");
    mnuViewScore = ui::menu(mnuFile, "mnuViewScore", "&View Previous Scores");
    mnuFile->addSeparator();
    Save_Progress = ui::action(mnuFile, "Save_Progress", "&Save Domain Quiz or Exam Progress");
    mnuPrintQuestions = ui::action(mnuFile, "mnuPrintQuestions", "&Print Questions");
    mnuOptions = ui::action(mnuFile, "mnuOptions", "&Options");
    mnuFile->addSeparator();
    quitMenuItem = ui::action(mnuFile, "quitMenuItem", "E&xit");
    mnuHelp = ui::menu(bar, "mnuHelp", "&Help");
    AboutItem = ui::action(mnuHelp, "AboutItem", "&About");

    // Item arrays: more items than catalogue slots, all hidden until filled.
    auto fill = [](QMenu* parent, std::vector<QAction*>& items, const char* name, const char* caption, int count,
                   bool enabled) {
        for (int i = 0; i < count; ++i) {
            QAction* item = ui::action(parent, QString("%1(%2)").arg(name).arg(i), caption);
            item->setVisible(false);
            item->setEnabled(enabled);
            items.push_back(item);
        }
    };
    fill(mnuPracticeExams, Chapter1, "Chapter1", "Exam 1", ExamMenuItems, true);
    fill(mnuReviewQuizzes, Review1, "Review1", "Quiz 1", QuizMenuItems, true);
    fill(mnuLoadP, ch01, "ch01", "Exam 1", ExamMenuItems, false);
    fill(mnuLoadReview, r01, "r01", "Quiz 1", QuizMenuItems, false);
    mnuScore01.push_back(ui::action(mnuViewScore, "mnuScore01(0)", "No scores available"));
}

void Form1::buildControls()
{
    auto* central = new QWidget(this);
    central->setObjectName("ClientArea");
    setCentralWidget(central);

    Frame2 = ui::frame(central, "Frame2", QRect(0, 6, Frame2Width, Frame2Height));
    Num_Label1 = ui::label(Frame2, "Num_Label1", "", QRect(8, 12, 500, 22));
    Time_Left = ui::label(Frame2, "Time_Left", "Time Left:", QRect(540, 12, 80, 22), "Time Left");
    TimeLeft = ui::label(Frame2, "TimeLeft", "", QRect(624, 12, 90, 22), "Time Left");

    WebBrowser1 = new PageBrowser(central);
    WebBrowser1->setObjectName("WebBrowser1");
    WebBrowser1->setAccessibleName("Question page");
    WebBrowser1->setOpenLinks(false);
    WebBrowser1->move(0, BrowserTop); // the layout gives it its size and centres it

    Frame1 = ui::frame(central, "Frame1", QRect(0, 0, Frame1Width, Frame1Height));
    Label3 = ui::label(Frame1, "Label3", "Choose the best answer and select the corresponding letter below.",
                       QRect(12, 8, 696, 22), "Choose an answer from the letters below:");
    OptionGroup = new QButtonGroup(this);
    OptionGroup->setObjectName("OptionGroup");
    const char* letters[] = {"A", "B", "C", "D"};
    QRadioButton** options[] = {&Option1, &Option2, &Option3, &Option4};
    for (int i = 0; i < 4; ++i) {
        *options[i] = ui::radio(Frame1, QString("Option%1").arg(i + 1), letters[i], QRect(180 + i * 100, 38, 80, 26));
        OptionGroup->addButton(*options[i]);
    }
    Back_Command1 = ui::button(Frame1, "Back_Command1", "Previous Question", QRect(12, 80, 160, 30),
                               "Click here to go to the previous question");
    Command2 = ui::button(Frame1, "Command2", "Next Question", QRect(184, 80, 160, 30),
                          "Click here to go to the next question");
    Finish = ui::button(Frame1, "Finish", "Finish", QRect(184, 80, 160, 30),
                        "Press this button to score your exam and display explainations for incorrectly answered "
                        "questions");
    Start_Test = ui::button(Frame1, "Start_Test", "Start Test", QRect(356, 80, 160, 30),
                            "Click here to begin the test");
    ViewAnswer = ui::button(Frame1, "ViewAnswer", "View Answer", QRect(356, 80, 160, 30),
                            "Click here to begin the test");
    EndExam = ui::button(Frame1, "EndExam", "End Exam", QRect(528, 80, 180, 30),
                         "Click here to end the current exam");

    StatusBar1 = new QStatusBar(this);
    StatusBar1->setObjectName("StatusBar1");
    StatusBar1->setSizeGripEnabled(false);
    setStatusBar(StatusBar1);
    for (int i = 1; i <= 3; ++i) {
        auto* panel = new QLabel(StatusBar1);
        panel->setObjectName(QString("Panel%1").arg(i));
        panel->setFrameShape(QFrame::StyledPanel);
        panel->setMinimumWidth(i == 2 ? 220 : 120);
        StatusBar1->addPermanentWidget(panel, i == 3 ? 1 : 0);
        statusPanels.push_back(panel);
    }
    statusPanels[1]->installEventFilter(this); // keeps the progress bar on its panel
    ProgressBar1 = new QProgressBar(central);
    ProgressBar1->setObjectName("ProgressBar1");
    ProgressBar1->setAccessibleName("Progress");
    ProgressBar1->setRange(0, 100);
    ProgressBar1->setTextVisible(false);
    ProgressBar1->hide();

    Timer1 = new QTimer(this);
    Timer1->setObjectName("Timer1");
    Timer1->setInterval(1000);
    Timer2 = new QTimer(this);
    Timer2->setObjectName("Timer2");
    Timer2->setInterval(3000);

    // Tab follows the layout: the page, the answers left to right, then the
    // row of buttons (those that share a place are never shown together).
    ui::setTabChain({WebBrowser1, Option1, Option2, Option3, Option4, Back_Command1, Command2, Finish, Start_Test,
                     ViewAnswer, EndExam});

    for (QWidget* w : {static_cast<QWidget*>(Frame1), static_cast<QWidget*>(Frame2)})
        ui::setFontFamily(w, "Arial");
    qApp->installEventFilter(this); // key preview: letters reach the window before its controls
}

void Form1::connectRoutines()
{
    for (int i = 0; i < ExamMenuItems; ++i) {
        connect(Chapter1[i], &QAction::triggered, this, [this, i] { Chapter1_Click(i); });
        connect(ch01[i], &QAction::triggered, this, [this, i] { ch01_Click(i); });
    }
    for (int i = 0; i < QuizMenuItems; ++i) {
        connect(Review1[i], &QAction::triggered, this, [this, i] { Review1_Click(i); });
        connect(r01[i], &QAction::triggered, this, [this, i] { r01_Click(i); });
    }
    connect(mnuScore01[0], &QAction::triggered, this, [this] { mnuScore01_Click(0); });
    connect(Save_Progress, &QAction::triggered, this, [this] { Save_Progress_Click(); });
    connect(mnuPrintQuestions, &QAction::triggered, this, [this] { PrintQuestions(); });
    connect(mnuOptions, &QAction::triggered, this, [this] { mnuOptions_Click(); });
    connect(quitMenuItem, &QAction::triggered, this, [this] { quitMenuItem_Click(); });
    connect(AboutItem, &QAction::triggered, this, [this] { AboutItem_Click(); });
    connect(Start_Test, &QPushButton::clicked, this, [this] { Start_Test_Click(); });
    connect(Command2, &QPushButton::clicked, this, [this] { Command2_Click(); });
    connect(Back_Command1, &QPushButton::clicked, this, [this] { Back_Command1_Click(); });
    connect(Finish, &QPushButton::clicked, this, [this] { Finish_Click(); });
    connect(EndExam, &QPushButton::clicked, this, [this] { EndExam_Click(); });
    connect(ViewAnswer, &QPushButton::clicked, this, [this] { ViewAnswer_Click(); });
    connect(Option1, &QRadioButton::toggled, this, [this](bool on) { if (on) Option1_Click(); });
    connect(Option2, &QRadioButton::toggled, this, [this](bool on) { if (on) Option2_Click(); });
    connect(Option3, &QRadioButton::toggled, this, [this](bool on) { if (on) Option3_Click(); });
    connect(Option4, &QRadioButton::toggled, this, [this](bool on) { if (on) Option4_Click(); });
    connect(Timer1, &QTimer::timeout, this, [this] { Timer1_Timer(); });
    connect(Timer2, &QTimer::timeout, this, [this] { Timer2_Timer(); });
}

void Form1::Form_Load()
{
    trap("Form_Load()", [&] {
        DataFolders& folders = state_.folders;
        folders.derive(app_.data.GetSpecialFolderPath(35, 0));

        setWindowTitle(AppTitle);
        quitMenuItem->setText(QString("E&xit ") + AppTitle);
        AboutItem->setText(QString("&About ") + AppTitle);

        InitializeVariables();
        ShowStatusProgress(true);

        // Every folder is tested, even after one is found missing. The message box names no folder, so the
        // first one missing (the top of what is gone: parents come first) is named on standard error for
        // whoever repairs the installation.
        const std::string base = folders.BaseDir;
        std::string missing;
        for (const std::string& folder : {base + "/MORVO", base + "/MORVO/KESTA", folders.DataDir, folders.LogDir,
                                          folders.UserDir}) {
            if (!app_.data.Dir_Exists(folder) && missing.empty())
                missing = folder;
        }
        if (!missing.empty()) {
            // Shown as a user would type it: without the doubled separator the first two paths hold.
            if (const std::size_t doubled = missing.find("//"); doubled != std::string::npos)
                missing.erase(doubled, 1);
            std::fprintf(stderr, "kesta-demo: missing data folder: %s\n", missing.c_str());
            const std::string title = AppTitle;
            app_.host.messageBox({title,
                                  "One or more required " + title + " data directories are missing. A re-installation of " +
                                      title + " is necessary.",
                                  MessageIcon::None, MessageButtons::Ok});
            app_.host.endProgram(1);
        }
    });
}

void Form1::InitializeVariables()
{
    trap("InitializeVariables()", [&] {
        SessionState& s = state_.session;
        Save_Progress->setEnabled(false);
        mnuPrintQuestions->setEnabled(false); // until a test is chosen
        s.TestStarted = false;

        Create_Menu();
        Adjust_Menu();

        s.QuestionOrder.erase();
        s.UserAnswers.erase();
        state_.questions.Questions.erase();
        state_.saved.SavedChars.erase();

        Finish->hide();
        EndExam->hide();
        ViewAnswer->hide();
        clearOptions();

        s.CurrentQuestion = 1;
        s.RandomPick = 1;
        state_.questions.QuestionCount = 0;
        s.HighestReached = 0;
        s.TimeHours = 0;
        s.TimeMinutes = 0;
        s.TimeSeconds = 0;
        s.OptionAChosen = s.OptionBChosen = s.OptionCChosen = s.OptionDChosen = false;

        Back_Command1->hide();
        Command2->setText("Next Question");
        Command2->hide();
        Num_Label1->hide();
        Start_Test->hide();
        Timer1->stop();
        Timer2->stop();
        Time_Left->hide();
        TimeLeft->hide();
        TimeLeft->setText("");
        for (QRadioButton* option : {Option1, Option2, Option3, Option4})
            option->hide();
        Label3->hide();

        showPage(IdleText);
        setPanelText(3, "Ready");
    });
}

void Form1::Initialize()
{
    trap("Initialize()", [&] {
        SessionState& s = state_.session;
        s.TestStarted = false;
        Save_Progress->setEnabled(false);

        ViewAnswer->hide();
        Start_Test->show();
        Command2->setText("Next Question");
        Finish->hide();
        EndExam->show();
        for (QWidget* w : std::initializer_list<QWidget*>{Back_Command1, Command2, Num_Label1, Option1, Option2,
                                                         Option3, Option4, Label3})
            w->hide();

        navigate(std::string("about:") + IdleText + ".");

        clearOptions();
        Time_Left->hide();
        TimeLeft->hide();
        Timer1->stop();
        s.HighestReached = 0;
        Num_Label1->setText("");

        s.QuestionOrder.erase();
        s.UserAnswers.erase();
        state_.questions.Questions.erase();
        state_.saved.SavedChars.erase();
    });
}

void Form1::ArrangeControls()
{
    // The status bar lies inside the client area as the margins count it; the
    // central widget already stops above it, so its size is the area left.
    ui::arrangePage(*this, centralWidget()->size(), WebBrowser1, Frame1, Frame2);
}

void Form1::Form_Resize()
{
    trap("Form_Resize()", [&] {
        ArrangeControls();
        ProgressBar1->resize(ProgressBar1->width(), StatusBar1->height());
    });
}

void Form1::ShowStatusProgress(bool show)
{
    if (show) {
        ProgressBar1->setParent(StatusBar1);
        ProgressBar1->setGeometry(statusPanels[1]->geometry());
        ProgressBar1->show();
        ProgressBar1->setValue(0);
    } else {
        ProgressBar1->setParent(centralWidget());
    }
}

void Form1::navigate(const std::string& address)
{
    showAddress(*WebBrowser1, address);
}

void Form1::showPage(std::string text)
{
    showPageText(app_, *WebBrowser1, std::move(text));
}

void Form1::clearOptions()
{
    OptionGroup->setExclusive(false);
    for (QRadioButton* option : {Option1, Option2, Option3, Option4})
        option->setChecked(false);
    OptionGroup->setExclusive(true);
}

void Form1::checkOption(int number)
{
    QRadioButton* options[] = {Option1, Option2, Option3, Option4};
    options[number - 1]->setChecked(true);
}

void Form1::setPanelText(int panel, const std::string& text)
{
    statusPanels[static_cast<std::size_t>(panel - 1)]->setText(QString::fromStdString(text));
}

void Form1::Form_Unload(bool& cancel)
{
    auto* dialog = new Dialog1(app_);
    app_.windows.Dialog1 = dialog;
    dialog->TerminateOK = false;
    app_.host.execModal(*dialog);
    // "OK" ends the program inside the dialog, so only "Cancel" comes back here.
    if (!dialog->TerminateOK)
        cancel = true;
    App::unload(dialog);
}

void Form1::closeEvent(QCloseEvent* event)
{
    bool cancel = false;
    Form_Unload(cancel);
    if (cancel)
        event->ignore();
    else
        event->accept();
}

void Form1::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    Form_Resize();
}

bool Form1::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == statusPanels[1] && (event->type() == QEvent::Resize || event->type() == QEvent::Move) &&
        ProgressBar1->parentWidget() == StatusBar1) {
        ProgressBar1->setGeometry(statusPanels[1]->geometry());
    }
    if (event->type() == QEvent::KeyPress && isActiveWindow()) {
        // The key arrives at the focus widget first and then travels up; look at it once.
        QWidget* target = QApplication::focusWidget();
        const bool first = target ? (watched == target && target->window() == this) : watched == this;
        // Only a letter typed as such answers: with Alt, Ctrl or Meta held it is a command, not an answer.
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool command = key->modifiers() & (Qt::AltModifier | Qt::ControlModifier | Qt::MetaModifier);
        if (first && !command && key->text().size() == 1)
            Form_KeyPress(key->text().at(0).unicode());
    }
    return QMainWindow::eventFilter(watched, event);
}

} // namespace kesta
