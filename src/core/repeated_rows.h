#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quirepress {

class Files;
class PrintList;

// Documents that several rows of a list print. Paths are written in several ways ("./a", "d/../a", through a
// folder that is a link); a file and a link to it are two.
class RepeatedRows {
public:
    // What was fetched into `downloads` is its row's own: a name there may come again for another document.
    RepeatedRows(PrintList& list, Files& files, std::string downloads)
        : m_list(list), m_files(files), m_downloads(std::move(downloads)) {}

    // Of the document of this row, in list order; just the row where it stands alone.
    std::vector<int> RowsOf(int row);

private:
    bool IsPrinted(int row) const;
    std::string PlaceOf(std::string_view path);
    void Update();

    PrintList& m_list;
    Files& m_files;
    std::string m_downloads;                 // folder, with a separator at its end
    std::optional<std::uint64_t> m_version;  // of the list whose rows these are
    std::vector<std::vector<int>> m_groups;  // rows of one document each
    std::unordered_map<int, std::size_t> m_groupOf;
    std::map<std::string, std::string, std::less<>> m_folders;  // as the system calls them
};

}  // namespace quirepress
