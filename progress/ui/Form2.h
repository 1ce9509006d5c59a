#pragma once

#include "app/ui/App.h"
#include "common/core/Int16.h"

#include <QWidget>
#include <string>

class QFrame;
class QLabel;
class QPushButton;
class QTextBrowser;

namespace kesta {

// The results window: scores the session as it stands when the window is
// loaded, then walks the incorrectly answered positions one page at a time.
// Loading, Next and Back have no error trap of their own; a failure in them
// (the 16-bit score overflow, a position beyond the arrays) ends the program
// through the default failure path. Closing the window by its title bar asks
// for confirmation like "Close Explanation" and keeps the window open.
class Form2 final : public QWidget {
    Q_OBJECT

public:
    // Builds the window and runs its load step; the window is not shown yet.
    explicit Form2(App& app);
    ~Form2() override;
    Form2(const Form2&) = delete;
    Form2& operator=(const Form2&) = delete;

    // Loads the results window unless it is loaded already, registers it and shows it modeless.
    static Form2* open(App& app);

    void Form_Load();
    void Expl_Next_Click();
    void Expl_Back_Click();
    void Command3_Click();
    void Expl_Exit_Click();
    void Form_Resize();

    // The session position whose explanation is shown; 0 until the first incorrect one is found.
    Int16 ReviewPosition = 0;

    QFrame* Frame2 = nullptr;
    QLabel* Label1 = nullptr;
    QLabel* Label2 = nullptr;
    QLabel* QuestionNumber = nullptr;
    QTextBrowser* WebBrowser1 = nullptr;
    QFrame* Frame1 = nullptr;
    QPushButton* cmdPrintQuestions = nullptr;
    QPushButton* Command3 = nullptr;
    QPushButton* Expl_Exit = nullptr;
    QPushButton* Expl_Next = nullptr;
    QPushButton* Expl_Back = nullptr;

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void buildControls();
    void ArrangeControls();
    void showReviewCaption(Int16 rank);
    void showPage(std::string text);

    App& app_;
};

} // namespace kesta
