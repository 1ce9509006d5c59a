#pragma once

#include "app/ui/App.h"

#include <QDialog>

class QFrame;
class QLabel;
class QPushButton;

namespace kesta {

// The About box: the program's title and version, and a way to the
// operating system's system-information tool.
class frmAbout final : public QDialog {
    Q_OBJECT

public:
    frmAbout(App& app, QWidget* parent);
    ~frmAbout() override;
    frmAbout(const frmAbout&) = delete;
    frmAbout& operator=(const frmAbout&) = delete;

    void Form_Load();
    void cmdOK_Click();
    // Starts the system-information tool, or says that there is none.
    void StartSysInfo();

    QLabel* lblTitle = nullptr;
    QLabel* lblVersion = nullptr;
    QLabel* lblDescription = nullptr;
    QFrame* Line1 = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdSysInfo = nullptr;

private:
    App& app_;
};

// "Version major.minor.revision" of this build.
QString versionCaption();

} // namespace kesta
