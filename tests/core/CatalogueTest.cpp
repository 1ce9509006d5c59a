#include "app/core/Catalogue.h"
#include "common/core/RuntimeError.h"
#include "support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

namespace kesta {
namespace {

using test::writeFile;

// Matches a call that raises the run-time error `number`.
auto raises(int number)
{
    return ::testing::Throws<RuntimeError>(::testing::Property(&RuntimeError::number, number));
}

// Classifies `files` whose titles come from `titles` (a missing title throws); counts the lookups.
std::vector<CatalogueHit> classify(const std::vector<std::string>& files, std::map<std::string, std::string> titles,
                                   int* lookups = nullptr)
{
    return classifyFiles("/q/", files, [&](const std::string& path) {
        EXPECT_EQ(path.substr(0, 3), "/q/");
        if (lookups)
            ++*lookups;
        return titles.at(path.substr(3));
    });
}

std::string describe(const CatalogueHit& hit)
{
    return (hit.kind == CatalogueKind::Exam ? "exam " : "quiz ") + std::to_string(hit.index) + " " + hit.fileName + ": "
        + hit.title;
}

TEST(CatalogueTest, TitlesDecideTheKindCaseInsensitivelyAndBothPatternsMakeBoth)
{
    const auto hits = classify({"a", "b", "c", "d", "quiz-named"}, {{"a", "KESTA Exam Demo 3"},
                                                                   {"b", "kesta quiz demo - Domain 1"},
                                                                   {"c", "Kesta Exam Demo and KESTA QUIZ DEMO"},
                                                                   {"d", "An unrelated file"},
                                                                   {"quiz-named", "kEsTa ExAm DeMo 7"}});
    std::vector<std::string> described;
    for (const CatalogueHit& hit : hits)
        described.push_back(describe(hit));
    EXPECT_EQ(described, (std::vector<std::string>{"exam 0 a: KESTA Exam Demo 3", "quiz 0 b: kesta quiz demo - Domain 1",
                                                   "exam 1 c: Kesta Exam Demo and KESTA QUIZ DEMO",
                                                   "quiz 1 c: Kesta Exam Demo and KESTA QUIZ DEMO",
                                                   "exam 2 quiz-named: kEsTa ExAm DeMo 7"}));
}

TEST(CatalogueTest, OnlyThirtyOneExamsAndElevenQuizzesAreTakenAndReadingStopsWhenBothAreFull)
{
    std::vector<std::string> files;
    std::map<std::string, std::string> titles;
    for (int i = 100; i < 144; ++i) {
        files.push_back((i < 132 ? "e" : "q") + std::to_string(i));
        titles[files.back()] = i < 132 ? "KESTA Exam Demo" : "KESTA Quiz Demo";
    }
    Catalogues c;
    const auto hits = classify(files, titles);
    fillCatalogues(c, hits);
    ASSERT_EQ(hits.size(), 42u);
    EXPECT_EQ(c.ExamCatalogue[30].FileName, "e130");
    EXPECT_EQ(c.QuizCatalogue[10].FileName, "q142");
    EXPECT_EQ(describe(hits.back()), "quiz 10 q142: KESTA Quiz Demo");

    std::vector<std::string> both(31, "both");
    both.push_back("unreadable");
    int lookups = 0;
    EXPECT_EQ(classify(both, {{"both", "KESTA Exam Demo and KESTA Quiz Demo"}}, &lookups).size(), 42u);
    EXPECT_EQ(lookups, 31);
}

TEST(CatalogueTest, FolderFilesAreListedByNameWithoutSubfoldersAndAMissingFolderFails)
{
    test::TempDir dir;
    for (const char* name : {"m.kqb", "B.kqb", "a.kqb", "10.kqb", "9.kqb"})
        writeFile(dir / name, "x");
    std::filesystem::create_directories(dir / "sub");
    EXPECT_EQ(listFolderFiles(dir.path() + "/"), (std::vector<std::string>{"10.kqb", "9.kqb", "B.kqb", "a.kqb", "m.kqb"}));
    EXPECT_THAT([&] { listFolderFiles(dir / "Questions/"); }, raises(err::PathNotFound));
    EXPECT_THAT([&] { listFolderFiles(dir / "m.kqb/"); }, raises(err::PathNotFound));
}

TEST(CatalogueTest, TheFirstLineEndsAtAnyLineEndAndAnEmptyFileHasNone)
{
    test::TempDir dir;
    for (const auto& [content, first] : {std::pair{"ABCD\r\nEF", "ABCD"}, {"ABCD\rEF", "ABCD"}, {"ABCD\nEF", "ABCD"},
                                         {"ABCD", "ABCD"}, {"\r\nEF", ""}}) {
        writeFile(dir / "f", content);
        EXPECT_EQ(readFirstLine(dir / "f"), first) << content;
        EXPECT_TRUE(hasContent(dir / "f"));
    }
    writeFile(dir / "empty", "");
    EXPECT_THAT([&] { readFirstLine(dir / "empty"); }, raises(err::InputPastEnd));
    EXPECT_THAT([&] { readFirstLine(dir / "missing"); }, raises(err::FileNotFound));
    for (const std::string& none : {dir / "empty", dir / "missing", dir.path()})
        EXPECT_FALSE(hasContent(none)) << none;
}

} // namespace
} // namespace kesta
