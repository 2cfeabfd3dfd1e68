#include <cstdlib>
#include <string>

#include "documents/pdf_merge.h"
#include "documents/pdf_reference_scan.h"
#include "fakes/memory_file.h"
#include "memory_files.h"

namespace quirepress {
namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

// What is not copied as it stands is not looked at here.
class NoLibrary : public PdfPages {
public:
    PdfResult InspectColors(std::string_view, std::string_view, int, std::vector<PageColor>&) override {
        return PdfResult::kGaveUp;
    }
    PdfResult ExtractPages(std::string_view, std::string_view, const std::vector<PdfPageRange>&,
                           std::string_view) override {
        return PdfResult::kGaveUp;
    }
};

int CountMerged(const std::string& bytes) {
    PdfMergeScratch scratch;
    MemoryFile file(bytes);
    PdfMergeInput input(file, scratch, false);
    return input.Open() ? input.PageCount() : -1;
}

// What was copied is bounded by what was there, can be read by the same means, and has the same pages.
void CheckMerge(const std::string& bytes) {
    MemoryFiles files;
    NoLibrary library;
    files.Put("in.pdf", bytes);
    PdfMerge merge(files, library, "out.pdf", "scratch");
    const PdfResult first = merge.Add("in.pdf", "");
    const int pages = merge.PageCount();
    Require(first == PdfResult::kDone ? pages > 0 : pages == 0);
    const PdfResult second = merge.Add("in.pdf", "");
    Require(second == first || second == PdfResult::kNotWritten);
    merge.Finish();
    const auto written = files.All().find("~qpr0.tmp");
    Require(written != files.All().end());
    if (first == PdfResult::kDone && second == PdfResult::kDone)
        Require(CountMerged(written->second) == 2 * pages);
}

// A copied value reads back as itself.
void CheckScan(const std::string& bytes) {
    PdfReferenceScan scan;
    if (scan.Read(bytes) != PdfRead::kDone) return;
    const std::string value(scan.Value());
    const std::size_t references = scan.References().size();
    for (const PdfReferenceScan::Found& found : scan.References()) {
        PdfReference reference;
        Require(found.begin < found.end && found.end <= value.size());
        PdfCursor cursor(std::string_view(value).substr(found.begin, found.end - found.begin));
        Require(cursor.TakeReference(reference) && cursor.AtEnd());
        Require(reference.number == found.reference.number);
    }
    const std::string again = value + " endobj";
    Require(scan.Read(again) == PdfRead::kDone && scan.Value() == value);
    Require(scan.References().size() == references);
}

}  // namespace
}  // namespace quirepress

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    quirepress::CheckMerge(bytes);
    quirepress::CheckScan(bytes);
    return 0;
}
