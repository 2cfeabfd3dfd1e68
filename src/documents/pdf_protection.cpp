#include "documents/pdf_protection.h"

#include "documents/pdf_cross_references.h"
#include "documents/pdf_file_view.h"
#include "documents/pdf_quick_count.h"
#include "platform/files.h"

namespace quirepress {

PdfProtection FindPdfProtection(Files& files, std::string_view path) {
    FileResult result = FileResult::kDone;
    const std::unique_ptr<InputFile> file = files.OpenForReading(path, result);
    if (!file) return PdfProtection::kUnknown;
    PdfScratch scratch;
    PdfFileView view(*file, scratch.window);
    const std::int64_t start = FindCrossReferences(view);
    if (start <= 0) return PdfProtection::kUnknown;
    // Something may stand before the file proper, such as a printer's job commands.
    for (const std::int64_t origin : {std::int64_t{0}, FindPdfHeader(view)}) {
        if (origin < 0) continue;
        PdfCrossReferences crossReferences(view, scratch.decoder, scratch.crossReferences, origin);
        if (crossReferences.LoadNewest(start))
            return crossReferences.IsEncrypted() ? PdfProtection::kEncrypted : PdfProtection::kNone;
    }
    return PdfProtection::kUnknown;
}

}  // namespace quirepress
