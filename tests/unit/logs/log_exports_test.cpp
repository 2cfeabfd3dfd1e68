#include "logs/log_exports.h"

#include <gtest/gtest.h>

#include "fakes/surroundings.h"
#include "logs/error_log.h"
#include "logs/print_log.h"

namespace quirepress {
namespace {

using Box = FakePrompts::Box;

constexpr const char* kPrintHeader =
    "Print at Time,File Bytes,Filename,Created Time,Modified Time,Pages,Printer Name\r\n";

std::string Record(const std::string& name, const std::string& pages) {
    return FormatRecord(PrintRecordLayout(), {"2024-03-01 12:00:00", "5", name, "2024-01-01 00:00:00",
                                              "2024-01-02 00:00:00", pages, "Office"});
}

std::string Row(const std::string& name, const std::string& pages) {
    return "2024-03-01 12:00:00,5," + name + ",2024-01-01 00:00:00,2024-01-02 00:00:00," + pages +
           ",Office\r\n";
}

class LogExportsTest : public testing::Test {
protected:
    LogExportsTest() {
        m_request.logPath = m_around.folder.PathOf("print.log");
        m_request.target = m_around.folder.PathOf("out.csv");
        m_request.openFile = [this](std::string_view path) { m_opened = path; };
    }
    int Export() { return ExportPrintLogCsv(m_around.files, m_around.prompts, m_request); }
    void PutLog(const std::string& bytes) { m_around.folder.Write("print.log", bytes); }
    std::string Csv() { return m_around.folder.Read("out.csv"); }

    Surroundings m_around;
    LogExport m_request;
    std::string m_opened;
};

TEST_F(LogExportsTest, FieldsGoOutAsTheyStand) {
    PutLog(Record("/in/a,b.pdf", "3") + Record("=1+1", "x") + "\n" + Record("\"q\"", "4").substr(0, 245));
    EXPECT_EQ(Export(), 0);
    EXPECT_EQ(Csv(), kPrintHeader + Row("/in/a,b.pdf", "3") + Row("=1+1", "x") + ",,,,,,\r\n" +
                         "2024-03-01 12:00:00,5,\"q\",2024-01-01 00:00:00,2024-01-02 00:00:00,4,\r\n" +
                         ",,,,,7,\r\n");
}

TEST_F(LogExportsTest, GuardedTextsAreNoFormulas) {
    m_request.isGuarded = true;
    PutLog(Record("/in/a,=b.pdf", "-3") + Record("=1+\"x\"", "4") + Record(" @x", "0") + Record("\tx", "1"));
    EXPECT_EQ(Export(), 0);
    EXPECT_EQ(Csv(), kPrintHeader + Row("\"/in/a,=b.pdf\"", "-3") + Row("\"'=1+\"\"x\"\"\"", "4") +
                         Row("' @x", "0") + Row("\"'\tx\"", "1") + ",,,,,2,\r\n");
}

TEST_F(LogExportsTest, TheUserChoosesTargetHeaderAndTotal) {
    PutLog(Record("/in/a.pdf", "3"));
    m_request.target = "nofile";
    EXPECT_EQ(Export(), 0);
    EXPECT_FALSE(m_around.folder.Has("nofile"));
    m_around.prompts.ChooseNext(m_around.folder.PathOf("out.csv"));
    for (const bool answer : {false, false, true}) m_around.prompts.AnswerNext(answer);
    EXPECT_EQ(Export(), 0);
    EXPECT_EQ(Csv(), Row("/in/a.pdf", "3"));
    EXPECT_EQ(m_opened, m_around.folder.PathOf("out.csv"));
    EXPECT_EQ(m_around.prompts.boxes, (std::vector<Box>{{"Done", "Log File Saved"}}));
    EXPECT_EQ(m_around.prompts.questions,
              (std::vector<Box>{{"Export Print Log to CSV file", "*.csv"},
                                {"Export Print Log to CSV file", "*.csv"},
                                {"Export Log", "Do you want to include a description header ?"},
                                {"Export Log", "Do you want to include page total count ?"},
                                {"Open File", "Do you want to open file now in excel ?"}}));
}

TEST_F(LogExportsTest, TheErrorLogHasItsOwnTitlesAndNoTotal) {
    ErrorLog errors(m_around.files, m_around.clock, m_around.folder.PathOf("error.log"));
    const std::string printer(130, 'P');
    errors.Append({"/in/a.pdf", "/done", "Error", printer});
    m_request.logPath = errors.Path();
    EXPECT_EQ(ExportErrorLogCsv(m_around.files, m_around.prompts, m_request), 0);
    EXPECT_EQ(Csv(),
              "Date,Time,Filename From,Filename To,Error Message,Printer\r\n"
              "2024-03-01,12:00:00,/in/a.pdf,/done,Error," +
                  printer + "\r\n");
}

TEST_F(LogExportsTest, FailuresAreSaidAndLeaveTheTarget) {
    EXPECT_EQ(Export(), -1);
    PutLog(Record("/in/a.pdf", "3"));
    m_around.folder.Write("out.csv", "before");
    m_around.files.FillDiskAfter(30);
    EXPECT_EQ(Export(), -1);
    EXPECT_EQ(Csv(), "before");
    m_around.files.Heal();
    const std::string out = m_request.target;
    m_request.target = m_request.logPath;
    EXPECT_EQ(Export(), -1);
    m_request.target = m_around.folder.PathOf("none/out.csv");
    EXPECT_EQ(Export(), -1);
    m_request.target = "";
    EXPECT_EQ(Export(), -1);
    const std::string title = "Log File Export Error";
    EXPECT_EQ(m_around.prompts.boxes,
              (std::vector<Box>{{title, "Can't open print.log for reading"},
                                {title, "Can't write to " + out},
                                {title, "Can't write to " + m_request.logPath},
                                {title, "Can't write to " + m_around.folder.PathOf("none/out.csv")},
                                {title, "Can't write to "}}));
}

}  // namespace
}  // namespace quirepress
