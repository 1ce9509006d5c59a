#include "app/core/Options.h"
#include "common/core/RuntimeError.h"

#include <gtest/gtest.h>

#include <tuple>

namespace kesta {
namespace {

// Parses `text` into options that all start at 9: the error number (0 for none) and values 1..6.
std::string parsed(std::string_view text)
{
    UserOptions o;
    for (int k = 0; k <= 6; ++k)
        o.values[k] = 9;
    std::string result;
    try {
        parseOptions(text, o);
        result = "0";
    } catch (const RuntimeError& error) {
        result = std::to_string(error.number());
    }
    for (int k = 1; k <= 6; ++k)
        result += " " + std::to_string(o.values[k]);
    return result;
}

TEST(OptionsTest, TheDefaultTextGivesTheDefaultsAndFormatsBackByteForByte)
{
    UserOptions o;
    parseOptions(DefaultOptionsText, o);
    EXPECT_EQ(formatOptions(o), "1\r\n0\r\n0\r\n1\r\n30\r\n5");
    EXPECT_EQ(parsed(DefaultOptionsText), "0 1 0 0 1 30 5");
    parseOptions("7\n-3\r 2 \r\n0\r\n59\r\n20\r\nnot a number\r\n", o);
    EXPECT_EQ(formatOptions(o), "7\r\n-3\r\n2\r\n0\r\n59\r\n20");
}

TEST(OptionsTest, AnySixteenBitValueParsesAndDamagedFilesKeepWhatWasReadBefore)
{
    const std::pair<const char*, std::string> cases[] = {
        {"32767\r\n-32768\r\n0\r\n0\r\n0\r\n20\r\nextra", "0 32767 -32768 0 0 0 20"},
        {"1\r\n2\r\n3\r\n4\r\n5", std::to_string(err::InputPastEnd) + " 1 2 3 4 5 9"},
        {"1\r\n2\r\n3\r\n4\r\n5\r\n", std::to_string(err::InputPastEnd) + " 1 2 3 4 5 9"},
        {"", std::to_string(err::InputPastEnd) + " 9 9 9 9 9 9"},
        {"1\r\n0\r\nten\r\n1\r\n30\r\n5", std::to_string(err::TypeMismatch) + " 1 0 9 9 9 9"},
        {"1\r\n\r\n0\r\n1\r\n30\r\n5", std::to_string(err::TypeMismatch) + " 1 9 9 9 9 9"},
        {"1\r\n0\r\n0\r\n40000\r\n30\r\n5", std::to_string(err::Overflow) + " 1 0 0 9 9 9"},
    };
    for (const auto& [text, result] : cases)
        EXPECT_EQ(parsed(text), result) << text;
}

TEST(OptionsTest, AListShowsOnlyTheValuesItOffers)
{
    for (const auto& [value, last, text] : {std::tuple{0, FontSizeLast, "0"}, {12, FontSizeLast, "12"},
                                           {13, FontSizeLast, ""}, {-1, HoursLast, ""}, {24, HoursLast, "24"},
                                           {59, SecondsLast, "59"}})
        EXPECT_EQ(listText(value, last), text) << value;
}

} // namespace
} // namespace kesta
