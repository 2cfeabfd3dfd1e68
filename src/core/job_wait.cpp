#include "core/job_wait.h"

#include <algorithm>

#include "core/print_run_ways.h"
#include "logs/debug_log.h"
#include "platform/event_loop.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

constexpr int kPollMilliseconds = 250;
constexpr int kMillisecondsInTenth = 100;
// Longer than any printer is given to answer when it is offered a job.
constexpr long long kFirstTryLimit = 90'000;

constexpr std::uint32_t kInTrouble = job_status::kError | job_status::kOffline | job_status::kPaperOut |
                                     job_status::kBlocked | job_status::kUserIntervention;

bool HasMoved(const JobInfo& before, const JobInfo& now) {
    return before.size != now.size || before.totalPages != now.totalPages ||
           before.pagesPrinted != now.pagesPrinted || before.statusBits != now.statusBits;
}

}  // namespace

void JobWait::ForAcceptedJob(const std::string& printer, const std::string& path, std::int64_t jobId,
                             WayFeedback& feedback) {
    const bool mayHold = m_options.m_waitForPrinter || m_options.m_showPrinterAttention;
    if (m_options.m_dontCheckSpoolerForPrint || jobId <= 0 || !mayHold) return;
    m_isHeldBack = false;
    const long long triedAt = m_loop.MonotonicMilliseconds() + kFirstTryLimit;
    int pause = 1;  // most printers have the first try behind them at once
    for (;;) {
        const QueueScan scan = m_watch.ListJobsForPrinter(printer, {path, jobId});
        const bool isUntried = m_options.m_waitForPrinter && scan.found && scan.job.isUntried &&
                               m_loop.MonotonicMilliseconds() < triedAt;
        if ((!isUntried && !IsHeld(printer, scan)) || feedback.IsStopped()) return;
        feedback.ShowRowStatus("Spooling");
        m_loop.Wait(pause);
        pause = std::min(2 * pause, kPollMilliseconds);
    }
}

bool JobWait::IsHeld(const std::string& printer, const QueueScan& scan) {
    if (!scan.found || scan.isOver || scan.job.isOfUnknownOutcome) return false;
    // The verdict of a job that does not spool is that of spooling only for the sake of the printer.
    const bool wantsAttention = scan.verdict == queue_verdict::kSpooling &&
                                VerdictOnStatus(scan.job.statusBits) != queue_verdict::kSpooling;
    if (wantsAttention || !m_options.m_waitForPrinter) return wantsAttention;
    // It tries again from time to time, which is no sign of health until the job is out; a job that somebody
    // holds is his.
    constexpr std::uint32_t kHeldBack = job_status::kPaused | job_status::kError;
    m_isHeldBack = m_isHeldBack || scan.isHeldBack;
    if (m_isHeldBack && (scan.job.statusBits & kHeldBack) != job_status::kPaused) return true;
    return (scan.job.statusBits & kInTrouble) != 0 || m_watch.PrinterWantsAttention(printer);
}

int JobWait::Allowance() const {
    return m_options.m_timeAllow + m_options.m_printerChangeDelay * kMillisecondsInTenth;
}

JobWait::End JobWait::ForForeignJob(const std::string& printer, const std::string& path,
                                    WayFeedback& feedback) {
    if (m_options.m_dontCheckSpoolerForPrint) return End::kSpooled;
    m_isHeldBack = false;
    m_debugLog.Trace("Time Allowance: %d\r\n", m_options.m_timeAllow);
    m_debugLog.Trace("Extra Time Allowance: %d\r\n", m_options.m_printerChangeDelay * kMillisecondsInTenth);
    QueueScan scan;
    End end = AwaitListing(printer, path, feedback, scan);
    if (end == End::kSpooled) end = AwaitSpooling(printer, path, feedback, scan);
    if (end == End::kSpooled && IsLost(scan)) end = End::kLost;
    m_debugLog.Trace("Print Finished or Started status:%d, didspool=%d\r\n", scan.verdict,
                     end == End::kSpooled);
    return end;
}

JobWait::End JobWait::AwaitListing(const std::string& printer, const std::string& path, WayFeedback& feedback,
                                   QueueScan& scan) {
    feedback.ShowRowStatus("Running");
    const long long deadline = m_loop.MonotonicMilliseconds() + Allowance();
    // Jobs of the days before prove nothing.
    const bool knowsLast = m_lastBefore >= 0;
    bool isRepeated = false;
    for (int z = 0;; ++z) {
        m_debugLog.Trace("Wait for spooling to start Loop z=%d\r\n", z);
        scan = m_watch.ListJobsForPrinter(printer, {path, 0, m_lastBefore, knowsLast});
        if (scan.found && scan.isOld) {
            isRepeated = true;
            m_debugLog.Trace("Still spooling previous prev status=%d\r\n", scan.verdict);
        }
        if (scan.found && !scan.isOld) {
            if (isRepeated)
                m_debugLog.Trace("Ready to spool next with same name: prev status=%d\r\n", scan.verdict);
            return End::kSpooled;
        }
        if (m_loop.MonotonicMilliseconds() >= deadline) break;
        if (feedback.IsStopped()) return End::kStopped;
        m_loop.Wait(kPollMilliseconds);
    }
    m_debugLog.Trace("end wait timeout ended for start Loop - ListJobsForPrinter returned %d\r\n",
                     scan.verdict);
    return End::kNotSeen;
}

bool JobWait::IsLost(const QueueScan& scan) {
    m_loss.clear();
    if (!scan.isOver || (scan.job.statusBits & job_status::kPrinted) != 0) return false;
    const bool isCancelled = (scan.job.statusBits & job_status::kDeleted) != 0;
    m_loss = isCancelled ? "its job was cancelled" : "the print system gave its job up";
    if (!scan.job.statusText.empty()) m_loss += ": " + scan.job.statusText;
    return true;
}

// A job that is still being written has its time anew whenever it moves; one that has left the queue was
// printed, where nobody knows better.
JobWait::End JobWait::AwaitSpooling(const std::string& printer, const std::string& path,
                                    WayFeedback& feedback, QueueScan& scan) {
    const WatchedItem item{path, scan.job.id, 0, true};
    long long deadline = m_loop.MonotonicMilliseconds() + Allowance();
    for (int z = 0; scan.verdict == queue_verdict::kSpooling || IsHeld(printer, scan); ++z) {
        m_debugLog.Trace("Wait for start Loop z=%d\r\n", z);
        feedback.ShowRowStatus("Spooling");
        // What only waits for its printer is there as a whole.
        if (feedback.IsStopped()) return IsHeld(printer, scan) ? End::kSpooled : End::kBegun;
        if (!IsHeld(printer, scan) && m_loop.MonotonicMilliseconds() >= deadline) return End::kNotSeen;
        m_loop.Wait(kPollMilliseconds);
        const JobInfo before = scan.job;
        QueueScan next = m_watch.ListJobsForPrinter(printer, item);
        // A print system that does not answer any more must not hold the run for ever.
        if (!next.listed && m_loop.MonotonicMilliseconds() >= deadline) return End::kNotSeen;
        if (!next.listed) continue;
        scan = std::move(next);
        if (HasMoved(before, scan.job) || IsHeld(printer, scan))
            deadline = m_loop.MonotonicMilliseconds() + Allowance();
    }
    return End::kSpooled;
}

}  // namespace quirepress
