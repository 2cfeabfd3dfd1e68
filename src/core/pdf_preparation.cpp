#include "core/pdf_preparation.h"

#include <algorithm>

#include "base/format.h"
#include "base/path.h"
#include "documents/file_signature.h"
#include "documents/pdf_counter.h"
#include "documents/pdf_forms.h"
#include "documents/pdf_protection.h"
#include "logs/debug_log.h"
#include "platform/files.h"
#include "settings/general_options.h"

namespace quirepress {

PreparedPdf PdfPreparation::Prepare(const std::string& pdf, const PageRange& range) {
    PreparedPdf prepared;
    prepared.file = pdf;
    const bool isWhole = range.kind == PageRange::Kind::kNone;
    const PdfProtection protection =
        isWhole ? FindPdfProtection(m_services.files, pdf) : PdfProtection::kUnknown;
    if (isWhole && (protection == PdfProtection::kNone || OpensWithoutPassword(pdf))) return prepared;
    if (!MakeTarget(ScratchName(pdf, FileExtension(pdf)), prepared)) return prepared;
    const PdfResult result =
        m_services.pages.ExtractPages(pdf, m_services.options.m_openPassword, {range.pages}, prepared.file);
    if (result == PdfResult::kDone) {
        prepared.pages = CountPagesIn(range, 0);
        if (prepared.pages == 0) prepared.pages = CountPages(prepared.file);
        return prepared;
    }
    const bool isDamaged = protection == PdfProtection::kUnknown && result != PdfResult::kWrongPassword;
    if (isWhole && isDamaged) {
        prepared.file = pdf;
        if (result == PdfResult::kUnreadable)
            prepared.doubt = DescribePdfResult(result, m_services.files, pdf);
        prepared.isPdf = prepared.doubt.empty() || HasSignatureOfItsName(m_services.files, pdf);
        return prepared;
    }
    prepared.flaw = DescribePdfResult(result, m_services.files, pdf);
    if (result == PdfResult::kNoSuchPages) prepared.flaw += Format(": \"%s\"", range.text);
    return prepared;
}

// A password may be one that only its owner needs.
bool PdfPreparation::OpensWithoutPassword(const std::string& pdf) {
    return m_services.library.CountPages(pdf, false, "") >= 0;
}

PreparedPdf PdfPreparation::FillForm(const std::string& data) {
    PreparedPdf prepared;
    if (!MakeTarget(ScratchName(data, ".pdf"), prepared)) return prepared;
    FormFilling filling;
    const PdfResult result =
        m_services.forms.FillForm(data, m_services.options.m_openPassword, prepared.file, filling);
    for (const std::string& name : filling.unknownFields)
        m_services.debugLog.Trace("Forms - the form has no field: %s\r\n", name);
    if (result != PdfResult::kDone)
        prepared.flaw = filling.flaw.empty() ? DescribePdfResult(result) : filling.flaw;
    else
        prepared.pages = CountPages(prepared.file);
    return prepared;
}

int PdfPreparation::CountPages(const std::string& pdf) {
    if (m_services.options.m_noPdfPages) return 0;
    std::string status;
    return std::max(0, m_services.counter.CountPages(pdf, false, "", status));
}

// False, with the flaw, when it can't be written.
bool PdfPreparation::MakeTarget(const std::string& name, PreparedPdf& prepared) {
    prepared.folder = std::make_unique<ScratchFolder>(m_services.files, m_services.options,
                                                      m_services.workingFolder, "Pages");
    const FileResult result = m_services.files.MakePrivateFolders(prepared.folder->Path());
    prepared.file = JoinPath(prepared.folder->Path(), name);
    if (result != FileResult::kDone)
        prepared.flaw =
            Format("the folder %s can't be made: %s", prepared.folder->Path(), DescribeFileResult(result));
    return result == FileResult::kDone;
}

}  // namespace quirepress
