#pragma once

#include "app/ui/App.h"

#include <QDialog>

class QPushButton;
class QTextBrowser;

namespace kesta {

// "View Answer": the correct answer and explanation of the current position,
// shown modally over the main window during a test. It changes no state.
// Its load step runs in the constructor and has no error trap of its own: a
// failure (a position beyond the arrays) ends the program through the default
// failure path. Create it with new; "OK" unloads it.
class Dialog3 final : public QDialog {
    Q_OBJECT

public:
    explicit Dialog3(App& app);
    Dialog3(const Dialog3&) = delete;
    Dialog3& operator=(const Dialog3&) = delete;

    void Form_Load();
    void OK_Click();

    QTextBrowser* WebBrowser1 = nullptr;
    QPushButton* OK = nullptr;

private:
    App& app_;
};

} // namespace kesta
