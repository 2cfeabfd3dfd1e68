#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "core/post_print.h"
#include "core/run_report.h"
#include "core/run_way.h"

namespace quirepress {

class Machine;
class PrintLog;
struct EarlierRow;

struct RunOutcomeServices {
    Files& files;
    Clock& clock;
    EventLoop& loop;
    Machine& machine;
    Prompts& prompts;
    PrintLog& printLog;
    ErrorLog& errorLog;
    PostPrint& postPrint;
    RunNotices& notices;
    const GeneralOptions& options;
    std::string workingFolder;
};

// One attempt at a row, as it ended.
struct RowEnd {
    const RunItem& item;
    const WayResult& result;
    RowOutcome outcome = RowOutcome::kDone;
    int copy = 1;
    int pages = 0;          // of one copy; 0: unknown
    bool isMerged = false;  // documents that were merged into it have rows of their own
};

// What is kept and told of the rows of a run, and what becomes of their files: print log, error log, notices,
// reports, post-print handling.
class RunOutcomes {
public:
    explicit RunOutcomes(RunOutcomeServices services) : m_services(std::move(services)) {}

    // `isStopped` is asked until EndRun.
    void BeginRun(std::string_view printer, int copies, std::function<bool()> isStopped);
    void BeginRow();
    // Into the logs, on the disk when it returns, and into the report.
    void RecordRow(const RowEnd& row);
    // A row that an earlier part of this run has dealt with, into the report.
    void ReportEarlierRow(const EarlierRow& row);
    // A failure that is no attempt's; `path` may be empty.
    void RecordError(std::string_view path, std::string_view printer, std::string_view error);
    bool HasTarget(const PrintedRow& row, PrintEnd end) const;
    // A row that an earlier part of this run has dealt with, for the job file that brought it.
    void NoteJobFile(const PrintedRow& row, PrintEnd end);
    // Moves, copies or deletes the row's file, and tells what failed: `failure` is "not moved: it is in use".
    // After RecordRow. May pump.
    RowHandled HandleFile(const PrintedRow& row, PrintEnd end, std::string& failure);
    // The notice that a print has failed. May pump.
    void TellFailure(std::string_view path, std::string_view status);
    // Nothing could start: logs, reports and a notice say why. Instead of EndRun. May pump.
    void EndRefusedRun(PrintList& list, int passes, std::string_view reason);
    // Job files, reports, the notice that the run has finished. May pump.
    void EndRun(PrintList& list, int passes, bool wasStopped);
    // Whether something could not be written into the logs or the report since the last call.
    bool TakeLostRecords() { return std::exchange(m_hasLostRecords, false); }

private:
    void ReportRow(const RowEnd& row);
    void ReportFilingFailure(const std::string& path, const std::string& failure);
    void WriteReports(bool wasStopped);
    void TellFailedErrorLog();
    void NoteWriting(int result);

    RunOutcomeServices m_services;
    RunReport m_report;
    std::string m_reportPath;   // of this run's report; empty: none
    long long m_startedAt = 0;  // of the run, the loop's milliseconds
    LocalTime m_rowStartedAt;
    long long m_rowStart = 0;  // the loop's milliseconds
    bool m_errorLogFailed = false;
    bool m_hasLostRecords = false;
};

}  // namespace quirepress
