#include "documents/pdf_counter.h"

#include <algorithm>
#include <limits>

#include "documents/pdf_quick_count.h"
#include "documents/pdf_recovery_count.h"
#include "platform/files.h"

namespace quirepress {
namespace {

std::unique_ptr<InputFile> Open(Files& files, std::string_view path) {
    FileResult result = FileResult::kDone;
    return path.empty() ? nullptr : files.OpenForReading(path, result);
}

}  // namespace

PdfCounter::PdfCounter(Files& files, PdfLibrary& library)
    : m_files(files), m_library(library), m_scratch(std::make_unique<PdfScratch>()) {}

PdfCounter::~PdfCounter() = default;

int PdfCounter::CountPages(std::string_view path, bool full, std::string_view password, std::string& status) {
    const int pages = CountOpenFile(path, full, password);
    if (pages < 0) status = "No";
    return pages;
}

int PdfCounter::CountOpenFile(std::string_view path, bool full, std::string_view password) {
    const std::unique_ptr<InputFile> file = Open(m_files, path);
    if (!file) return -1;
    if (full) {
        const int pages = AskLibrary(path, true, password);
        return pages >= 0 ? pages : RecoverPdfPages(*file, *m_scratch).pages;
    }
    if (const int pages = CountPdfPagesQuickly(*file, *m_scratch); pages > 0) return pages;
    const PdfRecovery recovery = RecoverPdfPages(*file, *m_scratch);
    if (recovery.pages > 0 || !recovery.foundObjects) return recovery.pages;
    return AskLibrary(path, false, password);
}

int PdfCounter::AskLibrary(std::string_view path, bool full, std::string_view password) {
    const long long pages = m_library.CountPages(path, full, password);
    return pages <= std::numeric_limits<int>::max() ? static_cast<int>(std::max<long long>(pages, -1)) : -1;
}

int PdfCounter::ScanPages(std::string_view path, std::string& status, const PdfScanProgress& progress) {
    const std::unique_ptr<InputFile> file = Open(m_files, path);
    const int pages = file ? ScanPdfPages(*file, progress) : -1;
    if (pages < 0) status = "No";
    return pages;
}

}  // namespace quirepress
