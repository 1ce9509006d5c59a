#include "app/core/Catalogue.h"

#include "app/core/Options.h"
#include "app/core/PageResource.h"
#include "common/core/ErrorTrap.h"
#include "common/core/Int16.h"
#include "common/core/SafeFile.h"
#include "progress/core/ProgressFile.h"
#include "progress/core/ScoreSlots.h"
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"
#include "support/Checks.h"
#include "support/DataTreeTest.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <memory>
#include <sys/resource.h>
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
    // The names in the user folder, each followed by its content.
    std::string userFiles() const
    {
        std::string all;
        for (const auto& name : {"t.usr.score1", "t.usr.score2", "t.usr.score3", "t.usr.score10", "keep"})
            all += exists(user(name)) ? std::string(name) + "=" + readFile(user(name)) + " " : "";
        return all;
    }
    // One whole log entry as the reporter writes it at the host's time.
    std::string entry(const std::string& description, const std::string& details, const std::string& location)
    {
        return "Date: " + formatLogDate(host.clock) + "\r\nDescription of Error: " + description + "\r\nDetails: " +
               details + "\r\nSource: kesta-demo\r\nLocation: " + location + "\r\n\r\n***\r\n\r\n\r\n";
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
    EXPECT_EQ(std::vector<bool>({ data.File_Exists(user("a.usr")), data.File_Exists(folders.UserDir),
                  data.File_Exists(user("missing")), data.File_Exists(user("a.usr/x")), data.File_Exists(malformed),
                  data.Dir_Exists(folders.UserDir), data.Dir_Exists(folders.BaseDir + "/MORVO"),
                  data.Dir_Exists(user("a.usr")), data.Dir_Exists(user("none")), data.Dir_Exists(user("a.usr/x")),
                  data.File_Exists(long_), data.Dir_Exists(long_) }),
        std::vector<bool>({ true, false, false, false, false, true, true, false, false, false, false, false }));
    // A path through a file is not there: no log entry between the two for a name too long.
    EXPECT_EQ(locations(), "Program_Data.File_Exists\nProgram_Data.File_Exists\nProgram_Data.Dir_Exists\n");
    EXPECT_TRUE(host.messages.empty());
}

TEST_F(ProgramDataTest, DeleteTakesWildcardsAndThePageWriterWrapsInTheFontTag)
{
    const std::tuple<std::vector<const char*>, std::string, std::string, std::string> deletes[] = {
        {{"t.usr.score1", "t.usr.score3", "t.usr.score10"}, "t.usr.score?", "t.usr.score10=t.usr.score10 ", ""},
        {{"t.usr.score1", "keep"}, "t*s*1", "t.usr.score10=t.usr.score10 keep=keep ", ""},
        {{"t.usr.score10"}, "t.*0", "", ""},
        {{"keep"}, "t.usr.score1", "keep=keep ", "Program_Data.DeleteFile\n"},
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
    options.values[6] = 12; // with no size the page is the text alone: a row of the planted-files test
    std::string text = "Hello";
    data.Write_HTML(text, "ignored/elsewhere.htm");
    data.Write_HTML(text, ""); // the caller's text carries the tag, so it nests
    EXPECT_EQ(readFile(folders.pagePath()) + "|" + locations(),
        "<font size=12>\r\n<font size=12>\r\nHello\r\n</font>\r\n</font>\r\n|");
    fs::remove(folders.pagePath());
    fs::create_directory(folders.pagePath()); // nothing can be renamed over a folder
    data.Write_HTML(text, "");
    EXPECT_EQ(locations(), "Program_Data.Write_HTML\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(folders.LogDir), fs::directory_iterator()), 1); // no temporary file
}

// What anyone may plant in the shared folders or among the question files: a
// pipe ('p'; with a reader 'r'), a sparse gigabyte ('b'), a hard link ('h') or
// a symbolic link ('s') to another user's file, an empty file ('e'), or
// nothing ('-': a place that is already there). Nothing hangs (a watchdog
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
        {picture, "pbs", images({picture, "file://" + picture}), "missing missing "},
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
}

using ErrorLogTest = ProgramDataTest;

// The system's text follows the details with its own line end, so an empty line follows it.
TEST_F(ErrorLogTest, EachReportAppendsOneWholeEntryAndDetailsGainABlankTheCallerSees)
{
    std::string none, details = "[FILE]exam01.kqb.";
    reporter.LogError("Program_Data", "File_Exists", false, none, err::make(err::TypeMismatch));
    reporter.LogError("Form1", "Chapter1_Click()", false, details, RuntimeError(9999, "Custom"));
    EXPECT_EQ(log(), entry("Type mismatch [13]", "Permission denied\r\n", "Program_Data.File_Exists") +
                         entry("Custom [9999]", "[FILE]exam01.kqb. ", "Form1.Chapter1_Click()"));
    EXPECT_EQ(details + "|" + none + SystemErrorText(123456) + "|" + std::to_string(host.messages.size()),
        "[FILE]exam01.kqb. ||0");
}

TEST_F(ErrorLogTest, AFatalReportShowsTheReportWithoutItsLocationAndEndsTheProgram)
{
    EXPECT_EXIT(trapFatal(reporter, "Form1", "Review1_Click()", [] { throw err::make(err::Overflow); }, "[FILE]q.kqb."),
                ::testing::ExitedWithCode(1),
                "MESSAGEBOX\\[Brightquiver Error\\|1\\] An error has occured and Bellwort needs to shut down.\r\n"
                "Date: [^\r]*\r\nDescription of Error: Overflow \\[6\\]\r\nDetails: \\[FILE\\]q.kqb. [^\r]*\r\n\r\n"
                "Source: kesta-demo\r\n\nENDED 1\n");
    EXPECT_EQ(log(), entry("Overflow [6]", "[FILE]q.kqb. " + SystemErrorText(6), "Form1.Review1_Click()"));
}

TEST_F(ErrorLogTest, WithoutTheLogFolderAndWithoutATrapTheDefaultPathEndsTheProgramAndLogsNothing)
{
    EXPECT_EXIT(untrapped(host, [] { throw std::bad_alloc(); }), ::testing::ExitedWithCode(1),
                "MESSAGEBOX\\[KESTA DEMO\\|1\\] Run-time error '7':\r\n\r\nOut of memory\nENDED 1\n");
    EXPECT_EXIT(untrapped(host, [] { throw std::logic_error("x"); }), ::testing::ExitedWithCode(1),
                "Run-time error '5':\r\n\r\nInvalid procedure call or argument\n");
    std::filesystem::remove_all(folders.LogDir);
    EXPECT_EXIT(trapFatal(reporter, "Form1", "Form_Load()", [] { throw err::make(err::Overflow); }),
                ::testing::ExitedWithCode(1), "MESSAGEBOX\\[KESTA DEMO\\|1\\] Run-time error '76':\r\n\r\nPath not found");
    EXPECT_EQ(trapNonFatal(reporter, "DeleteFile", 3, []() -> int { throw std::runtime_error("x"); }), 3);
    EXPECT_FALSE(std::filesystem::exists(folders.LogDir));
}

using OptionsTest = ProgramDataTest;

// Each file is read into options that all start at 9: what the options then
// hold, the notice shown, and the file left behind. A file that cannot be
// read is replaced by the defaults after the notice; values read before the
// failure are overwritten by the second reading.
TEST_F(OptionsTest, AReadableFileIsTakenAsItStandsAndAnyOtherIsReplacedByTheDefaults)
{
    const std::string defaults(DefaultOptionsText), notice = "1 [KESTA DEMO] ";
    // Only six lines are read, however many follow.
    const std::string longer = "7\n-3\r 2 \r\n0\r\n59\r\n20\r\nnot a number" + std::string(25000, '\n');
    // The longest line read is 64 KiB, blanks included; one more is no number.
    const std::string head = "1\r\n0\r\n0\r\n1\r\n30\r\n", longest = head + std::string(65535, ' ') + "5",
                      tooLong = head + std::string(65536, ' ') + "5";
    const struct {
        const char* content; // null: no file
        std::string values, shown, left;
    } cases[] = {
        {longer.c_str(), "7 -3 2 0 59 20", "0 ", ""},
        {"32767\r\n-32768\r\n5.0\r\n5.5\r\n4.5\r\n-0.5", "32767 -32768 5 6 4 0", "0 ", ""},
        {longest.c_str(), "1 0 0 1 30 5", "0 ", ""},
        {tooLong.c_str(), "1 0 0 1 30 5", notice, defaults},
        {nullptr, "1 0 0 1 30 5", notice, defaults},
        {"1\r\n2\r\n3\r\n4\r\n5", "1 0 0 1 30 5", notice, defaults},
        {"", "1 0 0 1 30 5", notice, defaults},
        {"1\r\n0\r\nten\r\n1\r\n30\r\n5", "1 0 0 1 30 5", notice, defaults},
        {"\n1\n0\n0\n1\n30\n5", "1 0 0 1 30 5", notice, defaults}, // an empty line is no number
        {"1\r\n0\r\n0\r\n40000\r\n30\r\n5", "1 0 0 1 30 5", notice, defaults},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content ? c.content : "no file");
        std::filesystem::remove(user("option.usr"));
        if (c.content)
            test::writeFile(user("option.usr"), c.content);
        host.messages.clear();
        for (int k = 0; k <= 6; ++k)
            options.values[k] = 9;
        ReadOptions(host, folders, options);
        std::string values;
        for (int k = 1; k <= 6; ++k)
            values += (k > 1 ? " " : "") + std::to_string(options.values[k]);
        std::string shown = std::to_string(host.messages.size()) + " ";
        for (const auto& m : host.messages)
            shown += "[" + m.title + "] " + (m.text == CorruptOptionsText ? "" : m.text);
        EXPECT_EQ(values + "|" + shown + "|" + test::readFile(user("option.usr")),
                  c.values + "|" + c.shown + "|" + (c.left.empty() ? c.content : c.left));
        EXPECT_EQ(options.values[0], 9);
        // Written anew, it is every user's to replace.
        EXPECT_TRUE(c.left.empty() || std::filesystem::status(user("option.usr")).permissions() == std::filesystem::perms(0666));
    }
    EXPECT_EQ(formatOptions(options), defaults);
}

TEST_F(OptionsTest, TheWrittenFileIsSixLinesAndAListShowsOnlyTheValuesItOffers)
{
    for (int k = 1; k <= 6; ++k)
        options.values[k] = static_cast<Int16>(k * 11 - 40);
    EXPECT_EQ(formatOptions(options), "-29\r\n-18\r\n-7\r\n4\r\n15\r\n26");
    for (const auto& [value, last, text] : {std::tuple{0, FontSizeLast, "0"}, {12, FontSizeLast, "12"},
                                           {13, FontSizeLast, ""}, {-1, HoursLast, ""}, {24, HoursLast, "24"},
                                           {25, HoursLast, ""}, {59, SecondsLast, "59"}, {60, MinutesLast, ""}})
        EXPECT_EQ(listText(value, last), text) << value;
}

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
