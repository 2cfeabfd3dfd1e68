#include "settings/print_commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/surroundings.h"

namespace quirepress {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using Flaws = std::vector<std::string>;

TEST(PrintCommands, OfTheFirstStartAreAllUsed) {
    Flaws flaws;
    const PrintCommandTable table = ParsePrintCommands(DefaultPrintCommands(), flaws);
    EXPECT_THAT(flaws, IsEmpty());
    ASSERT_GE(table.commands.size(), 4U);
    EXPECT_EQ(table.commands[0].words[0], "soffice");
    EXPECT_EQ(table.commands[0].batch, 50);
    EXPECT_EQ(table.scriptLimitSeconds, 0);
}

TEST(PrintCommands, AreReadGroupByGroup) {
    Flaws flaws;
    const PrintCommandTable table = ParsePrintCommands(
        "# a comment\r\n"
        "SCRIPTLIMIT;90\r\n"
        "COMMAND; Drawings \r\n"
        "TYPES;.DXF  .Dwg image/*\r\n"
        "TYPES;.plt\r\n"
        "PDF;sh -c \"a; b \\\"$1\\\" > \\\"$2\\\"\" sh %1 %o\r\n"
        "LIMIT;30\r\n"
        "\r\n"
        "COMMAND;Labels\n"
        "TYPES;.lab\n"
        "PRINT;lp -d %p -- %1",
        flaws);
    EXPECT_THAT(flaws, IsEmpty());
    EXPECT_EQ(table.scriptLimitSeconds, 90);
    ASSERT_EQ(table.commands.size(), 2U);
    const PrintCommand& drawings = table.commands[0];
    EXPECT_EQ(drawings.name, "Drawings");
    EXPECT_THAT(drawings.types, ElementsAre(".dxf", ".dwg", "image/*", ".plt"));
    EXPECT_THAT(drawings.words, ElementsAre("sh", "-c", "a; b \"$1\" > \"$2\"", "sh", "%1", "%o"));
    EXPECT_EQ(drawings.limitSeconds, 30);
    EXPECT_EQ(drawings.action, PrintCommand::Action::kMakesPdf);
    const PrintCommand& labels = table.commands[1];
    EXPECT_EQ(labels.action, PrintCommand::Action::kPrints);
    EXPECT_EQ(labels.limitSeconds, kDefaultLimitSeconds);
    EXPECT_EQ(labels.batch, 1);
}

TEST(PrintCommands, TellEachLineThatIsNotUsed) {
    Flaws flaws;
    const PrintCommandTable table = ParsePrintCommands(
        "TYPES;.a\n"
        "COMMAND;Good\nTYPES;.doc word *.x\nPDF;w %1 %o\nLIMIT;soon\nBATCH;0\nPDF;v %1 %o\nCOLOUR;red\n"
        "COMMAND;No line\nTYPES;.b\n"
        "COMMAND;No types\nPRINT;w %1\n"
        "COMMAND;No file\nTYPES;.c\nPRINT;w\n"
        "COMMAND;No PDF\nTYPES;.d\nPDF;w %1\n"
        "COMMAND;Batch\nTYPES;.e\nPDF;w %1 %o\nBATCH;5\n"
        "COMMAND;Open\nTYPES;.f\nPRINT;w \"%1\n"
        "COMMAND;Star\nTYPES;.g\nPDF;w x%* %o\n"
        "COMMAND;Printer\nTYPES;.h\nPDF;w %1 %o %p\n",
        flaws);
    ASSERT_EQ(table.commands.size(), 1U);
    EXPECT_THAT(table.commands[0].types, ElementsAre(".doc"));
    EXPECT_EQ(table.commands[0].line, "w %1 %o");
    EXPECT_EQ(table.commands[0].limitSeconds, kDefaultLimitSeconds);
    EXPECT_THAT(flaws, ElementsAre(HasSubstr("line 1: TYPES stands before"), HasSubstr("line 3: \"word\""),
                                   HasSubstr("line 5: \"soon\" is no number"), HasSubstr("line 6: \"0\""),
                                   HasSubstr("line 7: the group has a command line"),
                                   HasSubstr("line 8: there is no key"), HasSubstr("line 9: \"No line\""),
                                   HasSubstr("line 11: \"No types\""), HasSubstr("line 13: \"No file\""),
                                   HasSubstr("line 16: \"No PDF\""), HasSubstr("line 19: \"Batch\""),
                                   HasSubstr("line 25: a quotation mark"), HasSubstr("line 23: \"Open\""),
                                   HasSubstr("line 26: \"Star\""), HasSubstr("line 29: \"Printer\"")));
}

class PrintCommandFileTest : public testing::Test, protected Surroundings {
protected:
    PrintCommandFile file{SettingsPlace{files, prompts, Home()}};
};

TEST_F(PrintCommandFileTest, IsWrittenAtFirstAndReadAgainWhenItHasChanged) {
    EXPECT_EQ(file.Table().commands[0].name, "Office documents");
    EXPECT_EQ(folder.Read("print_commands.ini"), DefaultPrintCommands());

    folder.Write("print_commands.ini", "COMMAND;Mine\nTYPES;.x\nPRINT;mine %1\nwhat;\n");
    ASSERT_EQ(file.Table().commands.size(), 1U);
    EXPECT_EQ(file.Table().commands[0].name, "Mine");
    ASSERT_EQ(prompts.boxes.size(), 1U) << "said once, not with every look";
    EXPECT_THAT(prompts.boxes[0].text, HasSubstr("line 4"));

    // Whoever erases it has no commands until it is there again; it is not written behind his back.
    files.Erase(file.Path());
    EXPECT_EQ(file.Table().commands[0].name, "Mine");
    EXPECT_FALSE(folder.Has("print_commands.ini"));
}

TEST_F(PrintCommandFileTest, HasTheDefaultsWhereItCannotBeReadOrWritten) {
    files.MakeFolders(file.Path());
    EXPECT_EQ(file.Table().commands[0].name, "Office documents");
    ASSERT_EQ(prompts.boxes.size(), 1U);
    EXPECT_THAT(prompts.boxes[0].text, HasSubstr("can't be read"));
}

}  // namespace
}  // namespace quirepress
