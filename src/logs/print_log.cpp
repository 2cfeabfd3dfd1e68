#include "logs/print_log.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "base/format.h"
#include "logs/debug_log.h"
#include "logs/log_pieces.h"
#include "platform/clock.h"
#include "platform/file_tools.h"
#include "platform/prompts.h"

namespace quirepress {

namespace {

constexpr std::size_t kKeyColumns = 5;
constexpr const char* kConvertErrorTitle = "Log File Convert Error";

// An old record is one byte longer than its columns: its line end, which counts as one.
constexpr std::size_t kOldRecordSize = 167;
constexpr std::size_t kOldLineLimit = 512;
constexpr std::size_t kWidenedAt = 111;

FileResult WriteConverted(InputFile& source, ReplacementFile& target) {
    LogPieces pieces(source, 0, kOldLineLimit);
    for (std::string_view piece; pieces.TakePiece(piece);) {
        const std::string_view line = WithoutLineEnd(piece);
        const std::string_view rest = line.substr(std::min(kWidenedAt, line.size()));
        const std::string record = Format("%.111s%-80s%s\r\n", line, "", rest);
        if (target.Write(record.data(), record.size()) != FileResult::kDone) return target.Result();
    }
    return pieces.HasFailed() ? FileResult::kFailed : target.Finish();
}

}  // namespace

const RecordLayout& PrintRecordLayout() {
    static const RecordLayout layout = {{
        {"Print at Time", 0, 22},
        {"File Bytes", 23, 8},
        {"Filename", 32, 160},
        {"Created Time", 193, 22},
        {"Modified Time", 216, 22},
        {"Pages", 238, 8},
        {"Printer Name", 247, 120, true},
    }};
    return layout;
}

std::string PrintRecordKey(const DocumentStamp& stamp) {
    static const RecordLayout layout = {
        {PrintRecordLayout().columns.begin(), PrintRecordLayout().columns.begin() + kKeyColumns}};
    std::string key = FormatRecord(
        layout, {std::string(), std::to_string(stamp.size), stamp.path, stamp.created, stamp.written});
    key.erase(key.size() - kRecordEnd.size());
    key.erase(0, kPrintRecordKeyStart);
    return key;
}

PrintLog::PrintLog(Files& files, Clock& clock, Prompts& prompts, DebugLog& debugLog, std::string path)
    : m_files(files), m_clock(clock), m_prompts(prompts), m_debugLog(debugLog), m_path(std::move(path)) {}

int PrintLog::WritePrintLogRecord(std::string_view document, int pages, std::string_view printer) {
    return Append(StampDocument(document, m_files.Inspect(document), m_clock), pages, printer);
}

int PrintLog::WriteLine(std::string_view text) {
    DocumentStamp stamp;
    stamp.path = text;
    return Append(stamp, 0, "");
}

int PrintLog::Append(const DocumentStamp& stamp, int pages, std::string_view printer) {
    const std::string now = FormatDateTime(m_clock.ToLocal(m_clock.Now()));
    bool isOpen = false;
    const FileResult result = WriteRecord(
        m_files, m_path,
        FormatRecord(PrintRecordLayout(), {now, std::to_string(stamp.size), stamp.path, stamp.created,
                                           stamp.written, std::to_string(pages), std::string(printer)}),
        isOpen);
    if (!isOpen && !m_isComplained) m_prompts.ShowBox(kLogErrorTitle, "Can't open print.log for append");
    m_isComplained = !isOpen;
    if (result == FileResult::kDone) return 0;
    if (isOpen) m_debugLog.Trace("Log error: %d\n", static_cast<int>(result));
    return -1;
}

bool PrintLog::IsOldLayout() {
    FileResult result = FileResult::kFailed;
    const std::unique_ptr<InputFile> file = m_files.OpenForReading(m_path, result);
    if (!file) return false;
    LogPieces pieces(*file, 0, kOldLineLimit);
    std::string_view line;
    if (!pieces.TakePiece(line)) return false;
    const std::size_t lineEnd = line.back() == '\n' ? 1 : 0;
    return WithoutLineEnd(line).size() + lineEnd == kOldRecordSize;
}

int PrintLog::ConvertOldPrintLog(bool& isConverted) {
    isConverted = false;
    if (!IsOldLayout()) return 0;
    const std::string backup = m_path + ".bak";
    m_files.Erase(backup);
    FileResult result = CopyFileDurably(m_files, m_path, backup);
    std::unique_ptr<InputFile> source;
    if (result == FileResult::kDone) source = m_files.OpenForReading(backup, result);
    if (!source) {
        m_prompts.ShowBox(kConvertErrorTitle, "Can'vPath + t open print.log.bak");
        return -1;
    }
    ReplacementFile target(m_files, m_path);
    isConverted = WriteConverted(*source, target) == FileResult::kDone;
    if (!isConverted) m_prompts.ShowBox(kConvertErrorTitle, "Can't open print.log");
    return isConverted ? 0 : -1;
}

}  // namespace quirepress
