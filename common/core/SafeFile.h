#pragma once

#include "common/core/RuntimeError.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

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

// A whole file's bytes in memory of their own, given back with them: for a
// process that reads one large file once (the question-bank tool). The memory
// is made ready in one step, not page by page as the bytes arrive, and is not
// cleared before it is filled. A process that reads files again and again
// does better with `read`, whose memory the allocator hands out again.
class Contents {
public:
    Contents() = default;
    explicit Contents(std::size_t capacity); // room for `capacity` bytes, none of them read yet
    Contents(Contents&& other) noexcept { swap(other); }
    Contents& operator=(Contents other) noexcept { return swap(other), *this; }
    ~Contents();

    std::string_view view() const { return {data_, size_}; }
    char* data() { return data_; }
    void setSize(std::size_t size) { size_ = size; } // at most the capacity: the bytes read so far
    void swap(Contents& other) noexcept
    {
        std::swap(data_, other.data_), std::swap(size_, other.size_), std::swap(capacity_, other.capacity_);
    }

private:
    char* data_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

// Reads the whole file as `read` does, into memory of its own.
Contents readWhole(const std::string& path, std::size_t limit);

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
