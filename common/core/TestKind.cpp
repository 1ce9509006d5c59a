#include "common/core/TestKind.h"

namespace kesta {

std::string lowerAscii(std::string_view text)
{
    std::string lowered(text);
    for (char& c : lowered) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return lowered;
}

bool isExamTitle(std::string_view title)
{
    return lowerAscii(title).find(ExamPattern) != std::string::npos;
}

bool isQuizTitle(std::string_view title)
{
    return lowerAscii(title).find(QuizPattern) != std::string::npos;
}

TestKind kindOf(std::string_view testName)
{
    if (isExamTitle(testName))
        return TestKind::Exam;
    if (isQuizTitle(testName))
        return TestKind::DomainQuiz;
    return TestKind::Neither;
}

} // namespace kesta
