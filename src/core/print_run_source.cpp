#include "core/print_run_source.h"

#include "base/numbers.h"
#include "base/path.h"
#include "base/text.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

std::string_view StatusOfFile(const FileFacts& facts) {
    switch (facts.kind) {
        case FileKind::kMissing:
            return "No File.";
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

}  // namespace

FileFacts InspectSource(Files& files, const RunItem& item) {
    return item.kind == ItemKind::kDocument ? files.Inspect(item.path) : FileFacts();
}

WayResult FindSourceObstacle(const RunItem& item, const FileFacts& facts) {
    WayResult result;
    if (item.kind != ItemKind::kDocument) return result;
    result.status = StatusOfFile(facts);
    if (result.status == kStatusSkipped) result.remark = "Can't Print - the file can't be read";
    return result;
}

bool IsPdf(std::string_view path) {
    return EqualIgnoringAsciiCase(FileExtension(path), ".pdf");
}

bool IsPassedOverPdf(const GeneralOptions& options, const RunItem& item) {
    const bool isAsked = options.m_dontPrintPdfZero && !options.m_noPdfPages && IsPdf(item.path);
    return isAsked && ParseWholeNumber(item.pages, 0, 0).has_value();
}

}  // namespace quirepress
