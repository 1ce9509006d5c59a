// Fuzzes the decoding of one enciphered question-file line.
//
// Contract: any line either yields text or raises kesta::RuntimeError (the
// fatal cases: a non-hex digit, an odd length, an empty line, a length
// header of zero or less). Nothing else may escape, and the processor's AES
// path must give exactly what the portable path gives.
//
// The first input byte picks what the rest is used as:
//   mode 0  the rest is a raw line (random hex seldom deciphers to a sane
//           header, so this mostly exercises the digit and length checks);
//   mode 1  the rest is plaintext framing (header + data) that the harness
//           enciphers itself, so every header case is reached;
//   mode 2  the rest is text for an EncryptString -> DecryptString round trip.
// Bit 3 of that byte takes a key from the input instead of the pass phrase.
#include "common/core/RuntimeError.h"
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"
#include "questions/core/Rijndael.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

namespace {

using namespace kesta;

[[noreturn]] void fail(const char* what, std::string_view detail = {})
{
    std::fprintf(stderr, "cipher_fuzz: %s [%.*s]\n", what, static_cast<int>(detail.size()), detail.data());
    std::abort();
}

// Either the text or the number of the run-time error raised.
struct Outcome {
    std::optional<std::string> text;
    std::int32_t error = 0;
    bool operator==(const Outcome&) const = default;
};

Outcome decode(std::string_view line, std::string_view key, bool hardware)
{
    CRijndael::allowHardware(hardware);
    try {
        return {DecryptString(line, key), 0};
    } catch (const RuntimeError& e) {
        if (e.number() != err::SubscriptOutOfRange && e.number() != err::TypeMismatch)
            fail("unexpected run-time error number", std::to_string(e.number()));
        return {std::nullopt, e.number()};
    }
    // Any other exception leaves the harness and libFuzzer reports it.
}

// The same line on both cipher paths; they must agree.
Outcome decodeBoth(std::string_view line, std::string_view key)
{
    const Outcome hw = decode(line, key, true);
    if (!(hw == decode(line, key, false)))
        fail("hardware and portable paths disagree", line);
    return hw;
}

// Strict UTF-8 (no overlong forms, no surrogates, at most U+10FFFF): the
// texts that must survive a round trip unchanged.
bool validUtf8(std::string_view s)
{
    for (std::size_t i = 0; i < s.size();) {
        const auto c = static_cast<unsigned char>(s[i]);
        const std::size_t len = c < 0x80 ? 1 : c < 0xC2 ? 0 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : c < 0xF5 ? 4 : 0;
        std::uint32_t cp = c & (0xFFu >> (len + (len > 1)));
        for (std::size_t k = 1; k < len; ++k) {
            const unsigned next = i + k < s.size() ? static_cast<unsigned char>(s[i + k]) : 0u;
            if ((next & 0xC0) != 0x80)
                return false;
            cp = cp << 6 | (next & 0x3Fu);
        }
        static constexpr std::uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
        if (len == 0 || cp < least[len] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
            return false;
        i += len;
    }
    return true;
}

void checkRawLine(std::string_view line, std::string_view key)
{
    const Outcome out = decodeBoth(line, key);
    const bool wellFormed = !line.empty() && line.size() % 2 == 0 &&
                            std::all_of(line.begin(), line.end(), [](char c) { return std::isxdigit(c) != 0; });
    if (!wellFormed && out.text)
        fail("malformed line deciphered without an error", line);
    if (wellFormed && (line.size() / 2) % 32 != 0 && (!out.text || !out.text->empty()))
        fail("a byte count that is not a multiple of 32 must give empty text silently", line);
}

// Enciphers plaintext framing under the pass phrase with the block cipher
// itself, so that the header values the framing never writes are reached.
void checkFraming(std::string_view payload)
{
    if (payload.empty())
        return;
    const std::size_t n = 32 * (1 + static_cast<unsigned char>(payload[0]) % 4);
    payload.remove_prefix(1);
    CRijndael::Bytes plain(n, 0);
    std::copy_n(payload.begin(), std::min(n, payload.size()), plain.begin());
    const auto header = static_cast<std::int32_t>(plain[0] | plain[1] << 8 | plain[2] << 16 | unsigned{plain[3]} << 24);

    // The framing key: the pass phrase as UTF-16LE, cut or zero-padded to 32 bytes.
    std::vector<std::uint8_t> key(32, 0);
    for (std::size_t k = 0; k < QuestionPassPhrase.size() && 2 * k < key.size(); ++k)
        key[2 * k] = static_cast<std::uint8_t>(QuestionPassPhrase[k]);
    CRijndael engine;
    engine.gentables();
    engine.gkey(8, 8, key);
    CRijndael::Bytes cipher = plain;
    for (std::size_t p = 0; p < n; p += 32)
        engine.Encrypt(std::span<std::uint8_t>(cipher.data() + p, 32));

    // Hex digits in either case, the case chosen by the data.
    std::string line;
    for (std::size_t k = 0; k < n; ++k) {
        const char* digits = (plain[(k + 5) % n] & 1) != 0 ? "0123456789abcdef" : "0123456789ABCDEF";
        line += {digits[cipher[k] >> 4], digits[cipher[k] & 0x0F]};
    }

    const Outcome out = decodeBoth(line, QuestionPassPhrase);
    if (header <= 0 ? out.text || out.error != err::SubscriptOutOfRange : !out.text)
        fail("only a length header of zero or less must raise, and raise error 9");
    if (header <= 0 || static_cast<std::size_t>(header) > n - 4) {
        if (out.text && !out.text->empty())
            fail("a header longer than the data must give empty text");
        return;
    }
    // L message bytes are L div 2 UTF-16 code units (a lone trailing byte is dropped).
    const auto units = static_cast<std::size_t>(header) / 2;
    if (Utf16Length(*out.text) != units)
        fail("deciphered text has the wrong length");
    std::string expected;
    for (std::size_t u = 0; u < units && plain[5 + 2 * u] == 0 && plain[4 + 2 * u] < 0x80; ++u)
        expected.push_back(static_cast<char>(plain[4 + 2 * u]));
    if (expected.size() == units && *out.text != expected)
        fail("deciphered ASCII text differs from the plaintext");
}

void checkRoundTrip(std::string_view text, std::string_view key)
{
    if (text.empty() || key.empty())
        return; // an empty message or key has no enciphered form
    CRijndael::allowHardware(true);
    const std::string hex = EncryptString(text, key);
    if (hex.empty() || hex.size() % 64 != 0 || hex.find_first_not_of("0123456789ABCDEF") != std::string::npos)
        fail("enciphered line is not whole blocks of upper-case hex", text);
    const Outcome back = decodeBoth(hex, key);
    if (!back.text || (validUtf8(text) && *back.text != text))
        fail("round trip failed or changed valid UTF-8 text", text);
    // Malformed bytes may be replaced once, but the result must then be stable.
    const Outcome again = decodeBoth(EncryptString(*back.text, key), key);
    if (!again.text || *again.text != *back.text)
        fail("round trip is not stable", *back.text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const auto control = static_cast<unsigned char>(input[0]);
    input.remove_prefix(1);

    std::string key(QuestionPassPhrase);
    if ((control & 0x08) != 0 && !input.empty()) {
        const std::size_t len = static_cast<unsigned char>(input[0]) % 48;
        input.remove_prefix(1);
        key.assign(input.substr(0, len));
        input.remove_prefix(std::min(len, input.size()));
    }

    switch (control % 3) {
    case 0: checkRawLine(input, key); break;
    case 1: checkFraming(input); break;
    default: checkRoundTrip(input, key); break;
    }
    return 0;
}
