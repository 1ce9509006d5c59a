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
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <filesystem>
#include <gtest/gtest.h>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using test::readFile;
using test::TestApp;
using test::writeFile;
using Strings = std::vector<std::string>;

constexpr const char* Defaults = "1\r\n0\r\n0\r\n1\r\n30\r\n5";
constexpr const char* FinishNotice
    = "If you have modified the time per question, the change will take place upon loading a new chapter.\r\n\r\n"
      "If you have modified the font size, the change will take place when a new question is loaded.";

Strings visibleCaptions(const std::vector<QAction*>& items)
{
    Strings captions;
    for (QAction* item : items)
        if (item->isVisible())
            captions.push_back(item->text().toStdString());
    return captions;
}

void bank(TestApp& t, const std::string& name, const std::string& title)
{
    test::writeNumberedBank(t.questionDir() + "/" + name, title, 1);
}

std::string optionsFile(const TestApp& t)
{
    return t.userDir() + "/option.usr";
}

// ---- the catalogue and its menus ----

TEST(ShellCatalogueTest, MenusOfferThirtyOneExamsAndElevenQuizzesInFileNameOrder)
{
    TestApp t;
    for (int i = 32; i >= 1; --i) { // written out of order: the menus follow the names
        const std::string n = (i < 10 ? "0" : "") + std::to_string(i);
        bank(t, "exam" + n + ".kqb", "KESTA Exam Demo " + n);
        if (i <= 12)
            bank(t, "quiz" + n + ".kqb", "KESTA Quiz Demo " + n);
    }
    Form1& f = t.start();

    const Strings exams = visibleCaptions(f.Chapter1), quizzes = visibleCaptions(f.Review1);
    ASSERT_EQ(exams.size(), 31u);
    ASSERT_EQ(quizzes.size(), 11u);
    EXPECT_EQ(exams.front() + " .. " + exams.back() + ", " + quizzes.back(),
        "KESTA Exam Demo 01 .. KESTA Exam Demo 31, KESTA Quiz Demo 11");
    EXPECT_EQ(visibleCaptions(f.ch01), exams);
    EXPECT_EQ(visibleCaptions(f.r01), quizzes);
}

TEST(ShellCatalogueTest, TheTitleDecidesTheMenusAndANonEmptyProgressFileEnablesLoading)
{
    TestApp t;
    bank(t, "a-quiz.kqb", "kesta EXAM demo 3");
    bank(t, "b.kqb", "KESTA Exam Demo and KESTA Quiz Demo");
    bank(t, "c.kqb", "Release notes");
    writeFile(t.userDir() + "/a-quiz.kqb.usr", "x");
    writeFile(t.userDir() + "/b.kqb.usr", "");
    Form1& f = t.start();

    EXPECT_EQ(visibleCaptions(f.Chapter1), (Strings { "kesta EXAM demo 3", "KESTA Exam Demo and KESTA Quiz Demo" }));
    EXPECT_EQ(visibleCaptions(f.Review1), Strings { "KESTA Exam Demo and KESTA Quiz Demo" });
    EXPECT_EQ(t.app->state.catalogues.QuizCatalogue[0].FileName, "b.kqb");
    EXPECT_EQ(visibleCaptions(f.ch01), visibleCaptions(f.Chapter1));
    EXPECT_TRUE(f.ch01[0]->isEnabled());
    EXPECT_FALSE(f.ch01[1]->isEnabled() || f.r01[0]->isEnabled()); // zero bytes count as no progress
}

TEST(ShellCatalogueTest, AnEmptyQuestionFolderLeavesEveryTestItemHidden)
{
    TestApp t;
    Form1& f = t.start();
    for (const auto* items : { &f.Chapter1, &f.Review1, &f.ch01, &f.r01 })
        EXPECT_TRUE(visibleCaptions(*items).empty());
    EXPECT_TRUE(f.isVisible());
    EXPECT_FALSE(fs::exists(t.errorLog()));
}

TEST(ShellCatalogueTest, AMissingQuestionFolderEndsTheProgramAtStart)
{
    TestApp t;
    fs::remove_all(t.questionDir());
    EXPECT_EXIT(t.start(), ::testing::ExitedWithCode(1), "MESSAGEBOX\\[Brightquiver Error\\|1\\].*\\[76\\]");
    EXPECT_NE(readFile(t.errorLog()).find("Location: Form1.GetFolderList()\r\n"), std::string::npos);
}

// ---- the options file and the wizard ----

// Opens the wizard (starting the program first if needed), notes the combo
// texts it shows and lets `act` answer it.
Strings openWizard(TestApp& t, std::function<void(Config_Wizard_01&)> act)
{
    Form1& f = t.app->windows.form1 ? t.form1() : t.start();
    Strings texts;
    t.host.modalScripts.push_back([&](QDialog& d) {
        auto& w = dynamic_cast<Config_Wizard_01&>(d);
        for (QComboBox* combo : { w.Combo1, w.Combo2, w.Combo3, w.Combo4 })
            texts.push_back(combo->currentText().toStdString());
        act(w);
    });
    f.mnuOptions_Click();
    TestApp::settle();
    return texts;
}

TEST(ShellOptionsTest, CancelKeepsWhatWasReadAndADamagedFileIsRepairedFirst)
{
    const struct {
        const char* content; // null: no file
        bool repaired; // a notice, then the defaults are written and shown
        Strings shown, kept; // the combo texts, and lines 3 to 6 as read
    } cases[] = {
        { nullptr, true, { "0", "1", "30", "5" }, { "0", "1", "30", "5" } },
        { "1\r\n0\r\n0\r\n1\r\n30", true, { "0", "1", "30", "5" }, { "0", "1", "30", "5" } },
        { "1\r\n0\r\nzero\r\n1\r\n30\r\n5", true, { "0", "1", "30", "5" }, { "0", "1", "30", "5" } },
        { "1\r\n0\r\n0\r\n40000\r\n30\r\n5", true, { "0", "1", "30", "5" }, { "0", "1", "30", "5" } },
        // a font size outside the list is kept and shown empty
        { "1\r\n0\r\n0\r\n1\r\n30\r\n20\r\nignored", false, { "0", "1", "30", "" }, { "0", "1", "30", "20" } },
        { "1\r\n0\r\n0\r\n2\r\n15\r\n3\r\nextra line", false, { "0", "2", "15", "3" }, { "0", "2", "15", "3" } },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content ? c.content : "no file");
        TestApp t;
        if (c.content)
            writeFile(optionsFile(t), c.content);
        const Strings shown = openWizard(t, [](Config_Wizard_01& w) {
            w.Combo1->setCurrentIndex(9);
            test::clickButton(w, "Cancel");
        });
        Strings kept;
        for (int line = 3; line <= 6; ++line)
            kept.push_back(std::to_string(t.app->state.options.values[line]));
        EXPECT_EQ(std::tuple(shown, kept, readFile(optionsFile(t))),
            std::tuple(c.shown, c.kept, std::string(c.repaired ? Defaults : c.content)));
        EXPECT_EQ(t.host.messageTexts(),
            c.repaired ? Strings { "The options file appears to be corrupt. Default settings will be restored." }
                       : Strings {});
        if (c.repaired) {
            EXPECT_EQ(std::tuple(t.host.messages[0].title, t.host.messages[0].icon, t.host.messages[0].buttons),
                std::tuple(std::string("KESTA DEMO"), MessageIcon::None, MessageButtons::Ok));
        }
        EXPECT_FALSE(fs::exists(t.errorLog()));
    }
}

TEST(ShellOptionsTest, FinishRewritesTheFileKeepingTheCarriedLines)
{
    TestApp t;
    writeFile(optionsFile(t), "7\r\n-2\r\n0\r\n1\r\n30\r\n5\r\n");
    std::vector<int> items;
    openWizard(t, [&](Config_Wizard_01& w) {
        for (QComboBox* combo : { w.Combo1, w.Combo2, w.Combo3, w.Combo4 })
            items.push_back(combo->count());
        w.Combo1->setCurrentIndex(2);
        w.Combo2->setCurrentIndex(0);
        w.Combo3->lineEdit()->clear();
        QTest::keyClicks(w.Combo3->lineEdit(), "45");
        w.Combo4->setCurrentIndex(12);
        test::clickButton(w, "Next");
    });
    EXPECT_EQ(items, (std::vector<int> { 25, 60, 60, 13 }));
    EXPECT_EQ(readFile(optionsFile(t)), "7\r\n-2\r\n2\r\n0\r\n45\r\n12");
    EXPECT_EQ(t.app->windows.Config_Wizard_01, nullptr);

    // Finishing without a change writes the same file and still tells.
    EXPECT_EQ(
        openWizard(t, [](Config_Wizard_01& w) { test::clickButton(w, "Next"); }), (Strings { "2", "0", "45", "12" }));
    EXPECT_EQ(readFile(optionsFile(t)), "7\r\n-2\r\n2\r\n0\r\n45\r\n12");
    EXPECT_EQ(t.host.messageTexts(), (Strings { FinishNotice, FinishNotice }));
}

TEST(ShellOptionsTest, ATypedWordEndsTheProgramWithTheDefaultErrorAndKeepsTheFile)
{
    TestApp t;
    writeFile(optionsFile(t), Defaults);
    EXPECT_EXIT(openWizard(t,
                    [](Config_Wizard_01& w) {
                        w.Combo2->setEditText("soon");
                        test::clickButton(w, "Next");
                    }),
        ::testing::ExitedWithCode(1), "Run-time error '13'");
    EXPECT_EQ(readFile(optionsFile(t)), Defaults);
    EXPECT_FALSE(fs::exists(t.errorLog()));
}

// ---- splash, About and progress windows ----

TEST(ShellSplashTest, EveryTriggerOpensTheMainWindowOnce)
{
    using Trigger = std::function<void(frmSplash&)>;
    const Trigger triggers[] = {
        [](frmSplash& s) { QTest::mouseClick(&s, Qt::LeftButton, {}, QPoint(3, 3)); },
        [](frmSplash& s) { QTest::mouseClick(s.Frame1, Qt::LeftButton, {}, QPoint(4, 4)); },
        [](frmSplash& s) { QTest::mouseClick(s.lblWarning, Qt::LeftButton); },
        [](frmSplash& s) { QTest::keyClick(&s, Qt::Key_Space); },
        nullptr, // the timer
    };
    for (const Trigger& trigger : triggers) {
        SCOPED_TRACE(&trigger - triggers);
        TestApp t;
        QPointer<frmSplash> splash = new frmSplash(*t.app);
        splash->Form_Load();
        splash->show();
        ASSERT_EQ(t.app->windows.form1, nullptr);
        if (trigger) {
            trigger(*splash);
        } else {
            splash->Timer2->setInterval(5);
            ASSERT_TRUE(QTest::qWaitFor([&] { return t.app->windows.form1 != nullptr; }, 2000));
        }
        ASSERT_NE(t.app->windows.form1, nullptr);
        EXPECT_TRUE(t.form1().isVisible());
        if (trigger) { // a later tick or click opens nothing more
            ASSERT_FALSE(splash.isNull());
            EXPECT_FALSE(splash->isVisible() || splash->Timer2->isActive());
            t.form1().hide();
            splash->Timer2_Timer();
            splash->Form_Click();
            EXPECT_FALSE(t.form1().isVisible());
        }
        t.settle();
        EXPECT_TRUE(splash.isNull());
    }
}

TEST(ShellAboutTest, TheBoxNamesTheProgramAndItsVersion)
{
    TestApp t;
    Form1& f = t.start();
    t.host.modalScripts.push_back([&](QDialog& d) {
        auto& about = dynamic_cast<frmAbout&>(d);
        EXPECT_EQ(std::tuple(about.windowTitle(), about.lblTitle->text(), about.lblVersion->text()),
            std::tuple(QString("About KESTA DEMO"), QString("KESTA DEMO"), QString("Version 12.11.23")));
        EXPECT_TRUE(about.lblDescription->text().startsWith("KESTA DEMO\n"));
        EXPECT_EQ(about.cmdSysInfo->text(), "&System Info...");
        test::clickButton(d, "cmdSysInfo");
        test::clickButton(d, "cmdOK");
    });
    f.AboutItem_Click();
    t.settle();

    EXPECT_EQ(t.host.modals, Strings { "frmAbout" });
    EXPECT_EQ(t.host.messageTexts(), Strings { "System Information Is Unavailable At This Time" });
    EXPECT_EQ(t.host.messages[0].title, "KESTA DEMO");
}

TEST(ShellProgressTest, TheJobRunsOnceAtTheFirstActivation)
{
    QPointer<frmProgressBar> window = new frmProgressBar;
    window->show();
    int runs = 0;
    QObject::connect(window, &frmProgressBar::PerformProcess, [&] {
        ++runs;
        window->Form_Activate(); // a message box during the job gives the focus back
    });
    window->Form_Activate();
    window->Form_Activate();
    EXPECT_EQ(runs, 1);
    EXPECT_FALSE(window->isVisible());
    TestApp::settle();
    EXPECT_TRUE(window.isNull());
}

} // namespace
} // namespace kesta
