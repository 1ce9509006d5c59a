#pragma once

#include "common/core/DataFolders.h"
#include "common/core/ErrorLog.h"
#include "common/core/UserOptions.h"

#include <cstdint>
#include <string>

namespace kesta {

// The shared module: the file-system operations the rest of the program
// calls instead of touching files directly, and the page writer. The four
// file operations and the page writer never raise an error to their caller;
// they log it as a non-fatal report under module "Program_Data" and return
// their default result.
class ProgramData {
public:
    ProgramData(ErrorReporter& reporter, const DataFolders& folders, const UserOptions& options)
        : reporter_(reporter), folders_(folders), options_(options)
    {
    }

    // The known folder's path ending in the separator, or "" when the lookup fails.
    std::string GetSpecialFolderPath(std::int32_t folderId, std::int32_t flags);

    void DeleteFile(const std::string& path);                               // wildcards * and ? allowed
    void Move_File(const std::string& source, const std::string& destination); // replaces destination
    bool File_Exists(const std::string& path);                              // a folder does not count
    bool Dir_Exists(const std::string& path);                               // a file does not count

    // Writes a page to the page file in the log folder, whatever `path` says.
    // With a font size set, `text` itself is wrapped in the font tag.
    void Write_HTML(std::string& text, const std::string& path);

private:
    ErrorReporter& reporter_;
    const DataFolders& folders_;
    const UserOptions& options_;
};

// The part of `path` after its last separator.
std::string FileNameOf(const std::string& path);

} // namespace kesta
