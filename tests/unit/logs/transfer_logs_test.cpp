#include "logs/transfer_logs.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "fakes/surroundings.h"
#include "logs/log_viewer.h"

namespace quirepress {
namespace {

using Fields = std::vector<std::string>;

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
