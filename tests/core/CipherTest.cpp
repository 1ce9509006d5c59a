#include "questions/core/Cipher.h"

#include "common/core/RuntimeError.h"
#include "questions/core/Rijndael.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

namespace kesta {
namespace {

using Bytes = CRijndael::Bytes;

std::string decrypt(const std::string& line) { return DecryptString(line, QuestionPassPhrase); }

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

TEST(CipherTest, EncryptStringFramesTheUtf16leBytesInUpperCaseHex)
{
    // "Hé" is H, 0, E9, 0 in UTF-16LE.
    EXPECT_EQ(EncryptString("H\xC3\xA9", QuestionPassPhrase), lineOf(4, {0x48, 0x00, 0xE9, 0x00}));
    EXPECT_EQ(EncryptString("", QuestionPassPhrase), "");
    const std::string texts[] = {
        "a", std::string(14, 'x'), std::string(15, 'x'), "tab\there, CR LF\r\nand quotes \" '",
        "\xC3\xA9\xE2\x82\xAC\xE4\xB8\xAD", // é € 中
        "\xF0\x9F\x98\x80 smile",           // a surrogate pair
        "\xED\xA0\x80 lone high surrogate", // kept as its own unit
        std::string(3000, 'q'),
    };
    for (const std::string& text : texts)
        EXPECT_EQ(decrypt(EncryptString(text, QuestionPassPhrase)), text);
}

TEST(CipherTest, DigitCaseDoesNotMatterAndOnly16PassPhraseCharactersCount)
{
    // Find a line holding the byte 3F; in lower case it reads alike.
    char c = 'A';
    std::string line = lineOf(2, {'A', 0});
    while (line.find("3F") % 2 != 0 && line.find("3F", line.find("3F") + 1) % 2 != 0)
        line = lineOf(2, {static_cast<std::uint8_t>(++c), 0});
    std::transform(line.begin(), line.end(), line.begin(), [](char d) { return static_cast<char>(std::tolower(d)); });
    EXPECT_EQ(decrypt(line), std::string(1, c));

    const std::string secret = EncryptString("secret", QuestionPassPhrase);
    EXPECT_EQ(DecryptString(secret, "T#4kqw&mz%7bXupeZZZZ"), "secret");
    EXPECT_NE(DecryptString(secret, "T#4kqw&mz%7bXupZ"), "secret");
}

TEST(CipherTest, MalformedLinesAreFatal)
{
    const std::string valid = EncryptString("valid text", QuestionPassPhrase);
    const std::pair<std::string, int> cases[] = {
        {"", err::SubscriptOutOfRange},
        {"A", err::SubscriptOutOfRange},
        {valid + "0", err::SubscriptOutOfRange}, // the lone last digit has no byte ...
        {valid + "G", err::TypeMismatch},        // ... unless it is no digit at all
        {"ZZ" + valid, err::TypeMismatch},
        {valid.substr(0, 10) + " " + valid.substr(11), err::TypeMismatch},
        {valid.substr(0, 62) + "-1", err::TypeMismatch},
        {lineOf(0, {}), err::SubscriptOutOfRange},
        {lineOf(-5, {}, 64), err::SubscriptOutOfRange},
    };
    for (const auto& [line, number] : cases) {
        try {
            decrypt(line);
            ADD_FAILURE() << "no error for " << line;
        } catch (const RuntimeError& error) {
            EXPECT_EQ(error.number(), number) << line;
        }
    }
}

TEST(CipherTest, HeaderDecidesTheTextAndOddSizesGiveNothingSilently)
{
    Bytes payload;
    for (std::uint8_t k = 0; k < 14; ++k)
        payload.insert(payload.end(), {static_cast<std::uint8_t>('a' + k), 0});
    const std::string block = lineOf(28, payload);
    EXPECT_EQ(decrypt(block), "abcdefghijklmn");
    EXPECT_EQ(decrypt(block.substr(0, 62)), ""); // 31 bytes
    EXPECT_EQ(decrypt(block + "00"), "");        // 33 bytes
    EXPECT_EQ(decrypt(lineOf(29, {})), "");
    EXPECT_EQ(decrypt(lineOf(61, {}, 64)), "");
    EXPECT_EQ(decrypt(lineOf(3, {'A', 0, 'B'})), "A"); // a lone last byte is no character
}

} // namespace
} // namespace kesta
