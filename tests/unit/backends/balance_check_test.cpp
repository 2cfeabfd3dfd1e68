#include "backends/balance_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "base/format.h"

namespace quirepress {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// Each message by what tells it from the others.
const auto kFirstIsAll = HasSubstr("Setting first printer to spool limit 0");
const auto kFirstTakesAll = HasSubstr("limit for printer 1 is 0 for all");
const auto kLastHasLimit = HasSubstr("need to set the last printer to spool limit 0");
const auto kNoFirst = HasSubstr("Printer 1 not set");
const auto kNoSecond = HasSubstr("Printer 2 not set");

auto NeedsLimit(int number, int next) {
    return HasSubstr(
        Format("set spool %d to value greater than 0 if you need to use the next spool %d ", number, next));
}

auto NeedsNoLimit(int number) {
    return HasSubstr(Format("need to set spool %d to 0 for all", number));
}

auto NeedsPrinter(std::size_t number) {
    return HasSubstr(Format("printer %d greater than 0 and no printer set", number));
}

// Printers "P1"... with these limits; a negative number leaves the printer out.
BalanceOptions Limits(std::initializer_list<int> limits) {
    BalanceOptions options;
    std::size_t i = 0;
    for (const int limit : limits) {
        if (limit >= 0) options.m_printers[i] = {"P" + std::to_string(i + 1), "", limit};
        ++i;
    }
    return options;
}

TEST(CheckBalanceOptions, HasNothingToSayOfSoundOptions) {
    EXPECT_THAT(CheckBalanceOptions(Limits({3, 0})), IsEmpty());
    EXPECT_THAT(CheckBalanceOptions(Limits({3, 2, -1, 5, 0})), IsEmpty());
    EXPECT_THAT(CheckBalanceOptions(Limits({1, 1, 1, 1, 1, 1, 1, 1, 1, 0})), IsEmpty());
}

TEST(CheckBalanceOptions, AsksForTheFirstTwoPrinters) {
    EXPECT_THAT(CheckBalanceOptions({}), ElementsAre(kNoFirst, kNoSecond, kFirstIsAll, kFirstTakesAll));
    EXPECT_THAT(CheckBalanceOptions(Limits({-1, 0})), ElementsAre(kNoFirst, kFirstIsAll, kFirstTakesAll));
    EXPECT_THAT(CheckBalanceOptions(Limits({4})), ElementsAre(kNoSecond, NeedsNoLimit(1), kLastHasLimit));
}

TEST(CheckBalanceOptions, TellsOfAPrinterThatTakesAllBeforeTheLast) {
    EXPECT_THAT(CheckBalanceOptions(Limits({0, 0})),
                ElementsAre(kFirstIsAll, kFirstTakesAll, NeedsLimit(1, 2)));
    const std::vector<int> nextOnes = {2, 3, 4, 5, 5, 5, 5, 5, 5};
    for (int number = 1; number <= 9; ++number) {
        BalanceOptions options = Limits({1, 1, 1, 1, 1, 1, 1, 1, 1, 0});
        options.m_printers[static_cast<std::size_t>(number - 1)].spool = 0;
        EXPECT_THAT(CheckBalanceOptions(options),
                    Contains(NeedsLimit(number, nextOnes[static_cast<std::size_t>(number - 1)])))
            << number;
    }
}

TEST(CheckBalanceOptions, TellsOfALimitWithoutAPrinter) {
    for (std::size_t i = 2; i < kBalancedPrinters; ++i) {
        BalanceOptions options = Limits({3, 2});
        options.m_printers[i].spool = 1;
        EXPECT_THAT(CheckBalanceOptions(options), Contains(NeedsPrinter(i + 1)));
    }
    BalanceOptions second = Limits({3, -1, 0});
    second.m_printers[1].spool = 7;
    EXPECT_THAT(CheckBalanceOptions(second), ElementsAre(kNoSecond, NeedsPrinter(2)));
}

TEST(CheckBalanceOptions, TellsOfALastPrinterWithALimit) {
    EXPECT_THAT(CheckBalanceOptions(Limits({3, 2})), ElementsAre(NeedsNoLimit(2), kLastHasLimit));
    EXPECT_THAT(CheckBalanceOptions(Limits({1, 1, 1, 1, 1, 1, 1, 1, 1})),
                ElementsAre(NeedsNoLimit(9), kLastHasLimit));
    EXPECT_THAT(CheckBalanceOptions(Limits({1, 1, 1, 1, 1, 1, 1, 1, 1, 1})), ElementsAre(kLastHasLimit));
}

TEST(ParseBalancedPrinters, TakesNumbersAndNames) {
    BalanceOptions options = Limits({1, 1, 1});
    options.m_printers[4].name = "Big Plotter";
    options.m_printers[5].name = "Big Plotter";
    const std::vector<std::pair<const char*, std::string>> cases = {{"", "1111111111"},
                                                                    {"  ", "1111111111"},
                                                                    {"1", "0000000001"},
                                                                    {"1,3", "0000000101"},
                                                                    {" 10 ; 2 ,2", "1000000010"},
                                                                    {"P2", "0000000010"},
                                                                    {"Big Plotter,P1", "0000110001"},
                                                                    {"0,11,-1,x", "0000000000"},
                                                                    {",;,", "0000000000"},
                                                                    {"3,nonsense", "0000000100"},
                                                                    {"p2", "0000000000"},
                                                                    {"99999999999999999999", "0000000000"}};
    for (const auto& [text, bits] : cases)
        EXPECT_EQ(ParseBalancedPrinters(text, options).to_string(), bits) << text;
    options.m_printers[9].name = "a, b";
    EXPECT_EQ(TextOfBalancedPrinters(options), "1,2,3,5,6,10");
    EXPECT_EQ(TextOfBalancedPrinters({}), "");
    for (const char* text : {"", " ", "1", "P2;3 , Big Plotter"})
        EXPECT_EQ(FindUnknownBalancedPrinter(text, options), "") << text;
    EXPECT_EQ(FindUnknownBalancedPrinter("1,9", options), "\"9\" is no printer of balancedprinters.ini.");
    EXPECT_EQ(FindUnknownBalancedPrinter("p2", options), "\"p2\" is no printer of balancedprinters.ini.");
    EXPECT_EQ(FindUnknownBalancedPrinter(",;", options), "\",;\" names no printer.");
}

}  // namespace
}  // namespace quirepress
