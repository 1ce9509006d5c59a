#include "questions/core/Interchange.h"

#include "common/core/TestKind.h"
#include "questions/core/InterchangeText.h"
#include "questions/core/QuestionLoader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <stdexcept>

namespace kesta {

namespace {

constexpr std::size_t Choices = 4; // what a question page offers
constexpr std::string_view Bom = "\xEF\xBB\xBF";
constexpr std::string_view AikenAnswer = "answer:"; // in any case
constexpr std::string_view BreakTag = "<br>";
constexpr std::string_view NoChoices = "no four choices a) to d) at its end";

// One question as an input gives it or a bank record gives it back; all texts are HTML.
struct Draft {
    std::string stem; // the question text without its choices
    std::vector<std::string> choices; // in their order
    std::size_t right = 0; // index of the right choice
    std::string explanation; // empty when it comes without one
};

// Joins texts; also keeps GCC 12's false -Wrestrict alarm on `"x" + s` away.
template <typename... Parts> std::string concat(const Parts&... parts)
{
    std::string out;
    (out.append(std::string_view(parts)), ...);
    return out;
}

std::string letter(char first, std::size_t index)
{
    return std::string(1, static_cast<char>(first + index));
}

// Why a page could not show the draft as it stands, or "".
std::string shapeProblem(const Draft& draft)
{
    if (draft.choices.size() != Choices)
        return std::to_string(draft.choices.size()) + " choices; the program shows four";
    if (draft.stem.empty())
        return "no question text";
    if (std::any_of(draft.choices.begin(), draft.choices.end(), [](const std::string& c) { return c.empty(); }))
        return "a choice has no text";
    return {};
}

// The header lines a bank source needs before its first question.
std::string header(const ImportSettings& settings, int questions)
{
    // The default paragraphs say what the program's own demo banks say.
    const std::array<std::string, MaxIntroLines> defaults = { concat("<b>", escapeHtml(settings.title), "</b>"),
        concat("It has ", std::to_string(questions), questions == 1 ? " question" : " questions",
            ", each with four choices and exactly one correct answer."),
        "Choose an answer with the buttons or the keys A to D, then press Next Question." };
    std::string text = concat("Title: ", settings.title, "\n");
    for (std::size_t k = 0; k < MaxIntroLines; ++k) {
        // The page joins the lines as HTML, where only <br> starts a new paragraph.
        text += concat(
            "Intro: ", k == 0 ? "" : "<br><br>", k < settings.intro.size() ? settings.intro[k] : defaults[k], "\n");
    }
    return text;
}

void checkSettings(const ImportSettings& settings)
{
    if (settings.intro.size() > MaxIntroLines)
        throw std::invalid_argument("a bank has at most three introduction lines");
    const auto check = [](const std::string& text, const char* what) {
        if (text.empty() || text.find_first_of("\r\n") != std::string::npos || !isValidUtf8(text))
            throw std::invalid_argument(concat(what, " must be one line of UTF-8 text, not empty"));
    };
    check(settings.title, "the title");
    for (const std::string& line : settings.intro)
        check(line, "an introduction line");
}

// Deals each question's choices: the right one to the letter that has had
// the fewest right answers so far (a random one among equals), the wrong ones
// to the other letters in random order. The generator is written out here,
// not taken from the standard library, whose distributions differ between
// libraries: the same input and seed give the same bank everywhere.
class Dealer {
public:
    Dealer(std::string_view input, std::uint64_t seed)
        : state_(seed)
    {
        // The input's own hash keeps two banks made with one seed from sharing an answer pattern.
        for (const char c : input)
            state_ = (state_ ^ static_cast<unsigned char>(c)) * 0x100000001B3u;
    }

    void deal(Draft& draft, bool keepOrder)
    {
        // A choice that points at others ("All of the above") only means something in its place.
        keepOrder = keepOrder || std::any_of(draft.choices.begin(), draft.choices.end(), [](const std::string& c) {
            const std::string text = lowerAscii(c);
            return text.find("above") != std::string::npos || text.find("below") != std::string::npos
                || text.find("both") != std::string::npos;
        });
        if (!keepOrder) {
            std::vector<std::size_t> fewest;
            const int least = *std::min_element(dealt_.begin(), dealt_.end());
            for (std::size_t k = 0; k < Choices; ++k) {
                if (dealt_[k] == least)
                    fewest.push_back(k);
            }
            std::vector<std::string> wrong;
            for (std::size_t k = 0; k < Choices; ++k) {
                if (k != draft.right)
                    wrong.push_back(std::move(draft.choices[k]));
            }
            for (std::size_t k = wrong.size(); k > 1; --k)
                std::swap(wrong[k - 1], wrong[below(k)]);
            const std::size_t right = fewest[below(fewest.size())];
            std::string rightText = std::move(draft.choices[draft.right]);
            for (std::size_t k = 0, w = 0; k < Choices; ++k)
                draft.choices[k] = k == right ? std::move(rightText) : std::move(wrong[w++]);
            draft.right = right;
        }
        ++dealt_[draft.right];
    }

private:
    // A number below n, from SplitMix64.
    std::size_t below(std::size_t n)
    {
        std::uint64_t z = state_ += 0x9E3779B97F4A7C15u;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return static_cast<std::size_t>((z ^ (z >> 31)) % n);
    }

    std::uint64_t state_;
    std::array<int, Choices> dealt_ {};
};

// Collects the questions of one import as bank-source text.
class SourceWriter {
public:
    SourceWriter(std::string_view input, const ImportSettings& settings)
        : dealer_(input, settings.seed)
        , keepOrder_(settings.keepOrder)
    {
    }

    // Adds the draft that starts on input line `line`, or reports it with the
    // reader's `problem` or the first check it fails.
    void add(int line, Draft& draft, std::string problem)
    {
        std::string lines;
        if (problem.empty())
            problem = shapeProblem(draft);
        if (problem.empty()) {
            dealer_.deal(draft, keepOrder_);
            lines = sourceLines(draft);
            if (!isValidUtf8(lines))
                problem = "not valid UTF-8";
            else if (result_.imported == MaxQuestions)
                problem = "the program loads at most 1000 questions";
            // A bank line holds four digits a character: what passes a quarter of
            // the bank limit is refused by the build anyway, and is not held here.
            else if (4 * (body_.size() + lines.size()) > MaxBankBytes)
                problem = "the bank would pass the 32 MiB the program reads; import the rest into another bank";
            // The loader cuts a longer text: "Question: " stands for the line ends it joins with CR LF.
            else if (lines.find("\nExplanation: ") > MaxFieldBytes || draft.explanation.size() > MaxFieldBytes)
                problem = "a question or explanation of more than the 16 KiB of text the program keeps";
        }
        if (!problem.empty()) {
            result_.skipped.push_back({ line, std::move(problem) });
            return;
        }
        body_ += lines;
        ++result_.imported;
    }

    ImportResult finish(const ImportSettings& settings)
    {
        result_.source = header(settings, result_.imported) + body_;
        return std::move(result_);
    }

private:
    // The question in the layout of the demo banks.
    static std::string sourceLines(const Draft& draft)
    {
        std::string lines = concat("\nQuestion: ", draft.stem, BreakTag, "\n");
        for (std::size_t k = 0; k < Choices; ++k)
            lines += concat(BreakTag, letter('a', k), ") ", draft.choices[k], "\n");
        // "<br><br>" alone is the loader's cue to put a sentence naming the answer in front.
        const bool bare = draft.explanation.empty() || draft.explanation == "<br><br>";
        return concat(lines, "Explanation: ", bare ? NoExplanation : draft.explanation,
            "\nAnswer: ", letter('a', draft.right), "\n");
    }

    Dealer dealer_;
    bool keepOrder_;
    ImportResult result_;
    std::string body_;
};

// Aiken: the question's line, the choices "A) text" or "A. text" in letter
// order, then "ANSWER: X". A line that is none of these continues the text
// above it; the reader sees a wrapped line there, so it joins with a space.
void readAiken(std::string_view input, SourceWriter& out)
{
    Draft draft;
    int start = 0; // the open question's first line; 0 while none is open
    const auto close = [&](std::string problem) {
        out.add(start, draft, std::move(problem));
        start = 0;
    };
    LineSplitter lines(input);
    std::size_t n = 0;
    for (std::string_view line; lines.next(line); ++n) {
        const std::string_view text = trimBlanks(line);
        const std::string mark = letter('A', draft.choices.size());
        if (text.empty()) {
            if (start != 0)
                close("no ANSWER line");
        } else if (start == 0) {
            draft = Draft { escapeHtml(text), {}, 0, {} };
            start = static_cast<int>(n + 1);
        } else if (lowerAscii(text.substr(0, AikenAnswer.size())) == AikenAnswer) {
            const std::string_view given = trimBlanks(text.substr(AikenAnswer.size()));
            draft.right = given.size() == 1
                ? static_cast<std::size_t>(std::toupper(static_cast<unsigned char>(given[0])) - 'A')
                : Choices;
            close(draft.right < draft.choices.size() ? "" : "the ANSWER letter names no choice");
        } else if (text.starts_with(mark + ") ") || text.starts_with(mark + ". ")) {
            draft.choices.push_back(escapeHtml(trimBlanks(text.substr(3))));
        } else if (std::string& above = draft.choices.empty() ? draft.stem : draft.choices.back();
                   above.size() <= MaxBankBytes / 4) { // past that it is refused whole
            above += concat(" ", escapeHtml(text));
        }
    }
    if (start != 0)
        close("no ANSWER line");
}

// What the GIFT reader looks for, each set ending with the backslash that escapes any of them.
constexpr std::string_view TitleMark = ":\\";
constexpr std::string_view OpenBrace = "{\\";
constexpr std::string_view CloseBrace = "}\\";
constexpr std::string_view AnswerMarks = "=~#\\";

// The first of `stops` at or after `from` that no backslash escapes.
std::size_t findUnescaped(std::string_view text, std::size_t from, std::string_view stops)
{
    std::size_t at = text.find_first_of(stops, from);
    while (at != std::string_view::npos && text[at] == '\\')
        at = text.find_first_of(stops, at + 2); // the escaped character is text, whatever it is
    return at;
}

struct GiftAnswer {
    bool right;
    std::string_view text;
    std::string_view feedback;
};

// A GIFT answer block taken apart: '=' and '~' start an answer, a '#' after
// it the answer's feedback, "####" the general feedback.
struct GiftAnswers {
    std::string_view lead; // before the first answer: a type mark such as T or #
    std::vector<GiftAnswer> answers;
    std::string_view general;
};

GiftAnswers splitAnswers(std::string_view inside)
{
    GiftAnswers block;
    enum class Piece { Lead, Text, Feedback } piece = Piece::Lead;
    std::size_t start = 0;
    const auto endPiece = [&](std::size_t end) {
        const std::string_view text = inside.substr(start, end - start);
        if (piece == Piece::Lead)
            block.lead = text;
        else
            (piece == Piece::Feedback ? block.answers.back().feedback : block.answers.back().text) = text;
    };
    std::size_t at = findUnescaped(inside, 0, AnswerMarks);
    for (; at != std::string_view::npos; at = findUnescaped(inside, at + 1, AnswerMarks)) {
        if (inside.substr(at, 4) == "####")
            break;
        if (inside[at] == '#' && piece != Piece::Text)
            continue; // a numeric answer's mark, or part of a feedback
        endPiece(at);
        start = at + 1;
        piece = inside[at] == '#' ? Piece::Feedback : Piece::Text;
        if (piece == Piece::Text)
            block.answers.push_back({ inside[at] == '=', {}, {} });
    }
    endPiece(at);
    if (at != std::string_view::npos)
        block.general = inside.substr(at + 4);
    return block;
}

// Why the answers make no question with one right choice, or "".
std::string answersProblem(const GiftAnswers& block)
{
    const std::string_view lead = trimBlanks(block.lead);
    std::string word(trimBlanks(lead.substr(0, lead.find('#'))));
    std::transform(word.begin(), word.end(), word.begin(), [](unsigned char c) { return std::toupper(c); });
    static constexpr std::string_view truths[] = { "T", "TRUE", "F", "FALSE" };
    if (lead.starts_with('#'))
        return "a numeric question";
    if (std::find(std::begin(truths), std::end(truths), word) != std::end(truths))
        return "a true/false question";
    if (block.answers.empty())
        return "no choices in the braces";
    int rights = 0;
    bool wrong = false;
    bool arrow = false;
    for (const GiftAnswer& answer : block.answers) {
        if (trimBlanks(answer.text).starts_with('%'))
            return "weighted answers (%); the program scores one right answer";
        rights += answer.right ? 1 : 0;
        wrong = wrong || !answer.right;
        arrow = arrow || answer.text.find("->") != std::string_view::npos;
    }
    if (!wrong)
        return arrow ? "a matching question" : "a short-answer question";
    if (rights != 1)
        return std::to_string(rights) + " right answers; the program needs one";
    return {};
}

// Reads one GIFT question (its lines joined by LF) into `draft`; returns why
// it is no question the program can show, or "".
std::string readGiftQuestion(std::string_view text, Draft& draft)
{
    if (text.starts_with("::")) {
        // The title ends at the next "::"; the program has no place for it.
        std::size_t colon = findUnescaped(text, 2, TitleMark);
        while (colon != std::string_view::npos && text.substr(colon, 2) != "::")
            colon = findUnescaped(text, colon + 1, TitleMark);
        if (colon != std::string_view::npos)
            text = trimBlanks(text.substr(colon + 2));
    }
    static constexpr std::pair<std::string_view, TextFormat> markers[] = { { "[html]", TextFormat::Html },
        { "[moodle]", TextFormat::Auto }, { "[plain]", TextFormat::Plain }, { "[markdown]", TextFormat::Markdown } };
    TextFormat format = TextFormat::Auto;
    for (const auto& [marker, markerFormat] : markers) {
        if (text.starts_with(marker)) {
            format = markerFormat;
            text.remove_prefix(marker.size());
            break;
        }
    }
    const std::size_t open = findUnescaped(text, 0, OpenBrace);
    if (open == std::string_view::npos)
        return "no answers in braces";
    const std::size_t close = findUnescaped(text, open + 1, CloseBrace);
    if (close == std::string_view::npos)
        return "the answer braces are not closed";
    const GiftAnswers block = splitAnswers(text.substr(open + 1, close - open - 1));
    if (std::string problem = answersProblem(block); !problem.empty())
        return problem;

    // Trimmed before (a last line break is no <br>) and after (an escaped one may end as a space).
    const auto html = [format](std::string_view raw) {
        return std::string(trimBlanks(toHtml(format, unescapeGift(trimBlanks(raw)))));
    };
    draft.stem = html(text.substr(0, open));
    if (const std::string_view tail = trimBlanks(text.substr(close + 1)); !tail.empty()) {
        // Text after the braces makes them a gap in the sentence.
        draft.stem = std::string(trimBlanks(concat(draft.stem, " _____ ", html(tail))));
    }
    for (const GiftAnswer& answer : block.answers) {
        if (answer.right)
            draft.right = draft.choices.size();
        draft.choices.push_back(html(answer.text));
    }
    draft.explanation = html(block.general);
    if (draft.explanation.empty())
        draft.explanation = html(block.answers[draft.right].feedback);
    return {};
}

// GIFT: questions apart by blank lines; whole-line "//" comments and
// "$CATEGORY:" lines are dropped wherever they stand.
void readGift(std::string_view input, SourceWriter& out)
{
    std::string block;
    int start = 0; // the block's first line; 0 while there is none
    const auto flush = [&] {
        if (start != 0) {
            Draft draft;
            std::string problem = readGiftQuestion(block, draft);
            out.add(start, draft, std::move(problem));
        }
        block.clear();
        start = 0;
    };
    LineSplitter lines(input);
    std::size_t n = 0;
    for (std::string_view line; lines.next(line); ++n) {
        const std::string_view text = trimBlanks(line);
        if (text.empty()) {
            flush();
        } else if (!text.starts_with("//") && !text.starts_with("$CATEGORY:")) {
            if (start == 0)
                start = static_cast<int>(n + 1);
            else
                block += '\n';
            block += text;
        }
    }
    flush();
}

// A record's texts on one line: the loader joins lines with CR LF, which HTML shows as white space.
std::string oneLine(std::string_view text)
{
    std::string line;
    for (const char c : text) {
        if (c != '\r')
            line += c == '\n' ? ' ' : c;
    }
    return line;
}

// Takes a record apart again as the importer laid it out; returns why it cannot, or "".
std::string readRecord(const QuestionRecord& record, Draft& draft)
{
    const std::string& answer = record.Answer;
    if (answer.size() != 1 || answer[0] < 'a' || answer[0] > 'd')
        return "the answer is not one letter a to d";
    std::vector<std::string_view> lines;
    std::string_view rest = record.Question;
    for (std::size_t end = rest.find("\r\n"); end != std::string_view::npos; end = rest.find("\r\n")) {
        lines.push_back(rest.substr(0, end));
        rest.remove_prefix(end + 2);
    }
    lines.push_back(rest);
    if (lines.size() < Choices)
        return std::string(NoChoices);
    const std::size_t first = lines.size() - Choices;
    for (std::size_t k = 0; k < Choices; ++k) {
        std::string_view line = lines[first + k];
        if (line.starts_with(BreakTag))
            line.remove_prefix(BreakTag.size());
        if (!line.starts_with(letter('a', k) + ") "))
            return std::string(NoChoices);
        draft.choices.emplace_back(trimBlanks(line.substr(3)));
    }
    std::string_view stem
        = trimBlanks(std::string_view(record.Question).substr(0, lines[first].data() - record.Question.data()));
    if (stem.ends_with(BreakTag))
        stem.remove_suffix(BreakTag.size());
    draft.stem = oneLine(stem);
    draft.right = static_cast<std::size_t>(answer[0] - 'a');
    draft.explanation = record.Explanation == NoExplanation ? std::string() : oneLine(record.Explanation);
    return shapeProblem(draft);
}

// Aiken holds plain text, one line per item.
std::string writeAiken(const Draft& draft, std::string& out)
{
    std::string text = toPlainText(draft.stem);
    bool empty = text.empty();
    text += '\n';
    for (std::size_t k = 0; k < Choices; ++k) {
        const std::string choice = toPlainText(draft.choices[k]);
        empty = empty || choice.empty();
        text += concat(letter('A', k), ") ", choice, "\n");
    }
    if (empty)
        return "no text left once the HTML is taken out";
    out += concat(text, "ANSWER: ", letter('A', draft.right), "\n\n");
    return {};
}

// GIFT keeps the HTML as it stands; the explanation becomes the general feedback.
std::string writeGift(const Draft& draft, std::string& out)
{
    std::string text = concat("[html]", escapeGift(draft.stem), " {\n");
    for (std::size_t k = 0; k < Choices; ++k) {
        if (draft.choices[k].starts_with('%'))
            return "a choice starts with %, which GIFT reads as a weight";
        text += concat(k == draft.right ? "=" : "~", escapeGift(draft.choices[k]), "\n");
    }
    if (!draft.explanation.empty())
        text += concat("####", escapeGift(draft.explanation), "\n");
    out += concat(text, "}\n\n");
    return {};
}

} // namespace

ImportResult importQuestions(QuestionFormat format, std::string_view text, const ImportSettings& settings)
{
    checkSettings(settings);
    if (text.starts_with(Bom))
        text.remove_prefix(Bom.size());
    SourceWriter writer(text, settings);
    if (format == QuestionFormat::Aiken)
        readAiken(text, writer);
    else
        readGift(text, writer);
    return writer.finish(settings);
}

ExportResult exportQuestions(QuestionFormat format, const QuestionList& list)
{
    ExportResult result;
    for (int number = 1; number <= list.QuestionCount; ++number) {
        Draft draft;
        std::string problem = readRecord(list.Questions[number], draft);
        if (problem.empty())
            problem = format == QuestionFormat::Aiken ? writeAiken(draft, result.text) : writeGift(draft, result.text);
        if (problem.empty())
            ++result.exported;
        else
            result.skipped.push_back({ number, std::move(problem) });
    }
    // A reader drops a BOM in front of the text, so a first question that
    // starts with that character needs one more.
    if (result.text.starts_with(Bom))
        result.text.insert(0, Bom);
    return result;
}

} // namespace kesta
