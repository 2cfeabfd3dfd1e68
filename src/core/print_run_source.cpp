#include "core/print_run_source.h"

#include <utility>

#include "backends/script_run.h"
#include "base/numbers.h"
#include "base/path.h"
#include "base/text.h"
#include "core/page_range.h"
#include "core/print_list.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

std::string_view StatusOfFile(const FileFacts& facts) {
    switch (facts.kind) {
        case FileKind::kMissing:
            return kStatusNoFile;
        case FileKind::kFolder:
            return "Error - Can't Print - this is a folder";
        case FileKind::kOther:
            return "Error - Can't Print - this is a device or a pipe, not a file";
        case FileKind::kRegular:
            break;
    }
    if (!facts.readable) return kStatusSkipped;
    return facts.size == 0 ? "Empty File" : "";
}

// A script that is no command item by its spelling came into the list as a document.
bool IsFromFile(const RunItem& item) {
    return item.kind == ItemKind::kDocument || KindOfItem(item.path) == ItemKind::kDocument;
}

}  // namespace

ItemKind KindInRun(std::string_view path) {
    ItemKind kind = KindOfItem(path);
    if (kind == ItemKind::kCommand) kind = KindOfItem(FileTitle(path));
    return kind == ItemKind::kDocument && IsScript(path) ? ItemKind::kCommand : kind;
}

FileFacts InspectSource(Files& files, const RunItem& item) {
    return IsFromFile(item) ? files.Inspect(item.path) : FileFacts();
}

WayResult FindSourceObstacle(const RunItem& item, const FileFacts& facts) {
    WayResult result;
    if (!IsFromFile(item)) return result;
    result.status = StatusOfFile(facts);
    if (result.status == kStatusSkipped) result.remark = "Can't Print - the file can't be read";
    return result;
}

WayResult FindRowObstacle(Files& files, const PrintList& list, int row, const RunItem& item) {
    if (!list.IsRefused(row)) return FindSourceObstacle(item, InspectSource(files, item));
    WayResult result;
    result.status = list.Text(row, kColumnStatus);
    return result;
}

std::vector<MissedRow> FindMissedRows(Files& files, const PrintList& list) {
    std::vector<MissedRow> missed;
    for (int row = 0; row < list.RowCount(); ++row) {
        RunItem item;
        item.path = list.Text(row, kColumnFilename);
        item.kind = KindInRun(item.path);
        item.sizeKb = list.Text(row, kColumnSizeKb);
        WayResult obstacle = FindRowObstacle(files, list, row, item);
        if (!obstacle.status.empty()) missed.push_back({std::move(item), std::move(obstacle)});
    }
    return missed;
}

int PagesAskedFor(const RunItem& item) {
    constexpr int kMostPages = 999'999'999;
    const auto counted = static_cast<int>(ParseWholeNumber(item.pages, 1, kMostPages).value_or(0));
    const PageRange range = item.kind == ItemKind::kDocument
                                ? FindPageRange(item.processingParameters, item.extraOptions)
                                : PageRange();
    return CountPagesIn(range, counted);
}

bool IsPdf(std::string_view path) {
    return EqualIgnoringAsciiCase(FileExtension(path), ".pdf");
}

bool IsPassedOverPdf(const GeneralOptions& options, const RunItem& item) {
    const bool isAsked = options.m_dontPrintPdfZero && !options.m_noPdfPages && IsPdf(item.path);
    return isAsked && ParseWholeNumber(item.pages, 0, 0).has_value();
}

}  // namespace quirepress
