#include "app/core/Catalogue.h"

#include "common/core/RuntimeError.h"
#include "common/core/SafeFile.h"
#include "common/core/TestKind.h"
#include "questions/core/QuestionLoader.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace kesta {

namespace fs = std::filesystem;

std::vector<std::string> listFolderFiles(const std::string& folder)
{
    std::error_code code;
    if (!fs::is_directory(folder, code))
        throw err::make(err::PathNotFound);
    std::vector<std::string> names;
    fs::directory_iterator it(folder, code);
    if (code)
        throw err::make(err::PathFileAccess);
    for (const fs::directory_entry& entry : it) {
        std::string name = entry.path().filename().string();
        std::error_code ignored;
        if (name.front() != '.' && entry.is_regular_file(ignored))
            names.push_back(std::move(name));
    }
    std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
        const std::string la = lowerAscii(a), lb = lowerAscii(b);
        return la != lb ? la < lb : a < b;
    });
    return names;
}

std::vector<CatalogueHit> classifyFiles(const std::string& folderspec, const std::vector<std::string>& fileNames,
                                        const TitleReader& titleOf)
{
    std::vector<CatalogueHit> hits;
    int exams = 0;
    int quizzes = 0;
    for (const std::string& name : fileNames) {
        if (exams >= ExamSlots && quizzes >= QuizSlots)
            break;
        const std::string title = titleOf(folderspec + name);
        if (exams < ExamSlots && isExamTitle(title))
            hits.push_back({CatalogueKind::Exam, exams++, name, title});
        if (quizzes < QuizSlots && isQuizTitle(title))
            hits.push_back({CatalogueKind::Quiz, quizzes++, name, title});
    }
    return hits;
}

void fillCatalogues(Catalogues& catalogues, const std::vector<CatalogueHit>& hits)
{
    catalogues.ExamCatalogue.erase();
    catalogues.QuizCatalogue.erase();
    for (const CatalogueHit& hit : hits) {
        CatalogueEntry entry{hit.fileName, hit.title};
        if (hit.kind == CatalogueKind::Exam)
            catalogues.ExamCatalogue[hit.index] = std::move(entry);
        else
            catalogues.QuizCatalogue[hit.index] = std::move(entry);
    }
}

std::optional<std::string> titleLine(const std::string& path)
{
    // A title is short; only the first line is read, however large the file.
    constexpr std::size_t TitleLimit = 64 * 1024;
    try {
        // The question folder is its owner's alone: a bank linked into it is read.
        return safefile::readFirstLine(path, TitleLimit, MaxBankBytes, safefile::Links::Follow);
    } catch (const safefile::Refused&) {
        return std::nullopt;
    }
}

} // namespace kesta
