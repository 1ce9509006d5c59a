// The question-file loader with whole files: any file loads or raises a
// run-time error (an undecipherable line); the count stays within 0..1000,
// the warnings match the file, texts are trimmed and progress counts up by
// one to at most 100. An input starting with 0x01 is a plain-text file read
// with a decipher that keeps each line as it stands ("!!" marks an
// undecipherable one), so the structural limits are reached and the count
// and introduction can be predicted from the file alone.
#include "FuzzTarget.h"
#include "common/core/RuntimeError.h"
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"

#include <algorithm>
#include <memory>
#include <string>

using namespace kesta;

namespace {
struct Recorder : LoadObserver {
    void progress(int value) override
    {
        fuzz::expect(value == last + 1 || (last == 0 && value == 1), "progress does not count up by one");
        fuzz::expect(value <= 100, "progress past 100");
        last = value;
    }
    void introduction(const std::string& page) override { ++pages, fuzz::expect(page.find('\t') == std::string::npos, "a TAB on the page"); }
    int last = 0, pages = 0;
};
} // namespace

void fuzz::target(std::string_view input)
{
    const bool plain = !input.empty() && input.front() == '\x01';
    const std::string_view content = input.substr(plain ? 1 : 0);
    // What the format alone says of a plain file: header lines 2-4 make the introduction, every third marked body line opens a question.
    int lines = 0, nonEmpty = 0, marked = 0;
    bool undecipherable = false;
    std::string intro;
    LineSplitter split(content);
    for (std::string_view line; split.next(line);) {
        if (++lines >= MaxQuestionLines || line.empty())
            continue;
        const std::string text(line.substr(line.front() == '#'));
        undecipherable = undecipherable || text.starts_with("!!");
        if (++nonEmpty <= 4)
            intro = nonEmpty <= 2 ? text : intro + "\r\n\r\n" + text;
        else
            marked += line.front() == '#';
    }
    const LineDecipher keep = [](std::string_view line, std::string& text) {
        line.starts_with("!!") ? throw err::make(err::TypeMismatch) : void(text.append(line));
    };
    auto list = std::make_unique<QuestionList>();
    Recorder recorder;
    LoadResult result;
    try {
        result = LoadQuestionText(content, *list, recorder, plain ? keep : decipherWith(QuestionPassPhrase));
    } catch (const RuntimeError&) {
        expect(!plain || undecipherable || lines >= MaxQuestionLines, "a load failed though every line deciphers");
        return;
    }
    const int count = list->QuestionCount;
    expect(count >= 0 && count <= MaxQuestions && recorder.pages == 1, "count out of range, or no single introduction");
    expect(result.tooManyLines == (lines >= MaxQuestionLines), "the line warning does not match the line count");
    expect(recorder.last == std::min(std::min(lines, MaxQuestionLines - 1) + 2, 100), "progress ends elsewhere");
    for (int k = 1; k <= count; ++k) {
        for (const std::string* text : {&list->Questions[k].Question, &list->Questions[k].Explanation, &list->Questions[k].Answer})
            expect(text->empty() || (text->front() != ' ' && text->back() != ' '), "a text is not trimmed", *text);
        expect(Utf16Length(list->Questions[k].Answer) != 1 ||
                   std::find(result.badAnswers.begin(), result.badAnswers.end(), k) == result.badAnswers.end(),
               "a one-character answer is called bad");
    }
    if (plain && lines < MaxQuestionLines) {
        const int blocks = (marked + 2) / 3;
        expect(count == std::min(blocks, MaxQuestions) && result.tooManyQuestions == (blocks > MaxQuestions),
               "the count or its warning differs from the marked lines");
        expect(list->Questions[1].Intro == intro, "the introduction differs from header lines 2 to 4", intro);
    }
}
