#pragma once

#include "common/core/RuntimeError.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace kesta::safefile {

// File access for folders that every user may write to and for files that
// come from strangers. Every read goes through one opening that never blocks
// and takes nothing but a regular file reached without a link, with its size
// checked before a byte is read, so a named pipe, a device, a planted link or
// a huge file cannot hang the program or exhaust its memory. Whole files are
// replaced through a hidden temporary file in the same folder, flushed to
// disk before it takes the old file's place, so a crash leaves the old
// content or the new one and never a half-made file. Nothing is ever written
// through a link.
//
// Failures raise RuntimeError: 53 a missing file, 76 a missing folder, 9 a
// file larger than the reader allows, Refused (75) a file that is not a
// regular file or is reached through a link, 75 any other failure.

// A file the program will not read: not a regular file, or reached through a link.
class Refused : public RuntimeError {
public:
    Refused();
};

// The largest of the program's own small files (options, progress, scores).
inline constexpr std::size_t SmallFileLimit = 64 * 1024;

// Reads the whole file; raises 9 when it holds more than `limit` bytes.
std::string read(const std::string& path, std::size_t limit);

// A file opened as `read` opens it, read a part at a time: never more than
// the size it had when opened, so a file that keeps growing still ends.
class Reader {
public:
    Reader(const std::string& path, std::size_t limit); // raises as `read` does
    ~Reader();
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    std::size_t size() const { return size_; }
    // Reads up to `count` bytes into `into`; 0 at the end.
    std::size_t read(char* into, std::size_t count);

private:
    int fd_;
    std::size_t size_;
    std::size_t left_;
};

// The file's first line (up to a CR or LF); raises 62 for an empty file, and
// Refused when the file is larger than `fileLimit` or the line longer than `lineLimit`.
std::string readFirstLine(const std::string& path, std::size_t lineLimit, std::size_t fileLimit);

// True when the file is a regular file of at least one byte; never raises.
bool hasContent(const std::string& path);

// How a replaced file is written.
struct Replace {
    bool shared = true;  // readable and writable by every user (the data folders); else as the umask allows
    bool durable = true; // on disk before it takes the old file's place (not needed for scratch pages)
};

// Replaces the file's content with `bytes`, creating it when missing.
void replace(const std::string& path, std::string_view bytes, Replace how = {});

// Copies `source` over `destination`, keeping the source's modification time,
// then removes `source`. The source is read as a small file.
void move(const std::string& source, const std::string& destination);

// Appends `bytes` to the file, creating it when missing. A file that is not
// ours alone to write (a hard link to another file, or not a regular file)
// is replaced by a new one instead of being written through.
void append(const std::string& path, std::string_view bytes);

// Removes the temporary file of a replace that SIGINT or SIGTERM interrupts,
// then ends the process as the signal would.
void removeTemporaryOnSignals();

} // namespace kesta::safefile
