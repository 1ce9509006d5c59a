#include "questions/core/Cipher.h"

#include "support/Checks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

namespace kesta {
namespace {

using Bytes = CRijndael::Bytes;

std::string decrypt(const std::string& line, std::string_view key = QuestionPassPhrase)
{
    return test::outcome([&] { return DecryptString(line, key); });
}

// A line of any framed bytes, enciphered under the pass phrase's UTF-16LE bytes as the program's lines are.
std::string lineOf(const Bytes& message)
{
    Bytes key;
    for (const char c : QuestionPassPhrase)
        key.insert(key.end(), {static_cast<std::uint8_t>(c), 0});
    std::string hex;
    for (const std::uint8_t b : CRijndael().EncryptData(message, key))
        hex += {"0123456789ABCDEF"[b >> 4], "0123456789ABCDEF"[b & 15]};
    return hex;
}

// Text goes in as UTF-16LE code units and comes back the same; malformed
// UTF-8 becomes U+FFFD, an unpaired surrogate stays itself.
TEST(CipherTest, TextRoundTripsThroughItsUtf16Units)
{
    const std::string replaced = "\xEF\xBF\xBD";
    const std::pair<std::string, std::string> cases[] = {
        {"a", "a"}, {std::string(14, 'x'), std::string(14, 'x')}, {std::string(15, 'x'), std::string(15, 'x')},
        {"tab\there, CR LF\r\n \"q\"", "tab\there, CR LF\r\n \"q\""},
        {"ab\xC3\xA9\xE2\x82\xAC\xE4\xB8\xAD cd", "ab\xC3\xA9\xE2\x82\xAC\xE4\xB8\xAD cd"}, // é € 中 after ASCII
        {"\xF0\x9F\x98\x80!", "\xF0\x9F\x98\x80!"},                                         // a surrogate pair
        {"\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", // each length's bounds
         "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        {"\xED\xA0\x80" "A \xED\xB0\x80 \xED\xA0\x80", "\xED\xA0\x80" "A \xED\xB0\x80 \xED\xA0\x80"}, // unpaired
        {"\xF5\x80\x80\x80", replaced + replaced + replaced + replaced}, // no lead byte past F4
        {"\xC3", replaced}, {"\xE2\x82", replaced + replaced}, {"\xF0\x9F\x98", replaced + replaced + replaced},
        {"\xE2" "A\x80", replaced + "A" + replaced}, {"\xF0\x9F\x98" "A", replaced + replaced + replaced + "A"},
        {"\xF0\x9F" "A\x80", replaced + replaced + "A" + replaced},
        {"\xC3\xA9x\xE2\x82" "A", "\xC3\xA9x" + replaced + replaced + "A"}, // what precedes a lead byte is no part of it
        {"\xC3\xA9\xF0\x9F\x98" "A", "\xC3\xA9" + replaced + replaced + replaced + "A"},
        {"\xC1\xBF", replaced + replaced}, {"\xE0\x9F\xBF", replaced},  // overlong forms
        {"\xF0\x8F\xBF\xBF", replaced}, {"\xF4\x90\x80\x80", replaced}, // below U+10000, past U+10FFFF
        {std::string(3000, 'q'), std::string(3000, 'q')},
    };
    for (const auto& [text, back] : cases)
        EXPECT_EQ(decrypt(EncryptString(text, QuestionPassPhrase)), back) << text;
    // "Hé" is 48 00 E9 00 in UTF-16LE, framed and written in upper-case hex.
    EXPECT_EQ(EncryptString("H\xC3\xA9", QuestionPassPhrase), lineOf({0x48, 0x00, 0xE9, 0x00}));
    EXPECT_EQ(EncryptString("", QuestionPassPhrase), "");
}

TEST(CipherTest, LinesDecipherToTheirTextNothingOrAFatalError)
{
    const std::string block = EncryptString("abcdefghijklmn", QuestionPassPhrase), valid = EncryptString("v", QuestionPassPhrase);
    std::string lower = block;
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
    const std::pair<std::string, std::string> cases[] = {
        {block, "abcdefghijklmn"}, {lower, "abcdefghijklmn"},
        {block.substr(0, 62), ""}, {block + "00", ""},          // 31 and 33 bytes: no whole block
        {lineOf({'A', 0, 'B'}), "A"},                          // a lone last byte is no character
        {"", "error 9"}, {"A", "error 9"}, {"G", "error 9"},    // fewer than two digits
        {valid + "0", "error 9"}, {valid + "G", "error 13"},    // the lone last digit is converted first
        {"ZZ" + valid, "error 13"}, {valid.substr(0, 9) + ":" + valid.substr(10), "error 13"},
        {valid.substr(0, 10) + "@" + valid.substr(11), "error 13"}, {valid.substr(0, 62) + "-1", "error 13"},
        {valid.substr(0, 11) + "g" + valid.substr(12), "error 13"}, {valid.substr(0, 12) + "`" + valid.substr(13), "error 13"},
        {valid.substr(0, 13) + "/" + valid.substr(14), "error 13"},
        {"09AFaf", ""}, {"00", ""}, {"0/", "error 13"}, {"0:", "error 13"}, {"0@", "error 13"}, {"0G", "error 13"},
        {"0`", "error 13"}, {"0g", "error 13"}, // the digits' bounds on lines too short for sixteen at a time
    };
    for (const auto& [line, expected] : cases)
        EXPECT_EQ(decrypt(line), expected) << line;

    // Only the first 16 characters of a pass phrase reach the cipher; none leaves no key.
    const std::string secret = EncryptString("secret", QuestionPassPhrase);
    EXPECT_EQ(decrypt(secret, "T#4kqw&mz%7bXupeZZZZ"), "secret");
    EXPECT_NE(decrypt(secret, "T#4kqw&mz%7bXupZ"), "secret");
    EXPECT_EQ(decrypt(secret, ""), "");
}

} // namespace
} // namespace kesta
