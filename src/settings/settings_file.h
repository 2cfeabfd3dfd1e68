#pragma once

#include <cstddef>
#include <string>

#include "base/code_page.h"
#include "base/keyword_lines.h"
#include "platform/files.h"

namespace quirepress {

class Prompts;

// Results of every Load and Save.
constexpr int kSettingsDone = 0;
constexpr int kSettingsNotWritten = -1;
constexpr int kSettingsNotRead = -2;  // the file cannot be opened; the defaults stand

// What a settings object needs of its surroundings.
struct SettingsPlace {
    Files& files;
    Prompts& prompts;                   // told of a file that cannot be written
    std::string workingFolder;          // ends in a separator; a file's path is this text and its name
    CodePage codePage = Windows1252();  // of files that are not UTF-8
};

struct SettingsFile {
    const char* name;
    const char* failureMessage;  // shown when it cannot be written
    FileAccess access = FileAccess::kShared;
    std::size_t lineLimit = kKeywordLineLimit;  // bytes
};

}  // namespace quirepress
