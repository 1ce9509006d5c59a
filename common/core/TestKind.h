#pragma once

#include <string>
#include <string_view>

namespace kesta {

// The kind of a test is never stored: it is read from its name each time.
enum class TestKind { Neither, Exam, DomainQuiz };

inline constexpr std::string_view ExamPattern = "kesta exam demo";
inline constexpr std::string_view QuizPattern = "kesta quiz demo";

// Lower-cases ASCII letters only; the patterns are plain ASCII.
std::string lowerAscii(std::string_view text);

bool isExamTitle(std::string_view title);
bool isQuizTitle(std::string_view title);

// Exam wins when a name holds both patterns.
TestKind kindOf(std::string_view testName);

} // namespace kesta
