#include "questions/core/BankCheck.h"

#include "common/core/RuntimeError.h"
#include "common/core/TestKind.h"
#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"

#include <algorithm>
#include <cctype>

namespace kesta {

namespace {

constexpr std::string_view Letters = "abcdABCD";

// Where the questions stand in the file, as the loader gives marked lines their roles.
struct Layout {
    std::vector<int> questions; // the line of each question's first line
    std::vector<int> answers; // the line of each answer
    int explanations = 0;
    int lines = 0;

    // The line of question k, and of its answer while it has one.
    int questionLine(int k) const { return lineOf(questions, k); }
    int answerLine(int k) const { return lineOf(answers, k) != 0 ? lineOf(answers, k) : questionLine(k); }

    static int lineOf(const std::vector<int>& lines, int k)
    {
        return static_cast<std::size_t>(k - 1) < lines.size() ? lines[static_cast<std::size_t>(k - 1)] : 0;
    }
};

template <typename Lines> Layout layoutOf(Lines& lines)
{
    Layout layout;
    LineRoles roles;
    for (std::string_view line; lines.next(line);) {
        const LineRole role = roles.next(++layout.lines, line);
        if (role == LineRole::Question)
            layout.questions.push_back(layout.lines);
        else if (role == LineRole::Answer)
            layout.answers.push_back(layout.lines);
        layout.explanations += role == LineRole::Explanation ? 1 : 0;
    }
    return layout;
}

// What is wrong with an answer as the loader trimmed it; "" for a letter a to d in either case.
std::string answerProblem(const std::string& answer)
{
    if (answer.empty())
        return "the answer is empty; write 'Answer: ' and the letter of the right choice (a to d)";
    const bool letter = Letters.find(answer[0]) != std::string_view::npos;
    if (letter && answer.size() == 1)
        return {};
    // "B)", "b." or "b) Router": the letter is there, with more after it.
    if (letter && !std::isalpha(static_cast<unsigned char>(answer[1])))
        return "the answer " + Quoted(answer) + " is more than a letter; write 'Answer: " + answer[0] + "'";
    return "the answer " + Quoted(answer)
        + " is not one of the letters a to d; write 'Answer: ' and the letter of "
          "the right choice";
}

BankCheck judge(const Layout& layout, const LoadResult& loaded, const QuestionList& list, std::string_view passPhrase)
{
    if (!loaded.title || (loaded.title->empty() && passPhrase != QuestionPassPhrase))
        throw Undecipherable(1, {}, passPhrase, false);
    BankCheck check { *loaded.title, isExamTitle(*loaded.title), isQuizTitle(*loaded.title), list.QuestionCount,
        loaded.corrupt(), {} };
    auto& problems = check.problems;
    if (!check.exam && !check.quiz) {
        problems.push_back({ 1, 0,
            "the title " + Quoted(check.title)
                + " puts the bank in no menu; write \"KESTA "
                  "Exam Demo\" or \"KESTA Quiz Demo\" into it (in any case)" });
    }
    const auto written = static_cast<int>(layout.questions.size());
    // The last question without an answer line takes the answer of the one before it.
    const bool open = layout.answers.size() < layout.questions.size();
    for (int k = 1; k <= check.questions; ++k) {
        const std::string text = answerProblem(list.Questions[k].Answer);
        if (!text.empty() && !(open && k == written))
            problems.push_back({ layout.answerLine(k), k, text });
    }
    if (open)
        problems.push_back({ layout.questions.back(), written, MissingParts(layout.explanations >= written) });
    if (loaded.tooLongAt != 0) {
        const auto before = std::upper_bound(layout.questions.begin(), layout.questions.end(), loaded.tooLongAt);
        problems.push_back({ loaded.tooLongAt, static_cast<int>(before - layout.questions.begin()),
            "the text passes the " + std::to_string(MaxFieldBytes / 1024)
                + " KiB the program keeps of a question, an explanation or the introduction; shorten it or split "
                  "the question in two" });
    }
    if (loaded.tooManyQuestions) {
        problems.push_back({ layout.questionLine(MaxQuestions + 1), MaxQuestions + 1,
            "the program loads at most 1000 questions; move this one and those after it into "
            "another bank" });
    }
    if (loaded.tooManyLines) {
        problems.push_back({ MaxQuestionLines, 0,
            "the bank has " + std::to_string(layout.lines)
                + " lines, and the program reads at most 9999 (and the last); move questions into "
                  "another bank" });
    }
    // A last question past the lines the program reads sorts after the line limit.
    std::stable_sort(
        problems.begin(), problems.end(), [](const BankProblem& a, const BankProblem& b) { return a.line < b.line; });
    if (check.questions == 0) {
        problems.push_back({ 0, 0,
            "the bank has no question; write one or more, each a 'Question:', an "
            "'Explanation:' and an 'Answer:' line" });
    }
    return check;
}

} // namespace

BankCheck CheckBankText(std::string_view bank, std::string_view passPhrase, QuestionList& list)
{
    LineSplitter lines(bank);
    const Layout layout = layoutOf(lines);
    LoadObserver quiet;
    LoadResult loaded;
    try {
        loaded = LoadQuestionText(bank, list, quiet, decipherWith(passPhrase));
    } catch (const RuntimeError&) {
        DumpBank(bank, passPhrase); // names the line that cannot be deciphered
        throw;
    }
    return judge(layout, loaded, list, passPhrase);
}

BankCheck CheckBankFile(const std::string& path, std::string_view passPhrase, QuestionList& list, safefile::Links links)
{
    Layout layout;
    {
        FileLines lines(path, MaxBankBytes, FileLines::Block, links);
        layout = layoutOf(lines);
    }
    FileLines lines(path, MaxBankBytes, FileLines::Block, links);
    LineDecoder decoder(passPhrase);
    bool titleRead = false;
    const LineDecipher decipher = [&](std::string_view line, std::string& text) {
        try {
            decoder.decode(line, text);
        } catch (const RuntimeError&) {
            throw Undecipherable(lines.number(), line, passPhrase, titleRead);
        }
        titleRead = titleRead || (lines.number() == 1 && !text.empty());
    };
    LoadObserver quiet;
    const LoadResult loaded = LoadQuestionLines(lines, list, quiet, decipher);
    return judge(layout, loaded, list, passPhrase);
}

} // namespace kesta
