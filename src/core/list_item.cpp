#include "core/list_item.h"

#include <algorithm>

#include "base/text.h"

namespace quirepress {

const std::array<ColumnInfo, kColumnCount> kColumns = {{
    {"Selected", 60},
    {"Filename", 294},
    {"Pages", 60},
    {"Status", 150},
    {"Move To Directory After Printed", 200},
    {"Created Date", 110},
    {"Modified Date", 110},
    {"Addon Parameters", 300},
    {"From Directory", 0},
    {"Size KB", 80},
    {"Processing Parameters", 300},
    {"Balanced Printer Used", 200},
    {"Balanced Printers", 400},
    {"Priority", 50},
    {"Print Direct", 70},
    {"Move To Directory On Error", 200},
    {"File Title", 200},
    {"Extra Options", 50},
    {"Profiling", 90},
}};

namespace {

template <std::size_t N>
bool ContainsOneOf(std::string_view text, const std::array<std::string_view, N>& parts) {
    return std::any_of(parts.begin(), parts.end(),
                       [&](std::string_view part) { return Contains(text, part); });
}

template <std::size_t N>
bool StartsWithOneOf(std::string_view text, const std::array<std::string_view, N>& starts) {
    return std::any_of(starts.begin(), starts.end(),
                       [&](std::string_view start) { return StartsWith(text, start); });
}

}  // namespace

bool IsCommandItem(std::string_view path) {
    if (!Contains(path, ".")) return false;
    constexpr std::array<std::string_view, 5> kFirstParts = {".tra", ".paperorientation", ".vbs", ".bat",
                                                             ".pro"};
    constexpr std::array<std::string_view, 5> kPaperParts = {".paperscale", ".papercolor", ".papersize",
                                                             ".papercopies", ".paperduplex"};
    return ContainsOneOf(path, kFirstParts) || EndsWith(path, ".prs") || ContainsOneOf(path, kPaperParts) ||
           EndsWith(path, ".ppp");
}

bool IsDownloadEntry(std::string_view path) {
    constexpr std::array<std::string_view, 5> kStarts = {"DL;http://", "DL;https://", "DL;ftp://", "http://",
                                                         "https://"};
    return StartsWithOneOf(path, kStarts);
}

ItemKind KindOfItem(std::string_view path) {
    if (path == kSeparatorText) return ItemKind::kSeparator;
    if (IsDownloadEntry(path)) return ItemKind::kDownload;
    return IsCommandItem(path) || EndsWith(path, ".printer") ? ItemKind::kCommand : ItemKind::kDocument;
}

ListItem::ListItem(const ColumnTexts& texts) {
    std::size_t size = 0;
    for (const std::string_view text : texts) size += text.size();
    m_texts.reserve(size);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        m_texts += texts[i];
        m_ends[i] = static_cast<std::uint32_t>(m_texts.size());
    }
}

std::string_view ListItem::Text(int column) const {
    const std::uint32_t start = column == 0 ? 0 : m_ends[static_cast<std::size_t>(column) - 1];
    return std::string_view(m_texts).substr(start, m_ends[static_cast<std::size_t>(column)] - start);
}

void ListItem::SetText(int column, std::string_view text) {
    const std::string_view before = Text(column);
    const auto start = static_cast<std::size_t>(before.data() - m_texts.data());
    const auto growth = static_cast<std::uint32_t>(text.size() - before.size());
    m_texts.replace(start, before.size(), text);
    for (auto i = static_cast<std::size_t>(column); i < m_ends.size(); ++i) m_ends[i] += growth;
}

std::string_view ListItem::JobFile() const {
    const RowOrigin* origin = m_origin.get();
    while (origin != nullptr && origin->kind != RowOrigin::Kind::kJobFile) origin = origin->outer.get();
    return origin != nullptr ? origin->path : std::string_view();
}

}  // namespace quirepress
