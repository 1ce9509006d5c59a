#pragma once

#include "common/core/DataFolders.h"
#include "common/core/ErrorLog.h"
#include "common/core/ProgramData.h"
#include "common/core/UserOptions.h"
#include "support/RecordingHost.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace kesta::test {

// A fixture for core tests that work in the data tree: a scratch all-users
// folder with its log and user folders, a recording host, the reporter and
// the shared module over them.
class DataTreeTest : public ::testing::Test {
protected:
    DataTreeTest()
    {
        folders.derive(dir.path() + "/");
        std::filesystem::create_directories(folders.LogDir);
        std::filesystem::create_directories(folders.UserDir);
    }

    std::string log() const { return readFile(folders.errorLogPath()); }
    // The locations of the log entries written since the log was last removed, one per line; removes the log.
    std::string locations() const
    {
        std::string text = log(), found;
        for (auto p = text.find("Location: "); p != std::string::npos; p = text.find("Location: ", p + 1))
            found += text.substr(p + 10, text.find('\r', p) - p - 10) + "\n";
        std::filesystem::remove(folders.errorLogPath());
        return found;
    }
    std::string user(const std::string& name) const { return folders.UserDir + "/" + name; }

    TempDir dir;
    RecordingHost host;
    DataFolders folders;
    UserOptions options;
    ErrorReporter reporter{host, folders};
    ProgramData data{reporter, folders, options};
};

} // namespace kesta::test
