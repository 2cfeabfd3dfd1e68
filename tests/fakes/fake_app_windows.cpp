#include "fakes/fake_app_windows.h"

#include <algorithm>

namespace quirepress {

AppWindow& FakeAppWindows::PutMainWindow(const std::string& title, std::int64_t processId) {
    m_windows.push_back({title, processId, {}, title, false});
    return m_windows.back();
}

AppWindow& FakeAppWindows::PutDialog(const std::string& title, std::vector<AppControl> controls,
                                     std::int64_t processId) {
    m_controls[title] = std::move(controls);
    AppWindow& window = PutMainWindow(title, processId);
    window.isDialog = true;
    return window;
}

void FakeAppWindows::Remove(const std::string& title) {
    std::erase_if(m_windows, [&](const AppWindow& window) { return window.title == title; });
}

bool FakeAppWindows::IsOpen(const std::string& title) const {
    return std::any_of(m_windows.begin(), m_windows.end(),
                       [&](const AppWindow& window) { return window.title == title; });
}

AppControl FakeAppWindows::Button(const std::string& name, bool isDefault) {
    return {name, ControlRole::kButton, 0, name, isDefault};
}

AppControl FakeAppWindows::Field(const std::string& id, int number) {
    return {id, ControlRole::kTextField, number, {}, false};
}

AppControl FakeAppWindows::Label(const std::string& text) {
    return {text, ControlRole::kLabel, 0, text, false};
}

std::vector<AppWindow> FakeAppWindows::ListWindows() {
    whenListed();
    return m_windows;
}

std::vector<AppControl> FakeAppWindows::ListControls(const AppWindow& window) {
    return IsOpen(window.id) ? m_controls[window.id] : std::vector<AppControl>();
}

bool FakeAppWindows::SetText(const AppWindow& window, const AppControl& field, std::string_view text) {
    return Act(window, "text " + window.id + ": " + field.id + " = " + std::string(text), false);
}

bool FakeAppWindows::Press(const AppWindow& window, const AppControl& button) {
    return Act(window, "press " + window.id + ": " + button.id, true);
}

bool FakeAppWindows::SendReturn(const AppWindow& window) {
    return Act(window, "return " + window.id, true);
}

bool FakeAppWindows::Close(const AppWindow& window) {
    return Act(window, "close " + window.id, true);
}

bool FakeAppWindows::Act(const AppWindow& window, const std::string& action, bool goes) {
    if (!IsOpen(window.id)) return false;
    actions.push_back(action);
    const bool stays = std::find(staying.begin(), staying.end(), window.id) != staying.end();
    if (goes && !stays) Remove(std::string(window.id));
    whenAnswered(action);
    return true;
}

}  // namespace quirepress
