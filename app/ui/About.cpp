#include "app/ui/About.h"

#include "common/ui/Widgets.h"

#include <QFont>
#include <QFrame>
#include <QLabel>
#include <QPushButton>

#ifndef KESTA_VERSION_MAJOR
#error "the build passes the program's version as KESTA_VERSION_MAJOR/MINOR/PATCH"
#endif

namespace kesta {

namespace {
constexpr int Width = 440;
constexpr int Height = 236;
constexpr const char* Notice = "Practice exams and domain quizzes for the KESTA certification.";
} // namespace

QString versionCaption()
{
    return QString("Version %1.%2.%3").arg(KESTA_VERSION_MAJOR).arg(KESTA_VERSION_MINOR).arg(KESTA_VERSION_PATCH);
}

frmAbout::frmAbout(App& app, QWidget* parent) : QDialog(parent), app_(app)
{
    setObjectName("frmAbout");
    setFixedSize(Width, Height);

    lblTitle = ui::label(this, "lblTitle", "", QRect(24, 18, Width - 48, 30));
    QFont titleFont = lblTitle->font();
    titleFont.setPointSize(titleFont.pointSize() + 5);
    titleFont.setBold(true);
    lblTitle->setFont(titleFont);
    lblVersion = ui::label(this, "lblVersion", "", QRect(24, 52, Width - 48, 22));
    lblDescription = ui::label(this, "lblDescription", "", QRect(24, 82, Width - 48, 60));
    lblDescription->setWordWrap(true);
    lblDescription->setAlignment(Qt::AlignLeft | Qt::AlignTop);

    Line1 = new QFrame(this);
    Line1->setObjectName("Line1");
    Line1->setFrameShape(QFrame::HLine);
    Line1->setFrameShadow(QFrame::Sunken);
    Line1->setGeometry(16, 150, Width - 32, 4);

    cmdOK = ui::button(this, "cmdOK", "OK", QRect(Width - 276, Height - 58, 120, 30));
    cmdSysInfo = ui::button(this, "cmdSysInfo", "&System Info...", QRect(Width - 144, Height - 58, 120, 30));
    cmdOK->setDefault(true);
    ui::setTabChain({cmdOK, cmdSysInfo});

    connect(cmdOK, &QPushButton::clicked, this, [this] { cmdOK_Click(); });
    connect(cmdSysInfo, &QPushButton::clicked, this, [this] { StartSysInfo(); });
    app_.windows.frmAbout = this;
}

frmAbout::~frmAbout() = default;

void frmAbout::Form_Load()
{
    setWindowTitle(QString("About ") + AppTitle);
    lblTitle->setText(AppTitle);
    lblVersion->setText(versionCaption());
    lblDescription->setText(QString(AppTitle) + "\n" + Notice);
}

void frmAbout::cmdOK_Click()
{
    App::unload(this);
}

void frmAbout::StartSysInfo()
{
    if (!app_.host.startSystemInformation()) {
        app_.host.messageBox(
            {AppTitle, "System Information Is Unavailable At This Time", MessageIcon::None, MessageButtons::Ok});
    }
}

} // namespace kesta
