#include <gmock/gmock.h>
#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "platform/event_loop.h"
#include "rig/loopback_server.h"
#include "unit/embedded/spooler_bench.h"

namespace quirepress {
namespace {

using testing::HasSubstr;

// A raw network printer on the loopback, which does nothing but when it is asked to: what only the system's
// own connections can show.
class LoopbackDelivery : public testing::Test {
protected:
    LoopbackDelivery() {
        std::string message;
        EXPECT_EQ(m_spooler.Open(message), 0);
        EXPECT_EQ(m_spooler.CreatePrinterQueue("Net", "socket://" + m_printer.Address(), message), 0)
            << message;
    }
    ~LoopbackDelivery() override { m_steps = 1'000; }

    void AwaitStep(int step) const {
        while (m_steps < step) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    std::vector<JobInfo> Jobs() {
        std::vector<JobInfo> jobs;
        EXPECT_EQ(m_spooler.ListJobs("Net", jobs), 0);
        return jobs;
    }
    // Pumps until `condition`; false after twenty seconds.
    template <typename Condition>
    bool PumpUntil(Condition condition) {
        for (int i = 0; i < 4'000 && !condition(); ++i) m_system.loop->Wait(5);
        return condition();
    }
    void ExpectUnknown(std::string_view text) {
        ASSERT_TRUE(PumpUntil([&] { return m_spooler.IsIdle(); }));
        const std::vector<JobInfo> jobs = Jobs();
        ASSERT_EQ(jobs.size(), 1U);
        EXPECT_EQ(jobs[0].statusBits, job_status::kError | job_status::kUserIntervention);
        EXPECT_THAT(jobs[0].statusText, HasSubstr(text));
    }

    Services m_system = MakeSystemServices();
    TemporaryFolder m_folder;
    EmbeddedSpooler m_spooler{*m_system.files, *m_system.loop,    *m_system.network,
                              *m_system.clock, *m_system.machine, m_folder.Path()};
    const std::string m_large = std::string(20'000'000, 'L');  // more than the system takes in between
    std::atomic<int> m_steps = 0;
    LoopbackServer::Serve m_serve = LoopbackServer::Reset;  // once the first step is made
    LoopbackServer m_printer{[this](int socket) {
        AwaitStep(1);
        m_serve(socket);
    }};
};

TEST_F(LoopbackDelivery, APrinterThatStallsAndThenReadsGetsEverything) {
    std::string received;
    m_serve = [&](int socket) { received = LoopbackServer::ReadAll(socket); };
    SpoolDocument(m_spooler, "Net", "a", m_large);
    SpoolDocument(m_spooler, "Quirepress", "b");
    ASSERT_TRUE(PumpUntil([&] { return m_printer.Connections() == 1; }));
    m_system.loop->Wait(300);
    EXPECT_EQ(Jobs().at(0).statusBits, job_status::kPrinting);
    EXPECT_EQ(ReadFolder(*m_system.files, m_folder.PathOf("Printers/Quirepress/Output")).size(), 1U);
    EXPECT_LT(m_spooler.WaitingJobs().bytesSent, 20'000'000);
    m_steps = 1;
    EXPECT_TRUE(PumpUntil([&] { return Jobs().empty(); }));
    EXPECT_TRUE(received == m_large);
}

TEST_F(LoopbackDelivery, AResetLeavesTheJobAsUnknown) {
    SpoolDocument(m_spooler, "Net", "a", m_large);
    ASSERT_TRUE(PumpUntil([&] { return m_printer.Connections() == 1; }));
    m_system.loop->Wait(100);
    m_steps = 1;
    ExpectUnknown("of 20000000 bytes");
    m_system.loop->Wait(1'500);
    EXPECT_EQ(m_printer.Connections(), 1);
}

// The whole job fits into the buffers of the system, which has acknowledged it.
TEST_F(LoopbackDelivery, AJobThatThePrinterHasNotReadBeforeItsEndIsUnknown) {
    SpoolDocument(m_spooler, "Net", "small", "small");
    ASSERT_TRUE(PumpUntil([&] { return m_printer.Connections() == 1; }));
    m_system.loop->Wait(100);
    EXPECT_EQ(Jobs().size(), 1U);
    m_steps = 1;
    ExpectUnknown("5 of 5 bytes");
}

// All is with the system, and the printer has taken a part of it.
TEST_F(LoopbackDelivery, AResetIsSeenBehindThePrintersOwnEndToo) {
    m_serve = [this](int socket) {
        shutdown(socket, SHUT_WR);
        AwaitStep(2);
        LoopbackServer::Reset(socket);
    };
    SpoolDocument(m_spooler, "Net", "a", std::string(400'000, 'a'));
    ASSERT_TRUE(PumpUntil([&] { return m_spooler.WaitingJobs().bytesSent == 400'000; }));
    m_steps = 1;
    m_system.loop->Wait(50);
    m_steps = 2;
    ExpectUnknown("400000 of 400000 bytes");
}

}  // namespace
}  // namespace quirepress
