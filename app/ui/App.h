#pragma once

#include "app/core/ProgramState.h"
#include "common/core/ErrorLog.h"
#include "common/core/Host.h"
#include "common/core/ProgramData.h"

#include <QPointer>
#include <QtGlobal>

#include <memory>
#include <string>

class QDialog;
class QWidget;

namespace kesta {

class Form1;

// The windows of the program that other windows load, show and unload.
// Dialogs and the results window are created when loaded and deleted when
// unloaded, so a null pointer means "not loaded".
struct Windows {
    Form1* form1 = nullptr;
    QPointer<QWidget> form2;            // results window
    QPointer<QDialog> Dialog;           // end the test early (modeless)
    QPointer<QDialog> Dialog1;          // exit the program
    QPointer<QDialog> Dialog2;          // close the results window (modeless)
    QPointer<QDialog> Dialog3;          // view the current answer
    QPointer<QDialog> Form3;            // save progress first?
    QPointer<QDialog> Config_Wizard_01; // options wizard
    QPointer<QDialog> frmAbout;         // About box
};

// The application object: owns the program-wide state, the error reporter,
// the shared module and the main window, and hands them to every window.
class App {
public:
    App(Host& host, std::string programDir);
    ~App();
    App(const App&) = delete;
    App& operator=(const App&) = delete;

    Host& host;
    ProgramState state;
    ErrorReporter reporter;
    ProgramData data;
    Windows windows;

    // Loads the main window and shows it (its load routine runs first).
    void showMainWindow();

    // Unloads a window if it is loaded.
    static void unload(QWidget* window);

private:
    std::unique_ptr<Form1> mainWindow_;
};

} // namespace kesta
