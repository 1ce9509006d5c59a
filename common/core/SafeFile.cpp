#include "common/core/SafeFile.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <utility>

#include <fcntl.h>
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
    struct timespec modified;
};

// Opens a file for reading without blocking (a named pipe would wait for a
// writer) and without following a link, and takes only a regular file.
Opened openRegular(const std::string& path)
{
    Fd fd(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (fd.get() == -1)
        raiseFor(errno);
    struct stat st {};
    if (::fstat(fd.get(), &st) != 0)
        throw err::make(err::PathFileAccess);
    if (!S_ISREG(st.st_mode))
        throw Refused();
    return {Fd(fd.release()), static_cast<std::size_t>(st.st_size), st.st_mtim};
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
void writeReplacing(const std::string& path, std::string_view bytes, Replace how, const struct timespec* modified)
{
    const std::string folder = folderPart(path);
    struct stat st {};
    if (::stat(folder.empty() ? "." : folder.c_str(), &st) != 0 || !S_ISDIR(st.st_mode))
        throw err::make(err::PathNotFound);
    std::string temp = folder + "." + path.substr(folder.size()) + ".XXXXXX";
    Fd fd(::mkstemp(temp.data()));
    if (fd.get() == -1)
        throw err::make(err::PathFileAccess);
    pendingTemporary = temp.c_str();
    try {
        // Only the file just made here has its mode set: never one found in place.
        if (::fchmod(fd.get(), creationMode(how.shared)) != 0)
            throw err::make(err::PathFileAccess);
        writeAll(fd.get(), bytes);
        if (modified != nullptr) {
            const struct timespec times[] = {{0, UTIME_OMIT}, *modified};
            if (::futimens(fd.get(), times) != 0)
                throw err::make(err::PathFileAccess);
        }
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

Reader::Reader(const std::string& path, std::size_t limit)
{
    Opened file = openRegular(path);
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

std::string readFirstLine(const std::string& path, std::size_t lineLimit, std::size_t fileLimit)
{
    Opened file = openRegular(path);
    if (file.size > fileLimit)
        throw Refused();
    std::string line;
    char chunk[4096];
    bool any = false;
    while (const std::size_t n = readSome(file.fd.get(), chunk, sizeof chunk)) {
        any = true;
        const char* end = std::find_if(chunk, chunk + n, [](char c) { return c == '\r' || c == '\n'; });
        line.append(chunk, static_cast<std::size_t>(end - chunk));
        if (line.size() > lineLimit)
            throw Refused();
        if (end != chunk + n)
            return line;
    }
    if (!any)
        throw err::make(err::InputPastEnd);
    return line;
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
    writeReplacing(path, bytes, how, nullptr);
}

void move(const std::string& source, const std::string& destination)
{
    Opened file = openRegular(source);
    const std::string content = readOpened(file, SmallFileLimit);
    writeReplacing(destination, content, {}, &file.modified);
    if (::unlink(source.c_str()) != 0)
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
        writeAll(fd.get(), bytes);
        return;
    }
    throw err::make(err::PathFileAccess);
}

void removeTemporaryOnSignals()
{
    std::signal(SIGINT, onSignal);
    std::signal(SIGTERM, onSignal);
}


} // namespace kesta::safefile
