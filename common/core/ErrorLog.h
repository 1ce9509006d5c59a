#pragma once

#include "common/core/DataFolders.h"
#include "common/core/Host.h"
#include "common/core/RuntimeError.h"

#include <chrono>
#include <string>

namespace kesta {

// The one error reporter. Every error trap hands its caught error here: the
// reporter appends an entry to the error log in the log folder and, for a
// fatal report, shows the error box and ends the program. A failure inside
// the reporter itself (a log folder removed since start) is not reported
// again; it raises RuntimeError to the caller like any other failure.
class ErrorReporter {
public:
    ErrorReporter(Host& host, const DataFolders& folders) : host_(host), folders_(folders) {}

    // Logs `error` as raised in moduleName.routineName. A non-empty `details`
    // gets one blank appended, visible to the caller. Does not return when
    // `isFatal` is set.
    void LogError(const std::string& moduleName, const std::string& routineName, bool isFatal,
                  std::string& details, const RuntimeError& error);

    Host& host() { return host_; }

private:
    Host& host_;
    const DataFolders& folders_;
};

// The operating system's message text for an error number, ending in its own
// CR LF as the system's texts do, or "" when the system has none.
std::string SystemErrorText(std::int32_t code);

// The date-and-time text used in log entries.
std::string formatLogDate(std::chrono::system_clock::time_point when);

// The report text: the Date, Description, Details and Source lines.
std::string composeReport(const std::string& dateText, const RuntimeError& error, const std::string& details);

// One whole log entry: the report, the Location line and the separator.
std::string composeLogEntry(const std::string& report, const std::string& moduleName, const std::string& routineName);

// The text of the fatal error box that precedes the report.
inline constexpr const char* FatalErrorTitle = "Brightquiver Error";
inline constexpr const char* FatalErrorLead = "An error has occured and Bellwort needs to shut down.";

} // namespace kesta
