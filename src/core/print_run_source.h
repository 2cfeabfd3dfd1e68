#pragma once

#include <string_view>
#include <vector>

#include "core/run_way.h"
#include "platform/files.h"

namespace quirepress {

class PrintList;
struct GeneralOptions;

// What a run takes an item for. A folder's name makes no command of what lies in it, and however its name is
// spelt, a script is no document.
ItemKind KindInRun(std::string_view path);

// What is on the disk now; nothing is looked at for items that are no documents.
FileFacts InspectSource(Files& files, const RunItem& item);

// Why a row's file can't be printed as it is: status "No File.", "Empty File", "Skipped"
// when it can't be read, or one that begins with "Error". The status is empty when nothing is in the way, and
// for items that are no documents.
WayResult FindSourceObstacle(const RunItem& item, const FileFacts& facts);

// The same for a row of the list; what could not be taken in fails by its own status.
WayResult FindRowObstacle(Files& files, const PrintList& list, int row, const RunItem& item);

// The rows of the list, ticked or not, whose files can't be printed as they are now, or were not taken in.
struct MissedRow {
    RunItem item;  // as far as it matters here
    WayResult obstacle;
};
std::vector<MissedRow> FindMissedRows(Files& files, const PrintList& list);

// How many pages of its file a row prints, as far as they were counted; 0: nobody knows.
int PagesAskedFor(const RunItem& item);

bool IsPdf(std::string_view path);

// Whether the options pass over this document because it is a PDF whose count says that it has no pages.
bool IsPassedOverPdf(const GeneralOptions& options, const RunItem& item);

constexpr std::string_view kStatusSkipped = "Skipped";

}  // namespace quirepress
