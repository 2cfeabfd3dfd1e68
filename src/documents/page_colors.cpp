#include "documents/page_colors.h"

#include <algorithm>
#include <utility>

#include "base/format.h"
#include "base/path.h"
#include "documents/page_renderer.h"
#include "platform/event_loop.h"
#include "platform/files.h"

namespace quirepress {
namespace {

constexpr long long kRenderLimit = 600'000;  // milliseconds, for all pages of a file

bool HasUndecided(const std::vector<PageColor>& pages) {
    return std::find(pages.begin(), pages.end(), PageColor::kUndecided) != pages.end();
}

}  // namespace

PageColors::PageColors(PdfPages& pdf, PageRenderer& renderer, EventLoop& loop, Files& files,
                       std::string temporaryFolder)
    : m_pdf(pdf),
      m_renderer(renderer),
      m_loop(loop),
      m_files(files),
      m_temporaryFolder(std::move(temporaryFolder)) {}

PdfResult PageColors::Judge(std::string_view path, std::string_view password, int tolerance,
                            std::vector<PageColor>& pages) {
    const int percent = std::clamp(tolerance, 0, 100);
    GreyRule rule;
    rule.spread = std::max(rule.spread, percent / 100.0);
    std::vector<PageColor> colors;
    const PdfResult result = m_pdf.InspectColors(path, password, percent, colors);
    if (result != PdfResult::kDone) return result;
    if (HasUndecided(colors) && password.empty()) Render(path, rule, colors);
    if (HasUndecided(colors) && !password.empty()) {
        // On a command line everybody on this machine could read the password.
        m_files.MakePrivateFolders(m_temporaryFolder);
        const std::string copy =
            JoinPath(m_temporaryFolder, Format("colors-%x.pdf", m_loop.MonotonicMilliseconds()));
        if (m_pdf.ExtractPages(path, password, {kAllPdfPages}, copy) == PdfResult::kDone)
            Render(copy, rule, colors);
        m_files.Erase(copy);
    }
    std::replace(colors.begin(), colors.end(), PageColor::kUndecided, PageColor::kColor);
    pages = std::move(colors);
    return PdfResult::kDone;
}

// A page that cannot be rendered stays undecided; those behind it are tried again.
void PageColors::Render(std::string_view path, const GreyRule& rule, std::vector<PageColor>& pages) {
    const long long end = m_loop.MonotonicMilliseconds() + kRenderLimit;
    for (std::size_t i = 0; i < pages.size() && m_loop.MonotonicMilliseconds() < end; ++i) {
        if (pages[i] != PageColor::kUndecided) continue;
        std::size_t last = i;
        while (last + 1 < pages.size() && pages[last + 1] == PageColor::kUndecided) ++last;
        const std::vector<PageColor> looks =
            m_renderer.Render(path, static_cast<int>(i) + 1, static_cast<int>(last) + 1, rule);
        std::copy(looks.begin(), looks.end(), pages.begin() + static_cast<std::ptrdiff_t>(i));
        i += looks.size();
    }
}

}  // namespace quirepress
