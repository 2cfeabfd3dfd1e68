#include "logs/log_viewer.h"

#include "logs/error_log.h"
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
    };
    return logs;
}

const ViewedLog* FindViewedLog(std::string_view name) {
    for (const ViewedLog& log : ViewedLogs())
        if (name == log.name) return &log;
    return nullptr;
}

int LoadLog(Files& files, Prompts& prompts, std::string_view workingFolder, const ViewedLog& log,
            std::vector<std::vector<std::string>>& records) {
    const std::string path = std::string(workingFolder) + log.fileName;
    if (ReadRecords(files, path, log.layout(), records) == 0) return 0;
    const bool isErrorLog = std::string_view(log.fileName) == kErrorLogName;
    const std::string name = isErrorLog ? log.fileName : "'" + path + "'";
    prompts.ShowBox(kLogErrorTitle, "Can't open " + name + " for reading");
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
