#pragma once

#include <string>
#include <string_view>

namespace kesta::safefile {

// File access for the shared data folders, which every user may write to.
// Nothing here follows a symbolic link planted in place of a file, and whole
// files are replaced through a temporary file in the same folder, so a crash
// mid-write leaves either the old or the new content. Failures raise
// RuntimeError: 53 for a missing file, 76 for a missing folder, 75 otherwise.

// Reads the whole file.
std::string read(const std::string& path);

// Replaces the file's content with `bytes` (creating it when missing).
void replace(const std::string& path, std::string_view bytes);

// Appends `bytes` to the file, creating it when missing.
void append(const std::string& path, std::string_view bytes);

} // namespace kesta::safefile
