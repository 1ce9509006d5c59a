// The file access of SafeFile.h on Windows, where no pipe or device can take
// the place of a file in the data folders and a rename replaces a file whole.
#include "common/core/SafeFile.h"

#include <algorithm>
#include <filesystem>
#include <fcntl.h>
#include <io.h>
#include <fstream>
#include <sstream>

namespace kesta::safefile {

Refused::Refused() : RuntimeError(err::PathFileAccess, err::describe(err::PathFileAccess)) {}

namespace {

std::string folderPart(const std::string& path)
{
    const auto slash = path.find_last_of("/\\");
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

namespace fs = std::filesystem;

void checkRegular(const std::string& path)
{
    std::error_code code;
    const fs::file_status status = fs::symlink_status(path, code);
    if (code || !fs::exists(status))
        throw err::make(err::FileNotFound);
    if (!fs::is_regular_file(status))
        throw Refused();
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

Reader::Reader(const std::string& path, std::size_t limit)
{
    checkRegular(path);
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

std::string readFirstLine(const std::string& path, std::size_t lineLimit, std::size_t fileLimit)
{
    checkRegular(path);
    if (fs::file_size(path) > fileLimit)
        throw Refused();
    std::ifstream in(path, std::ios::binary);
    std::string line;
    char c = 0;
    bool any = false;
    while (in.get(c) && c != '\r' && c != '\n') {
        any = true;
        line.push_back(c);
        if (line.size() > lineLimit)
            throw Refused();
    }
    if (!any && !in)
        throw err::make(err::InputPastEnd);
    return line;
}

bool hasContent(const std::string& path)
{
    std::error_code code;
    return fs::is_regular_file(fs::symlink_status(path, code)) && fs::file_size(path, code) > 0;
}

void replace(const std::string& path, std::string_view bytes, Replace)
{
    const std::string temp = folderPart(path) + "." + path.substr(folderPart(path).size()) + ".tmp";
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        if (!out)
            throw err::make(err::PathNotFound);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!out.flush())
            throw err::make(err::PathFileAccess);
    }
    std::error_code code;
    fs::rename(temp, path, code);
    if (code) {
        fs::remove(temp, code);
        throw err::make(err::PathFileAccess);
    }
}

void move(const std::string& source, const std::string& destination)
{
    const auto modified = fs::last_write_time(source);
    replace(destination, read(source, SmallFileLimit));
    fs::last_write_time(destination, modified);
    if (!fs::remove(source))
        throw err::make(err::FileNotFound);
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

void removeTemporaryOnSignals() {}

} // namespace kesta::safefile
