#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quirepress {

class PrintList;

// Documents that several rows of a list print, by their paths.
class RepeatedRows {
public:
    explicit RepeatedRows(PrintList& list) : m_list(list) {}

    // Of the document of this row, in list order; just the row where it stands alone.
    std::vector<int> RowsOf(int row);

private:
    bool IsPrinted(int row) const;
    void Update();

    PrintList& m_list;
    std::optional<std::uint64_t> m_version;  // of the list whose paths these are
    std::set<std::string, std::less<>> m_paths;
};

}  // namespace quirepress
