#include "platform/files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cstdio>
#include <cstdlib>
#include <limits>

#include "base/path.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/make_services.h"
#include "platform/linux/placed_path.h"

namespace quirepress {

namespace {

FileResult ToFileResult(int error) {
    switch (error) {
        case 0:
            return FileResult::kDone;
        case ENOENT:
        case ENOTDIR:
            return FileResult::kMissing;
        case EACCES:
        case EPERM:
        case EROFS:
        case EISDIR:
        case ENXIO:  // a socket, or a FIFO that nobody reads
            return FileResult::kNoAccess;
        case EEXIST:
        case ENOTEMPTY:
            return FileResult::kExists;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return FileResult::kNoSpace;
        case EILSEQ:
        case ENAMETOOLONG:
        case ELOOP:
            return FileResult::kBadName;
        case EBUSY:
        case ETXTBSY:
        case EWOULDBLOCK:
            return FileResult::kBusy;
        case EXDEV:
            return FileResult::kOtherVolume;
        default:
            return FileResult::kFailed;
    }
}

FileResult LastResult() {
    return ToFileResult(errno);
}

// What lies beyond the range of an Instant becomes its nearest end.
Instant ToInstant(const statx_timestamp& time) {
    constexpr std::int64_t kSecond = 1'000'000'000;
    constexpr std::int64_t kLast = std::numeric_limits<Instant>::max() / kSecond - 1;
    if (time.tv_sec > kLast) return std::numeric_limits<Instant>::max();
    if (time.tv_sec < -kLast) return kNoInstant + 1;
    return time.tv_sec * kSecond + time.tv_nsec;
}

FileKind ToFileKind(unsigned mode) {
    if (S_ISREG(mode)) return FileKind::kRegular;
    return S_ISDIR(mode) ? FileKind::kFolder : FileKind::kOther;
}

bool AskSystem(int folder, const char* name, int flags, struct statx& status) {
    return statx(folder, name, flags, STATX_BASIC_STATS | STATX_BTIME, &status) == 0;
}

FileFacts ToFacts(const struct statx& status, bool opened) {
    FileFacts facts;
    facts.kind = ToFileKind(status.stx_mode);
    if (facts.kind == FileKind::kRegular) {
        facts.readable = opened;
        facts.size = static_cast<std::int64_t>(status.stx_size);
    }
    if ((status.stx_mask & STATX_BTIME) != 0) facts.created = ToInstant(status.stx_btime);
    facts.written = ToInstant(status.stx_mtime);
    facts.accessed = ToInstant(status.stx_atime);
    return facts;
}

Descriptor OpenToRead(const PlacedPath& place) {
    constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    return Descriptor(RetryInterrupted([&] { return openat(place.Folder(), place.Name(), kFlags); }));
}

class OpenInputFile : public InputFile {
public:
    explicit OpenInputFile(Descriptor file) : m_file(std::move(file)) {}

    std::int64_t ReadAt(std::int64_t offset, void* buffer, std::size_t size) override {
        std::size_t done = 0;
        while (done < size) {
            char* const target = static_cast<char*>(buffer) + done;
            const auto position = static_cast<off_t>(offset + static_cast<std::int64_t>(done));
            const ssize_t read =
                RetryInterrupted([&] { return pread(m_file.Value(), target, size - done, position); });
            if (read < 0) return -1;
            if (read == 0) break;
            done += static_cast<std::size_t>(read);
        }
        return static_cast<std::int64_t>(done);
    }

    std::int64_t Size() override {
        struct stat status;
        return fstat(m_file.Value(), &status) == 0 ? status.st_size : -1;
    }

private:
    Descriptor m_file;
};

class OpenOutputFile : public OutputFile {
public:
    OpenOutputFile(Descriptor file, OpenMode mode) : m_file(std::move(file)), m_mode(mode) {}

    FileResult Write(const void* data, std::size_t size) override {
        std::size_t done = 0;
        while (done < size) {
            const char* const source = static_cast<const char*>(data) + done;
            const ssize_t written =
                RetryInterrupted([&] { return write(m_file.Value(), source, size - done); });
            if (written < 0) {
                const FileResult result = LastResult();
                if (m_mode == OpenMode::kAppend) TakeBack(done);
                return result;
            }
            done += static_cast<std::size_t>(written);
        }
        return FileResult::kDone;
    }

    FileResult FlushToDisk() override {
        return RetryInterrupted([&] { return fdatasync(m_file.Value()); }) == 0 ? FileResult::kDone
                                                                                : LastResult();
    }

    FileResult Close() override {
        // After an interrupted close the descriptor is gone all the same.
        return m_file.Close() == 0 || errno == EINTR ? FileResult::kDone : LastResult();
    }

private:
    // A log is no place for half a record: takes the last `size` bytes back, unless others wrote behind them.
    void TakeBack(std::size_t size) {
        if (size == 0) return;
        struct stat status;
        const off_t end = lseek(m_file.Value(), 0, SEEK_CUR);
        if (end < 0 || fstat(m_file.Value(), &status) != 0 || status.st_size != end) return;
        // Where it cannot be taken back, it stays: the caller knows already that the write failed.
        [[maybe_unused]] const int ignored = ftruncate(m_file.Value(), end - static_cast<off_t>(size));
    }

    Descriptor m_file;
    OpenMode m_mode;
};

class HeldLock : public FileLock {
public:
    explicit HeldLock(Descriptor file) : m_file(std::move(file)) {}
    // Not left to close(): a program that is just being started may hold a copy of the descriptor.
    ~HeldLock() override { flock(m_file.Value(), LOCK_UN); }

private:
    Descriptor m_file;
};

// Prepares an opened file for `mode`; no file that is not a regular one is touched.
FileResult PrepareForWriting(int file, OpenMode mode, FileAccess access) {
    struct stat status;
    if (fstat(file, &status) != 0) return LastResult();
    if (!S_ISREG(status.st_mode)) return FileResult::kNoAccess;
    // A file system without permissions refuses this for our own file; it has nothing better to offer.
    const bool open = access == FileAccess::kOwnerOnly && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0;
    if (open && fchmod(file, S_IRUSR | S_IWUSR) != 0 && status.st_uid != geteuid())
        return FileResult::kNoAccess;
    if (mode == OpenMode::kReplace && status.st_size != 0 && ftruncate(file, 0) != 0) return LastResult();
    return FileResult::kDone;
}

FileKind KindOfEntry(int folder, const dirent& entry) {
    if (entry.d_type == DT_REG) return FileKind::kRegular;
    if (entry.d_type == DT_DIR) return FileKind::kFolder;
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) return FileKind::kOther;
    struct stat status;
    if (fstatat(folder, entry.d_name, &status, 0) != 0) return FileKind::kMissing;
    return ToFileKind(status.st_mode);
}

bool IsDotName(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

FileResult MakeOneFolder(std::string_view path, mode_t mode) {
    const PlacedPath place(path);
    if (!place.IsValid()) return LastResult();
    if (mkdirat(place.Folder(), place.Name(), mode) == 0) return FileResult::kDone;
    const int error = errno;
    struct stat status;
    const bool exists = error == EEXIST && fstatat(place.Folder(), place.Name(), &status, 0) == 0;
    return exists && S_ISDIR(status.st_mode) ? FileResult::kDone : ToFileResult(error);
}

FileResult MakeFolderAndParents(std::string_view path, mode_t mode) {
    FileResult result = MakeOneFolder(path, mode);
    if (result != FileResult::kMissing || path.empty()) return result;
    for (std::size_t end = path.find('/', 1); end != std::string_view::npos; end = path.find('/', end + 1)) {
        result = MakeOneFolder(path.substr(0, end), mode);
        if (result != FileResult::kDone) return result;
    }
    return MakeOneFolder(path, mode);
}

// For file systems that do not know the flag: a second name is refused when it exists. A folder has only one
// name, so it is looked for first.
int RenameToNewName(const PlacedPath& from, const PlacedPath& to) {
    constexpr unsigned kNoReplace = RENAME_NOREPLACE;
    if (renameat2(from.Folder(), from.Name(), to.Folder(), to.Name(), kNoReplace) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return -1;
    if (linkat(from.Folder(), from.Name(), to.Folder(), to.Name(), 0) == 0) {
        if (unlinkat(from.Folder(), from.Name(), 0) == 0) return 0;
        const int error = errno;
        unlinkat(to.Folder(), to.Name(), 0);
        errno = error;
        return -1;
    }
    if (errno == EEXIST || errno == ENOENT || errno == EXDEV) return -1;
    if (faccessat(to.Folder(), to.Name(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) {
        errno = EEXIST;
        return -1;
    }
    return renameat(from.Folder(), from.Name(), to.Folder(), to.Name());
}

std::string_view FolderToFlush(std::string_view path) {
    const std::string_view folder = FolderOf(path);
    return folder.empty() ? "." : folder;
}

class LinuxFiles : public Files {
public:
    FileFacts Inspect(std::string_view path) override {
        const PlacedPath place(path);
        if (!place.IsValid()) return {};
        struct statx status;
        if (!AskSystem(place.Folder(), place.Name(), 0, status)) return {};
        // Only regular files are opened: opening a pipe would let go a writer that waits at its other end.
        return ToFacts(status, S_ISREG(status.stx_mode) && OpenToRead(place).IsOpen());
    }

    std::unique_ptr<InputFile> OpenForReading(std::string_view path, FileResult& result) override {
        const PlacedPath place(path);
        struct stat status;
        const bool found = place.IsValid() && fstatat(place.Folder(), place.Name(), &status, 0) == 0;
        if (found && !S_ISREG(status.st_mode)) {
            result = FileResult::kNoAccess;
            return nullptr;
        }
        Descriptor file = place.IsValid() ? OpenToRead(place) : Descriptor();
        if (!file.IsOpen() || fstat(file.Value(), &status) != 0) {
            result = LastResult();
            return nullptr;
        }
        // It may have been exchanged since it was looked at.
        result = S_ISREG(status.st_mode) ? FileResult::kDone : FileResult::kNoAccess;
        return result == FileResult::kDone ? std::make_unique<OpenInputFile>(std::move(file)) : nullptr;
    }

    std::unique_ptr<OutputFile> OpenForWriting(std::string_view path, OpenMode mode, FileAccess access,
                                               FileResult& result) override {
        int flags = O_WRONLY | O_CREAT;
        if (mode == OpenMode::kCreateNew) flags |= O_EXCL;
        if (mode == OpenMode::kAppend) flags |= O_APPEND;
        Descriptor file = OpenPath(path, flags, access == FileAccess::kOwnerOnly ? 0600 : 0666);
        result = file.IsOpen() ? PrepareForWriting(file.Value(), mode, access) : LastResult();
        if (result != FileResult::kDone) return nullptr;
        return std::make_unique<OpenOutputFile>(std::move(file), mode);
    }

    FileResult ListFolder(std::string_view path, std::vector<FolderEntry>& entries) override {
        Descriptor file = OpenPath(path, O_RDONLY | O_DIRECTORY);
        if (!file.IsOpen()) return LastResult();
        const int folder = file.Value();
        const auto closeFolder = [](DIR* stream) { closedir(stream); };
        const std::unique_ptr<DIR, decltype(closeFolder)> stream(fdopendir(folder), closeFolder);
        if (!stream) return LastResult();
        file.Release();
        const std::size_t before = entries.size();
        for (;;) {
            errno = 0;
            const dirent* const entry = readdir(stream.get());
            if (entry == nullptr) break;
            if (IsDotName(entry->d_name)) continue;
            entries.push_back({entry->d_name, KindOfEntry(folder, *entry)});
            errno = 0;
        }
        if (errno == 0) return FileResult::kDone;
        const FileResult result = LastResult();
        entries.resize(before);
        return result;
    }

    FileResult MakeFolders(std::string_view path) override { return MakeFolderAndParents(path, 0777); }
    FileResult MakePrivateFolders(std::string_view path) override { return MakeFolderAndParents(path, 0700); }

    FileResult Rename(std::string_view from, std::string_view to, bool replace) override {
        const PlacedPath source(from);
        if (!source.IsValid()) return LastResult();
        const PlacedPath target(to);
        if (!target.IsValid()) return LastResult();
        const int result = replace ? renameat(source.Folder(), source.Name(), target.Folder(), target.Name())
                                   : RenameToNewName(source, target);
        if (result != 0) return LastResult();
        // The new name stands already; a folder that cannot be flushed does not undo that.
        FlushFolder(FolderToFlush(to));
        if (FolderToFlush(from) != FolderToFlush(to)) FlushFolder(FolderToFlush(from));
        return FileResult::kDone;
    }

    FileResult Erase(std::string_view path) override {
        const PlacedPath place(path);
        if (!place.IsValid()) return LastResult();
        if (unlinkat(place.Folder(), place.Name(), 0) == 0) return FileResult::kDone;
        if (errno != EISDIR) return LastResult();
        return unlinkat(place.Folder(), place.Name(), AT_REMOVEDIR) == 0 ? FileResult::kDone : LastResult();
    }

    FileResult CopyAttributes(std::string_view from, std::string_view to) override {
        const PlacedPath source(from);
        if (!source.IsValid()) return LastResult();
        const PlacedPath target(to);
        struct stat status;
        if (!target.IsValid() || fstatat(source.Folder(), source.Name(), &status, 0) != 0)
            return LastResult();
        constexpr mode_t kPermissions = S_IRWXU | S_IRWXG | S_IRWXO;
        const timespec times[] = {status.st_atim, status.st_mtim};
        // A file system without permissions has times all the same.
        const int error =
            fchmodat(target.Folder(), target.Name(), status.st_mode & kPermissions, 0) == 0 ? 0 : errno;
        if (utimensat(target.Folder(), target.Name(), times, 0) != 0) return LastResult();
        return ToFileResult(error);
    }

    FileResult FlushFolder(std::string_view path) override {
        const Descriptor folder = OpenPath(path, O_RDONLY | O_DIRECTORY);
        if (!folder.IsOpen()) return LastResult();
        if (RetryInterrupted([&] { return fsync(folder.Value()); }) == 0) return FileResult::kDone;
        // A file system that knows no such flush has nothing that it keeps back.
        return errno == EINVAL || errno == EROFS ? FileResult::kDone : LastResult();
    }

    std::string ResolvePath(std::string_view path) override {
        if (path.find('\0') != std::string_view::npos) return {};
        const std::string text(path);
        const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(text.c_str(), nullptr),
                                                                   &std::free);
        return resolved ? std::string(resolved.get()) : std::string();
    }

    std::unique_ptr<FileLock> TryLock(std::string_view path, FileResult& result) override {
        Descriptor file = OpenPath(path, O_RDWR | O_CREAT, 0666);
        if (!file.IsOpen() || flock(file.Value(), LOCK_EX | LOCK_NB) != 0) {
            result = LastResult();
            return nullptr;
        }
        // The holder before us may have removed the file; what is locked then is no longer at `path`.
        struct statx mine;
        struct statx current;
        const PlacedPath place(path);
        const bool same = place.IsValid() && AskSystem(file.Value(), "", AT_EMPTY_PATH, mine) &&
                          AskSystem(place.Folder(), place.Name(), 0, current) &&
                          mine.stx_ino == current.stx_ino && mine.stx_dev_major == current.stx_dev_major &&
                          mine.stx_dev_minor == current.stx_dev_minor;
        result = same ? FileResult::kDone : FileResult::kBusy;
        return same ? std::make_unique<HeldLock>(std::move(file)) : nullptr;
    }

    std::int64_t FreeSpace(std::string_view path) override {
        const Descriptor file = OpenPath(path, O_PATH);
        struct statvfs volume;
        if (!file.IsOpen() || fstatvfs(file.Value(), &volume) != 0) return -1;
        constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
        const std::uint64_t blockSize = volume.f_frsize == 0 ? 1 : volume.f_frsize;
        return static_cast<std::int64_t>(volume.f_bavail > kMost / blockSize ? kMost
                                                                             : volume.f_bavail * blockSize);
    }
};

}  // namespace

std::unique_ptr<Files> MakeFiles() {
    return std::make_unique<LinuxFiles>();
}

}  // namespace quirepress
