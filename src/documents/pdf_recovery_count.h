#pragma once

namespace quirepress {

class InputFile;
struct PdfScratch;

struct PdfRecovery {
    int pages = -1;            // -1: it cannot be told
    bool foundObjects = true;  // false: the file holds nothing of a PDF file
};

// Counts the pages of a damaged file: goes once through the whole file for anything that looks like an
// object, whatever the cross references say, and then walks the page tree that these objects make up. Takes
// time in proportion to the file's size, and at most some 200 MB. Not for files in good order: it may count
// what an update has taken out of use.
PdfRecovery RecoverPdfPages(InputFile& file, PdfScratch& scratch);

}  // namespace quirepress
