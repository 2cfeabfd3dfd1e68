#pragma once

#include <string_view>

namespace quirepress {

class Files;

// Whether the file begins like one of the kind that its name claims. True for kinds that have no mark of
// their own; a word processor's ".doc" may hold any of the formats that are saved under that name. A program
// that is given garbage under such a name prints it as hundreds of pages of text.
bool HasSignatureOfItsName(Files& files, std::string_view path);

enum class PdfState { kWhole, kMissing, kEmpty, kNoPdf, kCutOff };

// Whether a program has written a whole PDF: begun as one, and with its end.
PdfState InspectPdf(Files& files, std::string_view path);

}  // namespace quirepress
