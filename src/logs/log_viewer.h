#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "logs/fixed_record.h"

namespace quirepress {

class Prompts;

// A log that can be looked at.
struct ViewedLog {
    const char* name;      // for the user: "print"
    const char* fileName;  // in the working folder
    const RecordLayout& (*layout)();
};

// print, error, mail, ftp, ftp-error, hangs.
const std::vector<ViewedLog>& ViewedLogs();
const ViewedLog* FindViewedLog(std::string_view name);  // null when there is none of that name

// What is said when the log, which lies at `path`, cannot be read.
std::string ReadFailureText(const ViewedLog& log, std::string_view path);

// Reads every record. 0, or -1, said to the user.
int LoadLog(Files& files, Prompts& prompts, std::string_view workingFolder, const ViewedLog& log,
            std::vector<std::vector<std::string>>& records);

// Rewrites the whole log from the records, for good, and says how that went. 0, or -1: the log is as it was.
int SaveLog(Files& files, Prompts& prompts, std::string_view workingFolder, const ViewedLog& log,
            const std::vector<std::vector<std::string>>& records);

}  // namespace quirepress
