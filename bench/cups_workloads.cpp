#include <cups/cups.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include "backends/direct_print.h"
#include "logs/debug_log.h"
#include "platform/clock.h"
#include "platform/cups/open_cups_spooler.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/libraries.h"
#include "platform/machine.h"
#include "platform/network.h"
#include "platform/registry.h"
#include "platform/services.h"
#include "platform/shell.h"
#include "platform/spooler.h"
#include "platform/terminal.h"
#include "rig/memory_disk.h"
#include "rig/private_cups.h"
#include "workloads.h"

namespace quirepress {

namespace {

namespace fs = std::filesystem;

constexpr int kManyJobs = 1'000;
constexpr int kPortion = 200;  // after which the queue is emptied: a server's own work grows with a queue
constexpr int kFewJobs = 100;  // of the slow peer

// Raw printing through a CUPS server of our own, to a paused queue: what is measured is how jobs get there.
// That they get there byte for byte is looked at first, on a queue that keeps what comes out.
class CupsBench {
public:
    bool Prepare(std::string& whyNot) {
        m_cups.UseHere();
        m_cups.AddRawQueue("Kept");
        m_cups.AddQueue("Held", "file:/dev/null");
        m_cups.Pause("Held");
        for (int i = 0; i < kManyJobs; ++i)
            m_small.push_back(m_folder.Write("small/" + std::to_string(i) + ".prn", RandomBytes(1024)));
        std::ofstream large(m_folder.PathOf("large.prn"), std::ios::binary);
        for (int i = 0; i < 256; ++i) large << RandomBytes(std::size_t{1} << 20);
        large.close();
        m_spooler = OpenCupsSpooler(*m_services.files, *m_services.loop, *m_services.clock,
                                    CupsNeed::kPrinterAtOnce, whyNot);
        if (!m_spooler) return false;
        return ArrivesWhole({m_small.begin(), m_small.begin() + 20}, whyNot) &&
               ArrivesWhole({m_folder.PathOf("large.prn")}, whyNot);
    }

    // Each answers seconds, a job.
    double PrintSmall() {
        return TimePortions(
            [this](const auto& portion) { return TimeCall([&] { PrintAll("Held", portion); }); });
    }
    double PrintSmallByLpEach() {
        double seconds = 0;
        for (int i = 0; i < kFewJobs; ++i)
            seconds += TimeCommand({"lp", "-o", "raw", "-d", "Held", m_small[static_cast<std::size_t>(i)]});
        return Clear() ? seconds / kFewJobs : -1;
    }
    double PrintSmallByLpOnce() {
        return TimePortions([](const auto& portion) {
            std::vector<std::string> command = {"lp", "-o", "raw", "-d", "Held"};
            command.insert(command.end(), portion.begin(), portion.end());
            return TimeCommand(command);
        });
    }

    double PrintLarge() {
        const double seconds = TimeCall([this] { PrintAll("Held", {m_folder.PathOf("large.prn")}); });
        return Clear() ? seconds : -1;
    }
    double PrintLargeByLp() {
        const double seconds = TimeCommand({"lp", "-o", "raw", "-d", "Held", m_folder.PathOf("large.prn")});
        return Clear() ? seconds : -1;
    }

    // Once with the queue full, each answers the seconds of ten scans.
    void Fill() { PrintAll("Held", m_small); }
    double ScanQueue() {
        std::size_t found = 0;
        const double seconds = TimeCall([&] {
            for (int i = 0; i < 10; ++i) {
                std::vector<JobInfo> jobs;
                m_spooler->ListJobs("Held", jobs);
                found += jobs.size();
            }
        });
        return found == 10 * kManyJobs ? seconds : -1;
    }
    static double ScanQueueByLibrary() {
        // libcups asks for the server's name once in a thread; here it is another one for each workload.
        http_t* server = httpConnect2(std::getenv("CUPS_SERVER"), ippPort(), nullptr, AF_UNSPEC,
                                      cupsEncryption(), 1, 5'000, nullptr);
        int found = 0;
        const double seconds = TimeCall([&] {
            for (int i = 0; i < 10; ++i) {
                cups_job_t* jobs = nullptr;
                const int count = cupsGetJobs2(server, &jobs, "Held", 0, CUPS_WHICHJOBS_ACTIVE);
                cupsFreeJobs(count, jobs);
                found += count;
            }
        });
        httpClose(server);
        return found == 10 * kManyJobs ? seconds : -1;
    }

private:
    std::string RandomBytes(std::size_t size) {
        std::string bytes(size, '\0');
        for (char& c : bytes) c = static_cast<char>((m_state = m_state * 1664525U + 1013904223U) >> 24U);
        return bytes;
    }

    void PrintAll(const std::string& printer, const std::vector<std::string>& paths) {
        DirectPrinter direct(*m_spooler, *m_services.files, *m_services.loop, m_debugLog);
        for (const std::string& path : paths) {
            DirectOutcome outcome;
            direct.PrintExtPS(printer, path, {}, outcome);
            m_isGood = m_isGood && outcome.accepted;
        }
    }

    template <typename Print>
    double TimePortions(Print print) {
        double seconds = 0;
        for (auto start = m_small.begin(); start != m_small.end(); start += kPortion) {
            seconds += print(std::vector<std::string>(start, start + kPortion));
            if (!Clear()) return -1;
        }
        return seconds / kManyJobs;
    }

    bool ArrivesWhole(const std::vector<std::string>& paths, std::string& whyNot) {
        const std::size_t before = m_cups.Captured().size();
        PrintAll("Kept", paths);
        if (!m_cups.AwaitCaptured(before + paths.size())) return false;
        const std::vector<CapturedJob> captured = m_cups.Captured();
        for (std::size_t i = 0; i < paths.size(); ++i) {
            std::ifstream in(paths[i], std::ios::binary);
            if (captured[before + i].bytes == std::string(std::istreambuf_iterator<char>(in), {})) continue;
            whyNot = paths[i] + " did not arrive as it is";
            return false;
        }
        return true;
    }

    bool Clear() { return m_cups.RunTool({"cancel", "-a", "-x", "Held"}) == 0 && m_isGood; }

    // A disk on which many files were just erased makes new ones ever more slowly.
    MemoryDisk m_disk{std::uintmax_t{2} << 30};
    Services m_services = MakeSystemServices();
    TemporaryFolder m_folder;
    PrivateCups m_cups{m_services};
    std::vector<std::string> m_small;
    std::unique_ptr<Spooler> m_spooler;
    DebugLog m_debugLog;
    unsigned m_state = 1;
    bool m_isGood = true;
};

}  // namespace

void AddCupsWorkloads(std::vector<Workload>& workloads) {
    auto bench = std::make_shared<std::unique_ptr<CupsBench>>();
    const auto prepare = [bench](std::string& whyNot) {
        *bench = std::make_unique<CupsBench>();
        return (*bench)->Prepare(whyNot);
    };
    const auto prepareFull = [bench, prepare](std::string& whyNot) {
        const bool isReady = prepare(whyNot);
        if (isReady) (*bench)->Fill();
        return isReady;
    };
    workloads.push_back({"cups-raw-1000-lp-each", 1.0 / 30, prepare,
                         [bench] { return (*bench)->PrintSmall(); },
                         [bench] { return (*bench)->PrintSmallByLpEach(); }, 5});
    workloads.push_back({"cups-raw-1000-lp-once", 1.0 / 2.5, prepare,
                         [bench] { return (*bench)->PrintSmall(); },
                         [bench] { return (*bench)->PrintSmallByLpOnce(); }, 7});
    workloads.push_back({"cups-raw-256MiB", 1.0 / 1.3, prepare, [bench] { return (*bench)->PrintLarge(); },
                         [bench] { return (*bench)->PrintLargeByLp(); }, 7});
    workloads.push_back({"cups-queue-scan", 1.5, prepareFull, [bench] { return (*bench)->ScanQueue(); },
                         [] { return CupsBench::ScanQueueByLibrary(); }, 7});
}

}  // namespace quirepress
