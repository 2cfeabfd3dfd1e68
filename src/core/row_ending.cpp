#include "core/row_ending.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "backends/hang_recovery.h"
#include "backends/queue_watch.h"
#include "backends/viewer_windows.h"
#include "base/format.h"
#include "base/numbers.h"
#include "core/append_pdfs.h"
#include "core/file_target.h"
#include "core/print_list.h"
#include "core/print_run_source.h"
#include "core/run_outcomes.h"
#include "core/run_snapshot.h"
#include "platform/prompts.h"

namespace quirepress {

namespace {

// How many came out, or would have; 0 when nobody can tell.
int PagesOf(const RunItem& item, const WayResult& result, int seenInQueue) {
    if (result.pages > 0) return result.pages;
    const int pages = PagesAskedFor(item);
    return pages > 0 ? pages : seenInQueue;
}

// What was stopped, has an unknown outcome, or was passed over in one of its copies stays where it is.
bool IsToBeFiled(RowOutcome outcome, const WayResult& result) {
    if (result.end == WayResult::End::kStopped || result.status == kStatusUnknown) return false;
    return outcome == RowOutcome::kDone || outcome == RowOutcome::kFailed;
}

}  // namespace

RowOutcome OutcomeOf(const WayResult& result) {
    if (result.end == WayResult::End::kPrinted) return RowOutcome::kDone;
    return result.status == kStatusSkipped ? RowOutcome::kSkipped : RowOutcome::kFailed;
}

RowEnding::RowEnding(const PrintRunServices& services, RowAtWork& row, RowEndingRequest request)
    : m_services(services), m_row(row), m_request(std::move(request)), m_filing(services, row, m_summary) {}

void RowEnding::CountRowsOfList() {
    for (int row = 0; row < m_services.list.RowCount(); ++row)
        if (!IsMergedRow(row)) CountRows(m_services.list.MarkOf(row).outcome, 1);
}

void RowEnding::Finish(const RunItem& item, RowOutcome outcome, const WayResult& result,
                       std::string_view statusBefore) {
    Record(item, outcome, result);
    if (IsMerged(item)) RecordAppendedRows(outcome, result);
    const bool isNew = EndRow(item, outcome, result, statusBefore);
    if (isNew && outcome == RowOutcome::kFailed && result.end != WayResult::End::kStopped)
        m_services.outcomes.TellFailure(IsMerged(item) ? NamesOfAppendedRows() : item.path, result.status);
    if (IsMerged(item) && m_row.Copy() == m_row.Copies() && m_row.Find()) EndAppendedRows(result);
}

void RowEnding::TellUnknown(int row, const std::string& printer) {
    RunItem item = ReadRunItem(m_services, row);
    WayResult result = UnknownWay();
    result.printers = {printer};
    Record(item, RowOutcome::kFailed, result);
    if (IsMerged(item)) RecordAppendedRows(RowOutcome::kFailed, result);
    m_services.outcomes.TellFailure(IsMerged(item) ? NamesOfAppendedRows() : item.path, result.status);
}

bool RowEnding::IsMerged(const RunItem& item) const {
    return !m_request.mergedFile.empty() && item.path == m_request.mergedFile;
}

bool RowEnding::IsMergedRow(int row) const {
    return !m_request.mergedFile.empty() &&
           m_services.list.Text(row, kColumnFilename) == m_request.mergedFile;
}

// In the logs, in the report, and among the printers that the run has used.
void RowEnding::Record(const RunItem& item, RowOutcome outcome, const WayResult& result) {
    RunItem ended = item;
    ended.printer = PrinterOfRun(m_services);
    const int pages = PagesOf(item, result, m_services.watch.TotalPages());
    std::vector<std::string> printers = result.printers;
    const bool isPrinted = outcome == RowOutcome::kDone && item.kind != ItemKind::kCommand;
    if (isPrinted && printers.empty()) printers.push_back(ended.printer);
    std::vector<std::string>& used = m_summary.printers;
    for (const std::string& printer : printers)
        if (std::find(used.begin(), used.end(), printer) == used.end()) used.push_back(printer);
    m_services.outcomes.RecordRow({ended, result, outcome, m_row.Copy(), pages, IsMerged(item)});
}

// The merged file's own name says nothing to anybody.
std::string RowEnding::NamesOfAppendedRows() const {
    constexpr int kMostNames = 20;
    std::string names;
    int count = 0;
    for (int row = 0; row < m_services.list.RowCount(); ++row) {
        const RunMark& mark = m_services.list.MarkOf(row);
        if (!mark.isAppended || mark.outcome != RowOutcome::kNotSelected) continue;
        if (++count <= kMostNames)
            names += (names.empty() ? "" : ", ") + std::string(m_services.list.Text(row, kColumnFilename));
    }
    if (count > kMostNames) names += Format(" and %d more", count - kMostNames);
    return names;
}

// Each copy of the merged file is one of every document in it.
void RowEnding::RecordAppendedRows(RowOutcome outcome, const WayResult& result) {
    WayResult shared = result;
    shared.pages = 0;  // each has its own
    m_services.watch.ForgetPages();
    for (int row = 0; row < m_services.list.RowCount(); ++row) {
        const RunMark& mark = m_services.list.MarkOf(row);
        if (!mark.isAppended || mark.outcome != RowOutcome::kNotSelected) continue;
        m_services.outcomes.BeginRow();
        Record(ReadRunItem(m_services, row), outcome, shared);
    }
}

// False when an earlier copy of the row has failed already.
bool RowEnding::EndRow(const RunItem& item, RowOutcome outcome, const WayResult& result,
                       std::string_view statusBefore) {
    m_row.UpdatePace();
    if (!m_row.Find()) {
        CountRows(outcome, 1);
        return true;
    }
    const bool isNew = m_services.list.MarkOf(m_row.Index()).outcome != RowOutcome::kFailed;
    MarkRow(outcome, result, statusBefore);
    // A viewer would hold the file.
    if (IsPdf(item.path) && outcome != RowOutcome::kNotSelected)
        m_services.viewers.CloseAcrobat(ViewerWindows::Occasion::kFileFinished);
    m_filing.FileRow();
    CheckForHang(item);
    if (m_row.Find()) m_request.observer.OnRowFinished(m_row.Progress(), outcome);
    return isNew;
}

// The documents whose pages are in the merged file, the row at work, share its lot: the worst of all copies.
void RowEnding::EndAppendedRows(const WayResult& result) {
    PrintList& list = m_services.list;
    const RunMark merged = list.MarkOf(m_row.Index());
    if (merged.outcome == RowOutcome::kNotSelected) return;
    WayResult shared = result;
    if (merged.outcome != OutcomeOf(result)) {
        shared.end = WayResult::End::kFailed;
        shared.status = list.Text(m_row.Index(), kColumnStatus);
    }
    for (int row = 0; row < list.RowCount(); ++row) {
        RunMark& mark = list.MarkOf(row);
        if (!mark.isAppended || mark.outcome != RowOutcome::kNotSelected) continue;
        m_row.Begin(row);
        mark.printed = merged.printed - (merged.outcome == RowOutcome::kDone ? 1 : 0);
        mark.isDoubtful = merged.isDoubtful;
        EndRow(ReadRunItem(m_services, row), merged.outcome, shared, list.Text(row, kColumnStatus));
        if (m_row.Find()) row = m_row.Index();
    }
    // The walk goes on below the merged file.
    list.SetCurrentRow(FindMergedRow(list, m_request.mergedFile));
}

// In the list and on the disk.
void RowEnding::MarkRow(RowOutcome outcome, const WayResult& result, std::string_view statusBefore) {
    RunMark& mark = m_services.list.MarkOf(m_row.Index());
    // A failure of an earlier copy stays in sight.
    const RowOutcome worst = std::max(mark.outcome, outcome);
    // Its documents count.
    if (!IsMergedRow(m_row.Index())) {
        CountRows(mark.outcome, -1);
        CountRows(worst, 1);
    }
    mark.outcome = worst;
    mark.isFiled = mark.isFiled || (m_row.Copy() == m_row.Copies() && !IsToBeFiled(worst, result));
    if (outcome == RowOutcome::kDone) {
        ++mark.printed;
        mark.isDoubtful = mark.isDoubtful || !result.remark.empty();
    }
    if (outcome == RowOutcome::kNotSelected) return;
    m_row.ShowRowStatus(worst == outcome ? std::string_view(result.status) : statusBefore);
    if (m_row.Find() && !m_services.snapshot.NoteFinished(m_services.list, m_row.Index()))
        m_services.prompts.ShowBox("Print Error!", kSnapshotFailed);
}

void RowEnding::FinishCutOffRows() {
    PrintList& list = m_services.list;
    const auto isEnded = [&](int row) {
        const RunMark& mark = list.MarkOf(row);
        return mark.pass >= m_row.Copies() && mark.outcome != RowOutcome::kNotSelected;
    };
    const int merged = FindMergedRow(list, m_request.mergedFile);
    if (merged >= 0 && isEnded(merged)) {
        WayResult result;
        if (list.MarkOf(merged).outcome == RowOutcome::kDone) result.end = WayResult::End::kPrinted;
        result.status = list.Text(merged, kColumnStatus);
        m_row.Begin(merged);
        EndAppendedRows(result);
    }
    for (int row = 0; row < list.RowCount() && !m_row.IsStopped(); ++row) {
        if (!isEnded(row)) continue;
        list.SetCurrentRow(row);
        if (m_row.Find()) m_filing.FileCutOffRow();
        if (m_row.Find()) row = m_row.Index();
    }
    list.SetCurrentRow(-1);
}

// A document of the word processor that it hung on gets one more row.
void RowEnding::CheckForHang(const RunItem& item) {
    const HangDecision decision =
        quirepress::CheckForHang(m_request.hangWatch, m_services.hangLog, m_services.options, item.path);
    if (!decision.tryAgain || !m_row.Find()) return;
    const PrintedRow row = ReadPrintedRow(m_services.list, m_row.Index(), "");
    ItemTexts texts;
    texts.moveToOnError = row.moveToOnError;
    texts.fileTitle = row.fileTitle;
    texts.addonParameters = item.addonParameters;
    texts.processingParameters = item.processingParameters;
    texts.extraOptions = item.extraOptions;
    m_services.list.InsertFileIntoList(item.path, 1, row.moveTo, texts);
}

void RowEnding::CountRows(RowOutcome outcome, int rows) {
    if (outcome == RowOutcome::kDone) m_summary.done += rows;
    if (outcome == RowOutcome::kFailed) m_summary.failed += rows;
    if (outcome == RowOutcome::kSkipped) m_summary.skipped += rows;
}

}  // namespace quirepress
