#include "console/table.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "console/progress.h"

namespace quirepress {
namespace {

TEST(Table, AlignsByCharactersAndKeepsControlCharactersOffTheTerminal) {
    Table table({{"No.", true}, {"Name"}, {"Size", true}});
    table.AddRow({"1", "h\xc3\xa4ll\xc3\xb6", "12"});
    table.AddRow({"10", "a\x1b[31mb\n", "3"});
    EXPECT_EQ(table.Render(false),
              "No.  Name          Size\n"
              "  1  h\xc3\xa4ll\xc3\xb6           12\n"
              " 10  a\\x1B[31mb\\n     3\n");
}

TEST(Table, CutsTheMiddleBetweenCharacters) {
    EXPECT_EQ(CutMiddle("short", 10), "short");
    EXPECT_EQ(CutMiddle("/very/long/folder/file.ps", 15), "/ver.../file.ps");
    const std::string umlauts = "\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4";
    EXPECT_EQ(CountCharacters(CutMiddle(umlauts, 7)), 7U);
}

TEST(Table, ShadesWholeRowsOnlyWhereColoursAreWanted) {
    Table table({{"A"}});
    table.AddRow({"x"}, Shade::kBad);
    EXPECT_EQ(table.Render(false), "A\nx\n");
    EXPECT_EQ(table.Render(true), "\x1b[2mA\x1b[0m\n\x1b[31mx\x1b[0m\n");
}

TEST(Progress, TheBarNeverLeavesItsBrackets) {
    EXPECT_EQ(RenderBar(-1, 4), "[----]");
    EXPECT_EQ(RenderBar(0.5, 4), "[##--]");
    EXPECT_EQ(RenderBar(7, 4), "[####]");
}

}  // namespace
}  // namespace quirepress
