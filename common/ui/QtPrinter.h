#pragma once

#include "common/core/Host.h"

#include <memory>

class QPrinter;
class QString;
class QTextDocument;

namespace kesta {

// The program's text printer on Qt's print support. Printed texts are
// collected into one document, laid out for the printer's page, and sent to
// the printer as a whole when the document ends. endDoc raises
// RuntimeError 482 ("Printer error") when the printer cannot be opened.
class QtPrinter final : public Printer {
public:
    // The system's default printer; null when none is installed.
    static std::unique_ptr<QtPrinter> forDefaultPrinter();
    // A printer that writes each document to a PDF file at `path`.
    static std::unique_ptr<QtPrinter> toPdf(const QString& path);

    ~QtPrinter() override;
    QtPrinter(const QtPrinter&) = delete;
    QtPrinter& operator=(const QtPrinter&) = delete;

    void print(const std::string& text) override; // one text, then a line end
    int pageNumber() const override; // the page the next text starts on, from 1
    void endDoc() override; // prints the document and starts a new one
    void killDoc() override; // drops the document unprinted

private:
    explicit QtPrinter(std::unique_ptr<QPrinter> printer);
    void newDocument();

    std::unique_ptr<QPrinter> printer_;
    std::unique_ptr<QTextDocument> document_;
    bool empty_ = true; // nothing printed since the document began
};

} // namespace kesta
