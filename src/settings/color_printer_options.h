#pragma once

#include <cstdint>
#include <string>

#include "settings/keyword_table.h"

namespace quirepress {

// How the pages of a PDF are shared out between a colour printer and a cheaper one; pdfcolorprinters.ini.
struct ColorPrinterOptions {
    bool m_split = false;
    std::string m_colorPrinter;  // empty: the printer of the run
    std::string m_colorPrs;      // printer settings file; empty: none
    std::string m_monoPrinter;   // as above
    std::string m_monoPrs;
    std::int32_t m_leastMonoPages = 1;  // a shorter run of pages without colour stays with the colour printer
    std::int32_t m_grayTolerance = 0;   // percent
    bool m_duplex = false;              // two pages share a sheet of paper and so a printer
    bool m_wholeDocuments = false;
};

const KeywordTable<ColorPrinterOptions>& ColorPrinterKeywords();

int LoadColorPrinterOptions(ColorPrinterOptions& options, const SettingsPlace& place);
int SaveColorPrinterOptions(const ColorPrinterOptions& options, const SettingsPlace& place);

}  // namespace quirepress
