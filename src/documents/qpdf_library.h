#pragma once

#include <string_view>
#include <vector>

#include "documents/pdf_counter.h"
#include "documents/pdf_pages.h"

namespace quirepress {

class InputFile;

// libqpdf in this process. A hostile file can make it take long and much memory: for files from anywhere,
// let it run in a worker.
class QpdfLibrary : public PdfLibrary, public PdfPages {
public:
    explicit QpdfLibrary(Files& files) : m_files(files) {}
    long long CountPages(std::string_view path, bool full, std::string_view password) override;
    // What takes longer than a minute is left undecided.
    PdfResult InspectColors(std::string_view path, std::string_view password, int tolerance,
                            std::vector<PageColor>& pages) override;
    PdfResult ExtractPages(std::string_view path, std::string_view password,
                           const std::vector<PdfPageRange>& ranges, std::string_view target) override {
        return ExtractPdfPages(m_files, path, password, ranges, target);
    }

private:
    Files& m_files;
};

// The same of an open file, whose life is the caller's.
long long CountPagesByQpdf(InputFile& file, bool full, std::string_view password);

}  // namespace quirepress
