#include "app/ui/ProgressWindow.h"

#include "common/ui/Widgets.h"

#include <QEvent>
#include <QLabel>
#include <QProgressBar>

namespace kesta {

namespace {
constexpr int Width = 400;
constexpr int Height = 110;
} // namespace

frmProgressBar::frmProgressBar(QWidget* parent) : QDialog(parent)
{
    setObjectName("frmProgressBar");
    setWindowTitle("Progress");
    setFixedSize(Width, Height);
    lblProgress = ui::label(this, "lblProgress", "This process will take a moment or two. Please wait.",
                            QRect(16, 14, Width - 32, 36));
    lblProgress->setWordWrap(true);
    ProgressBar1 = new QProgressBar(this);
    ProgressBar1->setObjectName("ProgressBar1");
    ProgressBar1->setAccessibleName("Progress");
    ProgressBar1->setRange(0, 100);
    ProgressBar1->setValue(0);
    ProgressBar1->setGeometry(16, 60, Width - 32, 24);
    ui::setFontFamily(this, "Arial");
}

frmProgressBar::~frmProgressBar() = default;

void frmProgressBar::Form_Activate()
{
    repaint();
    if (started_)
        return;
    started_ = true;
    emit PerformProcess();
    hide();
    deleteLater();
}

bool frmProgressBar::event(QEvent* event)
{
    const bool handled = QDialog::event(event);
    if (event->type() == QEvent::WindowActivate)
        Form_Activate();
    return handled;
}

} // namespace kesta
