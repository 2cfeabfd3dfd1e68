#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qpr_program.h"

namespace quirepress {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

// Two paused printers, so that jobs stay in their queues, with the limits 3 and 0.
class QprBalance : public testing::Test {
protected:
    QprBalance() {
        for (const char* printer : {"First", "Second"}) {
            EXPECT_EQ(m_qpr.Run({"printers", "add", printer, "--port", "null:"}).exitCode, 0);
            EXPECT_EQ(m_qpr.Run({"printers", "pause", printer}).exitCode, 0);
        }
        Set("PRINTER1", "First");
        Set("SPOOL1", "3");
        Set("PRINTER2", "Second");
        m_qpr.m_work.Write("Report (1).ps", "%!PS\n");
    }

    void Set(const std::string& key, const std::string& value) {
        EXPECT_EQ(m_qpr.Run({"settings", "set", "balance", key, value}).exitCode, 0) << key;
    }
    nlohmann::json Choose(std::vector<std::string> more = {}) {
        std::vector<std::string> arguments = {"--json", "balance", "choose"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const ProgramResult result = m_qpr.Run(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        return result.Json();
    }
    void Print(const std::string& printer) { m_qpr.Run({"print", "--printer", printer, "Report (1).ps"}); }

    QprProgram m_qpr;
};

TEST_F(QprBalance, FillsTheFirstPrinterToItsLimit) {
    std::vector<int> chosen;
    for (int document = 0; document < 5; ++document) {
        const nlohmann::json choice = Choose();
        chosen.push_back(choice["index"]);
        Print(choice["printer"]);
    }
    EXPECT_THAT(chosen, ElementsAre(1, 1, 1, 2, 2));
    EXPECT_EQ(Choose()["printer"], "Second");
    EXPECT_EQ(Choose({"--balanced-printers", "1;First"}),
              (nlohmann::json{{"printer", nullptr}, {"index", 0}, {"prs", ""}}));
    m_qpr.Run({"queue", "cancel", "First", "1"});
    EXPECT_EQ(Choose()["printer"], "First");
    EXPECT_EQ(m_qpr.Run({"balance", "choose"}).output, "First\n");
    for (const char* command : {"print", "list"}) {
        const ProgramResult result = m_qpr.Run({command, "--balanced-printers", "1,Frist", "Report (1).ps"});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(result.errors, HasSubstr("\"Frist\" is no printer of balancedprinters.ini"));
    }
    // One that prints comes before one that keeps its jobs.
    m_qpr.Run({"printers", "resume", "Second"});
    EXPECT_EQ(Choose()["printer"], "Second");
}

TEST_F(QprBalance, AppliesToTheRowsOfAListOrIsTakenFromThem) {
    m_qpr.m_work.Write("list.aob",
                       "Yes ;Report (1).ps ;1 ;Ready. ; ; ; ; ; ; ; ; ;7 ; ;\nNo ;Report (1).ps ;1 ;");
    const auto printersOf = [&](const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {"--json", "list", "list.aob", "--balanced-printers", "2"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        std::vector<std::string> printers;
        const nlohmann::json listed = m_qpr.Run(arguments).Json();
        for (const auto& row : listed["rows"]) printers.push_back(row["columns"][12]);
        return printers;
    };
    EXPECT_THAT(printersOf({}), ElementsAre("7", "2"));
    EXPECT_THAT(printersOf({"--apply-balancing"}), ElementsAre("2", "2"));
    EXPECT_THAT(printersOf({"--clear-balancing"}), ElementsAre("", "2")) << "nobody says that all are meant";
    EXPECT_EQ(
        m_qpr.Run({"--json", "list", "--apply-balancing", "Report (1).ps"}).Json()["rows"][0]["columns"][12],
        "1,2");
    EXPECT_EQ(m_qpr.Run({"list", "--apply-balancing", "--clear-balancing", "x.ps"}).exitCode, 2);
}

TEST_F(QprBalance, ChecksTheSettings) {
    ProgramResult result = m_qpr.Run({"balance", "check"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "");
    Set("SPOOL2", "7");
    result = m_qpr.Run({"balance", "check"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(
        result.output,
        "Setup error!, need to set spool 2 to 0 for all, please correct\n"
        "Setup error!, need to set the last printer to spool limit 0 otherwise it will use last printer used "
        "if no printers available (will not wait), please correct\n");
    const nlohmann::json checked = m_qpr.Run({"--json", "balance", "check"}).Json();
    EXPECT_EQ(checked["result"], 1);
    EXPECT_EQ(checked["messages"].size(), 2U);
}

TEST_F(QprBalance, TellsTheVerdictOnAFile) {
    const auto verdict = [&](const std::string& printer, const std::string& file) {
        return m_qpr.Run({"--json", "queue", "verdict", printer, file}).Json()["verdict"];
    };
    EXPECT_EQ(verdict("First", "Report (1).ps"), -1);
    Print("First");
    EXPECT_EQ(verdict("First", "Report (1).ps"), 3);
    EXPECT_EQ(verdict("First", m_qpr.m_work.PathOf("Report (1).pdf")), 3);  // the same name without extension
    EXPECT_EQ(verdict("First", "Report (2).ps"), -1);
    EXPECT_EQ(verdict("Second", "Report (1).ps"), -1);
    EXPECT_EQ(m_qpr.Run({"queue", "verdict", "Nobody", "a.ps"}).exitCode, 3);
    EXPECT_THAT(m_qpr.Run({"queue", "verdict", "First", "Report (1).ps"}).output, HasSubstr("3 (job "));
}

}  // namespace
}  // namespace quirepress
