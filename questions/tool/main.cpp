// kesta-qbank: enciphers, deciphers, builds, dumps, checks, imports and
// exports question files with the same core the program loads them with.
#include "common/core/SafeFile.h"
#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"
#include "questions/tool/Json.h"
#include "questions/tool/Tool.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <optional>

namespace kesta::qbank {

namespace {

constexpr int ExitFailure = 1;
constexpr int ExitUsage = 2;

constexpr const char* UsageText =
    "usage: kesta-qbank [--key PHRASE] COMMAND ...\n"
    "  encrypt-line TEXT         print TEXT enciphered as one question-file line\n"
    "  decrypt-line HEX          print the text of one enciphered line\n"
    "  build SOURCE -o BANK      encipher a plain-text source into a question file\n"
    "  dump BANK                 print the source of a question file\n"
    "  check [--json] BANK       load a question file as the program does and report it\n"
    "  import --from aiken|gift SOURCE -o BANK --title TITLE [--intro LINE]... [--source-out FILE] [--strict]\n"
    "                            make a question file of Aiken or GIFT questions\n"
    "  export --to aiken|gift BANK\n"
    "                            print a question file's questions as Aiken or GIFT text\n"
    "  --key PHRASE              use PHRASE instead of the program's pass phrase\n";

Arguments parseArguments(int argc, char** argv)
{
    Arguments args;
    args.key = QuestionPassPhrase;
    bool optionsEnded = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&] {
            if (i + 1 >= argc)
                throw UsageError{arg + " needs a value"};
            return std::string(argv[++i]);
        };
        auto once = [&](std::optional<std::string>& slot) {
            if (slot)
                throw UsageError{arg + " given twice"};
            slot = value();
        };
        if (optionsEnded || arg.empty() || arg[0] != '-' || arg == "-") {
            (args.command.empty() ? args.command : args.operands.emplace_back()) = arg;
            continue;
        }
        const std::string name = arg.substr(0, arg.find('='));
        args.options.push_back(name);
        if (arg == "--")
            optionsEnded = true;
        else if (arg == "--key")
            args.key = value();
        else if (name == "--key")
            args.key = arg.substr(6);
        else if (arg == "-o" || arg == "--output")
            once(args.output);
        else if (arg == "--from" || arg == "--to")
            once(args.format);
        else if (arg == "--title")
            once(args.title);
        else if (arg == "--source-out")
            once(args.sourceOut);
        else if (arg == "--intro")
            args.intro.push_back(value());
        else if (arg == "--json")
            args.json = true;
        else if (arg == "--strict")
            args.strict = true;
        else
            throw UsageError{"unknown option " + arg};
    }
    // An empty pass phrase leaves the cipher without a key: every line would decipher to nothing.
    if (args.key.empty())
        throw UsageError{"--key needs a non-empty pass phrase"};
    return args;
}

int encryptLine(const Arguments& args)
{
    if (args.operands[0].empty())
        throw Failure{"kesta-qbank: an empty text has no enciphered form"};
    writeOut(EncryptString(args.operands[0], args.key) + "\n");
    return 0;
}

int decryptLine(const Arguments& args)
{
    try {
        writeOut(DecryptString(args.operands[0], args.key) + "\n");
    } catch (const RuntimeError& error) {
        throw Failure{"kesta-qbank: the line cannot be deciphered: " + describe(error)};
    }
    return 0;
}

int build(const Arguments& args)
{
    const std::string& sourcePath = args.operands[0];
    const std::string source = readInput(sourcePath, MaxSourceBytes);
    std::string bank;
    try {
        bank = BuildBank(source, args.key);
    } catch (const BankSourceError& error) {
        throw failure(sourcePath, error.line(), error.what());
    }
    writeOutput(*args.output, bank);
    return 0;
}

int dump(const Arguments& args)
{
    const std::string& bankPath = args.operands[0];
    const std::string bank = readInput(bankPath, MaxBankBytes);
    if (bank.empty())
        throw failure(bankPath, 0, "empty; not a question file");
    try {
        writeOut(DumpBank(bank, args.key));
    } catch (const BankSourceError& error) {
        throw failure(bankPath, error.line(), error.what());
    }
    return 0;
}

int check(const Arguments& args)
{
    auto list = std::make_unique<QuestionList>();
    const LoadResult result = loadBank(args.operands[0], args.key, *list);
    const int count = list->QuestionCount;
    std::string out;
    if (args.json) {
        out += "{\"title\": " + jsonString(*result.title);
        out += ", \"intro\": " + jsonString(list->Questions[1].Intro);
        out += ", \"question_count\": " + std::to_string(count);
        out += std::string(", \"corrupt\": ") + (result.corrupt() ? "true" : "false");
        out += ", \"questions\": [";
        for (int k = 1; k <= count; ++k) {
            const QuestionRecord& q = list->Questions[k];
            out += k > 1 ? ", " : "";
            out += "{\"question\": " + jsonString(q.Question);
            out += ", \"explanation\": " + jsonString(q.Explanation);
            out += ", \"answer\": " + jsonString(q.Answer) + "}";
        }
        out += "]}\n";
    } else {
        out += "Title: " + *result.title + "\n";
        out += "Questions: " + std::to_string(count) + "\n";
        out += std::string("Corrupt: ") + (result.corrupt() ? "yes" : "no") + "\n";
        for (const int k : result.badAnswers) {
            out += "  question " + std::to_string(k) + ": the answer " + jsonString(list->Questions[k].Answer) +
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
    if (args.command.empty())
        throw UsageError{"no command given"};

    struct Command {
        const char* name;
        std::size_t operands;
        std::vector<std::string> options; // the options it takes besides --key
        std::vector<std::string> required;
        int (*run)(const Arguments&);
    };
    static const Command commands[] = {
        {"encrypt-line", 1, {}, {}, encryptLine},
        {"decrypt-line", 1, {}, {}, decryptLine},
        {"build", 1, {"-o", "--output"}, {"-o"}, build},
        {"dump", 1, {}, {}, dump},
        {"check", 1, {"--json"}, {}, check},
        {"import", 1, {"--from", "-o", "--output", "--title", "--intro", "--source-out", "--strict"},
         {"--from", "--title"}, qbank::importQuestions},
        {"export", 1, {"--to"}, {"--to"}, qbank::exportQuestions},
    };
    for (const Command& c : commands) {
        if (args.command != c.name)
            continue;
        if (args.operands.size() != c.operands)
            throw UsageError{args.command + " takes " + std::to_string(c.operands) + " operand"};
        for (const std::string& option : args.options) {
            if (option != "--" && option != "--key" && std::find(c.options.begin(), c.options.end(), option) == c.options.end())
                throw UsageError{option + " does not belong to " + args.command};
        }
        for (const std::string& option : c.required) {
            const bool given = std::find(args.options.begin(), args.options.end(), option) != args.options.end() ||
                               (option == "-o" && args.output);
            if (!given)
                throw UsageError{args.command + " needs " + option};
        }
        return c.run(args);
    }
    throw UsageError{"unknown command " + args.command};
}

} // namespace

Failure failure(const std::string& path, int line, const std::string& message)
{
    std::string text = path;
    if (line > 0)
        text.append(":").append(std::to_string(line));
    return Failure{text.append(": ").append(message)};
}

std::string describe(const RuntimeError& error)
{
    return "run-time error " + std::to_string(error.number()) + " (" + error.description() + ")";
}

// Runs `open`, which opens `path`, turning its failure into one line naming the file.
void opening(const std::string& path, std::size_t limit, const std::function<void()>& open)
{
    try {
        open();
    } catch (const safefile::Refused&) {
        throw failure(path, 0, "not a regular file (a link, a pipe or a device); nothing was read");
    } catch (const RuntimeError& error) {
        if (error.number() == err::SubscriptOutOfRange)
            throw failure(path, 0, "larger than " + std::to_string(limit >> 20) + " MiB; not read");
        throw failure(path, 0, "cannot be read (" + error.description() + ")");
    }
}

std::string readInput(const std::string& path, std::size_t limit)
{
    std::string bytes;
    opening(path, limit, [&] { bytes = safefile::read(path, limit); });
    return bytes;
}

LoadResult loadBank(const std::string& path, const std::string& key, QuestionList& list)
{
    std::optional<FileLines> lines;
    opening(path, MaxBankBytes, [&] { lines.emplace(path, MaxBankBytes); });
    if (lines->empty())
        throw failure(path, 0, "empty; not a question file");
    LineDecoder decoder(key);
    const LineDecipher decipher = [&](std::string_view line, std::string& text) { decoder.decode(line, text); };
    LoadObserver quiet;
    LoadResult result;
    try {
        result = LoadQuestionLines(*lines, list, quiet, decipher);
    } catch (const RuntimeError& error) {
        throw failure(path, lines->number(), "cannot be deciphered: " + describe(error));
    }
    if (!result.title)
        throw failure(path, 1, "not a question file: its first line is no title the program can read");
    return result;
}

void writeOutput(const std::string& path, std::string_view bytes)
{
    try {
        // A bank is installed, not shared: it gets the mode the umask gives.
        safefile::replace(path, bytes, {.shared = false});
    } catch (const RuntimeError& error) {
        throw failure(path, 0, "cannot be written: " + describe(error));
    }
}

void writeOut(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void warn(const std::string& line)
{
    std::fprintf(stderr, "%s\n", line.c_str());
}

} // namespace kesta::qbank

int main(int argc, char** argv)
{
    using namespace kesta::qbank;
    // An interrupted build leaves no half-made bank behind, not even hidden.
    kesta::safefile::removeTemporaryOnSignals();
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
    } catch (const kesta::RuntimeError& error) {
        std::fprintf(stderr, "kesta-qbank: %s\n", describe(error).c_str());
    } catch (const std::bad_alloc&) {
        std::fputs("kesta-qbank: not enough memory\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kesta-qbank: cannot go on: %s\n", error.what());
    }
    return ExitFailure;
}
