#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/date_time.h"

namespace quirepress {

class Files;

// One attempt at a row in one copy, as it ended; or one whose turn did not come.
struct ReportedRow {
    // kMerged: the file that carried documents which have rows of their own. Only documents count in totals.
    enum class What { kDocument, kCommand, kSeparator, kMerged } what = What::kDocument;
    // kStopped: at this row; kNotPrinted: before it.
    enum class End { kPrinted, kFailed, kSkipped, kStopped, kNotPrinted } end = End::kPrinted;
    bool isEarlier = false;  // ended before the run was cut off and taken up; nobody knows when and where
    LocalTime startedAt;
    double seconds = 0;
    int copy = 1;
    int copies = 1;  // from that one on; more only of kNotPrinted
    std::string path;
    int pages = 0;       // 0: unknown
    std::string sizeKb;  // as the list shows it
    std::string printer;
    std::string status;
    std::string remark;  // why; of a printed one, why it may not have come out whole
};

// What a run did, for people: a text to read and a table to calculate with.
struct RunReport {
    std::string machine;
    std::string user;
    std::string printer;  // at the start
    LocalTime startedAt;
    LocalTime endedAt;
    double seconds = 0;
    int copies = 1;
    bool wasStopped = false;
    std::vector<ReportedRow> rows;
};

// How it went and what went wrong first, then every row; lines end in CR LF.
std::string RenderTextReport(const RunReport& report);
// A header row, a row for each of the report, and none for totals: a spreadsheet makes its own.
std::string RenderCsvReport(const RunReport& report);

// Writes "Reports\Print Job TIME.txt" and ".csv" below the working folder; a second report of the same second
// gets " (2)". 0, or -1 with `message`. `path` is that of the text.
int WriteRunReports(Files& files, std::string_view workingFolder, const RunReport& report, std::string& path,
                    std::string& message);

}  // namespace quirepress
