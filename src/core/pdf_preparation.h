#pragma once

#include <memory>
#include <string>

#include "core/page_range.h"
#include "core/scratch_folder.h"

namespace quirepress {

class DebugLog;
class PdfCounter;
class PdfForms;
class PdfLibrary;

struct PdfPreparationServices {
    Files& files;
    PdfLibrary& library;
    PdfPages& pages;
    PdfForms& forms;
    PdfCounter& counter;
    DebugLog& debugLog;
    const GeneralOptions& options;
    std::string workingFolder;
};

// A PDF as it may be printed.
struct PreparedPdf {
    std::string flaw;                       // why there is none, a sentence part
    std::string doubt;                      // why `file` may not be printed whole, a sentence part
    bool isPdf = true;                      // false: `file` does not even begin like one
    std::string file;                       // the file itself, or a new one that goes with this object
    int pages = 0;                          // of `file`; 0: they were not counted
    std::unique_ptr<ScratchFolder> folder;  // of a new one
};

// Makes PDF files that printers can do without further knowledge: of the pages that a row asks for, of
// protected files, of forms and their data.
class PdfPreparation {
public:
    explicit PdfPreparation(PdfPreparationServices services) : m_services(std::move(services)) {}

    // These pages of `pdf`, readable without a password; `pdf` itself where it is so already. A damaged one
    // of which all is wanted is left to the print system, with a doubt. May pump.
    PreparedPdf Prepare(const std::string& pdf, const PageRange& range);
    // The form that a file of forms data names, filled in. May pump.
    PreparedPdf FillForm(const std::string& data);
    // 0 when they can't be told, or are not to be counted. May pump.
    int CountPages(const std::string& pdf);

private:
    bool OpensWithoutPassword(const std::string& pdf);
    bool MakeTarget(const std::string& name, PreparedPdf& prepared);

    PdfPreparationServices m_services;
};

}  // namespace quirepress
