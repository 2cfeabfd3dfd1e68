#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace quirepress {

class Clock;
class Files;

// Temporary files of a run are locked by a file beside them for as long as a program uses them.
std::string LockOf(std::string_view path);
// The file with its lock, unless another program uses it.
void EraseUnlessUsed(Files& files, const std::string& path);

// At the begin of a run: what programs that have ended left in `folder` is erased once it is older than a
// day, with its locks. `isOurs` is asked about the path of each file; the others stay.
void EraseLeftovers(Files& files, Clock& clock, const std::string& folder,
                    const std::function<bool(const std::string& path)>& isOurs);

}  // namespace quirepress
