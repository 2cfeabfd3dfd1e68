#pragma once

#include <string_view>

#include "core/run_way.h"
#include "platform/files.h"

namespace quirepress {

struct GeneralOptions;

// What is on the disk now; nothing is looked at for items that are no documents.
FileFacts InspectSource(Files& files, const RunItem& item);

// Why a row's file can't be printed as it is: status "No File.", "Empty File", "Skipped"
// when it can't be read, or one that begins with "Error". The status is empty when nothing is in the way, and
// for items that are no documents.
WayResult FindSourceObstacle(const RunItem& item, const FileFacts& facts);

bool IsPdf(std::string_view path);

// Whether the options pass over this document because it is a PDF whose count says that it has no pages.
bool IsPassedOverPdf(const GeneralOptions& options, const RunItem& item);

constexpr std::string_view kStatusSkipped = "Skipped";

}  // namespace quirepress
