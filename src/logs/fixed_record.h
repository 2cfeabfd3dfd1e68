#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

class Files;
enum class FileResult;

constexpr std::string_view kRecordEnd = "\r\n";

// A column of a fixed-width log. Widths are minimums: a longer text widens its line, and readers, who cut at
// the columns, read what then lies there.
struct RecordColumn {
    const char* title;
    std::size_t start;   // the first byte; tabs fill what the column before it leaves open
    std::size_t width;   // bytes; 0 for a last column that is as long as its text
    bool isCut = false;  // the writer cuts a longer text
};

// The one description of a log's records, for its writer, its readers and its exports.
struct RecordLayout {
    std::vector<RecordColumn> columns;
};

// One record with its CR LF; line ends and NULs inside a field become blanks, passwords in addresses "***".
std::string FormatRecord(const RecordLayout& layout, const std::vector<std::string>& fields);

// The fields of one line (without its line end), without trailing blanks; what a short line lacks is empty.
std::vector<std::string> CutRecord(const RecordLayout& layout, std::string_view line);

// Every record of a log, appended. 0, or -1 when it cannot be read. Empty lines are none; garbage and half
// lines come out as they lie.
int ReadRecords(Files& files, std::string_view path, const RecordLayout& layout,
                std::vector<std::vector<std::string>>& records);

// Replaces a log by these records, for good. 0, or -1 when it could not be written: it is as it was.
int ReplaceRecords(Files& files, std::string_view path, const RecordLayout& layout,
                   const std::vector<std::vector<std::string>>& records);

// Appends a record and flushes it to the disk: 0, or -1. The half line that a power failure may have left at
// the end of the log is ended first, so that it spoils no record but its own.
int AppendRecord(Files& files, std::string_view path, std::string record);
// The same with the reason; `isOpen` tells whether the log could be opened for appending.
FileResult WriteRecord(Files& files, std::string_view path, std::string record, bool& isOpen);

}  // namespace quirepress
