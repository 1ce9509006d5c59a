#include "app/core/PageResource.h"

#include "common/core/SafeFile.h"

#include <algorithm>
#include <charconv>

namespace kesta {

std::optional<std::string> pageResourcePath(std::string_view url)
{
    url = url.substr(0, url.find_first_of("?#"));
    const std::size_t colon = url.find(':');
    // A name before a colon and any slash is a scheme, as the view reads it.
    if (colon != std::string_view::npos && url.find('/') > colon) {
        std::string scheme(url.substr(0, colon));
        for (char& c : scheme)
            c = static_cast<char>(c | 0x20);
        if (scheme != "file")
            return std::nullopt;
        url.remove_prefix(colon + 1);
    }
    // "//host/path": only this machine's files are read.
    if (url.substr(0, 2) == "//") {
        const std::size_t slash = std::min(url.find('/', 2), url.size());
        const std::string_view host = url.substr(2, slash - 2);
        if (!host.empty() && host != "localhost")
            return std::nullopt;
        url.remove_prefix(slash);
    }
    std::string path;
    for (std::size_t k = 0; k < url.size(); ++k) {
        if (url[k] != '%') {
            path += url[k];
            continue;
        }
        unsigned byte = 0;
        const char* digits = url.data() + k + 1;
        const char* end = url.data() + std::min(k + 3, url.size());
        if (std::from_chars(digits, end, byte, 16).ptr != digits + 2 || byte == 0)
            return std::nullopt; // malformed, or a NUL that would cut the name short
        path += static_cast<char>(byte);
        k += 2;
    }
    return path;
}

std::optional<std::string> readPageResource(std::string_view url)
{
    const std::optional<std::string> path = pageResourcePath(url);
    if (!path)
        return std::nullopt;
    try {
        return safefile::read(*path, MaxPageResourceBytes);
    } catch (const RuntimeError&) {
        return std::nullopt;
    }
}

} // namespace kesta
