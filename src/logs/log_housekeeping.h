#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "base/date_time.h"
#include "settings/log_options.h"

namespace quirepress {

class Clock;
class DebugLog;
class EventLoop;

// Seconds since the start of 2000 with 365 days in every year, in 32 bits that wrap: good for comparisons
// with each other only.
std::int32_t ApproximateTimeStamp(const LocalTime& time);

struct LogCleanup {
    std::int64_t missing = 0;  // records removed because their file is gone
    std::int64_t old = 0;      // because of their age
    bool hasFailed = false;    // a file could not be opened, read or written: its sweep changed nothing
};

// Keeps the print log small, as log_setup.ini says: removes the records of files that can no longer be opened
// once in a while, and those beyond an age each time. Removed records go to "Logs/print-DATE TIME.log" when
// they are to be kept.
class LogHousekeeping {
public:
    LogHousekeeping(Clock& clock, EventLoop& loop, DebugLog& debugLog, const SettingsPlace& place);

    // Forced: without asking whether it is time. May pump; called again meanwhile it does nothing.
    LogCleanup RunLogHousekeeping(const LogOptions& options, bool isForced);

    // Whether it is time to look for missing files; when it is, the time is noted as the last one. Noting
    // drops the switches of the duplicate check, which lie in the same file.
    bool IsDue(const LogOptions& options);

private:
    std::int64_t SweepMissing(const LogOptions& options, bool& hasFailed);
    std::int64_t SweepOld(const LogOptions& options, bool& hasFailed);
    std::int64_t Sweep(const LogOptions& options, const std::function<bool(std::string_view)>& isRemoved,
                       bool& hasFailed);
    LocalTime Now();
    bool ReadStamp(std::string& line);
    void WriteStamp(const LocalTime& now);

    Clock& m_clock;
    EventLoop& m_loop;
    DebugLog& m_debugLog;
    SettingsPlace m_place;
    bool m_isRunning = false;
};

}  // namespace quirepress
