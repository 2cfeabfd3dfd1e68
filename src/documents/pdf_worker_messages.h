#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "documents/pdf_forms.h"
#include "documents/pdf_pages.h"

namespace quirepress {

// What passes between the program and its PDF worker: a line for a request, a line for its answer. Texts
// are written as two hexadecimal digits a byte, so that any path and password stands on one line.
struct PdfWorkerRequest {
    enum class Task { kCount, kColors, kExtract, kFill };

    std::string path;
    bool full = false;  // kCount
    std::string password;
    Task task = Task::kCount;
    int tolerance = 0;                      // kColors; percent
    std::vector<PdfPageRange> ranges = {};  // kExtract
    std::string target = {};                // kExtract, kFill
};

std::string FormatRequest(const PdfWorkerRequest& request);           // without a line end
bool ParseRequest(std::string_view line, PdfWorkerRequest& request);  // false when it is none
std::string FormatAnswer(long long pages);
bool ParseAnswer(std::string_view line, long long& pages);
// To kColors, with one letter a page behind it, and to kExtract.
std::string FormatResult(PdfResult result, const std::vector<PageColor>& pages);
bool ParseResult(std::string_view line, PdfResult& result, std::vector<PageColor>& pages);
// To kFill.
std::string FormatFilling(PdfResult result, const FormFilling& filling);
bool ParseFilling(std::string_view line, PdfResult& result, FormFilling& filling);

}  // namespace quirepress
