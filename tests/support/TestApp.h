#pragma once

#include "app/ui/Form1.h"
#include "common/ui/Widgets.h"
#include "support/BankWriter.h"
#include "support/RecordingHost.h"
#include "support/TempDir.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QFrame>
#include <QTest>
#include <deque>
#include <filesystem>
#include <functional>
#include <sstream>

namespace kesta::test {

// Runs pending deletions and zero-time work, as the event loop would after a user's action.
inline void settle() { QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete), QApplication::processEvents(); }
// A left click near the left edge, where an answer button has its round indicator; a key.
inline void click(QWidget* w) { QTest::mouseClick(w, Qt::LeftButton, {}, QPoint(8, w->height() / 2)), settle(); }
inline void key(QWidget* w, Qt::Key k) { QTest::keyClick(w, k), settle(); }
// A script that clicks the button of this objectName, or presses Esc.
inline std::function<void(QDialog&)> press(const QString& button = "Esc")
{
    return [button](QDialog& d) { button == "Esc" ? key(&d, Qt::Key_Escape) : click(d.findChild<QWidget*>(button)); };
}

// Modal dialogs go to scripted handlers, in order, instead of waiting for a user; one without is answered with Esc.
class FakeHost : public RecordingHost {
public:
    std::deque<std::function<void(QDialog&)>> modalScripts;
    void execModal(QDialog& dialog) override
    {
        modals.push_back(dialog.objectName().toStdString());
        dialog.setModal(true), dialog.show();
        auto script = press();
        if (!modalScripts.empty()) // taken before it runs: it may open the next dialog
            script = modalScripts.front(), modalScripts.pop_front();
        QPointer<QDialog> alive(&dialog); // running out of time may unload it meanwhile
        if (script(dialog), alive)
            alive->hide(); // as a modal loop ends
    }
    // The program may end only in a death test's child: ending the test program itself with 0 would pass for success.
    [[noreturn]] void endProgram(int status) override { RecordingHost::endProgram(inDeathTestChild() ? status : 70); }
};

// One whole program in a scratch folder: an all-users data tree with the
// default options, and a program folder whose Questions hold a five-question
// quiz (every answer A) and a three-question exam (answers A, B, C). Nothing
// touches the real data folder.
class TestApp {
public:
    TestApp()
    {
        for (const std::string& folder : {dir / "program/Questions", user(""), user("../Log")})
            std::filesystem::create_directories(folder);
        writeFile(dir / "program/Questions/quiz.kqb", numberedBank("KESTA Quiz Demo - Five", 5, "a"));
        writeFile(dir / "program/Questions/exam.kqb", numberedBank("KESTA Exam Demo - Three", 3, "abc"));
        writeFile(user("option.usr"), "1\r\n0\r\n0\r\n1\r\n30\r\n5");
        host.appData = dir / "appdata";
        restart();
    }
    ~TestApp() { restart(false); }
    // As the splash hands over: loads and shows the main window.
    Form1& start() { return app->showMainWindow(), settle(), *app->windows.form1; }
    // The program ends, its windows closed, and (unless not `again`) starts again over the same folders.
    void restart(bool again = true)
    {
        for (QWidget* w : QApplication::topLevelWidgets())
            if (!qobject_cast<Form1*>(w)) // a main window belongs to its program
                w->deleteLater();
        app.reset(), settle();
        app = again ? std::make_unique<App>(host, dir / "program") : nullptr;
    }
    std::string user(const std::string& name) const { return dir / ("appdata/MORVO/KESTA/All/User/" + name); }
    // What the user sees now: the shown windows; what the main window's frames show (its question header, time
    // left, answers and buttons); the message boxes since the last look, "title: text" each.
    std::string look()
    {
        const Form1& f = *app->windows.form1;
        QStringList shown, controls;
        for (QWidget* w : QApplication::topLevelWidgets() + f.centralWidget()->findChildren<QWidget*>())
            if (w->isVisible() && (w->isWindow() || w->parent() == f.Frame1 || w->parent() == f.Frame2))
                (w->isWindow() ? shown : controls) << w->objectName();
        std::string said;
        for (const MessageBoxRequest& m : std::exchange(host.messages, {}))
            said += m.title + ": " + m.text + "\n";
        shown.sort();
        return (shown.join(' ') + "|" + controls.join(' ') + "|").toStdString() + said;
    }

    TempDir dir;
    FakeHost host;
    std::unique_ptr<App> app;
};

// The parts joined with "|" (a bool shows as 1 or 0).
template <typename... Parts> std::string row(const Parts&... parts)
{
    std::ostringstream out;
    const char* bar = "";
    ((out << std::exchange(bar, "|") << parts), ...);
    return out.str();
}

// A label's or button's caption.
inline std::string text(const QObject* w) { return w->property("text").toString().toStdString(); }
// The shown menu items' captions, "(off)" when disabled.
inline std::string items(const std::vector<QAction*>& menuItems)
{
    std::string all;
    for (QAction* item : menuItems)
        if (item->isVisible())
            all += "[" + ui::plainCaption(item->text()).toStdString() + (item->isEnabled() ? "]" : "(off)]");
    return all;
}

} // namespace kesta::test
