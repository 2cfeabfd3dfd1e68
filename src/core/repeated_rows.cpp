#include "core/repeated_rows.h"

#include "base/path.h"
#include "base/text.h"
#include "core/print_list.h"
#include "core/row_at_work.h"
#include "platform/files.h"

namespace quirepress {

std::vector<int> RepeatedRows::RowsOf(int row) {
    Update();
    const auto found = m_groupOf.find(row);
    if (found == m_groupOf.end()) return {row};
    std::vector<int> rows;
    for (const int other : m_groups[found->second])
        if (other == row || IsPrinted(other)) rows.push_back(other);
    return rows;
}

// By itself or in a merged file.
bool RepeatedRows::IsPrinted(int row) const {
    return IsTicked(m_list, row) || m_list.MarkOf(row).isAppended;
}

// By its folder: the file may have gone its way already.
std::string RepeatedRows::PlaceOf(std::string_view path) {
    const std::string_view folder = FolderOf(path);
    auto found = m_folders.find(folder);
    if (found == m_folders.end()) {
        std::string resolved = m_files.ResolvePath(folder.empty() ? "." : folder);
        if (resolved.empty()) resolved = folder;
        found = m_folders.emplace(folder, std::move(resolved)).first;
    }
    return JoinPath(found->second, FileTitle(path));
}

// Most lists have none, and are long: the system is asked only about files of the same name.
void RepeatedRows::Update() {
    if (m_version == m_list.Version()) return;
    m_version = m_list.Version();
    m_groups.clear();
    m_groupOf.clear();
    const auto isDocument = [this](std::string_view path) {
        return KindOfItem(path) == ItemKind::kDocument && !StartsWith(path, m_downloads);
    };
    std::unordered_map<std::string_view, int> titles;
    for (int row = 0; row < m_list.RowCount(); ++row) {
        const std::string_view path = m_list.Text(row, kColumnFilename);
        if (isDocument(path)) ++titles[FileTitle(path)];
    }
    std::map<std::string, std::vector<int>> places;
    for (int row = 0; row < m_list.RowCount(); ++row) {
        const std::string_view path = m_list.Text(row, kColumnFilename);
        if (isDocument(path) && titles[FileTitle(path)] > 1) places[PlaceOf(path)].push_back(row);
    }
    for (auto& [place, rows] : places) {
        if (rows.size() < 2) continue;
        for (const int row : rows) m_groupOf[row] = m_groups.size();
        m_groups.push_back(std::move(rows));
    }
}

}  // namespace quirepress
