#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "documents/pdf_pages.h"

namespace quirepress {

class EventLoop;
class Files;
class PageRenderer;

// The colour of every page of a PDF: by what it says where that decides, else as it looks when it is
// rendered.
class PageColors {
public:
    // `temporaryFolder` is for a copy without a password, which a renderer needs.
    PageColors(PdfPages& pdf, PageRenderer& renderer, EventLoop& loop, Files& files,
               std::string temporaryFolder);

    // One answer a page, none of them undecided: what cannot be told counts as colour, so that nothing loses
    // its colours. Takes no more than some minutes. May pump.
    PdfResult Judge(std::string_view path, std::string_view password, int tolerance,
                    std::vector<PageColor>& pages);

private:
    void Render(std::string_view path, const GreyRule& rule, std::vector<PageColor>& pages);

    PdfPages& m_pdf;
    PageRenderer& m_renderer;
    EventLoop& m_loop;
    Files& m_files;
    std::string m_temporaryFolder;
};

}  // namespace quirepress
