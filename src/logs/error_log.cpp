#include "logs/error_log.h"

#include <utility>

#include "base/format.h"
#include "platform/clock.h"

namespace quirepress {

const RecordLayout& ErrorRecordLayout() {
    static const RecordLayout layout = {{
        {"Date", 0, 20},
        {"Time", 20, 20},
        {"From Filename", 40, 200},
        {"To Filename", 240, 200},
        {"Error Type", 440, 200},
        {"Printer", 640, 100},
    }};
    return layout;
}

ErrorLog::ErrorLog(Files& files, Clock& clock, std::string path)
    : m_files(files), m_clock(clock), m_path(std::move(path)) {}

int ErrorLog::Append(const ErrorRecord& record) {
    const LocalTime now = m_clock.ToLocal(m_clock.Now());
    const std::string date = Format("%.4d-%.2d-%.2d", now.year, now.month, now.day);
    const std::string time = Format("%.2d:%.2d:%.2d", now.hour, now.minute, now.second);
    return AppendRecord(m_files, m_path,
                        FormatRecord(ErrorRecordLayout(), {date, time, record.source, record.destination,
                                                           record.error, record.printer}));
}

}  // namespace quirepress
