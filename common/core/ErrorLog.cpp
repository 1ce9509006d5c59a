#include "common/core/ErrorLog.h"

#include "common/core/SafeFile.h"

#include <cstring>
#include <ctime>

#ifdef _WIN32
#include <windows.h>
#endif

namespace kesta {

namespace {
constexpr const char* CrLf = "\r\n";
}

std::string SystemErrorText(std::int32_t code)
{
#ifdef _WIN32
    char buffer[256] = {};
    const DWORD n = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, static_cast<DWORD>(code), 0, buffer,
                                   sizeof buffer, nullptr);
    return std::string(buffer, n);
#else
    char buffer[256] = {};
    // The GNU strerror_r may return a static text instead of filling the buffer.
    const char* text = strerror_r(code, buffer, sizeof buffer);
    if (text == nullptr || std::strncmp(text, "Unknown error", 13) == 0)
        return {};
    // A system message ends with its own line end, as the entry's layout expects.
    return std::string(text) + CrLf;
#endif
}

std::string formatLogDate(std::chrono::system_clock::time_point when)
{
    const std::time_t t = std::chrono::system_clock::to_time_t(when);
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &t);
#else
    localtime_r(&t, &local);
#endif
    char text[64];
    const std::size_t n = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
    return std::string(text, n);
}

std::string composeReport(const std::string& dateText, const RuntimeError& error, const std::string& details)
{
    std::string report;
    report += "Date: " + dateText + CrLf;
    report += "Description of Error: " + error.description() + " [" + std::to_string(error.number()) + "]" + CrLf;
    report += "Details: " + details + SystemErrorText(error.number()) + CrLf;
    report += "Source: " + error.source() + CrLf;
    return report;
}

std::string composeLogEntry(const std::string& report, const std::string& moduleName, const std::string& routineName)
{
    return report + "Location: " + moduleName + "." + routineName + CrLf + CrLf + "***" + CrLf + CrLf;
}

void ErrorReporter::LogError(const std::string& moduleName, const std::string& routineName, bool isFatal,
                             std::string& details, const RuntimeError& error)
{
    if (!details.empty())
        details += " ";
    const std::string report = composeReport(formatLogDate(host_.now()), error, details);
    // The entry is written with a line-output write, hence the extra line end.
    safefile::append(folders_.errorLogPath(), composeLogEntry(report, moduleName, routineName) + CrLf);
    if (isFatal) {
        host_.messageBox({FatalErrorTitle, std::string(FatalErrorLead) + CrLf + report, MessageIcon::Critical,
                          MessageButtons::Ok});
        host_.endProgram(1);
    }
}

} // namespace kesta
