#include "common/ui/Widgets.h"
#include "support/TestApp.h"
#include "support/UiChecks.h"

#include <QAction>
#include <QButtonGroup>
#include <QDialog>
#include <QProgressBar>
#include <QStatusBar>
#include <QTextBrowser>
#include <QTimer>
#include <filesystem>
#include <gtest/gtest.h>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using namespace test;

constexpr const char* Refusal = "MESSAGEBOX\\[KESTA DEMO\\|0\\] One or more required KESTA DEMO data directories are "
                                "missing. A re-installation of KESTA DEMO is necessary.\nENDED 1";

// Each data folder missing in turn; null: the known-folder lookup fails, so the folders
// are sought relative to the working folder, where they are missing.
class StartupRefusalTest : public ::testing::TestWithParam<const char*> { };

TEST_P(StartupRefusalTest, AMissingDataFolderEndsTheProgramWithTheReinstallMessageAndWritesNothing)
{
    TestApp t;
    const char* missing = GetParam();
    const fs::path cwd = fs::current_path();
    if (missing == nullptr) {
        t.host.appData.reset();
        fs::current_path(t.dir.path());
    } else {
        fs::remove_all(t.appData() + missing);
    }
    EXPECT_EXIT(t.start(), ::testing::ExitedWithCode(1), Refusal);
    fs::current_path(cwd);
    EXPECT_FALSE(exists(t.errorLog()) || exists(t.dir / "MORVO") || (missing && exists(t.appData() + missing)));
    EXPECT_TRUE(!exists(t.userDir()) || fs::is_empty(t.userDir()));
}

INSTANTIATE_TEST_SUITE_P(EachFolder, StartupRefusalTest,
    ::testing::Values("MORVO", "MORVO/KESTA", "MORVO/KESTA/All", "MORVO/KESTA/All/Log", "MORVO/KESTA/All/User",
        static_cast<const char*>(nullptr)));

TEST(StartupTest, TheMainWindowOpensIdleResetsToIdleClampsItsLayoutAndAsksBeforeClosing)
{
    TestApp t;
    Form1& f = t.start();
    auto& s = t.app->state.session;
    EXPECT_EQ(t.app->state.folders.DataDir, t.dataDir());
    // The captions carry a mnemonic marker that shows only as an underline.
    EXPECT_EQ(f.windowTitle() + "|" + ui::plainCaption(f.quitMenuItem->text()) + "|"
            + ui::plainCaption(f.AboutItem->text()) + "|" + f.statusPanels[2]->text(),
        "KESTA DEMO|Exit KESTA DEMO|About KESTA DEMO|Ready");
    EXPECT_EQ(row(shownControls(f), f.Save_Progress->isEnabled(), f.Timer1->isActive(), f.Timer2->isActive(),
                  f.OptionGroup->checkedButton() == nullptr, f.ProgressBar1->value(), s.CurrentQuestion, s.RandomPick,
                  s.HighestReached, s.TestStarted),
        "|0|0|0|1|0|1|1|0|0");
    // Options are not read at start, so the first page carries no font tag.
    EXPECT_EQ(readFile(t.pageFile()), "Select a new Domain Quiz or Exam from the file menu to begin\r\n");
    EXPECT_EQ(f.WebBrowser1->toPlainText().trimmed(), "Select a new Domain Quiz or Exam from the file menu to begin");
    EXPECT_TRUE(
        f.ProgressBar1->parentWidget() == f.StatusBar1 && f.ProgressBar1->geometry() == f.statusPanels[1]->geometry());

    s.HighestReached = 4;
    s.UserAnswers[3] = "b";
    s.QuestionOrder[3] = 2;
    f.Timer1->start();
    writeFile(t.pageFile(), "untouched");
    f.Initialize();
    EXPECT_EQ(row(shownControls(f), f.Timer1->isActive(), readFile(t.pageFile()), s.HighestReached, s.UserAnswers[3],
                  s.QuestionOrder[3]),
        "Start_Test EndExam |0|untouched|0||0");
    EXPECT_EQ(f.WebBrowser1->property("address").toString() + "|" + f.WebBrowser1->toPlainText(),
        "about:Select a new Domain Quiz or Exam from the file menu to begin.|Select a new Domain Quiz or Exam "
        "from the file menu to begin.");

    f.resize(900, 700);
    t.settle();
    const int w = f.centralWidget()->width();
    EXPECT_EQ(row(f.WebBrowser1->width(), f.WebBrowser1->x(), f.Frame1->x(), f.Frame1->y() + f.Frame1->height() + 23,
                  f.ProgressBar1->height()),
        row(w - 93, w / 2 - (w - 93) / 2, w / 2 - f.Frame1->width() / 2, f.centralWidget()->height(),
            f.StatusBar1->height()));
    f.resize(60, 60);
    t.settle();
    EXPECT_GE(f.WebBrowser1->width(), 0);
    EXPECT_FALSE(exists(t.errorLog()));

    // Closing asks first, and offers to save only during a test.
    std::string seen;
    t.host.modalScripts.push_back([&](QDialog& d) {
        seen = row(captions(d), d.findChild<QPushButton*>("OKButton")->toolTip().toStdString());
        clickButton(d, "CancelButton");
    });
    EXPECT_FALSE(f.close());
    EXPECT_EQ(row(f.isVisible(), t.host.modals.size(), t.host.modals.at(0), seen),
        "1|1|Dialog1|Exit KESTA DEMO|Are you sure you wish to exit KESTA DEMO?|OK|Cancel|Click here to exit "
        "KESTA Halvergrove");

    t.host.modalScripts = { click("OKButton") };
    EXPECT_EXIT(f.close(), ::testing::ExitedWithCode(0), "MODAL Dialog1\nENDED 0");
    t.app->state.session.TestStarted = true;
    t.host.modalScripts = { click("OKButton"), click("CancelButton") }; // "No": leave without saving
    EXPECT_EXIT(f.close(), ::testing::ExitedWithCode(0), "MODAL Dialog1\nMODAL Form3\nENDED 0");
    EXPECT_TRUE(fs::is_empty(t.userDir()));
}

} // namespace
} // namespace kesta
