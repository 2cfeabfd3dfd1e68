#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "documents/pdf_page_color.h"

namespace quirepress {

class Files;

struct PdfPageRange {
    int first = 1;  // from 1
    int last = 1;   // included
};

enum class PdfResult {
    kDone,
    kUnreadable,
    kWrongPassword,
    kNoSuchPages,
    kNotWritten,
    kGaveUp  // it took too long or too much, or its worker died
};

// One short sentence part for a message: "the file can't be read as a PDF".
const char* DescribePdfResult(PdfResult result);
// The same of a file: why it can't be read, where a look at its begin and end tells.
std::string DescribePdfResult(PdfResult result, Files& files, std::string_view path);

// What can be done with the pages of a PDF; in this process, or in a worker that a hostile file may take
// down. A call may pump. `password` opens a protected file.
class PdfPages {
public:
    virtual ~PdfPages() = default;
    // What each page puts on paper; colours whose parts differ by no more than `tolerance` percent count as
    // grey. `pages` stays untouched on failure.
    virtual PdfResult InspectColors(std::string_view path, std::string_view password, int tolerance,
                                    std::vector<PageColor>& pages) = 0;
    // Writes these pages in this order as a PDF of their own, without a password, with all that printing
    // needs. `target` is replaced by the complete file, or stays as it was.
    virtual PdfResult ExtractPages(std::string_view path, std::string_view password,
                                   const std::vector<PdfPageRange>& ranges, std::string_view target) = 0;
};

// All pages, for any file.
constexpr PdfPageRange kAllPdfPages = {1, 0};

// Where a new PDF is written until it is complete.
inline std::string DraftOfPdf(std::string_view target) {
    return std::string(target) + ".part";
}

// In this process.
PdfResult ExtractPdfPages(Files& files, std::string_view path, std::string_view password,
                          const std::vector<PdfPageRange>& ranges, std::string_view target);

}  // namespace quirepress
