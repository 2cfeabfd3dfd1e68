#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/spooler.h"

namespace quirepress {

// The name that IPP has for a paper size code ("iso_a4_210x297mm" for 9); empty for a code that it has none
// for.
std::string_view MediaName(int paperSize);

// The bins of a printer from its media sources. The number of a source that has a common code is that code
// (docs/cups.md), of "tray-N" 256 + N; others are numbered from 1024 in the printer's order. A name has at
// most 24 bytes.
std::vector<BinInfo> BinsOf(const std::vector<std::string_view>& sources);

// What a ticket asks for among the sources of a printer: by the tray's name, or else by its number. Empty
// when it leaves the choice to the printer. False when the printer has no such tray.
bool ChooseSource(const JobTicket& ticket, const std::vector<std::string>& sources, std::string& source);

}  // namespace quirepress
