#include "backends/tray_file.h"

#include <algorithm>

#include "base/text.h"
#include "platform/file_tools.h"

namespace quirepress {

namespace {

constexpr std::int64_t kLongestFile = 4096;

std::string TooLong(std::string_view trayName) {
    return "The tray name \"" + ToPrintableLine(trayName) + "\" is longer than 24 characters.";
}

}  // namespace

std::string ListedTrayName(std::string_view name) {
    const std::string text = ToUtf8ForDisplay(name);
    return text.substr(0, BytesOfCharacters(text, kLongestTrayName));
}

int SaveTrayFile(Files& files, std::string_view path, std::string_view trayName, std::string& message) {
    constexpr std::string_view kNotInName("\r\n\0", 3);
    message = "A tray name is one line of text.";
    if (trayName.empty() || trayName.find_first_of(kNotInName) != std::string_view::npos) return -1;
    message = TooLong(trayName);
    if (CountCharacters(ToUtf8ForDisplay(trayName)) > kLongestTrayName) return -1;
    const FileResult result = ReplaceFileDurably(files, path, trayName);
    message = "Can't open tray file for writing: " + std::string(path);
    if (result != FileResult::kDone) return -1;
    message = "Tray file saved.";
    return 0;
}

int LoadTrayFile(Files& files, std::string_view path, std::string& trayName, std::string& message) {
    std::string text;
    FileResult result = FileResult::kDone;
    message = "The tray file " + ToPrintableLine(path) + " can't be read";
    if (!ReadWholeFile(files, path, kLongestFile, text, result)) {
        message += std::string(": ") + DescribeFileResult(result) + ".";
        return -1;
    }
    // Older files are padded with zeros to the room for a name.
    constexpr std::string_view kEnds("\r\n\0", 3);
    text.resize(std::min(text.find_first_of(kEnds), text.size()));
    const std::string_view name = TrimTrailingBlanks(text);
    message = "The tray file " + ToPrintableLine(path) + " holds no tray name.";
    if (name.empty()) return -1;
    message = TooLong(name);
    if (CountCharacters(ToUtf8ForDisplay(name)) > kLongestTrayName) return -1;
    trayName = name;
    message.clear();
    return 0;
}

}  // namespace quirepress
