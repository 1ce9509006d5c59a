#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include <unistd.h>

namespace kesta::test {

namespace fs = std::filesystem;

bool inDeathTestChild()
{
    return !GTEST_FLAG_GET(internal_run_death_test).empty();
}

TempDir::TempDir() : owner_(!inDeathTestChild())
{
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    const std::string name = info ? std::string(info->test_suite_name()) + "." + info->name() : "global";
    const long pid = owner_ ? static_cast<long>(::getpid()) : static_cast<long>(::getppid());
    // Counted per test: a death-test child runs only its own test, so a
    // program-wide count would name a different folder than the parent's.
    static std::map<std::string, int> serials;
    const int serial = serials[name]++;
    path_ = (fs::temp_directory_path() / ("kesta-test-" + std::to_string(pid)) / (name + "-" + std::to_string(serial)))
                .string();
    if (owner_)
        fs::remove_all(path_);
    fs::create_directories(path_);
}

TempDir::~TempDir()
{
    if (owner_) {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
        fs::remove(fs::path(path_).parent_path(), ignored); // only when empty
    }
}

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

void writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
}

bool exists(const std::string& path)
{
    return fs::exists(fs::symlink_status(path));
}

} // namespace kesta::test
