#include "logs/hang_log.h"

#include <algorithm>
#include <utility>

#include "base/date_time.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace quirepress {

// "%-22s\t%-20s\t%d\t%s\r\n"
const RecordLayout& HangRecordLayout() {
    static const RecordLayout layout = {
        {{"Time", 0, 22}, {"Process", 23, 20}, {"Code", 44, 3}, {"Filename", 48, 0}}};
    return layout;
}

HangLog::HangLog(Files& files, Clock& clock, std::string path)
    : m_files(files), m_clock(clock), m_path(std::move(path)) {}

int HangLog::Append(std::string_view image, int code, std::string_view file) {
    const std::string time = FormatDateTime(m_clock.ToLocal(m_clock.Now()));
    return AppendRecord(m_files, m_path,
                        FormatRecord(HangRecordLayout(),
                                     {time, std::string(image), std::to_string(code), std::string(file)}));
}

int HangLog::CountHangs(std::string_view file) {
    std::vector<std::vector<std::string>> records;
    if (ReadRecords(m_files, m_path, HangRecordLayout(), records) != 0)
        return m_files.Inspect(m_path).kind == FileKind::kMissing ? 0 : -1;
    // The name as a record holds it.
    std::string line = FormatRecord(HangRecordLayout(), {"", "", "", std::string(file)});
    line.resize(line.size() - kRecordEnd.size());
    const std::string name = CutRecord(HangRecordLayout(), line).back();
    return static_cast<int>(
        std::count_if(records.begin(), records.end(),
                      [&](const std::vector<std::string>& record) { return record.back() == name; }));
}

}  // namespace quirepress
