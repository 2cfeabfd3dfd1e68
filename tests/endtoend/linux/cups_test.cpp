#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>

#include "platform/event_loop.h"
#include "qpr_program.h"
#include "rig/private_cups.h"

namespace quirepress {
namespace {

using ::testing::HasSubstr;

class QprCups : public testing::Test {
protected:
    QprCups() { m_cups.UseHere(); }

    ProgramResult Run(std::vector<std::string> arguments) {
        const std::vector<std::string> start = {"--home", m_qpr.m_home.Path()};
        arguments.insert(arguments.begin(), start.begin(), start.end());
        return m_qpr.RunBare(std::move(arguments));
    }

    static std::string StatusOf(const nlohmann::json& row) { return row["columns"][3]; }

    QprProgram m_qpr;
    PrivateCups m_cups{m_qpr.m_services};
};

TEST_F(QprCups, PrinterReadyFilesArriveAsTheyAre) {
    m_cups.AddRawQueue("Label");
    std::string bytes = "%!PS-Adobe-3.0\n%%Pages: 1\n";
    for (int i = 0; i < 5'000'000; ++i) bytes += static_cast<char>(i * 31 + i / 253);
    const std::string small = m_qpr.m_work.Write("small.ps", "%!PS\nshowpage\n");
    const std::string large = m_qpr.m_work.Write("large.ps", bytes);
    const std::string document = m_qpr.m_work.Write("prices.pdf", "%PDF-1.4\n");
    const ProgramResult result =
        Run({"--json", "--spooler", "cups", "print", "--printer", "Label", small, large, document});
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    const nlohmann::json rows = result.Json()["rows"];
    EXPECT_EQ(StatusOf(rows[0]), "Done");
    EXPECT_EQ(StatusOf(rows[1]), "Done");
    EXPECT_THAT(StatusOf(rows[2]), HasSubstr("No print association"));  // nothing there makes pages of it
    ASSERT_TRUE(m_cups.AwaitCaptured(2));
    const std::vector<CapturedJob> captured = m_cups.Captured();
    ASSERT_EQ(captured.size(), 2U);
    EXPECT_EQ(captured[0].title, small);
    EXPECT_EQ(captured[0].bytes, "%!PS\nshowpage\n");
    EXPECT_EQ(captured[1].title, large);
    EXPECT_TRUE(captured[1].bytes == bytes);
}

TEST_F(QprCups, DocumentsReachANetworkPrinter) {
    m_cups.AddNetworkPrinter("Office");
    const ProgramResult result = Run({"--json", "--spooler", "cups", "print", "--printer", "Office",
                                      std::string(QUIREPRESS_SAMPLES) + "/prices.pdf"});
    EXPECT_EQ(result.exitCode, 0) << result.output << result.errors;
    EXPECT_THAT(m_cups.AwaitRecord("Office"), HasSubstr("IPP_JOB_NAME="));
}

TEST_F(QprCups, PrintersAndQueuesAreShown) {
    m_cups.AddRawQueue("Label");
    m_cups.Pause("Label");
    EXPECT_EQ(Run({"--spooler", "cups", "printers", "default", "Label"}).output, "Label\n");
    const std::string file = m_qpr.m_work.Write("a.ps", "%!PS\n");
    ASSERT_EQ(Run({"--spooler", "cups", "queue", "Label"}).exitCode, 0);
    m_cups.RunTool({"lp", "-o", "raw", "-d", "Label", "-t", "other", file});
    const nlohmann::json jobs = Run({"--json", "--spooler", "cups", "queue"}).Json()["jobs"];
    ASSERT_EQ(jobs.size(), 1U);
    EXPECT_EQ(jobs[0]["document"], "other");
    const std::string id = jobs[0]["id"].dump();
    EXPECT_EQ(Run({"--spooler", "cups", "queue", "cancel", "Label", id}).exitCode, 0);
    EXPECT_TRUE(Run({"--json", "--spooler", "cups", "queue"}).Json()["jobs"].empty());
    const ProgramResult added = Run({"--spooler", "cups", "printers", "add", "Another"});
    EXPECT_EQ(added.exitCode, 2);
    EXPECT_THAT(added.errors, HasSubstr("lpadmin"));
}

TEST_F(QprCups, WhatAnotherProgramPrintsIsPrintedOnceHoweverFastItIsOver) {
    m_cups.AddQueue("Fast", "file:/dev/null");
    m_qpr.m_home.Write("print_commands.ini",
                       "COMMAND;Labels\nTYPES;.lab\nPRINT;lp -s -d %p %1\n"
                       "COMMAND;Cancelled\nTYPES;.cut\n"
                       "PRINT;sh -c \"lp -s -H hold -d $1 $2; cancel -a $1\" sh %p %1\n"
                       "COMMAND;Silent\nTYPES;.mute\nPRINT;sh -c \"echo $1 >>$1\" sh %1\n");
    m_qpr.m_home.Write("general_setup.ini", "ONERRORPRINTONEMORETIME\nTIMEALLOW;5000\n");
    const std::string old = m_qpr.m_work.Write("old.mute", "x\n");
    std::vector<std::string> arguments = {"--json", "--spooler", "cups", "print", "--printer", "Fast"};
    for (const char* name : {"a.lab", "b.lab", "c.cut"}) arguments.push_back(m_qpr.m_work.Write(name, "x"));
    arguments.push_back(old);
    m_cups.RunTool({"lp", "-d", "Fast", "-o", "raw", old});
    const nlohmann::json rows = Run(arguments).Json()["rows"];
    EXPECT_EQ(StatusOf(rows[0]), "Done");
    EXPECT_EQ(StatusOf(rows[1]), "Done");
    EXPECT_EQ(StatusOf(rows[2]), "Error - Can't Print - its job was cancelled");
    EXPECT_THAT(StatusOf(rows[3]), HasSubstr("did not spool")) << "a job of the time before proves nothing";
    EXPECT_EQ(m_qpr.m_work.Read("old.mute"), "x\n" + old + "\n") << "it may have printed";
    std::string jobs;
    m_cups.RunTool({"lpstat", "-W", "completed", "-o", "Fast"}, &jobs);
    EXPECT_EQ(std::count(jobs.begin(), jobs.end(), '\n'), 4) << jobs;
}

TEST_F(QprCups, AQueueThatItsBackendHasStoppedGetsNoFurtherRows) {
    m_cups.AddRawQueue("Label");
    m_cups.RunTool({"lpadmin", "-p", "Label", "-o", "printer-error-policy=stop-printer"});
    m_cups.SetBehaviour("code=1");
    m_qpr.m_home.Write("general_setup.ini", "WAITFORPRINTER\nPAUSE1AFTER;1\n");
    std::vector<std::string> arguments = {"--home", m_qpr.m_home.Path(), "--spooler", "cups",
                                          "print",  "--printer",         "Label"};
    for (const char* name : {"a.ps", "b.ps", "c.ps"}) arguments.push_back(m_qpr.m_work.Write(name, "%!PS\n"));
    const auto process = m_qpr.Start(arguments);
    process->CloseInput();
    const auto count = [this] {
        std::string jobs;
        m_cups.RunTool({"lpstat", "-o", "Label"}, &jobs);
        return std::count(jobs.begin(), jobs.end(), '\n');
    };
    for (int i = 0; i < 1'000 && count() < 1; ++i) m_qpr.m_services.loop->Wait(10);
    m_qpr.m_services.loop->Wait(4'500);
    const auto waiting = count();
    EXPECT_TRUE(waiting == 1 || waiting == 2) << "the one that failed, and at most the one behind it";
    m_cups.SetBehaviour("code=0");
    m_cups.Resume("Label");
    EXPECT_EQ(m_qpr.Finish(*process).exitCode, 0);
    EXPECT_TRUE(m_cups.AwaitCaptured(3));
}

TEST_F(QprCups, ABalancedRunLeavesTheUsersDefaultAsItWas) {
    m_cups.AddRawQueue("Label");
    m_cups.AddRawQueue("Other");
    m_cups.RunTool({"lpadmin", "-d", "Label"});
    ASSERT_EQ(Run({"settings", "set", "balance", "PRINTER1", "Other"}).exitCode, 0);
    const std::string file = m_qpr.m_work.Write("a.ps", "%!PS\n");
    const ProgramResult result = Run({"--json", "--spooler", "cups", "print", "--balance", file});
    EXPECT_EQ(result.Json()["rows"][0]["columns"][11], "Other");
    EXPECT_EQ(m_cups.ReadUserOptions(), "");
}

TEST_F(QprCups, ItIsChosenWhereItHasAPrinter) {
    EXPECT_THAT(Run({"printers"}).errors, HasSubstr("using the embedded spooler"));
    m_cups.AddRawQueue("Label");
    EXPECT_THAT(Run({"printers"}).errors, HasSubstr("using the cups spooler"));
    EXPECT_THAT(Run({"--spooler", "embedded", "printers"}).output, HasSubstr("Quirepress"));
    m_cups.Freeze(true);
    EventLoop& loop = *m_qpr.m_services.loop;
    const long long start = loop.MonotonicMilliseconds();
    EXPECT_THAT(Run({"printers"}).errors, HasSubstr("using the embedded spooler"));
    EXPECT_LT(loop.MonotonicMilliseconds() - start, 6'000);
    // What prints nothing asks nobody.
    EXPECT_EQ(Run({"list", m_qpr.m_work.Write("a.ps", "%!PS\n")}).exitCode, 0);
    EXPECT_LT(loop.MonotonicMilliseconds() - start, 8'000);
    m_cups.Freeze(false);
}

TEST_F(QprCups, ANamedServerThatIsAwayIsNamed) {
    m_cups.Stop();
    const ProgramResult result = Run({"--spooler", "cups", "print", "a.ps"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.errors, HasSubstr("CUPS can't be used: the print server can't be reached"));
}

// The user has chosen none: it is the server's.
TEST_F(QprCups, TheDefaultPrinterComesBackOnceTheServerIsThereAgain) {
    for (const char* queue : {"Label", "Other"}) m_cups.AddRawQueue(queue);
    m_cups.RunTool({"lpadmin", "-d", "Label"});
    ASSERT_EQ(Run({"settings", "set", "general", "PAUSE1AFTER", "3"}).exitCode, 0);
    m_qpr.m_work.Write("a.ps", "%!PS\n");
    const auto process =
        m_qpr.Start({"--home", m_qpr.m_home.Path(), "--spooler", "cups", "print", "Other.printer", "a.ps"});
    const auto isOther = [this] {
        return m_cups.ReadUserOptions().find("Default Other") != std::string::npos;
    };
    for (int i = 0; i < 1000 && !isOther(); ++i) m_qpr.m_services.loop->Wait(10);
    ASSERT_TRUE(isOther());
    m_qpr.m_services.loop->Wait(1'000);  // the pause is not over
    m_cups.Stop();
    const ProgramResult result = m_qpr.Finish(*process);
    EXPECT_EQ(result.exitCode, 1) << result.output;
    EXPECT_THAT(result.errors, HasSubstr("The default printer can't be set back to \"Label\""));
    EXPECT_TRUE(isOther());

    ASSERT_TRUE(m_cups.Start());
    const ProgramResult next = Run({"--spooler", "cups", "printers"});
    EXPECT_EQ(next.exitCode, 0) << next.errors;
    EXPECT_FALSE(isOther()) << m_cups.ReadUserOptions();
}

}  // namespace
}  // namespace quirepress
