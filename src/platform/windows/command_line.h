#pragma once

#include <string>
#include <vector>

namespace quirepress {

// One command line of the words `arguments` (the program first), as a program written in C takes it apart.
std::wstring MakeCommandLine(const std::vector<std::wstring>& arguments);

// The same for a batch file, which the command interpreter takes apart: nothing in a word is carried out.
// False when a word cannot be said to it (it holds a quotation mark or a line end).
bool MakeBatchCommandLine(const std::vector<std::wstring>& arguments, std::wstring& line);

}  // namespace quirepress
