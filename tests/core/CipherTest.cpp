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

// A line built by hand: a header, then `payload`, zero-padded to `size`, each
// block enciphered under the pass phrase's UTF-16LE bytes (cut at 32).
std::string lineOf(std::int32_t header, const Bytes& payload, std::size_t size = 32)
{
    Bytes plain(size, 0), key;
    for (std::size_t i = 0; i < 4; ++i)
        plain[i] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(header) >> (8 * i));
    std::copy(payload.begin(), payload.end(), plain.begin() + 4);
    for (const char c : QuestionPassPhrase.substr(0, 16))
        key.insert(key.end(), {static_cast<std::uint8_t>(c), 0});
    CRijndael cipher;
    cipher.gkey(8, 8, key);
    std::string hex;
    for (std::size_t p = 0; p < plain.size(); p += 32)
        cipher.Encrypt(std::span(plain).subspan(p, 32));
    for (const std::uint8_t b : plain)
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
        {"\xED\xA0\x80" "A \xED\xB0\x80 \xED\xA0\x80", "\xED\xA0\x80" "A \xED\xB0\x80 \xED\xA0\x80"}, // unpaired
        {"\xF5\x80\x80\x80", replaced + replaced + replaced + replaced}, // no lead byte past F4
        {"\xC3", replaced}, {"\xE2\x82", replaced + replaced}, {"\xF0\x9F\x98", replaced + replaced + replaced},
        {"\xC1\xBF", replaced + replaced}, {"\xE0\x9F\xBF", replaced},  // overlong forms
        {"\xF0\x8F\xBF\xBF", replaced}, {"\xF4\x90\x80\x80", replaced}, // below U+10000, past U+10FFFF
        {std::string(3000, 'q'), std::string(3000, 'q')},
    };
    for (const auto& [text, back] : cases)
        EXPECT_EQ(decrypt(EncryptString(text, QuestionPassPhrase)), back) << text;
    // "Hé" is 48 00 E9 00 in UTF-16LE, framed and written in upper-case hex.
    EXPECT_EQ(EncryptString("H\xC3\xA9", QuestionPassPhrase), lineOf(4, {0x48, 0x00, 0xE9, 0x00}));
    EXPECT_EQ(EncryptString("", QuestionPassPhrase), "");
}

TEST(CipherTest, LinesDecipherToTheirTextNothingOrAFatalError)
{
    Bytes letters;
    for (std::uint8_t k = 0; k < 14; ++k)
        letters.insert(letters.end(), {static_cast<std::uint8_t>('a' + k), 0});
    const std::string block = lineOf(28, letters), valid = EncryptString("valid", QuestionPassPhrase);
    std::string lower = block;
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
    const std::pair<std::string, std::string> cases[] = {
        {block, "abcdefghijklmn"}, {lower, "abcdefghijklmn"},
        {block.substr(0, 62), ""}, {block + "00", ""},          // 31 and 33 bytes: no whole block
        {lineOf(29, {}), ""}, {lineOf(61, {}, 64), ""},         // a header past the data
        {lineOf(3, {'A', 0, 'B'}), "A"},                        // a lone last byte is no character
        {"", "error 9"}, {"A", "error 9"}, {"G", "error 9"},    // fewer than two digits
        {valid + "0", "error 9"}, {valid + "G", "error 13"},    // the lone last digit is converted first
        {"ZZ" + valid, "error 13"}, {valid.substr(0, 9) + ":" + valid.substr(10), "error 13"},
        {valid.substr(0, 10) + "@" + valid.substr(11), "error 13"}, {valid.substr(0, 62) + "-1", "error 13"},
        {valid.substr(0, 11) + "g" + valid.substr(12), "error 13"}, {valid.substr(0, 12) + "`" + valid.substr(13), "error 13"},
        {valid.substr(0, 13) + "/" + valid.substr(14), "error 13"},
        {lineOf(0, {}), "error 9"}, {lineOf(-5, {}, 64), "error 9"}, // a header of zero or less
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
