#include "documents/pdf_pages.h"

#include <memory>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFAcroFormDocumentHelper.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <stdexcept>

#include "documents/file_signature.h"
#include "documents/qpdf_file.h"
#include "platform/files.h"

namespace quirepress {
namespace {

// Of a document's catalogue, what only a screen has use for; it can be larger than the pages.
constexpr const char* kForScreens[] = {"/Outlines",  "/StructTreeRoot", "/Names",   "/Dests",
                                       "/Threads",   "/OpenAction",     "/AA",      "/Metadata",
                                       "/PieceInfo", "/PageLabels",     "/PageMode"};

// A page that is left out may still be named by links and form fields: it stays as an empty one.
void Strip(QPDFObjectHandle page) {
    for (const char* key : {"/Contents", "/Resources", "/Annots", "/Thumb", "/PieceInfo", "/Metadata", "/B"})
        page.removeKey(key);
}

// Whoever prints the pages may make no looks for fields that have none. The library keeps what it draws in
// filters, which it does not ask when it writes streams as they are.
void DrawFields(QPDF& pdf) {
    QPDFAcroFormDocumentHelper form(pdf);
    if (!form.getNeedAppearances()) return;
    form.generateAppearancesIfNeeded();
    for (QPDFObjectHandle object : pdf.getAllObjects())
        if (object.isStream() && object.isDataModified())
            object.replaceStreamData(object.getStreamData(), QPDFObjectHandle::newNull(),
                                     QPDFObjectHandle::newNull());
}

bool KeepPages(QPDF& pdf, const std::vector<PdfPageRange>& ranges) {
    DrawFields(pdf);
    QPDFPageDocumentHelper document(pdf);
    document.pushInheritedAttributesToPage();
    const std::vector<QPDFPageObjectHelper> pages = document.getAllPages();
    const int count = static_cast<int>(pages.size());
    std::vector<bool> isKept(pages.size());
    std::vector<std::size_t> order;
    for (const PdfPageRange& range : ranges) {
        const int last = range.last == kAllPdfPages.last ? count : range.last;
        if (range.first < 1 || range.first > last || last > count) return false;
        for (int page = range.first; page <= last; ++page)
            order.push_back(static_cast<std::size_t>(page - 1));
    }
    // The cheap end first: every page behind the one that goes is looked at anew.
    for (std::size_t i = pages.size(); i-- > 0;) document.removePage(pages[i]);
    for (const std::size_t page : order) {
        document.addPage(pages[page], false);
        isKept[page] = true;
    }
    for (std::size_t i = 0; i < pages.size(); ++i)
        if (!isKept[i]) Strip(pages[i].getObjectHandle());
    for (const char* key : kForScreens) pdf.getRoot().removeKey(key);
    return !order.empty();
}

}  // namespace

const char* DescribePdfResult(PdfResult result) {
    switch (result) {
        case PdfResult::kDone:
            return "done";
        case PdfResult::kUnreadable:
            return "the file can't be read as a PDF";
        case PdfResult::kWrongPassword:
            return "the file is protected by a password that is not known (USEOPENPASSWORD)";
        case PdfResult::kNoSuchPages:
            return "the file doesn't have these pages";
        case PdfResult::kNotWritten:
            return "the new file can't be written";
        default:
            return "the file takes too long, or too much memory";
    }
}

std::string DescribePdfResult(PdfResult result, Files& files, std::string_view path) {
    if (result != PdfResult::kUnreadable) return DescribePdfResult(result);
    switch (InspectPdf(files, path)) {
        case PdfState::kMissing:
            return "the file is missing, or can't be opened";
        case PdfState::kEmpty:
            return "the file is empty";
        case PdfState::kNoPdf:
            return HasSignatureOfItsName(files, path) ? DescribePdfResult(result)
                                                      : "the file is no PDF, whatever its name says";
        case PdfState::kCutOff:
            return "the file is cut off: the end of the PDF is missing";
        default:
            return DescribePdfResult(result);
    }
}

PdfResult ExtractPdfPages(Files& files, std::string_view path, std::string_view password,
                          const std::vector<PdfPageRange>& ranges, std::string_view target) {
    FileResult opened = FileResult::kDone;
    const std::unique_ptr<InputFile> file = files.OpenForReading(path, opened);
    if (!file) return PdfResult::kUnreadable;
    try {
        const std::unique_ptr<QPDF> pdf = OpenQpdf(*file, password);
        return KeepPages(*pdf, ranges) ? WriteQpdf(files, *pdf, target) : PdfResult::kNoSuchPages;
    } catch (const std::exception& error) {
        return ResultOf(error);
    }
}

}  // namespace quirepress
