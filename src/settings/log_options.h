#pragma once

#include <cstdint>

#include "settings/keyword_table.h"

namespace quirepress {

// When the print log is cleaned up, kept in log_setup.ini.
struct LogOptions {
    bool m_removeMissing = false;
    bool m_keepRemoved = false;
    bool m_removeOld = false;
    std::int32_t m_every = 1;
    std::int32_t m_olderThan = 1;
    std::int32_t m_everyUnit = 0;      // minutes, hours, days, months, years
    std::int32_t m_olderThanUnit = 0;  // days, months, years
    bool m_runAtStart = false;
    bool m_runWhileMonitoring = false;
};

const KeywordTable<LogOptions>& LogKeywords();

int LoadLogOptions(LogOptions& options, const SettingsPlace& place);
int SaveLogOptions(const LogOptions& options, const SettingsPlace& place);

// What the duplicate check compares, kept in printlogcheck.ini. The file's other content, the time of the
// last clean-up, goes when it is saved, and saving that time drops these.
struct LogCheckOptions {
    bool m_compareName = true;
    bool m_compareSize = true;
    bool m_compareCreated = true;
    bool m_compareModified = true;

    friend bool operator==(const LogCheckOptions&, const LogCheckOptions&) = default;
};

constexpr const char* kLogCheckFileName = "printlogcheck.ini";

const KeywordTable<LogCheckOptions>& LogCheckKeywords();

int LoadLogCheckOptions(LogCheckOptions& options, const SettingsPlace& place);
int SaveLogCheckOptions(const LogCheckOptions& options, const SettingsPlace& place);

}  // namespace quirepress
