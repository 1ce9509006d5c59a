#include "questions/core/Cipher.h"

#include "common/core/RuntimeError.h"
#include "questions/core/Rijndael.h"

#include <array>
#include <span>

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
    // Question texts are mostly ASCII: a leading run of it is copied without
    // growing the string a character at a time.
    std::size_t k = 0;
    while (k < units && unit(k) < 0x80)
        ++k;
    const std::size_t at = out.size();
    out.resize(at + k);
    for (std::size_t i = 0; i < k; ++i)
        out[at + i] = static_cast<char>(bytes[2 * i]);
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
    int invalid = 0;
    for (std::size_t k = 0; k < n / 2; ++k) {
        const int high = HexTable[digits[2 * k]];
        const int low = HexTable[digits[2 * k + 1]];
        invalid |= high | low;
        bytes_[k] = static_cast<std::uint8_t>(high * 16 + low);
    }
    // A lone last digit is converted first and only then found to fall
    // outside the byte array.
    if ((invalid | HexTable[digits[n - 1]]) < 0)
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
    static constexpr char digits[] = "0123456789ABCDEF";
    CRijndael cipherEngine;
    const Bytes cipher = cipherEngine.EncryptData(toUtf16le(plainText), toUtf16le(sEncryptionKey));
    std::string hex;
    hex.reserve(cipher.size() * 2);
    for (const std::uint8_t b : cipher) {
        hex.push_back(digits[b >> 4]);
        hex.push_back(digits[b & 0x0F]);
    }
    return hex;
}

} // namespace kesta
