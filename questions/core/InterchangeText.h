#pragma once

#include <string>
#include <string_view>

namespace kesta {

// The text conversions between the question interchange formats (Aiken,
// GIFT) and the HTML that the program's pages show. Each works on UTF-8
// bytes in one pass over its input and touches only ASCII characters, so a
// multi-byte character always passes through whole. None of them throws.

// How a GIFT text is written. Auto stands for an unmarked text and for
// [moodle]: HTML whose line breaks count.
enum class TextFormat { Auto, Html, Plain, Markdown };

// True for well-formed UTF-8 (no overlong forms, surrogates or code points
// past U+10FFFF): texts that a question-file line keeps unchanged.
bool isValidUtf8(std::string_view text);

// The text without the spaces, TABs and line breaks at its ends.
std::string_view trimBlanks(std::string_view text);

// Plain text as HTML: & < > " become entities.
std::string escapeHtml(std::string_view text);

// A text of the given format as one line of HTML: Plain and Markdown are
// escaped, Markdown's *em*, _em_, **strong** and `code` become tags, a line
// break becomes <br> (a space for Html, where it is only white space). An
// HTML text longer than a quarter of a bank, which no bank holds, is cut short.
std::string toHtml(TextFormat format, std::string_view text);

// HTML as one line of plain text: tags are dropped (those that start a new
// line leave a space), entities decoded, line breaks made spaces, the ends
// trimmed.
std::string toPlainText(std::string_view html);

// A GIFT text with its escapes resolved: \~ \= \# \{ \} \: \\ stand for the
// character itself, \n for a line break; any other backslash is kept.
std::string unescapeGift(std::string_view text);

// The text written so that GIFT reads it back unchanged: the characters
// above get their backslash.
std::string escapeGift(std::string_view text);

} // namespace kesta
