// kesta-qbank import and export: Aiken and GIFT questions in and out.
#include "questions/core/Interchange.h"

#include "common/core/TestKind.h"
#include "questions/core/BankSource.h"
#include "questions/tool/Tool.h"

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
    throw UsageError{"the format is aiken or gift, not " + name};
}

// What was left out, one line each, as the program's own failures name a place.
void reportSkipped(const std::string& path, const std::vector<SkippedQuestion>& skipped)
{
    for (const SkippedQuestion& s : skipped)
        warn(path + ":" + std::to_string(s.line) + ": skipped: " + s.reason);
}

} // namespace

int importQuestions(const Arguments& args)
{
    if (!args.output && !args.sourceOut)
        throw UsageError{"import needs -o BANK, --source-out FILE or both"};
    const QuestionFormat format = formatOf(*args.format);
    const std::string& path = args.operands[0];
    const std::string text = readInput(path, MaxSourceBytes);
    ImportResult result;
    try {
        result = kesta::importQuestions(format, text, {*args.title, args.intro});
    } catch (const std::invalid_argument& error) {
        throw UsageError{error.what()};
    }
    reportSkipped(path, result.skipped);
    if (args.strict && !result.skipped.empty())
        throw failure(path, 0, std::to_string(result.skipped.size()) + " questions skipped; nothing written (--strict)");
    if (!isExamTitle(*args.title) && !isQuizTitle(*args.title))
        warn("kesta-qbank: the title holds neither \"KESTA Exam Demo\" nor \"KESTA Quiz Demo\"; the program "
             "will not list this bank");
    if (args.sourceOut)
        writeOutput(*args.sourceOut, result.source);
    if (args.output) {
        try {
            writeOutput(*args.output, BuildBank(result.source, args.key));
        } catch (const BankSourceError& error) {
            throw failure(*args.output, 0, "the imported questions do not build: line " +
                                               std::to_string(error.line()) + ": " + error.what());
        }
    }
    writeOut(path + ": imported " + std::to_string(result.imported) + " questions, skipped " +
             std::to_string(result.skipped.size()) + "\n");
    return 0;
}

int exportQuestions(const Arguments& args)
{
    const QuestionFormat format = formatOf(*args.format);
    const std::string& path = args.operands[0];
    auto list = std::make_unique<QuestionList>();
    loadBank(path, args.key, *list);
    const ExportResult result = kesta::exportQuestions(format, *list);
    reportSkipped(path, result.skipped);
    writeOut(result.text);
    return 0;
}

} // namespace kesta::qbank
