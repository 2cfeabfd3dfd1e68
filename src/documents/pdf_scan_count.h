#pragma once

#include <functional>

namespace quirepress {

class InputFile;

// Is told how much of the work is done, in percent; answers whether to go on.
using PdfScanProgress = std::function<bool(double percent)>;

// Counts what is written like a page object in one of a few fixed ways, wherever it stands: "/Type /Page"
// or "/Type/Page" before a blank or a line end, itself right behind a blank, a line end or "<". 0 when
// `progress` (may be empty) stops it, -1 when the file cannot be read.
int ScanPdfPages(InputFile& file, const PdfScanProgress& progress);

}  // namespace quirepress
