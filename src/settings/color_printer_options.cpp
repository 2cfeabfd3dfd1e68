#include "settings/color_printer_options.h"

#include "settings/keyword_file.h"

namespace quirepress {

const KeywordTable<ColorPrinterOptions>& ColorPrinterKeywords() {
    using Options = ColorPrinterOptions;
    static const KeywordTable<Options> table(
        {"pdfcolorprinters.ini", "Can't open pdfcolorprinters.ini file."},
        {
            Flag("PDC_SPLIT", &Options::m_split,
                 "Send the pages of a PDF that have colour to one printer and the others to another."),
            Text("PDC_COLORPRINTER", &Options::m_colorPrinter,
                 "Printer for pages with colour; empty: the printer of the run.")
                .WrittenWhenNotEmpty(),
            Text("PDC_COLORPRS", &Options::m_colorPrs,
                 "Printer settings file (.prs) for the pages with colour; empty: none.")
                .WrittenWhenNotEmpty(),
            Text("PDC_MONOPRINTER", &Options::m_monoPrinter,
                 "Printer for pages without colour; empty: the printer of the run.")
                .WrittenWhenNotEmpty(),
            Text("PDC_MONOPRS", &Options::m_monoPrs,
                 "Printer settings file (.prs) for the pages without colour; empty: none.")
                .WrittenWhenNotEmpty(),
            Number("PDC_MINMONOPAGES", &Options::m_leastMonoPages,
                   "Pages without colour go to their own printer only in runs of at least so many pages; a "
                   "shorter run stays between its neighbours on the colour printer.")
                .WrittenWhenAtLeast(2),
            Number("PDC_GRAYTOLERANCE", &Options::m_grayTolerance,
                   "Percent by which the parts of a colour may differ and still count as grey.")
                .WrittenWhenAtLeast(1),
            Flag("PDC_DUPLEX", &Options::m_duplex,
                 "The sheets are printed on both sides: pages 1 and 2, 3 and 4... go to one printer "
                 "together."),
            Flag("PDC_WHOLEDOCUMENTS", &Options::m_wholeDocuments,
                 "Don't split: a PDF goes to the colour printer whole when one of its pages has colour."),
        });
    return table;
}

int LoadColorPrinterOptions(ColorPrinterOptions& options, const SettingsPlace& place) {
    return LoadSettings(ColorPrinterKeywords(), place, options);
}

int SaveColorPrinterOptions(const ColorPrinterOptions& options, const SettingsPlace& place) {
    return SaveSettings(ColorPrinterKeywords(), place, options);
}

}  // namespace quirepress
