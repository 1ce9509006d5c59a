#include "app/core/Catalogue.h"
#include "app/core/Options.h"
#include "common/core/Int16.h"
#include "common/core/SafeFile.h"
#include "progress/core/ProgressFile.h"
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"
#include "support/Checks.h"
#include "support/DataTreeTest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using test::errorOf;
using test::exists;
using test::outcome;
using test::readFile;
using test::writeFile;

class ProgramDataTest : public test::DataTreeTest {
protected:
    // The locations of the log entries written so far, one per line.
    std::string locations() const
    {
        std::string text = log(), found;
        for (auto p = text.find("Location: "); p != std::string::npos; p = text.find("Location: ", p + 1))
            found += text.substr(p + 10, text.find('\r', p) - p - 10) + "\n";
        return found;
    }
    // The names in the user folder, each followed by its content.
    std::string userFiles() const
    {
        std::string all;
        for (const auto& name : {"t.usr.score1", "t.usr.score2", "t.usr.score3", "t.usr.score10", "keep"})
            all += exists(user(name)) ? std::string(name) + "=" + readFile(user(name)) + " " : "";
        return all;
    }
};

TEST_F(ProgramDataTest, TheKnownFolderGetsOneTrailingSeparatorOrNothing)
{
    for (const auto& [answer, path] : {std::pair<std::optional<std::string>, std::string>{"/srv/data", "/srv/data/"},
                                       {"/srv/data/", "/srv/data/"}, {"", "/"}, {std::nullopt, ""}}) {
        host.appData = answer;
        EXPECT_EQ(data.GetSpecialFolderPath(35, 0), path);
    }
    DataFolders relative;
    relative.derive("");
    EXPECT_EQ(relative.DataDir + "|" + relative.LogDir + "|" + relative.UserDir,
              "MORVO/KESTA/All|MORVO/KESTA/All/Log|MORVO/KESTA/All/User");
    EXPECT_EQ(FileNameOf("/A/B/x.usr.score1") + "|" + FileNameOf("x") + "|" + FileNameOf("/A/B/"), "x.usr.score1|x|");
}

// Only a failure of the file system is logged; a missing file or folder is an answer.
TEST_F(ProgramDataTest, ExistenceTestsTellFilesFromFoldersAndLogOnlyFailures)
{
    writeFile(user("a.usr"), "x");
    const std::string malformed("bad\0name", 8), long_(5000, 'x');
    EXPECT_EQ(std::vector<bool>({data.File_Exists(user("a.usr")), data.File_Exists(folders.UserDir),
                                 data.File_Exists(user("missing")), data.File_Exists(user("a.usr/x")),
                                 data.File_Exists(malformed), data.Dir_Exists(folders.UserDir),
                                 data.Dir_Exists(folders.BaseDir + "/MORVO"), data.Dir_Exists(user("a.usr")),
                                 data.Dir_Exists(user("none")), data.Dir_Exists(user("a.usr/x")), data.Dir_Exists(long_),
                                 data.File_Exists(long_)}),
              std::vector<bool>({true, false, false, false, false, true, true, false, false, false, false, false}));
    EXPECT_EQ(locations(), "Program_Data.File_Exists\nProgram_Data.Dir_Exists\nProgram_Data.File_Exists\n");
    EXPECT_TRUE(host.messages.empty());
}

TEST_F(ProgramDataTest, DeleteTakesWildcardsAndMoveKeepsTheSourcesTimeAndFailuresAreLogged)
{
    const struct {
        std::vector<const char*> files;
        std::string pattern, left, logged;
    } deletes[] = {
        {{"t.usr.score1", "t.usr.score3", "t.usr.score10"}, "t.usr.score?", "t.usr.score10=t.usr.score10 ", ""},
        {{"t.usr.score1", "t.usr.score10", "keep"}, "t*s*1", "t.usr.score10=t.usr.score10 keep=keep ", ""},
        {{"t.usr.score10"}, "t.*0", "", ""},
        {{"keep"}, "t.usr.score1", "keep=keep ", "Program_Data.DeleteFile\n"},
        {{"keep"}, "*.score*", "keep=keep ", "Program_Data.DeleteFile\n"},
        {{"keep"}, "k?ep", "", ""},
        {{"keep"}, "../User", "keep=keep ", "Program_Data.DeleteFile\n"},
    };
    for (const auto& d : deletes) {
        fs::remove(folders.errorLogPath());
        for (const char* name : d.files)
            writeFile(user(name), name);
        data.DeleteFile(user(d.pattern));
        EXPECT_EQ(userFiles() + "|" + locations(), d.left + "|" + d.logged) << d.pattern;
        fs::remove(user("keep"));
    }
    fs::remove(folders.errorLogPath());
    data.DeleteFile(dir / "none/*.usr");

    writeFile(user("t.usr.score2"), "new");
    fs::last_write_time(user("t.usr.score2"), fs::file_time_type(std::chrono::hours(400000)));
    writeFile(dir / "victim", "precious");
    fs::create_symlink(dir / "victim", user("t.usr.score1"));
    data.Move_File(user("t.usr.score2"), user("t.usr.score1"));
    data.Move_File(user("t.usr.score2"), user("t.usr.score1"));
    EXPECT_EQ(userFiles() + readFile(dir / "victim"), "t.usr.score1=new precious");
    EXPECT_EQ(fs::last_write_time(user("t.usr.score1")), fs::file_time_type(std::chrono::hours(400000)));
    EXPECT_EQ(locations(), "Program_Data.DeleteFile\nProgram_Data.Move_File\n");
}

TEST_F(ProgramDataTest, ThePageWriterWrapsInTheFontTagAndAlwaysWritesThePageFile)
{
    options.values[6] = 12;
    std::string text = "Hello";
    data.Write_HTML(text, "ignored/elsewhere.htm");
    data.Write_HTML(text, ""); // the caller's text carries the tag, so it nests
    EXPECT_EQ(readFile(folders.pagePath()), "<font size=12>\r\n<font size=12>\r\nHello\r\n</font>\r\n</font>\r\n");
    options.values[6] = 0;
    std::string plain = "Gr\xC3\xBC\xC3\x9F" "e";
    data.Write_HTML(plain, "");
    EXPECT_EQ(readFile(folders.pagePath()), "Gr\xC3\xBC\xC3\x9F" "e\r\n");
    EXPECT_FALSE(exists(folders.errorLogPath()));

    fs::remove(folders.pagePath());
    fs::create_directory(folders.pagePath()); // nothing can be renamed over a folder
    data.Write_HTML(plain, "");
    EXPECT_EQ(locations(), "Program_Data.Write_HTML\n");
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folders.LogDir))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"ErrorLog.log", "qtmp.htm"})); // no temporary file left
}

// What anyone may plant in the shared folders or among the question files: a
// pipe, a huge file, a link to another user's file. Nothing hangs (a watchdog
// ends the test), nothing planted is written through, and each reader gives
// the outcome it gives for a file it cannot read.
TEST_F(ProgramDataTest, HostileFilesNeverHangNorAreWrittenThroughAndGiveTheUnreadableOutcome)
{
    ::alarm(20);
    const std::string target = dir / "others.txt";
    const auto plant = [&](const std::string& path, char kind) {
        fs::remove(path);
        writeFile(target, "theirs");
        if (kind == 'p')
            ::mkfifo(path.c_str(), 0666);
        else if (kind == 'h')
            fs::create_hard_link(target, path);
        else if (kind == 's')
            fs::create_symlink(target, path);
        else if (kind == 'b')
            fs::resize_file((writeFile(path, "1\r\n"), path), std::uintmax_t{1} << 30); // a sparse gigabyte
    };
    std::string details;
    const std::pair<std::function<std::string()>, std::string> cases[] = {
        {[&] { return plant(user("option.usr"), 'p'), ReadOptions(host, folders, options), readFile(user("option.usr")); },
         "1\r\n0\r\n0\r\n1\r\n30\r\n5"},
        {[&] { return plant(user("option.usr"), 'b'), ReadOptions(host, folders, options), readFile(user("option.usr")); },
         "1\r\n0\r\n0\r\n1\r\n30\r\n5"},
        {[&] { return plant(user("option.usr"), 's'), ReadOptions(host, folders, options), readFile(user("option.usr")); },
         "1\r\n0\r\n0\r\n1\r\n30\r\n5"},
        {[&] { SavedProgress saved; return plant(user("q.usr"), 'p'), readSavedChars(user("q.usr"), saved), ""; }, "error 75"},
        {[&] { SavedProgress saved; return plant(user("q.usr"), 'b'), readSavedChars(user("q.usr"), saved), ""; }, "error 9"},
        {[&] { return plant(user("q.usr"), 'p'), std::to_string(safefile::hasContent(user("q.usr"))); }, "0"},
        {[&] {
             plant(user("t.usr.score2"), 'p');
             return data.Move_File(user("t.usr.score2"), user("t.usr.score1")), locations();
         },
         "Program_Data.Move_File\n"},
        {[&] {
             plant(folders.errorLogPath(), 'p');
             reporter.LogError("Form1", "A()", false, details, err::make(err::Overflow));
             plant(folders.errorLogPath(), 'p'); // this time someone holds it open for reading
             const int reader = ::open(folders.errorLogPath().c_str(), O_RDONLY | O_NONBLOCK);
             reporter.LogError("Form1", "A()", false, details, err::make(err::Overflow));
             ::close(reader);
             plant(folders.errorLogPath(), 'h');
             reporter.LogError("Form1", "B()", false, details, err::make(err::Overflow));
             return locations();
         },
         "Form1.B()\n"},
        {[&] {
             plant(folders.errorLogPath(), 's');
             reporter.LogError("Form1", "C()", false, details, err::make(err::Overflow));
             return locations() + std::to_string(fs::status(folders.errorLogPath()).permissions() == fs::perms(0666));
         },
         "Form1.C()\n1"},
        {[&] {
             std::string page = "page";
             options.values[6] = 0;
             return plant(folders.pagePath(), 'p'), data.Write_HTML(page, ""), readFile(folders.pagePath());
         },
         "page\r\n"},
        {[&] { return plant(dir / "bank.kqb", 'p'), titleLine(dir / "bank.kqb").value_or("none"); }, "none"},
        {[&] { return plant(dir / "bank.kqb", 'b'), titleLine(dir / "bank.kqb").value_or("none"); }, "none"},
        {[&] { return plant(dir / "bank.kqb", 's'), titleLine(dir / "bank.kqb").value_or("none"); }, "none"},
        {[&] {
             auto list = std::make_unique<QuestionList>();
             LoadObserver quiet;
             plant(dir / "bank.kqb", 'p');
             return LoadQuestionFile(dir / "bank.kqb", *list, quiet, decipherWith(QuestionPassPhrase)), "";
         },
         "error 75"},
        {[&] {
             auto list = std::make_unique<QuestionList>();
             LoadObserver quiet;
             plant(dir / "bank.kqb", 'b');
             return LoadQuestionFile(dir / "bank.kqb", *list, quiet, decipherWith(QuestionPassPhrase)), "";
         },
         "error 9"},
        {[&] {
             fs::create_directories(dir / "Q");
             writeFile(dir / "Q/.bank.kqb.Xy12zz", "");
             writeFile(dir / "Q/bank.kqb", "x");
             return listFolderFiles(dir / "Q").front();
         },
         "bank.kqb"},
    };
    for (const auto& [act, expected] : cases) {
        fs::remove(folders.errorLogPath());
        EXPECT_EQ(outcome(act), expected) << expected;
        EXPECT_EQ(readFile(target), "theirs");
        EXPECT_EQ(fs::status(target).permissions() & fs::perms::others_write, fs::perms::none);
    }
    ::alarm(0);
}

TEST(NumbersTest, SixteenBitValuesRoundAndOverflowAndArraysKeepTheirBounds)
{
    const std::pair<std::string, std::string> texts[] = {
        {" 30 ", "30"}, {"\t-32768", "-32768"}, {"+7", "7"}, {"5.0", "5"}, {"5.5", "6"}, {"4.5", "4"}, {"-0.5", "0"},
        {"-1.5", "-2"}, {".5", "0"}, {"2.", "2"}, {"32767.4", "32767"}, {"32767.5", "error 6"},
        {"-32768.5", "-32768"}, {"-32768.6", "error 6"}, {"32768", "error 6"}, {std::string(400, '9'), "error 6"},
        {"", "error 13"}, {" ", "error 13"}, {"abc", "error 13"}, {"1a", "error 13"}, {"+", "error 13"},
        {"1 2", "error 13"}, {".", "error 13"}, {"1.2.3", "error 13"}, {"+-5", "error 13"}, {"inf", "error 13"},
        {"1e2", "error 13"}, {"0x10", "error 13"},
    };
    for (const auto& [text, value] : texts)
        EXPECT_EQ(outcome([&] { return std::to_string(parseInt16(text)); }), value) << text;
    EXPECT_EQ(add16(32766, 1), 32767);
    EXPECT_EQ(mul16(327, 100), 32700);
    EXPECT_EQ(sub16(-32767, 1), -32768);
    EXPECT_EQ(errorOf([] { add16(32767, 1); }) + errorOf([] { sub16(-32768, 1); }) +
                  errorOf([] { mul16(328, 100); }) + errorOf([] { toInt16(-32769); }),
              4 * err::Overflow);
    FixedArray<int, 0, 1000> slots;
    slots[1000] = 7;
    EXPECT_EQ(slots[1000], 7);
    EXPECT_EQ(errorOf([&] { slots[1001] = 1; }), err::SubscriptOutOfRange);
    EXPECT_EQ(errorOf([&] { slots[-1] = 1; }), err::SubscriptOutOfRange);
    EXPECT_EQ(err::make(err::SubscriptOutOfRange).description(), "Subscript out of range");
}

} // namespace
} // namespace kesta
