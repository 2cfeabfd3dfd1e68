#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/socket.h>

#include "platform/event_loop.h"
#include "qpr_program.h"
#include "rig/loopback_server.h"

namespace quirepress {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

TEST(QprDelivery, APrinterThatTakesNothingIsNotWaitedForForEver) {
    QprProgram qpr;
    LoopbackServer printer(LoopbackServer::Stall);
    ASSERT_EQ(qpr.Run({"printers", "add", "Net", "--port", "socket://" + printer.Address()}).exitCode, 0);
    ASSERT_EQ(qpr.Run({"settings", "set", "general", "ERRORLOG"}).exitCode, 0);
    qpr.m_work.Write("a.ps", std::string(20'000'000, 'a'));
    qpr.m_work.Write("b.ps", "b");
    ProgramResult result = qpr.Run({"--stall-limit", "1", "print", "--printer", "Net", "a.ps", "b.ps"});
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    EXPECT_THAT(result.output, AllOf(HasSubstr("2 done, 0 failed"),
                                     HasSubstr("Net keeps 2 waiting: it takes no more for the moment; job 2"),
                                     HasSubstr("Net, job 1 (a.ps): Unknown: "),
                                     HasSubstr("2 jobs remain in the queue: nothing was taken for 1 s. "),
                                     HasSubstr("qpr queue restart PRINTER JOB")));
    EXPECT_EQ(qpr.Run({"--json", "log", "show", "error"}).Json()["records"].size(), 1U);
    // The small one goes out before the new one.
    result = qpr.Run({"--json", "--stall-limit", "1", "print", "--printer", "Net", "a.ps"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.Json()["stalled"], true);
    EXPECT_EQ(result.Json()["queued"], 2);
}

// Nobody knows how much of it came out: that is no success, and nothing waits for it.
TEST(QprDelivery, AConnectionThatEndsHardLeavesAJobOfUnknownOutcome) {
    QprProgram qpr;
    LoopbackServer printer([](int socket) {
        char some[1000];
        if (recv(socket, some, sizeof some, 0) > 0) LoopbackServer::Reset(socket);
    });
    ASSERT_EQ(qpr.Run({"printers", "add", "Net", "--port", "socket://" + printer.Address()}).exitCode, 0);
    ASSERT_EQ(qpr.Run({"settings", "set", "general", "ERRORLOG"}).exitCode, 0);
    ASSERT_EQ(qpr.Run({"settings", "set", "general", "WAITSPOOLCLEARBEFOREPRINT"}).exitCode, 0);
    qpr.m_work.Write("a.ps", std::string(20'000'000, 'a'));
    for (const std::size_t known : {0U, 1U}) {
        const ProgramResult result = qpr.Run({"--json", "print", "--printer", "Net", "a.ps"});
        EXPECT_EQ(result.exitCode, 1) << result.errors;
        EXPECT_EQ(result.Json()["unknown"], known + 1);
        EXPECT_EQ(result.Json()["stalled"], false);
        EXPECT_EQ(qpr.Run({"--json", "log", "show", "error"}).Json()["records"].size(), known + 1)
            << "only those of the run";
    }
    // One that was there before makes no other run a failure.
    ASSERT_EQ(qpr.Run({"printers", "add", "Away", "--port", "null:"}).exitCode, 0);
    EXPECT_EQ(qpr.Run({"print", "--printer", "Away", "a.ps"}).exitCode, 0);
}

TEST(QprDelivery, WhoeverWaitsForAnEmptyQueueSaysSo) {
    QprProgram qpr;
    qpr.m_work.Write("a.ps", "a");
    ASSERT_EQ(qpr.Run({"printers", "pause", "Quirepress"}).exitCode, 0);
    ASSERT_EQ(qpr.Run({"print", "a.ps"}).exitCode, 0);
    ASSERT_EQ(qpr.Run({"settings", "set", "general", "WAITSPOOLCLEARBEFOREPRINT"}).exitCode, 0);
    const auto process =
        qpr.Start({"--home", qpr.m_home.Path(), "--spooler", "embedded", "--json", "print", "a.ps"});
    process->CloseInput();
    std::string said;
    for (int i = 0; i < 4'000 && said.find("Waiting for 1 job(s)") == std::string::npos; ++i) {
        process->ReadErrors(said);
        qpr.m_services.loop->Wait(5);
    }
    EXPECT_THAT(said, HasSubstr("Waiting for 1 job(s) on printer:Quirepress to clear\n"));
    ASSERT_EQ(qpr.Run({"queue", "cancel", "Quirepress", "1"}).exitCode, 0);
    ASSERT_EQ(qpr.Run({"printers", "resume", "Quirepress"}).exitCode, 0);
    const ProgramResult result = qpr.Finish(*process);
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_THAT(result.errors, Not(HasSubstr("Waiting"))) << "once is enough";
}

}  // namespace
}  // namespace quirepress
