#include <gmock/gmock.h>

#include "fakes/fake_lpd_server.h"
#include "platform/embedded/lpd_sender.h"
#include "unit/embedded/spooler_bench.h"

namespace quirepress {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Step = FakeLpdServer::Step;

constexpr std::uint32_t kUnknown = job_status::kError | job_status::kUserIntervention;

// Every byte there is.
std::string EveryByte(int times) {
    std::string bytes;
    for (int i = 0; i < 256 * times; ++i) bytes += static_cast<char>(i);
    return bytes;
}

class LpdDelivery : public SpoolerBench {
protected:
    LpdDelivery() {
        machine.hostName = "desk";
        machine.loginName = "ann";
        MakePrinter("Net", "lpd://host/raw");
        m_network.nextPeer.answer = [this](std::string_view bytes) { return m_server.Take(bytes); };
        m_network.onConnect = [this] { m_server.Begin(); };
    }

    bool HasBegun() {
        for (const auto& [name, bytes] : ReadFolder(*system.files, JobsFolder("Net")))
            if (name.ends_with(".begun") && bytes.empty()) return true;
        return false;
    }
    // The bytes before the data, which stand on the wire as they are.
    std::int64_t BytesBeforeData(const std::string& data) {
        const std::string& sent = m_network.peers.back()->received;
        return static_cast<std::int64_t>(sent.size() - data.size() - 1);
    }

    FakeLpdServer m_server;
    const std::string m_document = EveryByte(3);
};

TEST_F(LpdDelivery, SendsTheJobWithEveryByteOfItsData) {
    const std::string large = EveryByte(4'000);
    Spool("Net", "/docs/report.ps", large);
    Spool("Net", "/docs/second.ps", m_document);
    Spool("Net", "nothing", "");
    m_network.nextPeer.answer = [this](std::string_view bytes) {
        const std::size_t before = m_server.dataBytes;
        const std::string answers = m_server.Take(bytes);
        EXPECT_TRUE(m_server.dataBytes == before || HasBegun());
        return answers;
    };
    ASSERT_TRUE(Deliver());
    EXPECT_THAT(Documents("Net"), IsEmpty());
    EXPECT_THAT(m_network.addresses, ElementsAre("host:515", "host:515", "host:515"));
    ASSERT_EQ(m_server.jobs.size(), 2U);
    const FakeLpdServer::Job& job = m_server.jobs[0];
    EXPECT_EQ(job.queue, "raw");
    EXPECT_EQ(job.controlName, "cfA001desk");
    EXPECT_EQ(job.dataName, "dfA001desk");
    EXPECT_EQ(job.control, "Hdesk\nPann\nJreport.ps\nldfA001desk\nUdfA001desk\nNreport.ps\n");
    EXPECT_TRUE(job.data == large);
    EXPECT_EQ(m_server.jobs[1].controlName, "cfA002desk");
    EXPECT_TRUE(m_server.jobs[1].data == m_document);
}

TEST_F(LpdDelivery, NamesOfEveryKindMakeNoLineOfTheirOwn) {
    JobRecord record;
    record.document = "/docs/a\nPeve\r" + std::string(97, 'x') + "\xC3\xA4.ps";
    record.user = "a b\n" + std::string(100, 'u');
    record.machine = "../my host\n" + std::string(100, 'h');
    JobFiles job;
    job.id = 12'345'678;
    const std::string name = "A678.._my_host_" + std::string(20, 'h');
    EXPECT_EQ(lpd::FileNameEnd(job, record), name);
    EXPECT_EQ(lpd::ControlFile(job, record), "H.._my_host_" + std::string(20, 'h') + "\nPa_b_" +
                                                 std::string(27, 'u') + "\nJa_Peve_" + std::string(92, 'x') +
                                                 "\nldf" + name + "\nUdf" + name + "\nNa_Peve_" +
                                                 std::string(92, 'x') + "\n");
    EXPECT_THAT(lpd::ControlFile(job, {}), StartsWith("Hlocalhost\nPunknown\nJ\nldfA678localhost\n"));
}

TEST_F(LpdDelivery, WhatIsRefusedBeforeTheDataIsTriedAgain) {
    for (const Step step : {Step::kQueue, Step::kControlCommand, Step::kControlFile, Step::kDataCommand}) {
        m_server.answers = {{step,
                             "\x01"
                             "printing is off\r\nmore"}};
        Spool("Net", "a", m_document);
        Spool("Net", "b", m_document);
        loop.Wait(500);
        EXPECT_EQ(FirstJob("Net").statusBits, job_status::kError);
        EXPECT_THAT(FirstJob("Net").statusText, StartsWith("Net refuses: "));
        EXPECT_THAT(FirstJob("Net").statusText, HasSubstr("(answer 1: printing is off); next try in 1 s"));
        EXPECT_EQ(Printer("Net").statusBits, printer_status::kError);
        EXPECT_EQ(m_server.dataBytes, 0U);
        EXPECT_TRUE(m_spooler->IsIdle());
        const std::size_t tries = m_network.peers.size();
        loop.Wait(600'000);
        EXPECT_LE(m_network.peers.size() - tries, 16U);
        m_server.answers.clear();
        loop.Wait(61'000);
        EXPECT_THAT(Documents("Net"), IsEmpty());
        ASSERT_EQ(m_server.jobs.size(), 2U);
        EXPECT_TRUE(m_server.jobs[0].data == m_document);
        m_server.jobs.clear();
        m_server.dataBytes = 0;
    }
}

TEST_F(LpdDelivery, ARefusalBehindTheDataLeavesTheJobAsUnknown) {
    m_server.answers = {{Step::kData, "\x02no space"}};
    Spool("Net", "a", m_document);
    ASSERT_TRUE(Deliver());
    EXPECT_EQ(FirstJob("Net").statusBits, kUnknown);
    EXPECT_THAT(
        FirstJob("Net").statusText,
        StartsWith("Unknown: the printer has all 768 bytes, and refuses them (answer 2: no space). "));
    loop.Wait(600'000);
    EXPECT_EQ(m_network.peers.size(), 1U);
}

// One connection is reset, or ended, after each number of bytes that there can be.
TEST_F(LpdDelivery, AnEndAtEveryByteIsSentAgainOnlyBeforeTheData) {
    Spool("Net", "a", m_document);
    ASSERT_TRUE(Deliver());
    const std::int64_t before = BytesBeforeData(m_document);
    const std::int64_t all = before + static_cast<std::int64_t>(m_document.size()) + 1;
    for (const bool reset : {true, false}) {
        for (std::int64_t end = 0; end <= all; end += end >= before + 2 && end < all - 2 ? 97 : 1) {
            SCOPED_TRACE((reset ? "reset after " : "ended after ") + std::to_string(end));
            m_server.jobs.clear();
            (reset ? m_network.nextPeer.breaksAfter : m_network.nextPeer.endsAfter) = end;
            const std::int64_t id = Spool("Net", "a", m_document);
            loop.Wait(200);
            m_network.nextPeer.breaksAfter = m_network.nextPeer.endsAfter = -1;
            loop.Wait(3'000);
            const bool isConfirmed = !reset && end == all;
            if (end <= before || isConfirmed) {
                ASSERT_THAT(Documents("Net"), IsEmpty()) << FirstJob("Net").statusText;
                EXPECT_EQ(m_server.jobs.size(), 1U);
                continue;
            }
            EXPECT_EQ(FirstJob("Net").statusBits, kUnknown);
            EXPECT_LE(m_server.jobs.size(), 1U);
            EXPECT_EQ(m_spooler->CancelJob("Net", id), 0);
        }
    }
}

TEST_F(LpdDelivery, APrinterThatStallsShowsItAndIsGivenUpOnlyBeforeTheData) {
    m_server.answers = {{Step::kQueue, ""}};
    Spool("Net", "a", m_document);
    loop.Wait(40'000);
    EXPECT_GT(m_spooler->WaitingJobs().unmoved, 30'000);
    loop.Wait(25'000);
    EXPECT_THAT(FirstJob("Net").statusText, StartsWith("Net is not reachable: no answer"));
    m_server.answers.clear();
    m_network.nextPeer.takes = 500;
    loop.Wait(3'600'000);
    EXPECT_EQ(FirstJob("Net").statusBits, job_status::kPrinting);
    EXPECT_GT(m_spooler->WaitingJobs().unmoved, 30'000);
    m_network.peers.back()->takes = -1;
    loop.Wait(1'000);
    EXPECT_THAT(Documents("Net"), IsEmpty());
    m_network.nextPeer.takes = -1;
    m_server.answers = {{Step::kData, ""}};
    Spool("Net", "a", m_document);
    loop.Wait(300'000);
    EXPECT_GT(m_spooler->WaitingJobs().unmoved, 30'000);
    EXPECT_THAT(FirstJob("Net").statusText, HasSubstr("768 of 768 bytes sent"));
    loop.Wait(400'000);
    EXPECT_EQ(FirstJob("Net").statusBits, kUnknown);
    EXPECT_THAT(FirstJob("Net").statusText, HasSubstr("did not confirm them. The reason: no answer."));
    EXPECT_EQ(m_server.jobs.size(), 2U);
}

TEST_F(LpdDelivery, TheEndOfTheProgramLeavesTheJobAsUnknownOnlyOnceItsDataFlow) {
    m_server.answers = {{Step::kDataCommand, ""}};
    Spool("Net", "a", m_document);
    loop.Wait(500);
    m_server.answers.clear();
    Restart();
    loop.Wait(500);
    EXPECT_EQ(m_server.jobs.size(), 1U);
    m_server.answers = {{Step::kData, ""}};
    Spool("Net", "b", m_document);
    loop.Wait(500);
    Restart();
    loop.Wait(60'000);
    EXPECT_EQ(FirstJob("Net").statusBits, kUnknown);
    EXPECT_EQ(m_server.jobs.size(), 2U);
}

}  // namespace
}  // namespace quirepress
