#include "documents/page_renderer.h"

#include <algorithm>
#include <string>

#include "base/text.h"
#include "documents/page_image.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/processes.h"

namespace quirepress {
namespace {

constexpr std::int64_t kMemory = std::int64_t{2} << 30;
constexpr long long kPageLimit = 30'000;  // milliseconds
constexpr int kLongestPause = 20;

// A program and its arguments; FIRST, LAST and FILE stand for what is wanted. All write raw PPM to standard
// output, the long side 1,000 pixels whatever the page's size.
const std::vector<std::vector<std::string>>& Renderers() {
    static const std::vector<std::vector<std::string>> kRenderers = {
        {"pdftoppm", "-q", "-scale-to", "1000", "-f", "FIRST", "-l", "LAST", "FILE"},
        {"mutool", "draw", "-q", "-F", "ppm", "-w", "1000", "-h", "1000", "-o", "-", "FILE", "FIRST-LAST"},
        {"gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sstdout=%stderr", "-sDEVICE=ppmraw", "-g1000x1000",
         "-dPDFFitPage", "-dTextAlphaBits=4", "-dGraphicsAlphaBits=4", "-dFirstPage=FIRST", "-dLastPage=LAST",
         "-sOutputFile=-", "FILE"}};
    return kRenderers;
}

}  // namespace

std::unique_ptr<ChildProcess> PageRenderer::Start(const std::string& path, int first, int last) {
    for (; m_renderer < Renderers().size(); ++m_renderer) {
        ProcessRequest request;
        for (std::string argument : Renderers()[m_renderer]) {
            argument = ReplaceAll(argument, "FIRST", std::to_string(first));
            argument = ReplaceAll(argument, "LAST", std::to_string(last));
            request.arguments.push_back(argument == "FILE" ? path : argument);
        }
        request.pipes = true;
        request.memoryLimit = kMemory;
        int systemError = 0;
        if (auto process = m_processes.Start(request, systemError)) return process;
    }
    return nullptr;
}

std::vector<PageColor> PageRenderer::Render(std::string_view path, int first, int last,
                                            const GreyRule& rule) {
    if (m_isStopped()) return {};
    // A whole path begins with nothing that a renderer takes for an option.
    const std::string resolved = m_files.ResolvePath(path);
    const std::unique_ptr<ChildProcess> process = resolved.empty() ? nullptr : Start(resolved, first, last);
    if (!process) return {};
    const std::size_t wanted = static_cast<std::size_t>(last) - static_cast<std::size_t>(first) + 1;
    PageImages images(rule);
    long long deadline = m_loop.MonotonicMilliseconds() + kPageLimit;
    int pause = 1;
    while (images.Colors().size() < wanted && !m_isStopped() && m_loop.MonotonicMilliseconds() < deadline) {
        const std::size_t before = images.Colors().size();
        std::string output;
        std::string errors;
        const bool goesOn = process->ReadOutput(output);
        process->ReadErrors(errors);
        if (!images.Take(output)) break;
        if (images.Colors().size() > before) deadline = m_loop.MonotonicMilliseconds() + kPageLimit;
        if (!goesOn) break;
        if (!output.empty()) {
            pause = 1;
            continue;
        }
        m_loop.Wait(pause);
        pause = std::min(2 * pause, kLongestPause);
    }
    return {images.Colors().begin(),
            images.Colors().begin() + static_cast<std::ptrdiff_t>(std::min(wanted, images.Colors().size()))};
}

}  // namespace quirepress
