#pragma once

#include <QTextBrowser>

#include <string>

namespace kesta {

class App;

// Every HTML view of the program shows its pages the same way: through the
// one page file, or an "about:" address whose text is shown as the page.

// The view every page is shown in: it loads only what readPageResource
// allows, and an image of at most MaxPageImagePixels; any other image shows
// as missing.
class PageBrowser : public QTextBrowser {
    Q_OBJECT
public:
    using QTextBrowser::QTextBrowser;

protected:
    QVariant loadResource(int type, const QUrl& name) override;
};

// Shows `address` in `view`: the HTML after "about:", or the file at that path
// (a file that cannot be read shows blank, as a browser's error page would).
void showAddress(QTextBrowser& view, const std::string& address);

// Writes `text` to the page file with the page writer and shows that file.
void showPageText(App& app, QTextBrowser& view, std::string text);

} // namespace kesta
