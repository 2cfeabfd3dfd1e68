#pragma once

#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "base/path.h"
#include "documents/pdf_pages.h"

namespace quirepress {

// "mcu": mono, colour, undecided.
inline std::vector<PageColor> PagesOf(std::string_view letters) {
    std::vector<PageColor> pages;
    for (const char letter : letters)
        pages.push_back(static_cast<PageColor>(std::string_view("muc").find(letter)));
    return pages;
}

inline std::string LettersOf(const std::vector<PageColor>& pages) {
    std::string letters;
    for (const PageColor page : pages) letters += "muc"[static_cast<int>(page)];
    return letters;
}

// Pages as the test says; what is extracted is noted, and written.
class ScriptedPages : public PdfPages {
public:
    PdfResult InspectColors(std::string_view, std::string_view, int tolerance,
                            std::vector<PageColor>& pages) override {
        lastTolerance = tolerance;
        if (result == PdfResult::kDone) pages = PagesOf(colors);
        return result;
    }
    PdfResult ExtractPages(std::string_view, std::string_view password,
                           const std::vector<PdfPageRange>& ranges, std::string_view target) override {
        extracted.push_back(std::to_string(ranges[0].first) + "-" + std::to_string(ranges[0].last) + " " +
                            std::string(FileTitle(target)));
        lastPassword = password;
        if (extracted.size() == failsAt) return PdfResult::kGaveUp;
        std::ofstream(std::string(target)) << "piece";
        return PdfResult::kDone;
    }

    PdfResult result = PdfResult::kDone;
    std::string colors;
    std::vector<std::string> extracted;  // "1-3 TITLE"
    std::size_t failsAt = 0;             // which one, from 1
    std::string lastPassword;
    int lastTolerance = -1;
};

}  // namespace quirepress
