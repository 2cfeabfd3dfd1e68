#include "documents/pdf_merge.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "base/path.h"

namespace quirepress {
namespace {

constexpr int kWriterVersion = 17;

PdfMergeOutcome Failed(const std::string& file, const std::string& reason) {
    PdfMergeOutcome outcome;
    outcome.end = PdfMergeOutcome::End::kFailed;
    outcome.message = file + ": " + reason;
    return outcome;
}

}  // namespace

PdfMerge::PdfMerge(Files& files, PdfPages& library, std::string_view target, std::string scratchFolder)
    : m_files(files),
      m_library(library),
      m_scratchFolder(std::move(scratchFolder)),
      m_target(files, target),
      m_writer(m_target),
      m_root(m_writer.NewNumber()) {}

PdfMerge::~PdfMerge() = default;

PdfResult PdfMerge::Add(std::string_view path, std::string_view password) {
    if (m_target.Result() != FileResult::kDone) return PdfResult::kNotWritten;
    FileResult opened = FileResult::kDone;
    const std::unique_ptr<InputFile> file = m_files.OpenForReading(path, opened);
    if (!file) return PdfResult::kUnreadable;
    if (Copy(*file, false)) return PdfResult::kDone;
    if (m_target.Result() != FileResult::kDone) return PdfResult::kNotWritten;
    return AddCleaned(path, password);
}

PdfResult PdfMerge::AddCleaned(std::string_view path, std::string_view password) {
    const std::string cleaned = JoinPath(m_scratchFolder, "cleaned.pdf");
    m_files.MakePrivateFolders(m_scratchFolder);
    const PdfResult result = m_library.ExtractPages(path, password, {kAllPdfPages}, cleaned);
    if (result != PdfResult::kDone) return result;
    FileResult opened = FileResult::kDone;
    std::unique_ptr<InputFile> file = m_files.OpenForReading(cleaned, opened);
    const bool isCopied = file && Copy(*file, true);
    file.reset();
    m_files.Erase(cleaned);
    if (m_target.Result() != FileResult::kDone) return PdfResult::kNotWritten;
    return isCopied ? PdfResult::kDone : PdfResult::kUnreadable;
}

bool PdfMerge::Copy(InputFile& file, bool isCleaned) {
    PdfMergeInput input(file, m_scratch, isCleaned);
    std::uint32_t pages = 0;
    PdfMergedLayers layers = m_layers;
    if (!input.Open() || input.PageCount() > std::numeric_limits<int>::max() - m_pageCount ||
        !input.Copy(m_writer, m_root, pages, layers) || m_target.Result() != FileResult::kDone)
        return false;
    m_layers = std::move(layers);
    m_kids += std::to_string(pages) + " 0 R ";
    m_pageCount += input.PageCount();
    m_version = std::max(m_version, input.Version());
    return true;
}

PdfResult PdfMerge::Finish() {
    if (m_pageCount == 0) return PdfResult::kNoSuchPages;
    m_writer.WriteObject(m_root,
                         "<</Type/Pages/Count " + std::to_string(m_pageCount) + "/Kids[" + m_kids + "]>>");
    std::string catalog = "<</Type/Catalog/Pages " + std::to_string(m_root) + " 0 R";
    if (m_version > kWriterVersion)
        catalog += "/Version/" + std::to_string(m_version / 10) + '.' + std::to_string(m_version % 10);
    if (!m_layers.all.empty())
        catalog += "/OCProperties<</OCGs[" + m_layers.all + "]/D<</OFF[" + m_layers.hidden + "]/AS[" +
                   m_layers.automatic + "]>>>>";
    const std::uint32_t root = m_writer.NewNumber();
    m_writer.WriteObject(root, catalog + ">>");
    m_writer.Finish(root);
    return m_target.Finish() == FileResult::kDone ? PdfResult::kDone : PdfResult::kNotWritten;
}

PdfMergeOutcome MergePdfs(Files& files, PdfPages& library, const PdfMergeRequest& request) {
    PdfMerge merge(files, library, request.target, request.scratchFolder);
    PdfMergeOutcome outcome;
    for (std::size_t i = 0; i < request.inputs.size(); ++i) {
        const std::string& input = request.inputs[i];
        if (!request.progress(i)) {
            outcome.end = PdfMergeOutcome::End::kStopped;
            return outcome;
        }
        const PdfResult result = merge.Add(input, request.password);
        if (result == PdfResult::kNotWritten) return Failed(request.target, DescribePdfResult(result));
        if (result == PdfResult::kNoSuchPages) return Failed(input, "the file has no pages");
        if (result != PdfResult::kDone) return Failed(input, DescribePdfResult(result, files, input));
    }
    const PdfResult result = merge.Finish();
    if (result != PdfResult::kDone) return Failed(request.target, DescribePdfResult(result));
    outcome.pages = merge.PageCount();
    return outcome;
}

}  // namespace quirepress
