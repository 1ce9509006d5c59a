#include "common/core/SafeFile.h"

#include "common/core/RuntimeError.h"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <sstream>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace kesta::safefile {

namespace {

[[noreturn]] void raiseFor(int code)
{
    switch (code) {
    case ENOENT: throw err::make(err::FileNotFound);
    case ENOTDIR: throw err::make(err::PathNotFound);
    default: throw err::make(err::PathFileAccess);
    }
}

std::string folderOf(const std::string& path)
{
    const auto slash = path.find_last_of('/');
    return slash == std::string::npos ? std::string(".") : path.substr(0, slash + 1);
}

#ifndef _WIN32
class Fd {
public:
    explicit Fd(int fd) : fd_(fd) {}
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    ~Fd()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }
    int get() const { return fd_; }
    int release()
    {
        const int fd = fd_;
        fd_ = -1;
        return fd;
    }

private:
    int fd_;
};

void writeAll(int fd, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd, bytes.data(), bytes.size());
        if (n < 0) {
            if (errno == EINTR)
                continue;
            throw err::make(err::PathFileAccess);
        }
        bytes.remove_prefix(static_cast<std::size_t>(n));
    }
}

bool folderExists(const std::string& folder)
{
    struct stat st {};
    return ::stat(folder.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}
#endif

} // namespace

#ifndef _WIN32

std::string read(const std::string& path)
{
    Fd fd(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (fd.get() < 0)
        raiseFor(errno == ELOOP ? EACCES : errno);
    struct stat st {};
    if (::fstat(fd.get(), &st) != 0 || !S_ISREG(st.st_mode))
        throw err::make(err::PathFileAccess);
    std::string content;
    char buffer[65536];
    for (;;) {
        const ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            throw err::make(err::PathFileAccess);
        }
        if (n == 0)
            break;
        content.append(buffer, static_cast<std::size_t>(n));
    }
    return content;
}

void replace(const std::string& path, std::string_view bytes)
{
    const std::string folder = folderOf(path);
    if (!folderExists(folder))
        throw err::make(err::PathNotFound);
    std::string temp = path + ".XXXXXX";
    Fd fd(::mkstemp(temp.data()));
    if (fd.get() < 0)
        throw err::make(err::PathFileAccess);
    try {
        // Files in the shared folders stay readable and writable by every user.
        // Files in the shared folders stay readable and writable by every user.
        (void)::fchmod(fd.get(), 0666);
        writeAll(fd.get(), bytes);
        if (::close(fd.release()) != 0)
            throw err::make(err::PathFileAccess);
        // rename() replaces a symbolic link at the target instead of following it.
        if (::rename(temp.c_str(), path.c_str()) != 0)
            throw err::make(err::PathFileAccess);
    } catch (...) {
        ::unlink(temp.c_str());
        throw;
    }
}

void append(const std::string& path, std::string_view bytes)
{
    Fd fd(::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (fd.get() < 0)
        raiseFor(errno == ENOENT ? ENOTDIR : (errno == ELOOP ? EACCES : errno));
    (void)::fchmod(fd.get(), 0666); // other users append to the same log; fails harmlessly if not ours
    writeAll(fd.get(), bytes);
}

#else

std::string read(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw err::make(err::FileNotFound);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

void replace(const std::string& path, std::string_view bytes)
{
    const std::string temp = path + ".tmp";
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        if (!out)
            throw err::make(err::PathNotFound);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!out)
            throw err::make(err::PathFileAccess);
    }
    std::remove(path.c_str());
    if (std::rename(temp.c_str(), path.c_str()) != 0)
        throw err::make(err::PathFileAccess);
}

void append(const std::string& path, std::string_view bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::app);
    if (!out)
        throw err::make(err::PathNotFound);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out)
        throw err::make(err::PathFileAccess);
}

#endif

} // namespace kesta::safefile
