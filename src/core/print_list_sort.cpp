#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "base/format.h"
#include "base/numbers.h"
#include "base/path.h"
#include "core/print_list.h"
#include "logs/debug_log.h"

namespace quirepress {

namespace {

struct TitleParts {
    std::string_view text;       // before the number
    std::string_view number;     // digits; empty when there are none
    std::string_view rest;       // between number and extension
    std::string_view extension;  // "." included
};

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// The number is the last one before the extension: in "2024-05 page 12.pdf" the pages count.
TitleParts SplitTitle(std::string_view title) {
    TitleParts parts;
    const std::string_view stem = TitleWithoutExtension(title);
    parts.extension = title.substr(stem.size());
    std::size_t end = stem.size();
    while (end > 0 && !IsDigit(stem[end - 1])) --end;
    std::size_t start = end;
    while (start > 0 && IsDigit(stem[start - 1])) --start;
    // Without a digit, all of the title is text.
    if (end == 0) start = end = stem.size();
    parts.text = stem.substr(0, start);
    parts.number = stem.substr(start, end - start);
    parts.rest = stem.substr(end);
    return parts;
}

std::string MakeSortKey(std::string_view title, DebugLog& debugLog) {
    const TitleParts parts = SplitTitle(title);
    constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
    std::string remainder;
    if (!parts.number.empty())
        remainder = Format("%8.8ld", ParseWholeNumber(parts.number, 0, kLargest).value_or(kLargest));
    remainder += parts.rest;
    remainder += parts.extension;
    debugLog.Trace("fileTitle: %s\n", parts.text);
    debugLog.Trace("numStr: %s\n", parts.number);
    debugLog.Trace("fileExt: %s\n", parts.extension);
    debugLog.Trace("Numerical fileTitle: %s%s\n", parts.text, remainder);
    return Format("%-255.255s%-255.255s", parts.text, remainder);
}

}  // namespace

void PrintList::SortByFileTitle() {
    std::vector<std::pair<std::string, int>> keys;
    keys.reserve(m_rows.size());
    for (int row = 0; row < RowCount(); ++row)
        keys.emplace_back(MakeSortKey(FileTitle(Text(row, kColumnFilename)), m_services.debugLog), row);
    // The row number behind the key keeps rows of equal titles in their order.
    std::sort(keys.begin(), keys.end());
    std::deque<ListItem> sorted;
    int currentRow = -1;
    for (const auto& [key, row] : keys) {
        if (row == m_currentRow) currentRow = static_cast<int>(sorted.size());
        sorted.push_back(std::move(m_rows[static_cast<std::size_t>(row)]));
    }
    m_rows = std::move(sorted);
    ++m_version;
    m_currentRow = currentRow;
}

}  // namespace quirepress
