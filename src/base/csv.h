#pragma once

#include <string>
#include <string_view>

namespace quirepress {

// A cell of comma-separated text that holds what it shows and nothing else: quoted where its text would end
// it, and with an apostrophe before what a spreadsheet would calculate. A number stays one.
std::string SafeCsvCell(std::string_view text);

}  // namespace quirepress
