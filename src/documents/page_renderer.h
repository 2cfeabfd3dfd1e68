#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "documents/pdf_page_color.h"

namespace quirepress {

class ChildProcess;
class EventLoop;
class Files;
class Processes;

// Renders pages of PDF files small, by whichever renderer is installed, in a process of its own with limits
// of time and memory.
class PageRenderer {
public:
    PageRenderer(Processes& processes, EventLoop& loop, Files& files)
        : m_processes(processes), m_loop(loop), m_files(files) {}

    // Asked again and again while it waits: the answer true ends the process and the call.
    void UseStop(std::function<bool()> isStopped) { m_isStopped = std::move(isStopped); }

    // The colours of the pages from `first` to `last` as they look; fewer where the renderer stops early,
    // none where there is none. The file must open without a password. May pump.
    std::vector<PageColor> Render(std::string_view path, int first, int last, const GreyRule& rule);

private:
    std::unique_ptr<ChildProcess> Start(const std::string& path, int first, int last);

    Processes& m_processes;
    EventLoop& m_loop;
    Files& m_files;
    std::function<bool()> m_isStopped = [] { return false; };
    std::size_t m_renderer = 0;  // that is installed, as far as is known
};

}  // namespace quirepress
