// The real windows driven as a user drives them: each window's controls reach
// the rules and show their outcome, and each window hands over to the next.
// The rules themselves (scoring, moving, the countdown, the files' contents)
// are the core tests' business; a row here checks what reaches the screen.
#include "support/TestApp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using namespace test;

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
    for (const std::string& missing : std::initializer_list<std::string> { "appdata/MORVO", "appdata/MORVO/KESTA", tree,
             tree + "/Log", tree + "/User", "" /* the known-folder lookup fails */, questions }) {
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
        EXPECT_EQ(written,
            missing == questions            ? tree + "/Log/ErrorLog.log "
                : missing == tree + "/User" ? tree + "/Log/qtmp.htm "
                                            : "");
    }
}

struct Journey {
    const char* name;
    std::vector<std::pair<std::string, std::string>> steps; // commands, and what the user sees after them
    friend void PrintTo(const Journey& j, std::ostream* os) { *os << j.name; } // names the row in test listings
};

const std::string Idle = // the main window as it opens
    "AboutItem[About KESTA DEMO]\nChapter1(0)[KESTA Exam Demo]\nClientArea[]\nForm1[KESTA DEMO]\nFrame1[]\nFrame2[]\n"
    "Panel1[]\nPanel2[]\nPanel3[Ready]\nProgressBar1[0 of 0-100 ]\nReview1(0)[KESTA Quiz Demo]\n"
    "Save_Progress[Save Domain Quiz or Exam Progress] off\nStatusBar1[]\n"
    "WebBrowser1[Select a new Domain Quiz or Exam from the file menu to begin]\nch01(0)[KESTA Exam Demo] off\n"
    "mnuOptions[Options]\nmnuPrintQuestions[Print Questions] off\nmnuScore01(0)[No scores available] off\n"
    "quitMenuItem[Exit KESTA DEMO]\nr01(0)[KESTA Quiz Demo] off\n";

// Each journey starts with the main window shown, idle; a step whose look ends the program runs in a child process.
class JourneyTest : public ::testing::TestWithParam<Journey> { };
TEST_P(JourneyTest, ShowsWhatEachStepExpects)
{
    TestApp t;
    t.host.describe = [&t] { return std::exchange(t.seen, "") + t.look(); };
    EXPECT_EQ(t.run("start"), Idle);
    for (const auto& [commands, expected] : GetParam().steps) {
        SCOPED_TRACE(commands);
        if (expected.find("ENDED ") == std::string::npos)
            EXPECT_EQ(t.run(commands), expected);
        else
            EXPECT_EXIT(t.run(commands), ::testing::ExitedWithCode(expected[expected.rfind("ENDED ") + 6] - '0'),
                ::testing::EndsWith(expected));
    }
}

const Journey journeys[] = {
    { "AQuizAnsweredByButtonsAndKeysSavedScoredReviewedClosedAndRestored",
        {
            { "full; menu Review1(0); click Start_Test; click Command2; click Option1; click Command2; key C; look; "
              "key Shift+D; key Alt+A; key Ctrl+B; key Meta+C; key E",
                "-ProgressBar1\nBack_Command1[Previous Question] 12,80 160x30 ~Click here to go to the previous "
                "question\nCommand2[Next Question] 184,80 160x30 ~Click here to go to the next question\n"
                "EndExam[End Domain Quiz] 528,80 180x30 ~Click here to end the current exam\n"
                "Label3[Choose the best answer and select the corresponding letter below.] 12,8 696x22 ~Choose an "
                "answer from the letters below:\nNum_Label1[Chapter: KESTA Quiz Demo | Question 2 of 5] 8,12 500x22\n"
                "Option1[A] 180,38 80x26\nOption2[B] 280,38 80x26\nOption3[C*] 380,38 80x26\nOption4[D] 480,38 80x26\n"
                "Save_Progress[Save Domain Quiz or Exam Progress]\nTimeLeft[] 624,12 90x22 ~Time Left\n"
                "Time_Left[Time Left:] 540,12 80x22 ~Time Left\nTimer1 on\nViewAnswer[View Answer] 356,80 160x30 "
                "~Click here to begin the test\nWebBrowser1[Q5]\nmnuPrintQuestions[Print Questions]\n"
                "KESTA DEMO: The Domain Quiz will now begin. Press OK to continue.\n"
                "KESTA DEMO: Please choose an answer from the choices below\nOption3[C]\nOption4[D*]\n" },
            { "> look & click Dialog1/OKButton; > look & click Form3/OKButton; menu quitMenuItem",
                "Dialog1[Exit KESTA DEMO] 222,247 420x150 Arial 9pt\nDialog1/CancelButton[Cancel] 220,100 "
                "120x30\nDialog1/Label1[Are you sure you wish to exit KESTA DEMO?] 16,16 388x64 "
                "wrap\nDialog1/OKButton[OK] 80,100 120x30 default ~Click here to exit KESTA Halvergrove\nForm3[Save "
                "Progress] 222,247 420x150 Arial 9pt\nForm3/CancelButton[No] 220,100 120x30\nForm3/Label1[Would you "
                "like to save your progress before continuing?] 16,16 388x64 wrap\nForm3/OKButton[Yes] 80,100 120x30 "
                "default\n-Form3\nr01(0)[KESTA Quiz Demo]\nSave Progress: Your current progress has been saved. "
                "\\r\\n\\r\\nIf you would like to open it at any time, go to the file menu, select 'Load Previous Exam "
                "or Domain Quiz', then choose the appropriate chapter.\nENDED 0\n" },
            { "full; > full & look & full & click Dialog3/OK; click ViewAnswer; click Back_Command1; look; click "
              "Command2",
                "Dialog3[View Answer] 152,112 560x420 Arial 9pt\nDialog3/OK[OK] 230,376 100x30 default ~Click OK to go "
                "back to the main exam window.\nDialog3/WebBrowser1[Chapter: KESTA Quiz Demo, Question 2 of 5 Answer: "
                "A Explanation: E5] 12,12 536x350\n-Back_Command1\n-Dialog3\n"
                "Num_Label1[Chapter: KESTA Quiz Demo | Question 1 of 5]\nOption1[A*]\nOption4[D]\nWebBrowser1[Q1]\n"
                "Back_Command1[Previous Question]\nNum_Label1[Chapter: KESTA Quiz Demo | Question 2 of 5]\n"
                "Option1[A]\nOption4[D*]\nWebBrowser1[Q5]\n" },
            { "click Command2; click Option3; click Command2; look; key B; click Command2; full; key A; click "
              "Command2; cat "
              "quiz.kqb.usr.score1",
                "Num_Label1[Chapter: KESTA Quiz Demo | Question 4 of 5]\nOption4[D]\nWebBrowser1[Q4]\n"
                "quiz.kqb.usr.score1: 000700600630\\r\\n001005003004002\\r\\nadcba\n-Form1\n"
                "Form2[Results] 2,2 780x600\nForm2/Command3[Close Explanation] 12,39 190x30 ~Click here to close the "
                "Explanation window and return to the main screen\nForm2/Expl_Exit[Exit KESTA DEMO] 12,75 190x30 "
                "~Click here to exit KESTA Halvergrove\nForm2/Expl_Next[Next Explanation] 214,39 190x30 ~Click here to "
                "see the explaination for the next question you answered incorrectly\n"
                "Form2/Frame1[] 182,463 416x114 Arial 9pt\nForm2/Frame2[] 40,8 700x40 Arial 9pt\n"
                "Form2/Label1[Score:] 8,9 52x22\nForm2/Label2[40%] 62,9 60x22 Arial 9pt bold\n"
                "Form2/QuestionNumber[Chapter: KESTA Quiz Demo | Question 1 of 3] 140,9 552x22\n"
                "Form2/WebBrowser1[Q5 Your answer: D The correct answer is: A Explanation: E5] 47,56 687x383\n"
                "Save Score: Your current progress and score has been saved. \\r\\n\\r\\n"
                "If you would like to open it at any time, go to the file menu, select 'View Previous Scores', then "
                "choose the appropriate Exam or Domain Quiz.\n" },
            { "full; click Form2/Expl_Next; look; click Form2/Expl_Next; look; click Form2/Expl_Back; look; click "
              "Form2/Expl_Back",
                "Form2/Expl_Back[Previous Explanation]\nForm2/QuestionNumber[Chapter: KESTA Quiz Demo | Question 2 of "
                "3]\nForm2/WebBrowser1[Q3 Your answer: C The correct answer is: A Explanation: E3]\n-Form2/Expl_Next\n"
                "Form2/QuestionNumber[Chapter: KESTA Quiz Demo | Question 3 of 3]\n"
                "Form2/WebBrowser1[Q4 Your answer: B The correct answer is: A Explanation: E4]\n+Form2/Expl_Next\n"
                "Form2/QuestionNumber[Chapter: KESTA Quiz Demo | Question 2 of 3]\n"
                "Form2/WebBrowser1[Q3 Your answer: C The correct answer is: A Explanation: E3]\n-Form2/Expl_Back\n"
                "Form2/QuestionNumber[Chapter: KESTA Quiz Demo | Question 1 of 3]\n"
                "Form2/WebBrowser1[Q5 Your answer: D The correct answer is: A Explanation: E5]\n" },
            { "> click Dialog1/CancelButton; click Form2/Expl_Exit; close Form2; click Form2/Command3; click "
              "Dialog2/Command2",
                "-Back_Command1\n-Command2\n-EndExam\n-Form2\n-Label3\n-Num_Label1\n-Option1\n-Option2\n-Option3\n"
                "-Option4\n-TimeLeft\n-Time_Left\n-Timer1\n-ViewAnswer\n+Form1\n"
                "Save_Progress[Save Domain Quiz or Exam Progress] off\nWebBrowser1[Select a new Domain Quiz or Exam "
                "from the file menu to begin]\nmnuPrintQuestions[Print Questions] off\n"
                "mnuScore01(0)[KESTA Quiz Demo (Saved on: <file date>)]\nr01(0)[KESTA Quiz Demo]\n" },
            { "cat quiz.kqb.usr; write exam.kqb.usr 000700400409\r\n003002001\r\nacc; restart; start; menu r01(0); "
              "look; menu ch01(0)",
                "quiz.kqb.usr: 000700200230\\r\\n001005003004002\\r\\nad\n+Back_Command1\n+Command2\n+EndExam\n"
                "+Label3\nNum_Label1[KESTA Quiz Demo | Question 2 of 5]\n+Option1\n+Option2\n+Option3\n+Option4\n"
                "Save_Progress[Save Domain Quiz or Exam Progress]\n+TimeLeft\n+Time_Left\n+Timer1\n+ViewAnswer\n"
                "WebBrowser1[Q2]\nch01(0)[KESTA Exam Demo]\nmnuPrintQuestions[Print Questions]\n"
                "Load Existing Domain Quiz: Your previous Domain Quiz has been loaded.\\r\\nPress OK to continue.\n"
                "-Command2\nEndExam[End Exam]\nFinish[Finish]\nNum_Label1[]\n"
                "WebBrowser1[Click 'Finish' to end and score your Exam, or click the 'Previous' button to go back and "
                "re-check your test]\nLoad Existing Exam: Your previous Exam has been loaded.\\r\\n"
                "Press OK to continue.\nKESTA DEMO: Press the 'Finish' button to end and score your Exam.\n" },
            { "write exam.kqb.usr 000700300409\r\n003002001\r\nac; menu ch01(0)",
                "-Finish\n+Command2\nNum_Label1[KESTA Exam Demo | Question 3 of 3]\nWebBrowser1[Q3]\n"
                "Load Existing Exam:\n" },
            { "> click Dialog1/OKButton; menu quitMenuItem",
                "Form3/OKButton[Yes]\n-Form3\nENDED 0\n" }, // a restored test is started
        } },
    { "AboutThenEndAndExitConfirmedAndCancelled",
        {
            { "full; > look & click frmAbout/cmdSysInfo & click frmAbout/cmdOK; menu AboutItem",
                "frmAbout[About KESTA DEMO] 212,204 440x236\nfrmAbout/Line1[] 16,150 408x4\n"
                "frmAbout/cmdOK[OK] 164,178 120x30 default\nfrmAbout/cmdSysInfo[&System Info...] 296,178 120x30\n"
                "frmAbout/lblDescription[KESTA DEMO\\nPractice exams and domain quizzes for the KESTA certification.] "
                "24,82 392x60 wrap\nfrmAbout/lblTitle[KESTA DEMO] 24,18 392x30 Sans Serif 14pt bold\n"
                "frmAbout/lblVersion[Version 12.11.23] 24,52 392x22\n-frmAbout\n"
                "KESTA DEMO: System Information Is Unavailable At This Time\n" },
            { "full; > glance & click Dialog1/CancelButton; close Form1", "-Dialog1\n" },
            { "menu Chapter1(0); click Start_Test; glance; click EndExam",
                "Dialog[End Exam]\nDialog/CancelButton[No]\nDialog/Label1[Are you sure you wish to terminate the "
                "current exam?]\nDialog/OKButton[Yes]\n" },
            { "key Esc Dialog; click EndExam; look; click EndExam", "" },
            { "> glance & key Esc Form3; click Dialog/OKButton",
                "-Command2\n-Dialog\n-EndExam\n-Form3\n-Label3\n-Num_Label1\n-Option1\n-Option2\n-Option3\n-Option4\n"
                "-TimeLeft\n-Time_Left\n-Timer1\n-ViewAnswer\nSave_Progress[Save Domain Quiz or Exam Progress] off\n"
                "WebBrowser1[Select a new Domain Quiz or Exam from the file menu to begin]\n"
                "mnuPrintQuestions[Print Questions] off\n" },
        } },
    { "FiveAndSixScoresAreListedAndReopened",
        {
            { "write quiz.kqb.usr.score1 000000600600\r\n001002003004005\r\naaaaa; write quiz.kqb.usr.score2 "
              "000000600600\r\n001002003004005\r\nbbbbb; write quiz.kqb.usr.score3 "
              "000000600600\r\n001002003004005\r\nabbaa; write quiz.kqb.usr.score4 "
              "000000600600\r\n002001000004005\r\nbbbaa; write quiz.kqb.usr.score5 "
              "000000600600\r\n001002003004005\r\naaaab; write quiz.kqb.usr.score6 "
              "000000600600\r\n001002003004005\r\naaaaa; write exam.kqb.usr.score1 000000400400\r\n001002003\r\naaa; "
              "write exam.kqb.usr 000700200209\r\n001002003\r\nab; restart; start",
                "ch01(0)[KESTA Exam Demo]\nmnuScore01(0)[KESTA Exam Demo (Saved on: <file date>)]\n"
                "mnuScore01(1)[KESTA Quiz Demo (Saved on: <file date>)]\nmnuScore01(2)[KESTA Quiz Demo (Saved on: "
                "<file date>)]\nmnuScore01(3)[KESTA Quiz Demo (Saved on: <file date>)]\n"
                "mnuScore01(4)[KESTA Quiz Demo (Saved on: <file date>)]\nmnuScore01(5)[KESTA Quiz Demo (Saved on: "
                "<file date>)]\n" },
            { "> click Dialog1/CancelButton; close Form1", "" },
            { "menu mnuScore01(1); look; click Form2/Command3; click Dialog2/Command2; menu mnuScore01(0); look; click "
              "Form2/Command3; click Dialog2/Command2; menu mnuScore01(4); click Form2/Expl_Next; click "
              "Form2/Expl_Next",
                "-Form1\nForm2[Results]\nForm2/Command3[Close Explanation]\nForm2/Expl_Exit[Exit KESTA DEMO]\n"
                "Form2/Frame1[]\nForm2/Frame2[]\nForm2/Label1[Score:]\nForm2/Label2[100%]\nForm2/QuestionNumber[]\n"
                "Form2/WebBrowser1[CONGRATULATIONS! You've got a Perfect Score!]\n"
                "Open Existing Domain Quiz: Your previous Domain Quiz has been opened.\\r\\nPress OK to continue.\n"
                "Form2/Expl_Next[Next Explanation]\nForm2/Label2[33%]\nForm2/QuestionNumber[Chapter: KESTA Exam Demo | "
                "Question 1 of 2]\nForm2/WebBrowser1[Q2 Your answer: A The correct answer is: B Explanation: E2]\n"
                "Open Existing Exam: Your previous Exam has been opened.\\r\\nPress OK to continue.\n"
                "-Form2/Expl_Next\nForm2/Expl_Back[Previous Explanation]\nForm2/Label2[40%]\n"
                "Form2/QuestionNumber[Chapter: KESTA Quiz Demo | Question 3 of 3]\n"
                "Form2/WebBrowser1[Your answer: NONE The correct answer is: Explanation:]\nOpen Existing Domain "
                "Quiz:\n" },
            { "rm exam.kqb.usr; click Form2/Command3; click Dialog2/Command2",
                "-Form2\n-ProgressBar1\n+Form1\nch01(0)[KESTA Exam Demo] off\n" }, // the saved exam gone
        } },
    { "TimeUpClosesEveryDialogAndOpensTheResults",
        {
            { "write option.usr 1\r\n0\r\n0\r\n0\r\n1\r\n5; menu Review1(0); click Start_Test; glance; tick Timer1 4",
                "TimeLeft[0:0:1]\n" },
            { "> tick Timer1 & look & tick Timer1 & look & tick Timer2 & look; click ViewAnswer",
                "Dialog3[View Answer]\nDialog3/OK[OK]\nDialog3/WebBrowser1[Chapter: KESTA Quiz Demo, Question 1 of 5 "
                "Answer: A Explanation: E1]\nTimeLeft[0:0:0]\n-Command2\n-EndExam\n-Label3\n-Num_Label1\n-Option1\n"
                "-Option2\n-Option3\n-Option4\n-Timer1\nTimer2 on\nWebBrowser1[Time Up.]\nbeep\n-Dialog3\n-Form1\n"
                "Form2[Results]\nForm2/Command3[Close Explanation]\nForm2/Expl_Exit[Exit KESTA DEMO]\n"
                "Form2/Expl_Next[Next Explanation]\nForm2/Frame1[]\nForm2/Frame2[]\nForm2/Label1[Score:]\n"
                "Form2/Label2[0%]\nForm2/QuestionNumber[Chapter: KESTA Quiz Demo | Question 1 of 5]\n"
                "Form2/WebBrowser1[Q1 Your answer: The correct answer is: A Explanation: E1]\n"
                "Save Score: Your current progress and score has been saved. \\r\\n\\r\\n"
                "If you would like to open it at any time, go to the file menu, select 'View Previous Scores', then "
                "choose the appropriate Exam or Domain Quiz.\n" },
            { "click Form2/Command3; click Dialog2/Command2; menu Review1(0); click Start_Test; tick Timer1 5; > tick "
              "Timer1 & tick Timer2 & look; menu AboutItem",
                "Form2/WebBrowser1[Q4 Your answer: The correct answer is: A Explanation: E4]\nKESTA DEMO:\n"
                "Save Score:\nbeep\n" },
            { "click Form2/Command3; click Dialog2/Command2; menu Review1(0); click Start_Test; tick Timer1 5; > tick "
              "Timer1 & tick Timer2 & look; menu mnuOptions",
                "Form2/WebBrowser1[Q1 Your answer: The correct answer is: A Explanation: E1]\nKESTA DEMO:\n"
                "Save Score:\nbeep\n" },
            { "click Form2/Command3; click Dialog2/Command2; menu Review1(0); click Start_Test; tick Timer1 5; > tick "
              "Timer1 & tick Timer2 & look; menu quitMenuItem",
                "Form2/WebBrowser1[Q2 Your answer: The correct answer is: A Explanation: E2]\nKESTA DEMO:\n"
                "Save Score:\nbeep\n" },
        } },
    { "PrintedTwiceOnPaperAndWithoutAPrinter",
        {
            { "menu Chapter1(0); printer paper; menu mnuPrintQuestions; menu mnuPrintQuestions; printed",
                "paper: Question 1\\nQ1\\nExplanation:\\nE1\\nAnswer:\\na1.\\nQuestion 2\\nQ2\\nExplanation:\\nE2\\n"
                "Answer:\\nb1.\\nQuestion 3\\nQ3\\nExplanation:\\nE3\\nAnswer:\\nc1.\\n\\n\f\n-ProgressBar1\n"
                "EndExam[End Exam]\nStart_Test[Start Exam]\nWebBrowser1[i1 i2 i3]\nmnuPrintQuestions[Print "
                "Questions]\n" },
            { "printer none; menu mnuPrintQuestions", "KESTA DEMO: There was a problem printing to your printer.\n" },
        } },
    { "OptionsWizardFinishedAndCancelled",
        {
            { "full; write option.usr 7\r\n-2\r\n0\r\n2\r\n15\r\n20; > look & pick Config_Wizard_01/Combo1 9 & click "
              "Config_Wizard_01/Cancel; menu mnuOptions; cat option.usr",
                "Config_Wizard_01[Configuration Wizard] 246,204 372x236 Arial 9pt\n"
                "Config_Wizard_01/Cancel[Cancel] 136,190 106x30\nConfig_Wizard_01/Combo1[Hour=0 of 0-24] 16,70 90x26\n"
                "Config_Wizard_01/Combo2[Minute=2 of 0-59] 122,70 90x26\nConfig_Wizard_01/Combo3[Second=15 of 0-59] "
                "228,70 90x26\nConfig_Wizard_01/Combo4[Question Font Size= of 0-12] 228,112 90x26\n"
                "Config_Wizard_01/Frame1[Question Settings] 12,10 348x166\nConfig_Wizard_01/Label1[Time for Each "
                "Question] 16,26 300x20\nConfig_Wizard_01/Label2[Hour] 16,50 90x18\n"
                "Config_Wizard_01/Label3[Minute] 122,50 90x18\nConfig_Wizard_01/Label4[Second] 228,50 90x18\n"
                "Config_Wizard_01/Label5[Question Font Size] 16,114 190x22\nConfig_Wizard_01/Next[Finish] 254,190 "
                "106x30 default\noption.usr: 7\\r\\n-2\\r\\n0\\r\\n2\\r\\n15\\r\\n20\n-Config_Wizard_01\n" },
            { "> pick Config_Wizard_01/Combo1 2 & pick Config_Wizard_01/Combo2 0 & pick Config_Wizard_01/Combo4 12 & "
              "type Config_Wizard_01/Combo3 \b\b45 & click Config_Wizard_01/Next; menu mnuOptions; cat option.usr",
                "option.usr: 7\\r\\n-2\\r\\n2\\r\\n0\\r\\n45\\r\\n12\nKESTA DEMO: If you have modified the time per "
                "question, the change will take place upon loading a new chapter.\\r\\n\\r\\n"
                "If you have modified the font size, the change will take place when a new question is loaded.\n" },
            { "> type Config_Wizard_01/Combo2 soon & click Config_Wizard_01/Next; menu mnuOptions",
                "+Config_Wizard_01\nConfig_Wizard_01/Combo1[Hour=2 of 0-24]\nConfig_Wizard_01/Combo2[Minute=0soon of "
                "0-59]\nConfig_Wizard_01/Combo3[Second=45 of 0-59]\nConfig_Wizard_01/Combo4[Question Font Size=12 of "
                "0-12]\nKESTA DEMO: Run-time error '13':\\r\\n\\r\\nType mismatch\nENDED 1\n" },
        } },
    { "SplashProgressWindowAndResize",
        {
            { "full; restart; splash",
                "-Form1\nfrmSplash[] 140,250 520x300 Arial 9pt\nfrmSplash/Frame1[] 10,10 500x280\n"
                "frmSplash/Timer2 on\nfrmSplash/lblProductName[KESTA DEMO] 20,50 460x56 Arial 28pt bold\n"
                "frmSplash/lblVersion[Version 12.11.23] 20,116 460x24\nfrmSplash/lblWarning[Warning: this program is "
                "protected by copyright law. The questions are for practice only and are not those of the "
                "certification exam.] 20,190 460x60 wrap\n" },
            { "click frmSplash", "-frmSplash\nForm1[KESTA DEMO] 2,2 860x640\n" },
            { "restart; splash; click frmSplash/Frame1", "" },
            { "restart; splash; click frmSplash/lblWarning", "" },
            { "restart; splash; key Space frmSplash", "" },
            { "restart; splash; tick frmSplash/Timer2", "" },
            { "progress",
                "job\nfrmProgressBar[Progress] 200,345 400x110 Arial 9pt\nfrmProgressBar/ProgressBar1[0 of 0-100 0%] "
                "16,60 368x24\nfrmProgressBar/lblProgress[This process will take a moment or two. Please wait.] 16,14 "
                "368x36 wrap\n-frmProgressBar\n" },
            { "resize Form1 900 700",
                "ClientArea[] 0,19 900x660\nForm1[KESTA DEMO] 2,2 900x700\nFrame1[] 90,487 720x150 Arial 9pt\n"
                "Frame2[] 90,6 720x44 Arial 9pt\nPanel3[Ready] 354,3 546x16\nProgressBar1[0 of 0-100 ] 128,3 220x21\n"
                "StatusBar1[] 0,679 900x21\nWebBrowser1[Select a new Domain Quiz or Exam from the file menu to begin] "
                "47,56 807x407\n" },
            { "resize Form1 max",
                "ClientArea[] 0,19 796x756\nForm1[KESTA DEMO] 2,2 796x796\nFrame1[] 38,583 720x150 Arial 9pt\n"
                "Frame2[] 38,6 720x44 Arial 9pt\nPanel3[Ready] 354,3 442x16\nStatusBar1[] 0,775 796x21\n"
                "WebBrowser1[Select a new Domain Quiz or Exam from the file menu to begin] 94,56 609x363\n" },
        } },
};

auto rowName = [](const auto& info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(Journeys, JourneyTest, ::testing::ValuesIn(journeys), rowName);

} // namespace
} // namespace kesta
