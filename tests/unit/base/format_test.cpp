#include "base/format.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <limits>

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

}  // namespace
}  // namespace quirepress
