// Every window is read through the accessibility tree, as a screen reader
// (or a test driving the real program from outside) finds its controls:
// each control must be announced by its visible caption or its label, and
// Tab must walk the controls in the order they are laid out.
#include "app/ui/About.h"
#include "app/ui/ConfigWizard.h"
#include "app/ui/ProgressWindow.h"
#include "app/ui/Splash.h"
#include "common/ui/Widgets.h"
#include "progress/ui/Form2.h"
#include "session/ui/ConfirmDialogs.h"
#include "support/BankWriter.h"
#include "support/TestApp.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QAccessible>
#include <QAction>
#include <QComboBox>
#include <QGroupBox>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTextBrowser>
#include <QTextEdit>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace kesta {
namespace {

using test::TestApp;
using ui::plainCaption;

QString accessibleName(QObject* object)
{
    QAccessibleInterface* iface = QAccessible::queryAccessibleInterface(object);
    return iface != nullptr ? iface->text(QAccessible::Name) : QString();
}

std::string describe(const QWidget* w)
{
    return w->window()->objectName().toStdString() + "/" + w->objectName().toStdString() + " (" +
           w->metaObject()->className() + ")";
}

// Parts of compound controls (a combo box's editor, a page view's scroll
// bars and viewport) are announced through their owner, not on their own.
bool isPartOfCompound(const QWidget* w, const QWidget* window)
{
    for (const QWidget* p = w->parentWidget(); p != nullptr && p != window; p = p->parentWidget()) {
        if (qobject_cast<const QComboBox*>(p) || qobject_cast<const QAbstractScrollArea*>(p))
            return true;
    }
    return false;
}

// The label that names `w`, if any.
const QLabel* buddyLabel(const QWidget* w, const QWidget* window)
{
    for (const QLabel* label : window->findChildren<QLabel*>()) {
        if (label->buddy() == w)
            return label;
    }
    return nullptr;
}

// Checks every control shown in `window`: buttons, option buttons, labels and
// frames are announced by their caption (without the mnemonic marker); a
// control without a caption of its own by its label or an explicit name.
void expectNamedControls(QWidget* window)
{
    int checked = 0;
    for (QWidget* w : window->findChildren<QWidget*>()) {
        if (w->window() != window || !w->isVisibleTo(window) || isPartOfCompound(w, window))
            continue;
        const QString name = accessibleName(w);
        if (auto* button = qobject_cast<QAbstractButton*>(w)) {
            EXPECT_FALSE(name.isEmpty()) << describe(w);
            EXPECT_EQ(name, plainCaption(button->text())) << describe(w);
        } else if (auto* label = qobject_cast<QLabel*>(w)) {
            // A label is read as it stands; only a label with a buddy turns '&' into a mnemonic.
            EXPECT_EQ(name, label->buddy() ? plainCaption(label->text()) : label->text()) << describe(w);
        } else if (auto* group = qobject_cast<QGroupBox*>(w)) {
            EXPECT_EQ(name, plainCaption(group->title())) << describe(w);
        } else if (qobject_cast<QComboBox*>(w) || qobject_cast<QTextEdit*>(w) || qobject_cast<QProgressBar*>(w) ||
                   qobject_cast<QLineEdit*>(w)) {
            EXPECT_FALSE(name.isEmpty()) << describe(w);
            if (const QLabel* label = buddyLabel(w, window)) {
                EXPECT_EQ(name, plainCaption(label->text())) << describe(w);
            }
        } else {
            continue; // frames and containers are not announced
        }
        ++checked;
    }
    EXPECT_GT(checked, 0) << window->objectName().toStdString();
}

// Checks the items of a menu and its submenus as the menu announces them.
// Returns the number of visible items checked.
int expectNamedMenuItems(QWidget* menu)
{
    QAccessibleInterface* iface = QAccessible::queryAccessibleInterface(menu);
    EXPECT_NE(iface, nullptr);
    if (iface == nullptr)
        return 0;
    int checked = 0;
    for (int i = 0; i < iface->childCount(); ++i) {
        auto* action = qobject_cast<QAction*>(iface->child(i)->object());
        if (action == nullptr || action->isSeparator() || !action->isVisible())
            continue;
        const QString name = iface->child(i)->text(QAccessible::Name);
        EXPECT_FALSE(name.isEmpty()) << action->objectName().toStdString();
        EXPECT_EQ(name, plainCaption(action->text())) << action->objectName().toStdString();
        ++checked;
        if (action->menu() != nullptr)
            checked += expectNamedMenuItems(action->menu());
    }
    return checked;
}

// The mnemonic letters of a menu's visible items; an item without one is "".
std::vector<QString> mnemonics(const QWidget* menu)
{
    std::vector<QString> letters;
    for (QAction* action : menu->actions()) {
        if (!action->isSeparator() && action->isVisible())
            letters.push_back(QKeySequence::mnemonic(action->text()).toString().toUpper());
    }
    return letters;
}

QRect placeIn(const QWidget* w, const QWidget* window)
{
    return QRect(w->mapTo(window, QPoint(0, 0)), w->size());
}

// True when `a` comes before `b` reading the window row by row, left to right.
bool laidOutBefore(const QRect& a, const QRect& b)
{
    if (a.bottom() < b.top())
        return true;
    if (b.bottom() < a.top())
        return false;
    return a.left() < b.left();
}

// The controls that Tab reaches in `window`, in the order it reaches them,
// starting from the first one laid out.
std::vector<QWidget*> tabChain(QWidget* window)
{
    std::vector<QWidget*> reachable;
    for (QWidget* w = window->nextInFocusChain(); w != window; w = w->nextInFocusChain()) {
        if (w->window() == window && (w->focusPolicy() & Qt::TabFocus) && w->isVisibleTo(window) &&
            w->isEnabled() && w->focusProxy() == nullptr && !isPartOfCompound(w, window))
            reachable.push_back(w);
    }
    if (reachable.empty())
        return reachable;
    // The chain is a ring: rotate it to start at the control laid out first.
    auto first = reachable.begin();
    for (auto it = reachable.begin(); it != reachable.end(); ++it) {
        if (laidOutBefore(placeIn(*it, window), placeIn(*first, window)))
            first = it;
    }
    std::rotate(reachable.begin(), first, reachable.end());
    return reachable;
}

std::vector<std::string> names(const std::vector<QWidget*>& widgets)
{
    std::vector<std::string> out;
    for (const QWidget* w : widgets)
        out.push_back(w->objectName().toStdString());
    return out;
}

// Checks that Tab walks the controls of `window` in layout order and that
// it reaches exactly the `expected` controls (by objectName), in that order.
void expectTabOrder(QWidget* window, const std::vector<std::string>& expected)
{
    const std::vector<QWidget*> chain = tabChain(window);
    EXPECT_EQ(names(chain), expected) << window->objectName().toStdString();
    for (std::size_t i = 1; i < chain.size(); ++i) {
        EXPECT_FALSE(laidOutBefore(placeIn(chain[i], window), placeIn(chain[i - 1], window)))
            << describe(chain[i]) << " is reached after " << describe(chain[i - 1]);
    }
}

// Both checks on a window in its current state.
void expectAccessible(QWidget* window, const std::vector<std::string>& tabStops)
{
    SCOPED_TRACE(window->objectName().toStdString());
    expectNamedControls(window);
    expectTabOrder(window, tabStops);
}

// A program with a three-question quiz and a score already saved for it.
class AccessibilityTest : public ::testing::Test {
protected:
    AccessibilityTest()
    {
        test::writeNumberedBank(t.questionDir() + "/quiz.kqb", "KESTA Quiz Demo - Two", 3);
        test::writeNumberedBank(t.questionDir() + "/exam.kqb", "KESTA Exam Demo - One", 3);
        test::writeFile(t.userDir() + "/option.usr", "1\r\n0\r\n0\r\n1\r\n30\r\n5");
        f = &t.start();
    }

    void startQuiz()
    {
        f->Review1[0]->trigger();
        TestApp::settle();
        QTest::mouseClick(f->Start_Test, Qt::LeftButton);
        f->Timer1->setInterval(24 * 3600 * 1000); // the test drives the countdown itself
    }

    TestApp t;
    Form1* f = nullptr;
};

TEST_F(AccessibilityTest, MainWindowControlsFollowTheirCaptionsAndTabInLayoutOrder)
{
    expectAccessible(f, {"WebBrowser1"});
    EXPECT_EQ(accessibleName(f->WebBrowser1), "Question page");

    f->Review1[0]->trigger();
    TestApp::settle();
    expectAccessible(f, {"WebBrowser1", "Start_Test", "EndExam"});
    EXPECT_EQ(accessibleName(f->Start_Test), "Start Domain Quiz");
    EXPECT_EQ(accessibleName(f->EndExam), "End Domain Quiz");

    QTest::mouseClick(f->Start_Test, Qt::LeftButton);
    f->Timer1->setInterval(24 * 3600 * 1000);
    expectAccessible(f, {"WebBrowser1", "Option1", "Option2", "Option3", "Option4", "Command2", "ViewAnswer",
                         "EndExam"});
    // The header and the countdown are read as they change.
    EXPECT_EQ(accessibleName(f->Num_Label1), "Chapter: KESTA Quiz Demo - Two | Question 1 of 3");
    f->Timer1_Timer();
    EXPECT_EQ(accessibleName(f->TimeLeft), f->TimeLeft->text());
    EXPECT_FALSE(f->TimeLeft->text().isEmpty());

    f->checkOption(2);
    QTest::mouseClick(f->Command2, Qt::LeftButton);
    expectAccessible(f, {"WebBrowser1", "Option1", "Option2", "Option3", "Option4", "Back_Command1", "Command2",
                         "ViewAnswer", "EndExam"});
    EXPECT_EQ(accessibleName(f->Num_Label1), "Chapter: KESTA Quiz Demo - Two | Question 2 of 3");
}

TEST_F(AccessibilityTest, MenuItemsAreReadWithoutTheirMnemonicMarkers)
{
    // Every item, the hidden catalogue slots aside, is announced by its caption.
    EXPECT_GE(expectNamedMenuItems(f->menuBar()), 16);
    QAccessibleInterface* file = QAccessible::queryAccessibleInterface(f->mnuFile);
    ASSERT_NE(file, nullptr);
    std::map<QAction*, QString> read;
    for (int i = 0; i < file->childCount(); ++i) {
        if (auto* action = qobject_cast<QAction*>(file->child(i)->object()))
            read[action] = file->child(i)->text(QAccessible::Name);
    }
    EXPECT_EQ(read[f->quitMenuItem], "Exit KESTA DEMO");
    EXPECT_EQ(read[f->mnuOptions], "Options");
    EXPECT_EQ(read[f->Save_Progress], "Save Domain Quiz or Exam Progress");
}

TEST_F(AccessibilityTest, FixedMenusHaveDistinctMnemonicsThatLeaveTheCaptionsVisiblyUnchanged)
{
    for (QWidget* menu : std::initializer_list<QWidget*>{f->menuBar(), f->mnuFile, f->mnuNew, f->Restore,
                                                          f->mnuHelp}) {
        SCOPED_TRACE(menu->objectName().toStdString());
        const std::vector<QString> letters = mnemonics(menu);
        ASSERT_FALSE(letters.empty());
        std::set<QString> distinct;
        for (const QString& letter : letters) {
            EXPECT_FALSE(letter.isEmpty());
            EXPECT_TRUE(distinct.insert(letter).second) << "mnemonic used twice: " << letter.toStdString();
        }
    }
    const std::map<QAction*, QString> captions = {
        {f->mnuNew->menuAction(), "New Domain Quiz or Exam"},
        {f->mnuPracticeExams->menuAction(), "Select Exam"},
        {f->mnuReviewQuizzes->menuAction(), "Select Domain Quiz"},
        {f->Restore->menuAction(), "Load Previous Domain Quiz or Exam"},
        {f->mnuLoadP->menuAction(), "Load Exam"},
        {f->mnuLoadReview->menuAction(), "Load Domain Quiz"},
        {f->mnuViewScore->menuAction(), "View Previous Scores"},
        {f->Save_Progress, "Save Domain Quiz or Exam Progress"},
        {f->mnuPrintQuestions, "Print Questions"},
        {f->mnuOptions, "Options"},
        {f->quitMenuItem, "Exit KESTA DEMO"},
        {f->AboutItem, "About KESTA DEMO"},
        {f->mnuFile->menuAction(), "File"},
        {f->mnuHelp->menuAction(), "Help"},
    };
    for (const auto& [action, caption] : captions)
        EXPECT_EQ(plainCaption(action->text()), caption) << action->objectName().toStdString();
}

TEST_F(AccessibilityTest, OptionsWizardListsAreNamedByTheirLabels)
{
    bool ran = false;
    t.host.modalScripts.push_back([&](QDialog& dialog) {
        auto& wizard = static_cast<Config_Wizard_01&>(dialog);
        expectAccessible(&wizard, {"Combo1", "Combo2", "Combo3", "Combo4", "Cancel", "Next"});
        EXPECT_EQ(accessibleName(wizard.Combo1), "Hour");
        EXPECT_EQ(accessibleName(wizard.Combo2), "Minute");
        EXPECT_EQ(accessibleName(wizard.Combo3), "Second");
        EXPECT_EQ(accessibleName(wizard.Combo4), "Question Font Size");
        EXPECT_EQ(accessibleName(wizard.Next), "Finish");
        // Named by its label, not by the value shown in it, which stays its value.
        EXPECT_EQ(QAccessible::queryAccessibleInterface(wizard.Combo3)->text(QAccessible::Value), "30");
        EXPECT_EQ(QAccessible::queryAccessibleInterface(wizard.Combo3)->role(), QAccessible::ComboBox);
        EXPECT_EQ(wizard.Label2->buddy(), wizard.Combo1);
        ran = true;
        test::clickButton(dialog, "Cancel");
    });
    f->mnuOptions_Click();
    EXPECT_TRUE(ran);
}

TEST_F(AccessibilityTest, AboutBoxKeepsItsMnemonicButReadsWithoutIt)
{
    bool ran = false;
    t.host.modalScripts.push_back([&](QDialog& dialog) {
        auto& about = static_cast<frmAbout&>(dialog);
        expectAccessible(&about, {"cmdOK", "cmdSysInfo"});
        EXPECT_EQ(accessibleName(about.cmdSysInfo), "System Info...");
        EXPECT_EQ(accessibleName(about.lblVersion), about.lblVersion->text());
        ran = true;
        test::clickButton(dialog, "cmdOK");
    });
    f->AboutItem_Click();
    EXPECT_TRUE(ran);
}

TEST_F(AccessibilityTest, ConfirmationDialogsReadTheirQuestionAndTabFromTheLeftButton)
{
    startQuiz();

    // Leaving the program: looked at, then declined.
    bool exitSeen = false;
    t.host.modalScripts.push_back([&](QDialog& dialog) {
        expectAccessible(&dialog, {"OKButton", "CancelButton"});
        EXPECT_EQ(accessibleName(dialog.findChild<QLabel*>("Label1")), "Are you sure you wish to exit KESTA DEMO?");
        exitSeen = true;
        test::clickButton(dialog, "CancelButton");
    });
    f->quitMenuItem_Click();
    EXPECT_TRUE(exitSeen);

    // The answer window.
    bool answerSeen = false;
    t.host.modalScripts.push_back([&](QDialog& dialog) {
        expectAccessible(&dialog, {"WebBrowser1", "OK"});
        EXPECT_EQ(accessibleName(dialog.findChild<QTextEdit*>("WebBrowser1")), "Answer page");
        answerSeen = true;
        test::clickButton(dialog, "OK");
    });
    f->ViewAnswer_Click();
    EXPECT_TRUE(answerSeen);

    // Ending the test early, and the save question it asks.
    f->EndExam_Click();
    QDialog* end = t.app->windows.Dialog;
    ASSERT_NE(end, nullptr);
    expectAccessible(end, {"OKButton", "CancelButton"});
    EXPECT_EQ(accessibleName(end->findChild<QLabel*>("Label1")),
              "Are you sure you wish to terminate the current Domain Quiz?");
    bool saveSeen = false;
    t.host.modalScripts.push_back([&](QDialog& dialog) {
        expectAccessible(&dialog, {"OKButton", "CancelButton"});
        EXPECT_EQ(accessibleName(dialog.findChild<QPushButton*>("OKButton")), "Yes");
        saveSeen = true;
        test::clickButton(dialog, "CancelButton");
    });
    QTest::mouseClick(end->findChild<QPushButton*>("OKButton"), Qt::LeftButton);
    EXPECT_TRUE(saveSeen);
}

TEST_F(AccessibilityTest, ResultsWindowTabsRowByRowAndItsCloseQuestionFromTheLeft)
{
    startQuiz();
    f->Finish_Click(); // nothing answered: three explanations to walk
    TestApp::settle();
    auto* results = qobject_cast<Form2*>(t.app->windows.form2.data());
    ASSERT_NE(results, nullptr);
    EXPECT_EQ(accessibleName(results->WebBrowser1), "Results page");
    expectAccessible(results, {"WebBrowser1", "Command3", "Expl_Next", "Expl_Exit"});
    EXPECT_EQ(accessibleName(results->Label2), "0%");

    // With both navigation buttons shown, Tab goes across each row before down.
    QTest::mouseClick(results->Expl_Next, Qt::LeftButton);
    expectAccessible(results, {"WebBrowser1", "Command3", "Expl_Next", "Expl_Exit", "Expl_Back"});
    EXPECT_EQ(accessibleName(results->QuestionNumber), results->QuestionNumber->text());
    EXPECT_TRUE(results->QuestionNumber->text().endsWith("Question 2 of 3"));

    results->Command3_Click();
    QDialog* close = t.app->windows.Dialog2;
    ASSERT_NE(close, nullptr);
    // The inert laid-out buttons stay hidden, so only the acting pair is reached.
    expectAccessible(close, {"Command2", "Command1"});
    QTest::mouseClick(close->findChild<QPushButton*>("Command1"), Qt::LeftButton);
}

TEST_F(AccessibilityTest, SplashAndProgressWindowsAreReadable)
{
    {
        frmSplash splash(*t.app);
        splash.Timer2->stop(); // not handing over to a second main window
        splash.Form_Load();
        expectAccessible(&splash, {});
        EXPECT_EQ(accessibleName(splash.lblProductName), "KESTA DEMO");
    }
    frmProgressBar progress;
    expectAccessible(&progress, {});
    EXPECT_EQ(accessibleName(progress.ProgressBar1), "Progress");
    EXPECT_EQ(accessibleName(f->ProgressBar1), "Progress");
}

} // namespace
} // namespace kesta
