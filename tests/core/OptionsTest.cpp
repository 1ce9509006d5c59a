#include "app/core/Options.h"
#include "common/core/RuntimeError.h"

#include <gtest/gtest.h>

namespace kesta {
namespace {

int parseError(std::string_view text, UserOptions& options)
{
    try {
        parseOptions(text, options);
    } catch (const RuntimeError& error) {
        return error.number();
    }
    return 0;
}

std::vector<int> values(const UserOptions& o)
{
    return {o.values[1], o.values[2], o.values[3], o.values[4], o.values[5], o.values[6]};
}

TEST(OptionsParseTest, TheDefaultTextGivesTheDefaultsAndFormatsBackByteForByte)
{
    UserOptions o;
    parseOptions(DefaultOptionsText, o);
    EXPECT_EQ(values(o), (std::vector<int>{1, 0, 0, 1, 30, 5}));
    EXPECT_EQ(formatOptions(o), "1\r\n0\r\n0\r\n1\r\n30\r\n5");
}

TEST(OptionsParseTest, AnySixteenBitValueIsAcceptedAndLinesAfterTheSixthAreIgnored)
{
    UserOptions o;
    parseOptions("7\n-3\r 2 \r\n0\r\n59\r\n20\r\nnot a number\r\n", o);
    EXPECT_EQ(values(o), (std::vector<int>{7, -3, 2, 0, 59, 20}));
    EXPECT_EQ(formatOptions(o), "7\r\n-3\r\n2\r\n0\r\n59\r\n20");
    parseOptions("32767\r\n-32768\r\n0\r\n0\r\n0\r\n0", o);
    EXPECT_EQ(o.values[1], 32767);
    EXPECT_EQ(o.values[2], -32768);
}

TEST(OptionsParseTest, DamagedFilesFailAndKeepWhatWasReadBefore)
{
    struct Case {
        const char* text;
        int error;
        std::vector<int> after; // values 1..6 afterwards, starting from all 9
    };
    const Case cases[] = {
        {"1\r\n2\r\n3\r\n4\r\n5", err::InputPastEnd, {1, 2, 3, 4, 5, 9}},
        {"1\r\n2\r\n3\r\n4\r\n5\r\n", err::InputPastEnd, {1, 2, 3, 4, 5, 9}},
        {"", err::InputPastEnd, {9, 9, 9, 9, 9, 9}},
        {"1\r\n0\r\nten\r\n1\r\n30\r\n5", err::TypeMismatch, {1, 0, 9, 9, 9, 9}},
        {"1\r\n\r\n0\r\n1\r\n30\r\n5", err::TypeMismatch, {1, 9, 9, 9, 9, 9}},
        {"1\r\n0\r\n0\r\n40000\r\n30\r\n5", err::Overflow, {1, 0, 0, 9, 9, 9}},
    };
    for (const Case& c : cases) {
        UserOptions o;
        for (int k = 0; k <= 6; ++k)
            o.values[k] = 9;
        EXPECT_EQ(parseError(c.text, o), c.error) << c.text;
        EXPECT_EQ(values(o), c.after) << c.text;
    }
}

TEST(OptionsListTest, AListShowsOnlyTheValuesItOffers)
{
    EXPECT_EQ(listText(0, FontSizeLast), "0");
    EXPECT_EQ(listText(12, FontSizeLast), "12");
    EXPECT_EQ(listText(13, FontSizeLast), "");
    EXPECT_EQ(listText(-1, HoursLast), "");
    EXPECT_EQ(listText(24, HoursLast), "24");
    EXPECT_EQ(listText(59, SecondsLast), "59");
}

} // namespace
} // namespace kesta
