#pragma once

#include <string_view>
#include <vector>

#include "core/run_report.h"
#include "core/run_way.h"

namespace quirepress {

class PrintList;

// A row as a run that was cut off has left it.
struct EarlierRow {
    const RunItem& item;
    const RunMark& mark;  // of a document in a merged file, that file's
    std::string_view status;
    bool isMerged = false;   // documents that were merged into it have rows of their own
    bool hasCopies = true;   // the others are missed once
    bool isUnknown = false;  // the copy at work is told apart
};

ReportedRow::What WhatIs(ItemKind kind);
ReportedRow::End EndOf(RowOutcome outcome);

// A line for each copy that has ended.
void AddEarlierRow(const EarlierRow& row, std::vector<ReportedRow>& rows);
// What was to be printed when the run ended. Merged documents wait for the file that they are in.
void AddRowsNotPrinted(PrintList& list, int passes, std::string_view reason, std::vector<ReportedRow>& rows);

}  // namespace quirepress
