#include <gmock/gmock.h>

#include "unit/embedded/spooler_bench.h"

namespace quirepress {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr std::uint32_t kUnknown = job_status::kError | job_status::kUserIntervention;

class SocketDelivery : public SpoolerBench {
protected:
    SocketDelivery() { MakePrinter("Net", "socket://host:9101"); }
    const std::string m_large = std::string(900'000, 'n');
};

TEST_F(SocketDelivery, IsDoneWhenAllIsAcknowledgedAndThePrinterHasHadTimeToObject) {
    m_network.nextPeer.acknowledges = false;
    m_network.nextPeer.endsAtEnd = false;
    Spool("Net", "a", m_large);
    loop.Wait(60'000);
    ASSERT_THAT(m_network.addresses, ElementsAre("host:9101"));
    EXPECT_EQ(m_network.peers[0]->received, m_large);
    EXPECT_TRUE(m_network.peers[0]->sawEnd);
    EXPECT_EQ(FirstJob("Net").statusBits, job_status::kPrinting);
    EXPECT_FALSE(m_spooler->IsIdle());
    EXPECT_GT(m_spooler->WaitingJobs().unmoved, 59'000);
    m_network.peers[0]->acknowledges = true;
    loop.Wait(2'000);
    EXPECT_EQ(Documents("Net").size(), 1U);
    loop.Wait(2'000);
    EXPECT_THAT(Jobs("Net"), IsEmpty());
    EXPECT_TRUE(m_network.peers[0]->dropped);
    m_network.nextPeer.acknowledges = true;
    Spool("Net", "b", "b");
    loop.Wait(150);
    EXPECT_THAT(Jobs("Net"), IsEmpty()) << "it is known to keep its connections open";
    Spool("Net", "c", "c");
    loop.Wait(20);
    m_network.peers[2]->breaksAfter = 1;
    loop.Wait(20);
    EXPECT_EQ(FirstJob("Net").statusBits, kUnknown);
    EXPECT_THAT(FirstJob("Net").statusText, StartsWith("Unknown: the connection ended after 1 of 1 bytes. "));
}

TEST_F(SocketDelivery, WhereNothingIsAcknowledgedThePeersEndCounts) {
    m_network.nextPeer.tellsAcknowledged = false;
    Spool("Net", "ends", "1");
    loop.Wait(1'000);
    EXPECT_THAT(Jobs("Net"), IsEmpty());
    m_network.nextPeer.endsAtEnd = false;
    Spool("Net", "stays open", "2");
    loop.Wait(5'000);
    EXPECT_THAT(Documents("Net"), ElementsAre("stays open"));
    loop.Wait(10'000);
    EXPECT_THAT(Jobs("Net"), IsEmpty());
    EXPECT_EQ(m_network.peers.size(), 2U);
}

TEST_F(SocketDelivery, APrinterThatIsNotThereIsTriedAgain) {
    m_network.nextPeer.refuses = true;
    Spool("Net", "a", "a");
    Spool("Net", "b", "b");
    EXPECT_TRUE(FirstJob("Net").isUntried);
    loop.Wait(2'000);
    EXPECT_FALSE(FirstJob("Net").isUntried);
    EXPECT_EQ(FirstJob("Net").statusBits, job_status::kOffline);
    EXPECT_THAT(FirstJob("Net").statusText,
                StartsWith("Net is not reachable: connection refused; next try in"));
    EXPECT_EQ(Printer("Net").statusBits, printer_status::kOffline);
    EXPECT_TRUE(m_spooler->IsIdle());
    EXPECT_EQ(m_spooler->WaitingJobs().stuck, 2);
    m_network.nextPeer.refuses = false;
    m_network.nextPeer.answers = false;
    loop.Wait(30'000);
    EXPECT_THAT(FirstJob("Net").statusText, HasSubstr("no answer"));
    m_network.nextPeer.answers = true;
    loop.Wait(60'000);
    EXPECT_THAT(Jobs("Net"), IsEmpty());
    EXPECT_EQ(Printer("Net").statusBits, 0U);
    std::string received;
    for (const auto& peer : m_network.peers) received += peer->received;
    EXPECT_EQ(received, "ab");
}

TEST_F(SocketDelivery, AConnectionThatBreaksLeavesTheJobAsUnknown) {
    m_network.nextPeer.breaksAfter = 300'000;
    const std::int64_t broken = Spool("Net", "broken", m_large);
    loop.Wait(50);
    m_network.nextPeer.breaksAfter = -1;
    Spool("Net", "later", "later");
    ASSERT_TRUE(Deliver());
    ASSERT_THAT(Documents("Net"), ElementsAre("broken"));
    EXPECT_EQ(FirstJob("Net").statusBits, kUnknown);
    EXPECT_THAT(FirstJob("Net").statusText,
                StartsWith("Unknown: the connection ended after 300000 of 900000 bytes. "));
    EXPECT_EQ(m_network.peers[1]->received, "later");
    const std::string text = FirstJob("Net").statusText;
    EXPECT_FALSE(FirstJob("Net").isOutcomeTold);
    m_spooler->NoteOutcomeTold("Net", broken);
    Restart();
    EXPECT_TRUE(FirstJob("Net").isOutcomeTold);
    EXPECT_EQ(FirstJob("Net").statusText, text);
    loop.Wait(600'000);
    EXPECT_EQ(m_network.peers.size(), 2U);
    EXPECT_EQ(FirstJob("Net").statusBits, kUnknown);
    ASSERT_EQ(m_spooler->RestartJob("Net", broken, m_message), 0) << m_message;
    ASSERT_TRUE(Deliver());
    EXPECT_EQ(m_network.peers[2]->received, m_large);
    EXPECT_THAT(Jobs("Net"), IsEmpty());
}

TEST_F(SocketDelivery, AConnectionThatBreaksBeforeTheFirstByteIsTriedAgain) {
    m_network.nextPeer.breaksAfter = 0;
    Spool("Net", "a", "a");
    loop.Wait(200);
    EXPECT_EQ(FirstJob("Net").statusBits, job_status::kOffline);
    m_network.nextPeer.breaksAfter = -1;
    loop.Wait(10'000);
    EXPECT_THAT(Jobs("Net"), IsEmpty());
}

TEST_F(SocketDelivery, TheEndOfTheProgramLeavesTheJobAsUnknown) {
    m_network.nextPeer.takes = 1'000;
    Spool("Net", "a", m_large);
    loop.Wait(500);
    EXPECT_EQ(FirstJob("Net").statusBits, job_status::kPrinting);
    EXPECT_EQ(m_spooler->WaitingJobs().bytesSent, 1'000);
    EXPECT_EQ(m_spooler->WaitingJobs().bytesTotal, 900'000);
    EXPECT_EQ(m_spooler->RestartJob("Net", 1, m_message), -1);
    EmbeddedSpooler other(files, loop, m_network, clock, machine, folder.Path());
    std::vector<JobInfo> jobs;
    other.ListJobs("Net", jobs);
    EXPECT_EQ(jobs[0].statusBits, job_status::kPrinting);
    EXPECT_EQ(other.RestartJob("Net", 1, m_message), -1);
    Restart();
    EXPECT_EQ(FirstJob("Net").statusBits, kUnknown);
    EXPECT_THAT(FirstJob("Net").statusText, HasSubstr("1000 of 900000"));
    EXPECT_EQ(m_spooler->CancelJob("Net", 1), 0);
    EXPECT_THAT(Jobs("Net"), IsEmpty());
}

TEST_F(SocketDelivery, APrinterThatNeverReadsStallsOnlyItsOwnQueue) {
    m_network.nextPeer.takes = 10;
    Spool("Net", "stalled", m_large);
    Spool("Quirepress", "other");
    loop.Wait(40'000);
    EXPECT_EQ(Output().size(), 1U);
    const DeliveryState state = m_spooler->WaitingJobs();
    EXPECT_EQ(state.waiting, 1);
    EXPECT_EQ(state.stuck, 0);
    EXPECT_GT(state.unmoved, 39'000);
    EXPECT_FALSE(FirstJob("Net").isUntried);
    EXPECT_EQ(m_spooler->CancelJob("Net", 1), 0);
    EXPECT_TRUE(m_network.peers[0]->dropped);
    EXPECT_TRUE(m_spooler->IsIdle());
}

TEST_F(SocketDelivery, AJobCancelledElsewhereStops) {
    m_network.nextPeer.takes = 10;
    Spool("Net", "stalled", m_large);
    loop.Wait(500);
    EmbeddedSpooler other(files, loop, m_network, clock, machine, folder.Path());
    EXPECT_EQ(other.ChangeJobPriority("Net", 1, 50), 0);
    loop.Wait(3'000);
    EXPECT_FALSE(m_network.peers[0]->dropped);
    EXPECT_EQ(other.CancelJob("Net", 1), 0);
    loop.Wait(3'000);
    EXPECT_TRUE(m_network.peers[0]->dropped);
    EXPECT_EQ(ReadFolder(files, JobsFolder("Net")).size(), 0U);
}

}  // namespace
}  // namespace quirepress
