#include "core/list_commands.h"

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
    EXPECT_EQ(MoveToCommand(m_list, m_prompts, m_second, "/out"), 1);
    EXPECT_EQ(Texts(kColumnMoveTo), (TextList{"", "/out", ""}));
    m_prompts.AnswerNext(true);
    EXPECT_EQ(MoveToCommand(m_list, m_prompts, m_second, "copy:/all"), 3);
    EXPECT_EQ(Texts(kColumnMoveTo), TextList(3, "copy:/all"));
    EXPECT_EQ(m_prompts.questions.at(0).text, "Do you want to apply to all in list?");
    EXPECT_EQ(m_prompts.statusTexts.back(), "Done");
    EXPECT_EQ(MoveToCommand(
                  m_list, m_prompts, [] { return std::vector<int>(); }, "/none"),
              0);
    EXPECT_EQ(Texts(kColumnMoveTo), TextList(3, "copy:/all"));
}

TEST_F(ListCommandsTest, PutsTheFilesOfTheRowsElsewhere) {
    const std::string separator(1, PlatformSeparator());
    for (const char* path : {"/in/a.ps", "C:\\in\\b.ps", "bw.papercolor", "/in/x.prs",
                             "-------Separator-------", "http://host/in/c.ps", "d.ps"})
        Insert(path);
    EXPECT_EQ(RePathCommand(m_list, m_prompts, m_second, "/new"), 1);  // only the selected one by default
    EXPECT_EQ(TextOf(0, kColumnFilename), "/in/a.ps");
    m_prompts.AnswerNext(false);
    EXPECT_EQ(RePathCommand(m_list, m_prompts, m_second, "/new"), 4);
    const std::string start = "/new" + separator;
    EXPECT_EQ(Texts(kColumnFilename),
              (TextList{start + "a.ps", start + "b.ps", "bw.papercolor", start + "x.prs",
                        "-------Separator-------", "http://host/in/c.ps", start + "d.ps"}));
    EXPECT_EQ(m_prompts.questions.at(0).text, "Do you want to change selected only ?");
}

TEST_F(ListCommandsTest, LetsRowsBeSpreadOverPrintersAndTakesItBack) {
    EXPECT_EQ(LoadBalancingCommand(m_list, m_prompts, m_second, "1,3"), 0);
    EXPECT_EQ(LoadBalancingClearCommand(m_list, m_prompts, m_second), 0);
    ASSERT_EQ(m_prompts.boxes.size(), 2U);
    EXPECT_EQ(m_prompts.boxes[0].title, "Printer Load Balancing");
    EXPECT_EQ(m_prompts.boxes[1].title, "Printer Load Balancing Clear");
    for (const auto& box : m_prompts.boxes) EXPECT_EQ(box.text, "Please add some files to list first!");
    EXPECT_TRUE(m_prompts.questions.empty());

    for (const char* path : {"/in/a.ps", "/in/b.ps", "/in/c.ps"}) Insert(path);
    EXPECT_EQ(LoadBalancingCommand(m_list, m_prompts, m_second, "2"), 1);
    EXPECT_EQ(Texts(kColumnBalancedPrinters), (TextList{"", "2", ""}));
    m_prompts.AnswerNext(true);
    EXPECT_EQ(LoadBalancingCommand(m_list, m_prompts, m_second, "1,3"), 3);
    EXPECT_EQ(Texts(kColumnBalancedPrinters), TextList(3, "1,3"));
    EXPECT_EQ(LoadBalancingClearCommand(m_list, m_prompts, m_second), 1);
    EXPECT_EQ(Texts(kColumnBalancedPrinters), (TextList{"1,3", "", "1,3"}));
    EXPECT_EQ(m_prompts.questions.at(2).title, "Printer Load Balancing Clear");
    EXPECT_EQ(m_prompts.questions.at(2).text, "Do you want to apply to all in list?");
}

// The selection is that of the list as it is when the user has answered.
TEST_F(ListCommandsTest, BearsAListThatShrinksWhileTheUserIsAsked) {
    for (const char* path : {"/in/a.ps", "/in/b.ps"}) Insert(path);
    m_prompts.WhileOpen([this] { m_list.Clear(); });
    m_prompts.AnswerNext(true);
    EXPECT_EQ(MoveToCommand(m_list, m_prompts, m_second, "/out"), 0);
    EXPECT_EQ(RePathCommand(m_list, m_prompts, m_second, "/out"), 0);
}

}  // namespace
}  // namespace quirepress
