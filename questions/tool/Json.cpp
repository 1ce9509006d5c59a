#include "questions/tool/Json.h"

namespace kesta::qbank {

namespace {

void appendUnitEscape(std::string& out, unsigned unit)
{
    static constexpr char digits[] = "0123456789abcdef";
    out += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4)
        out += digits[(unit >> shift) & 0xF];
}

} // namespace

std::string jsonString(std::string_view text)
{
    std::string out;
    out.reserve(text.size() + 2);
    out += '"';
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        switch (c) {
        case '"': out += "\\\""; continue;
        case '\\': out += "\\\\"; continue;
        case '\b': out += "\\b"; continue;
        case '\f': out += "\\f"; continue;
        case '\n': out += "\\n"; continue;
        case '\r': out += "\\r"; continue;
        case '\t': out += "\\t"; continue;
        default: break;
        }
        if (c < 0x20 || c == 0x7F) {
            appendUnitEscape(out, c);
        } else if (c == 0xED && i + 2 < text.size() && (static_cast<unsigned char>(text[i + 1]) & 0xE0) == 0xA0) {
            // ED A0..BF xx encodes a surrogate code unit, which UTF-8 forbids.
            const unsigned unit = 0xD000u | ((static_cast<unsigned char>(text[i + 1]) & 0x3Fu) << 6) |
                                  (static_cast<unsigned char>(text[i + 2]) & 0x3Fu);
            appendUnitEscape(out, unit);
            i += 2;
        } else {
            out += static_cast<char>(c);
        }
    }
    out += '"';
    return out;
}

} // namespace kesta::qbank
