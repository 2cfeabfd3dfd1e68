#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/app_windows.h"

namespace quirepress {

// Windows as a test puts them up. One that is answered goes, unless it is said to stay.
class FakeAppWindows : public AppWindows {
public:
    // Its id is the title.
    AppWindow& PutDialog(const std::string& title, std::vector<AppControl> controls,
                         std::int64_t processId = 1);
    AppWindow& PutMainWindow(const std::string& title, std::int64_t processId = 1);
    void Remove(const std::string& title);
    bool IsOpen(const std::string& title) const;
    std::vector<AppControl>& ControlsOf(const std::string& title) { return m_controls[title]; }

    static AppControl Button(const std::string& name, bool isDefault = false);
    static AppControl Field(const std::string& id, int number = 0);
    static AppControl Label(const std::string& text);

    std::vector<AppWindow> ListWindows() override;
    std::vector<AppControl> ListControls(const AppWindow& window) override;
    bool SetText(const AppWindow& window, const AppControl& field, std::string_view text) override;
    bool Press(const AppWindow& window, const AppControl& button) override;
    bool SendReturn(const AppWindow& window) override;
    bool Close(const AppWindow& window) override;
    std::vector<std::pair<std::string, std::string>> ProgramEnvironment() override { return environment; }

    // "press TITLE: BUTTON", "text TITLE: FIELD = TEXT", "return TITLE", "close TITLE".
    std::vector<std::string> actions;
    std::vector<std::string> staying;  // titles of windows that answers don't make go
    std::function<void()> whenListed = [] {};
    std::function<void(const std::string& action)> whenAnswered = [](const std::string&) {};
    std::vector<std::pair<std::string, std::string>> environment;

private:
    bool Act(const AppWindow& window, const std::string& action, bool goes);

    std::vector<AppWindow> m_windows;
    std::map<std::string, std::vector<AppControl>> m_controls;
};

}  // namespace quirepress
