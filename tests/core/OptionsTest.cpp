#include "app/core/Options.h"

#include "support/Checks.h"
#include "support/DataTreeTest.h"

#include <gtest/gtest.h>

namespace kesta {
namespace {

class OptionsTest : public test::DataTreeTest {};

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
        {"1\r\n2\r\n3\r\n4\r\n5\r\n", "1 0 0 1 30 5", notice, defaults},
        {"", "1 0 0 1 30 5", notice, defaults},
        {"1\r\n0\r\nten\r\n1\r\n30\r\n5", "1 0 0 1 30 5", notice, defaults},
        {"1\r\n\r\n0\r\n1\r\n30\r\n5", "1 0 0 1 30 5", notice, defaults},
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

} // namespace
} // namespace kesta
