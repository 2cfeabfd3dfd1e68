#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

class Clock;
class Files;

struct ErrorRecord {
    std::string source;       // the document
    std::string destination;  // where it should have gone; may be empty
    std::string error;
    std::string printer;
};

// "error.log" in the working folder: one fixed-width record for each failed operation on a document.
// Record: date 20, time 20, source 200, destination 200, error 200, printer 100 bytes, then CR LF; widths are
// minimums, and line ends inside a field become blanks.
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

// The field texts of one line, cut at the record's columns and without trailing blanks.
std::vector<std::string> CutErrorRecord(std::string_view line);

}  // namespace quirepress
