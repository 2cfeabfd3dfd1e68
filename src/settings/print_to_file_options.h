#pragma once

#include <string>

#include "settings/keyword_table.h"
#include "settings/settings_file.h"

namespace quirepress {

// What becomes of the files that a print-to-file driver asks a name for: printfile.ini.
struct PrintToFileOptions {
    std::string m_extension;  // with its "."; in place of the document's own
    std::string m_path;       // folder for the files
    std::string m_windowName = "Print to File";
    bool m_overwrite = false;
    bool m_versionFile = false;
    bool m_useSourcePath = false;  // unknown to printfile.ini
};

// The same for the PDF printer driver: printpdf.ini.
struct PrintToPdfOptions : PrintToFileOptions {
    PrintToPdfOptions() {
        m_extension = ".pdf";
        m_windowName = "Save PDF File As";
    }
};

// The same for the XPS printer driver: printxps.ini.
struct PrintToXpsOptions : PrintToFileOptions {
    PrintToXpsOptions() {
        m_extension = ".xps";
        m_windowName = "Save the file as";
    }
};

// All of them.
struct PrintToFileSettings {
    PrintToFileOptions printFile;
    PrintToPdfOptions printPdf;
    PrintToXpsOptions printXps;
};

void LoadPrintToFileSettings(PrintToFileSettings& settings, const SettingsPlace& place);

const KeywordTable<PrintToFileOptions>& PrintToFileKeywords();
const KeywordTable<PrintToPdfOptions>& PrintToPdfKeywords();
const KeywordTable<PrintToXpsOptions>& PrintToXpsKeywords();

}  // namespace quirepress
