#include "app/core/Catalogue.h"

#include "common/core/RuntimeError.h"
#include "common/core/TestKind.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
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
        std::error_code ignored;
        if (entry.is_regular_file(ignored))
            names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
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

std::string readFirstLine(const std::string& path)
{
    // Only the first line is read: the rest of a question file can be large.
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        std::error_code ignored;
        throw err::make(fs::exists(path, ignored) ? err::PathFileAccess : err::FileNotFound);
    }
    std::string line;
    char c = 0;
    bool any = false;
    while (in.get(c)) {
        any = true;
        if (c == '\r' || c == '\n')
            break;
        line.push_back(c);
    }
    if (!any)
        throw err::make(err::InputPastEnd);
    return line;
}

bool hasContent(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return in && in.peek() != std::ifstream::traits_type::eof();
}

} // namespace kesta
