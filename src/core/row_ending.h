#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/row_at_work.h"
#include "core/row_filing.h"

namespace quirepress {

struct RowEndingRequest {
    RunObserver& observer;
    HangWatch* hangWatch = nullptr;
    std::string mergedFile;  // of the PDFs that were appended; empty: none
};

// What follows when a row has come to its end: logs and notices, the mark in the list and in the snapshot,
// the way of its file; and the run's summary, which counts the rows.
class RowEnding {
public:
    RowEnding(const PrintRunServices& services, RowAtWork& row, RowEndingRequest request);

    const RunSummary& Summary() const { return m_summary; }
    RunSummary& Summary() { return m_summary; }
    // Rows that came to their end before the walk.
    void CountRowsOfList();

    // The row at work; `statusBefore` stands in it again where this copy says less than the one before. May
    // pump.
    void Finish(const RunItem& item, RowOutcome outcome, const WayResult& result,
                std::string_view statusBefore);
    // The row that was at work when the run was cut off. May pump.
    void TellUnknown(int row, const std::string& printer);
    // What a run that was cut off had printed in its last copy, and not seen to its end: documents that share
    // the lot of a merged one, files that stay where they were. May pump.
    void FinishCutOffRows();

private:
    bool IsMerged(const RunItem& item) const;
    bool IsMergedRow(int row) const;
    void Record(const RunItem& item, RowOutcome outcome, const WayResult& result);
    std::string NamesOfAppendedRows() const;
    void RecordAppendedRows(RowOutcome outcome, const WayResult& result);
    bool EndRow(const RunItem& item, RowOutcome outcome, const WayResult& result,
                std::string_view statusBefore);
    void EndAppendedRows(const WayResult& result);
    void MarkRow(RowOutcome outcome, const WayResult& result, std::string_view statusBefore);
    void CheckForHang(const RunItem& item);
    void CountRows(RowOutcome outcome, int rows);

    const PrintRunServices& m_services;
    RowAtWork& m_row;
    RowEndingRequest m_request;
    RunSummary m_summary;
    RowFiling m_filing;
};

// What became of a row that a way has dealt with.
RowOutcome OutcomeOf(const WayResult& result);

}  // namespace quirepress
