#include "console/table.h"

#include <algorithm>

#include "base/text.h"

namespace quirepress {

namespace {

std::string Padded(std::string_view text, std::size_t width, bool alignRight) {
    const std::size_t length = CountCharacters(text);
    const std::string blanks(width > length ? width - length : 0, ' ');
    return alignRight ? blanks + std::string(text) : std::string(text) + blanks;
}

}  // namespace

std::string CutMiddle(std::string_view text, std::size_t widest) {
    constexpr std::string_view kGap = "...";
    const std::size_t length = CountCharacters(text);
    if (length <= widest || widest <= kGap.size()) return std::string(text);
    const std::size_t kept = widest - kGap.size();
    const std::size_t head = kept / 3;
    std::string result(text.substr(0, BytesOfCharacters(text, head)));
    result += kGap;
    result += text.substr(BytesOfCharacters(text, length - (kept - head)));
    return result;
}

std::string Shaded(std::string_view text, Shade shade, bool colours) {
    if (!colours || shade == Shade::kPlain) return std::string(text);
    const char* start = shade == Shade::kGood ? "\x1b[32m" : shade == Shade::kBad ? "\x1b[31m" : "\x1b[2m";
    return start + std::string(text) + "\x1b[0m";
}

Table::Table(std::vector<Column> columns) : m_columns(std::move(columns)) {}

void Table::AddRow(std::vector<std::string> texts, Shade shade) {
    texts.resize(m_columns.size());
    for (std::size_t i = 0; i < texts.size(); ++i)
        texts[i] = CutMiddle(ToPrintableLine(texts[i]), m_columns[i].widest);
    m_rows.push_back({std::move(texts), shade});
}

std::string Table::Render(bool colours) const {
    std::vector<std::size_t> widths;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        std::size_t width = CountCharacters(m_columns[i].heading);
        for (const Row& row : m_rows) width = std::max(width, CountCharacters(row.texts[i]));
        widths.push_back(width);
    }
    const auto renderLine = [&](auto textOf) {
        std::string line;
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            if (i > 0) line += "  ";
            line += Padded(textOf(i), widths[i], m_columns[i].alignRight);
        }
        return std::string(TrimTrailingBlanks(line));
    };
    std::string out =
        Shaded(renderLine([&](std::size_t i) { return m_columns[i].heading; }), Shade::kDim, colours) + "\n";
    for (const Row& row : m_rows)
        out += Shaded(renderLine([&](std::size_t i) { return row.texts[i]; }), row.shade, colours) + "\n";
    return out;
}

}  // namespace quirepress
