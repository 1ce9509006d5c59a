#pragma once

#include "app/ui/App.h"
#include "app/ui/Form1.h"
#include "support/RecordingHost.h"
#include "support/TempDir.h"

#include <QTest>
#include <functional>
#include <memory>
#include <sstream>

namespace kesta::test {

using Script = std::function<void(QDialog&)>;

// Modal dialogs go to scripted handlers, in order, instead of waiting for a
// user; a dialog without one is answered with Esc.
class FakeHost : public RecordingHost {
public:
    void execModal(QDialog& dialog) override;
    std::deque<Script> modalScripts;
};

// Runs pending deletions and zero-time work, as the event loop would after a user's action.
void settle();
// A left click near the left edge, where an answer button has its round indicator; a key.
inline void click(QWidget* w) { QTest::mouseClick(w, Qt::LeftButton, {}, QPoint(8, w->height() / 2)), settle(); }
inline void key(QWidget* w, Qt::Key k) { QTest::keyClick(w, k), settle(); }
// A script that clicks the button of this objectName, or presses Esc.
Script press(const char* button = "Esc");

// One whole program in a scratch folder: an all-users data tree with the
// default options, and a program folder whose Questions hold a five-question
// quiz (every answer A) and a three-question exam (answers A, B, C). Nothing
// touches the real data folder.
class TestApp {
public:
    TestApp();
    ~TestApp() { restart(false); }
    // As the splash hands over: loads and shows the main window.
    Form1& start() { return app->showMainWindow(), settle(), *app->windows.form1; }
    // The program ends, its windows closed, and (unless not `again`) starts again over the same folders.
    void restart(bool again = true);
    std::string user(const std::string& name) const { return dir / ("appdata/MORVO/KESTA/All/User/" + name); }
    // What the user sees now: the shown windows, the main window's buttons, header and countdown (when it is
    // shown), and the message boxes since the last look, "title: text" each.
    std::string look();

    TempDir dir;
    FakeHost host;
    std::unique_ptr<App> app;
};

// The parts joined with "|" (a bool shows as 1 or 0).
template <typename... Parts> std::string row(const Parts&... parts)
{
    std::ostringstream out;
    int n = 0;
    ((out << (n++ ? "|" : "") << parts), ...);
    return out.str();
}

// A label's or button's caption.
inline std::string text(const QObject* w) { return w->property("text").toString().toStdString(); }
// The shown menu items' captions, "(off)" when disabled.
std::string items(const std::vector<QAction*>& menuItems);

} // namespace kesta::test
