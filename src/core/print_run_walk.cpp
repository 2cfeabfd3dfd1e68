#include "core/print_run_walk.h"

#include <utility>

#include "backends/printer_selection.h"
#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "core/append_pdfs.h"
#include "core/print_list.h"
#include "core/print_run_source.h"
#include "core/processing_defaults.h"
#include "core/reported_rows.h"
#include "core/run_outcomes.h"
#include "core/run_separators.h"
#include "core/run_snapshot.h"
#include "logs/debug_log.h"
#include "platform/event_loop.h"
#include "platform/prompts.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

bool ChoosesPrinter(std::string_view path) {
    return EndsWith(path, ".prs") || EndsWith(path, ".printer");
}

}  // namespace

RunWalk::RunWalk(const PrintRunServices& services, WalkRequest request)
    : m_services(services),
      m_request(std::move(request)),
      m_row(services, m_request.observer, m_request.stop),
      m_attempt(services, m_request.ways, m_row, m_request.isBalanced),
      m_ending(services, m_row, {m_request.observer, m_request.hangWatch, m_request.mergedFile}) {}

RunSummary RunWalk::WalkList() {
    PrintList& list = m_services.list;
    RunSummary& summary = m_ending.Summary();
    const long long startedAt = m_services.loop.MonotonicMilliseconds();
    m_row.BeginRun(list.RowCount(), m_request.passes);
    // What could not be merged has failed already; a run that is taken up has more.
    m_ending.CountRowsOfList();
    int copy = 1;
    m_services.separators.BeginWalk();
    if (m_request.cutOff != nullptr) {
        copy = m_request.cutOff->copy;
        m_row.BeginCopy(copy);
        if (!TakeUpCutOffRun()) {
            summary.end = RunSummary::End::kRefused;
            return summary;
        }
    }
    m_row.Expect(CountPlannedPrints());
    bool isWhole = true;
    for (const int first = copy; isWhole && copy <= m_request.passes; ++copy) {
        // Every copy of the list begins with the same set-up.
        if (copy != first) ResetSetUp();
        m_row.BeginCopy(copy);
        list.SetCurrentRow(-1);
        isWhole = WalkOnce();
    }
    list.SetCurrentRow(-1);
    summary.end = isWhole ? RunSummary::End::kFinished : RunSummary::End::kStopped;
    summary.seconds = static_cast<double>(m_services.loop.MonotonicMilliseconds() - startedAt) / 1000.0;
    return summary;
}

void RunWalk::TellUnknownRows() {
    const CutOffRun* cutOff = m_request.cutOff;
    if (cutOff == nullptr) return;
    m_row.BeginCopy(cutOff->copy);
    for (int row = 0; row < static_cast<int>(cutOff->rows.size()); ++row) {
        if (!IsOfUnknownOutcome(*cutOff, row)) continue;
        const bool isKnown = row == cutOff->rowAtWork && !cutOff->printerAtWork.empty();
        m_ending.TellUnknown(row, isKnown ? cutOff->printerAtWork : cutOff->printer);
    }
}

RunSummary RunWalk::EndEarly(RunSummary::End end) {
    m_ending.CountRowsOfList();
    ReportEarlierRows();
    m_ending.Summary().end = end;
    return m_ending.Summary();
}

void RunWalk::ReportEarlierRows() {
    for (int row = 0; m_request.cutOff != nullptr && row < m_services.list.RowCount(); ++row)
        ReportEarlierRow(row);
}

void RunWalk::EndCutOffRows() {
    m_row.BeginRun(m_services.list.RowCount(), m_request.passes);
    TellUnknownRows();
    m_row.BeginCopy(m_request.passes);
    ReportEarlierRows();
    m_ending.FinishCutOffRows();
}

// The printer, its tray and its paper are those that the rows above have set; false when they can't be set
// again: the rows below would come out somewhere else.
bool RunWalk::TakeUpCutOffRun() {
    const CutOffRun& cutOff = *m_request.cutOff;
    PrintList& list = m_services.list;
    for (int row = 0; row < list.RowCount(); ++row) {
        const RunMark& mark = list.MarkOf(row);
        const std::string path(list.Text(row, kColumnFilename));
        ReportEarlierRow(row);
        const bool wasApplied =
            IsTicked(list, row) && mark.pass == cutOff.copy && mark.outcome == RowOutcome::kDone;
        const bool hadFailed =
            IsTicked(list, row) && mark.pass == cutOff.copy && mark.outcome == RowOutcome::kFailed;
        if (wasApplied) m_services.separators.NotePrinted(row);
        if (hadFailed) FailAgain(path);
        if (wasApplied && KindOfItem(path) == ItemKind::kCommand && !ApplyAgain(row, path)) return false;
    }
    m_ending.FinishCutOffRows();
    return true;
}

// With the settings of the rows above it.
void RunWalk::ReportEarlierRow(int row) {
    PrintList& list = m_services.list;
    const RunItem item = ReadRunItem(m_services, row);
    const int merged = FindMergedRow(list, m_request.mergedFile);
    const RunMark& mark = list.MarkOf(row);
    // Documents that are in the merged file share its lot.
    const bool isInMerged = mark.isAppended && mark.outcome == RowOutcome::kNotSelected && merged >= 0;
    const int ended = isInMerged ? merged : row;
    const bool hasCopies = IsTicked(list, row) || isInMerged || (mark.isAppended && mark.pass > 0);
    m_services.outcomes.ReportEarlierRow({item, list.MarkOf(ended), list.Text(ended, kColumnStatus),
                                          row == merged, hasCopies,
                                          IsOfUnknownOutcome(*m_request.cutOff, ended)});
}

// What had failed has left its traces: the printer to another one, or the rows below without a page choice
// that can be understood.
void RunWalk::FailAgain(const std::string& path) {
    std::string message;
    if (ChoosesPrinter(path)) m_services.selection.ApplyItem(path);
    if (ProcessingDefaults::TakesItem(path)) m_services.processing.ApplyItem(path, message);
}

bool RunWalk::ApplyAgain(int row, const std::string& path) {
    ItemResult result{true, {}, {}};
    if (PrinterSelection::TakesItem(path)) result = m_services.selection.ApplyItem(path);
    if (ProcessingDefaults::TakesItem(path))
        result.isApplied = m_services.processing.ApplyItem(path, result.message);
    if (result.isApplied) return true;
    m_services.outcomes.RecordError(path, PrinterOfRun(m_services), result.status + ": " + result.message);
    if (row < m_services.list.RowCount()) m_services.list.SetText(row, kColumnStatus, result.status);
    m_services.prompts.ShowBox(
        "Print Error!",
        "The settings of the run that was cut off can't be set again: " + path + " " + result.message);
    return false;
}

long long RunWalk::CountPlannedPrints() const {
    long long prints = 0;
    for (int row = 0; row < m_services.list.RowCount(); ++row)
        if (IsTicked(m_services.list, row)) prints += m_request.passes - m_services.list.MarkOf(row).pass;
    return prints;
}

bool RunWalk::WalkOnce() {
    for (int row = FindNextRow(); row >= 0; row = FindNextRow()) {
        m_row.Begin(row);
        if (!m_row.KeepGoing()) {
            m_row.PutBack();
            return false;
        }
        if (m_row.Find()) ProcessRow();
    }
    return !m_row.IsStopped();
}

void RunWalk::ResetSetUp() {
    std::string message;
    if (m_services.selection.UsePrinter(m_request.printer, message) != 0)
        m_services.outcomes.RecordError("", m_request.printer, message);
    m_services.selection.MoveDefaultBack();
    m_attempt.ForgetMovedDefault();
    m_services.processing.Clear();
    m_services.separators.BeginWalk();
}

// The first row below the one at work that this walk has not reached; when there is none, the first above,
// where rows may have been inserted or moved to.
int RunWalk::FindNextRow() {
    PrintList& list = m_services.list;
    const int count = list.RowCount();
    const int start = list.CurrentRow() + 1;
    const auto findFrom = [&](int row, int end) {
        while (row < end && list.MarkOf(row).pass == m_row.Copy()) ++row;
        return row < end ? row : -1;
    };
    const int below = findFrom(start, count);
    return below >= 0 ? below : findFrom(0, start);
}

bool RunWalk::HasFurtherRow() {
    if (m_row.Copy() < m_request.passes) return true;
    for (int row = 0; row < m_services.list.RowCount(); ++row)
        if (IsTicked(m_services.list, row) && m_services.list.MarkOf(row).pass != m_row.Copy()) return true;
    return false;
}

void RunWalk::ProcessRow() {
    const RunItem item = ReadRunItem(m_services, m_row.Index());
    const bool isTicked = IsTicked(m_services.list, m_row.Index());
    m_statusBefore = m_services.list.Text(m_row.Index(), kColumnStatus);
    const RunProgress& progress = m_row.Progress();
    m_services.prompts.ShowStatus(
        Format("File: %d of %d, Copy: %d/%d", progress.file, progress.files, progress.copy, progress.copies));
    m_services.debugLog.Trace("Check is to print: %s\r\n", item.path);
    const WayResult obstacle = FindRowObstacle(m_services.files, m_services.list, m_row.Index(), item);
    if (isTicked) {
        m_services.debugLog.Trace("Check is to print OK\r\n");
        PrintRow(item, obstacle);
        return;
    }
    // A row whose file could not be opened was left unticked when it came in; it must not be missed silently.
    // What could not be merged was told then; what was there when the run began was taken away by a row
    // above.
    const bool isGone = obstacle.status == kStatusNoFile && m_statusBefore != kStatusNoFile;
    const bool isMissed = !obstacle.status.empty() && !isGone && m_row.Copy() == 1 &&
                          !m_services.list.MarkOf(m_row.Index()).isAppended;
    m_ending.Finish(item, isMissed ? OutcomeOf(obstacle) : RowOutcome::kNotSelected, obstacle,
                    m_statusBefore);
}

void RunWalk::PrintRow(RunItem item, const WayResult& obstacle) {
    const GeneralOptions& options = m_services.options;
    m_request.observer.OnRowStarted(m_row.Progress());
    WayResult result = obstacle.status.empty() ? FindPagesObstacle(item) : obstacle;
    m_services.debugLog.Trace("badFile check? %d, %s\r\n", result.status.empty() ? 0 : 1, item.path);
    const bool isGood = result.status.empty();
    if (isGood) {
        if (!m_row.Pause(options.m_pauseBefore, true)) {
            m_row.ShowRowStatus(m_statusBefore);
            m_row.PutBack();
            return;
        }
        if (!m_row.Find()) return;  // it was taken from the list meanwhile
        if (!m_services.snapshot.NoteBegun(m_services.list, m_row.Index(), m_row.Copy()))
            m_services.prompts.ShowBox("Print Error!", kSnapshotFailed);
        result = m_attempt.Print(item);
        // Who takes the run up again prints it.
        if (result.end == WayResult::End::kStopped && result.isUntouched && m_row.Find())
            m_services.snapshot.PutBack(m_services.list, m_row.Index(), m_row.Copy());
    }
    m_attempt.PrintSeparatorAfter(result);
    m_row.CountPrint();
    m_ending.Finish(item, OutcomeOf(result), result, m_statusBefore);
    m_attempt.EndRow();
    if (isGood && options.m_pauseAfter > 0 && HasFurtherRow()) m_row.Pause(options.m_pauseAfter, false);
}

WayResult RunWalk::FindPagesObstacle(const RunItem& item) {
    const GeneralOptions& options = m_services.options;
    if (item.kind != ItemKind::kDocument || !IsPdf(item.path)) return {};
    m_services.debugLog.Trace("gs.m_noPdfPages %d, gs.m_dontPrintPDFzero: %d\r\n", options.m_noPdfPages,
                              options.m_dontPrintPdfZero);
    WayResult result;
    if (IsPassedOverPdf(options, item)) result.status = kStatusSkipped;
    return result;
}

}  // namespace quirepress
