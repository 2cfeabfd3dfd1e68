#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

class Files;

struct ArchiveLimits {
    std::int64_t entries = 100'000;
    std::int64_t bytes = std::int64_t{16} << 30;  // unpacked, all entries together
    int ratio = 1'000;                            // unpacked to packed bytes, once more than 64 MiB are out
    int folderDepth = 64;
};

struct ArchiveOutcome {
    int result = -1;                 // 0: every entry is out; -1: not, and `message` says why
    std::string message;             // one sentence; empty on success
    std::vector<std::string> files;  // paths of the regular files that are complete, in the archive's order
    int leftOut = 0;                 // links, devices and entries whose names leave the folder
};

// Unpacks a zip, rar, 7z or tar archive into `folder` (made when missing). Entries stay below the folder
// whatever their names say; a file that exists is never replaced (the new one gets "_2", "_3" ... before its
// extension); a file that could not be unpacked whole is not there. `keepGoing` is asked between blocks;
// when it answers false the unpacking ends with the message "Stopped". Never throws. May pump, as `keepGoing`
// does.
ArchiveOutcome UnpackArchive(Files& files, std::string_view archive, std::string_view folder,
                             const ArchiveLimits& limits, const std::function<bool()>& keepGoing);

}  // namespace quirepress
