#include "app/core/PageResource.h"

#include "common/core/SafeFile.h"

namespace kesta {

namespace {

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool isSchemeChar(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' || c == '-'
        || c == '.';
}

} // namespace

std::optional<std::string> pageResourcePath(std::string_view url)
{
    url = url.substr(0, url.find_first_of("?#"));
    const std::size_t colon = url.find(':');
    if (colon != std::string_view::npos && colon > 0 && url.find('/') > colon) {
        for (std::size_t k = 0; k < colon; ++k) {
            if (!isSchemeChar(url[k]))
                return std::nullopt;
        }
        std::string scheme(url.substr(0, colon));
        for (char& c : scheme)
            c = static_cast<char>(c | 0x20);
        if (scheme != "file")
            return std::nullopt;
        url.remove_prefix(colon + 1);
    }
    // "//host/path": only this machine's files are read.
    if (url.substr(0, 2) == "//") {
        const std::size_t slash = url.find('/', 2);
        const std::string_view host = url.substr(2, slash == std::string_view::npos ? url.size() : slash - 2);
        if (!host.empty() && host != "localhost")
            return std::nullopt;
        url.remove_prefix(slash == std::string_view::npos ? url.size() : slash);
    }
    std::string path;
    for (std::size_t k = 0; k < url.size(); ++k) {
        if (url[k] != '%') {
            path += url[k];
            continue;
        }
        const int high = k + 2 < url.size() ? hexDigit(url[k + 1]) : -1;
        const int low = high >= 0 ? hexDigit(url[k + 2]) : -1;
        if (low < 0 || (high == 0 && low == 0))
            return std::nullopt; // malformed, or a NUL that would cut the name short
        path += static_cast<char>(high * 16 + low);
        k += 2;
    }
    if (path.empty())
        return std::nullopt;
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
