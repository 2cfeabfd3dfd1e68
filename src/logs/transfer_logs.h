#pragma once

#include <string>
#include <string_view>

#include "logs/document_stamp.h"
#include "logs/fixed_record.h"

namespace quirepress {

class Clock;
class DebugLog;

constexpr const char* kMailLogName = "email.log";
constexpr const char* kFtpLogName = "ftp.log";
constexpr const char* kFtpErrorLogName = "ftp-error.log";

// Time, size, attachment, created, modified, sender, subject, recipient mailbox.
const RecordLayout& MailRecordLayout();
// Time, size, local file, created, modified, server, folder on it; and the error.
const RecordLayout& FtpRecordLayout();
const RecordLayout& FtpErrorRecordLayout();

struct MailRecord {
    std::string attachment;  // full path
    std::string from;
    std::string subject;
    std::string mailbox;
};

struct FtpRecord {
    std::string file;    // full path; where nothing came, the file's name
    std::string server;  // "HOST" or "HOST:PORT"
    std::string folder;  // on the server
};

// The logs of what came in from mailboxes and FTP servers, in the working folder. A record gets the present
// time, and the size and the times of its file; that of an error none, since no file came. Each writer
// answers 0, or -1, which the debug log tells.
class TransferLogs {
public:
    TransferLogs(Files& files, Clock& clock, DebugLog& debugLog, std::string workingFolder);

    int WriteMailRecord(const MailRecord& record);
    int WriteFtpRecord(const FtpRecord& record);
    int WriteFtpErrorRecord(const FtpRecord& record, std::string_view error);

private:
    DocumentStamp Stamp(const std::string& file);
    int Append(const char* name, const RecordLayout& layout, const DocumentStamp& stamp,
               const std::vector<std::string>& rest, std::string_view failure);

    Files& m_files;
    Clock& m_clock;
    DebugLog& m_debugLog;
    std::string m_workingFolder;
};

}  // namespace quirepress
