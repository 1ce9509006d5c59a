// kesta-qbank check DIR: what the program's menus will list for a Questions
// folder. The listing, its order and the sorting into menus are the
// catalogue's own code, called here as the program calls it at start.
#include "app/core/Catalogue.h"
#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"
#include "questions/tool/Tool.h"

#include <algorithm>
#include <map>
#include <memory>

namespace kesta::qbank {

namespace {

// A file's title as the program reads it at start, or why it cannot.
struct TitleRead {
    std::string title;
    std::string unreadable; // why the program's reading fails, ending the program
    bool refused = false; // the program lists no test for it, saying nothing
    bool atStart = false; // the program's scan reads it
};

std::string listing(const char* menu, const std::vector<CatalogueHit>& hits, CatalogueKind kind)
{
    std::string text = std::string(menu) + ":\n";
    const std::size_t header = text.size();
    for (const CatalogueHit& hit : hits) {
        if (hit.kind == kind)
            text += "  " + hit.fileName + ": " + hit.title + "\n";
    }
    return text.size() == header ? std::string(menu) + ": none\n" : text;
}

} // namespace

int checkFolder(const Arguments& args)
{
    std::string folder = args.operands[0];
    if (!folder.ends_with('/'))
        folder += '/';
    std::vector<std::string> names;
    try {
        names = listFolderFiles(folder);
    } catch (const RuntimeError&) {
        throw failure(folder, 0, "cannot be listed");
    }
    std::map<std::string, TitleRead> reads;
    bool scanning = true;
    const TitleReader titleOf = [&](const std::string& path) {
        const auto [at, fresh] = reads.try_emplace(path);
        TitleRead& read = at->second;
        read.atStart = read.atStart || scanning;
        std::optional<std::string> line;
        try {
            if (fresh) {
                line = titleLine(path);
                read.refused = !line;
            }
        } catch (const RuntimeError& error) {
            read.unreadable = error.number() == err::InputPastEnd ? "it is empty" : "it cannot be opened";
        }
        try {
            if (line)
                read.title = DecryptString(*line, args.key);
        } catch (const RuntimeError&) {
            read.unreadable = "its first line cannot be deciphered";
        }
        return read.title;
    };
    const std::vector<CatalogueHit> hits = classifyFiles(folder, names, titleOf);
    scanning = false;

    std::string notListed;
    std::vector<std::string> problems;
    std::map<std::string, std::string> titles; // title -> the first listed file that has it
    int exams = 0;
    int quizzes = 0;
    for (const std::string& name : names) {
        const std::string path = folder + name;
        const auto listed = [&](CatalogueKind kind) {
            return std::any_of(
                hits.begin(), hits.end(), [&](const CatalogueHit& h) { return h.fileName == name && h.kind == kind; });
        };
        bool exam = false;
        bool quiz = false;
        for (const CatalogueHit& own : classifyFiles(folder, { name }, titleOf))
            (own.kind == CatalogueKind::Exam ? exam : quiz) = true;
        const TitleRead& read = reads[path];
        if (!read.unreadable.empty()) {
            notListed += "  " + name + ": cannot be read: " + read.unreadable
                + (read.atStart ? "; the program stops at start with an error when it reads it\n" : "\n");
            continue;
        }
        if (read.refused) {
            notListed += "  " + name + ": not a regular file nor a link to one, or larger than a bank may be\n";
            continue;
        }
        if (!exam && !quiz)
            notListed += "  " + name + ": no menu in its title " + Quoted(read.title) + "\n";
        if (exam && ++exams > ExamSlots && !listed(CatalogueKind::Exam))
            notListed += "  " + name + ": past the " + std::to_string(ExamSlots) + " exams Select Exam shows\n";
        if (quiz && ++quizzes > QuizSlots && !listed(CatalogueKind::Quiz))
            notListed
                += "  " + name + ": past the " + std::to_string(QuizSlots) + " quizzes Select Domain Quiz shows\n";
        if ((listed(CatalogueKind::Exam) || listed(CatalogueKind::Quiz))
            && !titles.try_emplace(read.title, name).second) {
            problems.push_back(path + ": has the title of " + titles[read.title]
                + "; the menus cannot tell them apart: give one of them another title");
        }
        try {
            const auto list = std::make_unique<QuestionList>();
            for (const BankProblem& problem : checkBankFile(path, args.key, *list, safefile::Links::Follow).problems)
                problems.push_back(problemLine(path, problem, false));
        } catch (const Failure& failure) {
            problems.push_back(failure.message);
        }
    }
    std::string out
        = listing("Select Exam", hits, CatalogueKind::Exam) + listing("Select Domain Quiz", hits, CatalogueKind::Quiz);
    if (!notListed.empty())
        out += "Not listed:\n" + notListed;
    if (!problems.empty())
        out += "Problems:\n";
    for (const std::string& problem : problems)
        out += "  " + problem + "\n";
    writeOut(out);
    return notListed.empty() && problems.empty() ? 0 : ExitFailure;
}

} // namespace kesta::qbank
