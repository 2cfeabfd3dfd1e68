#include "core/reported_rows.h"

#include <string>
#include <utility>

#include "base/format.h"
#include "core/file_target.h"
#include "core/print_list.h"
#include "core/print_run_shell.h"
#include "core/print_run_source.h"

namespace quirepress {

ReportedRow::What WhatIs(ItemKind kind) {
    if (kind == ItemKind::kSeparator) return ReportedRow::What::kSeparator;
    return kind == ItemKind::kCommand ? ReportedRow::What::kCommand : ReportedRow::What::kDocument;
}

ReportedRow::End EndOf(RowOutcome outcome) {
    if (outcome == RowOutcome::kDone) return ReportedRow::End::kPrinted;
    return outcome == RowOutcome::kSkipped ? ReportedRow::End::kSkipped : ReportedRow::End::kFailed;
}

void AddEarlierRow(const EarlierRow& row, std::vector<ReportedRow>& rows) {
    const RunMark& mark = row.mark;
    int ended = row.hasCopies ? mark.pass : 1;
    if (row.isUnknown) --ended;
    if (mark.outcome == RowOutcome::kNotSelected) return;
    ReportedRow reported;
    reported.what = row.isMerged ? ReportedRow::What::kMerged : WhatIs(row.item.kind);
    reported.isEarlier = true;
    reported.path = row.item.path;
    reported.sizeKb = row.item.sizeKb;
    reported.pages = PagesAskedFor(row.item);
    for (reported.copy = 1; reported.copy <= ended; ++reported.copy) {
        const bool isPrinted = reported.copy <= mark.printed;
        // The status is that of the worst copy.
        const bool isOther = isPrinted && mark.outcome != RowOutcome::kDone;
        reported.status = isOther ? "Done" : row.status;
        reported.end = isPrinted ? ReportedRow::End::kPrinted : EndOf(mark.outcome);
        rows.push_back(reported);
    }
}

void AddRowsNotPrinted(PrintList& list, int passes, std::string_view reason, std::vector<ReportedRow>& rows) {
    int mergedPass = 0;
    for (int row = 0; row < list.RowCount(); ++row)
        if (IsMergedFile(list.Text(row, kColumnFilename))) mergedPass = list.MarkOf(row).pass;
    for (int row = 0; row < list.RowCount(); ++row) {
        const RunMark& mark = list.MarkOf(row);
        const std::string_view path = list.Text(row, kColumnFilename);
        const bool isInMerged = mark.isAppended && mark.outcome != RowOutcome::kFailed;
        const bool isWanted = isInMerged || list.Text(row, kColumnSelected) == "Yes";
        const int pass = isInMerged ? mergedPass : mark.pass;
        if (!isWanted || IsMergedFile(path) || pass >= passes) continue;
        ReportedRow reported;
        reported.what = WhatIs(KindInRun(path));
        reported.end = ReportedRow::End::kNotPrinted;
        reported.copy = pass + 1;
        reported.copies = passes - pass;
        reported.path = path;
        reported.sizeKb = list.Text(row, kColumnSizeKb);
        reported.status = reason;
        if (passes > 1 && pass + 1 == passes) reported.status += Format(" (copy %d)", passes);
        if (pass + 1 < passes) reported.status += Format(" (copies %d to %d)", pass + 1, passes);
        rows.push_back(std::move(reported));
    }
}

}  // namespace quirepress
