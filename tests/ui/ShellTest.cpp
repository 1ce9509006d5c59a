#include "app/ui/About.h"
#include "app/ui/ConfigWizard.h"
#include "app/ui/ProgressWindow.h"
#include "app/ui/Splash.h"
#include "support/BankWriter.h"
#include "support/TestApp.h"

#include <QAction>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <filesystem>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using test::click;
using test::readFile;
using test::TestApp;
using test::writeFile;
using test::writeNumberedBank;

constexpr const char* Defaults = "1\r\n0\r\n0\r\n1\r\n30\r\n5";
constexpr const char* Corrupt = "The options file appears to be corrupt. Default settings will be restored.";
constexpr const char* FinishNotice =
    "If you have modified the time per question, the change will take place upon loading a new chapter.\r\n\r\n"
    "If you have modified the font size, the change will take place when a new question is loaded.";

std::vector<std::string> visibleCaptions(const std::vector<QAction*>& items)
{
    std::vector<std::string> captions;
    for (QAction* item : items) {
        if (item->isVisible())
            captions.push_back(item->text().toStdString());
    }
    return captions;
}

void bank(TestApp& t, const std::string& name, const std::string& title)
{
    writeNumberedBank(t.questionDir() + "/" + name, title, 1);
}

// ---- the catalogue and its menus ----

TEST(ShellCatalogueTest, MenusOfferThirtyOneExamsAndElevenQuizzesInFileNameOrder)
{
    TestApp t;
    // Written out of order: the menus follow the names, not the writing.
    for (int i = 32; i >= 1; --i) {
        const std::string n = (i < 10 ? "0" : "") + std::to_string(i);
        bank(t, "exam" + n + ".kqb", "KESTA Exam Demo " + n);
    }
    for (int i = 1; i <= 12; ++i) {
        const std::string n = (i < 10 ? "0" : "") + std::to_string(i);
        bank(t, "quiz" + n + ".kqb", "KESTA Quiz Demo " + n);
    }
    Form1& f = t.start();

    const auto exams = visibleCaptions(f.Chapter1);
    ASSERT_EQ(exams.size(), 31u);
    EXPECT_EQ(exams.front(), "KESTA Exam Demo 01");
    EXPECT_EQ(exams.back(), "KESTA Exam Demo 31");
    EXPECT_EQ(visibleCaptions(f.ch01), exams);
    EXPECT_FALSE(f.Chapter1[31]->isVisible());
    const auto quizzes = visibleCaptions(f.Review1);
    ASSERT_EQ(quizzes.size(), 11u);
    EXPECT_EQ(quizzes.back(), "KESTA Quiz Demo 11");
    EXPECT_EQ(visibleCaptions(f.r01), quizzes);
    EXPECT_FALSE(f.Review1[11]->isVisible());

    const auto& c = t.app->state.catalogues;
    EXPECT_EQ(c.ExamCatalogue[30].FileName, "exam31.kqb");
    EXPECT_EQ(c.ExamCatalogue[30].Title, "KESTA Exam Demo 31");
    EXPECT_EQ(c.QuizCatalogue[0].FileName, "quiz01.kqb");
}

TEST(ShellCatalogueTest, TheTitleDecidesTheMenusNotTheFileName)
{
    TestApp t;
    bank(t, "a-quiz.kqb", "kesta EXAM demo 3");
    bank(t, "b.kqb", "KESTA Exam Demo and KESTA Quiz Demo");
    bank(t, "c.kqb", "Release notes");
    Form1& f = t.start();

    EXPECT_EQ(visibleCaptions(f.Chapter1),
              (std::vector<std::string>{"kesta EXAM demo 3", "KESTA Exam Demo and KESTA Quiz Demo"}));
    EXPECT_EQ(visibleCaptions(f.Review1), std::vector<std::string>{"KESTA Exam Demo and KESTA Quiz Demo"});
    EXPECT_EQ(t.app->state.catalogues.QuizCatalogue[0].FileName, "b.kqb");
    // Without saved progress the load items are listed but cannot be chosen.
    EXPECT_TRUE(f.ch01[1]->isVisible());
    EXPECT_FALSE(f.ch01[1]->isEnabled());
    EXPECT_FALSE(f.r01[0]->isEnabled());
}

TEST(ShellCatalogueTest, AnEmptyQuestionFolderLeavesEveryTestItemHidden)
{
    TestApp t;
    Form1& f = t.start();
    for (const auto* items : {&f.Chapter1, &f.Review1, &f.ch01, &f.r01})
        EXPECT_TRUE(visibleCaptions(*items).empty());
    EXPECT_FALSE(f.ch01[0]->isEnabled());
    EXPECT_TRUE(f.isVisible());
    EXPECT_FALSE(fs::exists(t.errorLog()));
}

TEST(ShellCatalogueTest, AMissingQuestionFolderEndsTheProgramAtStart)
{
    TestApp t;
    fs::remove_all(t.questionDir());
    EXPECT_EXIT(t.start(), ::testing::ExitedWithCode(1), "MESSAGEBOX\\[Brightquiver Error\\|1\\].*\\[76\\]");
    const std::string log = readFile(t.errorLog());
    EXPECT_NE(log.find("Location: Form1.GetFolderList()\r\n"), std::string::npos) << log;
}

TEST(ShellCatalogueTest, AnEmptyQuestionFileEndsTheProgramAtStart)
{
    TestApp t;
    writeFile(t.questionDir() + "/broken.kqb", "");
    EXPECT_EXIT(t.start(), ::testing::ExitedWithCode(1), "Brightquiver Error");
    EXPECT_NE(readFile(t.errorLog()).find("Location: Form1.GetTitle()"), std::string::npos);
}

TEST(ShellCatalogueTest, OnlyANonEmptyProgressFileEnablesTheLoadItem)
{
    TestApp t;
    bank(t, "e.kqb", "KESTA Exam Demo 1");
    bank(t, "q.kqb", "KESTA Quiz Demo 1");
    writeFile(t.userDir() + "/e.kqb.usr", "x");
    writeFile(t.userDir() + "/q.kqb.usr", "");
    Form1& f = t.start();

    EXPECT_TRUE(f.ch01[0]->isEnabled());
    EXPECT_TRUE(f.ch01[0]->isVisible());
    EXPECT_EQ(f.ch01[0]->text(), "KESTA Exam Demo 1");
    EXPECT_FALSE(f.r01[0]->isEnabled());
}

// ---- the options file and the wizard ----

struct WizardView {
    std::vector<std::string> texts; // Combo1..Combo4 as shown
    int items[4] = {};
};

// A modal script that notes what the wizard shows, then runs `act` on it.
test::FakeHost::ModalScript inspectWizard(WizardView& view, std::function<void(Config_Wizard_01&)> act)
{
    return [&view, act](QDialog& d) {
        auto& w = dynamic_cast<Config_Wizard_01&>(d);
        EXPECT_EQ(w.windowTitle(), "Configuration Wizard");
        EXPECT_EQ(w.Next->text(), "Finish");
        int i = 0;
        for (QComboBox* combo : {w.Combo1, w.Combo2, w.Combo3, w.Combo4}) {
            view.texts.push_back(combo->currentText().toStdString());
            view.items[i++] = combo->count();
        }
        act(w);
    };
}

std::string optionsFile(const TestApp& t) { return t.userDir() + "/option.usr"; }

class ShellOptionsRepairTest : public ::testing::TestWithParam<const char*> {};

TEST_P(ShellOptionsRepairTest, ADamagedFileIsReplacedByTheDefaultsAfterANotice)
{
    TestApp t;
    if (GetParam() != nullptr)
        writeFile(optionsFile(t), GetParam());
    Form1& f = t.start();
    WizardView view;
    t.host.modalScripts.push_back(inspectWizard(view, [](Config_Wizard_01& w) { test::clickButton(w, "Cancel"); }));
    f.mnuOptions_Click();

    ASSERT_EQ(t.host.messages.size(), 1u);
    EXPECT_EQ(t.host.messages[0].text, Corrupt);
    EXPECT_EQ(t.host.messages[0].title, "KESTA DEMO");
    EXPECT_EQ(t.host.messages[0].icon, MessageIcon::None);
    EXPECT_EQ(t.host.messages[0].buttons, MessageButtons::Ok);
    EXPECT_EQ(readFile(optionsFile(t)), Defaults);
    EXPECT_EQ(view.texts, (std::vector<std::string>{"0", "1", "30", "5"}));
    EXPECT_EQ(view.items[0], 25);
    EXPECT_EQ(view.items[1], 60);
    EXPECT_EQ(view.items[2], 60);
    EXPECT_EQ(view.items[3], 13);
    EXPECT_FALSE(fs::exists(t.errorLog()));
}

INSTANTIATE_TEST_SUITE_P(Damage, ShellOptionsRepairTest,
                         ::testing::Values(nullptr, "1\r\n0\r\n0\r\n1\r\n30", "1\r\n0\r\nzero\r\n1\r\n30\r\n5",
                                           "1\r\n0\r\n0\r\n40000\r\n30\r\n5"));

TEST(ShellOptionsTest, AFontSizeOutsideTheListIsKeptAndShownEmpty)
{
    TestApp t;
    writeFile(optionsFile(t), "1\r\n0\r\n0\r\n1\r\n30\r\n20\r\nignored");
    Form1& f = t.start();
    WizardView view;
    t.host.modalScripts.push_back(inspectWizard(view, [](Config_Wizard_01& w) { test::clickButton(w, "Cancel"); }));
    f.mnuOptions_Click();

    EXPECT_TRUE(t.host.messages.empty());
    EXPECT_EQ(t.app->state.options.values[6], 20);
    EXPECT_EQ(view.texts, (std::vector<std::string>{"0", "1", "30", ""}));
}

TEST(ShellOptionsTest, FinishRewritesTheFileKeepingTheCarriedLines)
{
    TestApp t;
    writeFile(optionsFile(t), "7\r\n-2\r\n0\r\n1\r\n30\r\n5\r\n");
    Form1& f = t.start();
    WizardView first;
    t.host.modalScripts.push_back(inspectWizard(first, [](Config_Wizard_01& w) {
        w.Combo1->setCurrentIndex(2);
        w.Combo2->setCurrentIndex(0);
        w.Combo3->lineEdit()->clear();
        QTest::keyClicks(w.Combo3->lineEdit(), "45");
        w.Combo4->setCurrentIndex(12);
        test::clickButton(w, "Next");
    }));
    f.mnuOptions_Click();
    t.settle();

    EXPECT_EQ(readFile(optionsFile(t)), "7\r\n-2\r\n2\r\n0\r\n45\r\n12");
    EXPECT_EQ(t.host.messageTexts(), std::vector<std::string>{FinishNotice});
    EXPECT_EQ(t.host.messages[0].icon, MessageIcon::None);
    EXPECT_EQ(t.app->windows.Config_Wizard_01, nullptr);

    // Finishing without a change writes the same file and still tells.
    WizardView second;
    t.host.modalScripts.push_back(inspectWizard(second, [](Config_Wizard_01& w) { test::clickButton(w, "Next"); }));
    f.mnuOptions_Click();
    EXPECT_EQ(second.texts, (std::vector<std::string>{"2", "0", "45", "12"}));
    EXPECT_EQ(readFile(optionsFile(t)), "7\r\n-2\r\n2\r\n0\r\n45\r\n12");
    EXPECT_EQ(t.host.messageTexts(), (std::vector<std::string>{FinishNotice, FinishNotice}));
}

TEST(ShellOptionsTest, CancelLeavesTheFileAndTheOptionsAlone)
{
    TestApp t;
    const std::string content = "1\r\n0\r\n0\r\n2\r\n15\r\n3\r\nextra line";
    writeFile(optionsFile(t), content);
    Form1& f = t.start();
    WizardView view;
    t.host.modalScripts.push_back(inspectWizard(view, [](Config_Wizard_01& w) {
        w.Combo1->setCurrentIndex(9);
        test::clickButton(w, "Cancel");
    }));
    f.mnuOptions_Click();
    EXPECT_EQ(readFile(optionsFile(t)), content);
    EXPECT_EQ(t.app->state.options.values[3], 0);
    EXPECT_EQ(t.app->state.options.values[4], 2);
    EXPECT_TRUE(t.host.messages.empty());
}

TEST(ShellOptionsTest, ATypedWordEndsTheProgramWithTheDefaultErrorAndKeepsTheFile)
{
    TestApp t;
    writeFile(optionsFile(t), Defaults);
    Form1& f = t.start();
    t.host.modalScripts.push_back([](QDialog& d) {
        auto& w = dynamic_cast<Config_Wizard_01&>(d);
        w.Combo2->setEditText("soon");
        test::clickButton(w, "Next");
    });
    EXPECT_EXIT(f.mnuOptions_Click(), ::testing::ExitedWithCode(1), "Run-time error '13'");
    EXPECT_EQ(readFile(optionsFile(t)), Defaults);
    EXPECT_FALSE(fs::exists(t.errorLog()));
}

// ---- splash, About and progress windows ----

enum class Trigger { Window, Frame, Warning, Key, Timer };

class ShellSplashTest : public ::testing::TestWithParam<Trigger> {};

// A splash as the program shows it at launch.
QPointer<frmSplash> showSplash(TestApp& t)
{
    QPointer<frmSplash> splash = new frmSplash(*t.app);
    splash->Form_Load();
    splash->show();
    return splash;
}

TEST_P(ShellSplashTest, EveryTriggerOpensTheMainWindow)
{
    TestApp t;
    QPointer<frmSplash> splash = showSplash(t);
    EXPECT_EQ(splash->lblProductName->text(), "KESTA DEMO");
    EXPECT_EQ(splash->Timer2->interval(), 4000);
    EXPECT_TRUE(splash->Timer2->isActive());
    EXPECT_EQ(t.app->windows.form1, nullptr);

    switch (GetParam()) {
    case Trigger::Window: QTest::mouseClick(splash, Qt::LeftButton, {}, QPoint(3, 3)); break;
    case Trigger::Frame: QTest::mouseClick(splash->Frame1, Qt::LeftButton, {}, QPoint(4, 4)); break;
    case Trigger::Warning: QTest::mouseClick(splash->lblWarning, Qt::LeftButton); break;
    case Trigger::Key: QTest::keyClick(splash, Qt::Key_Space); break;
    case Trigger::Timer: splash->Timer2->setInterval(5); break;
    }
    ASSERT_TRUE(QTest::qWaitFor([&] { return t.app->windows.form1 != nullptr; }, 2000));
    EXPECT_TRUE(t.form1().isVisible());
    t.settle();
    EXPECT_TRUE(splash.isNull());
}

TEST(ShellSplashOnceTest, ATickAfterAKeyOpensNothingMore)
{
    TestApp t;
    QPointer<frmSplash> splash = showSplash(t);
    QTest::keyClick(splash, Qt::Key_A);
    ASSERT_NE(t.app->windows.form1, nullptr);
    ASSERT_FALSE(splash.isNull());
    EXPECT_FALSE(splash->isVisible());
    EXPECT_FALSE(splash->Timer2->isActive());

    t.form1().hide();
    splash->Timer2_Timer();
    splash->Form_Click();
    EXPECT_FALSE(t.form1().isVisible());
}

INSTANTIATE_TEST_SUITE_P(Triggers, ShellSplashTest,
                         ::testing::Values(Trigger::Window, Trigger::Frame, Trigger::Warning, Trigger::Key,
                                           Trigger::Timer));

TEST(ShellAboutTest, TheBoxNamesTheProgramAndItsVersion)
{
    TestApp t;
    Form1& f = t.start();
    t.host.modalScripts.push_back([&](QDialog& d) {
        auto& about = dynamic_cast<frmAbout&>(d);
        EXPECT_EQ(t.app->windows.frmAbout, &about);
        EXPECT_EQ(about.windowTitle(), "About KESTA DEMO");
        EXPECT_EQ(about.lblTitle->text(), "KESTA DEMO");
        EXPECT_EQ(about.lblVersion->text(), "Version 12.11.23");
        EXPECT_TRUE(about.lblDescription->text().startsWith("KESTA DEMO\n"));
        EXPECT_GT(about.lblDescription->text().size(), 12);
        EXPECT_EQ(about.cmdOK->text(), "OK");
        EXPECT_EQ(about.cmdSysInfo->text(), "&System Info...");
        test::clickButton(d, "cmdSysInfo");
        test::clickButton(d, "cmdOK");
        EXPECT_FALSE(d.isVisible());
    });
    f.AboutItem_Click();
    t.settle();

    EXPECT_EQ(t.host.modals, std::vector<std::string>{"frmAbout"});
    ASSERT_EQ(t.host.messages.size(), 1u);
    EXPECT_EQ(t.host.messages[0].text, "System Information Is Unavailable At This Time");
    EXPECT_EQ(t.host.messages[0].title, "KESTA DEMO");
    EXPECT_EQ(t.host.messages[0].icon, MessageIcon::None);
    EXPECT_EQ(t.app->windows.frmAbout, nullptr);
}

TEST(ShellAboutTest, AnAvailableToolIsStartedWithoutAMessage)
{
    TestApp t;
    t.host.systemInformationAvailable = true;
    Form1& f = t.start();
    t.host.modalScripts.push_back(click("cmdSysInfo"));
    f.AboutItem_Click();
    EXPECT_EQ(t.host.systemInformationStarts, 1);
    EXPECT_TRUE(t.host.messages.empty());
}

TEST(ShellProgressTest, TheJobRunsOnceAtTheFirstActivation)
{
    QPointer<frmProgressBar> window = new frmProgressBar;
    EXPECT_EQ(window->windowTitle(), "Progress");
    EXPECT_EQ(window->lblProgress->text(), "This process will take a moment or two. Please wait.");
    window->show();
    int runs = 0;
    QObject::connect(window, &frmProgressBar::PerformProcess, [&] {
        ++runs;
        window->ProgressBar1->setValue(50);
        window->Form_Activate(); // a message box during the job gives the focus back
    });
    window->Form_Activate();
    EXPECT_EQ(runs, 1);
    EXPECT_FALSE(window->isVisible());
    window->Form_Activate();
    EXPECT_EQ(runs, 1);
    TestApp::settle();
    EXPECT_TRUE(window.isNull());
}

} // namespace
} // namespace kesta
