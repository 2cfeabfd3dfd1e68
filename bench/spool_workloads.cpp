#include <filesystem>
#include <fstream>
#include <memory>

#include "backends/direct_print.h"
#include "logs/debug_log.h"
#include "platform/clock.h"
#include "platform/embedded/embedded_spooler.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/libraries.h"
#include "platform/machine.h"
#include "platform/network.h"
#include "platform/processes.h"
#include "platform/registry.h"
#include "platform/services.h"
#include "platform/shell.h"
#include "platform/terminal.h"
#include "workloads.h"

namespace quirepress {

namespace {

namespace fs = std::filesystem;

// A 256 MiB file, printed raw to a `null:` port until its queue is empty; the peer copies the same file and
// flushes the copy. Both on the disk of the current folder's build tree, not in memory.
struct RawBench {
    fs::path folder = fs::current_path() / "build" / "bench-raw";
    std::string source = (folder / "large.prn").string();
    std::string copy = (folder / "copy.prn").string();
    Services services = MakeSystemServices();
    std::unique_ptr<EmbeddedSpooler> spooler;
    DebugLog debugLog;

    bool Prepare(std::string& whyNot) {
        fs::create_directories(folder);
        constexpr std::size_t kBlock = std::size_t{1} << 20;
        std::string block(kBlock, '\0');
        unsigned state = 1;
        std::ofstream out(source, std::ios::binary);
        for (int i = 0; i < 256; ++i) {
            for (char& c : block) c = static_cast<char>((state = state * 1664525U + 1013904223U) >> 24U);
            out.write(block.data(), static_cast<std::streamsize>(block.size()));
        }
        out.close();
        spooler = std::make_unique<EmbeddedSpooler>(*services.files, *services.loop, *services.network,
                                                    *services.clock, *services.machine,
                                                    (folder / "home").string() + "/");
        if (!out || spooler->Open(whyNot) != 0) return false;
        spooler->CreatePrinterQueue("Null", "null:", whyNot);
        return true;
    }

    double Print() {
        DirectPrinter printer(*spooler, *services.files, *services.loop, debugLog);
        bool isGood = false;
        const double seconds = TimeCall([&] {
            DirectOutcome outcome;
            isGood = printer.PrintExtPS("Null", source, {}, outcome) == 0 && outcome.accepted;
            std::vector<JobInfo> jobs;
            do {
                services.loop->Pump();
                jobs.clear();
                spooler->ListJobs("Null", jobs);
            } while (!jobs.empty());
        });
        return isGood ? seconds : -1;
    }

    double Copy() { return TimeCommand({"sh", "-c", "cp \"$0\" \"$1\" && sync \"$1\"", source, copy}); }

    ~RawBench() {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }
};

}  // namespace

void AddSpoolWorkloads(std::vector<Workload>& workloads) {
    auto bench = std::make_shared<std::unique_ptr<RawBench>>();
    workloads.push_back({"raw-256MiB-null", 1.6,
                         [bench](std::string& whyNot) {
                             *bench = std::make_unique<RawBench>();
                             return (*bench)->Prepare(whyNot);
                         },
                         [bench] { return (*bench)->Print(); }, [bench] { return (*bench)->Copy(); }, 9});
}

}  // namespace quirepress
