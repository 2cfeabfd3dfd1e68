#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "settings/keyword_table.h"
#include "settings/settings_file.h"

namespace quirepress {

struct KeywordReading {
    bool isModernSystem = true;  // Windows XP or later, or none
    bool hasLines = false;       // answered: whether there was a line, whatever it held
};

// Reads `text` line by line into the object. Text that is not valid UTF-8 is in the code page.
void ReadKeywords(const std::vector<KeywordRow>& rows, const SettingsFile& file, const CodePage& page,
                  std::string_view text, void* object, KeywordReading& reading);

// The lines of the object as they stand in the file. They are UTF-8; in the code page when `old`, what the
// file held until now, is in it, or one of the texts is no UTF-8, while all texts fit. False when the format
// cannot hold a value: `flaw` then says which and why.
bool WriteKeywords(const std::vector<KeywordRow>& rows, const SettingsFile& file, const CodePage& page,
                   std::string_view old, const void* object, std::string& bytes, std::string& flaw);

bool IsKeywordWritten(const KeywordRow& row, const void* object);

void CopyField(const KeywordRow& row, const void* from, void* to);

// Gives the fields their defaults, then reads the file: 0, or kSettingsNotRead.
int LoadKeywords(const std::vector<KeywordRow>& rows, const SettingsFile& file, const SettingsPlace& place,
                 const void* defaults, void* object, KeywordReading& reading);

// What the file holds; empty when it cannot be read.
std::string ReadSettingsText(const SettingsFile& file, const SettingsPlace& place);

// Replaces the file for good: 0, or kSettingsNotWritten, which was said to the user; the file is as it was.
int SaveKeywords(const std::vector<KeywordRow>& rows, const SettingsFile& file, const SettingsPlace& place,
                 const void* object);

template <typename Options>
int LoadSettings(const KeywordTable<Options>& table, const SettingsPlace& place, Options& options,
                 KeywordReading& reading) {
    const Options defaults{};
    return LoadKeywords(table.Rows(), table.File(), place, &defaults, &options, reading);
}

template <typename Options>
int LoadSettings(const KeywordTable<Options>& table, const SettingsPlace& place, Options& options) {
    KeywordReading reading;
    return LoadSettings(table, place, options, reading);
}

template <typename Options>
int SaveSettings(const KeywordTable<Options>& table, const SettingsPlace& place, const Options& options) {
    return SaveKeywords(table.Rows(), table.File(), place, &options);
}

}  // namespace quirepress
