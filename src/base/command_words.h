#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

// Takes a command line of ours apart at its blanks. What stands between quotation marks, '"' or "'", is one
// word or a part of one; between '"', a backslash before '"' or another backslash is left out. Elsewhere a
// backslash is a character like others. False, and `words` untouched, when a quotation mark stays open.
bool SplitWords(std::string_view line, std::vector<std::string>& words);

// A line that SplitWords takes apart into these words again.
std::string JoinWords(const std::vector<std::string>& words);

// "file:///home/a%20b.txt" for an absolute path.
std::string FileAddress(std::string_view path);

}  // namespace quirepress
