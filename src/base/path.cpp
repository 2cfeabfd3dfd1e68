#include "base/path.h"

#include <filesystem>

namespace quirepress {

namespace {

// Position of the title's first byte.
std::size_t TitleStart(std::string_view path) {
    for (std::size_t i = path.size(); i > 0; --i)
        if (IsSeparator(path[i - 1])) return i;
    return 0;
}

std::size_t ExtensionStart(std::string_view title) {
    const std::size_t dot = title.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? title.size() : dot;
}

}  // namespace

char PlatformSeparator() {
    return static_cast<char>(std::filesystem::path::preferred_separator);
}

std::string_view PlatformLineEnd() {
    return PlatformSeparator() == '\\' ? "\r\n" : "\n";
}

bool IsSeparator(char c) {
    return c == '/' || c == PlatformSeparator();
}

std::string_view FileTitle(std::string_view path) {
    return path.substr(TitleStart(path));
}

std::string_view TitleWithoutExtension(std::string_view path) {
    const std::string_view title = FileTitle(path);
    return title.substr(0, ExtensionStart(title));
}

std::string_view FileExtension(std::string_view path) {
    const std::string_view title = FileTitle(path);
    return title.substr(ExtensionStart(title));
}

std::string_view FolderOf(std::string_view path) {
    return path.substr(0, TitleStart(path));
}

std::string JoinPath(std::string_view folder, std::string_view name) {
    if (folder.empty()) return std::string(name);
    std::string result = WithTrailingSeparator(folder);
    while (!name.empty() && IsSeparator(name.front())) name.remove_prefix(1);
    result += name;
    return result;
}

std::string WithTrailingSeparator(std::string_view folder) {
    std::string result(folder);
    if (!result.empty() && !IsSeparator(result.back())) result += PlatformSeparator();
    return result;
}

bool IsAbsolutePath(std::string_view path) {
    if (path.empty()) return false;
    if (IsSeparator(path[0])) return true;
    const bool hasDrive = path.size() >= 3 && path[1] == ':' && IsSeparator(path[2]);
    return hasDrive && PlatformSeparator() == '\\';
}

bool IsWindowsPath(std::string_view path) {
    return path.substr(0, 2) == "\\\\" || (path.size() > 2 && path[1] == ':' && path[2] == '\\');
}

std::string ToPlatformSeparators(std::string_view path) {
    std::string result(path);
    for (char& c : result)
        if (c == '/' || c == '\\') c = PlatformSeparator();
    return result;
}

}  // namespace quirepress
