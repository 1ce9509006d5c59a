#pragma once

#include <string>

namespace kesta::test {

// A scratch folder for one test, removed when the test ends. A death-test
// child process reuses its parent's folder, so the parent can look at what
// the child left on disk.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
    bool owner_;
};

// True in the child process of a death test.
bool inDeathTestChild();

// Whole-file helpers for assertions.
std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& bytes);
bool exists(const std::string& path);

} // namespace kesta::test
