#include "app/core/Catalogue.h"
#include "common/core/RuntimeError.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using test::writeFile;

int errorNumber(const std::function<void()>& body)
{
    try {
        body();
    } catch (const RuntimeError& error) {
        return error.number();
    }
    return 0;
}

// Titles are looked up by file name; every lookup is counted.
struct Titles {
    std::map<std::string, std::string> byName;
    std::vector<std::string> asked;

    TitleReader reader()
    {
        return [this](const std::string& path) {
            asked.push_back(path);
            return byName.at(path.substr(path.find_last_of('/') + 1));
        };
    }
};

std::vector<std::string> names(int count, const char* prefix)
{
    std::vector<std::string> result;
    for (int i = 0; i < count; ++i)
        result.push_back(prefix + std::to_string(100 + i));
    return result;
}

TEST(CatalogueClassifyTest, TitlesDecideTheKindCaseInsensitivelyAndBothPatternsMakeBoth)
{
    Titles t;
    t.byName = {{"a", "KESTA Exam Demo 3"},
                {"b", "kesta quiz demo - Domain 1"},
                {"c", "Kesta Exam Demo and KESTA QUIZ DEMO"},
                {"d", "An unrelated file"},
                {"quiz-named-file", "kEsTa ExAm DeMo 7"}};
    const auto hits = classifyFiles("/q/", {"a", "b", "c", "d", "quiz-named-file"}, t.reader());

    ASSERT_EQ(hits.size(), 5u);
    auto expect = [&](std::size_t i, CatalogueKind kind, int index, const char* file) {
        EXPECT_EQ(hits[i].kind, kind) << i;
        EXPECT_EQ(hits[i].index, index) << i;
        EXPECT_EQ(hits[i].fileName, file) << i;
        EXPECT_EQ(hits[i].title, t.byName[file]) << i;
    };
    expect(0, CatalogueKind::Exam, 0, "a");
    expect(1, CatalogueKind::Quiz, 0, "b");
    expect(2, CatalogueKind::Exam, 1, "c");
    expect(3, CatalogueKind::Quiz, 1, "c");
    expect(4, CatalogueKind::Exam, 2, "quiz-named-file");
    EXPECT_EQ(t.asked.front(), "/q/a");
}

TEST(CatalogueClassifyTest, OnlyThirtyOneExamsAndElevenQuizzesAreTaken)
{
    Titles t;
    std::vector<std::string> files;
    for (const auto& n : names(32, "e")) {
        t.byName[n] = "KESTA Exam Demo " + n;
        files.push_back(n);
    }
    for (const auto& n : names(12, "q")) {
        t.byName[n] = "KESTA Quiz Demo " + n;
        files.push_back(n);
    }
    Catalogues c;
    const auto hits = classifyFiles("/q/", files, t.reader());
    fillCatalogues(c, hits);

    ASSERT_EQ(hits.size(), 42u);
    EXPECT_EQ(c.ExamCatalogue[30].FileName, "e130");
    EXPECT_EQ(c.QuizCatalogue[10].FileName, "q110");
    for (const auto& hit : hits) {
        EXPECT_NE(hit.fileName, "e131");
        EXPECT_NE(hit.fileName, "q111");
    }
}

TEST(CatalogueClassifyTest, FilesAreNotReadOnceBothCataloguesAreFull)
{
    Titles t;
    std::vector<std::string> files;
    for (const auto& n : names(31, "a")) {
        t.byName[n] = "KESTA Exam Demo and KESTA Quiz Demo";
        files.push_back(n);
    }
    files.push_back("zz-unreadable"); // at() would throw if it were read
    const auto hits = classifyFiles("/q/", files, t.reader());
    EXPECT_EQ(hits.size(), 31u + 11u);
    EXPECT_EQ(t.asked.size(), 31u);
}

TEST(CatalogueFolderTest, FilesAreListedByNameWithoutSubfolders)
{
    test::TempDir dir;
    for (const char* name : {"m.kqb", "B.kqb", "a.kqb", "10.kqb", "9.kqb"})
        writeFile(dir / name, "x");
    fs::create_directories(dir / "sub");
    EXPECT_EQ(listFolderFiles(dir.path() + "/"),
              (std::vector<std::string>{"10.kqb", "9.kqb", "B.kqb", "a.kqb", "m.kqb"}));
}

TEST(CatalogueFolderTest, AMissingFolderIsPathNotFound)
{
    test::TempDir dir;
    EXPECT_EQ(errorNumber([&] { listFolderFiles(dir / "Questions/"); }), err::PathNotFound);
    writeFile(dir / "file", "x");
    EXPECT_EQ(errorNumber([&] { listFolderFiles(dir / "file/"); }), err::PathNotFound);
}

TEST(CatalogueFileTest, TheFirstLineEndsAtAnyLineEnd)
{
    test::TempDir dir;
    const std::pair<const char*, const char*> cases[] = {
        {"ABCD\r\nEF", "ABCD"}, {"ABCD\rEF", "ABCD"}, {"ABCD\nEF", "ABCD"}, {"ABCD", "ABCD"}, {"\r\nEF", ""}};
    for (const auto& [content, first] : cases) {
        writeFile(dir / "f", content);
        EXPECT_EQ(readFirstLine(dir / "f"), first) << content;
    }
}

TEST(CatalogueFileTest, AnEmptyOrMissingQuestionFileFails)
{
    test::TempDir dir;
    writeFile(dir / "empty", "");
    EXPECT_EQ(errorNumber([&] { readFirstLine(dir / "empty"); }), err::InputPastEnd);
    EXPECT_EQ(errorNumber([&] { readFirstLine(dir / "missing"); }), err::FileNotFound);
}

TEST(CatalogueFileTest, OnlyAFileWithAtLeastOneCharacterHasContent)
{
    test::TempDir dir;
    writeFile(dir / "empty", "");
    writeFile(dir / "one", "\n");
    EXPECT_FALSE(hasContent(dir / "empty"));
    EXPECT_TRUE(hasContent(dir / "one"));
    EXPECT_FALSE(hasContent(dir / "missing"));
    EXPECT_FALSE(hasContent(dir.path()));
}

} // namespace
} // namespace kesta
