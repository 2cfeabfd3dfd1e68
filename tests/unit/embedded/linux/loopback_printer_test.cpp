#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/event_loop.h"
#include "unit/embedded/spooler_bench.h"

namespace quirepress {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// A raw network printer on the loopback; it does nothing but when it is asked to.
class LoopbackPrinter {
public:
    ~LoopbackPrinter() { GoAway(); }

    // At the port of before, if there was one.
    bool Come() {
        m_listener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        const int one = 1;
        setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
        const int small = 4'096;
        setsockopt(m_listener, SOL_SOCKET, SO_RCVBUF, &small, sizeof small);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<std::uint16_t>(m_port));
        socklen_t size = sizeof address;
        auto* const place = reinterpret_cast<sockaddr*>(&address);
        if (bind(m_listener, place, size) != 0 || listen(m_listener, 4) != 0) return false;
        getsockname(m_listener, place, &size);
        m_port = ntohs(address.sin_port);
        return true;
    }
    void GoAway() {
        Drop(false);
        if (m_listener >= 0) close(m_listener);
        m_listener = -1;
    }
    bool Accept() {
        m_peer = accept4(m_listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        return m_peer >= 0;
    }
    // Reads what is there; true at the end of the stream.
    bool Read() {
        char bytes[65536];
        for (;;) {
            const ssize_t count = recv(m_peer, bytes, sizeof bytes, 0);
            if (count <= 0) return count == 0;
            received.append(bytes, static_cast<std::size_t>(count));
        }
    }
    void EndSending() { shutdown(m_peer, SHUT_WR); }
    void Drop(bool reset) {
        const linger atOnce = {1, 0};
        if (m_peer >= 0 && reset) setsockopt(m_peer, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        if (m_peer >= 0) close(m_peer);
        m_peer = -1;
    }
    int Port() const { return m_port; }

    std::string received;

private:
    int m_listener = -1;
    int m_peer = -1;
    int m_port = 0;
};

class LoopbackDelivery : public testing::Test {
protected:
    LoopbackDelivery() {
        EXPECT_TRUE(m_printer.Come());
        std::string message;
        EXPECT_EQ(m_spooler.Open(message), 0);
        const std::string port = "socket://127.0.0.1:" + std::to_string(m_printer.Port());
        EXPECT_EQ(m_spooler.CreatePrinterQueue("Net", port, message), 0) << message;
    }

    std::vector<JobInfo> Jobs() {
        std::vector<JobInfo> jobs;
        EXPECT_EQ(m_spooler.ListJobs("Net", jobs), 0);
        return jobs;
    }
    JobInfo FirstJob() {
        const std::vector<JobInfo> jobs = Jobs();
        return jobs.empty() ? JobInfo() : jobs[0];
    }
    // Pumps until `condition`; false after twenty seconds.
    template <typename Condition>
    bool PumpUntil(Condition condition) {
        for (int i = 0; i < 4'000; ++i) {
            if (condition()) return true;
            m_system.loop->Wait(5);
        }
        return false;
    }
    bool ReceiveJob() {
        return PumpUntil([&] { return m_printer.Accept(); }) && PumpUntil([&] { return m_printer.Read(); });
    }
    bool IsUnknown() {
        return Jobs().size() == 1 &&
               FirstJob().statusBits == (job_status::kError | job_status::kUserIntervention);
    }

    Services m_system = MakeSystemServices();
    TemporaryFolder m_folder;
    LoopbackPrinter m_printer;
    EmbeddedSpooler m_spooler{*m_system.files, *m_system.loop,    *m_system.network,
                              *m_system.clock, *m_system.machine, m_folder.Path()};
    const std::string m_large = std::string(8'000'000, 'L');
};

TEST_F(LoopbackDelivery, APrinterThatGoesAwayAndComesBackGetsTheJobOnce) {
    m_printer.GoAway();
    SpoolDocument(m_spooler, "Net", "a", m_large);
    ASSERT_TRUE(PumpUntil([&] { return m_spooler.IsIdle(); }));
    EXPECT_THAT(FirstJob().statusText,
                StartsWith("Net is not reachable: connection refused; next try in 1 s"));
    ASSERT_TRUE(m_printer.Come());
    ASSERT_TRUE(ReceiveJob());
    EXPECT_TRUE(m_printer.received == m_large);
    m_printer.Drop(false);
    EXPECT_TRUE(PumpUntil([&] { return Jobs().empty(); }));
}

TEST_F(LoopbackDelivery, APrinterThatStallsAndThenReadsGetsEverything) {
    SpoolDocument(m_spooler, "Net", "a", m_large);
    SpoolDocument(m_spooler, "Quirepress", "b");
    ASSERT_TRUE(PumpUntil([&] { return m_printer.Accept(); }));
    m_system.loop->Wait(300);
    EXPECT_EQ(FirstJob().statusBits, job_status::kPrinting);
    EXPECT_EQ(ReadFolder(*m_system.files, m_folder.PathOf("Printers/Quirepress/Output")).size(), 1U);
    EXPECT_LT(m_spooler.WaitingJobs().bytesSent, 8'000'000);
    ASSERT_TRUE(PumpUntil([&] { return m_printer.Read(); }));
    EXPECT_TRUE(m_printer.received == m_large);
    EXPECT_TRUE(PumpUntil([&] { return Jobs().empty(); }));
}

TEST_F(LoopbackDelivery, AResetLeavesTheJobAsUnknown) {
    for (const bool reset : {true, false}) {
        SpoolDocument(m_spooler, "Net", "a", m_large);
        ASSERT_TRUE(PumpUntil([&] { return m_printer.Accept(); }));
        m_system.loop->Wait(100);
        m_printer.Drop(reset);
        ASSERT_TRUE(PumpUntil([&] { return m_spooler.IsIdle(); }));
        EXPECT_TRUE(IsUnknown());
        EXPECT_THAT(FirstJob().statusText, HasSubstr("of 8000000 bytes"));
        m_system.loop->Wait(1'500);
        EXPECT_FALSE(m_printer.Accept());
        EXPECT_EQ(m_spooler.CancelJob("Net", FirstJob().id), 0);
    }
}

// The whole job fits into the buffers of the system, which has acknowledged it.
TEST_F(LoopbackDelivery, AJobThatThePrinterHasNotReadBeforeItsEndIsUnknown) {
    for (const bool reset : {true, false}) {
        SpoolDocument(m_spooler, "Net", "small", "small");
        ASSERT_TRUE(PumpUntil([&] { return m_printer.Accept(); }));
        m_system.loop->Wait(100);
        EXPECT_EQ(Jobs().size(), 1U);
        m_printer.Drop(reset);
        ASSERT_TRUE(PumpUntil([&] { return m_spooler.IsIdle(); }));
        EXPECT_TRUE(IsUnknown());
        EXPECT_EQ(m_spooler.CancelJob("Net", FirstJob().id), 0);
    }
}

TEST_F(LoopbackDelivery, AResetIsSeenBehindThePrintersOwnEndToo) {
    SpoolDocument(m_spooler, "Net", "a", std::string(100'000, 'a'));
    ASSERT_TRUE(PumpUntil([&] { return m_printer.Accept(); }));
    ASSERT_TRUE(PumpUntil([&] { return m_spooler.WaitingJobs().bytesSent == 100'000; }));
    m_printer.EndSending();
    m_system.loop->Wait(50);
    m_printer.Drop(true);
    ASSERT_TRUE(PumpUntil([&] { return m_spooler.IsIdle(); }));
    EXPECT_TRUE(IsUnknown());
}

}  // namespace
}  // namespace quirepress
