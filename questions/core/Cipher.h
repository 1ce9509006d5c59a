#pragma once

#include <string>
#include <string_view>

namespace kesta {

// The pass phrase under which every question-file line is enciphered.
inline constexpr std::string_view QuestionPassPhrase = "T#4kqw&mz%7bXupeR!ya";

// Deciphers one enciphered line (hexadecimal digits, either case) into UTF-8
// text. Raises RuntimeError for a non-hex digit, an odd length, an empty line
// or a length header of zero or less; yields "" silently for a byte count that
// is not a multiple of 32 or a header longer than the data.
std::string DecryptString(std::string_view sEncryptedText, std::string_view sEncryptionKey);

// Enciphers UTF-8 text into the upper-case hexadecimal line that
// DecryptString turns back into the same text.
std::string EncryptString(std::string_view plainText, std::string_view sEncryptionKey);

} // namespace kesta
