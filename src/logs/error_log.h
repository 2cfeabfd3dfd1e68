#pragma once

#include <string>

#include "logs/fixed_record.h"

namespace quirepress {

class Clock;

constexpr const char* kErrorLogName = "error.log";

struct ErrorRecord {
    std::string source;       // the document
    std::string destination;  // where it should have gone; may be empty
    std::string error;
    std::string printer;
};

// Date, time, source, destination, error, printer.
const RecordLayout& ErrorRecordLayout();
constexpr std::size_t kErrorSourceColumn = 2;

// "error.log" in the working folder: one record for each failed operation on a document.
class ErrorLog {
public:
    ErrorLog(Files& files, Clock& clock, std::string path);
    int Append(const ErrorRecord& record);  // 0, -1 when it could not be written
    const std::string& Path() const { return m_path; }

private:
    Files& m_files;
    Clock& m_clock;
    std::string m_path;
};

}  // namespace quirepress
