#include "base/numbers.h"

#include <gtest/gtest.h>

#include <string>

#include "base/date_time.h"

namespace quirepress {
namespace {

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
