#pragma once

#include <string_view>

#include "core/run_way.h"

namespace quirepress {

class Files;
struct GeneralOptions;

// Why a row's file can't be printed as it is on the disk now: status "No File.", "Empty File", "Skipped"
// when it can't be read, or one that begins with "Error". The status is empty when nothing is in the way, and
// for items that are no documents.
WayResult FindSourceObstacle(Files& files, const RunItem& item);

bool IsPdf(std::string_view path);

// Whether the options pass over this document because it is a PDF whose count says that it has no pages.
bool IsPassedOverPdf(const GeneralOptions& options, const RunItem& item);

constexpr std::string_view kStatusSkipped = "Skipped";

}  // namespace quirepress
