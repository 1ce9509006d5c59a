#include "progress/ui/Dialog3.h"

#include "app/ui/Form1.h"
#include "common/core/ErrorTrap.h"
#include "common/ui/Widgets.h"
#include "progress/core/Scoring.h"
#include "app/ui/PageView.h"

#include <QPushButton>
#include <QTextBrowser>

namespace kesta {

namespace {
constexpr int Width = 560;
constexpr int Height = 420;
constexpr int ButtonWidth = 100;
} // namespace

Dialog3::Dialog3(App& app)
    : QDialog(app.windows.form1)
    , app_(app)
{
    setObjectName("Dialog3");
    setWindowTitle("View Answer");
    setFixedSize(Width, Height);
    WebBrowser1 = new PageBrowser(this);
    WebBrowser1->setObjectName("WebBrowser1");
    WebBrowser1->setAccessibleName("Answer page");
    WebBrowser1->setOpenLinks(false);
    WebBrowser1->setGeometry(12, 12, Width - 24, Height - 70);
    OK = ui::button(this, "OK", "OK", QRect(Width / 2 - ButtonWidth / 2, Height - 44, ButtonWidth, 30),
        "Click OK to go back to the main exam window.");
    OK->setDefault(true);
    ui::setTabChain({WebBrowser1, OK});
    ui::setFontFamily(this, "Arial");
    connect(OK, &QPushButton::clicked, this, [this] { OK_Click(); });
    Form_Load();
}

void Dialog3::Form_Load()
{
    untrapped(
        app_.host, [&] { showPageText(app_, *WebBrowser1, answerPage(app_.state.session, app_.state.questions)); });
}

void Dialog3::OK_Click()
{
    App::unload(this);
}

} // namespace kesta
