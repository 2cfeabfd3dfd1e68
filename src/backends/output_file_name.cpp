#include "backends/output_file_name.h"

#include "base/format.h"
#include "base/path.h"
#include "settings/print_to_file_options.h"

namespace quirepress {

OutputFileName MakeOutputFileName(const PrintToFileOptions& options, std::string_view document,
                                  const std::function<bool(const std::string&)>& exists) {
    constexpr int kMostVersions = 9999;
    const std::string_view folder = options.m_useSourcePath ? FolderOf(document) : options.m_path;
    const std::string_view title = TitleWithoutExtension(document);
    OutputFileName name;
    name.path = JoinPath(folder, Format("%s%s", title, options.m_extension));
    const bool isDocument = name.path == document;
    if (!isDocument && !exists(name.path)) return name;
    name.fate = OutputFileName::Fate::kReplaces;
    if (!options.m_versionFile && !isDocument) {
        if (!options.m_overwrite) name.fate = OutputFileName::Fate::kTaken;
        return name;
    }
    for (int version = 1; version <= kMostVersions; ++version) {
        name.path = JoinPath(folder, Format("%s_v%.4d%s", title, version, options.m_extension));
        name.fate = OutputFileName::Fate::kNew;
        if (!exists(name.path)) return name;
    }
    name.fate = OutputFileName::Fate::kTaken;
    return name;
}

}  // namespace quirepress
