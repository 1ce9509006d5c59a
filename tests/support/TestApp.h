#pragma once

#include "app/ui/App.h"
#include "app/ui/Form1.h"
#include "support/FakeHost.h"
#include "support/TempDir.h"

#include <QApplication>
#include <QWidget>

#include <memory>
#include <ostream>
#include <string>

// Lets failed comparisons of Qt strings print as text.
QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}
QT_END_NAMESPACE

namespace kesta::test {

// One whole program in a scratch folder: an all-users data tree, a program
// folder with an empty Questions folder, a scripted host and the
// application object. Nothing touches the real data folder.
class TestApp {
public:
    TestApp();
    ~TestApp();

    // Starts the program as the splash hands over: loads and shows the main window.
    Form1& start();

    std::string appData() const { return dir.path() + "/appdata/"; }       // with trailing separator
    std::string dataDir() const { return appData() + "MORVO/KESTA/All"; }
    std::string logDir() const { return dataDir() + "/Log"; }
    std::string userDir() const { return dataDir() + "/User"; }
    std::string programDir() const { return dir.path() + "/program"; }
    std::string questionDir() const { return programDir() + "/Questions"; }
    std::string pageFile() const { return logDir() + "/qtmp.htm"; }
    std::string errorLog() const { return logDir() + "/ErrorLog.log"; }

    Form1& form1() { return *app->windows.form1; }

    // Runs pending deferred deletions and timers' zero-time work.
    static void settle();

    TempDir dir;
    FakeHost host;
    std::unique_ptr<App> app;
};

// The top-level window with the given objectName, or null.
QWidget* topLevel(const char* objectName);

template <typename T>
T* child(QWidget& parent, const char* objectName)
{
    return parent.findChild<T*>(objectName);
}

} // namespace kesta::test
