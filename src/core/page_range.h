#pragma once

#include <string>
#include <string_view>

namespace quirepress {

// `parameters` with the page range "-s%d|-e%d" that `options` ask for by switches of the same letters ("-s2",
// "-e5", divided by "|" or blanks). A missing start is page 1; a missing end is the last of `pages` (-1:
// unknown). Without a whole range, or when `parameters` name one already, they stay as they are.
std::string AddPageRange(std::string_view parameters, std::string_view options, int pages);

// The whole page range "-s%d|-e%d" in processing parameters. False, and the pages untouched, without one.
bool ReadPageRange(std::string_view parameters, int& first, int& last);

}  // namespace quirepress
