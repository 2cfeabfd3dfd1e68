#include "base/keyword_lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quirepress {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> LinesOf(std::string_view text) {
    std::vector<std::string> lines;
    KeywordLines reader(text);
    for (std::string_view line; reader.TakeLine(line);) lines.emplace_back(line);
    return lines;
}

std::vector<std::string> TokensOf(std::string_view line) {
    std::vector<std::string> tokens;
    KeywordTokens reader(line);
    for (std::string_view token; reader.TakeToken(token);) tokens.emplace_back(token);
    return tokens;
}

TEST(KeywordLinesTest, TakesLinesOfBothKinds) {
    EXPECT_THAT(LinesOf("A\r\nB;1\n\nC"), ElementsAre("A", "B;1", "", "C"));
    EXPECT_THAT(LinesOf("A\r\n"), ElementsAre("A"));
    EXPECT_THAT(LinesOf("A\r\r\nB\rC"), ElementsAre("A\r", "B\rC"));
    EXPECT_THAT(LinesOf(""), IsEmpty());
    EXPECT_THAT(LinesOf(std::string_view("A\0B\n", 4)), ElementsAre(std::string("A\0B", 3)));
}

TEST(KeywordLinesTest, EndsAtALineThatIsTooLong) {
    const std::string longest(kKeywordLineLimit, 'x');
    // The line end does not count, whichever it is.
    EXPECT_THAT(LinesOf(longest + "\r\nB"), ElementsAre(longest, "B"));
    EXPECT_THAT(LinesOf(longest + "\nB"), ElementsAre(longest, "B"));
    EXPECT_THAT(LinesOf(longest), ElementsAre(longest));
    EXPECT_THAT(LinesOf("A\n" + longest + "x\nB"), ElementsAre("A"));
    EXPECT_THAT(LinesOf(longest + "x"), IsEmpty());
}

TEST(KeywordTokensTest, TakesRunsOfSeparatorsAsOne) {
    EXPECT_THAT(TokensOf("KEY;value;;other"), ElementsAre("KEY", "value", "other"));
    EXPECT_THAT(TokensOf(";;KEY;"), ElementsAre("KEY"));
    EXPECT_THAT(TokensOf("KEY; "), ElementsAre("KEY", " "));
    EXPECT_THAT(TokensOf(";;;"), IsEmpty());
    EXPECT_THAT(TokensOf(""), IsEmpty());
}

}  // namespace
}  // namespace quirepress
