#include "core/leftovers.h"

#include <memory>
#include <vector>

#include "base/path.h"
#include "base/text.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace quirepress {

namespace {

constexpr std::string_view kLockEnding = ".lock";
constexpr Instant kKeptFor = 24 * Instant{3600} * 1'000'000'000;

}  // namespace

std::string LockOf(std::string_view path) {
    return std::string(path).append(kLockEnding);
}

void EraseUnlessUsed(Files& files, const std::string& path) {
    FileResult result = FileResult::kDone;
    std::unique_ptr<FileLock> lock = files.TryLock(LockOf(path), result);
    if (!lock) return;
    files.Erase(path);
    lock.reset();
    files.Erase(LockOf(path));
}

void EraseLeftovers(Files& files, Clock& clock, const std::string& folder,
                    const std::function<bool(const std::string& path)>& isOurs) {
    std::vector<FolderEntry> entries;
    files.ListFolder(folder, entries);
    for (const FolderEntry& entry : entries) {
        std::string path = JoinPath(folder, entry.name);
        const Instant written = files.Inspect(path).written;
        // The lock of a program that died before its file came to be lies there alone.
        if (EndsWith(path, kLockEnding)) path.resize(path.size() - kLockEnding.size());
        const bool isOld = written != kNoInstant && clock.Now() - written >= kKeptFor;
        if (entry.kind == FileKind::kRegular && isOld && isOurs(path)) EraseUnlessUsed(files, path);
    }
}

}  // namespace quirepress
