#include "page_workloads.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>

#include "documents/page_counts.h"
#include "documents/pdf_counter.h"
#include "documents/qpdf_library.h"
#include "platform/services.h"
#include "workloads.h"

namespace quirepress {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostFiles = 1'500;
constexpr std::size_t kMostProcesses = 200;  // files for the peer that takes a process each
constexpr int kPairsOfProcesses = 3;

double CountEach(const std::vector<std::string>& paths, std::vector<long long>* pages,
                 const std::function<int(const std::string&)>& count) {
    return TimeCall([&] {
        for (const std::string& path : paths) {
            const int result = count(path);
            if (pages) pages->push_back(result);
        }
    });
}

using Paths = std::shared_ptr<std::vector<std::string>>;

bool TakeCorpus(const Paths& paths, const std::string& kind, std::size_t most, std::string& whyNot) {
    *paths = ListCorpus(kind, most);
    if (paths->empty()) whyNot = "scripts/bench-corpus has not been run";
    return !paths->empty();
}

// A count that differs from the library's would make its speed worthless.
bool CheckCounts(const std::vector<std::string>& paths, std::string& whyNot) {
    std::vector<long long> ours;
    std::vector<long long> theirs;
    CountPdfFiles(paths, &ours);
    CountPdfFilesByQpdf(paths, &theirs);
    const auto difference = std::mismatch(ours.begin(), ours.end(), theirs.begin());
    if (difference.first == ours.end()) return true;
    whyNot = "the counts differ for " + paths[static_cast<std::size_t>(difference.first - ours.begin())];
    return false;
}

double CountByPdfInfo(const std::vector<std::string>& paths) {
    return TimeCall([&] {
        for (const std::string& path : paths) TimeCommand({"pdfinfo", path});
    });
}

double CountByRipgrep(const std::vector<std::string>& paths) {
    std::vector<std::string> command = {"rg", "--no-config", "--text", "--max-count=1", "^%%Pages:", "--"};
    command.insert(command.end(), paths.begin(), paths.end());
    return TimeCommand(command);
}

}  // namespace

double CountPdfFiles(const std::vector<std::string>& paths, std::vector<long long>* pages) {
    const Services services = MakeSystemServices();
    QpdfLibrary library(*services.files);
    PdfCounter counter(*services.files, library);
    std::string status;
    return CountEach(paths, pages,
                     [&](const std::string& path) { return counter.CountPages(path, false, "", status); });
}

double CountPostScriptFiles(const std::vector<std::string>& paths, std::vector<long long>* pages) {
    const Services services = MakeSystemServices();
    std::string status;
    return CountEach(paths, pages, [&](const std::string& path) {
        return CountPostScriptPages(*services.files, path, status);
    });
}

std::vector<std::string> ListCorpus(const std::string& kind, std::size_t most) {
    const char* cache = std::getenv("XDG_CACHE_HOME");
    const char* home = std::getenv("HOME");
    const fs::path folder = cache && *cache ? fs::path(cache) : fs::path(home ? home : "") / ".cache";
    std::vector<std::string> all;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(folder / "quirepress" / "corpus" / kind, error), end;
         !error && entry != end; entry.increment(error))
        if (entry->is_regular_file(error)) all.push_back(entry->path().string());
    std::sort(all.begin(), all.end());
    std::vector<std::string> taken;
    const std::size_t step = all.size() / most + 1;
    for (std::size_t i = 0; i < all.size(); i += step) taken.push_back(all[i]);
    return taken;
}

void AddPageWorkloads(std::vector<Workload>& workloads) {
    auto pdfs = std::make_shared<std::vector<std::string>>();
    workloads.push_back({"pdf-count-library", 0.125,
                         [pdfs](std::string& whyNot) {
                             return TakeCorpus(pdfs, "pdf", kMostFiles, whyNot) && CheckCounts(*pdfs, whyNot);
                         },
                         [pdfs] { return CountPdfFiles(*pdfs); },
                         [pdfs] { return CountPdfFilesByQpdf(*pdfs); }});
    auto some = std::make_shared<std::vector<std::string>>();
    workloads.push_back(
        {"pdf-count-pdfinfo", 0.02,
         [some](std::string& whyNot) { return TakeCorpus(some, "pdf", kMostProcesses, whyNot); },
         [some] { return CountPdfFiles(*some); }, [some] { return CountByPdfInfo(*some); },
         kPairsOfProcesses});
    auto scripts = std::make_shared<std::vector<std::string>>();
    workloads.push_back(
        {"postscript-count", 0.1,
         [scripts](std::string& whyNot) { return TakeCorpus(scripts, "ps", kMostFiles, whyNot); },
         [scripts] { return CountPostScriptFiles(*scripts); },
         [scripts] { return CountByRipgrep(*scripts); }});
}

}  // namespace quirepress
