#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "settings/setting_value.h"
#include "settings/settings_file.h"

namespace quirepress {

struct KeywordRow;

// One settings file, loaded: shown, changed and saved by its keys.
class SettingsDocument {
public:
    virtual ~SettingsDocument() = default;
    virtual std::string FileName() const = 0;
    virtual int LoadResult() const = 0;  // kSettingsDone or kSettingsNotRead
    // What the user may not expect of a save; empty when it does nothing but save.
    virtual std::string SaveNote() const = 0;
    // 0, or kSettingsNotWritten, said to the user. A file that is there and could not be read is left alone.
    virtual int Save() = 0;

    // Every key that the reader or writer knows, in the writer's order.
    std::vector<std::pair<std::string, SettingValue>> Values() const;

    // 0, or 1 when there is no such key or the values are none for it: nothing has changed then, and
    // `message` says why. A flag takes no value, or one of on, off, yes, no, true, false, 1, 0. `notes` tells
    // what the user may not expect of the change.
    int ChangeKey(std::string_view key, const std::vector<std::string>& values, std::string& message,
                  std::vector<std::string>& notes);
    // The default is back; so is the key's line only when the default has one. Results as above.
    int ClearKey(std::string_view key, std::string& message);

protected:
    virtual const std::vector<KeywordRow>& Rows() const = 0;
    virtual void* Object() = 0;
    virtual const void* Object() const = 0;
    virtual const void* Defaults() const = 0;
    // What the next start would have of this row after a save. False, with the reason, when there can be
    // none.
    virtual bool ReadBack(const KeywordRow& row, SettingValue& value, std::string& flaw) const = 0;
    // What else the options dialog would change on saving, after a change of `key`.
    virtual std::vector<std::string> DescribeCouplings(std::string_view key) const = 0;

private:
    const KeywordRow* FindRow(std::string_view key, std::string& message) const;
};

// The names of all settings files: "general", "misc".
std::vector<std::string> SettingsNames();

// Loads one by its name; null when there is none of that name.
std::unique_ptr<SettingsDocument> OpenSettings(std::string_view name, const SettingsPlace& place);

// The page docs/settings.md.
std::string RenderSettingsReference();

}  // namespace quirepress
