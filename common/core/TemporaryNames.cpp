// Temporary names are the same on every system: the file layers differ in how
// they open and write, not in what they call a file they are writing.
#include "common/core/SafeFile.h"

#include <cstdint>
#include <cstdio>

namespace kesta::safefile {

std::string temporaryPrefix(const std::string& name)
{
    if (1 + name.size() + 1 + RandomPart <= NameMax)
        return "." + name + ".";
    // Shortened: the start of the name, then "~" and a hash of the whole name (FNV-1a) in 8 hex digits.
    std::uint32_t hash = 2166136261u;
    for (const unsigned char c : name)
        hash = (hash ^ c) * 16777619u;
    char hex[9];
    std::snprintf(hex, sizeof hex, "%08x", static_cast<unsigned>(hash));
    return "." + name.substr(0, NameMax - RandomPart - 11) + "~" + hex + ".";
}

} // namespace kesta::safefile
