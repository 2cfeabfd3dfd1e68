#pragma once

#include <map>
#include <string>
#include <string_view>

namespace quirepress {

// MIME types by the endings of file names, "." included, in small letters.
using TypesByEnding = std::map<std::string, std::string, std::less<>>;

// Adds what a "globs2" file of the shared MIME database says about whole endings
// ("50:application/rtf:*.rtf"); types that are there already stay. Of several types for an ending, the one of
// the greatest weight counts.
void AddMimeGlobs(std::string_view globs, TypesByEnding& types);

}  // namespace quirepress
