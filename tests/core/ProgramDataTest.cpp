#include "app/core/Catalogue.h"
#include "app/core/Options.h"
#include "app/core/PageResource.h"
#include "common/core/Int16.h"
#include "common/core/SafeFile.h"
#include "progress/core/ProgressFile.h"
#include "progress/core/ScoreSlots.h"
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"
#include "support/Checks.h"
#include "support/DataTreeTest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <csignal>
#include <memory>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
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
    // The locations of the log entries written since the log was last removed, one per line.
    std::string locations()
    {
        std::string text = log(), found;
        for (auto p = text.find("Location: "); p != std::string::npos; p = text.find("Location: ", p + 1))
            found += text.substr(p + 10, text.find('\r', p) - p - 10) + "\n";
        fs::remove(folders.errorLogPath());
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

// Only a failure of the file system is logged; a missing file or folder is an answer.
TEST_F(ProgramDataTest, TheFolderLookupAndTheExistenceTestsLogOnlyFailures)
{
    for (const auto& [answer, path] : {std::pair<std::optional<std::string>, std::string>{"/srv/data", "/srv/data/"},
                                       {"/srv/data/", "/srv/data/"}, {"", "/"}, {std::nullopt, ""}}) {
        host.appData = answer;
        EXPECT_EQ(data.GetSpecialFolderPath(35, 0), path);
    }
    DataFolders relative;
    relative.derive("");
    EXPECT_EQ(relative.DataDir + "|" + relative.LogDir + "|" + relative.UserDir + "|" + FileNameOf("/A/B/x.usr.score1") +
                  "|" + FileNameOf("x") + "|" + FileNameOf("/A/B/"),
              "MORVO/KESTA/All|MORVO/KESTA/All/Log|MORVO/KESTA/All/User|x.usr.score1|x|");
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

TEST_F(ProgramDataTest, DeleteTakesWildcardsAndThePageWriterWrapsInTheFontTag)
{
    const std::tuple<std::vector<const char*>, std::string, std::string, std::string> deletes[] = {
        {{"t.usr.score1", "t.usr.score3", "t.usr.score10"}, "t.usr.score?", "t.usr.score10=t.usr.score10 ", ""},
        {{"t.usr.score1", "keep"}, "t*s*1", "t.usr.score10=t.usr.score10 keep=keep ", ""},
        {{"t.usr.score10"}, "t.*0", "", ""},
        {{"keep"}, "t.usr.score1", "keep=keep ", "Program_Data.DeleteFile\n"},
        {{"keep"}, "*.score*", "keep=keep ", "Program_Data.DeleteFile\n"},
        {{"keep"}, "k?ep", "", ""},
        {{"keep"}, "../User", "keep=keep ", "Program_Data.DeleteFile\n"},
        {{}, "../none/*.usr", "", "Program_Data.DeleteFile\n"},
    };
    for (const auto& [files, pattern, left, logged] : deletes) {
        for (const char* name : files)
            writeFile(user(name), name);
        data.DeleteFile(user(pattern));
        EXPECT_EQ(userFiles() + "|" + locations(), left + "|" + logged) << pattern;
        fs::remove(user("keep"));
    }
    options.values[6] = 12;
    std::string text = "Hello", plain = "Gr\xC3\xBC\xC3\x9F" "e";
    data.Write_HTML(text, "ignored/elsewhere.htm");
    data.Write_HTML(text, ""); // the caller's text carries the tag, so it nests
    EXPECT_EQ(readFile(folders.pagePath()), "<font size=12>\r\n<font size=12>\r\nHello\r\n</font>\r\n</font>\r\n");
    options.values[6] = 0;
    data.Write_HTML(plain, "");
    EXPECT_EQ(readFile(folders.pagePath()) + "|" + locations(), "Gr\xC3\xBC\xC3\x9F" "e\r\n|");
    fs::remove(folders.pagePath());
    fs::create_directory(folders.pagePath()); // nothing can be renamed over a folder
    data.Write_HTML(plain, "");
    EXPECT_EQ(locations(), "Program_Data.Write_HTML\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(folders.LogDir), fs::directory_iterator()), 1); // no temporary file
}

// What anyone may plant in the shared folders or among the question files: a
// pipe ('p'; with a reader 'r'), a sparse gigabyte ('b'), a hard link ('h') or
// a symbolic link ('s') to another user's file, an empty file ('e'), a socket
// ('k'), or nothing ('-': a place that is already there). Nothing hangs (a watchdog
// ends the test), nothing planted is written through, and each reader gives
// the outcome it gives for a file it cannot read.
TEST_F(ProgramDataTest, HostileFilesNeverHangNorAreWrittenThroughAndGiveTheUnreadableOutcome)
{
    ::alarm(20);
    const std::string target = dir / "others.txt", bank = dir / "bank.kqb", defaults(DefaultOptionsText);
    int reader = -1;
    const auto plant = [&](const std::string& path, char kind) {
        if (kind == '-')
            return;
        fs::remove(path);
        writeFile(target, "theirs");
        if (kind == 'p' || kind == 'r')
            ::mkfifo(path.c_str(), 0666);
        if (kind == 'r') // someone holds the pipe open for reading
            reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
        if (kind == 'h')
            fs::create_hard_link(target, path);
        if (kind == 's')
            fs::create_symlink(target, path);
        if (kind == 'e')
            writeFile(path, "");
        if (kind == 'b')
            fs::resize_file((writeFile(path, "1\r\n"), path), std::uintmax_t{1} << 30);
        if (kind == 'k') {
            sockaddr_un address{};
            address.sun_family = AF_UNIX;
            path.copy(address.sun_path, sizeof address.sun_path - 1);
            const int s = ::socket(AF_UNIX, SOCK_STREAM, 0);
            ::bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address);
            ::close(s);
        }
    };
    // What a page's images read; a refused one shows as missing.
    const auto images = [](std::vector<std::string> urls) {
        return [urls] {
            std::string shown;
            for (const auto& url : urls)
                shown += readPageResource(url).value_or("missing") + " ";
            return shown;
        };
    };
    const std::string picture = dir / "my picture.png";
    const auto load = [&] {
        auto list = std::make_unique<QuestionList>();
        LoadObserver quiet;
        return LoadQuestionFile(bank, *list, quiet, decipherWith(QuestionPassPhrase)), "";
    };
    std::string details;
    const auto logError = [&] {
        reporter.LogError("Form1", "A()", false, details, err::make(err::Overflow));
        return locations() + std::to_string(fs::status(folders.errorLogPath()).permissions() == fs::perms(0666));
    };
    std::string page = "page";
    SavedProgress saved;
    const std::tuple<std::string, std::string, std::function<std::string()>, std::string> cases[] = {
        {user("option.usr"), "pbs", [&] { return ReadOptions(host, folders, options), readFile(user("option.usr")); }, defaults},
        {user("q.usr"), "ps", [&] { return readSavedChars(user("q.usr"), saved), ""; }, "error 75"},
        {user("q.usr"), "b", [&] { return readSavedChars(user("q.usr"), saved), ""; }, "error 9"},
        {user("q.usr"), "pe", [&] { return std::to_string(safefile::hasContent(user("q.usr"))); }, "0"},
        {user("t.usr.score2"), "ps", [&] { return data.Move_File(user("t.usr.score2"), user("x")), locations(); },
         "Program_Data.Move_File\n"},
        {user("x"), "s", [&] { return writeFile(user("y"), "new"), data.Move_File(user("y"), user("x")), readFile(user("x")); },
         "new"},
        {folders.errorLogPath(), "prhs", logError, "Form1.A()\n1"},
        {folders.pagePath(), "p", [&] { return options.values[6] = 0, data.Write_HTML(page, ""), readFile(folders.pagePath()); },
         "page\r\n"},
        {bank, "pb", [&] { return titleLine(bank).value_or("no title"); }, "no title"},
        {bank, "s", [&] { return titleLine(bank).value_or("no title"); }, "theirs"}, // banks are linked in by their owner
        {bank, "p", load, "error 75"},
        {bank, "s", load, "error 13"}, // read through the link: "theirs" is no ciphertext
        {user(".lock"), "ps", [&] { // gives way to a file all may open; one holder at a time, free once it ends
             writeUserFile(user("q.usr"), "x");
             const bool made = fs::is_regular_file(fs::symlink_status(user(".lock")));
             const std::chrono::milliseconds brief{20};
             safefile::Lock mine(user(".lock"), brief), theirs(user(".lock"), brief);
             return readFile(user("q.usr")) + std::to_string(made) + std::to_string(mine.held()) +
                    std::to_string(theirs.held()) +
                    std::to_string(fs::status(user(".lock")).permissions() == fs::perms(0666)); }, "x1101"},
        {bank, "b", load, "error 9"},
        {picture, "pbsk", images({picture, "file://" + picture}), "missing missing "},
        {picture, "h",
         images({"file://" + dir / "my%20pi%63tur%65.png", "file://localhost" + dir / "%6dy picture.png",
                 picture + "?x#y", picture + "%00.txt", picture.substr(0, picture.size() - 1) + "%6"}),
         "theirs theirs theirs missing missing "},
        {"/dev/zero", "-",
         images({"/dev/zero", "file:/dev/zero", "http://127.0.0.1/a.png", "//127.0.0.1" + picture,
                 "FTP://localhost" + picture, "file://example.com" + picture, "%2Fdev%2Fnull%00.png", ""}),
         "missing missing missing missing missing missing missing missing "},
    };
    for (const auto& [place, kinds, act, expected] : cases) {
        for (const char kind : kinds) {
            plant(place, kind);
            EXPECT_EQ(outcome(act), expected) << place << " " << kind;
            ::close(std::exchange(reader, -1));
            EXPECT_EQ(readFile(target), "theirs");
            EXPECT_EQ(fs::status(target).permissions() & fs::perms::others_write, fs::perms::none);
        }
    }
    fs::create_directories(dir / "Q");
    writeFile(dir / "Q/bank.kqb", "x");
    writeFile(folders.errorLogPath(), "old");
    // A write that fails halfway (here at the file-size limit) keeps the old file and leaves no
    // temporary; a log entry is appended whole or not at all.
    struct rlimit limit {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small {8, limit.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN), ::setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(errorOf([&] { safefile::replace(dir / "Q/bank.kqb", std::string(64, 'y')); }) +
                  errorOf([&] { reporter.LogError("Form1", "A()", false, details, err::make(err::Overflow)); }),
              2 * err::PathFileAccess);
    ::setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(readFile(dir / "Q/bank.kqb") + std::to_string(std::distance(fs::directory_iterator(dir / "Q"), {})) + log(),
              "x1old");
    ::alarm(0);
}

TEST(NumbersTest, SixteenBitValuesRoundAndOverflowAndArraysKeepTheirBounds)
{
    const std::pair<std::string, std::string> texts[] = {
        {" 30 ", "30"}, {"\t-32768", "-32768"}, {"+7", "7"}, {"5.0", "5"}, {"5.5", "6"}, {"4.5", "4"}, {"-0.5", "0"},
        {"-1.5", "-2"}, {".5", "0"}, {"2.", "2"}, {"32767.4", "32767"}, {"32767.5", "error 6"}, {"-32768.5", "-32768"},
        {"-32768.6", "error 6"}, {"32768", "error 6"}, {std::string(400, '9'), "error 6"}, {"", "error 13"},
        {" ", "error 13"}, {"abc", "error 13"}, {"1a", "error 13"}, {"+", "error 13"}, {"1 2", "error 13"},
        {".", "error 13"}, {"1.2.3", "error 13"}, {"+-5", "error 13"}, {"inf", "error 13"}, {"1e2", "error 13"},
        {"0x10", "error 13"}};
    for (const auto& [text, value] : texts)
        EXPECT_EQ(outcome([&] { return std::to_string(parseInt16(text)); }), value) << text;
    EXPECT_EQ(add16(32766, 1) + mul16(327, 100) + sub16(-32767, 1), 32767 + 32700 - 32768);
    EXPECT_EQ(errorOf([] { add16(32767, 1); }) + errorOf([] { sub16(-32768, 1); }) + errorOf([] { mul16(328, 100); }) +
                  errorOf([] { toInt16(-32769); }),
              4 * err::Overflow);
    FixedArray<int, 0, 1000> slots;
    slots[1000] = 7;
    EXPECT_EQ(slots[1000] + errorOf([&] { slots[1001] = 1; }) + errorOf([&] { slots[-1] = 1; }), 7 + 2 * 9);
    EXPECT_EQ(err::make(err::SubscriptOutOfRange).description(), "Subscript out of range");
}

} // namespace
} // namespace kesta
