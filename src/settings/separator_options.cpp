#include "settings/separator_options.h"

#include <algorithm>

#include "base/text.h"
#include "settings/keyword_file.h"

namespace quirepress {

namespace {

constexpr std::size_t kShortestName = 2;
constexpr std::size_t kExtensionLength = 3;

void NameGeneratedFile(bool isGenerated, std::string_view templateName, std::string_view dummy,
                       std::string& fileName) {
    const bool isCoupled =
        isGenerated && templateName.size() >= kShortestName && fileName.size() < kShortestName;
    if (!isCoupled) return;
    fileName = dummy;
    fileName += templateName.substr(templateName.size() - std::min(templateName.size(), kExtensionLength));
}

}  // namespace

const KeywordTable<SeparatorOptions>& SeparatorKeywords() {
    using Options = SeparatorOptions;
    static const KeywordTable<Options> table(
        {"separator_setup.ini", "Can't save to general_setup.ini file."},
        {
            Flag("SEPARATORREQUESTEDONLY", &Options::m_requestedOnly,
                 "Print separators only where the list has a separator row."),
            Flag("GENERATEONTHEFLY", &Options::m_generateOnTheFly,
                 "Make the separator from its template each time."),
            Text("TEMPLATEFILENAME", &Options::m_templateFileName, "Template of the separator."),
            Flag("PRINTONDIRCHANGEONLY", &Options::m_printOnDirChangeOnly,
                 "Print the separator only before the first file of a folder."),
            Flag("DONTCHECKCLEARSEPARATOR", &Options::m_dontCheckClearSeparator,
                 "Don't wait until a separator has left the queue."),
            Text("SEPARATORFILENAME", &Options::m_separatorFileName,
                 "Document that is printed before each file; with GENERATEONTHEFLY the file that is "
                 "written from the template. Empty: none."),
            Text("SEPARATORPRS", &Options::m_separatorPrs,
                 "Printer settings file (.prs) for the separator; empty: none."),
            Flag("PRINTONDIRCHANGEONLYAFTER", &Options::m_printOnDirChangeOnlyAfter,
                 "Print the second separator only after the last file of a folder."),
            Flag("GENERATEONTHEFLYAFTER", &Options::m_generateOnTheFlyAfter,
                 "Make the second separator from its template each time."),
            Text("TEMPLATEFILENAMEAFTER", &Options::m_templateFileNameAfter,
                 "Template of the second separator."),
            Text("SEPARATORFILENAMEAFTER", &Options::m_separatorFileNameAfter,
                 "Document that is printed after each file, as SEPARATORFILENAME."),
            Text("SEPARATORPRSAFTER", &Options::m_separatorPrsAfter,
                 "Printer settings file (.prs) for the second separator; empty: none."),
        });
    return table;
}

void ApplySeparatorDialogCouplings(SeparatorOptions& options) {
    NameGeneratedFile(options.m_generateOnTheFly, options.m_templateFileName, "c:\\tmp_qpr_dummyfile.",
                      options.m_separatorFileName);
    NameGeneratedFile(options.m_generateOnTheFlyAfter, options.m_templateFileNameAfter,
                      "c:\\tmp_qpr_dummyfileafter.", options.m_separatorFileNameAfter);
}

bool IsCoupledSeparatorKey(std::string_view key) {
    return StartsWith(key, "GENERATEONTHEFLY") || StartsWith(key, "TEMPLATEFILENAME") ||
           StartsWith(key, "SEPARATORFILENAME");
}

int LoadSeparatorOptions(SeparatorOptions& options, const SettingsPlace& place) {
    return LoadSettings(SeparatorKeywords(), place, options);
}

int SaveSeparatorOptions(const SeparatorOptions& options, const SettingsPlace& place) {
    return SaveSettings(SeparatorKeywords(), place, options);
}

}  // namespace quirepress
