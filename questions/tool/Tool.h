#pragma once

// What the commands of kesta-qbank share: the command line, the two kinds of
// failure, and reading and writing files the way every command does.

#include "questions/core/BankCheck.h"
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
    std::optional<std::string> output; // -o
    std::optional<std::string> format; // --from or --to
    std::optional<std::string> title; // --title
    std::optional<std::string> sourceOut; // --source-out
    std::optional<std::string> seed; // --seed
    std::vector<std::string> intro; // --intro, in order
    bool json = false;
    bool strict = false;
    bool keepOrder = false;
    bool allowBroken = false;
    bool help = false;
    bool version = false;
};

// A wrong command line: exit status 2, with a pointer to the usage text.
struct UsageError {
    std::string message;
};

// A failure of the command itself, already phrased for the user: exit status 1.
struct Failure {
    std::string message;
};

inline constexpr int ExitFailure = 1;

// "PATH:LINE: message" (without LINE when it is 0), as compilers name a place.
Failure failure(const std::string& path, int line, const std::string& message);

// The whole file, at most `limit` bytes; a failure names the file.
std::string readInput(const std::string& path, std::size_t limit);

// Checks the question file at `path` as the program would load it; a file
// that cannot be read or deciphered, or that is no question file, fails naming it.
BankCheck checkBankFile(const std::string& path, const std::string& key, QuestionList& list,
    safefile::Links links = safefile::Links::Refuse);

// A problem of a bank as one line: "PATH:LINE: text" for a source,
// "PATH: question N: text" for a bank, "PATH: text" for the whole bank.
std::string problemLine(const std::string& path, const BankProblem& problem, bool bySourceLine);

// Refuses to write a file that would destroy what it replaces or cannot be
// replaced: one of `inputs` (however named), a device, a pipe, a socket or a folder.
void guardOutput(const std::optional<std::string>& path, const std::vector<std::string>& inputs);

// Writes a file the tool makes (a bank, a source) whole, with the mode the umask gives.
void writeOutput(const std::string& path, std::string_view bytes);

// Reports the problems of a bank made from `path` on standard error; true
// when it may be written: it has none, or --allow-broken writes it all the same.
bool mayWrite(const std::string& path, const BankCheck& check, bool bySourceLine, const Arguments& args);

// Standard output and a line on standard error.
void writeOut(std::string_view text);
void warn(const std::string& line);

int importQuestions(const Arguments& args);
int exportQuestions(const Arguments& args);
int checkFolder(const Arguments& args);

// A source holds a quarter of the bank it builds at most; a larger one would
// build a bank beyond what the program reads.
inline constexpr std::size_t MaxSourceBytes = MaxBankBytes / 4;

} // namespace kesta::qbank
