#pragma once

#include <string>

#include "core/print_run.h"
#include "core/row_at_work.h"
#include "core/row_attempt.h"
#include "core/row_ending.h"
#include "core/run_way.h"

namespace quirepress {

// What the walks of one run need.
struct WalkRequest {
    const RunWays& ways;
    RunObserver& observer;
    HangWatch* hangWatch = nullptr;
    const bool& stop;
    std::string printer;     // current when each walk begins
    std::string mergedFile;  // of the PDFs that were appended; empty: none
    int passes = 1;          // how often the whole list is walked
    bool isBalanced = false;
    const CutOffRun* cutOff = nullptr;  // taken up; its rows are those of the list
};

// Takes a run through the list, row by row. The list may change under every pump: rows are found again by
// their marks, and every ticked row gets its turn once in each walk, wherever it has moved.
class RunWalk {
public:
    RunWalk(const PrintRunServices& services, WalkRequest request);

    // The summary's counts, end and time; the printer was checked. May pump.
    RunSummary WalkList();
    // Of a run that is taken up: the row that was at work. May pump.
    void TellUnknownRows();
    // Instead of WalkList, when something is in the way.
    RunSummary EndEarly(RunSummary::End end);
    // Of a run that had printed all of its rows: its files. May pump.
    void EndCutOffRows();
    RunSummary& Summary() { return m_ending.Summary(); }

private:
    bool TakeUpCutOffRun();
    void ReportEarlierRow(int row);
    void ReportEarlierRows();
    void FailAgain(const std::string& path);
    bool ApplyAgain(int row, const std::string& path);
    void ResetSetUp();
    long long CountPlannedPrints() const;
    bool WalkOnce();  // false when Stop ended it
    int FindNextRow();
    bool HasFurtherRow();

    void ProcessRow();
    void PrintRow(RunItem item, const WayResult& obstacle);
    WayResult FindPagesObstacle(const RunItem& item);

    const PrintRunServices& m_services;
    WalkRequest m_request;
    RowAtWork m_row;
    RowAttempt m_attempt;
    RowEnding m_ending;
    std::string m_statusBefore;  // of the row at work
};

}  // namespace quirepress
