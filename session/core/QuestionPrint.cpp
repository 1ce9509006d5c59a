#include "session/core/QuestionPrint.h"

namespace kesta {

std::string printText(const QuestionRecord& record, int index, int pageNumber)
{
    const std::string crlf = "\r\n";
    return "Question " + std::to_string(index) + crlf + record.Question + crlf + "Explanation: " + crlf
        + record.Explanation + crlf + "Answer: " + crlf + record.Answer + std::to_string(pageNumber) + ".";
}

void printQuestionList(const QuestionList& questions, Printer& printer)
{
    for (int i = 1; i <= questions.QuestionCount; ++i) {
        // The page number is read before the text is composed, so it names
        // the page on which the question starts.
        const int page = printer.pageNumber();
        printer.print(printText(questions.Questions[i], i, page));
    }
    printer.endDoc();
}

} // namespace kesta
