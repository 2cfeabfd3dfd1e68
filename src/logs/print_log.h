#pragma once

#include <string>
#include <string_view>

#include "logs/document_stamp.h"
#include "logs/fixed_record.h"

namespace quirepress {

class Clock;
class DebugLog;
class Prompts;

constexpr const char* kPrintLogName = "print.log";
constexpr const char* kLogErrorTitle = "Log File Error";

// Time, size, name, created, modified, pages, printer.
const RecordLayout& PrintRecordLayout();

// What a record of this document has in its columns from the size to the modified time; longer when its name
// or its size is wider than its column.
std::string PrintRecordKey(const DocumentStamp& stamp);
constexpr std::size_t kPrintRecordKeyStart = 23;
constexpr std::size_t kPrintRecordKeyWidth = 215;  // bytes, at least

// "print.log" in the working folder: a record for each document that was sent to a printer.
class PrintLog {
public:
    PrintLog(Files& files, Clock& clock, Prompts& prompts, DebugLog& debugLog, std::string path);

    // Appends a record, on the disk when this returns: 0, or -1. That the log cannot be opened is said to the
    // user once, until it can be again.
    int WritePrintLogRecord(std::string_view document, int pages, std::string_view printer);
    // A line that is about no document, such as that the program has started.
    int WriteLine(std::string_view text);

    // A log of the older layout, whose names had 80 columns, gets the present one; "print.log.bak" keeps the
    // old. 0 when it was converted or needs not be, -1 after a message. The log is old or new at any moment.
    int ConvertOldPrintLog(bool& isConverted);

    const std::string& Path() const { return m_path; }

private:
    int Append(const DocumentStamp& stamp, int pages, std::string_view printer);
    bool IsOldLayout();

    Files& m_files;
    Clock& m_clock;
    Prompts& m_prompts;
    DebugLog& m_debugLog;
    std::string m_path;
    bool m_isComplained = false;
};

}  // namespace quirepress
