#pragma once

#include <string>
#include <utility>
#include <vector>

namespace quirepress {

using PdfBodies = std::vector<std::pair<int, std::string>>;

// Objects "NUMBER 0 obj BODY endobj", their cross-reference table and a trailer with `trailerKeys`.
std::string MakePdfOf(const PdfBodies& objects, const std::string& trailerKeys);
// The same appended to `pdf` as an update of it.
std::string WithUpdate(const std::string& pdf, const PdfBodies& objects, const std::string& trailerKeys);
std::size_t StartOffset(const std::string& pdf);  // the number behind the last "startxref"

// A PDF with a page for each content, whose bytes stand in it as they are. A damaged one says nothing of
// where its cross references stand; a reader that looks for its objects finds them all.
std::string MakeSmallPdf(const std::vector<std::string>& contents, bool isDamaged = false);

}  // namespace quirepress
