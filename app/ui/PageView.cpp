#include "app/ui/PageView.h"

#include "app/ui/App.h"
#include "common/core/SafeFile.h"
#include "questions/core/QuestionLoader.h"

#include <QTextBrowser>

namespace kesta {

void showAddress(QTextBrowser& view, const std::string& address)
{
    view.setProperty("address", QString::fromStdString(address));
    if (address.rfind("about:", 0) == 0) {
        view.setHtml(QString::fromUtf8(address.substr(6)));
        return;
    }
    std::string page;
    try {
        page = safefile::read(address, MaxBankBytes);
    } catch (const RuntimeError&) {
    }
    view.setHtml(QString::fromUtf8(page));
}

void showPageText(App& app, QTextBrowser& view, std::string text)
{
    const std::string path = app.state.folders.pagePath();
    app.data.Write_HTML(text, path);
    showAddress(view, path);
}

} // namespace kesta
