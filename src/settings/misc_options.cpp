#include "settings/misc_options.h"

#include "settings/keyword_file.h"

namespace quirepress {

const KeywordTable<MiscOptions>& MiscKeywords() {
    static const KeywordTable<MiscOptions> table(
        {"misc.ini", "Can't save to misc.ini file."},
        {
            Text("BULKLOADDIR", &MiscOptions::m_bulkLoadFolder, "Bulk-load folder."),
            Number("REPORTFONTHEIGHT", &MiscOptions::m_reportFontHeight, "Height of the report font."),
            Number("REPORTFONTWIDTH", &MiscOptions::m_reportFontWidth, "Width of the report font."),
        });
    return table;
}

int LoadMiscOptions(MiscOptions& options, const SettingsPlace& place) {
    return LoadSettings(MiscKeywords(), place, options);
}

int SaveMiscOptions(const MiscOptions& options, const SettingsPlace& place) {
    return SaveSettings(MiscKeywords(), place, options);
}

}  // namespace quirepress
