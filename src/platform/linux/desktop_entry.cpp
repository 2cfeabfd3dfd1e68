#include "platform/linux/desktop_entry.h"

#include <array>

#include "base/path.h"
#include "base/text.h"
#include "platform/linux/percent_code.h"

namespace quirepress {

namespace {

std::string_view Trim(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// The value of a string entry: "\s", "\n", "\t", "\r" and "\\" stand for one character.
std::string Unescape(std::string_view text) {
    constexpr std::string_view kLetters = "sntr\\";
    constexpr std::string_view kMeanings = " \n\t\r\\";
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t which =
            text[i] == '\\' && i + 1 < text.size() ? kLetters.find(text[i + 1]) : std::string_view::npos;
        result += which == std::string_view::npos ? text[i] : kMeanings[which];
        if (which != std::string_view::npos) ++i;
    }
    return result;
}

std::string ToTarget(const std::string& address) {
    constexpr std::array<std::string_view, 3> kRemote = {"http://", "https://", "ftp://"};
    constexpr std::array<std::string_view, 3> kLocal = {"file:///", "file://localhost/", "file:/"};
    const std::string lower = ToLowerAscii(address);
    for (const std::string_view scheme : kRemote)
        if (StartsWith(lower, scheme) && lower.size() > scheme.size()) return address;
    for (const std::string_view scheme : kLocal) {
        // "file://host/..." of another host is no file of this machine.
        if (!StartsWith(lower, scheme) || (scheme == "file:/" && StartsWith(lower, "file://"))) continue;
        return DecodePercents(std::string_view(address).substr(scheme.size() - 1)).value_or("");
    }
    return IsAbsolutePath(address) ? address : std::string();
}

}  // namespace

std::string ReadLinkEntry(std::string_view entry) {
    bool inEntry = false;
    bool isLink = false;
    std::string address;
    for (const std::string_view rawLine : SplitAt(entry, '\n')) {
        const std::string_view line = Trim(rawLine);
        if (StartsWith(line, "[")) inEntry = line == "[Desktop Entry]";
        const std::size_t equals = line.find('=');
        if (!inEntry || equals == std::string_view::npos || StartsWith(line, "#")) continue;
        const std::string_view key = Trim(line.substr(0, equals));
        const std::string_view value = Trim(line.substr(equals + 1));
        if (key == "Type") isLink = value == "Link";
        if (key == "URL") address = Unescape(value);
    }
    return isLink ? ToTarget(address) : std::string();
}

}  // namespace quirepress
