#include "common/ui/Widgets.h"
#include "session/ui/ConfirmDialogs.h"
#include "support/TestApp.h"

#include <QAction>
#include <QButtonGroup>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QStatusBar>
#include <QTextBrowser>
#include <QTimer>

#include <gtest/gtest.h>

#include <filesystem>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using test::click;
using test::exists;
using test::readFile;
using test::TestApp;
using test::writeFile;

constexpr const char* Refusal = "MESSAGEBOX\\[KESTA DEMO\\|0\\] One or more required KESTA DEMO data directories are "
                                "missing. A re-installation of KESTA DEMO is necessary.\nENDED 1";

bool shown(const QWidget* w) { return !w->isHidden(); }

class StartupRefusalTest : public ::testing::TestWithParam<const char*> {};

TEST_P(StartupRefusalTest, AnyMissingDataFolderEndsTheProgramWithTheReinstallMessage)
{
    TestApp t;
    fs::remove_all(t.appData() + GetParam());
    EXPECT_EXIT(t.start(), ::testing::ExitedWithCode(1), Refusal);
    EXPECT_FALSE(exists(t.errorLog()));
    EXPECT_FALSE(exists(t.appData() + GetParam()));
}

INSTANTIATE_TEST_SUITE_P(EachFolder, StartupRefusalTest,
                         ::testing::Values("MORVO", "MORVO/KESTA", "MORVO/KESTA/All", "MORVO/KESTA/All/Log",
                                           "MORVO/KESTA/All/User"));

TEST(StartupTest, WithoutTheLogFolderNothingIsWritten)
{
    TestApp t;
    fs::remove_all(t.logDir());
    EXPECT_EXIT(t.start(), ::testing::ExitedWithCode(1), Refusal);
    EXPECT_TRUE(fs::is_empty(t.userDir()));
    EXPECT_FALSE(exists(t.logDir()));
}

TEST(StartupTest, AFailedKnownFolderLookupLeavesRelativeFoldersThatAreMissing)
{
    TestApp t;
    t.host.appData.reset();
    const fs::path cwd = fs::current_path();
    fs::current_path(t.dir.path());
    EXPECT_EXIT(t.start(), ::testing::ExitedWithCode(1), Refusal);
    EXPECT_FALSE(exists(t.dir / "MORVO"));
    fs::current_path(cwd);
}

TEST(StartupTest, TheMainWindowOpensIdle)
{
    TestApp t;
    Form1& f = t.start();

    EXPECT_EQ(t.app->state.folders.DataDir, t.dataDir());
    EXPECT_EQ(f.windowTitle(), "KESTA DEMO");
    // The captions carry a mnemonic marker that shows only as an underline.
    EXPECT_EQ(ui::plainCaption(f.quitMenuItem->text()), "Exit KESTA DEMO");
    EXPECT_EQ(ui::plainCaption(f.AboutItem->text()), "About KESTA DEMO");
    EXPECT_FALSE(f.Save_Progress->isEnabled());
    for (QWidget* w : std::initializer_list<QWidget*>{f.Finish, f.EndExam, f.ViewAnswer, f.Back_Command1, f.Command2,
                                                     f.Num_Label1, f.Start_Test, f.Time_Left, f.TimeLeft, f.Option1,
                                                     f.Option2, f.Option3, f.Option4, f.Label3})
        EXPECT_FALSE(shown(w)) << w->objectName().toStdString();
    EXPECT_EQ(f.Command2->text(), "Next Question");
    EXPECT_EQ(f.TimeLeft->text(), "");
    EXPECT_FALSE(f.Timer1->isActive());
    EXPECT_FALSE(f.Timer2->isActive());
    EXPECT_EQ(f.OptionGroup->checkedButton(), nullptr);

    // Options are not read at start, so the first page carries no font tag.
    EXPECT_EQ(readFile(t.pageFile()), "Select a new Domain Quiz or Exam from the file menu to begin\r\n");
    EXPECT_EQ(f.WebBrowser1->toPlainText().trimmed(), "Select a new Domain Quiz or Exam from the file menu to begin");
    EXPECT_EQ(f.statusPanels[2]->text(), "Ready");
    EXPECT_EQ(f.ProgressBar1->parentWidget(), f.StatusBar1);
    EXPECT_EQ(f.ProgressBar1->geometry(), f.statusPanels[1]->geometry());
    EXPECT_EQ(f.ProgressBar1->value(), 0);

    const auto& s = t.app->state.session;
    EXPECT_EQ(s.CurrentQuestion, 1);
    EXPECT_EQ(s.RandomPick, 1);
    EXPECT_EQ(s.HighestReached, 0);
    EXPECT_FALSE(s.TestStarted);
    EXPECT_FALSE(exists(t.errorLog()));
}

TEST(StartupTest, ReturningToIdleShowsTheStartControlsAndAnInlinePage)
{
    TestApp t;
    Form1& f = t.start();
    auto& s = t.app->state.session;
    s.HighestReached = 4;
    s.UserAnswers[3] = "b";
    s.QuestionOrder[3] = 2;
    f.Timer1->start();
    writeFile(t.pageFile(), "untouched");

    f.Initialize();

    EXPECT_TRUE(shown(f.Start_Test));
    EXPECT_TRUE(shown(f.EndExam));
    for (QWidget* w : std::initializer_list<QWidget*>{f.ViewAnswer, f.Finish, f.Back_Command1, f.Command2,
                                                     f.Num_Label1, f.Option1, f.Option4, f.Label3, f.Time_Left,
                                                     f.TimeLeft})
        EXPECT_FALSE(shown(w)) << w->objectName().toStdString();
    EXPECT_FALSE(f.Timer1->isActive());
    EXPECT_EQ(f.WebBrowser1->property("address").toString(),
              "about:Select a new Domain Quiz or Exam from the file menu to begin.");
    EXPECT_EQ(f.WebBrowser1->toPlainText(), "Select a new Domain Quiz or Exam from the file menu to begin.");
    EXPECT_EQ(readFile(t.pageFile()), "untouched");
    EXPECT_EQ(s.HighestReached, 0);
    EXPECT_EQ(s.UserAnswers[3], "");
    EXPECT_EQ(s.QuestionOrder[3], 0);
}

TEST(StartupTest, TheLayoutCentresThePageAndClampsATinyWindow)
{
    TestApp t;
    Form1& f = t.start();
    f.resize(900, 700);
    t.settle();
    const int w = f.centralWidget()->width();
    EXPECT_EQ(f.WebBrowser1->width(), w - 93);
    EXPECT_EQ(f.WebBrowser1->x(), w / 2 - f.WebBrowser1->width() / 2);
    EXPECT_EQ(f.Frame1->x(), w / 2 - f.Frame1->width() / 2);
    EXPECT_EQ(f.Frame1->y() + f.Frame1->height() + 23, f.centralWidget()->height());
    EXPECT_EQ(f.ProgressBar1->height(), f.StatusBar1->height());

    f.resize(60, 60);
    t.settle();
    EXPECT_GE(f.WebBrowser1->width(), 0);
    EXPECT_FALSE(exists(t.errorLog()));
}

TEST(StartupTest, CancellingTheExitDialogKeepsTheWindowOpen)
{
    TestApp t;
    Form1& f = t.start();
    QString title, label;
    t.host.modalScripts.push_back([&](QDialog& d) {
        title = d.windowTitle();
        label = d.findChild<QLabel*>("Label1")->text();
        EXPECT_EQ(d.findChild<QPushButton*>("OKButton")->toolTip(), "Click here to exit KESTA Halvergrove");
        test::clickButton(d, "CancelButton");
    });
    EXPECT_FALSE(f.close());
    EXPECT_TRUE(f.isVisible());
    EXPECT_EQ(t.host.modals, std::vector<std::string>{"Dialog1"});
    EXPECT_EQ(title, "Exit KESTA DEMO");
    EXPECT_EQ(label, "Are you sure you wish to exit KESTA DEMO?");
}

TEST(StartupTest, ConfirmingExitEndsTheProgramWithoutAskingToSaveWhenNoTestStarted)
{
    TestApp t;
    Form1& f = t.start();
    t.host.modalScripts.push_back(click("OKButton"));
    EXPECT_EXIT(f.close(), ::testing::ExitedWithCode(0), "MODAL Dialog1\nENDED 0");
}

TEST(StartupTest, ConfirmingExitDuringATestAsksToSaveFirst)
{
    TestApp t;
    Form1& f = t.start();
    t.app->state.session.TestStarted = true;
    t.host.modalScripts.push_back(click("OKButton"));
    t.host.modalScripts.push_back(click("CancelButton")); // "No": leave without saving
    EXPECT_EXIT(f.close(), ::testing::ExitedWithCode(0), "MODAL Dialog1\nMODAL Form3\nENDED 0");
    EXPECT_TRUE(fs::is_empty(t.userDir()));
}

} // namespace
} // namespace kesta
