#include "logs/hang_log.h"

#include <memory>
#include <utility>

#include "base/format.h"
#include "base/text.h"
#include "logs/fixed_record.h"
#include "logs/log_lines.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace quirepress {

namespace {

// The file's name ends its line.
std::string OneLine(std::string_view file) {
    std::string name(file);
    for (char& c : name)
        if (c == '\r' || c == '\n' || c == '\0') c = ' ';
    return name;
}

// The texts between the tabs; the last field may hold tabs itself.
std::vector<std::string> CutHang(std::string_view line) {
    std::vector<std::string> fields;
    while (fields.size() + 1 < kHangLogTitles.size()) {
        const std::size_t end = line.find('\t');
        fields.emplace_back(TrimTrailingBlanks(line.substr(0, end)));
        line.remove_prefix(end == std::string_view::npos ? line.size() : end + 1);
    }
    fields.emplace_back(line);
    return fields;
}

}  // namespace

HangLog::HangLog(Files& files, Clock& clock, std::string path)
    : m_files(files), m_clock(clock), m_path(std::move(path)) {}

int HangLog::Append(std::string_view image, int code, std::string_view file) {
    const std::string time = FormatDateTime(m_clock.ToLocal(m_clock.Now()));
    return AppendRecord(m_files, m_path,
                        Format("%-22s\t%-20s\t%d\t%s\r\n", time, image, code, OneLine(file)));
}

int HangLog::CountHangs(std::string_view file) {
    std::vector<std::vector<std::string>> records;
    if (ReadHangs(records) != 0) return m_files.Inspect(m_path).kind == FileKind::kMissing ? 0 : -1;
    const std::string name = OneLine(file);
    int hangs = 0;
    for (const std::vector<std::string>& record : records) hangs += record.back() == name ? 1 : 0;
    return hangs;
}

int HangLog::ReadHangs(std::vector<std::vector<std::string>>& records) {
    FileResult result = FileResult::kFailed;
    const std::unique_ptr<InputFile> file = m_files.OpenForReading(m_path, result);
    if (!file) return -1;
    LogLines lines(*file);
    for (std::string_view line; lines.TakeLine(line);)
        if (!line.empty()) records.push_back(CutHang(line));
    return lines.HasFailed() ? -1 : 0;
}

}  // namespace quirepress
