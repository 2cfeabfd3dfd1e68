#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "platform/event_loop.h"
#include "qpr_program.h"

namespace quirepress {
namespace {

constexpr const char* kFirst = "Quirepress\n";  // as the file of the default printer names it
constexpr const char* kOther = "Other\n";

// A run that has made another printer the default, and waits before its document.
class QprDefaultPrinter : public testing::Test {
protected:
    QprDefaultPrinter() {
        m_qpr.m_work.Write("a.ps", "%!PS\n");
        EXPECT_EQ(m_qpr.Run({"printers", "add", "Other"}).exitCode, 0);
        EXPECT_EQ(m_qpr.Run({"settings", "set", "general", "SNAPSHOTRESTORE"}).exitCode, 0);
    }

    void SetPause(const char* seconds) {
        EXPECT_EQ(m_qpr.Run({"settings", "set", "general", "PAUSE1AFTER", seconds}).exitCode, 0);
    }
    std::unique_ptr<ChildProcess> StartRun() {
        SetPause("50");
        auto process = m_qpr.Start(
            {"--home", m_qpr.m_home.Path(), "--spooler", "embedded", "print", "Other.printer", "a.ps"});
        for (int i = 0; i < 1000 && Default() != kOther; ++i) m_qpr.m_services.loop->Wait(10);
        EXPECT_EQ(Default(), kOther);
        return process;
    }
    void EndRun() {
        const auto process = StartRun();
        kill(static_cast<pid_t>(process->Id()), SIGKILL);
        m_qpr.Finish(*process);
        EXPECT_EQ(Default(), kOther);
        SetPause("0");
    }
    std::string Default() { return m_qpr.m_home.Read("Printers/default-printer"); }

    QprProgram m_qpr;
};

TEST_F(QprDefaultPrinter, ComesBackAtTheNextStartAfterAKill) {
    EndRun();
    ASSERT_EQ(m_qpr.Run({"restore", "--discard"}).exitCode, 0);
    EXPECT_EQ(Default(), kFirst);
    EndRun();
    EXPECT_EQ(m_qpr.Run({"restore", "--print"}).exitCode, 0);
    EXPECT_EQ(m_qpr.OutputNames("Other").size(), 1U);
    EXPECT_EQ(Default(), kFirst);
    EXPECT_EQ(m_qpr.Run({"settings", "unset", "general", "SNAPSHOTRESTORE"}).exitCode, 0);
    EndRun();
    EXPECT_EQ(m_qpr.Run({"print", "a.ps"}).exitCode, 0);
    EXPECT_EQ(m_qpr.OutputNames().size(), 1U);
    EXPECT_EQ(Default(), kFirst);
}

TEST_F(QprDefaultPrinter, ComesBackWhenTheTerminalIsClosed) {
    const auto process = StartRun();
    // The shell sends one, and the system another.
    for (int i = 0; i < 2; ++i) kill(static_cast<pid_t>(process->Id()), SIGHUP);
    const ProgramResult result = m_qpr.Finish(*process);
    EXPECT_EQ(result.exitCode, 130) << result.errors;
    EXPECT_THAT(result.output, testing::HasSubstr("Ready"));
    EXPECT_EQ(Default(), kFirst);
}

}  // namespace
}  // namespace quirepress
