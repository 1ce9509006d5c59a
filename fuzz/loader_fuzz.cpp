// The question-file loader with whole files: any file loads or raises a
// run-time error (an undecipherable line); the count stays within 0..1000,
// the too-many-lines warning matches the line count and texts are trimmed.
// An input starting with 0x01 is a plain-text file read with a decipher that
// keeps each line as it stands (one with a '!' is undecipherable), so the
// structural limits are reached and the count follows from the file alone.
#include "FuzzTarget.h"
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"

using namespace kesta;

void fuzz::target(std::string_view input)
{
    const bool plain = input.starts_with('\x01');
    const std::string_view content = input.substr(plain ? 1 : 0);
    // The first four non-empty lines are the header; every third marked line after them opens a question.
    int lines = 0, nonEmpty = 0, marked = 0;
    LineSplitter split(content);
    for (std::string_view line; split.next(line);)
        if (++lines < MaxQuestionLines && !line.empty() && ++nonEmpty > 4)
            marked += line.front() == '#';
    const LineDecipher decipher = plain ? LineDecipher([](std::string_view line, std::string& text) {
        line.find('!') != line.npos ? throw err::make(err::TypeMismatch) : void(text.append(line));
    }) : decipherWith(QuestionPassPhrase);
    auto list = std::make_unique<QuestionList>();
    LoadObserver quiet;
    LoadResult result;
    if (raised([&] { result = LoadQuestionText(content, *list, quiet, decipher); },
            { err::SubscriptOutOfRange, err::TypeMismatch }))
        return expect(!plain || content.find('!') != content.npos, "a load failed though every line deciphers");
    const int count = list->QuestionCount, blocks = (marked + 2) / 3;
    expect(count >= 0 && count <= MaxQuestions, "the count is out of range");
    expect(result.tooManyLines == (lines >= MaxQuestionLines), "the line warning does not match the line count");
    const auto& q = list->Questions;
    for (int k = 1; k <= count; ++k)
        for (const std::string* text : { &q[k].Question, &q[k].Explanation, &q[k].Answer })
            expect(text->empty() || (text->front() != ' ' && text->back() != ' '), "a text is not trimmed", *text);
    expect(!plain || lines >= MaxQuestionLines
            || (count == std::min(blocks, MaxQuestions) && result.tooManyQuestions == (blocks > MaxQuestions)),
        "the count or its warning differs from the marked lines");
}
