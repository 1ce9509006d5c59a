#include "common/core/ErrorLog.h"
#include "common/core/ErrorTrap.h"
#include "support/DataTreeTest.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kesta {
namespace {

using test::readFile;

class ErrorLogTest : public test::DataTreeTest {
protected:
    std::string date() { return formatLogDate(host.clock); }
};

TEST_F(ErrorLogTest, NonFatalReportAppendsTheWholeEntryAndReturns)
{
    std::string details;
    reporter.LogError("Program_Data", "File_Exists", false, details, RuntimeError(13, "Type mismatch", "kesta-demo"));
    reporter.LogError("Form1", "Form_Load()", false, details, err::make(err::FileNotFound));

    const std::string first = "Date: " + date() + "\r\nDescription of Error: Type mismatch [13]\r\nDetails: " +
                              SystemErrorText(13) + "\r\nSource: kesta-demo\r\nLocation: Program_Data.File_Exists\r\n\r\n***\r\n\r\n\r\n";
    const std::string second = "Date: " + date() + "\r\nDescription of Error: File not found [53]\r\nDetails: " +
                               SystemErrorText(53) + "\r\nSource: kesta-demo\r\nLocation: Form1.Form_Load()\r\n\r\n***\r\n\r\n\r\n";
    EXPECT_EQ(log(), first + second);
    EXPECT_TRUE(host.messages.empty());
}

TEST_F(ErrorLogTest, DetailsGainOneBlankThatTheCallerSees)
{
    std::string details = "[FILE]exam01.kqb.";
    reporter.LogError("Form1", "Chapter1_Click()", false, details, RuntimeError(9999, "Custom", "src"));
    EXPECT_EQ(details, "[FILE]exam01.kqb. ");
    // 9999 has no system text, so nothing follows the details.
    EXPECT_NE(log().find("Details: [FILE]exam01.kqb. \r\nSource: src\r\n"), std::string::npos);

    std::string empty;
    reporter.LogError("Form1", "X()", false, empty, RuntimeError(9999, "Custom", "src"));
    EXPECT_EQ(empty, "");
}

TEST_F(ErrorLogTest, SystemTextIsEmptyForNumbersTheSystemDoesNotKnow)
{
    EXPECT_EQ(SystemErrorText(123456), "");
    EXPECT_FALSE(SystemErrorText(13).empty());
}

TEST_F(ErrorLogTest, FatalReportShowsTheErrorBoxAndEndsAfterLogging)
{
    EXPECT_EXIT(
        {
            trapFatal(reporter, "Form1", "InitializeVariables()", [] { throw err::make(err::SubscriptOutOfRange); });
        },
        ::testing::ExitedWithCode(1),
        "MESSAGEBOX\\[Brightquiver Error\\|1\\] An error has occured and Bellwort needs to shut down.\r\nDate: .*"
        "Description of Error: Subscript out of range \\[9\\]");
    const std::string entry = log();
    EXPECT_NE(entry.find("Location: Form1.InitializeVariables()\r\n\r\n***\r\n\r\n\r\n"), std::string::npos);
}

TEST_F(ErrorLogTest, FatalBoxLeavesOutTheLocationLine)
{
    EXPECT_EXIT({ trapFatal(reporter, "Form1", "Form_Load()", [] { throw err::make(err::Overflow); }); },
                ::testing::ExitedWithCode(1), "Source: kesta-demo\r\n\nENDED 1");
}

TEST_F(ErrorLogTest, ATrapPassesItsDetailsToTheLog)
{
    EXPECT_EXIT(
        { trapFatal(reporter, "Form1", "Review1_Click()", [] { throw err::make(err::FileNotFound); }, "[FILE]q.kqb."); },
        ::testing::ExitedWithCode(1), "Details: \\[FILE\\]q.kqb. ");
}

TEST_F(ErrorLogTest, AMissingLogFolderTakesTheDefaultFailurePathWithoutWriting)
{
    std::filesystem::remove_all(folders.LogDir);
    EXPECT_EXIT({ trapFatal(reporter, "Form1", "Form_Load()", [] { throw err::make(err::Overflow); }); },
                ::testing::ExitedWithCode(1), "Run-time error '76':\r\n\r\nPath not found");
    EXPECT_FALSE(std::filesystem::exists(folders.LogDir));
}

TEST_F(ErrorLogTest, UntrappedRoutinesEndWithTheRunTimeErrorBoxAndNoLog)
{
    EXPECT_EXIT({ untrapped(host, [] { throw err::make(err::Overflow); }); }, ::testing::ExitedWithCode(1),
                "MESSAGEBOX\\[KESTA DEMO\\|1\\] Run-time error '6':\r\n\r\nOverflow");
    EXPECT_FALSE(std::filesystem::exists(folders.errorLogPath()));
}

TEST_F(ErrorLogTest, NonFatalTrapReturnsTheDefaultResult)
{
    const bool result = trapNonFatal(reporter, "Dir_Exists", false, []() -> bool { throw err::make(err::PathFileAccess); });
    EXPECT_FALSE(result);
    EXPECT_NE(log().find("Location: Program_Data.Dir_Exists\r\n"), std::string::npos);
}

} // namespace
} // namespace kesta
