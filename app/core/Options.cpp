#include "app/core/Options.h"

#include "app/core/ProgramState.h"
#include "common/core/Int16.h"
#include "common/core/RuntimeError.h"
#include "common/core/SafeFile.h"

namespace kesta {

namespace {

// One line as the program's text files are read: a line ends at CR LF, a lone
// CR or a lone LF, and the last line needs no line end. Raises "Input past end
// of file" when no line is left.
std::string readLine(std::string_view& text)
{
    if (text.empty())
        throw err::make(err::InputPastEnd);
    const auto end = text.find_first_of("\r\n");
    if (end == std::string_view::npos) {
        std::string line(text);
        text = {};
        return line;
    }
    std::string line(text.substr(0, end));
    const bool crlf = text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n';
    text.remove_prefix(end + (crlf ? 2 : 1));
    return line;
}

} // namespace

std::string optionsFilePath(const DataFolders& folders)
{
    return folders.DataDir + "/User/option.usr";
}

void parseOptions(std::string_view text, UserOptions& options)
{
    for (int k = 1; k <= 6; ++k)
        options.values[k] = parseInt16(readLine(text));
}

void ReadOptions(Host& host, const DataFolders& folders, UserOptions& options)
{
    const std::string path = optionsFilePath(folders);
    for (bool repaired = false;; repaired = true) {
        try {
            parseOptions(safefile::read(path, safefile::SmallFileLimit), options);
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
