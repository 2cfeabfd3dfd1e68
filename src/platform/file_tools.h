#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/files.h"

namespace quirepress {

// What every user of Files needs. A failed call leaves its target as it was.

// The whole of `path`, which may have at most `limit` bytes (more: kFailed). False leaves `out` as it was.
bool ReadWholeFile(Files& files, std::string_view path, std::int64_t limit, std::string& out,
                   FileResult& result);

// `path` holds either what it held or `bytes`, whatever happens meanwhile; on success for good.
FileResult ReplaceFileDurably(Files& files, std::string_view path, std::string_view bytes,
                              FileAccess access = FileAccess::kShared);

// `to`, which must not exist, becomes a complete copy, or does not come to be. `keepGoing` is asked between
// chunks and may pump; when it answers false the copy is given up with kFailed.
FileResult CopyFileDurably(Files& files, std::string_view from, std::string_view to,
                           const std::function<bool()>& keepGoing = {});

// A file, or a folder with all that is in it; links are erased, not followed. What could be erased is gone
// even when it fails. kDone when nothing is there.
FileResult EraseTree(Files& files, std::string_view path);

}  // namespace quirepress
