#pragma once

#include "questions/core/Rijndael.h"

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

// Deciphers the lines of a question file under one pass phrase: the key is
// expanded once and the buffers are reused, so a line costs no allocation
// beyond the text it yields.
class LineDecoder {
public:
    explicit LineDecoder(std::string_view passPhrase);

    // Appends the text of one enciphered line to `text`; raises and yields
    // nothing as DecryptString does.
    void decode(std::string_view line, std::string& text);

private:
    CRijndael cipher_;
    CRijndael::Bytes bytes_; // the line's ciphertext, deciphered in place
    bool keyed_;             // without a pass phrase there is no key, and every line yields nothing
};

// Enciphers UTF-8 text into the upper-case hexadecimal line that
// DecryptString turns back into the same text.
std::string EncryptString(std::string_view plainText, std::string_view sEncryptionKey);

// The same digits appended to `line`, for a large text without a copy of them.
void AppendEncrypted(std::string& line, std::string_view plainText, std::string_view sEncryptionKey);

} // namespace kesta
