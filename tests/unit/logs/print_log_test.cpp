#include "logs/print_log.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "fakes/surroundings.h"
#include "logs/log_viewer.h"

namespace quirepress {
namespace {

using Fields = std::vector<std::string>;
using Box = FakePrompts::Box;

std::string Padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

class PrintLogTest : public testing::Test {
protected:
    PrintLogTest() { m_around.clock.SetLocal({2013, 4, 5, 14, 3, 9}); }

    std::string Bytes() { return m_around.folder.Read("print.log"); }
    std::vector<Fields> Records() {
        std::vector<Fields> records;
        EXPECT_EQ(
            LoadLog(m_around.files, m_around.prompts, m_around.Home(), *FindViewedLog("print"), records), 0);
        return records;
    }
    std::string TimeOf(Instant instant) { return FormatDateTime(m_around.clock.ToLocal(instant)); }
    // 0 when nothing was to be done, 1 when the log was converted, -1.
    int Convert() {
        bool isConverted = false;
        const int result = m_log.ConvertOldPrintLog(isConverted);
        return result == 0 ? static_cast<int>(isConverted) : result;
    }

    Surroundings m_around;
    PrintLog m_log{m_around.files, m_around.clock, m_around.prompts, m_around.debugLog,
                   m_around.folder.PathOf("print.log")};
};

TEST_F(PrintLogTest, ARecordHasItsColumns) {
    const std::string file = m_around.folder.Write("a.pdf", "12345");
    const FileFacts facts = m_around.files.Inspect(file);
    EXPECT_EQ(m_log.WritePrintLogRecord(file, 12, std::string(119, 'P') + "LATE"), 0);
    EXPECT_EQ(Bytes(), Padded("2013-04-05 14:03:09", 22) + "\t" + Padded("5", 8) + "\t" + Padded(file, 160) +
                           "\t" + Padded(facts.created == kNoInstant ? "" : TimeOf(facts.created), 22) +
                           "\t" + Padded(TimeOf(facts.written), 22) + Padded("12", 8) + "\t" +
                           std::string(119, 'P') + "L\r\n");
}

TEST_F(PrintLogTest, WhatIsNoFileHasNoSizeAndNoTimes) {
    EXPECT_EQ(m_log.WritePrintLogRecord("/in/gone.pdf", 1, "Office"), 0);
    EXPECT_EQ(m_log.WriteLine("Closing Application"), 0);
    EXPECT_EQ(Records(),
              (std::vector<Fields>{{"2013-04-05 14:03:09", "0", "/in/gone.pdf", "", "", "1", "Office"},
                                   {"2013-04-05 14:03:09", "0", "Closing Application", "", "", "0", ""}}));
}

TEST_F(PrintLogTest, ALongNameShiftsWhatFollows) {
    EXPECT_EQ(m_log.WritePrintLogRecord(std::string(163, 'n'), 7, "Office"), 0);
    const Fields fields = Records().at(0);
    EXPECT_EQ(fields[2], std::string(160, 'n'));
    EXPECT_EQ(fields[3], "nn\t");
    EXPECT_EQ(fields[5], "   7");
    EXPECT_EQ(fields[6], "  \tOffice");
}

TEST_F(PrintLogTest, ALogThatCannotBeOpenedIsSaidOnce) {
    using Call = FaultyFiles::Call;
    const std::vector<Box> once = {{"Log File Error", "Can't open print.log for append"}};
    m_around.files.FailAlways(Call::kOpenForWriting, FileResult::kNoAccess);
    EXPECT_EQ(m_log.WriteLine("a"), -1);
    EXPECT_EQ(m_log.WriteLine("b"), -1);
    EXPECT_EQ(m_around.prompts.boxes, once);
    m_around.files.Heal();
    EXPECT_EQ(m_log.WriteLine("c"), 0);
    m_around.files.FailOnce(Call::kOpenForWriting, FileResult::kNoAccess);
    EXPECT_EQ(m_log.WriteLine("d"), -1);
    EXPECT_EQ(m_around.prompts.boxes.size(), 2U);
}

TEST_F(PrintLogTest, AFailedWriteGoesToTheDebugLogAndSpoilsNoOtherRecord) {
    EXPECT_EQ(m_around.debugLog.Open(*m_around.system.files, m_around.folder.PathOf("qpr.log")), 0);
    m_around.files.FillDiskAfter(40);
    EXPECT_EQ(m_log.WriteLine("a"), -1);
    m_around.files.Heal();
    EXPECT_EQ(m_log.WriteLine("b"), 0);
    EXPECT_EQ(Records().back()[2], "b");
    EXPECT_TRUE(Contains(m_around.folder.Read("qpr.log"), "Log error: "));
    EXPECT_TRUE(m_around.prompts.boxes.empty());
}

// Of the layout that had 80 columns for the name and none for the printer.
std::string OldRecord(const std::string& name) {
    return Padded("2009-01-02 03:04:05", 22) + "\t" + Padded("77", 8) + "\t" + Padded(name, 80) + "\t" +
           Padded("2009-01-01 00:00:00", 22) + "\t" + Padded("2009-01-01 00:00:01", 22) + Padded("4", 8);
}

TEST_F(PrintLogTest, AnOldLogIsWidened) {
    for (const char* lineEnd : {"\r\n", "\n"}) {
        const std::string old = OldRecord("/in/a.pdf") + lineEnd + "short" + lineEnd + OldRecord("/in/b.pdf");
        m_around.folder.Write("print.log", old);
        m_around.folder.Write("print.log.bak", "of an earlier time");
        EXPECT_EQ(Convert(), 1);
        EXPECT_EQ(m_around.folder.Read("print.log.bak"), old);
        const std::vector<Fields> records = Records();
        ASSERT_EQ(records.size(), 3U);
        EXPECT_EQ(records[0], (Fields{"2009-01-02 03:04:05", "77", "/in/a.pdf", "2009-01-01 00:00:00",
                                      "2009-01-01 00:00:01", "4", ""}));
        EXPECT_EQ(records[1], (Fields{"short", "", "", "", "", "", ""}));
        EXPECT_EQ(records[2][2], "/in/b.pdf");
        EXPECT_EQ(Convert(), 0);
    }
}

TEST_F(PrintLogTest, OnlyAFirstLineOf167IsOld) {
    EXPECT_EQ(Convert(), 0);
    const std::string line = OldRecord("/in/a.pdf");
    ASSERT_EQ(line.size(), 166U);
    for (const std::string& log : {std::string(), line, line.substr(1) + "\r\n", line + " \r\n",
                                   line.substr(1) + "\n", std::string(1000, 'x')}) {
        m_around.folder.Write("print.log", log);
        EXPECT_EQ(Convert(), 0) << log.size();
        EXPECT_EQ(Bytes(), log);
    }
    EXPECT_FALSE(m_around.folder.Has("print.log.bak"));
}

TEST_F(PrintLogTest, AConversionThatFailsLeavesTheOldLog) {
    const std::string old = OldRecord("/in/a.pdf") + "\r\n";
    m_around.folder.Write("print.log", old);
    m_around.files.FillDiskAfter(100);
    EXPECT_EQ(Convert(), -1);
    m_around.files.FillDiskAfter(200);
    EXPECT_EQ(Convert(), -1);
    EXPECT_EQ(Bytes(), old);
    EXPECT_EQ(m_around.prompts.boxes,
              (std::vector<Box>{{"Log File Convert Error", "Can'vPath + t open print.log.bak"},
                                {"Log File Convert Error", "Can't open print.log"}}));
    m_around.files.Heal();
    EXPECT_EQ(Convert(), 1);
}

TEST_F(PrintLogTest, TheViewerSavesWhatItShows) {
    const ViewedLog& viewed = *FindViewedLog("print");
    for (const char* name : {"/in/a.pdf", "/in/b.pdf"}) m_log.WritePrintLogRecord(name, 2, "Office");
    const std::string whole = Bytes();
    std::vector<Fields> records = Records();
    EXPECT_EQ(SaveLog(m_around.files, m_around.prompts, m_around.Home(), viewed, records), 0);
    EXPECT_EQ(Bytes(), whole);
    records.pop_back();
    m_around.files.FillDiskAfter(20);
    EXPECT_EQ(SaveLog(m_around.files, m_around.prompts, m_around.Home(), viewed, records), -1);
    EXPECT_EQ(Bytes(), whole);
    m_around.files.Heal();
    m_around.system.files->Erase(m_log.Path());
    EXPECT_EQ(LoadLog(m_around.files, m_around.prompts, m_around.Home(), viewed, records), -1);
    EXPECT_EQ(LoadLog(m_around.files, m_around.prompts, m_around.Home(), *FindViewedLog("error"), records),
              -1);
    EXPECT_EQ(m_around.prompts.boxes,
              (std::vector<Box>{{"Log File", "Done"},
                                {"Log File Error", "Can't open print.log for writing"},
                                {"Log File Error", "Can't open '" + m_log.Path() + "' for reading"},
                                {"Log File Error", "Can't open error.log for reading"}}));
}

}  // namespace
}  // namespace quirepress
