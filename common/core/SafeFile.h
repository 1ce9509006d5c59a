#pragma once

#include "common/core/RuntimeError.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kesta::safefile {

// File access for folders that every user may write to and for files that
// come from strangers. Every read goes through one opening that never blocks
// and takes nothing but a regular file, reached without a link unless the
// caller trusts the folder, and reads no more than the file held when it was
// opened, so a named pipe, a device, a planted link or a huge or growing file
// cannot hang the program or exhaust its memory. Whole files are replaced
// through a hidden temporary file in the same folder, flushed to disk before
// it takes the old file's place, so a crash leaves the old content or the new
// one and never a half-made file. Nothing is ever written through a link.
//
// Failures raise RuntimeError: 53 a missing file, 76 a missing folder, 9 a
// file larger than the reader allows, Refused (75) a file that is not a
// regular file, is reached through a link or holds a line longer than the
// reader allows, 75 any other failure.

// A file the program will not read: not a regular file, reached through a
// link, or with a line longer than any the reader expects.
class Refused : public RuntimeError {
public:
    Refused();
};

// Whether a name that is a symbolic link is followed: only in a folder that
// its owner alone can write (the question folder), never in the shared data tree.
enum class Links { Refuse, Follow };

// Reads the whole file; raises 9 when it holds more than `limit` bytes.
std::string read(const std::string& path, std::size_t limit);

// A file opened as `read` opens it, read a part at a time: never more than
// the size it had when opened, so a file that keeps growing still ends.
class Reader {
public:
    // Raises as `read` does.
    Reader(const std::string& path, std::size_t limit, Links links = Links::Refuse);
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

// The file's first `count` lines, reading no further than they reach. A line
// ends at CR LF, a lone CR or a lone LF; the last one needs no line end, and
// a line end at the very end of the file starts no further line. Fewer lines
// when the file ends first; Refused for a line longer than `lineLimit`.
std::vector<std::string> readLines(
    const std::string& path, std::size_t count, std::size_t lineLimit, Links links = Links::Refuse);

// Gathers the lines `readLines` gives from characters as they are read: CR
// LF, a lone CR and a lone LF each end a line, and a last line without an end
// counts. Both file layers cut lines so.
class LineGatherer {
public:
    LineGatherer(std::size_t count, std::size_t lineLimit) : count_(count), lineLimit_(lineLimit) {}
    bool full() const { return lines_.size() >= count_; }
    // Takes the next character; Refused when it makes a line longer than the limit.
    void take(char c)
    {
        if (std::exchange(afterCr_, false) && c == '\n')
            return;
        if (c == '\r' || c == '\n') {
            lines_.push_back(std::exchange(line_, {}));
            open_ = false;
            afterCr_ = c == '\r';
            return;
        }
        line_.push_back(c);
        open_ = true;
        if (line_.size() > lineLimit_)
            throw Refused();
    }
    std::vector<std::string> finish()
    {
        if (open_ && !full())
            lines_.push_back(std::move(line_));
        return std::move(lines_);
    }

private:
    std::size_t count_, lineLimit_;
    std::vector<std::string> lines_;
    std::string line_;
    bool open_ = false;    // a line has begun that no line end has closed yet
    bool afterCr_ = false; // an LF right after a CR belongs to it
};

// The file's first line as `readLines` cuts it; raises 62 for an empty file,
// and Refused when the file is larger than `fileLimit` or the line longer than `lineLimit`.
std::string readFirstLine(
    const std::string& path, std::size_t lineLimit, std::size_t fileLimit, Links links = Links::Refuse);

// True when the file is a regular file of at least one byte; never raises.
bool hasContent(const std::string& path);

// How a replaced file is written.
struct Replace {
    bool shared = true; // readable and writable by every user (the data folders); else as the umask allows
    bool durable = true; // on disk before it takes the old file's place (not needed for scratch pages)
};

// The longest file name the file systems the program runs on take, in bytes.
inline constexpr std::size_t NameMax = 255;
// The characters that follow a temporary file's prefix.
inline constexpr std::size_t RandomPart = 6;

// The start of the name of every temporary file `replace` writes for a file
// named `name` (without folder); six characters follow it. It begins with a
// "." (hidden) and fits the file-name limit with them, whatever the length of
// `name`: a long name is shortened and told apart by a hash of it whole.
std::string temporaryPrefix(const std::string& name);

// Replaces the file's content with `bytes`, creating it when missing.
void replace(const std::string& path, std::string_view bytes, Replace how = {});

// Gives the file `source` the name `destination` in the same file system,
// replacing whatever stood there (a link is replaced, never written through).
// The file itself moves, its modification time with it. Raises 53 for a
// missing source and Refused for one that is not a regular file.
void move(const std::string& source, const std::string& destination);

// Appends `bytes` to the file whole or not at all, creating it when missing:
// when the write falls short (a full disk) the file is cut back to its old
// length. A file that is not ours alone to write (a hard link to another
// file, or not a regular file) is replaced by a new one instead of being
// written through.
void append(const std::string& path, std::string_view bytes);

// An advisory lock between processes, held from construction to destruction
// on the lock file `path`, which is made when missing. The lock dies with its
// holder, so a killed process never blocks another. The file is opened
// without following a link and without blocking; a link, pipe or other
// non-file planted at its name is removed and a file made in its place.
// A lock that cannot be had within `patience` (its file cannot be made, or
// another process keeps it) is not held: the holder goes on without it rather
// than hang, and leaves alone what only a holder may touch.
class Lock {
public:
    static constexpr std::chrono::milliseconds DefaultPatience { 5000 };
    explicit Lock(const std::string& path, std::chrono::milliseconds patience = DefaultPatience);
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    bool held() const { return fd_ != -1; }

private:
    int fd_ = -1;
};

// Removes the temporary file of a replace that SIGINT or SIGTERM interrupts,
// then ends the process as the signal would.
void removeTemporaryOnSignals();

} // namespace kesta::safefile
