#include "core/file_target.h"

#include <algorithm>
#include <vector>

#include "base/entry_names.h"
#include "base/format.h"
#include "base/numbers.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/files.h"

namespace quirepress {

namespace {

bool EqualAsPaths(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return a == b || (IsSeparator(a) && IsSeparator(b)); });
}

std::string_view TrimSeparators(std::string_view path) {
    while (!path.empty() && IsSeparator(path.back())) path.remove_suffix(1);
    return path;
}

bool LeavesItsFolder(std::string_view path) {
    std::string parts(path);
    std::replace_if(parts.begin(), parts.end(), IsSeparator, '/');
    const std::vector<std::string_view> names = SplitAt(parts, '/');
    return std::find(names.begin(), names.end(), "..") != names.end();
}

// The number between `start` and `extension` as it is written in a version's name; 0 when there is none.
int VersionIn(std::string_view name, std::string_view start, std::string_view extension) {
    if (!StartsWith(name, start) || !EndsWith(name, extension)) return 0;
    name.remove_prefix(start.size());
    if (name.size() <= extension.size() || name.front() < '1' || name.front() > '9') return 0;
    name.remove_suffix(extension.size());
    return static_cast<int>(ParseWholeNumber(name, 1, kMostVersions).value_or(0));
}

}  // namespace

MoveTarget ParseMoveTo(std::string_view moveTo) {
    if (moveTo.empty()) return {};
    if (moveTo == "qprdelete") return {MoveAction::kErase, {}};
    if (moveTo == "qprdelete+job") return {MoveAction::kEraseWithJob, {}};
    if (moveTo == "qprjobdelete") return {MoveAction::kEraseJob, {}};
    for (const std::string_view prefix : {"copy:", "Copy:", "COPY:"}) {
        if (!StartsWith(moveTo, prefix)) continue;
        moveTo.remove_prefix(prefix.size());
        while (StartsWith(moveTo, " ")) moveTo.remove_prefix(1);
        return {MoveAction::kCopy, std::string(moveTo)};
    }
    return {MoveAction::kMove, std::string(moveTo)};
}

// Only the file's own name counts: a folder of this name may hold documents of the user. Either separator,
// since a list may come from another system.
bool IsMergedFile(std::string_view path) {
    const std::size_t separator = path.find_last_of("/\\");
    return separator != std::string_view::npos && StartsWith(path.substr(separator + 1), "QPRMerged_");
}

std::string TargetName(std::string_view path, std::string_view title) {
    const std::string_view own = FileTitle(path);
    if (title == own) return std::string(own);
    const std::vector<std::string> parts = CleanEntryName(title);
    if (parts.empty()) return std::string(own);
    const std::string_view extension = FileExtension(own);
    const bool hasExtension = EqualIgnoringAsciiCase(FileExtension(parts.back()), extension);
    return hasExtension ? parts.back() : parts.back() + std::string(extension);
}

std::string VersionName(std::string_view name, int version) {
    return Format("%s_v%d%s", TitleWithoutExtension(name), version, FileExtension(name));
}

int FindFreeVersion(Files& files, std::string_view folder, std::string_view name, int first) {
    if (first > kMostVersions) return 0;
    std::vector<FolderEntry> entries;
    if (files.ListFolder(folder, entries) != FileResult::kDone) return first;
    const std::string start = std::string(TitleWithoutExtension(name)) + "_v";
    const std::string_view extension = FileExtension(name);
    std::vector<bool> isTaken(kMostVersions + 1);
    for (const FolderEntry& entry : entries) {
        const int version = VersionIn(entry.name, start, extension);
        isTaken[static_cast<std::size_t>(version)] = true;
    }
    const auto free = std::find(isTaken.begin() + first, isTaken.end(), false);
    return free == isTaken.end() ? 0 : static_cast<int>(free - isTaken.begin());
}

std::string ExtendMoveTo(std::string_view moveTo, std::string_view monitoredFolder, std::string_view path) {
    const MoveAction action = ParseMoveTo(moveTo).action;
    std::string same(moveTo);
    if (action != MoveAction::kMove && action != MoveAction::kCopy) return same;
    const std::string_view root = TrimSeparators(monitoredFolder);
    const bool isBelow = path.size() > root.size() && IsSeparator(path[root.size()]) &&
                         EqualAsPaths(path.substr(0, root.size()), root);
    if (!isBelow) return same;
    const std::string_view below = TrimSeparators(FolderOf(path.substr(root.size() + 1)));
    return below.empty() || LeavesItsFolder(below) ? same : JoinPath(moveTo, below);
}

}  // namespace quirepress
