#include "backends/queue_watch.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "backends/candidate_names.h"
#include "backends/document_windows.h"
#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "logs/debug_log.h"
#include "platform/files.h"
#include "platform/prompts.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

namespace status = job_status;

constexpr int kHighestPriority = 99;

// Status bits with which a printer, or the first job of its queue, tells that it wants to be looked after.
constexpr std::uint32_t kAttentionBits = 0x6418da;

struct StatusVerdict {
    std::uint32_t statusBits;
    int verdict;
};

constexpr std::array<StatusVerdict, 9> kVerdicts = {{
    {status::kDeleting, queue_verdict::kDeleting},
    {status::kPrinted, queue_verdict::kPrinted},
    {status::kPrinting, queue_verdict::kPrinting},
    {0, queue_verdict::kPrinting},
    {status::kPrinting | status::kError, queue_verdict::kPrinting},
    {status::kPrinting | status::kDeleting, queue_verdict::kPrinting},
    {status::kSpooling, queue_verdict::kSpooling},
    {status::kSpooling | status::kPrinting, queue_verdict::kSpooling},
    {status::kRetained | status::kPrinting, queue_verdict::kSpooling},
}};

bool IsWordDocument(std::string_view path) {
    const std::string ending = ToLowerAscii(FileExtension(path));
    return ending == ".doc" || ending == ".docx" || ending == ".rtf";
}

}  // namespace

int VerdictOnStatus(std::uint32_t statusBits) {
    for (const StatusVerdict& row : kVerdicts)
        if (row.statusBits == statusBits) return row.verdict;
    return queue_verdict::kOther;
}

int CountWaitingJobs(const std::vector<JobInfo>& jobs) {
    // Some systems keep jobs in the list that take no more of the printer's time.
    constexpr std::uint32_t kOver = status::kPrinted | status::kDeleted | status::kComplete;
    return static_cast<int>(std::count_if(jobs.begin(), jobs.end(), [](const JobInfo& job) {
        return (job.statusBits & kOver) == 0 && !job.isOfUnknownOutcome;
    }));
}

QueueWatch::QueueWatch(Spooler& spooler, Files& files, Prompts& prompts, DebugLog& debugLog,
                       const GeneralOptions& options)
    : m_spooler(spooler), m_files(files), m_prompts(prompts), m_debugLog(debugLog), m_options(options) {}

QueueScan QueueWatch::ListJobsForPrinter(const std::string& printer, const WatchedItem& item) {
    m_debugLog.Trace("ListJobsForPrinter: %s, file: %s filetitle: %s\r\n", printer, item.path,
                     FileTitle(item.path));
    m_prompts.ShowStatus("Scanning spooler queue:  for file: " + item.path);
    QueueScan scan;
    std::vector<JobInfo> jobs;
    scan.listed = m_spooler.ListJobs(printer, jobs) == 0;
    if (!scan.listed) {
        m_debugLog.Trace("Invalid Handle Printer Name\n");
        return scan;
    }
    m_debugLog.Trace("Close Printer\n");
    m_debugLog.Trace("%d jobs\r\n", jobs.size());
    if (jobs.empty()) m_debugLog.Trace("ListJobsForPrinter -1 no jobs for printer: %s\r\n", printer);
    constexpr std::uint32_t kHeldBack = status::kPaused | status::kError;
    scan.isHeldBack = std::any_of(jobs.begin(), jobs.end(), [](const JobInfo& each) {
        return (each.statusBits & kHeldBack) == kHeldBack;
    });
    const auto job = jobs.empty() ? jobs.end() : FindJob(jobs, item);
    scan.found = job != jobs.end();
    if (scan.found) {
        const std::uint32_t firstStatus = jobs.front().statusBits;
        scan.isOld = item.jobId == 0 && job->id <= item.afterJob;
        scan.job = std::move(*job);
        JudgeJob(printer, item.path, firstStatus, scan);
    }
    if (item.overToo && (!scan.found || scan.isOld)) FindOverJob(printer, item, scan);
    const bool mayBeOpen = !jobs.empty() && !scan.isOver;
    if (mayBeOpen && scan.verdict != queue_verdict::kSpooling && WordProcessorSpools(item.path))
        scan.verdict = queue_verdict::kSpooling;
    return scan;
}

// A job that has left the queue between two scans.
void QueueWatch::FindOverJob(const std::string& printer, const WatchedItem& item, QueueScan& scan) {
    std::vector<JobInfo> jobs;
    const std::int64_t after = item.jobId != 0 ? item.jobId - 1 : item.afterJob;
    if (m_spooler.ListOverJobs(printer, after, jobs) != 0) return;
    const auto job = FindJob(jobs, item);
    if (job == jobs.end()) return;
    scan.found = scan.isOver = true;
    scan.isOld = false;
    scan.job = std::move(*job);
    NoteJob(scan.job);
    scan.verdict = VerdictOnStatus(scan.job.statusBits);
}

std::vector<JobInfo>::iterator QueueWatch::FindJob(std::vector<JobInfo>& jobs, const WatchedItem& item) {
    std::optional<CandidateNames> names;
    if (item.jobId == 0) {
        names.emplace(item.path, m_files.ShortPath(item.path));
        names->Trace(m_debugLog);
    }
    const auto isOfItem = [&](const JobInfo& job) {
        return names ? names->Matches(job.document) : job.id == item.jobId;
    };
    const std::string lowerPath = m_debugLog.IsOn() ? ToLowerAscii(item.path) : std::string();
    auto found = jobs.end();
    for (auto job = jobs.rbegin(); job != jobs.rend(); ++job) {
        m_debugLog.Trace("pJobInfo[i].pDocument :%s status: %d ??? = %s\r\n", job->document, job->statusBits,
                         job->statusText);
        if (isOfItem(*job)) {
            if (found == jobs.end()) found = std::prev(job.base());
            if (item.jobId != 0 || job->id > item.afterJob) return std::prev(job.base());
        }
        m_debugLog.Trace("didn't match!! - lwr_pfn: %s\r\n", lowerPath);
    }
    return found;
}

void QueueWatch::NoteJob(const JobInfo& job) {
    if (m_debugLog.IsOn()) {
        const LocalTime& time = job.submitted;
        m_debugLog.Trace(
            "[%d] [%s] total pages: [%ld] PagesPrinted:[%ld] status:[%ld] printTime:[%s] submitTime:[%s]\r\n",
            job.id, job.document, job.totalPages, job.pagesPrinted, job.statusBits,
            Format("%-4.4d%-2.2d%-2.2d", time.year, time.month, time.day),
            Format("%-2.2d%-2.2d%-2.2d", time.hour, time.minute, time.second));
    }
    if (m_jobCallback) m_jobCallback(job);
    if (job.totalPages > 0) m_totalPages = job.totalPages;
}

void QueueWatch::JudgeJob(const std::string& printer, const std::string& path, std::uint32_t firstStatus,
                          QueueScan& scan) {
    const JobInfo& job = scan.job;
    NoteJob(job);
    const int priority = RunPriority();
    if (priority != 0 && priority != job.priority) SetJobPriority(printer, job.id, priority);
    scan.verdict = VerdictOnStatus(job.statusBits);
    if (m_options.m_showPrinterAttention && (firstStatus & kAttentionBits) != 0) {
        m_debugLog.Trace("printer error showPrinterAttention status: %ld\r\n", firstStatus);
        scan.verdict = queue_verdict::kSpooling;
    } else if (ViewerShows(path)) {
        scan.verdict = queue_verdict::kSpooling;
    }
}

bool QueueWatch::ViewerShows(const std::string& path) {
    if (m_windows == nullptr || !EqualIgnoringAsciiCase(FileExtension(path), ".pdf")) return false;
    m_debugLog.Trace("looking for file in Acrobat window: %s\r\n", path);
    if (!m_windows->ViewerShows(path)) return false;
    m_debugLog.Trace("Matched file in Acrobat window: %s\r\n", path);
    return true;
}

bool QueueWatch::WordProcessorSpools(const std::string& path) {
    if (m_windows == nullptr || !IsWordDocument(path)) return false;
    m_debugLog.Trace("check for word doc, g_wordOpenDoc=true\n");
    switch (m_windows->AskWordProcessor(path)) {
        case DocumentWindows::WordAnswer::kNotSpooling:
            return false;
        case DocumentWindows::WordAnswer::kSpooling:
            m_prompts.ShowStatus("Still spoooling word doc!");
            m_debugLog.Trace("Still spoooling word doc!\r\n");
            return true;
        case DocumentWindows::WordAnswer::kNoProgram:
            m_debugLog.Trace("Word doc processing Exception caught!\r\n");
            return false;
        case DocumentWindows::WordAnswer::kNoDocument:
            break;
    }
    m_debugLog.Trace("Word doc processing Exception2 caught!\r\n");
    return false;
}

void QueueWatch::SetJobPriority(std::string_view printer, std::int64_t id, int priority) {
    m_prompts.ShowStatus("Setting print priority");
    m_spooler.ChangeJobPriority(printer, id, priority);
}

bool QueueWatch::PrinterWantsAttention(const std::string& printer) {
    std::vector<PrinterInfo> printers;
    m_spooler.ListPrinters(printers);
    const auto info = std::find_if(printers.begin(), printers.end(),
                                   [&](const PrinterInfo& each) { return each.name == printer; });
    if (info == printers.end()) return false;
    const bool isPaused = (info->statusBits & printer_status::kPaused) != 0;
    if (!isPaused) m_pausedBefore.erase(printer);
    const bool hasStopped = isPaused && m_pausedBefore.count(printer) == 0;
    if (!hasStopped && (info->statusBits & kAttentionBits) == 0) return false;
    m_prompts.ShowStatus("Waiting for printer: " + printer);
    return true;
}

int QueueWatch::QueueCount(std::string_view printer) {
    std::vector<JobInfo> jobs;
    return m_spooler.ListJobs(printer, jobs) == 0 ? CountWaitingJobs(jobs) : -1;
}

void QueueWatch::BeginRun() {
    m_decreasingRuns = m_options.m_decreasePrintPriority ? m_decreasingRuns % kHighestPriority + 1 : 0;
    m_pausedBefore.clear();
    if (!m_options.m_waitForPrinter) return;
    std::vector<PrinterInfo> printers;
    m_spooler.ListPrinters(printers);
    for (const PrinterInfo& info : printers)
        if ((info.statusBits & printer_status::kPaused) != 0) m_pausedBefore.insert(info.name);
}

int QueueWatch::RunPriority() const {
    if (m_rowPriority >= 1 && m_rowPriority <= kHighestPriority) return m_rowPriority;
    const int first = m_options.m_printPriority;
    if (first < 1 || first > kHighestPriority) return 0;
    // The first run has the priority of the options, each further one less; after 1 comes 99 again.
    const int less = std::max(m_decreasingRuns - 1, 0);
    return (first - 1 - less + kHighestPriority) % kHighestPriority + 1;
}

}  // namespace quirepress
