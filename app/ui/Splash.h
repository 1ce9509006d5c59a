#pragma once

#include "app/ui/App.h"

#include <QWidget>

class QFrame;
class QLabel;
class QTimer;

namespace kesta {

// The window shown at launch. Any click, any key or four seconds without
// either unload it and open the main window, exactly once.
class frmSplash final : public QWidget {
    Q_OBJECT

public:
    explicit frmSplash(App& app);
    ~frmSplash() override;
    frmSplash(const frmSplash&) = delete;
    frmSplash& operator=(const frmSplash&) = delete;

    void Form_Load();
    void Form_Click();
    void Form_KeyPress(int keyAscii);
    void Frame1_Click();
    void lblWarning_Click();
    void Timer2_Timer();

    QFrame* Frame1 = nullptr;
    QLabel* lblProductName = nullptr;
    QLabel* lblVersion = nullptr;
    QLabel* lblWarning = nullptr;
    QTimer* Timer2 = nullptr;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // What every dismissal trigger runs; later triggers find it done.
    void dismiss();

    App& app_;
    bool dismissed_ = false;
};

} // namespace kesta
