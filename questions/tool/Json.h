#pragma once

#include <string>
#include <string_view>

namespace kesta::qbank {

// `text` as a JSON string literal, quotes included. Control characters are
// escaped; an unpaired surrogate, which deciphered text may carry as its own
// three-byte sequence, becomes a \u escape so the output stays valid UTF-8.
std::string jsonString(std::string_view text);

} // namespace kesta::qbank
