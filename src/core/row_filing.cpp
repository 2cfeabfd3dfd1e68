#include "core/row_filing.h"

#include <algorithm>
#include <string>
#include <vector>

#include "base/path.h"
#include "core/file_target.h"
#include "core/print_list.h"
#include "core/row_at_work.h"
#include "core/run_downloads.h"
#include "core/run_outcomes.h"
#include "core/run_snapshot.h"
#include "platform/file_tools.h"

namespace quirepress {

namespace {

PrintEnd EndOf(const RunMark& mark) {
    if (mark.outcome == RowOutcome::kFailed) return PrintEnd::kFailed;
    return mark.isDoubtful ? PrintEnd::kDoubtful : PrintEnd::kPrinted;
}

// Its end may take the file from where it is. One that is only copied may be so at any time.
bool TakesFileAway(const PrintList& list, int row, const RunMark& mark) {
    if (mark.outcome != RowOutcome::kDone) return true;
    const MoveAction action = ParseMoveTo(list.Text(row, kColumnMoveTo)).action;
    return action == MoveAction::kMove || action == MoveAction::kErase || action == MoveAction::kEraseWithJob;
}

}  // namespace

RowFiling::RowFiling(const PrintRunServices& services, RowAtWork& row, RunSummary& summary)
    : m_services(services),
      m_row(row),
      m_summary(summary),
      m_repeated(services.list, services.files,
                 WithTrailingSeparator(DownloadFolderOf(services.options, services.append.workingFolder))) {}

void RowFiling::FileRow() {
    File(false);
}

void RowFiling::FileCutOffRow() {
    PrintList& list = m_services.list;
    const int row = m_row.Index();
    RunMark& mark = list.MarkOf(row);
    // One that is gone was filed, just not noted as such.
    if (!mark.isFiled && IsGone(m_services.files, list.Text(row, kColumnFilename))) {
        mark.isFiled = true;
        m_services.snapshot.NoteFiled(list, row);
    }
    // Its job file may be to be deleted at the end of the run.
    if (mark.isFiled) m_services.outcomes.NoteJobFile(ReadPrintedRow(list, row, ""), EndOf(mark));
    File(true);
}

// A file that further rows are to print goes when the last of them has had its turn.
void RowFiling::File(bool mayBeCopied) {
    PrintList& list = m_services.list;
    if (!m_row.Find() || m_row.Copy() < m_row.Copies()) return;
    const int row = m_row.Index();
    const std::vector<int> rows = m_repeated.RowsOf(row);
    if (rows.size() == 1 || !TakesFileAway(list, row, list.MarkOf(row))) {
        if (!list.MarkOf(row).isFiled) FileAs(row, EndOf(list.MarkOf(row)), mayBeCopied);
    } else {
        m_services.outcomes.NoteJobFile(ReadPrintedRow(list, row, ""), EndOf(list.MarkOf(row)));
    }
    const bool isLast = std::all_of(rows.begin(), rows.end(), [&](int other) {
        return other < list.RowCount() && list.MarkOf(other).pass >= m_row.Copies();
    });
    if (rows.size() > 1 && isLast) FileTogether(rows, mayBeCopied);
}

// The worst of their outcomes counts; one that is not known, and a stop, leave the file where it is.
void RowFiling::FileTogether(const std::vector<int>& rows, bool mayBeCopied) {
    PrintList& list = m_services.list;
    PrintEnd worst = PrintEnd::kPrinted;
    std::vector<int> unfiled;
    bool isToStay = false;
    for (const int row : rows) {
        RunMark& mark = list.MarkOf(row);
        worst = std::max(worst, EndOf(mark));
        isToStay = isToStay || (mark.isFiled && TakesFileAway(list, row, mark));
        if (!mark.isFiled) unfiled.push_back(row);
    }
    if (unfiled.empty()) return;
    const auto asks = std::find_if(unfiled.begin(), unfiled.end(), [&](int row) {
        return m_services.outcomes.HasTarget(ReadPrintedRow(list, row, ""), worst);
    });
    if (!isToStay) FileAs(asks != unfiled.end() ? *asks : unfiled.front(), worst, mayBeCopied);
    // Not before: a run that is cut off meanwhile would take the file for one that is to stay.
    for (const int row : unfiled) {
        if (!m_row.Find() || row >= list.RowCount() || list.MarkOf(row).isFiled) continue;
        list.MarkOf(row).isFiled = true;
        m_services.snapshot.NoteFiled(list, row);
    }
}

void RowFiling::FileAs(int row, PrintEnd end, bool mayBeCopied) {
    PrintList& list = m_services.list;
    list.MarkOf(row).isFiled = true;
    PrintedRow printed = ReadPrintedRow(list, row, PrinterOfRun(m_services));
    printed.mayBeCopied = mayBeCopied;
    const bool isAtWork = row == m_row.Index();
    const std::string status(list.Text(m_row.Index(), kColumnStatus));
    std::string failure;
    const RowHandled handled = m_services.outcomes.HandleFile(printed, end, failure);
    if (handled == RowHandled::kFailed) {
        m_summary.NoteNotFiled(printed.path, failure);
        m_row.ShowRowStatus(status + ", " + failure);
    }
    if (handled == RowHandled::kErased && end == PrintEnd::kPrinted) m_row.ShowRowStatus("Deleted");
    if (m_row.Find()) m_services.snapshot.NoteFiled(list, isAtWork ? m_row.Index() : row);
}

}  // namespace quirepress
