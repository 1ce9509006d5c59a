#pragma once

// What the commands of kesta-qbank share: the command line, the two kinds of
// failure, and reading and writing files the way every command does.

#include "common/core/RuntimeError.h"
#include "questions/core/QuestionLoader.h"

#include <optional>
#include <string>
#include <vector>

namespace kesta::qbank {

struct Arguments {
    std::string command;
    std::vector<std::string> operands;
    std::vector<std::string> options; // the options given, by name
    std::string key;
    std::optional<std::string> output;    // -o
    std::optional<std::string> format;    // --from or --to
    std::optional<std::string> title;     // --title
    std::optional<std::string> sourceOut; // --source-out
    std::vector<std::string> intro;       // --intro, in order
    bool json = false;
    bool strict = false;
};

// A wrong command line: exit status 2, with the usage text.
struct UsageError {
    std::string message;
};

// A failure of the command itself, already phrased for the user: exit status 1.
struct Failure {
    std::string message;
};

// "PATH:LINE: message" (without LINE when it is 0), as compilers name a place.
Failure failure(const std::string& path, int line, const std::string& message);

// "run-time error N (description)".
std::string describe(const RuntimeError& error);

// The whole file, at most `limit` bytes; a failure names the file.
std::string readInput(const std::string& path, std::size_t limit);

// Loads a question file as the program does, once; an empty file, one whose
// line cannot be deciphered or whose first line is no title fails naming it.
LoadResult loadBank(const std::string& path, const std::string& key, QuestionList& list);

// Writes a file the tool makes (a bank, a source) whole, with the mode the umask gives.
void writeOutput(const std::string& path, std::string_view bytes);

// Standard output and a line on standard error.
void writeOut(std::string_view text);
void warn(const std::string& line);

int importQuestions(const Arguments& args);
int exportQuestions(const Arguments& args);

// A source holds a quarter of the bank it builds at most; a larger one would
// build a bank beyond what the program reads.
inline constexpr std::size_t MaxSourceBytes = MaxBankBytes / 4;

} // namespace kesta::qbank
