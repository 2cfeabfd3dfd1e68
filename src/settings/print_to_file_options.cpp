#include "settings/print_to_file_options.h"

#include "settings/keyword_file.h"

namespace quirepress {

namespace {

template <typename Options>
std::vector<KeywordRowFor<Options>> MakeRows() {
    return {
        Text<Options>("EXTENSION", &PrintToFileOptions::m_extension,
                      "Extension to save, e.g. .ps will save file test.pdf as test.ps"),
        Text<Options>("PATH", &PrintToFileOptions::m_path, "Folder that receives every printed file."),
        Text<Options>("WINDOWNAME", &PrintToFileOptions::m_windowName,
                      "Caption of the save dialog to watch for, in the system's language and in these "
                      "capitals."),
        Flag<Options>("OVERWRITE", &PrintToFileOptions::m_overwrite, "Always overwrite an existing file."),
        Flag<Options>("VERSIONFILE", &PrintToFileOptions::m_versionFile,
                      "When the file exists, number the new one (test_v0001.ps); goes before OVERWRITE."),
    };
}

template <typename Options>
std::vector<KeywordRowFor<Options>> MakeDriverRows() {
    std::vector<KeywordRowFor<Options>> rows = MakeRows<Options>();
    rows.push_back(Flag<Options>("USESOURCEPATH", &PrintToFileOptions::m_useSourcePath,
                                 "Save next to the source document instead of in PATH."));
    return rows;
}

}  // namespace

const KeywordTable<PrintToFileOptions>& PrintToFileKeywords() {
    static const KeywordTable<PrintToFileOptions> table({"printfile.ini", "Can't open printfile.ini file."},
                                                        MakeRows<PrintToFileOptions>());
    return table;
}

const KeywordTable<PrintToPdfOptions>& PrintToPdfKeywords() {
    static const KeywordTable<PrintToPdfOptions> table({"printpdf.ini", "Can't open printpdf.ini file."},
                                                       MakeDriverRows<PrintToPdfOptions>());
    return table;
}

const KeywordTable<PrintToXpsOptions>& PrintToXpsKeywords() {
    static const KeywordTable<PrintToXpsOptions> table({"printxps.ini", "Can't open printxps.ini file."},
                                                       MakeDriverRows<PrintToXpsOptions>());
    return table;
}

void LoadPrintToFileSettings(PrintToFileSettings& settings, const SettingsPlace& place) {
    LoadSettings(PrintToFileKeywords(), place, settings.printFile);
    LoadSettings(PrintToPdfKeywords(), place, settings.printPdf);
    LoadSettings(PrintToXpsKeywords(), place, settings.printXps);
}

}  // namespace quirepress
