#pragma once

#include <vector>

#include "documents/pdf_streams.h"

namespace quirepress {

class InputFile;

// What counting needs anew for every file, kept from one to the next.
struct PdfScratch {
    PdfStreamDecoder decoder;
    std::vector<char> window;
    std::vector<char> crossReferences;
    std::vector<char> objects;

    // After a file that took much.
    void GiveBackMuch();
};

// The page tree's own count, found by way of the file's end and cross references, with a handful of short
// reads. -1 when anything on the way is surprising: then nothing is known of the file.
int CountPdfPagesQuickly(InputFile& file, PdfScratch& scratch);

}  // namespace quirepress
