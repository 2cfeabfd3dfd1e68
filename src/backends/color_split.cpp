#include "backends/color_split.h"

#include <algorithm>
#include <cstddef>

#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "documents/page_colors.h"
#include "documents/pdf_pages.h"
#include "platform/files.h"
#include "settings/color_printer_options.h"

namespace quirepress {
namespace {

constexpr std::size_t kLongestStem = 150;

std::vector<ColorRun> RunsOf(const std::vector<bool>& isColor) {
    std::vector<ColorRun> runs;
    for (std::size_t i = 0; i < isColor.size(); ++i) {
        const int page = static_cast<int>(i) + 1;
        if (runs.empty() || runs.back().isColor != isColor[i]) runs.push_back({page, page, isColor[i]});
        runs.back().lastPage = page;
    }
    return runs;
}

}  // namespace

std::vector<ColorRun> PlanColorRuns(const std::vector<PageColor>& pages, const ColorPrinterOptions& options) {
    std::vector<bool> isColor(pages.size());
    std::transform(pages.begin(), pages.end(), isColor.begin(),
                   [](PageColor page) { return page != PageColor::kMono; });
    const bool hasColor = std::find(isColor.begin(), isColor.end(), true) != isColor.end();
    if (!hasColor) return RunsOf(isColor);
    if (options.m_wholeDocuments) isColor.assign(isColor.size(), true);
    for (std::size_t i = 0; options.m_duplex && i + 1 < isColor.size(); i += 2)
        isColor[i] = isColor[i + 1] = isColor[i] || isColor[i + 1];
    for (const ColorRun& run : RunsOf(isColor)) {
        if (run.isColor || run.lastPage - run.firstPage + 1 >= options.m_leastMonoPages) continue;
        for (int page = run.firstPage; page <= run.lastPage; ++page)
            isColor[static_cast<std::size_t>(page) - 1] = true;
    }
    return RunsOf(isColor);
}

int ColorSplit::SplitByColor(std::string_view path, std::string_view password,
                             const ColorPrinterOptions& options, std::string_view folder,
                             std::vector<ColorPiece>& pieces, std::string& message) {
    std::vector<PageColor> pages;
    std::vector<ColorPiece> made;
    PdfResult result = m_colors.Judge(path, password, options.m_grayTolerance, pages);
    const std::vector<ColorRun> runs =
        result == PdfResult::kDone ? PlanColorRuns(pages, options) : std::vector<ColorRun>();
    if (runs.size() == 1 && password.empty()) {
        pieces = {{std::string(path), runs[0].isColor, runs[0].firstPage, runs[0].lastPage, false}};
        return 0;
    }
    const std::string stem(CutToSize(TitleWithoutExtension(path), kLongestStem));
    if (m_files.MakePrivateFolders(folder) != FileResult::kDone) result = PdfResult::kNotWritten;
    for (std::size_t i = 0; i < runs.size() && result == PdfResult::kDone; ++i) {
        const ColorRun& run = runs[i];
        const std::string name = Format("%s (%d-%d).pdf", stem, run.firstPage, run.lastPage);
        made.push_back({JoinPath(folder, name), run.isColor, run.firstPage, run.lastPage});
        result = m_pdf.ExtractPages(path, password, {{run.firstPage, run.lastPage}}, made.back().file);
    }
    if (result == PdfResult::kDone) {
        pieces = std::move(made);
        return 0;
    }
    for (const ColorPiece& piece : made) m_files.Erase(piece.file);
    message =
        "Can't split " + std::string(FileTitle(path)) + " by colours: " + DescribePdfResult(result) + ".";
    return -1;
}

}  // namespace quirepress
