#include "logs/error_log.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "fakes/fake_prompts.h"
#include "fakes/surroundings.h"
#include "logs/log_lines.h"
#include "logs/unattended_prompts.h"

namespace quirepress {
namespace {

using Fields = std::vector<std::string>;

class ErrorLogTest : public testing::Test {
protected:
    ErrorLogTest() { m_around.clock.SetLocal({2024, 3, 5, 7, 8, 9}); }

    std::vector<Fields> Records() {
        std::vector<Fields> records;
        EXPECT_EQ(ReadRecords(m_around.files, m_log.Path(), ErrorRecordLayout(), records), 0);
        return records;
    }
    std::string Bytes() { return m_around.folder.Read("error.log"); }

    Surroundings m_around;
    ErrorLog m_log{m_around.files, m_around.clock, m_around.folder.PathOf("error.log")};
};

TEST_F(ErrorLogTest, ARecordHasItsColumns) {
    EXPECT_EQ(m_log.Append({"/in/a.pdf", "/done", "Error can't move", "Office"}), 0);
    const auto padded = [](std::string text, std::size_t width) {
        text.resize(width, ' ');
        return text;
    };
    EXPECT_EQ(Bytes(), padded("2024-03-05", 20) + padded("07:08:09", 20) + padded("/in/a.pdf", 200) +
                           padded("/done", 200) + padded("Error can't move", 200) + padded("Office", 100) +
                           "\r\n");
    EXPECT_EQ(Records(), (std::vector<Fields>{{"2024-03-05", "07:08:09", "/in/a.pdf", "/done",
                                               "Error can't move", "Office"}}));
}

TEST_F(ErrorLogTest, ALongSourceShiftsWhatFollowsAndALineEndDoesNot) {
    EXPECT_EQ(m_log.Append({std::string(203, 's'), "to", "", ""}), 0);
    const Fields fields = Records().at(0);
    EXPECT_EQ(fields[2], std::string(200, 's'));
    EXPECT_EQ(fields[3], "sssto");
    using namespace std::string_literals;
    EXPECT_EQ(m_log.Append({"a\r\nb\0c"s, "", "one\ntwo", ""}), 0);
    ASSERT_EQ(Records().size(), 2U) << "a line end starts no record";
    EXPECT_EQ(Records()[1][2], "a  b c");
    EXPECT_EQ(Records()[1][4], "one two");
}

TEST_F(ErrorLogTest, AHalfLineSpoilsOnlyItself) {
    m_around.folder.Write("error.log", "2024-03-05          07:0");
    EXPECT_EQ(m_log.Append({"a.pdf", "", "", ""}), 0);
    EXPECT_EQ(m_log.Append({"b.pdf", "", "", ""}), 0);
    const std::vector<Fields> records = Records();
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0], (Fields{"2024-03-05", "07:0", "", "", "", ""}));
    EXPECT_EQ(records[1][2], "a.pdf");
    EXPECT_EQ(records[2][2], "b.pdf");
}

TEST_F(ErrorLogTest, GarbageIsReadAsItLies) {
    using namespace std::string_literals;
    m_around.folder.Write("error.log", "\n\r\n\0\xFF\n"s + std::string(300000, 'x') + "\r\nlast");
    const std::vector<Fields> records = Records();
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0][0], "\0\xFF"s);
    EXPECT_EQ(records[1][5], std::string(100, 'x'));
    EXPECT_EQ(records[2][0], "last");
}

TEST_F(ErrorLogTest, LinesAreWholeAcrossBlocks) {
    std::string text;
    for (int i = 0; i < 9000; ++i) text += "line " + std::to_string(i) + " of the log\r\n";
    m_around.folder.Write("error.log", text);
    FileResult result = FileResult::kFailed;
    const auto file = m_around.files.OpenForReading(m_log.Path(), result);
    LogLines lines(*file);
    int count = 0;
    for (std::string_view line; lines.TakeLine(line); ++count)
        ASSERT_EQ(line, "line " + std::to_string(count) + " of the log");
    EXPECT_EQ(count, 9000);
    EXPECT_FALSE(lines.HasFailed());
}

TEST_F(ErrorLogTest, FailuresAreAnswered) {
    std::vector<Fields> records;
    EXPECT_EQ(ReadRecords(m_around.files, m_log.Path(), ErrorRecordLayout(), records), -1);
    m_around.files.FillDiskAfter(10);
    EXPECT_EQ(m_log.Append({"a.pdf", "", "", ""}), -1);
    m_around.files.Heal();
    m_around.files.FailOnce(FaultyFiles::Call::kOpenForWriting, FileResult::kNoAccess);
    EXPECT_EQ(m_log.Append({"a.pdf", "", "", ""}), -1);
    EXPECT_EQ(m_log.Append({"b.pdf", "", "", ""}), 0);
    EXPECT_EQ(Records().back()[2], "b.pdf");
    m_around.files.FailAlways(FaultyFiles::Call::kReadAt, FileResult::kFailed);
    EXPECT_EQ(ReadRecords(m_around.files, m_log.Path(), ErrorRecordLayout(), records), -1);
}

TEST_F(ErrorLogTest, NobodyIsAskedUnattended) {
    FakePrompts user;
    UnattendedPrompts prompts(m_log, user);
    prompts.ShowBox("Save Error!", "Can't save to misc.ini file.");
    EXPECT_TRUE(prompts.AskYesNo("Open File", "Now ?", true));
    EXPECT_FALSE(prompts.AskYesNo("Open File", "Now ?", false));
    const std::vector<Fields> records = Records();
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0][4], "Save Error!: Can't save to misc.ini file.");
    EXPECT_EQ(records[1][4], "Open File: Now ? Yes");
    EXPECT_EQ(records[2][4], "Open File: Now ? No");
    EXPECT_TRUE(user.boxes.empty());
    m_around.files.FailAlways(FaultyFiles::Call::kOpenForWriting, FileResult::kNoAccess);
    prompts.ShowBox("Print Error!", "No Files to Print");
    EXPECT_FALSE(prompts.AskYesNo("Open File", "Now ?", false));
    EXPECT_EQ(user.boxes, (std::vector<FakePrompts::Box>{{"Print Error!", "No Files to Print"},
                                                         {"Open File", "Now ? No"}}));
    EXPECT_TRUE(user.questions.empty());
}

}  // namespace
}  // namespace quirepress
