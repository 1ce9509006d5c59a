// The Aiken and GIFT importers and the exporters: any text imports (the first
// byte picks the format: odd GIFT, even Aiken) to a source that builds (a
// refusal escapes as a crash) and loads with every imported question, and
// exporting the loaded bank and importing that again gives the same source.
#include "FuzzTarget.h"
#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"
#include "questions/core/Interchange.h"
#include "questions/core/QuestionLoader.h"

using namespace kesta;

void fuzz::target(std::string_view input)
{
    if (input.empty())
        return;
    const QuestionFormat format = input.front() % 2 != 0 ? QuestionFormat::Gift : QuestionFormat::Aiken;
    const ImportSettings settings { "KESTA Quiz Demo - Fuzz", {} };
    const ImportResult imported = importQuestions(format, input.substr(1), settings);
    auto list = std::make_unique<QuestionList>();
    LoadObserver quiet;
    const std::string bank = BuildBank(imported.source, QuestionPassPhrase);
    expect(!LoadQuestionText(bank, *list, quiet, decipherWith(QuestionPassPhrase)).corrupt()
            && list->QuestionCount == imported.imported,
        "the built bank does not load every imported question", imported.source);
    const ExportResult exported = exportQuestions(format, *list);
    expect(exported.exported == imported.imported
            && importQuestions(format, exported.text, settings).source == imported.source,
        "export and import again changes the source", exported.text);
}
