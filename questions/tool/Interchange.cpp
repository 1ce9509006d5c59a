// kesta-qbank import and export: Aiken and GIFT questions in and out.
#include "questions/core/Interchange.h"

#include "questions/core/BankSource.h"
#include "questions/tool/Tool.h"

#include <charconv>
#include <filesystem>
#include <memory>
#include <stdexcept>

namespace kesta::qbank {

namespace {

QuestionFormat formatOf(const std::string& name)
{
    if (name == "aiken")
        return QuestionFormat::Aiken;
    if (name == "gift")
        return QuestionFormat::Gift;
    throw UsageError { "the format is aiken or gift, not " + name };
}

// What was left out, one line each, as the program's own failures name a place.
void reportSkipped(const std::string& path, const std::vector<SkippedQuestion>& skipped)
{
    for (const SkippedQuestion& s : skipped)
        warn(path + ":" + std::to_string(s.line) + ": skipped: " + s.reason);
}

ImportSettings settingsOf(const Arguments& args)
{
    ImportSettings settings { *args.title, args.intro, args.keepOrder, 0 };
    if (args.seed) {
        if (args.keepOrder)
            throw UsageError { "--seed deals the choices, --keep-order keeps them: give one of them" };
        const std::string& seed = *args.seed;
        const auto [end, error] = std::from_chars(seed.data(), seed.data() + seed.size(), settings.seed);
        if (error != std::errc() || end != seed.data() + seed.size())
            throw UsageError { "--seed takes a whole number from 0 to 18446744073709551615, not " + seed };
    }
    return settings;
}

// Whether two outputs are one file: one path once "./" and links are
// resolved (neither need exist yet), or two names of one existing file.
bool sameFile(const std::string& one, const std::string& other)
{
    namespace fs = std::filesystem;
    std::error_code ignored;
    // Made absolute first: a relative path none of whose parts exists is not resolved at all.
    const auto resolved = [&](const std::string& path) { return fs::weakly_canonical(fs::absolute(path), ignored); };
    const fs::path path = resolved(one);
    return (!path.empty() && path == resolved(other)) || fs::equivalent(one, other, ignored);
}

std::string plural(std::size_t n, const char* noun)
{
    return std::to_string(n) + " " + noun + (n == 1 ? "" : "s");
}

} // namespace

int importQuestions(const Arguments& args)
{
    if (!args.output && !args.sourceOut)
        throw UsageError { "import needs -o BANK, --source-out FILE or both" };
    const QuestionFormat format = formatOf(*args.format);
    const ImportSettings settings = settingsOf(args);
    const std::string& path = args.operands[0];
    guardOutput(args.output, { path });
    guardOutput(args.sourceOut, { path });
    if (args.output && args.sourceOut && sameFile(*args.output, *args.sourceOut))
        throw failure(*args.sourceOut, 0, "is also the bank (-o); give the source another file");
    ImportResult result;
    try {
        result = kesta::importQuestions(format, readInput(path, MaxSourceBytes), settings);
    } catch (const std::invalid_argument& error) {
        throw UsageError { error.what() };
    }
    reportSkipped(path, result.skipped);
    if (args.strict && !result.skipped.empty())
        throw failure(path, 0, plural(result.skipped.size(), "question") + " skipped; nothing written (--strict)");
    if (result.imported == 0 && !args.allowBroken) {
        throw failure(path, 0,
            std::string("no question imported, and a bank needs one; is this ")
                + (format == QuestionFormat::Gift ? "GIFT" : "Aiken") + " text, as --from says?");
    }
    std::string bank;
    try {
        bank = BuildBank(result.source, args.key);
    } catch (const BankSourceError& error) {
        throw failure(
            path, 0, "the imported questions do not build: line " + std::to_string(error.line()) + ": " + error.what());
    }
    const auto list = std::make_unique<QuestionList>();
    if (!mayWrite(path, CheckBankText(bank, args.key, *list), false, args))
        return ExitFailure;
    if (args.sourceOut)
        writeOutput(*args.sourceOut, result.source);
    if (args.output)
        writeOutput(*args.output, bank);
    writeOut(path + ": imported " + plural(static_cast<std::size_t>(result.imported), "question") + ", skipped "
        + std::to_string(result.skipped.size()) + "\n");
    return 0;
}

int exportQuestions(const Arguments& args)
{
    const QuestionFormat format = formatOf(*args.format);
    const std::string& path = args.operands[0];
    auto list = std::make_unique<QuestionList>();
    checkBankFile(path, args.key, *list);
    const ExportResult result = kesta::exportQuestions(format, *list);
    reportSkipped(path, result.skipped);
    writeOut(result.text);
    return 0;
}

} // namespace kesta::qbank
