#pragma once

#include <cstdint>
#include <string_view>

#include "core/print_run.h"
#include "core/run_way.h"

namespace quirepress {

// The row that a run is at, wherever it moves in the list meanwhile, and how far the run is. It may be taken
// from the list under every pump; the run then goes on without a row.
class RowAtWork : public WayFeedback {
public:
    RowAtWork(const PrintRunServices& services, RunObserver& observer, const bool& stop);

    // Copies go from 1; the run begins before the first.
    void BeginRun(int rows, int copies);
    void BeginCopy(int copy) { m_progress.copy = copy; }
    // How many rows there are to print in all copies, for the pace; how many of them came to their end.
    void Expect(long long prints) { m_plannedPrints = prints; }
    void CountPrint() { ++m_finishedPrints; }
    void UpdatePace();

    void Begin(int row);
    void PutBack();  // its turn has not come after all
    // False when it was taken from the list; else `Index` is where it is now.
    bool Find();
    int Index() const { return m_progress.row; }
    int Copy() const { return m_progress.copy; }
    int Copies() const { return m_progress.copies; }
    const RunProgress& Progress() const { return m_progress; }
    // Counted down in the status line, and in the row where that is asked for. False when Stop ended it.
    bool Pause(int seconds, bool showInRow);

    // WayFeedback
    void ShowRowStatus(std::string_view status) override;
    void ShowBytes(std::int64_t done, std::int64_t total) override;
    bool IsStopped() const override { return m_stop; }
    bool KeepGoing() override;

private:
    const PrintRunServices& m_services;
    RunObserver& m_observer;
    const bool& m_stop;
    RunProgress m_progress;
    long long m_plannedPrints = 0;
    long long m_finishedPrints = 0;
    long long m_startedAt = 0;  // the loop's milliseconds
};

bool IsTicked(const PrintList& list, int row);
// The printer that documents go to now.
std::string PrinterOfRun(const PrintRunServices& services);
// The row with what the settings above it have set.
RunItem ReadRunItem(const PrintRunServices& services, int row);

}  // namespace quirepress
