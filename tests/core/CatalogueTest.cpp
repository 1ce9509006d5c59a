#include "app/core/Catalogue.h"

#include "support/Checks.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

namespace kesta {
namespace {

using test::writeFile;

// Classifies `files` whose titles come from `titles`.
std::string classify(const std::vector<std::string>& files, const std::map<std::string, std::string>& titles)
{
    Catalogues c;
    const auto hits = classifyFiles("/q/", files,
        [&](const std::string& path) { return titles.at(path.substr(path.rfind('/') + 1)); });
    c.ExamCatalogue[30].FileName = c.QuizCatalogue[10].FileName = "stale";
    fillCatalogues(c, hits);
    std::string out;
    for (const CatalogueHit& hit : hits)
        out += (hit.kind == CatalogueKind::Exam ? "exam " : "quiz ") + std::to_string(hit.index) + " " + hit.fileName + ", ";
    return out + c.ExamCatalogue[hits.empty() ? 0 : hits.front().index].Title + "|" + c.ExamCatalogue[30].FileName +
           "|" + c.QuizCatalogue[10].FileName;
}

TEST(CatalogueTest, TitlesDecideTheKindInAnyCaseAndOnlyThirtyOneExamsAndElevenQuizzesAreTaken)
{
    EXPECT_EQ(classify({"a", "b", "c", "d", "quiz-named"}, {{"a", "KESTA Exam Demo 3"}, {"b", "kesta quiz demo 1"},
                                                            {"c", "Kesta Exam Demo and KESTA QUIZ DEMO"},
                                                            {"d", "Release notes"}, {"quiz-named", "kEsTa ExAm DeMo 7"}}),
              "exam 0 a, quiz 0 b, exam 1 c, quiz 1 c, exam 2 quiz-named, KESTA Exam Demo 3||");
    std::vector<std::string> files;
    std::map<std::string, std::string> titles;
    for (int i = 10; i < 54; ++i) {
        files.push_back(std::to_string(i));
        titles[files.back()] = i < 42 ? "KESTA Exam Demo" : "KESTA Quiz Demo";
    }
    const std::string all = classify(files, titles);
    EXPECT_EQ(all.substr(all.find("exam 30")), "exam 30 40, quiz 0 42, quiz 1 43, quiz 2 44, quiz 3 45, quiz 4 46, "
                                               "quiz 5 47, quiz 6 48, quiz 7 49, quiz 8 50, quiz 9 51, quiz 10 52, "
                                               "KESTA Exam Demo|40|52");
}

TEST(CatalogueTest, TheFolderListsRegularVisibleFilesByNameWithoutRegardToCase)
{
    test::TempDir dir;
    for (const char* name : {"m.kqb", "C.kqb", "b.kqb", "B.kqb", "a.kqb", "10.kqb", "9.kqb", ".hidden.kqb"})
        writeFile(dir / name, "x");
    std::filesystem::create_directories(dir / "sub");
    // A link is what it leads to: the owner links banks in, but only a regular file is listed.
    for (const char* target : {"m.kqb", "missing", "sub"})
        std::filesystem::create_symlink(dir / target, dir / (std::string("to-") + target));
    EXPECT_EQ(listFolderFiles(dir.path() + "/"),
              (std::vector<std::string>{"10.kqb", "9.kqb", "a.kqb", "B.kqb", "b.kqb", "C.kqb", "m.kqb", "to-m.kqb"}));
    EXPECT_EQ(test::errorOf([&] { listFolderFiles(dir / "Questions/"); }), err::PathNotFound);
    EXPECT_EQ(test::errorOf([&] { listFolderFiles(dir / "m.kqb/"); }), err::PathNotFound);
}

TEST(CatalogueTest, TheTitleIsTheFirstLineWhateverEndsIt)
{
    test::TempDir dir;
    const std::pair<std::string, std::string> cases[] = {
        {"ABCD\r\nEF", "ABCD"}, {"ABCD\rEF", "ABCD"}, {"ABCD\nEF", "ABCD"}, {"ABCD", "ABCD"}, {"\r\nEF", ""},
        {std::string(5000, 'A') + "\n", std::string(5000, 'A')}, {std::string(65536, 'A'), std::string(65536, 'A')},
        {std::string(65537, 'A'), "none"},
        {"", "error 62"}};
    for (const auto& [content, title] : cases) {
        writeFile(dir / "f", content);
        EXPECT_EQ(test::outcome([&] { return titleLine(dir / "f").value_or("none"); }), title) << content.size();
    }
    EXPECT_EQ(test::errorOf([&] { titleLine(dir / "missing"); }), err::FileNotFound);
}

} // namespace
} // namespace kesta
