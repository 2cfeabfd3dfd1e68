#pragma once

#include <string>
#include <string_view>

#include "settings/keyword_table.h"

namespace quirepress {

// The documents that are printed between the documents of a run, before and after each;
// separator_setup.ini.
struct SeparatorOptions {
    bool m_requestedOnly = false;
    bool m_generateOnTheFly = false;
    std::string m_templateFileName;
    bool m_printOnDirChangeOnly = false;
    bool m_dontCheckClearSeparator = false;
    std::string m_separatorFileName;  // empty: none
    std::string m_separatorPrs;       // printer settings file; empty: the run's settings
    bool m_printOnDirChangeOnlyAfter = false;
    bool m_generateOnTheFlyAfter = false;
    std::string m_templateFileNameAfter;
    std::string m_separatorFileNameAfter;
    std::string m_separatorPrsAfter;
};

const KeywordTable<SeparatorOptions>& SeparatorKeywords();

// What the dialog does before it saves: a separator that is generated gets a name when it has none.
void ApplySeparatorDialogCouplings(SeparatorOptions& options);
bool IsCoupledSeparatorKey(std::string_view key);

int LoadSeparatorOptions(SeparatorOptions& options, const SettingsPlace& place);
int SaveSeparatorOptions(const SeparatorOptions& options, const SettingsPlace& place);

}  // namespace quirepress
