// The Aiken and GIFT importers and the exporters: any text imports (the first
// byte picks the format: odd GIFT, even Aiken) to a source that builds (a
// refusal escapes as a crash) into a bank the program can use, with every
// imported question, whether the choices are dealt or kept in order; and
// exporting the loaded bank and importing that again gives the same source.
#include "FuzzTarget.h"
#include "questions/core/BankCheck.h"
#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"
#include "questions/core/Interchange.h"

using namespace kesta;

void fuzz::target(std::string_view input)
{
    if (input.empty())
        return;
    const QuestionFormat format = input.front() % 2 != 0 ? QuestionFormat::Gift : QuestionFormat::Aiken;
    const ImportSettings settings { "KESTA Quiz Demo - Fuzz", {}, true };
    const ImportResult imported = importQuestions(format, input.substr(1), settings);
    const ImportResult dealt = importQuestions(format, input.substr(1), { settings.title, {}, false, 7 });
    auto list = std::make_unique<QuestionList>();
    const BankCheck check = CheckBankText(BuildBank(dealt.source, QuestionPassPhrase), QuestionPassPhrase, *list);
    expect(check.problems.empty() == (dealt.imported > 0) && !check.corrupt && check.questions == imported.imported,
        "a dealt import makes a bank the program cannot use", dealt.source);
    CheckBankText(BuildBank(imported.source, QuestionPassPhrase), QuestionPassPhrase, *list);
    const ExportResult exported = exportQuestions(format, *list);
    expect(exported.exported == imported.imported
            && importQuestions(format, exported.text, settings).source == imported.source,
        "export and import again changes the source", exported.text);
}
