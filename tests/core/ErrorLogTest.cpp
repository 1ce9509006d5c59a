#include "common/core/ErrorLog.h"
#include "common/core/ErrorTrap.h"
#include "support/DataTreeTest.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kesta {
namespace {

class ErrorLogTest : public test::DataTreeTest {
protected:
    std::string entry(const std::string& description, const std::string& details, const std::string& location)
    {
        return "Date: " + formatLogDate(host.clock) + "\r\nDescription of Error: " + description + "\r\nDetails: " +
               details + "\r\nSource: kesta-demo\r\nLocation: " + location + "\r\n\r\n***\r\n\r\n\r\n";
    }
};

// The system's text follows the details with its own line end, so an empty line follows it.
TEST_F(ErrorLogTest, EachReportAppendsOneWholeEntryAndDetailsGainABlankTheCallerSees)
{
    std::string none, details = "[FILE]exam01.kqb.";
    reporter.LogError("Program_Data", "File_Exists", false, none, err::make(err::TypeMismatch));
    reporter.LogError("Form1", "Chapter1_Click()", false, details, RuntimeError(9999, "Custom"));
    EXPECT_EQ(log(), entry("Type mismatch [13]", "Permission denied\r\n", "Program_Data.File_Exists") +
                         entry("Custom [9999]", "[FILE]exam01.kqb. ", "Form1.Chapter1_Click()"));
    EXPECT_EQ(details + "|" + none, "[FILE]exam01.kqb. |");
    EXPECT_EQ(SystemErrorText(123456), "");
    EXPECT_TRUE(host.messages.empty());
    EXPECT_EQ(trapNonFatal(reporter, "Dir_Exists", 7, []() -> int { throw err::make(err::PathFileAccess); }), 7);
    EXPECT_NE(log().find("Location: Program_Data.Dir_Exists\r\n"), std::string::npos);
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

} // namespace
} // namespace kesta
