#include "core/list_commands.h"

#include "core/list_item.h"
#include "unit/core/list_fixture.h"

namespace quirepress {
namespace {

class ListCommandsTest : public ListFixture {
protected:
    std::vector<std::string> Texts(Column column) const {
        std::vector<std::string> texts;
        for (int row = 0; row < m_list.RowCount(); ++row) texts.push_back(TextOf(row, column));
        return texts;
    }
    const SelectedRows m_second = [] { return std::vector<int>{1}; };
};

using TextList = std::vector<std::string>;

TEST_F(ListCommandsTest, WritesOneMoveToFolderIntoTheRows) {
    for (const char* path : {"/in/a.ps", "/in/b.ps", "/in/c.ps"}) Insert(path);
    EXPECT_EQ(MoveToCommand(m_list, prompts, m_second, "/out"), 1);
    EXPECT_EQ(Texts(kColumnMoveTo), (TextList{"", "/out", ""}));
    prompts.AnswerNext(true);
    EXPECT_EQ(MoveToCommand(m_list, prompts, m_second, "copy:/all"), 3);
    EXPECT_EQ(Texts(kColumnMoveTo), TextList(3, "copy:/all"));
    EXPECT_EQ(prompts.questions.at(0).text, "Do you want to apply to all in list?");
    EXPECT_EQ(prompts.statusTexts.back(), "Done");
    EXPECT_EQ(MoveToCommand(
                  m_list, prompts, [] { return std::vector<int>(); }, "/none"),
              0);
    EXPECT_EQ(Texts(kColumnMoveTo), TextList(3, "copy:/all"));
}

TEST_F(ListCommandsTest, PutsTheFilesOfTheRowsElsewhere) {
    const std::string separator(1, PlatformSeparator());
    for (const char* path : {"/in/a.ps", "C:\\in\\b.ps", "bw.papercolor", "/in/x.prs",
                             "-------Separator-------", "http://host/in/c.ps", "d.ps"})
        Insert(path);
    EXPECT_EQ(RePathCommand(m_list, prompts, m_second, "/new"), 1);  // only the selected one by default
    EXPECT_EQ(TextOf(0, kColumnFilename), "/in/a.ps");
    prompts.AnswerNext(false);
    EXPECT_EQ(RePathCommand(m_list, prompts, m_second, "/new"), 4);
    const std::string start = "/new" + separator;
    EXPECT_EQ(Texts(kColumnFilename),
              (TextList{start + "a.ps", start + "b.ps", "bw.papercolor", start + "x.prs",
                        "-------Separator-------", "http://host/in/c.ps", start + "d.ps"}));
    EXPECT_EQ(prompts.questions.at(0).text, "Do you want to change selected only ?");
}

TEST_F(ListCommandsTest, LetsRowsBeSpreadOverPrintersAndTakesItBack) {
    EXPECT_EQ(LoadBalancingCommand(m_list, prompts, m_second, "1,3"), 0);
    EXPECT_EQ(LoadBalancingClearCommand(m_list, prompts, m_second), 0);
    ASSERT_EQ(prompts.boxes.size(), 2U);
    EXPECT_EQ(prompts.boxes[0].title, "Printer Load Balancing");
    EXPECT_EQ(prompts.boxes[1].title, "Printer Load Balancing Clear");
    for (const auto& box : prompts.boxes) EXPECT_EQ(box.text, "Please add some files to list first!");
    EXPECT_TRUE(prompts.questions.empty());

    for (const char* path : {"/in/a.ps", "/in/b.ps", "/in/c.ps"}) Insert(path);
    EXPECT_EQ(LoadBalancingCommand(m_list, prompts, m_second, "2"), 1);
    EXPECT_EQ(Texts(kColumnBalancedPrinters), (TextList{"", "2", ""}));
    prompts.AnswerNext(true);
    EXPECT_EQ(LoadBalancingCommand(m_list, prompts, m_second, "1,3"), 3);
    EXPECT_EQ(Texts(kColumnBalancedPrinters), TextList(3, "1,3"));
    EXPECT_EQ(LoadBalancingClearCommand(m_list, prompts, m_second), 1);
    EXPECT_EQ(Texts(kColumnBalancedPrinters), (TextList{"1,3", "", "1,3"}));
    EXPECT_EQ(prompts.questions.at(2).title, "Printer Load Balancing Clear");
    EXPECT_EQ(prompts.questions.at(2).text, "Do you want to apply to all in list?");
}

// The selection is that of the list as it is when the user has answered.
TEST_F(ListCommandsTest, BearsAListThatShrinksWhileTheUserIsAsked) {
    for (const char* path : {"/in/a.ps", "/in/b.ps"}) Insert(path);
    prompts.WhileOpen([this] { m_list.Clear(); });
    prompts.AnswerNext(true);
    EXPECT_EQ(MoveToCommand(m_list, prompts, m_second, "/out"), 0);
    EXPECT_EQ(RePathCommand(m_list, prompts, m_second, "/out"), 0);
}

TEST(ListItemTest, CommandItemsAreKnownByExactTexts) {
    for (const std::string_view path :
         {"t.tra", "/x/landscape.paperorientation", "run.vbs", "run.bat", "x.bat.pdf", "setup.pro.txt",
          "a.product", "lj.prs", "50.paperscale.old", "bw.papercolor", "9.papersize", "3.papercopies",
          "simplex.paperduplex", "form.ppp", "/data.bat/report.pdf"})
        EXPECT_TRUE(IsCommandItem(path)) << path;
    for (const std::string_view path : {"report.PRS", "lj.prs.pdf", "form.ppp.pdf", "run.BAT", "t.TRA", "bat",
                                        "prs", "report.pdf", "", "pro", "laser.printer", "x.Pro"})
        EXPECT_FALSE(IsCommandItem(path)) << path;
}

TEST(ListItemTest, KindFollowsFromTheText) {
    for (const char* text :
         {"DL;http://h/a.pdf", "DL;https://h/a.bat", "DL;ftp://h/a", "https://www.x.pro/a", "http://h"})
        EXPECT_EQ(KindOfItem(text), ItemKind::kDownload) << text;
    for (const char* text : {"ftp://h/a", "DL;http:/h", "-------Separator------- ", "report.PRS"})
        EXPECT_EQ(KindOfItem(text), ItemKind::kDocument) << text;
    EXPECT_EQ(KindOfItem("-------Separator-------"), ItemKind::kSeparator);
    EXPECT_EQ(KindOfItem("laser.printer"), ItemKind::kCommand);
}

TEST(ListItemTest, TextsOfOneColumnLeaveTheOthersAlone) {
    ColumnTexts texts;
    texts[kColumnSelected] = "Yes";
    texts[kColumnFilename] = "/a.pdf";
    texts[kColumnProfiling] = "last";
    ListItem item(texts);
    item.SetText(kColumnStatus, "a long status that makes the item grow, and then some more of it");
    item.SetText(kColumnSelected, "");
    item.SetText(kColumnProfiling, std::string_view("with\0zero", 9));
    item.SetText(kColumnFilename, item.Text(kColumnStatus));  // from itself
    item.SetText(kColumnStatus, "Done");
    EXPECT_EQ(item.Text(kColumnSelected), "");
    EXPECT_EQ(item.Text(kColumnFilename), "a long status that makes the item grow, and then some more of it");
    EXPECT_EQ(item.Text(kColumnPages), "");
    EXPECT_EQ(item.Text(kColumnStatus), "Done");
    EXPECT_EQ(item.Text(kColumnProfiling), std::string_view("with\0zero", 9));
}

}  // namespace
}  // namespace quirepress
