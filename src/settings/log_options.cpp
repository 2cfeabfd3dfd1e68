#include "settings/log_options.h"

#include "settings/keyword_file.h"

namespace quirepress {

const KeywordTable<LogOptions>& LogKeywords() {
    static const KeywordTable<LogOptions> table(
        {"log_setup.ini", "Can't save to log_setup.ini file."},
        {
            Flag("NOLONGER", &LogOptions::m_removeMissing,
                 "Remove from the print log the records of files that no longer exist."),
            Flag("KEEPLOGS", &LogOptions::m_keepRemoved,
                 "Keep removed records in dated files in the folder Logs."),
            Flag("CLEAROLDER", &LogOptions::m_removeOld, "Remove records that are older than OLDEREVERY."),
            Number("EVERY", &LogOptions::m_every,
                   "Time between two removals of records of missing files, in units of EVERYCTRL."),
            Number("OLDEREVERY", &LogOptions::m_olderThan,
                   "Age from which CLEAROLDER removes records, in units of OLDEREVERYCTRL; at least 1."),
            Number("EVERYCTRL", &LogOptions::m_everyUnit,
                   "Unit of EVERY: 0 minutes, 1 hours, 2 days, 3 months, 4 years."),
            Number("OLDEREVERYCTRL", &LogOptions::m_olderThanUnit,
                   "Unit of OLDEREVERY: 0 days, 1 months, 2 years."),
            Flag("RUNSTARTUP", &LogOptions::m_runAtStart, "Clean up when the program starts."),
            Flag("RUNMONITOR", &LogOptions::m_runWhileMonitoring,
                 "Clean up again and again while the program runs."),
        });
    return table;
}

int LoadLogOptions(LogOptions& options, const SettingsPlace& place) {
    return LoadSettings(LogKeywords(), place, options);
}

int SaveLogOptions(const LogOptions& options, const SettingsPlace& place) {
    return SaveSettings(LogKeywords(), place, options);
}

const KeywordTable<LogCheckOptions>& LogCheckKeywords() {
    static const KeywordTable<LogCheckOptions> table(
        {kLogCheckFileName, "Can't open printlogcheck.ini file."},
        {
            NegativeFlag("NOFILENAME", &LogCheckOptions::m_compareName,
                         "Don't compare the file name when looking whether a file was printed before."),
            NegativeFlag("NOFILESIZE", &LogCheckOptions::m_compareSize, "Don't compare the file size."),
            NegativeFlag("NOCREATEDDATE", &LogCheckOptions::m_compareCreated,
                         "Don't compare the time of creation."),
            NegativeFlag("NOMODIFIEDDATE", &LogCheckOptions::m_compareModified,
                         "Don't compare the time of the last change."),
        });
    return table;
}

int LoadLogCheckOptions(LogCheckOptions& options, const SettingsPlace& place) {
    return LoadSettings(LogCheckKeywords(), place, options);
}

int SaveLogCheckOptions(const LogCheckOptions& options, const SettingsPlace& place) {
    return SaveSettings(LogCheckKeywords(), place, options);
}

}  // namespace quirepress
