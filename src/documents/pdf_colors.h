#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "documents/pdf_page_color.h"
#include "documents/pdf_pages.h"

namespace quirepress {

class InputFile;

// The colour of every page of a PDF by what its content says, as it would be printed: annotations that are
// not for printing do not count. Pages that `isTimeUp` leaves no time for are undecided. `pages` stays
// untouched when the file cannot be read.
PdfResult InspectPdfColors(InputFile& file, std::string_view password, const GreyRule& rule,
                           const std::function<bool()>& isTimeUp, std::vector<PageColor>& pages);

}  // namespace quirepress
