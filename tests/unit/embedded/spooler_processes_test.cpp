#include <gmock/gmock.h>

#include <random>
#include <set>

#include "base/numbers.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/event_loop.h"
#include "platform/processes.h"
#include "unit/embedded/spooler_bench.h"

namespace quirepress {
namespace {

// Programs that really run beside the test, on one working folder.
class SpoolerProcesses : public testing::Test {
protected:
    std::unique_ptr<ChildProcess> Start(const std::string& prefix, int count) {
        const std::string self = m_system.machine->ProgramPath();
        ProcessRequest request;
        request.arguments = {JoinPath(FolderOf(self), "test_spooler") + std::string(FileExtension(self)),
                             m_folder.Path(), prefix, std::to_string(count)};
        // Wine fails to start one now and then, on a busy machine.
        constexpr int kMostTries = 3;
        int error = 0;
        std::unique_ptr<ChildProcess> process;
        for (int i = 0; i < kMostTries && !process; ++i) process = m_system.processes->Start(request, error);
        EXPECT_NE(process, nullptr) << error;
        return process;
    }

    void DeliverTheRest() {
        EmbeddedSpooler spooler(*m_system.files, *m_system.loop, *m_system.network, *m_system.clock,
                                *m_system.machine, m_folder.Path());
        std::string message;
        ASSERT_EQ(spooler.Open(message), 0) << message;
        for (int i = 0; i < 3'000 && !spooler.IsIdle(); ++i) m_system.loop->Wait(10);
        std::vector<JobInfo> jobs;
        ASSERT_EQ(spooler.ListJobs("Quirepress", jobs), 0);
        EXPECT_TRUE(jobs.empty());
    }

    // Each document that was closed is there once and whole; of the others, none twice or by half.
    void CheckOutput() {
        const std::string output = m_folder.PathOf("Printers/Quirepress/Output");
        std::set<std::string> ids;
        std::set<std::string> names;
        for (const auto& [file, bytes] : ReadFolder(*m_system.files, output)) {
            EXPECT_TRUE(ids.insert(file.substr(0, 8)).second) << file;
            const std::string name = file.substr(9);
            EXPECT_TRUE(names.insert(name).second) << "twice: " << file;
            std::string expected;
            for (int i = ParseLong(name.substr(name.find('-') + 1)); i > 0; --i) expected += name;
            EXPECT_EQ(bytes, expected) << file;
        }
        const std::string closed = m_folder.Read("closed.txt");
        for (const std::string_view name : SplitAt(closed, '\n'))
            EXPECT_TRUE(name.empty() || names.contains(std::string(name))) << "lost: " << name;
    }

    Services m_system = MakeSystemServices();
    TemporaryFolder m_folder;
};

TEST_F(SpoolerProcesses, AProgramMayBeKilledAtAnyMoment) {
    constexpr int kMoments = 60;
    std::mt19937 random(20240301);
    std::uniform_int_distribution<int> delay(0, 30);
    for (int moment = 0; moment < kMoments; ++moment) {
        const auto program = Start("m" + std::to_string(moment), 1'000'000);
        ASSERT_NE(program, nullptr);
        const std::size_t before = m_folder.Read("closed.txt").size();
        for (int i = 0; i < 1'000 && m_folder.Read("closed.txt").size() == before; ++i)
            m_system.loop->Wait(5);
        m_system.loop->Wait(delay(random));
        ASSERT_TRUE(program->IsRunning()) << program->ExitCode();
        program->EndTree();
        WaitForProcess(*m_system.loop, *program, 10'000);
    }
    EXPECT_GT(SplitAt(m_folder.Read("closed.txt"), '\n').size(), 60U);
    DeliverTheRest();
    CheckOutput();
}

TEST_F(SpoolerProcesses, SeveralProgramsShareAFolder) {
    constexpr int kPrograms = 4;
    constexpr int kDocuments = 40;
    std::vector<std::unique_ptr<ChildProcess>> programs;
    programs.reserve(kPrograms);
    for (int i = 0; i < kPrograms; ++i) programs.push_back(Start("p" + std::to_string(i), kDocuments));
    for (const auto& program : programs) {
        ASSERT_NE(program, nullptr);
        ASSERT_TRUE(WaitForProcess(*m_system.loop, *program, 60'000));
        EXPECT_EQ(program->ExitCode(), 0);
    }
    CheckOutput();
    EXPECT_EQ(ReadFolder(*m_system.files, m_folder.PathOf("Printers/Quirepress/Output")).size(),
              static_cast<std::size_t>(kPrograms * kDocuments));
}

}  // namespace
}  // namespace quirepress
