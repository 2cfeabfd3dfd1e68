#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/append_pdfs.h"
#include "core/list_item.h"

namespace quirepress {

class DebugLog;
class EventLoop;
class Files;
class HangLog;
class HangWatch;
class PrintList;
class ProcessingDefaults;
class PrinterBalance;
class PrinterSelection;
class Prompts;
class QueueWatch;
class RunDownloads;
class RunSeparators;
class RunOutcomes;
class RunSnapshot;
class RunWay;
class Spooler;
class ViewerWindows;
struct BalanceOptions;
struct CutOffRun;
struct GeneralOptions;

// How far a run is; passed on after each change.
struct RunProgress {
    int copy = 0, copies = 0;                    // "Copy: %d/%d", from 1
    int file = 0, files = 0;                     // "File: %d of %d", from 1, rows of the list
    int row = -1;                                // index of the row at work
    std::int64_t bytesDone = 0, bytesTotal = 0;  // of the document at work; 0: unknown
    double documentsPerMinute = 0;
    std::int64_t secondsLeft = -1;  // -1: unknown
};

// Told of everything that happens in a run; `progress.row` is always a row of the list.
class RunObserver {
public:
    virtual ~RunObserver() = default;
    virtual void OnRunStarted(int /*rows*/, int /*copies*/) {}
    // Before it begins: what it waits for, whenever that changes.
    virtual void OnWaiting(std::string_view /*what*/) {}
    virtual void OnRowStarted(const RunProgress& /*progress*/) {}  // ticked rows
    virtual void OnProgress(const RunProgress& /*progress*/) {}
    // Every row, once in each walk; not one that was taken from the list while it was at work.
    virtual void OnRowFinished(const RunProgress& /*progress*/, RowOutcome /*outcome*/) {}
};

// How a run ended. Rows are counted once, however many copies were printed; one failure makes a row a failed
// one. A row whose file is missing, empty or no file, or was not taken in, counts as failed even when it is
// not ticked.
struct RunSummary {
    enum class End { kFinished, kNothingToPrint, kNoPrinter, kStopped, kRefused } end = End::kFinished;
    int done = 0;
    int failed = 0;
    int skipped = 0;
    int notFiled = 0;  // rows whose files could not be moved, copied or deleted; they count above, too
    std::vector<std::string> filesNotFiled;  // "a.ps, not moved: it is in use"
    bool isDefaultChanged = false;           // the system's default printer could not be set back
    bool hasLostRecords = false;             // something could not be written into the logs or the report
    double seconds = 0;
    std::vector<std::string> printers;  // that documents went to, each once

    void NoteNotFiled(const std::string& path, const std::string& failure) {
        ++notFiled;
        filesNotFiled.push_back(path + ", " + failure);
    }
};

struct PrintRunServices {
    PrintList& list;
    Spooler& spooler;
    Files& files;
    EventLoop& loop;
    Prompts& prompts;
    DebugLog& debugLog;
    PrinterSelection& selection;
    QueueWatch& watch;
    PrinterBalance& balance;
    RunSnapshot& snapshot;
    ViewerWindows& viewers;
    ProcessingDefaults& processing;
    RunDownloads& downloads;
    RunSeparators& separators;
    RunOutcomes& outcomes;
    HangLog& hangLog;
    const GeneralOptions& options;
    const BalanceOptions& balanceOptions;
    AppendServices append;
};

// Walks the list from top to bottom and hands each ticked row to the cheapest way that works.
class PrintRun {
public:
    // A row goes to the first of the ways that takes it.
    PrintRun(PrintRunServices services, std::vector<std::unique_ptr<RunWay>> ways);
    ~PrintRun();

    void UseObserver(RunObserver* observer) { m_observer = observer; }        // null: nobody listens
    void UsePrinter(std::string_view printer) { m_chosenPrinter = printer; }  // empty: the default one
    const std::string& Printer() const { return m_printer; }  // of the last run, or the one at work
    void SetCopies(int copies) { m_copies = copies; }         // 0: as the options say
    // Spreads the documents over the balanced printers; else only those of rows that name some.
    void UseBalancing(bool isOn) { m_isBalanced = isOn; }

    // Merges the ticked PDFs into one document first.
    void UseAppending(bool isOn) { m_isAppending = isOn; }
    // The add-on that watches the word processor; null: there is none.
    void UseHangWatch(HangWatch* watch) { m_hangWatch = watch; }

    // One run over the whole list. A run inside a run is refused. May pump.
    RunSummary OnButtonPrint();
    // Takes up a run that was cut off: its rows replace the list's. What was finished is not printed again;
    // nor is the row that was at work, whose status then says that its outcome is not known. May pump.
    RunSummary FinishCutOffRun(const CutOffRun& cutOff);

    // Orderly: the document at work is finished or taken back whole. Nothing when no run is on.
    void Stop() { m_stop = m_isRunning; }
    bool IsRunning() const { return m_isRunning; }
    bool IsStopped() const { return m_isRunning && m_stop; }

private:
    RunSummary RunAlone(const CutOffRun* cutOff);
    RunSummary RunList(const CutOffRun* cutOff);
    RunSummary WalkWithPrinter(const CutOffRun* cutOff);
    void FinishRun(bool wasStopped, RunSummary& summary);
    bool HasWork();
    RunSummary TellMissedRows();
    void ForgetEarlierRuns();
    void ClearMarks();
    AppendOutcome AppendRows();
    void TellFailedAppends(RunSummary& summary);
    bool MayForgetCutOffRun();
    bool EndCutOffRun(const CutOffRun& cutOff);
    bool HasUnfiledRows();
    RunSummary GiveWayToCutOffRun();
    bool IsBalanced(const CutOffRun* cutOff) const;
    void RestoreDefaultPrinter(RunSummary& summary);
    bool CreateSnapshot(const CutOffRun* cutOff);
    RunSummary::End PreparePrinter();
    bool CheckPrinterIsValid();
    bool AwaitEmptyQueue();
    int AskCopies();
    int CountPasses(bool mayAsk);
    void TellMissingCopies();
    void RemoveDoneRows(int passes);

    PrintRunServices m_services;
    std::vector<std::unique_ptr<RunWay>> m_ways;
    RunObserver* m_observer = nullptr;
    HangWatch* m_hangWatch = nullptr;
    std::string m_chosenPrinter;
    std::string m_printer;
    int m_copies = 0;
    int m_passes = 1;  // walks over the list
    bool m_isBalanced = false;
    bool m_isAppending = false;
    AppendOutcome m_appended;  // of the run at work
    RunSummary m_filedBefore;  // of the files of a run that was cut off
    std::string m_obstacle;    // why it could not start
    bool m_stop = false;
    bool m_isRunning = false;
};

}  // namespace quirepress
