#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/spooler.h"

namespace quirepress {

class CandidateNames;
class DebugLog;
class DocumentWindows;
class Files;
class Prompts;
struct GeneralOptions;

// What one scan of a queue says about the job of an item.
namespace queue_verdict {
constexpr int kNoJob = -1,  // no job of the item is listed
    kOther = 0,             // it waits, or something is wrong with it
    kSpooling = 1, kPrinted = 2, kPrinting = 3, kDeleting = 9;
}

// The verdict on a job's status, compared as a whole value.
int VerdictOnStatus(std::uint32_t statusBits);

// The jobs that are still to be printed.
int CountWaitingJobs(const std::vector<JobInfo>& jobs);

struct WatchedItem {
    std::string path;
    std::int64_t jobId = 0;     // as the print system gave it; 0: the job is known by its document name alone
    std::int64_t afterJob = 0;  // by name: jobs up to this number are older than the item
    bool overToo = false;       // where no newer one is in the queue, one that has left it counts, too
};

struct QueueScan {
    int verdict = queue_verdict::kNoJob;
    bool listed = false;  // false: the queue could not be read, and nothing is known of the item
    bool found = false;   // the item's job is `job`
    bool isOld = false;   // it is one that was there before the item, and there is no newer one
    bool isOver = false;  // it has left the queue
    // A job of the queue is held back because the print system could not get it to the printer.
    bool isHeldBack = false;
    JobInfo job;
};

// Looks for the jobs of items in the queues of printers. Nothing is held between two scans.
class QueueWatch {
public:
    QueueWatch(Spooler& spooler, Files& files, Prompts& prompts, DebugLog& debugLog,
               const GeneralOptions& options);

    // Called with each job that a scan finds; none by default.
    void UseJobCallback(std::function<void(const JobInfo&)> callback) { m_jobCallback = std::move(callback); }
    // Asked what the queue does not tell; null: nobody is asked.
    void UseDocumentWindows(DocumentWindows* windows) { m_windows = windows; }

    // One scan. Of several jobs of the item the one listed last counts. Gives the job the run's priority.
    // May pump: the arguments are to be the caller's own.
    QueueScan ListJobsForPrinter(const std::string& printer, const WatchedItem& item);
    // The highest number of a job of the printer; 0 when there is none, -1 when it cannot be told. May pump.
    std::int64_t LastJob(const std::string& printer) { return m_spooler.LastJob(printer); }
    // Silent when it fails. May pump.
    void SetJobPriority(std::string_view printer, std::int64_t id, int priority);
    // Whether its own status says that somebody must see to it: offline, out of paper, jammed and so on, or
    // paused, unless it was that when the run began. May pump.
    bool PrinterWantsAttention(const std::string& printer);
    // Jobs that are still to be printed; -1 when the queue cannot be read. May pump.
    int QueueCount(std::string_view printer);

    // Of the last job that a scan found since the last call of ForgetPages; 0: not known.
    int TotalPages() const { return m_totalPages; }
    void ForgetPages() { m_totalPages = 0; }

    // To be called once for each run, before it prints. May pump.
    void BeginRun();
    // Of the row at work: goes before that of the options. 0: it has none.
    void UseRowPriority(int priority) { m_rowPriority = priority; }
    // Of the jobs of this run, 1 to 99; 0: as the print system likes.
    int RunPriority() const;

private:
    std::vector<JobInfo>::iterator FindJob(std::vector<JobInfo>& jobs, const WatchedItem& item);
    void FindOverJob(const std::string& printer, const WatchedItem& item, QueueScan& scan);
    void NoteJob(const JobInfo& job);
    void JudgeJob(const std::string& printer, const std::string& path, std::uint32_t firstStatus,
                  QueueScan& scan);
    bool ViewerShows(const std::string& path);
    bool WordProcessorSpools(const std::string& path);

    Spooler& m_spooler;
    Files& m_files;
    Prompts& m_prompts;
    DebugLog& m_debugLog;
    const GeneralOptions& m_options;
    std::function<void(const JobInfo&)> m_jobCallback;
    DocumentWindows* m_windows = nullptr;
    std::set<std::string> m_pausedBefore;  // printers that somebody had paused before the run
    int m_totalPages = 0;
    int m_rowPriority = 0;
    int m_decreasingRuns = 0;  // begun one after the other while the priority was to decrease
};

}  // namespace quirepress
