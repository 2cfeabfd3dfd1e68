#include "base/entry_names.h"

#include <algorithm>
#include <array>

#include "base/path.h"
#include "base/text.h"

namespace quirepress {

namespace {

constexpr std::size_t kLongestKeptExtension = 20;

bool IsForbidden(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F || Contains("<>:\"|?*", std::string_view(&c, 1));
}

bool IsUtf8Continuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

// The first `size` bytes, less those of a character that would be cut in two.
std::string_view CutAtCharacter(std::string_view text, std::size_t size) {
    if (text.size() <= size) return text;
    constexpr std::size_t kMostContinuations = 3;
    for (std::size_t end = size; end > 0 && size - end <= kMostContinuations; --end)
        if (!IsUtf8Continuation(text[end])) return text.substr(0, end);
    return text.substr(0, size);
}

// `name` with `suffix` before its extension, the stem shortened so that all is at most `longest` bytes.
std::string BuildName(std::string_view name, std::string_view suffix, std::size_t longest) {
    std::string_view extension = FileExtension(name);
    if (extension.size() > kLongestKeptExtension) extension = {};
    const std::string_view stem = name.substr(0, name.size() - extension.size());
    std::string result(CutAtCharacter(stem, longest - suffix.size() - extension.size()));
    result += suffix;
    result += extension;
    return result;
}

// Names that Windows keeps for devices, whatever extension follows.
bool IsDeviceName(std::string_view part) {
    const std::string stem = ToLowerAscii(TrimTrailingBlanks(part.substr(0, part.find('.'))));
    constexpr std::array<std::string_view, 6> kDevices = {"con", "prn", "aux", "nul", "conin$", "conout$"};
    if (std::find(kDevices.begin(), kDevices.end(), stem) != kDevices.end()) return true;
    const bool isPort = stem.size() == 4 && (StartsWith(stem, "com") || StartsWith(stem, "lpt"));
    return isPort && stem[3] >= '0' && stem[3] <= '9';
}

std::string CleanPart(std::string_view part) {
    std::string result(part);
    std::replace_if(result.begin(), result.end(), IsForbidden, '_');
    result = BuildName(result, "", kLongestEntryName - 1);
    const std::size_t last = result.find_last_not_of(". ");
    result.resize(last == std::string::npos ? 0 : last + 1);
    if (result.empty() || IsDeviceName(result)) result.insert(result.begin(), '_');
    return result;
}

bool IsDrive(std::string_view part) {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return part.size() >= 2 && part[1] == ':' && isLetter(part[0]);
}

}  // namespace

std::vector<std::string> CleanEntryName(std::string_view name) {
    if (IsDrive(name)) name.remove_prefix(2);
    std::vector<std::string> parts;
    while (!name.empty()) {
        const std::size_t end = name.find_first_of("/\\");
        const std::string_view part = name.substr(0, end);
        name.remove_prefix(end == std::string_view::npos ? name.size() : end + 1);
        if (part == "..") return {};
        if (!part.empty() && part != ".") parts.push_back(CleanPart(part));
    }
    return parts;
}

std::string NumberedName(std::string_view name, int number) {
    return BuildName(name, "_" + std::to_string(number), kLongestEntryName);
}

}  // namespace quirepress
