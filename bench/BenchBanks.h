#pragma once

// Question files for the benchmarks, written once per process into a scratch
// folder that is removed at exit.

#include "questions/core/Cipher.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

namespace kesta::bench {

inline std::string line(const std::string& text, bool marked = false)
{
    std::string out = marked ? "#" : "";
    out += EncryptString(text, QuestionPassPhrase);
    return out += "\r\n";
}

// A title, three introduction lines and `questions` blocks of nine lines each
// (question, four choices, two explanation paragraphs, answer, blank): 1000
// questions make 9,004 lines, about 2.8 MB.
inline std::string bankText(int questions, const std::string& title = "KESTA Exam Demo 1")
{
    const std::string choice(40, 'c');
    std::string content = line(title) + line(std::string(120, 'i')) + line(std::string(120, 'j')) +
                          line(std::string(120, 'k'));
    for (int k = 1; k <= questions; ++k) {
        content += line("Question " + std::to_string(k) + std::string(90, 'q'), true);
        for (const char letter : {'a', 'b', 'c', 'd'})
            content += line(std::string(1, letter) + ") " + choice);
        content += line(std::string(200, 'e'), true) + line(std::string(150, 'f')) + line("b", true) + "\r\n";
    }
    return content;
}

// A bank of 60,000 short lines, about 7 MB: far past the 10,000 lines the loader keeps.
inline std::string longBankText()
{
    std::string content = line("KESTA Exam Demo 2") + line("i") + line("j") + line("k");
    for (int k = 0; content.size() < 7'000'000; ++k)
        content += line("line " + std::to_string(k) + std::string(40, 'x'), k % 3 == 0);
    return content;
}

class Scratch {
public:
    Scratch() : path_(std::filesystem::temp_directory_path() / ("kesta-bench-" + std::to_string(::getpid())))
    {
        std::filesystem::create_directories(path_);
    }
    ~Scratch()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    std::string write(const std::string& name, const std::string& content) const
    {
        const std::string p = (path_ / name).string();
        std::ofstream(p, std::ios::binary) << content;
        return p;
    }
    std::string path(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

inline const Scratch& scratch()
{
    static const Scratch instance;
    return instance;
}

} // namespace kesta::bench
