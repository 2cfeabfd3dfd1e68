#pragma once

#include <string>
#include <utility>
#include <vector>

namespace quirepress {

// This program's environment with `added` in it, in the form that CreateProcessW takes.
std::wstring MakeEnvironment(const std::vector<std::pair<std::string, std::string>>& added);

}  // namespace quirepress
