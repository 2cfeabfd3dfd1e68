#pragma once

#include <string>
#include <vector>

namespace quirepress {

// The words of the command line after the program's name, as the user gave them; UTF-8 on Windows.
std::vector<std::string> ReadProgramArguments(int argumentCount, char** arguments);

}  // namespace quirepress
