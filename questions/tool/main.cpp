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
#include <filesystem>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <sys/stat.h>
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace kesta::qbank {

namespace {

constexpr int ExitUsage = 2;

constexpr const char* VersionText = "kesta-qbank (KESTA DEMO) " KESTA_VERSION "\n";

constexpr const char* UsageText = "usage: kesta-qbank [--key PHRASE] COMMAND [ARGUMENTS]\n"
                                  "       kesta-qbank help [COMMAND] | -h | --help | --version\n"
                                  "\n"
                                  "Builds and checks the question files (banks) of KESTA DEMO.\n"
                                  "\n"
                                  "Commands:\n";

constexpr const char* OptionsText
    = "\n"
      "Options:\n"
      "  --key PHRASE       the pass phrase, when it is not the program's own\n"
      "  -o, --output BANK  the bank to write: never the input itself, a device, a pipe or a folder\n"
      "  --allow-broken     write the bank even when the program could not use it (for tests)\n"
      "  --json             (check) print every loaded field as JSON\n"
      "  --from FORMAT      (import) aiken or gift: the format of INPUT\n"
      "  --to FORMAT        (export) aiken or gift: the format to print\n"
      "  --title TITLE      (import) the bank's title: \"KESTA Exam Demo\" or \"KESTA Quiz Demo\" in it picks the "
      "menu\n"
      "  --intro LINE       (import) a paragraph of the first page; up to three\n"
      "  --source-out FILE  (import) write the bank's source to FILE\n"
      "  --seed N           (import) deal the choices another way, the same each time for one N\n"
      "  --keep-order       (import) keep the choices in the order INPUT gives them\n"
      "  --strict           (import) fail when a question is skipped\n"
      "  -h, --help         print this help, or a command's with it\n"
      "  --version          print the version\n"
      "\n"
      "Exit status: 0 done; 1 a problem in the input, and nothing written; 2 a wrong command line.\n"
      "'kesta-qbank help COMMAND' tells more; docs/question-banks.md tells how to write a bank.\n";

struct Command {
    const char* name;
    const char* synopsis; // the command line after the tool's name
    const char* summary; // one line for the list of commands
    const char* details; // for help COMMAND
    std::size_t operands;
    std::vector<std::string> options; // the options it takes besides --key
    std::vector<std::string> required;
    int (*run)(const Arguments&);
};

int encryptLine(const Arguments& args)
{
    if (args.operands[0].empty())
        throw Failure { "kesta-qbank: an empty text has no enciphered form" };
    writeOut(EncryptString(args.operands[0], args.key) + "\n");
    return 0;
}

int decryptLine(const Arguments& args)
{
    try {
        writeOut(DecryptString(args.operands[0], args.key) + "\n");
    } catch (const RuntimeError&) {
        throw Failure { "kesta-qbank: the line cannot be deciphered: it " + WhyUndecipherable(args.operands[0]) };
    }
    return 0;
}

int build(const Arguments& args)
{
    const std::string& path = args.operands[0];
    guardOutput(args.output, { path });
    std::string source = readInput(path, MaxSourceBytes);
    std::string bank;
    try {
        bank = BuildBank(source, args.key);
    } catch (const BankSourceError& error) {
        throw failure(path, error.line(), error.what());
    }
    std::string().swap(source);
    const auto list = std::make_unique<QuestionList>();
    if (!mayWrite(path, CheckBankText(bank, args.key, *list), true, args))
        return ExitFailure;
    writeOutput(*args.output, bank);
    return 0;
}

int dump(const Arguments& args)
{
    const std::string& path = args.operands[0];
    const std::string bank = readInput(path, MaxBankBytes);
    if (bank.empty())
        throw failure(path, 0, "empty; not a question file");
    try {
        writeOut(DumpBank(bank, args.key));
    } catch (const BankSourceError& error) {
        throw failure(path, error.line(), error.what());
    }
    return 0;
}

// The menus a bank's title puts it in, each as `quote` encloses it.
std::string menusOf(const BankCheck& check, const char* quote, const char* none)
{
    std::vector<std::string> menus;
    if (check.exam)
        menus.push_back(quote + std::string("Select Exam") + quote);
    if (check.quiz)
        menus.push_back(quote + std::string("Select Domain Quiz") + quote);
    std::string text = menus.empty() ? none : menus.front();
    return menus.size() > 1 ? text + ", " + menus.back() : text;
}

int check(const Arguments& args)
{
    const std::string& path = args.operands[0];
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        if (args.json)
            throw UsageError { "--json reports one bank, not a folder" };
        return checkFolder(args);
    }
    const auto list = std::make_unique<QuestionList>();
    const BankCheck result = checkBankFile(path, args.key, *list);
    std::string out;
    if (args.json) {
        out += "{\"title\": " + jsonString(result.title);
        out += ", \"menus\": [" + menusOf(result, "\"", "") + "]";
        out += ", \"intro\": " + jsonString(list->Questions[1].Intro);
        out += ", \"question_count\": " + std::to_string(result.questions);
        out += std::string(", \"corrupt\": ") + (result.corrupt ? "true" : "false");
        out += ", \"problems\": [";
        for (const BankProblem& p : result.problems) {
            out += &p == result.problems.data() ? "" : ", ";
            out += "{\"line\": " + std::to_string(p.line) + ", \"question\": " + std::to_string(p.question)
                + ", \"text\": " + jsonString(p.text) + "}";
        }
        out += "], \"questions\": [";
        for (int k = 1; k <= result.questions; ++k) {
            const QuestionRecord& q = list->Questions[k];
            out += k > 1 ? ", " : "";
            out += "{\"question\": " + jsonString(q.Question);
            out += ", \"explanation\": " + jsonString(q.Explanation);
            out += ", \"answer\": " + jsonString(q.Answer) + "}";
        }
        out += "]}\n";
    } else {
        out += "Title: " + result.title + "\n";
        out += "Menu: " + menusOf(result, "", "none") + "\n";
        out += "Questions: " + std::to_string(result.questions) + "\n";
        out += std::string("Corrupt: ") + (result.corrupt ? "yes" : "no") + "\n";
        for (const BankProblem& problem : result.problems)
            out += problemLine(path, problem, false) + "\n";
    }
    writeOut(out);
    return result.problems.empty() ? 0 : ExitFailure;
}

const std::vector<Command>& commands()
{
    static const std::vector<Command> all = {
        { "build", "build SOURCE -o BANK [--allow-broken]", "encipher a plain-text source into a bank",
            "Enciphers SOURCE into BANK, line for line, after checking that the program can use the bank: a title\n"
            "that puts it in a menu, at least one question, every answer one letter a to d, a complete last question,\n"
            "at most 1000 questions and fewer than 10,000 lines. Each problem is one line SOURCE:LINE: on standard\n"
            "error, and then no bank is written; --allow-broken writes it all the same.\n",
            1, { "-o", "--output", "--allow-broken" }, { "-o" }, build },
        { "check", "check [--json] BANK | check DIR", "report whether the program can use a bank, or a folder of them",
            "For a BANK: loads it once as the program does and prints its title, the menu it goes into, the number\n"
            "of questions, whether the program will call it corrupt, and one line per problem, by question number;\n"
            "--json prints every loaded field as well.\n"
            "For a DIR (a Questions folder): prints what the program's menus will list, in the program's order, the\n"
            "banks they leave out and why, titles used twice, and each bank's problems.\n"
            "The status is 1 when anything keeps a bank from working or from being listed.\n",
            1, { "--json" }, {}, check },
        { "dump", "dump BANK", "print the source of a bank",
            "Prints the source BANK was built from; building it again gives the same bank.\n", 1, {}, {}, dump },
        { "import",
            "import --from aiken|gift INPUT --title TITLE [-o BANK] [--source-out FILE] [--intro LINE]...\n"
            "         [--seed N | --keep-order] [--strict] [--allow-broken]",
            "make a bank of Aiken or GIFT questions",
            "Makes BANK, its source FILE, or both of the multiple-choice questions in INPUT. A question the program\n"
            "cannot show is left out, with a line INPUT:LINE: skipped: why; --strict makes that a failure.\n"
            "TITLE must hold \"KESTA Exam Demo\" or \"KESTA Quiz Demo\" to put the bank in a menu; up to three\n"
            "--intro lines (HTML) make the first page. The choices are dealt so that the right answers fall on each\n"
            "letter about equally, the same each time; --seed N deals them otherwise, --keep-order not at all.\n"
            "The bank is checked as build checks it.\n",
            1,
            { "--from", "-o", "--output", "--title", "--intro", "--source-out", "--seed", "--keep-order", "--strict",
                "--allow-broken" },
            { "--from", "--title" }, qbank::importQuestions },
        { "export", "export --to aiken|gift BANK", "print a bank's questions as Aiken or GIFT text",
            "Prints the questions of BANK as Aiken or GIFT text; a question it cannot take apart is reported.\n", 1,
            { "--to" }, { "--to" }, qbank::exportQuestions },
        { "encrypt-line", "encrypt-line TEXT", "print TEXT enciphered as one line of a bank",
            "Prints TEXT enciphered as one line of a bank, in hexadecimal digits.\n", 1, {}, {}, encryptLine },
        { "decrypt-line", "decrypt-line HEX", "print the text of one enciphered line",
            "Prints the text of one enciphered line of a bank (without its marker '#').\n", 1, {}, {}, decryptLine },
    };
    return all;
}

std::string helpText(const std::string& topic)
{
    std::string text;
    for (const Command& c : commands()) {
        if (topic == c.name)
            return "usage: kesta-qbank [--key PHRASE] " + std::string(c.synopsis) + "\n\n" + c.details;
        text += "  " + std::string(c.synopsis) + "\n      " + c.summary + "\n";
    }
    if (!topic.empty())
        throw UsageError { "there is no command " + topic };
    return UsageText + text + OptionsText;
}

Arguments parseArguments(int argc, char** argv)
{
    Arguments args;
    args.key = QuestionPassPhrase;
    bool optionsEnded = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&] {
            if (i + 1 >= argc)
                throw UsageError { arg + " needs a value" };
            return std::string(argv[++i]);
        };
        auto once = [&](std::optional<std::string>& slot) {
            if (slot)
                throw UsageError { arg + " given twice" };
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
        else if (arg == "--seed")
            once(args.seed);
        else if (arg == "--intro")
            args.intro.push_back(value());
        else if (arg == "--json")
            args.json = true;
        else if (arg == "--strict")
            args.strict = true;
        else if (arg == "--keep-order")
            args.keepOrder = true;
        else if (arg == "--allow-broken")
            args.allowBroken = true;
        else if (arg == "-h" || arg == "--help")
            args.help = true;
        else if (arg == "--version")
            args.version = true;
        else
            throw UsageError { "unknown option " + arg };
    }
    // An empty pass phrase leaves the cipher without a key: every line would decipher to nothing.
    if (args.key.empty())
        throw UsageError { "--key needs a non-empty pass phrase" };
    return args;
}

int run(int argc, char** argv)
{
    const Arguments args = parseArguments(argc, argv);
    if (args.version) {
        writeOut(VersionText);
        return 0;
    }
    if (args.help || args.command == "help") {
        if (args.command == "help" && args.operands.size() > 1)
            throw UsageError { "help takes one command" };
        const std::string topic = args.command != "help" ? args.command : args.operands.empty() ? "" : args.operands[0];
        writeOut(helpText(topic));
        return 0;
    }
    if (args.command.empty())
        throw UsageError { "no command given" };
    for (const Command& c : commands()) {
        if (args.command != c.name)
            continue;
        if (args.operands.size() != c.operands)
            throw UsageError { args.command + " takes " + std::to_string(c.operands) + " operand" };
        for (const std::string& option : args.options) {
            if (option != "--" && option != "--key"
                && std::find(c.options.begin(), c.options.end(), option) == c.options.end())
                throw UsageError { option + " does not belong to " + args.command };
        }
        for (const std::string& option : c.required) {
            const bool given = std::find(args.options.begin(), args.options.end(), option) != args.options.end()
                || (option == "-o" && args.output);
            if (!given)
                throw UsageError { args.command + " needs " + option };
        }
        return c.run(args);
    }
    throw UsageError { "unknown command " + args.command };
}

// Names what a failed read met, in a user's words.
Failure unreadable(const std::string& path, std::size_t limit, const RuntimeError& error)
{
    if (dynamic_cast<const safefile::Refused*>(&error) != nullptr)
        return failure(path, 0, "not a regular file (a link, a pipe or a device); nothing was read");
    switch (error.number()) {
    case err::SubscriptOutOfRange:
        return failure(path, 0, "larger than " + std::to_string(limit >> 20) + " MiB; not read");
    case err::FileNotFound:
        return failure(path, 0, "no such file");
    case err::PathNotFound:
        return failure(path, 0, "no such folder");
    default:
        return failure(path, 0, "cannot be read (no permission?)");
    }
}

} // namespace

Failure failure(const std::string& path, int line, const std::string& message)
{
    std::string text = path;
    if (line > 0)
        text.append(":").append(std::to_string(line));
    return Failure { text.append(": ").append(message) };
}

std::string readInput(const std::string& path, std::size_t limit)
{
    try {
        return safefile::read(path, limit);
    } catch (const RuntimeError& error) {
        throw unreadable(path, limit, error);
    }
}

BankCheck checkBankFile(const std::string& path, const std::string& key, QuestionList& list, safefile::Links links)
{
    try {
        if (!safefile::hasContent(path) && std::filesystem::is_regular_file(std::filesystem::symlink_status(path)))
            throw failure(path, 0, "empty; not a question file");
        return CheckBankFile(path, key, list, links);
    } catch (const BankSourceError& error) {
        throw failure(path, error.line(), error.what());
    } catch (const RuntimeError& error) {
        throw unreadable(path, MaxBankBytes, error);
    }
}

std::string problemLine(const std::string& path, const BankProblem& problem, bool bySourceLine)
{
    if (bySourceLine)
        return failure(path, problem.line, problem.text).message;
    if (problem.question > 0)
        return path + ": question " + std::to_string(problem.question) + ": " + problem.text;
    return path + ": " + problem.text;
}

bool mayWrite(const std::string& path, const BankCheck& check, bool bySourceLine, const Arguments& args)
{
    for (const BankProblem& problem : check.problems)
        warn(problemLine(path, problem, bySourceLine));
    if (check.problems.empty() || args.allowBroken)
        return true;
    warn("kesta-qbank: no bank written: the program could not use it (--allow-broken writes it all the same)");
    return false;
}

void guardOutput(const std::optional<std::string>& path, const std::vector<std::string>& inputs)
{
    struct stat named { };
    if (!path || ::lstat(path->c_str(), &named) != 0)
        return; // a new file
    struct stat target { };
    const bool reached = ::stat(path->c_str(), &target) == 0; // through a link, what it leads to
    if (reached && S_ISDIR(target.st_mode))
        throw failure(*path, 0, "is a folder; give the name of the file to write");
    if ((!S_ISREG(named.st_mode) && !S_ISLNK(named.st_mode)) || (reached && !S_ISREG(target.st_mode)))
        throw failure(*path, 0, "is not a regular file (a device, a pipe or a socket); give a file to write");
    for (const std::string& input : inputs) {
        struct stat read { };
        if (reached && ::stat(input.c_str(), &read) == 0 && read.st_dev == target.st_dev
            && read.st_ino == target.st_ino)
            throw failure(*path, 0, "is " + input + ", the input itself; give another file to write");
    }
}

void writeOutput(const std::string& path, std::string_view bytes)
{
    try {
        // A bank is installed, not shared: it gets the mode the umask gives.
        safefile::replace(path, bytes, { .shared = false });
    } catch (const RuntimeError& error) {
        throw failure(path, 0,
            error.number() == err::PathNotFound ? "cannot be written: no such folder"
                                                : "cannot be written (no permission, or the disk is full?)");
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
#ifdef __GLIBC__
    // A bank's lines can be megabytes long, each held a few times over while
    // it is enciphered and checked. Buffers that large are given back to the
    // system when freed, so that they do not add up into the peak.
    mallopt(M_MMAP_THRESHOLD, 1 << 20);
#endif
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
        std::fprintf(stderr, "kesta-qbank: %s\nTry 'kesta-qbank --help'.\n", error.message.c_str());
        return ExitUsage;
    } catch (const Failure& error) {
        // FILE:LINE: first, as compilers write it, so editors can jump there.
        std::fprintf(stderr, "%s\n", error.message.c_str());
    } catch (const std::bad_alloc&) {
        std::fputs("kesta-qbank: not enough memory\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kesta-qbank: cannot go on: %s\n", error.what());
    }
    return ExitFailure;
}
