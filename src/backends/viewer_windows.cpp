#include "backends/viewer_windows.h"

#include <algorithm>
#include <cctype>

#include "backends/dialog_table.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/app_windows.h"
#include "platform/event_loop.h"
#include "settings/general_options.h"

namespace quirepress {

namespace {

constexpr int kClosingMilliseconds = 5'000;
constexpr int kClosingSlice = 100;

constexpr std::string_view kViewerTitles[] = {"Adobe Reader", "Adobe Acrobat", "Acrobat Reader"};
constexpr std::string_view kViewerPrograms[] = {"acrord32", "acrobat", "acroread"};
constexpr std::string_view kWordPrograms[] = {"winword"};

template <std::size_t Size>
bool IsOneOf(const std::string_view (&programs)[Size], const AppWindow& window) {
    const std::string program = ToLowerAscii(TitleWithoutExtension(window.program));
    return std::find(std::begin(programs), std::end(programs), program) != std::end(programs);
}

bool IsViewer(const AppWindow& window) {
    return IsOneOf(kViewerPrograms, window) ||
           std::any_of(std::begin(kViewerTitles), std::end(kViewerTitles),
                       [&](std::string_view part) { return Contains(window.title, part); });
}

// "report.pdf - Adobe Reader" and "[report.pdf]" show report.pdf; "myreport.pdf - Adobe Reader" does not.
bool ShowsFile(std::string_view title, std::string_view file) {
    const std::string lowerTitle = ToLowerAscii(title);
    const std::string lowerFile = ToLowerAscii(file);
    for (std::size_t at = lowerTitle.find(lowerFile); at != std::string::npos;
         at = lowerTitle.find(lowerFile, at + 1)) {
        const auto before = static_cast<unsigned char>(at == 0 ? ' ' : lowerTitle[at - 1]);
        if (before < 128 && std::isalnum(before) == 0 && before != '_' && before != '-') return true;
    }
    return false;
}

}  // namespace

std::vector<AppWindow> ViewerWindows::ListViewers() {
    std::vector<AppWindow> windows = m_windows.ListWindows();
    std::erase_if(windows, [](const AppWindow& window) { return !IsViewer(window); });
    return windows;
}

bool ViewerWindows::ViewerShows(std::string_view path) {
    const std::string file(FileTitle(path));
    const std::vector<AppWindow> viewers = ListViewers();
    return !file.empty() && std::any_of(viewers.begin(), viewers.end(), [&](const AppWindow& window) {
        return ShowsFile(window.title, file);
    });
}

DocumentWindows::WordAnswer ViewerWindows::AskWordProcessor(std::string_view) {
    const std::vector<AppWindow> windows = m_windows.ListWindows();
    const bool isSpooling = std::any_of(windows.begin(), windows.end(), [](const AppWindow& window) {
        return IsOneOf(kWordPrograms, window) && IsPrintProgress(window.title);
    });
    return isSpooling ? WordAnswer::kSpooling : WordAnswer::kNotSpooling;
}

bool ViewerWindows::IsWanted(Occasion occasion) const {
    switch (occasion) {
        case Occasion::kExit:
            return m_options.m_closeAcrobat;
        case Occasion::kListFinished:
            return m_options.m_closeAcrobatList;
        case Occasion::kPrinterSettings:
            return m_options.m_closeAcrobatPrs;
        case Occasion::kFileFinished:
            return m_options.m_closeAcrobatEveryFile;
    }
    return false;
}

int ViewerWindows::CloseAcrobat(Occasion occasion) {
    if (!IsWanted(occasion)) return 0;
    int closed = 0;
    for (const AppWindow& window : ListViewers())
        if (m_windows.Close(window)) ++closed;
    if (closed == 0) return 0;
    const long long deadline = m_loop.MonotonicMilliseconds() + kClosingMilliseconds;
    while (m_loop.MonotonicMilliseconds() < deadline && !ListViewers().empty()) m_loop.Wait(kClosingSlice);
    return closed;
}

}  // namespace quirepress
