#pragma once

#include "platform/machine.h"
#include "settings/general_options.h"
#include "settings/keyword_table.h"

namespace quirepress {

// The keys of general_setup.ini in the order of its writer.
const KeywordTable<GeneralOptions>& GeneralKeywords();

// 0, or kSettingsNotRead: the defaults stand. Some fields keep what an earlier load gave them when their key
// is gone. Unattended, the error log is on whatever the file says.
int LoadGeneralOptions(GeneralOptions& options, const SettingsPlace& place, SystemFamily family,
                       bool isUnattended);

// 0, or kSettingsNotWritten, said to the user. While `isInhibited` nothing is written, and the answer is 0.
int SaveGeneralOptions(const GeneralOptions& options, const SettingsPlace& place, bool isInhibited);

// What the options dialog changes of its own accord before it saves, and the keys that take part in it.
void ApplyDialogCouplings(GeneralOptions& options);
bool IsCoupledKey(std::string_view key);

}  // namespace quirepress
