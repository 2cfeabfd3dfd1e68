#pragma once

#include <string>
#include <vector>

namespace quirepress {

struct Services;

// The whole console program for one command line (without the program's name); answers its exit code.
int RunConsole(Services& services, std::vector<std::string> arguments);

}  // namespace quirepress
