#pragma once

#include <string>

namespace quirepress {

// Where a program of this name is, in full; empty, with the system's last error set, when there is none.
std::wstring FindProgramFile(const std::wstring& name);

}  // namespace quirepress
