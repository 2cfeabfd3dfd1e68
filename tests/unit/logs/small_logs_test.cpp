#include "logs/hang_log.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "fakes/surroundings.h"
#include "logs/log_viewer.h"
#include "logs/transfer_logs.h"

namespace quirepress {
namespace {

using Fields = std::vector<std::string>;

class HangLogTest : public testing::Test {
protected:
    HangLogTest() { m_around.clock.SetLocal({2024, 3, 5, 7, 8, 9}); }

    Surroundings m_around;
    HangLog m_log{m_around.files, m_around.clock, m_around.folder.PathOf(kHangLogName)};
};

TEST_F(HangLogTest, ALineHasItsFieldsBetweenTabs) {
    EXPECT_EQ(m_log.CountHangs("/in/a.doc"), 0);
    EXPECT_EQ(m_log.Append("WINWORD.EXE", 999, "/in/a.doc"), 0);
    EXPECT_EQ(m_around.folder.Read(kHangLogName),
              "2024-03-05 07:08:09   \tWINWORD.EXE         \t999\t/in/a.doc\r\n");
    std::vector<Fields> records;
    EXPECT_EQ(ReadRecords(m_around.files, m_around.folder.PathOf(kHangLogName), HangRecordLayout(), records),
              0);
    EXPECT_EQ(records, (std::vector<Fields>{{"2024-03-05 07:08:09", "WINWORD.EXE", "999", "/in/a.doc"}}));
}

TEST_F(HangLogTest, CountsTheLinesThatNameTheFileAndNoOthers) {
    using namespace std::string_literals;
    const std::string odd = "/in/two\r\nlines\tand\0more.doc"s;
    for (const std::string& file : {"/in/a.doc"s, "/in/a.docx"s, "/more/in/a.doc"s, odd, "/in/a.doc"s, odd})
        EXPECT_EQ(m_log.Append("WINWORD.EXE", 999, file), 0);
    EXPECT_EQ(m_log.CountHangs("/in/a.doc"), 2);
    EXPECT_EQ(m_log.CountHangs("/in/a.docx"), 1);
    EXPECT_EQ(m_log.CountHangs(odd), 2);
    EXPECT_EQ(m_log.CountHangs("a.doc"), 0);
    EXPECT_EQ(m_log.CountHangs("999"), 0);
}

TEST_F(HangLogTest, OutlivesGarbageHalfLinesAndFailures) {
    using namespace std::string_literals;
    m_around.folder.Write(kHangLogName, "\t\t\t\r\nno tabs\r\n\0\xFF\t1\n2024-03-05 07"s);
    EXPECT_EQ(m_log.Append("WINWORD.EXE", 999, "/in/a.doc"), 0);
    EXPECT_EQ(m_log.CountHangs("/in/a.doc"), 1);
    m_around.files.FailAlways(FaultyFiles::Call::kOpenForReading, FileResult::kNoAccess);
    EXPECT_EQ(m_log.CountHangs("/in/a.doc"), -1);
    m_around.files.Heal();
    m_around.files.FailOnce(FaultyFiles::Call::kFlushToDisk, FileResult::kNoSpace);
    EXPECT_EQ(m_log.Append("WINWORD.EXE", 999, "/in/b.doc"), -1);
}

class TransferLogsTest : public testing::Test {
protected:
    std::vector<Fields> Records(const char* name) {
        std::vector<Fields> records;
        EXPECT_EQ(LoadLog(m_around.files, m_around.prompts, m_around.Home(), *FindViewedLog(name), records),
                  0);
        return records;
    }

    Surroundings m_around;
    TransferLogs m_logs{m_around.files, m_around.clock, m_around.debugLog, m_around.Home()};
    const std::string m_now = FormatDateTime(m_around.clock.ToLocal(m_around.clock.Now()));
};

TEST_F(TransferLogsTest, AMailRecordIsReadAsItWasWritten) {
    const std::string file = m_around.folder.Write("a.pdf", "12345");
    EXPECT_EQ(m_logs.WriteMailRecord({file, std::string(120, 'f'), "Subject", "office@example.invalid"}), 0);
    EXPECT_EQ(m_logs.WriteMailRecord({"/gone", "from", "", ""}), 0);
    const std::vector<Fields> records = Records("mail");
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0][1], "5");
    EXPECT_EQ(records[0][2], file);
    EXPECT_EQ(records[0][4], FormatDateTime(m_around.clock.ToLocal(m_around.files.Inspect(file).written)));
    EXPECT_EQ(records[0][5], std::string(100, 'f'));
    EXPECT_EQ(records[0][6], "Subject");
    EXPECT_EQ(records[0][7], "office@example.invalid");
    EXPECT_EQ(records[1], (Fields{m_now, "0", "/gone", "", "", "from", "", ""}));
    // Neither the sender nor the mailbox has a tab before it.
    const std::string line = m_around.folder.Read("email.log").substr(0, 634);
    EXPECT_EQ(line.find('\t', 311), 433U);
    EXPECT_EQ(line.find('\t', 434), std::string::npos);
}

TEST_F(TransferLogsTest, AnFtpRecordCutsTheServerAndLongFoldersShiftTheError) {
    EXPECT_EQ(m_logs.WriteFtpRecord({"/in/a", std::string(120, 's'), "/out"}), 0);
    EXPECT_EQ(Records("ftp"),
              (std::vector<Fields>{{m_now, "0", "/in/a", "", "", std::string(100, 's'), "/out"}}));
    EXPECT_EQ(m_logs.WriteFtpErrorRecord({"/in/a", "server", "/out"}, "No file ftp://u:pw@h"), 0);
    EXPECT_EQ(m_logs.WriteFtpErrorRecord({"/in/a", "server", std::string(257, 'd')}, "No such file"), 0);
    const std::vector<Fields> records = Records("ftp-error");
    EXPECT_EQ(records[0], (Fields{m_now, "0", "/in/a", "", "", "server", "/out", "No file ftp://u:***@h"}));
    EXPECT_EQ(records[1][7], "d\tNo such file");
}

TEST_F(TransferLogsTest, FailuresGoToTheDebugLog) {
    EXPECT_EQ(m_around.debugLog.Open(*m_around.system.files, m_around.folder.PathOf("qpr.log")), 0);
    m_around.files.FailAlways(FaultyFiles::Call::kWrite, FileResult::kNoSpace);
    EXPECT_EQ(m_logs.WriteMailRecord({}), -1);
    EXPECT_EQ(m_logs.WriteFtpRecord({}), -1);
    const std::string trace = m_around.folder.Read("qpr.log");
    EXPECT_TRUE(StartsWith(trace, "Email Log error: "));
    EXPECT_TRUE(Contains(trace, "\nFTP Log error: "));
}

}  // namespace
}  // namespace quirepress
