#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "documents/pdf_pages.h"

namespace quirepress {

// What came of a form.
struct FormFilling {
    std::string form;                        // as the data names it; empty: it does not, or brings its own
    std::string flaw;                        // why nothing came of it, a sentence part
    std::vector<std::string> unknownFields;  // that the form does not have, the first of them
};

// Forms are PDFs with fields; their data comes in a file of its own (FDF, XFDF, XDP), which names the form or
// has it in itself.
class PdfForms {
public:
    virtual ~PdfForms() = default;
    // Writes the filled form as a PDF whose fields have become part of its pages. The form lies where the
    // data says, beside it where that is no whole path; it is never fetched from another machine. `password`
    // opens a protected form. `target` is replaced by the complete file, or stays as it was. May pump.
    virtual PdfResult FillForm(std::string_view data, std::string_view password, std::string_view target,
                               FormFilling& filling) = 0;
};

// In this process.
PdfResult FillPdfForm(Files& files, std::string_view data, std::string_view password, std::string_view target,
                      FormFilling& filling);

}  // namespace quirepress
