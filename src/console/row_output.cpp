#include "console/row_output.h"

#include <nlohmann/json.hpp>

#include "base/credentials.h"
#include "base/text.h"
#include "console/table.h"
#include "core/print_list.h"

namespace quirepress {

namespace {

const char* NameOfKind(ItemKind kind) {
    switch (kind) {
        case ItemKind::kCommand:
            return "command";
        case ItemKind::kDownload:
            return "download";
        case ItemKind::kSeparator:
            return "separator";
        case ItemKind::kDocument:
            break;
    }
    return "document";
}

Shade ShadeOfRow(const PrintList& list, int row) {
    if (list.ColourListRow(row) == RowColour::kError) return Shade::kBad;
    if (list.Text(row, kColumnStatus) == "Done") return Shade::kGood;
    return list.Text(row, kColumnSelected) == "Yes" ? Shade::kPlain : Shade::kDim;
}

// Without the zeros that make its texts sort as numbers.
std::string PagesForPeople(const PrintList& list, int row) {
    std::string pages(list.Text(row, kColumnPages));
    const std::size_t first = pages.find_first_not_of('0');
    if (first == std::string::npos) return pages.empty() ? "" : "0";
    return pages.substr(first);
}

}  // namespace

nlohmann::json RowToJson(const PrintList& list, int row) {
    nlohmann::json columns = nlohmann::json::array();
    for (int column = 0; column < kColumnCount; ++column)
        columns.push_back(ToUtf8ForDisplay(HideCredentials(list.Text(row, column))));
    return {{"columns", columns}, {"kind", NameOfKind(KindOfItem(list.Text(row, kColumnFilename)))}};
}

nlohmann::json RowsToJson(const PrintList& list) {
    nlohmann::json rows = nlohmann::json::array();
    for (int row = 0; row < list.RowCount(); ++row) rows.push_back(RowToJson(list, row));
    return rows;
}

std::string RenderRows(const PrintList& list, bool colours) {
    Table table({{"No.", true},
                 {"Tick"},
                 {"Pages", true},
                 {"Size KB", true},
                 {"Status", false, 70},
                 {"Filename", false, 90}});
    for (int row = 0; row < list.RowCount(); ++row) {
        const auto text = [&](int column) { return HideCredentials(list.Text(row, column)); };
        table.AddRow({std::to_string(row + 1), text(kColumnSelected), PagesForPeople(list, row),
                      text(kColumnSizeKb), text(kColumnStatus), text(kColumnFilename)},
                     ShadeOfRow(list, row));
    }
    return table.Render(colours);
}

}  // namespace quirepress
