#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kesta {

// What a page may load besides its own text: the images and style sheets a
// question bank's HTML names. A bank comes from a stranger, so the page reads
// only a small regular file of this machine, through the one reader (never a
// device, a pipe, a socket or a symbolic link, and never waiting on a pipe), and
// nothing remote. A refused resource shows as a missing image.

// The largest file a page reads, and the largest image it shows once decoded
// (four bytes a pixel: 16 MB).
inline constexpr std::size_t MaxPageResourceBytes = std::size_t{4} << 20;
inline constexpr std::int64_t MaxPageImagePixels = std::int64_t{4} << 20;

// The local path an address on a page names: a plain path, or a file: URL of
// this machine, its percent escapes decoded. None for another scheme, another
// host or a malformed escape.
std::optional<std::string> pageResourcePath(std::string_view url);

// The bytes of the resource at `url` (as pageResourcePath reads it), or none
// when it is refused: not local, missing, not a regular file reached without a
// link, or larger than MaxPageResourceBytes.
std::optional<std::string> readPageResource(std::string_view url);

} // namespace kesta
