#include "common/ui/QtPrinter.h"

#include "common/core/RuntimeError.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QPrinter>
#include <QPrinterInfo>
#include <QTextCursor>
#include <QTextDocument>

namespace kesta {

namespace {
RuntimeError printerError()
{
    return RuntimeError(482, "Printer error");
}
} // namespace

std::unique_ptr<QtPrinter> QtPrinter::forDefaultPrinter()
{
    const QPrinterInfo info = QPrinterInfo::defaultPrinter();
    if (info.isNull())
        return nullptr;
    return std::unique_ptr<QtPrinter>(new QtPrinter(std::make_unique<QPrinter>(info, QPrinter::HighResolution)));
}

std::unique_ptr<QtPrinter> QtPrinter::toPdf(const QString& path)
{
    auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    printer->setOutputFormat(QPrinter::PdfFormat);
    printer->setOutputFileName(path);
    return std::unique_ptr<QtPrinter>(new QtPrinter(std::move(printer)));
}

QtPrinter::QtPrinter(std::unique_ptr<QPrinter> printer)
    : printer_(std::move(printer))
{
    newDocument();
}

QtPrinter::~QtPrinter() = default;

void QtPrinter::newDocument()
{
    document_ = std::make_unique<QTextDocument>();
    // Laid out on the printer itself, so the page count seen while printing
    // is the one the printed document gets.
    document_->documentLayout()->setPaintDevice(printer_.get());
    document_->setPageSize(printer_->pageLayout().paintRectPixels(printer_->resolution()).size());
    document_->setDocumentMargin(0);
    empty_ = true;
}

void QtPrinter::print(const std::string& text)
{
    QTextCursor cursor(document_.get());
    cursor.movePosition(QTextCursor::End);
    if (!empty_)
        cursor.insertBlock();
    QString plain = QString::fromUtf8(text);
    plain.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    plain.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    cursor.insertText(plain); // every line feed starts a paragraph of its own
    empty_ = false;
}

int QtPrinter::pageNumber() const
{
    return document_->pageCount();
}

void QtPrinter::endDoc()
{
    // An empty document would only eject a blank sheet.
    if (empty_) {
        newDocument();
        return;
    }
    QPainter painter;
    if (!painter.begin(printer_.get()))
        throw printerError();
    const QSizeF page = document_->pageSize();
    const int pages = document_->pageCount();
    for (int i = 0; i < pages; ++i) {
        if (i > 0 && !printer_->newPage())
            throw printerError();
        painter.save();
        const QRectF sheet(0, i * page.height(), page.width(), page.height());
        painter.translate(0, -sheet.top());
        painter.setClipRect(sheet);
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = sheet;
        document_->documentLayout()->draw(&painter, context);
        painter.restore();
    }
    if (!painter.end() || printer_->printerState() == QPrinter::Error)
        throw printerError();
    newDocument();
}

void QtPrinter::killDoc()
{
    newDocument();
}

} // namespace kesta
