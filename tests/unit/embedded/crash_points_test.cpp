#include <gmock/gmock.h>

#include "fakes/halting_files.h"
#include "unit/embedded/spooler_bench.h"

namespace quirepress {
namespace {

using testing::Contains;
using testing::Key;

const std::string kLarge(5'000, 'L');

// A program's life on a folder: spools documents and delivers them, and is ended at any one of its changes.
class CrashPoints : public testing::TestWithParam<bool> {
protected:
    struct Life {
        explicit Life(CrashPoints& test)
            : files(*test.m_system.files),
              spooler(files, test.m_loop, test.m_network, test.m_clock, test.m_machine,
                      test.m_folder->Path()) {
            if (GetParam()) files.PutOnOtherVolume(test.m_folder->PathOf("other"));
        }
        HaltingFiles files;
        EmbeddedSpooler spooler;
    };

    void MakePrinters() {
        m_folder = std::make_unique<TemporaryFolder>();
        m_folder->Write("Printers/default-printer", "Out\n");
        m_folder->Write("Printers/Out/printer.ini", "PORT;folder:" + m_folder->PathOf("other") + "\n");
        m_folder->Write("Printers/Net/printer.ini", "PORT;socket://host\n");
    }

    // True when the life came to its natural end.
    bool LiveFor(int changes) {
        Life life(*this);
        life.files.HaltAfter(changes);
        std::string message;
        if (life.spooler.Open(message) != 0) return false;
        m_closed.clear();
        for (const char* name : {"a", "b"}) {
            if (SpoolDocument(life.spooler, "Out", name, name + kLarge) > 0) m_closed.push_back(name);
            Pump(life, 3);
        }
        m_netClosed = SpoolDocument(life.spooler, "Net", "n", "net") > 0;
        if (SpoolDocument(life.spooler, "Out", "c", "c" + kLarge) > 0) m_closed.push_back("c");
        Pump(life, 40);
        return !life.files.HasHalted();
    }

    void Pump(Life& life, int passes) {
        for (int i = 0; i < passes && !life.files.HasHalted(); ++i) m_loop.Pump();
    }

    void Recover() {
        Life life(*this);
        std::string message;
        ASSERT_EQ(life.spooler.Open(message), 0) << message;
        for (int i = 0; i < 1'000 && !life.spooler.IsIdle(); ++i) m_loop.Wait(50);
        ASSERT_TRUE(life.spooler.IsIdle());
        CheckOutput();
        CheckNetwork(life.spooler);
        std::vector<JobInfo> jobs;
        ASSERT_EQ(life.spooler.ListJobs("Out", jobs), 0);
        EXPECT_TRUE(jobs.empty());
        m_loop.Wait(1'100);
        EXPECT_TRUE(ReadFolder(*m_system.files, m_folder->PathOf("Printers/Out/Jobs")).empty());
    }

    void CheckOutput() {
        std::map<std::string, int> counts;
        for (const auto& [name, bytes] : ReadFolder(*m_system.files, m_folder->PathOf("other"))) {
            ASSERT_EQ(name.size(), 10U) << name;
            const std::string title = name.substr(9);
            EXPECT_EQ(bytes, title + kLarge) << name;
            ++counts[title];
        }
        for (const auto& [title, count] : counts) EXPECT_EQ(count, 1) << title;
        for (const std::string& name : m_closed) EXPECT_THAT(counts, Contains(Key(name)));
    }

    void CheckNetwork(EmbeddedSpooler& spooler) {
        std::string sent;
        for (const auto& peer : m_network.peers) sent += peer->received;
        EXPECT_TRUE(sent.empty() || sent == "net") << sent;
        std::vector<JobInfo> jobs;
        ASSERT_EQ(spooler.ListJobs("Net", jobs), 0);
        // What may have been sent is either over or of unknown outcome.
        for (const JobInfo& job : jobs)
            EXPECT_EQ(job.statusBits, job_status::kError | job_status::kUserIntervention) << job.statusText;
        EXPECT_TRUE(!m_netClosed || !sent.empty() || jobs.size() == 1);
    }

    Services m_system = MakeSystemServices();
    std::unique_ptr<TemporaryFolder> m_folder;
    FakeEventLoop m_loop;
    FakeClock m_clock{m_loop};
    FakeMachine m_machine;
    FakeNetwork m_network;
    std::vector<std::string> m_closed;
    bool m_netClosed = false;
};

TEST_P(CrashPoints, EveryClosedJobIsDeliveredOnce) {
    bool finished = false;
    int changes = 0;
    for (; !finished && !HasFailure(); ++changes) {
        SCOPED_TRACE("ended at change " + std::to_string(changes));
        MakePrinters();
        m_network.peers.clear();
        m_closed.clear();
        m_netClosed = false;
        finished = LiveFor(changes);
        Recover();
    }
    EXPECT_GT(changes, 60);
    EXPECT_EQ(m_closed.size(), 3U);
}

INSTANTIATE_TEST_SUITE_P(Volumes, CrashPoints, testing::Bool(),
                         [](const auto& test) { return std::string(test.param ? "Other" : "Same"); });

}  // namespace
}  // namespace quirepress
