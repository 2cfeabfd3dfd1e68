#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "workloads.h"

namespace quirepress {

namespace {

namespace fs = std::filesystem;

// Whole runs of `qpr print` over a folder of documents, with the snapshot, the logs and moves on.
class RunBench {
public:
    explicit RunBench(fs::path folder) : m_folder(std::move(folder)) {}
    ~RunBench() { Clear(); }
    RunBench(const RunBench&) = delete;
    RunBench& operator=(const RunBench&) = delete;

    fs::path In() const { return m_folder / "in"; }
    // Where the documents are now.
    fs::path Source() const { return fs::exists(Done()) ? fs::path(Done()) : In(); }
    void Clear() const {
        std::error_code ignored;
        fs::remove_all(m_folder, ignored);
    }
    bool Prepare() const {
        Clear();
        fs::create_directories(In());
        for (const char* option : {"SNAPSHOTRESTORE", "ERRORLOG", "GENERATEREPORTS"})
            if (TimeCommand({QUIREPRESS_QPR, "--home", Home(), "settings", "set", "general", option}) < 0)
                return false;
        return true;
    }
    // The documents are brought back first, so that each time is a first one.
    double Print() const {
        std::error_code ignored;
        if (fs::exists(Done())) {
            fs::remove_all(In(), ignored);
            fs::rename(Done(), In(), ignored);
        }
        fs::remove_all(fs::path(Home()) / "Printers", ignored);
        return TimeCommand({QUIREPRESS_QPR, "--home", Home(), "--spooler", "embedded", "print", "--move-to",
                            Done(), In().string()});
    }

private:
    std::string Home() const { return (m_folder / "home").string(); }
    std::string Done() const { return (m_folder / "done").string(); }

    fs::path m_folder;
};

bool WriteRawDocuments(const RunBench& bench) {
    if (!bench.Prepare()) return false;
    for (int i = 0; i < 1000; ++i)
        std::ofstream(bench.In() / (std::to_string(i) + ".ps")) << "%!PS\n"
                                                                << std::string(1000, '%') << "\nshowpage\n";
    return true;
}

bool WriteOfficeDocuments(const RunBench& bench) {
    if (!bench.Prepare()) return false;
    for (int i = 0; i < 50; ++i) {
        std::ofstream out(bench.In() / (std::to_string(i) + ".rtf"));
        out << "{\\rtf1\\ansi ";
        for (int line = 0; line < 100; ++line) out << "Line " << line << " of document " << i << ".\\par\n";
        out << "}";
    }
    return true;
}

}  // namespace

void AddRunWorkloads(std::vector<Workload>& workloads) {
    // In memory, where a flush costs nothing; the peer is what is promised: 100 documents a second.
    const auto raw = std::make_shared<RunBench>(fs::path("/dev/shm") / "quirepress-bench-run");
    workloads.push_back({"run-1000-raw", 1,
                         [raw](std::string& whyNot) {
                             whyNot = "the documents can't be written";
                             return WriteRawDocuments(*raw);
                         },
                         [raw] { return raw->Print(); }, [] { return 10.0; }, 5});
    const auto office = std::make_shared<RunBench>(fs::temp_directory_path() / "quirepress-bench-office");
    workloads.push_back({"run-50-office", 1.3,
                         [office](std::string& whyNot) {
                             whyNot = "LibreOffice is not installed";
                             return TimeCommand({"which", "soffice"}) >= 0 && WriteOfficeDocuments(*office);
                         },
                         [office] { return office->Print(); },
                         [office] {
                             const fs::path work = fs::temp_directory_path() / "quirepress-bench-soffice";
                             fs::create_directories(work);
                             std::vector<std::string> words = {
                                 "soffice",      "-env:UserInstallation=file://" + work.string() + "/profile",
                                 "--headless",   "--norestore",
                                 "--convert-to", "pdf",
                                 "--outdir",     (work / "out").string()};
                             for (const auto& entry : fs::directory_iterator(office->Source()))
                                 words.push_back(entry.path());
                             const double seconds = TimeCommand(words);
                             fs::remove_all(work / "out");
                             return seconds;
                         },
                         3});
}

}  // namespace quirepress
