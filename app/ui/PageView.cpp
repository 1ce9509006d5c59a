#include "app/ui/PageView.h"

#include "app/core/PageResource.h"
#include "app/ui/App.h"
#include "common/core/SafeFile.h"
#include "questions/core/QuestionLoader.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QTextDocument>

#include <cstdint>

namespace kesta {

namespace {

// What a page shows for an image it does not load: the mark the view itself
// shows for a missing file.
QImage missingImage()
{
    QImage mark(":/qt-project.org/styles/commonstyle/images/file-16.png");
    if (mark.isNull()) {
        mark = QImage(16, 16, QImage::Format_ARGB32);
        mark.fill(Qt::transparent);
    }
    return mark;
}

} // namespace

QVariant PageBrowser::loadResource(int type, const QUrl& name)
{
    const std::optional<std::string> bytes = readPageResource(name.toEncoded().toStdString());
    QByteArray data = bytes ? QByteArray(bytes->data(), static_cast<qsizetype>(bytes->size())) : QByteArray();
    if (type != QTextDocument::ImageResource)
        return data; // an empty resource, not a null one, which the document would read itself
    // An image is decoded here, always to an image: given bytes it cannot
    // decode, the view would open the file by its name (and wait on a pipe);
    // and a small file may still decode to a huge image.
    QBuffer buffer(&data);
    QImageReader reader(&buffer);
    const QSize size = reader.size();
    QImage image;
    if (size.isValid() && std::int64_t{size.width()} * size.height() <= MaxPageImagePixels)
        image = reader.read();
    return image.isNull() ? missingImage() : image;
}

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
