#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

constexpr std::size_t kLongestEntryName = 200;  // bytes of one part of an entry's name

// The parts of the relative path under which an archive's entry may be unpacked, folders first; empty when
// it has no such path, because its name leaves the folder ("..") or holds nothing. Both separators separate,
// roots and drive letters fall away. Each part is a name that every system takes: no control character, none
// of <>:"|?*, no trailing dot or blank, no device's name, at most kLongestEntryName bytes with the extension
// kept. Other bytes stay as they are.
std::vector<std::string> CleanEntryName(std::string_view name);

// "report_2.pdf" for ("report.pdf", 2); never longer than kLongestEntryName.
std::string NumberedName(std::string_view name, int number);

}  // namespace quirepress
