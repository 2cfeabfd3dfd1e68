#pragma once

#include <string>
#include <string_view>

#include "documents/pdf_pages.h"

namespace quirepress {

// The pages of a document that options ask for.
struct PageRange {
    enum class Kind {
        kNone,       // nothing is asked for: all of them
        kSome,       // `pages`
        kImpossible  // no document has such pages, or nobody can tell which are meant: `flaw`
    } kind = Kind::kNone;
    PdfPageRange pages = kAllPdfPages;
    std::string text;  // as it is asked for, "-s2|-e5"
    std::string flaw;  // for the user
};

// By the switches "-s%d" (the first page) and "-e%d" (the last) between "|" or blanks; without the one it
// begins at page 1, without the other it goes to the end. A blank may stand before the number. In the string
// of all switches they are "-S%d" and "-E%d", where 0 stands for a missing one. Other switches are passed
// over, words like "-silent" too.
PageRange ReadPageRange(std::string_view options);

// Whether there are any, of pages or of something else.
bool HasSwitches(std::string_view options);

// Of a row: its processing parameters come first, its extra options only where those name no pages.
PageRange FindPageRange(std::string_view processingParameters, std::string_view extraOptions);

// How many pages these are of a document that has `pages`; 0 when that can't be told.
int CountPagesIn(const PageRange& range, int pages);

// `parameters` with the page range "-s%d|-e%d" that `options` ask for; an open end is the last of `pages`
// (-1: unknown). Without a whole range, or when `parameters` name one already, they stay as they are.
std::string AddPageRange(std::string_view parameters, std::string_view options, int pages);

}  // namespace quirepress
