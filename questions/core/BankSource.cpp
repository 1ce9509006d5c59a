#include "questions/core/BankSource.h"

#include "common/core/RuntimeError.h"
#include "common/core/TestKind.h"
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"

#include <algorithm>
#include <array>

namespace kesta {

namespace {

constexpr std::string_view RawPrefix = "Raw: ";
constexpr std::string_view MarkedPrefix = "#: ";
constexpr std::string_view Bom = "\xEF\xBB\xBF";

// A keyword form: its keyword with the colon, whether its file line is
// marked, and what an author writes after it.
struct Form {
    std::string_view key;
    bool marked;
    std::string_view holds;
};
constexpr std::array<Form, 7> Forms = { { { "Title:", false, "the bank's title" },
    { "Intro:", false, "a paragraph of the introduction" }, { "Question:", true, "the question" },
    { "Explanation:", true, "the explanation" }, { "Answer:", true, "the letter of the right choice" },
    { "#:", true, "the text" }, { "Raw:", false, "the enciphered line" } } };

std::string_view keywordOf(LineRole role)
{
    switch (role) {
    case LineRole::Title:
        return "Title:";
    case LineRole::Intro:
        return "Intro:";
    case LineRole::Question:
        return "Question:";
    case LineRole::Explanation:
        return "Explanation:";
    case LineRole::Answer:
        return "Answer:";
    default:
        return {};
    }
}

// Joins texts; also keeps GCC 12's false -Wrestrict alarm on `"x" + s` away.
template <typename... Parts> std::string concat(const Parts&... parts)
{
    std::string out;
    out.reserve((std::string_view(parts).size() + ...));
    (out.append(std::string_view(parts)), ...);
    return out;
}

bool startsWithNoCase(std::string_view text, std::string_view prefix)
{
    return lowerAscii(text.substr(0, prefix.size())) == lowerAscii(prefix);
}

// A plain line whose text an author could take for a form, whatever its
// case, or whose first character editors hide, is written with a backslash.
bool needsEscape(std::string_view text)
{
    return text.starts_with('\\') || text.starts_with(Bom)
        || std::any_of(Forms.begin(), Forms.end(), [text](const Form& f) { return startsWithNoCase(text, f.key); });
}

std::string_view trimSpaces(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t");
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

// A text that a source line can hold as it stands.
bool expressible(std::string_view text)
{
    return !text.empty() && text.find_first_of("\r\n") == std::string_view::npos;
}

// The source line for one file line with its deciphered text, as the form's
// prefix and the text after it: a large line is compared, not copied.
struct SourceLine {
    std::string_view prefix;
    std::string_view body;

    bool operator==(std::string_view line) const
    {
        return line.size() == prefix.size() + body.size() && line.starts_with(prefix) && line.ends_with(body);
    }
    std::string text() const { return concat(prefix, body); }
};

SourceLine sourceLine(LineRole role, std::string_view rawLine, std::string_view text)
{
    static constexpr std::array<std::string_view, 5> keywords
        = { "Title: ", "Intro: ", "Question: ", "Explanation: ", "Answer: " };
    if (role == LineRole::Empty)
        return {};
    if (!expressible(text))
        return { RawPrefix, rawLine };
    switch (role) {
    case LineRole::MarkedHeader:
        return { MarkedPrefix, text };
    case LineRole::Plain:
        return { needsEscape(text) ? "\\" : "", text };
    default:
        return { keywords[static_cast<std::size_t>(role) - static_cast<std::size_t>(LineRole::Title)], text };
    }
}

// One source line parsed, its file line appended to the bank.
struct ParsedLine {
    std::string_view text; // what the line should decipher to (unused for Raw)
    std::string_view form; // its keyword, "\\" for an escaped line, "" for a plain one
};

constexpr const char* TooLarge = "the bank would be larger than the 32 MiB the program reads; split it";

// Appends the file line for `line` to `bank`. A text that cannot fit is
// refused before it is enciphered, which would take several times its size.
ParsedLine parseSourceLine(std::string_view line, std::string_view passPhrase, int lineNumber, std::string& bank)
{
    const auto enciphered = [&](std::string_view text, bool marked, std::string_view form) {
        if (text.empty())
            throw BankSourceError(lineNumber, "the backslash has no text after it; write the text or delete the line");
        if (4 * Utf16Length(text) > MaxBankBytes - bank.size()) // two bytes a unit, two digits a byte
            throw BankSourceError(lineNumber, TooLarge);
        bank.append(marked ? "#" : "");
        AppendEncrypted(bank, text, passPhrase);
        return ParsedLine { text, form };
    };
    if (line.empty())
        return {};
    if (line.front() == '\\')
        return enciphered(line.substr(1), false, "\\");
    if (line.starts_with(Bom))
        throw BankSourceError(lineNumber,
            "starts with a byte-order mark (an invisible character some editors write, "
            "U+FEFF); delete it");
    for (const Form& form : Forms) {
        if (!startsWithNoCase(line, form.key))
            continue;
        const std::string_view rest = line.substr(form.key.size());
        const std::string_view text = trimSpaces(rest);
        if (!line.starts_with(form.key)) {
            throw BankSourceError(lineNumber,
                concat(Quoted(line.substr(0, form.key.size())), " is no keyword; write ",
                    Quoted(concat(form.key, " ", text)), " (or ", Quoted(concat("\\", line)), " for a plain line)"));
        }
        if (text.empty())
            throw BankSourceError(
                lineNumber, concat(Quoted(form.key), " has no text; write ", form.holds, " after it"));
        if (rest.size() < 2 || rest.front() != ' ') {
            throw BankSourceError(lineNumber,
                concat(
                    Quoted(form.key), " takes one space before its text; write ", Quoted(concat(form.key, " ", text))));
        }
        if (form.key == "Raw:") {
            bank.append(rest.substr(1));
            return ParsedLine { {}, form.key };
        }
        return enciphered(rest.substr(1), form.marked, form.key);
    }
    return enciphered(line, false, "");
}

std::string describeRole(LineRole role)
{
    switch (role) {
    case LineRole::Title:
        return "the title";
    case LineRole::Intro:
        return "an introduction line";
    case LineRole::MarkedHeader:
        return "a marked header line";
    case LineRole::Plain:
        return "a plain line";
    default:
        return concat(keywordOf(role), " line (marked lines take turns: Question, Explanation, Answer)");
    }
}

bool isBodyKeyword(std::string_view form)
{
    return form == "Question:" || form == "Explanation:" || form == "Answer:";
}

// Where the question being built stands and what it has.
struct OpenQuestion {
    int line = 0; // of its Question: line; 0 when the last question is complete
    bool explained = false;
};

// Why a line the loader would read in another role stands wrong, at the line
// of the question it belongs to, and what to write instead.
BankSourceError misplaced(
    int lineNumber, std::string_view form, LineRole role, const std::string& readBack, const OpenQuestion& open)
{
    const std::string_view wanted = keywordOf(role);
    if (form == "Title:")
        return { lineNumber, "only the first line is the title; write this line as 'Intro: ...' or as a plain line" };
    if (isBodyKeyword(form) && (role == LineRole::Intro || role == LineRole::MarkedHeader))
        return { lineNumber,
            "the program reads the three lines after the title as the introduction, and this as one "
            "of them; write three 'Intro:' lines before the first question" };
    if (isBodyKeyword(form) && !wanted.empty()) {
        if (form == "Question:" && role != LineRole::Question)
            return { open.line, MissingParts(role == LineRole::Answer) };
        if (form == "Answer:" && role == LineRole::Explanation)
            return { open.line, "this question has no 'Explanation:' line; write one before its 'Answer:'" };
        if (role == LineRole::Answer)
            return { lineNumber,
                "the question above has its explanation; write a further paragraph as a plain line, "
                "without 'Explanation:'" };
        return { lineNumber, concat(Quoted(form), " stands where a question begins; write 'Question: ...' before it") };
    }
    if (role == LineRole::Plain && (form == "\\" || form == "Raw:"))
        return { lineNumber, concat("needs no ", Quoted(form), " here; write ", Quoted(readBack)) };
    return { lineNumber, concat("the program reads this line as ", describeRole(role), "; write ", Quoted(readBack)) };
}

} // namespace

BankSourceError::BankSourceError(int line, const std::string& message)
    : std::runtime_error(message)
    , line_(line)
{
}

LineRole LineRoles::next(int fileLine, std::string_view line)
{
    if (line.empty())
        return LineRole::Empty;
    const bool marked = line.front() == '#';
    if (header_ <= 4) {
        const int h = header_++;
        if (marked)
            return LineRole::MarkedHeader;
        if (h == 1)
            return fileLine == 1 ? LineRole::Title : LineRole::Plain;
        return LineRole::Intro;
    }
    if (!marked)
        return LineRole::Plain;
    section_ = section_ % 3 + 1;
    return section_ == 1 ? LineRole::Question : section_ == 2 ? LineRole::Explanation : LineRole::Answer;
}

std::string Quoted(std::string_view text)
{
    constexpr std::size_t Longest = 60;
    if (text.size() <= Longest)
        return concat("'", text, "'");
    std::size_t cut = Longest - 3;
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80)
        --cut; // never inside a character
    return concat("'", text.substr(0, cut), "...'");
}

std::string MissingParts(bool hasExplanation)
{
    return hasExplanation ? "this question has no 'Answer:' line; write 'Answer: ' and the letter of the right choice "
                            "after its explanation"
                          : "this question has no 'Explanation:' and no 'Answer:' line; write both after it";
}

std::string WhyUndecipherable(std::string_view line)
{
    if (line.empty())
        return "has nothing after its marker '#'";
    if (line.find_first_not_of("0123456789ABCDEFabcdef") != std::string_view::npos)
        return "holds a character that is not a hexadecimal digit";
    if (line.size() % 2 != 0)
        return "has an odd number of hexadecimal digits";
    return "was not enciphered under this pass phrase";
}

BankSourceError Undecipherable(int line, std::string_view rawLine, std::string_view passPhrase, bool titleRead)
{
    if (passPhrase != QuestionPassPhrase)
        return { 0, "cannot be deciphered with the pass phrase given by --key; give the one the bank was made with" };
    if (!titleRead)
        return { line, "not a question file: its lines are not the enciphered text that 'kesta-qbank build' writes" };
    rawLine.remove_prefix(rawLine.starts_with('#') ? 1 : 0);
    return { line,
        concat("this line is damaged: it ", WhyUndecipherable(rawLine), "; build the bank again from its source") };
}

std::string BuildBank(std::string_view source, std::string_view passPhrase)
{
    if (source.starts_with(Bom))
        source.remove_prefix(Bom.size()); // what some editors write first
    if (source.empty())
        throw BankSourceError(1, "the source is empty; start it with 'Title: ' and the bank's title");

    // Room for the whole bank at once, so that a large line is appended
    // without a copy; pages never written take no memory.
    const auto lines = static_cast<std::size_t>(std::count(source.begin(), source.end(), '\n')) + 1;
    std::string bank;
    bank.reserve(std::min(4 * source.size() + 67 * lines, MaxBankBytes + 67));
    LineDecoder decoder(passPhrase);
    LineRoles roles;
    OpenQuestion open;
    int lineNumber = 0;
    for (std::size_t start = 0; start < source.size();) {
        const std::size_t end = std::min(source.find('\n', start), source.size());
        std::string_view line = source.substr(start, end - start);
        start = end + 1;
        ++lineNumber;
        if (line.ends_with('\r'))
            line.remove_suffix(1); // a CR LF line end
        if (line.find('\r') != std::string_view::npos)
            throw BankSourceError(lineNumber, "holds a carriage return (CR) inside the line; delete it");

        const std::size_t at = bank.size();
        const auto [text, form] = parseSourceLine(line, passPhrase, lineNumber, bank);
        if (lineNumber == 1 && form != "Title:" && form != "Raw:") {
            throw BankSourceError(1,
                "the first line is the bank's title; write 'Title: ' and a title holding "
                "\"KESTA Exam Demo\" or \"KESTA Quiz Demo\"");
        }
        const std::string_view fileLine = std::string_view(bank).substr(at);
        // Check the line the way dump will read it, so the round trip holds.
        const LineRole role = roles.next(lineNumber, fileLine);
        if (!fileLine.empty()) {
            std::string deciphered;
            try {
                decoder.decode(fileLine.substr(fileLine.front() == '#' ? 1 : 0), deciphered);
            } catch (const RuntimeError&) {
                throw BankSourceError(lineNumber,
                    concat("this 'Raw:' line cannot be deciphered: it ",
                        WhyUndecipherable(fileLine.substr(fileLine.front() == '#' ? 1 : 0))));
            }
            if (form != "Raw:" && deciphered != text)
                throw BankSourceError(lineNumber, "the text is not valid UTF-8; save the source as UTF-8");
            if (const SourceLine readBack = sourceLine(role, fileLine, deciphered); !(readBack == line))
                throw misplaced(lineNumber, form, role, readBack.text(), open);
        }
        if (role == LineRole::Question)
            open = { lineNumber, false };
        open.explained = open.explained || role == LineRole::Explanation;
        bank += "\r\n";
        if (bank.size() > MaxBankBytes)
            throw BankSourceError(lineNumber, TooLarge);
    }
    return bank;
}

std::string DumpBank(std::string_view bank, std::string_view passPhrase)
{
    std::string source;
    LineDecoder decoder(passPhrase);
    LineRoles roles;
    bool titleRead = false;
    int lineNumber = 0;
    LineSplitter lines(bank);
    for (std::string_view fileLine; lines.next(fileLine);) {
        ++lineNumber;
        const LineRole role = roles.next(lineNumber, fileLine);
        if (role != LineRole::Empty) {
            std::string text;
            try {
                decoder.decode(fileLine.substr(fileLine.front() == '#' ? 1 : 0), text);
            } catch (const RuntimeError&) {
                throw Undecipherable(lineNumber, fileLine, passPhrase, titleRead);
            }
            titleRead = titleRead || (role == LineRole::Title && !text.empty());
            const SourceLine line = sourceLine(role, fileLine, text);
            // A title that deciphers to no text under a phrase of the author's own means the phrase is wrong.
            if (role == LineRole::Title && (line.prefix == RawPrefix || text.empty())
                && passPhrase != QuestionPassPhrase)
                throw Undecipherable(lineNumber, fileLine, passPhrase, false);
            source.append(line.prefix).append(line.body);
        }
        source += '\n';
    }
    return source;
}

} // namespace kesta
