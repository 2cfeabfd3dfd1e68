#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "logs/document_stamp.h"
#include "logs/log_index.h"
#include "settings/log_options.h"
#include "settings/settings_file.h"

namespace quirepress {

class Clock;
class DebugLog;

enum class HandledBy {
    kNothing,   // a new file
    kPrintLog,  // printed before
    kErrorLog   // failed before, and is not tried again
};

// Keeps files from being printed a second time: a file counts as handled when the print log has a record with
// its size, name and times (as far as printlogcheck.ini wants them compared), or the error log its name.
class DuplicateCheck {
public:
    // Answers the MONCHECK_LOG of a monitored folder; its files are compared only when that is "1".
    using FolderSetting = std::function<std::string(int folder)>;

    DuplicateCheck(Clock& clock, DebugLog& debugLog, const SettingsPlace& place, FolderSetting folderSetting);

    // Many files in one go, against the logs as they were when it began. While it lives nothing is pumped,
    // and the logs are held open.
    class Pass {
    public:
        explicit Pass(DuplicateCheck& check);
        ~Pass();
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

        HandledBy Check(std::string_view path);
        HandledBy Check(const DocumentStamp& stamp);

    private:
        DuplicateCheck& m_check;
    };

    // One file, which lies in a monitored folder, or in none (-1).
    HandledBy CheckPrintLog(std::string_view path, int folder);
    bool AppliesTo(int folder) const;

private:
    void Refresh();

    Clock& m_clock;
    DebugLog& m_debugLog;
    SettingsPlace m_place;
    FolderSetting m_folderSetting;
    LogCheckOptions m_options;
    LogIndex m_printed;
    LogIndex m_failed;
};

}  // namespace quirepress
