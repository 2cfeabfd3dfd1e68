#include "documents/qpdf_library.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <qpdf/QPDF.hh>
#include <stdexcept>
#include <string>

#include "documents/pdf_colors.h"
#include "documents/qpdf_file.h"
#include "platform/files.h"

namespace quirepress {
namespace {

constexpr std::chrono::seconds kInspectionLimit(60);

// What the page tree says when that can be; else the pages themselves.
long long CountPages(QPDF& pdf, bool full, std::int64_t fileSize) {
    if (!full) {
        QPDFObjectHandle count = pdf.getRoot().getKey("/Pages").getKey("/Count");
        if (count.isInteger() && count.getIntValue() > 0 && count.getIntValue() <= fileSize)
            return count.getIntValue();
    }
    return static_cast<long long>(pdf.getAllPages().size());
}

}  // namespace

long long QpdfLibrary::CountPages(std::string_view path, bool full, std::string_view password) {
    FileResult result = FileResult::kDone;
    const std::unique_ptr<InputFile> file = m_files.OpenForReading(path, result);
    return file ? CountPagesByQpdf(*file, full, password) : -1;
}

PdfResult QpdfLibrary::InspectColors(std::string_view path, std::string_view password, int tolerance,
                                     std::vector<PageColor>& pages) {
    using Clock = std::chrono::steady_clock;
    FileResult result = FileResult::kDone;
    const std::unique_ptr<InputFile> file = m_files.OpenForReading(path, result);
    if (!file) return PdfResult::kUnreadable;
    GreyRule rule;
    rule.spread = std::max(rule.spread, tolerance / 100.0);
    const Clock::time_point end = Clock::now() + kInspectionLimit;
    return InspectPdfColors(
        *file, password, rule, [end] { return Clock::now() >= end; }, pages);
}

long long CountPagesByQpdf(InputFile& file, bool full, std::string_view password) {
    try {
        const std::unique_ptr<QPDF> pdf = OpenQpdf(file, password);
        return CountPages(*pdf, full, file.Size());
    } catch (const std::exception&) {
        return -1;
    }
}

}  // namespace quirepress
