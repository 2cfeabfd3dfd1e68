#include "platform/cups/users_default.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "base/path.h"
#include "base/text.h"
#include "platform/file_tools.h"

namespace quirepress {

namespace {

constexpr std::int64_t kLongestOptions = 1 << 20;
constexpr std::string_view kBlanks = " \t\r";

// The next word of the line, which it loses.
std::string_view TakeWord(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
    line.remove_prefix(word.size());
    return word;
}

}  // namespace

std::string ReadUsersDefault(Files& files) {
    const char* const home = std::getenv("HOME");
    if (home == nullptr) return {};
    std::string options;
    FileResult result = FileResult::kDone;
    ReadWholeFile(files, JoinPath(JoinPath(home, ".cups"), "lpoptions"), kLongestOptions, options, result);
    return FindDefaultInOptions(options);
}

std::string FindDefaultInOptions(std::string_view options) {
    while (!options.empty()) {
        std::string_view line = options.substr(0, options.find('\n'));
        options.remove_prefix(std::min(line.size() + 1, options.size()));
        if (EqualIgnoringAsciiCase(TakeWord(line), "default")) return std::string(TakeWord(line));
    }
    return {};
}

}  // namespace quirepress
