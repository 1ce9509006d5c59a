#pragma once

#include "common/core/DataFolders.h"
#include "common/core/Host.h"
#include "common/core/UserOptions.h"

#include <string>
#include <string_view>
#include <vector>

namespace kesta {

// The options file: six decimal lines holding UserOptions 1 to 6, separated
// by CR LF, without a line end after the sixth.

// What a missing or damaged options file is replaced with.
inline constexpr std::string_view DefaultOptionsText = "1\r\n0\r\n0\r\n1\r\n30\r\n5";

// The highest value each list of the options wizard offers; every list starts at 0.
inline constexpr int HoursLast = 24;
inline constexpr int MinutesLast = 59;
inline constexpr int SecondsLast = 59;
inline constexpr int FontSizeLast = 12;

// DataDir/User/option.usr
std::string optionsFilePath(const DataFolders& folders);

// Reads the first six `lines` into options 1 to 6, in order; lines after the
// sixth are ignored. Raises RuntimeError 62 when a line is missing, 13 for a
// line that is not a number and 6 for one that does not fit in 16 bits. The
// values read before a failure stay in `options`.
void parseOptions(const std::vector<std::string>& lines, UserOptions& options);

// Reads the options file into `options`: only its first six lines are read,
// however large it is. A file that cannot be read (missing, not a regular
// file, a line longer than any number) or parsed is never reported: after
// the notice it is replaced by the defaults, which are then read. Raises
// RuntimeError only when the defaults cannot be written.
void ReadOptions(Host& host, const DataFolders& folders, UserOptions& options);

inline constexpr const char* CorruptOptionsText =
    "The options file appears to be corrupt. Default settings will be restored.";

// Options 1 to 6 as the file holds them.
std::string formatOptions(const UserOptions& options);

// The text a wizard list shows for `value`: the value itself when the list
// (0 to `last`) offers it, otherwise nothing.
std::string listText(Int16 value, int last);

} // namespace kesta
