#pragma once

#include "app/ui/App.h"
#include "app/ui/Form1.h"
#include "support/RecordingHost.h"
#include "support/TempDir.h"

#include <QCoreApplication>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <functional>
#include <memory>
#include <sstream>

namespace kesta::test {

// The host of the window tests: modal dialogs are handed to scripted
// handlers, in order, instead of waiting for a user; a dialog without one is
// answered with Esc.
class FakeHost : public RecordingHost {
public:
    using ModalScript = std::function<void(QDialog&)>;
    void execModal(QDialog& dialog) override;
    std::deque<ModalScript> modalScripts;
};

// Runs pending deletions and zero-time work, as the event loop would after a user's action.
inline void settle()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

// A modal script that clicks the button of this objectName ("Esc" presses Esc).
FakeHost::ModalScript press(const char* button);

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

    std::string dataDir() const { return dir.path() + "/appdata/MORVO/KESTA/All"; }
    std::string user(const std::string& name) const { return dataDir() + "/User/" + name; }
    std::string errorLog() const { return dataDir() + "/Log/ErrorLog.log"; }
    SessionState& session() { return app->state.session; }

    TempDir dir;
    FakeHost host;
    std::unique_ptr<App> app;
};

// --- what the user sees, as text to compare at once ---

// The parts joined with "|" (a bool shows as 1 or 0).
template <typename... Parts> std::string row(const Parts&... parts)
{
    std::ostringstream out;
    const char* separator = "";
    ((out << separator << parts, separator = "|"), ...);
    return out.str();
}

// A label's or button's caption.
inline std::string text(const QObject* w) { return w->property("text").toString().toStdString(); }
// A left click near its left edge, where an answer button has its round indicator; or a key.
inline void click(QWidget* w) { QTest::mouseClick(w, Qt::LeftButton, {}, QPoint(8, w->height() / 2)), settle(); }
inline void key(QWidget* w, Qt::Key key) { QTest::keyClick(w, key), settle(); }
// The shown top-level windows, by objectName.
std::string windows();
// The main window's test controls that are shown, by objectName.
std::string controls(const Form1& f);
// The shown items' captions, "(off)" when disabled.
std::string items(const std::vector<QAction*>& menuItems);
// The message boxes since the last call, "title: text" each.
std::string said(RecordingHost& host);

} // namespace kesta::test
