#include "questions/core/InterchangeText.h"

#include "questions/core/QuestionLoader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <utility>

namespace kesta {

namespace {

constexpr std::string_view Blanks = " \t\r\n";
constexpr std::string_view GiftSpecials = "~=#{}:\\";

bool isGiftSpecial(char c)
{
    return GiftSpecials.find(c) != std::string_view::npos;
}

std::string_view entityFor(char c)
{
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    default:
        return {};
    }
}

// Markdown's delimiters, in the order they are tried at a position ("**" before "*").
enum Mark : std::size_t { Strong, EmStar, EmLine, Code, NoMark };
constexpr std::array<std::string_view, NoMark> MarkText = { "**", "*", "_", "`" };
constexpr std::array<std::string_view, NoMark> OpenTag = { "<strong>", "<em>", "<em>", "<code>" };
constexpr std::array<std::string_view, NoMark> CloseTag = { "</strong>", "</em>", "</em>", "</code>" };

Mark markAt(std::string_view text)
{
    const auto* found = std::find_if(
        MarkText.begin(), MarkText.end(), [text](std::string_view mark) { return text.starts_with(mark); });
    return static_cast<Mark>(found - MarkText.begin());
}

char continuation(std::uint32_t bits)
{
    return static_cast<char>(0x80 | (bits & 0x3F));
}

std::string utf8(std::uint32_t cp)
{
    if (cp < 0x80)
        return { static_cast<char>(cp) };
    if (cp < 0x800)
        return { static_cast<char>(0xC0 | cp >> 6), continuation(cp) };
    if (cp < 0x10000)
        return { static_cast<char>(0xE0 | cp >> 12), continuation(cp >> 6), continuation(cp) };
    return { static_cast<char>(0xF0 | cp >> 18), continuation(cp >> 12), continuation(cp >> 6), continuation(cp) };
}

// The text an entity's name (between & and ;) stands for; empty for one this does not know.
std::string decodeEntity(std::string_view name)
{
    static constexpr std::pair<std::string_view, std::string_view> named[]
        = { { "amp", "&" }, { "lt", "<" }, { "gt", ">" }, { "quot", "\"" }, { "apos", "'" }, { "nbsp", "\xC2\xA0" } };
    for (const auto& [entity, text] : named) {
        if (name == entity)
            return std::string(text);
    }
    if (!name.starts_with('#'))
        return {};
    const bool hex = name.starts_with("#x") || name.starts_with("#X");
    const std::string_view digits = name.substr(hex ? 2 : 1);
    std::uint32_t cp = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), cp, hex ? 16 : 10);
    if (error != std::errc() || end != digits.data() + digits.size() || cp > 0x10FFFF)
        return {};
    std::string text = utf8(cp);
    return isValidUtf8(text) ? text : std::string(); // a surrogate is no character
}

} // namespace

bool isValidUtf8(std::string_view text)
{
    // The well-formed sequences by lead byte: their length and the range the
    // second byte must fall in, which rules out overlong forms, surrogates and
    // code points past U+10FFFF; later bytes are all 0x80..0xBF.
    struct Sequence {
        unsigned char leadFrom, leadTo, secondFrom, secondTo;
        std::size_t length;
    };
    static constexpr Sequence sequences[]
        = { { 0x00, 0x7F, 0x80, 0xBF, 1 }, { 0xC2, 0xDF, 0x80, 0xBF, 2 }, { 0xE0, 0xE0, 0xA0, 0xBF, 3 },
              { 0xE1, 0xEC, 0x80, 0xBF, 3 }, { 0xED, 0xED, 0x80, 0x9F, 3 }, { 0xEE, 0xEF, 0x80, 0xBF, 3 },
              { 0xF0, 0xF0, 0x90, 0xBF, 4 }, { 0xF1, 0xF3, 0x80, 0xBF, 4 }, { 0xF4, 0xF4, 0x80, 0x8F, 4 } };
    std::size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const auto* sequence = std::find_if(std::begin(sequences), std::end(sequences),
            [lead](const Sequence& s) { return s.leadFrom <= lead && lead <= s.leadTo; });
        if (sequence == std::end(sequences))
            return false;
        const std::string_view bytes = text.substr(i, sequence->length);
        if (bytes.size() != sequence->length)
            return false;
        for (std::size_t k = 1; k < bytes.size(); ++k) {
            const auto byte = static_cast<unsigned char>(bytes[k]);
            const bool second = k == 1;
            if (byte < (second ? sequence->secondFrom : 0x80) || byte > (second ? sequence->secondTo : 0xBF))
                return false;
        }
        i += bytes.size();
    }
    return true;
}

std::string_view trimBlanks(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(Blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

std::string escapeHtml(std::string_view text)
{
    return toHtml(TextFormat::Plain, text);
}

std::string toHtml(TextFormat format, std::string_view text)
{
    const bool markdown = format == TextFormat::Markdown;
    const bool escape = markdown || format == TextFormat::Plain;
    // A delimiter opens only while another of its kind follows, so a lone
    // "*" stays a star; inside a code span the others are plain text.
    std::array<int, NoMark> ahead {};
    for (std::string_view rest = text; markdown && !rest.empty();) {
        const Mark mark = markAt(rest);
        rest.remove_prefix(mark == NoMark ? 1 : MarkText[mark].size());
        if (mark != NoMark)
            ++ahead[mark];
    }
    std::array<bool, NoMark> open {};
    std::string html;
    html.reserve(text.size());
    // Past a quarter of the bank limit the text is more than a bank holds and
    // is refused whole; it is cut there rather than grown up to six times its size.
    for (std::string_view rest = text; !rest.empty() && html.size() <= MaxBankBytes / 4;) {
        const Mark mark = markdown ? markAt(rest) : NoMark;
        if (mark != NoMark) {
            --ahead[mark];
            rest.remove_prefix(MarkText[mark].size());
            if (open[Code] && mark != Code) {
                html += MarkText[mark];
            } else if (open[mark] || ahead[mark] > 0) {
                html += open[mark] ? CloseTag[mark] : OpenTag[mark];
                open[mark] = !open[mark];
            } else {
                html += MarkText[mark];
            }
            continue;
        }
        const char c = rest.front();
        rest.remove_prefix(1);
        const std::string_view entity = escape ? entityFor(c) : std::string_view();
        if (c == '\n')
            html += format == TextFormat::Html ? " " : "<br>";
        else if (!entity.empty())
            html += entity;
        else
            html += c;
    }
    // A delimiter whose partner sat inside a code span is still open.
    for (const Mark mark : { Code, EmLine, EmStar, Strong }) {
        if (open[mark])
            html += CloseTag[mark];
    }
    return html;
}

std::string toPlainText(std::string_view html)
{
    // The next '>' and ';' are remembered, so text without them is searched once, not once per '<' or '&'.
    std::size_t tagEnd = html.find('>');
    std::size_t entityEnd = html.find(';');
    std::string text;
    text.reserve(html.size());
    for (std::size_t i = 0; i < html.size();) {
        if (tagEnd < i)
            tagEnd = html.find('>', i);
        if (entityEnd < i)
            entityEnd = html.find(';', i);
        if (html[i] == '<' && tagEnd != std::string_view::npos) {
            std::string_view tag = html.substr(i + 1, tagEnd - i - 1);
            if (tag.starts_with('/'))
                tag.remove_prefix(1);
            std::string name;
            for (std::size_t k = 0; k < tag.size() && std::isalnum(static_cast<unsigned char>(tag[k])); ++k)
                name += static_cast<char>(std::tolower(static_cast<unsigned char>(tag[k])));
            if (name == "br" || name == "p" || name == "div" || name == "li")
                text += ' ';
            i = tagEnd + 1;
            continue;
        }
        if (html[i] == '&' && entityEnd != std::string_view::npos) {
            const std::string decoded = decodeEntity(html.substr(i + 1, entityEnd - i - 1));
            if (!decoded.empty()) {
                text += decoded;
                i = entityEnd + 1;
                continue;
            }
        }
        text += html[i++];
    }
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
    return std::string(trimBlanks(text));
}

std::string unescapeGift(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    bool backslash = false;
    for (const char c : text) {
        if (backslash) {
            backslash = false;
            if (c == 'n') {
                out += '\n';
                continue;
            }
            if (!isGiftSpecial(c))
                out += '\\';
        } else if (c == '\\') {
            backslash = true;
            continue;
        }
        out += c;
    }
    if (backslash)
        out += '\\';
    return out;
}

std::string escapeGift(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        if (isGiftSpecial(c))
            out += '\\';
        out += c;
    }
    return out;
}

} // namespace kesta
