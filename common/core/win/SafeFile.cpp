// The file access of SafeFile.h on Windows, where no pipe or device can take
// the place of a file in the data folders and a rename replaces a file whole.
#include "common/core/SafeFile.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fcntl.h>
#include <fstream>
#include <io.h>
#include <sstream>
#include <thread>
#include <utility>
#include <windows.h>

namespace kesta::safefile {

Refused::Refused() : RuntimeError(err::PathFileAccess, err::describe(err::PathFileAccess)) {}

namespace {

std::string folderPart(const std::string& path)
{
    const auto slash = path.find_last_of("/\\");
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

namespace fs = std::filesystem;

void checkRegular(const std::string& path, Links links = Links::Refuse)
{
    std::error_code code;
    const fs::file_status status = links == Links::Follow ? fs::status(path, code) : fs::symlink_status(path, code);
    if (code || !fs::exists(status))
        throw err::make(err::FileNotFound);
    if (!fs::is_regular_file(status))
        throw Refused();
}

// A temporary name that no other writer picks: the process and a counter.
std::string temporaryFor(const std::string& path)
{
    static unsigned counter = 0;
    char tail[16];
    std::snprintf(tail, sizeof tail, "%02lx%04x", GetCurrentProcessId() & 0xff, ++counter & 0xffff);
    return folderPart(path) + temporaryPrefix(path.substr(folderPart(path).size())) + tail;
}
} // namespace

std::string read(const std::string& path, std::size_t limit)
{
    checkRegular(path);
    if (fs::file_size(path) > limit)
        throw err::make(err::SubscriptOutOfRange);
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

Reader::Reader(const std::string& path, std::size_t limit, Links links)
{
    checkRegular(path, links);
    size_ = left_ = static_cast<std::size_t>(fs::file_size(path));
    if (size_ > limit)
        throw err::make(err::SubscriptOutOfRange);
    fd_ = ::_open(path.c_str(), _O_RDONLY | _O_BINARY);
    if (fd_ == -1)
        throw err::make(err::PathFileAccess);
}

Reader::~Reader()
{
    ::_close(fd_);
}

std::size_t Reader::read(char* into, std::size_t count)
{
    const int n = ::_read(fd_, into, static_cast<unsigned>(std::min<std::size_t>({count, left_, 1u << 30})));
    if (n < 0)
        throw err::make(err::PathFileAccess);
    left_ -= static_cast<std::size_t>(n);
    return static_cast<std::size_t>(n);
}

std::vector<std::string> readLines(const std::string& path, std::size_t count, std::size_t lineLimit, Links links)
{
    Reader file(path, static_cast<std::size_t>(-1), links);
    LineGatherer lines(count, lineLimit);
    for (char c; !lines.full() && file.read(&c, 1) == 1;)
        lines.take(c);
    return lines.finish();
}

std::string readFirstLine(const std::string& path, std::size_t lineLimit, std::size_t fileLimit, Links links)
{
    checkRegular(path, links);
    if (fs::file_size(path) > fileLimit)
        throw Refused();
    const std::vector<std::string> lines = readLines(path, 1, lineLimit, links);
    if (lines.empty())
        throw err::make(err::InputPastEnd);
    return lines.front();
}

bool hasContent(const std::string& path)
{
    std::error_code code;
    return fs::is_regular_file(fs::symlink_status(path, code)) && fs::file_size(path, code) > 0;
}

void replace(const std::string& path, std::string_view bytes, Replace)
{
    const std::string temp = temporaryFor(path);
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        if (!out)
            throw err::make(err::PathNotFound);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!out.flush())
            throw err::make(err::PathFileAccess);
    }
    if (!MoveFileExA(temp.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        DeleteFileA(temp.c_str());
        throw err::make(err::PathFileAccess);
    }
}

void move(const std::string& source, const std::string& destination)
{
    checkRegular(source);
    if (!MoveFileExA(source.c_str(), destination.c_str(), MOVEFILE_REPLACE_EXISTING))
        throw err::make(GetLastError() == ERROR_FILE_NOT_FOUND ? err::FileNotFound : err::PathFileAccess);
}

void append(const std::string& path, std::string_view bytes)
{
    std::error_code code;
    const auto before = fs::exists(path, code) ? fs::file_size(path, code) : 0;
    std::ofstream out(path, std::ios::binary | std::ios::app);
    if (!out)
        throw err::make(err::PathNotFound);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out.flush()) {
        out.close();
        fs::resize_file(path, before, code); // whole or not at all
        throw err::make(err::PathFileAccess);
    }
}

Lock::Lock(const std::string& path, std::chrono::milliseconds patience)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_HIDDEN, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return;
    // The lock is the first byte's; the system releases it when its holder dies.
    for (OVERLAPPED at{}; !LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &at);) {
        if (std::chrono::steady_clock::now() >= deadline) {
            CloseHandle(file);
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds{20});
    }
    fd_ = _open_osfhandle(reinterpret_cast<intptr_t>(file), _O_RDONLY);
}

Lock::~Lock()
{
    if (fd_ != -1)
        ::_close(fd_);
}

void removeTemporaryOnSignals() {}

} // namespace kesta::safefile
