#include "logs/duplicate_check.h"

#include <utility>

#include "base/credentials.h"
#include "logs/debug_log.h"
#include "logs/error_log.h"
#include "logs/print_log.h"

namespace quirepress {

namespace {

constexpr const char* kFolderChecksLog = "1";

// What a record has in a column that is not compared. The last byte of the modified time's column is
// compared nevertheless.
KeyColumns PrintKeyColumns(const LogCheckOptions& options) {
    KeyColumns columns{kPrintRecordKeyStart, kPrintRecordKeyWidth, {}};
    if (!options.m_compareName) columns.blanks.push_back({32, std::string(160, ' ')});
    if (!options.m_compareSize) columns.blanks.push_back({23, "0       "});
    if (!options.m_compareCreated) columns.blanks.push_back({193, std::string(22, ' ')});
    if (!options.m_compareModified) columns.blanks.push_back({216, std::string(21, ' ')});
    return columns;
}

const RecordLayout& SourceColumn() {
    static const RecordLayout layout = {{ErrorRecordLayout().columns[kErrorSourceColumn]}};
    return layout;
}

KeyColumns ErrorKeyColumns() {
    const RecordColumn& column = SourceColumn().columns.front();
    return {column.start, column.width, {}};
}

// Empty when the name is wider than its column, which no look at the column finds.
std::string ErrorRecordKey(const std::string& path) {
    const RecordColumn& column = SourceColumn().columns.front();
    if (HideCredentials(path).size() > column.width) return {};  // as it is written
    return FormatRecord(SourceColumn(), {path}).substr(column.start, column.width);
}

}  // namespace

DuplicateCheck::DuplicateCheck(Clock& clock, DebugLog& debugLog, const SettingsPlace& place,
                               FolderSetting folderSetting)
    : m_clock(clock),
      m_debugLog(debugLog),
      m_place(place),
      m_folderSetting(std::move(folderSetting)),
      m_printed(place.files, place.workingFolder + kPrintLogName),
      m_failed(place.files, place.workingFolder + kErrorLogName) {}

bool DuplicateCheck::AppliesTo(int folder) const {
    return folder < 0 || m_folderSetting(folder) == kFolderChecksLog;
}

HandledBy DuplicateCheck::CheckPrintLog(std::string_view path, int folder) {
    if (!AppliesTo(folder)) return HandledBy::kNothing;
    Pass pass(*this);
    return pass.Check(path);
}

void DuplicateCheck::Refresh() {
    LoadLogCheckOptions(m_options, m_place);
    if (!m_printed.Refresh(PrintKeyColumns(m_options))) m_debugLog.Trace("Can't read print.log whole\r\n");
    if (!m_failed.Refresh(ErrorKeyColumns())) m_debugLog.Trace("Can't read error.log whole\r\n");
}

DuplicateCheck::Pass::Pass(DuplicateCheck& check) : m_check(check) {
    m_check.Refresh();
}

DuplicateCheck::Pass::~Pass() {
    // A log that is held open cannot be replaced on every system.
    m_check.m_printed.CloseLog();
    m_check.m_failed.CloseLog();
}

HandledBy DuplicateCheck::Pass::Check(std::string_view path) {
    return Check(StampDocument(path, m_check.m_place.files.Inspect(path), m_check.m_clock));
}

HandledBy DuplicateCheck::Pass::Check(const DocumentStamp& stamp) {
    DocumentStamp compared = stamp;
    if (!m_check.m_options.m_compareName) compared.path.clear();
    if (!m_check.m_options.m_compareSize) compared.size = 0;
    if (!m_check.m_options.m_compareCreated) compared.created.clear();
    if (!m_check.m_options.m_compareModified) compared.written.clear();
    if (m_check.m_printed.HasLine(PrintRecordKey(compared))) {
        m_check.m_debugLog.Trace("2 matched log!, so won't print!\r\n");
        return HandledBy::kPrintLog;
    }
    const std::string key = ErrorRecordKey(stamp.path);
    return !key.empty() && m_check.m_failed.HasLine(key) ? HandledBy::kErrorLog : HandledBy::kNothing;
}

}  // namespace quirepress
