#pragma once

#include "app/ui/App.h"

#include <QDialog>

class QLabel;
class QPushButton;

namespace kesta {

// The small fixed-size windows that confirm an action which would lose the
// session. Each carries out the confirmed action itself and returns nothing.
class ConfirmDialog : public QDialog {
    Q_OBJECT

public:
    QLabel* Label1 = nullptr;
    QPushButton* OKButton = nullptr;
    QPushButton* CancelButton = nullptr;

protected:
    ConfirmDialog(App& app, const char* name, const char* title, const char* label, const char* okCaption,
        const char* cancelCaption);
    // Esc and the title bar's close box answer as the No or Cancel button
    // does, so the dialog is unloaded and the next one loads its texts afresh.
    void reject() override { answerNo(); }
    virtual void answerNo() = 0;
    App& app_;
};

// Ends the running test early, offering to save progress first ("End Exam").
class Dialog final : public ConfirmDialog {
    Q_OBJECT
public:
    explicit Dialog(App& app);
    void OKButton_Click();
    void CancelButton_Click();

private:
    void answerNo() override { CancelButton_Click(); }
};

// Leaves the program, offering to save progress first.
class Dialog1 final : public ConfirmDialog {
    Q_OBJECT
public:
    explicit Dialog1(App& app);
    bool TerminateOK = false; // read by the main window's close handler
    void OKButton_Click();
    void CancelButton_Click();

private:
    void answerNo() override { CancelButton_Click(); }
};

// Closes the results window and resets the test.
class Dialog2 final : public ConfirmDialog {
    Q_OBJECT
public:
    explicit Dialog2(App& app);
    QPushButton* Command1 = nullptr; // "Cancel"
    QPushButton* Command2 = nullptr; // "OK"
    void Command2_Click();
    void Command1_Click();

private:
    void answerNo() override { Command1_Click(); }
};

// Asks whether to save progress before the test is lost.
class Form3 final : public ConfirmDialog {
    Q_OBJECT
public:
    explicit Form3(App& app);
    void OKButton_Click();
    void CancelButton_Click();

private:
    void answerNo() override { CancelButton_Click(); }
};

} // namespace kesta
