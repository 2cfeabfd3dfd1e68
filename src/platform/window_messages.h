#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/app_windows.h"

namespace quirepress {

// What passes between the program and the worker that looks at windows for it: a line for a request, a line
// for its answer. Fields are separated by tabs and have no control characters in them.
struct WindowRequest {
    enum class Task { kList, kControls, kSetText, kPress, kReturn, kClose };
    Task task = Task::kList;
    std::string window = {};   // ids
    std::string control = {};  // kSetText and kPress
    std::string text = {};     // kSetText
};

struct WindowAnswer {
    enum class Kind {
        kWindows,
        kControls,
        kDone,
        kRefused,
        kNoDesktop  // to every request: it is of no use to ask again soon
    };
    Kind kind = Kind::kRefused;
    std::vector<AppWindow> windows = {};
    std::vector<AppControl> controls = {};
};

// Lines without their line end. Parse answers false, and leaves its second argument in pieces, when the line
// is none of Format's.
std::string FormatWindowRequest(const WindowRequest& request);
bool ParseWindowRequest(std::string_view line, WindowRequest& request);
std::string FormatWindowAnswer(const WindowAnswer& answer);
bool ParseWindowAnswer(std::string_view line, WindowAnswer& answer);

}  // namespace quirepress
