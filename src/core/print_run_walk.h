#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/job_wait.h"
#include "core/print_run.h"
#include "core/run_way.h"

namespace quirepress {

// What the walks of one run need.
struct WalkRequest {
    const std::vector<std::unique_ptr<RunWay>>& ways;
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
class RunWalk : private WayFeedback {
public:
    RunWalk(PrintRunServices services, WalkRequest request);

    // The summary's counts, end and time; the printer was checked. May pump.
    RunSummary WalkList();

private:
    // WayFeedback
    void ShowRowStatus(std::string_view status) override;
    void ShowBytes(std::int64_t done, std::int64_t total) override;
    bool IsStopped() const override { return m_request.stop; }
    bool KeepGoing() override;

    bool TakeUpCutOffRun(const CutOffRun& cutOff);
    bool ApplyAgain(int row, const std::string& path);
    void ResetSetUp();
    void CountPlannedPrints();
    bool WalkOnce();       // false when Stop ended it
    bool FindRowAtWork();  // false when it was taken from the list
    int FindNextRow();
    void BeginRow(int row);
    bool IsTicked(int row) const;
    bool HasFurtherRow();
    RunItem ItemOfRow(int row) const;
    std::string Printer() const;

    void ProcessRow();
    void PrintRow(RunItem item, const WayResult& obstacle);
    WayResult FindPagesObstacle(const RunItem& item);
    WayResult PrintWithRetry(RunItem& item);
    WayResult Attempt(RunItem& item);
    WayResult Download(RunItem& item);
    WayResult AttemptBalanced(RunItem item);
    WayResult AttemptRow(const RunItem& item);
    WayResult OfferToWays(const RunItem& item);
    bool MayRetry(const RunItem& item, const WayResult& result) const;
    void FinishRow(const RunItem& item, RowOutcome outcome, const WayResult& result);
    bool EndRow(const RunItem& item, RowOutcome outcome, const WayResult& result);
    void EndAppendedRows(const WayResult& result);
    void MarkRow(RowOutcome outcome, const WayResult& result);
    void HandleFile(RowOutcome outcome, const WayResult& result);
    void CheckForHang(const RunItem& item);
    void CountRows(RowOutcome outcome, int rows);
    void TellSnapshotFailed();
    bool Pause(int seconds, bool showInRow);
    void UpdatePace();

    PrintRunServices m_services;
    WalkRequest m_request;
    JobWait m_jobWait;
    RunProgress m_progress;
    RunSummary m_summary;
    std::string m_statusBefore;     // of the row at work
    long long m_plannedPrints = 0;  // ticked rows in all walks, as they were at the start
    long long m_finishedPrints = 0;
    long long m_startedAt = 0;
};

}  // namespace quirepress
