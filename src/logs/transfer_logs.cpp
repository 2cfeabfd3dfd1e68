#include "logs/transfer_logs.h"

#include <utility>

#include "logs/debug_log.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace quirepress {

namespace {

constexpr std::string_view kMailFailure = "Email Log error: %d\n";
constexpr std::string_view kFtpFailure = "FTP Log error: %d\n";

RecordLayout WithErrorColumn(RecordLayout layout) {
    layout.columns.push_back({"Error", 693, 100, true});
    return layout;
}

}  // namespace

const RecordLayout& MailRecordLayout() {
    static const RecordLayout layout = {{
        {"Date/Time", 0, 22},
        {"File Size", 23, 8},
        {"Attached Filename", 32, 255},
        {"Creation Time", 288, 22},
        {"Modified Time", 311, 22},
        {"From", 333, 100, true},
        {"Subject", 434, 100, true},
        {"To", 534, 100, true},
    }};
    return layout;
}

const RecordLayout& FtpRecordLayout() {
    static const RecordLayout layout = {{
        {"Date/Time", 0, 22},
        {"File Size", 23, 10},
        {"Local Filename", 34, 255},
        {"Creation Time", 290, 22},
        {"Modified Time", 313, 22},
        {"FTP Server", 336, 100, true},
        {"FTP Directory", 437, 255},
    }};
    return layout;
}

const RecordLayout& FtpErrorRecordLayout() {
    static const RecordLayout layout = WithErrorColumn(FtpRecordLayout());
    return layout;
}

TransferLogs::TransferLogs(Files& files, Clock& clock, DebugLog& debugLog, std::string workingFolder)
    : m_files(files), m_clock(clock), m_debugLog(debugLog), m_workingFolder(std::move(workingFolder)) {}

int TransferLogs::WriteMailRecord(const MailRecord& record) {
    return Append(kMailLogName, MailRecordLayout(), Stamp(record.attachment),
                  {record.from, record.subject, record.mailbox}, kMailFailure);
}

int TransferLogs::WriteFtpRecord(const FtpRecord& record) {
    return Append(kFtpLogName, FtpRecordLayout(), Stamp(record.file), {record.server, record.folder},
                  kFtpFailure);
}

int TransferLogs::WriteFtpErrorRecord(const FtpRecord& record, std::string_view error) {
    DocumentStamp stamp;
    stamp.path = record.file;
    return Append(kFtpErrorLogName, FtpErrorRecordLayout(), stamp,
                  {record.server, record.folder, std::string(error)}, kFtpFailure);
}

DocumentStamp TransferLogs::Stamp(const std::string& file) {
    return StampDocument(file, m_files.Inspect(file), m_clock);
}

int TransferLogs::Append(const char* name, const RecordLayout& layout, const DocumentStamp& stamp,
                         const std::vector<std::string>& rest, std::string_view failure) {
    std::vector<std::string> fields = {FormatDateTime(m_clock.ToLocal(m_clock.Now())),
                                       std::to_string(stamp.size), stamp.path, stamp.created, stamp.written};
    fields.insert(fields.end(), rest.begin(), rest.end());
    bool isOpen = false;
    const FileResult result =
        WriteRecord(m_files, m_workingFolder + name, FormatRecord(layout, fields), isOpen);
    if (result == FileResult::kDone) return 0;
    m_debugLog.Trace(failure, static_cast<int>(result));
    return -1;
}

}  // namespace quirepress
