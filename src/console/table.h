#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

enum class Shade { kPlain, kGood, kBad, kDim };

// Rows of texts in aligned columns, for people. Texts are made printable; widths count characters.
class Table {
public:
    struct Column {
        std::string heading;
        bool alignRight = false;
        std::size_t widest = 60;  // longer texts lose their middle
    };
    explicit Table(std::vector<Column> columns);

    void AddRow(std::vector<std::string> texts, Shade shade = Shade::kPlain);
    std::string Render(bool colours) const;

private:
    struct Row {
        std::vector<std::string> texts;
        Shade shade;
    };
    std::vector<Column> m_columns;
    std::vector<Row> m_rows;
};

// At most `widest` characters: the middle gives way to "...", so that a path keeps its file name.
std::string CutMiddle(std::string_view text, std::size_t widest);

std::string Shaded(std::string_view text, Shade shade, bool colours);

}  // namespace quirepress
