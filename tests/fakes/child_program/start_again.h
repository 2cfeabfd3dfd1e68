#pragma once

#include <string>
#include <vector>

namespace quirepress {

// Starts this program once more with other words and does not wait for it. `detached`: as far away from this
// one as the system lets a program go.
bool StartAgain(const std::vector<std::string>& words, bool detached);

}  // namespace quirepress
