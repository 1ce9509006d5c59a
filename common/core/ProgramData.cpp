#include "common/core/ProgramData.h"

#include "common/core/ErrorTrap.h"
#include "common/core/SafeFile.h"

#include <filesystem>
#include <system_error>
#include <vector>

namespace kesta {

namespace fs = std::filesystem;

namespace {

constexpr char Separator = '/';

// A name the file system cannot even be asked about (an embedded NUL) is a failure of its own.
void checkName(const std::string& path)
{
    if (path.find('\0') != std::string::npos)
        throw err::make(err::PathFileAccess);
}

[[noreturn]] void raiseFs(const std::error_code& code)
{
    if (code == std::errc::no_such_file_or_directory)
        throw err::make(err::FileNotFound);
    throw err::make(err::PathFileAccess);
}

// Wildcard match of one file name: '*' any run, '?' one character.
bool matches(const std::string& pattern, const std::string& name)
{
    std::size_t p = 0, n = 0, star = std::string::npos, resume = 0;
    while (n < name.size()) {
        if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = n;
        } else if (star != std::string::npos) {
            p = star + 1;
            n = ++resume;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

} // namespace

std::string ProgramData::GetSpecialFolderPath(std::int32_t folderId, std::int32_t /*flags*/)
{
    const auto folder = reporter_.host().knownFolder(folderId);
    if (!folder)
        return {};
    std::string path = *folder;
    if (path.empty() || path.back() != Separator)
        path += Separator;
    return path;
}

std::string FileNameOf(const std::string& path)
{
    const auto p = path.find_last_of(Separator);
    return p == std::string::npos ? path : path.substr(p + 1);
}

void ProgramData::DeleteFile(const std::string& path)
{
    trapNonFatal(reporter_, "DeleteFile", [&] {
        const std::string name = FileNameOf(path);
        if (name.find_first_of("*?") == std::string::npos) {
            if (fs::is_directory(fs::symlink_status(path)))
                throw err::make(err::PathFileAccess);
            std::error_code code;
            if (!fs::remove(path, code))
                raiseFs(code ? code : std::make_error_code(std::errc::no_such_file_or_directory));
            return;
        }
        const std::string folder = path.substr(0, path.size() - name.size());
        std::vector<fs::path> doomed;
        std::error_code code;
        for (const auto& entry : fs::directory_iterator(folder.empty() ? "." : folder, code)) {
            if (!entry.is_directory() && matches(name, entry.path().filename().string()))
                doomed.push_back(entry.path());
        }
        if (code)
            throw err::make(err::PathNotFound);
        if (doomed.empty())
            throw err::make(err::FileNotFound);
        for (const auto& file : doomed) {
            if (!fs::remove(file, code))
                raiseFs(code);
        }
    });
}

void ProgramData::Move_File(const std::string& source, const std::string& destination)
{
    trapNonFatal(reporter_, "Move_File", [&] {
        // The file itself takes the new name, so it keeps its modification
        // time, which the score menu shows as the time the score was saved,
        // and a kill at any moment leaves it under one name or the other.
        safefile::move(source, destination);
    });
}

bool ProgramData::File_Exists(const std::string& path)
{
    return trapNonFatal(reporter_, "File_Exists", false, [&] {
        checkName(path);
        std::error_code code;
        const auto status = fs::status(path, code);
        if (code && code != std::errc::no_such_file_or_directory && code != std::errc::not_a_directory)
            raiseFs(code);
        return fs::exists(status) && !fs::is_directory(status);
    });
}

bool ProgramData::Dir_Exists(const std::string& path)
{
    return trapNonFatal(reporter_, "Dir_Exists", false, [&] {
        checkName(path);
        std::error_code code;
        const auto status = fs::status(path, code);
        if (code && code != std::errc::no_such_file_or_directory && code != std::errc::not_a_directory)
            raiseFs(code);
        return fs::is_directory(status);
    });
}

void ProgramData::Write_HTML(std::string& text, const std::string& /*path*/)
{
    trapNonFatal(reporter_, "Write_HTML", [&] {
        const Int16 size = options_.fontSize();
        if (size != 0)
            text = "<font size=" + std::to_string(size) + ">\r\n" + text + "\r\n</font>";
        // A page is rewritten for every question; losing one to a power cut costs nothing.
        safefile::replace(folders_.pagePath(), text + "\r\n", {.durable = false});
    });
}

} // namespace kesta
