#include "app/core/Options.h"

#include "app/core/ProgramState.h"
#include "common/core/Int16.h"
#include "common/core/RuntimeError.h"
#include "common/core/SafeFile.h"

namespace kesta {

namespace {

// The program writes six short numbers. A longer line is no number it could
// read, and reading on would let a file of one endless line hold it up; such
// a file is as corrupt as one with a word on a line.
constexpr std::size_t OptionsLineLimit = 64 * 1024;

} // namespace

std::string optionsFilePath(const DataFolders& folders)
{
    return folders.DataDir + "/User/option.usr";
}

void parseOptions(const std::vector<std::string>& lines, UserOptions& options)
{
    for (int k = 1; k <= 6; ++k) {
        if (lines.size() < static_cast<std::size_t>(k))
            throw err::make(err::InputPastEnd);
        options.values[k] = parseInt16(lines[static_cast<std::size_t>(k) - 1]);
    }
}

void ReadOptions(Host& host, const DataFolders& folders, UserOptions& options)
{
    const std::string path = optionsFilePath(folders);
    for (bool repaired = false;; repaired = true) {
        try {
            parseOptions(safefile::readLines(path, 6, OptionsLineLimit), options);
            return;
        } catch (const RuntimeError&) {
            if (repaired) // the defaults just written do not read back: someone else's doing
                throw;
            host.messageBox({AppTitle, CorruptOptionsText, MessageIcon::None, MessageButtons::Ok});
            safefile::replace(path, DefaultOptionsText);
        }
    }
}

std::string formatOptions(const UserOptions& options)
{
    std::string text;
    for (int k = 1; k <= 6; ++k) {
        if (k > 1)
            text += "\r\n";
        text += std::to_string(options.values[k]);
    }
    return text;
}

std::string listText(Int16 value, int last)
{
    return value >= 0 && value <= last ? std::to_string(value) : std::string();
}

} // namespace kesta
