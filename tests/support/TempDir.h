#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include <unistd.h>

namespace kesta::test {

// True in the child process of a death test.
inline bool inDeathTestChild() { return !GTEST_FLAG_GET(internal_run_death_test).empty(); }

// A scratch folder for one test, removed when the test ends. A death-test
// child process reuses its parent's folder, so the parent can look at what
// the child left on disk.
class TempDir {
public:
    TempDir() : owner_(!inDeathTestChild())
    {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        const std::string name = info ? std::string(info->test_suite_name()) + "." + info->name() : "global";
        // Counted per test: a death-test child runs only its own test, so a
        // program-wide count would name a different folder than the parent's.
        static std::map<std::string, int> serials;
        path_ = std::filesystem::temp_directory_path() / ("kesta-test-" + std::to_string(owner_ ? ::getpid() : ::getppid()))
            / (name + "-" + std::to_string(serials[name]++));
        if (owner_)
            std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~TempDir()
    {
        std::error_code ignored;
        if (owner_)
            std::filesystem::remove_all(path_, ignored), std::filesystem::remove(path_.parent_path(), ignored); // if empty
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string path() const { return path_.string(); }
    std::string operator/(const std::string& name) const { return path() + "/" + name; }

private:
    std::filesystem::path path_;
    bool owner_;
};

// Whole-file helpers for assertions.
inline std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return { std::istreambuf_iterator<char>(in), {} };
}
inline void writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}
inline bool exists(const std::string& path) { return std::filesystem::exists(std::filesystem::symlink_status(path)); }

} // namespace kesta::test
