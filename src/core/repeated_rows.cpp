#include "core/repeated_rows.h"

#include <string_view>
#include <unordered_set>

#include "core/print_list.h"
#include "core/row_at_work.h"

namespace quirepress {

std::vector<int> RepeatedRows::RowsOf(int row) {
    Update();
    const std::string path(m_list.Text(row, kColumnFilename));
    std::vector<int> rows;
    if (m_paths.count(path) > 0)
        for (int other = 0; other < m_list.RowCount(); ++other)
            if (other == row || (IsPrinted(other) && m_list.Text(other, kColumnFilename) == path))
                rows.push_back(other);
    if (rows.empty()) rows.push_back(row);
    return rows;
}

// By itself or in a merged file.
bool RepeatedRows::IsPrinted(int row) const {
    return IsTicked(m_list, row) || m_list.MarkOf(row).isAppended;
}

// Most lists have none, and are long.
void RepeatedRows::Update() {
    if (m_version == m_list.Version()) return;
    m_version = m_list.Version();
    m_paths.clear();
    std::unordered_set<std::string_view> seen;
    for (int row = 0; row < m_list.RowCount(); ++row) {
        const std::string_view path = m_list.Text(row, kColumnFilename);
        const bool isDocument = IsPrinted(row) && KindOfItem(path) == ItemKind::kDocument;
        if (isDocument && !seen.insert(path).second) m_paths.emplace(path);
    }
}

}  // namespace quirepress
