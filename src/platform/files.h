#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/date_time.h"

namespace quirepress {

// Paths are byte strings of any length; a name with a NUL byte names nothing. No call follows a FIFO or a
// device into a wait.
enum class FileResult {
    kDone,
    kMissing,
    kNoAccess,
    kExists,
    kNoSpace,
    kBadName,
    kBusy,
    kOtherVolume,
    kFailed
};

// One short sentence part for a message: "no space is left on the disk".
const char* DescribeFileResult(FileResult result);

enum class FileKind { kMissing, kRegular, kFolder, kOther };

struct FileFacts {
    FileKind kind = FileKind::kMissing;
    bool readable = false;  // regular, and could be opened for reading
    std::int64_t size = 0;  // bytes; 0 when not regular
    Instant created = kNoInstant;
    Instant written = kNoInstant;
    Instant accessed = kNoInstant;
};

struct FolderEntry {
    std::string name;  // without the folder; "." and ".." are never listed
    FileKind kind = FileKind::kOther;
};

// An open regular file. Others may read, write, rename and delete it meanwhile.
class InputFile {
public:
    virtual ~InputFile() = default;
    // Bytes read (fewer than `size` only at the end), -1 on failure. Never throws.
    virtual std::int64_t ReadAt(std::int64_t offset, void* buffer, std::size_t size) = 0;
    virtual std::int64_t Size() = 0;  // now; -1 on failure
};

class OutputFile {
public:
    virtual ~OutputFile() = default;  // closes; what was not flushed may be lost with the machine
    // All of it, or a failure; of a failed append nothing stays behind.
    virtual FileResult Write(const void* data, std::size_t size) = 0;
    virtual FileResult FlushToDisk() = 0;  // survives a power failure
    virtual FileResult Close() = 0;        // reports what the system kept back until now; once
};

// Held until destroyed, or until the process ends, however it ends.
class FileLock {
public:
    virtual ~FileLock() = default;
};

enum class OpenMode { kCreateNew, kReplace, kAppend };
enum class FileAccess { kShared, kOwnerOnly };

class Files {
public:
    virtual ~Files() = default;

    // What `path` is, links followed. Opens a regular file to see whether it can be read.
    virtual FileFacts Inspect(std::string_view path) = 0;
    // Null when it is missing, cannot be opened or is no regular file (kNoAccess); `result` says why.
    virtual std::unique_ptr<InputFile> OpenForReading(std::string_view path, FileResult& result) = 0;
    virtual std::unique_ptr<OutputFile> OpenForWriting(std::string_view path, OpenMode mode,
                                                       FileAccess access, FileResult& result) = 0;
    // Appends the entries in the system's order; `entries` stays untouched on failure.
    virtual FileResult ListFolder(std::string_view path, std::vector<FolderEntry>& entries) = 0;
    virtual FileResult MakeFolders(std::string_view path) = 0;  // parents too; done when it exists
    // The same; what is made is for its owner only, where the folders around it do not say so already.
    virtual FileResult MakePrivateFolders(std::string_view path) { return MakeFolders(path); }
    // Within one volume; kExists when `to` exists unless `replace`. Survives a power failure.
    virtual FileResult Rename(std::string_view from, std::string_view to, bool replace) = 0;
    // A file, a link itself, or an empty folder; kExists for a folder that is not empty.
    virtual FileResult Erase(std::string_view path) = 0;
    // `to` gets the times of `from`, and its permissions where they are a file's own. Both exist already.
    virtual FileResult CopyAttributes(std::string_view from, std::string_view to) = 0;
    virtual FileResult FlushFolder(std::string_view path) = 0;  // makes creations and renames in it durable
    // The absolute path without links, "." and ".."; empty when it does not exist, or is longer than the
    // system can tell.
    virtual std::string ResolvePath(std::string_view path) = 0;
    // The platform's short (8.3) form of a path, by default for platforms without one: the path itself.
    // Empty when it cannot be told, as for a file that does not exist.
    virtual std::string ShortPath(std::string_view path);
    // An advisory lock on `path` (created when missing). Null when another holder has it: kBusy.
    virtual std::unique_ptr<FileLock> TryLock(std::string_view path, FileResult& result) = 0;
    // Bytes free for this user on the volume of `path`; -1 when unknown.
    virtual std::int64_t FreeSpace(std::string_view path) = 0;
};

}  // namespace quirepress
