#include "unit/embedded/spooler_bench.h"

#include <algorithm>

#include "base/path.h"
#include "platform/file_tools.h"

namespace quirepress {

std::int64_t SpoolDocument(Spooler& spooler, std::string_view printer, std::string_view name,
                           std::string_view bytes) {
    constexpr std::size_t kChunk = 1000;
    int error = 0;
    const auto raw = spooler.OpenRawPrinter(printer, error);
    if (!raw || raw->StartDocument({std::string(name), 1}) != 0) return -1;
    for (std::size_t at = 0; at < bytes.size(); at += kChunk)
        raw->WriteChunk(bytes.data() + at, std::min(kChunk, bytes.size() - at));
    return raw->Finish() == 0 ? raw->JobId() : -1;
}

std::map<std::string, std::string> ReadFolder(Files& files, const std::string& path) {
    std::vector<FolderEntry> entries;
    files.ListFolder(path, entries);
    std::map<std::string, std::string> contents;
    for (const FolderEntry& entry : entries) {
        if (entry.kind == FileKind::kFolder) continue;
        FileResult result = FileResult::kDone;
        std::string bytes;
        EXPECT_TRUE(ReadWholeFile(files, JoinPath(path, entry.name), 1 << 30, bytes, result));
        contents[entry.name] = bytes;
    }
    return contents;
}

void SpoolerBench::Restart() {
    m_spooler.reset();
    m_spooler = std::make_unique<EmbeddedSpooler>(files, loop, m_network, clock, machine, folder.Path());
    EXPECT_EQ(m_spooler->Open(m_message), 0) << m_message;
}

void SpoolerBench::MakePrinter(std::string_view name, std::string_view port) {
    ASSERT_EQ(m_spooler->CreatePrinterQueue(name, port, m_message), 0) << m_message;
}

bool SpoolerBench::Deliver() {
    constexpr int kMostWaits = 36'000;
    for (int i = 0; i < kMostWaits; ++i) {
        loop.Wait(100);
        if (m_spooler->IsIdle()) return true;
    }
    return false;
}

std::vector<JobInfo> SpoolerBench::Jobs(std::string_view printer) {
    std::vector<JobInfo> jobs;
    EXPECT_EQ(m_spooler->ListJobs(printer, jobs), 0);
    return jobs;
}

JobInfo SpoolerBench::FirstJob(std::string_view printer) {
    const std::vector<JobInfo> jobs = Jobs(printer);
    return jobs.empty() ? JobInfo() : jobs[0];
}

std::vector<std::string> SpoolerBench::Documents(std::string_view printer) {
    std::vector<std::string> names;
    for (const JobInfo& job : Jobs(printer)) names.push_back(job.document);
    return names;
}

PrinterInfo SpoolerBench::Printer(std::string_view name) {
    std::vector<PrinterInfo> printers;
    EXPECT_EQ(m_spooler->ListPrinters(printers), 0);
    for (const PrinterInfo& printer : printers)
        if (printer.name == name) return printer;
    ADD_FAILURE() << "no printer " << name;
    return {};
}

std::map<std::string, std::string> SpoolerBench::Output(std::string_view printer) {
    return ReadFolder(*system.files, folder.PathOf("Printers/" + std::string(printer) + "/Output"));
}

}  // namespace quirepress
