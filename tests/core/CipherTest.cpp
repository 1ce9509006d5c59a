#include "questions/core/Cipher.h"

#include "common/core/RuntimeError.h"
#include "questions/core/Rijndael.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

namespace kesta {
namespace {

using Bytes = CRijndael::Bytes;

// The framing key of the pass phrase: its UTF-16LE bytes, cut at 32.
Bytes passPhraseKey()
{
    Bytes key;
    for (const char c : QuestionPassPhrase.substr(0, 16)) {
        key.push_back(static_cast<std::uint8_t>(c));
        key.push_back(0);
    }
    return key;
}

std::string toHex(const Bytes& bytes)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string hex;
    for (const std::uint8_t b : bytes) {
        hex += digits[b >> 4];
        hex += digits[b & 15];
    }
    return hex;
}

// A line built by hand: `plain` (header and all) enciphered block by block.
std::string lineOf(Bytes plain)
{
    CRijndael cipher;
    cipher.gkey(8, 8, passPhraseKey());
    for (std::size_t p = 0; p < plain.size(); p += 32)
        cipher.Encrypt(std::span(plain).subspan(p, 32));
    return toHex(plain);
}

Bytes framed(std::int32_t header, const Bytes& payload, std::size_t size)
{
    Bytes plain(size, 0);
    for (int i = 0; i < 4; ++i)
        plain[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(header) >> (8 * i));
    std::copy(payload.begin(), payload.end(), plain.begin() + 4);
    return plain;
}

int errorNumberOf(const std::string& line)
{
    try {
        DecryptString(line, QuestionPassPhrase);
    } catch (const RuntimeError& error) {
        return error.number();
    }
    return 0;
}

TEST(CipherTest, EncryptStringFramesTheUtf16leBytes)
{
    // "Hé" is H, 0, E9, 0 in UTF-16LE: a header of 4, then those bytes.
    const std::string expected = lineOf(framed(4, {0x48, 0x00, 0xE9, 0x00}, 32));
    EXPECT_EQ(EncryptString("H\xC3\xA9", QuestionPassPhrase), expected);
    EXPECT_EQ(DecryptString(expected, QuestionPassPhrase), "H\xC3\xA9");
}

TEST(CipherTest, DecryptStringReversesEncryptStringForAnyText)
{
    const std::vector<std::string> texts = {
        "a",
        "Question 1: which port?",
        std::string(13, 'x'),                      // 26 bytes + header: one block
        std::string(14, 'x'),                      // 28 bytes + header: exactly one block
        std::string(15, 'x'),                      // spills into a second block
        "tab\there, CR LF\r\nand quotes \" '",
        "\xC3\xA9\xE2\x82\xAC\xE4\xB8\xAD",        // é € 中
        "\xF0\x9F\x98\x80 smile",                  // a surrogate pair
        "\xED\xA0\x80 lone high surrogate",        // kept as its own unit
        std::string(3000, 'q'),
    };
    for (const std::string& text : texts) {
        const std::string hex = EncryptString(text, QuestionPassPhrase);
        EXPECT_TRUE(std::none_of(hex.begin(), hex.end(), [](char c) { return std::islower(static_cast<unsigned char>(c)); }));
        EXPECT_EQ(DecryptString(hex, QuestionPassPhrase), text);
    }
    EXPECT_EQ(EncryptString("", QuestionPassPhrase), "");
}

TEST(CipherTest, DigitCaseDoesNotMatter)
{
    const std::string upper = EncryptString("case", QuestionPassPhrase);
    std::string lower = upper;
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
    EXPECT_EQ(DecryptString(lower, QuestionPassPhrase), "case");

    // 3f and 3F are both byte 63: the two lines decipher alike.
    const std::string block = lineOf(framed(2, {0x3F, 0x00}, 32));
    std::string mixed = block;
    for (std::size_t i = 0; i + 1 < mixed.size(); i += 2) {
        if (mixed[i] == '3' && mixed[i + 1] == 'F')
            mixed[i + 1] = 'f';
    }
    EXPECT_EQ(DecryptString(mixed, QuestionPassPhrase), DecryptString(block, QuestionPassPhrase));
}

TEST(CipherTest, OnlyTheFirst16CharactersOfThePassPhraseCount)
{
    const std::string line = EncryptString("secret", QuestionPassPhrase);
    EXPECT_EQ(DecryptString(line, "T#4kqw&mz%7bXupeZZZZ"), "secret");
    EXPECT_NE(DecryptString(line, "T#4kqw&mz%7bXupZ"), "secret");
}

TEST(CipherTest, MalformedLinesAreFatal)
{
    const std::string valid = EncryptString("valid text", QuestionPassPhrase);
    const struct {
        std::string line;
        int number;
    } cases[] = {
        {"", err::SubscriptOutOfRange},
        {"A", err::SubscriptOutOfRange},
        {valid + "0", err::SubscriptOutOfRange},  // the lone last digit has no byte
        {valid + "G", err::TypeMismatch},         // ... unless it is no digit at all
        {"ZZ" + valid, err::TypeMismatch},
        {valid.substr(0, 10) + " " + valid.substr(11), err::TypeMismatch},
        {valid.substr(0, 62) + "-1", err::TypeMismatch},
        {"#" + valid.substr(1), err::TypeMismatch},
        {lineOf(framed(0, {}, 32)), err::SubscriptOutOfRange},  // header 0
        {lineOf(framed(-5, {}, 64)), err::SubscriptOutOfRange}, // negative header
    };
    for (const auto& c : cases)
        EXPECT_EQ(errorNumberOf(c.line), c.number) << c.line;
}

TEST(CipherTest, OddSizedDataAndOversizeHeadersGiveNothingSilently)
{
    Bytes payload;
    for (int k = 0; k < 14; ++k)
        payload.insert(payload.end(), {'A', 0});
    const std::string block = lineOf(framed(28, payload, 32));
    ASSERT_EQ(block.size(), 64u);
    ASSERT_EQ(DecryptString(block, QuestionPassPhrase), std::string(14, 'A'));
    EXPECT_EQ(DecryptString(block.substr(0, 62), QuestionPassPhrase), "");   // 31 bytes
    EXPECT_EQ(DecryptString(block + "00", QuestionPassPhrase), "");          // 33 bytes
    EXPECT_EQ(DecryptString(lineOf(framed(29, {}, 32)), QuestionPassPhrase), "");
    EXPECT_EQ(DecryptString(lineOf(framed(61, {}, 64)), QuestionPassPhrase), "");
}

TEST(CipherTest, HeaderOf28InOneBlockGives14Characters)
{
    Bytes payload;
    for (int k = 0; k < 14; ++k) {
        payload.push_back(static_cast<std::uint8_t>('a' + k));
        payload.push_back(0);
    }
    EXPECT_EQ(DecryptString(lineOf(framed(28, payload, 32)), QuestionPassPhrase), "abcdefghijklmn");
    // An odd byte count leaves a lone last byte, which is no character.
    EXPECT_EQ(DecryptString(lineOf(framed(3, {'A', 0, 'B'}, 32)), QuestionPassPhrase), "A");
}

} // namespace
} // namespace kesta
