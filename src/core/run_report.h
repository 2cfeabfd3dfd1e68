#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/date_time.h"
#include "core/list_item.h"

namespace quirepress {

class Files;

// One attempt at a row in one copy, as it ended.
struct ReportedRow {
    LocalTime startedAt;
    double seconds = 0;
    int copy = 1;
    std::string path;
    std::string pages;   // as the list shows them
    std::string sizeKb;  // as the list shows it
    std::string printer;
    std::string status;
    RowOutcome outcome = RowOutcome::kDone;
    bool isDocument = true;  // else a command item, which counts in no total
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
// A header row, a row for each document and command item, and none for totals: a spreadsheet makes its own.
std::string RenderCsvReport(const RunReport& report);

// Writes "Reports\Print Job TIME.txt" and ".csv" below the working folder; a second report of the same second
// gets " (2)". 0, or -1 with `message`. `path` is that of the text.
int WriteRunReports(Files& files, std::string_view workingFolder, const RunReport& report, std::string& path,
                    std::string& message);

}  // namespace quirepress
