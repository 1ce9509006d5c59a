#pragma once

#include <string>

namespace kesta {

// The folders the program works in. The data folders are derived once at
// start from the all-users application-data folder and never change
// afterwards; the program folder is the one that holds the executable.
struct DataFolders {
    std::string BaseDir;    // all-users application data, ending in the separator; "" when unknown
    std::string DataDir;    // BaseDir + "MORVO/KESTA/All"
    std::string LogDir;     // DataDir + "/Log"
    std::string UserDir;    // DataDir + "/User"
    std::string ProgramDir; // the executable's folder, without a trailing separator

    // Fills DataDir, LogDir and UserDir from BaseDir.
    void derive(const std::string& baseDir);

    std::string pagePath() const { return LogDir + "/qtmp.htm"; }
    std::string errorLogPath() const { return LogDir + "/ErrorLog.log"; }
    std::string questionFolder() const { return ProgramDir + "/Questions/"; }
};

} // namespace kesta
