#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quirepress {

class Clock;
class DebugLog;
class DirectPrinter;
class ErrorLog;
class EventLoop;
class Files;
class PdfCounter;
class PrintList;
class Prompts;
class Spooler;
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

enum class RowOutcome { kDone, kFailed, kSkipped, kNotSelected };

// Told of everything that happens in a run; implemented by the console's progress and by the window.
class RunObserver {
public:
    virtual ~RunObserver() = default;
    virtual void OnRunStarted(int rows, int copies) = 0;
    virtual void OnRowStarted(const RunProgress& progress) = 0;
    virtual void OnProgress(const RunProgress& progress) = 0;
    virtual void OnRowFinished(const RunProgress& progress, RowOutcome outcome) = 0;
};

// How a run ended.
struct RunSummary {
    enum class End { kFinished, kNothingToPrint, kNoPrinter, kStopped, kRefused } end = End::kFinished;
    int done = 0;
    int failed = 0;  // every row whose status is an error, missing and empty files included
    int skipped = 0;
    double seconds = 0;
};

struct PrintRunServices {
    PrintList& list;
    Spooler& spooler;
    DirectPrinter& directPrinter;
    Files& files;
    EventLoop& loop;
    Clock& clock;
    Prompts& prompts;
    DebugLog& debugLog;
    ErrorLog& errorLog;
    const GeneralOptions& options;
};

// Walks the list from top to bottom and hands each ticked row to the cheapest way that works.
class PrintRun {
public:
    explicit PrintRun(PrintRunServices services);

    void UseObserver(RunObserver* observer) { m_observer = observer; }
    void UsePrinter(std::string_view printer) { m_printer = printer; }
    const std::string& Printer() const { return m_printer; }
    void SetCopies(int copies) { m_copies = copies; }

    // One run over the whole list. A run inside a run is refused. May pump.
    RunSummary OnButtonPrint();

    void Stop() { m_stop = true; }  // orderly: the document at work is finished or taken back whole
    bool IsRunning() const { return m_isRunning; }

private:
    PrintRunServices m_services;
    RunObserver* m_observer = nullptr;
    std::string m_printer;
    int m_copies = 0;  // 0: as the options say
    bool m_stop = false;
    bool m_isRunning = false;
};

}  // namespace quirepress
