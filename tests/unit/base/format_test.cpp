#include "base/format.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <limits>
#include <string>

#include "base/date_time.h"
#include "base/numbers.h"

namespace quirepress {
namespace {

TEST(FormatTest, WritesIntegersOfEveryWidth) {
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(Format("%d|%ld|%lld|%i", 5'000'000'000, 5'000'000'000, kLeast, -1),
              "5000000000|5000000000|-9223372036854775808|-1");
    EXPECT_EQ(Format("%u %lu %hd", kMost, 4'000'000'000U, 70'000), "18446744073709551615 4000000000 70000");
    EXPECT_EQ(Format("%.8X|%x|%#x|%o", 0xBEEF, 255U, 255U, 8), "0000BEEF|ff|0xff|10");
    EXPECT_EQ(Format("%.4d-%.2d|%5.5d|%-6d|%06d|%+d|% d", 2024, 3, 42, 7, -42, 5, 5),
              "2024-03|00042|7     |-00042|+5| 5");
    EXPECT_EQ(Format("%d", true), "1");
}

TEST(FormatTest, CountsWidthsOfTextsInBytes) {
    EXPECT_EQ(Format("%-8s|%8s|%s", "ab", "ab", ""), "ab      |      ab|");
    // Two characters, five bytes: the columns of the logs are bytes.
    EXPECT_EQ(Format("%-8s|", "\xC3\xBC\xE2\x82\xAC"), "\xC3\xBC\xE2\x82\xAC   |");
    EXPECT_EQ(Format("%.3s|%-6.2s|", "abcdef", "abcdef"), "abc|ab    |");
    EXPECT_EQ(Format("%10s", std::string(20, 'x')), std::string(20, 'x'));
    EXPECT_EQ(Format("%s", std::string("a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(Format("%c%c%3c|", 'Q', 0xA6, 'x'), "Q\xA6  x|");
}

TEST(FormatTest, WritesRealsWithoutTheUsersLocale) {
    const char* const before = std::setlocale(LC_ALL, nullptr);
    const std::string saved = before != nullptr ? before : "C";
    std::setlocale(LC_ALL, "");
    EXPECT_EQ(Format("%.2f|%8.3f|%g|%e", 1234.5, -0.5, 0.25, 1.0), "1234.50|  -0.500|0.25|1.000000e+00");
    std::setlocale(LC_ALL, saved.c_str());
}

TEST(FormatTest, LeavesWhatHasNoFittingArgument) {
    EXPECT_EQ(Format("100%% of %s", "all"), "100% of all");
    EXPECT_EQ(Format("%d and %s", 1), "1 and %s");
    EXPECT_EQ(Format("%d %s", "text", 5), "%d %s");
    EXPECT_EQ(Format("%f %d %c", 1, 1.5, "x"), "%f %d %c");
    EXPECT_EQ(Format("%u", -1), "18446744073709551615");
    EXPECT_EQ(Format("end %"), "end %");
    EXPECT_EQ(Format("%-08.3l", 1), "%-08.3l");
    EXPECT_EQ(Format("%n %p", 1, 2), "%n %p");
    EXPECT_EQ(Format("none", 1, 2), "none");
    EXPECT_EQ(Format(""), "");
}

TEST(FormatTest, SurvivesHostileWidths) {
    EXPECT_EQ(Format("%99999999999999999999d", 1).size(), 100'000U);
    EXPECT_EQ(Format("%.99999999999999999999s", "abc"), "abc");
    EXPECT_EQ(Format(std::string("a\0%d", 4), 7), std::string("a\0"
                                                              "7",
                                                              3));
}

TEST(NumbersTest, ParsesLongsTheConventionalWay) {
    EXPECT_EQ(ParseLong("42"), 42);
    EXPECT_EQ(ParseLong(" \t\r\n\v\f-17 pages"), -17);
    EXPECT_EQ(ParseLong("+8x"), 8);
    EXPECT_EQ(ParseLong("007"), 7);
    for (const char* none : {"", "   ", "x1", "-", "+-1", "--1", ".5", "\xD9\xA1"})
        EXPECT_EQ(ParseLong(none), 0) << none;
    EXPECT_EQ(ParseLong(std::string_view("1\0"
                                         "2",
                                         3)),
              1);
}

TEST(NumbersTest, KeepsLongsInTheirRange) {
    EXPECT_EQ(ParseLong("2147483647"), 2'147'483'647);
    EXPECT_EQ(ParseLong("2147483648"), 2'147'483'647);
    EXPECT_EQ(ParseLong("-2147483648"), -2'147'483'647 - 1);
    EXPECT_EQ(ParseLong("-2147483649"), -2'147'483'647 - 1);
    EXPECT_EQ(ParseLong(std::string(5'000, '9')), 2'147'483'647);
    EXPECT_EQ(ParseLong("-" + std::string(5'000, '9')), -2'147'483'647 - 1);
}

TEST(NumbersTest, TakesWholeNumbersOnly) {
    EXPECT_EQ(ParseWholeNumber("0", 0, 10), 0);
    EXPECT_EQ(ParseWholeNumber("-5", -5, 10), -5);
    EXPECT_EQ(ParseWholeNumber("9223372036854775807", 0, INT64_MAX), INT64_MAX);
    for (const char* none : {"", " 1", "1 ", "+1", "1x", "11", "-1", "9223372036854775808", "0x1"})
        EXPECT_FALSE(ParseWholeNumber(none, 0, 10)) << none;
}

TEST(DateTimeTest, FormatsWithZeroes) {
    EXPECT_EQ(FormatDateTime({2024, 3, 1, 4, 5, 6}), "2024-03-01 04:05:06");
    EXPECT_EQ(FormatDateTime({}), "0000-00-00 00:00:00");
}

TEST(DateTimeTest, ReadsWhatItFormatsAndLooserTexts) {
    LocalTime time;
    EXPECT_TRUE(ParseDateTime("2024-12-31 23:59:58", time));
    EXPECT_EQ(time, (LocalTime{2024, 12, 31, 23, 59, 58}));
    EXPECT_TRUE(ParseDateTime("  2024-1-2   3:4:5 and more", time));
    EXPECT_EQ(time, (LocalTime{2024, 1, 2, 3, 4, 5}));
    EXPECT_FALSE(ParseDateTime("2024-12-31", time));
    EXPECT_EQ(time, (LocalTime{2024, 12, 31, 0, 0, 0}));
    EXPECT_FALSE(ParseDateTime("2024-12-31 10:20", time));
    EXPECT_EQ(time, (LocalTime{2024, 12, 31, 10, 20, 0}));
    for (const char* none : {"", "date", "-", "2024/12/31"}) {
        EXPECT_FALSE(ParseDateTime(none, time)) << none;
        EXPECT_EQ(time.month, 0) << none;
    }
    EXPECT_FALSE(ParseDateTime("99999999999-1-1 1:1:1", time));
}

}  // namespace
}  // namespace quirepress
