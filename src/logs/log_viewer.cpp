#include "logs/log_viewer.h"

#include "logs/error_log.h"
#include "logs/hang_log.h"
#include "logs/print_log.h"
#include "logs/transfer_logs.h"
#include "platform/prompts.h"

namespace quirepress {

const std::vector<ViewedLog>& ViewedLogs() {
    static const std::vector<ViewedLog> logs = {
        {"print", kPrintLogName, PrintRecordLayout},
        {"error", kErrorLogName, ErrorRecordLayout},
        {"mail", kMailLogName, MailRecordLayout},
        {"ftp", kFtpLogName, FtpRecordLayout},
        {"ftp-error", kFtpErrorLogName, FtpErrorRecordLayout},
        {"hangs", kHangLogName, HangRecordLayout},
    };
    return logs;
}

const ViewedLog* FindViewedLog(std::string_view name) {
    for (const ViewedLog& log : ViewedLogs())
        if (name == log.name) return &log;
    return nullptr;
}

std::string ReadFailureText(const ViewedLog& log, std::string_view path) {
    const bool isErrorLog = std::string_view(log.fileName) == kErrorLogName;
    return "Can't open " + (isErrorLog ? log.fileName : "'" + std::string(path) + "'") + " for reading";
}

int LoadLog(Files& files, Prompts& prompts, std::string_view workingFolder, const ViewedLog& log,
            std::vector<std::vector<std::string>>& records) {
    const std::string path = std::string(workingFolder) + log.fileName;
    if (ReadRecords(files, path, log.layout(), records) == 0) return 0;
    prompts.ShowBox(kLogErrorTitle, ReadFailureText(log, path));
    return -1;
}

int SaveLog(Files& files, Prompts& prompts, std::string_view workingFolder, const ViewedLog& log,
            const std::vector<std::vector<std::string>>& records) {
    const std::string path = std::string(workingFolder) + log.fileName;
    const int result = ReplaceRecords(files, path, log.layout(), records);
    if (result == 0)
        prompts.ShowBox("Log File", "Done");
    else
        prompts.ShowBox(kLogErrorTitle, std::string("Can't open ") + log.fileName + " for writing");
    return result;
}

}  // namespace quirepress
