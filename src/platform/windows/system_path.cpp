#include "platform/windows/system_path.h"

#include <windows.h>

#include <algorithm>

#include "platform/windows/system_text.h"

namespace quirepress {
namespace {

constexpr std::wstring_view kLongPrefix = L"\\\\?\\";
constexpr std::wstring_view kLongSharePrefix = L"\\\\?\\UNC\\";
constexpr std::wstring_view kDevicePrefix = L"\\\\.\\";
constexpr DWORD kDiskQuotaExceeded = 1295;  // not in every header

std::wstring MakeAbsolute(const std::wstring& path) {
    std::wstring absolute;
    DWORD size = MAX_PATH;
    while (size > absolute.size()) {
        absolute.resize(size);
        size = GetFullPathNameW(path.c_str(), size, absolute.data(), nullptr);
    }
    absolute.resize(size);
    return absolute;
}

// Where the part begins that has no ":" of its own: behind "\\?\C:" and its like.
std::size_t SkipVolume(std::wstring_view path) {
    const std::size_t colon = path.find(L':');
    return path.size() > 5 && path.starts_with(kLongPrefix) && colon == 5 ? 6 : 0;
}

// Some systems take a longer name for a missing file.
bool HasOverlongName(std::wstring_view path) {
    constexpr std::size_t kLongestName = 255;
    constexpr std::size_t kLongestPath = 32'766;
    if (path.size() > kLongestPath) return true;
    while (path.size() > kLongestName) {
        const std::size_t end = path.substr(0, kLongestName + 1).rfind(L'\\');
        if (end == std::wstring_view::npos) return true;
        path.remove_prefix(end + 1);
    }
    return false;
}

}  // namespace

FileResult ToSystemPath(std::string_view path, std::wstring& systemPath) {
    if (path.empty()) return FileResult::kMissing;
    if (path.find('\0') != std::string_view::npos) return FileResult::kBadName;
    std::wstring wide = Widen(path);
    std::replace(wide.begin(), wide.end(), L'/', L'\\');
    if (wide.starts_with(kLongSharePrefix)) {
        wide.replace(0, kLongSharePrefix.size(), L"\\\\");
    } else if (wide.starts_with(kLongPrefix)) {
        wide.erase(0, kLongPrefix.size());
        if (wide.find(L':') != 1) return FileResult::kNoAccess;  // what is no drive's is a device's
    }
    wide = MakeAbsolute(wide);
    if (wide.empty()) return ToFileResult(GetLastError());
    if (wide.starts_with(kDevicePrefix) || wide.starts_with(kLongPrefix)) return FileResult::kNoAccess;
    if (wide.starts_with(L"\\\\")) {
        wide.replace(0, 2, kLongSharePrefix);
    } else {
        wide.insert(0, kLongPrefix);
    }
    const bool namesStream = wide.find(L':', SkipVolume(wide)) != std::wstring::npos;
    if (namesStream || HasOverlongName(wide)) return FileResult::kBadName;
    systemPath = std::move(wide);
    return FileResult::kDone;
}

std::string FromSystemPath(std::wstring_view systemPath) {
    if (systemPath.starts_with(kLongSharePrefix)) {
        return "\\\\" + Narrow(systemPath.substr(kLongSharePrefix.size()));
    }
    if (systemPath.starts_with(kLongPrefix)) systemPath.remove_prefix(kLongPrefix.size());
    return Narrow(systemPath);
}

FileResult ToFileResult(unsigned long error) {
    switch (error) {
        case ERROR_SUCCESS:
            return FileResult::kDone;
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_DRIVE:
        case ERROR_NOT_READY:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
        case ERROR_DIRECTORY:
            return FileResult::kMissing;
        case ERROR_ACCESS_DENIED:
        case ERROR_NETWORK_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
        case ERROR_PRIVILEGE_NOT_HELD:
            return FileResult::kNoAccess;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return FileResult::kExists;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
        case kDiskQuotaExceeded:
            return FileResult::kNoSpace;
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_FILENAME_EXCED_RANGE:
            return FileResult::kBadName;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
        case ERROR_BUSY:
        case ERROR_DELETE_PENDING:
            return FileResult::kBusy;
        case ERROR_NOT_SAME_DEVICE:
            return FileResult::kOtherVolume;
        default:
            return FileResult::kFailed;
    }
}

}  // namespace quirepress
