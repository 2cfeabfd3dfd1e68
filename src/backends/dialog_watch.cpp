#include "backends/dialog_watch.h"

#include <algorithm>

#include "backends/shell_print.h"
#include "base/format.h"
#include "base/text.h"
#include "logs/debug_log.h"
#include "platform/event_loop.h"
#include "platform/processes.h"

namespace quirepress {

namespace {

constexpr int kLookPause = 1'000;  // milliseconds between two looks into a dialog
constexpr std::size_t kLongestWords = 160;

std::string ContentOf(const std::vector<AppControl>& controls) {
    std::string content;
    for (const AppControl& control : controls) content.append(control.name).append("\n");
    return content;
}

std::string Quote(std::string_view text) {
    return "\"" + std::string(CutToSize(ToPrintableLine(text), kLongestWords)) + "\"";
}

}  // namespace

DialogWatch::DialogWatch(DialogRules& rules, std::string_view document, ChildProcess& process,
                         int stuckMilliseconds)
    : m_rules(rules),
      m_process(process),
      m_isWebPage(IsWebPage(document)),
      m_stuckMilliseconds(stuckMilliseconds) {
    m_rules.SetDocument(document);
    m_rules.Services().loop.StartTimer(kTimer, kMilliseconds, [this] { Check(); });
}

DialogWatch::~DialogWatch() {
    m_rules.Services().loop.StopTimer(kTimer);
    m_rules.SetDocument({});
}

void DialogWatch::Check() {
    const DialogPass pass = m_rules.CheckWindows();
    m_rules.Services().debugLog.Trace("html check if(nIDEvent == 4) returned: %d\r\n", pass.answered);
    if (m_isWebPage && pass.answered)
        m_rules.Services().debugLog.Trace("Found and closed print window for html type\r\n");
    Follow(pass.waiting);
}

void DialogWatch::Follow(const std::vector<AppWindow>& waiting) {
    std::map<std::string, Dialog> dialogs;
    for (const AppWindow& window : waiting) {
        if (!m_process.HasInTree(window.processId)) continue;
        const auto known = m_dialogs.find(window.id);
        Dialog& dialog = dialogs[window.id];
        if (known != m_dialogs.end()) dialog = known->second;
        dialog.title = window.title;
        if (m_flaw.empty()) LookInto(window, dialog);
    }
    m_dialogs = std::move(dialogs);
}

// One that shows how far the program is gets new words now and then.
void DialogWatch::LookInto(const AppWindow& window, Dialog& dialog) {
    EventLoop& loop = m_rules.Services().loop;
    const long long now = loop.MonotonicMilliseconds();
    if (dialog.looked != 0 && now < dialog.looked + kLookPause) return;
    const std::vector<AppControl> controls = m_rules.Services().windows.ListControls(window);
    const std::string content = window.title + "\n" + ContentOf(controls);
    if (dialog.looked == 0 || content != dialog.content) dialog.changed = now;
    dialog.content = content;
    dialog.looked = now;
    if (now < dialog.changed + m_stuckMilliseconds) return;
    m_flaw = "it waits for an answer in its window " + Quote(window.title);
    const auto label = std::find_if(controls.begin(), controls.end(), [](const AppControl& control) {
        return control.role == ControlRole::kLabel && !control.name.empty();
    });
    if (label != controls.end()) m_flaw += ": " + Quote(label->name);
}

std::string DialogWatch::DescribeOpenDialogs() const {
    std::string titles;
    for (const auto& [id, dialog] : m_dialogs)
        titles.append(titles.empty() ? "" : ", ").append(Quote(dialog.title));
    return titles;
}

}  // namespace quirepress
