#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "backends/queue_watch.h"

namespace quirepress {

class DebugLog;
class EventLoop;
class WayFeedback;
struct GeneralOptions;

// Waits for the job of a row in its printer's queue, as long as the options say.
class JobWait {
public:
    // kStopped: before its job was seen; kBegun: while it was still being spooled.
    enum class End { kSpooled, kNotSeen, kStopped, kBegun, kLost };

    JobWait(QueueWatch& watch, EventLoop& loop, DebugLog& debugLog, const GeneralOptions& options)
        : m_watch(watch), m_loop(loop), m_debugLog(debugLog), m_options(options) {}

    // The print system has the job; what is left is a printer that wants attention, where the options make
    // the run wait for it. With WAITFORPRINTER a job that this program delivers by itself is awaited until
    // its printer has taken some of it, or has shown what is wrong. A stop ends this wait and is no failure.
    // May pump.
    void ForAcceptedJob(const std::string& printer, const std::string& path, std::int64_t jobId,
                        WayFeedback& feedback);

    // To be called before another program is asked to print: what is in the queue then proves nothing.
    void BeginForeignJob(const std::string& printer) { m_lastBefore = m_watch.LastJob(printer); }
    // Another program was asked to print the file: its job is proof that it did, even one that is printed
    // already; kLost: there was one, and it was cancelled or given up. May pump.
    End ForForeignJob(const std::string& printer, const std::string& path, WayFeedback& feedback);

    // Why the job that was waited for last was lost, a sentence part.
    const std::string& Loss() const { return m_loss; }

private:
    bool IsHeld(const std::string& printer, const QueueScan& scan);
    bool IsLost(const QueueScan& scan);
    End AwaitListing(const std::string& printer, const std::string& path, WayFeedback& feedback,
                     QueueScan& scan);
    End AwaitSpooling(const std::string& printer, const std::string& path, WayFeedback& feedback,
                      QueueScan& scan);
    int Allowance() const;  // milliseconds

    QueueWatch& m_watch;
    EventLoop& m_loop;
    DebugLog& m_debugLog;
    const GeneralOptions& m_options;
    std::int64_t m_lastBefore = 0;  // the last job that was there before; -1: not known
    std::string m_loss;
    bool m_isHeldBack = false;  // the print system failed to reach the printer while the job waited
};

}  // namespace quirepress
