#pragma once

#include <vector>

#include "backends/document_windows.h"

namespace quirepress {

class AppWindows;
class EventLoop;
struct AppWindow;
struct GeneralOptions;

// The PDF viewer and the word processor, as far as their windows tell of them.
class ViewerWindows : public DocumentWindows {
public:
    ViewerWindows(AppWindows& windows, EventLoop& loop, const GeneralOptions& options)
        : m_windows(windows), m_loop(loop), m_options(options) {}

    // They may pump.
    bool ViewerShows(std::string_view path) override;
    // It spools while it shows how far its print-out is. One that does not run spools nothing.
    WordAnswer AskWordProcessor(std::string_view path) override;

    // When the viewer may be closed; each is an option of its own.
    enum class Occasion { kExit, kListFinished, kPrinterSettings, kFileFinished };
    // Closes the windows of the PDF viewer, where the options want it at this occasion, and waits a while
    // for them to go; the number of those that it asked to close. May pump.
    int CloseAcrobat(Occasion occasion);

private:
    bool IsWanted(Occasion occasion) const;
    std::vector<AppWindow> ListViewers();

    AppWindows& m_windows;
    EventLoop& m_loop;
    const GeneralOptions& m_options;
};

}  // namespace quirepress
