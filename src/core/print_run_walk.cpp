#include "core/print_run_walk.h"

#include <algorithm>

#include "backends/balance.h"
#include "backends/hang_recovery.h"
#include "backends/printer_selection.h"
#include "backends/viewer_windows.h"
#include "base/format.h"
#include "base/numbers.h"
#include "base/path.h"
#include "base/text.h"
#include "core/print_list.h"
#include "core/print_run_source.h"
#include "core/processing_defaults.h"
#include "core/run_downloads.h"
#include "core/run_outcomes.h"
#include "core/run_snapshot.h"
#include "logs/debug_log.h"
#include "platform/event_loop.h"
#include "platform/prompts.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

constexpr int kMillisecondsInPauseStep = 250;
constexpr int kPauseStepsInSecond = 4;
constexpr int kMostPages = 999'999'999;

RowOutcome OutcomeOf(const WayResult& result) {
    if (result.end == WayResult::End::kPrinted) return RowOutcome::kDone;
    return result.status == kStatusSkipped ? RowOutcome::kSkipped : RowOutcome::kFailed;
}

}  // namespace

RunWalk::RunWalk(PrintRunServices services, WalkRequest request)
    : m_services(services),
      m_request(std::move(request)),
      m_jobWait(services.watch, services.loop, services.debugLog, services.options) {}

RunSummary RunWalk::WalkList() {
    PrintList& list = m_services.list;
    if (m_request.cutOff != nullptr && !TakeUpCutOffRun(*m_request.cutOff)) {
        m_summary.end = RunSummary::End::kRefused;
        return m_summary;
    }
    for (int row = 0; row < list.RowCount(); ++row) CountRows(list.MarkOf(row).outcome, 1);
    CountPlannedPrints();
    m_startedAt = m_services.loop.MonotonicMilliseconds();
    m_progress.copies = m_request.passes;
    m_request.observer.OnRunStarted(list.RowCount(), m_request.passes);
    bool isWhole = true;
    bool isFurther = false;
    while (isWhole && m_progress.copy < m_request.passes) {
        // Every copy of the list begins with the same set-up.
        if (isFurther) ResetSetUp();
        isFurther = true;
        ++m_progress.copy;
        isWhole = WalkOnce();
    }
    list.SetCurrentRow(-1);
    m_summary.end = isWhole ? RunSummary::End::kFinished : RunSummary::End::kStopped;
    m_summary.seconds = static_cast<double>(m_services.loop.MonotonicMilliseconds() - m_startedAt) / 1000.0;
    return m_summary;
}

// The printer, its tray and its paper are those that the rows above have set; false when they can't be set
// again: the rows below would come out somewhere else.
bool RunWalk::TakeUpCutOffRun(const CutOffRun& cutOff) {
    PrintList& list = m_services.list;
    m_progress.copy = cutOff.copy - 1;
    for (int row = 0; row < list.RowCount(); ++row) {
        const RunMark& mark = list.MarkOf(row);
        const std::string path(list.Text(row, kColumnFilename));
        if (IsOfUnknownOutcome(cutOff, row)) {
            m_services.outcomes.RecordError(path, Printer(), kStatusUnknown);
            m_services.outcomes.TellFailure(path, kStatusUnknown);
        }
        const bool wasApplied =
            IsTicked(row) && mark.pass == cutOff.copy && mark.outcome == RowOutcome::kDone;
        if (wasApplied && KindOfItem(path) == ItemKind::kCommand && !ApplyAgain(row, path)) return false;
    }
    return true;
}

bool RunWalk::ApplyAgain(int row, const std::string& path) {
    ItemResult result{true, {}, {}};
    if (PrinterSelection::TakesItem(path)) result = m_services.selection.ApplyItem(path);
    if (ProcessingDefaults::TakesItem(path))
        result.isApplied = m_services.processing.ApplyItem(path, result.message);
    if (result.isApplied) return true;
    m_services.outcomes.RecordError(path, Printer(), result.status + ": " + result.message);
    if (row < m_services.list.RowCount()) m_services.list.SetText(row, kColumnStatus, result.status);
    m_services.prompts.ShowBox(
        "Print Error!",
        "The settings of the run that was cut off can't be set again: " + path + " " + result.message);
    return false;
}

void RunWalk::CountPlannedPrints() {
    for (int row = 0; row < m_services.list.RowCount(); ++row)
        if (IsTicked(row)) m_plannedPrints += m_request.passes - m_services.list.MarkOf(row).pass;
}

bool RunWalk::WalkOnce() {
    for (int row = FindNextRow(); row >= 0; row = FindNextRow()) {
        BeginRow(row);
        if (!KeepGoing()) return false;
        if (FindRowAtWork()) ProcessRow();
    }
    return !IsStopped();
}

void RunWalk::ResetSetUp() {
    std::string message;
    if (m_services.selection.UsePrinter(m_request.printer, message) != 0)
        m_services.outcomes.RecordError("", m_request.printer, message);
    m_services.processing.Clear();
}

bool RunWalk::FindRowAtWork() {
    m_progress.row = m_services.list.CurrentRow();
    return m_progress.row >= 0;
}

// The first row below the one at work that this walk has not reached; when there is none, the first above,
// where rows may have been inserted or moved to.
int RunWalk::FindNextRow() {
    PrintList& list = m_services.list;
    const int count = list.RowCount();
    const int start = list.CurrentRow() + 1;
    const auto findFrom = [&](int row, int end) {
        while (row < end && list.MarkOf(row).pass == m_progress.copy) ++row;
        return row < end ? row : -1;
    };
    const int below = findFrom(start, count);
    return below >= 0 ? below : findFrom(0, start);
}

void RunWalk::BeginRow(int row) {
    PrintList& list = m_services.list;
    list.SetCurrentRow(row);
    list.MarkOf(row).pass = m_progress.copy;
    m_progress.row = row;
    m_progress.file = row + 1;
    m_progress.files = list.RowCount();
    m_progress.bytesDone = m_progress.bytesTotal = 0;
    m_services.outcomes.BeginRow();
    m_services.watch.ForgetPages();
}

bool RunWalk::IsTicked(int row) const {
    return m_services.list.Text(row, kColumnSelected) == "Yes";
}

bool RunWalk::HasFurtherRow() {
    if (m_progress.copy < m_request.passes) return true;
    for (int row = 0; row < m_services.list.RowCount(); ++row)
        if (IsTicked(row) && m_services.list.MarkOf(row).pass != m_progress.copy) return true;
    return false;
}

RunItem RunWalk::ItemOfRow(int row) const {
    const PrintList& list = m_services.list;
    const auto text = [&](Column column) { return std::string(list.Text(row, column)); };
    RunItem item;
    item.path = text(kColumnFilename);
    item.kind = KindOfItem(item.path);
    // A folder's name makes no command of what lies in it.
    if (item.kind == ItemKind::kCommand) item.kind = KindOfItem(FileTitle(item.path));
    item.printer = Printer();
    item.ticket = m_services.selection.Ticket();
    item.pages = text(kColumnPages);
    item.sizeKb = text(kColumnSizeKb);
    item.printDirect = text(kColumnPrintDirect);
    item.processingParameters = text(kColumnProcessingParameters);
    if (item.processingParameters.empty() && item.kind == ItemKind::kDocument)
        item.processingParameters = m_services.processing.Parameters();
    item.addonParameters = text(kColumnAddonParameters);
    item.extraOptions = text(kColumnExtraOptions);
    item.balancedPrinters = text(kColumnBalancedPrinters);
    return item;
}

std::string RunWalk::Printer() const {
    const std::string& current = m_services.selection.CurrentPrinter();
    return current.empty() ? m_services.selection.DefaultPrinter() : current;
}

void RunWalk::ProcessRow() {
    const RunItem item = ItemOfRow(m_progress.row);
    const bool isTicked = IsTicked(m_progress.row);
    m_statusBefore = m_services.list.Text(m_progress.row, kColumnStatus);
    m_services.prompts.ShowStatus(Format("File: %d of %d, Copy: %d/%d", m_progress.file, m_progress.files,
                                         m_progress.copy, m_progress.copies));
    m_services.debugLog.Trace("Check is to print: %s\r\n", item.path);
    const WayResult obstacle = FindSourceObstacle(m_services.files, item);
    if (isTicked) {
        m_services.debugLog.Trace("Check is to print OK\r\n");
        PrintRow(item, obstacle);
        return;
    }
    // A row whose file could not be opened was left unticked when it came in; it must not be missed silently.
    // What could not be merged was told then.
    const bool isMissed = !obstacle.status.empty() && m_progress.copy == 1 &&
                          !m_services.list.MarkOf(m_progress.row).isAppended;
    FinishRow(item, isMissed ? OutcomeOf(obstacle) : RowOutcome::kNotSelected, obstacle);
}

void RunWalk::PrintRow(RunItem item, const WayResult& obstacle) {
    const GeneralOptions& options = m_services.options;
    m_request.observer.OnRowStarted(m_progress);
    WayResult result = obstacle.status.empty() ? FindPagesObstacle(item) : obstacle;
    m_services.debugLog.Trace("badFile check? %d, %s\r\n", result.status.empty() ? 0 : 1, item.path);
    const bool isGood = result.status.empty();
    if (isGood) {
        if (!Pause(options.m_pauseBefore, true)) {
            ShowRowStatus(m_statusBefore);
            return;
        }
        if (!FindRowAtWork()) return;  // it was taken from the list meanwhile
        if (!m_services.snapshot.NoteBegun(m_services.list, m_progress.row, m_progress.copy))
            TellSnapshotFailed();
        result = PrintWithRetry(item);
    }
    ++m_finishedPrints;
    FinishRow(item, OutcomeOf(result), result);
    if (isGood && options.m_pauseAfter > 0 && HasFurtherRow()) Pause(options.m_pauseAfter, false);
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

WayResult RunWalk::PrintWithRetry(RunItem& item) {
    WayResult result = Attempt(item);
    if (MayRetry(item, result) && KeepGoing()) {
        ShowRowStatus("Retrying...");
        result = Attempt(item);
    }
    return result;
}

WayResult RunWalk::Attempt(RunItem& item) {
    if (item.kind == ItemKind::kDownload) {
        WayResult fetched = Download(item);
        if (fetched.end != WayResult::End::kPrinted) return fetched;
    }
    return AttemptBalanced(item);
}

// Once the file is here, the row is a document: `item` is, too.
WayResult RunWalk::Download(RunItem& item) {
    std::string path;
    WayResult result = m_services.downloads.Fetch(item.path, *this, path);
    if (result.end != WayResult::End::kPrinted) return result;
    if (FindRowAtWork()) {
        m_services.list.InsertFileIntoList(path, kReplaceCurrentRow, "", {});
        item = ItemOfRow(m_progress.row);
    } else {
        item.path = path;
        item.kind = ItemKind::kDocument;
    }
    return result;
}

// A row that names balanced printers goes to one of them even in a run without balancing.
WayResult RunWalk::AttemptBalanced(RunItem item) {
    if (item.kind == ItemKind::kCommand || !(m_request.isBalanced || !item.balancedPrinters.empty()))
        return AttemptRow(item);
    m_services.debugLog.Trace("Load balancing\r\n");
    const BalanceChoice choice =
        m_services.balance.Choose(ParseBalancedPrinters(item.balancedPrinters, m_services.balanceOptions));
    std::string message;
    if (UseBalancedPrinter(choice, m_services.selection, m_services.prompts, message) != 0) {
        WayResult result;
        result.status = "Error - Can't Print - the balanced printer can't be used";
        result.remark = "Can't Print - " + message;
        result.canRetry = true;
        return result;
    }
    item.printer = Printer();
    item.ticket = m_services.selection.Ticket();
    if (FindRowAtWork()) m_services.list.SetText(m_progress.row, kColumnBalancedPrinterUsed, item.printer);
    WayResult result = AttemptRow(item);
    if (result.end == WayResult::End::kPrinted) m_services.balance.NoteSent(choice, result.jobId);
    return result;
}

WayResult RunWalk::AttemptRow(const RunItem& item) {
    // It may have vanished in a pause or since the attempt before.
    WayResult result = FindSourceObstacle(m_services.files, item);
    if (!result.status.empty()) return result;
    if (item.kind == ItemKind::kDocument) ShowRowStatus("Printing file:");
    const bool isSettings = EndsWith(item.path, ".prs") || EndsWith(item.path, ".printer");
    if (isSettings) m_services.viewers.CloseAcrobat(ViewerWindows::Occasion::kPrinterSettings);
    result = OfferToWays(item);
    if (result.status == kStatusDidNotSpool) m_services.debugLog.Trace("Can't Print - did not spool\r\n");
    const bool isPrinted = result.end == WayResult::End::kPrinted;
    if (isPrinted) m_jobWait.ForAcceptedJob(item.printer, item.path, result.jobId, *this);
    m_services.debugLog.Trace("g_didspool: %d and g_bError: %d\r\n", isPrinted, !isPrinted);
    return result;
}

WayResult RunWalk::OfferToWays(const RunItem& item) {
    for (const std::unique_ptr<RunWay>& way : m_request.ways)
        if (way->Takes(item)) return way->Process(item, *this);
    return NoWayFor(item);
}

bool RunWalk::MayRetry(const RunItem& item, const WayResult& result) const {
    const GeneralOptions& options = m_services.options;
    if (!options.m_onErrorPrintOneMoreTime || !result.canRetry) return false;
    return !(options.m_dontRetryPdf && IsPdf(item.path));
}

void RunWalk::FinishRow(const RunItem& item, RowOutcome outcome, const WayResult& result) {
    const bool isNew = EndRow(item, outcome, result);
    if (isNew && outcome == RowOutcome::kFailed && result.end != WayResult::End::kStopped)
        m_services.outcomes.TellFailure(item.path, result.status);
    const bool isMerged = !m_request.mergedFile.empty() && item.path == m_request.mergedFile;
    if (isMerged && m_progress.copy == m_request.passes && FindRowAtWork()) EndAppendedRows(result);
}

// The documents whose pages are in the merged file share its lot, the worst of all copies.
void RunWalk::EndAppendedRows(const WayResult& result) {
    PrintList& list = m_services.list;
    const RunMark merged = list.MarkOf(m_progress.row);
    if (merged.outcome == RowOutcome::kNotSelected) return;
    WayResult shared = result;
    if (merged.outcome != OutcomeOf(result)) {
        shared.end = WayResult::End::kFailed;
        shared.status = list.Text(m_progress.row, kColumnStatus);
    }
    for (int row = 0; row < list.RowCount(); ++row) {
        RunMark& mark = list.MarkOf(row);
        if (!mark.isAppended || mark.outcome != RowOutcome::kNotSelected) continue;
        BeginRow(row);
        mark.printed = merged.printed - (merged.outcome == RowOutcome::kDone ? 1 : 0);
        mark.isDoubtful = merged.isDoubtful;
        EndRow(ItemOfRow(row), merged.outcome, shared);
        if (FindRowAtWork()) row = m_progress.row;
    }
}

// False when an earlier copy of the row has failed already.
bool RunWalk::EndRow(const RunItem& item, RowOutcome outcome, const WayResult& result) {
    UpdatePace();
    RunItem ended = item;
    ended.printer = Printer();
    const int pages = m_services.watch.TotalPages();
    const auto counted = ParseWholeNumber(item.pages, 1, kMostPages);
    std::vector<std::string>& used = m_summary.printers;
    const bool isPrinted = outcome == RowOutcome::kDone && item.kind != ItemKind::kCommand;
    if (isPrinted && std::find(used.begin(), used.end(), ended.printer) == used.end())
        used.push_back(ended.printer);
    m_services.outcomes.RecordRow(
        {ended, result, outcome, m_progress.copy, counted ? static_cast<int>(*counted) : pages});
    if (!FindRowAtWork()) {
        CountRows(outcome, 1);
        return true;
    }
    const bool isNew = m_services.list.MarkOf(m_progress.row).outcome != RowOutcome::kFailed;
    MarkRow(outcome, result);
    // A viewer would hold the file.
    if (IsPdf(item.path) && outcome != RowOutcome::kNotSelected)
        m_services.viewers.CloseAcrobat(ViewerWindows::Occasion::kFileFinished);
    HandleFile(outcome, result);
    CheckForHang(item);
    if (FindRowAtWork()) m_request.observer.OnRowFinished(m_progress, outcome);
    return isNew;
}

// In the list and on the disk.
void RunWalk::MarkRow(RowOutcome outcome, const WayResult& result) {
    RunMark& mark = m_services.list.MarkOf(m_progress.row);
    // A failure of an earlier copy stays in sight.
    const RowOutcome worst = std::max(mark.outcome, outcome);
    CountRows(mark.outcome, -1);
    CountRows(worst, 1);
    mark.outcome = worst;
    if (outcome == RowOutcome::kDone) {
        ++mark.printed;
        mark.isDoubtful = mark.isDoubtful || !result.remark.empty();
    }
    if (outcome == RowOutcome::kNotSelected) return;
    ShowRowStatus(worst == outcome ? std::string_view(result.status) : m_statusBefore);
    if (FindRowAtWork() &&
        !m_services.snapshot.NoteFinished(m_services.list, m_progress.row, m_progress.copy))
        TellSnapshotFailed();
}

// After the row's last copy. What was stopped, passed over or has an unknown outcome stays where it is.
void RunWalk::HandleFile(RowOutcome outcome, const WayResult& result) {
    if (!FindRowAtWork() || m_progress.copy < m_request.passes) return;
    if (result.end == WayResult::End::kStopped || result.status == kStatusUnknown) return;
    if (outcome != RowOutcome::kDone && outcome != RowOutcome::kFailed) return;
    const RunMark& mark = m_services.list.MarkOf(m_progress.row);
    PrintEnd end = mark.isDoubtful ? PrintEnd::kDoubtful : PrintEnd::kPrinted;
    if (mark.outcome == RowOutcome::kFailed) end = PrintEnd::kFailed;
    const PrintedRow row = ReadPrintedRow(m_services.list, m_progress.row, Printer());
    const RowHandled handled = m_services.outcomes.HandleFile(row, end);
    if (handled == RowHandled::kFailed) ++m_summary.notFiled;
    if (handled == RowHandled::kErased && end == PrintEnd::kPrinted) ShowRowStatus("Deleted");
}

// A document of the word processor that it hung on gets one more row.
void RunWalk::CheckForHang(const RunItem& item) {
    const HangDecision decision =
        quirepress::CheckForHang(m_request.hangWatch, m_services.hangLog, m_services.options, item.path);
    if (!decision.tryAgain || !FindRowAtWork()) return;
    const PrintedRow row = ReadPrintedRow(m_services.list, m_progress.row, "");
    ItemTexts texts;
    texts.moveToOnError = row.moveToOnError;
    texts.fileTitle = row.fileTitle;
    texts.addonParameters = item.addonParameters;
    texts.processingParameters = item.processingParameters;
    texts.extraOptions = item.extraOptions;
    m_services.list.InsertFileIntoList(item.path, 1, row.moveTo, texts);
}

void RunWalk::CountRows(RowOutcome outcome, int rows) {
    if (outcome == RowOutcome::kDone) m_summary.done += rows;
    if (outcome == RowOutcome::kFailed) m_summary.failed += rows;
    if (outcome == RowOutcome::kSkipped) m_summary.skipped += rows;
}

void RunWalk::TellSnapshotFailed() {
    m_services.prompts.ShowBox("Print Error!", kSnapshotFailed);
}

bool RunWalk::Pause(int seconds, bool showInRow) {
    for (int left = seconds; left > 0; --left) {
        const std::string text = Format("Pausing: %d", left);
        m_services.prompts.ShowStatus(text);
        if (showInRow) ShowRowStatus(text);
        for (int step = 0; step < kPauseStepsInSecond && !IsStopped(); ++step)
            m_services.loop.Wait(kMillisecondsInPauseStep);
        if (IsStopped()) return false;
    }
    return true;
}

void RunWalk::UpdatePace() {
    const long long elapsed = m_services.loop.MonotonicMilliseconds() - m_startedAt;
    if (m_finishedPrints == 0 || elapsed <= 0) return;
    const long long left = std::max(0LL, m_plannedPrints - m_finishedPrints);
    const double seconds = static_cast<double>(elapsed) / 1000.0;
    m_progress.documentsPerMinute = 60.0 * static_cast<double>(m_finishedPrints) / seconds;
    m_progress.secondsLeft = static_cast<std::int64_t>(seconds * static_cast<double>(left) /
                                                       static_cast<double>(m_finishedPrints));
}

void RunWalk::ShowRowStatus(std::string_view status) {
    if (!FindRowAtWork()) return;
    m_services.list.SetText(m_progress.row, kColumnStatus, status);
    m_request.observer.OnProgress(m_progress);
}

void RunWalk::ShowBytes(std::int64_t done, std::int64_t total) {
    m_progress.bytesDone = done;
    m_progress.bytesTotal = total;
    UpdatePace();
    if (FindRowAtWork()) m_request.observer.OnProgress(m_progress);
}

bool RunWalk::KeepGoing() {
    m_services.loop.Pump();
    return !IsStopped();
}

}  // namespace quirepress
