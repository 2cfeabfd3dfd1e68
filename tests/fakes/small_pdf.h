#pragma once

#include <string>
#include <vector>

namespace quirepress {

// A PDF with a page for each content, whose bytes stand in it as they are. A damaged one says nothing of
// where its cross references stand; a reader that looks for its objects finds them all.
std::string MakeSmallPdf(const std::vector<std::string>& contents, bool isDamaged = false);

}  // namespace quirepress
