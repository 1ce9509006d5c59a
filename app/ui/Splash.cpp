#include "app/ui/Splash.h"

#include "app/ui/About.h"
#include "common/core/ErrorTrap.h"
#include "common/ui/Widgets.h"

#include <QFont>
#include <QFrame>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QScreen>
#include <QTimer>

namespace kesta {

namespace {
constexpr int Width = 520;
constexpr int Height = 300;
constexpr int SplashMilliseconds = 4000;
constexpr const char* Warning =
    "Warning: this program is protected by copyright law. The questions are for practice only and are not "
    "those of the certification exam.";
} // namespace

frmSplash::frmSplash(App& app) : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint), app_(app)
{
    setObjectName("frmSplash");
    setFixedSize(Width, Height);

    Frame1 = new QFrame(this);
    Frame1->setObjectName("Frame1");
    Frame1->setFrameShape(QFrame::Box);
    Frame1->setGeometry(10, 10, Width - 20, Height - 20);
    lblProductName = ui::label(Frame1, "lblProductName", "", QRect(20, 50, Width - 60, 56));
    QFont nameFont = lblProductName->font();
    nameFont.setPointSize(28);
    nameFont.setBold(true);
    lblProductName->setFont(nameFont);
    lblProductName->setAlignment(Qt::AlignCenter);
    lblVersion = ui::label(Frame1, "lblVersion", versionCaption(), QRect(20, 116, Width - 60, 24));
    lblVersion->setAlignment(Qt::AlignCenter);
    lblWarning = ui::label(Frame1, "lblWarning", Warning, QRect(20, 190, Width - 60, 60));
    lblWarning->setWordWrap(true);
    lblWarning->setAlignment(Qt::AlignCenter);
    ui::setFontFamily(this, "Arial");

    // Labels and the frame pass clicks on to the window, but a click is
    // watched where it lands, so none is lost to a child that keeps it.
    Frame1->installEventFilter(this);
    lblWarning->installEventFilter(this);

    Timer2 = new QTimer(this);
    Timer2->setObjectName("Timer2");
    Timer2->setInterval(SplashMilliseconds);
    connect(Timer2, &QTimer::timeout, this, [this] { Timer2_Timer(); });
    Timer2->start();

    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
}

frmSplash::~frmSplash() = default;

void frmSplash::Form_Load()
{
    lblProductName->setText(AppTitle);
}

void frmSplash::Form_Click() { dismiss(); }
void frmSplash::Form_KeyPress(int /*keyAscii*/) { dismiss(); }
void frmSplash::Frame1_Click() { dismiss(); }
void frmSplash::lblWarning_Click() { dismiss(); }
void frmSplash::Timer2_Timer() { dismiss(); }

void frmSplash::dismiss()
{
    if (dismissed_)
        return;
    dismissed_ = true;
    Timer2->stop();
    App::unload(this);
    untrapped(app_.host, [this] { app_.showMainWindow(); });
}

void frmSplash::mousePressEvent(QMouseEvent* event)
{
    event->accept();
    Form_Click();
}

void frmSplash::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    Form_KeyPress(event->text().isEmpty() ? 0 : event->text().at(0).unicode());
}

bool frmSplash::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        if (watched == Frame1) {
            Frame1_Click();
            return true;
        }
        if (watched == lblWarning) {
            lblWarning_Click();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace kesta
