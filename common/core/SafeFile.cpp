#include "common/core/SafeFile.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kesta::safefile {

Refused::Refused() : RuntimeError(err::PathFileAccess, err::describe(err::PathFileAccess)) {}

namespace {

// The folder part of a path, with its separator ("" for a bare name).
std::string folderPart(const std::string& path)
{
    const auto slash = path.find_last_of('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// The temporary file being written, for the signal handler; a lock-free
// atomic is safe to read there.
std::atomic<const char*> pendingTemporary{nullptr};

[[noreturn]] void raiseFor(int code)
{
    switch (code) {
    case ENOENT: throw err::make(err::FileNotFound);
    case ENOTDIR: throw err::make(err::PathNotFound);
    case ELOOP: throw Refused(); // the name is a link
    default: throw err::make(err::PathFileAccess);
    }
}

class Fd {
public:
    explicit Fd(int fd) : fd_(fd) {}
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    ~Fd()
    {
        if (fd_ != -1)
            ::close(fd_);
    }
    int get() const { return fd_; }
    int release() { return std::exchange(fd_, -1); }

private:
    int fd_;
};

struct Opened {
    Fd fd;
    std::size_t size;
};

// Opens a file for reading without blocking (a named pipe would wait for a
// writer) and takes only a regular file. A link is refused unless the caller
// trusts the folder; then what it leads to must be a regular file before it
// is even opened, so no device is ever opened through one.
Opened openRegular(const std::string& path, Links links = Links::Refuse)
{
    struct stat st {};
    if (links == Links::Follow && ::stat(path.c_str(), &st) == 0 && !S_ISREG(st.st_mode))
        throw Refused();
    const int noFollow = links == Links::Refuse ? O_NOFOLLOW : 0;
    Fd fd(::open(path.c_str(), O_RDONLY | noFollow | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (fd.get() == -1)
        raiseFor(errno);
    if (::fstat(fd.get(), &st) != 0)
        throw err::make(err::PathFileAccess);
    if (!S_ISREG(st.st_mode))
        throw Refused();
    return {Fd(fd.release()), static_cast<std::size_t>(st.st_size)};
}

std::size_t readSome(int fd, char* into, std::size_t count)
{
    for (;;) {
        const ssize_t n = ::read(fd, into, count);
        if (n != -1)
            return static_cast<std::size_t>(n);
        if (errno != EINTR)
            throw err::make(err::PathFileAccess);
    }
}

// The whole content, read once into a buffer of the size the file had when
// it was opened; a file that grows meanwhile is read as it was.
std::string readOpened(Opened& file, std::size_t limit)
{
    if (file.size > limit)
        throw err::make(err::SubscriptOutOfRange);
    std::string content(file.size, '\0');
    std::size_t got = 0;
    while (const std::size_t n = readSome(file.fd.get(), content.data() + got, content.size() - got))
        got += n;
    content.resize(got);
    return content;
}

// The first `count` lines of an opened file, read a block at a time and no
// further than the size it had when opened.
std::vector<std::string> linesOf(Opened& file, std::size_t count, std::size_t lineLimit)
{
    LineGatherer lines(count, lineLimit);
    char block[4096];
    for (std::size_t left = file.size; !lines.full() && left > 0;) {
        const std::size_t n = readSome(file.fd.get(), block, std::min(sizeof block, left));
        if (n == 0)
            break;
        left -= n;
        for (std::size_t i = 0; i < n && !lines.full(); ++i)
            lines.take(block[i]);
    }
    return lines.finish();
}

void writeAll(int fd, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd, bytes.data(), bytes.size());
        if (n == -1) {
            if (errno == EINTR)
                continue;
            throw err::make(err::PathFileAccess);
        }
        bytes.remove_prefix(static_cast<std::size_t>(n));
    }
}

mode_t creationMode(bool shared)
{
    if (shared)
        return 0666;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

// Writes a hidden temporary file beside `path` and renames it over `path`:
// the rename replaces whatever name stood there (a link included) without
// touching what it pointed to.
void writeReplacing(const std::string& path, std::string_view bytes, Replace how)
{
    const std::string folder = folderPart(path);
    struct stat st {};
    if (::stat(folder.empty() ? "." : folder.c_str(), &st) != 0 || !S_ISDIR(st.st_mode))
        throw err::make(err::PathNotFound);
    std::string temp = folder + temporaryPrefix(path.substr(folder.size())) + std::string(RandomPart, 'X');
    Fd fd(::mkstemp(temp.data()));
    if (fd.get() == -1)
        throw err::make(err::PathFileAccess);
    pendingTemporary = temp.c_str();
    try {
        // Only the file just made here has its mode set: never one found in place.
        if (::fchmod(fd.get(), creationMode(how.shared)) != 0)
            throw err::make(err::PathFileAccess);
        writeAll(fd.get(), bytes);
        if (how.durable && ::fsync(fd.get()) != 0)
            throw err::make(err::PathFileAccess);
        if (::close(fd.release()) != 0 || ::rename(temp.c_str(), path.c_str()) != 0)
            throw err::make(err::PathFileAccess);
    } catch (...) {
        ::unlink(temp.c_str());
        pendingTemporary = nullptr;
        throw;
    }
    pendingTemporary = nullptr;
    if (how.durable) {
        // The rename itself reaches the disk with the folder; a folder that
        // cannot be flushed leaves the new file in place all the same.
        Fd dir(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        (void)::fsync(dir.get());
    }
}

// Opens the file for appending, creating it when missing; `created` tells
// which. Without blocking: a named pipe with no reader fails at once.
int openForAppend(const std::string& path, bool& created)
{
    constexpr int flags = O_WRONLY | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const int fd = ::open(path.c_str(), flags | O_CREAT | O_EXCL, 0666);
    created = fd != -1;
    return created || errno != EEXIST ? fd : ::open(path.c_str(), flags);
}

using Deadline = std::chrono::steady_clock::time_point;

// Repeats `attempt` until it succeeds or `deadline` passes, trying often at
// first and less often the longer it waits.
template <typename Attempt>
bool retryUntil(Deadline deadline, Attempt attempt)
{
    for (std::chrono::milliseconds pause{1};; pause = std::min(2 * pause, std::chrono::milliseconds{50})) {
        if (attempt())
            return true;
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(pause);
    }
}

bool lockWithin(int fd, Deadline deadline)
{
    return retryUntil(deadline, [fd] { return ::flock(fd, LOCK_EX | LOCK_NB) == 0; });
}

// Opens the lock file, making it readable by every user when this process
// makes it. -1 when it cannot be opened; `stranger` then tells that a link or
// anything but a regular file stands at its name.
int openLockFile(const std::string& path, bool& stranger)
{
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    int raw = ::open(path.c_str(), flags | O_CREAT | O_EXCL, 0666);
    const bool created = raw != -1;
    if (!created && errno == EEXIST)
        raw = ::open(path.c_str(), flags);
    Fd fd(raw);
    struct stat st {};
    stranger = fd.get() == -1 ? errno == ELOOP || errno == ENXIO : ::fstat(fd.get(), &st) != 0 || !S_ISREG(st.st_mode);
    if (fd.get() == -1 || stranger)
        return -1;
    if (created)
        (void)::fchmod(fd.get(), 0666); // others open it too, whatever this user's umask
    return fd.release();
}

void onSignal(int signal)
{
    if (const char* temp = pendingTemporary.load())
        ::unlink(temp);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

} // namespace

std::string read(const std::string& path, std::size_t limit)
{
    Opened file = openRegular(path);
    return readOpened(file, limit);
}

Reader::Reader(const std::string& path, std::size_t limit, Links links)
{
    Opened file = openRegular(path, links);
    if (file.size > limit)
        throw err::make(err::SubscriptOutOfRange);
    size_ = left_ = file.size;
    fd_ = file.fd.release();
}

Reader::~Reader()
{
    ::close(fd_);
}

std::size_t Reader::read(char* into, std::size_t count)
{
    const std::size_t n = readSome(fd_, into, std::min(count, left_));
    left_ -= n;
    return n;
}

std::vector<std::string> readLines(const std::string& path, std::size_t count, std::size_t lineLimit, Links links)
{
    Opened file = openRegular(path, links);
    return linesOf(file, count, lineLimit);
}

std::string readFirstLine(const std::string& path, std::size_t lineLimit, std::size_t fileLimit, Links links)
{
    Opened file = openRegular(path, links);
    if (file.size > fileLimit)
        throw Refused();
    std::vector<std::string> lines = linesOf(file, 1, lineLimit);
    if (lines.empty())
        throw err::make(err::InputPastEnd);
    return std::move(lines.front());
}

bool hasContent(const std::string& path)
{
    try {
        return openRegular(path).size > 0;
    } catch (const RuntimeError&) {
        return false;
    }
}

void replace(const std::string& path, std::string_view bytes, Replace how)
{
    writeReplacing(path, bytes, how);
}

void move(const std::string& source, const std::string& destination)
{
    struct stat st {};
    if (::lstat(source.c_str(), &st) != 0)
        raiseFor(errno);
    if (!S_ISREG(st.st_mode))
        throw Refused();
    if (::rename(source.c_str(), destination.c_str()) != 0)
        raiseFor(errno);
}

void append(const std::string& path, std::string_view bytes)
{
    // A second round at most: the first may find a name that is not ours to write through.
    for (int round = 0; round < 2; ++round) {
        bool created;
        Fd fd(openForAppend(path, created));
        struct stat st {};
        const bool opened = fd.get() != -1;
        if (!opened && errno != ELOOP && errno != ENXIO)
            raiseFor(errno == ENOENT ? ENOTDIR : errno);
        if (opened && ::fstat(fd.get(), &st) != 0)
            throw err::make(err::PathFileAccess);
        if (!S_ISREG(st.st_mode) || st.st_nlink > 1) { // also when not opened: `st` is still zero
            // A link, a pipe or a second name of another file: take the name back.
            if (::unlink(path.c_str()) != 0)
                raiseFor(errno);
            continue;
        }
        if (created && ::fchmod(fd.get(), 0666) != 0) // other users append to the same log
            throw err::make(err::PathFileAccess);
        // Other copies of the program append to the same file: one at a time,
        // so a write cut short is cut back without cutting theirs.
        (void)lockWithin(fd.get(), std::chrono::steady_clock::now() + std::chrono::seconds{1});
        const off_t before = ::lseek(fd.get(), 0, SEEK_END);
        try {
            writeAll(fd.get(), bytes);
        } catch (const RuntimeError&) {
            // Nothing is left to do when even the cut fails: the write's own error is the one to report.
            [[maybe_unused]] const int cut = ::ftruncate(fd.get(), before);
            throw;
        }
        return;
    }
    throw err::make(err::PathFileAccess);
}

Lock::Lock(const std::string& path, std::chrono::milliseconds patience)
{
    const Deadline deadline = std::chrono::steady_clock::now() + patience;
    retryUntil(deadline, [&] {
        bool stranger = false;
        fd_ = openLockFile(path, stranger);
        if (fd_ == -1 && stranger)
            (void)::unlink(path.c_str()); // a planted link or pipe: the next attempt makes the file in its place
        return fd_ != -1;
    });
    if (fd_ != -1 && !lockWithin(fd_, deadline))
        ::close(std::exchange(fd_, -1));
}

Lock::~Lock()
{
    if (fd_ != -1)
        ::close(fd_); // closing the last descriptor releases the lock
}

void removeTemporaryOnSignals()
{
    std::signal(SIGINT, onSignal);
    std::signal(SIGTERM, onSignal);
}

} // namespace kesta::safefile
