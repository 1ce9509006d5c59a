#include "questions/core/BankSource.h"

#include "common/core/RuntimeError.h"
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"

#include <algorithm>
#include <array>
#include <vector>

namespace kesta {

namespace {

// The role the loader gives a file line, and the source form naming it.
enum class Role { Empty, Title, Intro, MarkedHeader, Question, Explanation, Answer, Plain };

constexpr std::string_view RawPrefix = "Raw: ";
constexpr std::string_view MarkedPrefix = "#: ";

// Every prefix a plain line's text must not start with, lest it be read as a form.
constexpr std::array<std::string_view, 8> ReservedStarts = {"Title:", "Intro:",  "Question:", "Explanation:",
                                                            "Answer:", "Raw:",   "#:",        "\\"};

std::string_view keywordOf(Role role)
{
    switch (role) {
    case Role::Title: return "Title";
    case Role::Intro: return "Intro";
    case Role::Question: return "Question";
    case Role::Explanation: return "Explanation";
    case Role::Answer: return "Answer";
    default: return {};
    }
}

// Follows a file line by line as the loader does: the first four non-empty
// lines are the header, marked body lines cycle question, explanation, answer.
class RoleTracker {
public:
    Role next(int fileLine, bool empty, bool marked)
    {
        if (empty)
            return Role::Empty;
        if (header_ <= 4) {
            const int h = header_++;
            if (marked)
                return Role::MarkedHeader;
            if (h == 1)
                return fileLine == 1 ? Role::Title : Role::Plain;
            return Role::Intro;
        }
        if (!marked)
            return Role::Plain;
        section_ = section_ % 3 + 1;
        return section_ == 1 ? Role::Question : section_ == 2 ? Role::Explanation : Role::Answer;
    }

private:
    int header_ = 1;
    int section_ = 0;
};

// Joins texts; also keeps GCC 12's false -Wrestrict alarm on `"x" + s` away.
template <typename... Parts>
std::string concat(const Parts&... parts)
{
    std::string out;
    out.reserve((std::string_view(parts).size() + ...));
    (out.append(std::string_view(parts)), ...);
    return out;
}

bool startsWith(std::string_view text, std::string_view prefix)
{
    return text.substr(0, prefix.size()) == prefix;
}

// A text that a source line can hold as it stands.
bool expressible(std::string_view text)
{
    return !text.empty() && text.find_first_of("\r\n") == std::string_view::npos;
}

// The source line for one file line with its deciphered text.
std::string sourceLine(Role role, std::string_view rawLine, const std::string& text)
{
    if (role == Role::Empty)
        return {};
    if (!expressible(text))
        return concat(RawPrefix, rawLine);
    switch (role) {
    case Role::MarkedHeader: return concat(MarkedPrefix, text);
    case Role::Plain:
        for (const std::string_view reserved : ReservedStarts) {
            if (startsWith(text, reserved))
                return concat("\\", text);
        }
        return text;
    default: return concat(keywordOf(role), ": ", text);
    }
}

std::string decipherLine(std::string_view rawLine, LineDecoder& decoder, int lineNumber)
{
    try {
        std::string text;
        decoder.decode(rawLine.substr(rawLine.front() == '#' ? 1 : 0), text);
        return text;
    } catch (const RuntimeError& error) {
        throw BankSourceError(lineNumber, "cannot be deciphered: run-time error " + std::to_string(error.number()) +
                                              " (" + error.description() + ")");
    }
}

// One source line parsed into its file line.
struct ParsedLine {
    std::string fileLine;
    std::string text;   // what the line should decipher to (unused for Raw)
    bool raw;
};

ParsedLine parseSourceLine(std::string_view line, std::string_view passPhrase, int lineNumber)
{
    auto enciphered = [&](std::string_view text, bool marked) {
        if (text.empty())
            throw BankSourceError(lineNumber, "the text is empty; a line without text cannot be enciphered");
        return ParsedLine{concat(marked ? "#" : "", EncryptString(text, passPhrase)), std::string(text), false};
    };
    if (line.empty())
        return {};
    if (line.front() == '\\')
        return enciphered(line.substr(1), false);

    struct Form {
        std::string_view name;
        bool marked;
    };
    static constexpr std::array<Form, 7> forms = {{{"Title", false},
                                                   {"Intro", false},
                                                   {"Question", true},
                                                   {"Explanation", true},
                                                   {"Answer", true},
                                                   {"#", true},
                                                   {"Raw", false}}};
    for (const Form& form : forms) {
        if (!startsWith(line, form.name) || line.substr(form.name.size(), 1) != ":")
            continue;
        const std::string_view rest = line.substr(form.name.size() + 1);
        if (rest.size() < 2 || rest.front() != ' ') {
            throw BankSourceError(lineNumber, "'" + std::string(form.name) +
                                                  ":' must be followed by one space and a non-empty text (write '\\" +
                                                  std::string(line) + "' for a plain line with this text)");
        }
        const std::string_view text = rest.substr(1);
        if (form.name == "Raw")
            return ParsedLine{std::string(text), {}, true};
        return enciphered(text, form.marked);
    }
    return enciphered(line, false);
}

std::string describeRole(Role role)
{
    switch (role) {
    case Role::Title: return "the title (the plain first line)";
    case Role::Intro: return "an introduction line (plain header lines 2 to 4)";
    case Role::MarkedHeader: return "a marked header line";
    case Role::Question: return "a question (marked lines cycle Question, Explanation, Answer)";
    case Role::Explanation: return "an explanation (marked lines cycle Question, Explanation, Answer)";
    case Role::Answer: return "an answer (marked lines cycle Question, Explanation, Answer)";
    default: return "a plain continuation line";
    }
}

} // namespace

BankSourceError::BankSourceError(int line, const std::string& message) : std::runtime_error(message), line_(line) {}

std::string BuildBank(std::string_view source, std::string_view passPhrase)
{
    if (source.empty())
        throw BankSourceError(1, "the source is empty; it must start with 'Title: TEXT'");
    if (source.back() != '\n')
        throw BankSourceError(static_cast<int>(std::count(source.begin(), source.end(), '\n')) + 1,
                              "the last line has no line end (LF)");

    std::string bank;
    LineDecoder decoder(passPhrase);
    RoleTracker roles;
    int lineNumber = 0;
    std::size_t start = 0;
    while (start < source.size()) {
        const std::size_t end = source.find('\n', start);
        const std::string_view line = source.substr(start, end - start);
        start = end + 1;
        ++lineNumber;
        if (line.find('\r') != std::string_view::npos)
            throw BankSourceError(lineNumber, "holds a CR character; the source uses LF line ends only");

        const ParsedLine parsed = parseSourceLine(line, passPhrase, lineNumber);
        const std::string& fileLine = parsed.fileLine;
        // Check the line the way dump will read it, so the round trip holds.
        const Role role = roles.next(lineNumber, fileLine.empty(), !fileLine.empty() && fileLine.front() == '#');
        if (!fileLine.empty()) {
            const std::string text = decipherLine(fileLine, decoder, lineNumber);
            if (!parsed.raw && text != parsed.text)
                throw BankSourceError(lineNumber, "the text is not valid UTF-8");
            const std::string readBack = sourceLine(role, fileLine, text);
            if (readBack != line) {
                throw BankSourceError(lineNumber, "stands where the program reads " + describeRole(role) +
                                                      "; it would read back as '" + readBack + "'");
            }
        }
        bank += fileLine;
        bank += "\r\n";
        if (bank.size() > MaxBankBytes)
            throw BankSourceError(lineNumber, "the question file would be larger than the 32 MiB the program reads");
    }
    return bank;
}

std::string DumpBank(std::string_view bank, std::string_view passPhrase)
{
    std::string source;
    LineDecoder decoder(passPhrase);
    RoleTracker roles;
    int lineNumber = 0;
    LineSplitter lines(bank);
    for (std::string_view fileLine; lines.next(fileLine);) {
        ++lineNumber;
        const Role role = roles.next(lineNumber, fileLine.empty(), !fileLine.empty() && fileLine.front() == '#');
        if (role != Role::Empty)
            source += sourceLine(role, fileLine, decipherLine(fileLine, decoder, lineNumber));
        source += '\n';
    }
    return source;
}

} // namespace kesta
