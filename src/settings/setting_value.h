#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace quirepress {

struct KeywordRow;

// The value of a key for people and scripts. A flag is true when its line would be written; a key with
// several numbers is a list, a key that repeats a list of texts.
using SettingValue =
    std::variant<bool, std::int32_t, std::string, std::vector<std::int32_t>, std::vector<std::string>>;

SettingValue ReadSettingValue(const KeywordRow& row, const void* object);

void WriteSettingValue(const KeywordRow& row, const SettingValue& value, void* object);

// Takes what a user has typed for the key. False, with a message and `value` untouched, when it is none.
bool ParseSettingValue(const KeywordRow& row, const std::vector<std::string>& typed, SettingValue& value,
                       std::string& message);

// "on", "5", "0;0;0;0", "\"Temp\"", "empty".
std::string DescribeSettingValue(const SettingValue& value);

// One table of the reference page: a line for each key.
std::string RenderSettingsTable(const std::vector<KeywordRow>& rows, const void* defaults);

}  // namespace quirepress
