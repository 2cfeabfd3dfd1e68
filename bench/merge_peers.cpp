#include <cstdio>
#include <exception>
#include <memory>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include "merge_workloads.h"

namespace quirepress {

// The leanest way that the library has: streams stay as they are, and are taken over at once, so that no
// source stays open.
bool MergeFilesByQpdf(const std::vector<std::string>& paths, const std::string& target) {
    try {
        QPDF merged;
        merged.emptyPDF();
        QPDFPageDocumentHelper pages(merged);
        for (const std::string& path : paths) {
            QPDF pdf;
            pdf.setSuppressWarnings(true);
            pdf.setImmediateCopyFrom(true);
            pdf.processFile(path.c_str());
            for (const QPDFPageObjectHelper& page : QPDFPageDocumentHelper(pdf).getAllPages())
                pages.addPage(page, false);
        }
        QPDFWriter writer(merged, target.c_str());
        writer.setStreamDataMode(qpdf_s_preserve);
        writer.setObjectStreamMode(qpdf_o_generate);
        writer.write();
        return true;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "libqpdf: %s\n", error.what());
        return false;
    }
}

bool IsFaultlessForQpdf(const std::string& path) {
    try {
        QPDF pdf;
        pdf.setSuppressWarnings(true);
        pdf.processFile(path.c_str());
        pdf.getAllPages();
        return !pdf.anyWarnings();
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace quirepress
