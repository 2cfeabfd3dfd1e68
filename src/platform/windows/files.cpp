#include "platform/files.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "platform/windows/make_services.h"
#include "platform/windows/owner_only.h"
#include "platform/windows/system_handle.h"
#include "platform/windows/system_path.h"
#include "platform/windows/system_text.h"
#include "platform/windows/system_time.h"

namespace quirepress {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::size_t kLargestPiece = 1 << 30;  // the system counts the bytes of one call in 32 bits

FileResult LastResult() {
    return ToFileResult(GetLastError());
}

FileResult ResultOf(BOOL succeeded) {
    return succeeded ? FileResult::kDone : LastResult();
}

// Folders are opened too; `flags` are further ones of CreateFileW.
SystemHandle OpenExisting(const std::wstring& path, DWORD access, DWORD flags = 0) {
    return TakeHandle(CreateFileW(path.c_str(), access, kShareAll, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr));
}

bool AskSystem(const SystemHandle& file, BY_HANDLE_FILE_INFORMATION& facts) {
    return file && GetFileType(file.get()) == FILE_TYPE_DISK &&
           GetFileInformationByHandle(file.get(), &facts);
}

long long Join(DWORD high, DWORD low) {
    return static_cast<long long>(high) << 32 | low;
}

Instant ToInstant(const FILETIME& time) {
    return FromSystemTicks(Join(time.dwHighDateTime, time.dwLowDateTime));
}

bool IsFolder(DWORD attributes) {
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

FileKind ToFileKind(DWORD attributes) {
    return IsFolder(attributes) ? FileKind::kFolder : FileKind::kRegular;
}

OVERLAPPED AtOffset(std::int64_t offset) {
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return place;
}

class WindowsInputFile : public InputFile {
public:
    explicit WindowsInputFile(SystemHandle file) : m_file(std::move(file)) {}

    std::int64_t ReadAt(std::int64_t offset, void* buffer, std::size_t size) override {
        std::size_t done = 0;
        while (done < size) {
            OVERLAPPED place = AtOffset(offset + static_cast<std::int64_t>(done));
            const auto piece = static_cast<DWORD>(std::min(size - done, kLargestPiece));
            DWORD read = 0;
            if (!ReadFile(m_file.get(), static_cast<char*>(buffer) + done, piece, &read, &place) &&
                GetLastError() != ERROR_HANDLE_EOF)
                return -1;
            if (read == 0) break;
            done += read;
        }
        return static_cast<std::int64_t>(done);
    }

    std::int64_t Size() override {
        LARGE_INTEGER size;
        return GetFileSizeEx(m_file.get(), &size) ? size.QuadPart : -1;
    }

private:
    SystemHandle m_file;
};

class WindowsOutputFile : public OutputFile {
public:
    explicit WindowsOutputFile(SystemHandle file) : m_file(std::move(file)) {}

    FileResult Write(const void* data, std::size_t size) override {
        std::size_t done = 0;
        while (done < size) {
            const auto piece = static_cast<DWORD>(std::min(size - done, kLargestPiece));
            DWORD written = 0;
            if (!WriteFile(m_file.get(), static_cast<const char*>(data) + done, piece, &written, nullptr))
                return LastResult();
            if (written == 0) return FileResult::kNoSpace;
            done += written;
        }
        return FileResult::kDone;
    }

    FileResult FlushToDisk() override { return ResultOf(FlushFileBuffers(m_file.get())); }
    FileResult Close() override { return ResultOf(CloseHandle(m_file.release())); }

private:
    SystemHandle m_file;
};

// The lock goes with the handle.
class WindowsFileLock : public FileLock {
public:
    explicit WindowsFileLock(SystemHandle file) : m_file(std::move(file)) {}

private:
    SystemHandle m_file;
};

FileKind KindOfEntry(const std::wstring& folder, const WIN32_FIND_DATAW& entry) {
    const bool isLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
                        entry.dwReserved0 == IO_REPARSE_TAG_SYMLINK;
    if (!isLink) return ToFileKind(entry.dwFileAttributes);
    BY_HANDLE_FILE_INFORMATION facts;
    const SystemHandle target = OpenExisting(folder + entry.cFileName, FILE_READ_ATTRIBUTES);
    return AskSystem(target, facts) ? ToFileKind(facts.dwFileAttributes) : FileKind::kMissing;
}

bool IsDotName(const wchar_t* name) {
    return name[0] == L'.' && (name[1] == L'\0' || (name[1] == L'.' && name[2] == L'\0'));
}

FileResult MakeOneFolder(const std::wstring& path) {
    if (CreateDirectoryW(path.c_str(), nullptr)) return FileResult::kDone;
    const DWORD error = GetLastError();  // for a drive's root it is an access that is denied
    const DWORD attributes = GetFileAttributesW(path.c_str());
    const bool exists = attributes != INVALID_FILE_ATTRIBUTES && IsFolder(attributes);
    return exists ? FileResult::kDone : ToFileResult(error);
}

FileResult MakeFolderAndParents(const std::wstring& path) {
    const FileResult result = MakeOneFolder(path);
    const std::size_t parentEnd = path.find_last_of(L'\\');
    if (result != FileResult::kMissing || parentEnd == std::wstring::npos) return result;
    const FileResult parent = MakeFolderAndParents(path.substr(0, parentEnd));
    return parent == FileResult::kDone ? MakeOneFolder(path) : parent;
}

std::wstring WithSeparator(std::wstring folder) {
    if (!folder.ends_with(L'\\')) folder += L'\\';
    return folder;
}

// A regular file; null and why not otherwise.
SystemHandle OpenRegular(std::string_view path, DWORD access, DWORD creation, FileResult& result,
                         SECURITY_ATTRIBUTES* security = nullptr) {
    std::wstring file;
    result = ToSystemPath(path, file);
    if (result != FileResult::kDone) return nullptr;
    SystemHandle handle = TakeHandle(
        CreateFileW(file.c_str(), access, kShareAll, security, creation, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!handle) {
        result = LastResult();
    } else if (GetFileType(handle.get()) != FILE_TYPE_DISK) {
        result = FileResult::kNoAccess;
        handle.reset();
    }
    return handle;
}

// A file that is a folder or read-only is not replaced however long one waits.
bool MayBeReplaced(const std::wstring& target) {
    const DWORD attributes = GetFileAttributesW(target.c_str());
    return attributes == INVALID_FILE_ATTRIBUTES ||
           (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) == 0;
}

// The system refuses to replace a file while anybody has it open. Readers of ours, and programs that look
// through new files, let it go in a moment.
FileResult Replace(const std::wstring& source, const std::wstring& target) {
    constexpr int kMostTries = 200;
    constexpr DWORD kPause = 5;  // milliseconds
    for (int i = 1;; ++i) {
        if (MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH | MOVEFILE_REPLACE_EXISTING))
            return FileResult::kDone;
        const DWORD error = GetLastError();
        const bool mayPass = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
        if (!mayPass || i == kMostTries || !MayBeReplaced(target)) return ToFileResult(error);
        Sleep(kPause);
    }
}

class WindowsFiles : public Files {
public:
    FileFacts Inspect(std::string_view path) override {
        std::wstring file;
        FileFacts facts;
        const FileResult named = ToSystemPath(path, file);
        if (named == FileResult::kNoAccess) facts.kind = FileKind::kOther;
        if (named != FileResult::kDone) return facts;
        SystemHandle handle = OpenExisting(file, GENERIC_READ);
        const bool opened = handle != nullptr;
        if (!opened) handle = OpenExisting(file, FILE_READ_ATTRIBUTES);
        BY_HANDLE_FILE_INFORMATION found;
        if (!AskSystem(handle, found)) {
            if (handle) facts.kind = FileKind::kOther;
            return facts;
        }
        facts.kind = ToFileKind(found.dwFileAttributes);
        if (facts.kind == FileKind::kRegular) {
            facts.readable = opened;
            facts.size = Join(found.nFileSizeHigh, found.nFileSizeLow);
        }
        facts.created = ToInstant(found.ftCreationTime);
        facts.written = ToInstant(found.ftLastWriteTime);
        facts.accessed = ToInstant(found.ftLastAccessTime);
        return facts;
    }

    std::unique_ptr<InputFile> OpenForReading(std::string_view path, FileResult& result) override {
        SystemHandle file = OpenRegular(path, GENERIC_READ, OPEN_EXISTING, result);
        return file ? std::make_unique<WindowsInputFile>(std::move(file)) : nullptr;
    }

    std::unique_ptr<OutputFile> OpenForWriting(std::string_view path, OpenMode mode, FileAccess access,
                                               FileResult& result) override {
        const DWORD wanted = mode == OpenMode::kAppend ? FILE_APPEND_DATA | SYNCHRONIZE : GENERIC_WRITE;
        // A file is emptied after it was opened: opening it as a new one fails when it is hidden.
        const DWORD creation = mode == OpenMode::kCreateNew ? CREATE_NEW : OPEN_ALWAYS;
        SystemHandle file;
        if (access == FileAccess::kOwnerOnly) {
            OwnerOnlySecurity security;
            file = OpenRegular(path, wanted | WRITE_DAC, creation, result, security.Attributes());
            if (file && !security.ApplyTo(file.get())) result = FileResult::kNoAccess;
        } else {
            file = OpenRegular(path, wanted, creation, result);
        }
        if (result == FileResult::kDone && mode == OpenMode::kReplace)
            result = ResultOf(SetEndOfFile(file.get()));
        if (result != FileResult::kDone) return nullptr;
        return std::make_unique<WindowsOutputFile>(std::move(file));
    }

    FileResult ListFolder(std::string_view path, std::vector<FolderEntry>& entries) override {
        std::wstring folder;
        const FileResult named = ToSystemPath(path, folder);
        if (named != FileResult::kDone) return named;
        folder = WithSeparator(folder);
        WIN32_FIND_DATAW entry;
        const HANDLE search = FindFirstFileExW((folder + L'*').c_str(), FindExInfoBasic, &entry,
                                               FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
        if (search == INVALID_HANDLE_VALUE) {
            const bool isEmpty = GetLastError() == ERROR_FILE_NOT_FOUND;  // only a drive's root has no "."
            return isEmpty ? FileResult::kDone : LastResult();
        }
        const std::size_t before = entries.size();
        do {
            if (!IsDotName(entry.cFileName))
                entries.push_back({Narrow(entry.cFileName), KindOfEntry(folder, entry)});
        } while (FindNextFileW(search, &entry));
        const DWORD error = GetLastError();
        FindClose(search);
        if (error == ERROR_NO_MORE_FILES) return FileResult::kDone;
        entries.resize(before);
        return ToFileResult(error);
    }

    FileResult MakeFolders(std::string_view path) override {
        std::wstring folder;
        const FileResult named = ToSystemPath(path, folder);
        if (named != FileResult::kDone) return named;
        while (folder.ends_with(L'\\')) folder.pop_back();
        return MakeFolderAndParents(folder);
    }

    FileResult Rename(std::string_view from, std::string_view to, bool replace) override {
        std::wstring source;
        std::wstring target;
        FileResult named = ToSystemPath(from, source);
        if (named == FileResult::kDone) named = ToSystemPath(to, target);
        if (named != FileResult::kDone) return named;
        if (replace) return Replace(source, target);
        return ResultOf(MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH));
    }

    FileResult Erase(std::string_view path) override {
        std::wstring file;
        const FileResult named = ToSystemPath(path, file);
        if (named != FileResult::kDone) return named;
        const DWORD attributes = GetFileAttributesW(file.c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES && IsFolder(attributes)) {
            if (RemoveDirectoryW(file.c_str())) return FileResult::kDone;
            return GetLastError() == ERROR_DIR_NOT_EMPTY ? FileResult::kExists : LastResult();
        }
        return ResultOf(DeleteFileW(file.c_str()));
    }

    // Permissions are the folder's, which new files inherit.
    FileResult CopyAttributes(std::string_view from, std::string_view to) override {
        std::wstring source;
        std::wstring target;
        FileResult named = ToSystemPath(from, source);
        if (named == FileResult::kDone) named = ToSystemPath(to, target);
        if (named != FileResult::kDone) return named;
        FILETIME created, accessed, written;
        const SystemHandle model = OpenExisting(source, FILE_READ_ATTRIBUTES);
        if (!model || !GetFileTime(model.get(), &created, &accessed, &written)) return LastResult();
        const SystemHandle file = OpenExisting(target, FILE_WRITE_ATTRIBUTES);
        return ResultOf(file && SetFileTime(file.get(), &created, &accessed, &written));
    }

    FileResult FlushFolder(std::string_view path) override {
        std::wstring folder;
        const FileResult named = ToSystemPath(path, folder);
        if (named != FileResult::kDone) return named;
        const SystemHandle handle = OpenExisting(folder, FILE_ADD_FILE | SYNCHRONIZE);
        return ResultOf(handle && FlushFileBuffers(handle.get()));
    }

    std::string ResolvePath(std::string_view path) override {
        std::wstring file;
        if (ToSystemPath(path, file) != FileResult::kDone) return {};
        const SystemHandle handle = OpenExisting(file, FILE_READ_ATTRIBUTES);
        if (!handle) return {};
        std::wstring resolved(MAX_PATH, L'\0');
        DWORD size = GetFinalPathNameByHandleW(handle.get(), resolved.data(), MAX_PATH, 0);
        if (size >= resolved.size()) {
            resolved.resize(size);
            size = GetFinalPathNameByHandleW(handle.get(), resolved.data(), size, 0);
        }
        return FromSystemPath({resolved.data(), std::min<std::size_t>(size, resolved.size())});
    }

    std::string ShortPath(std::string_view path) override {
        std::wstring file;
        if (ToSystemPath(path, file) != FileResult::kDone) return {};
        std::wstring shortPath(MAX_PATH, L'\0');
        DWORD size = GetShortPathNameW(file.c_str(), shortPath.data(), MAX_PATH);
        if (size >= shortPath.size()) {
            shortPath.resize(size);
            size = GetShortPathNameW(file.c_str(), shortPath.data(), size);
        }
        return FromSystemPath({shortPath.data(), std::min<std::size_t>(size, shortPath.size())});
    }

    std::unique_ptr<FileLock> TryLock(std::string_view path, FileResult& result) override {
        SystemHandle file = OpenRegular(path, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS, result);
        if (!file) return nullptr;
        // A byte far behind the end, so that the file can be read and written while it is locked.
        OVERLAPPED place = AtOffset(std::int64_t{1} << 62);
        result = ResultOf(
            LockFileEx(file.get(), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place));
        return result == FileResult::kDone ? std::make_unique<WindowsFileLock>(std::move(file)) : nullptr;
    }

    std::int64_t FreeSpace(std::string_view path) override {
        std::wstring file;
        if (ToSystemPath(path, file) != FileResult::kDone) return -1;
        const DWORD attributes = GetFileAttributesW(file.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES) return -1;
        if (!IsFolder(attributes)) file.erase(file.find_last_of(L'\\') + 1);
        ULARGE_INTEGER free;
        return GetDiskFreeSpaceExW(file.c_str(), &free, nullptr, nullptr)
                   ? static_cast<std::int64_t>(free.QuadPart)
                   : -1;
    }
};

}  // namespace

std::unique_ptr<Files> MakeFiles() {
    return std::make_unique<WindowsFiles>();
}

}  // namespace quirepress
