#include "questions/core/Cipher.h"

#include "common/core/RuntimeError.h"
#include "questions/core/Rijndael.h"

#include <array>
#include <span>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace kesta {

namespace {

using Bytes = CRijndael::Bytes;

constexpr std::uint32_t Replacement = 0xFFFD;

void appendUnit(Bytes& out, std::uint32_t unit)
{
    out.push_back(static_cast<std::uint8_t>(unit & 0xFF));
    out.push_back(static_cast<std::uint8_t>(unit >> 8));
}

// UTF-8 to UTF-16LE bytes. Encoded surrogates (as DecryptString writes an
// unpaired one) pass through as that code unit, so every deciphered text
// enciphers back to the same units; other malformed bytes become U+FFFD.
Bytes toUtf16le(std::string_view text)
{
    Bytes out;
    out.reserve(text.size() * 2);
    std::size_t i = 0;
    const std::size_t n = text.size();
    auto cont = [&](std::size_t k) { return k < n && (static_cast<unsigned char>(text[k]) & 0xC0) == 0x80; };
    while (i < n) {
        const auto c = static_cast<unsigned char>(text[i]);
        std::uint32_t cp = Replacement;
        std::size_t len = 1;
        if (c < 0x80) {
            cp = c;
        } else if (c >= 0xC2 && c < 0xE0 && cont(i + 1)) {
            cp = ((c & 0x1Fu) << 6) | (static_cast<unsigned char>(text[i + 1]) & 0x3Fu);
            len = 2;
        } else if (c >= 0xE0 && c < 0xF0 && cont(i + 1) && cont(i + 2)) {
            cp = ((c & 0x0Fu) << 12) | ((static_cast<unsigned char>(text[i + 1]) & 0x3Fu) << 6) |
                 (static_cast<unsigned char>(text[i + 2]) & 0x3Fu);
            len = 3;
            if (cp < 0x800)
                cp = Replacement;
        } else if (c >= 0xF0 && c < 0xF5 && cont(i + 1) && cont(i + 2) && cont(i + 3)) {
            cp = ((c & 0x07u) << 18) | ((static_cast<unsigned char>(text[i + 1]) & 0x3Fu) << 12) |
                 ((static_cast<unsigned char>(text[i + 2]) & 0x3Fu) << 6) |
                 (static_cast<unsigned char>(text[i + 3]) & 0x3Fu);
            len = 4;
            if (cp < 0x10000 || cp > 0x10FFFF)
                cp = Replacement;
        }
        if (cp >= 0x10000) {
            cp -= 0x10000;
            appendUnit(out, 0xD800 + (cp >> 10));
            appendUnit(out, 0xDC00 + (cp & 0x3FF));
        } else {
            appendUnit(out, cp);
        }
        i += len;
    }
    return out;
}

void appendUtf8(std::string& out, std::uint32_t cp)
{
    if (cp < 0x80) {
        out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
}

// Appends UTF-16LE bytes as UTF-8. A single trailing byte is no code unit
// and is dropped; an unpaired surrogate is kept as its own three-byte sequence.
void appendUtf8From16le(std::string& out, std::span<const std::uint8_t> bytes)
{
    const std::size_t units = bytes.size() / 2;
    auto unit = [&](std::size_t k) { return std::uint32_t{bytes[2 * k]} | (std::uint32_t{bytes[2 * k + 1]} << 8); };
    // Question texts are mostly ASCII: a leading run of it is copied eight
    // units at a time, without growing the string a character at a time
    // (-128 is 0xFF80: the bits of a UTF-16 unit above ASCII).
    const std::size_t at = out.size();
    out.resize(at + units);
    char* ascii = out.data() + at;
    std::size_t k = 0;
#ifdef __SSE2__
    for (; k + 8 <= units; k += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes.data() + 2 * k));
        if (_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_and_si128(v, _mm_set1_epi16(-128)), _mm_setzero_si128())) != 0xFFFF)
            break;
        _mm_storel_epi64(reinterpret_cast<__m128i*>(ascii + k), _mm_packus_epi16(v, v));
    }
#endif
    for (; k < units && unit(k) < 0x80; ++k)
        ascii[k] = static_cast<char>(bytes[2 * k]);
    out.resize(at + k);
    for (; k < units; ++k) {
        const std::uint32_t u = unit(k);
        if (u >= 0xD800 && u < 0xDC00 && k + 1 < units) {
            const std::uint32_t low = unit(k + 1);
            if (low >= 0xDC00 && low < 0xE000) {
                appendUtf8(out, 0x10000 + ((u - 0xD800) << 10) + (low - 0xDC00));
                ++k;
                continue;
            }
        }
        appendUtf8(out, u);
    }
}

constexpr std::array<std::int8_t, 256> hexDigits()
{
    std::array<std::int8_t, 256> table{};
    table.fill(-1);
    for (int d = 0; d < 10; ++d)
        table['0' + d] = static_cast<std::int8_t>(d);
    for (int d = 0; d < 6; ++d) {
        table['A' + d] = static_cast<std::int8_t>(10 + d);
        table['a' + d] = static_cast<std::int8_t>(10 + d);
    }
    return table;
}

constexpr std::array<std::int8_t, 256> HexTable = hexDigits();

// Hex digit pairs to bytes; false when a character is no digit. The digits
// are converted sixteen at a time where the processor allows.
bool hexToBytes(const unsigned char* digits, std::size_t pairs, std::uint8_t* bytes)
{
    std::size_t k = 0;
    bool valid = true;
#ifdef __SSE2__
    auto within = [](__m128i v, char first, char last) {
        return _mm_and_si128(_mm_cmpgt_epi8(v, _mm_set1_epi8(static_cast<char>(first - 1))),
                             _mm_cmplt_epi8(v, _mm_set1_epi8(static_cast<char>(last + 1))));
    };
    for (; k + 8 <= pairs; k += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(digits + 2 * k));
        const __m128i lower = _mm_or_si128(v, _mm_set1_epi8(0x20));
        const __m128i digit = within(v, '0', '9'), letter = within(lower, 'a', 'f');
        valid = valid && _mm_movemask_epi8(_mm_or_si128(digit, letter)) == 0xFFFF;
        const __m128i value = _mm_or_si128(_mm_and_si128(digit, _mm_sub_epi8(v, _mm_set1_epi8('0'))),
                                           _mm_and_si128(letter, _mm_sub_epi8(lower, _mm_set1_epi8('a' - 10))));
        // Each 16-bit lane holds a pair: its first digit in the low byte.
        const __m128i pair = _mm_or_si128(_mm_slli_epi16(_mm_and_si128(value, _mm_set1_epi16(0x00FF)), 4),
                                          _mm_srli_epi16(value, 8));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes + k), _mm_packus_epi16(pair, pair));
    }
#endif
    for (; k < pairs; ++k) {
        const int high = HexTable[digits[2 * k]];
        const int low = HexTable[digits[2 * k + 1]];
        valid = valid && (high | low) >= 0;
        bytes[k] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return valid;
}

} // namespace

LineDecoder::LineDecoder(std::string_view passPhrase) : keyed_(!passPhrase.empty())
{
    cipher_.frameKey(toUtf16le(passPhrase));
}

void LineDecoder::decode(std::string_view line, std::string& text)
{
    const std::size_t n = line.size();
    // A line of fewer than two digits leaves no byte array to fill.
    if (n < 2)
        throw err::make(err::SubscriptOutOfRange);
    bytes_.resize(n / 2);
    const auto* digits = reinterpret_cast<const unsigned char*>(line.data());
    // A lone last digit is converted first and only then found to fall
    // outside the byte array.
    if (!hexToBytes(digits, n / 2, bytes_.data()) || HexTable[digits[n - 1]] < 0)
        throw err::make(err::TypeMismatch);
    if (n % 2 != 0)
        throw err::make(err::SubscriptOutOfRange);
    if (!keyed_ || bytes_.size() % CRijndael::FrameBlock != 0)
        return;
    appendUtf8From16le(text, cipher_.unframe(bytes_));
}

std::string DecryptString(std::string_view sEncryptedText, std::string_view sEncryptionKey)
{
    std::string text;
    LineDecoder(sEncryptionKey).decode(sEncryptedText, text);
    return text;
}

std::string EncryptString(std::string_view plainText, std::string_view sEncryptionKey)
{
    std::string hex;
    AppendEncrypted(hex, plainText, sEncryptionKey);
    return hex;
}

void AppendEncrypted(std::string& line, std::string_view plainText, std::string_view sEncryptionKey)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    CRijndael cipherEngine;
    const Bytes cipher = cipherEngine.EncryptData(toUtf16le(plainText), toUtf16le(sEncryptionKey));
    line.reserve(line.size() + cipher.size() * 2);
    for (const std::uint8_t b : cipher) {
        line.push_back(digits[b >> 4]);
        line.push_back(digits[b & 0x0F]);
    }
}

} // namespace kesta
