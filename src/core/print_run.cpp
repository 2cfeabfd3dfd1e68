#include "core/print_run.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

#include "backends/printer_selection.h"
#include "backends/queue_watch.h"
#include "backends/viewer_windows.h"
#include "base/format.h"
#include "base/numbers.h"
#include "core/print_list.h"
#include "core/print_run_source.h"
#include "core/print_run_walk.h"
#include "core/processing_defaults.h"
#include "core/row_ending.h"
#include "core/run_downloads.h"
#include "core/run_outcomes.h"
#include "core/run_snapshot.h"
#include "core/unpacked_archives.h"
#include "logs/debug_log.h"
#include "platform/event_loop.h"
#include "platform/prompts.h"
#include "platform/spooler.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

constexpr int kMonitorTimer = 2;
constexpr int kQueuePollMilliseconds = 250;
constexpr int kMostCopies = 9'999;
RunSummary EndedEarly(RunSummary::End end) {
    RunSummary summary;
    summary.end = end;
    return summary;
}

}  // namespace

PrintRun::PrintRun(PrintRunServices services, std::vector<std::unique_ptr<RunWay>> ways)
    : m_services(std::move(services)), m_ways(std::move(ways)) {}
PrintRun::~PrintRun() = default;

RunSummary PrintRun::OnButtonPrint() {
    return RunAlone(nullptr);
}

RunSummary PrintRun::FinishCutOffRun(const CutOffRun& cutOff) {
    return RunAlone(&cutOff);
}

RunSummary PrintRun::RunAlone(const CutOffRun* cutOff) {
    if (m_isRunning) return EndedEarly(RunSummary::End::kRefused);
    m_isRunning = true;
    m_stop = false;
    if (cutOff != nullptr) PutRowsBack(m_services.list, *cutOff);
    m_filedBefore = {};
    RunSummary summary = RunList(cutOff);
    summary.notFiled += m_filedBefore.notFiled;
    std::move(m_filedBefore.filesNotFiled.begin(), m_filedBefore.filesNotFiled.end(),
              std::back_inserter(summary.filesNotFiled));
    summary.hasLostRecords = m_services.outcomes.TakeLostRecords();
    m_isRunning = false;
    return summary;
}

RunSummary PrintRun::RunList(const CutOffRun* cutOff) {
    m_services.loop.StopTimer(kMonitorTimer);
    m_services.debugLog.Trace("KillTimer(2) 5\r\n");
    if (!HasWork()) return TellMissedRows();
    if (cutOff == nullptr && !MayForgetCutOffRun()) return GiveWayToCutOffRun();
    if (cutOff == nullptr) m_services.list.RefreshListStatus();
    m_services.debugLog.Trace("Items set to ready, OK? %d\r\n", 1);
    m_services.selection.UseStop([this] { return m_stop; });
    m_services.selection.SaveForRun();
    m_services.processing.Clear();
    if (cutOff == nullptr) ForgetEarlierRuns();
    m_services.downloads.BeginRun(m_services.list);
    m_appended = {};
    if (cutOff == nullptr && m_isAppending) m_appended = AppendRows();
    if (cutOff != nullptr) m_appended = TakeUpMergedFile(m_services.append, cutOff->mergedFile);
    RunSummary summary = WalkWithPrinter(cutOff);
    m_services.selection.UseStop([] { return false; });
    RestoreDefaultPrinter(summary);
    const bool wasStopped = summary.end == RunSummary::End::kStopped;
    if (wasStopped || summary.end == RunSummary::End::kFinished)
        FinishRun(wasStopped, summary);
    else
        m_services.outcomes.EndRefusedRun(m_services.list, m_passes, m_obstacle);
    // What is left of a run that was taken up, by who stopped it or by an obstacle, may be taken up again.
    if (cutOff != nullptr && summary.end != RunSummary::End::kFinished)
        m_services.snapshot.Leave();
    else
        m_services.snapshot.Remove();
    m_services.downloads.EndRun();
    TickAppendedRows(m_services.list);
    ReleaseMergedFile(m_services.append.files, m_appended);
    if (wasStopped) m_services.prompts.ShowStatus("Printing stopped && Monitor stopped");
    return summary;
}

RunSummary PrintRun::WalkWithPrinter(const CutOffRun* cutOff) {
    m_printer = cutOff != nullptr && m_chosenPrinter.empty() ? cutOff->printer : m_chosenPrinter;
    if (m_printer.empty()) m_printer = m_services.selection.OwnDefaultPrinter();
    m_passes = cutOff != nullptr ? cutOff->copies : CountPasses(true);
    m_services.outcomes.BeginRun(m_printer, m_passes, [this] { return m_stop; });
    RunObserver nobody;
    RunWalk walk(m_services, {m_ways, m_observer != nullptr ? *m_observer : nobody, m_hangWatch, m_stop,
                              m_printer, m_appended.path, m_passes, IsBalanced(cutOff), cutOff});
    // The snapshot of this run takes it for told.
    walk.TellUnknownRows();
    if (!CreateSnapshot(cutOff)) return walk.EndEarly(RunSummary::End::kRefused);
    m_services.prompts.ShowStatus("Starting");
    const RunSummary::End obstacle = PreparePrinter();
    if (obstacle != RunSummary::End::kFinished) return walk.EndEarly(obstacle);
    DebugLog& debugLog = m_services.debugLog;
    debugLog.Trace("Start printing.\r\n");
    debugLog.Trace("OnButtonPrint() copies: %d\r\n", m_passes);
    debugLog.Trace("OnButtonPrint() printer: %s\r\n", m_printer);
    m_services.watch.BeginRun();
    if (m_services.options.m_deleteZipFiles)
        DeleteUnpackedArchives(m_services.list, m_services.files, m_services.prompts);
    TellFailedAppends(walk.Summary());
    m_obstacle = "The settings of the run that was cut off can't be set again";
    return walk.WalkList();
}

void PrintRun::RestoreDefaultPrinter(RunSummary& summary) {
    std::string message;
    if (m_services.selection.RestoreAfterRun(message) == 0) return;
    summary.isDefaultChanged = true;
    m_services.prompts.ShowBox("Print Error!", message);
    m_services.outcomes.RecordError("", "", message);
}

// Files that were not there came in unticked. A night in which all of them are missing leaves its traces.
RunSummary PrintRun::TellMissedRows() {
    RunSummary summary = EndedEarly(RunSummary::End::kNothingToPrint);
    const std::vector<MissedRow> missed = FindMissedRows(m_services.files, m_services.list);
    if (missed.empty()) return summary;
    RunOutcomes& outcomes = m_services.outcomes;
    outcomes.BeginRun(m_chosenPrinter, 1, [this] { return m_stop; });
    for (const MissedRow& row : missed) {
        const RowOutcome outcome = OutcomeOf(row.obstacle);
        ++(outcome == RowOutcome::kSkipped ? summary.skipped : summary.failed);
        outcomes.RecordRow({row.item, row.obstacle, outcome});
        if (outcome == RowOutcome::kFailed) outcomes.TellFailure(row.item.path, row.obstacle.status);
    }
    outcomes.EndRun(m_services.list, 1, false);
    if (m_stop) summary.end = RunSummary::End::kStopped;
    return summary;
}

// The printer is the user's own again.
void PrintRun::FinishRun(bool wasStopped, RunSummary& summary) {
    m_services.viewers.CloseAcrobat(ViewerWindows::Occasion::kListFinished);
    m_services.outcomes.EndRun(m_services.list, m_passes, wasStopped);
    if (wasStopped) {
        const AppendedCount shared = ShareMergedCopies(m_services.list, m_appended.path);
        summary.done += shared.done;
        summary.failed += shared.failed;
        TellMissingCopies();
    }
    if (m_services.options.m_removeItem) RemoveDoneRows(m_passes);
}

// "Done" alone would be a row of which all copies came out.
void PrintRun::TellMissingCopies() {
    PrintList& list = m_services.list;
    for (int row = 0; row < list.RowCount(); ++row) {
        const RunMark& mark = list.MarkOf(row);
        const bool isMissing = mark.outcome == RowOutcome::kDone && mark.printed < m_passes;
        if (!isMissing || KindOfItem(list.Text(row, kColumnFilename)) == ItemKind::kCommand) continue;
        const std::string status(list.Text(row, kColumnStatus));
        list.SetText(row, kColumnStatus, Format("%s, %d of %d copies", status, mark.printed, m_passes));
    }
}

void PrintRun::ForgetEarlierRuns() {
    DropMergedRows(m_services.append);
    ClearMarks();
}

void PrintRun::ClearMarks() {
    for (int row = 0; row < m_services.list.RowCount(); ++row) m_services.list.MarkOf(row) = {};
}

// The merged file is a row of this run, known to its snapshot.
AppendOutcome PrintRun::AppendRows() {
    AppendOutcome appended = AppendPdfs(m_services.append, [this] {
        m_services.loop.Pump();
        return !m_stop;
    });
    if (appended.end == AppendOutcome::End::kNotWritten) {
        constexpr std::string_view kNotMerged =
            "The merged file can't be written; its documents are printed singly";
        m_services.prompts.ShowBox("Print Error!", kNotMerged);
        m_services.outcomes.RecordError("", "", kNotMerged);
    }
    return appended;
}

void PrintRun::TellFailedAppends(RunSummary& summary) {
    RunOutcomes& outcomes = m_services.outcomes;
    for (const AppendOutcome::Failure& failure : std::exchange(m_appended.failures, {})) {
        RunItem item;
        item.path = failure.path;
        WayResult result;
        result.status = failure.error;
        outcomes.RecordRow({item, result, RowOutcome::kFailed});
        outcomes.TellFailure(failure.path, failure.error);
    }
    std::vector<PrintedRow> failed;
    for (int row = 0; row < m_services.list.RowCount(); ++row) {
        RunMark& mark = m_services.list.MarkOf(row);
        if (!mark.isAppended || mark.outcome != RowOutcome::kFailed || mark.isFiled) continue;
        mark.isFiled = true;
        m_services.snapshot.NoteFiled(m_services.list, row);
        failed.push_back(ReadPrintedRow(m_services.list, row, m_printer));
    }
    std::string failure;
    for (const PrintedRow& row : failed)
        if (outcomes.HandleFile(row, PrintEnd::kFailed, failure) == RowHandled::kFailed)
            summary.NoteNotFiled(row.path, failure);
}

bool PrintRun::IsBalanced(const CutOffRun* cutOff) const {
    return m_isBalanced || (cutOff != nullptr && cutOff->isBalanced);
}

// False when a run that is taken up can't be kept track of: it would be printed again.
bool PrintRun::CreateSnapshot(const CutOffRun* cutOff) {
    const bool isWanted = m_services.options.m_snapshotRestore || cutOff != nullptr;
    m_services.debugLog.Trace("Create Snapshot restore?, %d\r\n", isWanted);
    if (!isWanted) return true;
    m_services.debugLog.Trace("Creating snapshot restore\r\n");
    RunHead head;
    head.printer = m_printer;
    head.copies = m_passes;
    head.isBalanced = IsBalanced(cutOff);
    head.mergedFile = m_appended.path;
    m_obstacle = m_services.snapshot.Create(m_services.list, head, cutOff != nullptr ? cutOff->copy : 1);
    if (m_obstacle.empty()) return true;
    m_services.prompts.ShowBox("Print Error!", m_obstacle);
    return cutOff == nullptr;
}

// kFinished when nothing is in the way.
RunSummary::End PrintRun::PreparePrinter() {
    if (!CheckPrinterIsValid()) return RunSummary::End::kNoPrinter;
    if (m_services.selection.UsePrinter(m_printer, m_obstacle) != 0) {
        m_services.prompts.ShowBox("Print Error!", m_obstacle);
        return RunSummary::End::kNoPrinter;
    }
    return AwaitEmptyQueue() ? RunSummary::End::kFinished : RunSummary::End::kStopped;
}

// False when Stop ended the waiting. A queue that cannot be read holds nothing up.
bool PrintRun::AwaitEmptyQueue() {
    const bool isWanted = m_services.options.m_waitSpoolClearBeforePrint;
    m_services.debugLog.Trace("waitSpoolQueueClearBeforePrint? %d\r\n", isWanted);
    if (!isWanted) return true;
    for (int told = 0;;) {
        const int count = m_services.watch.QueueCount(m_printer);
        if (count <= 0) return true;
        const std::string what = Format("Waiting for %d job(s) on printer:%s to clear", count, m_printer);
        m_services.prompts.ShowStatus(what);
        if (std::exchange(told, count) != count) {
            m_services.debugLog.Trace("%s\r\n", what);
            if (m_observer != nullptr) m_observer->OnWaiting(what);
        }
        m_services.loop.Wait(kQueuePollMilliseconds);
        if (m_stop) return false;
    }
}

bool PrintRun::HasWork() {
    const PrintList& list = m_services.list;
    const int rows = list.RowCount();
    if (rows == 0) {
        m_services.debugLog.Trace("No Items in the list\r\n");
        return false;
    }
    for (int row = 0; row < rows; ++row)
        if (list.Text(row, kColumnSelected) == "Yes") return true;
    m_services.debugLog.Trace("No Files to Print\r\n");
    m_services.prompts.ShowBox("Print Error!", "No Files to Print");
    return false;
}

// An unknown printer ends the run before a row is touched: nothing could come out.
bool PrintRun::CheckPrinterIsValid() {
    std::vector<PrinterInfo> printers;
    m_services.spooler.ListPrinters(printers);
    const auto isChosen = [this](const PrinterInfo& printer) { return printer.name == m_printer; };
    if (!m_printer.empty() && std::any_of(printers.begin(), printers.end(), isChosen)) {
        m_services.debugLog.Trace("checkPrinterIsValid OK - Printer available: %s\r\n", m_printer);
        return true;
    }
    m_services.debugLog.Trace("checkPrinterIsValid - Printer not available: %s\r\n", m_printer);
    m_obstacle = "Printer not available:" + m_printer;
    m_services.prompts.ShowStatus(m_obstacle);
    return false;
}

// Where nobody answers, as many as the options say.
int PrintRun::AskCopies() {
    const int usual = std::max(1, m_services.options.m_printCopies);
    m_services.prompts.ShowStatus("Prints are ready to print and Quirepress is waiting for your response");
    const std::string answer =
        m_services.prompts.AskText("Copies", "How many copies?", std::to_string(usual));
    const auto copies = ParseWholeNumber(answer, 1, kMostCopies);
    return copies ? static_cast<int>(*copies) : usual;
}

int PrintRun::CountPasses(bool mayAsk) {
    const GeneralOptions& options = m_services.options;
    std::int64_t copies = m_copies;
    if (copies <= 0)
        copies = mayAsk && options.m_copiesPrompt ? AskCopies() : std::max(1, options.m_printCopies);
    const std::int64_t repeats = std::max(1, options.m_printCopiesRepeat);
    return static_cast<int>(std::min<std::int64_t>(copies * repeats, std::numeric_limits<int>::max()));
}

// After the last walk, since a row that leaves earlier would miss its further copies.
void PrintRun::RemoveDoneRows(int passes) {
    PrintList& list = m_services.list;
    for (int row = list.RowCount() - 1; row >= 0; --row)
        if (list.MarkOf(row).printed == passes) list.RemoveRow(row);
}

}  // namespace quirepress
