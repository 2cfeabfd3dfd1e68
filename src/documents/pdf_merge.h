#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "documents/pdf_merge_input.h"
#include "documents/pdf_merge_writer.h"
#include "documents/pdf_pages.h"
#include "platform/file_tools.h"

namespace quirepress {

// Many PDFs become one, in their order. The pages stay as they are to the byte of every stream, with all
// that they need: fonts and images, annotations and what these look like, links to pages of the same
// document, layers and whether they are shown. Not kept is what belongs to a whole document: outlines, named
// destinations and links to them, attachments, scripts, tags, page labels, properties. Form fields stay as
// they look and can't be filled in any more.
//
// Good files are copied object by object without a look into their streams. One that is encrypted, has a form
// or anything strange about it is first written anew by the PDF library.
class PdfMerge {
public:
    // `target` keeps what it held until Finish. `scratchFolder` is made when it is needed, for what the
    // library writes; it is left empty.
    PdfMerge(Files& files, PdfPages& library, std::string_view target, std::string scratchFolder);
    ~PdfMerge();

    // Puts the pages of `path` behind those that are there. A failed one leaves out this file, but for
    // kNotWritten, which is the end. `path` may be the target. May pump.
    PdfResult Add(std::string_view path, std::string_view password);
    int PageCount() const { return m_pageCount; }
    // The target is complete and on the disk, or as it was. kNoSuchPages when there are none.
    PdfResult Finish();

private:
    bool Copy(InputFile& file, bool isCleaned);
    PdfResult AddCleaned(std::string_view path, std::string_view password);

    Files& m_files;
    PdfPages& m_library;
    std::string m_scratchFolder;
    ReplacementFile m_target;
    PdfMergeWriter m_writer;
    PdfMergeScratch m_scratch;
    std::uint32_t m_root;
    std::string m_kids;  // the page trees, as references
    PdfMergedLayers m_layers;
    int m_pageCount = 0;
    int m_version = 0;
};

struct PdfMergeRequest {
    std::vector<std::string> inputs;
    std::string target;  // may be one of them
    std::string scratchFolder;
    std::string password;  // opens protected files
    // Told before each file how many are done; false stops the merging. May pump.
    std::function<bool(std::size_t done)> progress = [](std::size_t) { return true; };
};

struct PdfMergeOutcome {
    enum class End { kDone, kFailed, kStopped } end = End::kDone;
    std::string message;  // kFailed: a sentence that names the file
    int pages = 0;
};

// All of them, or nothing is written. May pump.
PdfMergeOutcome MergePdfs(Files& files, PdfPages& library, const PdfMergeRequest& request);

}  // namespace quirepress
