#pragma once

#include <cstdint>
#include <string>

#include "settings/keyword_table.h"

namespace quirepress {

// What belongs to no feature's own file, kept in misc.ini.
struct MiscOptions {
    std::string m_bulkLoadFolder;
    std::int32_t m_reportFontHeight = 0;
    std::int32_t m_reportFontWidth = 0;
};

const KeywordTable<MiscOptions>& MiscKeywords();

int LoadMiscOptions(MiscOptions& options, const SettingsPlace& place);
int SaveMiscOptions(const MiscOptions& options, const SettingsPlace& place);

}  // namespace quirepress
