#pragma once

#include "app/ui/App.h"
#include "common/core/Int16.h"

#include <QMainWindow>

#include <string>
#include <vector>

class QAction;
class QButtonGroup;
class QFrame;
class QLabel;
class QMenu;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QStatusBar;
class QTextBrowser;
class QTimer;

namespace kesta {

// The main window: the test menus, the question page, the answer and
// navigation controls, the countdown and the status bar. Its routines keep
// the names the rest of the program knows them by; their definitions are
// split by subsystem (start-up and layout here, the catalogue, loading, the
// session and the saved progress in files of their own).
class Form1 final : public QMainWindow {
    Q_OBJECT

public:
    explicit Form1(App& app);
    ~Form1() override;

    // --- start-up, reset and layout ---
    void Form_Load();
    void InitializeVariables();
    void Initialize();
    void Form_Resize();
    void ArrangeControls();
    void ShowStatusProgress(bool show);

    // Shows an address in the page view: "about:" + HTML, or a page file.
    void navigate(const std::string& address);
    // Writes `text` as the page and shows the page file.
    void showPage(std::string text);

    // --- catalogue, menus and options ---
    void Create_Menu();
    void GetFolderList(const std::string& folderspec);
    std::string GetTitle(const std::string& filename);
    void Adjust_Menu();
    void Enable_Mnu_Items();
    void Check_File(const std::string& file_to_check);
    void ReadOptions();
    void mnuOptions_Click();
    void AboutItem_Click();

    // --- question loading ---
    std::string DecryptString(const std::string& sEncryptedText, const std::string& sEncryptionKey);
    void ReadFile(const std::string& filename);

    // --- the session ---
    void Chapter1_Click(int Index);
    void Review1_Click(int Index);
    void Start_Test_Click();
    void Option1_Click();
    void Option2_Click();
    void Option3_Click();
    void Option4_Click();
    void Form_KeyPress(int keyAscii);
    void Command2_Click();
    void Back_Command1_Click();
    void Timer1_Timer();
    void Timer2_Timer();
    void Finish_Click();
    void EndExam_Click();
    void ViewAnswer_Click();
    void quitMenuItem_Click();
    void PrintQuestions();

    // --- saved progress and scores ---
    void Save_Progress_Click();
    void Save_Score_Click();
    void ch01_Click(int Index);
    void r01_Click(int Index);
    void Restore_PracticeExam(int Index);
    void RestoreDomainQuiz(int Index);
    void OpenSavedTest(const std::string& path);
    void ResetScoreMenu();
    void Check_File_ViewScore(const std::string& file_to_check, const std::string& Title);
    void mnuScore01_Click(int Index);

    // --- controls, named as the rest of the program knows them ---
    QMenu* mnuFile = nullptr;
    QMenu* mnuNew = nullptr;
    QMenu* mnuPracticeExams = nullptr;  // "Select Exam"
    QMenu* mnuReviewQuizzes = nullptr;  // "Select Domain Quiz"
    QMenu* Restore = nullptr;           // "Load Previous Domain Quiz or Exam"
    QMenu* mnuLoadP = nullptr;          // "Load Exam"
    QMenu* mnuLoadReview = nullptr;     // "Load Domain Quiz"
    QMenu* mnuViewScore = nullptr;      // "View Previous Scores"
    QMenu* mnuHelp = nullptr;
    QAction* Save_Progress = nullptr;
    QAction* mnuPrintQuestions = nullptr;
    QAction* mnuOptions = nullptr;
    QAction* quitMenuItem = nullptr;
    QAction* AboutItem = nullptr;
    std::vector<QAction*> Chapter1;     // "Select Exam" items
    std::vector<QAction*> Review1;      // "Select Domain Quiz" items
    std::vector<QAction*> ch01;         // "Load Exam" items
    std::vector<QAction*> r01;          // "Load Domain Quiz" items
    std::vector<QAction*> mnuScore01;   // "View Previous Scores" items; item 0 always exists

    QTextBrowser* WebBrowser1 = nullptr;
    QFrame* Frame1 = nullptr;           // answer and navigation controls
    QFrame* Frame2 = nullptr;           // question header and countdown
    QPushButton* Start_Test = nullptr;
    QPushButton* Command2 = nullptr;
    QPushButton* Back_Command1 = nullptr;
    QPushButton* Finish = nullptr;
    QPushButton* EndExam = nullptr;
    QPushButton* ViewAnswer = nullptr;
    QRadioButton* Option1 = nullptr;
    QRadioButton* Option2 = nullptr;
    QRadioButton* Option3 = nullptr;
    QRadioButton* Option4 = nullptr;
    QButtonGroup* OptionGroup = nullptr;
    QLabel* Label3 = nullptr;
    QLabel* Num_Label1 = nullptr;
    QLabel* Time_Left = nullptr;
    QLabel* TimeLeft = nullptr;
    QStatusBar* StatusBar1 = nullptr;
    std::vector<QLabel*> statusPanels;  // the status bar's three panels
    QProgressBar* ProgressBar1 = nullptr;
    QTimer* Timer1 = nullptr;
    QTimer* Timer2 = nullptr;

    // Number of design-time items of each menu array; more than the catalogue slots.
    static constexpr int ExamMenuItems = 32;
    static constexpr int QuizMenuItems = 12;

    // Unchecks all four answer buttons.
    void clearOptions();
    // Checks answer button 1..4 (its click runs as for a user's click).
    void checkOption(int number);
    // Text of status bar panel 1..3.
    void setPanelText(int panel, const std::string& text);

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildMenus();
    void buildControls();
    void connectRoutines();
    void Form_Unload(bool& cancel);
    // Runs a routine of this window under its error trap.
    template <typename Body>
    void trap(const char* routine, Body&& body, std::string details = {});

    App& app_;
    ProgramState& state_;
};

} // namespace kesta
