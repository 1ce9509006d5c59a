#pragma once

#include <QDialog>

class QLabel;
class QProgressBar;

namespace kesta {

// Runs one long job while it is on screen: the first activation raises
// PerformProcess, whose handler does the work and moves ProgressBar1; when
// the handler returns the window unloads itself. Later activations (the
// job's own message boxes give the focus back) never start the job again.
class frmProgressBar final : public QDialog {
    Q_OBJECT

public:
    explicit frmProgressBar(QWidget* parent = nullptr);
    ~frmProgressBar() override;
    frmProgressBar(const frmProgressBar&) = delete;
    frmProgressBar& operator=(const frmProgressBar&) = delete;

    void Form_Activate();

    QProgressBar* ProgressBar1 = nullptr;
    QLabel* lblProgress = nullptr;

signals:
    void PerformProcess();

protected:
    bool event(QEvent* event) override;

private:
    bool started_ = false;
};

} // namespace kesta
