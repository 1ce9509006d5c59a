// kesta-qbank: enciphers, deciphers, builds, dumps and checks question files
// with the same core the program loads them with.
#include "common/core/RuntimeError.h"
#include "common/core/SafeFile.h"
#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"
#include "questions/tool/Json.h"

#include <cstdio>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace kesta;

constexpr int ExitFailure = 1;
constexpr int ExitUsage = 2;

constexpr const char* UsageText =
    "usage: kesta-qbank [--key PHRASE] COMMAND ...\n"
    "  encrypt-line TEXT         print TEXT enciphered as one question-file line\n"
    "  decrypt-line HEX          print the text of one enciphered line\n"
    "  build SOURCE -o BANK      encipher a plain-text source into a question file\n"
    "  dump BANK                 print the source of a question file\n"
    "  check [--json] BANK       load a question file as the program does and report it\n"
    "  --key PHRASE              use PHRASE instead of the program's pass phrase\n";

struct UsageError {
    std::string message;
};

// A failure of the command itself, already phrased for the user: one line
// naming the file, and the line of it where there is one.
struct Failure {
    std::string message;
};

Failure failure(const std::string& path, int line, const std::string& message)
{
    return Failure{path + (line > 0 ? ":" + std::to_string(line) : std::string()) + ": " + message};
}

// A source holds a quarter of the bank it builds at most; a larger one would
// build a bank beyond what the program reads.
constexpr std::size_t MaxSourceBytes = MaxBankBytes / 4;

struct Arguments {
    std::string key{QuestionPassPhrase};
    std::optional<std::string> output; // -o
    bool json = false;
    std::vector<std::string> positional;
};

Arguments parseArguments(int argc, char** argv)
{
    Arguments args;
    bool optionsEnded = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&](const std::string& name) {
            if (i + 1 >= argc)
                throw UsageError{name + " needs a value"};
            return std::string(argv[++i]);
        };
        if (optionsEnded || arg.empty() || arg[0] != '-' || arg == "-") {
            args.positional.push_back(arg);
        } else if (arg == "--") {
            optionsEnded = true;
        } else if (arg == "--key") {
            args.key = value(arg);
        } else if (arg.rfind("--key=", 0) == 0) {
            args.key = arg.substr(6);
        } else if (arg == "-o" || arg == "--output") {
            if (args.output)
                throw UsageError{"-o given twice"};
            args.output = value(arg);
        } else if (arg == "--json") {
            args.json = true;
        } else {
            throw UsageError{"unknown option " + arg};
        }
    }
    // An empty pass phrase leaves the cipher without a key: every line would
    // decipher to nothing.
    if (args.key.empty())
        throw UsageError{"--key needs a non-empty pass phrase"};
    return args;
}

std::string readInput(const std::string& path, std::size_t limit)
{
    try {
        return safefile::read(path, limit);
    } catch (const safefile::Refused&) {
        throw failure(path, 0, "not a regular file (a link, a pipe or a device); nothing was read");
    } catch (const RuntimeError& error) {
        if (error.number() == err::SubscriptOutOfRange)
            throw failure(path, 0, "larger than " + std::to_string(limit >> 20) + " MiB; not read");
        throw failure(path, 0, "cannot be read (" + error.description() + ")");
    }
}

void writeOut(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

std::string describe(const RuntimeError& error)
{
    return "run-time error " + std::to_string(error.number()) + " (" + error.description() + ")";
}

// A question file, read whole; an empty file is none.
std::string readBank(const std::string& path)
{
    std::string bank = readInput(path, MaxBankBytes);
    if (bank.empty())
        throw failure(path, 0, "empty; not a question file");
    return bank;
}

// The number of the line of `content` that holds the character at `at`.
int lineOf(std::string_view content, const char* at)
{
    LineSplitter lines(content);
    int number = 0;
    for (std::string_view line; lines.next(line);) {
        ++number;
        if (at <= line.data() + line.size())
            break;
    }
    return number;
}

int encryptLine(const Arguments& args)
{
    const std::string& text = args.positional.at(1);
    if (text.empty())
        throw Failure{"kesta-qbank: an empty text has no enciphered form"};
    writeOut(EncryptString(text, args.key) + "\n");
    return 0;
}

int decryptLine(const Arguments& args)
{
    try {
        writeOut(DecryptString(args.positional.at(1), args.key) + "\n");
    } catch (const RuntimeError& error) {
        throw Failure{"kesta-qbank: the line cannot be deciphered: " + describe(error)};
    }
    return 0;
}

int build(const Arguments& args)
{
    const std::string& sourcePath = args.positional.at(1);
    const std::string source = readInput(sourcePath, MaxSourceBytes);
    std::string bank;
    try {
        bank = BuildBank(source, args.key);
    } catch (const BankSourceError& error) {
        throw failure(sourcePath, error.line(), error.what());
    }
    try {
        // A bank is installed, not shared: it gets the mode the umask gives.
        safefile::replace(*args.output, bank, {.shared = false});
    } catch (const RuntimeError& error) {
        throw failure(*args.output, 0, "cannot be written: " + describe(error));
    }
    return 0;
}

int dump(const Arguments& args)
{
    const std::string& bankPath = args.positional.at(1);
    const std::string bank = readBank(bankPath);
    try {
        writeOut(DumpBank(bank, args.key));
    } catch (const BankSourceError& error) {
        throw failure(bankPath, error.line(), error.what());
    }
    return 0;
}

int check(const Arguments& args)
{
    const std::string& bankPath = args.positional.at(1);
    const std::string bank = readBank(bankPath);
    auto list = std::make_unique<QuestionList>();
    LoadObserver quiet;
    LoadResult result;
    LineDecoder decoder(args.key);
    std::string_view deciphering; // the line being deciphered, to name it when it cannot be
    const LineDecipher decipher = [&](std::string_view line, std::string& text) {
        deciphering = line;
        decoder.decode(line, text);
    };
    try {
        result = LoadQuestionText(bank, *list, quiet, decipher);
    } catch (const RuntimeError& error) {
        throw failure(bankPath, lineOf(bank, deciphering.data()), "cannot be deciphered: " + describe(error));
    }
    if (!result.title)
        throw failure(bankPath, 1, "not a question file: its first line is no title the program can read");
    const std::string& title = *result.title;
    const int count = list->QuestionCount;

    std::string out;
    if (args.json) {
        out += "{\"title\": " + qbank::jsonString(title);
        out += ", \"intro\": " + qbank::jsonString(list->Questions[1].Intro);
        out += ", \"question_count\": " + std::to_string(count);
        out += std::string(", \"corrupt\": ") + (result.corrupt() ? "true" : "false");
        out += ", \"questions\": [";
        for (int k = 1; k <= count; ++k) {
            const QuestionRecord& q = list->Questions[k];
            out += k > 1 ? ", " : "";
            out += "{\"question\": " + qbank::jsonString(q.Question);
            out += ", \"explanation\": " + qbank::jsonString(q.Explanation);
            out += ", \"answer\": " + qbank::jsonString(q.Answer) + "}";
        }
        out += "]}\n";
    } else {
        out += "Title: " + title + "\n";
        out += "Questions: " + std::to_string(count) + "\n";
        out += std::string("Corrupt: ") + (result.corrupt() ? "yes" : "no") + "\n";
        for (const int k : result.badAnswers) {
            out += "  question " + std::to_string(k) + ": the answer " + qbank::jsonString(list->Questions[k].Answer) +
                   " is not exactly one character\n";
        }
        if (result.tooManyQuestions)
            out += "  more than 1000 questions: the blocks past the 1000th run into question 1000\n";
        if (result.tooManyLines)
            out += "  10000 or more lines: every line after line 9999 but the last is lost\n";
    }
    writeOut(out);
    return 0;
}

int run(int argc, char** argv)
{
    const Arguments args = parseArguments(argc, argv);
    if (args.positional.empty())
        throw UsageError{"no command given"};
    const std::string& command = args.positional[0];

    struct Command {
        const char* name;
        std::size_t operands;
        bool output;   // takes -o
        bool json;     // takes --json
        int (*run)(const Arguments&);
    };
    static constexpr Command commands[] = {
        {"encrypt-line", 1, false, false, encryptLine}, {"decrypt-line", 1, false, false, decryptLine},
        {"build", 1, true, false, build},               {"dump", 1, false, false, dump},
        {"check", 1, false, true, check},
    };
    for (const Command& c : commands) {
        if (command != c.name)
            continue;
        if (args.positional.size() != c.operands + 1)
            throw UsageError{command + " takes " + std::to_string(c.operands) + " operand"};
        if (c.output != args.output.has_value())
            throw UsageError{c.output ? command + " needs -o BANK" : "-o belongs to build only"};
        if (args.json && !c.json)
            throw UsageError{"--json belongs to check only"};
        return c.run(args);
    }
    throw UsageError{"unknown command " + command};
}

} // namespace

int main(int argc, char** argv)
{
    // An interrupted build leaves no half-made bank behind, not even hidden.
    safefile::removeTemporaryOnSignals();
    try {
        const int status = run(argc, argv);
        if (std::fflush(stdout) != 0) {
            std::fputs("kesta-qbank: cannot write the output\n", stderr);
            return ExitFailure;
        }
        return status;
    } catch (const UsageError& error) {
        std::fprintf(stderr, "kesta-qbank: %s\n%s", error.message.c_str(), UsageText);
        return ExitUsage;
    } catch (const Failure& error) {
        // FILE:LINE: first, as compilers write it, so editors can jump there.
        std::fprintf(stderr, "%s\n", error.message.c_str());
    } catch (const RuntimeError& error) {
        std::fprintf(stderr, "kesta-qbank: %s\n", describe(error).c_str());
    } catch (const std::bad_alloc&) {
        std::fputs("kesta-qbank: not enough memory\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kesta-qbank: cannot go on: %s\n", error.what());
    }
    return ExitFailure;
}
