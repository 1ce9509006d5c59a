// Every window is read through the accessibility tree, as a screen reader
// (or a test driving the real program from outside) finds its controls:
// each control must be announced by its visible caption, its label or an
// explicit name, and Tab must walk the controls in the order they are laid out.
#include "app/ui/About.h"
#include "app/ui/ProgressWindow.h"
#include "app/ui/Splash.h"
#include "common/ui/Widgets.h"
#include "progress/ui/Form2.h"
#include "support/BankWriter.h"
#include "support/TestApp.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QAction>
#include <QGroupBox>
#include <QKeySequence>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>

namespace kesta {
namespace {

using test::TestApp;
using ui::plainCaption;

std::string describe(const QWidget* w)
{
    return w->objectName().toStdString() + " (" + w->metaObject()->className() + ")";
}

// Shown in `window` and announced on its own: parts of compound controls (a
// combo box's editor, a page view's scroll bars) are announced by their owner.
bool shownControl(const QWidget* w, const QWidget* window)
{
    for (const QWidget* p = w->parentWidget(); p != nullptr && p != window; p = p->parentWidget()) {
        if (p->inherits("QComboBox") || p->inherits("QAbstractScrollArea"))
            return false;
    }
    return w->window() == window && w->isVisibleTo(window);
}

// Menu items are read by their caption without the mnemonic marker, and no
// two items of one menu share a mnemonic. Returns the number of items checked.
int expectNamedMenu(QWidget* menu)
{
    QAccessibleInterface* iface = QAccessible::queryAccessibleInterface(menu);
    std::set<QString> mnemonics;
    int checked = 0;
    for (int i = 0; iface != nullptr && i < iface->childCount(); ++i) {
        auto* action = qobject_cast<QAction*>(iface->child(i)->object());
        if (action == nullptr || action->isSeparator() || !action->isVisible())
            continue;
        const std::string what = menu->objectName().toStdString() + "/" + action->objectName().toStdString();
        EXPECT_FALSE(iface->child(i)->text(QAccessible::Name).isEmpty()) << what;
        EXPECT_EQ(iface->child(i)->text(QAccessible::Name), plainCaption(action->text())) << what;
        const QString letter = QKeySequence::mnemonic(action->text()).toString().toUpper();
        EXPECT_TRUE(letter.isEmpty() || mnemonics.insert(letter).second) << what << ": mnemonic used twice";
        checked += 1 + (action->menu() != nullptr ? expectNamedMenu(action->menu()) : 0);
    }
    return checked;
}

// Buttons, labels and frames are announced by their caption without the
// mnemonic marker (a label without a buddy is read as it stands); any other
// control by the label that names it, else by an explicit name, never by its value.
void expectNamedControls(QWidget* window)
{
    const QList<QLabel*> labels = window->findChildren<QLabel*>();
    int checked = 0;
    for (QWidget* w : window->findChildren<QWidget*>()) {
        if (!shownControl(w, window))
            continue;
        const QString name = QAccessible::queryAccessibleInterface(w)->text(QAccessible::Name);
        QString expected;
        if (auto* button = qobject_cast<QAbstractButton*>(w)) {
            expected = plainCaption(button->text());
        } else if (auto* label = qobject_cast<QLabel*>(w)) {
            expected = label->buddy() ? plainCaption(label->text()) : label->text();
        } else if (auto* group = qobject_cast<QGroupBox*>(w)) {
            expected = plainCaption(group->title());
        } else if (w->focusPolicy() != Qt::NoFocus || w->inherits("QProgressBar")) {
            auto named = std::find_if(labels.begin(), labels.end(), [w](QLabel* l) { return l->buddy() == w; });
            expected = named != labels.end() ? plainCaption((*named)->text()) : w->accessibleName();
        } else {
            continue; // frames and containers are not announced
        }
        EXPECT_EQ(name, expected) << describe(w);
        EXPECT_TRUE(!name.isEmpty() || qobject_cast<QLabel*>(w)) << describe(w) << " has no name";
        ++checked;
    }
    if (auto* menuBar = window->findChild<QMenuBar*>()) {
        EXPECT_GE(expectNamedMenu(menuBar), 16); // the hidden catalogue slots aside
    }
    EXPECT_GT(checked, 0);
}

// True when `a` comes before `b` in `window`, read row by row, left to right.
bool laidOutBefore(const QWidget* a, const QWidget* b, const QWidget* window)
{
    const QRect ra(a->mapTo(window, QPoint(0, 0)), a->size()), rb(b->mapTo(window, QPoint(0, 0)), b->size());
    return ra.bottom() < rb.top() || (rb.bottom() >= ra.top() && ra.left() < rb.left());
}

// Tab reaches exactly `expected` (by objectName), starting from the control
// laid out first, and never goes back up or left.
void expectTabOrder(QWidget* window, const std::vector<std::string>& expected)
{
    std::vector<QWidget*> chain;
    for (QWidget* w = window->nextInFocusChain(); w != window; w = w->nextInFocusChain()) {
        if (shownControl(w, window) && (w->focusPolicy() & Qt::TabFocus) && w->isEnabled() && !w->focusProxy())
            chain.push_back(w);
    }
    auto first = std::min_element(chain.begin(), chain.end(),
                                  [&](QWidget* a, QWidget* b) { return laidOutBefore(a, b, window); });
    std::rotate(chain.begin(), first, chain.end()); // the chain is a ring
    std::vector<std::string> names;
    for (std::size_t i = 0; i < chain.size(); ++i) {
        names.push_back(chain[i]->objectName().toStdString());
        const QWidget* previous = chain[i > 0 ? i - 1 : i];
        EXPECT_FALSE(laidOutBefore(chain[i], previous, window))
            << describe(chain[i]) << " after " << describe(previous);
    }
    EXPECT_EQ(names, expected);
}

class AccessibilityTest;
using Inspect = std::function<void(QWidget*)>;

// A window in one state: how to bring it up and the controls Tab reaches.
struct Window {
    const char* name;
    std::vector<std::string> tabStops;
    std::function<void(AccessibilityTest&, const Inspect&)> show;
};
void PrintTo(const Window& w, std::ostream* os) { *os << w.name; }

// A program with a three-question quiz and a score already saved for it.
class AccessibilityTest : public ::testing::TestWithParam<Window> {
public:
    AccessibilityTest()
    {
        test::writeNumberedBank(t.questionDir() + "/quiz.kqb", "KESTA Quiz Demo - Two", 3);
        test::writeNumberedBank(t.questionDir() + "/exam.kqb", "KESTA Exam Demo - One", 3);
        test::writeFile(t.userDir() + "/option.usr", "1\r\n0\r\n0\r\n1\r\n30\r\n5");
        f = &t.start();
    }

    void chooseQuiz() { f->Review1[0]->trigger(), TestApp::settle(); }

    // The test drives the countdown itself.
    void startQuiz() { chooseQuiz(), click(f->Start_Test), f->Timer1->setInterval(24 * 3600 * 1000); }

    static void click(QWidget* w, const char* child = nullptr)
    {
        QTest::mouseClick(child != nullptr ? w->findChild<QWidget*>(child) : w, Qt::LeftButton);
    }

    // The next modal window is inspected, then left with `closeButton`.
    void onModal(const Inspect& inspect, const char* closeButton)
    {
        t.host.modalScripts.push_back([=](QDialog& d) { inspect(&d), test::clickButton(d, closeButton); });
    }

    // Nothing answered: three explanations to walk.
    Form2* showResults()
    {
        startQuiz(), f->Finish_Click(), TestApp::settle();
        return qobject_cast<Form2*>(t.app->windows.form2.data());
    }

    QDialog* endEarly() { return startQuiz(), f->EndExam_Click(), t.app->windows.Dialog; }

    TestApp t;
    Form1* f = nullptr;
};

const Window windows[] = {
    {"MainIdle", {"WebBrowser1"}, [](auto& x, auto& in) { in(x.f); }},
    {"MainQuizChosen", {"WebBrowser1", "Start_Test", "EndExam"}, [](auto& x, auto& in) { x.chooseQuiz(); in(x.f); }},
    {"MainFirstQuestion",
     {"WebBrowser1", "Option1", "Option2", "Option3", "Option4", "Command2", "ViewAnswer", "EndExam"},
     [](auto& x, auto& in) { x.startQuiz(); in(x.f); }},
    {"MainSecondQuestion",
     {"WebBrowser1", "Option1", "Option2", "Option3", "Option4", "Back_Command1", "Command2", "ViewAnswer", "EndExam"},
     [](auto& x, auto& in) { x.startQuiz(); x.f->checkOption(2); x.click(x.f, "Command2"); in(x.f); }},
    {"OptionsWizard", {"Combo1", "Combo2", "Combo3", "Combo4", "Cancel", "Next"},
     [](auto& x, auto& in) { x.onModal(in, "Cancel"); x.f->mnuOptions_Click(); }},
    {"About", {"cmdOK", "cmdSysInfo"}, [](auto& x, auto& in) { x.onModal(in, "cmdOK"); x.f->AboutItem_Click(); }},
    {"ExitQuestion", {"OKButton", "CancelButton"},
     [](auto& x, auto& in) { x.startQuiz(); x.onModal(in, "CancelButton"); x.f->quitMenuItem_Click(); }},
    {"AnswerWindow", {"WebBrowser1", "OK"},
     [](auto& x, auto& in) { x.startQuiz(); x.onModal(in, "OK"); x.f->ViewAnswer_Click(); }},
    {"EndQuestion", {"OKButton", "CancelButton"}, [](auto& x, auto& in) { in(x.endEarly()); }},
    {"SaveQuestion", {"OKButton", "CancelButton"},
     [](auto& x, auto& in) { QDialog* end = x.endEarly(); x.onModal(in, "CancelButton"); x.click(end, "OKButton"); }},
    {"ResultsFirst", {"WebBrowser1", "Command3", "Expl_Next", "Expl_Exit"},
     [](auto& x, auto& in) { in(x.showResults()); }},
    // With both navigation buttons shown, Tab goes across each row before down.
    {"ResultsSecond", {"WebBrowser1", "Command3", "Expl_Next", "Expl_Exit", "Expl_Back"},
     [](auto& x, auto& in) { Form2* r = x.showResults(); x.click(r, "Expl_Next"); in(r); }},
    // The inert laid-out buttons stay hidden, so only the acting pair is reached.
    {"ResultsCloseQuestion", {"Command2", "Command1"},
     [](auto& x, auto& in) { x.showResults()->Command3_Click(); in(x.t.app->windows.Dialog2); }},
    {"Splash", {},
     [](auto& x, auto& in) {
         frmSplash splash(*x.t.app);
         splash.Timer2->stop(), splash.Form_Load(), in(&splash); // not handing over to a second main window
     }},
    {"ProgressWindow", {}, [](auto&, auto& in) { frmProgressBar progress; in(&progress); }},
};

TEST_P(AccessibilityTest, ControlsAreNamedAndTabInLayoutOrder)
{
    int inspected = 0;
    GetParam().show(*this, [&](QWidget* window) {
        ASSERT_NE(window, nullptr);
        expectNamedControls(window);
        expectTabOrder(window, GetParam().tabStops);
        ++inspected;
    });
    EXPECT_EQ(inspected, 1);
}

INSTANTIATE_TEST_SUITE_P(Windows, AccessibilityTest, ::testing::ValuesIn(windows),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace kesta
