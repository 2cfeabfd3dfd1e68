#pragma once

#include <cups/ipp.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/spooler.h"

namespace quirepress {

// "1-3,7" as ranges in ascending order that do not touch; an end that is left out ("5-") is the last page.
// False for any other text. Empty gives no range: all pages.
using PageRanges = std::vector<std::pair<int, int>>;
bool ParsePageRanges(std::string_view text, PageRanges& ranges);

// Puts what a document asks for into the request that prints it; `source` is the media source of its tray
// (empty: the printer's choice). Copies are the document's times the ticket's. Of the scale IPP can only say
// 100 percent, which is no scaling; any other one is left out.
void AddTicket(ipp_t* request, const DocumentInfo& document, const PageRanges& ranges,
               const std::string& source);

// How a server names the kind of file that a path's extension tells; empty for one that it could not render.
std::string_view DocumentFormat(std::string_view path);

}  // namespace quirepress
