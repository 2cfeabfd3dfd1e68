#pragma once

#include <string>

namespace quirepress {

class Files;
class Prompts;

// Results of every Load and Save.
constexpr int kSettingsDone = 0;
constexpr int kSettingsNotWritten = -1;
constexpr int kSettingsNotRead = -2;  // the file cannot be opened; the defaults stand

// What a settings object needs of its surroundings.
struct SettingsPlace {
    Files& files;
    Prompts& prompts;           // told of a file that cannot be written
    std::string workingFolder;  // ends in a separator; a file's path is this text and its name
};

}  // namespace quirepress
