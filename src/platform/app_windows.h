#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quirepress {

class EventLoop;
class Machine;
class Processes;

// A window of another program, on the top level. Texts are UTF-8.
struct AppWindow {
    std::string id;  // holds for as long as the window is open
    std::int64_t processId = 0;
    std::string program;  // file title of its executable; empty when it can't be told
    std::string title;
    bool isDialog = false;  // it asks or tells something; else it is where its program works
};

enum class ControlRole { kOther, kButton, kTextField, kPasswordField, kLabel };

// What a window holds and a user could use, or read, now.
struct AppControl {
    std::string id;  // holds for as long as its window is open
    ControlRole role = ControlRole::kOther;
    int number = 0;          // by which its program knows it; 0: none
    std::string name;        // of a field its label, where that is known; else what stands on it
    bool isDefault = false;  // the button that the Return key presses
};

// The windows of other programs that are open for this program's user. A program that hangs is left out, and
// no call takes longer than about two seconds. What is asked of a window is asked only: whether it did it
// shows in the next look. Every call may pump.
class AppWindows {
public:
    virtual ~AppWindows() = default;
    virtual std::vector<AppWindow> ListWindows() = 0;  // none where there is no desktop
    virtual std::vector<AppControl> ListControls(const AppWindow& window) = 0;
    // They answer false when it can't be asked.
    virtual bool SetText(const AppWindow& window, const AppControl& field, std::string_view text) = 0;
    virtual bool Press(const AppWindow& window, const AppControl& button) = 0;
    virtual bool SendReturn(const AppWindow& window) = 0;  // the key, to this window and to no other
    virtual bool Close(const AppWindow& window) = 0;
    // What a program that is started needs in its environment for its windows to be seen.
    virtual std::vector<std::pair<std::string, std::string>> ProgramEnvironment() = 0;
};

// The windows of the desktop that this program is on. Nothing is started before the first call, and nothing
// at all where there is no desktop.
std::unique_ptr<AppWindows> MakeAppWindows(Processes& processes, EventLoop& loop, Machine& machine);

// A caption without the marks of mnemonics: "Save" for "&Save", "A & B" for "A && B".
std::string WithoutMnemonic(std::string_view caption);

}  // namespace quirepress
