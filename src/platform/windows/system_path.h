#pragma once

#include <string>
#include <string_view>

#include "platform/files.h"

namespace quirepress {

// The absolute form of `path` that lifts the limit on its length. kMissing for an empty path, kNoAccess for a
// device ("CON", "\\.\pipe\x"), kBadName for one with a NUL and for a stream of a file ("a.txt:b").
FileResult ToSystemPath(std::string_view path, std::wstring& systemPath);

// The same without the prefix that lifts the limit, as users know it.
std::string FromSystemPath(std::wstring_view systemPath);

FileResult ToFileResult(unsigned long error);

}  // namespace quirepress
