#include "common/core/Int16.h"
#include "common/core/ProgramData.h"
#include "common/core/SafeFile.h"
#include "support/DataTreeTest.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using test::exists;
using test::readFile;
using test::writeFile;

class ProgramDataTest : public test::DataTreeTest {
protected:
    int entries() const
    {
        const std::string text = log();
        int n = 0;
        for (auto p = text.find("***"); p != std::string::npos; p = text.find("***", p + 1))
            ++n;
        return n;
    }
};

TEST_F(ProgramDataTest, KnownFolderGetsOneTrailingSeparatorOrIsEmpty)
{
    host.appData = "/srv/data";
    EXPECT_EQ(data.GetSpecialFolderPath(35, 0), "/srv/data/");
    host.appData = "/srv/data/";
    EXPECT_EQ(data.GetSpecialFolderPath(35, 0), "/srv/data/");
    host.appData.reset();
    EXPECT_EQ(data.GetSpecialFolderPath(35, 0), "");

    DataFolders relative;
    relative.derive("");
    EXPECT_EQ(relative.DataDir, "MORVO/KESTA/All");
    EXPECT_EQ(relative.LogDir, "MORVO/KESTA/All/Log");
    EXPECT_EQ(relative.UserDir, "MORVO/KESTA/All/User");
}

TEST_F(ProgramDataTest, FileNameOfTakesWhatFollowsTheLastSeparator)
{
    EXPECT_EQ(FileNameOf("/A/B/x.usr.score1"), "x.usr.score1");
    EXPECT_EQ(FileNameOf("x"), "x");
    EXPECT_EQ(FileNameOf("/A/B/"), "");
}

TEST_F(ProgramDataTest, ExistenceTestsTellFilesAndFoldersApart)
{
    writeFile(user("a.usr"), "x");
    EXPECT_TRUE(data.File_Exists(user("a.usr")));
    EXPECT_FALSE(data.File_Exists(folders.UserDir));
    EXPECT_FALSE(data.File_Exists(user("missing")));
    EXPECT_TRUE(data.Dir_Exists(folders.UserDir));
    EXPECT_TRUE(data.Dir_Exists(folders.BaseDir + "/MORVO")); // doubled separator names the same folder
    EXPECT_FALSE(data.Dir_Exists(user("a.usr")));
    EXPECT_FALSE(data.Dir_Exists(user("nothing")));
    EXPECT_FALSE(exists(folders.errorLogPath())); // none of that is a failure
}

TEST_F(ProgramDataTest, AMalformedPathIsLoggedAsAFailureAndAnswersFalse)
{
    EXPECT_FALSE(data.File_Exists(std::string("bad\0name", 8)));
    EXPECT_FALSE(data.Dir_Exists(std::string(5000, 'x')));
    EXPECT_EQ(entries(), 2);
    EXPECT_NE(log().find("Location: Program_Data.File_Exists\r\n"), std::string::npos);
    EXPECT_NE(log().find("Location: Program_Data.Dir_Exists\r\n"), std::string::npos);
    EXPECT_TRUE(host.messages.empty());
}

TEST_F(ProgramDataTest, MoveReplacesTheDestinationAndDeleteTakesPatterns)
{
    writeFile(user("t.usr.score2"), "new");
    writeFile(user("t.usr.score1"), "old");
    data.Move_File(user("t.usr.score2"), user("t.usr.score1"));
    EXPECT_EQ(readFile(user("t.usr.score1")), "new");
    EXPECT_FALSE(exists(user("t.usr.score2")));

    writeFile(user("t.usr.score3"), "3");
    writeFile(user("t.usr.score4"), "4");
    data.DeleteFile(user("t.usr.score?"));
    EXPECT_FALSE(exists(user("t.usr.score1")));
    EXPECT_FALSE(exists(user("t.usr.score3")));
    EXPECT_FALSE(exists(folders.errorLogPath()));
}

TEST_F(ProgramDataTest, FailedDeletesAndMovesAreLoggedOnceEachAndLeaveFilesAlone)
{
    data.DeleteFile(user("missing"));
    EXPECT_EQ(entries(), 1);
    EXPECT_NE(log().find("Location: Program_Data.DeleteFile\r\n"), std::string::npos);

    writeFile(user("keep"), "k");
    data.Move_File(user("missing"), user("keep"));
    EXPECT_EQ(entries(), 2);
    EXPECT_NE(log().find("Location: Program_Data.Move_File\r\n"), std::string::npos);
    EXPECT_EQ(readFile(user("keep")), "k");
}

TEST_F(ProgramDataTest, PageWriterWrapsInTheFontTagAndWritesAFixedPath)
{
    options.values[6] = 5;
    std::string text = "Hello";
    data.Write_HTML(text, "ignored/elsewhere.htm");
    EXPECT_EQ(readFile(folders.pagePath()), "<font size=5>\r\nHello\r\n</font>\r\n");
    EXPECT_EQ(text, "<font size=5>\r\nHello\r\n</font>");

    // The caller's text carries the tag, so writing it again nests it.
    data.Write_HTML(text, "");
    EXPECT_EQ(readFile(folders.pagePath()), "<font size=5>\r\n<font size=5>\r\nHello\r\n</font>\r\n</font>\r\n");

    options.values[6] = 0;
    std::string plain = "Grüße <b>x</b>";
    data.Write_HTML(plain, "");
    EXPECT_EQ(readFile(folders.pagePath()), "Grüße <b>x</b>\r\n");
    EXPECT_FALSE(exists(folders.errorLogPath()));
}

TEST_F(ProgramDataTest, APageThatCannotBeWrittenIsLoggedWithoutNotice)
{
    // A folder standing where the page belongs cannot be replaced by a file.
    fs::create_directory(folders.pagePath());
    std::string text = "page";
    data.Write_HTML(text, "");
    EXPECT_NE(log().find("Location: Program_Data.Write_HTML\r\n"), std::string::npos);
    EXPECT_TRUE(fs::is_directory(folders.pagePath()));
    EXPECT_TRUE(host.messages.empty());
    for (const auto& entry : fs::directory_iterator(folders.LogDir)) // no temporary file left behind
        EXPECT_TRUE(entry.path().filename() == "qtmp.htm" || entry.path().filename() == "ErrorLog.log");
}

TEST_F(ProgramDataTest, SafeWritesReplaceAPlantedLinkInsteadOfFollowingIt)
{
    const std::string victim = dir / "victim.txt";
    writeFile(victim, "precious");
    fs::create_symlink(victim, user("option.usr"));
    safefile::replace(user("option.usr"), "1\r\n0");
    EXPECT_EQ(readFile(victim), "precious");
    EXPECT_FALSE(fs::is_symlink(user("option.usr")));
    EXPECT_EQ(readFile(user("option.usr")), "1\r\n0");

    fs::create_symlink(victim, user("linked"));
    EXPECT_THROW(safefile::read(user("linked")), RuntimeError);
    EXPECT_THROW(safefile::append(user("linked"), "x"), RuntimeError);
    EXPECT_EQ(readFile(victim), "precious");
}

TEST_F(ProgramDataTest, SafeFileFailuresCarryTheirRunTimeNumbers)
{
    auto number = [](auto&& f) {
        try {
            f();
        } catch (const RuntimeError& e) {
            return e.number();
        }
        return 0;
    };
    EXPECT_EQ(number([&] { safefile::read(user("none")); }), err::FileNotFound);
    EXPECT_EQ(number([&] { safefile::replace(dir / "no/such/file", "x"); }), err::PathNotFound);
    EXPECT_EQ(number([&] { safefile::append(dir / "no/such/file", "x"); }), err::PathNotFound);
}

TEST(CheckedTypesTest, SixteenBitValuesOverflowAndArraysKeepTheirBounds)
{
    EXPECT_EQ(add16(32766, 1), 32767);
    EXPECT_THROW(add16(32767, 1), RuntimeError);
    EXPECT_THROW(sub16(-32768, 1), RuntimeError);
    EXPECT_THROW(mul16(328, 100), RuntimeError);
    EXPECT_EQ(mul16(327, 100), 32700);

    EXPECT_EQ(parseInt16(" 30 "), 30);
    EXPECT_EQ(parseInt16("-32768"), -32768);
    EXPECT_THROW(parseInt16("32768"), RuntimeError);
    EXPECT_THROW(parseInt16("99999999999999999999"), RuntimeError);
    for (const char* bad : {"", " ", "abc", "1a", "+", "1 2"}) {
        try {
            parseInt16(bad);
            ADD_FAILURE() << bad;
        } catch (const RuntimeError& e) {
            EXPECT_EQ(e.number(), err::TypeMismatch) << bad;
        }
    }

    FixedArray<int, 0, 1000> slots;
    slots[1000] = 7;
    EXPECT_EQ(slots[1000], 7);
    try {
        slots[1001] = 1;
        ADD_FAILURE();
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), err::SubscriptOutOfRange);
        EXPECT_EQ(e.description(), "Subscript out of range");
    }
    EXPECT_THROW(slots[-1], RuntimeError);
}

} // namespace
} // namespace kesta

namespace kesta {
namespace {

TEST_F(ProgramDataTest, WithoutALogFolderUtilityFailuresStaySilentAndWriteNothing)
{
    fs::remove_all(folders.LogDir);
    std::string text = "page";
    data.Write_HTML(text, "");
    data.DeleteFile(user("missing"));
    EXPECT_FALSE(exists(folders.LogDir));
    EXPECT_TRUE(host.messages.empty());
}

} // namespace
} // namespace kesta
