#pragma once

#include <cstdint>
#include <string>

namespace quirepress {

// Asks the window of this process with this title to close, as its frame's button does. False when there is
// none, or no X server.
bool CloseXWindow(std::int64_t processId, const std::string& title);

}  // namespace quirepress
