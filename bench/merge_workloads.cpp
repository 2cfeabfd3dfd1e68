#include "merge_workloads.h"

#include <cstdio>
#include <filesystem>
#include <memory>

#include "documents/pdf_merge.h"
#include "documents/qpdf_library.h"
#include "page_workloads.h"
#include "platform/file_tools.h"
#include "platform/services.h"
#include "workloads.h"

namespace quirepress {
namespace {

constexpr std::size_t kFiles = 500;
constexpr std::size_t kSampleFiles = 25;
constexpr int kPairs = 3;  // the peers take their time

using Paths = std::shared_ptr<std::vector<std::string>>;

std::string Target(const std::string& name) {
    std::filesystem::create_directories("build/bench-files-merged");
    return "build/bench-files-merged/" + name + ".pdf";
}

// Text of all pages, or nothing.
std::string TextOf(const std::string& pdf) {
    const std::string target = Target("text") + ".txt";
    const Services services = MakeSystemServices();
    std::string text;
    FileResult result = FileResult::kDone;
    if (TimeCommand({"pdftotext", "-q", pdf, target}) >= 0)
        ReadWholeFile(*services.files, target, std::int64_t{1} << 30, text, result);
    return text;
}

// What is merged in another way than the peer does it would make its speed worthless.
bool CheckMerged(const std::vector<std::string>& paths, std::string& whyNot) {
    std::vector<std::string> sample;
    for (std::size_t i = 0; i < paths.size(); i += paths.size() / kSampleFiles + 1)
        sample.push_back(paths[i]);
    if (!MergeFiles(sample, Target("ours")) || !MergeFilesByQpdf(sample, Target("theirs"))) {
        whyNot = "the sample can't be merged";
    } else if (TextOf(Target("ours")).empty() || TextOf(Target("ours")) != TextOf(Target("theirs"))) {
        whyNot = "the texts of the merged files differ";
    } else if (!IsFaultlessForQpdf(Target("ours"))) {
        whyNot = "libqpdf has something to say about the merged file";
    } else {
        std::vector<long long> pages;
        CountPdfFilesByQpdf({Target("ours"), Target("theirs")}, &pages);
        if (pages[0] != pages[1]) whyNot = "the page counts of the merged files differ";
    }
    return whyNot.empty();
}

// In a process of its own, so that what it takes does not count as memory of what comes later.
bool CheckInChild(const std::vector<std::string>& paths, std::string& whyNot) {
    const auto check = [&] {
        std::string reason;
        if (!CheckMerged(paths, reason)) std::fprintf(stderr, "%s\n", reason.c_str());
        return reason.empty();
    };
    if (MeasureChild(check, CostOf::kWallTime) < 0) whyNot = "the merged file of a sample is not right";
    return whyNot.empty();
}

bool TakeFiles(const Paths& paths, std::string& whyNot) {
    if (!paths->empty()) return true;
    for (const std::string& path : ListCorpus("pdf", kFiles))
        if (IsFaultlessForQpdf(path)) paths->push_back(path);
    if (paths->empty()) whyNot = "scripts/bench-corpus has not been run";
    return !paths->empty() && CheckInChild(*paths, whyNot);
}

double MergeInChild(const Paths& paths, CostOf cost) {
    return MeasureChild([&] { return MergeFiles(*paths, Target("ours")); }, cost);
}

double MergeInChildByQpdf(const Paths& paths, CostOf cost) {
    return MeasureChild([&] { return MergeFilesByQpdf(*paths, Target("theirs")); }, cost);
}

std::vector<std::string> Command(std::vector<std::string> words, const std::vector<std::string>& paths,
                                 const std::vector<std::string>& ending) {
    words.insert(words.end(), paths.begin(), paths.end());
    words.insert(words.end(), ending.begin(), ending.end());
    return words;
}

}  // namespace

bool MergeFiles(const std::vector<std::string>& paths, const std::string& target) {
    const Services services = MakeSystemServices();
    QpdfLibrary library(*services.files);
    PdfMergeRequest request;
    request.inputs = paths;
    request.target = target;
    request.scratchFolder = "build/bench-files-merged/scratch";
    const PdfMergeOutcome outcome = MergePdfs(*services.files, library, request);
    if (outcome.end != PdfMergeOutcome::End::kDone) std::fprintf(stderr, "%s\n", outcome.message.c_str());
    return outcome.end == PdfMergeOutcome::End::kDone;
}

void AddMergeWorkloads(std::vector<Workload>& workloads) {
    const auto paths = std::make_shared<std::vector<std::string>>();
    const auto prepare = [paths](std::string& whyNot) { return TakeFiles(paths, whyNot); };
    const auto program = [paths](CostOf cost) {
        return TimeCommand(Command({QUIREPRESS_QPR, "merge", Target("ours")}, *paths, {}), cost);
    };
    workloads.push_back({"merge-500-pdfs", 0.067, prepare,
                         [paths] { return MergeInChild(paths, CostOf::kProcessorTime); },
                         [paths] { return MergeInChildByQpdf(paths, CostOf::kProcessorTime); }, kPairs});
    workloads.push_back({"merge-500-memory", 0.05, prepare,
                         [program] { return program(CostOf::kPeakMemory); },
                         [paths] { return MergeInChildByQpdf(paths, CostOf::kPeakMemory); }, 1});
    workloads.push_back(
        {"merge-500-qpdf", 0.1, prepare, [program] { return program(CostOf::kProcessorTime); },
         [paths] {
             return TimeCommand(Command({"qpdf", "--empty", "--pages"}, *paths, {"--", Target("theirs")}),
                                CostOf::kProcessorTime);
         },
         kPairs});
}

}  // namespace quirepress
