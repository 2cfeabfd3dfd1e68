#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "documents/pdf_page_color.h"

namespace quirepress {

class Files;
class PageColors;
class PdfPages;
struct ColorPrinterOptions;

// Pages that follow each other and go to the same printer.
struct ColorRun {
    int firstPage = 1;  // from 1
    int lastPage = 1;   // included
    bool isColor = false;
};

// The runs of a document, which hold all of its pages in their order. What is undecided counts as colour.
// Both sides of a sheet stay together, short runs without colour stay with their neighbours, or the whole
// document stays together, as the options say.
std::vector<ColorRun> PlanColorRuns(const std::vector<PageColor>& pages, const ColorPrinterOptions& options);

// A PDF with the pages of a run, which needs no password.
struct ColorPiece {
    std::string file;
    bool isColor = false;
    int firstPage = 1;  // of the document that was split
    int lastPage = 1;
    bool isTemporary = true;  // to be erased by the caller; false: the document itself, which is one run
};

// Splits PDF files between a colour printer and another one.
class ColorSplit {
public:
    ColorSplit(PageColors& colors, PdfPages& pdf, Files& files)
        : m_colors(colors), m_pdf(pdf), m_files(files) {}

    // The pieces of the document, in its order, written into `folder` (made when missing). 0, or -1 with
    // `message` and nothing left behind. May pump.
    int SplitByColor(std::string_view path, std::string_view password, const ColorPrinterOptions& options,
                     std::string_view folder, std::vector<ColorPiece>& pieces, std::string& message);

private:
    PageColors& m_colors;
    PdfPages& m_pdf;
    Files& m_files;
};

}  // namespace quirepress
