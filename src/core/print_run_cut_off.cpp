// What a run does about one before it that was cut off.
#include <algorithm>
#include <deque>
#include <utility>

#include "backends/printer_selection.h"
#include "core/file_target.h"
#include "core/print_list.h"
#include "core/print_run.h"
#include "core/print_run_walk.h"
#include "core/processing_defaults.h"
#include "core/run_outcomes.h"
#include "core/run_snapshot.h"
#include "platform/event_loop.h"
#include "platform/prompts.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

constexpr std::string_view kCutOffRunWaits =
    "A run that was cut off waits: \"qpr restore --print\" prints what is left of it, "
    "\"qpr restore --discard\" forgets it.";

bool HasUnknownRows(const CutOffRun& cutOff) {
    int row = 0;
    return std::any_of(cutOff.rows.begin(), cutOff.rows.end(),
                       [&](const CutOffRun::Row&) { return IsOfUnknownOutcome(cutOff, row++); });
}

bool HasRowsToPrint(const CutOffRun& cutOff) {
    int index = 0;
    return std::any_of(cutOff.rows.begin(), cutOff.rows.end(), [&](const CutOffRun::Row& row) {
        const bool hadItsTurn = IsOfUnknownOutcome(cutOff, index++);
        const int pass = hadItsTurn ? cutOff.copy : row.mark.pass;
        return row.texts[kColumnSelected] == "Yes" && pass < cutOff.copies;
    });
}

}  // namespace

// A run that was cut off and still has rows to print is not lost by the next one.
bool PrintRun::MayForgetCutOffRun() {
    if (!m_services.options.m_snapshotRestore) return true;
    RunSnapshot& snapshot = m_services.snapshot;
    CutOffRun left;
    if (snapshot.Load(left) != SnapshotResult::kLoaded) return true;
    const bool mayGo =
        HasRowsToPrint(left)
            ? m_services.prompts.AskYesNo(
                  "Print Error!", "A run was cut off, and part of it is not printed. Forget it?", false)
            : EndCutOffRun(left);
    if (mayGo) {
        snapshot.Remove();
        return true;
    }
    snapshot.Leave();
    m_services.prompts.ShowBox("Print Error!", kCutOffRunWaits);
    return false;
}

// All of it was printed: what its end has left undone is done before the next run. Nothing of it comes out
// again, and its rows leave the list as they were. False when a stop came between.
bool PrintRun::EndCutOffRun(const CutOffRun& cutOff) {
    PrintList& list = m_services.list;
    std::deque<ListItem> rows = list.ExchangeRows({});
    PutRowsBack(list, cutOff);
    if (HasUnfiledRows() || HasUnknownRows(cutOff)) {
        m_appended = TakeUpMergedFile(m_services.append, cutOff.mergedFile);
        m_services.processing.Clear();
        m_services.outcomes.BeginRun(cutOff.printer, cutOff.copies, [this] { return m_stop; });
        RunObserver nobody;
        RunWalk walk(m_services, {m_ways, nobody, m_hangWatch, m_stop, cutOff.printer, m_appended.path,
                                  cutOff.copies, cutOff.isBalanced, &cutOff});
        walk.EndCutOffRows();
        m_services.outcomes.EndRun(list, cutOff.copies, m_stop);
        ReleaseMergedFile(m_services.append.files, m_appended);
        m_filedBefore = walk.Summary();
    }
    list.ExchangeRows(std::move(rows));
    return !m_stop;
}

bool PrintRun::HasUnfiledRows() {
    PrintList& list = m_services.list;
    for (int row = 0; row < list.RowCount(); ++row) {
        const RunMark& mark = list.MarkOf(row);
        const bool hasEnded = mark.outcome != RowOutcome::kNotSelected || mark.isAppended;
        const MoveAction action = ParseMoveTo(list.Text(row, kColumnMoveTo)).action;
        const bool erasesJob = action == MoveAction::kEraseWithJob || action == MoveAction::kEraseJob;
        const bool hasJob =
            erasesJob && m_services.files.Inspect(list.JobFileOf(row)).kind == FileKind::kRegular;
        if (hasEnded && (!mark.isFiled || hasJob)) return true;
    }
    return false;
}

// Nobody may be there to read the box.
RunSummary PrintRun::GiveWayToCutOffRun() {
    // Not more: a merged file may be that of the run that waits.
    ClearMarks();
    m_printer = m_chosenPrinter.empty() ? m_services.selection.OwnDefaultPrinter() : m_chosenPrinter;
    m_passes = CountPasses(false);
    m_services.outcomes.BeginRun(m_printer, m_passes, [this] { return m_stop; });
    m_services.outcomes.EndRefusedRun(m_services.list, m_passes, kCutOffRunWaits);
    m_services.loop.Pump();  // a stop may have been the answer
    RunSummary summary;
    summary.end = m_stop ? RunSummary::End::kStopped : RunSummary::End::kRefused;
    return summary;
}

}  // namespace quirepress
