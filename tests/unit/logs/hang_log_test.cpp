#include "logs/hang_log.h"

#include <gtest/gtest.h>

#include "fakes/surroundings.h"

namespace quirepress {
namespace {

using Records = std::vector<std::vector<std::string>>;

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
    Records records;
    EXPECT_EQ(ReadRecords(m_around.files, m_around.folder.PathOf(kHangLogName), HangRecordLayout(), records),
              0);
    EXPECT_EQ(records, (Records{{"2024-03-05 07:08:09", "WINWORD.EXE", "999", "/in/a.doc"}}));
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

}  // namespace
}  // namespace quirepress
