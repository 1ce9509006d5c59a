// Fuzzes the Aiken and GIFT importers and the exporters.
//
// Contract: any text imports (the first byte picks the format: odd, as "1",
// for GIFT, even, as "0", for Aiken), the source it gives builds and loads
// with every imported question, and exporting the loaded bank and importing
// that again gives the same source.
#include "fuzz/FuzzTarget.h"
#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"
#include "questions/core/Interchange.h"
#include "questions/core/QuestionLoader.h"

#include <memory>
#include <string>

void kesta::fuzz::target(std::string_view input)
{
    if (input.empty())
        return;
    const QuestionFormat format = input.front() % 2 != 0 ? QuestionFormat::Gift : QuestionFormat::Aiken;
    const ImportSettings settings { "KESTA Quiz Demo - Fuzz", {} };
    const ImportResult imported = importQuestions(format, input.substr(1), settings);
    std::string bank;
    try {
        bank = BuildBank(imported.source, QuestionPassPhrase);
    } catch (const BankSourceError& error) {
        fail("an imported source is refused", error.what());
    }
    // The loader reads a path: an unnamed temporary file, reached through /proc.
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), &std::fclose);
    expect(file && std::fwrite(bank.data(), 1, bank.size(), file.get()) == bank.size() && std::fflush(file.get()) == 0,
        "cannot write the temporary bank");
    auto list = std::make_unique<QuestionList>();
    LoadObserver quiet;
    const std::string path = "/proc/self/fd/" + std::to_string(fileno(file.get()));
    expect(!LoadQuestionFile(path, *list, quiet, decipherWith(std::string(QuestionPassPhrase))).corrupt()
            && list->QuestionCount == imported.imported,
        "the built bank does not load every imported question", imported.source);
    const ExportResult exported = exportQuestions(format, *list);
    expect(exported.exported == imported.imported, "an imported question does not export",
        exported.skipped.empty() ? "" : exported.skipped.front().reason);
    expect(importQuestions(format, exported.text, settings).source == imported.source,
        "export and import again changes the source", exported.text);
}
